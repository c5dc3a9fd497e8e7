#include "cluster_engine/cloud_storage.h"

#include <iterator>
#include <map>
#include <utility>

#include "common_service/tarn_def.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/container_mgr.h"
#include "orva_plugin_service/cloud_storage_param.h"

namespace {

/// The service type whose containers ask for an update with their reports; a save answers it.
constexpr char PSZ_UPDATED_SERVICE[] = "MPU-R";

ORVA_CLOUD_STORAGE_ALLOC_INFO ToAllocation(const CAllocationForm& form) {
    ORVA_CLOUD_STORAGE_ALLOC_INFO allocation;
    allocation.cloudStorageCode = form.strPool;
    allocation.allocStorage = form.iAllocated;
    allocation.usedStorage = form.iUsed;
    allocation.freeStorage = form.iFree;
    allocation.dns = form.strDns;
    allocation.path = form.strPath;
    return allocation;
}

std::list<CResourceTask> TableOf(const CContainerReport& report) {
    std::list<CResourceTask> table;
    for (const CReportedTask& reported : report.tasks.value_or(std::vector<CReportedTask>())) {
        CResourceTask& task = table.emplace_back();
        task.SetTaskId(reported.strTaskId);
        task.SetTaskName(reported.name.value_or(""));
        for (const auto& [strKey, strValue] :
             reported.privateInfo.value_or(std::map<std::string, std::string>())) {
            task.InsertSingleKeyValue(strKey, strValue);
        }
    }
    if (table.empty() && report.iMessageType == ALLOC_CLOUD_STORAGE_NOTIFY_RSP) {
        table.emplace_back();  // the allocations alone count, and belong to a task
    }
    for (CResourceTask& task : table) {
        for (const CAllocationForm& form : report.allocations) {
            task.SetAllocInfoList(ToAllocation(form));
        }
    }
    return table;
}

CContainerAddr StorageOf(const std::string& strNodeId) {
    return {strNodeId, CONTAINER_TYPE_CLOUD_STORAGE};
}

/// Shows the plug-in, as extended parameters, what was decided and is not reported yet.
void ShowPending(const CCluster& cluster, const std::string& strNodeId,
                 const std::string& strPool) {
    int64_t llTaken = 0;
    int64_t llReleased = 0;
    for (const CStoragePending& pending : cluster.state.storagePending) {
        const auto it = pending.sizes.find(strPool);
        if (pending.strNodeId == strNodeId && it != pending.sizes.end()) {
            (pending.bReleased ? llReleased : llTaken) += it->second;
        }
    }
    CContainerMgr& containers = CContainerMgr::Instance();
    containers.SetExtParamValueByKey(StorageOf(strNodeId), TakenParam(strPool),
                                     std::to_string(llTaken));
    containers.SetExtParamValueByKey(StorageOf(strNodeId), ReleasedParam(strPool),
                                     std::to_string(llReleased));
}

void ShowPending(const CCluster& cluster, const CStoragePending& pending) {
    for (const auto& [strPool, llSize] : pending.sizes) {
        ShowPending(cluster, pending.strNodeId, strPool);
    }
}

template <typename Predicate>
void ForgetPending(CCluster& cluster, const Predicate& isOver) {
    std::vector<CStoragePending> over;
    std::vector<CStoragePending> left;
    for (const CStoragePending& pending : cluster.state.storagePending) {
        (isOver(pending) ? over : left).push_back(pending);
    }
    cluster.state.storagePending = std::move(left);
    for (const CStoragePending& pending : over) {
        ShowPending(cluster, pending);
    }
}

EFault FaultOf(int iCode) {
    switch (iCode) {
        case ORVA_XML_INVALID:
            return EFault::BAD_INPUT;
        case ORVA_PARA_INVALID:
            return EFault::REFUSED_BY_RULE;
        case ORVA_SYS_NO_SUPPORT:
            return EFault::PLUGIN_REFUSED;
        default:
            return EFault::NO_ROOM;
    }
}

/// What the plug-in has against a request, as far as its code says.
std::string ReasonOf(int iCode) {
    switch (iCode) {
        case ORVA_XML_INVALID:
            return "xml: the plug-in cannot read it";
        case ORVA_PARA_INVALID:
            return "the plug-in does not allow one of the values";
        default:
            return "the plug-in answers with code " + std::to_string(iCode);
    }
}

std::string InWords(const CStorageShare& share) {
    std::string strText;
    for (const auto& [strPool, llSize] : share.sizes) {
        strText += (strText.empty() ? "" : ", ") + std::to_string(llSize) + " of " + strPool;
    }
    return strText;
}

/// Hands each node its share with its next report, and counts it until the node has reported it.
void HandOut(CCluster& cluster, const std::vector<CStorageShare>& shares, bool bReleased) {
    for (const CStorageShare& share : shares) {
        cluster.state.storagePending.push_back(
            {share.strNodeId, share.sizes, share.strXml, bReleased,
             cluster.state.iNow + cluster.settings.iStorageCounts, 0});
        ShowPending(cluster, cluster.state.storagePending.back());
        cluster.Tell(ContainerEvent(bReleased ? EEvent::STORAGE_REDUCED : EEvent::STORAGE_ALLOCATED,
                                    StorageOf(share.strNodeId), InWords(share)));
    }
}

/// The plug-in for a request that may be decided now; null with the refusal.
CPluginRecord* Accept(CCluster& cluster, const std::string& strXml, CAnswer& refusal) {
    CPluginRecord* const pPlugin = cluster.plugins.OfType(CONTAINER_TYPE_CLOUD_STORAGE);
    if (pPlugin == nullptr) {
        refusal = CAnswer::Refuse(EFault::NO_PLUGIN, CONTAINER_TYPE_CLOUD_STORAGE);
    } else if (strXml.size() > cluster.settings.uiXmlBytes) {
        refusal = CAnswer::Refuse(EFault::TOO_MUCH, "xml");
    } else if (cluster.store.IsAway()) {
        refusal = CAnswer::Refuse(EFault::STORE_AWAY, "");
    } else {
        return pPlugin;
    }
    return nullptr;
}

/// Carries out what the plug-in decided.
CAnswer TakeShares(CCluster& cluster, CPluginRecord& plugin, const CCallResult& result,
                   const std::vector<CStorageShare>& shares, bool bReleased) {
    if (result.IsFailure()) {
        return CAnswer::Refuse(result.eFault, result.strWhy);
    }
    if (result.iCode != ORVA_SUCCEED) {
        return CAnswer::Refuse(FaultOf(result.iCode), ReasonOf(result.iCode));
    }
    HandOut(cluster, shares, bReleased);
    CAnswer answer;
    cluster.plugins.StorageReport(plugin, !bReleased, answer.strXml);
    return answer;
}

using CStorageMap = std::map<std::string, CloudStorageInfo>;

/// The document's entries; false when it cannot be read.
bool ReadEntries(CCluster& cluster, CStorageMap& entries) {
    CClusterCloudStorageZNodeInfo document;
    bool bAbsent = false;
    const int iCode = cluster.store.ReadDocument(
        STORE_NODE_CLOUD_STORAGE.pszSuffix, STORE_NODE_CLOUD_STORAGE.uiBufLen, document, bAbsent);
    entries = document.GetCloudStorageInfoMap();
    return iCode == ORVA_SUCCEED;
}

/// Entries of other nodes that a save has lost are written back.
bool WriteBack(CCluster& cluster, const CStorageMap& before, const CStorageMap& after) {
    CClusterCloudStorageZNodeInfo document;
    bool bLost = false;
    for (const auto& [strNodeId, entry] : after) {
        document.SetCloudStorageInfo(strNodeId, entry);
    }
    for (const auto& [strNodeId, entry] : before) {
        if (after.count(strNodeId) == 0) {
            document.SetCloudStorageInfo(strNodeId, entry);
            bLost = true;
        }
    }
    return !bLost ||
           cluster.store.WriteDocument(STORE_NODE_CLOUD_STORAGE.pszSuffix,
                                       STORE_NODE_CLOUD_STORAGE.uiBufLen, document) == ORVA_SUCCEED;
}

/// The library's save writes one node alone after a failed read, so that nothing is saved then.
/// What it may lose all the same is kept until it is sure that it stands there.
EFault Save(CCluster& cluster, const CContainerAddr& addr) {
    if (cluster.store.IsAway()) {
        return EFault::STORE_AWAY;
    }
    const uint64_t ullFailures = cluster.host.gate.GetFailures();
    const auto isWell = [&] { return cluster.host.gate.GetFailures() == ullFailures; };
    CStorageMap before;
    if (!ReadEntries(cluster, before)) {
        return isWell() ? EFault::DOCUMENT_UNREADABLE : EFault::STORE_FAILED;
    }
    CStorageMap& kept = cluster.state.storageKept;
    before.merge(kept);
    kept = before;
    CContainerMgr::Instance().SaveDataToZK(addr);
    CStorageMap after;
    const bool bWhole = ReadEntries(cluster, after) && WriteBack(cluster, before, after);
    if (bWhole) {
        kept.clear();
    }
    if (!bWhole || !isWell()) {
        cluster.state.storageUnsaved.insert(addr);
        return EFault::STORE_FAILED;
    }
    CContainerMgr::Instance().SetUptadeFlag(PSZ_UPDATED_SERVICE, false);
    cluster.Tell(ContainerEvent(EEvent::STORAGE_SAVED, addr));
    return EFault::NONE;
}

}  // namespace

