#pragma once

#include <functional>
#include <list>
#include <map>
#include <string>

#include "framework_service/base_data.h"
#include "framework_service/placement_reason.h"
#include "framework_service/resource_task.h"

inline constexpr char PSZ_SCRIPTED_TYPE[] = "Scripted";
inline constexpr unsigned int NUMERIC_SCRIPTED_JOB = 2000;

/// What the scripted plug-in does, where a test does not want what it does by itself. It owns the
/// type PSZ_SCRIPTED_TYPE, with fault shift and load balance, and puts every task into the first
/// available container that it is not in.
struct CScript {
    std::function<int(const std::list<CResourceTask>&, CTaskContainerMap&, unsigned long long&)>
        schedule;
    std::function<int(std::list<CResourceTask>&, CTaskContainerMap& from, CTaskContainerMap& to)>
        balance;
    std::function<int(std::list<CResourceTask>&)> readJob;
    std::function<bool()> shiftIn;
    std::function<void(std::list<CPlacementReason>&)> explain;
    std::map<std::string, int> calls;  ///< how often each operation was called
};

/// The plug-in exports it as "GetScript".
using ScriptFunc = CScript& (*)();
