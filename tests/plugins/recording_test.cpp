#include <ostream>

#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/plugin_mgr.h"
#include "plugins/schedule_fixture.h"
#include "support/xml_place.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

namespace {

constexpr uint32_t JOB_RECORD = 1001;

class RecordingPlugin : public CScheduleTest {
protected:
    RecordingPlugin() : CScheduleTest("recording", "MeroRecord") {}

    CLogLine NoRoom(const std::string& strTaskId) const {
        return Err("task schedule", 1, "schedule_plugin", "TaskSchedule",
                   "no room for task[" + strTaskId + "] of node[asking node].");
    }

    int Balance() {
        return Plugin().LoadBalanceSchedule(m_movedList, m_unbindTable, m_bindTable,
                                            m_ullDecisionVerNum);
    }

    int ShiftByHand(const std::list<CTaskShape>& shapes, const CTaskShiftMap& shiftMap) {
        return Plugin().ManualTaskSchedule(Tasks(shapes), shiftMap, m_bindTable, m_resultMap,
                                           m_ullDecisionVerNum);
    }

    CTaskShiftInfo Shift(const std::string& strFrom, const std::string& strTo) const {
        CTaskShiftInfo shift;
        shift.SetOutContainer(Addr(strFrom));
        shift.SetInContainer(Addr(strTo));
        return shift;
    }

    std::list<CResourceTask> m_movedList{CResourceTask()};
    CTaskContainerMap m_unbindTable{{"stale", {"stale", "stale"}}};
    std::map<std::string, int> m_resultMap{{"stale", 9}};
};

TEST_F(RecordingPlugin, ClaimsItsJobsAndItsContainerType) {
    CPluginMgr& manager = CPluginMgr::Instance();
    EXPECT_EQ(manager.GetPluginByJobType(1001), &Plugin());
    EXPECT_EQ(manager.GetPluginByJobType(1002), &Plugin());
    EXPECT_EQ(manager.GetPluginByContainerType("MeroRecord"), &Plugin());
    EXPECT_TRUE(manager.IsContainerSupportFaultShift("MeroRecord"));
    std::list<std::string> typeList;
    EXPECT_EQ(manager.GetLogicContainerTypeByRealType("MeroRecord", typeList), 0);
    EXPECT_THAT(typeList, ElementsAre("RecordPlan", "RecordExport"));
    EXPECT_EQ(Plugin().GetSupportLoadBalanceContainers(typeList), 0);
    EXPECT_THAT(typeList, ElementsAre("MeroRecord"));
    EXPECT_EQ(Plugin().GetVersion(), "1.0.0");
}

TEST_F(RecordingPlugin, TheLowestDiskRatioGetsTheTask) {
    AddContainer("a", 500, 0);
    AddContainer("b", 300, 90);
    AddContainer("c", 400, 0);
    EXPECT_EQ(Schedule({{"1", 10}}), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("1", "b")));
}

TEST_F(RecordingPlugin, CountsWhatItHasPlacedInTheSameCall) {
    AddContainer("a", 0, 0);
    AddContainer("b", 150, 0);
    EXPECT_EQ(Schedule({{"1", 100}, {"2", 100}, {"3", 100}, {"4", 100}}), 0);
    EXPECT_THAT(BoundNodes(),
                ElementsAre(Pair("1", "a"), Pair("2", "a"), Pair("3", "b"), Pair("4", "a")));
}

TEST_F(RecordingPlugin, TasksThatAreNotReportedYetCountToo) {
    AddContainer("a", 0, 0, {{"placed", 300}});
    AddContainer("b", 200, 0);
    EXPECT_EQ(Schedule({{"1", 10}}), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("1", "b")));
}

TEST_F(RecordingPlugin, EqualRatiosGoByNetThenByTasksThenByAddress) {
    AddContainer("a", 500, 10, {{"x"}});
    AddContainer("b", 500, 10);
    AddContainer("c", 500, 10);
    AddContainer("d", 500, 20);
    EXPECT_EQ(Schedule({{"1"}}), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("1", "b")));
}

