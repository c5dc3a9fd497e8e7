#include "serve/http_exchange.h"

#include <microhttpd.h>
#include <strings.h>

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
    ~CReplyTo() override { m_pAnswer->Abandon(); }
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

}  // namespace

CHttpExchange::CHttpExchange(const CHttpContext& context, CHttpConnection& connection,
                             const char* pszUrl)
    : m_context(context),
      m_connection(connection),
      m_pAnswer(std::make_shared<CHttpAnswer>(context.pPlace)) {
    m_head.strUrl = pszUrl;
    m_connection.BeginRequest();
}

bool CHttpExchange::Go(MHD_Connection* pConnection, const char* pszMethod, const char* pData,
                       std::size_t& uiBytes) {
    if (m_ePhase == EPhase::HEAD) {
        m_ePhase = EPhase::BODY;
        return TakeHead(pConnection, pszMethod) || Ask(pConnection);
    }
    if (uiBytes != 0) {
        const bool bGoOn = TakeBody(pData, uiBytes);
        uiBytes = 0;
        return bGoOn;
    }
    return m_ePhase == EPhase::BODY ? Ask(pConnection) : m_pAnswer->Give(pConnection, m_bHead);
}

bool CHttpExchange::TakeHead(MHD_Connection* pConnection, const char* pszMethod) {
    ReadHead(pConnection, m_head);
    m_fault = m_connection.IsTooMany()
                  ? CRequestFault{EServiceFault::TOO_MANY_CONNECTIONS, ""}
                  : FindFault(m_head, m_context.hosts, m_context.limits.uiBodyBytes);
    if (m_fault.has_value()) {
        const bool bAwaitsLeave = HeaderOf(pConnection, MHD_HTTP_HEADER_EXPECT) != nullptr;
        return !bAwaitsLeave &&
               m_head.ullBodyBytes / NUMERIC_READ_IN_VAIN <= m_context.limits.uiBodyBytes;
    }
    m_bHead = std::strcmp(pszMethod, MHD_HTTP_METHOD_HEAD) == 0;
    m_request.strMethod = m_bHead ? MHD_HTTP_METHOD_GET : pszMethod;
    m_request.strPath = m_head.strUrl.substr(0, m_head.strUrl.find('?'));
    MHD_get_connection_values_n(pConnection, MHD_GET_ARGUMENT_KIND, TakeQuery, &m_request.query);
    m_request.strIfNoneMatch = HeaderText(pConnection, MHD_HTTP_HEADER_IF_NONE_MATCH);
    m_request.strLastEventId = HeaderText(pConnection, MHD_HTTP_HEADER_LAST_EVENT_ID);
    return true;
}

bool CHttpExchange::TakeBody(const char* pData, std::size_t uiBytes) {
    const std::size_t uiAllowed = m_context.limits.uiBodyBytes;
    m_uiBodyBytes += uiBytes;
    if (!m_fault.has_value() && m_uiBodyBytes > uiAllowed) {
        m_fault = BodyTooLarge(uiAllowed);
        m_request = CHttpRequest();
    }
    if (!m_fault.has_value()) {
        m_request.strBody.append(pData, uiBytes);
    }
    return m_uiBodyBytes / NUMERIC_READ_IN_VAIN <= uiAllowed;
}

bool CHttpExchange::Ask(MHD_Connection* pConnection) {
    m_ePhase = EPhase::ASKED;
    if (!m_connection.EndRequest()) {
        return false;
    }
    if (!m_fault.has_value() && m_context.pPlace->IsClosing()) {
        m_fault = CRequestFault{EServiceFault::STOPPING, ""};
    }
    if (m_fault.has_value()) {
        Refuse();
    } else {
        CallHandler();
    }
    return m_pAnswer->Give(pConnection, m_bHead);
}

void CHttpExchange::Refuse() {
    CHttpReply reply = ErrorReply(m_fault->eFault, m_fault->strAbout);
    if (m_connection.IsTooMany() || m_context.pPlace->IsClosing()) {
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
