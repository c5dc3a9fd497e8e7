#include <algorithm>

#include "cluster_engine/engine_fixture.h"
#include "reference_host/accepted_links.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

constexpr int NUMERIC_STORE_CODE = 4711;
constexpr unsigned int NUMERIC_NEVER = 1'000'000;  ///< a call that the test does not come to

CJoin JoinOf(const std::string& strNodeId, std::vector<std::string> types = {"MeroRecord"}) {
    CJoin join;
    join.strNodeId = strNodeId;
    join.strIp = "10.0.0.9";
    join.iIpType = 1;
    join.iNodeRole = 2;
    join.iDomainRole = 3;
    join.types = std::move(types);
    return join;
}

CLeave LeaveOf(const std::string& strNodeId, const std::string& strType = "") {
    CLeave leave;
    leave.strNodeId = strNodeId;
    leave.strType = strType;
    return leave;
}

CDrain DrainOf(const std::string& strNodeId) {
    CDrain drain;
    drain.strNodeId = strNodeId;
    return drain;
}

CMemberStatus StatusOf(const std::string& strNodeId, EMemberStatus eStatus) {
    CMemberStatus status;
    status.nodes = {strNodeId};
    status.eStatus = eStatus;
    return status;
}

/// The results of an answer, as "task result place".
std::vector<std::string> ResultsOf(const CAnswer& answer) {
    std::vector<std::string> results;
    for (const CTaskResult& result : answer.tasks) {
        results.push_back(result.strTaskId + ' ' + NameOf(result.eResult) +
                          (result.strNodeId.empty() ? "" : ' ' + result.strNodeId));
    }
    return results;
}

/// A store that a process loses for good at its death.
class CDyingStore : public IStore {
public:
    CDyingStore(std::shared_ptr<IStore> pStore, int iCalls)
        : m_pStore(std::move(pStore)), m_iCalls(iCalls) {}

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override {
        return m_iCalls-- > 0 ? m_pStore->Read(strPath, pWatcher, answer) : NUMERIC_STORE_CODE;
    }
    int Write(const std::string& strPath, const std::string& strText) override {
        return m_iCalls-- > 0 ? m_pStore->Write(strPath, strText) : NUMERIC_STORE_CODE;
    }
    int Commit(const std::vector<CStoreCondition>& conditions,
               const std::vector<CStoreText>& texts) override {
        return m_iCalls-- > 0 ? m_pStore->Commit(conditions, texts) : NUMERIC_STORE_CODE;
    }

private:
    const std::shared_ptr<IStore> m_pStore;
    int m_iCalls;
};

class EngineMembership : public CEngineTest {
protected:
    void Begin(const std::vector<CStoredNode>& nodes) {
        Store(nodes);
        Load();
        Settle();
    }

    std::string Document() { return *m_pStore->Get(Path("/Cluster")); }

    int StatusInRegistry(const std::string& strNodeId) {
        CNode node;
        EXPECT_TRUE(CNodeMgr::Instance().GetNode(strNodeId, node));
        return node.GetMemberStatus();
    }

    /// In how many tables each of the tasks stands.
    std::size_t CountOf(const std::string& strTaskId) {
        std::size_t uiCount = 0;
        for (const auto& [addr, container] : AllContainers()) {
            const std::vector<std::string> ids = TasksOf(addr);
            uiCount += static_cast<std::size_t>(std::count(ids.begin(), ids.end(), strTaskId));
        }
        return uiCount;
    }
};

const std::vector<CStoredNode> ONE = {{"n1", {"MeroRecord"}}};
const std::vector<CStoredNode> TWO = {{"n1", {"MeroRecord"}, "Normal", "10.0.0.1"},
                                      {"n2", {"MeroRecord"}, "Normal", "10.0.0.2"}};

