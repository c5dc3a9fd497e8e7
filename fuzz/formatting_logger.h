#pragma once

#include "common_service/logger.h"

/// Formats every line, so that each format meets its arguments, and drops it.
class CFormattingLogger : public Logger {
public:
    void writeOperLog(ORVA_LOG_LEVEL eLevel, const char* pszOperation, const char* pszFile,
                      int iLine, const char* pszFunction, const char* pszFormat, ...) override
        __attribute__((format(printf, 7, 8)));
    void writeTraceLog(const char* pszFile, int iLine, const char* pszFunction,
                       const char* pszFormat, ...) override __attribute__((format(printf, 5, 6)));
};
