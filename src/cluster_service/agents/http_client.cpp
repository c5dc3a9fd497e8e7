#include "agents/http_client.h"

#include <curl/curl.h>

#include <stdexcept>
#include <utility>

#include "cluster_engine/json_fields.h"

namespace {

constexpr long NUMERIC_CONNECT_MILLISECONDS = 2000;
constexpr long NUMERIC_ANSWER_MILLISECONDS = 10000;

std::size_t Append(char* pszText, std::size_t uiSize, std::size_t uiCount, void* pText) {
    static_cast<std::string*>(pText)->append(pszText, uiSize * uiCount);
    return uiSize * uiCount;
}

}  // namespace

class CHttpClient::CImpl {
public:
    explicit CImpl(std::string strServer)
        : m_strServer(std::move(strServer)), m_pCurl(curl_easy_init(), &curl_easy_cleanup) {
        if (m_pCurl == nullptr) {
            throw std::runtime_error("cannot prepare a connection");
        }
    }

    CHttpAnswer Ask(const char* pszMethod, const std::string& strPath, const std::string* pBody) {
        const std::string strUrl = m_strServer + strPath;
        std::string strText;
        CURL* const pCurl = m_pCurl.get();
        curl_easy_reset(pCurl);  // the connection stays
        curl_easy_setopt(pCurl, CURLOPT_URL, strUrl.c_str());
        curl_easy_setopt(pCurl, CURLOPT_PROTOCOLS_STR, "http");
        curl_easy_setopt(pCurl, CURLOPT_NOPROXY, "*");
        curl_easy_setopt(pCurl, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(pCurl, CURLOPT_CONNECTTIMEOUT_MS, NUMERIC_CONNECT_MILLISECONDS);
        curl_easy_setopt(pCurl, CURLOPT_TIMEOUT_MS, NUMERIC_ANSWER_MILLISECONDS);
        curl_easy_setopt(pCurl, CURLOPT_WRITEFUNCTION, &Append);
        curl_easy_setopt(pCurl, CURLOPT_WRITEDATA, &strText);
        curl_easy_setopt(pCurl, CURLOPT_CUSTOMREQUEST, pszMethod);
        const Headers headers = SetBody(pBody);
        const CURLcode eCode = curl_easy_perform(pCurl);
        return eCode == CURLE_OK ? Answer(strText) : CHttpAnswer{0, {}, curl_easy_strerror(eCode)};
    }

private:
    using Headers = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

    Headers SetBody(const std::string* pBody) {
        if (pBody == nullptr) {
            return {nullptr, &curl_slist_free_all};
        }
        CURL* const pCurl = m_pCurl.get();
        curl_slist* const pContentType =
            curl_slist_append(nullptr, "Content-Type: application/json");
        Headers headers(curl_slist_append(pContentType, "Expect:"), &curl_slist_free_all);
        curl_easy_setopt(pCurl, CURLOPT_HTTPHEADER, headers.get());
        curl_easy_setopt(pCurl, CURLOPT_POSTFIELDS, pBody->c_str());
        curl_easy_setopt(pCurl, CURLOPT_POSTFIELDSIZE_LARGE,
                         static_cast<curl_off_t>(pBody->size()));
        return headers;
    }

    CHttpAnswer Answer(const std::string& strText) {
        CHttpAnswer answer;
        curl_easy_getinfo(m_pCurl.get(), CURLINFO_RESPONSE_CODE, &answer.lStatus);
        CFieldFault fault;
        const char* const pszBegin = strText.data();
        if (!ParseJsonText(pszBegin, pszBegin + strText.size(), answer.json, fault)) {
            return {0, {}, "an answer that is no JSON: " + fault.strFault};
        }
        return answer;
    }

    const std::string m_strServer;
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> m_pCurl;
};

CHttpClient::CHttpClient(std::string strServer)
    : m_pImpl(std::make_unique<CImpl>(std::move(strServer))) {}

CHttpClient::~CHttpClient() = default;

CHttpAnswer CHttpClient::Get(const std::string& strPath) {
    return Send("GET", strPath);
}

CHttpAnswer CHttpClient::Send(const char* pszMethod, const std::string& strPath) {
    return m_pImpl->Ask(pszMethod, strPath, nullptr);
}

CHttpAnswer CHttpClient::Send(const char* pszMethod, const std::string& strPath,
                              const Json::Value& body) {
    const std::string strBody = JsonLine(body);
    return m_pImpl->Ask(pszMethod, strPath, &strBody);
}

std::string CHttpClient::Encoded(const std::string& strName) {
    constexpr char SZ_DIGITS[] = "0123456789ABCDEF";
    constexpr char SZ_PLAIN[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    std::string strText;
    for (const char c : strName) {
        const auto uc = static_cast<unsigned char>(c);
        if (std::string_view(SZ_PLAIN).find(c) != std::string_view::npos) {
            strText += c;
        } else {
            strText.append({'%', SZ_DIGITS[uc >> 4U], SZ_DIGITS[uc & 15U]});
        }
    }
    return strText;
}
