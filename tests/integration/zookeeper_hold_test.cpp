#include <gtest/gtest.h>
#define THREADED
#include <zookeeper/zookeeper.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <thread>

#include "command/cluster_holder.h"
#include "reference_host/zookeeper_store.h"
#include "session_thief.h"
#include "support/host_fixture.h"
#include "support/name_holder_process.h"
#include "zookeeper_server.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

using testing::Contains;
using testing::ElementsAre;

constexpr auto LONG = 30s;

/// The path of the running test below the root.
std::string TestPath() {
    return std::string("/") + testing::UnitTest::GetInstance()->current_test_info()->name();
}

CZooKeeperOptions OptionsFor(const CZooKeeperServer& server) {
    return {server.Address(), NAME_HOLDER_SESSION, 5s};
}

/// A loss that a test waits for.
class CLoss {
public:
    HoldLost Teller() {
        return [this] { m_told.set_value(); };
    }
    bool IsTold(std::chrono::milliseconds limit = LONG) {
        return m_future.wait_for(limit) == std::future_status::ready;
    }

private:
    std::promise<void> m_told;
    std::future<void> m_future = m_told.get_future();
};

std::string HolderOf(IStore& store, const std::string& strPath) {
    CStoreAnswer holder;
    EXPECT_EQ(store.FindHolder(strPath, holder), 0);
    return holder.bExists ? holder.text.value_or("<no data>") : "nobody";
}

/// Tries to hold the name until it can be had. What was answered until then is STORE_NAME_HELD.
bool HoldInTime(IStore& store, const std::string& strPath, const std::string& strText) {
    const auto deadline = steady_clock::now() + LONG;
    CStoreAnswer holder;
    int iRet = STORE_NAME_HELD;
    while (iRet == STORE_NAME_HELD && steady_clock::now() < deadline) {
        iRet = store.Hold(
            strPath, strText, [] {}, holder);
        std::this_thread::sleep_for(10ms);
    }
    return iRet == 0;
}

/// Takes a node away as an operator does, by hand.
void DeleteByHand(const std::string& strServers, const std::string& strPath) {
    const auto ignore = [](zhandle_t*, int, int, const char*, void*) {};
    zhandle_t* const pHandle =
        zookeeper_init(strServers.c_str(), ignore, 4000, nullptr, nullptr, ZOO_NO_LOG_CLIENTENV);
    ASSERT_NE(pHandle, nullptr);
    int iRet = ZCONNECTIONLOSS;
    for (int iTry = 0; iTry < 1000 && iRet == ZCONNECTIONLOSS; ++iTry) {
        iRet = zoo_delete(pHandle, strPath.c_str(), -1);
    }
    zookeeper_close(pHandle);
    EXPECT_EQ(iRet, ZOK);
}

class ZooKeeperHold : public CHostTest {
protected:
    const std::string m_strPath = TestPath() + "/name";
    const std::string m_strStore = "zookeeper:" + SharedServer().Address();
    CZooKeeperStore m_store{OptionsFor(SharedServer())};
    CStoreAnswer m_holder;
    CLoss m_loss;
};

TEST_F(ZooKeeperHold, NameOfAnotherProgramIsRefusedWithItsText) {
    CNameHolderProcess other(m_strStore, m_strPath, "another program");
    ASSERT_EQ(other.Line(), "held");
    EXPECT_EQ(m_store.Hold(m_strPath, "mine", m_loss.Teller(), m_holder), STORE_NAME_HELD);
    EXPECT_EQ(m_holder.text, "another program");
    other.Say("release");
    ASSERT_EQ(other.Line(), "released, code 0");
    EXPECT_EQ(m_store.Hold(m_strPath, "mine", m_loss.Teller(), m_holder), 0);
}

TEST_F(ZooKeeperHold, KilledHoldersNameStaysUntilItsSessionIsOver) {
    CNameHolderProcess other(m_strStore, m_strPath, "another program");
    ASSERT_EQ(other.Line(), "held");
    other.Kill();
    EXPECT_TRUE(HoldInTime(m_store, m_strPath, "mine"));
    EXPECT_EQ(HolderOf(m_store, m_strPath), "mine");
}

TEST_F(ZooKeeperHold, NameOutlivesItsProcessNoLongerThanIsSaid) {
    ASSERT_EQ(HolderOf(m_store, m_strPath), "nobody");
    EXPECT_GT(m_store.GetHoldAfterlife(), NAME_HOLDER_SESSION);
    EXPECT_LE(m_store.GetHoldAfterlife(), 2 * NAME_HOLDER_SESSION);
}

