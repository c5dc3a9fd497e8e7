#include <dlfcn.h>
#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "common_service/tarn_def.h"
#include "contract/minimal_host.h"
#include "framework_service/cluster_config_znode_info.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "framework_service/placement_reason.h"
#include "framework_service/plugin_mgr.h"

// The plug-ins of this project on a host that is the contract and nothing else.

namespace {

constexpr std::size_t NUMERIC_TASKS = 20;
constexpr int NUMERIC_DISK_OF_A_TASK = 40;

std::string FileOf(const std::string& strName) {
    return "lib" + strName + ".so";
}

std::vector<std::string> ShippedPlugins() {
    std::vector<std::string> names;
    std::istringstream stream(SHIPPED_PLUGINS);
    for (std::string strName; std::getline(stream, strName, ',');) {
        names.push_back(strName);
    }
    return names;
}

CResourceTask MakeTask(const std::string& strTaskId) {
    CResourceTask task;
    task.SetTaskId(strTaskId);
    task.SetDisk(NUMERIC_DISK_OF_A_TASK);
    task.SetSupportShift(true);
    return task;
}

/// The twenty tasks of the full container.
std::list<CResourceTask> TasksOfFull() {
    std::list<CResourceTask> tasks;
    for (char c = 'a'; tasks.size() < NUMERIC_TASKS; ++c) {
        tasks.push_back(MakeTask(std::string(1, c)));
    }
    return tasks;
}

/// Registers a container with a total of 1000 for disk and net on a node of its own.
void Register(const CContainerAddr& addr, const std::list<CResourceTask>& tasks) {
    CNode node;
    node.SetNodeId(addr.GetNodeId());
    CNodeMgr::Instance().AddNode({{addr.GetNodeId(), node}});
    CSystemResource total;
    total.SetDisk(1000);
    total.SetNet(1000);
    CSystemResource used;
    used.SetDisk(static_cast<int>(tasks.size()) * NUMERIC_DISK_OF_A_TASK);
    CContainer container;
    container.SetNodeId(addr.GetNodeId());
    container.SetContainerType(addr.GetContainerType());
    container.SetTotalResource(total);
    container.SetCurResource(used);
    container.AddResourceTask(tasks);
    CContainerMgr::Instance().AddContainer({{addr, container}});
}

/// One plug-in loaded, with a container that is full of tasks and an empty one of its type.
class ShippedPlugin : public testing::TestWithParam<std::string> {
protected:
    ~ShippedPlugin() override { Reset(); }

    void SetUp() override {
        Reset();
        m_host.m_libDirectory = [](std::string& strDir) {
            strDir = SHIPPED_PLUGIN_ROOT;
            return 0;
        };
        m_host.m_files = {FileOf(GetParam())};
        ASSERT_EQ(CPluginMgr::Instance().LoadAllPlugin(), 0);
        m_pPlugin = CPluginMgr::Instance().GetPluginByName(GetParam());
        ASSERT_NE(m_pPlugin, nullptr);
        std::list<std::string> types;
        ASSERT_EQ(m_pPlugin->GetSupportedContainers(types), 0);
        ASSERT_FALSE(types.empty());
        m_full = {"full", types.front()};
        m_empty = {"empty", types.front()};
        Register(m_full, TasksOfFull());
        Register(m_empty, {});
    }

    void Reset() {
        CPluginMgr::Instance().UnLoadAllPlugin();
        CNodeMgr::Instance().Init({});
        CContainerMgr::Instance().Init({});
        m_host.Reset();
    }

    /// The cluster's configuration, loaded from a document with that disk threshold.
    void LoadDiskThreshold(int iThreshold) {
        m_host.m_reads["/CloudX/ClusterConfig"] = [iThreshold](CBaseJsonObject& document,
                                                               bool& bDataEmpty) {
            bDataEmpty = false;
            dynamic_cast<CClusterConfigZNodeInfo&>(document).SetLoadBalanceDiskThreshold(
                iThreshold);
            return 0;
        };
        ASSERT_EQ(CFrameworkCommon::Instance().InitClusterConfigFromZK(), 0);
    }

