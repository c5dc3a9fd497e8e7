#include <gmock/gmock.h>

#include <atomic>
#include <deque>
#include <functional>
#include <stdexcept>
#include <thread>

#include "serve/http_fixture.h"

namespace {

using testing::HasSubstr;

/// What streams say, as a test tells them; it outlives them.
class CSource {
public:
    void Say(const std::string& strText) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_texts.push_back(strText);
        WakeLocked();
    }

    void End() {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_bEnd = true;
        WakeLocked();
    }

    /// Streams that live.
    int GetStreams() const { return m_iStreams; }

    std::unique_ptr<IReplyStream> MakeStream() { return std::make_unique<CStream>(*this); }

private:
    class CStream : public IReplyStream {
    public:
        explicit CStream(CSource& source) : m_source(source) { ++m_source.m_iStreams; }
        ~CStream() override {
            {
                const std::lock_guard<std::mutex> guard(m_source.m_mutex);
                m_source.m_wakes.erase(this);
            }
            --m_source.m_iStreams;
        }
        CStream(const CStream&) = delete;
        CStream& operator=(const CStream&) = delete;

        bool Read(std::string& strText) override {
            const std::lock_guard<std::mutex> guard(m_source.m_mutex);
            while (m_uiRead < m_source.m_texts.size() && strText.size() < 65536) {
                strText += m_source.m_texts[m_uiRead++];
            }
            return !m_source.m_bEnd || m_uiRead < m_source.m_texts.size();
        }

        void Listen(std::function<void()> wake) override {
            const std::lock_guard<std::mutex> guard(m_source.m_mutex);
            m_source.m_wakes[this] = std::move(wake);
        }

    private:
        CSource& m_source;
        std::size_t m_uiRead = 0;
    };

    void WakeLocked() {
        for (const auto& [pStream, wake] : m_wakes) {
            wake();
        }
    }

    std::atomic<int> m_iStreams{0};
    std::mutex m_mutex;  ///< guards everything below
    std::deque<std::string> m_texts;
    bool m_bEnd = false;
    std::map<const CStream*, std::function<void()>> m_wakes;
};

class CHttpServerStreams : public CHttpServerTest {
protected:
    void StartStreams() {
        Start([this](const CHttpRequest& request, const std::shared_ptr<IReplyTo>& pReplyTo) {
            if (request.strPath == "/stream") {
                pReplyTo->Stream("text/plain", m_source.MakeStream());
            } else {
                Echo(request, pReplyTo);
            }
        });
    }

    CRawClient Open() {
        CRawClient client(GetUrl());
        client.SendGet("/stream");
        client.ReadUntil("\r\n\r\n");
        return client;
    }

    /// Waits for streams that are to be gone.
    void WaitForStreams(int iStreams) {
        while (m_source.GetStreams() != iStreams) {
            std::this_thread::yield();
        }
    }

    CSource m_source;
};

}  // namespace

TEST_F(CHttpServerStreams, TextComesAsItIsSaid) {
    StartStreams();
    CRawClient client = Open();
    for (const char* pszText : {"one.", "two.", "three."}) {
        m_source.Say(pszText);
        client.ReadUntil(pszText);
    }
}

TEST_F(CHttpServerStreams, StreamThatEndsLeavesItsConnection) {
    StartStreams();
    m_source.Say("all");
    m_source.End();
    CRawClient client(GetUrl());
    for (int i = 0; i < 2; ++i) {
        client.SendGet("/stream");
        CRawReply reply = client.Read();
        EXPECT_EQ(reply.strBody, "all");
        EXPECT_EQ(reply.headers["content-type"], "text/plain");
    }
}

TEST_F(CHttpServerStreams, ManyListenWhileManySpeak) {
    StartStreams();
    std::vector<CRawClient> clients;
    for (int i = 0; i < 50; ++i) {
        clients.push_back(Open());
    }
    std::vector<std::thread> speakers;
    for (int iSpeaker = 0; iSpeaker < 4; ++iSpeaker) {
        speakers.emplace_back([this] {
            for (int i = 0; i < 500; ++i) {
                m_source.Say("x");
            }
        });
    }
    for (std::thread& speaker : speakers) {
        speaker.join();
    }
    m_source.End();
    for (CRawClient& client : clients) {
        const std::string strChunks = client.ReadUntil("\r\n0\r\n\r\n");
        EXPECT_EQ(std::count(strChunks.begin(), strChunks.end(), 'x'), 2000);
    }
}

