#include "reference_host/memory_store.h"

#include <gtest/gtest.h>

namespace {

TEST(MemoryStore, FailsTheChosenCallOnceReadsAndWritesCountedTogether) {
    CMemoryStore store;
    store.Put("/a", "old");
    store.FailCall(3, 4711);
    CStoreAnswer answer;
    EXPECT_EQ(store.Read("/a", nullptr, answer), 0);
    EXPECT_EQ(store.Write("/b", "b"), 0);
    EXPECT_EQ(store.Write("/a", "new"), 4711);
    EXPECT_EQ(store.Get("/a"), "old");
    EXPECT_EQ(store.Write("/a", "new"), 0);
    EXPECT_EQ(store.GetCallCount(), 4U);
}

TEST(MemoryStore, FailedListingAndCommitChangeNothing) {
    CMemoryStore store;
    store.Put("/a", "old");
    std::vector<std::string> children{"untouched"};
    store.FailCall(1, 4711);
    EXPECT_EQ(store.List("/", children), 4711);
    EXPECT_EQ(children, std::vector<std::string>{"untouched"});
    store.FailCall(1, 4712);
    EXPECT_EQ(store.Commit({}, {{"/a", "new"}, {"/b", "new"}}), 4712);
    EXPECT_EQ(store.Get("/a"), "old");
    EXPECT_FALSE(store.GetNode("/b").bExists);
    EXPECT_EQ(store.GetCallCount(), 2U);
}

TEST(MemoryStore, NodeThatWasTakenAwayComesBackAtAnotherVersion) {
    CMemoryStore store;
    store.Put("/a", "1");
    const CStoreAnswer before = store.GetNode("/a");
    store.Erase("/a");
    EXPECT_EQ(store.GetNode("/a").iVersion, STORE_VERSION_ABSENT);
    EXPECT_EQ(store.Write("/a", "1"), 0);
    EXPECT_EQ(store.Commit({{"/a", before.iVersion}}, {}), STORE_CONDITION_FAILED);
}

TEST(MemoryStore, ListsBelowANodeThatWasPutWithoutItsParent) {
    CMemoryStore store;
    store.Put("/a/b/c", "text");
    std::vector<std::string> children;
    EXPECT_EQ(store.List("/a", children), 0);
    EXPECT_EQ(children, std::vector<std::string>{"b"});
}

TEST(MemoryStore, CountsFromNow) {
    CMemoryStore store;
    EXPECT_EQ(store.Write("/a", "1"), 0);
    store.FailCall(1, -5);
    CStoreAnswer answer{true, "untouched"};
    EXPECT_EQ(store.Read("/b", nullptr, answer), -5);
    EXPECT_EQ(answer.text, "untouched");
    EXPECT_TRUE(answer.bExists);
}

int g_iFired = 0;

TEST(MemoryStore, FailedCallNeitherSetsNorFiresAWatch) {
    g_iFired = 0;
    const StoreWatcher pWatcher = [](zhandle_t*, int, int, const char*, void*) { ++g_iFired; };
    CMemoryStore store;
    CStoreAnswer answer;
    store.FailCall(1, 1);
    EXPECT_EQ(store.Read("/a", pWatcher, answer), 1);
    EXPECT_EQ(store.Write("/a", "1"), 0);
    EXPECT_EQ(g_iFired, 0);

    EXPECT_EQ(store.Read("/a", pWatcher, answer), 0);
    store.FailCall(1, 1);
    EXPECT_EQ(store.Write("/a", "2"), 1);
    EXPECT_EQ(g_iFired, 0);
    EXPECT_EQ(store.Write("/a", "2"), 0);
    EXPECT_EQ(g_iFired, 1);
}

TEST(MemoryStore, IsFilledAndReadWithoutACall) {
    CMemoryStore store;
    store.Put("/a", "text");
    store.Put("/b", std::nullopt);
    EXPECT_EQ(store.Get("/a"), "text");
    EXPECT_EQ(store.Get("/b"), std::nullopt);
    EXPECT_TRUE(store.GetNode("/b").bExists);
    store.Erase("/b");
    EXPECT_FALSE(store.GetNode("/b").bExists);
    EXPECT_EQ(store.GetCallCount(), 0U);
}

}  // namespace
