#include "reference_host/zookeeper_store.h"

#include <gtest/gtest.h>
#include <zookeeper/zookeeper.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include "common_service/tarn_def.h"
#include "fired_watches.h"
#include "session_thief.h"
#include "support/host_fixture.h"
#include "support/store_behaviour_suite.h"
#include "zookeeper_server.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

using testing::Contains;
using testing::ElementsAre;

constexpr int CONNECTION_LOSS = -4;
constexpr int OPERATION_TIMEOUT = -7;
constexpr milliseconds DEADLINE = 5s;
constexpr milliseconds SHORT_DEADLINE = 600ms;
constexpr milliseconds SCHEDULING_SLACK = 1500ms;

CZooKeeperOptions OptionsFor(const std::string& strServers, milliseconds deadline = DEADLINE) {
    return {strServers, 2s, deadline};
}

/// The path of the running test below the root.
std::string TestPath() {
    return std::string("/") + testing::UnitTest::GetInstance()->current_test_info()->name();
}

CStoreAnswer ReadExpectingSuccess(IStore& store, const std::string& strPath,
                                  StoreWatcher pWatcher = nullptr) {
    CStoreAnswer answer;
    EXPECT_EQ(store.Read(strPath, pWatcher, answer), 0) << strPath;
    return answer;
}

/// What a call that cannot succeed returned, if it ended in time and left the answer alone.
int CodeOfFailingRead(IStore& store, milliseconds deadline, StoreWatcher pWatcher = nullptr) {
    CStoreAnswer answer{true, "untouched"};
    const auto start = steady_clock::now();
    const int iCode = store.Read(TestPath(), pWatcher, answer);
    EXPECT_LT(steady_clock::now() - start, deadline + SCHEDULING_SLACK);
    EXPECT_TRUE(answer.bExists);
    EXPECT_EQ(answer.text, "untouched");
    return iCode;
}

int CodeOfFailingWrite(IStore& store, milliseconds deadline) {
    const auto start = steady_clock::now();
    const int iCode = store.Write(TestPath(), "text");
    EXPECT_LT(steady_clock::now() - start, deadline + SCHEDULING_SLACK);
    return iCode;
}

/// Against the shared server, with a second store in the place of another program.
class ZooKeeperStore : public CHostTest {
protected:
    CZooKeeperStore m_store{OptionsFor(SharedServer().Address())};
    CZooKeeperStore m_otherStore{OptionsFor(SharedServer().Address())};
    const std::string m_strPath = TestPath();
};

/// Against a server of its own, which the test may mistreat.
class ZooKeeperStoreOnFailingServer : public CHostTest {
protected:
    ZooKeeperStoreOnFailingServer() { m_server.StartServing(); }

    CZooKeeperServer m_server;
    const std::string m_strPath = TestPath();
};

TEST_F(ZooKeeperStore, MissingParentsAreCreatedWithoutData) {
    ASSERT_EQ(m_store.Write(m_strPath + "/a/b/c", "leaf"), 0);
    EXPECT_EQ(ReadExpectingSuccess(m_store, m_strPath + "/a/b/c").text, "leaf");
    for (const char* pszParent : {"", "/a", "/a/b"}) {
        const CStoreAnswer parent = ReadExpectingSuccess(m_store, m_strPath + pszParent);
        EXPECT_TRUE(parent.bExists) << pszParent;
        EXPECT_FALSE(parent.text) << pszParent;
    }
}

TEST_F(ZooKeeperStore, EmptyTextIsNotTheSameAsNoData) {
    ASSERT_EQ(m_store.Write(m_strPath, ""), 0);
    EXPECT_EQ(ReadExpectingSuccess(m_store, m_strPath).text, "");
}

TEST_F(ZooKeeperStore, EveryByteComesBackAsWritten) {
    std::string strText;
    for (int iByte = 0; iByte < 256; ++iByte) {
        strText.push_back(static_cast<char>(iByte));
    }
    ASSERT_EQ(m_store.Write(m_strPath, strText), 0);
    EXPECT_EQ(ReadExpectingSuccess(m_store, m_strPath).text, strText);
}

