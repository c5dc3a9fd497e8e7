#include "serve/http_answer.h"

#include <microhttpd.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "serve/service_error.h"

namespace {

constexpr std::size_t NUMERIC_BLOCK_BYTES = 16384;

using BodyPointer = std::shared_ptr<const std::string>;

struct CResponseDeleter {
    void operator()(MHD_Response* pResponse) const { MHD_destroy_response(pResponse); }
};
using ResponsePointer = std::unique_ptr<MHD_Response, CResponseDeleter>;

void FreeBody(void* pBody) {
    delete static_cast<BodyPointer*>(pBody);
}

ResponsePointer MakeBody(const BodyPointer& pBody) {
    if (pBody == nullptr || pBody->empty()) {
        return ResponsePointer(MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT));
    }
    auto pHeld = std::make_unique<BodyPointer>(pBody);
    // libmicrohttpd does not change what it sends.
    ResponsePointer pResponse(MHD_create_response_from_buffer_with_free_callback_cls(
        pBody->size(), const_cast<char*>(pBody->data()), FreeBody, pHeld.get()));
    if (pResponse != nullptr) {
        static_cast<void>(pHeld.release());
    }
    return pResponse;
}

ssize_t ReadAnswer(void* pAnswer, uint64_t /*ullPosition*/, char* pBuffer, std::size_t uiMost) {
    return static_cast<CHttpAnswer*>(pAnswer)->Read(pBuffer, uiMost);
}

}  // namespace

void CHttpAnswer::Send(CHttpReply reply) {
    Take({std::move(reply), nullptr});
}

void CHttpAnswer::Stream(const char* pszType, std::unique_ptr<IReplyStream> pStream) {
    CContent content;
    content.reply.pszType = pszType;
    content.reply.headers["Cache-Control"] = "no-store";
    content.pStream = std::move(pStream);
    Take(std::move(content));
}

void CHttpAnswer::Fail(EServiceFault eFault) {
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_bAnswered) {
            return;
        }
    }
    Send(ErrorReply(eFault, ""));
}

void CHttpAnswer::Take(CContent content) {
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_bAnswered) {
            return;
        }
        m_bAnswered = true;
        m_bUnderWay = content.pStream == nullptr;
        m_content = std::move(content);
    }
    m_pMail->Wake(m_rest);
}

std::optional<CHttpAnswer::CContent> CHttpAnswer::TakeContent() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return std::exchange(m_content, std::nullopt);
}

bool CHttpAnswer::Give(MHD_Connection* pConnection, bool bHead) {
    do {
        if (std::optional<CContent> content = TakeContent()) {
            if (bHead) {
                content->pStream.reset();
            }
            return Queue(pConnection, std::move(*content));
        }
    } while (!m_pMail->Expect(m_rest, pConnection));
    return true;
}

bool CHttpAnswer::IsUnderWay() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_bUnderWay;
}

void CHttpAnswer::LookAtStream() {
    if (m_pStream != nullptr) {
        m_pMail->Wake(m_rest);
    }
}

bool CHttpAnswer::Queue(MHD_Connection* pConnection, CContent content) {
    ResponsePointer pResponse;
    if (content.pStream != nullptr) {
        BeginStream(pConnection, std::move(content.pStream));
        pResponse.reset(MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, NUMERIC_BLOCK_BYTES,
                                                          ReadAnswer, this, nullptr));
    } else {
        pResponse = MakeBody(content.reply.pBody);
    }
    if (pResponse == nullptr) {
        return false;
    }
    MHD_add_response_header(pResponse.get(), MHD_HTTP_HEADER_CONTENT_TYPE, content.reply.pszType);
    for (const auto& [strName, strValue] : content.reply.headers) {
        MHD_add_response_header(pResponse.get(), strName.c_str(), strValue.c_str());
    }
    return MHD_queue_response(pConnection, content.reply.uiStatus, pResponse.get()) == MHD_YES;
}

void CHttpAnswer::BeginStream(MHD_Connection* pConnection, std::unique_ptr<IReplyStream> pStream) {
    m_pConnection = pConnection;
    m_pStream = std::move(pStream);
    m_pStream->Listen([pWeak = weak_from_this()] {
        if (const auto pAnswer = pWeak.lock()) {
            pAnswer->m_pMail->Wake(pAnswer->m_rest);
        }
    });
}

ssize_t CHttpAnswer::Read(char* pBuffer, std::size_t uiMost) {
    while (m_uiSent == m_strText.size()) {
        if (m_bStreamEnds) {
            return MHD_CONTENT_READER_END_OF_STREAM;
        }
        m_strText.clear();
        m_uiSent = 0;
        m_bStreamEnds = !m_pStream->Read(m_strText);
        if (!m_strText.empty() || m_bStreamEnds) {
            continue;
        }
        if (m_pMail->Rest(m_rest, m_pConnection)) {
            return 0;
        }
    }
    const std::size_t uiPiece = std::min(uiMost, m_strText.size() - m_uiSent);
    std::memcpy(pBuffer, m_strText.data() + m_uiSent, uiPiece);
    m_uiSent += uiPiece;
    return static_cast<ssize_t>(uiPiece);
}

void CHttpAnswer::End() {
    m_pStream.reset();
    std::optional<CContent> unsent;  // destroyed without the lock: a stream forgets its source
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_bAnswered = true;
    unsent.swap(m_content);
    m_bUnderWay = false;
}
