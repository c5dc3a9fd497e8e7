#include <string>

#include "support/node_manager_fixture.h"
#include "support/refused_locks.h"
#include "support/registry_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace node_manager;

namespace {

class RefusedNodeManager : public NodeManager {
protected:
    RefusedNodeManager() {
        m_manager.Init({MakeStoredNode("N1", {"Cam"}, "10.0.0.1")});
        m_manager.SetContainerShiftFaultTimes({"N1", "Cam"}, 1);
    }
};

TEST_F(RefusedNodeManager, AnswersAsForAnUnknownNode) {
    const CRefusedLocks refused;
    CNode node = MakeStoredNode("mine");
    EXPECT_FALSE(m_manager.GetNode("N1", node));
    EXPECT_EQ(node.GetNodeId(), "mine");
    EXPECT_FALSE(m_manager.IsNodeExist("N1"));
    EXPECT_FALSE(m_manager.IsNodeOnline("N1"));
    EXPECT_EQ(m_manager.GetContainerShiftFaultTimes({"N1", "Cam"}), 0U);
    EXPECT_THAT(Ids(), IsEmpty());
    std::list<std::string> nodeList = {"old"};
    EXPECT_EQ(m_manager.GetNearbyNodeListByIP(0, 0, nodeList), 1);
    EXPECT_THAT(nodeList, IsEmpty());
    EXPECT_EQ(m_manager.GetSize(), 1U) << "the size is read without the lock";
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(RefusedNodeManager, ChangesNothingAndIsSilent) {
    unsigned int uiLeft = 99;
    {
        const CRefusedLocks refused;
        m_manager.Init({});
        m_manager.AddNode({{"N2", MakeStoredNode("N2")}});
        m_manager.SetNodeOnline("N1", false);
        m_manager.SetSystemResource("N1", MakeCpu(1), MakeCpu(1));
        m_manager.SetSystemResource("unknown", MakeCpu(1), MakeCpu(1));
        m_manager.SetMemberStatus({"N1"}, CLUSTER_MEMBER_REMOVED);
        m_manager.RemoveNode("N1");
        m_manager.RemoveNodeContainer("N1", "Cam", uiLeft);
        m_manager.RemoveNodeContainer("unknown", "Cam", uiLeft);
        m_manager.SetContainerShiftFaultTimes({"N1", "Cam"}, 9);
        m_manager.ClearContainerShiftStatus("N1");
        m_manager.ClearContainerShiftStatus(std::list<std::string>{"N1"});
    }
    EXPECT_EQ(uiLeft, 99U);
    EXPECT_THAT(Ids(), ElementsAre("N1"));
    const CNode node = Known("N1");
    EXPECT_TRUE(node.IsOnline());
    EXPECT_EQ(node.GetTotalResource().GetCpu(), 0);
    EXPECT_EQ(node.GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    EXPECT_THAT(ContainersOf(node), ElementsAre("Cam"));
    EXPECT_EQ(m_manager.GetContainerShiftFaultTimes({"N1", "Cam"}), 1U);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

}  // namespace
