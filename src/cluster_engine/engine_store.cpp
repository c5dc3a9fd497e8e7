#include "cluster_engine/engine_store.h"

#include <array>
#include <cstring>
#include <utility>

#include "common_service/bounded_string.h"
#include "common_service/oper_common.h"
#include "common_service/tarn_def.h"
#include "framework_service/schedule_mgr.h"
#include "framework_service/store_path.h"

namespace {

/// A document that is its text.
class CTextDocument : public CBaseJsonObject {
public:
    CTextDocument() = default;
    explicit CTextDocument(std::string strText) : m_strText(std::move(strText)) {}

    int32_t ParseJson(const char* pszJson) override {
        m_strText = pszJson;
        return ORVA_SUCCEED;
    }

    int32_t ToJson(char* pszJson, uint32_t iMaxLen) override {
        if (m_strText.size() >= iMaxLen) {
            return ORVA_DATA_INVALID;
        }
        std::memcpy(pszJson, m_strText.c_str(), m_strText.size() + 1);
        return ORVA_SUCCEED;
    }

    const std::string& GetText() const { return m_strText; }

private:
    std::string m_strText;
};

std::string Path(const std::string& strSuffix) {
    return StorePath({strSuffix.c_str(), 0});
}

bool IsPlain(char cByte, bool bFirst) {
    const bool bAlnum = (cByte >= '0' && cByte <= '9') || (cByte >= 'a' && cByte <= 'z') ||
                        (cByte >= 'A' && cByte <= 'Z');
    return bAlnum || cByte == '-' || cByte == '_' || (cByte == '.' && !bFirst);
}

}  // namespace

std::string StoreName(const std::string& strId) {
    static constexpr char DIGITS[] = "0123456789ABCDEF";
    std::string strName;
    for (const char cByte : strId) {
        if (IsPlain(cByte, strName.empty())) {
            strName += cByte;
            continue;
        }
        const auto uiByte = static_cast<unsigned char>(cByte);
        strName += {'%', DIGITS[uiByte >> 4U], DIGITS[uiByte & 15U]};
    }
    return strName;
}

int CEngineStore::Read(const std::string& strSuffix, std::string& strText, bool& bAbsent) {
    const uint64_t ullFailures = m_gate.GetFailures();
    CTextDocument document;
    bAbsent = false;
    const int iCode = COperCommon::GetDataFromZK(Path(strSuffix).c_str(), nullptr,
                                                 NUMERIC_DOCUMENT_BYTES, &document, bAbsent);
    if (iCode == ORVA_SUCCEED) {
        bAbsent = false;  // a node without data is there
        strText = document.GetText();
        return iCode;
    }
    const bool bTooLong = !bAbsent && m_gate.GetFailures() == ullFailures;
    if (bTooLong) {
        strText.clear();
    }
    return bAbsent || bTooLong ? ORVA_SUCCEED : iCode;
}

int CEngineStore::Write(const std::string& strSuffix, const std::string& strText) {
    CTextDocument document(strText);
    return WriteDocument(strSuffix, NUMERIC_DOCUMENT_BYTES, document);
}

int CEngineStore::WriteTogether(std::map<std::string, std::string> texts) {
    std::map<std::string, std::string> whole;
    while (!texts.empty()) {
        auto text = texts.extract(texts.begin());
        if (text.mapped().size() >= NUMERIC_DOCUMENT_BYTES) {
            return ORVA_DATA_INVALID;
        }
        text.key() = Path(text.key());
        whole.insert(std::move(text));
    }
    return m_gate.WriteTogether(std::move(whole));
}

void CEngineStore::LetVersionsWait() {
    m_gate.LetWait(StorePath(STORE_NODE_VERSION));
}

int CEngineStore::ReadDocument(const std::string& strSuffix, uint32_t uiBufLen,
                               CBaseJsonObject& document, bool& bAbsent) {
    bAbsent = false;
    const int iCode =
        COperCommon::GetDataFromZK(Path(strSuffix).c_str(), nullptr, uiBufLen, &document, bAbsent);
    return bAbsent ? ORVA_SUCCEED : iCode;
}

int CEngineStore::WriteDocument(const std::string& strSuffix, uint32_t uiBufLen,
                                CBaseJsonObject& document) {
    return COperCommon::SetDataToZK(Path(strSuffix).c_str(), uiBufLen, &document);
}
