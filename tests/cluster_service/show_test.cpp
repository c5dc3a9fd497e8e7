#include <json/json.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "command/table.h"
#include "service_fixture.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace {

namespace fs = std::filesystem;

Json::Value Parsed(const std::string& strText) {
    Json::Value root;
    EXPECT_TRUE(std::istringstream(strText) >> root) << strText;
    return root;
}

class CShowTest : public CServiceTest {
protected:
    CShowTest() {
        Put("/Cluster", ClusterText({NodeText("n1", "10.0.0.1", {"MeroRecord", "MeroCloudStorage"}),
                                     NodeText("n2", "10.0.0.2", {"MeroImgDev"}, "Removed")}));
        Put("/CloudStorage", CloudStorageText("n1"));
        Put("/ClusterConfig",
            R"({"IsLoadBalance":false,"IsFaultShift":true,"IsLoadBalanceOnePeriod":false})");
        Put("/MERO/CGList", "[" + CgText("n1", "f1", "10.0.1.1") + "]");
        Put("/CenterDB", DatabaseText("n1", {"n2", "n3"}));
        Put("/MEROMGR", R"({"MasterMGR":{"NodeCode":"n1","NodeIp":"10.0.0.1"}})");
        Put("/Version", R"({"DecisionVerNum":18446744073709551615,"MasterVerNum":2})");
        fs::create_directory(File("taskmodel"));
        m_dir.WriteFile("taskmodel/a.xml",
                        "<TaskList><Task CPU=\"5\">record</Task><Task>DEFAULT</Task></TaskList>");
    }
};

using Show = CShowTest;

TEST_F(Show, NodesStandInAlignedColumns) {
    const CProcessResult result = Run({"show", "nodes"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput,
              "nodes (2)\n"
              "node  address   role  domain  member   containers\n"
              "n1    10.0.0.1  2     0       normal   MeroRecord, MeroCloudStorage\n"
              "n2    10.0.0.2  2     0       removed  MeroImgDev\n");
}

TEST_F(Show, ContainersKnowTheirPluginsAnswerAndTheirStoredFigures) {
    const CProcessResult result = Run({"show", "containers"});
    EXPECT_EQ(result.strOutput,
              "containers (3)\n"
              "node  container         fault_shift  tasks  requested_storage  allocations\n"
              "n1    MeroCloudStorage  no           1      50\n"
              "n1    MeroRecord        yes          0      0\n"
              "n2    MeroImgDev        yes          0      0\n");
}

TEST_F(Show, PluginsAreListed) {
    const CProcessResult result = Run({"show", "plugins"});
    EXPECT_THAT(result.strOutput, HasSubstr("plugins (3)\n"));
    EXPECT_THAT(result.strOutput, HasSubstr("\ncloud_storage "));
    EXPECT_THAT(result.strOutput, HasSubstr("\nimage "));
    EXPECT_THAT(result.strOutput, HasSubstr("\nrecording "));
}

TEST_F(Show, ConfigurationComesFromTheStore) {
    const CProcessResult result = Run({"--local-ip", "10.0.0.1", "show", "config"});
    EXPECT_EQ(result.strOutput,
              "config (9)\n"
              "setting                  value\n"
              "cluster_code             Main\n"
              "local_ip                 10.0.0.1\n"
              "load_balance             no\n"
              "fault_shift              yes\n"
              "load_balance_one_period  no\n"
              "disk_threshold           10\n"
              "net_threshold            10\n"
              "channel_threshold        10\n"
              "cluster_forward_type     7\n");
}

struct CSubjectCase {
    const char* pszName;
    const char* pszText;
    const char* pszEmptyText;
};

class ShowDocument : public CShowTest, public ::testing::WithParamInterface<CSubjectCase> {};

TEST_P(ShowDocument, IsShownAsLoaded) {
    const CProcessResult result = Run({"--config-dir", ".", "show", GetParam().pszName});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, GetParam().pszText);
    EXPECT_THAT(result.strErrors, IsEmpty());
}

TEST_P(ShowDocument, IsEmptyWhenItIsAbsent) {
    fs::remove_all(File("taskmodel"));
    const CProcessResult result =
        RunOn("memory", {"--config-dir", ".", "--log-file", "log", "show", GetParam().pszName});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, GetParam().pszEmptyText);
    EXPECT_THAT(ReadText(File("log")), ::testing::Not(HasSubstr(" ERR ")));
}

