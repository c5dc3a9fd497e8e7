#include <json/json.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "service_fixture.h"
#include "table.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

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
    EXPECT_THAT(result.strOutput, HasSubstr("plugins (2)\n"));
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

TEST_F(Show, WithoutASubjectShowsAllInOrder) {
    std::string strAll;
    for (const char* pszSubject : {"nodes", "containers", "plugins", "config"}) {
        strAll.append(strAll.empty() ? "" : "\n").append(Run({"show", pszSubject}).strOutput);
    }
    EXPECT_EQ(Run({"show"}).strOutput, strAll);
}

TEST_F(Show, JsonHoldsWhatTheTextShows) {
    const Json::Value root = Parsed(Run({"show", "--json"}).strOutput);
    EXPECT_THAT(root.getMemberNames(), ElementsAre("config", "containers", "nodes", "plugins"));
    const Json::Value& node = root["nodes"][1];
    EXPECT_EQ(node["node"], "n2");
    EXPECT_EQ(node["address"], "10.0.0.2");
    EXPECT_EQ(node["role"], 2);
    EXPECT_EQ(node["member"], "removed");
    EXPECT_EQ(node["containers"], ListValue(std::vector<std::string>{"MeroImgDev"}));
    EXPECT_EQ(root["containers"][0]["requested_storage"], 50);
    EXPECT_EQ(root["containers"][1]["fault_shift"], true);
    EXPECT_EQ(root["config"][2]["value"], false);
    const std::string strText = Run({"show"}).strOutput;
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
    EXPECT_EQ(root["plugins"].size(), 2U);
}

struct CBadLoad {
    const char* pszName;
    const char* pszSuffix;
    const char* pszText;
    const char* pszReason;
};

class ShowFails : public CShowTest, public ::testing::WithParamInterface<CBadLoad> {};

TEST_P(ShowFails, WithAClearLineAndNoTable) {
    Put(GetParam().pszSuffix, GetParam().pszText);
    const CProcessResult result = Run({"--log-file", "log", "show"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strOutput, IsEmpty());
    EXPECT_EQ(result.strErrors, GetParam().pszReason);
}

INSTANTIATE_TEST_SUITE_P(
    Each, ShowFails,
    ::testing::Values(
        CBadLoad{"Config", "/ClusterConfig", "{}",
                 "cannot load the cluster configuration: code 109100053, the log says why\n"},
        CBadLoad{"Cluster", "/Cluster", "{}",
                 "cannot load the cluster: code 109100053, the log says why\n"},
        CBadLoad{"CloudStorage", "/CloudStorage", "[",
                 "cannot load the cluster: code 109100053, the log says why\n"}),
    CaseName<CBadLoad>);

struct CPluginFolder {
    const char* pszName;
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
    EXPECT_THAT(
        result.strErrors,
        ::testing::MatchesRegex("cannot load the plug-ins of .: code -?1, the log says why\n"));
    EXPECT_THAT(ReadText(File("log")), HasSubstr(" ERR plugin_"));
}

INSTANTIATE_TEST_SUITE_P(
    Each, BrokenPluginFolder,
    ::testing::Values(
        CPluginFolder{"TextFile", [](const auto& strFolder) { WriteBroken(strFolder, "text"); }},
        CPluginFolder{"EmptyFile", [](const auto& strFolder) { WriteBroken(strFolder, ""); }},
        CPluginFolder{"NoEntryPoint",
                      [](const auto& strFolder) { CopyPlugin(PSZ_NO_ENTRY_POINT, strFolder); }},
        CPluginFolder{"Missing", [](const auto& strFolder) { fs::remove(strFolder); }}),
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
