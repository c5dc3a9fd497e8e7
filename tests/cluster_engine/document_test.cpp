#include <filesystem>

#include "cluster_engine/engine_fixture.h"
#include "reference_host/accepted_links.h"
#include "reference_host/host_settings.h"
#include "support/temp_dir.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr int NUMERIC_STORE_CODE = 4711;
constexpr unsigned int NUMERIC_NEVER = 1'000'000;  ///< a call that the test does not come to

CDocumentChanged Changed(EDocument eDocument) {
    CDocumentChanged changed;
    changed.eDocument = eDocument;
    return changed;
}

template <typename T>
T CgOf(const std::string& strNodeId, const std::string& strFloatCode,
       const std::string& strFloatIp) {
    T entry;
    entry.strNodeId = strNodeId;
    entry.strFloatCode = strFloatCode;
    entry.strFloatIp = strFloatIp;
    return entry;
}

CPromote PromoteOf(const std::string& strNodeId) {
    CPromote promote;
    promote.strNodeId = strNodeId;
    return promote;
}

CCgRemove RemovalOf(const std::string& strFloatCode) {
    CCgRemove removal;
    removal.strFloatCode = strFloatCode;
    return removal;
}

std::string CenterDb(const std::string& strMaster, const std::string& strSlave) {
    return R"({"MasterDB":{"DBPort":6001,"DBToken":"000","NodeCode":")" + strMaster +
           R"(","NodeIp":"10.0.0.1"},"SlaveDB":[{"DBPort":6001,"DBToken":"001","NodeCode":")" +
           strSlave + R"(","NodeIp":"10.0.0.2"}]})";
}

std::string Versions(int iDecision, int iMaster) {
    return R"({"DecisionVerNum":)" + std::to_string(iDecision) + R"(,"MasterVerNum":)" +
           std::to_string(iMaster) + "}";
}

std::string Configuration(bool bFaultShift) {
    return std::string(R"({"IsFaultShift":)") + (bFaultShift ? "true" : "false") +
           R"(,"IsLoadBalance":true,"IsLoadBalanceOnePeriod":true})";
}

std::string CloudStorage(int iReqSize) {
    return R"({"CloudStorageSet":[{"NvrCode":"n1","ServiceType":"S","ProductType":"P","ReqSize":)" +
           std::to_string(iReqSize) +
           R"(,"ReqPicSize":2,"LowpriBit":3,"NodeList":[{"Code":"c","AllocSize":7,"UsedSize":1,)"
           R"("Dns":"d","Path":"p"}]},)"
           R"({"NvrCode":"n9","ServiceType":"S","ProductType":"P","ReqSize":1,"ReqPicSize":2,)"
           R"("LowpriBit":3}]})";
}

const std::vector<CStoredNode> TWO = {{"n1", {"MeroRecord"}, "Normal", "10.0.0.1"},
                                      {"n2", {"MeroRecord"}, "Normal", "10.0.0.2"}};

class EngineDocument : public CEngineTest {
protected:
    void Begin(const std::vector<CStoredNode>& nodes = TWO) {
        Store(nodes);
        m_pStore->Put(Path("/CenterDB"), CenterDb("n1", "n2"));
        m_pStore->Put(Path("/MEROMGR"), R"({"MasterMGR":{"NodeCode":"n1","NodeIp":"10.0.0.1"}})");
        m_pStore->Put(Path("/Version"), Versions(20, 5));
        Load();
        Settle();
    }

    void Put(const std::string& strSuffix, const std::string& strText) {
        m_pStore->Put(Path(strSuffix), strText);
    }

    std::string Text(const std::string& strSuffix) { return *m_pStore->Get(Path(strSuffix)); }

    CNode Node(const std::string& strNodeId) {
        CNode node;
        EXPECT_TRUE(CNodeMgr::Instance().GetNode(strNodeId, node));
        return node;
    }
};

