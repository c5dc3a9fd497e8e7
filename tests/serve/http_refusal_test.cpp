#include <gmock/gmock.h>

#include <chrono>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "serve/http_fixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class CHttpServerRefuses : public CHttpServerTest {
protected:
    /// What a GET with these headers is answered.
    CRawReply Ask(const std::string& strHeaders) {
        CRawClient client(GetUrl());
        client.Send("GET / HTTP/1.1\r\n" + strHeaders + "\r\n");
        return client.Read();
    }

    std::string GetPort() const { return GetUrl().substr(GetUrl().rfind(':')); }

    /// The service answers as before.
    void ExpectAlive() { EXPECT_EQ(Get(GetUrl(), "/alive").strBody, "GET /alive "); }
};

void ExpectError(const CRawReply& reply, int iStatus, const char* pszName) {
    EXPECT_EQ(reply.iStatus, iStatus) << reply.strBody;
    EXPECT_EQ(reply.GetError(), pszName) << reply.strBody;
}

}  // namespace

TEST_F(CHttpServerRefuses, HostsThatAreNotOurs) {
    Start(Echo);
    for (const char* pszHost : {"localhost", "127.0.0.1", "[::1]", "LocalHost"}) {
        EXPECT_EQ(Ask("Host: " + std::string(pszHost) + GetPort() + "\r\n").iStatus, 200);
    }
    for (const std::string& strHost :
         {std::string("localhost"), std::string("127.0.0.1:1"), "evil.example" + GetPort(),
          "127.0.0.1.evil.example" + GetPort(), std::string("\xff"), std::string()}) {
        ExpectError(Ask("Host: " + strHost + "\r\n"), 403, "foreign_host");
    }
}

TEST_F(CHttpServerRefuses, NoHostAndTwo) {
    Start(Echo);
    const std::string strOurs = "Host: localhost" + GetPort() + "\r\n";
    ExpectError(Ask(""), 400, "bad_request");
    ExpectError(Ask(strOurs + strOurs), 400, "bad_request");
}

TEST_F(CHttpServerRefuses, PagesOfOtherSites) {
    Start(Echo);
    const std::string strHost = "Host: localhost" + GetPort() + "\r\n";
    EXPECT_EQ(Ask(strHost + "Origin: http://127.0.0.1" + GetPort() + "\r\n").iStatus, 200);
    for (const std::string& strOrigin :
         {std::string("http://evil.example"), std::string("null"), "https://localhost" + GetPort(),
          std::string("http://localhost")}) {
        ExpectError(Ask(strHost + "Origin: " + strOrigin + "\r\n"), 403, "foreign_origin");
    }
}

TEST_F(CHttpServerRefuses, BodiesThatAreNotDeclaredAsJson) {
    Start(Echo);
    for (const char* pszType : {"", "Content-Type: text/plain\r\n", "Content-Type: \r\n",
                                "Content-Type: application/jsonp\r\n",
                                "Content-Type: application/x-www-form-urlencoded\r\n"}) {
        CRawClient client(GetUrl());
        client.Send("POST / HTTP/1.1\r\nHost: " + client.GetHost() + "\r\n" + pszType +
                    "Content-Length: 2\r\n\r\n{}");
        ExpectError(client.Read(), 415, "not_json");
        client.SendGet("/next");
        EXPECT_EQ(client.Read().strBody, "GET /next ");
    }
}

TEST_F(CHttpServerRefuses, BodiesAboveTheLimit) {
    CHttpLimits limits;
    limits.uiBodyBytes = 100000;
    Start(Echo, limits);
    CRawClient client(GetUrl());
    client.SendPost("/", std::string(limits.uiBodyBytes, 'x'));
    EXPECT_EQ(client.Read().iStatus, 200);
    client.SendPost("/", std::string(limits.uiBodyBytes + 1, 'x'));
    ExpectError(client.Read(), 413, "body_too_large");
    client.Send("POST / HTTP/1.1\r\nHost: " + client.GetHost() +
                "\r\nContent-Type: application/json\r\nTransfer-Encoding: chunked\r\n\r\n");
    const std::string strChunk = "4000\r\n" + std::string(0x4000, 'y') + "\r\n";
    for (int i = 0; i < 10; ++i) {
        client.Send(strChunk);
    }
    client.Send("0\r\n\r\n");
    ExpectError(client.Read(), 413, "body_too_large");
    client.SendGet("/next");
    EXPECT_EQ(client.Read().strBody, "GET /next ");
}

