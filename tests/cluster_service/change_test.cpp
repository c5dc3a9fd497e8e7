#include <filesystem>

#include "command/cluster_text.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_znode_info.h"
#include "reference_host/strict_json.h"
#include "service_fixture.h"

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Optional;
using ::testing::StartsWith;

namespace {

class CChangeTest : public CServiceTest {
protected:
    CChangeTest() {
        Put("/Cluster", ClusterText({NodeText("n1", "10.0.0.1", {"MeroRecord", "MeroImgDev"}),
                                     NodeText("n2", "10.0.0.2", {"MeroImgDev"}),
                                     NodeText("n3", "10.0.0.3", {"MeroRecord"})}));
        Put("/CenterDB", DatabaseText("n1", {"n2", "n3"}));
    }

    std::list<std::string> StoredNodes() const { return NodeIdsOf(StoredCluster()); }

    std::list<std::string> StoredContainers(const std::string& strNodeId) const {
        return ContainersOf(StoredCluster(), strNodeId);
    }

    CClusterDBZNodeInfo StoredDatabase() const {
        CClusterDBZNodeInfo document;
        EXPECT_EQ(document.ParseJson(Stored("/CenterDB").value().c_str()), 0);
        return document;
    }

private:
    Json::Value StoredCluster() const {
        Json::Value cluster;
        EXPECT_EQ(ParseStrictJson(Stored("/Cluster").value(), cluster), std::nullopt);
        return cluster;
    }
};

using Remove = CChangeTest;
using Promote = CChangeTest;

TEST_F(Remove, ContainerLeavesItsNode) {
    const CProcessResult result = Run({"remove", "n1", "MeroRecord", "--yes"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput,
              "/CloudMain/Cluster\n"
              "  ClusterNode[\"n1\"].Container[\"MeroRecord\"]: was "
              "{\"ContainerType\":\"MeroRecord\"}, will be nothing\n"
              "cluster Main in sqlite:store.db holds node n1 with: MeroImgDev\n");
    EXPECT_THAT(result.strErrors, IsEmpty());
    EXPECT_THAT(StoredContainers("n1"), ElementsAre("MeroImgDev"));
    EXPECT_THAT(StoredNodes(), ElementsAre("n1", "n2", "n3"));
    EXPECT_THAT(StoredContainers("n3"), ElementsAre("MeroRecord"));
}

TEST_F(Remove, LastContainerTakesItsNodeAlong) {
    const CProcessResult result = RunTyping("yes\n", {"remove", "n2", "MeroImgDev"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strErrors, StartsWith("/CloudMain/Cluster\n  ClusterNode[\"n2\"]: was {"));
    EXPECT_THAT(result.strErrors, EndsWith("}, will be nothing\ncluster Main in sqlite:store.db: "
                                           "Remove container MeroImgDev from node n2, and the "
                                           "node, since it is the last one? [y/N] "));
    EXPECT_EQ(result.strOutput, "cluster Main in sqlite:store.db holds node n2 no longer\n");
    EXPECT_THAT(StoredNodes(), ElementsAre("n1", "n3"));
}

TEST_F(Remove, NodesWhoseStatusIsRewrittenAreToldBeforeAndAfter) {
    Put("/Cluster",
        ClusterText({NodeText("n1", "10.0.0.1", {"A", "B"}),
                     NodeText("n2", "10.0.0.2", {}, "Removed"), NodeText("n3", "10.0.0.3", {}),
                     NodeText("n4", "10.0.0.4", {}, "Removed")}));
    const CProcessResult result = RunTyping("y\n", {"remove", "n1", "A"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strErrors,
                HasSubstr(", and write as removed the nodes behind a removed one: n3? [y/N] "));
    EXPECT_THAT(result.strErrors, StartsWith("/CloudMain/Cluster\n"
                                             "  ClusterNode[\"n1\"].Container[\"A\"]: was "
                                             "{\"ContainerType\":\"A\"}, will be nothing\n"
                                             "  and, since the document is written anew:\n"));
    EXPECT_THAT(result.strErrors,
                HasSubstr("  ClusterNode[\"n3\"].Status: was \"Normal\", will be \"Removed\"\n"));
    EXPECT_EQ(result.strOutput, "cluster Main in sqlite:store.db holds node n1 with: B\n");
}

/// A cluster near its limit whose characters take twice the room when the library writes them.
std::string WideCluster() {
    std::string strWide;
    while (strWide.size() < 40000) {
        strWide += "\xE5\x8C\x97";
    }
    return ClusterText({NodeText("n1", "10.0.0.1", {"A", "B"}), NodeText(strWide, "10.0.0.2", {})});
}

TEST_F(Remove, StoreThatDoesNotTakeTheChangeIsAFailure) {
    Put("/Cluster", WideCluster());
    const CProcessResult result = Run({"remove", "n1", "A", "--yes"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strOutput, IsEmpty());
    EXPECT_THAT(result.strErrors,
                StartsWith("the removal did not reach the store: written anew, the document "
                           "would be longer than 65535 bytes\n"));
    EXPECT_THAT(result.strErrors, HasSubstr("set cluster info into ZK fail."));
    EXPECT_THAT(Stored("/Cluster"), Optional(WideCluster()));
}

TEST_F(Promote, MasterAndSlaveChangePlaces) {
    const CProcessResult result = RunTyping("y\n", {"promote", "n3"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strErrors,
                StartsWith("/CloudMain/CenterDB\n"
                           "  MasterDB.NodeCode: was \"n1\", will be \"n3\"\n"
                           "  MasterDB.NodeIp: was \"ip-n1\", will be \"ip-n3\"\n"
                           "  SlaveDB[1].NodeCode: was \"n3\", will be \"n1\"\n"));
    EXPECT_THAT(result.strErrors,
                EndsWith("Make node n3 the master of the centre database, in place of n1? [y/N] "));
    EXPECT_EQ(result.strOutput,
              "cluster Main in sqlite:store.db holds master n3, slaves: n2, n1\n");
    const CClusterDBZNodeInfo document = StoredDatabase();
    EXPECT_EQ(document.GetMasterDB().GetNodeId(), "n3");
    EXPECT_EQ(document.GetMasterDB().GetNodeIp(), "ip-n3");
    EXPECT_TRUE(document.IsSlaveDB("n1"));
}

TEST_F(Promote, StoreThatDoesNotTakeTheChangeIsAFailure) {
    std::string strWide;
    while (strWide.size() < 150) {
        strWide += "\xE5\x8C\x97";
    }
    const std::string strText = DatabaseText("n1", {"n2", strWide});
    Put("/CenterDB", strText);
    const CProcessResult result = Run({"promote", "n2", "--yes"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strOutput, IsEmpty());
    EXPECT_THAT(result.strErrors,
                StartsWith("the promotion did not reach the store: not the data that is expected "
                           "(ORVA_DATA_INVALID, code 109100053)\n"));
    EXPECT_THAT(Stored("/CenterDB"), Optional(strText));
}

TEST_F(Promote, SlavesThatShareASlotAreNotTouched) {
    const std::string strText =
        R"({"MasterDB":{"NodeCode":"n1","NodeIp":"i","DBPort":1},"SlaveDB":[)"
        R"({"NodeCode":"n2","NodeIp":"i","DBPort":1},{"NodeCode":"n3","NodeIp":"i","DBPort":1}]})";
    Put("/CenterDB", strText);
    const CProcessResult result = Run({"promote", "n3", "--yes"});
    EXPECT_EQ(result.iExitCode, 1);
    EXPECT_THAT(result.strErrors, HasSubstr("shares its slot \"\" with another slave"));
    EXPECT_THAT(Stored("/CenterDB"), Optional(strText));
}

TEST_F(Promote, WithoutADatabaseIsRefused) {
    const CProcessResult result = RunOn("memory", {"promote", "n1", "--yes"});
    EXPECT_EQ(result.iExitCode, 1);
    EXPECT_EQ(result.strErrors, "cluster Main in memory holds no centre database\n");
}

TEST_F(Promote, BadDatabaseIsAFailure) {
    Put("/CenterDB", "{}");
    EXPECT_EQ(Run({"promote", "n2", "--yes"}).iExitCode, 2);
    EXPECT_THAT(Stored("/CenterDB"), Optional(std::string("{}")));
}

struct CRefusedChange {
    const char* pszName;
    std::vector<std::string> arguments;
    const char* pszReason;
};

class RefusedChange : public CChangeTest, public ::testing::WithParamInterface<CRefusedChange> {};

TEST_P(RefusedChange, IsExplainedAndTouchesNothing) {
    const auto cluster = Stored("/Cluster");
    const auto database = Stored("/CenterDB");
    const CProcessResult result = Run(GetParam().arguments);
    EXPECT_EQ(result.iExitCode, 1);
    EXPECT_THAT(result.strOutput, IsEmpty());
    EXPECT_THAT(result.strErrors, EndsWith(std::string(GetParam().pszReason) + '\n'));
    EXPECT_EQ(Stored("/Cluster"), cluster);
    EXPECT_EQ(Stored("/CenterDB"), database);
}

INSTANTIATE_TEST_SUITE_P(
    Each, RefusedChange,
    ::testing::Values(
        CRefusedChange{"UnknownNode",
                       {"remove", "n9", "MeroRecord", "--yes"},
                       "no node \"n9\" in cluster Main in sqlite:store.db; the nodes: n1, n2, n3"},
        CRefusedChange{"UnknownType",
                       {"remove", "n1", "Odd", "--yes"},
                       "no container \"Odd\" on node \"n1\"; its containers: MeroRecord, "
                       "MeroImgDev"},
        CRefusedChange{"Master",
                       {"promote", "n1", "--yes"},
                       "node \"n1\" is the master of the centre database already"},
        CRefusedChange{"NoSlave",
                       {"promote", "n9", "--yes"},
                       "node \"n9\" is no slave of the centre database; it has master n1, slaves: "
                       "n2, n3"},
        CRefusedChange{"RemoveWithoutTerminal",
                       {"remove", "n1", "MeroRecord"},
                       "Remove container MeroRecord from node n1? There is no terminal to ask on: "
                       "nothing was changed; --yes goes ahead without asking"},
        CRefusedChange{"PromoteWithoutTerminal",
                       {"promote", "n2"},
                       "Make node n2 the master of the centre database, in place of n1? There is "
                       "no terminal to ask on: nothing was changed; --yes goes ahead without "
                       "asking"}),
    CaseName<CRefusedChange>);

TEST_F(Remove, NodeThatStandsThereTwiceIsRefused) {
    const std::string strText =
        ClusterText({NodeText("n1", "10.0.0.1", {"A"}), NodeText("n1", "10.0.0.2", {"B"})});
    Put("/Cluster", strText);
    const CProcessResult result = Run({"remove", "n1", "B", "--yes"});
    EXPECT_EQ(result.iExitCode, 1);
    EXPECT_THAT(result.strErrors, HasSubstr("more than once"));
    EXPECT_THAT(Stored("/Cluster"), Optional(strText));
}

TEST_F(Remove, ClusterThatDoesNotLoadIsAFailure) {
    Put("/Cluster", "{}");
    EXPECT_EQ(Run({"remove", "n1", "A", "--yes"}).iExitCode, 2);
}

class Declined : public CChangeTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(Declined, ChangesNothing) {
    const auto cluster = Stored("/Cluster");
    const auto database = Stored("/CenterDB");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"remove", "n1", "MeroRecord"}, {"promote", "n2"}}) {
        const CProcessResult result = RunTyping(GetParam(), arguments);
        EXPECT_EQ(result.iExitCode, 1);
        EXPECT_THAT(result.strOutput, IsEmpty());
        EXPECT_THAT(result.strErrors, HasSubstr("? [y/N] nothing was changed\n"));
    }
    EXPECT_EQ(Stored("/Cluster"), cluster);
    EXPECT_EQ(Stored("/CenterDB"), database);
}

INSTANTIATE_TEST_SUITE_P(Each, Declined, ::testing::Values("n\n", "\n", "Y es\n", "yy\n", "\x04"));

using Walk = CServiceTest;

TEST_F(Walk, FromImportToExportKeepsWhatWasNotChanged) {
    ASSERT_EQ(Run({"import", PSZ_SAMPLE_DIR}).iExitCode, 0);
    ASSERT_EQ(Run({"promote", "center-02", "--yes"}).iExitCode, 0);
    ASSERT_EQ(Run({"remove", "record-08", "MeroRecord", "--yes"}).iExitCode, 0);
    ASSERT_EQ(Run({"remove", "mixed-01", "MeroImgDev", "--yes"}).iExitCode, 0);
    const CProcessResult checked = Run({"check"});
    EXPECT_EQ(checked.iExitCode, 0) << checked.strOutput;
    ASSERT_EQ(Run({"export", "out"}).iExitCode, 0);
    for (const char* pszFile : {"cloud_storage.json", "cluster_config.json", "manager.json",
                                "cg_list.json", "version.json"}) {
        EXPECT_EQ(ReadText(File("out/") + pszFile),
                  ReadText(std::string(PSZ_SAMPLE_DIR "/") + pszFile));
    }
    EXPECT_EQ(ReadText(File("out/center_db.json")),
              R"({"MasterDB":{"DBPort":6001,"DBToken":"000","NodeCode":"center-02",)"
              R"("NodeIp":"192.0.2.12"},"SlaveDB":[{"DBPort":6001,"DBToken":"001",)"
              R"("NodeCode":"center-01","NodeIp":"192.0.2.11"}]})"
              "\n");
    const std::string strCluster = ReadText(File("out/cluster.json"));
    EXPECT_THAT(strCluster, Not(HasSubstr("record-08")));
    Json::Value before;
    Json::Value after;
    ASSERT_EQ(ParseStrictJson(ReadText(PSZ_SAMPLE_DIR "/cluster.json"), before), std::nullopt);
    ASSERT_EQ(ParseStrictJson(strCluster, after), std::nullopt);
    Json::Value expected = before;
    expected[PSZ_CLUSTER_NODE].clear();
    for (Json::Value node : NodesOf(before)) {
        if (node[PSZ_NODE_ID] == "mixed-01") {
            node[PSZ_NODE_CONTAINER].resize(1);
        }
        if (node[PSZ_NODE_ID] != "record-08") {
            expected[PSZ_CLUSTER_NODE].append(node);
        }
    }
    EXPECT_EQ(after, expected);
}

}  // namespace