TEST_F(EngineDocument, NewMembersEnterAndTheOthersKeepWhatTheyHave) {
    Begin();
    Record({{"a"}, {"b"}});
    Store({{"n1", {"Other", "MeroRecord"}, "Normal", "10.0.0.1"},
           {"n2", {"MeroRecord"}, "Normal", "10.0.0.2"},
           {"n3", {"MeroRecord"}, "Normal", "10.0.0.3"}});
    Must(Changed(EDocument::CLUSTER));
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2", "n3"));
    EXPECT_THAT(ContainersOfNode("n1"), ElementsAre("Other", "MeroRecord"));
    EXPECT_EQ(m_events.Count(EEvent::JOINED), 2U);
    EXPECT_EQ(m_events.Count(EEvent::DOCUMENT_RELOADED), 1U);
    EXPECT_THAT(TasksOf(Recorder("n1")), ElementsAre("a"));
    EXPECT_EQ(AllContainers().at(Recorder("n1")).GetTotalDisk(), 1000);
    EXPECT_TRUE(IsAcceptedLink("10.0.0.3", VALIDATED_LINK_TYPE));
    Must(ReportOf(Recorder("n3")));
    Must(ReportOf({"n1", "Other"}));
}

TEST_F(EngineDocument, WhatTheNewTextLacksLeavesAndItsWorkMoves) {
    Begin();
    Record({{"a"}, {"b"}, {"c"}, {"d", 1, false}});
    Store({TWO[0]});
    const std::string strText = Text("/Cluster");
    const CAnswer answer = Must(Changed(EDocument::CLUSTER));
    ASSERT_EQ(answer.tasks.size(), 2U);
    EXPECT_EQ(answer.tasks[0].eResult, ETaskResult::MOVED);
    EXPECT_EQ(answer.tasks[1].eResult, ETaskResult::ENDED);
    EXPECT_THAT(TasksOf(Recorder("n1")), ElementsAre("a", "c", "b"));
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    EXPECT_FALSE(IsAcceptedLink("10.0.0.2", VALIDATED_LINK_TYPE));
    EXPECT_EQ(Text("/Cluster"), strText) << "without the flush";
    Restart();
    EXPECT_THAT(TasksOf(Recorder("n1")), ElementsAre("a", "b", "c"));
}

TEST_F(EngineDocument, WorkOfOneThatLeavesGoesToNoneThatLeavesWithIt) {
    Begin({{"n1", {"MeroRecord"}}, {"n2", {"MeroRecord"}}, {"n3", {"MeroRecord"}}});
    Record({{"a", 500}, {"b", 5}, {"c", 5}});
    Store({{"n1", {"MeroRecord"}}});
    m_events.Clear();
    Must(Changed(EDocument::CLUSTER));
    EXPECT_EQ(m_events.Count(EEvent::SHIFTED), 2U);
    EXPECT_EQ(TasksOf(Recorder("n1")).size(), 3U);
}

TEST_F(EngineDocument, OneContainerOfANodeLeaves) {
    Begin({{"n1", {"MeroRecord", "Other"}}, {"n2", {"MeroRecord"}}});
    Record({{"a"}});
    Store({{"n1", {"Other"}}, {"n2", {"MeroRecord"}}});
    Must(Changed(EDocument::CLUSTER));
    EXPECT_EQ(NodeOf("a"), "n2");
    EXPECT_THAT(ContainersOfNode("n1"), ElementsAre("Other"));
    EXPECT_EQ(AllContainers().count(Recorder("n1")), 0U);
}