TEST_F(EngineMembership, JoinedNodeStandsInTheDocumentAndGetsWork) {
    Begin(ONE);
    Must(JoinOf("n2"));
    EXPECT_EQ(Document(),
              ClusterText({{"n1", {"MeroRecord"}}, {"n2", {"MeroRecord"}, "Normal", "10.0.0.9"}}));
    EXPECT_TRUE(IsAcceptedLink("10.0.0.9", VALIDATED_LINK_TYPE));
    ASSERT_EQ(m_events.Count(EEvent::JOINED), 1U);
    EXPECT_EQ(m_events.Of(EEvent::JOINED)[0].strCause, "with MeroRecord");
    Must(ReportOf(Recorder("n2")));
    Record({{"a"}, {"b"}});
    EXPECT_THAT(TasksOf(Recorder("n2")), ElementsAre("b"));
    Restart();
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2"));
    EXPECT_THAT(TasksOf(Recorder("n2")), ElementsAre("b"));
}

TEST_F(EngineMembership, JoinIntoAClusterWithoutADocumentMakesOne) {
    Load();
    Must(JoinOf("n1"));
    Restart();
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
}

TEST_F(EngineMembership, JoinedContainerIsNotSilentBeforeItsTimeIsOver) {
    Begin(ONE);
    Must(JoinOf("n2"));
    for (int i = 0; i < 9; ++i) {
        Must(ReportOf(Recorder("n1")));
        Pass(10);
    }
    EXPECT_EQ(m_events.Count(EEvent::OFFLINE), 1U) << "only n1 itself, which never reports";
    Must(ReportOf(Recorder("n1")));
    Pass(1);
    EXPECT_GE(m_events.Count(EEvent::OFFLINE), 2U);
}

TEST_F(EngineMembership, JoinIsLookedAtBeforeItIsMade) {
    Begin({{"n1", {"2x"}}});
    const auto before = Texts();
    CJoin badIp = JoinOf("n2");
    badIp.strIp = "10.0\n";
    const std::vector<std::pair<CJoin, EFault>> joins = {
        {JoinOf("n1"), EFault::NODE_KNOWN},
        {JoinOf("n2", {"A", "B", "A"}), EFault::BAD_INPUT},
        {JoinOf("n12", {"A", "x"}), EFault::NAMES_RUN_TOGETHER},
        {JoinOf("n2", {"\x01"}), EFault::BAD_INPUT},
        {JoinOf("n2", {""}), EFault::BAD_INPUT},
        {JoinOf("n2", std::vector<std::string>(10001, "A")), EFault::TOO_MUCH},
        {badIp, EFault::BAD_INPUT}};
    for (const auto& [join, eFault] : joins) {
        EXPECT_EQ(Do(join).eFault, eFault) << join.strNodeId;
    }
    EXPECT_EQ(Texts(), before);
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    EXPECT_THAT(m_events.Get(), IsEmpty());
}

TEST_F(EngineMembership, JoinOfANodeThatTheDocumentHasAlreadyIsRefused) {
    Begin(ONE);
    Store(TWO);
    EXPECT_EQ(Do(JoinOf("n2")).eFault, EFault::NODE_KNOWN);
    EXPECT_EQ(Document(), ClusterText(TWO));
}

TEST_F(EngineMembership, JoinOverWhatCannotBeReadOfAnEarlierLifeIsRefused) {
    Begin({{"n1", {"MeroRecord"}}});
    m_pStore->Put(Path("/Engine/Assignment/n2/MeroRecord/0"), "torn");
    const std::string strBefore = Document();
    EXPECT_EQ(Do(JoinOf("n2")).eFault, EFault::DOCUMENT_UNREADABLE);
    EXPECT_EQ(Document(), strBefore);
    EXPECT_EQ(*m_pStore->Get(Path("/Engine/Assignment/n2/MeroRecord/0")), "torn");
}

TEST_F(EngineMembership, JoinIsNotReadAsRemovedBehindARemovedNode) {
    Begin({{"n1", {"MeroRecord"}}, {"n2", {"MeroRecord"}, "Removed"}});
    Must(JoinOf("n3"));
    Restart();
    EXPECT_EQ(StatusInRegistry("n3"), CLUSTER_MEMBER_NORMAL);
    EXPECT_EQ(StatusInRegistry("n2"), CLUSTER_MEMBER_REMOVED);
}