TEST_F(RecordingPlugin, EveryCostMustFit) {
    AddContainer("a", 0, 95);
    AddContainer("b", 800, 0);
    EXPECT_EQ(Schedule({{"net", 0, 6}, {"disk", 201}, {"both", 201, 6}, {"exact", 200, 5}}),
              ORVA_FAIL);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("disk", "a"), Pair("exact", "a"), Pair("net", "b")));
    EXPECT_THAT(m_logger.GetOperLines(), ElementsAre(NoRoom("both")));
}

TEST_F(RecordingPlugin, WithoutRoomNothingIsDecided) {
    AddContainer("a", 1000, 0);
    EXPECT_EQ(Schedule({{"1", 1}}), ORVA_FAIL);
    EXPECT_THAT(m_bindTable, IsEmpty());
    EXPECT_EQ(m_ullDecisionVerNum, 0u);
}

TEST_F(RecordingPlugin, ACostThatDoesNotFitTheNumbersFindsNoRoom) {
    AddContainer("a", 500, 0);
    EXPECT_EQ(Schedule({{"1", INT32_MAX}}), ORVA_FAIL);
    EXPECT_THAT(m_bindTable, IsEmpty());
}

TEST_F(RecordingPlugin, AContainerThatNeverReportedTakesOnlyWhatCostsNothingAndLast) {
    AddSilentContainer("a");
    EXPECT_EQ(Schedule({{"1", 1}}), ORVA_FAIL);
    EXPECT_EQ(Schedule({{"2"}}), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("2", "a")));
    AddContainer("b", 900, 90);
    EXPECT_EQ(Schedule({{"2"}}), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("2", "b")));
}

/// What keeps a container from getting tasks.
struct CUnusable {
    std::string strName;
    void (*pMake)(const CContainerAddr& addr);
};

std::ostream& operator<<(std::ostream& stream, const CUnusable& unusable) {
    return stream << unusable.strName;
}

class RecordingUnusable : public RecordingPlugin, public testing::WithParamInterface<CUnusable> {};

TEST_P(RecordingUnusable, ContainerGetsNoTask) {
    AddContainer("a", 0, 0, {{"held", 10}});
    AddContainer("b", 900, 0);
    GetParam().pMake(Addr("a"));
    EXPECT_EQ(Schedule({{"new", 10}, {"held", 10}}), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("held", "b"), Pair("new", "b")));
}

INSTANTIATE_TEST_SUITE_P(
    , RecordingUnusable,
    testing::Values(CUnusable{"Offline",
                              [](const CContainerAddr& addr) {
                                  CContainerMgr::Instance().SetContainerOnline(addr, false);
                              }},
                    CUnusable{"Removed",
                              [](const CContainerAddr& addr) {
                                  CContainerMgr::Instance().SetContainerMemberStatus(
                                      addr, CLUSTER_MEMBER_REMOVED);
                              }},
                    CUnusable{"FaultShift",
                              [](const CContainerAddr& addr) {
                                  CContainerMgr::Instance().SetContainerFaultShift(addr, true);
                              }},
                    CUnusable{"DoingFaultShift",
                              [](const CContainerAddr& addr) {
                                  CContainerMgr::Instance().SetContainerDoingFaultShift(addr, true);
                              }},
                    CUnusable{"StoppedProcess",
                              [](const CContainerAddr& addr) {
                                  CContainerMgr::Instance().SetProcessState(
                                      addr, {{"recorder", PROCESS_STATE_STOPPED}});
                              }}),
    [](const auto& instance) { return instance.param.strName; });

TEST_F(RecordingPlugin, ContainersOfOtherTypesGetNoTask) {
    AddContainer("a", 900, 50);
    AddContainer("b", 900, 0);
    CContainer other;
    other.SetNodeId("a");
    other.SetContainerType("MeroImgDev");
    CContainerMgr::Instance().AddContainer({{{"a", "MeroImgDev"}, other}});
    EXPECT_EQ(Schedule({{"1"}}), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("1", "b")));
}

