#include "command/cluster_holder.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <sstream>
#include <vector>

#include "command/exit_code.h"
#include "reference_host/memory_store.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

constexpr char PSZ_NAME[] = "/CloudX/Holder";

CStoreAnswer AnswerOf(const std::string& strText) {
    return {true, strText, 1};
}

void NeverLost() {
    ADD_FAILURE() << "lost";
}

/// A store whose names may outlive their processes for so long.
class CSlowStore : public CMemoryStore {
public:
    explicit CSlowStore(std::chrono::milliseconds afterlife) : m_afterlife(afterlife) {}

    std::chrono::milliseconds GetHoldAfterlife() override { return m_afterlife; }

private:
    const std::chrono::milliseconds m_afterlife;
};

int HoldAs(IStore& store, const std::string& strText, CStoreAnswer& holder,
           const OnWaiting& onWaiting) {
    return HoldOrWait(store, PSZ_NAME, strText, NeverLost, onWaiting, holder);
}

void HoldBefore(IStore& store) {
    CStoreAnswer holder;
    ASSERT_EQ(store.Hold(PSZ_NAME, "before", NeverLost, holder), 0);
}

TEST(ClusterHolder, TextReadsBackAsItWasWritten) {
    const CClusterHolder holder{"http://127.0.0.1:8390", "alpha \"\xe4\xb8\xad\"", 4711,
                                1772604000};
    const CClusterHolder read = ReadHolder(AnswerOf(HolderText(holder)));
    EXPECT_EQ(read.strService, holder.strService);
    EXPECT_EQ(read.strHost, holder.strHost);
    EXPECT_EQ(read.iProcess, holder.iProcess);
    EXPECT_EQ(read.iSince, holder.iSince);
}

TEST(ClusterHolder, IsThisProcess) {
    const CClusterHolder holder = ThisProcess("http://127.0.0.1:1", 5);
    EXPECT_EQ(holder.strService, "http://127.0.0.1:1");
    EXPECT_EQ(holder.iProcess, getpid());
    EXPECT_FALSE(holder.strHost.empty());
    EXPECT_EQ(holder.iSince, 5);
}

TEST(ClusterHolder, TextOfStrangersTellsWhatItTells) {
    EXPECT_EQ(HolderWords(ReadHolder(CStoreAnswer())), "a service");
    for (const char* pszText : {"", "[]", "null", "{ broken", "{}", R"({"service":5,"host":[]})",
                                R"({"process":"7","since":1.5})"}) {
        EXPECT_EQ(HolderWords(ReadHolder(AnswerOf(pszText))), "a service") << pszText;
    }
    EXPECT_EQ(HolderWords(ReadHolder(AnswerOf(R"({"service":"http://a","host":"b\n"})"))),
              "the service at http://a on b\\n");
    EXPECT_EQ(HolderWords(ReadHolder(AnswerOf(R"({"process":7,"since":0})"))),
              "a service, process 7");
}

TEST(ClusterHolder, FreeNameIsTakenAtOnce) {
    CMemoryStore store;
    CStoreAnswer holder;
    const auto failure = [](const CStoreAnswer&) {
        ADD_FAILURE() << "waited";
        return false;
    };
    EXPECT_EQ(HoldAs(store, "mine", holder, failure), 0);
    EXPECT_EQ(holder.text, "mine");
}

TEST(ClusterHolder, NameThatGoesWithItsProcessIsNotWaitedFor) {
    CMemoryStore store;
    HoldBefore(store);
    CStoreAnswer holder;
    const auto failure = [](const CStoreAnswer&) {
        ADD_FAILURE() << "waited";
        return true;
    };
    EXPECT_EQ(HoldAs(store, "mine", holder, failure), STORE_NAME_HELD);
    EXPECT_EQ(holder.text, "before");
}

TEST(ClusterHolder, NameThatMayOutliveItsProcessIsWaitedFor) {
    CSlowStore store(std::chrono::hours(1));
    HoldBefore(store);
    std::vector<std::string> waitedFor;
    const auto releaseInTheEnd = [&](const CStoreAnswer& holder) {
        waitedFor.push_back(holder.text.value_or(""));
        if (waitedFor.size() == 3) {
            store.Release(PSZ_NAME);
        }
        return true;
    };
    CStoreAnswer holder;
    EXPECT_EQ(HoldAs(store, "mine", holder, releaseInTheEnd), 0);
    EXPECT_EQ(holder.text, "mine");
    EXPECT_THAT(waitedFor, ElementsAre("before", "before", "before"));
}

TEST(ClusterHolder, LivingHolderIsWaitedForNoLongerThanADeadOne) {
    CSlowStore store(std::chrono::milliseconds(50));
    HoldBefore(store);
    CStoreAnswer holder;
    EXPECT_EQ(HoldAs(store, "mine", holder, [](const CStoreAnswer&) { return true; }),
              STORE_NAME_HELD);
    EXPECT_EQ(holder.text, "before");
}

TEST(ClusterHolder, WaitingCanBeEnded) {
    CSlowStore store(std::chrono::hours(1));
    HoldBefore(store);
    CStoreAnswer holder;
    EXPECT_EQ(HoldAs(store, "mine", holder, [](const CStoreAnswer&) { return false; }),
              STORE_NAME_HELD);
}

TEST(ClusterHolder, FailureOfTheStoreEndsTheWait) {
    CSlowStore store(std::chrono::hours(1));
    store.FailCall(1, 4711);
    CStoreAnswer holder;
    EXPECT_EQ(HoldAs(store, "mine", holder, [](const CStoreAnswer&) { return true; }), 4711);
}

TEST(ClusterHolder, StoreThatDoesNotAnswerWhoHoldsTheClusterStandsInTheWay) {
    CMemoryStore store;
    store.FailCall(1, STORE_NOT_SET);
    std::ostringstream errors;
    EXPECT_EQ(CheckNobodyHolds(store, {"X", "memory"}, std::nullopt, errors), EXIT_COULD_NOT);
    EXPECT_THAT(errors.str(), HasSubstr("cluster X in memory: "));
    errors.str("");
    EXPECT_EQ(CheckNobodyHolds(store, {"X", "memory"}, std::nullopt, errors), EXIT_DONE);
    EXPECT_THAT(errors.str(), IsEmpty());
}

}  // namespace