TEST_F(CHttpServerStreams, SlowReaderHoldsUpNobodyAndGetsAll) {
    StartStreams();
    CRawClient slow = Open();
    CRawClient fast = Open();
    const std::string strPart(100000, 'p');
    for (int i = 0; i < 200; ++i) {
        m_source.Say(strPart);
    }
    m_source.Say("last");
    m_source.End();
    fast.ReadUntil("last");
    EXPECT_EQ(Get(GetUrl(), "/").iStatus, 200);
    const std::string strAll = slow.ReadUntil("last");
    EXPECT_EQ(std::count(strAll.begin(), strAll.end(), 'p'), 200 * 100000);
}

TEST_F(CHttpServerStreams, StreamOfAClientThatLeftIsDestroyed) {
    StartStreams();
    Open();
    Open();
    while (m_source.GetStreams() != 0) {
        m_source.Say("anyone?");
    }
}

TEST_F(CHttpServerStreams, StreamIsAskedNowAndThenWithoutAWake) {
    class CPatient : public IReplyStream {
    public:
        bool Read(std::string& strText) override {
            strText = ++m_iReads > 2 ? "still here" : "";
            return m_iReads <= 2;
        }
        void Listen(std::function<void()> /*wake*/) override {}

    private:
        int m_iReads = 0;
    };
    Start([](const CHttpRequest&, const std::shared_ptr<IReplyTo>& pReplyTo) {
        pReplyTo->Stream("text/plain", std::make_unique<CPatient>());
    });
    EXPECT_EQ(Get(GetUrl(), "/").strBody, "still here");
}

TEST_F(CHttpServerStreams, StreamMayBeSilentForLongerThanARequest) {
    CHttpLimits limits;
    limits.uiSeconds = 1;
    std::shared_ptr<IReplyTo> pUnanswered;
    Start(
        [&](const CHttpRequest& request, const std::shared_ptr<IReplyTo>& pReplyTo) {
            if (request.strPath == "/stream") {
                pReplyTo->Stream("text/plain", m_source.MakeStream());
            } else {
                pUnanswered = pReplyTo;
            }
        },
        limits);
    CRawClient client = Open();
    EXPECT_EQ(Get(GetUrl(), "/request").iStatus, 504);
    EXPECT_EQ(Get(GetUrl(), "/another").iStatus, 504);
    m_source.Say("still here");
    client.ReadUntil("still here");
}

TEST_F(CHttpServerStreams, HeadOfAStreamEndsAtItsHeaders) {
    StartStreams();
    CRawClient client(GetUrl());
    client.Send("HEAD /stream HTTP/1.1\r\nHost: " + client.GetHost() + "\r\n\r\n");
    EXPECT_EQ(client.Read(true).iStatus, 200);
    WaitForStreams(0);
    client.SendGet("/next");
    EXPECT_EQ(client.Read().strBody, "GET /next ");
}

TEST_F(CHttpServerStreams, StopEndsThem) {
    StartStreams();
    CRawClient quiet = Open();
    CRawClient behind = Open();
    m_source.Say(std::string(10000000, 'x'));
    m_pServer->Stop();
    EXPECT_EQ(m_source.GetStreams(), 0);
    quiet.ReadAll();
    m_source.Say("to nobody");
}

TEST_F(CHttpServerStreams, StreamForAClientThatLeftIsDestroyed) {
    Start(m_held.Handler());
    CRawClient client(GetUrl());
    client.SendGet("/");
    const auto held = m_held.Take(1);
    m_pServer->Stop();
    held[0].second->Stream("text/plain", m_source.MakeStream());
    EXPECT_EQ(m_source.GetStreams(), 0);
}

TEST_F(CHttpServerStreams, StopMeetsStreamsThatSpeakAndClientsThatComeAndGo) {
    for (int iRound = 0; iRound < 20; ++iRound) {
        StartStreams();
        std::atomic<bool> bEnd{false};
        std::thread speaker([&] {
            while (!bEnd) {
                m_source.Say("word ");
                std::this_thread::yield();
            }
        });
        std::vector<std::thread> listeners;
        for (int i = 0; i < 3; ++i) {
            listeners.emplace_back([&] {
                while (!bEnd) {
                    try {
                        Open().ReadUntil("word");
                    } catch (const std::runtime_error&) {
                        return;  // the server has stopped
                    }
                }
            });
        }
        while (m_source.GetStreams() == 0) {
            std::this_thread::yield();
        }
        m_pServer->Stop();
        EXPECT_EQ(m_source.GetStreams(), 0);
        bEnd = true;
        speaker.join();
        for (std::thread& listener : listeners) {
            listener.join();
        }
    }
}
