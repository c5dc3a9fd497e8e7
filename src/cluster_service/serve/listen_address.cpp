#include "serve/listen_address.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>

namespace {

constexpr char PSZ_LOCALHOST[] = "localhost";
constexpr char PSZ_LOOPBACK[] = "127.0.0.1";
constexpr char PSZ_LOOPBACK_6[] = "[::1]";
constexpr uint16_t NUMERIC_HTTP_PORT = 80;
constexpr int NUMERIC_BACKLOG = 1024;

bool ParsePort(const std::string& strPort, uint16_t& uiPort) {
    const char* pszEnd = strPort.data() + strPort.size();
    const auto [pszRead, eError] = std::from_chars(strPort.data(), pszEnd, uiPort);
    return eError == std::errc() && pszRead == pszEnd;
}

}  // namespace

bool CListenAddress::Parse(const std::string& strListen, std::string& strWhy) {
    const std::size_t uiColon = strListen.rfind(':');
    if (uiColon == std::string::npos || !ParsePort(strListen.substr(uiColon + 1), m_uiPort)) {
        strWhy = strListen + " is not HOST:PORT";
        return false;
    }
    m_strHost = strListen.substr(0, uiColon);
    if (!ParseHost(m_strHost)) {
        strWhy = m_strHost +
                 " is not an address of this machine alone: whoever reaches the service may change "
                 "the cluster, so it listens on 127.0.0.0/8, [::1] or localhost only";
        return false;
    }
    return true;
}

bool CListenAddress::ParseHost(const std::string& strHost) {
    auto& address4 = reinterpret_cast<sockaddr_in&>(m_address);
    const std::string strAddress = strHost == PSZ_LOCALHOST ? PSZ_LOOPBACK : strHost;
    if (inet_pton(AF_INET, strAddress.c_str(), &address4.sin_addr) == 1) {
        address4.sin_family = AF_INET;
        address4.sin_port = htons(m_uiPort);
        m_uiAddressBytes = sizeof address4;
        return ntohl(address4.sin_addr.s_addr) >> 24U == IN_LOOPBACKNET;
    }
    if (strHost != PSZ_LOOPBACK_6) {
        return false;
    }
    auto& address6 = reinterpret_cast<sockaddr_in6&>(m_address);
    address6.sin6_family = AF_INET6;
    address6.sin6_port = htons(m_uiPort);
    address6.sin6_addr = in6addr_loopback;
    m_uiAddressBytes = sizeof address6;
    return true;
}

CSocketHandle CListenAddress::Listen(std::string& strWhy) {
    CSocketHandle handle(
        socket(m_address.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const int iOn = 1;
    auto* pAddress = reinterpret_cast<sockaddr*>(&m_address);
    // A port on which connections of a service before still linger is free.
    if (handle.Get() < 0 ||
        setsockopt(handle.Get(), SOL_SOCKET, SO_REUSEADDR, &iOn, sizeof iOn) != 0 ||
        bind(handle.Get(), pAddress, m_uiAddressBytes) != 0 ||
        listen(handle.Get(), NUMERIC_BACKLOG) != 0 ||
        getsockname(handle.Get(), pAddress, &m_uiAddressBytes) != 0) {
        strWhy = "cannot listen on " + GetText() + ": " + std::strerror(errno);
        return CSocketHandle();
    }
    // The port lies at the same place in both kinds of address.
    m_uiPort = ntohs(reinterpret_cast<const sockaddr_in&>(m_address).sin_port);
    return handle;
}

std::vector<std::string> CListenAddress::GetHosts() const {
    std::vector<std::string> hosts{PSZ_LOOPBACK, PSZ_LOCALHOST, PSZ_LOOPBACK_6};
    if (std::find(hosts.begin(), hosts.end(), m_strHost) == hosts.end()) {
        hosts.push_back(m_strHost);
    }
    const std::size_t uiHosts = hosts.size();
    for (std::size_t ui = 0; ui < uiHosts; ++ui) {
        const std::string strHost = hosts[ui];
        hosts[ui] += ':' + std::to_string(m_uiPort);
        if (m_uiPort == NUMERIC_HTTP_PORT) {
            hosts.push_back(strHost);
        }
    }
    return hosts;
}