TEST_F(RecordingPlugin, APlacedTaskStaysUnlessItIsRescheduled) {
    AddContainer("a", 800, 0, {{"1", 100}});
    AddContainer("b", 0, 0);
    EXPECT_EQ(Schedule({{"1", 100}}), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("1", "a")));
    EXPECT_EQ(Schedule({{"1", 100}}, true), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("1", "b")));
}

TEST_F(RecordingPlugin, ARescheduledTaskMakesRoomWhereItLeaves) {
    AddContainer("a", 1000, 0, {{"1", 400}});
    AddContainer("b", 500, 0);
    EXPECT_EQ(Schedule({{"1", 400}, {"2", 300}}, true), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("1", "b"), Pair("2", "a")));
}

TEST_F(RecordingPlugin, ATaskThatStandsTwiceInTheListIsPlacedOnce) {
    AddContainer("a", 0, 0);
    EXPECT_EQ(Schedule({{"1", 600}, {"1", 600}, {"2", 400}}), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("1", "a"), Pair("2", "a")));
}

TEST_F(RecordingPlugin, ADecisionTakesTheNextVersionNumber) {
    AddContainer("a", 0, 0);
    EXPECT_EQ(Schedule({{"1", 10}}), 0);
    EXPECT_EQ(m_ullDecisionVerNum, 41u);
    EXPECT_EQ(Schedule({{"2", 10}}), 0);
    EXPECT_EQ(m_ullDecisionVerNum, 42u);
}

TEST_F(RecordingPlugin, WithoutAVersionNumberNothingIsDecided) {
    AddContainer("a", 900, 0, {{"1", 300}, {"2", 300}});
    AddContainer("b", 0, 0);
    constexpr int NUMERIC_STORE_CODE = 4711;
    m_pStore->FailCall(1, NUMERIC_STORE_CODE);
    EXPECT_EQ(Schedule({{"3", 10}}), NUMERIC_STORE_CODE);
    EXPECT_THAT(m_bindTable, IsEmpty());
    m_pStore->FailCall(1, NUMERIC_STORE_CODE);
    EXPECT_EQ(Balance(), NUMERIC_STORE_CODE);
    EXPECT_THAT(m_bindTable, IsEmpty());
    EXPECT_THAT(m_unbindTable, IsEmpty());
    EXPECT_THAT(m_movedList, IsEmpty());
    EXPECT_EQ(m_ullDecisionVerNum, 0u);
}

TEST_F(RecordingPlugin, BalanceMovesFromTheFullestToTheEmptiest) {
    AddContainer("a", 800, 0, {{"big", 500}, {"middle", 300}});
    AddContainer("b", 500, 0, {{"other", 500}});
    AddContainer("c", 100, 0);
    EXPECT_EQ(Balance(), 0);
    EXPECT_THAT(TaskIds(m_movedList), ElementsAre("middle"));
    EXPECT_THAT(m_unbindTable, ElementsAre(Pair("middle", Addr("a"))));
    EXPECT_THAT(m_bindTable, ElementsAre(Pair("middle", Addr("c"))));
    EXPECT_EQ(m_ullDecisionVerNum, 41u);
}

TEST_F(RecordingPlugin, BalanceGoesOnUntilTheThresholdIsMet) {
    std::list<CTaskShape> shapes;
    for (char c = 'a'; c < 'a' + 20; ++c) {
        shapes.push_back({std::string(1, c), 40});
    }
    AddContainer("a", 800, 0, shapes);
    AddContainer("b", 0, 0);
    EXPECT_EQ(Balance(), 0);
    EXPECT_EQ(m_bindTable.size(), 9u) << "0.44 and 0.36 are within the 10 percent";
}

TEST_F(RecordingPlugin, BalanceLeavesWhatIsWithinTheThreshold) {
    AddContainer("a", 600, 0, {{"1", 50}});
    AddContainer("b", 500, 0);
    EXPECT_EQ(Balance(), 0);
    EXPECT_THAT(m_bindTable, IsEmpty());
    EXPECT_THAT(m_movedList, IsEmpty());
    EXPECT_EQ(m_ullDecisionVerNum, 0u);
}

