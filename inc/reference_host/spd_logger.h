#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "common_service/logger.h"

/// Where the log goes, and how much of it.
struct CSpdLoggerSettings {
    ORVA_LOG_LEVEL eLevel = ORVALOG_INFO;  ///< the last level that is written; DEBUG lets trace in
    bool bConsole = true;                  ///< to the standard error stream
    std::string strFile;                   ///< no file when empty
    std::size_t maxFileSize = std::size_t{10} * 1024 * 1024;
    std::size_t maxFiles = 5;  ///< older files beside the current one
};

/// The log sink over spdlog, for the console and a rotating file, which several programs may name
/// at once: each line is there, and one of them rotates it for all. One line each: time, level,
/// source file and line, function, operation text, message; what would break the line or paint a
/// terminal is written as ShownText has it. A line that was logged is flushed on return. A sink
/// that fails later, as on a full disk, says so on the standard error stream and loses the line;
/// nothing is thrown.
class [[gnu::visibility("default")]] CSpdLogger : public Logger {
public:
    /// Null on failure, with the reason in strError.
    static std::unique_ptr<CSpdLogger> Open(const CSpdLoggerSettings& settings,
                                            std::string& strError);
    ~CSpdLogger() override;

    /// Could a line not be written to the file?
    bool HasLostLines() const;

    void writeOperLog(ORVA_LOG_LEVEL eLevel, const char* pszOperation, const char* pszFile,
                      int iLine, const char* pszFunction, const char* pszFormat, ...) override;
    void writeTraceLog(const char* pszFile, int iLine, const char* pszFunction,
                       const char* pszFormat, ...) override;

private:
    struct CState;

    [[gnu::visibility("hidden")]] explicit CSpdLogger(std::unique_ptr<CState> pState);

    std::unique_ptr<CState> m_pState;
};
