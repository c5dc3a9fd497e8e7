#include "serve/event_log.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

void Take(CEventLog& log, int iEvents) {
    for (int i = 0; i < iEvents; ++i) {
        log.Take(CEvent());
    }
}

/// What a reader behind that number gets: numbers, and how many are gone.
struct CRead {
    uint64_t ullGone = 0;
    std::vector<uint64_t> numbers;
};

CRead Read(const CEventLog& log, uint64_t ullSince, std::size_t uiMost = 100) {
    CRead read;
    std::vector<CNumberedEvent> events;
    read.ullGone = log.Read(ullSince, uiMost, events);
    for (const CNumberedEvent& event : events) {
        read.numbers.push_back(event.ullNumber);
    }
    return read;
}

}  // namespace

TEST(EventLog, EventsAreSeenOnceTheyArePublished) {
    CEventLog log;
    Take(log, 2);
    EXPECT_THAT(Read(log, 0).numbers, IsEmpty());
    EXPECT_EQ(log.GetLast(), 0U);
    log.Publish();
    EXPECT_THAT(Read(log, 0).numbers, ElementsAre(1, 2));
    EXPECT_EQ(log.GetLast(), 2U);
}

TEST(EventLog, ReaderGoesOnBehindANumber) {
    CEventLog log;
    Take(log, 5);
    log.Publish();
    EXPECT_THAT(Read(log, 3).numbers, ElementsAre(4, 5));
    EXPECT_THAT(Read(log, 1, 2).numbers, ElementsAre(2, 3));
    EXPECT_THAT(Read(log, 5).numbers, IsEmpty());
}

TEST(EventLog, ReaderIsToldHowManyAreGone) {
    CEventLog log(3);
    Take(log, 10);
    log.Publish();
    const CRead read = Read(log, 2);
    EXPECT_EQ(read.ullGone, 5U);
    EXPECT_THAT(read.numbers, ElementsAre(8, 9, 10));
    EXPECT_EQ(Read(log, 7).ullGone, 0U);
}

TEST(EventLog, NumberOfAnotherLifeReadsFromTheBeginning) {
    CEventLog log(3);
    Take(log, 5);
    log.Publish();
    const CRead read = Read(log, 1000);
    EXPECT_EQ(read.ullGone, 2U);
    EXPECT_THAT(read.numbers, ElementsAre(3, 4, 5));
}

TEST(EventLog, EventsThatWereGoneBeforeTheyWerePublishedCountOnce) {
    CEventLog log(2);
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
    CEventLog log;
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
