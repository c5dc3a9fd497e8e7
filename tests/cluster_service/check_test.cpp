#include "service_fixture.h"

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

constexpr char PSZ_CONFIG[] =
    R"({"IsLoadBalance":true,"IsFaultShift":true,"IsLoadBalanceOnePeriod":true})";

/// The second node of every cluster here.
std::string SecondNode() {
    return NodeText("n2", "10.0.0.2", {"MeroImgDev"});
}

/// A small cluster with nothing wrong.
std::string GoodCluster() {
    return ClusterText(
        {NodeText("n1", "10.0.0.1", {"MeroRecord", "MeroCloudStorage"}), SecondNode()});
}

class CCheckTest : public CServiceTest {
protected:
    CCheckTest() {
        Put("/Cluster", GoodCluster());
        Put("/CloudStorage", CloudStorageText("n1"));
        Put("/ClusterConfig", PSZ_CONFIG);
        Put("/CenterDB", DatabaseText("n1", {"n2"}));
        Put("/MEROMGR", R"({"MasterMGR":{"NodeCode":"n1","NodeIp":"10.0.0.1"}})");
        Put("/MERO/CGList", "[]");
        Put("/Version", R"({"DecisionVerNum":1,"MasterVerNum":2})");
    }
};

using Check = CCheckTest;

TEST_F(Check, GoodStoreIsAllWell) {
    const CProcessResult result = Run({"check"});
    EXPECT_EQ(result.iExitCode, 0) << result.strOutput;
    EXPECT_EQ(result.strOutput, "all well: 7 documents checked\n");
    EXPECT_THAT(result.strErrors, IsEmpty());
}

using CheckAlone = CServiceTest;

TEST_F(CheckAlone, SampleIsAllWell) {
    ASSERT_EQ(Run({"import", PSZ_SAMPLE_DIR}).iExitCode, 0);
    const CProcessResult result = Run({"check"});
    EXPECT_EQ(result.iExitCode, 0) << result.strOutput;
    EXPECT_EQ(result.strOutput, "all well: 7 documents checked\n");
}

TEST_F(CheckAlone, StoreWithNothingIsAFinding) {
    Put("", "");
    const CProcessResult result = Run({"check"});
    EXPECT_EQ(result.iExitCode, 1);
    EXPECT_THAT(result.strOutput, HasSubstr("warning   Cluster        is absent\n"));
}

TEST_F(CheckAlone, OneCgEntryForEveryTwoNodesIsFine) {
    Put("/Cluster", ClusterText({NodeText("n1", "10.0.0.1", {}), NodeText("n2", "10.0.0.2", {}),
                                 NodeText("n3", "10.0.0.3", {}), NodeText("n4", "10.0.0.4", {})}));
    Put("/MERO/CGList",
        "[" + CgText("n1", "f1", "10.0.1.1") + "," + CgText("n2", "f2", "10.0.1.2") + "]");
    const CProcessResult result = Run({"check"});
    EXPECT_EQ(result.iExitCode, 0) << result.strOutput;
}

TEST_F(CheckAlone, NodesThatAreNoArrayAreNoNodes) {
    Put("/Cluster",
        R"({"ClusterName":"","ClusterRemark":"","ClusterCode":"","ClusterNode":{"NodeID":"n1",)"
        R"("NodeIP":"","NodeIPType":0,"NodeRole":0,"DomainRole":0,"Status":"Removed"}})");
    EXPECT_EQ(Run({"check"}).iExitCode, 0);
}

