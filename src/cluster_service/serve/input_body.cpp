#include "serve/input_body.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>

#include "reference_host/strict_json.h"

namespace {

/// The end of the character that begins there, in a text that may be none.
std::size_t EndOfCharacter(const std::string& strText, std::size_t uiBegin) {
    std::size_t uiEnd = uiBegin + 1;
    while (uiEnd < strText.size() && (static_cast<unsigned char>(strText[uiEnd]) & 0xC0U) == 0x80) {
        ++uiEnd;
    }
    return uiEnd;
}

CJsonFault FaultAt(const std::string& strText, std::size_t uiAt, const char* pszReason) {
    const std::string_view before = std::string_view(strText).substr(0, uiAt);
    const std::size_t uiLineEnd = before.rfind('\n');
    const std::size_t uiLineBegin = uiLineEnd == std::string_view::npos ? 0 : uiLineEnd + 1;
    return {static_cast<int>(std::count(before.begin(), before.end(), '\n')) + 1,
            static_cast<int>(uiAt - uiLineBegin) + 1, pszReason};
}

CJsonFault NoUtf8Fault(const std::string& strText) {
    std::size_t uiBegin = 0;
    for (std::size_t uiEnd = 0; uiBegin < strText.size(); uiBegin = uiEnd) {
        uiEnd = EndOfCharacter(strText, uiBegin);
        if (!IsUtf8(strText.substr(uiBegin, uiEnd - uiBegin))) {
            break;
        }
    }
    return FaultAt(strText, uiBegin, "This is no UTF-8.");
}

}  // namespace

bool ParseBody(const std::string& strBody, Json::Value& value, std::string& strWhy) {
    const std::optional<CJsonFault> fault =
        IsUtf8(strBody) ? ParseForeignJson(strBody, value) : NoUtf8Fault(strBody);
    strWhy = fault ? TextOf(*fault) : "";
    return !fault;
}

std::string TextOf(const CFieldFault& fault) {
    return fault.strPlace.empty() ? fault.strFault : fault.strPlace + ' ' + fault.strFault;
}
