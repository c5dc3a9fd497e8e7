#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>

/// The text of a printf format, however long. Empty when the format is unusable.
inline std::string FormatText(const char* pszFormat, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int iLength = std::vsnprintf(nullptr, 0, pszFormat, arguments);
    std::string strText(iLength > 0 ? static_cast<std::size_t>(iLength) : 0, '\0');
    std::vsnprintf(strText.data(), strText.size() + 1, pszFormat, again);
    va_end(again);
    return strText;
}
