#include "command/document_fault.h"

#include <exception>

#include "command/key_fault.h"
#include "command/text_place.h"
#include "common_service/logger.h"
#include "common_service/tarn_def.h"
#include "reference_host/strict_json.h"

namespace {

/// While it lives nothing is logged.
class CSilence {
public:
    CSilence() { OMAdapter::getInstance().setLogger(nullptr); }
    ~CSilence() { OMAdapter::getInstance().setLogger(m_pLogger); }
    CSilence(const CSilence&) = delete;
    CSilence& operator=(const CSilence&) = delete;

private:
    Logger* const m_pLogger = OMAdapter::getInstance().getLogger();
};

/// Why the library does not take the text; nothing if it does.
std::optional<std::string> FindRefusal(const CStoreDocument& document, const std::string& strText) {
    const CSilence silence;
    try {
        const int iCode = document.pMake()->ParseJson(strText.c_str());
        return iCode == ORVA_SUCCEED ? std::nullopt
                                     : std::make_optional("code " + std::to_string(iCode));
    } catch (const std::exception& exception) {
        return exception.what();
    }
}

}  // namespace

std::optional<std::string> FindFault(const CStoreDocument& document, const std::string& strText) {
    if (strText.size() > document.GetMaxSize()) {
        return "is too long: " + std::to_string(strText.size()) + " bytes, at most " +
               std::to_string(document.GetMaxSize());
    }
    if (const auto pos = strText.find('\0'); pos != std::string::npos) {
        return PlaceOf(strText, pos) + ": a zero byte";
    }
    Json::Value root;
    if (auto fault = ParseStrictJson(strText, root)) {
        return fault;
    }
    const auto refusal = FindRefusal(document, strText);
    if (!refusal) {
        return std::nullopt;
    }
    if (auto fault = FindKeyFault(document.keys, strText, root)) {
        return fault;
    }
    return std::string("is not what a ") + document.pszFile + " must be: " + *refusal;
}
