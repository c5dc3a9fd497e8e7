#include "serve/event_log.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "serve/comes_true.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

void Take(CEventLog& log, int iEvents) {
    for (int i = 0; i < iEvents; ++i) {
        log.Take(CEvent());
    }
}

/// What a reader behind that number gets: numbers, how many are gone, and where it stands then.
struct CRead {
    uint64_t ullGone = 0;
    std::vector<uint64_t> numbers;
    uint64_t ullStands = 0;
};

CRead Read(const CEventLog& log, uint64_t ullSince, std::size_t uiMost = 100) {
    CRead read;
    std::vector<CNumberedEvent> events;
    read.ullGone = log.Read(ullSince, uiMost, events);
    read.ullStands = ullSince;
    for (const CNumberedEvent& event : events) {
        read.numbers.push_back(event.ullNumber);
    }
    return read;
}

}  // namespace

TEST(EventLog, EventsAreSeenOnceTheyArePublished) {
    CEventLog log(1);
    Take(log, 2);
    EXPECT_THAT(Read(log, 0).numbers, IsEmpty());
    EXPECT_EQ(log.GetLast(), 0U);
    log.Publish();
    EXPECT_THAT(Read(log, 0).numbers, ElementsAre(1, 2));
    EXPECT_EQ(log.GetLast(), 2U);
}

TEST(EventLog, ReaderGoesOnBehindANumber) {
    CEventLog log(1);
    Take(log, 5);
    log.Publish();
    EXPECT_THAT(Read(log, 3).numbers, ElementsAre(4, 5));
    EXPECT_THAT(Read(log, 1, 2).numbers, ElementsAre(2, 3));
    EXPECT_EQ(Read(log, 1, 2).ullStands, 3U);
    EXPECT_THAT(Read(log, 5).numbers, IsEmpty());
}

TEST(EventLog, ReaderIsToldHowManyAreGone) {
    CEventLog log(1, 3);
    Take(log, 10);
    log.Publish();
    const CRead read = Read(log, 2);
    EXPECT_EQ(read.ullGone, 5U);
    EXPECT_THAT(read.numbers, ElementsAre(8, 9, 10));
    EXPECT_EQ(Read(log, 7).ullGone, 0U);
}

TEST(EventLog, NumberOfAnotherLifeReadsFromTheBeginningAndCountsAsOneThatIsGone) {
    CEventLog log(101, 3);
    Take(log, 3);
    log.Publish();
    for (const uint64_t ullSince : {1U, 99U, 104U}) {
        EXPECT_EQ(Read(log, ullSince).ullGone, 1U) << ullSince;
        EXPECT_THAT(Read(log, ullSince).numbers, ElementsAre(101, 102, 103)) << ullSince;
    }
    Take(log, 2);
    log.Publish();
    EXPECT_EQ(Read(log, 99).ullGone, 3U);
    EXPECT_THAT(Read(log, 99).numbers, ElementsAre(103, 104, 105));
}

TEST(EventLog, NumberOfAnotherLifeIsToldSoOnceAlsoBeforeAnythingHappens) {
    const CEventLog log(101);
    const CRead read = Read(log, 99);
    EXPECT_EQ(read.ullGone, 1U);
    EXPECT_EQ(read.ullStands, 100U);
    EXPECT_EQ(Read(log, read.ullStands).ullGone, 0U);
}

TEST(EventLog, NothingIsGoneForWhoReadsFromTheBeginning) {
    CEventLog log(101);
    Take(log, 2);
    log.Publish();
    EXPECT_EQ(Read(log, 0).ullGone, 0U);
    EXPECT_THAT(Read(log, 0).numbers, ElementsAre(101, 102));
    EXPECT_EQ(Read(log, 100).ullGone, 0U);
}

TEST(EventLog, FirstAndLastAreThoseThatCanBeRead) {
    CEventLog log(101, 3);
    EXPECT_EQ(log.GetFirst(), 101U);
    EXPECT_EQ(log.GetLast(), 100U);
    Take(log, 5);
    log.Publish();
    EXPECT_EQ(log.GetFirst(), 103U);
    EXPECT_EQ(log.GetLast(), 105U);
}

TEST(EventLog, LaterLifeBeginsWithALargerNumberThatAScriptCanHold) {
    constexpr uint64_t ULL_LARGEST_OF_A_SCRIPT = uint64_t{1} << 53;
    const uint64_t ullFirst = FirstEventNumber();
    EXPECT_TRUE(ComesTrue([&] { return FirstEventNumber() > ullFirst; }));
    EXPECT_LT(ullFirst, ULL_LARGEST_OF_A_SCRIPT);
}

TEST(EventLog, EventsThatWereGoneBeforeTheyWerePublishedCountOnce) {
    CEventLog log(1, 2);
    Take(log, 2);
    log.Publish();
    Take(log, 5);
    EXPECT_EQ(Read(log, 1).ullGone, 1U);
    EXPECT_THAT(Read(log, 1).numbers, IsEmpty());
    log.Publish();
    EXPECT_EQ(Read(log, 2).ullGone, 3U);
    EXPECT_THAT(Read(log, 2).numbers, ElementsAre(6, 7));
}

TEST(EventLog, ListenersAreWokenOncePerPublishing) {
    CEventLog log(1);
    int iWoken = 0;
    const uint64_t ullListener = log.Listen([&] { ++iWoken; });
    Take(log, 3);
    EXPECT_EQ(iWoken, 0);
    log.Publish();
    EXPECT_EQ(iWoken, 1);
    log.Publish();
    EXPECT_EQ(iWoken, 1);
    log.Forget(ullListener);
    Take(log, 1);
    log.Publish();
    EXPECT_EQ(iWoken, 1);
}

TEST(EventLog, JsonHasTheFieldsTheNumberAndASentence) {
    CNumberedEvent numbered;
    numbered.ullNumber = 7;
    numbered.event.eEvent = EEvent::JOINED;
    numbered.event.iTime = 12;
    numbered.event.strNodeId = "node-1";
    EXPECT_EQ(JsonLine(ToJson(numbered)),
              R"({"event":"joined","node":"node-1","number":7,"sentence":"joins",)"
              R"("subject":"node-1","time":12})");
}
