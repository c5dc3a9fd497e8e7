#pragma once

#include <list>
#include <mutex>
#include <string>

#include "common_service/logger.h"

/// Keeps the lines up to a level until it is known whether anybody wants them. Callable from any
/// thread. Trace lines are dropped.
class CHeldLog : public Logger {
public:
    explicit CHeldLog(ORVA_LOG_LEVEL eLastLevel) : m_eLastLevel(eLastLevel) {}

    void writeOperLog(ORVA_LOG_LEVEL eLevel, const char* pszOperation, const char* pszFile,
                      int iLine, const char* pszFunction, const char* pszFormat, ...) override
        __attribute__((format(printf, 7, 8)));
    void writeTraceLog(const char* pszFile, int iLine, const char* pszFunction,
                       const char* pszFormat, ...) override __attribute__((format(printf, 5, 6)));

    /// Hands every line over, in order, and forgets it.
    void ReleaseTo(Logger& logger);

private:
    struct CLine {
        ORVA_LOG_LEVEL eLevel;
        std::string strOperation;
        std::string strFile;
        int iLine;
        std::string strFunction;
        std::string strText;
    };

    const ORVA_LOG_LEVEL m_eLastLevel;
    std::mutex m_mutex;
    std::list<CLine> m_lines;  ///< guarded by m_mutex
};
