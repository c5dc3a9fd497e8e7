#include "plugins/schedule_fixture.h"

#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "framework_service/plugin_mgr.h"
#include "framework_service/schedule_mgr.h"
#include "support/reconfigure.h"

CResourceTask CTaskShape::ToTask() const {
    CResourceTask task;
    task.SetTaskId(strTaskId);
    task.SetDisk(iDisk);
    task.SetNet(iNet);
    task.SetSupportShift(bSupportShift);
    return task;
}

std::list<CResourceTask> Tasks(const std::list<CTaskShape>& shapes) {
    std::list<CResourceTask> taskList;
    for (const CTaskShape& shape : shapes) {
        taskList.push_back(shape.ToTask());
    }
    return taskList;
}

std::list<std::string> TaskIds(const std::list<CResourceTask>& taskList) {
    std::list<std::string> ids;
    for (const CResourceTask& task : taskList) {
        ids.push_back(task.GetTaskId());
    }
    return ids;
}

CScheduleTest::CScheduleTest(const std::string& strPluginName, const std::string& strContainerType,
                             const std::string& strLibDir)
    : m_strPluginName(strPluginName), m_strContainerType(strContainerType) {
    Reconfigure(&CHostSettings::strLibDir, strLibDir);
}

CScheduleTest::~CScheduleTest() {
    CContainerMgr::Instance().Init({});
    CNodeMgr::Instance().Init({});
    CPluginMgr::Instance().UnLoadAllPlugin();
}

void CScheduleTest::SetUp() {
    ASSERT_EQ(CScheduleMgr::Instance().SetDecisionVerNum(40), 0);
    ASSERT_EQ(CPluginMgr::Instance().LoadAllPlugin(), 0);
    m_pPlugin = CPluginMgr::Instance().GetPluginByName(m_strPluginName);
    ASSERT_NE(m_pPlugin, nullptr);
    m_logger.Clear();
}

CContainer CScheduleTest::NamedContainer(const std::string& strNodeId) const {
    CContainer container;
    container.SetNodeId(strNodeId);
    container.SetContainerType(m_strContainerType);
    return container;
}

void CScheduleTest::Register(const CContainer& container) const {
    CNode node;
    node.SetNodeId(container.GetNodeId());
    CNodeMgr::Instance().AddNode({{node.GetNodeId(), node}});
    CContainerMgr::Instance().AddContainer({{Addr(node.GetNodeId()), container}});
}

void CScheduleTest::AddSilentContainer(const std::string& strNodeId) const {
    Register(NamedContainer(strNodeId));
}

void CScheduleTest::AddContainer(const std::string& strNodeId, int iDisk, int iNet,
                                 const std::list<CTaskShape>& shapes) const {
    CSystemResource total;
    total.SetDisk(1000);
    total.SetNet(100);
    CSystemResource used;
    used.SetDisk(iDisk);
    used.SetNet(iNet);
    CContainer container = NamedContainer(strNodeId);
    container.SetTotalResource(total);
    container.SetCurResource(used);
    container.AddResourceTask(Tasks(shapes));
    Register(container);
}

void CScheduleTest::SetMember(const std::string& strNodeId, bool bNormal) {
    CFrameworkCommon::Instance().SetNodeClusterStatus(
        {strNodeId}, bNormal ? CLUSTER_MEMBER_NORMAL : CLUSTER_MEMBER_REMOVED);
}

int CScheduleTest::Schedule(const std::list<CTaskShape>& shapes, bool bReschedule) {
    return Plugin().TaskSchedule("asking node", Tasks(shapes), m_bindTable, m_ullDecisionVerNum,
                                 bReschedule);
}

std::map<std::string, std::string> CScheduleTest::BoundNodes() const {
    std::map<std::string, std::string> nodes;
    for (const auto& [strTaskId, addr] : m_bindTable) {
        EXPECT_EQ(addr.GetContainerType(), m_strContainerType);
        nodes.emplace(strTaskId, addr.GetNodeId());
    }
    return nodes;
}

std::list<CPlacementReason> CScheduleTest::Reasons(const CResourceTask& task) {
    std::list<CPlacementReason> reasons;
    auto* const pReason = dynamic_cast<IPlacementReason*>(m_pPlugin);
    EXPECT_NE(pReason, nullptr) << "the plug-in gives no reasons";
    if (pReason != nullptr) {
        pReason->ExplainPlacement(task, reasons);
    }
    for (const CPlacementReason& reason : reasons) {
        EXPECT_EQ(reason.container.GetContainerType(), m_strContainerType);
        EXPECT_EQ(reason.bPossible, reason.strReason.empty()) << reason.strReason;
    }
    return reasons;
}

std::list<std::string> CScheduleTest::Explain(const CResourceTask& task) {
    std::list<std::string> texts;
    for (const CPlacementReason& reason : Reasons(task)) {
        texts.push_back(reason.container.GetNodeId() + ": " +
                        (reason.bPossible ? "may take" : reason.strReason));
    }
    return texts;
}

void CScheduleTest::Parse(PELU::CXml& xml, const std::string& strText) {
    ASSERT_TRUE(xml.Parse(strText.c_str())) << strText;
}
