#include <filesystem>

#include "service_fixture.h"

using ::testing::Eq;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::Optional;

namespace {

/// The program in a shell that redirects its streams.
class Output : public CServiceTest {
protected:
    Output() {
        Put("/Cluster", ClusterText({NodeText("n1", "10.0.0.1", {"A", "B"})}));
        WriteDocument("version.json", R"({"DecisionVerNum":1,"MasterVerNum":2})");
    }

    CProcessResult RunInShell(const std::string& strArguments, const std::string& strRedirection,
                              const std::optional<CTerminal>& terminal = std::nullopt) const {
        return RunProcess("/bin/sh", {"-c", Program() + " " + strArguments + " " + strRedirection},
                          m_dir.GetPath(), terminal);
    }

    static std::string Program() { return std::string(PSZ_PROGRAM) + " --store sqlite:store.db"; }
};

TEST_F(Output, ThatCannotBeWrittenIsAFailure) {
    for (const char* pszArguments :
         {"show nodes", "show --json", "check", "export out", "diff documents",
          "diff --json documents", "remove --dry-run n1 A", "--help", "--version"}) {
        const CProcessResult result = RunInShell(pszArguments, ">/dev/full");
        EXPECT_EQ(result.iExitCode, 2) << pszArguments;
        EXPECT_THAT(result.strErrors, HasSubstr("cannot write to the standard output\n"));
    }
}

TEST_F(Output, ErrorsThatCannotBeWrittenAreAFailure) {
    const std::string strArguments = "--config-dir . show tasks";
    ASSERT_EQ(RunInShell(strArguments, "").iExitCode, 0);
    EXPECT_EQ(RunInShell(strArguments, "2>/dev/full").iExitCode, 2);
    EXPECT_EQ(RunInShell("--log-level info show nodes", "2>/dev/full").iExitCode, 2);
}

TEST_F(Output, AQuestionThatCannotBeWrittenIsAnsweredNo) {
    const auto before = Stored("/Cluster");
    EXPECT_EQ(RunInShell("remove n1 A", "2>/dev/full", CTerminal{"y\n"}).iExitCode, 2);
    EXPECT_EQ(Stored("/Cluster"), before);
}

TEST_F(Output, ToAClosedPipeIsAFailureAndNoSignal) {
    RunProcess("/bin/sh",
               {"-c", "{ sleep 0.5; " + Program() + " show nodes; echo $? >status; } | true"},
               m_dir.GetPath());
    EXPECT_EQ(ReadText(File("status")), "2\n");
}

TEST_F(Output, OfALogThatCannotBeWrittenIsAFailure) {
    const CProcessResult result =
        Run({"--log-file", "/dev/full", "--log-level", "info", "show", "nodes"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strOutput, HasSubstr("nodes (1)"));
    EXPECT_THAT(result.strErrors, HasSubstr("a log line was lost: "));
}

TEST_F(Output, OfClosedStreamsGoesNowhere) {
    for (const char* pszClosed : {">&-", "2>&-", "<&-", ">&- 2>&- <&-"}) {
        std::filesystem::remove(File("log"));
        const CProcessResult result =
            RunInShell("--log-file log --log-level info show nodes", pszClosed);
        EXPECT_EQ(result.iExitCode, 0) << pszClosed;
        EXPECT_THAT(ReadText(File("log")), HasSubstr(" INFO ")) << pszClosed;
        EXPECT_THAT(ReadText(File("log")), Not(HasSubstr("nodes (1)"))) << pszClosed;
    }
    EXPECT_EQ(RunInShell("import --yes documents", ">&- 2>&- <&-").iExitCode, 0);
    EXPECT_THAT(Stored("/Version"), Optional(Eq(R"({"DecisionVerNum":1,"MasterVerNum":2})")));
}

TEST_F(Output, OfTwoProgramsIsInTheOneLogThatBothName) {
    const std::string strShow = Program() + " --log-file log --log-level info show nodes";
    RunProcess("/bin/sh", {"-c", strShow + " & " + strShow + "; wait"}, m_dir.GetPath());
    const std::string strLog = ReadText(File("log"));
    const std::string strLine = "[init node and container from zk]";
    const auto first = strLog.find(strLine);
    ASSERT_NE(first, std::string::npos);
    EXPECT_NE(strLog.find(strLine, first + 1), std::string::npos);
}

}  // namespace
