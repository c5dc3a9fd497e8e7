#include "serve/raw_client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "cluster_engine/json_fields.h"

namespace {

constexpr int NUMERIC_WAIT_MILLISECONDS = 30000;
constexpr char PSZ_SCHEME[] = "http://";
constexpr char PSZ_LINE_END[] = "\r\n";

[[noreturn]] void Fail(const std::string& strWhat) {
    throw std::runtime_error(strWhat + ": " + std::strerror(errno));
}

CSocketHandle Connect(const std::string& strUrl) {
    const std::size_t uiColon = strUrl.rfind(':');
    const auto uiPort = htons(static_cast<uint16_t>(std::stoul(strUrl.substr(uiColon + 1))));
    const std::size_t uiHost = std::strlen(PSZ_SCHEME);
    const std::string strHost = strUrl.substr(uiHost, uiColon - uiHost);
    const bool b6 = strHost.front() == '[';
    CSocketHandle handle(socket(b6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address4{};
    address4.sin_family = AF_INET;
    address4.sin_port = uiPort;
    inet_pton(AF_INET, strHost == "localhost" ? "127.0.0.1" : strHost.c_str(), &address4.sin_addr);
    sockaddr_in6 address6{};
    address6.sin6_family = AF_INET6;
    address6.sin6_port = uiPort;
    address6.sin6_addr = in6addr_loopback;
    const int iDone =
        b6 ? connect(handle.Get(), reinterpret_cast<sockaddr*>(&address6), sizeof address6)
           : connect(handle.Get(), reinterpret_cast<sockaddr*>(&address4), sizeof address4);
    return iDone == 0 ? std::move(handle) : CSocketHandle();
}

std::string Lower(std::string strText) {
    std::transform(strText.begin(), strText.end(), strText.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return strText;
}

CRawReply ParseHead(const std::string& strHead) {
    CRawReply reply;
    reply.iStatus = std::stoi(strHead.substr(strHead.find(' ') + 1));
    std::size_t uiLine = strHead.find(PSZ_LINE_END) + 2;
    while (uiLine + 2 < strHead.size()) {
        const std::size_t uiEnd = strHead.find(PSZ_LINE_END, uiLine);
        const std::size_t uiColon = strHead.find(": ", uiLine);
        reply.headers[Lower(strHead.substr(uiLine, uiColon - uiLine))] =
            strHead.substr(uiColon + 2, uiEnd - uiColon - 2);
        uiLine = uiEnd + 2;
    }
    return reply;
}

}  // namespace

std::string CRawReply::GetError() const {
    Json::Value json;
    CFieldFault fault;
    if (!ParseJsonText(strBody.data(), strBody.data() + strBody.size(), json, fault) ||
        !json.isObject() || !json["error"].isObject()) {
        return "";
    }
    return json["error"]["name"].asString();
}

CRawClient::CRawClient(const std::string& strUrl)
    : m_socket(Connect(strUrl)), m_strHost(strUrl.substr(std::strlen(PSZ_SCHEME))) {
    if (m_socket.Get() < 0) {
        Fail("cannot connect to " + strUrl);
    }
}

void CRawClient::Send(const std::string& strText) {
    std::size_t uiSent = 0;
    while (uiSent < strText.size()) {
        const ssize_t iSent =
            send(m_socket.Get(), strText.data() + uiSent, strText.size() - uiSent, MSG_NOSIGNAL);
        if (iSent < 0) {
            Fail("cannot send");
        }
        uiSent += static_cast<std::size_t>(iSent);
    }
}

void CRawClient::SendGet(const std::string& strPath) {
    Send("GET " + strPath + " HTTP/1.1\r\nHost: " + m_strHost + "\r\n\r\n");
}

void CRawClient::SendPost(const std::string& strPath, const std::string& strBody) {
    Send("POST " + strPath + " HTTP/1.1\r\nHost: " + m_strHost +
         "\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(strBody.size()) +
         "\r\n\r\n" + strBody);
}

bool CRawClient::Receive() {
    pollfd event{m_socket.Get(), POLLIN, 0};
    if (poll(&event, 1, NUMERIC_WAIT_MILLISECONDS) <= 0) {
        throw std::runtime_error("the server keeps silent behind: " + m_strUnread);
    }
    std::array<char, 65536> buffer{};
    const ssize_t iRead = recv(m_socket.Get(), buffer.data(), buffer.size(), 0);
    if (iRead <= 0) {
        return false;
    }
    m_strUnread.append(buffer.data(), static_cast<std::size_t>(iRead));
    return true;
}

void CRawClient::Need() {
    if (!Receive()) {
        throw std::runtime_error("the connection ended behind: " + m_strUnread);
    }
}

std::string CRawClient::Take(std::size_t uiBytes) {
    while (m_strUnread.size() < uiBytes) {
        Need();
    }
    std::string strTaken = m_strUnread.substr(0, uiBytes);
    m_strUnread.erase(0, uiBytes);
    return strTaken;
}

std::string CRawClient::ReadUntil(const std::string& strText) {
    for (;;) {
        const std::size_t uiFound = m_strUnread.find(strText);
        if (uiFound != std::string::npos) {
            return Take(uiFound + strText.size());
        }
        Need();
    }
}

std::string CRawClient::ReadAll() {
    while (Receive()) {
    }
    return std::exchange(m_strUnread, "");
}

std::string CRawClient::ReadChunks() {
    std::string strBody;
    for (;;) {
        const std::size_t uiBytes = std::stoul(ReadUntil(PSZ_LINE_END), nullptr, 16);
        strBody += Take(uiBytes);
        Take(std::strlen(PSZ_LINE_END));
        if (uiBytes == 0) {
            return strBody;
        }
    }
}

CRawReply CRawClient::Read(bool bHead) {
    CRawReply reply = ParseHead(ReadUntil("\r\n\r\n"));
    if (bHead) {
        return reply;
    }
    const auto itLength = reply.headers.find("content-length");
    reply.strBody =
        itLength != reply.headers.end() ? Take(std::stoul(itLength->second)) : ReadChunks();
    return reply;
}

bool IsListening(const std::string& strUrl) {
    return Connect(strUrl).Get() >= 0;
}

CRawReply Get(const std::string& strUrl, const std::string& strPath) {
    CRawClient client(strUrl);
    client.SendGet(strPath);
    return client.Read();
}