TEST_F(CheckAlone, AbsentAndEmptyDocumentsAreNotesThatDoNotCount) {
    Put("/Cluster", GoodCluster());
    Put("/MERO/CGList", "");
    const CProcessResult result = Run({"check"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput,
              "findings (6)\n"
              "severity  document       finding\n"
              "note      CloudStorage   is absent\n"
              "note      ClusterConfig  is absent\n"
              "note      CenterDB       is absent\n"
              "note      MEROMGR        is absent\n"
              "note      MERO/CGList    is without data\n"
              "note      Version        is absent\n");
}

struct CFault {
    const char* pszName;
    const char* pszSuffix;
    std::string strText;
    std::vector<std::string> findings;
};

class CheckFinds : public CCheckTest, public ::testing::WithParamInterface<CFault> {};

TEST_P(CheckFinds, WhatIsWrongAndNothingElse) {
    Put(GetParam().pszSuffix, GetParam().strText);
    const CProcessResult result = Run({"check"});
    EXPECT_EQ(result.iExitCode, 1);
    std::string strExpected = "findings (" + std::to_string(GetParam().findings.size()) + ")\n";
    EXPECT_THAT(result.strOutput, ::testing::StartsWith(strExpected));
    for (const std::string& strFinding : GetParam().findings) {
        EXPECT_THAT(result.strOutput, HasSubstr("\n" + strFinding + "\n"));
    }
}

/// A CG list whose characters take three bytes here and six when the library writes them.
std::string WideCgList() {
    std::string strCode;
    for (int i = 0; i < 160; ++i) {
        strCode += "\xE5\x8C\x97";
    }
    return "[" + CgText("n1", strCode, "10.0.0.9") + "]";
}

INSTANTIATE_TEST_SUITE_P(
    Each, CheckFinds,
    ::testing::Values(
        CFault{"BrokenText",
               "/Version",
               "{",
               {"error     Version   line 1, column 2: Missing '}' or object member name"}},
        CFault{"MissingKey",
               "/MEROMGR",
               R"({"MasterMGR":{}})",
               {"error     MEROMGR   line 1, column 14: \"MasterMGR.NodeCode\" is missing"}},
        CFault{"TooLong",
               "/Version",
               std::string(600, ' '),
               {"error     Version   is longer than 511 bytes"}},
        CFault{"NearTheLimit",
               "/ClusterConfig",
               PSZ_CONFIG + std::string(410 - sizeof PSZ_CONFIG, ' '),
               {"warning   ClusterConfig  takes 409 bytes of at most 511, more than which the "
                "service does not write"}},
        CFault{"WouldNotFitWhenWritten",
               "/MERO/CGList",
               WideCgList(),
               {"error     MERO/CGList  would take 1038 bytes when the service writes it, at most "
                "1023 fit"}},
        CFault{"NodeIdTwice",
               "/Cluster",
               ClusterText({NodeText("n1", "10.0.0.1", {"MeroCloudStorage"}),
                            NodeText("n1", "10.0.0.2", {"MeroRecord"}), SecondNode()}),
               {"error     Cluster   node id \"n1\" stands there more than once"}},
        CFault{
            "ContainerTypeTwice",
            "/Cluster",
            ClusterText({NodeText("n1", "10.0.0.1",
                                  {"MeroCloudStorage", "MeroRecord", "MeroRecord"}),
                         SecondNode()}),
            {"error     Cluster   container \"MeroRecord\" on node \"n1\" stands there more than "
             "once, the cluster will not load"}},
        CFault{"AddressesThatReadTheSame",
               "/Cluster",
               ClusterText({NodeText("n1", "10.0.0.1", {"MeroCloudStorage"}),
                            NodeText("n", "10.0.0.2", {"1MeroCloudStorage"}), SecondNode()}),
               {"error     Cluster   container \"1MeroCloudStorage\" on node \"n\" reads the same "
                "as \"MeroCloudStorage\" on node \"n1\", the cluster will not load",
                "warning   Cluster   no plug-in knows the container type \"1MeroCloudStorage\", "
                "which stands there 1 times"}},
        CFault{"NormalBehindRemoved",
               "/Cluster",
               ClusterText({NodeText("n2", "10.0.0.1", {}, "Removed"),
                            NodeText("n1", "10.0.0.2", {"MeroCloudStorage"}),
                            NodeText("n3", "10.0.0.3", {}, "Removed")}),
               {"warning   Cluster   node \"n1\" says \"Normal\" and loads as removed, since it "
                "stands behind the removed node \"n2\""}},
        CFault{"BadAddress",
               "/Cluster",
               ClusterText({NodeText("n1", "10.0.0.999", {"MeroCloudStorage"}), SecondNode()}),
               {"warning   Cluster   node \"n1\" has \"10.0.0.999\" for an address"}},
        CFault{"UnknownContainerType",
               "/Cluster",
               ClusterText({NodeText("n1", "10.0.0.1", {"MeroCloudStorage", "Odd"}),
                            NodeText("n2", "10.0.0.2", {"Odd"})}),
               {"warning   Cluster   no plug-in knows the container type \"Odd\", which stands "
                "there 2 times"}},
        CFault{"CloudStorageOfNoNode",
               "/CloudStorage",
               CloudStorageText("n9"),
               {"warning   CloudStorage  the entry of node \"n9\" is of no use: the node is not in "
                "the cluster"}},
        CFault{"CloudStorageWithoutContainer",
               "/CloudStorage",
               CloudStorageText("n2"),
               {"warning   CloudStorage  the entry of node \"n2\" is of no use: the node has no "
                "container MeroCloudStorage"}},
        CFault{"CgOfNoNode",
               "/MERO/CGList",
               "[" + CgText("n9", "f1", "10.0.1.1") + "]",
               {"warning   MERO/CGList  the node \"n9\" is not in the cluster"}},
        CFault{"CgEntriesAlike",
               "/MERO/CGList",
               "[" + CgText("n1", "f1", "10.0.1.1") + "," + CgText("n1", "f1", "10.0.1.1") + "]",
               {"warning   MERO/CGList  node \"n1\" stands there more than once",
                "warning   MERO/CGList  float code \"f1\" stands there more than once",
                "warning   MERO/CGList  float address \"10.0.1.1\" stands there more than once",
                "warning   MERO/CGList  has 2 entries, and 2 nodes admit at most 1"}},
        CFault{"CgNearTheLimit",
               "/MERO/CGList",
               "[" + CgText("n1", std::string(742, 'f'), "10.0.1.1") + "]",
               {"warning   MERO/CGList  takes 820 bytes of at most 1023, more than which the "
                "service does not write"}},
        CFault{"DatabasesOfNoNode",
               "/CenterDB",
               DatabaseText("n8", {"n9"}),
               {"warning   CenterDB  the master \"n8\" is not in the cluster",
                "warning   CenterDB  the slave \"n9\" is not in the cluster"}},
        CFault{"MasterThatIsASlave",
               "/CenterDB",
               DatabaseText("n1", {"n2", "n1"}),
               {"warning   CenterDB  the master \"n1\" is a slave too"}},
        CFault{"SlaveTwice",
               "/CenterDB",
               DatabaseText("n1", {"n2", "n2"}),
               {"warning   CenterDB  slave \"n2\" stands there more than once"}},
        CFault{"SlavesWithoutTokens",
               "/CenterDB",
               R"({"MasterDB":{"NodeCode":"n1","NodeIp":"i","DBPort":1},"SlaveDB":[)"
               R"({"NodeCode":"n2","NodeIp":"i","DBPort":1},)"
               R"({"NodeCode":"n2","NodeIp":"i","DBPort":1}]})",
               {"warning   CenterDB  slave \"n2\" stands there more than once",
                "warning   CenterDB  slave token \"\" stands there more than once"}},
        CFault{"NoSlave",
               "/CenterDB",
               DatabaseText("n1", {}),
               {"warning   CenterDB  has no slave: what a service writes of it cannot be read "
                "again"}},
        CFault{
            "DatabaseNearTheLimit",
            "/CenterDB",
            DatabaseText("n1", {"n2"}) + std::string(420 - DatabaseText("n1", {"n2"}).size(), ' '),
            {"warning   CenterDB  takes 420 bytes of at most 511, more than which the service "
             "does not write"}},
        CFault{"ManagerOfNoNode",
               "/MEROMGR",
               R"({"MasterMGR":{"NodeCode":"n9","NodeIp":"10.0.0.9"}})",
               {"warning   MEROMGR   the manager \"n9\" is not in the cluster"}},
        CFault{"ThresholdsIgnored",
               "/ClusterConfig",
               R"({"IsLoadBalance":true,"IsFaultShift":true,"IsLoadBalanceOnePeriod":true,)"
               R"("LoadBalanceThreshold":{"DiskThreshold":5,"NetThreshold":5,)"
               R"("ChannelThreshold":5}})",
               {"warning   ClusterConfig  \"LoadBalanceThreshold\" is ignored on reading: the "
                "thresholds stay at their defaults"}}),
    CaseName<CFault>);

TEST_F(Check, NodesBeforeARemovedOneAndTheRemovedOnesThemselvesAreFine) {
    Put("/Cluster", ClusterText({NodeText("n1", "10.0.0.1", {"MeroCloudStorage"}),
                                 NodeText("n2", "10.0.0.2", {}, "Removed"),
                                 NodeText("n3", "10.0.0.3", {}, "Removed")}));
    EXPECT_EQ(Run({"check"}).iExitCode, 0);
}

TEST_F(Check, FindingThatMakesALoadFailIsTrue) {
    Put("/Cluster", ClusterText({NodeText("n1", "10.0.0.1", {"MeroRecord", "MeroRecord"})}));
    EXPECT_EQ(Run({"show"}).iExitCode, 2);
    Put("/Cluster",
        ClusterText({NodeText("n1", "10.0.0.1", {"2X"}), NodeText("n12", "10.0.0.2", {"X"})}));
    EXPECT_EQ(Run({"show"}).iExitCode, 2);
}

TEST_F(Check, WithoutPluginsSaysSoAndChecksTheRest) {
    Put("/Version", "{}");
    const CProcessResult result = Run({"--lib-dir", ".", "check"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strErrors, HasSubstr("cannot load the plug-ins of ."));
    EXPECT_THAT(result.strOutput, AllOf(HasSubstr("\"DecisionVerNum\" is missing"),
                                        ::testing::Not(HasSubstr("no plug-in knows"))));
}

}  // namespace
