#include "cluster_engine/document.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "cluster_engine/cluster_document.h"
#include "cluster_engine/library_document.h"
#include "cluster_engine/load_balance.h"
#include "common_service/data/version_znode.h"
#include "common_service/tarn_def.h"
#include "common_service/tool_help.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "framework_service/schedule_mgr.h"
#include "framework_service/standard_task_mgr.h"
#include "orva_plugin_service/tarn_orva_data.h"

namespace {

/// A document that the library keeps a copy of and reads anew by an operation of its own.
template <typename Document, typename Reload>
CAnswer ReloadCopy(CCluster& cluster, const ORVA_STORE_NODE& node, Document kept,
                   const Reload& reload) {
    Document read;
    bool bAbsent = false;
    CAnswer answer = ReadLibraryDocument(cluster, node, read, bAbsent);
    if (answer.eFault != EFault::NONE || bAbsent || LibraryText(read) == LibraryText(kept)) {
        return answer;
    }
    if (const int iCode = reload(); iCode != ORVA_SUCCEED) {
        return RefuseWrite(node, iCode);
    }
    TellReloaded(cluster, node);
    return answer;
}

CAnswer ReloadCgList(CCluster& cluster) {
    CFrameworkCGCommon& registry = CFrameworkCGCommon::Instance();
    CClusterCGInfoList kept;
    registry.GetClusterCGInfoList(kept);
    return ReloadCopy(cluster, STORE_NODE_CG_LIST, kept,
                      [&] { return registry.ReloadClusterCGInfoList(); });
}

CAnswer ReloadCenterDb(CCluster& cluster) {
    CFrameworkCommon& framework = CFrameworkCommon::Instance();
    return ReloadCopy(cluster, STORE_NODE_CENTER_DB, framework.GetClusterDBInfo(),
                      [&] { return framework.ParseCDBFromZK(false); });
}

CAnswer ReloadManager(CCluster& cluster) {
    CFrameworkCommon& framework = CFrameworkCommon::Instance();
    return ReloadCopy(cluster, STORE_NODE_MGR, framework.GetClusterMGRInfo(),
                      [&] { return framework.ParseMGRFromZK(false); });
}

/// The engine never writes the configuration: also the same text, written once more, asks for
/// another period.
CAnswer ReloadConfiguration(CCluster& cluster) {
    CClusterConfigZNodeInfo read;
    bool bAbsent = false;
    CAnswer answer = ReadLibraryDocument(cluster, STORE_NODE_CLUSTER_CONFIG, read, bAbsent);
    if (answer.eFault != EFault::NONE || bAbsent) {
        return answer;
    }
    if (const int iCode = CFrameworkCommon::Instance().InitClusterConfigFromZK();
        iCode != ORVA_SUCCEED) {
        return RefuseWrite(STORE_NODE_CLUSTER_CONFIG, iCode);
    }
    RenewBalance(cluster);
    TellReloaded(cluster, STORE_NODE_CLUSTER_CONFIG);
    return answer;
}

/// At once, as what waits is not: who asks is told whether it is written.
CAnswer WriteVersions(CCluster& cluster, CVersionZNode& versions) {
    const int iCode =
        cluster.store.WriteTogether({{STORE_NODE_VERSION.pszSuffix, LibraryText(versions)}});
    return iCode == ORVA_SUCCEED ? CAnswer() : RefuseWrite(STORE_NODE_VERSION, iCode);
}

/// A decision number that is lower than ours would let new decisions count less than old ones: it
/// is put right in the store before it is brought in.
CAnswer ReloadVersion(CCluster& cluster) {
    CScheduleMgr& versions = CScheduleMgr::Instance();
    CVersionZNode read;
    bool bAbsent = false;
    CAnswer answer = ReadLibraryDocument(cluster, STORE_NODE_VERSION, read, bAbsent);
    const bool bSame = read.GetDecisionVerNum() == versions.GetDecisionVerNum() &&
                       read.GetMasterVerNum() == versions.GetMasterVerNum();
    if (answer.eFault != EFault::NONE || bAbsent || bSame) {
        return answer;
    }
    if (read.GetDecisionVerNum() < versions.GetDecisionVerNum()) {
        read.SetDecisionVerNum(versions.GetDecisionVerNum());
        answer = WriteVersions(cluster, read);
    }
    if (answer.eFault != EFault::NONE) {
        return answer;
    }
    if (const int iCode = versions.Reload(); iCode != ORVA_SUCCEED) {
        return RefuseWrite(STORE_NODE_VERSION, iCode);
    }
    TellReloaded(cluster, STORE_NODE_VERSION);
    return answer;
}

auto Tie(const ORVA_CLOUD_STORAGE_ALLOC_INFO& info) {
    return std::tie(info.cloudStorageCode, info.allocStorage, info.usedStorage, info.dns,
                    info.path);
}

/// Does the container have what the entry says already?
bool IsSame(const CContainer& container, const CloudStorageInfo& entry) {
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocations;
    container.GetAllocInfoList(allocations);
    return container.GetServiceType() == entry.strServiceType &&
           container.GetProductType() == entry.strProductType &&
           container.GetReqStorage() == entry.iReqStorage &&
           container.GetReqPicStorage() == entry.iReqPicStorage &&
           container.GetBitRate() == entry.iLowPriorityBitRate &&
           std::equal(allocations.begin(), allocations.end(), entry.allocInfo.begin(),
                      entry.allocInfo.end(),
                      [](const auto& left, const auto& right) { return Tie(left) == Tie(right); });
}

/// The entry as the one task of its container.
CResourceTask TaskOf(const CloudStorageInfo& entry) {
    const auto toText = [](int32_t iValue) { return HALD::CToolHelp::IntToStr(iValue, false); };
    CResourceTask task;
    task.InsertSingleKeyValue(PSZ_TASK_PRODUCT_TYPE, entry.strProductType);
    task.InsertSingleKeyValue(PSZ_TASK_SERVICE_TYPE, entry.strServiceType);
    task.InsertSingleKeyValue(PSZ_TASK_REQ_STORAGE, toText(entry.iReqStorage));
    task.InsertSingleKeyValue(PSZ_TASK_REQ_PIC_STORAGE, toText(entry.iReqPicStorage));
    task.InsertSingleKeyValue(PSZ_TASK_LOW_PRI_BIT_RATE, toText(entry.iLowPriorityBitRate));
    for (const ORVA_CLOUD_STORAGE_ALLOC_INFO& allocation : entry.allocInfo) {
        task.SetAllocInfoList(allocation);
    }
    return task;
}

/// The entries that differ go to their containers as at a start.
CAnswer ReloadCloudStorage(CCluster& cluster) {
    CClusterCloudStorageZNodeInfo document;
    bool bAbsent = false;
    CAnswer answer = ReadLibraryDocument(cluster, STORE_NODE_CLOUD_STORAGE, document, bAbsent);
    if (answer.eFault != EFault::NONE || bAbsent) {
        return answer;
    }
    ContainerMap containers;
    CContainerMgr::Instance().GetAllContainer(containers);
    bool bChanged = false;
    for (const auto& [strNodeId, entry] : document.GetCloudStorageInfoMap()) {
        const CContainerAddr addr(strNodeId, CONTAINER_TYPE_CLOUD_STORAGE);
        const auto it = containers.find(addr);
        if (it != containers.end() && it->first == addr && !IsSame(it->second, entry)) {
            CContainerMgr::Instance().SetResourceTask(addr, {TaskOf(entry)},
                                                      CONTAINER_STATUS_REPORT_REQ);
            bChanged = true;
        }
    }
    if (bChanged) {
        TellReloaded(cluster, STORE_NODE_CLOUD_STORAGE);
    }
    return answer;
}

CClusterCGInfo EntryOf(const CCgEntry& input) {
    CClusterCGInfo entry;
    entry.SetCGCode(input.strNodeId);
    entry.SetFloatCode(input.strFloatCode);
    entry.SetFloatIp(input.strFloatIp);
    entry.SetDecVerNum(std::to_string(CScheduleMgr::Instance().GetDecisionVerNum()));
    return entry;
}

struct CRuleText {
    int iCode;
    const char* pszText;
};

constexpr CRuleText CG_RULES[] = {
    {ORVA_TARN_FCG_CODE_EXIST, "the float code is taken"},
    {ORVA_TARN_FCG_IP_EXIST, "the float address is taken"},
    {ORVA_TARN_NODE_HAS_BEEN_CG, "the node has an entry already"},
    {ORVA_TARN_FCG_EXCEED_MAX, "there may be one entry for every two nodes"},
    {ORVA_TARN_CG_NODE_NOT_EXIST, "the cluster has no such node"},
};

/// What came of a change of the CG list.
CAnswer AnswerCg(CCluster& cluster, int iCode, const std::string& strNodeId,
                 const std::string& strWhat) {
    const auto rule = std::find_if(std::begin(CG_RULES), std::end(CG_RULES),
                                   [&](const CRuleText& one) { return one.iCode == iCode; });
    if (rule != std::end(CG_RULES)) {
        return CAnswer::Refuse(EFault::REFUSED_BY_RULE, rule->pszText);
    }
    if (iCode != ORVA_SUCCEED) {
        return RefuseWrite(STORE_NODE_CG_LIST, iCode);
    }
    CEvent event;
    event.eEvent = EEvent::CG_CHANGED;
    event.strNodeId = strNodeId;
    event.strCause = strWhat;
    cluster.Tell(std::move(event));
    return {};
}

/// What the library asks of a new entry, it does not ask of one that changes.
int JudgeUpdate(const std::list<CClusterCGInfo>& entries, const CCgEntry& input) {
    for (const CClusterCGInfo& other : entries) {
        if (other.GetFloatCode() == input.strFloatCode) {
            continue;
        }
        if (other.GetNodeCode() == input.strNodeId) {
            return ORVA_TARN_NODE_HAS_BEEN_CG;
        }
        if (other.GetFloatIp() == input.strFloatIp) {
            return ORVA_TARN_FCG_IP_EXIST;
        }
    }
    return CNodeMgr::Instance().IsNodeExist(input.strNodeId) ? ORVA_SUCCEED
                                                             : ORVA_TARN_CG_NODE_NOT_EXIST;
}

/// Looks at a change of the CG list before it is made.
CAnswer LookAtCg(CCluster& cluster, const std::string& strFloatIp) {
    if (!IsId(strFloatIp)) {
        return CAnswer::Refuse(EFault::BAD_INPUT, "float_ip: must be printable, of 1 to 128 bytes");
    }
    return !cluster.store.IsAway()
               ? CAnswer()
               : CAnswer::Refuse(EFault::STORE_AWAY, STORE_NODE_CG_LIST.pszSuffix);
}

}  // namespace

