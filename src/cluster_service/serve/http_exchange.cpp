#include "serve/http_exchange.h"

#include <microhttpd.h>
#include <strings.h>
#include <sys/socket.h>

#include <cstdlib>
#include <cstring>
#include <exception>
#include <utility>

namespace {

/// A body that is refused is read until it has so many times the allowed size; then its connection
/// ends.
constexpr std::size_t NUMERIC_READ_IN_VAIN = 4;

class CReplyTo : public IReplyTo {
public:
    explicit CReplyTo(std::shared_ptr<CHttpAnswer> pAnswer) : m_pAnswer(std::move(pAnswer)) {}
    ~CReplyTo() override { m_pAnswer->Fail(EServiceFault::NO_ANSWER); }
    CReplyTo(const CReplyTo&) = delete;
    CReplyTo& operator=(const CReplyTo&) = delete;

    void Send(CHttpReply reply) override { m_pAnswer->Send(std::move(reply)); }
    void Stream(const char* pszType, std::unique_ptr<IReplyStream> pStream) override {
        m_pAnswer->Stream(pszType, std::move(pStream));
    }

private:
    const std::shared_ptr<CHttpAnswer> m_pAnswer;
};

/// The header's text; null when there is none.
const char* HeaderOf(MHD_Connection* pConnection, const char* pszName) {
    return MHD_lookup_connection_value(pConnection, MHD_HEADER_KIND, pszName);
}

std::string HeaderText(MHD_Connection* pConnection, const char* pszName) {
    const char* pszValue = HeaderOf(pConnection, pszName);
    return pszValue != nullptr ? pszValue : "";
}

MHD_Result CountHeader(void* pHead, MHD_ValueKind /*eKind*/, const char* pszName,
                       std::size_t uiName, const char* /*pszValue*/, std::size_t uiValue) {
    auto& head = *static_cast<CRequestHead*>(pHead);
    head.uiHeaderBytes += uiName + uiValue;
    head.uiHosts += strcasecmp(pszName, MHD_HTTP_HEADER_HOST) == 0 ? 1 : 0;
    return MHD_YES;
}

MHD_Result TakeQuery(void* pQuery, MHD_ValueKind /*eKind*/, const char* pszName, std::size_t uiName,
                     const char* pszValue, std::size_t uiValue) {
    (*static_cast<std::map<std::string, std::string>*>(pQuery))[std::string(pszName, uiName)] =
        pszValue != nullptr ? std::string(pszValue, uiValue) : "";
    return MHD_YES;
}

void ReadHead(MHD_Connection* pConnection, CRequestHead& head) {
    MHD_get_connection_values_n(pConnection, MHD_HEADER_KIND, CountHeader, &head);
    head.strHost = HeaderText(pConnection, MHD_HTTP_HEADER_HOST);
    head.strContentType = HeaderText(pConnection, MHD_HTTP_HEADER_CONTENT_TYPE);
    if (const char* pszOrigin = HeaderOf(pConnection, MHD_HTTP_HEADER_ORIGIN)) {
        head.origin = pszOrigin;
    }
    if (const char* pszLength = HeaderOf(pConnection, MHD_HTTP_HEADER_CONTENT_LENGTH)) {
        head.ullBodyBytes = std::strtoull(pszLength, nullptr, 10);  // it is known to be a number
    }
    head.bBody = head.ullBodyBytes != 0 ||
                 HeaderOf(pConnection, MHD_HTTP_HEADER_TRANSFER_ENCODING) != nullptr;
}

std::string TooSlow() {
    const CHttpReply reply = ErrorReply(EServiceFault::TOO_SLOW, "");
    return "HTTP/1.1 " + std::to_string(reply.uiStatus) +
           " Request Timeout\r\nConnection: close\r\nContent-Type: " + reply.pszType +
           "\r\nContent-Length: " + std::to_string(reply.pBody->size()) + "\r\n\r\n" + *reply.pBody;
}

}  // namespace

CHttpExchange::CHttpExchange(const CHttpContext& context, std::shared_ptr<CLoopMail> pMail,
                             MHD_Connection* pConnection, bool bTooMany, const char* pszUrl)
    : m_context(context),
      m_pConnection(pConnection),
      m_bTooMany(bTooMany),
      m_pAnswer(std::make_shared<CHttpAnswer>(std::move(pMail))) {
    m_head.strUrl = pszUrl;
}

bool CHttpExchange::Go(const char* pszMethod, const char* pData, std::size_t& uiBytes) {
    switch (m_ePhase) {
        case EPhase::HEAD:
            m_ePhase = EPhase::BODY;
            return TakeHead(pszMethod) || Ask();
        case EPhase::BODY:
            return uiBytes != 0 ? TakeBody(pData, std::exchange(uiBytes, 0)) : Ask();
        case EPhase::ASKED:
            return m_pAnswer->Give(m_pConnection, m_bHead);
        case EPhase::TOO_LATE:
            return false;
    }
    return false;
}

