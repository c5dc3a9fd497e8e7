#include <map>
#include <string>

#include "support/membership_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using namespace membership;

namespace {

TEST_F(AvailableContainers, AreThoseOfTheTypeEachWithATraceLine) {
    EXPECT_THAT(Available(), ElementsAre("n1", "n2", "n3"));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Kept("n1"), Kept("n2"), Kept("n3")));
    EXPECT_THAT(AllContainers(), SizeIs(6)) << "the table keeps all";
}

TEST_F(AvailableContainers, ReplaceWhatTheArgumentHeld) {
    ContainerMap containerMap = {{CContainerAddr("old", "A"), CContainer()}};
    Framework().GetAvailableContainer("A", containerMap);
    EXPECT_THAT(containerMap, SizeIs(3));
    Framework().GetAvailableContainer("nobody's", containerMap);
    EXPECT_THAT(containerMap, IsEmpty());
}

TEST_F(AvailableContainers, MayBeAskedForByATypeThatTheArgumentNames) {
    ContainerMap containerMap;
    Framework().GetAvailableContainer("A", containerMap);
    Framework().GetAvailableContainer(containerMap.begin()->first.GetContainerType(), containerMap);
    EXPECT_THAT(containerMap, SizeIs(3));
}

TEST_F(AvailableContainers, NeedANodeThatIsKnown) {
    CNodeMgr::Instance().RemoveNode("n2");
    EXPECT_THAT(Available(), ElementsAre("n1", "n3"));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Kept("n1"), Kept("n3")));
}

TEST_F(AvailableContainers, NeedANodeThatIsANormalMember) {
    for (const int iStatus : {CLUSTER_MEMBER_REMOVED + 0, 2, -1}) {
        Framework().SetNodeClusterStatus({"n1"}, iStatus);
        EXPECT_THAT(Available(), ElementsAre("n2", "n3")) << iStatus;
    }
    EXPECT_THAT(AllContainers(), SizeIs(6));
    Framework().SetNodeClusterStatus({"n1"}, CLUSTER_MEMBER_NORMAL);
    EXPECT_THAT(Available(), ElementsAre("n1", "n2", "n3"));
}

TEST_F(AvailableContainers, NeedToBeOnlineThemselves) {
    CContainerMgr::Instance().SetContainerOnline(CContainerAddr("n2", "A"), false);
    CContainerMgr::Instance().SetContainerOnline(CContainerAddr("n3", "B"), false);
    EXPECT_THAT(Available(), ElementsAre("n1", "n3"));
}

TEST_F(AvailableContainers, NeedEveryProcessToRun) {
    const CContainerAddr addr("n2", "A");
    CContainerMgr& mgr = CContainerMgr::Instance();
    mgr.SetProcessState(addr, {{"p1", PROCESS_STATE_RUNNING}, {"p2", PROCESS_STATE_RUNNING}});
    EXPECT_THAT(Available(), ElementsAre("n1", "n2", "n3"));
    for (const int iState : {PROCESS_STATE_STOPPED + 0, PROCESS_STATE_FREQUENCY_RESTART + 0, 9}) {
        mgr.SetProcessState(addr, {{"p1", PROCESS_STATE_RUNNING}, {"p2", iState}, {"p3", iState}});
        EXPECT_THAT(Available(), ElementsAre("n1", "n3"));
        EXPECT_THAT(m_logger.GetLines(),
                    ElementsAre(Kept("n1"),
                                Info("", "container", "IsProcessRunning",
                                     "containerType=A nodeId=n2 process=p2 stopped."),
                                Kept("n3")));
    }
}

TEST_F(AvailableContainers, StoppedProcessIsToldOfContainersThatPassAllElseAlone) {
    const std::map<std::string, int> stopped = {{"p", PROCESS_STATE_STOPPED}};
    CContainerMgr& mgr = CContainerMgr::Instance();
    for (const char* pszId : {"n1", "n2", "n3"}) {
        mgr.SetProcessState(CContainerAddr(pszId, "A"), stopped);
        mgr.SetProcessState(CContainerAddr(pszId, "B"), stopped);
    }
    CNodeMgr::Instance().RemoveNode("n1");
    Framework().SetNodeClusterStatus({"n2"}, CLUSTER_MEMBER_REMOVED);
    mgr.SetContainerOnline(CContainerAddr("n3", "A"), false);
    EXPECT_THAT(Available(), IsEmpty());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(AvailableContainers, AreNoMatterOfTheNodesOnlineFlagOrTheContainersMemberStatus) {
    CNodeMgr::Instance().SetNodeOnline("n1", false);
    CContainerMgr::Instance().SetContainerMemberStatus(CContainerAddr("n2", "A"),
                                                       CLUSTER_MEMBER_REMOVED);
    EXPECT_THAT(Available(), ElementsAre("n1", "n2", "n3"));
}

TEST_F(AvailableContainers, AreCopies) {
    ContainerMap containerMap;
    Framework().GetAvailableContainer("A", containerMap);
    CContainerMgr::Instance().SetContainerOnline(CContainerAddr("n1", "A"), false);
    CContainerMgr::Instance().RemoveContainer(CContainerAddr("n2", "A"));
    EXPECT_TRUE(containerMap[CContainerAddr("n1", "A")].IsOnline());
    EXPECT_THAT(containerMap, SizeIs(3));
}

}  // namespace
