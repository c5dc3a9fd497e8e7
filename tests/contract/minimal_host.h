#pragma once

#include <functional>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "common_service/data/communication_data.h"
#include "common_service/logger.h"

/// What the smallest host is told and writes down. The host itself, minimal_host.cpp and
/// minimal_xml.cpp, defines the contract and nothing else; it writes down every call in order as
/// one text each, the operation's name first, and answers as a test tells it to here.
struct CMinimalHost {
    /// The answer to a read: the result, the flag, and what is done with the document.
    using ReadAnswer = std::function<int(CBaseJsonObject& document, bool& bDataEmpty)>;

    static CMinimalHost& Instance();

    /// Back to a host that has nothing stored, no logger, no directories.
    void Reset();

    /// The calls to the named operations, in order.
    std::vector<std::string> CallsTo(const std::list<std::string>& operations) const;

    void Record(const std::string& strCall) { m_calls.push_back(strCall); }

    std::vector<std::string> m_calls;
    std::map<std::string, ReadAnswer> m_reads;  ///< by path; any other path is absent
    std::function<int(const std::string& strText)> m_onWrite;
    std::function<void()> m_onAddLink;
    std::function<void()> m_onDeleteLink;
    std::function<int(char* pszBuf, int iSize)> m_formatErrCode;
    std::function<int(std::string& strDir)> m_libDirectory;
    int m_iFileListRet = 0;
    std::list<std::string> m_files;
    std::string m_strXmlFile;  ///< what every XML file holds; none is there when it is empty
    std::string m_strClusterCode;
    std::string m_strLocalIp;
    Logger* m_pLogger = nullptr;
};

/// A read that hands the document this text.
CMinimalHost::ReadAnswer Text(const std::string& strText);

/// A read that answers so, whatever the document makes of the text.
CMinimalHost::ReadAnswer Answer(int iRet, bool bDataEmpty, const std::string& strText = "");

/// Writes every line down as a call: "log", level, source file, function, operation text, message.
class CRecordingLog : public Logger {
public:
    void writeOperLog(ORVA_LOG_LEVEL eLevel, const char* pszOperation, const char* pszFile,
                      int iLine, const char* pszFunction, const char* pszFormat, ...) override
        __attribute__((format(printf, 7, 8)));
    void writeTraceLog(const char* pszFile, int iLine, const char* pszFunction,
                       const char* pszFormat, ...) override __attribute__((format(printf, 5, 6)));
};
