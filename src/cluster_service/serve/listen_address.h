#pragma once

#include <sys/socket.h>

#include <cstdint>
#include <string>
#include <vector>

#include "serve/socket_handle.h"

/// A loopback address to listen on.
class CListenAddress {
public:
    /// HOST:PORT, HOST an address of 127.0.0.0/8, [::1] or localhost. False with the reason.
    bool Parse(const std::string& strListen, std::string& strWhy);

    /// A socket that listens there; port 0 has become a free one then. An empty one with the
    /// reason.
    CSocketHandle Listen(std::string& strWhy);

    /// As in "127.0.0.1:8390".
    std::string GetText() const { return m_strHost + ':' + std::to_string(m_uiPort); }

    /// What the Host of a request to this address may be.
    std::vector<std::string> GetHosts() const;

private:
    bool ParseHost(const std::string& strHost);

    std::string m_strHost;
    uint16_t m_uiPort = 0;
    sockaddr_storage m_address{};
    socklen_t m_uiAddressBytes = 0;
};