TEST_F(CHttpServerRefuses, HugeBodiesBeforeTheyAreSent) {
    Start(Echo);
    CRawClient asks(GetUrl());
    asks.Send("POST / HTTP/1.1\r\nHost: " + asks.GetHost() +
              "\r\nContent-Type: application/json\r\nExpect: 100-continue\r\nContent-Length: "
              "20000000\r\n\r\n");
    ExpectError(asks.Read(), 413, "body_too_large");
    CRawClient tells(GetUrl());
    tells.Send("POST / HTTP/1.1\r\nHost: " + tells.GetHost() +
               "\r\nContent-Type: application/json\r\nContent-Length: 100000000000\r\n\r\n");
    ExpectError(tells.Read(), 413, "body_too_large");
}

TEST_F(CHttpServerRefuses, BodiesThatNeverEnd) {
    CHttpLimits limits;
    limits.uiBodyBytes = 10000;
    Start(Echo, limits);
    CRawClient client(GetUrl());
    client.Send("POST / HTTP/1.1\r\nHost: " + client.GetHost() +
                "\r\nContent-Type: application/json\r\nTransfer-Encoding: chunked\r\n\r\n");
    const std::string strChunk = "4000\r\n" + std::string(0x4000, 'y') + "\r\n";
    EXPECT_THROW(
        for (int i = 0; i < 10000; ++i) { client.Send(strChunk); }, std::runtime_error);
    ExpectAlive();
}

TEST_F(CHttpServerRefuses, LongUrlsAndHeaders) {
    Start(Echo);
    ExpectError(Get(GetUrl(), '/' + std::string(8192, 'u')), 414, "url_too_long");
    ExpectError(Ask("Host: localhost" + GetPort() + "\r\nX: " + std::string(8192, 'h') + "\r\n"),
                431, "header_too_large");
}

TEST_F(CHttpServerRefuses, NoUrlAndHeaderThatAreAsLongAsAllowed) {
    Start(Echo);
    CRawClient client(GetUrl());
    std::string strHead =
        "GET /" + std::string(8191, 'u') + " HTTP/1.1\r\nHost: " + client.GetHost();
    for (int i = 0; i < 20; ++i) {
        strHead += "\r\nX: " + std::string(400, 'h');
    }
    client.Send(strHead + "\r\n\r\n");
    EXPECT_EQ(client.Read().iStatus, 200);
}

TEST_F(CHttpServerRefuses, HeaderFloods) {
    Start(Echo);
    CRawClient one(GetUrl());
    one.Send("GET / HTTP/1.1\r\nX: " + std::string(100000, 'h'));
    EXPECT_THAT(one.ReadUntil("\r\n"), HasSubstr(" 431 "));
    CRawClient many(GetUrl());
    EXPECT_THROW(
        {
            many.Send("GET / HTTP/1.1\r\n");
            for (int i = 0; i < 1000000; ++i) {
                many.Send("X-" + std::to_string(i) + ": y\r\n");
            }
        },
        std::runtime_error);
    CRawClient url(GetUrl());
    url.Send("GET /" + std::string(100000, 'u'));
    EXPECT_THAT(url.ReadUntil("\r\n"), HasSubstr(" 414 "));
    ExpectAlive();
}

TEST_F(CHttpServerRefuses, WhatIsNoHttp) {
    Start(Echo);
    for (const char* pszText : {"\x16\x03\x01\r\n\r\n", "GET\r\n\r\n", "GET /\r\n\r\n",
                                "GET / HTTP/9.9\r\n\r\n", "{\"input\": \"tick\"}\r\n\r\n"}) {
        CRawClient client(GetUrl());
        client.Send(pszText);
        EXPECT_THAT(client.ReadAll(), Not(HasSubstr("200 OK"))) << pszText;
    }
    ExpectError(Ask("Host: localhost" + GetPort() + "\r\nContent-Length: 0\r\n"), 200, "");
    CRawClient proxied(GetUrl());
    proxied.SendGet("http://evil.example/");
    ExpectError(proxied.Read(), 400, "bad_request");
    ExpectAlive();
}

