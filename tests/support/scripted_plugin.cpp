#include "support/scripted_plugin.h"

#include "common/task_xml.h"
#include "common_service/tarn_def.h"
#include "framework_service/IPlugin.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/schedule_mgr.h"

namespace {

CScript& Script() {
    static CScript script;
    return script;
}

class CScriptedPlugin : public IPlugin, public IPlacementReason {
public:
    std::string GetName() override { return "scripted"; }

    int GetSupportFaultShiftContainers(std::list<std::string>& containerList) override {
        containerList = {PSZ_SCRIPTED_TYPE};
        return ORVA_SUCCEED;
    }

    int GetSupportLoadBalanceContainers(std::list<std::string>& containerList) override {
        containerList = {PSZ_SCRIPTED_TYPE};
        return ORVA_SUCCEED;
    }

    int GetSupportedJobs(std::list<unsigned int>& jobList) override {
        jobList = {NUMERIC_SCRIPTED_JOB};
        return ORVA_SUCCEED;
    }

    int GetSupportedContainers(std::list<std::string>& containerList) override {
        containerList = {PSZ_SCRIPTED_TYPE};
        return ORVA_SUCCEED;
    }

    int GetContainerBindTable(ContainerTypeBindMap& containerBindList) override {
        containerBindList = {{PSZ_SCRIPTED_TYPE, {"ScriptedLogic"}}};
        return ORVA_SUCCEED;
    }

    int PrivateTaskToResourceTask(const std::string& /*strNodeId*/, uint32_t /*uiJobType*/,
                                  PELU::CXml& xml, std::list<CResourceTask>& resTaskList) override {
        ++Script().calls["PrivateTaskToResourceTask"];
        return Script().readJob ? Script().readJob(resTaskList) : ReadTaskList(xml, resTaskList);
    }

    int TaskSchedule(const std::string& /*strNodeId*/, const std::list<CResourceTask>& resTaskList,
                     CTaskContainerMap& taskBindTable, unsigned long long& ullDecisionVerNum,
                     bool /*bReschedule*/) override {
        ++Script().calls["TaskSchedule"];
        taskBindTable.clear();
        return Script().schedule ? Script().schedule(resTaskList, taskBindTable, ullDecisionVerNum)
                                 : PlaceFirst(resTaskList, taskBindTable, ullDecisionVerNum);
    }

    int GetResTaskListInContainer(const CContainerAddr& containerAddr,
                                  std::list<CResourceTask>& resTaskList, bool /*bFaultShift*/,
                                  bool /*bLoadBalance*/) override {
        ++Script().calls["GetResTaskListInContainer"];
        CContainerMgr::Instance().GetResTaskList(containerAddr, resTaskList);
        return ORVA_SUCCEED;
    }

    int LoadBalanceSchedule(std::list<CResourceTask>& resTaskList,
                            CTaskContainerMap& taskUnbindTable, CTaskContainerMap& taskBindTable,
                            unsigned long long& /*ullDecisionVerNum*/) override {
        ++Script().calls["LoadBalanceSchedule"];
        return Script().balance ? Script().balance(resTaskList, taskUnbindTable, taskBindTable)
                                : ORVA_SUCCEED;
    }

    bool NotifyShiftIn(const CContainerAddr& containerAddr,
                       const std::list<CResourceTask>& taskList,
                       const CTaskContainerMap& taskUnbindMap,
                       unsigned long long ullDecisionVerNum) override {
        ++Script().calls["NotifyShiftIn"];
        return Script().shiftIn ? Script().shiftIn()
                                : IPlugin::NotifyShiftIn(containerAddr, taskList, taskUnbindMap,
                                                         ullDecisionVerNum);
    }

    void ExplainPlacement(const CResourceTask& /*task*/,
                          std::list<CPlacementReason>& reasons) override {
        if (Script().explain) {
            Script().explain(reasons);
        }
    }

private:
    static int PlaceFirst(const std::list<CResourceTask>& resTaskList,
                          CTaskContainerMap& taskBindTable, unsigned long long& ullDecisionVerNum) {
        ContainerMap available;
        CFrameworkCommon::Instance().GetAvailableContainer(PSZ_SCRIPTED_TYPE, available);
        if (available.empty()) {
            return ORVA_FAIL;
        }
        for (const CResourceTask& task : resTaskList) {
            taskBindTable.emplace(task.GetTaskId(), available.begin()->first);
        }
        return CScheduleMgr::Instance().IncreaseDecisionVerNum(ullDecisionVerNum);
    }
};

}  // namespace

extern "C" [[gnu::visibility("default")]] CScript& GetScript() {
    return Script();
}

extern "C" [[gnu::visibility("default")]] int CreatePlugin(IPlugin*& pPlugin) {
    static CScriptedPlugin plugin;
    pPlugin = &plugin;
    return ORVA_SUCCEED;
}
