#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <random>
#include <thread>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/soak.h"
#include "support/store_behaviour_suite.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string PadText() {
    return std::string(20000, 'x');
}

/// What a program does until it is killed.
[[noreturn]] void CommitForever(const StoreOpener& open, const std::string& strRoot) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const auto pStore = open();
    for (int iRound = 0;; ++iRound) {
        const std::string strText = std::to_string(getpid()) + "-" + std::to_string(iRound);
        pStore->Commit({}, {{strRoot + "a", strText},
                            {strRoot + "b", strText + PadText()},
                            {strRoot + "each/" + strText, ""}});
    }
}

}  // namespace

TEST_P(StoreBehaviour, ListNamesTheChildrenInOrder) {
    for (const char* pszName : {"top/b", "top/a/deep", "top/B", "top2/x", "top/b!/deep/deeper"}) {
        ASSERT_EQ(m_pStoreUnderTest->Write(Node(pszName), "[]\n"), 0);
    }
    std::vector<std::string> children{"old"};
    EXPECT_EQ(m_pStoreUnderTest->List(Node("top"), children), 0);
    EXPECT_THAT(children, ElementsAre("B", "a", "b", "b!"));
    EXPECT_EQ(m_pStoreUnderTest->List("/", children), 0);
    EXPECT_THAT(children, testing::Contains(Node("").substr(1, Node("").size() - 2)));
}

TEST_P(StoreBehaviour, ListOfALeafIsEmpty) {
    ASSERT_EQ(m_pStoreUnderTest->Write(Node("leaf"), "[]\n"), 0);
    std::vector<std::string> children{"old"};
    EXPECT_EQ(m_pStoreUnderTest->List(Node("leaf"), children), 0);
    EXPECT_THAT(children, IsEmpty());
}

