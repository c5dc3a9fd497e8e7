#include "framework_service/framework_common.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "common_service/global_config.h"
#include "common_service/net_factory.h"
#include "common_service/tarn_def.h"
#include "common_service/tool_help.h"
#include "framework_service/cluster_znode_info.h"
#include "framework_service/container_mgr.h"
#include "framework_service/node_mgr.h"
#include "framework_service/plugin_mgr.h"
#include "internal/framework_internal.h"
#include "internal/node_containers.h"
#include "internal/registry.h"
#include "internal/store.h"
#include "internal/wrap.h"
#include "operation_log/operation_log.h"

using namespace framework_internal;
using namespace operation_log;

CFrameworkCommon CFrameworkCommon::m_instance;
CFrameworkCGCommon CFrameworkCGCommon::m_instance;

namespace {

constexpr char OPERATION_INIT[] = "init framework";
constexpr char OPERATION_INIT_CONTAINER_MGR[] = "framework common, init container mgr";
constexpr char OPERATION_REMOVE_FROM_CACHE[] = "framework common, Remove node container from cache";
constexpr char GEN_CONTAINER_TABLE[] = "GenContainerTable";
constexpr char LOAD_CONTAINER_INFO[] = "LoadContainerInfo";
constexpr char OPERATION_ADD_CG[] = "add cluster cg info";
constexpr char MESSAGE_NODE_HAS_BEEN_CG[] = "node has been cg, node[%s].";
constexpr char MESSAGE_FLOAT_IP_EXIST[] = "float ip is exist, float ip[%s].";

/// What a failed read of a document at start means: nothing to read is a success.
int JudgeFailedRead(int iCode, bool bDataEmpty, const char* pszEmptyMessage,
                    const char* pszFailMessage, CPlace place = CPlace::Here()) {
    if (bDataEmpty) {
        LogInfo({OPERATION_INIT, place}, pszEmptyMessage);
        return ORVA_SUCCEED;
    }
    return LogFailure({OPERATION_INIT, place}, iCode, pszFailMessage);
}

/// The node list without what the registries have dropped: the first entry of the node when it has
/// no container left, or else one container of that type from every entry of the node.
void DropFromNodeList(std::list<CNode>& nodeList, const std::string& strNodeId,
                      const std::string& strContainerType, uint32_t uiContainerNumLeft) {
    const auto isNode = [&strNodeId](const CNode& node) { return node.GetNodeId() == strNodeId; };
    if (uiContainerNumLeft == 0) {
        const auto it = std::find_if(nodeList.begin(), nodeList.end(), isNode);
        if (it != nodeList.end()) {
            nodeList.erase(it);
        }
        return;
    }
    for (CNode& node : nodeList) {
        if (isNode(node)) {
            DropContainerType(node, strContainerType);
        }
    }
}

int LogFailedCGWrite(const CPlacedText& operation, int iCode) {
    return LogFailure(operation, iCode, "set cg data into zk fail.");
}

/// Writes a CG list to the store. Returns 0 or, logged, the store's code.
int WriteCGList(const CPlacedText& operation, CClusterCGInfoList& list) {
    const int iRet = WriteStore(STORE_NODE_CG_LIST, list);
    return iRet == ORVA_SUCCEED ? iRet : LogFailedCGWrite(operation, iRet);
}

using NodeAddresses = std::unordered_set<std::string_view>;

/// Accepts links from every member's address. Returns these addresses, which live in the list.
NodeAddresses AddValidatedLinks(const std::list<CNode>& nodeList) {
    NodeAddresses newNodeIPs(nodeList.size());
    for (const CNode& node : nodeList) {
        if (node.GetMemberStatus() != CLUSTER_MEMBER_REMOVED) {
            HALD::CNetFactory::Instance().AddValidatedLink(node.GetNodeIp(), VALIDATED_LINK_TYPE);
            newNodeIPs.insert(node.GetNodeIp());
        }
    }
    return newNodeIPs;
}

/// Accepts no more links from nodes of an earlier load that are members no more. The local address
/// is never taken away.
void DelValidatedLinks(const CSnapshotTable<std::string, CNode>& oldNodes,
                       const NodeAddresses& newNodeIPs) {
    for (const auto& [strNodeId, node] : oldNodes) {
        if (newNodeIPs.count(node.GetNodeIp()) == 0 &&
            node.GetNodeIp() != CGlobalConfig::Instance().GetLocalIp()) {
            HALD::CNetFactory::Instance().DelValidatedLink(node.GetNodeIp(), VALIDATED_LINK_TYPE);
        }
    }
}

/// Puts a new container under the address. Null when there is one.
CContainer* InsertNew(ContainerMap& containerMap, const CContainerAddr& containerAddr) {
    const std::size_t uiBefore = containerMap.size();
    const auto it = containerMap.try_emplace(containerMap.end(), containerAddr);
    return containerMap.size() != uiBefore ? &it->second : nullptr;
}

CContainer* InsertNew(CSnapshotTable<CContainerAddr, CContainer>& containerTable,
                      const CContainerAddr& containerAddr) {
    return containerTable.Insert(containerAddr);
}

/// LoadContainerInfo for one container, on a map or on the registry's own table.
template <typename Table>
int LoadOneContainer(const std::string& strNodeId, const std::string& strType,
                     Table& containerTable) {
    const bool bSupportFaultShift = CPluginMgr::Instance().IsContainerSupportFaultShift(strType);
    LogInfo({"load Container info", CPlace::Of(LOAD_CONTAINER_INFO)}, "node=%s container type=%s ",
            strNodeId.c_str(), strType.c_str());
    CContainer* const pContainer = InsertNew(containerTable, CContainerAddr(strNodeId, strType));
    if (pContainer == nullptr) {
        return LogFailure({"load container info", CPlace::Of(LOAD_CONTAINER_INFO)}, ORVA_FAIL,
                          "insert map failed");
    }
    pContainer->SetNodeId(strNodeId);
    pContainer->SetContainerType(strType);
    pContainer->SetSupportFaultShift(bSupportFaultShift);
    return ORVA_SUCCEED;
}

/// GenContainerTable, on a map or on the registry's own table.
template <typename Table>
int LoadAllContainers(const std::list<CNode>& nodeList, Table& containerTable) {
    for (const CNode& node : nodeList) {
        for (const std::string& strType : *CFrameworkInternal::ContainerTypes(node)) {
            LogInfo({"Gen Container Table", CPlace::Of(GEN_CONTAINER_TABLE)},
                    "node=%s container type=%s ", node.GetNodeId().c_str(), strType.c_str());
        }
    }
    for (const CNode& node : nodeList) {
        for (const std::string& strType : *CFrameworkInternal::ContainerTypes(node)) {
            if (const int iRet = LoadOneContainer(node.GetNodeId(), strType, containerTable);
                iRet != ORVA_SUCCEED) {
                return LogFailure({"init container mgr", CPlace::Of(GEN_CONTAINER_TABLE)}, iRet,
                                  "load container info fail.");
            }
        }
    }
    return ORVA_SUCCEED;
}

}  // namespace

