#include <json/json.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "cluster_engine/journal.h"
#include "play/json_match.h"
#include "play/story.h"
#include "service_fixture.h"

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

constexpr char PSZ_HEADER[] = R"({"story":1,"day":"2026-03-04"})"
                              "\n";

/// Two recorders that report every half minute, n2 only for five minutes.
constexpr char PSZ_REPORTS[] =
    R"({"time":"06:00:00","input":"container_report","node":"n1","type":"MeroRecord",)"
    R"("total":{"disk":1000},"used":{"disk":100},"every":30,"until":"07:00:00"})"
    "\n"
    R"({"time":"06:00:00","input":"container_report","node":"n2","type":"MeroRecord",)"
    R"("total":{"disk":1000},"used":{"disk":100},"every":30,"until":"06:05:00"})"
    "\n";

constexpr char PSZ_JOB[] =
    R"({"time":"06:01:00","input":"job","node":"n1","job_type":1001,"xml":"<TaskList>)"
    R"(<Task><TaskID>c1</TaskID><Disk>10</Disk></Task>)"
    R"(<Task><TaskID>c2</TaskID><Disk>10</Disk></Task></TaskList>","expect":{"result":"done"}})"
    "\n";

class Play : public CServiceTest {
protected:
    Play() {
        Put("/Cluster", ClusterText({NodeText("n1", "10.0.0.1", {"MeroRecord"}),
                                     NodeText("n2", "10.0.0.2", {"MeroRecord"})}));
        Put("/ClusterConfig",
            R"({"IsLoadBalance":false,"IsFaultShift":true,"IsLoadBalanceOnePeriod":false})");
        Put("/Version", R"({"DecisionVerNum":10,"MasterVerNum":2})");
    }

