#include "command/held_log.h"

#include <algorithm>
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
    std::vector<CLine> lines;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        lines.swap(m_lines);
    }
    for (const CLine& line : lines) {
        logger.writeOperLog(line.eLevel, line.strOperation.c_str(), line.strFile.c_str(),
                            line.iLine, line.strFunction.c_str(), "%s", line.strText.c_str());
    }
}

std::size_t CHeldLog::GetCount() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_lines.size();
}

void CHeldLog::ForgetBehind(std::size_t uiCount) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_lines.erase(m_lines.begin() + static_cast<std::ptrdiff_t>(std::min(uiCount, m_lines.size())),
                  m_lines.end());
}

CHeldLog* LogOfFailures() {
    auto* const pHeld = dynamic_cast<CHeldLog*>(OMAdapter::getInstance().getLogger());
    return pHeld != nullptr && pHeld->GetKeep() == CHeldLog::EKeep::FAILURES ? pHeld : nullptr;
}

int RunLogged(const std::function<int()>& operation) {
    CHeldLog* const pHeld = LogOfFailures();
    const std::size_t uiCount = pHeld != nullptr ? pHeld->GetCount() : 0;
    const int iCode = operation();
    if (pHeld != nullptr && iCode == 0) {
        pHeld->ForgetBehind(uiCount);
    }
    return iCode;
}