int CFrameworkCommon::InitClusterConfigFromZK() {
    LogInfo("init cluster config from zk", "");
    CClusterConfigZNodeInfo document;
    bool bDataEmpty = false;
    const int iRet = ReadStore(STORE_NODE_CLUSTER_CONFIG, EWatch::NO, document, bDataEmpty);
    if (iRet != ORVA_SUCCEED) {
        return JudgeFailedRead(iRet, bDataEmpty,
                               "cluster config info is empty, not need to init framework.",
                               "get cloud storage info from cluster node fail.");
    }
    CGlobalConfig& config = CGlobalConfig::Instance();
    config.SetLoadBalance(document.IsLoadBalance());
    config.SetFaultShift(document.IsFaultShift());
    config.SetLoadBalanceOnePeriod(document.IsLoadBalanceOnePeriod());
    config.SetLoadBalanceDiskThreshold(document.GetLoadBalanceDiskThreshold());
    config.SetLoadBalanceNetThreshold(document.GetLoadBalanceNetThreshold());
    config.SetLoadBalanceChannelThreshold(document.GetLoadBalanceChannelThreshold());
    const std::lock_guard<std::mutex> guard(m_clusterConfigMutex);
    m_clusterConfig = document;
    return ORVA_SUCCEED;
}

CClusterConfigZNodeInfo CFrameworkCommon::GetClusterConfig() const {
    const std::lock_guard<std::mutex> guard(m_clusterConfigMutex);
    return m_clusterConfig;
}