    CProcessResult PlayText(const std::string& strText,
                            const std::vector<std::string>& options = {}) const {
        m_dir.WriteFile("story.jsonl", strText);
        std::vector<std::string> arguments{"play", "story.jsonl"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return Run(arguments);
    }
};

TEST_F(Play, TellsWhatHappensUnderTheTimesOfTheFile) {
    const CProcessResult result = PlayText(
        std::string("# a recorder falls silent\n\n") + PSZ_HEADER + PSZ_REPORTS + PSZ_JOB +
        R"({"time":"06:10:00","expect":{"event":"offline","node":"n2","type":"MeroRecord"},"times":1})"
        "\n"
        R"({"time":"06:10:00","expect":{"container":"MeroRecord","node":"n1","tasks":2}})"
        "\n");
    EXPECT_EQ(result.iExitCode, 0) << result.strErrors;
    EXPECT_THAT(
        result.strOutput,
        AllOf(HasSubstr("before: containers (2)\n"), HasSubstr("\nWednesday, 2026-03-04\n"),
              HasSubstr(
                  "\n06:01:00  n1 MeroRecord                     is given c1: asked by n1  #11\n"),
              HasSubstr(
                  "\n06:06:31  n2 MeroRecord                     falls silent: has not reported\n"),
              HasSubstr("\n06:06:31  n1 MeroRecord                     takes over c2 from n2: "),
              HasSubstr("\nafter: containers (2)\n"),
              HasSubstr("\nn1    MeroRecord  yes     2      10            0\n"),
              HasSubstr("; 3 of 3 expectations were met; digest ")));
    EXPECT_THAT(*Stored("/Version"), HasSubstr("12"));
}

TEST_F(Play, LeavesTheStoreAloneInADryRun) {
    const std::string strVersion = *Stored("/Version");
    const CProcessResult result =
        PlayText(std::string(PSZ_HEADER) + PSZ_REPORTS + PSZ_JOB, {"--dry-run"});
    EXPECT_EQ(result.iExitCode, 0) << result.strErrors;
    EXPECT_THAT(result.strOutput, HasSubstr("is given c1"));
    EXPECT_EQ(*Stored("/Version"), strVersion);
}

TEST_F(Play, GoesOnWhereAnEarlierOneStopped) {
    ASSERT_EQ(PlayText(std::string(PSZ_HEADER) + PSZ_REPORTS + PSZ_JOB).iExitCode, 0);
    const CProcessResult result =
        PlayText(R"({"story":1,"day":"2026-03-05"})"
                 "\n"
                 R"({"time":"08:00:00","expect":{"container":"MeroRecord","node":"n1","tasks":1}})"
                 "\n");
    EXPECT_EQ(result.iExitCode, 0) << result.strOutput << result.strErrors;
}

TEST_F(Play, SaysWhatIsNotAsTheFileExpects) {
    const CProcessResult result =
        PlayText(std::string(PSZ_HEADER) + PSZ_REPORTS +
                 R"({"time":"06:00:20","expect":{"event":"offline"}})"
                 "\n"
                 R"({"time":"06:00:20","expect":{"container":"MeroRecord","node":"n1","tasks":9}})"
                 "\n"
                 R"({"time":"06:00:30","input":"promote","node":"n9","expect":{"result":"done"}})"
                 "\n"
                 R"({"time":"06:00:40","expect":{"event":"offline"},"times":0})"
                 "\n");
    EXPECT_EQ(result.iExitCode, 1);
    EXPECT_THAT(
        result.strOutput,
        AllOf(HasSubstr("!! line 4: expected at least once, happened 0 times since the last input: "
                        "{\"event\":\"offline\"}\n"),
              HasSubstr("!! line 5: no such container: "), Not(HasSubstr("!! line 7")),
              HasSubstr(" expectations were met")));
}

TEST_F(Play, ShowsJsonLinesToPrograms) {
    const CProcessResult result =
        PlayText(std::string(PSZ_HEADER) + PSZ_REPORTS + PSZ_JOB, {"--json"});
    EXPECT_EQ(result.iExitCode, 0) << result.strErrors;
    std::istringstream lines(result.strOutput);
    int iPlaced = 0;
    int iJobs = 0;
    int iTables = 0;
    for (std::string strLine; std::getline(lines, strLine);) {
        Json::Value json;
        ASSERT_TRUE(std::istringstream(strLine) >> json) << strLine;
        iPlaced += json["event"] == "placed" ? 1 : 0;
        iJobs += json["input"] == "job" && json["answer"]["result"] == "done" ? 1 : 0;
        iTables += json["containers"].isArray() ? 1 : 0;
    }
    EXPECT_EQ(iPlaced, 2);
    EXPECT_EQ(iJobs, 1);
    EXPECT_EQ(iTables, 2);
}

TEST_F(Play, AJournalPlaysTheSameAgain) {
    ASSERT_EQ(PlayText(std::string(PSZ_HEADER) + PSZ_REPORTS + PSZ_JOB +
                           R"({"time":"06:10:00","input":"balance_now"})"
                           "\n",
                       {"--journal", "journal.jsonl"})
                  .iExitCode,
              0);
    const std::string strVersion = *Stored("/Version");
    const CProcessResult again = Run({"play", "journal.jsonl"});
    EXPECT_EQ(again.iExitCode, 0) << again.strOutput << again.strErrors;
    EXPECT_THAT(again.strOutput, HasSubstr("takes over c2 from n2"));
    EXPECT_EQ(*Stored("/Version"), strVersion) << "a journal has a store of its own";
}

TEST_F(Play, NamesTheFirstCommitThatAJournalHasOtherwise) {
    ASSERT_EQ(
        PlayText(std::string(PSZ_HEADER) + PSZ_REPORTS + PSZ_JOB, {"--journal", "journal.jsonl"})
            .iExitCode,
        0);
    std::string strText = ReadText(File("journal.jsonl"));
    const std::size_t uiJob = strText.find("<TaskID>c1</TaskID>");
    ASSERT_NE(uiJob, std::string::npos);
    m_dir.WriteFile("other.jsonl", strText.replace(uiJob + 8, 2, "c3"));
    const auto iLines =
        std::count(strText.begin(), strText.begin() + static_cast<long>(uiJob), '\n');
    const CProcessResult result = Run({"play", "other.jsonl"});
    EXPECT_EQ(result.iExitCode, 1);
    EXPECT_THAT(result.strOutput, HasSubstr("!! line " + std::to_string(iLines + 2) +
                                            ": the first commit that is not as it was: "));
    EXPECT_EQ(result.strOutput.find("!! "), result.strOutput.rfind("!! "));
}

TEST_F(Play, GoesOnInAnotherJournalWhenOneIsFull) {
    ASSERT_EQ(PlayText(std::string(PSZ_HEADER) + PSZ_REPORTS + PSZ_JOB,
                       {"--journal", "journal.jsonl", "--journal-bytes", "3000"})
                  .iExitCode,
              0);
    for (const char* const pszFile : {"journal.jsonl", "journal.jsonl.2", "journal.jsonl.3"}) {
        const CProcessResult result = Run({"play", pszFile});
        EXPECT_EQ(result.iExitCode, 0) << pszFile << result.strOutput << result.strErrors;
    }
}

TEST_F(Play, KeepsTheNewestJournalsAlone) {
    ASSERT_EQ(
        PlayText(std::string(PSZ_HEADER) + PSZ_REPORTS + PSZ_JOB,
                 {"--journal", "journal.jsonl", "--journal-bytes", "3000", "--journal-files", "2"})
            .iExitCode,
        0);
    std::vector<std::string> left;
    for (const auto& entry : std::filesystem::directory_iterator(m_dir.GetPath())) {
        if (const std::string strName = entry.path().filename(); strName.rfind("journal", 0) == 0) {
            left.push_back(strName);
        }
    }
    std::sort(left.begin(), left.end());
    ASSERT_EQ(left.size(), 2U);
    EXPECT_NE(left.front(), "journal.jsonl");
    EXPECT_EQ(Run({"play", left.front()}).iExitCode, 0) << "the newest has just been begun";
}

TEST_F(Play, KeepsAnExistingFileFromBecomingAJournal) {
    m_dir.WriteFile("journal.jsonl", "mine");
    EXPECT_EQ(PlayText(PSZ_HEADER, {"--journal", "journal.jsonl"}).iExitCode, 2);
    EXPECT_EQ(ReadText(File("journal.jsonl")), "mine");
}

TEST_F(Play, MakesNoTicksForAFileThatHasItsOwn) {
    const CProcessResult result = PlayText(
        "{\"story\":1,\"ticks\":false}\n"
        "{\"time\":1000,\"input\":\"tick\"}\n"
        "{\"time\":1200,\"expect\":{\"event\":\"offline\"},\"times\":0}\n"
        "{\"time\":1200,\"input\":\"tick\"}\n"
        "{\"time\":1200,\"expect\":{\"event\":\"settling\"},\"times\":1}\n");
    EXPECT_EQ(result.iExitCode, 0) << result.strOutput << result.strErrors;
}

TEST_F(Play, ShowsWhatADryRunWouldComeTo) {
    const CProcessResult result = PlayText(
        std::string(PSZ_HEADER) + PSZ_REPORTS +
        R"({"time":"06:00:10","input":"dry_run","node":"n1","job_type":1001,"xml":"<TaskList>)"
        R"(<Task><TaskID>a</TaskID><Disk>10</Disk></Task>)"
        R"(<Task><TaskID>b</TaskID><Disk>9999</Disk></Task></TaskList>"})"
        "\n");
    EXPECT_THAT(result.strOutput, HasSubstr("  is answered: 1 placed, 1 refused\n"));
}

