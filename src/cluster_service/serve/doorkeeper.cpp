#include "serve/doorkeeper.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <iterator>
#include <utility>

namespace {

using Clock = CHttpConnection::Clock;
constexpr int NUMERIC_LOOK_MILLISECONDS = 250;
constexpr int NUMERIC_AT_ONCE = 64;  ///< let in between two looks at the clock

}  // namespace

CDoorkeeper::CDoorkeeper(CHttpConnections& connections, CDuties duties)
    : m_connections(connections), m_duties(std::move(duties)) {}

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
    Clock::time_point round = Clock::now();
    Clock::time_point look = round;
    bool bPause = false;  // nobody can be let in until the next look
    for (;;) {
        pollfd events[] = {{m_end.Get(), POLLIN, 0}, {bPause ? -1 : m_listener.Get(), POLLIN, 0}};
        poll(events, std::size(events), NUMERIC_LOOK_MILLISECONDS);
        if (events[0].revents != 0) {
            return;
        }
        bPause = bPause || (events[1].revents != 0 && !LetIn());
        const Clock::time_point now = Clock::now();
        if (now - look >= std::chrono::milliseconds(NUMERIC_LOOK_MILLISECONDS)) {
            look = now;
            bPause = false;
            m_connections.EndIfBegunBefore(now - m_duties.patience);
        }
        if (now - round >= std::chrono::seconds(NUMERIC_ROUND_SECONDS)) {
            round = now;
            m_duties.round();
        }
    }
}

bool CDoorkeeper::LetIn() {
    for (int i = 0; i < NUMERIC_AT_ONCE; ++i) {
        if (m_connections.GetNumber() >= m_duties.uiMost) {
            return false;
        }
        CSocketHandle client(
            accept4(m_listener.Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (client.Get() < 0) {
            return errno == EAGAIN || errno == EINTR || errno == ECONNABORTED;
        }
        m_duties.letIn(std::move(client));
    }
    return true;
}