void CHttpExchange::Look(Clock::time_point now) {
    const bool bLate = now - m_since >= std::chrono::seconds(m_context.limits.uiSeconds);
    if (m_ePhase == EPhase::ASKED) {
        m_pAnswer->LookAtStream();
        if (bLate) {
            m_pAnswer->Fail(EServiceFault::OUTCOME_UNKNOWN);
        }
    } else if (bLate && m_ePhase != EPhase::TOO_LATE) {
        ShowOut();
    }
}

void CHttpExchange::EndRest() {
    const auto* pInfo =
        MHD_get_connection_info(m_pConnection, MHD_CONNECTION_INFO_CONNECTION_SUSPENDED);
    if (pInfo->suspended != MHD_NO) {
        MHD_resume_connection(m_pConnection);
    }
}

/// A client that takes nothing does not hear why.
void CHttpExchange::ShowOut() {
    m_ePhase = EPhase::TOO_LATE;
    m_context.news.onRefused(NameOfFault(EServiceFault::TOO_SLOW));
    const std::string strText = TooSlow();
    const int iSocket =
        MHD_get_connection_info(m_pConnection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
    send(iSocket, strText.data(), strText.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    shutdown(iSocket, SHUT_RDWR);
}

bool CHttpExchange::TakeHead(const char* pszMethod) {
    ReadHead(m_pConnection, m_head);
    std::optional<CRequestFault> fault =
        m_bTooMany ? CRequestFault{EServiceFault::TOO_MANY_CONNECTIONS, ""}
                   : FindFault(m_head, m_context.hosts, m_context.limits.uiBodyBytes);
    if (fault.has_value()) {
        Refuse(std::move(*fault));
        const bool bAwaitsLeave = HeaderOf(m_pConnection, MHD_HTTP_HEADER_EXPECT) != nullptr;
        return !bAwaitsLeave &&
               m_head.ullBodyBytes / NUMERIC_READ_IN_VAIN <= m_context.limits.uiBodyBytes;
    }
    m_bHead = std::strcmp(pszMethod, MHD_HTTP_METHOD_HEAD) == 0;
    m_request.strMethod = m_bHead ? MHD_HTTP_METHOD_GET : pszMethod;
    m_request.strPath = m_head.strUrl.substr(0, m_head.strUrl.find('?'));
    MHD_get_connection_values_n(m_pConnection, MHD_GET_ARGUMENT_KIND, TakeQuery, &m_request.query);
    m_request.strIfNoneMatch = HeaderText(m_pConnection, MHD_HTTP_HEADER_IF_NONE_MATCH);
    m_request.strLastEventId = HeaderText(m_pConnection, MHD_HTTP_HEADER_LAST_EVENT_ID);
    return true;
}

bool CHttpExchange::TakeBody(const char* pData, std::size_t uiBytes) {
    const std::size_t uiAllowed = m_context.limits.uiBodyBytes;
    m_uiBodyBytes += uiBytes;
    if (!m_fault.has_value() && m_uiBodyBytes > uiAllowed) {
        Refuse(BodyTooLarge(uiAllowed));
        m_request = CHttpRequest();
    }
    if (!m_fault.has_value()) {
        m_request.strBody.append(pData, uiBytes);
    }
    return m_uiBodyBytes / NUMERIC_READ_IN_VAIN <= uiAllowed;
}

bool CHttpExchange::Ask() {
    m_ePhase = EPhase::ASKED;
    m_since = Clock::now();
    if (!m_fault.has_value() && m_context.bClosing) {
        Refuse({EServiceFault::STOPPING, ""});
    }
    if (m_fault.has_value()) {
        AnswerFault();
    } else {
        CallHandler();
    }
    return m_pAnswer->Give(m_pConnection, m_bHead);
}

void CHttpExchange::Refuse(CRequestFault fault) {
    m_context.news.onRefused(NameOfFault(fault.eFault));
    m_fault = std::move(fault);
}

void CHttpExchange::AnswerFault() {
    CHttpReply reply = ErrorReply(m_fault->eFault, m_fault->strAbout);
    if (m_bTooMany || m_context.bClosing) {
        reply.headers[MHD_HTTP_HEADER_CONNECTION] = "close";
    }
    m_pAnswer->Send(std::move(reply));
}

void CHttpExchange::CallHandler() {
    const auto pReplyTo = std::make_shared<CReplyTo>(m_pAnswer);
    try {
        m_context.handler(m_request, pReplyTo);
    } catch (const std::exception& exception) {
        pReplyTo->Send(ErrorReply(EServiceFault::NO_ANSWER, exception.what()));
    }
    m_request = CHttpRequest();
}
