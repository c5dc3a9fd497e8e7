#include "serve/event_stream.h"

#include <gmock/gmock.h>

#include <thread>

#include "serve/http_fixture.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

void Say(CEventLog& log, const std::string& strNodeId) {
    CEvent event;
    event.eEvent = EEvent::JOINED;
    event.iTime = 12;
    event.strNodeId = strNodeId;
    log.Take(event);
    log.Publish();
}

std::string Read(IReplyStream& stream) {
    std::string strText;
    EXPECT_TRUE(stream.Read(strText));
    return strText;
}

}  // namespace

TEST(EventStream, EventHasItsNumberNameAndJson) {
    CEventLog log(1);
    const auto pStream = MakeEventStream(log, 0);
    Say(log, "a");
    EXPECT_EQ(Read(*pStream),
              "id: 1\nevent: joined\n"
              "data: {\"event\":\"joined\",\"node\":\"a\",\"number\":1,"
              "\"sentence\":\"joins\",\"subject\":\"a\",\"time\":12}\n\n");
    EXPECT_EQ(Read(*pStream), "");
}

TEST(EventStream, BeginsBehindTheNumber) {
    CEventLog log(1);
    Say(log, "a");
    Say(log, "b");
    EXPECT_THAT(Read(*MakeEventStream(log, 1)), StartsWith("id: 2\n"));
    EXPECT_EQ(Read(*MakeEventStream(log, 2)), "");
}

TEST(EventStream, ReaderFromAnotherLifeIsToldSoOnceAndBeginsAtTheFirst) {
    CEventLog log(101);
    const auto pStream = MakeEventStream(log, 99);
    EXPECT_EQ(Read(*pStream), "event: missed\ndata: {\"missed\":1}\n\n");
    EXPECT_EQ(Read(*pStream), "");
    Say(log, "a");
    EXPECT_THAT(Read(*pStream), StartsWith("id: 101\n"));
    EXPECT_THAT(Read(*MakeEventStream(log, 1000)),
                StartsWith("event: missed\ndata: {\"missed\":1}\n\nid: 101\n"));
}

TEST(EventStream, SlowReaderIsToldWhatItMissed) {
    CEventLog log(1, 2);
    const auto pStream = MakeEventStream(log, 0);
    Say(log, "a");
    EXPECT_THAT(Read(*pStream), StartsWith("id: 1\n"));
    for (const char* pszNode : {"b", "c", "d", "e"}) {
        Say(log, pszNode);
    }
    EXPECT_THAT(Read(*pStream), StartsWith("event: missed\ndata: {\"missed\":2}\n\nid: 4\n"));
    Say(log, "f");
    EXPECT_THAT(Read(*pStream), StartsWith("id: 6\n"));
}

TEST(EventStream, SilenceIsBrokenByAComment) {
    CEventLog log(1);
    const auto pStream = MakeEventStream(log, 0, std::chrono::seconds(0));
    EXPECT_EQ(Read(*pStream), ":\n\n");
    Say(log, "a");
    EXPECT_THAT(Read(*pStream), StartsWith("id: 1\n"));
    EXPECT_EQ(Read(*pStream), ":\n\n");
}

TEST(EventStream, LongHistoryComesInPieces) {
    CEventLog log(1);
    for (int i = 0; i < 1000; ++i) {
        Say(log, "node");
    }
    const auto pStream = MakeEventStream(log, 0);
    const std::string strFirst = Read(*pStream);
    EXPECT_LT(strFirst.size(), 65536U);
    EXPECT_THAT(strFirst, Not(HasSubstr("id: 1000\n")));
    std::string strAll = strFirst;
    for (std::string strPiece = strFirst; !strPiece.empty(); strAll += strPiece) {
        strPiece = Read(*pStream);
    }
    EXPECT_THAT(strAll, HasSubstr("id: 1000\n"));
}

TEST(EventStream, ReachesItsReaderThroughTheServer) {
    CEventLog log(1);
    CHttpServer server([&](const CHttpRequest& request, const std::shared_ptr<IReplyTo>& pReplyTo) {
        pReplyTo->Stream(PSZ_EVENT_STREAM,
                         MakeEventStream(log, std::stoull(request.strLastEventId)));
    });
    std::string strWhy;
    ASSERT_TRUE(server.Start("127.0.0.1:0", strWhy)) << strWhy;
    Say(log, "a");
    Say(log, "b");
    CRawClient client(server.GetUrl());
    client.Send("GET / HTTP/1.1\r\nHost: " + client.GetHost() + "\r\nLast-Event-ID: 1\r\n\r\n");
    EXPECT_THAT(client.ReadUntil("\r\n\r\n"), HasSubstr("Content-Type: text/event-stream\r\n"));
    EXPECT_THAT(client.ReadUntil("\n\n"), HasSubstr("id: 2\n"));
    std::thread engine([&] {
        for (int i = 0; i < 2000; ++i) {
            Say(log, "n");
        }
        Say(log, "last");
    });
    const std::string strAll = client.ReadUntil("\"last\"");
    engine.join();
    EXPECT_THAT(strAll, HasSubstr("id: 2003\n"));
    EXPECT_THAT(strAll, Not(HasSubstr("missed")));
    server.Stop();
    Say(log, "nobody");
}
