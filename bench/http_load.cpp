#include "http_load.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <stdexcept>

namespace {

constexpr char GOOD[] = "HTTP/1.1 200";
constexpr char HEAD_END[] = "\r\n\r\n";
constexpr char LENGTH[] = "\r\nContent-Length: ";

int Connect(uint16_t uiPort) {
    const int iSocket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(uiPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(iSocket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("a server does not take a connection");
    }
    const int iOn = 1;
    setsockopt(iSocket, IPPROTO_TCP, TCP_NODELAY, &iOn, sizeof iOn);
    return iSocket;
}

/// The bytes of the answer that begins the text; 0 while its head is not whole.
std::size_t AnswerBytes(const std::string& strText) {
    const std::size_t uiHead = strText.find(HEAD_END);
    const std::size_t uiLength = strText.find(LENGTH);
    if (uiHead == std::string::npos || uiLength > uiHead) {
        return 0;
    }
    return uiHead + sizeof HEAD_END - 1 +
           std::strtoul(strText.c_str() + uiLength + sizeof LENGTH - 1, nullptr, 10);
}

}  // namespace

double CHttpLoadResult::GetNanosecondsPerAnswer() const {
    return static_cast<double>(took.count()) / static_cast<double>(waits.size());
}

double CHttpLoadResult::Get99thPercentile() const {
    std::vector<std::chrono::nanoseconds> sorted = waits;
    const auto it = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() * 99 / 100);
    std::nth_element(sorted.begin(), it, sorted.end());
    return static_cast<double>(it->count());
}

CHttpLoad::CHttpLoad(uint16_t uiPort, std::size_t uiConnections)
    : m_uiPort(uiPort), m_iPoll(epoll_create1(EPOLL_CLOEXEC)), m_connections(uiConnections) {
    for (std::size_t ui = 0; ui < uiConnections; ++ui) {
        m_connections[ui].iSocket = Connect(uiPort);
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.u64 = ui;
        epoll_ctl(m_iPoll, EPOLL_CTL_ADD, m_connections[ui].iSocket, &event);
    }
}

CHttpLoad::~CHttpLoad() {
    for (const CConnection& connection : m_connections) {
        close(connection.iSocket);
    }
    close(m_iPoll);
}

std::string CHttpLoad::MakePost(const std::string& strPath, const std::string& strBody) const {
    return "POST " + strPath + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(m_uiPort) +
           "\r\nContent-Type: application/json\r\nContent-Length: " +
           std::to_string(strBody.size()) + HEAD_END + strBody;
}

CHttpLoadResult CHttpLoad::Run(const NextRequest& next) {
    CHttpLoadResult result;
    const Clock::time_point begun = Clock::now();
    std::size_t uiAsking = 0;
    for (std::size_t ui = 0; ui < m_connections.size(); ++ui) {
        uiAsking += Ask(ui, next) ? 1 : 0;
    }
    std::array<epoll_event, 256> events{};
    while (uiAsking != 0) {
        const int iEvents = epoll_wait(m_iPoll, events.data(), events.size(), -1);
        for (int i = 0; i < iEvents; ++i) {
            const std::size_t uiConnection = events[static_cast<std::size_t>(i)].data.u64;
            CConnection& connection = m_connections[uiConnection];
            if (!Read(connection)) {
                continue;
            }
            result.waits.push_back(Clock::now() - connection.asked);
            uiAsking -= Ask(uiConnection, next) ? 0 : 1;
        }
    }
    result.took = Clock::now() - begun;
    return result;
}

/// False when the connection has had its share.
bool CHttpLoad::Ask(std::size_t uiConnection, const NextRequest& next) {
    const std::string strRequest = next(uiConnection);
    if (strRequest.empty()) {
        return false;
    }
    CConnection& connection = m_connections[uiConnection];
    connection.asked = Clock::now();
    const auto iSent = send(connection.iSocket, strRequest.data(), strRequest.size(), MSG_NOSIGNAL);
    if (iSent != static_cast<ssize_t>(strRequest.size())) {
        throw std::runtime_error("a server does not take a request");
    }
    return true;
}

/// True when the answer is whole.
bool CHttpLoad::Read(CConnection& connection) const {
    std::array<char, 65536> buffer;
    const auto iRead = recv(connection.iSocket, buffer.data(), buffer.size(), 0);
    connection.strRead.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(iRead, 0)));
    const std::size_t uiBytes = AnswerBytes(connection.strRead);
    if (iRead <= 0) {
        throw std::runtime_error("a server closed a connection");
    }
    if (connection.strRead.compare(0, sizeof GOOD - 1, GOOD) != 0) {
        throw std::runtime_error("a server answered: " + connection.strRead);
    }
    if (uiBytes == 0 || connection.strRead.size() < uiBytes) {
        return false;
    }
    connection.strRead.clear();
    return true;
}