TEST_F(EngineDocument, NodeThatChangesKeepsItsFlagsAndFigures) {
    Begin();
    CNodeReport report;
    report.strNodeId = "n2";
    report.total = CFigures{1, 2, 3, 4, 5};
    report.used = CFigures{1, 1, 1, 1, 1};
    Must(report);
    PassReporting(95, {Recorder("n1"), Recorder("n2")});
    ASSERT_FALSE(CNodeMgr::Instance().IsNodeOnline("n2"));
    CMemberStatus status;
    status.nodes = {"n2"};
    status.eStatus = EMemberStatus::REMOVED;
    Must(status);
    Store({TWO[0], {"n2", {"MeroRecord"}, "Normal", "10.0.0.7"}});
    Must(Changed(EDocument::CLUSTER));
    const CNode node = Node("n2");
    EXPECT_EQ(node.GetNodeIp(), "10.0.0.7");
    EXPECT_FALSE(node.IsOnline());
    EXPECT_EQ(node.GetTotalResource().GetDisk(), 5);
    EXPECT_EQ(node.GetCurResource().GetDisk(), 1);
    EXPECT_EQ(node.GetMemberStatus(), CLUSTER_MEMBER_REMOVED);
    EXPECT_TRUE(IsAcceptedLink("10.0.0.7", VALIDATED_LINK_TYPE));
    EXPECT_FALSE(IsAcceptedLink("10.0.0.2", VALIDATED_LINK_TYPE));
}

TEST_F(EngineDocument, StatusOfTheDocumentIsBroughtIn) {
    Begin();
    Store({TWO[0], {"n2", {"MeroRecord"}, "Removed", "10.0.0.2"}});
    Must(Changed(EDocument::CLUSTER));
    Record({{"a"}, {"b"}});
    EXPECT_THAT(TasksOf(Recorder("n2")), IsEmpty());
    Store(TWO);
    Must(Changed(EDocument::CLUSTER));
    Record({{"c"}});
    EXPECT_EQ(NodeOf("c"), "n2");
}

TEST_F(EngineDocument, TextThatTheEngineWroteIsNoChange) {
    Begin();
    CJoin join;
    join.strNodeId = "n3";
    join.strIp = "10.0.0.3";
    join.types = {"MeroRecord"};
    Must(join);
    Record({{"a"}});
    Must(CgOf<CCgAdd>("n1", "f", "10.0.1.1"));
    Must(PromoteOf("n2"));
    Must(CNextMasterVersion());
    m_events.Clear();
    const auto before = Texts();
    for (const EDocument eDocument :
         {EDocument::CLUSTER, EDocument::CLOUD_STORAGE, EDocument::CG_LIST, EDocument::CENTER_DB,
          EDocument::MANAGER, EDocument::VERSION}) {
        EXPECT_FALSE(Must(Changed(eDocument)).bDurable);
    }
    EXPECT_THAT(m_events.Get(), IsEmpty());
    EXPECT_EQ(Texts(), before);
}

TEST_F(EngineDocument, TextThatCannotBeReadChangesNothingAndIsSaid) {
    Begin();
    Record({{"a"}, {"b"}});
    const std::vector<std::pair<EDocument, std::string>> suffixes = {
        {EDocument::CLUSTER, "/Cluster"},
        {EDocument::CLOUD_STORAGE, "/CloudStorage"},
        {EDocument::CONFIGURATION, "/ClusterConfig"},
        {EDocument::CG_LIST, "/MERO/CGList"},
        {EDocument::CENTER_DB, "/CenterDB"},
        {EDocument::MANAGER, "/MEROMGR"},
        {EDocument::VERSION, "/Version"}};
    for (const auto& [eDocument, strSuffix] : suffixes) {
        m_events.Clear();
        Put(strSuffix, "[1");
        EXPECT_EQ(Do(Changed(eDocument)).eFault, EFault::DOCUMENT_UNREADABLE) << strSuffix;
        ASSERT_EQ(m_events.Get().size(), 1U) << strSuffix;
        EXPECT_EQ(m_events.Get()[0].eEvent, EEvent::DOCUMENT_UNREADABLE);
        EXPECT_EQ(m_events.Get()[0].strCause, strSuffix + ": not the data that is expected");
    }
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2"));
    EXPECT_THAT(TasksOf(Recorder("n2")), ElementsAre("b"));
    EXPECT_EQ(CFrameworkCommon::Instance().GetClusterDBInfo().GetMasterDB().GetNodeId(), "n1");
    EXPECT_EQ(CScheduleMgr::Instance().GetMasterVerNum(), 5U);
}

