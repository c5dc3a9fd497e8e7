#pragma once

#include <list>
#include <string>

#include "framework_service/IPlugin.h"
#include "framework_service/placement_reason.h"
#include "support/host_fixture.h"

/// A task with its costs; a movable one unless told otherwise.
struct CTaskShape {
    std::string strTaskId;
    int iDisk = 0;
    int iNet = 0;
    bool bSupportShift = true;

    CResourceTask ToTask() const;
};

std::list<CResourceTask> Tasks(const std::list<CTaskShape>& shapes);
std::list<std::string> TaskIds(const std::list<CResourceTask>& taskList);

/// A test on one of the built plug-ins, with registries of its own whose containers are of the
/// plug-in's type. A container has the totals 1000 for disk and 100 for net.
class CScheduleTest : public CHostTest {
protected:
    CScheduleTest(const std::string& strPluginName, const std::string& strContainerType,
                  const std::string& strLibDir = PLUGIN_LIB_DIR);
    ~CScheduleTest() override;

    void SetUp() override;

    CContainerAddr Addr(const std::string& strNodeId) const {
        return {strNodeId, m_strContainerType};
    }

    /// Registers a container that never reported, on a node that is a normal member.
    void AddSilentContainer(const std::string& strNodeId) const;

    /// The same for one that reports the disk and net in use and holds the tasks.
    void AddContainer(const std::string& strNodeId, int iDisk, int iNet,
                      const std::list<CTaskShape>& shapes = {}) const;

    /// Makes the node a normal member of the cluster, or a removed one.
    static void SetMember(const std::string& strNodeId, bool bNormal);

    /// Schedules and returns the answer; what was decided stands in m_bindTable.
    int Schedule(const std::list<CTaskShape>& shapes, bool bReschedule = false);

    /// The node that each task was bound to.
    std::map<std::string, std::string> BoundNodes() const;

    /// What the plug-in says of each container for the task.
    std::list<CPlacementReason> Reasons(const CResourceTask& task);

    /// The same, each as "node: reason", with "may take" for none.
    std::list<std::string> Explain(const CResourceTask& task);

    /// An XML document whose cursor stands before its root.
    static void Parse(PELU::CXml& xml, const std::string& strText);

    IPlugin& Plugin() { return *m_pPlugin; }

    CTaskContainerMap m_bindTable{{"stale", {"stale", "stale"}}};
    unsigned long long m_ullDecisionVerNum = 0;

private:
    CContainer NamedContainer(const std::string& strNodeId) const;
    void Register(const CContainer& container) const;

    const std::string m_strPluginName;
    const std::string m_strContainerType;
    IPlugin* m_pPlugin = nullptr;
};
