#include <algorithm>
#include <memory>
#include <thread>
#include <vector>

#include "support/store_behaviour_suite.h"

namespace {

/// The text of who holds a name; of one that nobody holds, "nobody".
std::string HolderOf(IStore& store, const std::string& strPath) {
    CStoreAnswer holder{true, "untouched", 4711};
    EXPECT_EQ(store.FindHolder(strPath, holder), 0);
    return holder.bExists ? holder.text.value_or("<no data>") : "nobody";
}

int Hold(IStore& store, const std::string& strPath, const std::string& strText) {
    CStoreAnswer holder;
    const int iRet = store.Hold(
        strPath, strText, [] { ADD_FAILURE() << "lost"; }, holder);
    EXPECT_TRUE(iRet != 0 || holder.text == strText);
    return iRet;
}

/// What a hold that is refused was told of the holder.
std::string RefusalOf(IStore& store, const std::string& strPath) {
    CStoreAnswer holder;
    EXPECT_EQ(store.Hold(
                  strPath, "refused", [] {}, holder),
              STORE_NAME_HELD);
    EXPECT_TRUE(holder.bExists);
    return holder.text.value_or("<no data>");
}

}  // namespace

TEST_P(StoreBehaviour, NameIsHeldByOneStoreAtATime) {
    const std::shared_ptr<IStore> pOther = m_open();
    ASSERT_EQ(Hold(*m_pStoreUnderTest, Node("top/name"), "{\"who\":\"'first'\"}\n"), 0);
    EXPECT_EQ(RefusalOf(*pOther, Node("top/name")), "{\"who\":\"'first'\"}\n");
    EXPECT_EQ(RefusalOf(*m_pStoreUnderTest, Node("top/name")), "{\"who\":\"'first'\"}\n");
    EXPECT_EQ(HolderOf(*pOther, Node("top/name")), "{\"who\":\"'first'\"}\n");
}

TEST_P(StoreBehaviour, HolderIsToldWithoutTakingTheName) {
    const std::shared_ptr<IStore> pOther = m_open();
    EXPECT_EQ(HolderOf(*pOther, Node("name")), "nobody");
    ASSERT_EQ(Hold(*m_pStoreUnderTest, Node("name"), "first"), 0);
    EXPECT_EQ(HolderOf(*pOther, Node("name")), "first");
    EXPECT_EQ(HolderOf(*m_pStoreUnderTest, Node("name")), "first");
    EXPECT_EQ(m_pStoreUnderTest->Release(Node("name")), 0);
    EXPECT_EQ(HolderOf(*pOther, Node("name")), "nobody");
}

TEST_P(StoreBehaviour, NodeThatNobodyHoldsIsNoHolder) {
    ASSERT_EQ(m_pStoreUnderTest->Write(Node("node"), "text"), 0);
    EXPECT_EQ(HolderOf(*m_pStoreUnderTest, Node("node")), "nobody");
}

TEST_P(StoreBehaviour, ReleasedNameIsHeldByTheNext) {
    const std::shared_ptr<IStore> pOther = m_open();
    for (int iRound = 0; iRound < 3; ++iRound) {
        ASSERT_EQ(Hold(*m_pStoreUnderTest, Node("name"), "first"), 0);
        ASSERT_EQ(m_pStoreUnderTest->Release(Node("name")), 0);
        ASSERT_EQ(Hold(*pOther, Node("name"), "second"), 0);
        EXPECT_EQ(RefusalOf(*m_pStoreUnderTest, Node("name")), "second");
        ASSERT_EQ(pOther->Release(Node("name")), 0);
    }
    EXPECT_EQ(pOther->Release(Node("name")), 0) << "nothing to let go of";
    EXPECT_EQ(pOther->Release(Node("never/held")), 0);
}

TEST_P(StoreBehaviour, NamesAreHeldEachForItself) {
    const std::shared_ptr<IStore> pOther = m_open();
    ASSERT_EQ(Hold(*m_pStoreUnderTest, Node("name"), "first"), 0);
    ASSERT_EQ(Hold(*pOther, Node("other"), "second"), 0);
    ASSERT_EQ(Hold(*m_pStoreUnderTest, Node("third"), "third"), 0);
    EXPECT_EQ(m_pStoreUnderTest->Release(Node("name")), 0);
    EXPECT_EQ(HolderOf(*pOther, Node("name")), "nobody");
    EXPECT_EQ(HolderOf(*m_pStoreUnderTest, Node("other")), "second");
    EXPECT_EQ(HolderOf(*pOther, Node("third")), "third");
}

