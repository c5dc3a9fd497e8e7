#include "serve/http_connection.h"

#include <sys/socket.h>

#include <string>

#include "serve/service_error.h"

namespace {

std::string TooSlow() {
    const CHttpReply reply = ErrorReply(EServiceFault::TOO_SLOW, "");
    return "HTTP/1.1 " + std::to_string(reply.uiStatus) +
           " Request Timeout\r\nConnection: close\r\nContent-Type: " + reply.pszType +
           "\r\nContent-Length: " + std::to_string(reply.pBody->size()) + "\r\n\r\n" + *reply.pBody;
}

}  // namespace

void CHttpConnection::BeginRequest() {
    m_begun = Clock::now().time_since_epoch().count();
}

bool CHttpConnection::EndRequest() {
    return m_begun.exchange(NUMERIC_NONE) != NUMERIC_TOO_LATE;
}

void CHttpConnection::EndIfBegunBefore(Clock::time_point moment) {
    Clock::rep begun = m_begun;
    if (begun == NUMERIC_NONE || begun == NUMERIC_TOO_LATE ||
        begun >= moment.time_since_epoch().count() ||
        !m_begun.compare_exchange_strong(begun, NUMERIC_TOO_LATE)) {
        return;
    }
    // Nobody else writes to the socket until the request is here. A client that takes nothing does
    // not hear of it.
    const std::string strText = TooSlow();
    send(m_iSocket, strText.data(), strText.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    shutdown(m_iSocket, SHUT_RDWR);
}

CHttpConnection* CHttpConnections::Open(int iSocket) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    auto pConnection =
        std::make_unique<CHttpConnection>(iSocket, m_connections.size() >= m_uiAllowed);
    CHttpConnection* const pOpened = pConnection.get();
    m_connections.emplace(pOpened, std::move(pConnection));
    return pOpened;
}

void CHttpConnections::Close(CHttpConnection* pConnection) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_connections.erase(pConnection);
}

std::size_t CHttpConnections::GetNumber() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_connections.size();
}

void CHttpConnections::EndIfBegunBefore(CHttpConnection::Clock::time_point moment) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    for (const auto& [pConnection, pOwned] : m_connections) {
        pConnection->EndIfBegunBefore(moment);
    }
}