TEST_F(ZooKeeperStore, LargestNodeIsTakenAndALargerOneRefusedBeforeSending) {
    const std::string strLargest((1U << 20U) - 1024U - m_strPath.size(), 'x');
    ASSERT_EQ(m_store.Write(m_strPath, strLargest), 0);
    EXPECT_EQ(m_store.Write(m_strPath, strLargest + "x"), ORVA_PARA_INVALID);
    EXPECT_THAT(m_logger.GetLinesOf("zookeeper_store"),
                ElementsAre(Err("write store node", ORVA_PARA_INVALID, "zookeeper_store", "Write",
                                m_strPath + ": " + std::to_string(strLargest.size() + 1) +
                                    " bytes are too many")));
    EXPECT_EQ(ReadExpectingSuccess(m_store, m_strPath).text, strLargest);
}

TEST_F(ZooKeeperStore, PathThatTheServerRefusesFailsAtOnce) {
    const auto start = steady_clock::now();
    CStoreAnswer answer;
    EXPECT_LT(m_store.Read("no/leading/slash", nullptr, answer), 0);
    EXPECT_LT(m_store.Write("no/leading/slash", "text"), 0);
    EXPECT_LT(m_store.Write(m_strPath + "//x", "text"), 0);
    EXPECT_LT(steady_clock::now() - start, DEADLINE);
}

TEST_F(ZooKeeperStore, FolderOfTheServerListIsTheRoot) {
    ASSERT_EQ(m_store.Write(m_strPath, "folder"), 0);
    CZooKeeperStore below(OptionsFor(SharedServer().Address() + m_strPath));
    ASSERT_EQ(below.Write("/parent/node", "below"), 0);
    EXPECT_EQ(ReadExpectingSuccess(m_store, m_strPath + "/parent/node").text, "below");
}

TEST_F(ZooKeeperStore, MissingFolderOfTheServerListFailsTheWrite) {
    CZooKeeperStore below(OptionsFor(SharedServer().Address() + m_strPath));
    EXPECT_LT(below.Write("/parent/node", "below"), 0);
}

