#pragma once

#include <functional>
#include <string>
#include <thread>

#include "serve/socket_handle.h"

/// A thread that lets clients in, as long as there is room.
class CDoorkeeper {
public:
    struct CDuties {
        /// False: who comes waits outside.
        std::function<bool()> hasRoom;

        /// Takes over the socket of a client.
        std::function<void(CSocketHandle client)> letIn;
    };

    explicit CDoorkeeper(CDuties duties) : m_duties(std::move(duties)) {}
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

    const CDuties m_duties;
    CSocketHandle m_listener;
    CSocketHandle m_end;  ///< an event: the thread is to end
    std::thread m_thread;
};
