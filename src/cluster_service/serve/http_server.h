#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "serve/http.h"

/// Where a service listens, and what it allows.
struct CHttpLimits {
    std::size_t uiBodyBytes = 16U << 20U;
    unsigned int uiConnections = 2000;  ///< who comes as one more is told so, and leaves

    /// A connection that neither sends nor takes for so long ends, and so does one whose request
    /// takes so long to arrive from its first line on; that line may take twice as long. A request
    /// that has no answer after that time gets an error: nobody waits for ever for a handler.
    unsigned int uiSeconds = 30;
};

/// What a server tells of itself, on its threads.
struct CHttpNews {
    /// Requests may have come, and all that have are with the handler: after each turn of a loop.
    std::function<void()> onAsked = [] {};

    /// A request was refused before any handler, with the error of that name.
    std::function<void(const char* pszName)> onRefused = [](const char*) {};
};

/// HTTP/1.1 on one loopback address, over libmicrohttpd in loops of our own. What is too large or
/// too slow, names another host than ours, comes from another site's page or brings a body that is
/// not application/json is answered here, with a named error, and reaches no handler. What is no
/// HTTP, and a header that runs over the connection's memory, gets a bare status and the connection
/// ends. All operations are for the thread that owns it.
class CHttpServer {
public:
    explicit CHttpServer(HttpHandler handler, CHttpLimits limits = {}, CHttpNews news = {});
    ~CHttpServer();
    CHttpServer(const CHttpServer&) = delete;
    CHttpServer& operator=(const CHttpServer&) = delete;

    /// Binds and listens: strListen is HOST:PORT, HOST a loopback address or "localhost", PORT 0
    /// for a free one. False with the reason.
    bool Start(const std::string& strListen, std::string& strWhy);

    /// As in "http://127.0.0.1:8390", once it listens.
    std::string GetUrl() const;

    /// Takes no new connection from now on; those that are there are answered on.
    void StopListening();

    /// Ends all connections, and returns when no handler or stream is running. Replies that were
    /// given before reach their clients, if these take them within a second; those that come later
    /// go nowhere.
    void Stop();

private:
    class CImpl;
    std::unique_ptr<CImpl> m_pImpl;
};