int CFrameworkCommon::InitNodeAndContainerFromZK() {
    LogInfo("init node and container from zk", "");
    CClusterZNodeInfo cluster;
    bool bDataEmpty = false;
    int iRet = ReadStore(STORE_NODE_CLUSTER, EWatch::NO, cluster, bDataEmpty);
    if (iRet != ORVA_SUCCEED) {
        return JudgeFailedRead(iRet, bDataEmpty,
                               "cluster node is empty, not need to init framework.",
                               "get data from cluster node fail.");
    }
    CGlobalConfig::Instance().SetClusterForwardType(cluster.GetClusterForwardType());
    const std::list<CNode>& nodeList = CFrameworkInternal::Nodes(cluster);
    const NodeAddresses newNodeIPs = AddValidatedLinks(nodeList);
    DelValidatedLinks(CFrameworkInternal::Snapshot(CNodeMgr::Instance())
                          .value_or(CFrameworkInternal::CNodeTable()),
                      newNodeIPs);
    iRet = InitNodeAndContainer(nodeList);
    if (iRet != ORVA_SUCCEED) {
        return LogFailure("framework common, InitNodeAndContainerFromZK", iRet,
                          "init node Container fail.");
    }
    CClusterCloudStorageZNodeInfo cloudStorage;
    iRet = ReadStore(STORE_NODE_CLOUD_STORAGE, EWatch::NO, cloudStorage, bDataEmpty);
    if (iRet != ORVA_SUCCEED) {
        return JudgeFailedRead(iRet, bDataEmpty,
                               "cloud storage info is empty, not need to init framework.",
                               "get cloud storage info from cluster node fail.");
    }
    return AddCloudStorageContainer(CFrameworkInternal::TakeMap(cloudStorage));
}

int CFrameworkCommon::InitNodeAndContainer(const std::list<CNode>& nodeList) {
    constexpr char OPERATION[] = "framework common, init node and contiaer";
    if (const int iRet = InitNodeMgr(nodeList); iRet != ORVA_SUCCEED) {
        return LogFailure(OPERATION, iRet, "init node manager fail.");
    }
    if (const int iRet = InitContainerMgr(nodeList); iRet != ORVA_SUCCEED) {
        return LogFailure(OPERATION, iRet, "init contianer manager fail.");
    }
    return ORVA_SUCCEED;
}

int CFrameworkCommon::InitNodeMgr(const std::list<CNode>& nodeList) {
    CNodeMgr::Instance().Init(nodeList);
    return ORVA_SUCCEED;
}

int CFrameworkCommon::InitContainerMgr(const std::list<CNode>& nodeList) {
    CFrameworkInternal::CContainerTable containerTable;
    if (const int iRet = LoadAllContainers(nodeList, containerTable); iRet != ORVA_SUCCEED) {
        return LogFailure(OPERATION_INIT_CONTAINER_MGR, iRet, "gen container table fail.");
    }
    CFrameworkInternal::ReplaceTable(CContainerMgr::Instance(), std::move(containerTable));
    return ORVA_SUCCEED;
}

int CFrameworkCommon::GenContainerTable(const std::list<CNode>& nodeList,
                                        ContainerMap& containerMap) {
    return LoadAllContainers(nodeList, containerMap);
}

