#include <gmock/gmock.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "serve/http_fixture.h"

namespace {

class CHttpServerStops : public CHttpServerTest {};

}  // namespace

TEST_F(CHttpServerStops, ListeningFirstAndAnswersOn) {
    Start(m_held.Handler());
    CRawClient waits(GetUrl());
    waits.SendGet("/waits");
    auto held = m_held.Take(1);
    m_pServer->StopListening();
    EXPECT_FALSE(IsListening(GetUrl()));
    held[0].second->Send({200, "answered"});
    EXPECT_EQ(waits.Read().strBody, "answered");
    waits.SendGet("/again");
    m_held.Take(1)[0].second->Send({200, "again"});
    EXPECT_EQ(waits.Read().strBody, "again");
    m_pServer->StopListening();
}

TEST_F(CHttpServerStops, RequestsThatWaitEnd) {
    Start(m_held.Handler());
    CRawClient waits(GetUrl());
    waits.SendGet("/");
    const auto held = m_held.Take(1);
    m_pServer->Stop();
    EXPECT_EQ(waits.ReadAll(), "");
    held[0].second->Send({200, "too late"});
}

TEST_F(CHttpServerStops, AfterTheAnswersThatWereGiven) {
    constexpr std::size_t NUMERIC_CLIENTS = 100;
    Start(m_held.Handler());
    std::vector<CRawClient> clients;
    for (std::size_t ui = 0; ui < NUMERIC_CLIENTS; ++ui) {
        clients.emplace_back(GetUrl()).SendGet("/");
    }
    for (auto& [request, pReplyTo] : m_held.Take(NUMERIC_CLIENTS)) {
        pReplyTo->Send({200, "given"});
    }
    m_pServer->Stop();
    for (CRawClient& client : clients) {
        EXPECT_EQ(client.Read().strBody, "given");
        EXPECT_EQ(client.ReadAll(), "");
    }
}

TEST_F(CHttpServerStops, WithoutWaitingForAClientThatTakesNothing) {
    Start([](const CHttpRequest&, const std::shared_ptr<IReplyTo>& pReplyTo) {
        pReplyTo->Send({200, std::string(64U << 20U, 'x')});
    });
    CRawClient client(GetUrl());
    client.SendGet("/");
    client.ReadUntil("xxx");
    m_pServer->Stop();
    EXPECT_LT(client.ReadAll().size(), 64U << 20U);
}

TEST_F(CHttpServerStops, AnswersOutliveTheServer) {
    Start(m_held.Handler());
    CRawClient waits(GetUrl());
    waits.SendGet("/");
    auto held = m_held.Take(1);
    m_pServer.reset();
    held[0].second->Send({200, "too late"});
    held.clear();
    EXPECT_EQ(waits.ReadAll(), "");
}

TEST_F(CHttpServerStops, AtHalfARequest) {
    Start(Echo);
    CRawClient half(GetUrl());
    half.Send("POST / HTTP/1.1\r\nHost: " + half.GetHost() +
              "\r\nContent-Type: application/json\r\nContent-Length: 10\r\n\r\n{");
    CRawClient silent(GetUrl());
    m_pServer->Stop();
    EXPECT_EQ(half.ReadAll(), "");
    EXPECT_EQ(silent.ReadAll(), "");
}

TEST_F(CHttpServerStops, TwiceAndWithoutAStart) {
    Start(Echo);
    m_pServer->Stop();
    m_pServer->Stop();
    CHttpServer never(Echo);
    never.StopListening();
    never.Stop();
}

TEST_F(CHttpServerStops, PortIsFreeForTheNextOne) {
    Start(Echo);
    const std::string strListen = GetUrl().substr(std::string("http://").size());
    EXPECT_EQ(Get(GetUrl(), "/").iStatus, 200);
    m_pServer->Stop();
    CHttpServer next(Echo);
    std::string strWhy;
    ASSERT_TRUE(next.Start(strListen, strWhy)) << strWhy;
    EXPECT_EQ(Get(next.GetUrl(), "/").iStatus, 200);
}

TEST_F(CHttpServerStops, WhileRequestsComeAndAnswersGo) {
    for (int iRound = 0; iRound < 50; ++iRound) {
        Start(m_held.Handler());
        std::atomic<bool> bEnd{false};
        std::atomic<int> iAnswered{0};
        std::thread answers([&] {
            while (!bEnd) {
                for (auto& [request, pReplyTo] : m_held.TakeAll()) {
                    pReplyTo->Send({200, request.strPath});
                }
                std::this_thread::yield();
            }
        });
        std::vector<std::thread> clients;
        for (int i = 0; i < 4; ++i) {
            clients.emplace_back([&, strUrl = GetUrl()] {
                try {
                    for (CRawClient client(strUrl);; ++iAnswered) {
                        client.SendGet("/path");
                        const CRawReply reply = client.Read();
                        if (reply.iStatus != 200) {
                            EXPECT_EQ(reply.GetError(), "stopping");
                            return;
                        }
                        EXPECT_EQ(reply.strBody, "/path");
                    }
                } catch (const std::runtime_error&) {
                    return;  // the server has stopped
                }
            });
        }
        while (iAnswered < 20) {
            std::this_thread::yield();
        }
        m_pServer->Stop();
        bEnd = true;
        answers.join();
        for (std::thread& client : clients) {
            client.join();
        }
        m_held.TakeAll();
    }
}
