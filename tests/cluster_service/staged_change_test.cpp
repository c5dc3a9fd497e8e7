#include "command/staged_change.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <random>
#include <sstream>
#include <thread>

#include "command/cluster_text.h"
#include "command/exit_code.h"
#include "framework_service/cluster_znode_info.h"
#include "reference_host/memory_store.h"
#include "reference_host/strict_json.h"
#include "service_fixture.h"
#include "support/soak.h"

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;
using ::testing::StartsWith;

namespace {

constexpr char PSZ_PATH[] = "/CloudMain/Cluster";

class Stage : public ::testing::Test {
protected:
    std::optional<std::string> Staged(const std::string& strPath) {
        CStoreAnswer answer;
        EXPECT_EQ(m_stage.Read(strPath, nullptr, answer), 0);
        return answer.text;
    }

    /// Carries out a change that puts a text there, answering no question.
    int CarryOutWrite(const std::string& strText, const std::function<void()>& meanwhile) {
        CPlannedChange change;
        change.workOut = [&] {
            ++m_iTries;
            m_stage.BeginChange();
            Staged(PSZ_PATH);
            m_stage.Write(PSZ_PATH, strText);
            meanwhile();
            return EXIT_DONE;
        };
        change.question = [] { return "Sure?"; };
        change.isAskedFor = [](const std::string&) { return true; };
        change.report = [this] { m_output << "reported\n"; };
        CChangeOptions options;
        options.bYes = true;
        return CarryOut(m_stage, change, options, m_output, m_errors);
    }

