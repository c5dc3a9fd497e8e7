#include "framework_service/framework_common.h"

#include <algorithm>

#include "common_service/global_config.h"
#include "common_service/net_factory.h"
#include "common_service/tarn_def.h"
#include "common_service/tool_help.h"
#include "framework_service/cluster_config_znode_info.h"
#include "framework_service/cluster_znode_info.h"
#include "framework_service/container_mgr.h"
#include "framework_service/node_mgr.h"
#include "framework_service/plugin_mgr.h"
#include "internal/log.h"
#include "internal/store.h"

using namespace framework_internal;

CFrameworkCommon CFrameworkCommon::m_instance;

namespace {

constexpr char OPERATION_INIT[] = "init framework";
constexpr char OPERATION_INIT_CONTAINER_MGR[] = "framework common, init container mgr";

/// What a failed read of a document at start means: nothing to read is a success.
int JudgeFailedRead(const SourcePlace& place, int iCode, bool bDataEmpty,
                    const char* pszEmptyMessage, const char* pszFailMessage) {
    if (bDataEmpty) {
        LogInfo(place, OPERATION_INIT, pszEmptyMessage);
        return ORVA_SUCCEED;
    }
    return LogFailure(place, OPERATION_INIT, iCode, pszFailMessage);
}

/// Accepts links from every member's address, then no longer from those of the nodes of an earlier
/// load that are members no more. The local address is never taken away.
void UpdateValidatedLinks(const std::list<CNode>& nodeList) {
    HALD::CNetFactory& netFactory = HALD::CNetFactory::Instance();
    std::list<std::string> newNodeIPList;
    for (const CNode& node : nodeList) {
        if (node.GetMemberStatus() != CLUSTER_MEMBER_REMOVED) {
            netFactory.AddValidatedLink(node.GetNodeIp(), VALIDATED_LINK_TYPE);
            newNodeIPList.push_back(node.GetNodeIp());
        }
    }
    std::list<CNode> oldNodeList;
    CNodeMgr::Instance().GetAllNode(oldNodeList);
    for (const CNode& node : oldNodeList) {
        const bool bMember = std::find(newNodeIPList.begin(), newNodeIPList.end(),
                                       node.GetNodeIp()) != newNodeIPList.end();
        if (!bMember && node.GetNodeIp() != CGlobalConfig::Instance().GetLocalIp()) {
            netFactory.DelValidatedLink(node.GetNodeIp(), VALIDATED_LINK_TYPE);
        }
    }
}

}  // namespace