TEST_F(ZooKeeperHold, StartWaitsForTheNameOfAKilledHolder) {
    CNameHolderProcess other(m_strStore, m_strPath, "another program");
    ASSERT_EQ(other.Line(), "held");
    other.Kill();
    int iPauses = 0;
    const OnWaiting count = [&iPauses](const CStoreAnswer& holder) {
        EXPECT_EQ(holder.text, "another program");
        ++iPauses;
        return true;
    };
    EXPECT_EQ(HoldOrWait(m_store, m_strPath, "mine", m_loss.Teller(), count, m_holder), 0);
    EXPECT_EQ(m_holder.text, "mine");
    EXPECT_GT(iPauses, 0);
}

TEST_F(ZooKeeperHold, StartIsRefusedInTheEndWhenTheHolderLives) {
    CNameHolderProcess other(m_strStore, m_strPath, "another program");
    ASSERT_EQ(other.Line(), "held");
    const OnWaiting goOn = [](const CStoreAnswer&) { return true; };
    EXPECT_EQ(HoldOrWait(m_store, m_strPath, "mine", m_loss.Teller(), goOn, m_holder),
              STORE_NAME_HELD);
    EXPECT_EQ(m_holder.text, "another program");
    EXPECT_EQ(HolderOf(m_store, m_strPath), "another program");
}

TEST_F(ZooKeeperHold, PausedHolderLosesItsNameAndIsToldWhenItGoesOn) {
    CNameHolderProcess other(m_strStore, m_strPath, "another program");
    ASSERT_EQ(other.Line(), "held");
    other.Say("commit");
    ASSERT_EQ(other.Line(), "committed, code 0");
    other.Pause();
    ASSERT_TRUE(HoldInTime(m_store, m_strPath, "mine"));
    other.Say("commit");
    other.GoOn();
    const std::string strFirst = other.Line();
    const std::string strSecond = other.Line();
    EXPECT_THAT((std::vector<std::string>{strFirst, strSecond}),
                testing::UnorderedElementsAre(
                    "lost", "committed, code " + std::to_string(STORE_CONDITION_FAILED)));
    EXPECT_EQ(HolderOf(m_store, m_strPath), "mine");
}

TEST_F(ZooKeeperHold, HoldLastsAsLongAsThereIsContact) {
    ASSERT_EQ(m_store.Hold(m_strPath, "mine", m_loss.Teller(), m_holder), 0);
    const auto end = steady_clock::now() + 3 * NAME_HOLDER_SESSION;
    while (steady_clock::now() < end && !m_loss.IsTold(50ms)) {
        ASSERT_EQ(HolderOf(m_store, m_strPath), "mine");
    }
    EXPECT_FALSE(m_loss.IsTold(0s));
}

TEST_F(ZooKeeperHold, ExpiredSessionIsToldAndTheNameIsHeldAnew) {
    ASSERT_EQ(HolderOf(m_store, m_strPath), "nobody") << "another session than the newest";
    CZooKeeperStore store(OptionsFor(SharedServer()));
    ASSERT_EQ(store.Hold(m_strPath, "mine", m_loss.Teller(), m_holder), 0);
    const CStoreCondition asBefore{m_strPath, m_holder.iVersion};
    ASSERT_TRUE(ExpireNewestSession(SharedServer().Address()));
    EXPECT_TRUE(m_loss.IsTold());
    EXPECT_THAT(m_logger.GetLinesOf("zookeeper_holds"),
                ElementsAre(Warn("hold name in store", "zookeeper_holds", "Lose",
                                 m_strPath + ": not held any more")));
    EXPECT_TRUE(HoldInTime(store, m_strPath, "mine"));
    EXPECT_EQ(store.Commit({asBefore}, {{TestPath() + "/node", "[1]\n"}}), STORE_CONDITION_FAILED);
}

TEST_F(ZooKeeperHold, NodeThatWasDeletedByHandIsTold) {
    ASSERT_EQ(m_store.Hold(m_strPath, "mine", m_loss.Teller(), m_holder), 0);
    DeleteByHand(SharedServer().Address(), m_strPath);
    EXPECT_TRUE(m_loss.IsTold());
}

TEST_F(ZooKeeperHold, NameThatIsLetGoOfIsNotLost) {
    {
        CZooKeeperStore store(OptionsFor(SharedServer()));
        ASSERT_EQ(store.Hold(m_strPath, "mine", m_loss.Teller(), m_holder), 0);
        ASSERT_EQ(store.Release(m_strPath), 0);
        ASSERT_EQ(store.Hold(m_strPath, "mine again", m_loss.Teller(), m_holder), 0);
    }
    EXPECT_EQ(HolderOf(m_store, m_strPath), "nobody");
    EXPECT_FALSE(m_loss.IsTold(0s));
}