TEST_P(StoreBehaviour, ListOfAnAbsentNodeIsACodeAndLeavesTheList) {
    std::vector<std::string> children{"old"};
    EXPECT_EQ(m_pStoreUnderTest->List(Node("absent"), children), STORE_NODE_ABSENT);
    EXPECT_THAT(children, ElementsAre("old"));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_P(StoreBehaviour, VersionIsThatOfTheNodesOwnText) {
    EXPECT_EQ(VersionOf("node"), STORE_VERSION_ABSENT);
    ASSERT_EQ(m_pStoreUnderTest->Write(Node("node"), "[1]\n"), 0);
    const std::int64_t iVersion = VersionOf("node");
    EXPECT_GT(iVersion, STORE_VERSION_ABSENT);
    ASSERT_EQ(m_pStoreUnderTest->Write(Node("node/child"), "[]\n"), 0);
    ASSERT_EQ(m_pStoreUnderTest->Write(Node("sibling"), "[]\n"), 0);
    EXPECT_EQ(VersionOf("node"), iVersion);
}

TEST_P(StoreBehaviour, VersionGrowsWithEveryWriteAndCommit) {
    std::int64_t iBefore = VersionOf("node");
    for (int iRound = 0; iRound < 3; ++iRound) {
        ASSERT_EQ(m_pStoreUnderTest->Write(Node("node"), "[1]\n"), 0);
        const std::int64_t iWritten = VersionOf("node");
        EXPECT_GT(iWritten, iBefore);
        ASSERT_EQ(m_pStoreUnderTest->Commit({}, {{Node("node"), "[1]\n"}}), 0);
        iBefore = VersionOf("node");
        EXPECT_GT(iBefore, iWritten);
    }
}

TEST_P(StoreBehaviour, CommitWritesEveryTextAndTheMissingParents) {
    ASSERT_EQ(m_pStoreUnderTest->Write(Node("old"), "[0]\n"), 0);
    EXPECT_EQ(m_pStoreUnderTest->Commit(
                  {{Node("old"), VersionOf("old")}, {Node("top/leaf"), STORE_VERSION_ABSENT}},
                  {{Node("top/leaf"), "[1]\n"}, {Node("old"), "[2]\n"}, {Node("top"), "[3]\n"}}),
              0);
    EXPECT_EQ(TextOf("top/leaf"), "[1]\n");
    EXPECT_EQ(TextOf("old"), "[2]\n");
    EXPECT_EQ(TextOf("top"), "[3]\n");
    EXPECT_EQ(m_pStoreUnderTest->Commit({}, {{Node("x/y/z"), ""}}), 0);
    EXPECT_EQ(TextOf("x/y"), "<no data>");
    EXPECT_EQ(TextOf("x/y/z"), "");
}

TEST_P(StoreBehaviour, CommitAfterAnotherWriteWritesNothing) {
    ASSERT_EQ(m_pStoreUnderTest->Write(Node("a"), "[0]\n"), 0);
    ASSERT_EQ(m_pStoreUnderTest->Write(Node("b"), "[0]\n"), 0);
    const std::int64_t iSeen = VersionOf("b");
    ASSERT_EQ(m_open()->Write(Node("b"), "[0]\n"), 0);
    EXPECT_EQ(m_pStoreUnderTest->Commit(
                  {{Node("a"), VersionOf("a")}, {Node("b"), iSeen}},
                  {{Node("a"), "[1]\n"}, {Node("b"), "[1]\n"}, {Node("new/c"), "[1]\n"}}),
              STORE_CONDITION_FAILED);
    EXPECT_EQ(TextOf("a"), "[0]\n");
    EXPECT_EQ(TextOf("b"), "[0]\n");
    EXPECT_EQ(VersionOf("new"), STORE_VERSION_ABSENT);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_P(StoreBehaviour, CommitOnAbsenceFailsOnceTheNodeIsThere) {
    const std::vector<CStoreCondition> absent{{Node("top/node"), STORE_VERSION_ABSENT}};
    EXPECT_EQ(m_pStoreUnderTest->Commit(absent, {{Node("top/node"), "[1]\n"}}), 0);
    EXPECT_EQ(m_pStoreUnderTest->Commit(absent, {{Node("top/node"), "[2]\n"}}),
              STORE_CONDITION_FAILED);
    EXPECT_EQ(TextOf("top/node"), "[1]\n");
}

TEST_P(StoreBehaviour, CommitOnAVersionFailsForAnAbsentNode) {
    EXPECT_EQ(m_pStoreUnderTest->Commit({{Node("node"), 0}}, {{Node("node"), "[]\n"}}),
              STORE_CONDITION_FAILED);
    EXPECT_EQ(VersionOf("node"), STORE_VERSION_ABSENT);
}

TEST_P(StoreBehaviour, ConditionOnANodeThatIsNotWritten) {
    ASSERT_EQ(m_pStoreUnderTest->Write(Node("seen"), "[0]\n"), 0);
    const std::vector<CStoreCondition> seen{{Node("seen"), VersionOf("seen")}};
    EXPECT_EQ(m_pStoreUnderTest->Commit(seen, {{Node("node"), "[1]\n"}}), 0);
    EXPECT_EQ(VersionOf("seen"), seen.front().iVersion);
    ASSERT_EQ(m_pStoreUnderTest->Write(Node("seen"), "[0]\n"), 0);
    EXPECT_EQ(m_pStoreUnderTest->Commit(seen, {{Node("node"), "[2]\n"}}), STORE_CONDITION_FAILED);
    EXPECT_EQ(TextOf("node"), "[1]\n");
}

TEST_P(StoreBehaviour, ConditionOnTheAbsenceOfNodesThatAreNotWritten) {
    const std::vector<CStoreCondition> absent{{Node("other"), STORE_VERSION_ABSENT},
                                              {Node("top/other"), STORE_VERSION_ABSENT},
                                              {Node("top/another"), STORE_VERSION_ABSENT},
                                              {Node("else/where/deep"), STORE_VERSION_ABSENT}};
    EXPECT_EQ(m_pStoreUnderTest->Commit(absent, {{Node("node"), "[0]\n"}}), 0);
    EXPECT_EQ(m_pStoreUnderTest->Commit(absent, {{Node("top/node"), "[1]\n"}}), 0);
    EXPECT_EQ(m_pStoreUnderTest->Commit(absent, {{Node("top/node"), "[2]\n"}}), 0);
    EXPECT_EQ(VersionOf("other"), STORE_VERSION_ABSENT);
    EXPECT_EQ(VersionOf("else"), STORE_VERSION_ABSENT);
    ASSERT_EQ(m_pStoreUnderTest->Write(Node("else/where/deep"), "[]\n"), 0);
    EXPECT_EQ(m_pStoreUnderTest->Commit(absent, {{Node("top/node"), "[3]\n"}}),
              STORE_CONDITION_FAILED);
    EXPECT_EQ(TextOf("top/node"), "[2]\n");
}

TEST_P(StoreBehaviour, AbsentParentOfAWrittenNodeMayBeACondition) {
    const std::vector<CStoreCondition> absent{{Node("top"), STORE_VERSION_ABSENT}};
    EXPECT_EQ(m_pStoreUnderTest->Commit(absent, {{Node("top/node"), "[1]\n"}}), 0);
    EXPECT_EQ(m_pStoreUnderTest->Commit(absent, {{Node("top/node"), "[2]\n"}}),
              STORE_CONDITION_FAILED);
    EXPECT_EQ(TextOf("top/node"), "[1]\n");
}

TEST_P(StoreBehaviour, CommitOfConditionsAloneWritesNothing) {
    ASSERT_EQ(m_pStoreUnderTest->Write(Node("node"), "[]\n"), 0);
    const std::int64_t iVersion = VersionOf("node");
    EXPECT_EQ(m_pStoreUnderTest->Commit({{Node("node"), iVersion}}, {}), 0);
    EXPECT_EQ(m_pStoreUnderTest->Commit({{Node("node"), iVersion + 1}}, {}),
              STORE_CONDITION_FAILED);
    EXPECT_EQ(VersionOf("node"), iVersion);
    EXPECT_EQ(m_pStoreUnderTest->Commit({}, {}), 0);
}

TEST_P(StoreBehaviour, TwoTextsForOneNodeAreRefused) {
    EXPECT_EQ(m_pStoreUnderTest->Commit({}, {{Node("node"), "[1]\n"}, {Node("node"), "[2]\n"}}),
              ORVA_PARA_INVALID);
    EXPECT_EQ(VersionOf("node"), STORE_VERSION_ABSENT);
}

TEST_P(StoreBehaviour, NoIncrementOfRacingWritersIsLost) {
    constexpr int iRounds = 40;
    ASSERT_EQ(m_pStoreUnderTest->Write(Node("count"), "0"), 0);
    std::atomic<int> iSuccesses{0};
    std::atomic<int> iFailures{0};
    const auto increment = [&](IStore& store) {
        CStoreAnswer count;
        CStoreAnswer sum;
        iFailures += store.Read(Node("count"), nullptr, count) != 0;
        iFailures += store.Read(Node("sum/of"), nullptr, sum) != 0;
        const std::string strNext = std::to_string(std::stoi(count.text.value_or("")) + 1);
        const int iRet = store.Commit(
            {{Node("count"), count.iVersion}, {Node("sum/of"), sum.iVersion}},
            {{Node("count"), strNext}, {Node("sum/of"), strNext}, {Node("made/" + strNext), ""}});
        iSuccesses += iRet == 0;
        iFailures += iRet != 0 && iRet != STORE_CONDITION_FAILED;
    };
    std::vector<std::thread> threads;
    for (const auto& pStore : {m_pStoreUnderTest, m_pStoreUnderTest, m_open(), m_open()}) {
        threads.emplace_back([&, pStore] {
            for (int iRound = 0; iRound < iRounds; ++iRound) {
                increment(*pStore);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(iFailures, 0);
    EXPECT_GE(iSuccesses, iRounds);
    EXPECT_EQ(TextOf("count"), std::to_string(iSuccesses));
    EXPECT_EQ(TextOf("sum/of"), TextOf("count"));
    std::vector<std::string> made;
    EXPECT_EQ(m_pStoreUnderTest->List(Node("made"), made), 0);
    EXPECT_EQ(made.size(), static_cast<std::size_t>(iSuccesses));
}

TEST_P(StoreBehaviour, OfTwoCommitsOnEachOthersAbsenceOneSucceeds) {
    const auto pOther = m_open();
    for (int iRound = 0; iRound < 30; ++iRound) {
        const std::string strLeft = Node("left" + std::to_string(iRound));
        const std::string strRight = Node("right" + std::to_string(iRound) + "/deep");
        int iLeftRet = 0;
        std::thread left([&] {
            iLeftRet =
                m_pStoreUnderTest->Commit({{strRight, STORE_VERSION_ABSENT}}, {{strLeft, "[]\n"}});
        });
        const int iRightRet =
            pOther->Commit({{strLeft, STORE_VERSION_ABSENT}}, {{strRight, "[]\n"}});
        left.join();
        EXPECT_EQ(iLeftRet == 0 ? iRightRet : iLeftRet, STORE_CONDITION_FAILED);
        EXPECT_TRUE(iLeftRet == 0 || iRightRet == 0) << iLeftRet << " and " << iRightRet;
    }
}

TEST_P(LastingStoreBehaviour, KilledCommitIsWholeOrNotThere) {
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> lifetimes(0, 100);
    int iWritten = 0;
    for (int iKill = 0; iKill < SoakRounds(200); ++iKill) {
        SetStore(nullptr);
        m_pStoreUnderTest.reset();  // no store is open at a fork
        const pid_t pid = fork();
        if (pid == 0) {
            CommitForever(m_open, Node(""));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(lifetimes(random)));
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        m_pStoreUnderTest = m_open();
        ASSERT_NE(m_pStoreUnderTest, nullptr);
        if (VersionOf("a") == STORE_VERSION_ABSENT) {
            ASSERT_EQ(VersionOf("b"), STORE_VERSION_ABSENT);
            continue;
        }
        ++iWritten;
        ASSERT_EQ(TextOf("b"), TextOf("a") + PadText());
        ASSERT_NE(VersionOf("each/" + TextOf("a")), STORE_VERSION_ABSENT);
    }
    EXPECT_GT(iWritten, 0);
}
