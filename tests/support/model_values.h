#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "framework_service/container.h"

/// Everything that an object shows, by the name of what shows it: two objects that show the same
/// compare equal, and a difference names itself.
using Shown = std::map<std::string, std::string>;

Shown Show(const CSystemResource& resource);
Shown Show(const ORVA_CLOUD_STORAGE_ALLOC_INFO& allocInfo);
Shown Show(const CResourceTask& task);
Shown Show(const CContainer& container);

template <typename Item>
std::vector<Shown> ShowAll(const std::list<Item>& items) {
    std::vector<Shown> shown;
    for (const Item& item : items) {
        shown.push_back(Show(item));
    }
    return shown;
}

/// The ids in table order.
std::vector<std::string> TaskIds(const std::list<CResourceTask>& tasks);
std::vector<std::string> TaskIds(const CContainer& container);

CSystemResource MakeCpu(int32_t iCpu);
CSystemResource MakeDisk(int32_t iDisk);
CSystemResource MakeResource(int32_t iCpu, int32_t iMem, int32_t iIO, int32_t iNet, int32_t iDisk);
CResourceTask MakeTask(const std::string& strId, int32_t iDisk = 0, int32_t iNet = 0,
                       const KeyValueMap& privateInfo = {});
CContainer MakeContainer(const std::string& strNodeId, const std::string& strType);
