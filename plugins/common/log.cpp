#include "common/log.h"

#include <cstdarg>
#include <cstdio>
#include <string>

namespace {

/// A source path without folder and extension.
std::string FileStem(const std::string& strPath) {
    const std::size_t uiBegin = strPath.rfind('/') + 1;
    return strPath.substr(uiBegin, strPath.rfind('.') - uiBegin);
}

}  // namespace

int LogFailure(const char* pszOperation, int iCode, const CSourcePlace& place,
               const char* pszFormat, ...) {
    Logger* const pLogger = OMAdapter::getInstance().getLogger();
    if (pLogger == nullptr) {
        return iCode;
    }
    char szMessage[512];
    va_list arguments;
    va_start(arguments, pszFormat);
    std::vsnprintf(szMessage, sizeof(szMessage), pszFormat, arguments);
    va_end(arguments);
    char szFormat[512];
    if (ORVA_LogFormatErrCode(szFormat, sizeof(szFormat), iCode, "%s") >= 0) {
        pLogger->writeOperLog(ORVALOG_ERR, pszOperation, FileStem(place.pszFile).c_str(),
                              place.iLine, place.pszFunction, szFormat, szMessage);
    }
    return iCode;
}
