#pragma once

#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "common_service/logger.h"

/// One line as it was logged. Trace lines have no level and no operation text.
struct CLogLine {
    ORVA_LOG_LEVEL eLevel = ORVALOG_DEBUG;
    std::string strOperation;
    std::string strFile;
    std::string strFunction;
    std::optional<int> code;  ///< what ORVA_LogFormatErrCode put before the message
    std::string strMessage;
    bool bTrace = false;
    std::string strFormat;  ///< the message before it was filled; not compared
};

bool operator==(const CLogLine& lhs, const CLogLine& rhs);
bool operator!=(const CLogLine& lhs, const CLogLine& rhs);
std::ostream& operator<<(std::ostream& stream, const CLogLine& line);

/// The lines that a test expects, for ElementsAre.
CLogLine Err(const std::string& strOperation, int iCode, const std::string& strFile,
             const std::string& strFunction, const std::string& strMessage);
CLogLine Warn(const std::string& strOperation, const std::string& strFile,
              const std::string& strFunction, const std::string& strMessage);
CLogLine Info(const std::string& strOperation, const std::string& strFile,
              const std::string& strFunction, const std::string& strMessage);
CLogLine Trace(const std::string& strFile, const std::string& strFunction,
               const std::string& strMessage);

/// Keeps every line in the order of the calls. Callable from any thread.
class CRecordingLogger : public Logger {
public:
    void writeOperLog(ORVA_LOG_LEVEL eLevel, const char* pszOperation, const char* pszFile,
                      int iLine, const char* pszFunction, const char* pszFormat, ...) override
        __attribute__((format(printf, 7, 8)));
    void writeTraceLog(const char* pszFile, int iLine, const char* pszFunction,
                       const char* pszFormat, ...) override __attribute__((format(printf, 5, 6)));

    std::vector<CLogLine> GetLines() const;

    /// The lines of one source file.
    std::vector<CLogLine> GetLinesOf(const std::string& strFile) const;

    /// The lines that are no trace lines.
    std::vector<CLogLine> GetOperLines() const;

    void Clear();

private:
    void Add(CLogLine line);

    mutable std::mutex m_mutex;
    std::vector<CLogLine> m_lines;
};