int CFrameworkCommon::LoadContainerInfo(const std::list<CContainerAddr>& containerAddrList,
                                        ContainerMap& containerMap) {
    for (const CContainerAddr& containerAddr : containerAddrList) {
        if (const int iRet = LoadOneContainer(containerAddr.GetNodeId(),
                                              containerAddr.GetContainerType(), containerMap);
            iRet != ORVA_SUCCEED) {
            return iRet;
        }
    }
    return ORVA_SUCCEED;
}

int CFrameworkCommon::AddCloudStorageContainer(
    const std::map<std::string, CloudStorageInfo>& CloudStorageMap) {
    CContainerAddr containerAddr("", CONTAINER_TYPE_CLOUD_STORAGE);
    for (const auto& [strNodeId, cloudStorage] : CloudStorageMap) {
        containerAddr.SetNodeId(strNodeId);
        std::list<CResourceTask> resTaskList;
        CloudStorageInfoToResTask(cloudStorage, resTaskList);
        CFrameworkInternal::TakeResourceTask(CContainerMgr::Instance(), containerAddr,
                                             std::move(resTaskList), CONTAINER_STATUS_REPORT_REQ);
    }
    return ORVA_SUCCEED;
}

void CFrameworkCommon::CloudStorageInfoToResTask(const CloudStorageInfo& CloudStorage,
                                                 std::list<CResourceTask>& resTaskList) {
    const auto toText = [](int32_t iValue) { return HALD::CToolHelp::IntToStr(iValue, false); };
    CResourceTask& task = resTaskList.emplace_back();
    task.InsertSingleKeyValue(PSZ_TASK_PRODUCT_TYPE, CloudStorage.strProductType);
    task.InsertSingleKeyValue(PSZ_TASK_SERVICE_TYPE, CloudStorage.strServiceType);
    task.InsertSingleKeyValue(PSZ_TASK_REQ_STORAGE, toText(CloudStorage.iReqStorage));
    task.InsertSingleKeyValue(PSZ_TASK_REQ_PIC_STORAGE, toText(CloudStorage.iReqPicStorage));
    task.InsertSingleKeyValue(PSZ_TASK_LOW_PRI_BIT_RATE, toText(CloudStorage.iLowPriorityBitRate));
    for (const ORVA_CLOUD_STORAGE_ALLOC_INFO& allocInfo : CloudStorage.allocInfo) {
        task.SetAllocInfoList(allocInfo);
    }
    LogInfo("ORVA Cloud storage info to resTask",
            "product[%s] service[%s] reqStorage[%d] reqPicStorage[%d] lowPri[%d]",
            CloudStorage.strProductType.c_str(), CloudStorage.strServiceType.c_str(),
            CloudStorage.iReqStorage, CloudStorage.iReqPicStorage,
            CloudStorage.iLowPriorityBitRate);
}

int CFrameworkCommon::AddNodeAndContainer(const std::map<std::string, CNode>& nodeMap) {
    if (nodeMap.empty()) {
        return ORVA_SUCCEED;
    }
    CNodeMgr::Instance().AddNode(nodeMap);
    std::list<CNode> nodeList;
    for (const auto& [strKey, node] : nodeMap) {
        nodeList.push_back(node);
    }
    ContainerMap containerMap;
    if (const int iRet = GenContainerTable(nodeList, containerMap); iRet != ORVA_SUCCEED) {
        return LogFailure(OPERATION_INIT_CONTAINER_MGR, iRet, "gen container table fail.");
    }
    CContainerMgr::Instance().AddContainer(containerMap);
    return ORVA_SUCCEED;
}

int CFrameworkCommon::RemoveNodeContainer(const std::string& strNodeId,
                                          const std::string& strContainerType,
                                          uint32_t& uiContainerNumLeft) {
    CContainerMgr::Instance().RemoveContainer(CContainerAddr(strNodeId, strContainerType));
    CNodeMgr::Instance().RemoveNodeContainer(strNodeId, strContainerType, uiContainerNumLeft);
    LogInfo(OPERATION_REMOVE_FROM_CACHE, "node id[%s], container id[%s], left container num[%d].",
            strNodeId.c_str(), strContainerType.c_str(), uiContainerNumLeft);
    return ORVA_SUCCEED;
}

