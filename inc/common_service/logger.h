#pragma once

enum ORVA_LOG_LEVEL {
    ORVALOG_EMERG = 0,
    ORVALOG_ALERT = 1,
    ORVALOG_CRIT = 2,
    ORVALOG_ERR = 3,
    ORVALOG_WARNING = 4,
    ORVALOG_NOTICE = 5,
    ORVALOG_INFO = 6,
    ORVALOG_DEBUG = 7,
};

/// The names of the levels. ORVALOG_DEBUG has none.
inline constexpr const char* STR_LOG_LEVEL[7] = {"EMERG",   "ALERT",  "CRIT", "ERR",
                                                 "WARNING", "NOTICE", "INFO"};

/// The log sink. Callable from any thread, also with a registry's mutex held: during a call it may
/// read the registries and change them. The texts belong to the caller and live only during the
/// call. A line that was logged is on its way on return.
class [[gnu::visibility("default")]] Logger {
public:
    virtual ~Logger() = default;

    /// One line. pszFile is the source file without folder and extension; pszFormat and what
    /// follows are as for printf.
    virtual void writeOperLog(ORVA_LOG_LEVEL eLevel, const char* pszOperation, const char* pszFile,
                              int iLine, const char* pszFunction, const char* pszFormat, ...) = 0;

    virtual void writeTraceLog(const char* pszFile, int iLine, const char* pszFunction,
                               const char* pszFormat, ...) = 0;
};

/// Where the library finds the logger.
class [[gnu::visibility("default")]] OMAdapter {
public:
    static OMAdapter& getInstance();

    /// Null silences everything.
    Logger* getLogger();

    /// Takes no ownership: the logger outlives everything that logs.
    void setLogger(Logger * pLogger);
};

/// Writes a new format text into pszBuf: the code, then pszFormat with its placeholders as they
/// stand. Returns its length, at most iSize - 1, or a negative number on failure; the line is then
/// logged with what stands in the buffer.
[[gnu::visibility("default")]] int ORVA_LogFormatErrCode(char* pszBuf, int iSize, int iCode,
                                                         const char* pszFormat);
