#include "common_service/logger.h"

#include <atomic>
#include <charconv>
#include <cstring>
#include <iterator>
#include <string_view>

namespace {

std::atomic<Logger*> g_pLogger{nullptr};

// A format cut inside a placeholder must not be printed with: the placeholder goes as a whole.
std::size_t LengthOfWholePlaceholders(const char* pszFormat) {
    const char* pszEnd = pszFormat;
    while ((pszEnd = std::strchr(pszEnd, '%')) != nullptr) {
        const char* pszConversion =
            pszEnd + 1 + std::strspn(pszEnd + 1, "-+ #'.*0123456789hlLjztq");
        if (*pszConversion == '\0') {
            return static_cast<std::size_t>(pszEnd - pszFormat);
        }
        pszEnd = pszConversion + 1;
    }
    return std::strlen(pszFormat);
}

}  // namespace

OMAdapter& OMAdapter::getInstance() {
    static OMAdapter instance;
    return instance;
}

Logger* OMAdapter::getLogger() {
    return g_pLogger;
}

void OMAdapter::setLogger(Logger* pLogger) {
    g_pLogger = pLogger;
}

int ORVA_LogFormatErrCode(char* pszBuf, int iSize, int iCode, const char* pszFormat) {
    if (pszBuf == nullptr || iSize <= 0 || pszFormat == nullptr) {
        return -1;
    }
    char szCode[16];
    const char* pszCodeEnd = std::to_chars(std::begin(szCode), std::end(szCode), iCode).ptr;
    const std::size_t capacity = static_cast<std::size_t>(iSize) - 1;
    std::size_t length = 0;
    bool bCut = false;
    for (const std::string_view part :
         {std::string_view("errcode["),
          std::string_view(szCode, static_cast<std::size_t>(pszCodeEnd - szCode)),
          std::string_view("], "), std::string_view(pszFormat)}) {
        const std::size_t copied = part.copy(pszBuf + length, capacity - length);
        length += copied;
        bCut = bCut || copied < part.size();
    }
    pszBuf[length] = '\0';
    if (bCut) {
        length = LengthOfWholePlaceholders(pszBuf);
        pszBuf[length] = '\0';
    }
    return static_cast<int>(length);
}
