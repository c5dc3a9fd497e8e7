#include <filesystem>

#include "service_fixture.h"

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace {

using Options = CServiceTest;

TEST_F(Options, HelpNamesEveryCommandAndOption) {
    const CProcessResult result = Run({"--help"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strErrors, IsEmpty());
    for (const char* pszName :
         {"serve", "import", "export", "check", "show", "remove", "promote", "--store",
          "--cluster-code", "--lib-dir", "--config-dir", "--local-ip", "--log-level", "--log-file",
          "--config", "--version"}) {
        EXPECT_THAT(result.strOutput, HasSubstr(pszName));
    }
}

TEST_F(Options, VersionIsThatOfTheProject) {
    const CProcessResult result = Run({"--version"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, PSZ_VERSION "\n");
}

struct CHelpCase {
    const char* pszName;
    const char* pszText;
};

class CommandHelp : public CServiceTest, public ::testing::WithParamInterface<CHelpCase> {};

TEST_P(CommandHelp, TellsWhatTheCommandDoesAndTouchesNoStore) {
    const CProcessResult result = Run({GetParam().pszName, "--help"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strOutput, HasSubstr(GetParam().pszText));
    EXPECT_FALSE(std::filesystem::exists(File("store.db")));
}

INSTANTIATE_TEST_SUITE_P(
    Every, CommandHelp,
    ::testing::Values(CHelpCase{"import", "cluster_config.json, at most 511 bytes"},
                      CHelpCase{"export", "the text as it stands in the store"},
                      CHelpCase{"check", "reports what is wrong"}, CHelpCase{"show", "--json"},
                      CHelpCase{"remove", "the type of the container to remove"},
                      CHelpCase{"promote", "You are asked before the store changes"},
                      CHelpCase{"serve", "SIGTERM or Ctrl-C ends it within five seconds"}),
    CaseName<CHelpCase>);

struct CUsageCase {
    const char* pszName;
    std::vector<std::string> arguments;
    const char* pszReason;
};

class WrongUsage : public CServiceTest, public ::testing::WithParamInterface<CUsageCase> {};

TEST_P(WrongUsage, IsExplainedAndChangesNothing) {
    const CProcessResult result = Run(GetParam().arguments);
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strOutput, IsEmpty());
    EXPECT_THAT(result.strErrors, HasSubstr(GetParam().pszReason));
    EXPECT_FALSE(std::filesystem::exists(File("store.db")));
}

INSTANTIATE_TEST_SUITE_P(
    Each, WrongUsage,
    ::testing::Values(
        CUsageCase{"NoCommand", {}, "subcommand is required"},
        CUsageCase{
            "UnknownCommand", {"explode"}, "\"explode\" is no command\ncluster_service --help"},
        CUsageCase{"OptionBeforeUnknownCommand", {"--odd", "explode", "more"}, "\"explode\" is no"},
        CUsageCase{"OptionForCommand", {"--odd"}, "subcommand is required"},
        CUsageCase{"RemoveWithoutType", {"remove", "n1"}, "TYPE is required"},
        CUsageCase{"PromoteWithoutNode", {"promote"}, "NODE is required"},
        CUsageCase{"TwoStores", {"--store", "memory", "check"}, "--store"},
        CUsageCase{"NoFolder", {"import"}, "DIR is required"},
        CUsageCase{"MissingFolder", {"import", "nowhere"}, "Path does not exist: nowhere"},
        CUsageCase{"UnknownSubject", {"show", "weather"}, "weather"},
        CUsageCase{"LogLevel", {"--log-level", "loud", "check"}, "loud"},
        CUsageCase{"LocalIp", {"--local-ip", "10.0.0.256", "check"}, "--local-ip: Each IP number"},
        CUsageCase{"EmptyClusterCode", {"--cluster-code", "", "check"}, "a cluster code has"},
        CUsageCase{"ClusterCodeWithSlash", {"--cluster-code", "a/b", "check"}, "no \"/\""},
        CUsageCase{"MissingLibDir", {"--lib-dir", "nowhere", "show"}, "nowhere"},
        CUsageCase{"MissingConfigDir", {"--config-dir", "nowhere", "show"}, "nowhere"},
        CUsageCase{"MissingConfigFile", {"--config", "nowhere.toml", "check"}, "nowhere.toml"},
        CUsageCase{"LogFileNowhere",
                   {"--log-file", "/proc/nowhere/log", "check"},
                   "cannot log to /proc/nowhere/log"}),
    CaseName<CUsageCase>);

struct CStoreCase {
    const char* pszName;
    const char* pszStore;
    const char* pszReason;
};

class WrongStore : public CServiceTest, public ::testing::WithParamInterface<CStoreCase> {};

TEST_P(WrongStore, IsExplained) {
    const CProcessResult result = RunOn(GetParam().pszStore, {"check"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strErrors, HasSubstr(GetParam().pszReason));
}

INSTANTIATE_TEST_SUITE_P(
    Each, WrongStore,
    ::testing::Values(CStoreCase{"Kind", "redis:here", "no such kind of store"},
                      CStoreCase{"NoFile", "sqlite:", "a file must follow"},
                      CStoreCase{"MemoryOf", "memory:x", "nothing may follow"},
                      CStoreCase{"NoPort", "zookeeper:host", "\"host\" is not HOST:PORT"},
                      CStoreCase{"NoHost", "zookeeper::2181", "\":2181\" is not HOST:PORT"},
                      CStoreCase{"NoServer", "zookeeper:", "\"\" is not HOST:PORT"},
                      CStoreCase{"SecondServer", "zookeeper:a:1,b:x", "\"b:x\" is not HOST:PORT"},
                      CStoreCase{"PortZero", "zookeeper:a:0", "\"a:0\" is not HOST:PORT"},
                      CStoreCase{"PortTooHigh", "zookeeper:a:65536", "is not HOST:PORT"},
                      CStoreCase{"MissingFile", "sqlite:missing.db", "no such file"},
                      CStoreCase{"FolderAsFile", "sqlite:/", "cannot open the store sqlite:/"}),
    CaseName<CStoreCase>);

TEST_F(Options, FileThatIsNoStoreIsRefusedAndKept) {
    const std::string strGarbage(5000, 'g');
    m_dir.WriteFile("store.db", strGarbage);
    WriteDocument("version.json", R"({"DecisionVerNum":1,"MasterVerNum":2})");
    for (const CProcessResult& result : {Run({"check"}), ImportDocuments(), Run({"show"})}) {
        EXPECT_EQ(result.iExitCode, 2);
        EXPECT_THAT(result.strErrors, HasSubstr("cannot open the store sqlite:"));
    }
    EXPECT_EQ(ReadText(File("store.db")), strGarbage);
}

TEST_F(Options, StoreThatIsDownIsReportedInBoundedTime) {
    const auto start = std::chrono::steady_clock::now();
    const CProcessResult result = RunOn("zookeeper:127.0.0.1:1", {"check"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(
        result.strErrors,
        StartsWith("cluster Main in zookeeper:127.0.0.1:1: no server answers (ZCONNECTIONLOSS, "
                   "code -4)\n"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
}

TEST_F(Options, ConfigurationFileGivesValuesAndTheCommandLineHasTheLastWord) {
    m_dir.WriteFile("service.toml",
                    "# a comment\ncluster-code = \"Other\"\nlocal-ip = \"10.0.0.9\"\n");
    WriteDocument("version.json", R"({"DecisionVerNum":1,"MasterVerNum":2})");
    Run({"--config", "service.toml", "import", "documents"});
    const CProcessResult shown = Run({"--config", "service.toml", "show", "config"});
    EXPECT_THAT(shown.strOutput, HasSubstr("Other"));
    EXPECT_THAT(shown.strOutput, HasSubstr("10.0.0.9"));
    const CProcessResult overruled =
        Run({"--config", "service.toml", "--local-ip", "10.0.0.8", "show", "config"});
    EXPECT_THAT(overruled.strOutput, HasSubstr("10.0.0.8"));
}

TEST_F(Options, SampleConfigurationIsTaken) {
    const CProcessResult result = RunOn(
        "memory", {"--config", PSZ_SAMPLE_DIR "/cluster_service.toml", "import", PSZ_SAMPLE_DIR});
    EXPECT_EQ(result.iExitCode, 0) << result.strErrors;
}

TEST_F(Options, SampleTasksAreThere) {
    const CProcessResult result =
        RunOn("memory", {"--config-dir", PSZ_SAMPLE_DIR, "--log-level", "err", "show", "tasks"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strErrors, IsEmpty());
    EXPECT_THAT(result.strOutput, StartsWith("tasks (9)\n"));
    EXPECT_THAT(result.strOutput, HasSubstr("\nDEFAULT "));
    EXPECT_THAT(result.strOutput, HasSubstr("\nRECORD_1080P "));
}

TEST_F(Options, UnknownNameInTheConfigurationFileIsRefused) {
    m_dir.WriteFile("service.toml", "stroe = \"memory\"\n");
    const CProcessResult result = Run({"--config", "service.toml", "check"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strErrors, HasSubstr("stroe"));
}

TEST_F(Options, LogGoesToTheFileInsteadOfTheErrorStream) {
    const CProcessResult result =
        Run({"--log-level", "info", "--log-file", "log", "import", PSZ_SAMPLE_DIR});
    ASSERT_EQ(result.iExitCode, 0);
    const CProcessResult shown =
        Run({"--log-level", "info", "--log-file", "log", "--config-dir", PSZ_SAMPLE_DIR, "show"});
    EXPECT_EQ(shown.iExitCode, 0);
    EXPECT_THAT(shown.strErrors, IsEmpty());
    EXPECT_THAT(ReadText(File("log")), HasSubstr("init node and container from zk"));
}

TEST_F(Options, WithoutALogOptionOnlyAFailureShowsItsLog) {
    ASSERT_EQ(Run({"import", PSZ_SAMPLE_DIR}).iExitCode, 0);
    const CProcessResult shown = Run({"--config-dir", PSZ_SAMPLE_DIR, "show"});
    EXPECT_EQ(shown.iExitCode, 0);
    EXPECT_THAT(shown.strErrors, IsEmpty());
    Put("/ClusterConfig", "{}");
    const CProcessResult failed = Run({"show"});
    EXPECT_EQ(failed.iExitCode, 2);
    EXPECT_THAT(failed.strErrors, StartsWith("/CloudMain/ClusterConfig: line 1, column 1: "));
    EXPECT_THAT(failed.strErrors, HasSubstr(" ERR cluster_config_znode_info:"));
    EXPECT_THAT(failed.strErrors, ::testing::Not(HasSubstr(" INFO ")));
    EXPECT_THAT(Run({"--log-level", "err", "show"}).strErrors, HasSubstr(" ERR "));
}

TEST_F(Options, TheLogOfAFailureBeginsAtWhatFailed) {
    ASSERT_EQ(Run({"import", PSZ_SAMPLE_DIR}).iExitCode, 0);
    Put("/CenterDB", "{}");
    const CProcessResult shown = Run({"--config-dir", PSZ_SAMPLE_DIR, "show"});
    EXPECT_EQ(shown.iExitCode, 2);
    EXPECT_THAT(shown.strErrors,
                ::testing::MatchesRegex("/CloudMain/CenterDB: line 1, column 1: [^\n]*\n"
                                        "database: not shown\n"
                                        "[0-9: .-]* ERR cluster_db_znode_info:(.|\n)*"));
    EXPECT_THAT(shown.strErrors, ::testing::Not(HasSubstr("do not support")))
        << "the nodes loaded well";
    Put("/CenterDB", DatabaseText("n1", {"n2"}));
    const CProcessResult all = Run({"--config-dir", PSZ_SAMPLE_DIR, "--log-level", "err", "show"});
    EXPECT_EQ(all.iExitCode, 0);
    EXPECT_THAT(all.strErrors, HasSubstr("do not support")) << "who asks for the log has all of it";
}

TEST_F(Options, LogLevelBoundsTheLog) {
    ASSERT_EQ(Run({"import", PSZ_SAMPLE_DIR}).iExitCode, 0);
    EXPECT_THAT(Run({"--log-level", "info", "show"}).strErrors, HasSubstr(" INFO "));
    EXPECT_THAT(Run({"--log-level", "err", "show"}).strErrors, ::testing::Not(HasSubstr(" INFO ")));
}

TEST_F(Options, GlobalOptionsMayFollowTheCommand) {
    const CProcessResult result =
        RunProcess(PSZ_PROGRAM, {"import", PSZ_SAMPLE_DIR, "--store", "memory"}, m_dir.GetPath());
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strOutput, HasSubstr("\n" PSZ_SAMPLE_DIR "/cluster.json: good"));
}

}  // namespace