TEST_F(EngineMembership, StoreThatFailsRefusesAJoinAndNothingHasChanged) {
    Begin(ONE);
    Must(JoinOf("n2"));
    Must(LeaveOf("n2"));  // documents of an earlier life have to be emptied too
    unsigned int uiCalls = 0;
    for (unsigned int uiNth = 1;; ++uiNth) {
        const auto before = Texts();
        m_events.Clear();
        m_pStore->FailCall(uiNth, NUMERIC_STORE_CODE);
        const unsigned int uiBefore = m_pStore->GetCallCount();
        const CAnswer answer = m_pEngine->Apply({m_iNow, JoinOf("n2")});
        uiCalls = m_pStore->GetCallCount() - uiBefore;
        if (uiNth > uiCalls) {
            m_pStore->FailCall(NUMERIC_NEVER, NUMERIC_STORE_CODE);
            EXPECT_EQ(answer.eFault, EFault::NONE);
            break;
        }
        EXPECT_EQ(answer.eFault, EFault::STORE_FAILED) << uiNth;
        EXPECT_EQ(m_pEngine->Commit(), 0);
        EXPECT_EQ(Texts(), before);
        EXPECT_THAT(NodeIds(), ElementsAre("n1"));
        EXPECT_EQ(m_events.Count(EEvent::JOINED), 0U);
    }
    EXPECT_GE(uiCalls, 2U);
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2"));
}

TEST_F(EngineMembership, ClusterDocumentThatIsFullRefusesAJoin) {
    std::vector<CStoredNode> nodes;
    for (int i = 0; i < 400; ++i) {
        nodes.push_back({"node-with-a-long-name-" + std::to_string(1000 + i), {"X"}});
    }
    ASSERT_LT(ClusterText(nodes).size(), 65536U);
    Store(nodes);
    Load();
    CAnswer answer;
    for (int i = 0; i < 100 && answer.eFault == EFault::NONE; ++i) {
        answer = Do(JoinOf("new-" + std::to_string(1000 + i), {"A", "B", "C"}));
    }
    EXPECT_EQ(answer.eFault, EFault::DOCUMENT_FULL);
    EXPECT_EQ(AllContainers().count({"new-1099", "A"}), 0U);
}

TEST_F(EngineMembership, LeavingNodesWorkMovesAndTheDocumentLosesIt) {
    Begin(TWO);
    Record({{"a"}, {"b"}});
    const CAnswer answer = Must(LeaveOf("n2"));
    EXPECT_THAT(ResultsOf(answer), ElementsAre("b moved n1"));
    EXPECT_THAT(TasksOf(Recorder("n1")), ElementsAre("a", "b"));
    EXPECT_EQ(Document(), ClusterText(ONE));
    EXPECT_EQ(m_events.Count(EEvent::LEFT), 2U) << "the container and the node";
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    Restart();
    EXPECT_THAT(TasksOf(Recorder("n1")), ElementsAre("a", "b"));
}

TEST_F(EngineMembership, LinkOfANodeThatLeftIsDropped) {
    Begin(TWO);
    ASSERT_TRUE(IsAcceptedLink("10.0.0.2", VALIDATED_LINK_TYPE));
    Must(LeaveOf("n2"));
    EXPECT_FALSE(IsAcceptedLink("10.0.0.2", VALIDATED_LINK_TYPE));
    EXPECT_TRUE(IsAcceptedLink("10.0.0.1", VALIDATED_LINK_TYPE));
}

TEST_F(EngineMembership, LinkThatANeighbourSharesStays) {
    Begin({{"n1", {"MeroRecord"}}, {"n2", {"MeroRecord"}}});
    Must(LeaveOf("n2"));
    EXPECT_TRUE(IsAcceptedLink("10.0.0.1", VALIDATED_LINK_TYPE));
}

TEST_F(EngineMembership, TaskThatMustNotMoveEndsAndIsNamed) {
    Begin(TWO);
    Record({{"a"}, {"b", 1, false}});
    const CAnswer answer = Must(LeaveOf("n2"));
    EXPECT_THAT(ResultsOf(answer), ElementsAre("b ended"));
    EXPECT_EQ(answer.tasks[0].strFault, "cannot_move");
    EXPECT_EQ(m_events.Of(EEvent::ENDED)[0].strTaskId, "b");
    EXPECT_EQ(CountOf("b"), 0U);
}

