#include "support/recording_logger.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <tuple>
#include <utility>

#include "reference_host/printf_text.h"

namespace {

auto Tie(const CLogLine& line) {
    return std::tie(line.eLevel, line.strOperation, line.strFile, line.strFunction, line.code,
                    line.strMessage, line.bTrace);
}

/// Takes the code that ORVA_LogFormatErrCode wrote off the message and its format.
void SplitCode(CLogLine& line) {
    int iCode = 0;
    int iLength = 0;
    if (std::sscanf(line.strMessage.c_str(), "errcode[%d],%n", &iCode, &iLength) == 1 &&
        iLength != 0) {
        line.code = iCode;
        line.strMessage.erase(0, static_cast<std::size_t>(iLength) + 1);
        line.strFormat.erase(0, static_cast<std::size_t>(iLength) + 1);
    }
}

const char* LevelName(const CLogLine& line) {
    if (line.bTrace) {
        return "TRACE";
    }
    return line.eLevel == ORVALOG_DEBUG ? "DEBUG" : STR_LOG_LEVEL[line.eLevel];
}

}  // namespace

bool operator==(const CLogLine& lhs, const CLogLine& rhs) {
    return Tie(lhs) == Tie(rhs);
}

bool operator!=(const CLogLine& lhs, const CLogLine& rhs) {
    return !(lhs == rhs);
}

std::ostream& operator<<(std::ostream& stream, const CLogLine& line) {
    stream << LevelName(line) << ' ' << line.strFile << "::" << line.strFunction << " ["
           << line.strOperation << "] ";
    if (line.code) {
        stream << "code " << *line.code << ' ';
    }
    return stream << '"' << line.strMessage << '"';
}

CLogLine Err(const std::string& strOperation, int iCode, const std::string& strFile,
             const std::string& strFunction, const std::string& strMessage) {
    return {ORVALOG_ERR, strOperation, strFile, strFunction, iCode, strMessage, false, ""};
}

CLogLine Warn(const std::string& strOperation, const std::string& strFile,
              const std::string& strFunction, const std::string& strMessage) {
    return {ORVALOG_WARNING, strOperation, strFile, strFunction,
            std::nullopt,    strMessage,   false,   ""};
}

CLogLine Info(const std::string& strOperation, const std::string& strFile,
              const std::string& strFunction, const std::string& strMessage) {
    return {ORVALOG_INFO, strOperation, strFile, strFunction, std::nullopt, strMessage, false, ""};
}

CLogLine Trace(const std::string& strFile, const std::string& strFunction,
               const std::string& strMessage) {
    return {ORVALOG_DEBUG, "", strFile, strFunction, std::nullopt, strMessage, true, ""};
}

void CRecordingLogger::writeOperLog(ORVA_LOG_LEVEL eLevel, const char* pszOperation,
                                    const char* pszFile, int, const char* pszFunction,
                                    const char* pszFormat, ...) {
    va_list arguments;
    va_start(arguments, pszFormat);
    const std::string strMessage = FormatText(pszFormat, arguments);
    va_end(arguments);
    Add({eLevel, pszOperation, pszFile, pszFunction, std::nullopt, strMessage, false, pszFormat});
}

void CRecordingLogger::writeTraceLog(const char* pszFile, int, const char* pszFunction,
                                     const char* pszFormat, ...) {
    va_list arguments;
    va_start(arguments, pszFormat);
    const std::string strMessage = FormatText(pszFormat, arguments);
    va_end(arguments);
    CLogLine line = Trace(pszFile, pszFunction, strMessage);
    line.strFormat = pszFormat;
    Add(std::move(line));
}

std::vector<CLogLine> CRecordingLogger::GetLines() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_lines;
}

std::vector<CLogLine> CRecordingLogger::GetLinesOf(const std::string& strFile) const {
    std::vector<CLogLine> lines = GetLines();
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [&](const CLogLine& line) { return line.strFile != strFile; }),
                lines.end());
    return lines;
}

std::vector<CLogLine> CRecordingLogger::GetOperLines() const {
    std::vector<CLogLine> lines = GetLines();
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [](const CLogLine& line) { return line.bTrace; }),
                lines.end());
    return lines;
}

void CRecordingLogger::Clear() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_lines.clear();
}

void CRecordingLogger::Add(CLogLine line) {
    SplitCode(line);
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_lines.push_back(std::move(line));
}
