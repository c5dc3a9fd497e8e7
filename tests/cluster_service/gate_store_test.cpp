#include "shell/gate_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "reference_host/memory_store.h"

using ::testing::ElementsAre;

namespace {

class GateStore : public ::testing::Test {
protected:
    GateStore() { m_pStore->Put("/a/b", "before"); }

    std::optional<std::string> Read(const std::string& strPath) {
        CStoreAnswer answer;
        EXPECT_EQ(m_gate.Read(strPath, nullptr, answer), 0);
        return answer.text;
    }

    const std::shared_ptr<CMemoryStore> m_pStore = std::make_shared<CMemoryStore>();
    CGateStore m_gate{m_pStore};
};

TEST_F(GateStore, OpenPassesEverything) {
    EXPECT_EQ(m_gate.Write("/a/c", "text"), 0);
    EXPECT_EQ(m_gate.Commit({}, {{"/a/d", "more"}}), 0);
    EXPECT_EQ(m_pStore->Get("/a/c"), "text");
    EXPECT_EQ(m_pStore->Get("/a/d"), "more");
    EXPECT_EQ(Read("/a/b"), "before");
}

TEST_F(GateStore, ShutReadsBackWhatReachedNothing) {
    m_gate.Shut();
    EXPECT_EQ(m_gate.Write("/a/b", "after"), 0);
    EXPECT_EQ(m_gate.Commit({{"/a/b", 99}}, {{"/a/c/d", "new"}}), 0);
    EXPECT_EQ(Read("/a/b"), "after");
    EXPECT_EQ(Read("/a/c/d"), "new");
    std::vector<std::string> children;
    EXPECT_EQ(m_gate.List("/a", children), 0);
    EXPECT_THAT(children, ElementsAre("b", "c"));
    EXPECT_EQ(m_gate.List("/a/c", children), 0);
    EXPECT_THAT(children, ElementsAre("d"));
    EXPECT_EQ(m_pStore->Get("/a/b"), "before");
    EXPECT_FALSE(m_pStore->GetNode("/a/c/d").bExists);
}

TEST_F(GateStore, OpenedForgetsWhatWasWrittenBehindIt) {
    m_gate.Shut();
    m_gate.Write("/a/b", "after");
    m_gate.Open();
    EXPECT_EQ(Read("/a/b"), "before");
    m_gate.Write("/a/b", "really");
    EXPECT_EQ(m_pStore->Get("/a/b"), "really");
}

TEST_F(GateStore, WhatMayWaitIsReadBackAndGoesWithTheNextOtherWrite) {
    m_gate.LetWait("/a/n");
    EXPECT_EQ(m_gate.Write("/a/n", "0"), 0);
    EXPECT_FALSE(m_gate.IsAnyWaiting()) << "the first is made at once";
    EXPECT_EQ(m_gate.Write("/a/n", "1"), 0);
    EXPECT_EQ(m_gate.Write("/a/n", "2"), 0);
    EXPECT_TRUE(m_gate.IsAnyWaiting());
    EXPECT_EQ(m_pStore->Get("/a/n"), "0");
    EXPECT_EQ(Read("/a/n"), "2");
    std::vector<std::string> children;
    EXPECT_EQ(m_gate.List("/a", children), 0);
    EXPECT_THAT(children, ElementsAre("b", "n"));
    EXPECT_EQ(m_gate.Write("/a/b", "after"), 0);
    EXPECT_EQ(m_pStore->Get("/a/n"), "2");
    EXPECT_EQ(m_pStore->Get("/a/b"), "after");
    EXPECT_FALSE(m_gate.IsAnyWaiting());
}

TEST_F(GateStore, FirstWriteThatFailsWaitsForNothing) {
    m_gate.LetWait("/a/n");
    for (int i = 0; i < 2; ++i) {
        m_pStore->FailCall(1, 77);
        EXPECT_EQ(m_gate.Write("/a/n", "1"), 77) << "each is a first one";
    }
    m_gate.Write("/a/n", "2");
    EXPECT_EQ(m_gate.WriteWaiting(), 0);
    m_pStore->FailCall(1, 77);
    EXPECT_EQ(m_gate.Write("/a/n", "3"), 77) << "and so is that behind a commit";
    EXPECT_FALSE(m_gate.IsAnyWaiting());
    EXPECT_EQ(m_pStore->Get("/a/n"), "2");
}

TEST_F(GateStore, WhatWaitsWaitsOnWhenTheStoreFails) {
    m_gate.LetWait("/a/n");
    m_gate.Write("/a/n", "0");
    m_gate.Write("/a/n", "1");
    m_pStore->FailCall(1, 77);
    EXPECT_EQ(m_gate.Write("/a/b", "after"), 77);
    EXPECT_EQ(m_pStore->Get("/a/b"), "before") << "both or neither";
    m_pStore->FailCall(1, 78);
    EXPECT_EQ(m_gate.WriteWaiting(), 78);
    EXPECT_TRUE(m_gate.IsAnyWaiting());
    EXPECT_EQ(m_pStore->Get("/a/n"), "0");
    EXPECT_EQ(m_gate.WriteWaiting(), 0);
    EXPECT_EQ(m_pStore->Get("/a/n"), "1");
    EXPECT_EQ(m_gate.WriteWaiting(), 0) << "nothing waits";
}

TEST_F(GateStore, TextsThatAreWrittenTogetherAreWrittenAllOrNone) {
    m_gate.LetWait("/a/n");
    m_gate.Write("/a/n", "first");
    m_gate.Write("/a/n", "old");
    m_pStore->FailCall(1, 77);
    EXPECT_EQ(m_gate.WriteTogether({{"/a/b", "after"}, {"/a/n", "new"}}), 77);
    EXPECT_EQ(m_pStore->Get("/a/b"), "before");
    EXPECT_EQ(m_pStore->Get("/a/n"), "first");
    EXPECT_EQ(m_gate.WriteTogether({{"/a/b", "after"}, {"/a/n", "new"}}), 0);
    EXPECT_EQ(m_pStore->Get("/a/b"), "after");
    EXPECT_EQ(m_pStore->Get("/a/n"), "new") << "none waits";
    EXPECT_FALSE(m_gate.IsAnyWaiting());
}

TEST_F(GateStore, ShutKeepsAlsoWhatMayWait) {
    m_gate.LetWait("/a/n");
    m_gate.Write("/a/n", "first");
    m_gate.Write("/a/n", "waits");
    m_gate.Shut();
    m_gate.Write("/a/n", "forgotten");
    m_gate.WriteTogether({{"/a/b", "forgotten"}});
    EXPECT_EQ(Read("/a/n"), "forgotten");
    m_gate.Open();
    EXPECT_EQ(Read("/a/n"), "waits");
    EXPECT_EQ(m_gate.WriteWaiting(), 0);
    EXPECT_EQ(m_pStore->Get("/a/n"), "waits");
    EXPECT_EQ(Read("/a/b"), "before");
}

TEST_F(GateStore, CountsFailuresAndNoAbsentNodes) {
    CStoreAnswer answer;
    std::vector<std::string> children;
    EXPECT_EQ(m_gate.Read("/nowhere", nullptr, answer), 0);
    EXPECT_EQ(m_gate.List("/nowhere", children), STORE_NODE_ABSENT);
    EXPECT_EQ(m_gate.GetFailures(), 0U);
    m_pStore->FailCall(1, 77);
    EXPECT_EQ(m_gate.Write("/a/b", "x"), 77);
    EXPECT_EQ(m_gate.GetFailures(), 1U);
    EXPECT_FALSE(m_gate.IsAway());
}

TEST_F(GateStore, IsAwayFromACallOutOfTimeToOneThatGoesWell) {
    for (const int iCode : {static_cast<int>(STORE_OUTCOME_UNKNOWN), -4, -7, 5}) {
        m_pStore->FailCall(1, iCode);
        EXPECT_EQ(m_gate.Write("/a/b", "x"), iCode);
        EXPECT_TRUE(m_gate.IsAway());
        m_pStore->FailCall(1, 77);
        EXPECT_EQ(m_gate.Write("/a/b", "x"), 77);
        EXPECT_TRUE(m_gate.IsAway()) << "another failure brings nobody back";
        EXPECT_EQ(Read("/a/b"), "before");
        EXPECT_FALSE(m_gate.IsAway());
    }
}

}  // namespace