CAnswer ReloadDocument(CCluster& cluster, const CDocumentChanged& input) {
    static constexpr CAnswer (*RELOADS[])(CCluster&) = {
        &ReloadCluster,  &ReloadCloudStorage, &ReloadConfiguration, &ReloadCgList,
        &ReloadCenterDb, &ReloadManager,      &ReloadVersion};
    if (cluster.store.IsAway()) {
        return CAnswer::Refuse(EFault::STORE_AWAY, NameOf(input.eDocument));
    }
    return RELOADS[static_cast<std::size_t>(input.eDocument)](cluster);
}

CAnswer AddCg(CCluster& cluster, const CCgAdd& input) {
    if (CAnswer answer = LookAtCg(cluster, input.strFloatIp); answer.eFault != EFault::NONE) {
        return answer;
    }
    const int iCode = CFrameworkCGCommon::Instance().AddSingleClusterCGInfo(EntryOf(input));
    return AnswerCg(cluster, iCode, input.strNodeId, "added " + input.strFloatCode);
}

CAnswer UpdateCg(CCluster& cluster, const CCgUpdate& input) {
    if (CAnswer answer = LookAtCg(cluster, input.strFloatIp); answer.eFault != EFault::NONE) {
        return answer;
    }
    CFrameworkCGCommon& registry = CFrameworkCGCommon::Instance();
    CClusterCGInfoList list;
    registry.GetClusterCGInfoList(list);
    if (!list.IsCGExist(input.strFloatCode)) {
        return CAnswer::Refuse(EFault::UNKNOWN_ENTRY, input.strFloatCode);
    }
    std::list<CClusterCGInfo> entries;
    list.GetClusterCGInfoList(entries);
    int iCode = JudgeUpdate(entries, input);
    iCode = iCode != ORVA_SUCCEED ? iCode : registry.UpdateClusterCGInfoByFloatCode(EntryOf(input));
    return AnswerCg(cluster, iCode, input.strNodeId, "updated " + input.strFloatCode);
}