int CFrameworkCommon::RemoveNodeContainerAndFlush(const std::string& strNodeId,
                                                  const std::string& strContainerType) {
    uint32_t uiContainerNumLeft = 0;
    RemoveNodeContainer(strNodeId, strContainerType, uiContainerNumLeft);
    if (uiContainerNumLeft == 0) {
        CNodeMgr::Instance().RemoveNode(strNodeId);
        LogInfo(OPERATION_REMOVE_FROM_CACHE, "node id[%s].", strNodeId.c_str());
    }
    CClusterZNodeInfo document;
    bool bDataEmpty = false;
    if (ReadStore(STORE_NODE_CLUSTER, EWatch::NO, document, bDataEmpty) != ORVA_SUCCEED ||
        bDataEmpty) {
        return ORVA_SUCCEED;
    }
    std::list<CNode> nodeList;
    document.GetNodeList(nodeList);
    DropFromNodeList(nodeList, strNodeId, strContainerType, uiContainerNumLeft);
    document.SetNodeList(nodeList);
    if (const int iRet = WriteStore(STORE_NODE_CLUSTER, document); iRet != ORVA_SUCCEED) {
        LogFailure("framework common, remove container and flush", iRet,
                   "set cluster info into ZK fail.");
    } else {
        LogInfo("framework common, remove container and flush from zk",
                "node id[%s], container id[%s], container num[%d] left.", strNodeId.c_str(),
                strContainerType.c_str(), uiContainerNumLeft);
    }
    return ORVA_SUCCEED;
}

int CFrameworkCommon::SetNodeClusterStatus(const std::list<std::string>& nodeCodeList,
                                           int iMemberStatus) {
    if (!nodeCodeList.empty()) {
        CNodeMgr::Instance().SetMemberStatus(nodeCodeList, iMemberStatus);
    }
    return ORVA_SUCCEED;
}

void CFrameworkCommon::GetAvailableContainer(const std::string& strContainerType,
                                             ContainerMap& containerMap) {
    ContainerMap available;
    const auto containers = CFrameworkInternal::Snapshot(CContainerMgr::Instance());
    const auto nodes = CFrameworkInternal::Snapshot(CNodeMgr::Instance());
    if (!containers || !nodes) {
        containerMap.clear();
        return;
    }
    // One question after the other, each to all that are left, finds its data in the caches.
    std::vector<const std::pair<CContainerAddr, CContainer>*> candidates;
    for (const auto& entry : *containers) {
        if (entry.second.GetContainerType() == strContainerType && entry.second.IsOnline()) {
            candidates.push_back(&entry);
        }
    }
    CFrameworkInternal::CNodeTable::CAscendingSearch nodeSearch(*nodes);
    const auto isNotNormalMember = [&nodeSearch](const auto* pEntry) {
        const CNode* const pNode = nodeSearch.Find(pEntry->second.GetNodeId());
        return pNode == nullptr || pNode->GetMemberStatus() != CLUSTER_MEMBER_NORMAL;
    };
    candidates.erase(std::remove_if(candidates.begin(), candidates.end(), isNotNormalMember),
                     candidates.end());
    for (const auto* pEntry : candidates) {
        if (!pEntry->second.IsProcessRunning()) {
            continue;
        }
        LogTrace("orva plugin, available orva container, node id[%s].",
                 pEntry->second.GetNodeId().c_str());
        available.emplace_hint(available.end(), *pEntry);
    }
    containerMap.swap(available);
}

