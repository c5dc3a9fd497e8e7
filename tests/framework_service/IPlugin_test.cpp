#include "framework_service/IPlugin.h"

#include <ostream>

#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "support/host_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

/// Implements what has no default, and nothing else.
class CPurePlugin : public IPlugin {
public:
    std::string GetName() override { return "pure"; }
    int GetSupportedJobs(std::list<unsigned int>&) override { return 0; }
    int GetSupportedContainers(std::list<std::string>&) override { return 0; }
    int GetContainerBindTable(ContainerTypeBindMap&) override { return 0; }
    int PrivateTaskToResourceTask(const std::string&, uint32_t, PELU::CXml&,
                                  std::list<CResourceTask>&) override {
        return 0;
    }
    int TaskSchedule(const std::string&, const std::list<CResourceTask>&, CTaskContainerMap&,
                     unsigned long long&, bool) override {
        return 0;
    }

    using IPlugin::m_strName;
};

CResourceTask Task(const std::string& strTaskId) {
    CResourceTask task;
    task.SetTaskId(strTaskId);
    return task;
}

const CContainerAddr ADDR{"node", "type"};

/// Every argument of the operations that refuse, each with something in it.
struct CArguments {
    CContainerAddr addr = ADDR;
    CResourceTask task = Task("kept");
    std::list<CContainerAddr> addrList{ADDR};
    std::list<CResourceTask> taskList{Task("kept")};
    CTaskContainerMap unbindTable{{"kept", ADDR}};
    CTaskContainerMap bindTable{{"kept", ADDR}};
    CTaskShiftMap shiftMap;
    std::map<std::string, int> resultMap{{"kept", 9}};
    unsigned long long ullDecisionVerNum = 9;
    std::string strText = "kept";
    std::list<ORVA_CLOUD_STORAGE_SEND_INFO> sendInfoList{1};
    std::list<ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST> reduceList{1};
    std::list<CContainer> containerList{1};
    PELU::CXml xml{nullptr};
};

struct CRefusal {
    std::string strFunction;
    std::string strOperation;
    int (*pCall)(IPlugin& plugin, CArguments& arguments);
    int iAnswer = ORVA_SYS_NO_SUPPORT;
};

std::ostream& operator<<(std::ostream& stream, const CRefusal& refusal) {
    return stream << refusal.strFunction;
}

const CRefusal REFUSALS[] = {
    {"GetRedirectNodeByJobType", "IPlugin get redirect node by job type",
     [](IPlugin& p, CArguments& a) { return p.GetRedirectNodeByJobType(7, a.addrList); }},
    {"AssembleShiftResult", "IPlugin assemble shift result",
     [](IPlugin& p, CArguments& a) {
         return p.AssembleShiftResult("node", a.task, 1, true, a.xml);
     }},
    {"AssembleScheduleResult", "IPlugin assemble schedule result",
     [](IPlugin& p, CArguments& a) { return p.AssembleScheduleResult(a.task, 0, a.addr, a.xml); }},
    {"GetResTaskListInContainer", "IPlugin get res task list in container",
     [](IPlugin& p, CArguments& a) {
         return p.GetResTaskListInContainer(a.addr, a.taskList, true, true);
     }},
    {"LoadBalanceSchedule", "IPlugin load balance by disk ratio",
     [](IPlugin& p, CArguments& a) {
         return p.LoadBalanceSchedule(a.taskList, a.unbindTable, a.bindTable, a.ullDecisionVerNum);
     }},
    {"ManualTaskSchedule", "IPlugin ManualTaskSchedule",
     [](IPlugin& p, CArguments& a) {
         return p.ManualTaskSchedule(a.taskList, a.shiftMap, a.bindTable, a.resultMap,
                                     a.ullDecisionVerNum);
     }},
    {"GenCloudStorageReportXml", "IPlugin CloudStorageReport",
     [](IPlugin& p, CArguments& a) { return p.GenCloudStorageReportXml(a.xml, true); }},
    {"CloudStorageAlloc", "IPlugin CloudStorageAlloc",
     [](IPlugin& p, CArguments& a) { return p.CloudStorageAlloc(a.xml, a.sendInfoList); }},
    {"CloudStorageReduce", "IPlugin CloudStorageReduce",
     [](IPlugin& p, CArguments& a) {
         return p.CloudStorageReduce(a.xml, a.strText, 1, 2, a.reduceList);
     }},
    {"GetCloudContainerList", "IPlugin GetCloudContainerList",
     [](IPlugin& p, CArguments& a) { return p.GetCloudContainerList(a.containerList); }},
    {"BuildAllocReqXml", "IPlugin BuildAllocReqXml",
     [](IPlugin& p, CArguments& a) { return p.BuildAllocReqXml(a.sendInfoList.front(), a.xml); }},
    {"BuildReduceReqXML", "IPlugin BuildReduceReqXML",
     [](IPlugin& p, CArguments& a) { return p.BuildReduceReqXML(a.reduceList.front(), a.xml); }},
    {"GetResTaskInfoByTaskId", "IPlugin get res task info by task id",
     [](IPlugin& p, CArguments& a) {
         p.GetResTaskInfoByTaskId(a.addr, "task", a.taskList);
         return 0;
     },
     0},
    {"SetContainerMaxTaskNum", "IPlugin set container max task num",
     [](IPlugin& p, CArguments&) {
         p.SetContainerMaxTaskNum("product", 1);
         return 0;
     },
     0},
    {"CheckSysResourceByContainerType", "IPlugin CheckSysResourceByContainerType",
     [](IPlugin& p, CArguments&) {
         return static_cast<int>(p.CheckSysResourceByContainerType("type"));
     },
     true},
};