TEST_F(RecordingPlugin, BalanceMovesNothingThatMustNotMoveOrFindsNoRoom) {
    AddContainer("a", 900, 0, {{"fixed", 300, 0, false}, {"net", 300, 20}});
    AddContainer("b", 0, 90);
    EXPECT_EQ(Balance(), 0);
    EXPECT_THAT(m_bindTable, IsEmpty());
}

TEST_F(RecordingPlugin, BalanceMovesNothingThatDoesNotHelp) {
    AddContainer("a", 900, 0, {{"free"}, {"whole", 900}});
    AddContainer("b", 0, 0);
    EXPECT_EQ(Balance(), 0);
    EXPECT_THAT(m_bindTable, IsEmpty());
}

TEST_F(RecordingPlugin, BalanceOfNoContainersIsASuccess) {
    EXPECT_EQ(Balance(), 0);
    EXPECT_THAT(m_bindTable, IsEmpty());
}

TEST_F(RecordingPlugin, BalancePassesOverContainersThatNeverReported) {
    AddSilentContainer("0");
    AddContainer("a", 800, 0, {{"1", 400}, {"2", 400}});
    AddContainer("b", 0, 0);
    EXPECT_EQ(Balance(), 0);
    EXPECT_THAT(m_bindTable, ElementsAre(Pair("1", Addr("b"))));
}

TEST_F(RecordingPlugin, ManualShiftAnswersForEveryTask) {
    AddContainer("a", 500, 0,
                 {{"fixed", 100, 0, false}, {"good", 100}, {"same", 1}, {"tall", 300}});
    AddContainer("b", 800, 0);
    EXPECT_EQ(ShiftByHand({{"fixed", 100, 0, false},
                           {"good", 100},
                           {"same", 1},
                           {"tall", 300},
                           {"elsewhere", 1},
                           {"lost", 1}},
                          {{"elsewhere", Shift("b", "a")},
                           {"fixed", Shift("a", "b")},
                           {"good", Shift("a", "b")},
                           {"lost", Shift("a", "unknown")},
                           {"same", Shift("a", "a")},
                           {"tall", Shift("a", "b")},
                           {"unlisted", Shift("a", "b")}}),
              ORVA_FAIL);
    EXPECT_THAT(m_resultMap,
                ElementsAre(Pair("elsewhere", ORVA_PARA_INVALID),
                            Pair("fixed", ORVA_SYS_NO_SUPPORT), Pair("good", 0),
                            Pair("lost", ORVA_PARA_INVALID), Pair("same", ORVA_PARA_INVALID),
                            Pair("tall", ORVA_FAIL), Pair("unlisted", ORVA_PARA_INVALID)));
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("good", "b")));
    EXPECT_EQ(m_ullDecisionVerNum, 41u);
}

TEST_F(RecordingPlugin, ManualShiftLeavesAFailedContainerButEntersNone) {
    AddContainer("a", 500, 0, {{"1", 100}});
    AddContainer("b", 0, 0, {{"2", 100}});
    CContainerMgr::Instance().SetContainerFaultShift(Addr("a"), true);
    EXPECT_EQ(
        ShiftByHand({{"1", 100}, {"2", 100}}, {{"1", Shift("a", "b")}, {"2", Shift("b", "a")}}),
        ORVA_FAIL);
    EXPECT_THAT(m_resultMap, ElementsAre(Pair("1", 0), Pair("2", ORVA_FAIL)));
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("1", "b")));
    EXPECT_THAT(m_logger.GetOperLines(),
                ElementsAre(Err("manual task schedule", ORVA_FAIL, "schedule_plugin",
                                "ManualTaskSchedule", "cannot shift task[2] to node[a].")));
}

