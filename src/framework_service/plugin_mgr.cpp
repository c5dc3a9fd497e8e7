#include "framework_service/plugin_mgr.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

#include "common_service/file_common.h"
#include "common_service/memstat.h"
#include "common_service/tarn_def.h"
#include "internal/plugin_folder.h"
#include "internal/process_life.h"
#include "operation_log/operation_log.h"

using namespace framework_internal;
using namespace operation_log;

CPluginMgr CPluginMgr::m_Instance;

namespace {

/// Deletes a record and takes it out of the host's count.
struct CRecordDeleter {
    void operator()(CPluginInfo* pInfo) const {
        delete pInfo;
        --g_hald_memstat[HALD_MEMSTAT_PLUGIN_INFO];
    }
};

using RecordPtr = std::unique_ptr<CPluginInfo, CRecordDeleter>;

constexpr char OPERATION_LOAD_SINGLE[] = "load single plugin.";

/// One step of taking a plug-in in, and what is logged when it fails.
struct CStep {
    const char* pszFailure;
    int (*pTake)(CPluginInfo& info, CPluginClaims& claims);
};

constexpr CStep STEPS[] = {
    {"fail to load plugin, name[%s]",
     [](CPluginInfo& info, CPluginClaims&) { return info.LoadLibrary(); }},
    {"fail to get job capability, name[%s]",
     [](CPluginInfo& info, CPluginClaims& c) { return info.GetSupportedJobs(c.jobs); }},
    {"fail to get container capability, name[%s]",
     [](CPluginInfo& info, CPluginClaims& c) { return info.GetSupportedContainers(c.containers); }},
    {"fail to get container bind table, name[%s]",
     [](CPluginInfo& info, CPluginClaims& c) {
         return info.GetContainerBindTable(c.containerBinds);
     }},
    {"fail to get support fault shift container capability, name[%s]",
     [](CPluginInfo& info, CPluginClaims& c) {
         return info.GetSupportFaultShiftContainers(c.faultShiftContainers);
     }},
    {"fail to get support load balance container capability, name[%s]",
     [](CPluginInfo& info, CPluginClaims& c) {
         return info.GetSupportLoadBalanceContainers(c.loadBalanceContainers);
     }},
};

/// The plug-in of the key; null, logged, when the table has none.
template <typename Table, typename LogKey>
IPlugin* FindPlugin(const CPlacedText& operation, const Table& table,
                    const typename Table::key_type& key, const char* pszMiss,
                    const char* pszNullRecord, LogKey logKey) {
    const auto it = table.find(key);
    if (it == table.end() || it->second == nullptr) {
        LogFailure(operation, ORVA_FAIL, it == table.end() ? pszMiss : pszNullRecord, logKey);
        return nullptr;
    }
    return it->second->GetPlugin();
}

std::string TextOf(unsigned int uiJob) {
    return std::to_string(uiJob);
}

const std::string& TextOf(const std::string& strKey) {
    return strKey;
}

/// Gives the key to the plug-in unless another has it, which is noted. Is it new?
template <typename Table>
bool Claim(Table& table, const typename Table::key_type& key, CPluginInfo* pRecord,
           CLostClaim::KIND eKind, CPluginFile& file) {
    const auto [it, bNew] = table.emplace(key, pRecord);
    if (it->second != pRecord) {
        file.lost.push_back({eKind, TextOf(key), it->second->GetLibName()});
    }
    return bNew;
}

/// The file whose plug-in binds the real type.
std::string FindBinder(const std::list<CPluginFile>& files, const std::string& strRealType) {
    const auto it = std::find_if(files.begin(), files.end(), [&](const CPluginFile& file) {
        return file.held.containerBinds.count(strRealType) != 0;
    });
    return it != files.end() ? it->strFile : std::string();
}

/// The destructors of a plug-in's static objects run at exit before those of this library. A
/// function that is registered after the plug-in was loaded runs before both, so that a process
/// which ends with plug-ins still loaded takes them down while they can still answer.
void UnLoadAtExit() {
    CPluginMgr::Instance().UnLoadAllPlugin();
}

}  // namespace

CPluginMgr::~CPluginMgr() {
    UnLoadAllPlugin();
}

int CPluginMgr::FindAllPlugin(std::list<std::string>& pluginList) {
    constexpr char OPERATION[] = "find all plugin";
    pluginList.clear();
    std::string strDir;
    if (const int iRet = GetPluginFolder(strDir); iRet != ORVA_SUCCEED) {
        return LogFailure(OPERATION, iRet, "get lib dir failed.");
    }
    if (const int iRet = CFileCommon::GetDirFileList(strDir, pluginList); iRet != ORVA_SUCCEED) {
        return LogFailure(OPERATION, iRet, "get file list from dir[%s] failed.", strDir.c_str());
    }
    return ORVA_SUCCEED;
}

int CPluginMgr::LoadAllPlugin() {
    constexpr char OPERATION[] = "load all plugin";
    std::list<std::string> pluginList;
    if (const int iRet = FindAllPlugin(pluginList); iRet != ORVA_SUCCEED) {
        return LogFailure(OPERATION, iRet, "find plugin failed.");
    }
    int iResult = ORVA_SUCCEED;
    for (const std::string& strName : pluginList) {
        if (iResult != ORVA_SUCCEED) {
            CPluginFile& file = m_pluginFiles.emplace_back();
            file.strFile = strName;
            file.strFailure = "not tried, since a file before it did not load";
            continue;
        }
        iResult = LoadSinglePlugin(strName);
        if (iResult != ORVA_SUCCEED) {
            LogFailure(OPERATION, ORVA_FAIL, "load single plugin, name[%s]", strName.c_str());
            continue;
        }
        std::atexit(UnLoadAtExit);
    }
    return iResult;
}

