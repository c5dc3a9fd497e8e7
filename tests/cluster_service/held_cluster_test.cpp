#include "command/cluster_holder.h"
#include "service_fixture.h"
#include "support/name_holder_process.h"

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

constexpr char PSZ_URL[] = "http://127.0.0.1:8390";
constexpr int64_t NUMERIC_SINCE = 1772604000;  ///< 2026-03-04 06:00:00

using Arguments = std::vector<std::string>;

/// A cluster that another process holds, as a service does that runs it.
class HeldCluster : public CServiceTest {
protected:
    HeldCluster() {
        Put("/Cluster", ClusterText({NodeText("n1", "10.0.0.1", {"MeroRecord", "MeroImgDev"}),
                                     NodeText("n 2", "10.0.0.2", {"MeroRecord"})}));
        Put("/CenterDB", DatabaseText("n1", {"n 2"}));
        Put("/Version", R"({"DecisionVerNum":10,"MasterVerNum":2})");
        WriteDocument("version.json", R"({"DecisionVerNum":11,"MasterVerNum":2})");
        m_dir.WriteFile("story.jsonl", R"({"story":1,"day":"2026-03-04"})"
                                       "\n"
                                       R"({"time":"06:00:00","input":"node_report","node":"n1"})"
                                       "\n");
    }

    CNameHolderProcess HoldAs(const std::string& strText) const {
        return {"sqlite:" + File("store.db"), HolderPath("Main"), strText};
    }

    CNameHolderProcess HoldAsService() const {
        return HoldAs(HolderText({PSZ_URL, "alpha", 4711, NUMERIC_SINCE}));
    }

    /// The request that a refused command points to, or what it says instead; for the rest it
    /// must have said what each says.
    std::string AdviceOf(const Arguments& arguments) const {
        const CProcessResult result = Run(arguments);
        EXPECT_EQ(result.iExitCode, 1) << arguments[0];
        EXPECT_THAT(result.strOutput, IsEmpty());
        const std::string strFirst =
            "cluster Main in sqlite:store.db is run by the service at http://127.0.0.1:8390, "
            "process 4711 on alpha, since 2026-03-04 06:00:00 UTC; nothing was changed\n";
        const std::string strLast = "\n--force changes the store all the same\n";
        const std::string& strSaid = result.strErrors;
        const bool bAsExpected =
            strSaid.size() > strFirst.size() + strLast.size() &&
            strSaid.compare(0, strFirst.size(), strFirst) == 0 &&
            strSaid.compare(strSaid.size() - strLast.size(), strLast.size(), strLast) == 0;
        EXPECT_TRUE(bAsExpected) << strSaid;
        return bAsExpected ? strSaid.substr(strFirst.size(),
                                            strSaid.size() - strFirst.size() - strLast.size())
                           : "";
    }
};

TEST_F(HeldCluster, CommandsThatChangeItAreRefusedAndSayWhatToAskTheServiceFor) {
    CNameHolderProcess service = HoldAsService();
    ASSERT_EQ(service.Line(), "held");
    const std::string strBefore = Stored("/Cluster").value();
    EXPECT_EQ(AdviceOf({"promote", "n 2", "--yes"}),
              "ask the service: POST http://127.0.0.1:8390/api/v1/center-db/promote "
              "{\"node\":\"n 2\"}");
    EXPECT_EQ(AdviceOf({"remove", "n 2", "MeroRecord", "--yes"}),
              "ask the service: DELETE "
              "http://127.0.0.1:8390/api/v1/containers/MeroRecord/n%202");
    const std::string strNone = "no request to a service does this: stop it first";
    EXPECT_EQ(AdviceOf({"import", "--yes", "documents"}), strNone);
    EXPECT_EQ(AdviceOf({"play", "story.jsonl"}), strNone);
    EXPECT_EQ(Stored("/Cluster"), strBefore);
    EXPECT_EQ(Stored("/Version"), R"({"DecisionVerNum":10,"MasterVerNum":2})");
}

TEST_F(HeldCluster, ForceGoesAhead) {
    CNameHolderProcess service = HoldAsService();
    ASSERT_EQ(service.Line(), "held");
    EXPECT_EQ(Run({"import", "--force", "--yes", "documents"}).iExitCode, 0);
    EXPECT_EQ(Stored("/Version"), R"({"DecisionVerNum":11,"MasterVerNum":2})");
    EXPECT_EQ(Run({"remove", "n1", "MeroImgDev", "--force", "--yes"}).iExitCode, 0);
    EXPECT_EQ(Run({"promote", "n 2", "--force", "--yes"}).iExitCode, 0);
    EXPECT_EQ(Run({"play", "--force", "story.jsonl"}).iExitCode, 0);
}

