#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <string>

#include "common/cluster_view.h"
#include "framework_service/IPlugin.h"
#include "framework_service/placement_reason.h"

/// What tells one scheduling plug-in from another.
struct CPluginProfile {
    std::string strName;
    std::string strContainerType;          ///< the real type that it schedules
    std::list<std::string> logicTypeList;  ///< what the real type is bound to
    std::list<unsigned int> jobList;
    LoadFunc pLoad;  ///< what it spreads the tasks by
};

/// Schedules the tasks of one container type, which supports fault shift, by one measure. Between
/// two calls it keeps a view of the cluster, which each decision brings up to date and has to
/// itself: every operation may run on any thread, and of two decisions at once one waits until the
/// other is made. What it decides takes the cluster's next decision version number; when that
/// cannot be had, nothing is decided and the code of the schedule manager is the answer.
class CSchedulePlugin : public IPlugin, public IPlacementReason {
public:
    explicit CSchedulePlugin(const CPluginProfile& profile)
        : m_profile(profile), m_view(profile.strContainerType, profile.pLoad) {
        m_strName = profile.strName;
    }

    /// Gives the memory of the view back.
    int UnInit() override;

    std::string GetVersion() override;
    std::string GetName() override { return m_strName; }
    int GetSupportFaultShiftContainers(std::list<std::string>& containerList) override;
    int GetSupportedJobs(std::list<unsigned int>& jobList) override;
    int GetSupportedContainers(std::list<std::string>& containerList) override;
    int GetContainerBindTable(ContainerTypeBindMap& containerBindList) override;

    /// Appends the tasks of the TaskList at the cursor (task_xml.h). Returns 0; or, logged and with
    /// the list untouched, ORVA_PARA_INVALID for a job that is not the plug-in's, ORVA_XML_INVALID
    /// for a list that cannot be read.
    int PrivateTaskToResourceTask(const std::string& strNodeId, uint32_t uiJobType, PELU::CXml& xml,
                                  std::list<CResourceTask>& resTaskList) override;

    /// Names a container for each task, in list order: the least loaded usable one with room for
    /// all its costs. A task that a usable container holds stays there; with bReschedule it goes to
    /// any other. taskBindTable is replaced. Returns 0; or, logged, ORVA_FAIL when tasks found no
    /// room: those are missing in the table, the others hold.
    int TaskSchedule(const std::string& strNodeId, const std::list<CResourceTask>& resTaskList,
                     CTaskContainerMap& taskBindTable, unsigned long long& ullDecisionVerNum,
                     bool bReschedule) override;

    /// Adds a ShiftTask element with TaskID, NodeID, DecisionVerNum and ShiftIn.
    int AssembleShiftResult(const std::string& strNodeId, const CResourceTask& resTask,
                            unsigned long long ullDecisionVerNum, bool bShiftIn,
                            PELU::CXml& xml) override;

    /// Adds a TaskResult element with TaskID and Result, and for a success NodeID and
    /// ContainerType.
    int AssembleScheduleResult(const CResourceTask& resTask, int iResult,
                               const CContainerAddr& containerAddr, PELU::CXml& xml) override;

    /// Appends the container's tasks; for a shift of either kind only those that may move.
    int GetResTaskListInContainer(const CContainerAddr& containerAddr,
                                  std::list<CResourceTask>& resTaskList, bool bFaultShift,
                                  bool bLoadBalance) override;

    /// Appends the container's tasks of that id.
    void GetResTaskInfoByTaskId(const CContainerAddr& containerAddr, const std::string& strTaskId,
                                std::list<CResourceTask>& resTaskList) override;

    /// Moves tasks as told. Both out-maps are replaced: taskRspResultMap has a code for every entry
    /// of the shift map (CScheduleBoard::Shift; ORVA_PARA_INVALID for a task that is not in the
    /// list), taskBindTable the container of those that can move. Returns 0, or ORVA_FAIL when one
    /// cannot.
    int ManualTaskSchedule(const std::list<CResourceTask>& resTaskList,
                           const CTaskShiftMap& manualTaskShiftMap,
                           CTaskContainerMap& taskBindTable,
                           std::map<std::string, int>& taskRspResultMap,
                           unsigned long long& ullDecisionVerNum) override;

    bool IsContainerEmpty(CContainerAddr& containerAddr) override;

    /// What TaskSchedule goes by, without bReschedule (CScheduleBoard::Explain).
    void ExplainPlacement(const CResourceTask& task, std::list<CPlacementReason>& reasons) override;

protected:
    /// For a CScheduleBoard.
    CClusterView& GetView() { return m_view; }

    /// Takes the next decision version number if the table names a container; when it cannot be
    /// had, the table is emptied. Returns 0 or the code.
    int Decide(CTaskContainerMap& taskBindTable, unsigned long long& ullDecisionVerNum) const;

private:
    const CPluginProfile m_profile;
    CClusterView m_view;
};