TEST_F(EngineMembership, WhatFindsNoRoomWaitsForAComing) {
    Begin(ONE);
    Record({{"a", 5}, {"b", 6}});
    EXPECT_THAT(ResultsOf(Must(LeaveOf("n1"))), ElementsAre("a waits", "b waits"));
    EXPECT_EQ(m_events.Count(EEvent::WAITS_FOR_ROOM), 2U);
    EXPECT_THAT(NodeIds(), IsEmpty());
    Restart();
    Must(JoinOf("n3"));
    Must(ReportOf(Recorder("n3")));
    Pass(2);
    EXPECT_THAT(TasksOf(Recorder("n3")), ElementsAre("a", "b"));
}

TEST_F(EngineMembership, WorkOfATypeWithoutAPluginWaits) {
    Begin({{"n1", {"Other"}}});
    CContainerReport report;
    report.container = CContainerAddr("n1", "Other");
    report.tasks.emplace();
    for (const bool bMovable : {true, false}) {
        CReportedTask task;
        task.strTaskId = bMovable ? "moves" : "stays";
        task.movable = bMovable;
        report.tasks->push_back(task);
    }
    Must(report);
    EXPECT_THAT(ResultsOf(Must(LeaveOf("n1"))), ElementsAre("moves waits", "stays ended"));
}

TEST_F(EngineMembership, OneOfTwoContainersLeaves) {
    Begin({{"n1", {"MeroRecord", "Other"}}});
    Must(LeaveOf("n1", "MeroRecord"));
    EXPECT_EQ(Document(), ClusterText({{"n1", {"Other"}}}));
    EXPECT_THAT(ContainersOfNode("n1"), ElementsAre("Other"));
    EXPECT_EQ(m_events.Count(EEvent::LEFT), 1U);
}

TEST_F(EngineMembership, WithItsLastContainerANodeLeaves) {
    Begin(TWO);
    Must(LeaveOf("n2", "MeroRecord"));
    EXPECT_EQ(Document(), ClusterText(ONE));
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    CNodeReport report;
    report.strNodeId = "n2";
    EXPECT_EQ(Do(report).eFault, EFault::UNKNOWN_NODE);
}

TEST_F(EngineMembership, NodeWithoutContainersLeaves) {
    Begin({{"n1", {"MeroRecord"}}, {"n2", {}}});
    Must(LeaveOf("n2"));
    EXPECT_EQ(Document(), ClusterText(ONE));
}

TEST_F(EngineMembership, UnknownOnesCannotLeaveAndTheDocumentKeepsThem) {
    Begin(ONE);
    Store({{"n1", {"MeroRecord"}}, {"n2", {"MeroRecord"}}});
    const auto before = Texts();
    EXPECT_EQ(Do(LeaveOf("n2")).eFault, EFault::UNKNOWN_NODE);
    EXPECT_EQ(Do(LeaveOf("n1", "Other")).eFault, EFault::UNKNOWN_CONTAINER);
    EXPECT_EQ(Texts(), before);
}

TEST_F(EngineMembership, LeaveThatCannotReadTheDocumentIsRefused) {
    Begin(TWO);
    Record({{"a"}, {"b"}});
    m_pStore->Put(Path("/Cluster"), "{");
    EXPECT_EQ(Do(LeaveOf("n2")).eFault, EFault::DOCUMENT_UNREADABLE);
    EXPECT_EQ(m_events.Count(EEvent::DOCUMENT_UNREADABLE), 1U);
    EXPECT_THAT(TasksOf(Recorder("n2")), ElementsAre("b"));
}

TEST_F(EngineMembership, LeaveTakesARunningShiftOver) {
    Begin({{"n1", {"MeroRecord"}}, {"n2", {"MeroRecord"}}});
    Record({{"a", 600}, {"b", 600}});
    PassReporting(100, {Recorder("n1")});
    ASSERT_EQ(m_events.Count(EEvent::SHIFT_STARTED), 1U);
    m_events.Clear();
    EXPECT_THAT(ResultsOf(Must(LeaveOf("n2"))), ElementsAre("b waits"));
    EXPECT_EQ(m_events.Count(EEvent::SHIFT_ENDED), 1U);
    EXPECT_EQ(CNodeMgr::Instance().GetContainerShiftFaultTimes(Recorder("n2")), 0U);
    EXPECT_FALSE(CScheduleMgr::Instance().IsScheduling());
}

