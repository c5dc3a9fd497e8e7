#pragma once

#include <functional>
#include <string>

#include "common_service/data/communication_data.h"

/// A document that is its own text. A test may make it refuse or throw.
class CTextDocument : public CBaseJsonObject {
public:
    explicit CTextDocument(const std::string& strText = "");

    int32_t ParseJson(const char* pszJson) override;
    int32_t ToJson(char* pszJson, uint32_t iMaxLen) override;

    std::string m_strText;
    std::function<void()> m_onCall = [] {};  ///< runs first in every call
    int32_t m_iRet = 0;                      ///< what every call returns
};