CAnswer AllocateStorage(CCluster& cluster, const CStorageAllocate& input) {
    CAnswer refusal;
    CPluginRecord* const pPlugin = Accept(cluster, input.strXml, refusal);
    if (pPlugin == nullptr) {
        return refusal;
    }
    std::vector<CStorageShare> shares;
    const CCallResult result = cluster.plugins.AllocateStorage(*pPlugin, input.strXml, shares);
    return TakeShares(cluster, *pPlugin, result, shares, false);
}

CAnswer ReduceStorage(CCluster& cluster, const CStorageReduce& input) {
    CAnswer refusal;
    CPluginRecord* const pPlugin = Accept(cluster, input.strXml, refusal);
    if (pPlugin == nullptr) {
        return refusal;
    }
    std::vector<CStorageShare> shares;
    const CCallResult result = cluster.plugins.ReduceStorage(
        *pPlugin, input.strXml, input.iChangeSize, input.iTotalSize, shares);
    return TakeShares(cluster, *pPlugin, result, shares, true);
}

CAnswer SaveStorage(CCluster& cluster, const CStorageSave& input) {
    const CContainerAddr addr = StorageOf(input.strNodeId);
    if (cluster.assignments.Find(addr) == nullptr) {
        return CAnswer::Refuse(EFault::UNKNOWN_CONTAINER, input.strNodeId);
    }
    const EFault eFault = Save(cluster, addr);
    return eFault == EFault::NONE ? CAnswer() : CAnswer::Refuse(eFault, input.strNodeId);
}

