#pragma once

#include <atomic>
#include <string>

#include "framework_service/node_mgr.h"
#include "support/host_fixture.h"
#include "support/model_values.h"
#include "support/registry_fixture.h"

namespace node_manager {

inline constexpr std::time_t NUMERIC_NOW = 1000000;

/// The manager without nodes and without fault times of the nodes N1, N10 and N2.
class NodeManager : public CHostTest {
protected:
    NodeManager() {
        m_manager.Init({});
        ClearFaultTimes();
    }
    ~NodeManager() override {
        m_manager.Init({});
        ClearFaultTimes();
    }

    void ClearFaultTimes() {
        m_manager.ClearContainerShiftStatus(std::list<std::string>{"N1", "N10", "N2"});
    }

    std::list<std::string> Ids() {
        std::list<CNode> nodeList;
        m_manager.GetAllNode(nodeList);
        std::list<std::string> ids;
        for (const CNode& node : nodeList) {
            ids.push_back(node.GetNodeId());
        }
        return ids;
    }

    CNode Known(const std::string& strNodeId) {
        CNode node;
        EXPECT_TRUE(m_manager.GetNode(strNodeId, node)) << strNodeId;
        return node;
    }

    CNodeMgr& m_manager = CNodeMgr::Instance();
};

}  // namespace node_manager
