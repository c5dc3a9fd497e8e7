#include "internal/log.h"

#include <filesystem>

#include "common_service/logger.h"

namespace {

std::string FileStem(const char* pszPath) {
    return std::filesystem::path(pszPath).stem().string();
}

}  // namespace

void LogError(const char* pszOperation, int iCode, const std::string& strMessage,
              const char* pszPath, int iLine, const char* pszFunction) {
    Logger* pLogger = OMAdapter::getInstance().getLogger();
    if (pLogger == nullptr) {
        return;
    }
    char szFormat[64] = "";
    ORVA_LogFormatErrCode(szFormat, sizeof(szFormat), iCode, "%s");
    pLogger->writeOperLog(ORVALOG_ERR, pszOperation, FileStem(pszPath).c_str(), iLine, pszFunction,
                          szFormat, strMessage.c_str());
}

void LogWarning(const char* pszOperation, const std::string& strMessage, const char* pszPath,
                int iLine, const char* pszFunction) {
    Logger* pLogger = OMAdapter::getInstance().getLogger();
    if (pLogger == nullptr) {
        return;
    }
    pLogger->writeOperLog(ORVALOG_WARNING, pszOperation, FileStem(pszPath).c_str(), iLine,
                          pszFunction, "%s", strMessage.c_str());
}
