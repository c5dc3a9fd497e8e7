#include <gmock/gmock.h>

#include <chrono>
#include <random>
#include <thread>

#include "cluster_service/service_fixture.h"
#include "command/cluster_holder.h"
#include "command/cluster_text.h"
#include "framework_service/cluster_znode_info.h"
#include "reference_host/strict_json.h"
#include "reference_host/zookeeper_store.h"
#include "support/name_holder_process.h"
#include "support/soak.h"
#include "zookeeper_server.h"

namespace {

using namespace std::chrono_literals;

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Optional;
using testing::StartsWith;

constexpr char PSZ_CLUSTER[] = "/CloudMain/Cluster";
constexpr char PSZ_VERSION_PATH[] = "/CloudMain/Version";

/// The program on a server, in a folder of the store that is the test's own.
class CCommandTest : public CServiceTest {
protected:
    explicit CCommandTest(const CZooKeeperServer& server)
        : m_strFolder(std::string("/") +
                      testing::UnitTest::GetInstance()->current_test_info()->name()),
          m_strStore("zookeeper:" + server.Address() + m_strFolder),
          m_store({server.Address(), 4s, 15s}) {
        EXPECT_EQ(m_store.Write(m_strFolder, ""), 0);
    }

    CProcessResult Run(const std::vector<std::string>& arguments) const {
        return RunOn(m_strStore, arguments);
    }

    void Put(const std::string& strPath, const std::string& strText) {
        ASSERT_EQ(m_store.Write(m_strFolder + strPath, strText), 0);
    }

    std::optional<std::string> Stored(const std::string& strPath) {
        CStoreAnswer answer;
        EXPECT_EQ(m_store.Read(m_strFolder + strPath, nullptr, answer), 0);
        return answer.text;
    }

    std::list<std::string> StoredContainers(const std::string& strNodeId) {
        Json::Value cluster;
        EXPECT_EQ(ParseStrictJson(Stored(PSZ_CLUSTER).value(), cluster), std::nullopt);
        return ContainersOf(cluster, strNodeId);
    }

    /// Two documents of which each says the round.
    void WriteRound(int iRound) const {
        const std::string strRound = std::to_string(iRound);
        WriteDocument("version.json", R"({"DecisionVerNum":)" + strRound + R"(,"MasterVerNum":1})");
        WriteDocument("cluster.json",
                      ClusterText({NodeText("round-" + strRound, "10.0.0.1", {"A"})}));
    }

    /// The two documents as they stand at one moment: what a killed program has sent may arrive
    /// between two reads.
    std::pair<std::string, std::string> StoredTexts() {
        for (;;) {
            const std::string strVersion = Stored(PSZ_VERSION_PATH).value();
            const std::string strCluster = Stored(PSZ_CLUSTER).value();
            if (Stored(PSZ_VERSION_PATH) == strVersion) {
                return {strVersion, strCluster};
            }
        }
    }

    /// The round that both documents say; nothing when they are of two, which must not be.
    std::optional<int> StoredRound() {
        const auto [strVersion, strCluster] = StoredTexts();
        Json::Value version;
        Json::Value cluster;
        EXPECT_EQ(ParseStrictJson(strVersion, version), std::nullopt);
        EXPECT_EQ(ParseStrictJson(strCluster, cluster), std::nullopt);
        const int iRound = version["DecisionVerNum"].asInt();
        const bool bSame = NodeIdsOf(cluster).front() == "round-" + std::to_string(iRound);
        return bSame ? std::make_optional(iRound) : std::nullopt;
    }

    const std::string m_strFolder;
    const std::string m_strStore;
    CZooKeeperStore m_store;
};

class CommandOnServer : public CCommandTest {
protected:
    CommandOnServer() : CCommandTest(SharedServer()) {
        Put(PSZ_CLUSTER, ClusterText({NodeText("n1", "10.0.0.1", {"A", "B"}),
                                      NodeText("n2", "10.0.0.2", {"A", "B"})}));
    }
};

TEST_F(CommandOnServer, ShowsAndExportsPastABrokenDocument) {
    Put("/CloudMain/CenterDB", "{ broken");
    const CProcessResult shown = Run({"show"});
    EXPECT_EQ(shown.iExitCode, 2);
    EXPECT_THAT(shown.strErrors, StartsWith("/CloudMain/CenterDB: line 1, column 3: "));
    EXPECT_THAT(shown.strErrors, HasSubstr("database: not shown\n"));
    EXPECT_THAT(shown.strOutput, StartsWith("nodes (2)\n"));
    EXPECT_THAT(shown.strOutput, HasSubstr("\nversions (3)\n"));
    EXPECT_EQ(Run({"export", "out"}).iExitCode, 1);
    EXPECT_EQ(ReadText(File("out/center_db.json")), "{ broken");
    EXPECT_EQ(ReadText(File("out/cluster.json")), Stored(PSZ_CLUSTER));
}

TEST_F(CommandOnServer, ExportsATextThatIsTooLongForAService) {
    Put(PSZ_VERSION_PATH, std::string(100000, ' '));
    EXPECT_EQ(Run({"export", "out"}).iExitCode, 1);
    EXPECT_EQ(ReadText(File("out/version.json")), std::string(100000, ' '));
}

TEST_F(CommandOnServer, WrongClusterCodeOrFolderIsAnError) {
    const CProcessResult wrongCode = Run({"--cluster-code", "Mian", "show"});
    EXPECT_EQ(wrongCode.iExitCode, 2);
    EXPECT_EQ(wrongCode.strErrors,
              "no cluster Mian in " + m_strStore + "; the clusters there: Main\n");
    WriteRound(1);
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"show"},
                                                      {"check"},
                                                      {"export", "out"},
                                                      {"diff", "documents"},
                                                      {"import", "--yes", "documents"}}) {
        const CProcessResult wrongFolder = RunOn(m_strStore + "/nowhere", arguments);
        EXPECT_EQ(wrongFolder.iExitCode, 2) << arguments[0];
        EXPECT_EQ(wrongFolder.strErrors, m_strStore + "/nowhere: the folder is not there\n");
    }
    EXPECT_EQ(Run({"--cluster-code", "New", "import", "documents"}).iExitCode, 0);
}