    const std::shared_ptr<CMemoryStore> m_pStore = std::make_shared<CMemoryStore>();
    CStage m_stage{m_pStore};
    std::ostringstream m_output;
    std::ostringstream m_errors;
    int m_iTries = 0;
};

TEST_F(Stage, ReadsANodeOnceAndKeepsItAsItWas) {
    m_pStore->Put(PSZ_PATH, "1");
    EXPECT_EQ(Staged(PSZ_PATH), "1");
    EXPECT_EQ(Staged("/absent"), std::nullopt);
    m_pStore->Put(PSZ_PATH, "2");
    EXPECT_EQ(Staged(PSZ_PATH), "1");
    EXPECT_EQ(m_pStore->GetCallCount(), 2U);
    m_stage.Restart();
    EXPECT_EQ(Staged(PSZ_PATH), "2");
}

TEST_F(Stage, ShowsItsWritesAndKeepsThemFromTheStore) {
    m_pStore->Put(PSZ_PATH, "1");
    m_stage.BeginChange();
    EXPECT_EQ(m_stage.Write(PSZ_PATH, "2"), 0);
    EXPECT_EQ(m_stage.Write("/new", "3"), 0);
    EXPECT_EQ(Staged(PSZ_PATH), "2");
    EXPECT_EQ(m_pStore->Get(PSZ_PATH), "1");
    EXPECT_EQ(m_pStore->Get("/new"), std::nullopt);
    EXPECT_EQ(m_stage.CommitChanges(), 0);
    EXPECT_EQ(m_pStore->Get(PSZ_PATH), "2");
    EXPECT_EQ(m_pStore->Get("/new"), "3");
}

TEST_F(Stage, DropsWhatWasWrittenBeforeTheChange) {
    m_stage.Write("/of/a/plugin", "1");
    m_stage.BeginChange();
    m_stage.Write(PSZ_PATH, "2");
    ASSERT_EQ(m_stage.GetChanges().size(), 1U);
    EXPECT_EQ(m_stage.GetChanges()[0].strPath, PSZ_PATH);
    EXPECT_EQ(m_stage.CommitChanges(), 0);
    EXPECT_EQ(m_pStore->Get("/of/a/plugin"), std::nullopt);
}

TEST_F(Stage, CommitsNothingWhenWhatTheChangeStandsOnHasMoved) {
    m_pStore->Write("/loaded/on/the/way", "1");
    m_pStore->Write("/ground", "1");
    Staged("/loaded/on/the/way");
    m_stage.BeginChange();
    Staged("/ground");
    m_stage.Write(PSZ_PATH, "2");
    m_pStore->Write("/ground", "other");
    EXPECT_EQ(m_stage.CommitChanges(), STORE_CONDITION_FAILED);
    EXPECT_EQ(m_pStore->Get(PSZ_PATH), std::nullopt);
    std::vector<CStagedChange> foreign;
    EXPECT_EQ(m_stage.FindForeignChanges(foreign), 0);
    ASSERT_EQ(foreign.size(), 1U);
    EXPECT_EQ(foreign[0].strPath, "/ground");
    EXPECT_EQ(foreign[0].before, "1");
    EXPECT_EQ(foreign[0].strAfter, "other");
}

TEST_F(Stage, DoesNotMindWhatWasOnlyLoadedOnTheWay) {
    m_pStore->Write("/loaded/on/the/way", "1");
    Staged("/loaded/on/the/way");
    m_stage.BeginChange();
    m_stage.Write(PSZ_PATH, "2");
    m_pStore->Write("/loaded/on/the/way", "other");
    EXPECT_EQ(m_stage.CommitChanges(), 0);
}

/// Takes an entry out of the stored list, on a stage of its own, until it is done.
void RemoveEntry(const std::shared_ptr<IStore>& pStore, const std::string& strEntry) {
    CStage stage(pStore);
    int iCode = STORE_CONDITION_FAILED;
    while (iCode == STORE_CONDITION_FAILED) {
        stage.Restart();
        stage.BeginChange();
        CStoreAnswer answer;
        ASSERT_EQ(stage.Read(PSZ_PATH, nullptr, answer), 0);
        std::string strText = answer.text.value();
        strText.erase(strText.find(strEntry), strEntry.size());
        ASSERT_EQ(stage.Write(PSZ_PATH, strText), 0);
        iCode = stage.CommitChanges();
    }
    ASSERT_EQ(iCode, 0);
}

TEST_F(Stage, OfTwoRemovalsAtOnceNoneIsLost) {
    for (int iRound = 0; iRound < 200; ++iRound) {
        m_pStore->Write(PSZ_PATH, "abc");
        std::thread rival([this] { RemoveEntry(m_pStore, "a"); });
        RemoveEntry(m_pStore, "c");
        rival.join();
        ASSERT_EQ(m_pStore->Get(PSZ_PATH), "b");
    }
}

TEST_F(Stage, AChangeThatLosesARaceIsWorkedOutAnew) {
    m_pStore->Write(PSZ_PATH, R"({"Name":"a"})");
    const int iResult = CarryOutWrite(R"({"Name":"mine"})", [this] {
        if (m_iTries == 1) {
            m_pStore->Write(PSZ_PATH, R"({"Name":"theirs"})");
        }
    });
    EXPECT_EQ(iResult, EXIT_DONE);
    EXPECT_EQ(m_iTries, 2);
    EXPECT_EQ(m_errors.str(),
              "the store has changed meanwhile, nothing was written:\n/CloudMain/Cluster\n"
              "  Name: was \"a\", will be \"theirs\"\n");
    EXPECT_THAT(m_output.str(), EndsWith("  Name: was \"theirs\", will be \"mine\"\nreported\n"));
    EXPECT_EQ(m_pStore->Get(PSZ_PATH), R"({"Name":"mine"})");
}

TEST_F(Stage, AChangeThatLosesEveryRaceGivesUp) {
    const int iResult =
        CarryOutWrite("[]", [this] { m_pStore->Write(PSZ_PATH, std::to_string(m_iTries)); });
    EXPECT_EQ(iResult, EXIT_COULD_NOT);
    EXPECT_THAT(m_errors.str(), HasSubstr("given up after 20 tries"));
    EXPECT_EQ(m_pStore->Get(PSZ_PATH), "20");
}

TEST_F(Stage, AStoreThatFailsTheCommitIsAFailure) {
    const int iResult = CarryOutWrite("[]", [this] { m_pStore->FailCall(1, 77); });
    EXPECT_EQ(iResult, EXIT_COULD_NOT);
    EXPECT_EQ(m_errors.str(), "the change did not reach the store: code 77\n");
    EXPECT_THAT(m_output.str(), Not(HasSubstr("reported")));
}

class ByHand : public CServiceTest {
protected:
    ByHand() {
        Put("/Cluster", ClusterText({NodeText("n1", "10.0.0.1", {"A", "B"}),
                                     NodeText("n2", "10.0.0.2", {"A", "B"})}));
        Put("/Version", R"({"DecisionVerNum":9,"MasterVerNum":1})");
    }

