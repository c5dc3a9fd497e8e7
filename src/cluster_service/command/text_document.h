#pragma once

#include <string>
#include <utility>

#include "common_service/bounded_string.h"
#include "common_service/data/communication_data.h"
#include "common_service/tarn_def.h"

/// A document that is its own text, so that the store holds what the author wrote.
class CTextDocument : public CBaseJsonObject {
public:
    explicit CTextDocument(std::string strText = {}) : m_strText(std::move(strText)) {}

    int32_t ParseJson(const char* pszJson) override {
        m_strText = pszJson;
        return ORVA_SUCCEED;
    }

    int32_t ToJson(char* pszJson, uint32_t iMaxLen) override {
        return strncpy_s(pszJson, iMaxLen, m_strText.data(), m_strText.size()) == 0 ? ORVA_SUCCEED
                                                                                    : ORVA_FAIL;
    }

    const std::string& GetText() const { return m_strText; }

private:
    std::string m_strText;
};