TEST_F(ZooKeeperStore, EightThreadsReadAndWriteAtOnce) {
    constexpr int iThreads = 8;
    constexpr int iRounds = 25;
    std::atomic<int> iGood{0};
    std::vector<std::thread> threads;
    for (int iThread = 0; iThread < iThreads; ++iThread) {
        threads.emplace_back([&, strPath = m_strPath + "/" + std::to_string(iThread)] {
            for (int iRound = 0; iRound < iRounds; ++iRound) {
                const std::string strText = std::to_string(iRound) + std::string(2000, 'x');
                CStoreAnswer answer;
                const bool bGood = m_store.Write(strPath, strText) == 0 &&
                                   m_store.Read(strPath, RecordFired, answer) == 0 &&
                                   answer.text == strText;
                iGood += bGood ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(iGood, iThreads * iRounds);
}

TEST_F(ZooKeeperStore, WatchFiresOnceForAWriteOfAnotherStore) {
    ASSERT_EQ(m_store.Write(m_strPath, "first"), 0);
    ReadExpectingSuccess(m_store, m_strPath, RecordFired);
    ReadExpectingSuccess(m_store, m_strPath, RecordFired);
    ASSERT_EQ(m_otherStore.Write(m_strPath, "second"), 0);
    ASSERT_TRUE(AwaitFired(m_strPath));
    ASSERT_EQ(m_otherStore.Write(m_strPath, "third"), 0);
    EXPECT_FALSE(AwaitFired(m_strPath, 2, 200ms));
}

TEST_F(ZooKeeperStore, WatchOnAnAbsentNodeFiresAtItsCreation) {
    EXPECT_FALSE(ReadExpectingSuccess(m_store, m_strPath, RecordFired).bExists);
    ASSERT_EQ(m_otherStore.Write(m_strPath, "text"), 0);
    EXPECT_TRUE(AwaitFired(m_strPath));
}

TEST_F(ZooKeeperStore, WatcherIsGivenTheHandleOfItsSession) {
    static std::atomic<int> iState;
    iState = 0;
    const StoreWatcher askClient = [](zhandle_t* zh, int, int, const char* path, void*) {
        iState = zh == nullptr ? 0 : zoo_state(zh);
        RecordFired(path);
    };
    ReadExpectingSuccess(m_store, m_strPath, askClient);
    ASSERT_EQ(m_otherStore.Write(m_strPath, "text"), 0);
    EXPECT_TRUE(AwaitFired(m_strPath));
    EXPECT_EQ(iState, ZOO_CONNECTED_STATE);
}

TEST_F(ZooKeeperStore, ReadWithoutAWatcherSetsNone) {
    ReadExpectingSuccess(m_store, m_strPath);
    ASSERT_EQ(m_otherStore.Write(m_strPath, "text"), 0);
    EXPECT_FALSE(AwaitFired(m_strPath, 1, 200ms));
}

/// A reader that only listens to its watcher ends with the last text, whatever comes between.
class ZooKeeperStoreFollower : public ZooKeeperStore {
protected:
    static void Follow(const std::string& strPath) {
        CStoreAnswer answer;
        if (m_pFollower->Read(strPath, OnEvent, answer) == 0 && answer.text == "last") {
            RecordFired(strPath);
        }
    }

    static void OnEvent(zhandle_t*, int, int, const char* path, void*) { Follow(path); }

    void SetUp() override { m_pFollower = &m_store; }

    static inline CZooKeeperStore* m_pFollower = nullptr;
};

TEST_F(ZooKeeperStoreFollower, WatcherThatReadsTheNodeMissesNoWrite) {
    Follow(m_strPath);
    for (int iWrite = 0; iWrite < 100; ++iWrite) {
        ASSERT_EQ(m_otherStore.Write(m_strPath, std::to_string(iWrite)), 0);
    }
    ASSERT_EQ(m_otherStore.Write(m_strPath, "last"), 0);
    EXPECT_TRUE(AwaitFired(m_strPath));
}

TEST_F(ZooKeeperStoreFollower, ReadsRacingTheCreationMissNoEvent) {
    for (int iNode = 0; iNode < 50; ++iNode) {
        const std::string strPath = m_strPath + "/" + std::to_string(iNode);
        std::thread writer([&] { EXPECT_EQ(m_otherStore.Write(strPath, "last"), 0); });
        Follow(strPath);
        writer.join();
        ASSERT_TRUE(AwaitFired(strPath)) << strPath;
    }
}

TEST_F(ZooKeeperStore, WatcherMayDropTheLastReferenceToItsStore) {
    static std::shared_ptr<CZooKeeperStore> pDropped;
    pDropped = std::make_shared<CZooKeeperStore>(OptionsFor(SharedServer().Address()));
    const StoreWatcher dropStore = [](zhandle_t*, int, int, const char* path, void*) {
        pDropped.reset();
        RecordFired(path);
    };
    ReadExpectingSuccess(*pDropped, m_strPath, dropStore);
    ASSERT_EQ(m_otherStore.Write(m_strPath, "text"), 0);
    EXPECT_TRUE(AwaitFired(m_strPath));
}

TEST_F(ZooKeeperStore, StoreMayGoAtAnyMomentOfItsConnecting) {
    for (int iMicroseconds = 0; iMicroseconds < 20000; iMicroseconds += 1000) {
        CZooKeeperStore store(OptionsFor(SharedServer().Address()));
        std::this_thread::sleep_for(std::chrono::microseconds(iMicroseconds));
    }
}

TEST_F(ZooKeeperStoreFollower, ExpiredSessionIsReplacedAndItsWatchesFire) {
    ASSERT_EQ(m_otherStore.Write(m_strPath, "before"), 0);
    CZooKeeperStore store(OptionsFor(SharedServer().Address()));
    m_pFollower = &store;
    ReadExpectingSuccess(store, m_strPath, RecordFired);
    ReadExpectingSuccess(store, m_strPath + "/followed", OnEvent);
    ASSERT_TRUE(ExpireNewestSession(SharedServer().Address()));

    EXPECT_TRUE(AwaitFired(m_strPath));
    EXPECT_EQ(store.Write(m_strPath, "after"), 0);
    EXPECT_EQ(ReadExpectingSuccess(store, m_strPath).text, "after");
    ASSERT_EQ(m_otherStore.Write(m_strPath + "/followed", "last"), 0);
    EXPECT_TRUE(AwaitFired(m_strPath + "/followed"));
    EXPECT_EQ(CountFired(m_strPath), 1);
    EXPECT_THAT(m_logger.GetLinesOf("zookeeper_session"),
                Contains(Warn("keep store session", "zookeeper_session", "OnSessionState",
                              "session lost, opening another")));
}

TEST_F(ZooKeeperStore, CallRightAfterExpirySucceeds) {
    CZooKeeperStore store(OptionsFor(SharedServer().Address()));
    ASSERT_EQ(store.Write(m_strPath, "before"), 0);
    ASSERT_TRUE(ExpireNewestSession(SharedServer().Address()));
    EXPECT_EQ(store.Write(m_strPath, "after"), 0);
    EXPECT_EQ(ReadExpectingSuccess(store, m_strPath).text, "after");
}

TEST_F(ZooKeeperStoreOnFailingServer, RestartBetweenCallsCostsNoCall) {
    CZooKeeperStore store(OptionsFor(m_server.Address()));
    ASSERT_EQ(store.Write(m_strPath, "kept"), 0);
    m_server.Stop();
    m_server.StartServing();
    EXPECT_EQ(ReadExpectingSuccess(store, m_strPath).text, "kept");
    EXPECT_EQ(store.Write(m_strPath, "new"), 0);
    EXPECT_THAT(m_logger.GetLinesOf("zookeeper_session"),
                ElementsAre(Warn("keep store session", "zookeeper_session", "OnSessionState",
                                 "connection lost, seeking another")));
}

TEST_F(ZooKeeperStoreOnFailingServer, CallsWaitForAServerThatIsJustStarting) {
    m_server.Stop();
    CZooKeeperStore store(OptionsFor(m_server.Address()));
    auto write = std::async(std::launch::async, [&] { return store.Write(m_strPath, "text"); });
    m_server.StartServing();
    EXPECT_EQ(write.get(), 0);
}

TEST_F(ZooKeeperStoreOnFailingServer, WatchSurvivesARestart) {
    CZooKeeperStore store(OptionsFor(m_server.Address()));
    ReadExpectingSuccess(store, m_strPath, RecordFired);
    m_server.Kill();
    m_server.StartServing();
    CZooKeeperStore otherStore(OptionsFor(m_server.Address()));
    ASSERT_EQ(otherStore.Write(m_strPath, "text"), 0);
    EXPECT_TRUE(AwaitFired(m_strPath));
}

TEST_F(ZooKeeperStoreOnFailingServer, KilledServerEndsRunningCallsWithACode) {
    CZooKeeperStore store(OptionsFor(m_server.Address(), SHORT_DEADLINE));
    ASSERT_EQ(store.Write(m_strPath, "text"), 0);
    auto kill = std::async(std::launch::async, [this] {
        std::this_thread::sleep_for(100ms);
        m_server.Kill();
    });
    int iCode = 0;
    const auto start = steady_clock::now();
    while (iCode == 0 && steady_clock::now() - start < DEADLINE) {
        iCode = store.Write(m_strPath, "text");
    }
    EXPECT_LT(iCode, 0);
    EXPECT_LT(steady_clock::now() - start, 100ms + SHORT_DEADLINE + SCHEDULING_SLACK);
}

TEST_F(ZooKeeperStoreOnFailingServer, ServerKilledAndBackDuringACallIsWaitedFor) {
    CZooKeeperStore store(OptionsFor(m_server.Address()));
    ASSERT_EQ(store.Write(m_strPath, "text"), 0);
    m_server.Freeze();
    auto write = std::async(std::launch::async, [&] { return store.Write(m_strPath, "new"); });
    EXPECT_EQ(write.wait_for(100ms), std::future_status::timeout);
    m_server.Kill();
    m_server.StartServing();
    EXPECT_EQ(write.get(), 0);
    EXPECT_EQ(ReadExpectingSuccess(store, m_strPath).text, "new");
}

TEST_F(ZooKeeperStoreOnFailingServer, FrozenServerEndsCallsAtTheirDeadline) {
    CZooKeeperStore store(OptionsFor(m_server.Address(), SHORT_DEADLINE));
    ASSERT_EQ(store.Write(m_strPath, "text"), 0);
    m_server.Freeze();
    EXPECT_EQ(CodeOfFailingRead(store, SHORT_DEADLINE), OPERATION_TIMEOUT);
    EXPECT_EQ(CodeOfFailingWrite(store, SHORT_DEADLINE), OPERATION_TIMEOUT);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Err("read store node", OPERATION_TIMEOUT, "zookeeper_store", "Read",
                                m_strPath + ": operation timeout"),
                            Err("write store node", OPERATION_TIMEOUT, "zookeeper_store", "Write",
                                m_strPath + ": operation timeout")));
}

TEST_F(ZooKeeperStoreOnFailingServer, StoreGoesWhileItsServerIsFrozen) {
    auto pStore = std::make_unique<CZooKeeperStore>(OptionsFor(m_server.Address(), SHORT_DEADLINE));
    ASSERT_EQ(pStore->Write(m_strPath, "text"), 0);
    m_server.Freeze();
    EXPECT_LT(CodeOfFailingRead(*pStore, SHORT_DEADLINE), 0);
    const auto start = steady_clock::now();
    pStore.reset();
    EXPECT_LT(steady_clock::now() - start, DEADLINE);
}

TEST_F(ZooKeeperStoreOnFailingServer, WatcherOfAFailedReadFiresWhenTheServerIsBack) {
    CZooKeeperStore store(OptionsFor(m_server.Address(), SHORT_DEADLINE));
    // A server that is stopped while it still writes its first session does not start again.
    ReadExpectingSuccess(store, m_strPath);
    m_server.Stop();
    EXPECT_LT(CodeOfFailingRead(store, SHORT_DEADLINE, RecordFired), 0);
    EXPECT_EQ(CountFired(m_strPath), 0);
    m_server.StartServing();
    EXPECT_TRUE(AwaitFired(m_strPath));
}

TEST_F(ZooKeeperStoreOnFailingServer, ServerThatLostItsDataIsTakenAsItIs) {
    CZooKeeperStore store(OptionsFor(m_server.Address()));
    ASSERT_EQ(store.Write(m_strPath, "lost"), 0);
    ReadExpectingSuccess(store, m_strPath, RecordFired);
    m_server.Stop();
    m_server.EraseData();
    m_server.StartServing();
    EXPECT_TRUE(AwaitFired(m_strPath));
    EXPECT_FALSE(ReadExpectingSuccess(store, m_strPath).bExists);
    EXPECT_EQ(store.Write(m_strPath, "new"), 0);
}

using ZooKeeperStoreWithoutServer = CHostTest;

TEST_F(ZooKeeperStoreWithoutServer, RefusedConnectionEndsCallsQuietlyAtTheirDeadline) {
    testing::internal::CaptureStderr();
    CZooKeeperStore store(
        OptionsFor("127.0.0.1:" + std::to_string(FreeLoopbackPort()), SHORT_DEADLINE));
    EXPECT_EQ(CodeOfFailingRead(store, SHORT_DEADLINE), CONNECTION_LOSS);
    EXPECT_EQ(CodeOfFailingWrite(store, SHORT_DEADLINE), CONNECTION_LOSS);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Err("read store node", CONNECTION_LOSS, "zookeeper_store", "Read",
                                TestPath() + ": connection loss"),
                            Err("write store node", CONNECTION_LOSS, "zookeeper_store", "Write",
                                TestPath() + ": connection loss")));
}

