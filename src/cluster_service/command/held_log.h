#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "common_service/logger.h"

/// Keeps the lines up to a level until it is known whether anybody wants them. Callable from any
/// thread. Trace lines are dropped.
class CHeldLog : public Logger {
public:
    /// What is kept of an operation that went well: all that it logged, or nothing.
    enum class EKeep { ALL, FAILURES };

    CHeldLog(ORVA_LOG_LEVEL eLastLevel, EKeep eKeep) : m_eLastLevel(eLastLevel), m_eKeep(eKeep) {}

    void writeOperLog(ORVA_LOG_LEVEL eLevel, const char* pszOperation, const char* pszFile,
                      int iLine, const char* pszFunction, const char* pszFormat, ...) override
        __attribute__((format(printf, 7, 8)));
    void writeTraceLog(const char* pszFile, int iLine, const char* pszFunction,
                       const char* pszFormat, ...) override __attribute__((format(printf, 5, 6)));

    /// Hands every line over, in order, and forgets it.
    void ReleaseTo(Logger& logger);

    EKeep GetKeep() const { return m_eKeep; }

    /// How many lines there are, and: forgets those behind the first uiCount.
    std::size_t GetCount() const;
    void ForgetBehind(std::size_t uiCount);

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
    const EKeep m_eKeep;
    mutable std::mutex m_mutex;
    std::vector<CLine> m_lines;  ///< guarded by m_mutex
};

/// The log in force, if it is a held one that keeps failures alone; else null.
CHeldLog* LogOfFailures();

/// Runs one operation and returns its code. Where only failures are kept, an operation that answers
/// 0 leaves no line behind: the log that a failed command shows begins at what failed.
int RunLogged(const std::function<int()>& operation);