TEST_F(EngineMembership, RejoinedContainerBeginsWithNothing) {
    Begin(TWO);
    Record({{"a"}, {"b"}});
    m_pEngine->Apply({m_iNow, LeaveOf("n2")});
    Must(JoinOf("n2"));  // both share one commit
    Restart();
    EXPECT_THAT(TasksOf(Recorder("n2")), IsEmpty());
    EXPECT_THAT(TasksOf(Recorder("n1")), UnorderedElementsAre("a", "b"));
}

TEST_F(EngineMembership, DocumentsOfAnEarlierLifeAreEmptied) {
    Begin(TWO);
    Record({{"a"}, {"b", 1, false}});
    const std::string strPath = Path("/Engine/Assignment/n2/MeroRecord/0");
    const std::string strText = *m_pStore->Get(strPath);
    ASSERT_THAT(strText, HasSubstr("\"b\""));
    Must(LeaveOf("n2"));
    m_pStore->Put(strPath, strText);
    Must(JoinOf("n2"));
    Restart();
    EXPECT_THAT(TasksOf(Recorder("n2")), IsEmpty());
}

/// The Nth call of the store fails, once.
class LeaveWithAFailingStore : public EngineMembership,
                               public ::testing::WithParamInterface<unsigned int> {
protected:
    LeaveWithAFailingStore() {
        Begin(TWO);
        Record({{"a", 600}, {"b", 600}, {"c", 10}, {"d", 10}, {"e", 5, false}, {"f", 5, false}});
        m_before = TasksOf(Recorder("n2"));
        m_events.Clear();
    }

    /// Nothing that may move is lost or stands twice.
    void ExpectAllThere(const std::vector<std::string>& ids) {
        Settle();
        Must(JoinOf("n3"));
        Must(ReportOf(Recorder("n3")));
        Pass(15);
        for (const std::string& strTaskId : ids) {
            EXPECT_EQ(CountOf(strTaskId), 1U) << strTaskId;
        }
    }

    std::vector<std::string> m_before;
};

TEST_P(LeaveWithAFailingStore, IsRefusedWithNothingChangedOrCarriedOut) {
    m_pStore->FailCall(GetParam(), NUMERIC_STORE_CODE);
    const CAnswer answer = m_pEngine->Apply({m_iNow, LeaveOf("n2")});
    if (answer.eFault != EFault::NONE) {
        EXPECT_EQ(answer.eFault, EFault::STORE_FAILED);
        EXPECT_EQ(TasksOf(Recorder("n2")), m_before);
        EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2"));
        EXPECT_EQ(StatusInRegistry("n2"), CLUSTER_MEMBER_NORMAL);
        EXPECT_FALSE(AllContainers().at(Recorder("n2")).IsFaultShift());
        EXPECT_FALSE(AllContainers().at(Recorder("n2")).GetFaultStatus());
        EXPECT_FALSE(CScheduleMgr::Instance().IsScheduling());
    }
    m_pEngine->Commit();
    m_pStore->FailCall(NUMERIC_NEVER, NUMERIC_STORE_CODE);
    ASSERT_EQ(m_pEngine->Commit(), 0);
    if (answer.eFault != EFault::NONE) {
        EXPECT_EQ(m_events.Count(EEvent::LEFT) + m_events.Count(EEvent::SHIFTED), 0U);
        EXPECT_EQ(Document(), ClusterText(TWO));
        Restart();
        EXPECT_EQ(TasksOf(Recorder("n2")), m_before);
    } else {
        EXPECT_EQ(Document(), ClusterText(ONE));
        Restart();
        EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    }
    ExpectAllThere({"a", "b", "c", "d"});
}

TEST_P(LeaveWithAFailingStore, AStartFindsEachTaskOnceWhereverItsWritesWereCut) {
    SetStore(std::make_shared<CDyingStore>(m_pGate, static_cast<int>(GetParam()) - 1));
    m_pEngine->Apply({m_iNow, LeaveOf("n2")});
    m_pEngine->Commit();
    Restart();
    if (NodeIds().size() == 1) {
        const auto left = m_pStore->Get(Path("/Engine/Assignment/n2/MeroRecord/0"));
        EXPECT_THAT(left.value_or(""), Not(HasSubstr("id"))) << "who left has empty documents";
    }
    ExpectAllThere({"a", "b", "c", "d"});
}

