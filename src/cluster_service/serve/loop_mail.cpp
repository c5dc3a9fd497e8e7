#include "serve/loop_mail.h"

#include <microhttpd.h>
#include <poll.h>
#include <sys/eventfd.h>

#include <iterator>
#include <utility>

namespace {

using EState = CRest::EState;

}  // namespace

bool CLoopMail::Open() {
    m_event = CSocketHandle(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    return m_event.Get() >= 0;
}

void CLoopMail::Add(CClient client) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_contents.clients.push_back(std::move(client));
    WakeLocked();
}

void CLoopMail::Wake(CRest& rest) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    const EState eBefore = std::exchange(rest.eState, EState::WOKEN);
    if (eBefore == EState::RESTS) {
        m_contents.woken.push_back(rest.pConnection);
        WakeLocked();
    } else if (eBefore == EState::EXPECTS && m_uiExpected != 0 && --m_uiExpected == 0) {
        m_allCame.notify_one();
    }
}

void CLoopMail::Wake() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    WakeLocked();
}

bool CLoopMail::Expect(CRest& rest, MHD_Connection* pConnection) {
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (rest.eState == EState::AWAKE) {
            rest.eState = EState::EXPECTS;
            ++m_uiExpected;
            return true;
        }
    }
    return Rest(rest, pConnection);
}

bool CLoopMail::Rest(CRest& rest, MHD_Connection* pConnection) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (rest.eState == EState::WOKEN) {
        rest.eState = EState::AWAKE;
        return false;
    }
    rest = {EState::RESTS, pConnection};
    MHD_suspend_connection(pConnection);
    return true;
}

void CLoopMail::AwaitExpected(std::chrono::milliseconds most) {
    std::unique_lock<std::mutex> guard(m_mutex);
    m_allCame.wait_for(guard, most, [this] { return m_uiExpected == 0; });
    m_uiExpected = 0;  // who waits on rests in the next turn
}

void CLoopMail::Sleep(int iFile, std::chrono::milliseconds most) {
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_bNew) {
            return;
        }
        m_bAsleep = true;
    }
    pollfd events[] = {{m_event.Get(), POLLIN, 0}, {iFile, POLLIN, 0}};
    poll(events, std::size(events), static_cast<int>(most.count()));
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_bAsleep = false;
    if (events[0].revents != 0) {
        eventfd_t ullWakes = 0;
        eventfd_read(m_event.Get(), &ullWakes);
    }
}

CLoopMail::CContents CLoopMail::Take() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_bNew = false;
    return std::exchange(m_contents, {});
}

void CLoopMail::WakeLocked() {
    m_bNew = true;
    if (std::exchange(m_bAsleep, false)) {
        eventfd_write(m_event.Get(), 1);
    }
}