    /// Has it jobs and places their tasks?
    bool HasJobs() {
        std::list<unsigned int> jobs;
        EXPECT_EQ(m_pPlugin->GetSupportedJobs(jobs), 0);
        return !jobs.empty();
    }

    bool IsBalanced() {
        std::list<std::string> types;
        EXPECT_EQ(m_pPlugin->GetSupportLoadBalanceContainers(types), 0);
        return !types.empty();
    }

    CMinimalHost& m_host = CMinimalHost::Instance();
    IPlugin* m_pPlugin = nullptr;
    CContainerAddr m_full;
    CContainerAddr m_empty;
    CTaskContainerMap m_bindTable;
    std::list<CResourceTask> m_taskList;
    unsigned long long m_ullDecisionVerNum = 0;
};

TEST_P(ShippedPlugin, NeedsNoSymbolThatTheLibraryAndTheContractLack) {
    const std::string strFile = SHIPPED_PLUGIN_ROOT "/plugins/" + FileOf(GetParam());
    void* const pHandle = dlopen(strFile.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(pHandle, nullptr) << dlerror();
    dlclose(pHandle);
}

TEST_P(ShippedPlugin, SaysWhatItTakes) {
    EXPECT_EQ(m_pPlugin->Init(), 0);
    EXPECT_NE(m_pPlugin->GetVersion(), "");
    std::list<unsigned int> jobs;
    EXPECT_EQ(m_pPlugin->GetSupportedJobs(jobs), 0);
    ContainerTypeBindMap bindMap;
    EXPECT_EQ(m_pPlugin->GetContainerBindTable(bindMap), 0);
    std::list<std::string> types;
    EXPECT_EQ(m_pPlugin->GetSupportFaultShiftContainers(types), 0);
    for (const unsigned int uiJob : jobs) {
        std::list<CContainerAddr> addresses;
        m_pPlugin->GetRedirectNodeByJobType(uiJob, addresses);
        PELU::CXml xml(nullptr);
        ASSERT_TRUE(
            xml.Parse("<TaskList><Task><TaskID>new</TaskID><Disk>5</Disk></Task></TaskList>"));
        std::list<CResourceTask> tasks;
        EXPECT_EQ(m_pPlugin->PrivateTaskToResourceTask("asking", uiJob, xml, tasks), 0);
        EXPECT_EQ(tasks.size(), 1U);
    }
}

TEST_P(ShippedPlugin, SchedulesAndShifts) {
    if (!HasJobs()) {
        EXPECT_EQ(m_pPlugin->TaskSchedule("asking", {MakeTask("new")}, m_bindTable,
                                          m_ullDecisionVerNum, false),
                  ORVA_SYS_NO_SUPPORT);
        return;
    }
    EXPECT_EQ(m_pPlugin->TaskSchedule("asking", {MakeTask("new")}, m_bindTable, m_ullDecisionVerNum,
                                      false),
              0);
    EXPECT_EQ(m_bindTable.count("new"), 1U);
    CTaskContainerMap shifted;
    std::map<std::string, int> results;
    CTaskShiftInfo shift;
    shift.SetOutContainer(m_full);
    shift.SetInContainer(m_empty);
    EXPECT_EQ(m_pPlugin->ManualTaskSchedule(TasksOfFull(), {{"a", shift}}, shifted, results,
                                            m_ullDecisionVerNum),
              0);
    EXPECT_EQ(shifted.count("a"), 1U);
    EXPECT_TRUE(m_pPlugin->NotifyShiftIn(m_empty, {MakeTask("a")}, {{"a", m_full}}, 1));
    EXPECT_FALSE(m_pPlugin->IsContainerEmpty(m_empty));
    EXPECT_EQ(m_pPlugin->GetResTaskListInContainer(m_full, m_taskList, true, true), 0);
    m_pPlugin->GetResTaskInfoByTaskId(m_empty, "a", m_taskList);
    EXPECT_EQ(m_taskList.size(), NUMERIC_TASKS) << "the others, and the one that was moved";
}

TEST_P(ShippedPlugin, BalancesByTheConfigurationThatWasHandedOver) {
    if (!IsBalanced()) {
        EXPECT_EQ(m_pPlugin->LoadBalanceSchedule(m_taskList, m_bindTable, m_bindTable,
                                                 m_ullDecisionVerNum),
                  ORVA_SYS_NO_SUPPORT);
        return;
    }
    for (const auto& [iThreshold, uiMoves] :
         std::map<int, std::size_t>{{40, 5}, {20, 8}, {10, 9}}) {
        LoadDiskThreshold(iThreshold);
        CTaskContainerMap unbindTable;
        EXPECT_EQ(m_pPlugin->LoadBalanceSchedule(m_taskList, unbindTable, m_bindTable,
                                                 m_ullDecisionVerNum),
                  0);
        EXPECT_EQ(m_bindTable.size(), uiMoves) << iThreshold << " percent";
        EXPECT_EQ(unbindTable.size(), uiMoves);
    }
}

TEST_P(ShippedPlugin, WritesItsAnswers) {
    PELU::CXml xml(nullptr);
    if (HasJobs()) {
        EXPECT_EQ(m_pPlugin->AssembleShiftResult("asking", MakeTask("a"), 1, true, xml), 0);
        EXPECT_EQ(m_pPlugin->AssembleScheduleResult(MakeTask("a"), 0, m_full, xml), 0);
    } else {
        EXPECT_EQ(m_pPlugin->GenCloudStorageReportXml(xml, true), 0);
    }
    unsigned int uiLen = 0;
    EXPECT_NE(xml.GetXMLStream(uiLen), nullptr);
    EXPECT_NE(uiLen, 0U);
}

/// Both sides of the cast hide what they consist of.
TEST_P(ShippedPlugin, GivesAReasonForEachContainer) {
    auto* const pReason = dynamic_cast<IPlacementReason*>(m_pPlugin);
    ASSERT_NE(pReason, nullptr);
    std::list<CPlacementReason> reasons;
    pReason->ExplainPlacement(MakeTask("new"), reasons);
    ASSERT_EQ(reasons.size(), 2U);
    EXPECT_EQ(reasons.front().container, m_empty);
    EXPECT_EQ(reasons.back().container, m_full);
}

/// What a plug-in may leave to the defaults: that each ends is all that is asked.
TEST_P(ShippedPlugin, EndsEveryOtherOperation) {
    PELU::CXml xml(nullptr);
    std::list<ORVA_CLOUD_STORAGE_SEND_INFO> sendInfos;
    std::list<ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST> reduceInfos;
    std::list<CContainer> containers;
    std::string strCode;
    m_pPlugin->GenCloudStorageReportXml(xml, true);
    m_pPlugin->CloudStorageAlloc(xml, sendInfos);
    m_pPlugin->CloudStorageReduce(xml, strCode, 1, 2, reduceInfos);
    m_pPlugin->GetCloudContainerList(containers);
    m_pPlugin->BuildAllocReqXml({}, xml);
    m_pPlugin->BuildReduceReqXML({}, xml);
    CContainer container;
    m_pPlugin->ReportStatusAlarm(container, "alarm");
    std::list<CContainerAddr> addresses;
    m_pPlugin->GetHighPriorityContainer({m_full, m_empty}, addresses);
    m_pPlugin->IsHighPriorityContainer(m_full, {m_empty});
    m_pPlugin->Routing();
    m_pPlugin->SetContainerMaxTaskNum("product", 1);
    m_pPlugin->CheckSysResourceByContainerType(m_full.GetContainerType());
    EXPECT_EQ(m_pPlugin->UnInit(), 0);
}

INSTANTIATE_TEST_SUITE_P(Each, ShippedPlugin, testing::ValuesIn(ShippedPlugins()),
                         [](const auto& plugin) { return plugin.param; });

}  // namespace
