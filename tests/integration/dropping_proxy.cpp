#include "dropping_proxy.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <list>
#include <memory>
#include <stdexcept>

namespace {

constexpr std::uint32_t OPERATION_MULTI = 14;
constexpr int POLL_MS = 5;

sockaddr_in Loopback(int iPort) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(iPort));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

std::uint32_t NumberAt(const std::string& strBytes, std::size_t position) {
    std::uint32_t uiNumber = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        uiNumber = uiNumber << 8U | static_cast<unsigned char>(strBytes[position + i]);
    }
    return uiNumber;
}

bool SendAll(int iSocket, const std::string& strBytes) {
    for (std::size_t sent = 0; sent < strBytes.size();) {
        const ssize_t lSent =
            send(iSocket, strBytes.data() + sent, strBytes.size() - sent, MSG_NOSIGNAL);
        if (lSent <= 0) {
            return false;
        }
        sent += static_cast<std::size_t>(lSent);
    }
    return true;
}

/// False at the end of the connection.
bool Receive(int iSocket, std::string& strBytes) {
    std::array<char, 65536> buffer{};
    const ssize_t lLength = recv(iSocket, buffer.data(), buffer.size(), 0);
    if (lLength <= 0) {
        return false;
    }
    strBytes.append(buffer.data(), static_cast<std::size_t>(lLength));
    return true;
}

bool IsReadable(int iSocket) {
    pollfd entry{iSocket, POLLIN, 0};
    return poll(&entry, 1, 0) > 0;
}

/// Cuts the first request off, once it is whole: its length and so many bytes.
bool TakeFrame(std::string& strBytes, std::string& strFrame) {
    if (strBytes.size() < 4 || strBytes.size() < 4 + NumberAt(strBytes, 0)) {
        return false;
    }
    strFrame = strBytes.substr(0, 4 + NumberAt(strBytes, 0));
    strBytes.erase(0, strFrame.size());
    return true;
}

}  // namespace

/// One client, and the connection to the server that it believes to have.
class CDroppingProxy::CConnection {
public:
    CConnection(CDroppingProxy& owner, int iClient)
        : m_owner(owner), m_iClient(iClient), m_iServer(socket(AF_INET, SOCK_STREAM, 0)) {
        const sockaddr_in address = Loopback(owner.m_iServerPort);
        m_bAlive =
            connect(m_iServer, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    }
    ~CConnection() {
        close(m_iClient);
        close(m_iServer);
    }
    CConnection(const CConnection&) = delete;
    CConnection& operator=(const CConnection&) = delete;

    /// False when the connection is over.
    bool Pump() {
        if (m_bAlive && IsReadable(m_iServer)) {
            PumpAnswers();
        }
        if (m_bAlive && !m_bHolds && IsReadable(m_iClient)) {
            m_bAlive = Receive(m_iClient, m_strRequests);
            for (std::string strFrame; m_bAlive && TakeFrame(m_strRequests, strFrame);) {
                m_bAlive = PassRequest(strFrame);
            }
        }
        return m_bAlive;
    }

private:
    void PumpAnswers() {
        std::string strAnswers;
        m_bAlive = Receive(m_iServer, strAnswers);
        if (m_bAlive && m_bLosesAnswer) {
            m_bAlive = false;
            m_owner.m_onAnswerLost();
        } else if (m_bAlive) {
            m_bAlive = SendAll(m_iClient, strAnswers);
        }
    }

    bool PassRequest(const std::string& strFrame) {
        const bool bFirst = !m_bGreeted;  // it has another form
        m_bGreeted = true;
        if (bFirst || strFrame.size() < 12 || NumberAt(strFrame, 8) != OPERATION_MULTI) {
            return SendAll(m_iServer, strFrame);
        }
        ++m_owner.m_iCommits;
        switch (m_owner.m_eAtCommit.exchange(EAtCommit::PASS)) {
            case EAtCommit::LOSE_REQUEST:
                return false;
            case EAtCommit::HOLD:
                m_bHolds = true;
                return true;
            case EAtCommit::LOSE_ANSWER:
                m_bLosesAnswer = true;
                break;
            case EAtCommit::PASS:
                break;
        }
        return SendAll(m_iServer, strFrame);
    }

    CDroppingProxy& m_owner;
    const int m_iClient;
    const int m_iServer;
    bool m_bAlive = false;
    bool m_bGreeted = false;
    bool m_bLosesAnswer = false;
    bool m_bHolds = false;
    std::string m_strRequests;
};

CDroppingProxy::CDroppingProxy(const std::string& strServer)
    : m_iServerPort(std::stoi(strServer.substr(strServer.rfind(':') + 1))),
      m_iListener(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address = Loopback(0);
    socklen_t length = sizeof(address);
    auto* const pAddress = reinterpret_cast<sockaddr*>(&address);
    if (bind(m_iListener, pAddress, length) != 0 || listen(m_iListener, 16) != 0 ||
        getsockname(m_iListener, pAddress, &length) != 0) {
        throw std::runtime_error("no port for the proxy");
    }
    m_iPort = ntohs(address.sin_port);
    m_thread = std::thread([this] { Run(); });
}

CDroppingProxy::~CDroppingProxy() {
    m_bStopping = true;
    m_thread.join();
    close(m_iListener);
}

std::string CDroppingProxy::Address() const {
    return "127.0.0.1:" + std::to_string(m_iPort);
}

void CDroppingProxy::Run() {
    std::list<std::unique_ptr<CConnection>> connections;
    while (!m_bStopping) {
        if (IsReadable(m_iListener)) {
            connections.push_back(
                std::make_unique<CConnection>(*this, accept(m_iListener, nullptr, nullptr)));
        }
        connections.remove_if([](const auto& pConnection) { return !pConnection->Pump(); });
        poll(nullptr, 0, POLL_MS);
    }
}
