#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/membership_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using namespace membership;

namespace {

TEST_F(Membership, AddingNothingCallsNothing) {
    EXPECT_EQ(Framework().AddNodeAndContainer({}), 0);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    EXPECT_EQ(m_pStore->GetCallCount(), 0U);
}

TEST_F(Membership, AddedNodesEnterBothRegistriesAndNoStore) {
    EXPECT_EQ(Framework().AddNodeAndContainer(
                  {{"n2", MakeStoredNode("n2", {"A"})}, {"n1", MakeStoredNode("n1", {"B", "A"})}}),
              0);
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2"));
    EXPECT_THAT(AddressesOf(AllContainers()),
                ElementsAre(CContainerAddr("n1", "A"), CContainerAddr("n1", "B"),
                            CContainerAddr("n2", "A")));
    EXPECT_EQ(m_pStore->GetCallCount(), 0U);
    const auto generated = [](const std::string& strAddr) {
        return Info("Gen Container Table", FILE_STEM, "GenContainerTable", strAddr);
    };
    const auto unsupported = [](const std::string& strType) {
        return Err("is container support fault shift", 1, "plugin_mgr",
                   "IsContainerSupportFaultShift", "do not support, type[" + strType + "]");
    };
    const auto loaded = [](const std::string& strAddr) {
        return Info("load Container info", FILE_STEM, "LoadContainerInfo", strAddr);
    };
    EXPECT_THAT(
        m_logger.GetLines(),
        ElementsAre(generated("node=n1 container type=B "), generated("node=n1 container type=A "),
                    generated("node=n2 container type=A "), unsupported("B"),
                    loaded("node=n1 container type=B "), unsupported("A"),
                    loaded("node=n1 container type=A "), unsupported("A"),
                    loaded("node=n2 container type=A ")));
}

TEST_F(Membership, NodeWithoutContainersEntersTheNodeTableOnly) {
    EXPECT_EQ(Framework().AddNodeAndContainer({{"n1", MakeStoredNode("n1", {})}}), 0);
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    EXPECT_THAT(AllContainers(), IsEmpty());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(Membership, KeyServesTheNodeTableAndTheNodesOwnIdItsContainers) {
    EXPECT_EQ(Framework().AddNodeAndContainer({{"key", MakeStoredNode("id", {"A"})}}), 0);
    EXPECT_TRUE(CNodeMgr::Instance().IsNodeExist("key"));
    EXPECT_FALSE(CNodeMgr::Instance().IsNodeExist("id"));
    EXPECT_THAT(AddressesOf(AllContainers()), ElementsAre(CContainerAddr("id", "A")));
}

TEST_F(Membership, RepeatedTypeAddsTheNodesAndNoContainer) {
    EXPECT_EQ(Framework().AddNodeAndContainer({{"n1", MakeStoredNode("n1", {"A"})},
                                               {"n2", MakeStoredNode("n2", {"B", "B"})},
                                               {"n3", MakeStoredNode("n3", {"C"})}}),
              ORVA_FAIL);
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2", "n3"));
    EXPECT_THAT(AllContainers(), IsEmpty());
    const std::vector<CLogLine> lines = m_logger.GetLines();
    ASSERT_GE(lines.size(), 3U);
    EXPECT_THAT(std::vector<CLogLine>(lines.end() - 3, lines.end()),
                ElementsAre(Err("load container info", 1, FILE_STEM, "LoadContainerInfo",
                                "insert map failed"),
                            Err("init container mgr", 1, FILE_STEM, "GenContainerTable",
                                "load container info fail."),
                            Err("framework common, init container mgr", 1, FILE_STEM,
                                "AddNodeAndContainer", "gen container table fail.")));
}

TEST_F(Membership, NodeThatRejoinsIsOverwrittenAndItsContainersComeBackToLife) {
    Add("n1", {"A"});
    const CContainerAddr addr("n1", "A");
    CContainerMgr& mgr = CContainerMgr::Instance();
    CNodeMgr::Instance().SetMemberStatus({"n1"}, CLUSTER_MEMBER_REMOVED);
    mgr.SetContainerOnline(addr, false);
    mgr.SetContainerMemberStatus(addr, CLUSTER_MEMBER_REMOVED);
    mgr.SetContainerResTaskNeedUpdate(addr, false);
    mgr.SetExtParamValueByKey(addr, "key", "kept");

    Add("n1", {"A", "B"});
    CNode node;
    ASSERT_TRUE(CNodeMgr::Instance().GetNode("n1", node));
    EXPECT_EQ(node.GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    EXPECT_THAT(ContainersOfNode("n1"), ElementsAre("A", "B"));
    const CContainer container = AllContainers()[addr];
    EXPECT_TRUE(container.IsOnline());
    EXPECT_TRUE(container.IsNeedUpdateResTask());
    EXPECT_EQ(container.GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    std::string strValue;
    EXPECT_EQ(container.GetValueByKey("key", strValue), 0);
    EXPECT_EQ(strValue, "kept");
}

TEST_F(Membership, NodeThatRejoinsWithFewerTypesLeavesTheContainersOfTheOthers) {
    Add("n1", {"A", "B"});
    Add("n1", {"B"});
    EXPECT_THAT(ContainersOfNode("n1"), ElementsAre("B"));
    EXPECT_THAT(AllContainers(), SizeIs(2));
}

TEST_F(Membership, StatusReachesTheKnownNodesAsItIs) {
    Add("n1", {"A"});
    Add("n2", {"A"});
    for (const int iStatus : {CLUSTER_MEMBER_REMOVED + 0, 77, -1, CLUSTER_MEMBER_NORMAL + 0}) {
        EXPECT_EQ(Framework().SetNodeClusterStatus({"ghost", "n2"}, iStatus), 0);
        CNode node;
        ASSERT_TRUE(CNodeMgr::Instance().GetNode("n2", node));
        EXPECT_EQ(node.GetMemberStatus(), iStatus);
        ASSERT_TRUE(CNodeMgr::Instance().GetNode("n1", node));
        EXPECT_EQ(node.GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    }
    EXPECT_FALSE(CNodeMgr::Instance().IsNodeExist("ghost"));
    EXPECT_EQ(AllContainers()[CContainerAddr("n2", "A")].GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    EXPECT_EQ(Framework().SetNodeClusterStatus({}, CLUSTER_MEMBER_REMOVED), 0);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    EXPECT_EQ(m_pStore->GetCallCount(), 0U);
}

}  // namespace
