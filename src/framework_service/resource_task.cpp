#include "framework_service/resource_task.h"

#include <utility>

#include "common_service/tarn_def.h"
#include "common_service/tool_help.h"
#include "common_service/xml_common.h"
#include "internal/key_values.h"
#include "operation_log/operation_log.h"

using namespace framework_internal;
using namespace operation_log;

bool CResourceTask::SetCpu(const std::string&) {
    return true;
}

bool CResourceTask::SetMem(const std::string&) {
    return true;
}

bool CResourceTask::SetIO(const std::string&) {
    return true;
}

bool CResourceTask::SetNet(const std::string&) {
    return true;
}

bool CResourceTask::SetDisk(const std::string&) {
    return true;
}

int CResourceTask::InsertSingleKeyValue(const std::string& strKey, const std::string& strValue) {
    m_privateInfo.Edit().emplace(strKey, strValue);
    return ORVA_SUCCEED;
}

int CResourceTask::GetValueByKey(const std::string& strKey, std::string& strValue) const {
    return ReadKey("resource task, get value by key", "can not find, key[%s], value[%s]",
                   *m_privateInfo, strKey, strValue);
}

int CResourceTask::GetIntValueByKey(const std::string& strKey, int& iValue) const {
    std::string strValue;
    const int iRet = GetValueByKey(strKey, strValue);
    if (iRet == ORVA_SUCCEED) {
        iValue = HALD::CToolHelp::StrToInt(strValue, false);
    }
    return iRet;
}

int CResourceTask::ParsePrivateInfoFromXml(PELU::CXml& xml) {
    m_privateInfo = {};
    KeyValueMap parsed;
    const int iRet = CXmlCommon::Instance().ParseKeyValueInfoFromXml(xml, parsed);
    m_privateInfo = std::move(parsed);
    return iRet;
}

void CResourceTask::GetAllPrivateInfo(KeyValueMap& privateInfo) const {
    privateInfo = *m_privateInfo;
}

void CResourceTask::SetAllocInfoList(ORVA_CLOUD_STORAGE_ALLOC_INFO allocInfo) {
    m_allocInfoList.Edit().push_back(std::move(allocInfo));
}

void CResourceTask::GetAllocInfoList(
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO>& allocInfoList) const {
    allocInfoList.insert(allocInfoList.end(), m_allocInfoList->begin(), m_allocInfoList->end());
}