INSTANTIATE_TEST_SUITE_P(
    Each, ShowDocument,
    ::testing::Values(CSubjectCase{"cg",
                                   "cg (1)\n"
                                   "node  float_code  float_address  decision_version\n"
                                   "n1    f1          10.0.1.1       7\n",
                                   "cg (0)\nnode  float_code  float_address  decision_version\n"},
                      CSubjectCase{"database",
                                   "database (3)\n"
                                   "role    node  address  port  token\n"
                                   "master  n1    ip-n1    6001  000\n"
                                   "slave   n2    ip-n2    6001  001\n"
                                   "slave   n3    ip-n3    6001  002\n",
                                   "database (0)\nrole  node  address  port  token\n"},
                      CSubjectCase{"manager", "manager (1)\nnode  address\nn1    10.0.0.1\n",
                                   "manager (0)\nnode  address\n"},
                      CSubjectCase{"tasks",
                                   "tasks (2)\n"
                                   "task     cpu  mem  io  net  disk\n"
                                   "DEFAULT  0    0    0   0    0\n"
                                   "record   0    0    0   0    0\n",
                                   "tasks (0)\ntask  cpu  mem  io  net  disk\n"},
                      CSubjectCase{"versions",
                                   "versions (3)\n"
                                   "setting     value\n"
                                   "decision    18446744073709551615\n"
                                   "master      2\n"
                                   "scheduling  no\n",
                                   "versions (3)\n"
                                   "setting     value\n"
                                   "decision    0\n"
                                   "master      0\n"
                                   "scheduling  no\n"}),
    CaseName<CSubjectCase>);

TEST_F(Show, DocumentsWithoutDataAreEmpty) {
    for (const char* pszSuffix : {"/MERO/CGList", "/CenterDB", "/MEROMGR", "/Version"}) {
        Put(pszSuffix, "");
    }
    const CProcessResult result = Run({"--config-dir", ".", "show", "--json"});
    EXPECT_EQ(result.iExitCode, 0);
    const Json::Value root = Parsed(result.strOutput);
    for (const char* pszSubject : {"cg", "database", "manager"}) {
        EXPECT_TRUE(root[pszSubject].isArray());
        EXPECT_TRUE(root[pszSubject].empty()) << pszSubject;
    }
    EXPECT_EQ(root["versions"][0]["value"], 0);
}