void TakeStorageReport(CCluster& cluster, const CContainerAddr& addr,
                       const CContainerReport& report) {
    const int iMessageType =
        report.iMessageType != 0 ? report.iMessageType : CONTAINER_STATUS_REPORT_REQ;
    const bool bResponse = iMessageType == ALLOC_CLOUD_STORAGE_NOTIFY_RSP;
    if (report.tasks || bResponse) {
        CContainerMgr::Instance().SetResourceTask(addr, TableOf(report), iMessageType);
    }
    if (bResponse) {
        // A sender that does not say what it saw has seen what it was handed.
        ForgetPending(cluster, [&](const CStoragePending& pending) {
            return pending.strNodeId == addr.GetNodeId() && pending.ullHanded != 0 &&
                   (report.ullSeen == 0 || pending.ullHanded <= report.ullSeen);
        });
        cluster.state.storageUnsaved.insert(addr);
        SaveReportedStorage(cluster);
    }
    for (const CStoragePending& pending : cluster.state.storagePending) {
        if (pending.strNodeId == addr.GetNodeId()) {
            ShowPending(cluster, pending);  // the report's parameters replaced all
        }
    }
}

void HandStorageRequests(CCluster& cluster, const CContainerReport& report, CAnswer& answer) {
    for (CStoragePending& pending : cluster.state.storagePending) {
        const bool bHeard = pending.ullHanded != 0 && pending.ullHanded <= report.ullSeen;
        if (pending.strNodeId == report.container.strNodeId && !bHeard) {
            pending.ullHanded = pending.ullHanded != 0 ? pending.ullHanded : answer.ullNumber;
            answer.messages.push_back(pending.strXml);
        }
    }
}

void SaveReportedStorage(CCluster& cluster) {
    std::set<CContainerAddr>& unsaved = cluster.state.storageUnsaved;
    for (auto it = unsaved.begin(); it != unsaved.end();) {
        const bool bSaved =
            cluster.assignments.Find(*it) == nullptr || Save(cluster, *it) == EFault::NONE;
        it = bSaved ? unsaved.erase(it) : std::next(it);
    }
}

void ForgetPendingStorage(CCluster& cluster) {
    ForgetPending(cluster, [&](const CStoragePending& pending) {
        return cluster.state.iNow >= pending.iUntil;
    });
}