TEST_F(ZooKeeperHold, WhoIsToldOfALossMayHoldTheNameAnew) {
    CZooKeeperStore store(OptionsFor(SharedServer()));
    std::promise<int> anew;
    const HoldLost holdAgain = [&] {
        CStoreAnswer holder;
        anew.set_value(store.Hold(m_strPath, "again", m_loss.Teller(), holder));
    };
    ASSERT_EQ(store.Hold(m_strPath, "mine", holdAgain, m_holder), 0);
    DeleteByHand(SharedServer().Address(), m_strPath);
    auto code = anew.get_future();
    ASSERT_EQ(code.wait_for(LONG), std::future_status::ready);
    EXPECT_EQ(code.get(), 0);
    EXPECT_EQ(HolderOf(m_store, m_strPath), "again");
    DeleteByHand(SharedServer().Address(), m_strPath);
    EXPECT_TRUE(m_loss.IsTold()) << "a hold that was taken anew is lost like the first";
}

TEST_F(ZooKeeperHold, WhoIsToldOfALossMayDropTheLastReferenceToTheStore) {
    auto pStore = std::make_shared<CZooKeeperStore>(OptionsFor(SharedServer()));
    std::promise<void> dropped;
    const HoldLost drop = [&] {
        pStore.reset();
        dropped.set_value();
    };
    ASSERT_EQ(pStore->Hold(m_strPath, "mine", drop, m_holder), 0);
    DeleteByHand(SharedServer().Address(), m_strPath);
    EXPECT_EQ(dropped.get_future().wait_for(LONG), std::future_status::ready);
}

TEST_F(ZooKeeperHold, DocumentIsNoNameToHold) {
    ASSERT_EQ(m_store.Write(m_strPath, "[1]\n"), 0);
    EXPECT_EQ(m_store.Hold(m_strPath, "mine", m_loss.Teller(), m_holder), ZNODEEXISTS);
    EXPECT_EQ(HolderOf(m_store, m_strPath), "nobody");
    EXPECT_THAT(m_logger.GetLinesOf("zookeeper_holds"),
                ElementsAre(Err("hold name in store", ZNODEEXISTS, "zookeeper_holds", "Hold",
                                m_strPath + ": node exists")));
}

/// Against a server of its own, which the test may mistreat.
class ZooKeeperHoldOnFailingServer : public CHostTest {
protected:
    ZooKeeperHoldOnFailingServer() { m_server.StartServing(); }

    const std::string m_strPath = TestPath() + "/name";
    CZooKeeperServer m_server;
    CStoreAnswer m_holder;
    CLoss m_loss;
};

TEST_F(ZooKeeperHoldOnFailingServer, HoldWithoutContactIsLostBeforeTheServersCanGiveItAway) {
    constexpr auto SESSION = 4s;
    CZooKeeperStore store({m_server.Address(), SESSION, 5s});
    ASSERT_EQ(store.Hold(m_strPath, "mine", m_loss.Teller(), m_holder), 0);
    m_server.Freeze();
    const auto frozen = steady_clock::now();
    EXPECT_TRUE(m_loss.IsTold());
    EXPECT_LT(steady_clock::now() - frozen, SESSION);
    m_server.Thaw();
    EXPECT_TRUE(HoldInTime(store, m_strPath, "mine"));
}

TEST_F(ZooKeeperHoldOnFailingServer, NameIsHeldAnewWhenTheServerIsBackWithoutItsData) {
    CZooKeeperStore store(OptionsFor(m_server));
    ASSERT_EQ(store.Hold(m_strPath, "mine", m_loss.Teller(), m_holder), 0);
    m_server.Kill();
    EXPECT_TRUE(m_loss.IsTold());
    m_server.EraseData();
    m_server.StartServing();
    EXPECT_TRUE(HoldInTime(store, m_strPath, "mine"));
}

TEST_F(ZooKeeperHoldOnFailingServer, StoreGoesWithItsHoldWhileTheServerIsAway) {
    auto pStore = std::make_unique<CZooKeeperStore>(OptionsFor(m_server));
    ASSERT_EQ(pStore->Hold(m_strPath, "mine", m_loss.Teller(), m_holder), 0);
    m_server.Freeze();
    const auto start = steady_clock::now();
    pStore.reset();
    EXPECT_LT(steady_clock::now() - start, 10s);
    EXPECT_FALSE(m_loss.IsTold(0s));
}

}  // namespace
