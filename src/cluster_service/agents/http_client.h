#pragma once

#include <json/value.h>

#include <memory>
#include <string>

/// What a service answered.
struct CHttpAnswer {
    long lStatus = 0;  ///< 0: there is no answer, and strFault says why
    Json::Value json;
    std::string strFault;
};

/// Asks a service over one connection, which stays open between requests. Of one thread.
class CHttpClient {
public:
    /// The server as in "http://127.0.0.1:8390".
    explicit CHttpClient(std::string strServer);
    ~CHttpClient();
    CHttpClient(const CHttpClient&) = delete;
    CHttpClient& operator=(const CHttpClient&) = delete;

    /// A path that begins with "/", percent-encoded.
    CHttpAnswer Get(const std::string& strPath);
    CHttpAnswer Send(const char* pszMethod, const std::string& strPath);
    CHttpAnswer Send(const char* pszMethod, const std::string& strPath, const Json::Value& body);

    /// A name as a part of a path.
    static std::string Encoded(const std::string& strName);

private:
    class CImpl;
    std::unique_ptr<CImpl> m_pImpl;
};