CAnswer RemoveCg(CCluster& cluster, const CCgRemove& input) {
    CFrameworkCGCommon& registry = CFrameworkCGCommon::Instance();
    CClusterCGInfoList list;
    registry.GetClusterCGInfoList(list);
    CClusterCGInfo entry;
    if (!list.GetCGInfoByFloatCode(input.strFloatCode, entry)) {
        return CAnswer::Refuse(EFault::UNKNOWN_ENTRY, input.strFloatCode);
    }
    if (cluster.store.IsAway()) {
        return CAnswer::Refuse(EFault::STORE_AWAY, STORE_NODE_CG_LIST.pszSuffix);
    }
    const int iCode = registry.RemoveClusterCGInfo(input.strFloatCode);
    return AnswerCg(cluster, iCode, entry.GetNodeCode(), "removed " + input.strFloatCode);
}

CAnswer Promote(CCluster& cluster, const CPromote& input) {
    CFrameworkCommon& framework = CFrameworkCommon::Instance();
    const CClusterDBZNodeInfo before = framework.GetClusterDBInfo();
    CClusterDBInfo database;
    if (!before.GetCDBInfo(input.strNodeId, database)) {
        return CAnswer::Refuse(EFault::UNKNOWN_ENTRY, "database of " + input.strNodeId);
    }
    if (before.IsMasterDB(input.strNodeId)) {
        return CAnswer::Refuse(EFault::REFUSED_BY_RULE, "it is the master already");
    }
    if (cluster.store.IsAway()) {
        return CAnswer::Refuse(EFault::STORE_AWAY, STORE_NODE_CENTER_DB.pszSuffix);
    }
    database.SetDBType(CLUSTER_DB_MASTER);
    if (const int iCode = framework.UpdateClusterCDB(database, true); iCode != ORVA_SUCCEED) {
        framework.GetClusterDBInfo() = before;
        return RefuseWrite(STORE_NODE_CENTER_DB, iCode);
    }
    framework.IncreaseCDBVersion();
    CEvent event;
    event.eEvent = EEvent::PROMOTED;
    event.strNodeId = input.strNodeId;
    event.strFrom = before.GetMasterDB().GetNodeId();
    cluster.Tell(std::move(event));
    return {};
}

