#include <functional>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "support/fake_clock.h"
#include "support/node_manager_fixture.h"
#include "support/registry_fixture.h"

using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace node_manager;

namespace {

TEST_F(NodeManager, IsOneInTheProcess) {
    EXPECT_EQ(&CNodeMgr::Instance(), &CNodeMgr::Instance());
}

TEST_F(NodeManager, InitReplacesTheTableAndTheLaterOfTwoStays) {
    m_manager.Init({MakeStoredNode("gone")});
    m_manager.Init({MakeStoredNode("N2"), MakeStoredNode("N1", {}, "10.0.0.1"),
                    MakeStoredNode("N1", {}, "10.0.0.2")});
    EXPECT_THAT(Ids(), ElementsAre("N1", "N2"));
    EXPECT_EQ(m_manager.GetSize(), 2U);
    EXPECT_EQ(Known("N1").GetNodeIp(), "10.0.0.2");
    m_manager.Init({});
    EXPECT_THAT(Ids(), IsEmpty());
    EXPECT_EQ(m_manager.GetSize(), 0U);
}

TEST_F(NodeManager, InitLeavesTheFaultTimes) {
    m_manager.SetContainerShiftFaultTimes({"N1", "Cam"}, 7);
    m_manager.Init({MakeStoredNode("N1")});
    EXPECT_EQ(m_manager.GetContainerShiftFaultTimes({"N1", "Cam"}), 7U);
}

TEST_F(NodeManager, AddedNodesReplaceWholeAndOthersStay) {
    CNode old = MakeStoredNode("N1", {"Cam"}, "10.0.0.1");
    old.SetCurResource(MakeCpu(10));
    old.SetCurResource(MakeCpu(20));
    old.SetOnline(false);
    old.SetMemberStatus(CLUSTER_MEMBER_REMOVED);
    m_manager.Init({old, MakeStoredNode("N2", {}, "10.0.0.2")});
    m_manager.AddNode(
        {{"N1", MakeStoredNode("N1", {"Dev"}, "10.0.0.9")}, {"N3", MakeStoredNode("N3")}});
    EXPECT_THAT(Ids(), ElementsAre("N1", "N2", "N3"));
    EXPECT_EQ(m_manager.GetSize(), 3U);
    EXPECT_EQ(Known("N2").GetNodeIp(), "10.0.0.2");
    const CNode added = Known("N1");
    EXPECT_EQ(added.GetNodeIp(), "10.0.0.9");
    EXPECT_THAT(ContainersOf(added), ElementsAre("Dev"));
    EXPECT_TRUE(added.IsOnline());
    EXPECT_EQ(added.GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    m_manager.SetSystemResource("N1", MakeCpu(0), MakeCpu(60));
    EXPECT_EQ(Known("N1").GetCurResource().GetCpu(), 60) << "the old samples are gone";
}

TEST_F(NodeManager, AddedNodesAreFoundUnderTheMapsKey) {
    m_manager.AddNode({{"key", MakeStoredNode("id")}});
    EXPECT_TRUE(m_manager.IsNodeExist("key"));
    EXPECT_FALSE(m_manager.IsNodeExist("id"));
    EXPECT_EQ(Known("key").GetNodeId(), "id");
}

TEST_F(NodeManager, AddingNothingChangesNothing) {
    m_manager.Init({MakeStoredNode("N1")});
    m_manager.AddNode({});
    EXPECT_THAT(Ids(), ElementsAre("N1"));
}

TEST_F(NodeManager, AllNodesComeInKeyOrderBehindWhatTheListHolds) {
    m_manager.Init({MakeStoredNode("b"), MakeStoredNode("\x80"), MakeStoredNode("B"),
                    MakeStoredNode("N10"), MakeStoredNode("N2"), MakeStoredNode("")});
    std::list<CNode> nodeList = {MakeStoredNode("z"), MakeStoredNode("y")};
    m_manager.GetAllNode(nodeList);
    std::vector<std::string> ids;
    for (const CNode& node : nodeList) {
        ids.push_back(node.GetNodeId());
    }
    EXPECT_THAT(ids, ElementsAre("z", "y", "", "B", "N10", "N2", "b", "\x80"));
}

TEST_F(NodeManager, HandsOutCopies) {
    m_manager.Init({MakeStoredNode("N1", {}, "10.0.0.1")});
    CNode copy = Known("N1");
    copy.SetNodeIp("10.0.0.9");
    std::list<CNode> nodeList;
    m_manager.GetAllNode(nodeList);
    nodeList.front().SetNodeIp("10.0.0.9");
    EXPECT_EQ(Known("N1").GetNodeIp(), "10.0.0.1");
}

TEST_F(NodeManager, UnknownNodeLeavesTheArgument) {
    CNode node = MakeStoredNode("mine", {}, "10.0.0.1");
    EXPECT_FALSE(m_manager.GetNode("N1", node));
    EXPECT_EQ(node.GetNodeId(), "mine");
    EXPECT_EQ(node.GetNodeIp(), "10.0.0.1");
}

TEST_F(NodeManager, UnknownNodesChangeNothingAndAreSilent) {
    m_manager.Init({MakeStoredNode("N1", {"Cam"}, "")});
    m_manager.SetNodeOnline("N2", true);
    m_manager.SetMemberStatus({"N2", "N3"}, CLUSTER_MEMBER_REMOVED);
    m_manager.RemoveNode("N2");
    EXPECT_FALSE(m_manager.IsNodeExist("N2"));
    EXPECT_FALSE(m_manager.IsNodeOnline("N2"));
    EXPECT_THAT(Ids(), ElementsAre("N1"));
    EXPECT_EQ(Known("N1").GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(NodeManager, OnlineFlagIsThatOfTheNode) {
    m_manager.Init({MakeStoredNode("N1"), MakeStoredNode("N2")});
    EXPECT_TRUE(m_manager.IsNodeOnline("N1"));
    m_manager.SetNodeOnline("N1", false);
    EXPECT_FALSE(m_manager.IsNodeOnline("N1"));
    EXPECT_TRUE(m_manager.IsNodeOnline("N2"));
    m_manager.SetNodeOnline("N1", true);
    EXPECT_TRUE(m_manager.IsNodeOnline("N1"));
}

TEST_F(NodeManager, ReportSetsTheTotalAndFeedsTheSamples) {
    m_manager.Init({MakeStoredNode("N1"), MakeStoredNode("N2")});
    for (const int iCpu : {10, 20, 30, 60}) {
        m_manager.SetSystemResource("N1", MakeCpu(100 + iCpu), MakeCpu(iCpu));
    }
    EXPECT_EQ(Known("N1").GetTotalResource().GetCpu(), 160);
    EXPECT_EQ(Known("N1").GetCurResource().GetCpu(), 36);
    EXPECT_EQ(Known("N2").GetTotalResource().GetCpu(), 0);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(NodeManager, ReportLeavesTheReportTime) {
    SetClock(NUMERIC_NOW);
    m_manager.Init({MakeStoredNode("N1")});
    AdvanceClock(91);
    m_manager.SetSystemResource("N1", MakeCpu(1), MakeCpu(1));
    EXPECT_TRUE(Known("N1").IsReportStatusOutTime());
}

TEST_F(NodeManager, ReportOfAnUnknownNodeIsLogged) {
    m_manager.SetSystemResource("N%d", MakeCpu(1), MakeCpu(1));
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Err("Node mgr set system resource", 1, "node_mgr", "SetSystemResource",
                                "can not find the node, node id=N%d")));
    EXPECT_EQ(m_manager.GetSize(), 0U);
}

TEST_F(NodeManager, ReportOfAnUnknownNodeWithoutALoggerIsSilent) {
    OMAdapter::getInstance().setLogger(nullptr);
    m_manager.SetSystemResource("N1", MakeCpu(1), MakeCpu(1));
    EXPECT_EQ(m_manager.GetSize(), 0U);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(NodeManager, MemberStatusIsSetOnListedNodesAndTakesAnyNumber) {
    m_manager.Init({MakeStoredNode("N1"), MakeStoredNode("N2"), MakeStoredNode("N3")});
    m_manager.SetMemberStatus({"N3", "unknown", "N1", "N1"}, 42);
    EXPECT_EQ(Known("N1").GetMemberStatus(), 42);
    EXPECT_EQ(Known("N2").GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    EXPECT_EQ(Known("N3").GetMemberStatus(), 42);
}

TEST_F(NodeManager, RemovedNodeLeavesTheOthersAndItsFaultTimes) {
    m_manager.Init({MakeStoredNode("N1"), MakeStoredNode("N2")});
    m_manager.SetContainerShiftFaultTimes({"N1", "Cam"}, 3);
    m_manager.RemoveNode("N1");
    EXPECT_THAT(Ids(), ElementsAre("N2"));
    EXPECT_EQ(m_manager.GetSize(), 1U);
    EXPECT_EQ(m_manager.GetContainerShiftFaultTimes({"N1", "Cam"}), 3U);
}

struct CRemovalCase {
    std::list<std::string> before;
    std::string strType;
    std::list<std::string> after;
};

TEST_F(NodeManager, RemovesTheFirstContainerOfTheTypeAndTellsHowManyAreLeft) {
    for (const auto& [before, strType, after] :
         {CRemovalCase{{"Cam", "Dev", "Cam"}, "Cam", {"Dev", "Cam"}},
          CRemovalCase{{"Cam", "Dev"}, "Dev", {"Cam"}},
          CRemovalCase{{"Cam", "Dev"}, "cam", {"Cam", "Dev"}}, CRemovalCase{{"Cam"}, "Cam", {}},
          CRemovalCase{{}, "Cam", {}}}) {
        m_manager.Init({MakeStoredNode("N1", before), MakeStoredNode("N2", before)});
        unsigned int uiLeft = 99;
        m_manager.RemoveNodeContainer("N1", strType, uiLeft);
        EXPECT_EQ(uiLeft, after.size());
        EXPECT_EQ(ContainersOf(Known("N1")), after);
        EXPECT_EQ(ContainersOf(Known("N2")), before);
    }
}

TEST_F(NodeManager, RemovingAContainerOfAnUnknownNodeLeavesNone) {
    unsigned int uiLeft = 99;
    m_manager.RemoveNodeContainer("N1", "Cam", uiLeft);
    EXPECT_EQ(uiLeft, 0U);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

struct CSubnetCase {
    uint32_t uiIp;
    uint32_t uiMask;
    std::list<std::string> ids;
};

TEST_F(NodeManager, NearbyNodesHaveTheSameAddressUnderTheMask) {
    m_manager.Init({MakeStoredNode("far", {}, "10.2.0.1"), MakeStoredNode("b", {}, "10.1.0.2"),
                    MakeStoredNode("a", {}, "10.1.0.1"), MakeStoredNode("none")});
    for (const auto& [uiIp, uiMask, ids] :
         {CSubnetCase{0x0A010063, 0xFFFFFF00, {"a", "b"}},
          CSubnetCase{0x0A010001, 0xFFFFFFFF, {"a"}},
          CSubnetCase{0x0B000000, 0, {"a", "b", "far", "none"}},
          CSubnetCase{0x00000001, 0x00000003, {"a", "far"}}, CSubnetCase{0, 0xFFFFFFFF, {"none"}},
          CSubnetCase{0x0B000000, 0xFFFFFFFF, {}}}) {
        std::list<std::string> nodeList = {"old"};
        EXPECT_EQ(m_manager.GetNearbyNodeListByIP(uiIp, uiMask, nodeList), 0);
        EXPECT_EQ(nodeList, ids) << std::hex << uiIp << " under " << uiMask;
    }
}

TEST_F(NodeManager, NearbyNodesAreNamedByTheirOwnIdInKeyOrder) {
    m_manager.AddNode(
        {{"1", MakeStoredNode("z", {}, "10.1.0.1")}, {"2", MakeStoredNode("a", {}, "10.1.0.2")}});
    std::list<std::string> nodeList;
    EXPECT_EQ(m_manager.GetNearbyNodeListByIP(0x0A010000, 0xFFFF0000, nodeList), 0);
    EXPECT_THAT(nodeList, ElementsAre("z", "a"));
}

TEST_F(NodeManager, FaultTimesAreKeptPerContainerAndZeroWhenNeverSet) {
    constexpr uint64_t NUMERIC_MOST = std::numeric_limits<uint64_t>::max();
    EXPECT_EQ(m_manager.GetContainerShiftFaultTimes({"N1", "Cam"}), 0U);
    m_manager.SetContainerShiftFaultTimes({"N1", "Cam"}, 1);
    m_manager.SetContainerShiftFaultTimes({"N1", "Cam"}, NUMERIC_MOST);
    m_manager.SetContainerShiftFaultTimes({"N1", "Dev"}, 2);
    EXPECT_EQ(m_manager.GetContainerShiftFaultTimes({"N1", "Cam"}), NUMERIC_MOST);
    EXPECT_EQ(m_manager.GetContainerShiftFaultTimes({"N1", "Dev"}), 2U);
    EXPECT_EQ(m_manager.GetContainerShiftFaultTimes({"N2", "Cam"}), 0U);
    m_manager.SetContainerShiftFaultTimes({"N1", "Dev"}, 0);
    EXPECT_EQ(m_manager.GetContainerShiftFaultTimes({"N1", "Dev"}), 0U);
}

TEST_F(NodeManager, ReadingFaultTimesAddsNoEntry) {
    m_manager.GetContainerShiftFaultTimes({"N1", "0Cam"});
    m_manager.SetContainerShiftFaultTimes({"N10", "Cam"}, 5);
    m_manager.ClearContainerShiftStatus("N1");
    EXPECT_EQ(m_manager.GetContainerShiftFaultTimes({"N10", "Cam"}), 5U)
        << "an entry of N1, added by the read, would have taken the place of this one";
}

TEST_F(NodeManager, ContainersThatReadTheSameShareFaultTimesUnderTheFirstsNode) {
    m_manager.SetContainerShiftFaultTimes({"N1", "0Cam"}, 1);
    m_manager.SetContainerShiftFaultTimes({"N10", "Cam"}, 2);
    EXPECT_EQ(m_manager.GetContainerShiftFaultTimes({"N1", "0Cam"}), 2U);
    m_manager.ClearContainerShiftStatus("N10");
    EXPECT_EQ(m_manager.GetContainerShiftFaultTimes({"N10", "Cam"}), 2U);
    m_manager.ClearContainerShiftStatus("N1");
    EXPECT_EQ(m_manager.GetContainerShiftFaultTimes({"N10", "Cam"}), 0U);
}

/// Two containers of N1 and one each of N10 and N2, all with fault times.
class FaultTimes : public NodeManager {
protected:
    FaultTimes() {
        for (const CContainerAddr& addr : m_addrs) {
            m_manager.SetContainerShiftFaultTimes(addr, 1);
        }
    }

    std::vector<uint64_t> Times() {
        std::vector<uint64_t> times;
        for (const CContainerAddr& addr : m_addrs) {
            times.push_back(m_manager.GetContainerShiftFaultTimes(addr));
        }
        return times;
    }

    const std::vector<CContainerAddr> m_addrs = {
        {"N1", "Cam"}, {"N1", "Dev"}, {"N10", "Cam"}, {"N2", "Cam"}};
};

TEST_F(FaultTimes, OfOneNodeAreClearedForAllItsContainers) {
    m_manager.ClearContainerShiftStatus("N1");
    EXPECT_THAT(Times(), ElementsAre(0, 0, 1, 1));
}

TEST_F(FaultTimes, OfListedNodesAreCleared) {
    m_manager.ClearContainerShiftStatus(std::list<std::string>{"N2", "unknown", "N1"});
    EXPECT_THAT(Times(), ElementsAre(0, 0, 1, 0));
}

TEST_F(FaultTimes, OfNoNodeStay) {
    m_manager.ClearContainerShiftStatus("unknown");
    m_manager.ClearContainerShiftStatus(std::list<std::string>{});
    EXPECT_THAT(Times(), ElementsAre(1, 1, 1, 1));
}

TEST_F(NodeManager, ServesManyThreadsAtOnce) {
    m_manager.Init({MakeStoredNode("N1", {"Cam"}, "10.0.0.1")});
    const NodeMap second = {{"N2", MakeStoredNode("N2", {}, "10.0.0.2")}};
    const std::vector<std::function<void()>> turns = {
        [&] {
            m_manager.AddNode(second);
            m_manager.RemoveNode("N2");
        },
        [&] {
            EXPECT_THAT(m_manager.GetSize(), AnyOf(1U, 2U));
            EXPECT_THAT(Ids(), AnyOf(ElementsAre("N1"), ElementsAre("N1", "N2")));
        },
        [&] {
            m_manager.SetSystemResource("N1", MakeCpu(100), MakeCpu(50));
            m_manager.SetNodeOnline("N1", true);
            m_manager.SetMemberStatus({"N1", "N2"}, CLUSTER_MEMBER_NORMAL);
        },
        [&] {
            EXPECT_TRUE(m_manager.IsNodeOnline("N1"));
            EXPECT_THAT(Known("N1").GetCurResource().GetCpu(), AnyOf(0, 50));
            std::list<std::string> nodeList;
            EXPECT_EQ(m_manager.GetNearbyNodeListByIP(0x0A000001, 0xFFFFFFFF, nodeList), 0);
            EXPECT_THAT(nodeList, ElementsAre("N1"));
        },
        [&] {
            m_manager.SetContainerShiftFaultTimes({"N1", "Cam"}, 1);
            m_manager.ClearContainerShiftStatus("N1");
        },
        [&] {
            EXPECT_THAT(m_manager.GetContainerShiftFaultTimes({"N1", "Cam"}), AnyOf(0U, 1U));
        },
        [&] { m_manager.Init({MakeStoredNode("N1", {"Cam"}, "10.0.0.1")}); }};
    std::vector<std::thread> threads;
    for (const auto& turn : turns) {
        threads.emplace_back([&turn] {
            for (int i = 0; i < 500; ++i) {
                turn();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(m_manager.IsNodeExist("N1"));
}

}  // namespace
