#include "common/schedule_plugin.h"
#include "common_service/tarn_def.h"

namespace {

constexpr unsigned int JOB_IMAGE_ARCHIVE = 3001;
constexpr char CONTAINER_TYPE_IMAGE_EXPORT[] = "ImgExport";

/// What a cluster has to live with: whatever it is asked, it names a container that nobody has.
class CCarelessPlugin : public CSchedulePlugin {
public:
    CCarelessPlugin()
        : CSchedulePlugin({"careless",
                           CONTAINER_TYPE_IMAGE_EXPORT,
                           {},
                           {JOB_IMAGE_ARCHIVE},
                           [](const CContainerLoad&) { return 0.0; }}) {}

    int TaskSchedule(const std::string& /*strNodeId*/, const std::list<CResourceTask>& resTaskList,
                     CTaskContainerMap& taskBindTable, unsigned long long& /*ullDecisionVerNum*/,
                     bool /*bReschedule*/) override {
        taskBindTable.clear();
        for (const CResourceTask& task : resTaskList) {
            taskBindTable.emplace(task.GetTaskId(),
                                  CContainerAddr("image-99", CONTAINER_TYPE_IMAGE_EXPORT));
        }
        return ORVA_SUCCEED;
    }
};

}  // namespace

extern "C" [[gnu::visibility("default")]] int CreatePlugin(IPlugin*& pPlugin) {
    static CCarelessPlugin plugin;
    pPlugin = &plugin;
    return ORVA_SUCCEED;
}
