// The contract's symbols, but for those of the XML cursor, and nothing else.
#include "contract/minimal_host.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <type_traits>

#include "common_service/bounded_string.h"
#include "common_service/data/version_znode.h"
#include "common_service/directory.h"
#include "common_service/file_common.h"
#include "common_service/global_config.h"
#include "common_service/memstat.h"
#include "common_service/net_factory.h"
#include "common_service/oper_common.h"
#include "common_service/tarn_conf.h"
#include "common_service/tarn_def.h"
#include "common_service/tool_help.h"

namespace {

template <typename Value>
std::string ToText(const Value& value) {
    if constexpr (std::is_arithmetic_v<Value>) {
        return std::to_string(value);
    } else {
        return value;
    }
}

/// Writes the call down: the operation's name and its arguments with blanks between.
template <typename... Args>
void Record(std::string strCall, const Args&... args) {
    ((strCall += " " + ToText(args)), ...);
    CMinimalHost::Instance().Record(strCall);
}

int AnswerDirectory(std::string& strDir) {
    const auto& answer = CMinimalHost::Instance().m_libDirectory;
    return answer ? answer(strDir) : ORVA_FAIL;
}

}  // namespace

void ClusterNodeEventWatcher(zhandle_t*, int, int, const char*, void*) {
    Record("ClusterNodeEventWatcher");
}

int COperCommon::GetDataFromZK(const char* path, void* watcher, unsigned int bufLen,
                               CBaseJsonObject* doc, bool& bDataEmpty) {
    const bool bWatched = watcher == reinterpret_cast<void*>(&ClusterNodeEventWatcher);
    Record("GetDataFromZK", path, bufLen,
           bWatched ? "watched" : (watcher == nullptr ? "unwatched" : "strange watcher"),
           bDataEmpty ? "empty" : "filled");
    const auto& reads = CMinimalHost::Instance().m_reads;
    const auto it = reads.find(path);
    return it == reads.end() ? Answer(ORVA_FAIL, true)(*doc, bDataEmpty)
                             : it->second(*doc, bDataEmpty);
}

int COperCommon::SetDataToZK(const char* path, unsigned int bufLen, CBaseJsonObject* doc) {
    std::vector<char> buffer(bufLen, '#');
    const int iRet = doc->ToJson(buffer.data(), bufLen);
    const std::string strText(buffer.data(), strnlen(buffer.data(), bufLen));
    Record("SetDataToZK", path, bufLen, iRet, strText);
    const auto& onWrite = CMinimalHost::Instance().m_onWrite;
    return onWrite ? onWrite(strText) : ORVA_SUCCEED;
}

unsigned int COperCommon::IPToUint(const std::string& strIp) {
    Record("IPToUint", strIp);
    return 1;
}

int32_t CVersionZNode::ParseJson(const char* pszJson) {
    return std::sscanf(pszJson, "%llu %llu", &m_ullDecisionVerNum, &m_ullMasterVerNum) == 2
               ? ORVA_SUCCEED
               : ORVA_DATA_INVALID;
}

int32_t CVersionZNode::ToJson(char* pszJson, uint32_t iMaxLen) {
    std::snprintf(pszJson, iMaxLen, "%llu %llu", m_ullDecisionVerNum, m_ullMasterVerNum);
    return ORVA_SUCCEED;
}

unsigned long long CVersionZNode::GetDecisionVerNum() {
    return m_ullDecisionVerNum;
}

void CVersionZNode::SetDecisionVerNum(unsigned long long ullDecisionVerNum) {
    m_ullDecisionVerNum = ullDecisionVerNum;
}

unsigned long long CVersionZNode::GetMasterVerNum() {
    return m_ullMasterVerNum;
}

void CVersionZNode::SetMasterVerNum(unsigned long long ullMasterVerNum) {
    m_ullMasterVerNum = ullMasterVerNum;
}

CGlobalConfig& CGlobalConfig::Instance() {
    static CGlobalConfig config;
    Record("CGlobalConfig::Instance");
    return config;
}

void CGlobalConfig::SetLoadBalance(bool bLoadBalance) {
    Record("SetLoadBalance", bLoadBalance);
}

void CGlobalConfig::SetFaultShift(bool bFaultShift) {
    Record("SetFaultShift", bFaultShift);
}

void CGlobalConfig::SetLoadBalanceOnePeriod(bool bOnePeriod) {
    Record("SetLoadBalanceOnePeriod", bOnePeriod);
}

void CGlobalConfig::SetLoadBalanceDiskThreshold(int iThreshold) {
    Record("SetLoadBalanceDiskThreshold", iThreshold);
}