INSTANTIATE_TEST_SUITE_P(Nth, LeaveWithAFailingStore, ::testing::Range(1U, 16U));

TEST_F(EngineMembership, RemovedNodeKeepsItsWorkAndGetsNone) {
    Begin(TWO);
    Record({{"a"}, {"b"}});
    Must(StatusOf("n2", EMemberStatus::REMOVED));
    EXPECT_EQ(m_events.Of(EEvent::MEMBER_STATUS)[0].strCause, "removed");
    Record({{"c"}, {"d"}, {"e"}});
    EXPECT_THAT(TasksOf(Recorder("n2")), ElementsAre("b"));
    EXPECT_EQ(Document(), ClusterText(TWO)) << "there it would spread";
    Restart();
    EXPECT_EQ(StatusInRegistry("n2"), CLUSTER_MEMBER_REMOVED);
    EXPECT_EQ(AllContainers().at(Recorder("n2")).GetMemberStatus(), CLUSTER_MEMBER_REMOVED);
    EXPECT_EQ(StatusInRegistry("n1"), CLUSTER_MEMBER_NORMAL);
    EXPECT_THAT(TasksOf(Recorder("n2")), ElementsAre("b"));
}

TEST_F(EngineMembership, NormalNodeGetsWorkAgain) {
    Begin(TWO);
    Must(StatusOf("n1", EMemberStatus::REMOVED));
    Must(StatusOf("n2", EMemberStatus::REMOVED));
    EXPECT_EQ(Record({{"a"}}).eFault, EFault::NO_ROOM);
    Must(StatusOf("n2", EMemberStatus::NORMAL));
    Record({{"a"}});
    EXPECT_EQ(NodeOf("a"), "n2");
}

TEST_F(EngineMembership, StatusOfAnInputCountsMoreThanTheDocuments) {
    Begin({{"n1", {"MeroRecord"}}, {"n2", {"MeroRecord"}, "Removed"}});
    EXPECT_EQ(StatusInRegistry("n2"), CLUSTER_MEMBER_REMOVED);
    Must(StatusOf("n2", EMemberStatus::NORMAL));
    Restart();
    EXPECT_EQ(StatusInRegistry("n2"), CLUSTER_MEMBER_NORMAL);
}

TEST_F(EngineMembership, SameStatusAgainSaysNothing) {
    Begin(TWO);
    Must(StatusOf("n2", EMemberStatus::NORMAL));
    EXPECT_THAT(m_events.Get(), IsEmpty());
}

TEST_F(EngineMembership, StatusOfAnUnknownNodeIsRefusedForAll) {
    Begin(TWO);
    CMemberStatus status = StatusOf("n2", EMemberStatus::REMOVED);
    status.nodes.emplace_back("n9");
    const CAnswer answer = Do(status);
    EXPECT_EQ(answer.eFault, EFault::UNKNOWN_NODE);
    EXPECT_EQ(answer.strAbout, "n9");
    EXPECT_EQ(StatusInRegistry("n2"), CLUSTER_MEMBER_NORMAL);
    EXPECT_EQ(Do(DrainOf("n9")).eFault, EFault::UNKNOWN_NODE);
}

TEST_F(EngineMembership, StatusOfANodeThatLeftIsForgotten) {
    Begin(TWO);
    Must(StatusOf("n2", EMemberStatus::REMOVED));
    Must(LeaveOf("n2"));
    Must(JoinOf("n2"));
    Restart();
    EXPECT_EQ(StatusInRegistry("n2"), CLUSTER_MEMBER_NORMAL);
}

TEST_F(EngineMembership, MemberDocumentThatCannotBeReadIsSaid) {
    Begin(TWO);
    m_pStore->Put(Path("/Engine/Member"), "{}");
    m_events.Clear();
    Restart();
    ASSERT_EQ(m_events.Count(EEvent::DOCUMENT_UNREADABLE), 1U);
    EXPECT_EQ(m_events.Of(EEvent::DOCUMENT_UNREADABLE)[0].strCause, "/Engine/Member");
}

