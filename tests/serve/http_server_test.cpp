#include "serve/http_server.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <future>
#include <map>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include "serve/http_fixture.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class CHttpServerAnswers : public CHttpServerTest {};

}  // namespace

TEST_F(CHttpServerAnswers, PathStaysEncodedAndQueryIsDecoded) {
    Start(Echo);
    EXPECT_EQ(Get(GetUrl(), "/a%2Fb/%C3%A9?x=1%202+3&y&x=z%26").strBody,
              "GET /a%2Fb/%C3%A9 [x=z&] [y=] ");
}

TEST_F(CHttpServerAnswers, LastOfTwoQueryValuesCounts) {
    Start(Echo);
    EXPECT_EQ(Get(GetUrl(), "/?since=1&since=2").strBody, "GET / [since=2] ");
}

TEST_F(CHttpServerAnswers, OneConnectionServesManyRequests) {
    Start(Echo);
    CRawClient client(GetUrl());
    for (int i = 0; i < 100; ++i) {
        client.SendPost("/n", std::to_string(i));
        EXPECT_EQ(client.Read().strBody, "POST /n " + std::to_string(i));
    }
}

TEST_F(CHttpServerAnswers, PipelinedRequestsAreAnsweredInTheirOrder) {
    Start(m_held.Handler());
    CRawClient client(GetUrl());
    client.SendGet("/first");
    client.SendGet("/second");
    for (const char* pszPath : {"/first", "/second"}) {
        const auto held = m_held.Take(1);
        EXPECT_EQ(held[0].first.strPath, pszPath);
        held[0].second->Send({200, pszPath});
        EXPECT_EQ(client.Read().strBody, pszPath);
    }
}

TEST_F(CHttpServerAnswers, HoweverManyAskAtOnceOnOneThreadAllAreAnswered) {
    std::promise<void> held;
    std::promise<void> release;
    Start([&](const CHttpRequest& request, const std::shared_ptr<IReplyTo>& pReplyTo) {
        std::ostringstream thread;
        thread << std::this_thread::get_id();
        if (request.strPath == "/hold") {
            held.set_value();
            release.get_future().wait();
        }
        pReplyTo->Send({200, thread.str()});
    });
    std::map<std::string, std::vector<CRawClient>> clientsOfThreads;
    for (int i = 0; i < 400; ++i) {
        CRawClient client(GetUrl());
        client.SendGet("/");
        const std::string strThread = client.Read().strBody;
        clientsOfThreads[strThread].push_back(std::move(client));
    }
    std::vector<CRawClient>& clients =
        std::max_element(
            clientsOfThreads.begin(), clientsOfThreads.end(),
            [](const auto& a, const auto& b) { return a.second.size() < b.second.size(); })
            ->second;
    const std::size_t uiAsking = std::min<std::size_t>(clients.size(), 129);
    clients[0].SendGet("/hold");
    held.get_future().wait();
    for (std::size_t ui = 1; ui < uiAsking; ++ui) {
        clients[ui].SendGet("/");
    }
    release.set_value();
    for (std::size_t ui = 0; ui < uiAsking; ++ui) {
        EXPECT_EQ(clients[ui].Read().iStatus, 200);
    }
}