TEST_F(RecordingPlugin, ReadsTasksAtTheCursor) {
    PELU::CXml xml(nullptr);
    Parse(xml, R"(<Request><Head/><TaskList>
        <Task><TaskID>full</TaskID><TaskName>North gate</TaskName><Cpu>1</Cpu><Mem>2</Mem>
            <IO>3</IO><Net>4</Net><Disk>5</Disk><SupportShift>0</SupportShift>
            <PrivateInfo><Stream>main</Stream></PrivateInfo></Task>
        <Remark/>
        <Task><TaskID>bare</TaskID></Task></TaskList></Request>)");
    ASSERT_TRUE(xml.FindElemEx("Request"));
    std::list<CResourceTask> taskList{CResourceTask()};
    EXPECT_EQ(Plugin().PrivateTaskToResourceTask("node", JOB_RECORD, xml, taskList), 0);
    EXPECT_THAT(TaskIds(taskList), ElementsAre("", "full", "bare"));
    const CResourceTask& full = *std::next(taskList.begin());
    EXPECT_EQ(full.GetTaskName(), "North gate");
    EXPECT_THAT(
        (std::list<int>{full.GetCpu(), full.GetMem(), full.GetIO(), full.GetNet(), full.GetDisk()}),
        ElementsAre(1, 2, 3, 4, 5));
    EXPECT_FALSE(full.IsSupportShift());
    std::string strStream;
    EXPECT_EQ(full.GetValueByKey("Stream", strStream), 0);
    EXPECT_EQ(strStream, "main");
    EXPECT_EQ(taskList.back().GetDisk(), 0);
    EXPECT_TRUE(taskList.back().IsSupportShift());
    EXPECT_EQ(CurrentElement(xml), "TaskList");
}

TEST_F(RecordingPlugin, AnEmptyTaskListHasNoTasks) {
    PELU::CXml xml(nullptr);
    Parse(xml, "<TaskList/>");
    std::list<CResourceTask> taskList;
    EXPECT_EQ(Plugin().PrivateTaskToResourceTask("node", JOB_RECORD, xml, taskList), 0);
    EXPECT_THAT(taskList, IsEmpty());
}

TEST_F(RecordingPlugin, RefusesAJobOfAnother) {
    PELU::CXml xml(nullptr);
    Parse(xml, "<TaskList/>");
    std::list<CResourceTask> taskList;
    EXPECT_EQ(Plugin().PrivateTaskToResourceTask("node", 2001, xml, taskList), ORVA_PARA_INVALID);
    EXPECT_THAT(
        m_logger.GetOperLines(),
        ElementsAre(Err("private task to resource task", ORVA_PARA_INVALID, "schedule_plugin",
                        "PrivateTaskToResourceTask", "unknown job type[2001], node[node].")));
}

/// A request that cannot be read, and what the log says of it.
struct CBadRequest {
    std::string strName;
    std::string strText;
    std::string strFunction;
    std::string strMessage;
};

std::ostream& operator<<(std::ostream& stream, const CBadRequest& bad) {
    return stream << bad.strName;
}

class RecordingBadRequest : public RecordingPlugin,
                            public testing::WithParamInterface<CBadRequest> {};

TEST_P(RecordingBadRequest, IsRefusedAsAWhole) {
    PELU::CXml xml(nullptr);
    Parse(xml, GetParam().strText);
    std::list<CResourceTask> taskList{CResourceTask()};
    EXPECT_EQ(Plugin().PrivateTaskToResourceTask("node", JOB_RECORD, xml, taskList),
              ORVA_XML_INVALID);
    EXPECT_EQ(taskList.size(), 1u);
    EXPECT_THAT(m_logger.GetOperLines(),
                ElementsAre(Err("read task list", ORVA_XML_INVALID, "task_xml",
                                GetParam().strFunction, GetParam().strMessage)));
}

CBadRequest BadNumber(const std::string& strName, const std::string& strElement,
                      const std::string& strValue) {
    return {strName,
            "<TaskList><Task><TaskID>good</TaskID></Task><Task><TaskID>bad</TaskID><" + strElement +
                ">" + strValue + "</" + strElement + "></Task></TaskList>",
            "ReadNumber", "bad number, " + strElement + "[" + strValue + "]."};
}

