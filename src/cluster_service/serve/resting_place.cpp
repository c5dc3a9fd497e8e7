#include "serve/resting_place.h"

#include <microhttpd.h>

#include <thread>

ERest CRestingPlace::Rest(CRest& rest, MHD_Connection* pConnection) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_bClosed) {
        return ERest::CLOSED;
    }
    if (rest.bWoken) {
        rest.bWoken = false;
        return ERest::AWAKE;
    }
    rest.pConnection = pConnection;
    m_resting.insert(&rest);
    MHD_suspend_connection(pConnection);
    return ERest::RESTS;
}

void CRestingPlace::Wake(CRest& rest) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    rest.bWoken = true;
    if (m_resting.erase(&rest) != 0) {
        MHD_resume_connection(rest.pConnection);
    }
}

void CRestingPlace::WakeAll() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    ResumeAllLocked();
}

void CRestingPlace::AwaitArrivals(std::chrono::milliseconds most) {
    m_bClosing = true;
    const auto deadline = std::chrono::steady_clock::now() + most;
    while (m_iUnderWay > 0 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void CRestingPlace::Close() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_bClosed = true;
    ResumeAllLocked();
}

void CRestingPlace::ResumeAllLocked() {
    for (const CRest* pRest : m_resting) {
        MHD_resume_connection(pRest->pConnection);
    }
    m_resting.clear();
}
