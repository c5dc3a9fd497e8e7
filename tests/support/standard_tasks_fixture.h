#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "framework_service/standard_task_mgr.h"
#include "support/reconfigure.h"
#include "support/registry_fixture.h"
#include "support/temp_dir.h"

namespace standard_tasks {

inline constexpr char FILE_STEM[] = "standard_task_mgr";
inline constexpr char LOAD[] = "load standard task table";
inline constexpr char LOAD_ONE[] = "load single standard task table";
inline constexpr char XML_FAILED[] = "standard xml load failed";
inline constexpr char SINGLE[] = "LoadTaskBySingleFile";

inline CStdTaskMgr& Manager() {
    return CStdTaskMgr::Instance();
}

inline const CLogLine BEGIN = Info(LOAD, FILE_STEM, "Load", "start");
inline const CLogLine END = Info(LOAD, FILE_STEM, "Load", "succeed");

inline CLogLine FileBegin(const std::string& strName) {
    return Info(LOAD_ONE, FILE_STEM, SINGLE, "start, name[" + strName + "]");
}

inline CLogLine FileEnd(const std::string& strName) {
    return Info(LOAD, FILE_STEM, SINGLE, "succeed, name[" + strName + "]");
}

inline CLogLine FileFailed(const std::string& strName, int iCode) {
    return Err(LOAD, iCode, FILE_STEM, "Load", "load task from xml[" + strName + "] failed.");
}

inline CLogLine NotParsed(const std::string& strMessage) {
    return Err("parse standard task table", ORVA_XML_INVALID, FILE_STEM, "ParseStandardTaskTable",
               strMessage);
}

inline const CLogLine PARSE_FAILED =
    Err(XML_FAILED, ORVA_XML_INVALID, FILE_STEM, SINGLE, "parse xml failed");

/// Every file lies in the folder "taskmodel" of a configuration directory of the test's own.
class StandardTasks : public CHostTest {
protected:
    StandardTasks() {
        std::filesystem::create_directory(m_dir.File("taskmodel"));
        Reconfigure(&CHostSettings::strConfigDir, m_dir.GetPath());
    }

    /// Leaves an empty table behind.
    ~StandardTasks() override {
        Reconfigure(&CHostSettings::strConfigDir, "");
        Manager().Load();
    }

    void WriteFile(const std::string& strName, const std::string& strText) const {
        m_dir.WriteFile("taskmodel/" + strName, strText);
    }

    /// The lines of a load, of which each gives one.
    std::vector<CLogLine> Load() {
        m_logger.Clear();
        EXPECT_EQ(Manager().Load(), 0);
        return m_logger.GetLinesOf(FILE_STEM);
    }

    /// The name of the model that is handed out; empty when there is none.
    std::string Model(const std::string& strName) {
        CResourceTask task;
        task.SetTaskName("untouched");
        const int iRet = Manager().GetStandardTask(strName, task);
        if (iRet == 0) {
            return task.GetTaskName();
        }
        EXPECT_EQ(iRet, ORVA_FAIL);
        EXPECT_EQ(task.GetTaskName(), "untouched");
        return "";
    }

    const CTempDir m_dir;
};

}  // namespace standard_tasks