int CFrameworkCommon::UpdateClusterCDB(const CClusterDBInfo& clusterDBInfo, bool bFlushZK) {
    const bool bUpdated =
        clusterDBInfo.GetDBType() == CLUSTER_DB_MASTER
            ? m_clusterDBInfo.UpdateMasterDBInfo(clusterDBInfo)
            : m_clusterDBInfo.UpdateSlaveDBInfoByToken(clusterDBInfo.GetCDBToken(), clusterDBInfo);
    if (!bUpdated) {
        return ORVA_FAIL;
    }
    if (!bFlushZK) {
        return ORVA_SUCCEED;
    }
    if (const int iRet = WriteStore(STORE_NODE_CENTER_DB, m_clusterDBInfo); iRet != ORVA_SUCCEED) {
        return LogFailure("update cluster cdb", iRet, "set data to zookeeper fail.");
    }
    return ORVA_SUCCEED;
}

void CFrameworkCommon::IncreaseCDBVersion() {
    m_iCenterDBVersion = WrapAdd(m_iCenterDBVersion, 1);
}

int CFrameworkCommon::ParseCDBFromZK(bool bNeedWatcher) {
    return m_clusterDBInfo.ParseFromZK(bNeedWatcher);
}

int CFrameworkCommon::ParseMGRFromZK(bool bNeedWatcher) {
    return m_clusterMGRInfo.ParseFromZK(bNeedWatcher);
}

int CFrameworkCGCommon::SetClusterCGInfoList(CClusterCGInfoList& clusterCGInfoList) {
    if (clusterCGInfoList.Empty()) {
        return ORVA_SUCCEED;
    }
    const MutexGuard guard(m_MutexCGInfo);
    if (!guard.locked()) {
        return ORVA_FAIL;
    }
    return WriteCGList("set cluster cg list", clusterCGInfoList);
}

int CFrameworkCGCommon::AddClusterCGInfo(const CClusterCGInfoList& clusterCGInfo) {
    std::list<CClusterCGInfo> listNew;
    clusterCGInfo.GetClusterCGInfoList(listNew);
    if (listNew.empty()) {
        return ORVA_SUCCEED;
    }
    const MutexGuard guard(m_MutexCGInfo);
    if (!guard.locked()) {
        return ORVA_FAIL;
    }
    for (const CClusterCGInfo& info : listNew) {
        if (m_clusterCGList.IsCGExist(info.GetFloatCode())) {
            LogTrace("cg already exists, no need to add, code[%s].", info.GetFloatCode().c_str());
            continue;
        }
        if (m_clusterCGList.IsNodeExist(info.GetNodeCode())) {
            return LogFailure(OPERATION_ADD_CG, ORVA_TARN_NODE_HAS_BEEN_CG,
                              MESSAGE_NODE_HAS_BEEN_CG, info.GetNodeCode().c_str());
        }
        if (m_clusterCGList.IsFloatIPExist(info.GetFloatIp())) {
            return LogFailure(OPERATION_ADD_CG, ORVA_TARN_FCG_IP_EXIST, MESSAGE_FLOAT_IP_EXIST,
                              info.GetFloatIp().c_str());
        }
        m_clusterCGList.AddClusterCGInfo(info);
    }
    return WriteCGList(OPERATION_ADD_CG, m_clusterCGList);
}