TEST_F(EngineDocument, ClusterThatCannotBeIsRefused) {
    Begin();
    Record({{"a"}, {"b"}});
    const std::vector<std::vector<CStoredNode>> clusters = {{{"n1", {"A", "A"}}},
                                                            {{"n1", {"A"}}, {"n1", {"B"}}},
                                                            {{"x", {"2y"}}, {"x2", {"y"}}},
                                                            {{"", {"A"}}},
                                                            {{"n1", {""}}},
                                                            {{"n", {"1MeroRecord"}}}};
    for (const std::vector<CStoredNode>& nodes : clusters) {
        Store(nodes);
        EXPECT_EQ(Do(Changed(EDocument::CLUSTER)).eFault, EFault::DOCUMENT_UNREADABLE);
        EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2"));
        EXPECT_THAT(TasksOf(Recorder("n2")), ElementsAre("b"));
    }
}

TEST_F(EngineDocument, DocumentThatIsGoneChangesNothing) {
    Begin();
    for (const char* pszSuffix : {"/Cluster", "/CenterDB", "/MEROMGR", "/Version"}) {
        m_pStore->Erase(Path(pszSuffix));
    }
    for (const EDocument eDocument : {EDocument::CLUSTER, EDocument::CENTER_DB, EDocument::MANAGER,
                                      EDocument::VERSION, EDocument::CG_LIST}) {
        Must(Changed(eDocument));
    }
    EXPECT_THAT(m_events.Get(), IsEmpty());
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2"));
    EXPECT_EQ(CScheduleMgr::Instance().GetDecisionVerNum(), 20U);
}

TEST_F(EngineDocument, StoreThatFailsRefusesAndNothingHasChanged) {
    Begin();
    Record({{"a"}, {"b"}});
    Store({TWO[0]});
    unsigned int uiNth = 1;
    for (;; ++uiNth) {
        m_pStore->FailCall(uiNth, NUMERIC_STORE_CODE);
        const unsigned int uiBefore = m_pStore->GetCallCount();
        const CAnswer answer = m_pEngine->Apply({m_iNow, Changed(EDocument::CLUSTER)});
        if (uiNth > m_pStore->GetCallCount() - uiBefore) {
            EXPECT_EQ(answer.eFault, EFault::NONE);
            break;
        }
        if (answer.eFault != EFault::NONE) {
            EXPECT_EQ(answer.eFault, EFault::STORE_FAILED);
            EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2"));
            EXPECT_EQ(NodeOf("b"), "n2");
            EXPECT_EQ(m_pEngine->Commit(), 0);
            continue;
        }
        break;  // the decision number could not be had, and the work waits
    }
    m_pStore->FailCall(NUMERIC_NEVER, NUMERIC_STORE_CODE);
    EXPECT_GE(uiNth, 2U);
    EXPECT_EQ(m_pEngine->Commit(), 0);
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    Pass(15);
    EXPECT_EQ(NodeOf("b"), "n1");
}

TEST_F(EngineDocument, CloudStorageEntriesThatDifferGoToTheirContainers) {
    Put("/CloudStorage", CloudStorage(1));
    Begin({{"n1", {"MeroCloudStorage"}}});
    const CContainerAddr addr("n1", "MeroCloudStorage");
    Put("/CloudStorage", CloudStorage(9));
    Must(Changed(EDocument::CLOUD_STORAGE));
    EXPECT_EQ(AllContainers().at(addr).GetReqStorage(), 9);
    EXPECT_EQ(m_events.Count(EEvent::DOCUMENT_RELOADED), 1U);
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocations;
    AllContainers().at(addr).GetAllocInfoList(allocations);
    ASSERT_EQ(allocations.size(), 1U);
    EXPECT_EQ(allocations.front().allocStorage, 7);
    Must(Changed(EDocument::CLOUD_STORAGE));
    EXPECT_EQ(m_events.Count(EEvent::DOCUMENT_RELOADED), 1U) << "nothing differs any more";
}