TEST_F(Play, FollowsAClockThatGoesBack) {
    const CProcessResult result = PlayText(
        "{\"time\":2000,\"input\":\"container_report\",\"node\":\"n1\",\"type\":\"MeroRecord\"}\n"
        "{\"time\":1000,\"input\":\"container_report\",\"node\":\"n1\",\"type\":\"MeroRecord\"}\n"
        "{\"time\":1080,\"expect\":{\"event\":\"offline\"},\"times\":0}\n");
    EXPECT_EQ(result.iExitCode, 0) << result.strOutput << result.strErrors;
}

struct CBadFile {
    const char* pszName;
    std::string strText;
    const char* pszFault;
};

class PlayBadFile : public Play, public ::testing::WithParamInterface<CBadFile> {};

TEST_P(PlayBadFile, IsRefusedWithItsPlace) {
    const CProcessResult result = PlayText(GetParam().strText);
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strErrors, HasSubstr(std::string("story.jsonl: ") + GetParam().pszFault));
    EXPECT_THAT(result.strOutput, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Each, PlayBadFile,
    ::testing::Values(
        CBadFile{"Empty", "# nothing\n", "has no input\n"},
        CBadFile{"NoJson", "# a story\n{]\n{}\n", "line 2: is no JSON: "},
        CBadFile{"CutAtTheEnd", std::string(PSZ_HEADER) + "{\"time\":7,\"inp",
                 "line 2: the file ends within this line (cut)"},
        CBadFile{"ForeignJournal", "{\"journal\":9}\n",
                 "line 1: \"journal\": must be 1: another release wrote this file "
                 "(foreign_version)"},
        CBadFile{"ForeignStory", "{\"story\":9}\n",
                 "line 1: \"story\": must be 1 (foreign_version)"},
        CBadFile{"UnknownKind", "{\"time\":7,\"input\":\"dance\"}\n",
                 "line 1: \"input\": is no kind of input (unknown_kind)"},
        CBadFile{"UnknownField", "{\"time\":7,\"input\":\"promote\",\"node\":\"n\",\"speed\":1}\n",
                 "line 1: \"speed\": "},
        CBadFile{"DeepField",
                 "{\"time\":7,\"input\":\"container_report\",\"node\":\"n\",\"type\":\"t\","
                 "\"tasks\":[{\"id\":\"a\"},{\"id\":\"b\",\"costs\":3}]}\n",
                 "line 1: \"tasks[1].costs\": must be an object (bad_field)"},
        CBadFile{"TimeOfNoDay", "{\"time\":\"06:00:00\",\"input\":\"tick\"}\n",
                 "line 1: \"time\": is a time of the day, and the first line names no \"day\""},
        CBadFile{"BadTime", std::string(PSZ_HEADER) + "{\"time\":\"6 am\",\"input\":\"tick\"}\n",
                 "line 2: \"time\": must be a second, or a time such as 06:30:00"},
        CBadFile{"BadDay", "{\"story\":1,\"day\":\"today\"}\n",
                 "line 1: \"day\": must be a day such as 2026-03-04"},
        CBadFile{"EveryAlone", "{\"time\":7,\"input\":\"tick\",\"every\":3}\n",
                 "line 1: \"every\": and \"until\" come together"},
        CBadFile{"EveryNothing", "{\"time\":7,\"input\":\"tick\",\"every\":0,\"until\":9}\n",
                 "line 1: \"every\": must be a second at least"},
        CBadFile{"ExpectOfMany",
                 "{\"time\":7,\"input\":\"tick\",\"every\":1,\"until\":9,\"expect\":{}}\n",
                 "line 1: \"expect\": belongs to an input that comes once"},
        CBadFile{"ExpectOfNothing", "{\"time\":7,\"expect\":{\"node\":\"n\"}}\n",
                 "line 1: \"expect\": must have an \"event\" or a \"container\""},
        CBadFile{"ExpectWithMore", "{\"time\":7,\"expect\":{\"event\":\"left\"},\"node\":\"n\"}\n",
                 "line 1: \"node\": is no field of an expectation"},
        CBadFile{"CommentInAJournal", "{\"journal\":1}\n# hello\n", "line 2: is no JSON: "},
        CBadFile{"CommitInAStory",
                 std::string(PSZ_HEADER) + "{\"time\":7,\"commit\":0,\"digest\":\"0\"}\n",
                 "line 2: \"commit\": stands in a journal alone (unknown_kind)"}),
    CaseName<CBadFile>);

