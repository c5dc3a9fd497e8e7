#include "framework_service/plugin_mgr.h"
#include "log_lines/log_lines.h"
#include "support/reconfigure.h"

// "cannot write" is never written: the elements have names and a place.

namespace {

/// The shipped plug-in of that name.
IPlugin& Plugin(CScene& scene, const char* pszName) {
    Reconfigure(&CHostSettings::strLibDir, PLUGIN_LIB_DIR);
    CPluginMgr::Instance().LoadAllPlugin();
    scene.logger.Clear();
    return *CPluginMgr::Instance().GetPluginByName(pszName);
}

std::list<CResourceTask> OneTask() {
    CResourceTask task;
    task.SetTaskId("t1");
    return {task};
}

void ReadTasks(CScene& scene, uint32_t uiJobType, const char* pszXml) {
    PELU::CXml xml(nullptr);
    xml.Parse(pszXml);
    std::list<CResourceTask> tasks;
    Plugin(scene, "recording").PrivateTaskToResourceTask("n1", uiJobType, xml, tasks);
}

/// Schedules a task, for which there is no room.
void Schedule(IPlugin& plugin) {
    CTaskContainerMap bound;
    unsigned long long ullNumber = 0;
    plugin.TaskSchedule("n1", OneTask(), bound, ullNumber, false);
}

/// Shifts a task that no container holds.
void ShiftUnheld(IPlugin& plugin) {
    CTaskShiftInfo shift;
    shift.SetInContainer({"n2", "A"});
    CTaskContainerMap bound;
    std::map<std::string, int> results;
    unsigned long long ullNumber = 0;
    plugin.ManualTaskSchedule(OneTask(), {{"t1", shift}}, bound, results, ullNumber);
}

const std::vector<CScenario> SCENARIOS = {
    {"UnknownJobType",
     [](CScene& scene) { ReadTasks(scene, 7, "<TaskList/>"); },
     {"ERR|schedule_plugin|PrivateTaskToResourceTask|private task to resource task|2|unknown job "
      "type[7], node[n1]."}},
    {"NoTaskList",
     [](CScene& scene) { ReadTasks(scene, 1001, "<Other/>"); },
     {"ERR|task_xml|ReadTaskList|read task list|109100027|no TaskList."}},
    {"TaskWithoutAnId",
     [](CScene& scene) { ReadTasks(scene, 1001, "<TaskList><Task/></TaskList>"); },
     {"ERR|task_xml|ReadTask|read task list|109100027|a task has no TaskID."}},
    {"TaskWithABadNumber",
     [](CScene& scene) {
         ReadTasks(scene, 1001,
                   "<TaskList><Task><TaskID>t1</TaskID><Cpu>-1</Cpu></Task></TaskList>");
     },
     {"ERR|task_xml|ReadNumber|read task list|109100027|bad number, Cpu[-1]."}},
    {"TaskThatStandsTwice",
     [](CScene& scene) {
         ReadTasks(scene, 1001,
                   "<TaskList><Task><TaskID>t1</TaskID></Task><Task><TaskID>t1</TaskID></Task></"
                   "TaskList>");
     },
     {"ERR|task_xml|ReadTasks|read task list|109100027|task stands twice, id[t1]."}},
    {"ScheduleWithoutRoom",
     [](CScene& scene) { Schedule(Plugin(scene, "recording")); },
     {"ERR|schedule_plugin|TaskSchedule|task schedule|1|no room for task[t1] of node[n1]."}},
    {"ScheduleImageWithoutRoom",
     [](CScene& scene) { Schedule(Plugin(scene, "image")); },
     {"ERR|schedule_plugin|TaskSchedule|task schedule|1|no room for task[t1] of node[n1]."}},
    {"ShiftUnheldTask",
     [](CScene& scene) { ShiftUnheld(Plugin(scene, "recording")); },
     {"ERR|schedule_plugin|ManualTaskSchedule|manual task schedule|2|cannot shift task[t1] to "
      "node[n2]."}},
};

INSTANTIATE_TEST_SUITE_P(SchedulePlugin, LogTexts, testing::ValuesIn(SCENARIOS), NAME_OF_PARAMETER);

}  // namespace
