#include "common_service/bounded_string.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

// The largest size taken for meant: a negative number turned into a size lies above it.
constexpr std::size_t NUMERIC_MAX_SIZE = SIZE_MAX / 2;

bool IsUsable(std::size_t size) {
    return size <= NUMERIC_MAX_SIZE;
}

bool Overlap(const char* pszDest, const char* pszSrc, std::size_t length) {
    const auto dest = reinterpret_cast<std::uintptr_t>(pszDest);
    const auto src = reinterpret_cast<std::uintptr_t>(pszSrc);
    return dest <= src + length && src <= dest + length;
}

int Refuse(char* pszDest, int iCode) {
    *pszDest = '\0';
    return iCode;
}

}  // namespace

int memset_s(void* dest, std::size_t destMax, int value, std::size_t count) {
    if (dest == nullptr || !IsUsable(destMax)) {
        return EINVAL;
    }
    std::memset(dest, value, std::min(destMax, count));
    return count > destMax ? ERANGE : 0;
}

int strncpy_s(char* dest, std::size_t destMax, const char* src, std::size_t count) {
    if (dest == nullptr || destMax == 0 || !IsUsable(destMax)) {
        return EINVAL;
    }
    if (src == nullptr || !IsUsable(count)) {
        return Refuse(dest, EINVAL);
    }
    const std::size_t length = strnlen(src, std::min(count, destMax));
    if (length == destMax) {
        return Refuse(dest, ERANGE);
    }
    if (Overlap(dest, src, length)) {
        return Refuse(dest, EINVAL);
    }
    std::memcpy(dest, src, length);
    dest[length] = '\0';
    return 0;
}

int ORVA_SNPRINTF(char* pszDest, std::size_t destMax, std::size_t count, const char* pszFormat,
                  ...) {
    if (pszDest == nullptr || destMax == 0 || pszFormat == nullptr) {
        return -1;
    }
    const std::size_t limit = std::min(destMax - 1, count) + 1;
    va_list arguments;
    va_start(arguments, pszFormat);
    const int iLength = std::vsnprintf(pszDest, limit, pszFormat, arguments);
    va_end(arguments);
    return iLength >= 0 && static_cast<std::size_t>(iLength) < limit ? iLength : -1;
}

std::string ORVA_DesensitizeIPAddress(const std::string& strIp) {
    in_addr address{};
    if (inet_pton(AF_INET, strIp.c_str(), &address) != 1) {
        return strIp.empty() ? "" : "*";
    }
    return strIp.substr(0, strIp.find('.', strIp.find('.') + 1)) + ".*.*";
}
