#include <gtest/gtest.h>

#include <chrono>

#include "common_service/tarn_def.h"
#include "dropping_proxy.h"
#include "reference_host/zookeeper_store.h"
#include "support/host_fixture.h"
#include "zookeeper_server.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

using testing::Contains;
using testing::ElementsAre;

constexpr int NO_NODE = -101;
constexpr int BAD_ARGUMENTS = -8;
constexpr int CONNECTION_LOSS = -4;

/// One store behind a proxy, another beside it that has nothing to fear.
class ZooKeeperCommit : public CHostTest {
protected:
    static CZooKeeperOptions OptionsFor(const std::string& strServers) {
        return {strServers, 2s, 3s};
    }

    std::string TextOf(const std::string& strName) {
        CStoreAnswer answer;
        EXPECT_EQ(m_other.Read(m_strPath + strName, nullptr, answer), 0);
        return answer.bExists ? answer.text.value_or("<no data>") : "<absent>";
    }

    std::int64_t VersionOf(const std::string& strName) {
        CStoreAnswer answer;
        EXPECT_EQ(m_other.Read(m_strPath + strName, nullptr, answer), 0);
        return answer.iVersion;
    }

    /// "/a" from its first to its second text, and "/new/b".
    int CommitThroughProxy() {
        EXPECT_EQ(m_other.Write(m_strPath + "/a", "1"), 0);
        CStoreAnswer answer;
        EXPECT_EQ(m_store.Read(m_strPath + "/a", nullptr, answer), 0);
        return m_store.Commit(
            {{m_strPath + "/a", answer.iVersion}, {m_strPath + "/new/b", STORE_VERSION_ABSENT}},
            {{m_strPath + "/a", "2"}, {m_strPath + "/new/b", "2"}});
    }

    CLogLine UnknownOutcome() const {
        return Err("commit to store", STORE_OUTCOME_UNKNOWN, "zookeeper_store", "Commit",
                   m_strPath + "/a: answer lost, and the texts are not all as committed");
    }

    CDroppingProxy m_proxy{SharedServer().Address()};
    CZooKeeperStore m_store{OptionsFor(m_proxy.Address())};
    CZooKeeperStore m_other{OptionsFor(SharedServer().Address())};
    const std::string m_strPath =
        std::string("/") + testing::UnitTest::GetInstance()->current_test_info()->name();
};

TEST_F(ZooKeeperCommit, WithoutFaultsIsOneRequest) {
    EXPECT_EQ(CommitThroughProxy(), 0);
    EXPECT_EQ(TextOf("/a"), "2");
    EXPECT_EQ(TextOf("/new/b"), "2");
    EXPECT_EQ(VersionOf("/a"), VersionOf("/new/b"));
    EXPECT_EQ(m_proxy.CountCommits(), 1);
}

TEST_F(ZooKeeperCommit, LostAnswerOfAWrittenCommitIsASuccess) {
    m_proxy.AtNextCommit(CDroppingProxy::EAtCommit::LOSE_ANSWER);
    EXPECT_EQ(CommitThroughProxy(), 0);
    EXPECT_EQ(TextOf("/a"), "2");
    EXPECT_EQ(TextOf("/new/b"), "2");
    EXPECT_EQ(m_proxy.CountCommits(), 1);
}

TEST_F(ZooKeeperCommit, LostRequestIsNotSentAgain) {
    m_proxy.AtNextCommit(CDroppingProxy::EAtCommit::LOSE_REQUEST);
    EXPECT_EQ(CommitThroughProxy(), STORE_OUTCOME_UNKNOWN);
    EXPECT_EQ(TextOf("/a"), "1");
    EXPECT_EQ(TextOf("/new"), "<absent>");
    EXPECT_EQ(m_proxy.CountCommits(), 1);
    EXPECT_THAT(m_logger.GetLinesOf("zookeeper_store"), Contains(UnknownOutcome()));
}

TEST_F(ZooKeeperCommit, LostAnswerBehindAnothersWriteIsNotKnown) {
    m_proxy.AtNextCommit(CDroppingProxy::EAtCommit::LOSE_ANSWER);
    m_proxy.OnAnswerLost([this] { EXPECT_EQ(m_other.Write(m_strPath + "/a", "3"), 0); });
    EXPECT_EQ(CommitThroughProxy(), STORE_OUTCOME_UNKNOWN);
    EXPECT_EQ(TextOf("/a"), "3");
    EXPECT_EQ(TextOf("/new/b"), "2");
    EXPECT_EQ(m_proxy.CountCommits(), 1);
}

TEST_F(ZooKeeperCommit, UnchangedTextIsNoProofOfALostCommit) {
    ASSERT_EQ(m_other.Write(m_strPath, "same"), 0);
    m_proxy.AtNextCommit(CDroppingProxy::EAtCommit::LOSE_REQUEST);
    EXPECT_EQ(m_store.Commit({}, {{m_strPath, "same"}}), STORE_OUTCOME_UNKNOWN);
}

