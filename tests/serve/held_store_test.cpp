#include "serve/held_store.h"

#include <gmock/gmock.h>

#include "reference_host/memory_store.h"

namespace {

constexpr char PSZ_HOLDER[] = "/CloudX/Holder";

/// A store of one service that holds its cluster.
class HeldStore : public testing::Test {
protected:
    HeldStore() { Take("first"); }

    void Take(const std::string& strText) {
        ASSERT_EQ(m_pStore->Hold(
                      PSZ_HOLDER, strText, [] {}, m_holder),
                  0);
    }

    CHeldStore Make() {
        return {m_pStore, {PSZ_HOLDER, m_holder.iVersion}, [this] { ++m_iLost; }};
    }

    const std::shared_ptr<CMemoryStore> m_pStore = std::make_shared<CMemoryStore>();
    CStoreAnswer m_holder;
    int m_iLost = 0;
};

}  // namespace

TEST_F(HeldStore, WritesWhileTheClusterIsHeld) {
    CHeldStore held = Make();

    EXPECT_EQ(held.Write("/CloudX/a", "1"), 0);
    EXPECT_EQ(held.Write("/CloudX/a", "2"), 0);
    EXPECT_EQ(held.Commit({}, {{"/CloudX/b", "3"}}), 0);

    EXPECT_EQ(m_pStore->Get("/CloudX/a"), "2");
    EXPECT_EQ(m_pStore->Get("/CloudX/b"), "3");
    EXPECT_EQ(m_iLost, 0);
}

TEST_F(HeldStore, WritesNothingOnceAnotherHasHeldTheCluster) {
    CHeldStore held = Make();
    ASSERT_EQ(held.Write("/CloudX/a", "ours"), 0);
    m_pStore->LoseHold(PSZ_HOLDER);
    Take("second");

    EXPECT_EQ(held.Write("/CloudX/a", "late"), STORE_CONDITION_FAILED);
    EXPECT_EQ(held.Commit({}, {{"/CloudX/b", "late"}}), STORE_CONDITION_FAILED);

    EXPECT_EQ(m_pStore->Get("/CloudX/a"), "ours");
    EXPECT_EQ(m_pStore->Get("/CloudX/b"), std::nullopt);
    EXPECT_EQ(m_iLost, 2);
}

TEST_F(HeldStore, GoesOnReadingWhoeverHoldsTheCluster) {
    CHeldStore held = Make();
    ASSERT_EQ(held.Write("/CloudX/a", "1"), 0);
    m_pStore->LoseHold(PSZ_HOLDER);
    CStoreAnswer answer;
    std::vector<std::string> children;

    EXPECT_EQ(held.Read("/CloudX/a", nullptr, answer), 0);
    EXPECT_EQ(answer.text, "1");
    EXPECT_EQ(held.List("/CloudX", children), 0);
    EXPECT_THAT(children, testing::Contains("a"));
}

TEST_F(HeldStore, TellsAConditionOfTheCallersApartFromItsHold) {
    CHeldStore held = Make();
    ASSERT_EQ(held.Write("/CloudX/a", "1"), 0);

    EXPECT_EQ(held.Commit({{"/CloudX/a", STORE_VERSION_ABSENT}}, {{"/CloudX/a", "2"}}),
              STORE_CONDITION_FAILED);

    EXPECT_EQ(m_iLost, 0);
    EXPECT_EQ(m_pStore->Get("/CloudX/a"), "1");
}
