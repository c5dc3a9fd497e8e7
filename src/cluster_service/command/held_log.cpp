#include "command/held_log.h"

#include <cstdarg>

#include "reference_host/printf_text.h"

void CHeldLog::writeOperLog(ORVA_LOG_LEVEL eLevel, const char* pszOperation, const char* pszFile,
                            int iLine, const char* pszFunction, const char* pszFormat, ...) {
    if (eLevel > m_eLastLevel) {
        return;
    }
    va_list arguments;
    va_start(arguments, pszFormat);
    CLine line{eLevel, pszOperation, pszFile, iLine, pszFunction, FormatText(pszFormat, arguments)};
    va_end(arguments);
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_lines.push_back(std::move(line));
}

void CHeldLog::writeTraceLog(const char*, int, const char*, const char*, ...) {}

void CHeldLog::ReleaseTo(Logger& logger) {
    std::list<CLine> lines;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        lines.swap(m_lines);
    }
    for (const CLine& line : lines) {
        logger.writeOperLog(line.eLevel, line.strOperation.c_str(), line.strFile.c_str(),
                            line.iLine, line.strFunction.c_str(), "%s", line.strText.c_str());
    }
}