TEST_P(StoreBehaviour, HeldNameKeepsNobodyFromReadingAndWriting) {
    const std::shared_ptr<IStore> pOther = m_open();
    ASSERT_EQ(m_pStoreUnderTest->Write(Node("node"), "[1]\n"), 0);
    ASSERT_EQ(Hold(*m_pStoreUnderTest, Node("name"), "first"), 0);
    EXPECT_EQ(pOther->Write(Node("node"), "[2]\n"), 0);
    EXPECT_EQ(TextOf("node"), "[2]\n");
    EXPECT_EQ(pOther->Commit({{Node("node"), VersionOf("node")}}, {{Node("node"), "[3]\n"}}), 0);
    EXPECT_EQ(TextOf("node"), "[3]\n");
    CStoreAnswer answer;
    EXPECT_EQ(pOther->Read(Node("name"), nullptr, answer), 0);
    EXPECT_EQ(answer.text, "first");
}

TEST_P(StoreBehaviour, OfThoseWhoWantANameOneHasIt) {
    constexpr int iRivals = 6;
    std::vector<std::shared_ptr<IStore>> stores;
    for (int iRival = 0; iRival < iRivals; ++iRival) {
        stores.push_back(m_open());
    }
    for (int iRound = 0; iRound < 10; ++iRound) {
        const std::string strName = Node("name" + std::to_string(iRound));
        std::vector<int> codes(iRivals, -1);
        std::vector<CStoreAnswer> holders(iRivals);
        std::vector<std::thread> threads;
        for (int iRival = 0; iRival < iRivals; ++iRival) {
            threads.emplace_back([&, iRival] {
                codes[iRival] = stores[iRival]->Hold(
                    strName, "rival " + std::to_string(iRival), [] {}, holders[iRival]);
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        ASSERT_EQ(std::count(codes.begin(), codes.end(), 0), 1);
        ASSERT_EQ(std::count(codes.begin(), codes.end(), STORE_NAME_HELD), iRivals - 1);
        const auto winner = std::find(codes.begin(), codes.end(), 0) - codes.begin();
        for (const CStoreAnswer& holder : holders) {
            EXPECT_EQ(holder.text, "rival " + std::to_string(winner));
        }
    }
}

TEST_P(StoreBehaviour, CommitOnAHoldIsRefusedOnceAnotherHasHeldTheName) {
    const std::shared_ptr<IStore> pOther = m_open();
    CStoreAnswer mine;
    ASSERT_EQ(m_pStoreUnderTest->Hold(
                  Node("name"), "same text", [] {}, mine),
              0);
    const std::vector<CStoreCondition> onlyAsHolder{{Node("name"), mine.iVersion}};
    EXPECT_EQ(m_pStoreUnderTest->Commit(onlyAsHolder, {{Node("node"), "[1]\n"}}), 0);
    ASSERT_EQ(m_pStoreUnderTest->Release(Node("name")), 0);
    ASSERT_EQ(Hold(*pOther, Node("name"), "same text"), 0);
    EXPECT_EQ(m_pStoreUnderTest->Commit(onlyAsHolder, {{Node("node"), "[2]\n"}}),
              STORE_CONDITION_FAILED);
    ASSERT_EQ(pOther->Release(Node("name")), 0);
    EXPECT_EQ(m_pStoreUnderTest->Commit(onlyAsHolder, {{Node("node"), "[2]\n"}}),
              STORE_CONDITION_FAILED);
    EXPECT_EQ(TextOf("node"), "[1]\n");
}

TEST_P(LastingStoreBehaviour, NameOfAnotherIsNotReleased) {
    const std::shared_ptr<IStore> pOther = m_open();
    ASSERT_EQ(Hold(*m_pStoreUnderTest, Node("name"), "first"), 0);
    EXPECT_EQ(pOther->Release(Node("name")), 0);
    EXPECT_EQ(RefusalOf(*pOther, Node("name")), "first");
}

TEST_P(LastingStoreBehaviour, NameIsFreeWhenItsStoreHasGone) {
    std::shared_ptr<IStore> pHolder = m_open();
    ASSERT_EQ(Hold(*pHolder, Node("name"), "first"), 0);
    pHolder.reset();
    EXPECT_EQ(HolderOf(*m_pStoreUnderTest, Node("name")), "nobody");
    EXPECT_EQ(Hold(*m_pStoreUnderTest, Node("name"), "second"), 0);
}
