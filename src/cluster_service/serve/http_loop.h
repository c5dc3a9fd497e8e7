#pragma once

#include <memory>
#include <string>

#include "serve/http_exchange.h"
#include "serve/socket_handle.h"

/// A thread that serves the connections that it is given, over a libmicrohttpd daemon that has no
/// thread of its own. Each turn handles all that is there: clients that were let in, answers that
/// have come, requests; then it sleeps until there is more. All that concerns a connection happens
/// on this one thread. The operations are for any thread.
class CHttpLoop {
public:
    /// The context outlives it.
    explicit CHttpLoop(CHttpContext& context);

    /// Ends, and waits for it.
    ~CHttpLoop();
    CHttpLoop(const CHttpLoop&) = delete;
    CHttpLoop& operator=(const CHttpLoop&) = delete;

    /// False with the reason.
    bool Start(std::string& strWhy);

    void LetIn(CSocketHandle client);

    /// Begins to end all connections. Answers that were given reach their clients first, if these
    /// take them within a second.
    void End();

private:
    class CImpl;
    std::unique_ptr<CImpl> m_pImpl;
};