int CFrameworkCGCommon::AddSingleClusterCGInfo(const CClusterCGInfo& singleClusterCGInfo) {
    constexpr char OPERATION[] = "add single cluster cg";
    const MutexGuard guard(m_MutexCGInfo);
    if (!guard.locked()) {
        return ORVA_FAIL;
    }
    const CClusterCGInfo& info = singleClusterCGInfo;
    const unsigned int uiNodeSize = CNodeMgr::Instance().GetSize();
    const unsigned int uiClusterCGSize = m_clusterCGList.GetSize();
    if (uiClusterCGSize + 1 > uiNodeSize >> 1) {
        return LogFailure(OPERATION, ORVA_TARN_FCG_EXCEED_MAX,
                          "exceed max cg num, current cg size[%d], node size[%d].", uiClusterCGSize,
                          uiNodeSize);
    }
    if (m_clusterCGList.IsNodeExist(info.GetNodeCode())) {
        return LogFailure(OPERATION, ORVA_TARN_NODE_HAS_BEEN_CG, MESSAGE_NODE_HAS_BEEN_CG,
                          info.GetNodeCode().c_str());
    }
    if (!CNodeMgr::Instance().IsNodeExist(info.GetNodeCode())) {
        return LogFailure(OPERATION, ORVA_TARN_CG_NODE_NOT_EXIST, "node not exist, node[%s].",
                          info.GetNodeCode().c_str());
    }
    if (m_clusterCGList.IsCGExist(info.GetFloatCode())) {
        return LogFailure(OPERATION, ORVA_TARN_FCG_CODE_EXIST, "cg is exist, cg[%s].",
                          info.GetFloatCode().c_str());
    }
    if (m_clusterCGList.IsFloatIPExist(info.GetFloatIp())) {
        return LogFailure(OPERATION, ORVA_TARN_FCG_IP_EXIST, MESSAGE_FLOAT_IP_EXIST,
                          info.GetFloatIp().c_str());
    }
    m_clusterCGList.AddClusterCGInfo(info);
    if (const int iRet = WriteStore(STORE_NODE_CG_LIST, m_clusterCGList); iRet != ORVA_SUCCEED) {
        m_clusterCGList.RemoveClusterCG(info.GetFloatCode());
        return LogFailedCGWrite(OPERATION_ADD_CG, iRet);
    }
    return ORVA_SUCCEED;
}

int CFrameworkCGCommon::RemoveClusterCGInfo(const std::string& strFloatCGCode) {
    constexpr char OPERATION[] = "remove cluster cg";
    const MutexGuard guard(m_MutexCGInfo);
    if (!guard.locked()) {
        return ORVA_FAIL;
    }
    if (!m_clusterCGList.IsCGExist(strFloatCGCode)) {
        LogInfo(OPERATION, "cluster cg code[%s] not exist.", strFloatCGCode.c_str());
        return ORVA_SUCCEED;
    }
    CClusterCGInfoList changed(m_clusterCGList);
    changed.RemoveClusterCG(strFloatCGCode);
    if (const int iRet = WriteCGList("remove cluster cg info", changed); iRet != ORVA_SUCCEED) {
        return iRet;
    }
    LogInfo(OPERATION, "update cluster cg into zk and cache, cluster cg code[%s].",
            strFloatCGCode.c_str());
    m_clusterCGList = changed;
    return ORVA_SUCCEED;
}

int CFrameworkCGCommon::ReloadClusterCGInfoList() {
    const MutexGuard guard(m_MutexCGInfo);
    if (!guard.locked()) {
        return ORVA_FAIL;
    }
    if (const int iRet = m_clusterCGList.ParseFromZK(); iRet != ORVA_SUCCEED) {
        return LogFailure("reload cluster cg list", iRet, "load cg list from zk fail.");
    }
    return ORVA_SUCCEED;
}

void CFrameworkCGCommon::GetClusterCGInfoList(CClusterCGInfoList& clusterCGInfo) {
    const MutexGuard guard(m_MutexCGInfo);
    if (guard.locked()) {
        clusterCGInfo = m_clusterCGList;
    }
}

int CFrameworkCGCommon::UpdateClusterCGInfoByFloatCode(const CClusterCGInfo& clusterCGInfo) {
    const MutexGuard guard(m_MutexCGInfo);
    if (!guard.locked()) {
        return ORVA_FAIL;
    }
    CClusterCGInfoList changed(m_clusterCGList);
    changed.RemoveClusterCG(clusterCGInfo.GetFloatCode());
    changed.AddClusterCGInfo(clusterCGInfo);
    if (const int iRet = WriteCGList("update cluster cg info", changed); iRet != ORVA_SUCCEED) {
        return iRet;
    }
    m_clusterCGList = changed;
    return ORVA_SUCCEED;
}
