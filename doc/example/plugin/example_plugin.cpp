#include "common_service/tarn_def.h"
#include "common_service/xml_common.h"
#include "framework_service/IPlugin.h"
#include "framework_service/framework_common.h"
#include "framework_service/schedule_mgr.h"

namespace {

constexpr unsigned int JOB_EXAMPLE = 9001;
constexpr char CONTAINER_TYPE_EXAMPLE[] = "MeroExample";

/// Puts every task into the first container of its type that is available.
class CExamplePlugin : public IPlugin {
public:
    std::string GetName() override { return "example"; }

    int GetSupportedJobs(std::list<unsigned int>& jobList) override {
        jobList = {JOB_EXAMPLE};
        return ORVA_SUCCEED;
    }

    int GetSupportedContainers(std::list<std::string>& containerList) override {
        containerList = {CONTAINER_TYPE_EXAMPLE};
        return ORVA_SUCCEED;
    }

    int GetContainerBindTable(ContainerTypeBindMap& containerBindList) override {
        containerBindList = {{CONTAINER_TYPE_EXAMPLE, {"ExampleLogic"}}};
        return ORVA_SUCCEED;
    }

    /// The request has one task: <TaskID>…</TaskID> on the level of the cursor.
    int PrivateTaskToResourceTask(const std::string&, uint32_t, PELU::CXml& xml,
                                  std::list<CResourceTask>& resTaskList) override {
        std::string strTaskId;
        if (!CXmlCommon::Instance().GetElemValue(xml, "TaskID", strTaskId, true)) {
            return ORVA_XML_INVALID;
        }
        resTaskList.emplace_back().SetTaskId(strTaskId);
        return ORVA_SUCCEED;
    }

    int TaskSchedule(const std::string&, const std::list<CResourceTask>& resTaskList,
                     CTaskContainerMap& taskBindTable, unsigned long long& ullDecisionVerNum,
                     bool) override {
        taskBindTable.clear();
        if (resTaskList.empty()) {
            return ORVA_SUCCEED;
        }
        ContainerMap availableTable;
        CFrameworkCommon::Instance().GetAvailableContainer(CONTAINER_TYPE_EXAMPLE, availableTable);
        if (availableTable.empty()) {
            return ORVA_FAIL;
        }
        const int iRet = CScheduleMgr::Instance().IncreaseDecisionVerNum(ullDecisionVerNum);
        if (iRet != ORVA_SUCCEED) {
            return iRet;
        }
        for (const CResourceTask& task : resTaskList) {
            taskBindTable.emplace(task.GetTaskId(), availableTable.begin()->first);
        }
        return ORVA_SUCCEED;
    }
};

}  // namespace

extern "C" [[gnu::visibility("default")]] int CreatePlugin(IPlugin*& pPlugin) {
    static CExamplePlugin plugin;
    pPlugin = &plugin;
    return ORVA_SUCCEED;
}