TEST_F(ZooKeeperCommit, LostAnswerOfConditionsAloneIsAFailure) {
    ASSERT_EQ(m_other.Write(m_strPath, "text"), 0);
    m_proxy.AtNextCommit(CDroppingProxy::EAtCommit::LOSE_ANSWER);
    EXPECT_EQ(m_store.Commit({{m_strPath, VersionOf("")}}, {}), CONNECTION_LOSS);
    EXPECT_EQ(m_proxy.CountCommits(), 1);
}

TEST_F(ZooKeeperCommit, HeldUpRequestEndsAtTheDeadline) {
    m_proxy.AtNextCommit(CDroppingProxy::EAtCommit::HOLD);
    const auto start = steady_clock::now();
    EXPECT_EQ(CommitThroughProxy(), STORE_OUTCOME_UNKNOWN);
    EXPECT_LT(steady_clock::now() - start, 3s + 1500ms);
    EXPECT_EQ(TextOf("/a"), "1");
    EXPECT_EQ(TextOf("/new"), "<absent>");
    EXPECT_EQ(m_proxy.CountCommits(), 1);
}

TEST_F(ZooKeeperCommit, NoAnsweredIncrementIsLostOverABrokenConnection) {
    constexpr int iRounds = 30;
    using EAtCommit = CDroppingProxy::EAtCommit;
    constexpr EAtCommit faults[] = {EAtCommit::PASS, EAtCommit::LOSE_ANSWER,
                                    EAtCommit::LOSE_REQUEST};
    int iWritten = 0;
    for (int iRound = 0; iRound < iRounds; ++iRound) {
        CStoreAnswer count;
        ASSERT_EQ(m_store.Read(m_strPath + "/count", nullptr, count), 0);
        const EAtCommit eFault = faults[iRound % 3];
        m_proxy.AtNextCommit(eFault);
        const int iRet = m_store.Commit({{m_strPath + "/count", count.iVersion}},
                                        {{m_strPath + "/count", std::to_string(iWritten + 1)}});
        ASSERT_EQ(iRet, eFault == EAtCommit::LOSE_REQUEST ? STORE_OUTCOME_UNKNOWN : 0);
        iWritten += iRet == 0;
        ASSERT_EQ(TextOf("/count"), std::to_string(iWritten));
    }
    EXPECT_EQ(m_proxy.CountCommits(), iRounds);
}

TEST_F(ZooKeeperCommit, RefusedTextInTheMiddleLeavesEverything) {
    ASSERT_EQ(m_other.Write(m_strPath + "/a", "1"), 0);
    EXPECT_EQ(
        m_store.Commit(
            {}, {{m_strPath + "/a", "2"}, {m_strPath + "/b//c", "2"}, {m_strPath + "/d", "2"}}),
        BAD_ARGUMENTS);
    EXPECT_EQ(TextOf("/a"), "1");
    EXPECT_EQ(TextOf("/b"), "<absent>");
    EXPECT_EQ(TextOf("/d"), "<absent>");
}

TEST_F(ZooKeeperCommit, MissingFolderOfTheServerListFailsAtOnce) {
    CZooKeeperStore below(OptionsFor(SharedServer().Address() + m_strPath));
    const auto start = steady_clock::now();
    EXPECT_EQ(below.Commit({}, {{"/parent/node", "text"}}), NO_NODE);
    EXPECT_LT(steady_clock::now() - start, 2s);
    EXPECT_EQ(VersionOf(""), STORE_VERSION_ABSENT);
}

TEST_F(ZooKeeperCommit, TooLargeACommitIsRefusedBeforeSending) {
    const std::string strHalf(600000, 'x');
    EXPECT_EQ(m_store.Commit({}, {{m_strPath + "/a", strHalf}, {m_strPath + "/b", strHalf}}),
              ORVA_PARA_INVALID);
    EXPECT_EQ(m_proxy.CountCommits(), 0);
    EXPECT_EQ(VersionOf(""), STORE_VERSION_ABSENT);
    EXPECT_EQ(m_store.Commit({}, {{m_strPath + "/a", strHalf}, {m_strPath + "/b", "x"}}), 0);
}

TEST_F(ZooKeeperCommit, WithoutAServerFailsAndIsNotUnderWay) {
    CZooKeeperStore nowhere({"127.0.0.1:" + std::to_string(FreeLoopbackPort()), 2s, 600ms});
    EXPECT_EQ(nowhere.Commit({}, {{m_strPath, "text"}}), CONNECTION_LOSS);
    std::vector<std::string> children{"untouched"};
    EXPECT_EQ(nowhere.List("/", children), CONNECTION_LOSS);
    EXPECT_THAT(children, ElementsAre("untouched"));
}

}  // namespace