TEST_F(Show, MissingFolderOfTasksIsTold) {
    fs::remove_all(File("taskmodel"));
    const CProcessResult result = Run({"--config-dir", ".", "show", "tasks"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strErrors, "./taskmodel: no such folder, there are no standard tasks\n");
}

TEST_F(Show, BadDocumentDoesNotKeepTheOthersFromBeingShown) {
    Put("/CenterDB", "{}");
    Put("/Cluster", "{}");
    EXPECT_EQ(Run({"show", "cg"}).iExitCode, 0);
    EXPECT_EQ(Run({"show", "database"}).iExitCode, 2);
}

TEST_F(Show, WithoutASubjectShowsAllInOrder) {
    std::string strAll;
    for (const char* pszSubject : {"nodes", "containers", "plugins", "config", "cg", "database",
                                   "manager", "tasks", "versions"}) {
        strAll.append(strAll.empty() ? "" : "\n")
            .append(Run({"--config-dir", ".", "show", pszSubject}).strOutput);
    }
    EXPECT_EQ(Run({"--config-dir", ".", "show"}).strOutput, strAll);
}

TEST_F(Show, JsonHoldsWhatTheTextShows) {
    const Json::Value root = Parsed(Run({"--config-dir", ".", "show", "--json"}).strOutput);
    EXPECT_THAT(root.getMemberNames(),
                ElementsAre("cg", "config", "containers", "database", "manager", "nodes", "plugins",
                            "tasks", "versions"));
    const Json::Value& node = root["nodes"][1];
    EXPECT_EQ(node["node"], "n2");
    EXPECT_EQ(node["address"], "10.0.0.2");
    EXPECT_EQ(node["role"], 2);
    EXPECT_EQ(node["member"], "removed");
    EXPECT_EQ(node["containers"], ListValue(std::vector<std::string>{"MeroImgDev"}));
    EXPECT_EQ(root["containers"][0]["requested_storage"], 50);
    EXPECT_EQ(root["containers"][1]["fault_shift"], true);
    EXPECT_EQ(root["config"][2]["value"], false);
    EXPECT_EQ(root["cg"][0]["float_code"], "f1");
    EXPECT_EQ(root["database"][0]["role"], "master");
    EXPECT_EQ(root["database"][2]["port"], 6001);
    EXPECT_EQ(root["manager"][0]["node"], "n1");
    EXPECT_EQ(root["tasks"][1]["task"], "record");
    EXPECT_EQ(root["versions"][0]["value"], Json::UInt64{18446744073709551615U});
    EXPECT_EQ(root["versions"][2]["value"], false);
    const std::string strText = Run({"--config-dir", ".", "show"}).strOutput;
    for (const std::string& strTable : root.getMemberNames()) {
        EXPECT_THAT(strText,
                    HasSubstr(strTable + " (" + std::to_string(root[strTable].size()) + ")\n"));
        for (const std::string& strTitle : root[strTable][0].getMemberNames()) {
            EXPECT_THAT(strText, HasSubstr(strTitle));
        }
    }
}

TEST_F(Show, JsonOfOneSubjectIsThatAlone) {
    EXPECT_THAT(Parsed(Run({"show", "nodes", "--json"}).strOutput).getMemberNames(),
                ElementsAre("nodes"));
}

TEST_F(Show, MemoryStoreShowsAnEmptyCluster) {
    const Json::Value root = Parsed(RunOn("memory", {"show", "--json"}).strOutput);
    EXPECT_TRUE(root["nodes"].isArray());
    EXPECT_TRUE(root["nodes"].empty());
    EXPECT_EQ(root["plugins"].size(), 3U);
}

struct CBadLoad {
    const char* pszName;
    const char* pszSuffix;
    std::string strText;
    const char* pszErrors;
    std::vector<std::string> hidden;
};

class ShowHides : public CShowTest, public ::testing::WithParamInterface<CBadLoad> {};

TEST_P(ShowHides, WhatDoesNotLoadAndNothingElse) {
    const Json::Value before = Parsed(Run({"--config-dir", ".", "show", "--json"}).strOutput);
    Put(GetParam().pszSuffix, GetParam().strText);
    const CProcessResult result = Run({"--log-file", "log", "--config-dir", ".", "show", "--json"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_EQ(result.strErrors, GetParam().pszErrors);
    const Json::Value after = Parsed(result.strOutput);
    for (const std::string& strTable : before.getMemberNames()) {
        const auto& hidden = GetParam().hidden;
        const bool bHidden = std::find(hidden.begin(), hidden.end(), strTable) != hidden.end();
        EXPECT_EQ(after.isMember(strTable), !bHidden) << strTable;
    }
    EXPECT_EQ(after["tasks"], before["tasks"]);
    EXPECT_THAT(ReadText(File("log")), HasSubstr(" ERR "));
}

INSTANTIATE_TEST_SUITE_P(
    Each, ShowHides,
    ::testing::Values(
        CBadLoad{"Config",
                 "/ClusterConfig",
                 "{}",
                 "/CloudMain/ClusterConfig: line 1, column 1: \"IsLoadBalance\" is missing\n"
                 "config: not shown\n",
                 {"config"}},
        CBadLoad{"Cluster",
                 "/Cluster",
                 "{}",
                 "/CloudMain/Cluster: line 1, column 1: \"ClusterName\" is missing\n"
                 "nodes: not shown\ncontainers: not shown\n",
                 {"nodes", "containers"}},
        CBadLoad{"CloudStorage",
                 "/CloudStorage",
                 "[",
                 "/CloudMain/CloudStorage: line 1, column 2: \"[0]\" is broken: Syntax error: "
                 "value, object or array "
                 "expected.\n",
                 {}},
        CBadLoad{"CgList",
                 "/MERO/CGList",
                 "{",
                 "/CloudMain/MERO/CGList: line 1, column 2: Missing '}' or object member name\n"
                 "cg: not shown\n",
                 {"cg"}},
        CBadLoad{"Database",
                 "/CenterDB",
                 "{}",
                 "/CloudMain/CenterDB: line 1, column 1: \"MasterDB\" is missing\n"
                 "database: not shown\n",
                 {"database"}},
        CBadLoad{"Manager",
                 "/MEROMGR",
                 "{}",
                 "/CloudMain/MEROMGR: line 1, column 1: \"MasterMGR\" is missing\n"
                 "manager: not shown\n",
                 {"manager"}},
        CBadLoad{"Version",
                 "/Version",
                 "{}",
                 "/CloudMain/Version: line 1, column 1: \"DecisionVerNum\" is missing\n"
                 "versions: not shown\n",
                 {"versions"}},
        CBadLoad{"TooLong",
                 "/CenterDB",
                 std::string(512, ' '),
                 "/CloudMain/CenterDB: longer than a service reads (STORE_TEXT_TOO_LONG, code "
                 "109200002)\ndatabase: not shown\n",
                 {"database"}}),
    CaseName<CBadLoad>);

TEST_F(Show, AContainerThatStandsThereTwiceIsWhyTheClusterDoesNotLoad) {
    Put("/Cluster", ClusterText({NodeText("n1", "10.0.0.1", {"A", "A"})}));
    const CProcessResult shown = Run({"--log-file", "log", "show", "nodes"});
    EXPECT_EQ(shown.iExitCode, 2);
    EXPECT_THAT(shown.strErrors, ::testing::MatchesRegex("/CloudMain/Cluster: line 1, column "
                                                         "[0-9]+: [^\n]*once more: the cluster "
                                                         "does not load\nnodes: not shown\n"));
    const CProcessResult exported = Run({"export", "out"});
    EXPECT_EQ(exported.iExitCode, 1);
    EXPECT_THAT(exported.strErrors, HasSubstr("once more: the cluster does not load\n"));
}

TEST_F(Show, BadCloudStorageLeavesTheContainersWithoutTheirFigures) {
    Put("/CloudStorage", "[");
    const CProcessResult result = Run({"show", "containers"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strErrors, StartsWith("/CloudMain/CloudStorage: line 1"));
    EXPECT_THAT(result.strOutput, HasSubstr("\nn1    MeroCloudStorage  no           0      0\n"));
    EXPECT_EQ(Run({"show", "nodes"}).iExitCode, 0);
}

struct CPluginFolder {
    const char* pszName;
    const char* pszReason;
    void (*pFill)(const std::string& strFolder);
};

void CopyPlugin(const std::string& strFile, const std::string& strFolder) {
    fs::copy_file(strFile, fs::path(strFolder) / fs::path(strFile).filename());
}

void WriteBroken(const std::string& strFolder, const std::string& strText) {
    std::ofstream(strFolder + "/broken.so") << strText;
}

class BrokenPluginFolder : public CShowTest, public ::testing::WithParamInterface<CPluginFolder> {};

TEST_P(BrokenPluginFolder, EndsTheLoadWithAClearLine) {
    const std::string strFolder = File("plugins");
    fs::create_directory(strFolder);
    GetParam().pFill(strFolder);
    const CProcessResult result = Run({"--lib-dir", ".", "--log-file", "log", "show"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strOutput, IsEmpty());
    EXPECT_THAT(result.strErrors, StartsWith("cannot load the plug-ins of .: "));
    EXPECT_THAT(result.strErrors, HasSubstr(GetParam().pszReason));
    EXPECT_THAT(ReadText(File("log")), HasSubstr(" ERR plugin_"));
}

INSTANTIATE_TEST_SUITE_P(
    Each, BrokenPluginFolder,
    ::testing::Values(
        CPluginFolder{"TextFile", ": broken.so: ",
                      [](const auto& strFolder) { WriteBroken(strFolder, "text"); }},
        CPluginFolder{"EmptyFile", "too short",
                      [](const auto& strFolder) { WriteBroken(strFolder, ""); }},
        CPluginFolder{"NoEntryPoint", "CreatePlugin",
                      [](const auto& strFolder) { CopyPlugin(PSZ_NO_ENTRY_POINT, strFolder); }},
        CPluginFolder{"Missing", ".: its folder \"plugins\": No such file or directory\n",
                      [](const auto& strFolder) { fs::remove(strFolder); }}),
    CaseName<CPluginFolder>);

TEST_F(Show, EmptyPluginFolderIsFine) {
    fs::create_directory(File("plugins"));
    const CProcessResult result = Run({"--lib-dir", ".", "show", "plugins"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strOutput, HasSubstr("plugins (0)\n"));
}

TEST(Table, CountsCharactersAndNotBytes) {
    const std::vector<CColumn<std::string>> columns{
        {"name", [](const std::string& strName) { return strName; }},
        {"size", [](const std::string& strName) { return Json::UInt64{strName.size()}; }}};
    std::ostringstream stream;
    CTable("names", columns, std::vector<std::string>{"\xC3\xA9t\xC3\xA9", "abcde"}).Print(stream);
    EXPECT_EQ(stream.str(), "names (2)\nname   size\n\xC3\xA9t\xC3\xA9    5\nabcde  5\n");
}

TEST(Table, WithoutRowsIsItsTitles) {
    const std::vector<CColumn<int>> columns{{"number", [](int iNumber) { return iNumber; }}};
    const CTable table("numbers", columns, std::vector<int>{});
    std::ostringstream stream;
    table.Print(stream);
    EXPECT_EQ(stream.str(), "numbers (0)\nnumber\n");
    EXPECT_EQ(table.ToJson(), Json::Value(Json::arrayValue));
}

}  // namespace
