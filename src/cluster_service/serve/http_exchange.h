#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "serve/http.h"
#include "serve/http_answer.h"
#include "serve/http_connection.h"
#include "serve/http_server.h"
#include "serve/request_check.h"

/// What all requests to a server have in common; constant while it listens.
struct CHttpContext {
    HttpHandler handler;
    CHttpLimits limits;
    std::vector<std::string> hosts;  ///< that are ours
    std::shared_ptr<CRestingPlace> pPlace = std::make_shared<CRestingPlace>();
};

/// One request from its first line to its answer, on the connection's thread. A refused one is
/// answered when it is here whole, or its client would still be sending and not hear it.
class CHttpExchange {
public:
    /// Both outlive it.
    CHttpExchange(const CHttpContext& context, CHttpConnection& connection, const char* pszUrl);
    ~CHttpExchange() { m_pAnswer->End(); }
    CHttpExchange(const CHttpExchange&) = delete;
    CHttpExchange& operator=(const CHttpExchange&) = delete;

    /// libmicrohttpd has the head, then pieces of the body, then all, and comes again whenever the
    /// connection rested. False: the connection must end.
    bool Go(MHD_Connection* pConnection, const char* pszMethod, const char* pData,
            std::size_t& uiBytes);

private:
    enum class EPhase { HEAD, BODY, ASKED };

    /// False when the request is to be refused without waiting for its body.
    bool TakeHead(MHD_Connection* pConnection, const char* pszMethod);
    bool TakeBody(const char* pData, std::size_t uiBytes);
    bool Ask(MHD_Connection* pConnection);
    void Refuse();
    void CallHandler();

    const CHttpContext& m_context;
    CHttpConnection& m_connection;
    EPhase m_ePhase = EPhase::HEAD;
    bool m_bHead = false;  ///< the header of the answer is all that is wanted
    CRequestHead m_head;
    CHttpRequest m_request;
    std::size_t m_uiBodyBytes = 0;
    std::optional<CRequestFault> m_fault;
    const std::shared_ptr<CHttpAnswer> m_pAnswer;
};
