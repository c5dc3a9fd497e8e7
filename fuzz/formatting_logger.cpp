#include "formatting_logger.h"

#include <cstdarg>

#include "reference_host/printf_text.h"

void CFormattingLogger::writeOperLog(ORVA_LOG_LEVEL, const char*, const char*, int, const char*,
                                     const char* pszFormat, ...) {
    va_list arguments;
    va_start(arguments, pszFormat);
    FormatText(pszFormat, arguments);
    va_end(arguments);
}

void CFormattingLogger::writeTraceLog(const char*, int, const char*, const char* pszFormat, ...) {
    va_list arguments;
    va_start(arguments, pszFormat);
    FormatText(pszFormat, arguments);
    va_end(arguments);
}
