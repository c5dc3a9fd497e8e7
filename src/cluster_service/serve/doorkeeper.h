#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <thread>

#include "serve/http_connection.h"
#include "serve/socket_handle.h"

/// A thread that lets clients in, shows out those whose requests stall, and does what else is due
/// every few seconds.
class CDoorkeeper {
public:
    struct CDuties {
        /// Takes over the socket of a client.
        std::function<void(CSocketHandle client)> letIn;

        /// Called every NUMERIC_ROUND_SECONDS.
        std::function<void()> round;

        std::size_t uiMost = 0;  ///< connections: who comes then waits outside
        std::chrono::seconds patience{};
    };
    static constexpr int NUMERIC_ROUND_SECONDS = 5;

    /// The connections outlive it.
    CDoorkeeper(CHttpConnections& connections, CDuties duties);
    ~CDoorkeeper();
    CDoorkeeper(const CDoorkeeper&) = delete;
    CDoorkeeper& operator=(const CDoorkeeper&) = delete;

    /// False with the reason.
    bool Start(CSocketHandle listener, std::string& strWhy);

    /// From now on who connects is refused.
    void StopListening();

private:
    void Run();

    /// False when nobody can be let in for now.
    bool LetIn();

    CHttpConnections& m_connections;
    const CDuties m_duties;
    CSocketHandle m_listener;
    CSocketHandle m_end;  ///< an event: the thread is to end
    std::thread m_thread;
};