TEST_F(CommandOnServer, QuestionAndAnswerNameClusterAndStore) {
    const CProcessResult result = RunOn(m_strStore, {"remove", "n1", "A"}, CTerminal{"y\n"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strErrors, EndsWith("cluster Main in " + m_strStore +
                                           ": Remove container A from node n1? [y/N] "));
    EXPECT_EQ(result.strOutput, "cluster Main in " + m_strStore + " holds node n1 with: B\n");
}

TEST_F(CommandOnServer, ClusterOfARunningServiceIsChangedByForceAlone) {
    CNameHolderProcess service("zookeeper:" + SharedServer().Address(),
                               m_strFolder + HolderPath("Main"),
                               HolderText({"http://127.0.0.1:8390", "alpha", 4711, 1772604000}));
    ASSERT_EQ(service.Line(), "held");
    const CProcessResult refused = Run({"remove", "n1", "A", "--yes"});
    EXPECT_EQ(refused.iExitCode, 1);
    EXPECT_THAT(
        refused.strErrors,
        HasSubstr(" is run by the service at http://127.0.0.1:8390, process 4711 on alpha"));
    EXPECT_THAT(StoredContainers("n1"), ElementsAre("A", "B"));
    EXPECT_EQ(Run({"show"}).iExitCode, 0);
    EXPECT_EQ(Run({"remove", "n1", "A", "--yes", "--force"}).iExitCode, 0);
    EXPECT_THAT(StoredContainers("n1"), ElementsAre("B"));
}

TEST_F(CommandOnServer, ClusterOfAKilledServiceIsFreeWhenItsSessionIsOver) {
    CNameHolderProcess service("zookeeper:" + SharedServer().Address(),
                               m_strFolder + HolderPath("Main"), "a service");
    ASSERT_EQ(service.Line(), "held");
    service.Kill();
    const auto deadline = std::chrono::steady_clock::now() + 30s;
    int iExitCode = 1;
    while (iExitCode == 1 && std::chrono::steady_clock::now() < deadline) {
        iExitCode = Run({"remove", "n1", "A", "--yes"}).iExitCode;
    }
    EXPECT_EQ(iExitCode, 0);
}

TEST_F(CommandOnServer, OfTwoRemovalsAtOnceNoneIsLost) {
    const std::string strCluster = Stored(PSZ_CLUSTER).value();
    for (int iRound = 0; iRound < SoakRounds(200); ++iRound) {
        Put(PSZ_CLUSTER, strCluster);
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

TEST_F(CommandOnServer, AnImportThatIsKilledIsWholeOrNotThere) {
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> milliseconds(10, 99);
    WriteRound(0);
    ASSERT_EQ(Run({"import", "--yes", "documents"}).iExitCode, 0);
    for (int iRound = 1; iRound <= SoakRounds(200); ++iRound) {
        WriteRound(iRound);
        RunProcess("/usr/bin/timeout",
                   {"--foreground", "-s", "KILL", "0.0" + std::to_string(milliseconds(random)),
                    PSZ_PROGRAM, "--store", m_strStore, "import", "--yes", "documents"},
                   m_dir.GetPath());
        ASSERT_NE(StoredRound(), std::nullopt) << "the documents are of two rounds";
    }
}

/// A server of its own, to be killed.
struct COwnServer {
    COwnServer() { m_server.StartServing(); }

    CZooKeeperServer m_server;
};

class CommandOnAKilledServer : private COwnServer, public CCommandTest {
protected:
    CommandOnAKilledServer() : CCommandTest(m_server) {}

    /// Kills the server this long after now, and starts it again.
    std::thread KillAfter(std::chrono::milliseconds delay) {
        return std::thread([this, delay] {
            std::this_thread::sleep_for(delay);
            m_server.Kill();
        });
    }

    void StartAgain() { m_server.StartServing(); }
};

TEST_F(CommandOnAKilledServer, SaysTheTruthAboutAnImport) {
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> milliseconds(0, 120);
    WriteRound(0);
    ASSERT_EQ(Run({"import", "--yes", "documents"}).iExitCode, 0);
    int iLast = 0;
    for (int iRound = 1; iRound <= SoakRounds(50); ++iRound) {
        WriteRound(iRound);
        std::thread killer = KillAfter(std::chrono::milliseconds(milliseconds(random)));
        const CProcessResult result = Run({"import", "--yes", "documents"});
        killer.join();
        StartAgain();
        const std::optional<int> stored = StoredRound();
        ASSERT_NE(stored, std::nullopt) << "the documents are of two rounds";
        switch (result.iExitCode) {
            case 0:
                ASSERT_EQ(stored, iRound) << "what was answered is there";
                break;
            case 2:
                ASSERT_EQ(stored, iLast)
                    << "what could not be done is not there: " << result.strErrors;
                break;
            default:
                ASSERT_EQ(result.iExitCode, 3) << result.strErrors;
        }
        iLast = *stored;
    }
}

}  // namespace
