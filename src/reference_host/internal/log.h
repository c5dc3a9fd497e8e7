#pragma once

#include <string>

/// One line of the host at the place of the call: a failure with its code, and a warning.
void LogError(const char* pszOperation, int iCode, const std::string& strMessage,
              const char* pszPath = __builtin_FILE(), int iLine = __builtin_LINE(),
              const char* pszFunction = __builtin_FUNCTION());

void LogWarning(const char* pszOperation, const std::string& strMessage,
                const char* pszPath = __builtin_FILE(), int iLine = __builtin_LINE(),
                const char* pszFunction = __builtin_FUNCTION());
