#pragma once

#include <list>
#include <set>
#include <string>

#include "framework_service/base_data.h"

/// A plug-in that is loaded, and what it takes.
struct CLoadedPlugin {
    std::string strName;
    std::string strVersion;
    std::list<unsigned int> jobs;
    std::list<std::string> containers;
    ContainerTypeBindMap binds;  ///< real container type to its logic types
    std::list<std::string> faultShiftContainers;
    std::list<std::string> loadBalanceContainers;

    /// Adds every container type that the plug-in has an answer for.
    void AddKnownTypes(std::set<std::string>& types) const;
};

/// In the order of the names.
std::list<CLoadedPlugin> LoadedPlugins();