TEST_F(EngineDocument, ConfigurationIsBroughtIn) {
    Begin();
    Put("/ClusterConfig", Configuration(false));
    Must(Changed(EDocument::CONFIGURATION));
    EXPECT_FALSE(CFrameworkCommon::Instance().GetClusterConfig().IsFaultShift());
    EXPECT_EQ(m_events.Count(EEvent::DOCUMENT_RELOADED), 1U);
}

TEST_F(EngineDocument, SameConfigurationOnceMoreAllowsAnotherPeriod) {
    Put("/ClusterConfig", Configuration(true));
    Begin();
    PassReporting(700, {Recorder("n1"), Recorder("n2")});
    EXPECT_EQ(m_events.Count(EEvent::BALANCED_ONCE), 1U);
    Must(Changed(EDocument::CONFIGURATION));
    PassReporting(700, {Recorder("n1"), Recorder("n2")});
    EXPECT_EQ(m_events.Count(EEvent::BALANCED_ONCE), 2U);
}

TEST_F(EngineDocument, CgListIsBroughtIn) {
    Begin();
    Put("/MERO/CGList",
        R"([{"NVRCode":"n1","FloatCGCode":"f","FloatIP":"10.0.1.1","DecisionVerNum":"1"}])");
    Must(Changed(EDocument::CG_LIST));
    CClusterCGInfoList list;
    CFrameworkCGCommon::Instance().GetClusterCGInfoList(list);
    EXPECT_TRUE(list.IsCGExist("f"));
    EXPECT_EQ(m_events.Count(EEvent::DOCUMENT_RELOADED), 1U);
}

TEST_F(EngineDocument, CenterDatabaseAndManagerAreBroughtIn) {
    Begin();
    Put("/CenterDB", CenterDb("n2", "n1"));
    Put("/MEROMGR", R"({"MasterMGR":{"NodeCode":"n2","NodeIp":"10.0.0.2"}})");
    Must(Changed(EDocument::CENTER_DB));
    Must(Changed(EDocument::MANAGER));
    CFrameworkCommon& framework = CFrameworkCommon::Instance();
    EXPECT_EQ(framework.GetClusterDBInfo().GetMasterDB().GetNodeId(), "n2");
    EXPECT_EQ(m_events.Count(EEvent::DOCUMENT_RELOADED), 2U);
}

TEST_F(EngineDocument, DecisionNumberNeverFalls) {
    Begin();
    Put("/Version", Versions(3, 9));
    Must(Changed(EDocument::VERSION));
    EXPECT_EQ(CScheduleMgr::Instance().GetDecisionVerNum(), 20U);
    EXPECT_EQ(CScheduleMgr::Instance().GetMasterVerNum(), 9U);
    EXPECT_THAT(Text("/Version"), HasSubstr(R"("DecisionVerNum":20)"));
    Put("/Version", Versions(30, 9));
    Must(Changed(EDocument::VERSION));
    EXPECT_EQ(CScheduleMgr::Instance().GetDecisionVerNum(), 30U);
    m_events.Clear();
    Pass(1);
    EXPECT_EQ(m_events.Count(EEvent::DECISION_MOVED), 0U);
}

TEST_F(EngineDocument, NumberThatCannotBePutRightIsNotBroughtIn) {
    Begin();
    Put("/Version", Versions(3, 9));
    m_pStore->FailCall(2, NUMERIC_STORE_CODE);
    EXPECT_EQ(Do(Changed(EDocument::VERSION)).eFault, EFault::STORE_FAILED);
    EXPECT_EQ(CScheduleMgr::Instance().GetDecisionVerNum(), 20U);
    EXPECT_EQ(CScheduleMgr::Instance().GetMasterVerNum(), 5U);
}

