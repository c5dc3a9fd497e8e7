#include "plugins/plugin_folder.h"

#include <json/json.h>

#include <filesystem>
#include <sstream>

#include "service_fixture.h"

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

namespace {

/// What the program says of a plug-in folder; there is no store.
class PluginFolder : public CServiceTest {
protected:
    CProcessResult RunOnFolder(std::vector<std::string> words) const {
        words.insert(words.begin(), {"--lib-dir", m_folder.GetLibDir()});
        return Run(words);
    }

    CProcessResult ShowPlugins() const { return RunOnFolder({"show", "plugins"}); }

    const CPluginFolder m_folder;
};

TEST_F(PluginFolder, IsShownWithoutAStore) {
    m_folder.Add("alpha", "1.so");
    const CProcessResult result = ShowPlugins();
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strErrors, IsEmpty());
    EXPECT_EQ(result.strOutput,
              "plugins (1)\n"
              "plugin  file  version  jobs    containers         logic_types                     "
              "fault_shift        load_balance  lost  failure\n"
              "alpha   1.so  fixture  7, 101  Shared, alphaType  alphaLogic, alphaOne, alphaTwo  "
              "Shared, alphaType  Shared\n");
    EXPECT_FALSE(std::filesystem::exists(File("store.db")));
    EXPECT_EQ(RunOnFolder({"show", "nodes"}).iExitCode, 2);
}

TEST_F(PluginFolder, ShowsWhatWasLostToWhom) {
    m_folder.Add("beta", "1.so");
    m_folder.Add("alpha", "2.so");
    m_folder.Add("alpha_twin", "3.so");
    const CProcessResult result = ShowPlugins();
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strOutput, HasSubstr("plugins (3)\n"));
    EXPECT_THAT(result.strOutput,
                MatchesRegex(".*\nbeta    1.so  fixture  7, 102  Shared, betaType [^\n]*  Shared\n"
                             "alpha   2.so  fixture  101     alphaType  [^\n]*"
                             "  job type 7 to 1.so, container type Shared to 1.so, "
                             "real type Shared to 1.so\n"
                             "alpha   3.so  fixture  104     alpha_twinType  [^\n]*"
                             "  job type 7 to 1.so, container type Shared to 1.so, "
                             "real type Shared to 1.so, name alpha to 2.so\n"));
}

TEST_F(PluginFolder, ShowsTheSameAsJson) {
    m_folder.Add("beta", "1.so");
    m_folder.Add("alpha", "2.so");
    Json::Value root;
    std::istringstream(RunOnFolder({"show", "plugins", "--json"}).strOutput) >> root;
    const Json::Value& second = root["plugins"][1];
    EXPECT_EQ(second["file"], "2.so");
    EXPECT_EQ(second["plugin"], "alpha");
    EXPECT_EQ(second["jobs"][0], 101);
    EXPECT_EQ(second["lost"][0], "job type 7 to 1.so");
    EXPECT_EQ(second["failure"], "");
}

TEST_F(PluginFolder, ShowsWhyAFileDidNotLoadAndWhichWereNotTried) {
    m_folder.Add("alpha", "1.so");
    m_folder.Add("throws_GetSupportedJobs", "2.so");
    m_folder.Add("beta", "3.so");
    const CProcessResult result = ShowPlugins();
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strErrors, HasSubstr("cannot load the plug-ins of "));
    EXPECT_THAT(result.strOutput, HasSubstr("\nalpha   1.so  fixture  "));
    EXPECT_THAT(result.strOutput,
                MatchesRegex(".*\n +2.so  [^\n]*  GetSupportedJobs threw: GetSupportedJobs of "
                             "throws_GetSupportedJobs\n +3.so  [^\n]*  not tried, since a file "
                             "before it did not load\n"));
}

TEST_F(PluginFolder, NoPluginIsAskedTwice) {
    m_folder.Add("throws_again", "1.so");
    const CProcessResult shown = ShowPlugins();
    EXPECT_EQ(shown.iExitCode, 0);
    EXPECT_THAT(shown.strOutput, HasSubstr("\nthrows_again  1.so  fixture  7, 100  "));
    Put("", "");
    const CProcessResult checked = RunOnFolder({"check"});
    EXPECT_EQ(checked.iExitCode, 5);
    EXPECT_THAT(checked.strErrors, IsEmpty());
}

TEST_F(PluginFolder, APluginThatCannotTellItsVersionIsNamed) {
    m_folder.Add("alpha", "1.so");
    m_folder.Add("throws_version", "2.so");
    const CProcessResult result = ShowPlugins();
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strOutput, HasSubstr("\nalpha           1.so  fixture  "));
    EXPECT_THAT(result.strOutput,
                MatchesRegex(".*\nthrows_version  2.so  [^\n]*  GetVersion threw: GetVersion of "
                             "throws_version\n"));
}

TEST_F(PluginFolder, EachLostClaimIsAWarning) {
    Put("", "");
    m_folder.Add("beta", "1.so");
    m_folder.Add("alpha", "2.so");
    m_folder.Add("alpha_twin", "3.so");
    const CProcessResult result = RunOnFolder({"check"});
    EXPECT_EQ(result.iExitCode, 5);
    for (const char* pszLost :
         {"2.so loses job type 7 to 1.so", "2.so loses container type Shared to 1.so",
          "2.so loses real type Shared to 1.so", "3.so loses job type 7 to 1.so",
          "3.so loses name alpha to 2.so"}) {
        EXPECT_THAT(result.strOutput,
                    HasSubstr(std::string("\nwarning   plugins        ") + pszLost + "\n"));
    }
}

TEST_F(PluginFolder, AFileThatDidNotLoadIsAnError) {
    Put("", "");
    m_folder.Add("fails_Init", "1.so");
    m_folder.Add("alpha", "2.so");
    const CProcessResult result = RunOnFolder({"check"});
    EXPECT_EQ(result.iExitCode, 1);
    EXPECT_THAT(result.strErrors, IsEmpty());
    EXPECT_THAT(result.strOutput,
                HasSubstr("\nerror     plugins        1.so is not loaded: Init answered 5\n"
                          "error     plugins        2.so is not loaded: not tried, since a file "
                          "before it did not load\n"));
}

}  // namespace
