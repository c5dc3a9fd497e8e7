#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <string>

#include "framework_service/IPlugin.h"
#include "framework_service/base_data.h"
#include "framework_service/plugin_info.h"

/// What a plug-in takes.
struct CPluginClaims {
    std::list<unsigned int> jobs;
    std::list<std::string> containers;
    ContainerTypeBindMap containerBinds;  ///< real container type to its logic types
    std::list<std::string> faultShiftContainers;
    std::list<std::string> loadBalanceContainers;
};

/// A key that a plug-in claimed and that another had before.
struct CLostClaim {
    enum KIND { KIND_NAME, KIND_JOB, KIND_CONTAINER, KIND_CONTAINER_BIND };

    KIND eKind;
    std::string strKey;   ///< a job type in digits
    std::string strFile;  ///< the file of the plug-in that has it
};

/// A file of the plug-in folder, and what became of it when it was loaded.
struct CPluginFile {
    std::string strFile;         ///< its name in the folder
    std::string strFailure;      ///< why it is not loaded, in words; empty when it is
    IPlugin* pPlugin = nullptr;  ///< belongs to the plug-in; null when it is not loaded
    std::string strName;         ///< of the plug-in
    CPluginClaims held;
    std::list<CLostClaim> lost;
};

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

    /// What became of each file since the last unload, in the order of the listing: also of those
    /// that did not load, or were not tried since one before them failed. Kept from the load, so
    /// that no plug-in is asked. The copies are the caller's; they say nothing of a later load, and
    /// their objects must not be used after the unload.
    std::list<CPluginFile> GetPluginFiles() const { return m_pluginFiles; }

    /// Takes down every plug-in that is found by name, and forgets all. Always 0.
    int UnLoadAllPlugin();

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

    /// Gives the plug-in what it claims and is not taken, and notes both at its file.
    void TakeClaims(CPluginInfo* pRecord, CPluginClaims& claims, CPluginFile& file);

    static CPluginMgr m_Instance;

    PluginMap m_mapPlugin;  ///< owns the records
    JobCapabilityMap m_jobCapabilityMap;
    ContainerCapabilityMap m_containerCapabilityMap;
    ContainerTypeBindMap m_containerTypeBindMap;
    std::list<std::string> m_supportFaultShiftContainerList;
    std::list<std::string> m_supportLoadBalanceContainerList;
    std::list<CPluginFile> m_pluginFiles;
};
