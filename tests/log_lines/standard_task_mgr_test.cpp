#include "framework_service/standard_task_mgr.h"

#include <filesystem>
#include <fstream>

#include "log_lines/log_lines.h"
#include "support/reconfigure.h"

// "get conf dir failed." of a single file is written by a host alone that forgets its directory
// within a load.

namespace {

/// Loads the folder with one file of that text.
void LoadText(CScene& scene, const char* pszText) {
    std::filesystem::create_directory(scene.strDir + "/taskmodel");
    std::ofstream(scene.strDir + "/taskmodel/a.xml") << pszText;
    CStdTaskMgr::Instance().Load();
}

const std::vector<CScenario> SCENARIOS = {
    {"LoadWithoutADirectory",
     [](CScene&) {
         Reconfigure(&CHostSettings::strConfigDir, "");
         CStdTaskMgr::Instance().Load();
     },
     {"INFO|standard_task_mgr|Load|load standard task table||start",
      "ERR|standard_task_mgr|GetAllStandardTaskFile|get task file failed|1|get conf dir failed.",
      "INFO|standard_task_mgr|Load|load standard task table||succeed"}},
    {"LoadWithoutAFolder",
     [](CScene&) { CStdTaskMgr::Instance().Load(); },
     {"INFO|standard_task_mgr|Load|load standard task table||start",
      "ERR|standard_task_mgr|GetAllStandardTaskFile|get task file failed|1|get file list from "
      "dir[%s] failed.|get file list from dir[DIR/taskmodel] failed.",
      "INFO|standard_task_mgr|Load|load standard task table||succeed"}},
    {"LoadNoXml",
     [](CScene& scene) { LoadText(scene, "text"); },
     {"INFO|standard_task_mgr|Load|load standard task table||start",
      "INFO|standard_task_mgr|LoadTaskBySingleFile|load single standard task table||start, "
      "name[%s]|start, name[a.xml]",
      "ERR|standard_task_mgr|LoadTaskBySingleFile|standard xml load failed|1|config "
      "file[%s]|config file[a.xml]",
      "ERR|standard_task_mgr|Load|load standard task table|1|load task from xml[%s] failed.|load "
      "task from xml[a.xml] failed.",
      "INFO|standard_task_mgr|Load|load standard task table||succeed"}},
    {"LoadNoList",
     [](CScene& scene) { LoadText(scene, "<Other/>"); },
     {"INFO|standard_task_mgr|Load|load standard task table||start",
      "INFO|standard_task_mgr|LoadTaskBySingleFile|load single standard task table||start, "
      "name[%s]|start, name[a.xml]",
      "ERR|standard_task_mgr|ParseStandardTaskTable|parse standard task table|109100027|cannot "
      "find tasklist node",
      "ERR|standard_task_mgr|LoadTaskBySingleFile|standard xml load failed|109100027|parse xml "
      "failed",
      "ERR|standard_task_mgr|Load|load standard task table|109100027|load task from xml[%s] "
      "failed.|load task from xml[a.xml] failed.",
      "INFO|standard_task_mgr|Load|load standard task table||succeed"}},
    {"LoadNoTask",
     [](CScene& scene) { LoadText(scene, "<TaskList><Other/></TaskList>"); },
     {"INFO|standard_task_mgr|Load|load standard task table||start",
      "INFO|standard_task_mgr|LoadTaskBySingleFile|load single standard task table||start, "
      "name[%s]|start, name[a.xml]",
      "ERR|standard_task_mgr|ParseStandardTaskTable|parse standard task table|109100027|cannot "
      "find task node",
      "ERR|standard_task_mgr|LoadTaskBySingleFile|standard xml load failed|109100027|parse xml "
      "failed",
      "ERR|standard_task_mgr|Load|load standard task table|109100027|load task from xml[%s] "
      "failed.|load task from xml[a.xml] failed.",
      "INFO|standard_task_mgr|Load|load standard task table||succeed"}},
    {"LoadAnotherElementBetweenTasks",
     [](CScene& scene) { LoadText(scene, "<TaskList><Task>a</Task><Other/></TaskList>"); },
     {"INFO|standard_task_mgr|Load|load standard task table||start",
      "INFO|standard_task_mgr|LoadTaskBySingleFile|load single standard task table||start, "
      "name[%s]|start, name[a.xml]",
      "ERR|standard_task_mgr|ParseStandardTaskTable|parse standard task table|109100027|parse xml "
      "failed",
      "ERR|standard_task_mgr|LoadTaskBySingleFile|standard xml load failed|109100027|parse xml "
      "failed",
      "ERR|standard_task_mgr|Load|load standard task table|109100027|load task from xml[%s] "
      "failed.|load task from xml[a.xml] failed.",
      "INFO|standard_task_mgr|Load|load standard task table||succeed"}},
    {"LoadWhole",
     [](CScene& scene) { LoadText(scene, "<TaskList><Task CPU=\"1\">a</Task></TaskList>"); },
     {"INFO|standard_task_mgr|Load|load standard task table||start",
      "INFO|standard_task_mgr|LoadTaskBySingleFile|load single standard task table||start, "
      "name[%s]|start, name[a.xml]",
      "INFO|standard_task_mgr|LoadTaskBySingleFile|load standard task table||succeed, "
      "name[%s]|succeed, name[a.xml]",
      "INFO|standard_task_mgr|Load|load standard task table||succeed"}},
    {"GetUnknownTask",
     [](CScene& scene) {
         CStdTaskMgr::Instance().Load();
         scene.logger.Clear();
         CResourceTask task;
         CStdTaskMgr::Instance().GetStandardTask("ghost", task);
     },
     {"ERR|standard_task_mgr|GetStandardTask|Std task mgr|1|get default standard task failed, task "
      "name=%s|get default standard task failed, task name=ghost"}},
};

INSTANTIATE_TEST_SUITE_P(StandardTask, LogLines, testing::ValuesIn(SCENARIOS), NAME_OF_PARAMETER);

}  // namespace