int CFrameworkCommon::InitClusterConfigFromZK() {
    LogInfo(HERE, "init cluster config from zk", "");
    CClusterConfigZNodeInfo document;
    bool bDataEmpty = false;
    const int iRet = ReadStore(STORE_NODE_CLUSTER_CONFIG, EWatch::NO, document, bDataEmpty);
    if (iRet != ORVA_SUCCEED) {
        return JudgeFailedRead(HERE, iRet, bDataEmpty,
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
    return ORVA_SUCCEED;
}

int CFrameworkCommon::InitNodeAndContainerFromZK() {
    LogInfo(HERE, "init node and container from zk", "");
    CClusterZNodeInfo cluster;
    bool bDataEmpty = false;
    int iRet = ReadStore(STORE_NODE_CLUSTER, EWatch::NO, cluster, bDataEmpty);
    if (iRet != ORVA_SUCCEED) {
        return JudgeFailedRead(HERE, iRet, bDataEmpty,
                               "cluster node is empty, not need to init framework.",
                               "get data from cluster node fail.");
    }
    CGlobalConfig::Instance().SetClusterForwardType(cluster.GetClusterForwardType());
    std::list<CNode> nodeList;
    cluster.GetNodeList(nodeList);
    UpdateValidatedLinks(nodeList);
    iRet = InitNodeAndContainer(nodeList);
    if (iRet != ORVA_SUCCEED) {
        return LogFailure(HERE, "framework common, InitNodeAndContainerFromZK", iRet,
                          "init node Container fail.");
    }
    CClusterCloudStorageZNodeInfo cloudStorage;
    iRet = ReadStore(STORE_NODE_CLOUD_STORAGE, EWatch::NO, cloudStorage, bDataEmpty);
    if (iRet != ORVA_SUCCEED) {
        return JudgeFailedRead(HERE, iRet, bDataEmpty,
                               "cloud storage info is empty, not need to init framework.",
                               "get cloud storage info from cluster node fail.");
    }
    return AddCloudStorageContainer(cloudStorage.GetCloudStorageInfoMap());
}

int CFrameworkCommon::InitNodeAndContainer(const std::list<CNode>& nodeList) {
    constexpr char OPERATION[] = "framework common, init node and contiaer";
    if (const int iRet = InitNodeMgr(nodeList); iRet != ORVA_SUCCEED) {
        return LogFailure(HERE, OPERATION, iRet, "init node manager fail.");
    }
    if (const int iRet = InitContainerMgr(nodeList); iRet != ORVA_SUCCEED) {
        return LogFailure(HERE, OPERATION, iRet, "init contianer manager fail.");
    }
    return ORVA_SUCCEED;
}

int CFrameworkCommon::InitNodeMgr(const std::list<CNode>& nodeList) {
    CNodeMgr::Instance().Init(nodeList);
    return ORVA_SUCCEED;
}

int CFrameworkCommon::InitContainerMgr(const std::list<CNode>& nodeList) {
    ContainerMap containerMap;
    if (const int iRet = GenContainerTable(nodeList, containerMap); iRet != ORVA_SUCCEED) {
        return LogFailure(HERE, OPERATION_INIT_CONTAINER_MGR, iRet, "gen container table fail.");
    }
    CContainerMgr::Instance().Init(containerMap);
    return ORVA_SUCCEED;
}

int CFrameworkCommon::GenContainerTable(const std::list<CNode>& nodeList,
                                        ContainerMap& containerMap) {
    std::list<CContainerAddr> containerAddrList;
    for (const CNode& node : nodeList) {
        std::list<std::string> containerList;
        node.GetContainerList(containerList);
        for (const std::string& strType : containerList) {
            containerAddrList.emplace_back(node.GetNodeId(), strType);
            LogInfo(HERE, "Gen Container Table", "node=%s container type=%s ",
                    node.GetNodeId().c_str(), strType.c_str());
        }
    }
    if (const int iRet = LoadContainerInfo(containerAddrList, containerMap); iRet != ORVA_SUCCEED) {
        return LogFailure(HERE, "init container mgr", iRet, "load container info fail.");
    }
    return ORVA_SUCCEED;
}

int CFrameworkCommon::LoadContainerInfo(const std::list<CContainerAddr>& containerAddrList,
                                        ContainerMap& containerMap) {
    for (const CContainerAddr& containerAddr : containerAddrList) {
        CContainer container;
        container.SetNodeId(containerAddr.GetNodeId());
        container.SetContainerType(containerAddr.GetContainerType());
        container.SetSupportFaultShift(
            CPluginMgr::Instance().IsContainerSupportFaultShift(containerAddr.GetContainerType()));
        LogInfo(HERE, "load Container info", "node=%s container type=%s ",
                containerAddr.GetNodeId().c_str(), containerAddr.GetContainerType().c_str());
        if (!containerMap.try_emplace(containerAddr, std::move(container)).second) {
            return LogFailure(HERE, "load container info", ORVA_FAIL, "insert map failed");
        }
    }
    return ORVA_SUCCEED;
}

int CFrameworkCommon::AddCloudStorageContainer(
    const std::map<std::string, CloudStorageInfo>& CloudStorageMap) {
    for (const auto& [strNodeId, cloudStorage] : CloudStorageMap) {
        std::list<CResourceTask> resTaskList;
        CloudStorageInfoToResTask(cloudStorage, resTaskList);
        CContainerMgr::Instance().SetResourceTask(
            CContainerAddr(strNodeId, CONTAINER_TYPE_CLOUD_STORAGE), resTaskList,
            CONTAINER_STATUS_REPORT_REQ);
    }
    return ORVA_SUCCEED;
}

void CFrameworkCommon::CloudStorageInfoToResTask(const CloudStorageInfo& CloudStorage,
                                                 std::list<CResourceTask>& resTaskList) {
    const auto toText = [](int32_t iValue) { return HALD::CToolHelp::IntToStr(iValue, false); };
    CResourceTask task;
    task.InsertSingleKeyValue(PSZ_TASK_PRODUCT_TYPE, CloudStorage.strProductType);
    task.InsertSingleKeyValue(PSZ_TASK_SERVICE_TYPE, CloudStorage.strServiceType);
    task.InsertSingleKeyValue(PSZ_TASK_REQ_STORAGE, toText(CloudStorage.iReqStorage));
    task.InsertSingleKeyValue(PSZ_TASK_REQ_PIC_STORAGE, toText(CloudStorage.iReqPicStorage));
    task.InsertSingleKeyValue(PSZ_TASK_LOW_PRI_BIT_RATE, toText(CloudStorage.iLowPriorityBitRate));
    for (const ORVA_CLOUD_STORAGE_ALLOC_INFO& allocInfo : CloudStorage.allocInfo) {
        task.SetAllocInfoList(allocInfo);
    }
    LogInfo(HERE, "ORVA Cloud storage info to resTask",
            "product[%s] service[%s] reqStorage[%d] reqPicStorage[%d] lowPri[%d]",
            CloudStorage.strProductType.c_str(), CloudStorage.strServiceType.c_str(),
            CloudStorage.iReqStorage, CloudStorage.iReqPicStorage,
            CloudStorage.iLowPriorityBitRate);
    resTaskList.push_back(task);
}
