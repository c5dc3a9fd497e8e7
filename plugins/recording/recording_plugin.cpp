#include "common/schedule_board.h"
#include "common/schedule_plugin.h"
#include "common_service/tarn_def.h"
#include "framework_service/framework_common.h"

namespace {

constexpr unsigned int JOB_RECORD = 1001;
constexpr unsigned int JOB_PLAYBACK_EXPORT = 1002;
constexpr char CONTAINER_TYPE_RECORD[] = "MeroRecord";

double DiskRatio(const CContainerLoad& load) {
    return load.GetRatio(RESOURCE_TYPE_DISK);
}

/// Records camera streams and exports recordings: work that fills disks, so that disks are what it
/// spreads by.
class CRecordingPlugin : public CSchedulePlugin {
public:
    CRecordingPlugin()
        : CSchedulePlugin({"recording",
                           CONTAINER_TYPE_RECORD,
                           {"RecordPlan", "RecordExport"},
                           {JOB_RECORD, JOB_PLAYBACK_EXPORT},
                           &DiskRatio}) {}

    int GetSupportLoadBalanceContainers(std::list<std::string>& containerList) override {
        containerList = {CONTAINER_TYPE_RECORD};
        return ORVA_SUCCEED;
    }

    /// Moves tasks from the fullest container to the emptiest until their disk ratios differ by no
    /// more than the cluster's disk threshold, in percent. Replaces all three: the tasks that move,
    /// the containers that they leave and those that they enter.
    int LoadBalanceSchedule(std::list<CResourceTask>& resTaskList,
                            CTaskContainerMap& taskUnbindTable, CTaskContainerMap& taskBindTable,
                            unsigned long long& ullDecisionVerNum) override {
        resTaskList.clear();
        taskUnbindTable.clear();
        taskBindTable.clear();
        const int iThreshold =
            CFrameworkCommon::Instance().GetClusterConfig().GetLoadBalanceDiskThreshold();
        for (const CTaskMove& move : CScheduleBoard(GetView()).Balance(iThreshold / 100.0)) {
            resTaskList.push_back(move.task);
            taskUnbindTable.emplace(move.task.GetTaskId(), move.from);
            taskBindTable.emplace(move.task.GetTaskId(), move.to);
        }
        const int iRet = Decide(taskBindTable, ullDecisionVerNum);
        if (iRet != ORVA_SUCCEED) {
            resTaskList.clear();
            taskUnbindTable.clear();
        }
        return iRet;
    }
};

}  // namespace

extern "C" [[gnu::visibility("default")]] int CreatePlugin(IPlugin*& pPlugin) {
    static CRecordingPlugin plugin;
    pPlugin = &plugin;
    return ORVA_SUCCEED;
}