int CPluginMgr::LoadSinglePlugin(const std::string& strName) {
    CPluginFile& file = m_pluginFiles.emplace_back();
    file.strFile = strName;
    auto* const pNew = new (std::nothrow) CPluginInfo(strName);
    if (pNew == nullptr) {
        file.strFailure = "no memory";
        return LogFailure(OPERATION_LOAD_SINGLE, ORVA_ALLOC_MEMORY_ERROR,
                          "fail to new plugininfo, name[%s]", strName.c_str());
    }
    ++g_hald_memstat[HALD_MEMSTAT_PLUGIN_INFO];
    RecordPtr pInfo(pNew);

    CPluginClaims claims;
    for (const CStep& step : STEPS) {
        if (const int iRet = step.pTake(*pInfo, claims); iRet != ORVA_SUCCEED) {
            file.strFailure = pInfo->GetFailure();
            pInfo.reset();
            return LogFailure(OPERATION_LOAD_SINGLE, iRet, step.pszFailure, strName.c_str());
        }
    }
    file.pPlugin = pInfo->GetPlugin();
    file.strName = pInfo->GetName();
    TakeClaims(pInfo.get(), claims, file);
    CPluginInfo* const pRecord = pInfo.release();
    if (!Claim(m_mapPlugin, pRecord->GetName(), pRecord, CLostClaim::KIND_NAME, file)) {
        // Its name is taken: it keeps the claims it won and is never unloaded.
        KeepForProcessLife(pRecord);
    }
    return ORVA_SUCCEED;
}

void CPluginMgr::TakeClaims(CPluginInfo* pRecord, CPluginClaims& claims, CPluginFile& file) {
    for (const unsigned int uiJob : claims.jobs) {
        if (Claim(m_jobCapabilityMap, uiJob, pRecord, CLostClaim::KIND_JOB, file)) {
            file.held.jobs.push_back(uiJob);
        }
    }
    for (const std::string& strType : claims.containers) {
        if (Claim(m_containerCapabilityMap, strType, pRecord, CLostClaim::KIND_CONTAINER, file)) {
            file.held.containers.push_back(strType);
        }
    }
    for (const auto& bind : claims.containerBinds) {
        if (m_containerTypeBindMap.insert(bind).second) {
            file.held.containerBinds.insert(bind);
        } else {
            file.lost.push_back({CLostClaim::KIND_CONTAINER_BIND, bind.first,
                                 FindBinder(m_pluginFiles, bind.first)});
        }
    }
    file.held.faultShiftContainers = claims.faultShiftContainers;
    file.held.loadBalanceContainers = claims.loadBalanceContainers;
    m_supportFaultShiftContainerList.splice(m_supportFaultShiftContainerList.end(),
                                            claims.faultShiftContainers);
    m_supportLoadBalanceContainerList.splice(m_supportLoadBalanceContainerList.end(),
                                             claims.loadBalanceContainers);
}

int CPluginMgr::UnLoadAllPlugin() {
    for (const auto& [strName, pRecord] : m_mapPlugin) {
        if (pRecord == nullptr) {
            continue;
        }
        const RecordPtr pInfo(pRecord);
        if (const int iRet = pInfo->UnLoadLibrary(); iRet != ORVA_SUCCEED) {
            LogFailure("unload single plugin.", iRet, "fail to unload plugin, name[%s]",
                       strName.c_str());
        }
    }
    m_mapPlugin.clear();
    m_jobCapabilityMap.clear();
    m_containerCapabilityMap.clear();
    m_containerTypeBindMap.clear();
    m_supportFaultShiftContainerList.clear();
    m_supportLoadBalanceContainerList.clear();
    m_pluginFiles.clear();
    return ORVA_SUCCEED;
}

IPlugin* CPluginMgr::GetPluginByName(const std::string& strName) {
    return FindPlugin("get plugin by name", m_mapPlugin, strName, "find plugin failed, name[%s]",
                      "plugin is null, name[%s]", strName.c_str());
}

IPlugin* CPluginMgr::GetPluginByContainerType(const std::string& strType) {
    return FindPlugin("get plugin by container type", m_containerCapabilityMap, strType,
                      "find plugin failed, name[%s]", "plugin is null, name[%s]", strType.c_str());
}

IPlugin* CPluginMgr::GetPluginByJobType(uint32_t iType) {
    return FindPlugin("get plugin by job type", m_jobCapabilityMap, iType,
                      "find plugin failed, type[%d]", "plugin is null, type[%d]", iType);
}

int CPluginMgr::GetLogicContainerTypeByRealType(const std::string& strContainerType,
                                                std::list<std::string>& logicTypeList) {
    logicTypeList.clear();
    const auto it = m_containerTypeBindMap.find(strContainerType);
    if (it == m_containerTypeBindMap.end()) {
        return LogFailure("get logic container by real type", ORVA_FAIL, "can not find, type[%s]",
                          strContainerType.c_str());
    }
    logicTypeList = it->second;
    return ORVA_SUCCEED;
}

bool CPluginMgr::IsContainerSupportFaultShift(const std::string& strContainerType) {
    const bool bSupported =
        std::find(m_supportFaultShiftContainerList.begin(), m_supportFaultShiftContainerList.end(),
                  strContainerType) != m_supportFaultShiftContainerList.end();
    if (!bSupported) {
        LogFailure("is container support fault shift", ORVA_FAIL, "do not support, type[%s]",
                   strContainerType.c_str());
    }
    return bSupported;
}

void CPluginMgr::RoutingAll() {
    for (const auto& [strName, pRecord] : m_mapPlugin) {
        if (pRecord != nullptr) {
            pRecord->GetPlugin()->Routing();
        }
    }
}