TEST_F(EngineDocument, CgEntryBearsTheCurrentDecisionNumber) {
    Begin();
    Must(CgOf<CCgAdd>("n1", "f", "10.0.1.1"));
    EXPECT_THAT(Text("/MERO/CGList"), HasSubstr(R"("DecisionVerNum":"20")"));
    EXPECT_EQ(m_events.Of(EEvent::CG_CHANGED)[0].strCause, "added f");
    Must(CgOf<CCgUpdate>("n2", "f", "10.0.1.2"));
    EXPECT_THAT(Text("/MERO/CGList"), HasSubstr(R"("NVRCode":"n2")"));
    Must(RemovalOf("f"));
    EXPECT_EQ(m_pStore->Get(Path("/MERO/CGList")).value_or(""), "");
}

TEST_F(EngineDocument, CgRulesAreNamed) {
    Begin({{"n1", {}}, {"n2", {}}, {"n3", {}}, {"n4", {}}});
    Must(CgOf<CCgAdd>("n1", "f", "10.0.1.1"));
    const std::vector<std::pair<CCgAdd, std::string>> refused = {
        {CgOf<CCgAdd>("n1", "g", "10.0.1.2"), "the node has an entry already"},
        {CgOf<CCgAdd>("n9", "g", "10.0.1.2"), "the cluster has no such node"},
        {CgOf<CCgAdd>("n2", "f", "10.0.1.2"), "the float code is taken"},
        {CgOf<CCgAdd>("n2", "g", "10.0.1.1"), "the float address is taken"}};
    const std::string strBefore = Text("/MERO/CGList");
    for (const auto& [entry, strAbout] : refused) {
        const CAnswer answer = Do(entry);
        EXPECT_EQ(answer.eFault, EFault::REFUSED_BY_RULE);
        EXPECT_EQ(answer.strAbout, strAbout);
    }
    EXPECT_EQ(Text("/MERO/CGList"), strBefore);
    Must(CgOf<CCgAdd>("n2", "g", "10.0.1.2"));
    EXPECT_EQ(Do(CgOf<CCgAdd>("n3", "h", "10.0.1.3")).strAbout,
              "there may be one entry for every two nodes");
    EXPECT_EQ(Do(CgOf<CCgUpdate>("n1", "g", "10.0.1.2")).strAbout, "the node has an entry already");
    EXPECT_EQ(Do(CgOf<CCgUpdate>("n3", "g", "10.0.1.1")).strAbout, "the float address is taken");
    EXPECT_EQ(Do(CgOf<CCgUpdate>("n9", "g", "10.0.1.2")).strAbout, "the cluster has no such node");
    EXPECT_EQ(Do(CgOf<CCgUpdate>("n3", "x", "10.0.1.9")).eFault, EFault::UNKNOWN_ENTRY);
    EXPECT_EQ(Do(RemovalOf("x")).eFault, EFault::UNKNOWN_ENTRY);
    EXPECT_EQ(Do(CgOf<CCgAdd>("n3", "h", "")).eFault, EFault::BAD_INPUT);
}

TEST_F(EngineDocument, CgListThatIsFullRefusesAnEntry) {
    std::vector<CStoredNode> nodes;
    for (int i = 0; i < 40; ++i) {
        nodes.push_back({"node" + std::to_string(100 + i), {}});
    }
    Begin(nodes);
    CAnswer answer;
    int iAdded = 0;
    for (; iAdded < 20 && answer.eFault == EFault::NONE; ++iAdded) {
        const std::string strNumber = std::to_string(100 + iAdded);
        answer = Do(CgOf<CCgAdd>("node" + strNumber, "f" + strNumber, "10.0.1." + strNumber));
    }
    EXPECT_EQ(answer.eFault, EFault::DOCUMENT_FULL);
    CClusterCGInfoList list;
    CFrameworkCGCommon::Instance().GetClusterCGInfoList(list);
    EXPECT_EQ(list.GetSize(), static_cast<unsigned int>(iAdded - 1));
}

