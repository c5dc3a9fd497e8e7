#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "contract/minimal_host.h"

namespace {

std::string FormatText(const char* pszFormat, va_list arguments) {
    char szText[4096];
    vsnprintf(szText, sizeof(szText), pszFormat, arguments);
    return szText;
}

}  // namespace

CMinimalHost& CMinimalHost::Instance() {
    static CMinimalHost& host = *new CMinimalHost;
    return host;
}

void CMinimalHost::Reset() {
    *this = CMinimalHost();
    m_strClusterCode = "X";
}

std::vector<std::string> CMinimalHost::CallsTo(const std::list<std::string>& operations) const {
    std::vector<std::string> calls;
    for (const std::string& strCall : m_calls) {
        const std::string strOperation = strCall.substr(0, strCall.find(' '));
        if (std::find(operations.begin(), operations.end(), strOperation) != operations.end()) {
            calls.push_back(strCall);
        }
    }
    return calls;
}

CMinimalHost::ReadAnswer Text(const std::string& strText) {
    return [strText](CBaseJsonObject& document, bool& bDataEmpty) {
        bDataEmpty = false;
        return document.ParseJson(strText.c_str());
    };
}

CMinimalHost::ReadAnswer Answer(int iRet, bool bDataEmpty, const std::string& strText) {
    return [iRet, bDataEmpty, strText](CBaseJsonObject& document, bool& bFlag) {
        if (!strText.empty()) {
            document.ParseJson(strText.c_str());
        }
        bFlag = bDataEmpty;
        return iRet;
    };
}

void CRecordingLog::writeOperLog(ORVA_LOG_LEVEL eLevel, const char* pszOperation,
                                 const char* pszFile, int, const char* pszFunction,
                                 const char* pszFormat, ...) {
    va_list arguments;
    va_start(arguments, pszFormat);
    CMinimalHost::Instance().Record("log " + std::to_string(eLevel) + " " + pszFile + " " +
                                    pszFunction + " [" + pszOperation + "] " +
                                    FormatText(pszFormat, arguments));
    va_end(arguments);
}

void CRecordingLog::writeTraceLog(const char* pszFile, int, const char* pszFunction,
                                  const char* pszFormat, ...) {
    va_list arguments;
    va_start(arguments, pszFormat);
    CMinimalHost::Instance().Record(std::string("trace ") + pszFile + " " + pszFunction + " " +
                                    FormatText(pszFormat, arguments));
    va_end(arguments);
}
