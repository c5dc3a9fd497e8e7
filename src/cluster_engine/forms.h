#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "framework_service/base_data.h"
#include "framework_service/resource_task.h"

/// What inputs, answers, events and the engine's documents have in common, each with its JSON form
/// (json_fields.h).

/// CSystemResource: figures in the unit of whoever reports them.
struct CFigures {
    int32_t iCpu = 0;
    int32_t iMem = 0;
    int32_t iIo = 0;
    int32_t iNet = 0;
    int32_t iDisk = 0;

    CSystemResource ToResource() const;
    bool operator==(const CFigures& other) const;

    /// Is any of them?
    /// @{
    bool IsBelowZero() const;
    bool IsAbove(int32_t iMost) const;
    /// @}

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.May("cpu", self.iCpu);
        form.May("mem", self.iMem);
        form.May("io", self.iIo);
        form.May("net", self.iNet);
        form.May("disk", self.iDisk);
    }
};

CFigures FiguresOf(const CSystemResource& resource);

/// CContainerAddr.
struct CPlaceForm {
    std::string strNodeId;
    std::string strType;

    CPlaceForm() = default;
    // NOLINTNEXTLINE(google-explicit-constructor): an address turns into its form
    CPlaceForm(const CContainerAddr& addr)
        : strNodeId(addr.GetNodeId()), strType(addr.GetContainerType()) {}

    CContainerAddr ToAddr() const { return {strNodeId, strType}; }
    bool operator==(const CPlaceForm& other) const {
        return strNodeId == other.strNodeId && strType == other.strType;
    }

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("node", self.strNodeId);
        form.Id("type", self.strType);
    }
};

/// CResourceTask as a container is given it.
struct CTaskForm {
    std::string strTaskId;
    std::string strName;
    bool bMovable = true;
    CFigures costs;
    std::map<std::string, std::string> privateInfo;

    CTaskForm() = default;
    explicit CTaskForm(const CResourceTask& task);

    CResourceTask ToTask() const;
    bool operator==(const CTaskForm& other) const;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("id", self.strTaskId);
        form.May("name", self.strName);
        form.May("movable", self.bMovable, true);
        form.May("costs", self.costs);
        form.May("private", self.privateInfo);
    }
};