class PluginDefault : public CHostTest {
protected:
    CPurePlugin m_plugin;
};

class PluginRefusal : public PluginDefault, public testing::WithParamInterface<CRefusal> {};

TEST_P(PluginRefusal, IsLoggedAndTouchesNoArgument) {
    CArguments arguments;
    EXPECT_EQ(GetParam().pCall(m_plugin, arguments), GetParam().iAnswer);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Err(GetParam().strOperation, ORVA_SYS_NO_SUPPORT, "IPlugin",
                                GetParam().strFunction, "do not support this function.")));
    EXPECT_THAT(arguments.addrList, ElementsAre(ADDR));
    ASSERT_EQ(arguments.taskList.size(), 1u);
    EXPECT_EQ(arguments.taskList.front().GetTaskId(), "kept");
    EXPECT_THAT(arguments.unbindTable, ElementsAre(Pair("kept", ADDR)));
    EXPECT_THAT(arguments.bindTable, ElementsAre(Pair("kept", ADDR)));
    EXPECT_THAT(arguments.resultMap, ElementsAre(Pair("kept", 9)));
    EXPECT_EQ(arguments.ullDecisionVerNum, 9u);
    EXPECT_EQ(arguments.strText, "kept");
    EXPECT_EQ(arguments.sendInfoList.size(), 1u);
    EXPECT_EQ(arguments.reduceList.size(), 1u);
    EXPECT_EQ(arguments.containerList.size(), 1u);
    unsigned int uiLen = 0;
    EXPECT_EQ(arguments.xml.GetXMLStream(uiLen), nullptr);
}

INSTANTIATE_TEST_SUITE_P(, PluginRefusal, testing::ValuesIn(REFUSALS),
                         [](const auto& instance) { return instance.param.strFunction; });

