#pragma once

#include <map>
#include <string>

#include "common_service/tarn_def.h"
#include "operation_log/operation_log.h"

namespace [[gnu::visibility("hidden")]] framework_internal {

inline const char* LogArgument(const std::string& strValue) {
    return strValue.c_str();
}

inline double LogArgument(float fValue) {
    return static_cast<double>(fValue);
}

/// Copies the value of the key out and returns 0; a missing key logs pszMessage with the key and
/// the untouched value and returns ORVA_FAIL.
template <typename Value>
int ReadKey(const operation_log::CPlacedText& operation, const char* pszMessage,
            const std::map<std::string, Value>& keyValues, const std::string& strKey,
            Value& value) {
    const auto it = keyValues.find(strKey);
    if (it == keyValues.end()) {
        return LogFailure(operation, ORVA_FAIL, pszMessage, strKey.c_str(), LogArgument(value));
    }
    value = it->second;
    return ORVA_SUCCEED;
}

}  // namespace framework_internal