TEST_F(EngineDocument, StoreThatFailsKeepsTheCgListAndTheMaster) {
    Begin();
    Must(CgOf<CCgAdd>("n1", "f", "10.0.1.1"));
    const auto before = Texts();
    const std::vector<InputBody> inputs = {CgOf<CCgUpdate>("n2", "f", "10.0.1.1"), RemovalOf("f"),
                                           PromoteOf("n2"), CNextMasterVersion()};
    for (const InputBody& input : inputs) {
        m_pStore->FailCall(1, NUMERIC_STORE_CODE);
        EXPECT_EQ(Do(input).eFault, EFault::STORE_FAILED) << InputName(input);
    }
    EXPECT_EQ(Texts(), before);
    const CFrameworkCommon& framework = CFrameworkCommon::Instance();
    EXPECT_EQ(framework.m_clusterDBInfo.GetMasterDB().GetNodeId(), "n1");
    EXPECT_EQ(CScheduleMgr::Instance().GetMasterVerNum(), 5U);
    CClusterCGInfoList list;
    CFrameworkCGCommon::Instance().GetClusterCGInfoList(list);
    EXPECT_TRUE(list.IsNodeExist("n1"));
}

TEST_F(EngineDocument, PromotedDatabaseIsTheMaster) {
    Begin();
    const int iVersion = CFrameworkCommon::Instance().GetCDBVersion();
    Must(PromoteOf("n2"));
    EXPECT_THAT(Text("/CenterDB"), HasSubstr(R"("MasterDB":{"DBPort":6001,"DBToken":"000",)"
                                             R"("NodeCode":"n2","NodeIp":"10.0.0.2"})"));
    EXPECT_EQ(CFrameworkCommon::Instance().GetCDBVersion(), iVersion + 1);
    EXPECT_EQ(m_events.Of(EEvent::PROMOTED)[0].strFrom, "n1");
    EXPECT_EQ(Do(PromoteOf("n2")).eFault, EFault::REFUSED_BY_RULE);
    EXPECT_EQ(Do(PromoteOf("n9")).eFault, EFault::UNKNOWN_ENTRY);
    EXPECT_EQ(CFrameworkCommon::Instance().GetCDBVersion(), iVersion + 1);
}

TEST_F(EngineDocument, MasterVersionRisesByOne) {
    Begin();
    Must(CNextMasterVersion());
    EXPECT_EQ(CScheduleMgr::Instance().GetMasterVerNum(), 6U);
    EXPECT_THAT(Text("/Version"), HasSubstr(R"("MasterVerNum":6)"));
    EXPECT_THAT(Text("/Version"), HasSubstr(R"("DecisionVerNum":20)"));
    EXPECT_EQ(m_events.Of(EEvent::MASTER_VERSION)[0].strCause, "6");
}

TEST_F(EngineDocument, StandardTasksAreReadAgain) {
    Begin();
    const CTempDir folder;
    std::filesystem::create_directory(folder.File("taskmodel"));
    folder.WriteFile("taskmodel/a.xml", "<TaskList><Task>R1</Task><Task>R2</Task></TaskList>");
    CHostSettings settings = GetHostSettings();
    settings.strConfigDir = folder.GetPath();
    Configure(settings);
    Must(CReadStandardTasks());
    ASSERT_EQ(m_events.Count(EEvent::STANDARD_TASKS), 1U);
    EXPECT_EQ(m_events.Of(EEvent::STANDARD_TASKS)[0].uiTasks, 2U);
}

}  // namespace
