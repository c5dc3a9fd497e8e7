#include "common_service/logger.h"

#include <cstdio>
#include <cstring>

namespace {

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
    static OMAdapter& instance = *new OMAdapter;
    return instance;
}

Logger* OMAdapter::getLogger() {
    return m_pLogger;
}

void OMAdapter::setLogger(Logger* pLogger) {
    m_pLogger = pLogger;
}

int ORVA_LogFormatErrCode(char* pszBuf, int iSize, int iCode, const char* pszFormat) {
    if (pszBuf == nullptr || iSize <= 0 || pszFormat == nullptr) {
        return -1;
    }
    const int iLength =
        std::snprintf(pszBuf, static_cast<std::size_t>(iSize), "errcode[%d], %s", iCode, pszFormat);
    if (iLength < iSize) {
        return iLength;
    }
    const std::size_t length = LengthOfWholePlaceholders(pszBuf);
    pszBuf[length] = '\0';
    return static_cast<int>(length);
}
