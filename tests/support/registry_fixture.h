#pragma once

#include <cstddef>
#include <ctime>
#include <initializer_list>
#include <limits>
#include <list>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "framework_service/schedule_mgr.h"
#include "support/fake_clock.h"
#include "support/host_fixture.h"

/// Names a parameterised test after its parameter.
inline const auto NAME_OF_PARAMETER = [](const auto& parameter) { return parameter.param.strName; };

/// Draws that a seed repeats.
class CDice {
public:
    explicit CDice(unsigned int uiSeed) : m_random(uiSeed) {}

    std::size_t Below(std::size_t count) { return m_random() % count; }

    const char* OneOf(std::initializer_list<const char*> texts) {
        return *(texts.begin() + Below(texts.size()));
    }

private:
    std::mt19937 m_random;
};

/// A node as the cluster document has it.
struct CStoredNode {
    std::string strId;
    std::vector<std::string> containers;
    std::string strStatus = "Normal";
    std::string strIp = "10.0.0.1";
};

/// An entry of the cluster document, to the letter as the library writes it.
inline std::string NodeText(const CStoredNode& node) {
    std::string strContainers;
    for (const std::string& strType : node.containers) {
        strContainers += (strContainers.empty() ? "" : ",");
        strContainers += R"({"ContainerType":")" + strType + R"("})";
    }
    return (strContainers.empty() ? "{" : R"({"Container":[)" + strContainers + "],") +
           R"("DomainRole":3,"NodeID":")" + node.strId + R"(","NodeIP":")" + node.strIp +
           R"(","NodeIPType":1,"NodeRole":2,"Status":")" + node.strStatus + R"("})";
}

/// The cluster document, to the letter as the library writes it.
inline std::string ClusterText(const std::vector<CStoredNode>& nodes, int iForwardType = 7) {
    std::string strNodes;
    for (const CStoredNode& node : nodes) {
        strNodes += (strNodes.empty() ? R"("ClusterNode":[)" : ",") + NodeText(node);
    }
    return R"({"ClusterCode":"X","ClusterForwardType":)" + std::to_string(iForwardType) +
           R"(,"ClusterName":"c",)" + strNodes + (strNodes.empty() ? "" : "],") +
           R"("ClusterRemark":"r"})" + "\n";
}

inline CNode MakeStoredNode(const std::string& strId, const std::list<std::string>& containers = {},
                            const std::string& strIp = "") {
    CNode node;
    node.SetNodeId(strId);
    node.SetNodeIp(strIp);
    node.SetContainerList(containers);
    return node;
}

inline CClusterCGInfo MakeCG(const std::string& strNode, const std::string& strFloatCode,
                             const std::string& strFloatIp, const std::string& strDecVerNum = "0",
                             const std::string& strStatus = "") {
    CClusterCGInfo info;
    info.SetCGCode(strNode);
    info.SetFloatCode(strFloatCode);
    info.SetFloatIp(strFloatIp);
    info.SetDecVerNum(strDecVerNum);
    info.SetStatus(strStatus);
    return info;
}

inline std::list<std::string> ContainersOf(const CNode& node) {
    std::list<std::string> containerList;
    node.GetContainerList(containerList);
    return containerList;
}

inline std::list<std::string> ContainersOfNode(const std::string& strNodeId) {
    CNode node;
    CNodeMgr::Instance().GetNode(strNodeId, node);
    return ContainersOf(node);
}

inline std::vector<std::string> NodeIds() {
    std::list<CNode> nodeList;
    CNodeMgr::Instance().GetAllNode(nodeList);
    std::vector<std::string> ids;
    for (const CNode& node : nodeList) {
        ids.push_back(node.GetNodeId());
    }
    return ids;
}

inline ContainerMap AllContainers() {
    ContainerMap containerMap;
    CContainerMgr::Instance().GetAllContainer(containerMap);
    return containerMap;
}

inline std::vector<CContainerAddr> AddressesOf(const ContainerMap& containerMap) {
    std::vector<CContainerAddr> addresses;
    for (const auto& [addr, container] : containerMap) {
        addresses.push_back(addr);
    }
    return addresses;
}

/// A test on a fresh host with empty registries, version numbers at 0 and empty cached documents.
class CRegistryTest : public CHostTest {
protected:
    CRegistryTest() { EmptyRegistries(); }
    ~CRegistryTest() override { EmptyRegistries(); }

    void EmptyRegistries() {
        SetStore(std::make_shared<CMemoryStore>());
        OMAdapter::getInstance().setLogger(nullptr);
        ForgetShiftFaults();
        CNodeMgr::Instance().Init({});
        CContainerMgr::Instance().Init({});
        EmptyHighSpeedLists();
        EmptySchedule();
        EmptyCGRegistry();
        CFrameworkCommon::Instance().GetClusterDBInfo() = CClusterDBZNodeInfo();
        CFrameworkCommon::Instance().GetClusterMGRInfo() = CClusterMGRZNodeInfo();
        OMAdapter::getInstance().setLogger(&m_logger);
        SetStore(m_pStore);
    }

private:
    /// They outlive the nodes that they are counted for.
    static void ForgetShiftFaults() {
        std::list<CNode> nodes;
        CNodeMgr::Instance().GetAllNode(nodes);
        for (const CNode& node : nodes) {
            CNodeMgr::Instance().ClearContainerShiftStatus(node.GetNodeId());
        }
    }

    /// Every entry is out of date at the end of time.
    static void EmptyHighSpeedLists() {
        SetClock(std::numeric_limits<std::time_t>::max());
        std::string strNvrCode;
        CContainerMgr::Instance().GetHighSpeedNvrCode(strNvrCode, 0);
        CContainerMgr::Instance().GetPicHighSpeedNvrCode(strNvrCode, 0);
        ResetClock();
    }

    /// A reload from a node without data sets both numbers to 0.
    static void EmptySchedule() {
        const auto pStore = std::make_shared<CMemoryStore>();
        pStore->Put(Path("/Version"), std::nullopt);
        SetStore(pStore);
        CScheduleMgr& mgr = CScheduleMgr::Instance();
        mgr.Reload();
        std::list<CContainerAddr> addresses;
        mgr.GetAllShiftContainer(addresses);
        for (const CContainerAddr& addr : addresses) {
            mgr.RemoveShiftContainer(addr);
        }
    }

    static void EmptyCGRegistry() {
        CClusterCGInfoList cached;
        CFrameworkCGCommon::Instance().GetClusterCGInfoList(cached);
        std::list<CClusterCGInfo> entries;
        cached.GetClusterCGInfoList(entries);
        for (const CClusterCGInfo& info : entries) {
            CFrameworkCGCommon::Instance().RemoveClusterCGInfo(info.GetFloatCode());
        }
    }
};
