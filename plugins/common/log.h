#pragma once

#include "common_service/logger.h"

/// Where a log line is written; by default the caller's own place.
struct CSourcePlace {
    const char* pszFile;
    int iLine;
    const char* pszFunction;

    static CSourcePlace Here(const char* pszFile = __builtin_FILE(), int iLine = __builtin_LINE(),
                             const char* pszFunction = __builtin_FUNCTION()) {
        return {pszFile, iLine, pszFunction};
    }
};

/// Writes an error line with the code and returns the code.
int LogFailure(const char* pszOperation, int iCode, const CSourcePlace& place,
               const char* pszFormat, ...) __attribute__((format(printf, 4, 5)));