TEST_F(Play, NamesAFileThatIsNotThere) {
    const CProcessResult result = Run({"play", "nowhere.jsonl"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strErrors, HasSubstr("nowhere.jsonl"));
}

TEST_F(Play, SaysWhyAClusterCannotBeLoaded) {
    Put("/Cluster", "{");
    const CProcessResult result = PlayText("{\"time\":7,\"input\":\"tick\"}\n");
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strErrors, HasSubstr("cannot load the cluster: code "));
}

class SampleDay : public CServiceTest {
protected:
    CProcessResult PlayDay(const std::string& strStore,
                           const std::vector<std::string>& options = {}) const {
        EXPECT_EQ(RunOn(strStore, {"import", "--yes", PSZ_SAMPLE_DIR}).iExitCode, 0);
        std::vector<std::string> arguments{
            "--lib-dir", PSZ_SAMPLE_LIB_DIR, "--config-dir", PSZ_SAMPLE_DIR, "play", PSZ_DAY};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunOn(strStore, arguments);
    }

    static constexpr char PSZ_DAY[] = PSZ_SAMPLE_DIR "/day.jsonl";
};

TEST_F(SampleDay, IsAsItExpects) {
    const CProcessResult result = PlayDay("sqlite:" + File("store.db"));
    EXPECT_EQ(result.iExitCode, 0) << result.strOutput << result.strErrors;
    EXPECT_THAT(result.strOutput, Not(HasSubstr("!! ")));
    EXPECT_THAT(*Stored("/Cluster"), AllOf(HasSubstr("record-09"), Not(HasSubstr("record-08"))));
    EXPECT_THAT(*Stored("/MERO/CGList"), HasSubstr("float-03"));
    EXPECT_THAT(*Stored("/CloudStorage"), HasSubstr("2100"));
}

