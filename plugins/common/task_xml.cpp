#include "common/task_xml.h"

#include <set>

#include "common_service/tarn_def.h"
#include "common_service/xml_common.h"
#include "operation_log/operation_log.h"

using namespace operation_log;

namespace {

constexpr char OPERATION_READ[] = "read task list";

/// The level below the current element, entered for as long as the object lives.
class CXmlLevel {
public:
    explicit CXmlLevel(PELU::CXml& xml) : m_xml(xml), m_bEntered(xml.IntoElem()) {}
    ~CXmlLevel() {
        if (m_bEntered) {
            m_xml.OutOfElem();
        }
    }
    CXmlLevel(const CXmlLevel&) = delete;
    CXmlLevel& operator=(const CXmlLevel&) = delete;

    bool IsEntered() const { return m_bEntered; }

private:
    PELU::CXml& m_xml;
    const bool m_bEntered;
};

/// Reads a number of 0 to iMax; an absent element leaves iValue. False, logged, for anything else.
bool ReadNumber(PELU::CXml& xml, const char* pszName, int iMax, int& iValue) {
    CXmlCommon& reader = CXmlCommon::Instance();
    std::string strText;
    if (!reader.GetElemValue(xml, pszName, strText, true)) {
        return true;
    }
    if (reader.GetElemValueInt(xml, pszName, iValue) && iValue >= 0 && iValue <= iMax) {
        return true;
    }
    LogFailure(OPERATION_READ, ORVA_XML_INVALID, "bad number, %s[%s].", pszName, strText.c_str());
    return false;
}

bool ReadNumbers(PELU::CXml& xml, CResourceTask& task) {
    struct CCost {
        const char* pszName;
        void (CResourceTask::*pSet)(int32_t);
    };
    static constexpr CCost COSTS[] = {{"Cpu", &CResourceTask::SetCpu},
                                      {"Mem", &CResourceTask::SetMem},
                                      {"IO", &CResourceTask::SetIO},
                                      {"Net", &CResourceTask::SetNet},
                                      {"Disk", &CResourceTask::SetDisk}};
    for (const CCost& cost : COSTS) {
        int iValue = 0;
        if (!ReadNumber(xml, cost.pszName, INT32_MAX, iValue)) {
            return false;
        }
        (task.*cost.pSet)(iValue);
    }
    int iSupportShift = 1;
    if (!ReadNumber(xml, "SupportShift", 1, iSupportShift)) {
        return false;
    }
    task.SetSupportShift(iSupportShift == 1);
    return true;
}

/// Reads the Task that the cursor stands on.
bool ReadTask(PELU::CXml& xml, CResourceTask& task) {
    const CXmlLevel level(xml);
    std::string strTaskId;
    if (!level.IsEntered() ||
        !CXmlCommon::Instance().GetElemValue(xml, "TaskID", strTaskId, true) || strTaskId.empty()) {
        LogFailure(OPERATION_READ, ORVA_XML_INVALID, "a task has no TaskID.");
        return false;
    }
    task.SetTaskId(strTaskId);
    std::string strTaskName;
    CXmlCommon::Instance().GetElemValue(xml, "TaskName", strTaskName, true);
    task.SetTaskName(strTaskName);
    if (!ReadNumbers(xml, task)) {
        return false;
    }
    if (xml.FindElem("PrivateInfo")) {
        if (const CXmlLevel pairs(xml); pairs.IsEntered()) {
            task.ParsePrivateInfoFromXml(xml);
        }
    }
    return true;
}

bool ReadTasks(PELU::CXml& xml, std::list<CResourceTask>& taskList) {
    const CXmlLevel level(xml);
    std::set<std::string> ids;
    for (bool bTask = level.IsEntered() && xml.FindElem("Task"); bTask;
         bTask = xml.NextElem() && xml.FindElemValue("Task")) {
        CResourceTask task;
        if (!ReadTask(xml, task)) {
            return false;
        }
        if (!ids.insert(task.GetTaskId()).second) {
            LogFailure(OPERATION_READ, ORVA_XML_INVALID, "task stands twice, id[%s].",
                       task.GetTaskId().c_str());
            return false;
        }
        taskList.push_back(task);
    }
    return true;
}

bool WriteText(PELU::CXml& xml, const CXmlText& text) {
    if (!xml.AddChildElem(text.pszName)) {
        return false;
    }
    const CXmlLevel level(xml);
    return level.IsEntered() && xml.SetElemValue(text.strValue.c_str());
}

bool WriteTexts(PELU::CXml& xml, const char* pszName, const std::list<CXmlText>& children) {
    if (!xml.AddElem(pszName)) {
        return false;
    }
    for (const CXmlText& child : children) {
        if (!WriteText(xml, child)) {
            return false;
        }
    }
    return true;
}

}  // namespace

int ReadTaskList(PELU::CXml& xml, std::list<CResourceTask>& taskList) {
    if (!xml.FindElem("TaskList")) {
        return LogFailure(OPERATION_READ, ORVA_XML_INVALID, "no TaskList.");
    }
    std::list<CResourceTask> readList;
    if (!ReadTasks(xml, readList)) {
        return ORVA_XML_INVALID;
    }
    taskList.splice(taskList.end(), readList);
    return ORVA_SUCCEED;
}

int WriteElement(PELU::CXml& xml, const char* pszName, const std::list<CXmlText>& children) {
    if (!WriteTexts(xml, pszName, children)) {
        return LogFailure("write element", ORVA_XML_INVALID, "cannot write, name[%s].", pszName);
    }
    return ORVA_SUCCEED;
}