TEST_F(HeldCluster, WhoeverOnlyLooksIsNotDisturbed) {
    const std::vector<Arguments> looks{{"show"},
                                       {"check"},
                                       {"diff", "documents"},
                                       {"import", "--dry-run", "documents"},
                                       {"remove", "--dry-run", "n1", "MeroImgDev"},
                                       {"promote", "--dry-run", "n 2"},
                                       {"play", "--dry-run", "story.jsonl"},
                                       {"export", "out"}};
    std::vector<CProcessResult> before;
    for (const Arguments& arguments : looks) {
        before.push_back(Run(arguments));
    }
    CNameHolderProcess service = HoldAsService();
    ASSERT_EQ(service.Line(), "held");
    for (std::size_t ui = 0; ui < looks.size(); ++ui) {
        const CProcessResult result = Run(looks[ui]);
        EXPECT_EQ(result.iExitCode, before[ui].iExitCode) << looks[ui][0] << result.strErrors;
        EXPECT_EQ(result.strOutput, before[ui].strOutput) << looks[ui][0];
        EXPECT_EQ(result.strErrors, before[ui].strErrors) << looks[ui][0];
    }
}

TEST_F(HeldCluster, JournalThatBeginsWithAStateIsPlayedBesideTheServiceAndAStoryIsNot) {
    ASSERT_EQ(Run({"play", "--journal", "journal.jsonl", "story.jsonl"}).iExitCode, 0);
    const CProcessResult alone = Run({"play", "journal.jsonl"});
    ASSERT_EQ(alone.iExitCode, 0) << alone.strErrors;
    const std::string strJournal = ReadText(File("journal.jsonl"));
    m_dir.WriteFile("stateless.jsonl",
                    "{\"journal\":1}" + strJournal.substr(strJournal.find('\n')));
    CNameHolderProcess service = HoldAsService();
    ASSERT_EQ(service.Line(), "held");
    const std::string strVersion = Stored("/Version").value();

    const CProcessResult beside = Run({"play", "journal.jsonl"});
    EXPECT_EQ(beside.iExitCode, 0) << beside.strErrors;
    EXPECT_EQ(beside.strOutput, alone.strOutput);
    EXPECT_THAT(AdviceOf({"play", "story.jsonl"}), Not(IsEmpty()));
    EXPECT_THAT(AdviceOf({"play", "stateless.jsonl"}), Not(IsEmpty()));
    EXPECT_EQ(Stored("/Version"), strVersion);
}

TEST_F(HeldCluster, KilledOrEndedServiceIsNotInTheWay) {
    CNameHolderProcess killed = HoldAsService();
    ASSERT_EQ(killed.Line(), "held");
    killed.Kill();
    EXPECT_EQ(Run({"import", "--yes", "documents"}).iExitCode, 0);
    CNameHolderProcess ended = HoldAsService();
    ASSERT_EQ(ended.Line(), "held");
    ended.Say("release");
    ASSERT_EQ(ended.Line(), "released, code 0");
    EXPECT_EQ(Run({"promote", "n 2", "--yes"}).iExitCode, 0);
}

TEST_F(HeldCluster, PausedServiceStillHasIt) {
    CNameHolderProcess service = HoldAsService();
    ASSERT_EQ(service.Line(), "held");
    service.Pause();
    EXPECT_EQ(Run({"import", "--yes", "documents"}).iExitCode, 1);
}

TEST_F(HeldCluster, IsOneOfSeveralInTheStore) {
    CNameHolderProcess service = HoldAsService();
    ASSERT_EQ(service.Line(), "held");
    EXPECT_EQ(Run({"--cluster-code", "Other", "import", "--yes", "documents"}).iExitCode, 0);
}

TEST_F(HeldCluster, HolderThatDoesNotTellWhoItIsIsRespectedToo) {
    CNameHolderProcess service = HoldAs("not JSON\x1b[2J");
    ASSERT_EQ(service.Line(), "held");
    const CProcessResult result = Run({"promote", "n 2", "--yes"});
    EXPECT_EQ(result.iExitCode, 1);
    EXPECT_EQ(result.strErrors,
              "cluster Main in sqlite:store.db is run by a service; nothing was changed\n"
              "no request to a service does this: stop it first\n"
              "--force changes the store all the same\n");
}

}  // namespace
