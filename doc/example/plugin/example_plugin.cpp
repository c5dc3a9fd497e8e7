#include "common_service/tarn_def.h"
#include "common_service/xml_common.h"
#include "framework_service/IPlugin.h"
#include "framework_service/container_mgr.h"
#include "framework_service/schedule_mgr.h"

namespace {

constexpr unsigned int JOB_EXAMPLE = 9001;
constexpr char CONTAINER_TYPE_EXAMPLE[] = "MeroExample";

/// Puts every task into the first container of its type that is online.
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
        ContainerMap containerTable;
        CContainerMgr::Instance().GetAllContainer(containerTable);
        for (const auto& [addr, container] : containerTable) {
            if (addr.GetContainerType() == CONTAINER_TYPE_EXAMPLE && container.IsOnline()) {
                for (const CResourceTask& task : resTaskList) {
                    taskBindTable.insert_or_assign(task.GetTaskId(), addr);
                }
                return CScheduleMgr::Instance().IncreaseDecisionVerNum(ullDecisionVerNum);
            }
        }
        return ORVA_FAIL;
    }
};

}  // namespace

extern "C" [[gnu::visibility("default")]] int CreatePlugin(IPlugin*& pPlugin) {
    static CExamplePlugin plugin;
    pPlugin = &plugin;
    return ORVA_SUCCEED;
}
