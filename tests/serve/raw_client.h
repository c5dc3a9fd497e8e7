#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "serve/socket_handle.h"

/// What a server answered.
struct CRawReply {
    int iStatus = 0;
    std::map<std::string, std::string> headers;  ///< by name in small letters
    std::string strBody;

    /// The name of the error in the body; empty when there is none.
    std::string GetError() const;
};

/// A client's connection, byte by byte. Throws when the server keeps it waiting for half a minute.
class CRawClient {
public:
    /// To "http://127.0.0.1:PORT" or "http://[::1]:PORT".
    explicit CRawClient(const std::string& strUrl);

    /// HOST:PORT of the server.
    const std::string& GetHost() const { return m_strHost; }

    void Send(const std::string& strText);
    void SendGet(const std::string& strPath);
    void SendPost(const std::string& strPath, const std::string& strBody);

    /// The next whole reply; the body of a chunked one is joined.
    CRawReply Read(bool bHead = false);

    /// What comes until that text has come, it included.
    std::string ReadUntil(const std::string& strText);

    /// Waits for the server to end the connection: what came before.
    std::string ReadAll();

private:
    /// False when the server has ended the connection.
    bool Receive();
    void Need();
    std::string Take(std::size_t uiBytes);
    std::string ReadChunks();

    CSocketHandle m_socket;
    std::string m_strHost;
    std::string m_strUnread;
};

/// Does somebody listen there?
bool IsListening(const std::string& strUrl);

CRawReply Get(const std::string& strUrl, const std::string& strPath);