TEST_F(PluginDefault, StartsAndStopsInSilence) {
    EXPECT_EQ(m_plugin.m_strName, "");
    EXPECT_EQ(m_plugin.Init(), 0);
    EXPECT_EQ(m_plugin.UnInit(), 0);
    EXPECT_EQ(m_plugin.GetVersion(), "");
    m_plugin.Routing();
    CContainer container;
    m_plugin.ReportStatusAlarm(container, "alarm");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(PluginDefault, SupportsNoShiftAndEmptiesTheLists) {
    std::list<std::string> containerList{"stale"};
    EXPECT_EQ(m_plugin.GetSupportFaultShiftContainers(containerList), 0);
    EXPECT_THAT(containerList, IsEmpty());
    containerList = {"stale"};
    EXPECT_EQ(m_plugin.GetSupportLoadBalanceContainers(containerList), 0);
    EXPECT_THAT(containerList, IsEmpty());
}

TEST_F(PluginDefault, EveryContainerCountsAsEmptyWithoutALine) {
    CContainerAddr addr = ADDR;
    EXPECT_TRUE(m_plugin.IsContainerEmpty(addr));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

const CContainerAddr OTHER{"other", "type"};
const CContainerAddr TARGET{"target", "type"};

/// Shifts tasks between the containers ADDR, OTHER and TARGET of the registry; without Register,
/// the registry's complaints tell which calls came.
class PluginShiftIn : public PluginDefault {
protected:
    ~PluginShiftIn() override { CContainerMgr::Instance().Init({}); }

    static void Register() {
        CContainer container;
        container.AddResourceTask({Task("1"), Task("2"), Task("3")});
        container.SetResTaskNeedUpdate(false);
        CContainer target;
        target.SetResTaskNeedUpdate(false);
        target.SetOnline(false);
        CContainerMgr::Instance().Init({{ADDR, container}, {OTHER, container}, {TARGET, target}});
    }

    static CContainer Registered(const CContainerAddr& addr) {
        ContainerMap containerTable;
        CContainerMgr::Instance().GetAllContainer(containerTable);
        return containerTable.at(addr);
    }

    static std::list<std::string> TaskIds(const CContainerAddr& addr) {
        std::list<CResourceTask> taskList;
        CContainerMgr::Instance().GetResTaskList(addr, taskList);
        std::list<std::string> ids;
        for (const CResourceTask& task : taskList) {
            ids.push_back(task.GetTaskId());
        }
        return ids;
    }

    static CLogLine Unknown(const std::string& strFunction, const std::string& strOperation,
                            const CContainerAddr& addr) {
        return Err(strOperation, ORVA_PARA_INVALID, "container_mgr", strFunction,
                   "find container failed, node id=" + addr.GetNodeId() +
                       " container id=" + addr.GetContainerType());
    }
};

TEST_F(PluginShiftIn, TakesEachTaskOutOfItsContainerAndAddsAllToTheTarget) {
    Register();
    EXPECT_TRUE(m_plugin.NotifyShiftIn(TARGET, {Task("1"), Task("2"), Task("3")},
                                       {{"1", ADDR}, {"3", OTHER}, {"9", OTHER}}, 5));
    EXPECT_THAT(TaskIds(ADDR), ElementsAre("2", "3"));
    EXPECT_THAT(TaskIds(OTHER), ElementsAre("1", "2"));
    EXPECT_THAT(TaskIds(TARGET), ElementsAre("1", "2", "3"));
    EXPECT_TRUE(Registered(TARGET).IsOnline());
    EXPECT_TRUE(Registered(TARGET).IsNeedUpdateResTask());
    EXPECT_FALSE(Registered(ADDR).IsNeedUpdateResTask());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(PluginShiftIn, RemovesOneTaskPerCallAndOnlyThenAdds) {
    EXPECT_TRUE(m_plugin.NotifyShiftIn(TARGET, {Task("3"), Task("2"), Task("1")},
                                       {{"1", ADDR}, {"3", OTHER}}, 5));
    const std::string strRemove = "Container mgr remove resource task";
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Unknown("RemoveResourceTask", strRemove, OTHER),
                            Unknown("RemoveResourceTask", strRemove, ADDR),
                            Unknown("AddResourceTask", "Container mgr add resource task", TARGET)));
}

TEST_F(PluginShiftIn, AnEmptyTaskListStillMarksTheTarget) {
    Register();
    EXPECT_TRUE(m_plugin.NotifyShiftIn(TARGET, {}, {{"1", ADDR}}, 5));
    EXPECT_THAT(TaskIds(ADDR), ElementsAre("1", "2", "3"));
    EXPECT_THAT(TaskIds(TARGET), IsEmpty());
    EXPECT_TRUE(Registered(TARGET).IsOnline());
    EXPECT_TRUE(Registered(TARGET).IsNeedUpdateResTask());
}

TEST_F(PluginShiftIn, AnEmptyMapOnlyAdds) {
    Register();
    EXPECT_TRUE(m_plugin.NotifyShiftIn(TARGET, {Task("1")}, {}, 5));
    EXPECT_THAT(TaskIds(ADDR), ElementsAre("1", "2", "3"));
    EXPECT_THAT(TaskIds(TARGET), ElementsAre("1"));
}

TEST_F(PluginDefault, EveryContainerHasHighPriority) {
    std::list<CContainerAddr> highList{OTHER};
    m_plugin.GetHighPriorityContainer({TARGET, ADDR}, highList);
    EXPECT_THAT(highList, ElementsAre(OTHER, TARGET, ADDR));
    EXPECT_TRUE(m_plugin.IsHighPriorityContainer(ADDR, {}));
    EXPECT_TRUE(m_plugin.IsHighPriorityContainer(ADDR, {OTHER}));
}

/// Answers what it is told, and keeps what it was asked.
class CPickyPlugin : public CPurePlugin {
public:
    void GetHighPriorityContainer(const std::list<CContainerAddr>& listContainerAddr,
                                  std::list<CContainerAddr>& listHighPriContainer) override {
        m_askedList = listContainerAddr;
        listHighPriContainer = m_answerList;
    }

    std::list<CContainerAddr> m_askedList;
    std::list<CContainerAddr> m_answerList;
};

TEST(PluginPriority, AnOverrideIsAskedAboutTheListAndTheAddressBehindIt) {
    CPickyPlugin plugin;
    plugin.IsHighPriorityContainer(ADDR, {TARGET, OTHER});
    EXPECT_THAT(plugin.m_askedList, ElementsAre(TARGET, OTHER, ADDR));
}

TEST(PluginPriority, AnOverrideDecides) {
    CPickyPlugin plugin;
    EXPECT_FALSE(plugin.IsHighPriorityContainer(ADDR, {ADDR}));
    // Equivalent in the order of the tables, and yet another container.
    plugin.m_answerList = {OTHER, {"nodet", "ype"}};
    EXPECT_FALSE(plugin.IsHighPriorityContainer(ADDR, {}));
    plugin.m_answerList = {OTHER, ADDR};
    EXPECT_TRUE(plugin.IsHighPriorityContainer(ADDR, {}));
}

}  // namespace
