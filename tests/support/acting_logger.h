#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "common_service/logger.h"

/// Acts in each line, as a host may that looks into the registries or changes them from its log
/// sink, and writes the line down afterwards: its texts must have outlived that. What it does there
/// itself is written down too, but not acted upon unless it is told so. For one thread.
class CActingLogger : public Logger {
public:
    using Action = std::function<void(const std::string& strFormat)>;

    void SetAction(Action action) { m_action = std::move(action); }

    /// From now on the lines of what it does are acted upon too.
    void ActInLinesOfActions() { m_bNested = true; }

    const std::vector<std::string>& GetMessages() const { return m_messages; }

    void writeOperLog(ORVA_LOG_LEVEL, const char*, const char*, int, const char*,
                      const char* pszFormat, ...) override __attribute__((format(printf, 7, 8))) {
        va_list arguments;
        va_start(arguments, pszFormat);
        ActAndWrite(pszFormat, arguments);
        va_end(arguments);
    }

    void writeTraceLog(const char*, int, const char*, const char* pszFormat, ...) override
        __attribute__((format(printf, 5, 6))) {
        va_list arguments;
        va_start(arguments, pszFormat);
        ActAndWrite(pszFormat, arguments);
        va_end(arguments);
    }

private:
    void ActAndWrite(const char* pszFormat, va_list arguments) {
        if (m_action && (m_bNested || !m_bActing)) {
            const bool bOuter = std::exchange(m_bActing, true);
            m_action(pszFormat);
            m_bActing = bOuter;
        }
        char szMessage[512];
        std::vsnprintf(szMessage, sizeof(szMessage), pszFormat, arguments);
        m_messages.emplace_back(szMessage);
    }

    Action m_action;
    bool m_bActing = false;
    bool m_bNested = false;
    std::vector<std::string> m_messages;
};