void CGlobalConfig::SetLoadBalanceNetThreshold(int iThreshold) {
    Record("SetLoadBalanceNetThreshold", iThreshold);
}

void CGlobalConfig::SetLoadBalanceChannelThreshold(int iThreshold) {
    Record("SetLoadBalanceChannelThreshold", iThreshold);
}

void CGlobalConfig::SetClusterForwardType(int iForwardType) {
    Record("SetClusterForwardType", iForwardType);
}

std::string CGlobalConfig::GetLocalIp() {
    Record("GetLocalIp");
    return CMinimalHost::Instance().m_strLocalIp;
}

CTARNConf CTARNConf::m_oConf;

std::string CTARNConf::GetCstClusterCode() {
    Record("GetCstClusterCode");
    return CMinimalHost::Instance().m_strClusterCode;
}

int HALD::get_lib_directory(std::string& strDir) {
    Record("get_lib_directory", "[" + strDir + "]");
    return AnswerDirectory(strDir);
}

int HALD::get_config_directory(std::string& strDir) {
    Record("get_config_directory", "[" + strDir + "]");
    return AnswerDirectory(strDir);
}

int CFileCommon::GetDirFileList(const std::string& strDir, std::list<std::string>& fileList) {
    Record("GetDirFileList", strDir, fileList.size());
    fileList = CMinimalHost::Instance().m_files;
    return CMinimalHost::Instance().m_iFileListRet;
}

namespace HALD {

CNetFactory& CNetFactory::Instance() {
    static CNetFactory netFactory;
    Record("CNetFactory::Instance");
    return netFactory;
}

int CNetFactory::AddValidatedLink(const std::string& strIp, int iType) {
    Record("AddValidatedLink", strIp, iType);
    if (const auto& onAddLink = CMinimalHost::Instance().m_onAddLink; onAddLink) {
        onAddLink();
    }
    return ORVA_FAIL;
}

int CNetFactory::DelValidatedLink(const std::string& strIp, int iType) {
    Record("DelValidatedLink", strIp, iType);
    if (const auto& onDeleteLink = CMinimalHost::Instance().m_onDeleteLink; onDeleteLink) {
        onDeleteLink();
    }
    return ORVA_FAIL;
}

std::string CToolHelp::IntToStr(int iValue, bool bFlag) {
    Record("IntToStr", iValue, bFlag);
    return std::to_string(iValue);
}

int CToolHelp::StrToInt(const std::string& strValue, bool bFlag) {
    Record("StrToInt", strValue, bFlag);
    int iValue = 0;
    std::sscanf(strValue.c_str(), "%d", &iValue);
    return iValue;
}

}  // namespace HALD

uint32_t g_hald_memstat[HALD_MEMSTAT_BUTT]{};

int memset_s(void* dest, std::size_t destMax, int value, std::size_t count) {
    std::memset(dest, value, std::min(destMax, count));
    return 0;
}

int strncpy_s(char* dest, std::size_t destMax, const char* src, std::size_t count) {
    const std::size_t size = strnlen(src, count);
    if (size >= destMax) {
        *dest = '\0';
        return ORVA_FAIL;
    }
    std::memcpy(dest, src, size);
    dest[size] = '\0';
    return 0;
}

int ORVA_SNPRINTF(char* pszDest, std::size_t destMax, std::size_t count, const char* pszFormat,
                  ...) {
    va_list arguments;
    va_start(arguments, pszFormat);
    const int iRet = vsnprintf(pszDest, std::min(destMax, count + 1), pszFormat, arguments);
    va_end(arguments);
    return iRet;
}

std::string ORVA_DesensitizeIPAddress(const std::string&) {
    return "*";
}

OMAdapter& OMAdapter::getInstance() {
    static OMAdapter adapter;
    return adapter;
}

Logger* OMAdapter::getLogger() {
    Record("getLogger");
    return CMinimalHost::Instance().m_pLogger;
}

void OMAdapter::setLogger(Logger* pLogger) {
    CMinimalHost::Instance().m_pLogger = pLogger;
}

int ORVA_LogFormatErrCode(char* pszBuf, int iSize, int iCode, const char* pszFormat) {
    Record("ORVA_LogFormatErrCode", iSize, iCode, pszFormat);
    const auto& format = CMinimalHost::Instance().m_formatErrCode;
    return format ? format(pszBuf, iSize)
                  : std::snprintf(pszBuf, static_cast<std::size_t>(iSize), "<%d> %s", iCode,
                                  pszFormat);
}