class ZooKeeperStoreWithBadServerList : public CHostTest,
                                        public testing::WithParamInterface<const char*> {};

TEST_P(ZooKeeperStoreWithBadServerList, CallsEndAtTheirDeadline) {
    CZooKeeperStore store(OptionsFor(GetParam(), SHORT_DEADLINE));
    EXPECT_EQ(CodeOfFailingRead(store, SHORT_DEADLINE), CONNECTION_LOSS);
    EXPECT_EQ(CodeOfFailingWrite(store, SHORT_DEADLINE), CONNECTION_LOSS);
    const CLogLine first = m_logger.GetLinesOf("zookeeper_session").at(0);
    EXPECT_EQ(first, Err("keep store session", first.code.value_or(0), "zookeeper_session",
                         "RenewSession", "list of servers is malformed or does not resolve"));
}

INSTANTIATE_TEST_SUITE_P(, ZooKeeperStoreWithBadServerList,
                         testing::Values("", "nowhere.invalid:2181", "127.0.0.1", "127.0.0.1:x"));

StoreOpener MakePlaceOnSharedServer() {
    return [] { return std::make_shared<CZooKeeperStore>(OptionsFor(SharedServer().Address())); };
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(ZooKeeper, StoreBehaviour,
                         testing::Values(CStoreKind{"ZooKeeper", MakePlaceOnSharedServer}));
INSTANTIATE_TEST_SUITE_P(ZooKeeper, LastingStoreBehaviour,
                         testing::Values(CStoreKind{"ZooKeeper", MakePlaceOnSharedServer}));
