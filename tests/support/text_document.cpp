#include "support/text_document.h"

#include <algorithm>

CTextDocument::CTextDocument(const std::string& strText) : m_strText(strText) {}

int32_t CTextDocument::ParseJson(const char* pszJson) {
    m_onCall();
    m_strText = pszJson;
    return m_iRet;
}

int32_t CTextDocument::ToJson(char* pszJson, uint32_t iMaxLen) {
    m_onCall();
    std::fill_n(pszJson, iMaxLen, '\0');
    m_strText.copy(pszJson, iMaxLen - 1);
    return m_iRet;
}