TEST_F(SampleDay, IsTheSameToTheByteOnAnotherStore) {
    const std::string strOutput = PlayDay("sqlite:" + File("one.db")).strOutput;
    EXPECT_THAT(strOutput, HasSubstr("; digest "));
    EXPECT_EQ(strOutput, PlayDay("sqlite:" + File("two.db"), {"--dry-run"}).strOutput);
}

Json::Value Parsed(const std::string& strText) {
    Json::Value root;
    EXPECT_TRUE(std::istringstream(strText) >> root) << strText;
    return root;
}

TEST(JsonMatch, WantsNoMoreThanIsNamed) {
    const Json::Value value = Parsed(R"({"a":1,"b":{"c":"x","d":2},"e":[{"f":1},{"f":2,"g":3}]})");
    EXPECT_TRUE(HasWanted(value, Parsed("{}")));
    EXPECT_TRUE(HasWanted(value, Parsed(R"({"a":1,"b":{"d":2},"e":[{"f":2}]})")));
    EXPECT_FALSE(HasWanted(value, Parsed(R"({"a":2})")));
    EXPECT_FALSE(HasWanted(value, Parsed(R"({"z":1})")));
    EXPECT_FALSE(HasWanted(value, Parsed(R"({"e":[{"f":3}]})")));
    EXPECT_FALSE(HasWanted(value, Parsed(R"({"a":{"c":1}})")));
}

TEST(JsonMatch, ComparesNumbersByTheirValue) {
    EXPECT_TRUE(HasWanted(Json::UInt64{7}, Json::Int64{7}));
    EXPECT_FALSE(HasWanted(Json::UInt64{18446744073709551615U}, Json::Int64{-1}));
}

}  // namespace
