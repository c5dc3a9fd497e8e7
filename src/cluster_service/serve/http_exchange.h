#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "serve/http.h"
#include "serve/http_answer.h"
#include "serve/http_server.h"
#include "serve/request_check.h"

/// What all loops of a server have in common; constant while it listens, but for the last two.
struct CHttpContext {
    /// Connections beyond those allowed, so that who comes too many can be told.
    static constexpr unsigned int NUMERIC_SPARE_CONNECTIONS = 100;

    HttpHandler handler;
    CHttpLimits limits;
    CHttpNews news;
    std::vector<std::string> hosts;  ///< that are ours
    std::atomic<std::size_t> uiConnections{0};
    std::atomic<bool> bClosing{false};  ///< the server is about to stop: nothing new is to begin
};

/// One request from its first line to its answer, on the connection's thread. A refused one is
/// answered when it is here whole, or its client would still be sending and not hear it.
class CHttpExchange {
public:
    using Clock = std::chrono::steady_clock;

    /// The context outlives it.
    CHttpExchange(const CHttpContext& context, std::shared_ptr<CLoopMail> pMail,
                  MHD_Connection* pConnection, bool bTooMany, const char* pszUrl);
    ~CHttpExchange() { m_pAnswer->End(); }
    CHttpExchange(const CHttpExchange&) = delete;
    CHttpExchange& operator=(const CHttpExchange&) = delete;

    /// libmicrohttpd has the head, then pieces of the body, then all, and comes again whenever the
    /// connection rested. False: the connection must end.
    bool Go(const char* pszMethod, const char* pData, std::size_t& uiBytes);

    /// To be called now and then: what takes too long to arrive or to be answered is told so.
    void Look(Clock::time_point now);

    /// Has an answer been given that is not sent yet, and is no stream?
    bool IsUnderWay() const { return m_pAnswer->IsUnderWay(); }

    /// Its connection rests no longer; the loop handles none any more.
    void EndRest();

private:
    enum class EPhase { HEAD, BODY, ASKED, TOO_LATE };

    /// False when the request is to be refused without waiting for its body.
    bool TakeHead(const char* pszMethod);
    bool TakeBody(const char* pData, std::size_t uiBytes);
    bool Ask();
    void Refuse(CRequestFault fault);
    void AnswerFault();
    void CallHandler();
    void ShowOut();

    const CHttpContext& m_context;
    MHD_Connection* const m_pConnection;
    const bool m_bTooMany;  ///< connections
    EPhase m_ePhase = EPhase::HEAD;
    Clock::time_point m_since = Clock::now();  ///< it arrives, or is to be answered
    bool m_bHead = false;                      ///< the header of the answer is all that is wanted
    CRequestHead m_head;
    CHttpRequest m_request;
    std::size_t m_uiBodyBytes = 0;
    std::optional<CRequestFault> m_fault;
    const std::shared_ptr<CHttpAnswer> m_pAnswer;
};