    std::list<std::string> StoredContainers(const std::string& strNodeId) const {
        Json::Value cluster;
        EXPECT_EQ(ParseStrictJson(Stored("/Cluster").value(), cluster), std::nullopt);
        return ContainersOf(cluster, strNodeId);
    }
};

TEST_F(ByHand, ADryRunShowsTheDifferenceAndChangesNothing) {
    const auto before = Stored("/Cluster");
    const CProcessResult result = Run({"remove", "n1", "A", "--dry-run", "--json"});
    EXPECT_EQ(result.iExitCode, 4);
    Json::Value shown;
    ASSERT_EQ(ParseStrictJson(result.strOutput, shown), std::nullopt) << result.strOutput;
    EXPECT_EQ(shown[0]["document"], "/CloudMain/Cluster");
    EXPECT_EQ(shown[0]["changes"][0]["path"], "ClusterNode[\"n1\"].Container[\"A\"]");
    EXPECT_EQ(Stored("/Cluster"), before);
}

TEST_F(ByHand, WhatWasChangedIsTakenBackByItsUndoFile) {
    const auto before = Stored("/Cluster");
    EXPECT_EQ(Run({"remove", "n1", "A", "--yes", "--undo", "undo.db"}).iExitCode, 0);
    EXPECT_THAT(StoredContainers("n1"), ElementsAre("B"));
    EXPECT_EQ(Run({"diff", "undo.db"}).iExitCode, 4);
    EXPECT_EQ(Run({"import", "undo.db", "--yes"}).iExitCode, 0);
    EXPECT_EQ(Stored("/Cluster"), before);
    EXPECT_EQ(Run({"diff", "undo.db"}).iExitCode, 0);
}

TEST_F(ByHand, AnUndoFileThatIsThereIsNotReplaced) {
    m_dir.WriteFile("undo.db", "precious");
    const auto before = Stored("/Cluster");
    const CProcessResult result = Run({"remove", "n1", "A", "--yes", "--undo", "undo.db"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strErrors, StartsWith("undo.db: is there already, nothing was changed\n"));
    EXPECT_EQ(ReadText(File("undo.db")), "precious");
    EXPECT_EQ(Stored("/Cluster"), before);
}

TEST_F(ByHand, AnImportShowsAVersionThatGoesBack) {
    WriteDocument("version.json", R"({"DecisionVerNum":3,"MasterVerNum":1})");
    const CProcessResult result = Run({"diff", "documents"});
    EXPECT_EQ(result.iExitCode, 4);
    EXPECT_THAT(result.strOutput,
                HasSubstr("/CloudMain/Version\n  DecisionVerNum: was 9, will be 3\n"
                          "  DecisionVerNum goes back below the store's\n"));
}

TEST_F(ByHand, ANewDocumentIsNotToldKeyByKeyButToPrograms) {
    WriteDocument("manager.json", R"({"MasterMGR":{"NodeCode":"n1","NodeIp":"10.0.0.1"}})");
    EXPECT_THAT(Run({"diff", "documents"}).strOutput, EndsWith("/CloudMain/MEROMGR is new\n"));
    const CProcessResult result = Run({"diff", "documents", "--json"});
    EXPECT_EQ(result.iExitCode, 4);
    EXPECT_THAT(result.strOutput, HasSubstr("MasterMGR"));
}

TEST_F(ByHand, ARewritingSaysWhichKeysAndCommentsGo) {
    Put("/Cluster", R"({"ClusterName":"c","ClusterRemark":"r","ClusterCode":"X","Odd":1, // why
                       "ClusterForwardType":0,"ClusterNode":[)" +
                        NodeText("n1", "10.0.0.1", {"A", "B"}) + "]}");
    const CProcessResult result = Run({"remove", "n1", "A", "--dry-run"});
    EXPECT_EQ(result.iExitCode, 4);
    EXPECT_THAT(result.strOutput, HasSubstr("  and, since the document is written anew:\n"
                                            "  Odd: was 1, will be nothing\n"
                                            "  its comments go\n"));
}

TEST_F(ByHand, OfTwoRemovalsAtOnceNoneIsLost) {
    const auto cluster = Stored("/Cluster").value();
    for (int iRound = 0; iRound < SoakRounds(200); ++iRound) {
        Put("/Cluster", cluster);
        CProcessResult other;
        std::thread rival([&] { other = Run({"remove", "n2", "B", "--yes"}); });
        const CProcessResult mine = Run({"remove", "n1", "A", "--yes"});
        rival.join();
        ASSERT_EQ(mine.iExitCode, 0) << mine.strErrors;
        ASSERT_EQ(other.iExitCode, 0) << other.strErrors;
        ASSERT_THAT(StoredContainers("n1"), ElementsAre("B"));
        ASSERT_THAT(StoredContainers("n2"), ElementsAre("A"));
    }
}

TEST_F(ByHand, AnImportThatIsKilledIsWholeOrNotThere) {
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> milliseconds(1, 40);
    for (int iRound = 0; iRound < SoakRounds(200); ++iRound) {
        const std::string strMark = std::to_string(iRound + 10);
        WriteDocument("version.json", R"({"DecisionVerNum":)" + strMark + R"(,"MasterVerNum":1})");
        WriteDocument("cluster.json", ClusterText({NodeText("n" + strMark, "10.0.0.1", {"A"})}));
        const std::string strSeconds = "0.0" + std::to_string(milliseconds(random) + 10);
        RunProcess("/usr/bin/timeout",
                   {"--foreground", "-s", "KILL", strSeconds, PSZ_PROGRAM, "--store",
                    "sqlite:" + File("store.db"), "import", "--yes", "documents"},
                   m_dir.GetPath());
        const bool bVersion = Stored("/Version").value().find(strMark) != std::string::npos;
        const bool bCluster = Stored("/Cluster").value().find("n" + strMark) != std::string::npos;
        ASSERT_EQ(bVersion, bCluster) << strSeconds;
    }
}

}  // namespace
