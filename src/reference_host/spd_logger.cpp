#include "reference_host/spd_logger.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <exception>
#include <utility>
#include <vector>

#include "internal/shared_log_file.h"
#include "reference_host/printf_text.h"
#include "reference_host/shown_text.h"

namespace {

constexpr char PSZ_PATTERN[] = "%Y-%m-%d %H:%M:%S.%e %v";
constexpr char PSZ_DEBUG[] = "DEBUG";

/// What a line says about itself before its message.
struct CLineHead {
    ORVA_LOG_LEVEL eLevel;
    const char* pszFile;
    int iLine;
    const char* pszFunction;
    const char* pszOperation;  ///< null for a trace line
};

std::string HeadText(const CLineHead& head) {
    std::string strText = head.eLevel < ORVALOG_DEBUG ? STR_LOG_LEVEL[head.eLevel] : PSZ_DEBUG;
    strText.append(" ").append(head.pszFile).append(":").append(std::to_string(head.iLine));
    strText.append(" ").append(head.pszFunction).append(" ");
    if (head.pszOperation != nullptr) {
        strText.append("[").append(head.pszOperation).append("] ");
    }
    return strText;
}

void TellLoss(const std::string& strReason) {
    std::fprintf(stderr, "a log line was lost: %s\n", ShownText(strReason).c_str());
}

}  // namespace

struct CSpdLogger::CState {
    CState(ORVA_LOG_LEVEL eMaxLevel, std::vector<spdlog::sink_ptr> sinks)
        : eLevel(eMaxLevel), logger("", sinks.begin(), sinks.end()) {
        logger.set_level(spdlog::level::trace);
        logger.flush_on(spdlog::level::trace);
        logger.set_pattern(PSZ_PATTERN);
        logger.set_error_handler([this](const std::string& strReason) { CountLoss(strReason); });
    }

    void Write(const CLineHead& head, const char* pszFormat, va_list arguments) noexcept {
        try {
            logger.info(ShownText(HeadText(head) + FormatText(pszFormat, arguments)));
        } catch (...) {
            CountLoss("out of memory");
        }
    }

    void CountLoss(const std::string& strReason) {
        bLost = true;
        TellLoss(strReason);
    }

    const ORVA_LOG_LEVEL eLevel;
    std::atomic<bool> bLost{false};
    spdlog::logger logger;
};

CSpdLogger::CSpdLogger(std::unique_ptr<CState> pState) : m_pState(std::move(pState)) {}

CSpdLogger::~CSpdLogger() = default;

bool CSpdLogger::HasLostLines() const {
    return m_pState->bLost;
}

std::unique_ptr<CSpdLogger> CSpdLogger::Open(const CSpdLoggerSettings& settings,
                                             std::string& strError) {
    try {
        std::vector<spdlog::sink_ptr> sinks;
        if (settings.bConsole) {
            sinks.push_back(std::make_shared<spdlog::sinks::stderr_sink_mt>());
        }
        if (!settings.strFile.empty()) {
            sinks.push_back(std::make_shared<CSharedLogFile>(settings.strFile, settings.maxFileSize,
                                                             settings.maxFiles));
        }
        return std::unique_ptr<CSpdLogger>(
            new CSpdLogger(std::make_unique<CState>(settings.eLevel, std::move(sinks))));
    } catch (const std::exception& exception) {
        strError = exception.what();
        return nullptr;
    }
}

void CSpdLogger::writeOperLog(ORVA_LOG_LEVEL eLevel, const char* pszOperation, const char* pszFile,
                              int iLine, const char* pszFunction, const char* pszFormat, ...) {
    if (eLevel > m_pState->eLevel) {
        return;
    }
    va_list arguments;
    va_start(arguments, pszFormat);
    m_pState->Write({eLevel, pszFile, iLine, pszFunction, pszOperation}, pszFormat, arguments);
    va_end(arguments);
}

void CSpdLogger::writeTraceLog(const char* pszFile, int iLine, const char* pszFunction,
                               const char* pszFormat, ...) {
    if (m_pState->eLevel < ORVALOG_DEBUG) {
        return;
    }
    va_list arguments;
    va_start(arguments, pszFormat);
    m_pState->Write({ORVALOG_DEBUG, pszFile, iLine, pszFunction, nullptr}, pszFormat, arguments);
    va_end(arguments);
}
