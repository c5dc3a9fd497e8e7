#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>

/// The number that is the whole text, of 0 or more.
inline std::optional<int32_t> ReadStorageSize(const std::string& strText) {
    int32_t iSize = 0;
    const char* const pszEnd = strText.data() + strText.size();
    const auto [pszRest, error] = std::from_chars(strText.data(), pszEnd, iSize);
    if (error != std::errc() || pszRest != pszEnd || iSize < 0) {
        return std::nullopt;
    }
    return iSize;
}
