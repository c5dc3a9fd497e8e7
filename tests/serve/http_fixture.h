#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "serve/http_server.h"
#include "serve/raw_client.h"

using HeldRequests = std::vector<std::pair<CHttpRequest, std::shared_ptr<IReplyTo>>>;

/// Requests whose answers a test gives itself, on whatever thread it likes.
class CHeldRequests {
public:
    HttpHandler Handler() {
        return [this](const CHttpRequest& request, std::shared_ptr<IReplyTo> pReplyTo) {
            const std::lock_guard<std::mutex> guard(m_mutex);
            m_held.emplace_back(request, std::move(pReplyTo));
            m_more.notify_all();
        };
    }

    /// Waits until that many are held, in the order in which they came.
    HeldRequests Take(std::size_t uiNumber) {
        std::unique_lock<std::mutex> guard(m_mutex);
        if (!m_more.wait_for(guard, std::chrono::seconds(30),
                             [&] { return m_held.size() >= uiNumber; })) {
            ADD_FAILURE() << m_held.size() << " requests instead of " << uiNumber;
        }
        return std::exchange(m_held, {});
    }

    /// Those that are held by now.
    HeldRequests TakeAll() {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return std::exchange(m_held, {});
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_more;
    HeldRequests m_held;
};

/// A server on a free port.
class CHttpServerTest : public testing::Test {
protected:
    void Start(HttpHandler handler, CHttpLimits limits = {}, CHttpNews news = {}) {
        m_pServer = std::make_unique<CHttpServer>(std::move(handler), limits, std::move(news));
        std::string strWhy;
        ASSERT_TRUE(m_pServer->Start("127.0.0.1:0", strWhy)) << strWhy;
    }

    /// What streams read from goes after the server.
    void TearDown() override { m_pServer.reset(); }

    std::string GetUrl() const { return m_pServer->GetUrl(); }

    CHeldRequests m_held;
    std::unique_ptr<CHttpServer> m_pServer;
};

/// Answers each request with what it was.
inline void Echo(const CHttpRequest& request, const std::shared_ptr<IReplyTo>& pReplyTo) {
    std::string strText = request.strMethod + ' ' + request.strPath;
    for (const auto& [strName, strValue] : request.query) {
        strText += " [" + strName + '=' + strValue + ']';
    }
    pReplyTo->Send({200, strText + ' ' + request.strBody});
}