TEST_F(CHttpServerRefuses, RequestsThatStall) {
    CHttpLimits limits;
    limits.uiSeconds = 1;
    Start(Echo, limits);
    CRawClient header(GetUrl());
    header.Send("GET / HTTP/1.1\r\nHost: ");
    CRawClient body(GetUrl());
    body.Send("POST / HTTP/1.1\r\nHost: " + body.GetHost() +
              "\r\nContent-Type: application/json\r\nContent-Length: 10\r\n\r\n{");
    CRawClient line(GetUrl());
    line.Send("GE");
    CRawClient silent(GetUrl());
    for (CRawClient* pClient : {&header, &body}) {
        ExpectError(pClient->Read(), 408, "too_slow");
        EXPECT_EQ(pClient->ReadAll(), "");
    }
    EXPECT_EQ(line.ReadAll(), "");
    EXPECT_EQ(silent.ReadAll(), "");
    ExpectAlive();
}

TEST_F(CHttpServerRefuses, RequestsThatDrip) {
    CHttpLimits limits;
    limits.uiSeconds = 1;
    Start(Echo, limits);
    for (const char* pszBegin : {"GET / HTTP/1.1\r\nX: ", "GET /"}) {
        CRawClient client(GetUrl());
        client.Send(pszBegin);
        EXPECT_THROW(
            for (int i = 0; i < 1000; ++i) {
                client.Send("x");
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
            },
            std::runtime_error)
            << pszBegin;
    }
    ExpectAlive();
}

TEST_F(CHttpServerRefuses, ToWaitForEverForAnAnswer) {
    CHttpLimits limits;
    limits.uiSeconds = 1;
    Start(m_held.Handler(), limits);
    CRawClient client(GetUrl());
    client.SendGet("/");
    const auto held = m_held.Take(1);
    ExpectError(client.Read(), 504, "outcome_unknown");
    held[0].second->Send({200, "late"});
    client.SendGet("/next");
    m_held.Take(1)[0].second->Send({200, "next"});
    EXPECT_EQ(client.Read().strBody, "next");
}

TEST_F(CHttpServerRefuses, ConnectionsAboveTheLimit) {
    CHttpLimits limits;
    limits.uiConnections = 3;
    Start(Echo, limits);
    std::vector<CRawClient> clients;
    for (unsigned int ui = 0; ui < limits.uiConnections; ++ui) {
        clients.emplace_back(GetUrl()).SendGet("/");
        EXPECT_EQ(clients.back().Read().iStatus, 200);
    }
    CRawClient late(GetUrl());
    late.SendGet("/");
    ExpectError(late.Read(), 503, "too_many_connections");
    EXPECT_EQ(late.ReadAll(), "");
    clients[0].SendGet("/still");
    EXPECT_EQ(clients[0].Read().strBody, "GET /still ");
    clients.pop_back();
    CRawReply reply = Get(GetUrl(), "/");
    while (reply.iStatus == 503) {  // until the server has seen that it left
        reply = Get(GetUrl(), "/");
    }
    EXPECT_EQ(reply.strBody, "GET / ");
}

TEST_F(CHttpServerRefuses, AndTellsEachRefusalByItsName) {
    std::mutex mutex;
    std::vector<std::string> refused;
    CHttpNews news;
    news.onRefused = [&](const char* pszName) {
        const std::lock_guard<std::mutex> guard(mutex);
        refused.emplace_back(pszName);
    };
    CHttpLimits limits;
    limits.uiSeconds = 3;
    limits.uiConnections = 1;
    limits.uiBodyBytes = 10;
    Start(Echo, limits, std::move(news));
    CRawClient client(GetUrl());
    client.SendPost("/", std::string(11, 'x'));
    EXPECT_EQ(client.Read().iStatus, 413);
    CRawClient late(GetUrl());
    late.SendGet("/");
    EXPECT_EQ(late.Read().iStatus, 503);
    client.Send("GET / HTTP/1.1\r\nHost: evil.example\r\n\r\n");
    EXPECT_EQ(client.Read().iStatus, 403);
    client.SendGet("/well");
    EXPECT_EQ(client.Read().iStatus, 200);
    client.Send("GET / HTTP/1.1\r\n");
    EXPECT_EQ(client.Read().iStatus, 408);
    m_pServer->Stop();
    EXPECT_THAT(refused,
                ElementsAre("body_too_large", "too_many_connections", "foreign_host", "too_slow"));
}

TEST_F(CHttpServerRefuses, NobodyForAThousandIdleConnections) {
    Start(Echo);
    std::vector<CRawClient> idle;
    for (int i = 0; i < 1000; ++i) {
        idle.emplace_back(GetUrl());
        if (i % 2 == 0) {
            idle.back().Send("POST / HTTP/1.1\r\nContent-Length: 100\r\nHost: ");
        }
    }
    ExpectAlive();
    idle[1].SendGet("/awake");
    EXPECT_EQ(idle[1].Read().strBody, "GET /awake ");
}