INSTANTIATE_TEST_SUITE_P(
    , RecordingBadRequest,
    testing::Values(
        CBadRequest{"NoList", "<Task><TaskID>1</TaskID></Task>", "ReadTaskList", "no TaskList."},
        CBadRequest{"NoId", "<TaskList><Task><Disk>1</Disk></Task></TaskList>", "ReadTask",
                    "a task has no TaskID."},
        CBadRequest{"EmptyId", "<TaskList><Task><TaskID/></Task></TaskList>", "ReadTask",
                    "a task has no TaskID."},
        CBadRequest{"EmptyTask", "<TaskList><Task/></TaskList>", "ReadTask",
                    "a task has no TaskID."},
        CBadRequest{"Twice",
                    "<TaskList><Task><TaskID>1</TaskID></Task><Task><TaskID>1</TaskID></Task>"
                    "</TaskList>",
                    "ReadTasks", "task stands twice, id[1]."},
        BadNumber("Negative", "Disk", "-1"), BadNumber("NoNumber", "Net", "many"),
        BadNumber("EmptyNumber", "Cpu", ""), BadNumber("TooLarge", "Mem", "2147483648"),
        BadNumber("NoFlag", "SupportShift", "2")),
    [](const auto& instance) { return instance.param.strName; });

TEST_F(RecordingPlugin, WritesItsResults) {
    PELU::CXml xml(nullptr);
    const CResourceTask task = CTaskShape{"<1>"}.ToTask();
    ASSERT_TRUE(xml.AddElem("Results"));
    ASSERT_TRUE(xml.AddChildElem("First"));
    ASSERT_TRUE(xml.IntoElem());
    EXPECT_EQ(Plugin().AssembleScheduleResult(task, 0, Addr("a"), xml), 0);
    EXPECT_EQ(Plugin().AssembleScheduleResult(task, ORVA_FAIL, Addr("a"), xml), 0);
    EXPECT_EQ(Plugin().AssembleShiftResult("b", task, 18446744073709551615ull, true, xml), 0);
    EXPECT_EQ(Plugin().AssembleShiftResult("b", task, 7, false, xml), 0);
    unsigned int uiLen = 0;
    EXPECT_STREQ(xml.GetXMLStream(uiLen),
                 "<Results><First/>"
                 "<TaskResult><TaskID>&lt;1&gt;</TaskID><Result>0</Result><NodeID>a</NodeID>"
                 "<ContainerType>MeroRecord</ContainerType></TaskResult>"
                 "<TaskResult><TaskID>&lt;1&gt;</TaskID><Result>1</Result></TaskResult>"
                 "<ShiftTask><TaskID>&lt;1&gt;</TaskID><NodeID>b</NodeID>"
                 "<DecisionVerNum>18446744073709551615</DecisionVerNum><ShiftIn>1</ShiftIn>"
                 "</ShiftTask>"
                 "<ShiftTask><TaskID>&lt;1&gt;</TaskID><NodeID>b</NodeID>"
                 "<DecisionVerNum>7</DecisionVerNum><ShiftIn>0</ShiftIn></ShiftTask></Results>");
}

TEST_F(RecordingPlugin, TellsTheTasksOfAContainer) {
    AddContainer("a", 0, 0, {{"fixed", 1, 0, false}, {"free", 1}});
    AddContainer("b", 0, 0);
    std::list<CResourceTask> taskList;
    EXPECT_EQ(Plugin().GetResTaskListInContainer(Addr("a"), taskList, false, false), 0);
    EXPECT_THAT(TaskIds(taskList), ElementsAre("fixed", "free"));
    taskList.clear();
    EXPECT_EQ(Plugin().GetResTaskListInContainer(Addr("a"), taskList, true, false), 0);
    EXPECT_EQ(Plugin().GetResTaskListInContainer(Addr("a"), taskList, false, true), 0);
    EXPECT_THAT(TaskIds(taskList), ElementsAre("free", "free"));
    Plugin().GetResTaskInfoByTaskId(Addr("a"), "fixed", taskList);
    Plugin().GetResTaskInfoByTaskId(Addr("a"), "none", taskList);
    EXPECT_THAT(TaskIds(taskList), ElementsAre("free", "free", "fixed"));
    CContainerAddr full = Addr("a");
    CContainerAddr empty = Addr("b");
    EXPECT_FALSE(Plugin().IsContainerEmpty(full));
    EXPECT_TRUE(Plugin().IsContainerEmpty(empty));
}

}  // namespace
