#pragma once

#include <list>
#include <map>
#include <string>

#include "common_service/xml.h"
#include "framework_service/resource_task.h"

/// The standard tasks: named models, read from the XML files in the folder "taskmodel" below the
/// configuration directory. The first model of a name stays. A model has a name and no costs: the
/// figures in its file are read and without effect. No lock: Load must not run beside anything
/// else.
class CStdTaskMgr {
public:
    using TaskMap = std::map<std::string, CResourceTask>;

    static CStdTaskMgr& Instance() { return m_Instance; }

    CStdTaskMgr(const CStdTaskMgr&) = delete;
    CStdTaskMgr& operator=(const CStdTaskMgr&) = delete;
    virtual ~CStdTaskMgr() = default;

    /// Replaces the table by what the files hold. A file that cannot be read is logged, keeps what
    /// was read of it and does not stop the others. Always 0.
    int Load();

    /// Copies the model of that name out, or else the model "DEFAULT". Returns 0; or, logged,
    /// ORVA_FAIL with the argument untouched when there is neither.
    int GetStandardTask(const std::string& strTaskName, CResourceTask& resourceTask);

    /// Replaces the argument by a copy of the table.
    void GetAllStandardTask(TaskMap& taskMap) const { taskMap = m_standardTaskTable; }

private:
    CStdTaskMgr() = default;

    int GetAllStandardTaskFile(std::list<std::string>& taskFileTable);
    int LoadTaskBySingleFile(const std::string& strFileName);
    int ParseStandardTaskTable(PELU::CXml& xml);

    static CStdTaskMgr m_Instance;

    TaskMap m_standardTaskTable;
};