/// The library raises its number also when the write fails. So the number is written first: then
/// memory and store agree, whatever becomes of the library's own write.
CAnswer RaiseMasterVersion(CCluster& cluster) {
    if (cluster.store.IsAway()) {
        return CAnswer::Refuse(EFault::STORE_AWAY, STORE_NODE_VERSION.pszSuffix);
    }
    CScheduleMgr& versions = CScheduleMgr::Instance();
    CVersionZNode document;
    document.SetDecisionVerNum(versions.GetDecisionVerNum());
    document.SetMasterVerNum(versions.GetMasterVerNum() + 1);
    CAnswer answer = WriteVersions(cluster, document);
    if (answer.eFault != EFault::NONE) {
        return answer;
    }
    versions.IncreaseMasterVerNum();
    CEvent event;
    event.eEvent = EEvent::MASTER_VERSION;
    event.strCause = std::to_string(versions.GetMasterVerNum());
    cluster.Tell(std::move(event));
    return answer;
}

CAnswer ReadStandardTasks(CCluster& cluster) {
    CStdTaskMgr& standard = CStdTaskMgr::Instance();
    standard.Load();
    standard.GetAllStandardTask(cluster.state.standardTasks);
    CEvent event;
    event.eEvent = EEvent::STANDARD_TASKS;
    event.uiTasks = static_cast<uint32_t>(cluster.state.standardTasks.size());
    cluster.Tell(std::move(event));
    return {};
}