TEST_F(EngineMembership, DrainMovesWhatMayMoveAlsoWhereFaultShiftIsOff) {
    m_pStore->Put(Path("/ClusterConfig"),
                  R"({"IsLoadBalance":false,"IsFaultShift":false,"IsLoadBalanceOnePeriod":false})");
    Begin(TWO);
    Record({{"a"}, {"b"}, {"c"}, {"d", 1, false}});
    const CAnswer answer = Must(DrainOf("n2"));
    EXPECT_THAT(ResultsOf(answer), ElementsAre("b moved n1", "d stays n2"));
    EXPECT_EQ(m_events.Count(EEvent::DRAINING), 1U);
    Pass(3);
    EXPECT_EQ(m_events.Count(EEvent::DRAINED), 0U);
    CEndTasks end;
    end.strType = "MeroRecord";
    end.tasks = {"d"};
    Must(end);
    Pass(1);
    EXPECT_EQ(m_events.Count(EEvent::DRAINED), 1U);
    EXPECT_EQ(StatusInRegistry("n2"), CLUSTER_MEMBER_REMOVED);
    Pass(5);
    EXPECT_EQ(m_events.Count(EEvent::DRAINED), 1U);
}

TEST_F(EngineMembership, WhatADrainFindsNoRoomForStaysUntilThereIsSome) {
    Begin(TWO);
    Record({{"a", 600}, {"b", 600}});
    EXPECT_THAT(ResultsOf(Must(DrainOf("n2"))), ElementsAre("b waits n2"));
    PassReporting(30, {Recorder("n1"), Recorder("n2")});
    EXPECT_THAT(TasksOf(Recorder("n2")), ElementsAre("b")) << "reports do not end a drain";
    Must(JoinOf("n3"));
    Must(ReportOf(Recorder("n3")));
    Pass(15);
    EXPECT_EQ(NodeOf("b"), "n3");
    EXPECT_EQ(m_events.Count(EEvent::DRAINED), 1U);
}

TEST_F(EngineMembership, DrainGoesOnAfterAStart) {
    Begin(TWO);
    Record({{"a", 600}, {"b", 600}});
    Must(DrainOf("n2"));
    Restart();
    Settle();
    Must(JoinOf("n3"));
    Must(ReportOf(Recorder("n3")));
    Pass(15);
    EXPECT_EQ(NodeOf("b"), "n3");
    EXPECT_EQ(m_events.Count(EEvent::DRAINED), 1U);
    Restart();
    EXPECT_EQ(StatusInRegistry("n2"), CLUSTER_MEMBER_REMOVED);
    m_events.Clear();
    Settle();
    Pass(5);
    EXPECT_EQ(m_events.Count(EEvent::DRAINED), 0U);
}

TEST_F(EngineMembership, NormalStatusEndsADrain) {
    Begin(TWO);
    Record({{"a", 600}, {"b", 600}});
    Must(DrainOf("n2"));
    Must(StatusOf("n2", EMemberStatus::NORMAL));
    EXPECT_EQ(m_events.Count(EEvent::SHIFT_ENDED), 1U);
    EXPECT_FALSE(CScheduleMgr::Instance().IsScheduling());
    Must(JoinOf("n3"));
    Must(ReportOf(Recorder("n3")));
    Pass(15);
    EXPECT_EQ(NodeOf("b"), "n2");
    EXPECT_EQ(m_events.Count(EEvent::DRAINED), 0U);
}

TEST_F(EngineMembership, SilenceMakesADrainAFaultShift) {
    Begin(TWO);
    Record({{"a", 600}, {"b", 600}});
    Must(DrainOf("n2"));
    m_events.Clear();
    PassReporting(100, {Recorder("n1")});
    EXPECT_THAT(m_events.Of(EEvent::SHIFT_STARTED),
                ElementsAre(::testing::Field(&CEvent::strCause, "its container is silent")));
    EXPECT_TRUE(AllContainers().at(Recorder("n2")).IsFaultShift());
}

}  // namespace
