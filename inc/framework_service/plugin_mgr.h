#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <string>

#include "framework_service/IPlugin.h"
#include "framework_service/base_data.h"
#include "framework_service/plugin_info.h"

/// The plug-ins of this process and who does what: which takes a job type, which owns a container
/// type, how real types bind to logic types, which types support fault shift and load balance. Of
/// two claims to the same key the first loaded stays, in silence. No lock: loading and unloading
/// must not run beside anything else, lookups may run beside each other.
class CPluginMgr {
public:
    using PluginMap = std::map<std::string, CPluginInfo*>;
    using JobCapabilityMap = std::map<unsigned int, CPluginInfo*>;
    using ContainerCapabilityMap = std::map<std::string, CPluginInfo*>;

    static CPluginMgr& Instance() { return m_Instance; }

    CPluginMgr(const CPluginMgr&) = delete;
    CPluginMgr& operator=(const CPluginMgr&) = delete;

    /// Unloads what is loaded.
    virtual ~CPluginMgr();

    /// Loads every file of the folder "plugins" below the library directory, in the order of the
    /// listing. Returns 0, or, logged, the code of the first failure, which ends the loading;
    /// plug-ins loaded before stay.
    int LoadAllPlugin();

    /// Takes down every plug-in that is found by name, and forgets all. Always 0.
    int UnLoadAllPlugin();

    /// Appends the name of every plug-in, in the order of the names.
    void GetAllPluginName(std::list<std::string>& nameList) const;

    /// @name The plug-in of that key; null, logged, when there is none
    /// @{
    IPlugin* GetPluginByName(const std::string& strName);
    IPlugin* GetPluginByContainerType(const std::string& strType);
    IPlugin* GetPluginByJobType(uint32_t iType);
    /// @}

    /// Replaces the list by the logic types of the real type. Returns 0; or, logged, ORVA_FAIL with
    /// an empty list when no plug-in binds the type.
    int GetLogicContainerTypeByRealType(const std::string& strContainerType,
                                        std::list<std::string>& logicTypeList);

    /// A type that is not listed is an error line.
    bool IsContainerSupportFaultShift(const std::string& strContainerType);

    /// Calls Routing on every plug-in that is found by name, in the order of the names.
    void RoutingAll();

private:
    CPluginMgr() = default;

    int LoadSinglePlugin(const std::string& strName);
    int FindAllPlugin(std::list<std::string>& pluginList);

    static CPluginMgr m_Instance;

    PluginMap m_mapPlugin;  ///< owns the records
    JobCapabilityMap m_jobCapabilityMap;
    ContainerCapabilityMap m_containerCapabilityMap;
    ContainerTypeBindMap m_containerTypeBindMap;
    std::list<std::string> m_supportFaultShiftContainerList;
    std::list<std::string> m_supportLoadBalanceContainerList;
};
