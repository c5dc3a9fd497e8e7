#include "framework_service/standard_task_mgr.h"

#include <utility>

#include "common_service/directory.h"
#include "common_service/file_common.h"
#include "common_service/tarn_def.h"
#include "common_service/xml_common.h"
#include "operation_log/operation_log.h"

using namespace operation_log;

CStdTaskMgr CStdTaskMgr::m_Instance;

namespace {

constexpr char OPERATION_LOAD[] = "load standard task table";
constexpr char PSZ_TASK_LIST[] = "TaskList";
constexpr char PSZ_TASK[] = "Task";
constexpr char DEFAULT_TASK[] = "DEFAULT";

/// Is it a name of more than the suffix ".xml", in lower case?
bool IsTaskFile(const std::string& strName) {
    static const std::string SUFFIX = ".xml";
    return strName.size() > SUFFIX.size() &&
           strName.compare(strName.size() - SUFFIX.size(), SUFFIX.size(), SUFFIX) == 0;
}

/// The folder of the task files. Returns 0, or the host's code.
int GetTaskFolder(std::string& strDir) {
    std::string strConfigDir;
    const int iRet = HALD::get_config_directory(strConfigDir);
    strDir = strConfigDir + "/taskmodel";
    return iRet;
}

/// The costs in a task file are read into strValue, which an attribute that is not there leaves as
/// it is, and the setters leave the model as it is.
void ReadCosts(PELU::CXml& xml, std::string& strValue, CResourceTask& task) {
    using CostSetter = bool (CResourceTask::*)(const std::string&);
    static constexpr std::pair<const char*, CostSetter> COSTS[] = {
        {"CPU", &CResourceTask::SetCpu},   {"MEM", &CResourceTask::SetMem},
        {"IO", &CResourceTask::SetIO},     {"NET", &CResourceTask::SetNet},
        {"DISK", &CResourceTask::SetDisk},
    };
    for (const auto& [pszAttribute, pSetter] : COSTS) {
        CXmlCommon::Instance().GetAttributeValue(xml, pszAttribute, strValue);
        (task.*pSetter)(strValue);
    }
}

}  // namespace

int CStdTaskMgr::Load() {
    LogInfo(OPERATION_LOAD, "start");
    m_standardTaskTable.clear();
    std::list<std::string> taskFileTable;
    GetAllStandardTaskFile(taskFileTable);
    for (const std::string& strFileName : taskFileTable) {
        if (const int iRet = LoadTaskBySingleFile(strFileName); iRet != ORVA_SUCCEED) {
            LogFailure(OPERATION_LOAD, iRet, "load task from xml[%s] failed.", strFileName.c_str());
        }
    }
    LogInfo(OPERATION_LOAD, "succeed");
    return ORVA_SUCCEED;
}

int CStdTaskMgr::GetAllStandardTaskFile(std::list<std::string>& taskFileTable) {
    constexpr char OPERATION[] = "get task file failed";
    taskFileTable.clear();
    std::string strDir;
    if (const int iRet = GetTaskFolder(strDir); iRet != ORVA_SUCCEED) {
        return LogFailure(OPERATION, iRet, "get conf dir failed.");
    }
    if (const int iRet = CFileCommon::GetDirFileList(strDir, taskFileTable); iRet != ORVA_SUCCEED) {
        taskFileTable.clear();
        return LogFailure(OPERATION, iRet, "get file list from dir[%s] failed.", strDir.c_str());
    }
    taskFileTable.remove_if([](const std::string& strName) { return !IsTaskFile(strName); });
    return ORVA_SUCCEED;
}

int CStdTaskMgr::LoadTaskBySingleFile(const std::string& strFileName) {
    constexpr char OPERATION_FAILED[] = "standard xml load failed";
    LogInfo("load single standard task table", "start, name[%s]", strFileName.c_str());
    std::string strDir;
    if (const int iRet = GetTaskFolder(strDir); iRet != ORVA_SUCCEED) {
        return LogFailure(OPERATION_FAILED, iRet, "get conf dir failed.");
    }
    PELU::CXml xml(nullptr);
    if (!xml.Load((strDir + "/" + strFileName).c_str())) {
        return LogFailure(OPERATION_FAILED, ORVA_FAIL, "config file[%s]", strFileName.c_str());
    }
    if (const int iRet = ParseStandardTaskTable(xml); iRet != ORVA_SUCCEED) {
        return LogFailure(OPERATION_FAILED, iRet, "parse xml failed");
    }
    LogInfo(OPERATION_LOAD, "succeed, name[%s]", strFileName.c_str());
    return ORVA_SUCCEED;
}

int CStdTaskMgr::ParseStandardTaskTable(PELU::CXml& xml) {
    constexpr char OPERATION[] = "parse standard task table";
    if (!xml.FindElemEx(PSZ_TASK_LIST)) {
        return LogFailure(OPERATION, ORVA_XML_INVALID, "cannot find tasklist node");
    }
    if (!xml.FindElem(PSZ_TASK)) {
        return LogFailure(OPERATION, ORVA_XML_INVALID, "cannot find task node");
    }
    do {
        CResourceTask task;
        std::string strValue;
        const bool bNamed = CXmlCommon::Instance().GetElemValue(xml, PSZ_TASK, strValue, false);
        task.SetTaskName(strValue);
        ReadCosts(xml, strValue, task);
        if (!bNamed) {
            return LogFailure(OPERATION, ORVA_XML_INVALID, "parse xml failed");
        }
        m_standardTaskTable.emplace(task.GetTaskName(), task);
    } while (xml.NextElem());
    return ORVA_SUCCEED;
}

int CStdTaskMgr::GetStandardTask(const std::string& strTaskName, CResourceTask& resourceTask) {
    auto it = m_standardTaskTable.find(strTaskName);
    if (it == m_standardTaskTable.end()) {
        it = m_standardTaskTable.find(DEFAULT_TASK);
    }
    if (it == m_standardTaskTable.end()) {
        return LogFailure("Std task mgr", ORVA_FAIL,
                          "get default standard task failed, task name=%s", strTaskName.c_str());
    }
    resourceTask = it->second;
    return ORVA_SUCCEED;
}
