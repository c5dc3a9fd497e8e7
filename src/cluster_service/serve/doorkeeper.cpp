#include "serve/doorkeeper.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <iterator>
#include <utility>

namespace {

/// So long nobody is let in once somebody could not be.
constexpr int NUMERIC_PAUSE_MILLISECONDS = 250;

}  // namespace

CDoorkeeper::~CDoorkeeper() {
    if (m_thread.joinable()) {
        eventfd_write(m_end.Get(), 1);
        m_thread.join();
    }
}

bool CDoorkeeper::Start(CSocketHandle listener, std::string& strWhy) {
    m_listener = std::move(listener);
    m_end = CSocketHandle(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (m_end.Get() < 0) {
        strWhy = std::string("cannot make an event: ") + std::strerror(errno);
        return false;
    }
    m_thread = std::thread([this] { Run(); });
    return true;
}

void CDoorkeeper::StopListening() {
    shutdown(m_listener.Get(), SHUT_RDWR);
}

void CDoorkeeper::Run() {
    bool bPause = false;
    for (;;) {
        pollfd events[] = {{m_end.Get(), POLLIN, 0}, {bPause ? -1 : m_listener.Get(), POLLIN, 0}};
        poll(events, std::size(events), bPause ? NUMERIC_PAUSE_MILLISECONDS : -1);
        if (events[0].revents != 0) {
            return;
        }
        bPause = !bPause && !LetIn();
    }
}

bool CDoorkeeper::LetIn() {
    if (!m_duties.hasRoom()) {
        return false;
    }
    CSocketHandle client(accept4(m_listener.Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (client.Get() < 0) {
        return errno == EAGAIN || errno == EINTR || errno == ECONNABORTED;
    }
    m_duties.letIn(std::move(client));
    return true;
}