TEST_F(CHttpServerAnswers, RequestsWaitTogetherAndAreAnsweredInAnyOrderFromAnyThread) {
    Start(m_held.Handler());
    constexpr std::size_t NUMERIC_CLIENTS = 200;
    std::vector<CRawClient> clients;
    for (std::size_t ui = 0; ui < NUMERIC_CLIENTS; ++ui) {
        clients.emplace_back(GetUrl()).SendGet('/' + std::to_string(ui));
    }
    auto held = m_held.Take(NUMERIC_CLIENTS);
    std::vector<std::thread> threads;
    for (std::size_t uiThread = 0; uiThread < 4; ++uiThread) {
        threads.emplace_back([&, uiThread] {
            for (std::size_t ui = held.size(); ui-- > 0;) {
                if (ui % 4 == uiThread) {
                    held[ui].second->Send({200, held[ui].first.strPath});
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (std::size_t ui = 0; ui < NUMERIC_CLIENTS; ++ui) {
        EXPECT_EQ(clients[ui].Read().strBody, '/' + std::to_string(ui));
    }
}

TEST_F(CHttpServerAnswers, SecondAnswerGoesNowhere) {
    Start([](const CHttpRequest&, const std::shared_ptr<IReplyTo>& pReplyTo) {
        pReplyTo->Send({200, "one"});
        pReplyTo->Send({500, "two"});
    });
    CRawClient client(GetUrl());
    client.SendGet("/");
    client.SendGet("/");
    EXPECT_EQ(client.Read().strBody, "one");
    EXPECT_EQ(client.Read().strBody, "one");
}

TEST_F(CHttpServerAnswers, DroppedRequestIsAnsweredByAnError) {
    Start(m_held.Handler());
    CRawClient client(GetUrl());
    client.SendGet("/");
    m_held.Take(1);
    const CRawReply reply = client.Read();
    EXPECT_EQ(reply.iStatus, 500);
    EXPECT_EQ(reply.GetError(), "no_answer");
}

TEST_F(CHttpServerAnswers, HandlerThatThrowsIsAnsweredByAnError) {
    Start([](const CHttpRequest&, const std::shared_ptr<IReplyTo>&) {
        throw std::runtime_error("broken");
    });
    const CRawReply reply = Get(GetUrl(), "/");
    EXPECT_EQ(reply.GetError(), "no_answer");
    EXPECT_THAT(reply.strBody, HasSubstr("broken"));
}

TEST_F(CHttpServerAnswers, ClientThatLeftIsAnsweredInVain) {
    Start(m_held.Handler());
    {
        CRawClient client(GetUrl());
        client.SendGet("/");
    }
    auto held = m_held.Take(1);
    held[0].second->Send({200, std::string(1U << 20U, 'x')});
    CRawClient other(GetUrl());
    other.SendGet("/other");
    for (auto& [request, pReplyTo] : m_held.Take(1)) {
        pReplyTo->Send({200, "here"});
    }
    held.clear();
    EXPECT_EQ(other.Read().strBody, "here");
}

TEST_F(CHttpServerAnswers, HeadIsGetWithoutItsBody) {
    Start(Echo);
    CRawClient client(GetUrl());
    client.Send("HEAD /x HTTP/1.1\r\nHost: " + client.GetHost() + "\r\n\r\n");
    EXPECT_EQ(client.Read(true).headers["content-length"], "7");
    client.SendGet("/y");
    EXPECT_EQ(client.Read().strBody, "GET /y ");
}

TEST_F(CHttpServerAnswers, HeadersOfRequestAndReplyAreHandedOn) {
    Start([](const CHttpRequest& request, const std::shared_ptr<IReplyTo>& pReplyTo) {
        CHttpReply reply(304, "");
        reply.headers["ETag"] = request.strIfNoneMatch;
        reply.headers["X-Last"] = request.strLastEventId;
        pReplyTo->Send(reply);
    });
    CRawClient client(GetUrl());
    client.Send("GET / HTTP/1.1\r\nHost: " + client.GetHost() +
                "\r\nif-none-match: \"7\"\r\nLast-Event-ID: 9\r\n\r\n");
    CRawReply reply = client.Read(true);
    EXPECT_EQ(reply.iStatus, 304);
    EXPECT_EQ(reply.headers["etag"], "\"7\"");
    EXPECT_EQ(reply.headers["x-last"], "9");
    EXPECT_EQ(reply.headers["content-type"], "application/json");
}

TEST_F(CHttpServerAnswers, BodyMayComeInChunksOrPieces) {
    Start(Echo);
    CRawClient client(GetUrl());
    client.Send("POST /c HTTP/1.1\r\nHost: " + client.GetHost() +
                "\r\nContent-Type: Application/JSON; charset=utf-8\r\nTransfer-Encoding: "
                "chunked\r\n\r\n3\r\n[1,\r\n");
    client.Send("2\r\n2]\r\n0\r\n\r\n");
    EXPECT_EQ(client.Read().strBody, "POST /c [1,2]");
}

TEST_F(CHttpServerAnswers, ClientThatAsksBeforeItSendsItsBodyIsToldToGoOn) {
    Start(Echo);
    CRawClient client(GetUrl());
    client.Send("POST / HTTP/1.1\r\nHost: " + client.GetHost() +
                "\r\nContent-Type: application/json\r\nExpect: 100-continue\r\n"
                "Content-Length: 2\r\n\r\n");
    EXPECT_THAT(client.ReadUntil("\r\n\r\n"), StartsWith("HTTP/1.1 100 "));
    client.Send("{}");
    EXPECT_EQ(client.Read().strBody, "POST / {}");
}

TEST_F(CHttpServerAnswers, OldClientGetsItsAnswerAndTheEnd) {
    Start(Echo);
    CRawClient client(GetUrl());
    client.Send("GET /old HTTP/1.0\r\nHost: " + client.GetHost() + "\r\n\r\n");
    EXPECT_THAT(client.ReadAll(), EndsWith("\r\n\r\nGET /old "));
}

TEST_F(CHttpServerAnswers, OneThreadIsEnough) {
    CHttpLimits limits;
    limits.uiConnections = 2;
    Start(m_held.Handler(), limits);
    CRawClient waits(GetUrl());
    waits.SendGet("/waits");
    const auto held = m_held.Take(1);
    CRawClient other(GetUrl());
    other.SendGet("/other");
    m_held.Take(1)[0].second->Send({200, "first"});
    EXPECT_EQ(other.Read().strBody, "first");
    held[0].second->Send({200, "second"});
    EXPECT_EQ(waits.Read().strBody, "second");
}

TEST_F(CHttpServerAnswers, LargeBodiesGoBothWays) {
    Start(Echo);
    CRawClient client(GetUrl());
    const std::string strBody(8U << 20U, 'b');
    client.SendPost("/", strBody);
    EXPECT_EQ(client.Read().strBody, "POST / " + strBody);
}

TEST_F(CHttpServerAnswers, ClientThatReadsSlowlyGetsAll) {
    const auto pBody = std::make_shared<const std::string>(20U << 20U, 's');
    Start([&](const CHttpRequest&, const std::shared_ptr<IReplyTo>& pReplyTo) {
        CHttpReply reply;
        reply.pBody = pBody;
        pReplyTo->Send(reply);
    });
    CRawClient slow(GetUrl());
    slow.SendGet("/");
    EXPECT_EQ(Get(GetUrl(), "/").strBody.size(), pBody->size());
    EXPECT_EQ(slow.Read().strBody.size(), pBody->size());
}

TEST(HttpServerAddress, LoopbackAddressesAreServed) {
    for (const char* pszListen : {"127.0.0.1:0", "127.1.2.3:0", "localhost:0", "[::1]:0"}) {
        CHttpServer server(Echo);
        std::string strWhy;
        ASSERT_TRUE(server.Start(pszListen, strWhy)) << strWhy;
        EXPECT_THAT(server.GetUrl(), StartsWith("http://" + std::string(pszListen).substr(
                                                                0, std::strlen(pszListen) - 1)));
        EXPECT_EQ(Get(server.GetUrl(), "/").iStatus, 200) << pszListen;
    }
}

TEST(HttpServerAddress, OthersAreRefusedWithTheReason) {
    for (const char* pszListen :
         {"0.0.0.0:0", "10.0.0.1:80", "[::]:0", "example.com:80", ":80", "128.0.0.1:0", "127.0.0.1",
          "127.0.0.1:", "127.0.0.1:65536", "127.0.0.1:-1", "127.0.0.1:8x", "::1:80"}) {
        CHttpServer server(Echo);
        std::string strWhy;
        EXPECT_FALSE(server.Start(pszListen, strWhy)) << pszListen;
        EXPECT_FALSE(strWhy.empty()) << pszListen;
    }
}

TEST(HttpServerAddress, PortThatIsTakenIsRefusedWithTheReason) {
    CHttpServer first(Echo);
    std::string strWhy;
    ASSERT_TRUE(first.Start("127.0.0.1:0", strWhy)) << strWhy;
    CHttpServer second(Echo);
    EXPECT_FALSE(second.Start(first.GetUrl().substr(std::strlen("http://")), strWhy));
    EXPECT_THAT(strWhy, HasSubstr("in use"));
}
