#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "framework_service/container.h"
#include "support/host_fixture.h"
#include "support/model_values.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int32_t INT32_TOP = std::numeric_limits<int32_t>::max();
constexpr int32_t INT32_BOTTOM = std::numeric_limits<int32_t>::min();
constexpr int REPORT = 3979;

class ContainerTasks : public CHostTest {
protected:
    void ExpectTotals(int iDisk, int iNet) const {
        EXPECT_EQ(m_container.GetTaskTotalDisk(), iDisk);
        EXPECT_EQ(m_container.GetTaskTotalNet(), iNet);
    }

    CContainer m_container = MakeContainer("N1", "Cam");
};

CLogLine Failed(const std::string& strOperation, const std::string& strFunction,
                const std::string& strMessage) {
    return Err(strOperation, 1, "container", strFunction, strMessage);
}

/// The two totals are kept by twin operations.
struct CTotal {
    std::string strName;
    int (CContainer::*pGet)() const;
    void (CContainer::*pSet)(int);
    void (CContainer::*pAdd)(int32_t);
    void (CContainer::*pDel)(int32_t);
    void (CResourceTask::*pSetCost)(int32_t);
};

std::ostream& operator<<(std::ostream& stream, const CTotal& total) {
    return stream << total.strName;
}

class ContainerTaskTotal : public ContainerTasks, public testing::WithParamInterface<CTotal> {
protected:
    void SetTotal(int iTotal) { (m_container.*GetParam().pSet)(iTotal); }
    int GetTotal() const { return (m_container.*GetParam().pGet)(); }

    static CResourceTask Task(int32_t iCost) {
        CResourceTask task = MakeTask("t");
        (task.*GetParam().pSetCost)(iCost);
        return task;
    }
};

struct CTotalChange {
    int iTotal;
    int32_t iValue;
    int iExpected;
};

constexpr CTotalChange TASK_ADDITIONS[] = {{20, 30, 50},
                                           {20, 1, 21},
                                           {20, 0, 20},
                                           {20, -5, 20},
                                           {20, INT32_BOTTOM, 20},
                                           {-20, 5, -15},
                                           {INT32_TOP, 1, INT32_BOTTOM},
                                           {INT32_TOP, INT32_TOP, -2}};

TEST_P(ContainerTaskTotal, GrowsByPositiveValuesAlone) {
    for (const auto& [iTotal, iValue, iExpected] : TASK_ADDITIONS) {
        SetTotal(iTotal);
        (m_container.*GetParam().pAdd)(iValue);
        EXPECT_EQ(GetTotal(), iExpected) << iTotal << " + " << iValue;
    }
}

TEST_P(ContainerTaskTotal, CountsAnAddedTaskAsFarAsItsCostIsPositive) {
    for (const auto& [iTotal, iValue, iExpected] : TASK_ADDITIONS) {
        m_container = MakeContainer("N1", "Cam");
        SetTotal(iTotal);
        EXPECT_EQ(m_container.AddTask(Task(iValue)), 0);
        EXPECT_EQ(GetTotal(), iExpected) << iTotal << " + " << iValue;
        EXPECT_EQ(m_container.GetTaskTotalDisk() + m_container.GetTaskTotalNet(), iExpected);
        EXPECT_THAT(TaskIds(m_container), ElementsAre("t"));
    }
}

TEST_P(ContainerTaskTotal, ShrinksToZeroAndGrowsByNegativeValues) {
    constexpr CTotalChange SUBTRACTIONS[] = {{20, 5, 15},
                                             {20, 20, 0},
                                             {20, 30, 0},
                                             {20, 0, 20},
                                             {20, -10, 30},
                                             {0, 0, 0},
                                             {-20, 5, 0},
                                             {-20, -5, 0},
                                             {-20, -30, 10},
                                             {20, INT32_TOP, 0},
                                             {INT32_TOP, -1, INT32_BOTTOM},
                                             {20, INT32_BOTTOM, INT32_BOTTOM + 20}};
    for (const auto& [iTotal, iValue, iExpected] : SUBTRACTIONS) {
        SetTotal(iTotal);
        (m_container.*GetParam().pDel)(iValue);
        EXPECT_EQ(GetTotal(), iExpected) << iTotal << " - " << iValue;
    }
}

TEST_P(ContainerTaskTotal, DeletedTaskTakesOffThePositiveCostOfTheArgument) {
    constexpr CTotalChange DELETIONS[] = {{50, 5, 45},  {50, 1, 49},    {20, 30, 0},   {50, 0, 50},
                                          {50, -5, 50}, {-20, -5, -20}, {-20, 0, -20}, {-20, 1, 0}};
    for (const auto& [iTotal, iValue, iExpected] : DELETIONS) {
        m_container = MakeContainer("N1", "Cam");
        m_container.AddTask(Task(40));
        SetTotal(iTotal);
        EXPECT_EQ(m_container.DelTask(Task(iValue)), 0);
        EXPECT_EQ(GetTotal(), iExpected) << iTotal << " - " << iValue;
        EXPECT_EQ(m_container.GetTotalTask(), 0U);
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    All, ContainerTaskTotal,
    testing::Values(CTotal{"Disk", &CContainer::GetTaskTotalDisk, &CContainer::SetTaskTotalDisk,
                           &CContainer::AddTaskDisk, &CContainer::DelTaskDisk,
                           &CResourceTask::SetDisk},
                    CTotal{"Net", &CContainer::GetTaskTotalNet, &CContainer::SetTaskTotalNet,
                           &CContainer::AddTaskNet, &CContainer::DelTaskNet,
                           &CResourceTask::SetNet}),
    [](const auto& instance) { return instance.param.strName; });

TEST_F(ContainerTasks, AddedTasksAreCopiesInOrderOfArrival) {
    CResourceTask task = MakeTask("a", 1, 2, {{"k", "v"}});
    const Shown shown = Show(task);
    m_container.AddTask(task);
    task.SetTaskId("b");
    m_container.AddTask(task);
    m_container.AddTask(MakeTask("a"));
    EXPECT_EQ(m_container.GetTotalTask(), 3U);
    std::list<CResourceTask> tasks;
    m_container.GetResoureTask(tasks);
    EXPECT_THAT(TaskIds(tasks), ElementsAre("a", "b", "a"));
    EXPECT_EQ(Show(tasks.front()), shown);
}

TEST_F(ContainerTasks, TaskTableIsAppendedToTheArgument) {
    m_container.AddTask(MakeTask("a"));
    std::list<CResourceTask> tasks = {MakeTask("x")};
    m_container.GetResoureTask(tasks);
    m_container.GetResoureTask(tasks);
    EXPECT_THAT(TaskIds(tasks), ElementsAre("x", "a", "a"));
}

TEST_F(ContainerTasks, AddedListIsCountedTaskByTaskAndIsNoReport) {
    m_container.AddTask(MakeTask("a", 1, 1));
    m_container.AddResourceTask({MakeTask("b", 10, 5), MakeTask("c", -5, -3)});
    EXPECT_THAT(TaskIds(m_container), ElementsAre("a", "b", "c"));
    ExpectTotals(11, 6);
    EXPECT_FALSE(m_container.GetHasReportedFlag());
    EXPECT_TRUE(m_container.IsNeedUpdateResTask());
}

TEST_F(ContainerTasks, DeletingDropsTheFirstTaskOfThatId) {
    m_container.AddResourceTask({MakeTask("a", 1), MakeTask("b", 2), MakeTask("a", 3)});
    EXPECT_EQ(m_container.DelTask(MakeTask("a")), 0);
    EXPECT_THAT(TaskIds(m_container), ElementsAre("b", "a"));
    CResourceTask left;
    m_container.GetSingleTaskById("a", left);
    EXPECT_EQ(left.GetDisk(), 3);
}

TEST_F(ContainerTasks, DeletingAnUnknownTaskIsLoggedAndChangesNothing) {
    m_container.AddTask(MakeTask("a", 1, 2));
    const Shown shown = Show(m_container);
    EXPECT_EQ(m_container.DelTask(MakeTask("b", 1, 2)), 1);
    EXPECT_EQ(Show(m_container), shown);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Failed("container remove task by id", "DelTask",
                                                        "connot find task[b].")));
}

TEST_F(ContainerTasks, ReportReplacesTheTableAndTheNetTotalAlone) {
    m_container.AddTask(MakeTask("old", 7, 8));
    m_container.SetResourceTask({MakeTask("a", 10, 5), MakeTask("b", 20, -3)}, REPORT);
    EXPECT_THAT(TaskIds(m_container), ElementsAre("a", "b"));
    ExpectTotals(7, 2);
    m_container.SetResourceTask({}, REPORT);
    EXPECT_THAT(TaskIds(m_container), IsEmpty());
    ExpectTotals(7, 0);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerTasks, SecondReportClearsTheNeedForAnUpdate) {
    m_container.SetResourceTask({}, REPORT);
    EXPECT_TRUE(m_container.GetHasReportedFlag());
    EXPECT_TRUE(m_container.IsNeedUpdateResTask());
    m_container.SetResourceTask({}, REPORT);
    EXPECT_TRUE(m_container.GetHasReportedFlag());
    EXPECT_FALSE(m_container.IsNeedUpdateResTask());
    m_container.SetResTaskNeedUpdate(true);
    m_container.SetResourceTask({}, REPORT);
    EXPECT_FALSE(m_container.IsNeedUpdateResTask());
}

TEST_F(ContainerTasks, FirstReportLeavesTheNeedForAnUpdateAsItIs) {
    m_container.SetResTaskNeedUpdate(false);
    m_container.SetResourceTask({}, REPORT);
    EXPECT_FALSE(m_container.IsNeedUpdateResTask());
}

TEST_F(ContainerTasks, AfterARemovalTheNextReportIsAFirstOneAgain) {
    m_container.SetResourceTask({}, REPORT);
    m_container.SetMemberStatus(CLUSTER_MEMBER_REMOVED);
    m_container.SetResourceTask({}, REPORT);
    EXPECT_TRUE(m_container.IsNeedUpdateResTask());
    m_container.SetResourceTask({}, REPORT);
    EXPECT_FALSE(m_container.IsNeedUpdateResTask());
}

TEST_F(ContainerTasks, RemovalDropsEveryListedTaskAndSumsTheNetCostsAnew) {
    m_container.AddResourceTask(
        {MakeTask("a", 1, 1), MakeTask("b", 2, 10), MakeTask("a", 4, 2), MakeTask("c", 8, -30)});
    ExpectTotals(15, 13);
    m_container.RemoveResourceTask({"a", "unknown", "a"});
    EXPECT_THAT(TaskIds(m_container), ElementsAre("b", "c"));
    ExpectTotals(15, -20);
    EXPECT_TRUE(m_container.IsNeedUpdateResTask());
    EXPECT_FALSE(m_container.GetHasReportedFlag());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerTasks, RemovalOfNothingStillSumsTheNetCostsAnew) {
    m_container.AddTask(MakeTask("a", 1, 5));
    m_container.SetTaskTotalNet(99);
    m_container.RemoveResourceTask({});
    EXPECT_THAT(TaskIds(m_container), ElementsAre("a"));
    ExpectTotals(1, 5);
}

TEST_F(ContainerTasks, NetTotalCountsNegativeCostsOnlyWhenItIsSummedAnew) {
    m_container.AddResourceTask({MakeTask("a", 0, 5), MakeTask("b", 0, -3)});
    ExpectTotals(0, 5);
    m_container.CalcTaskTotalNet();
    ExpectTotals(0, 2);
}

TEST_F(ContainerTasks, NetTotalWrapsAround) {
    m_container.SetResourceTask({MakeTask("a", 0, INT32_TOP), MakeTask("b", 0, 1)}, REPORT);
    ExpectTotals(0, INT32_BOTTOM);
    m_container.SetResourceTask({MakeTask("a", 0, INT32_BOTTOM), MakeTask("b", 0, -1)}, REPORT);
    ExpectTotals(0, INT32_TOP);
}

/// With a total disk of 100 the disk ratio tells the newest disk figure.
class ContainerNewestSample : public ContainerTasks {
protected:
    ContainerNewestSample() { m_container.SetTotalResource(MakeDisk(100)); }

    void ExpectNewestDisk(int32_t iDisk) {
        EXPECT_EQ(m_container.GetDiskRatio(), static_cast<float>(iDisk) / 100.0F);
        // The ratio also of the figure that the ring now holds.
        m_container.SetDiskRatio(-1);
        m_container.SetTotalResource(MakeDisk(100));
        EXPECT_EQ(m_container.GetDiskRatio(), static_cast<float>(iDisk) / 100.0F);
    }
};

TEST_F(ContainerNewestSample, IsLeftAloneInAnEmptyRing) {
    m_container.SetDiskRatio(0.5F);
    m_container.AddDiskToLastestResource(5);
    m_container.DelDiskToLastestResource(5);
    EXPECT_EQ(m_container.GetDiskRatio(), 0.5F);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerNewestSample, IsChangedAtEveryTurnOfTheRing) {
    for (int32_t iSamples = 1; iSamples <= 7; ++iSamples) {
        m_container.SetCurResource(MakeDisk(10 * iSamples));
        m_container.AddDiskToLastestResource(7);
        ExpectNewestDisk(10 * iSamples + 7);
        m_container.DelDiskToLastestResource(3);
        ExpectNewestDisk(10 * iSamples + 4);
    }
}

TEST_F(ContainerNewestSample, EntersTheAverageWithTheNextSample) {
    m_container.SetCurResource(MakeResource(1, 2, 3, 4, 10));
    m_container.AddDiskToLastestResource(20);
    EXPECT_EQ(m_container.GetCurResourceByType(RESOURCE_TYPE_DISK), 10);
    m_container.SetCurResource(MakeResource(1, 2, 3, 4, 50));
    EXPECT_EQ(m_container.GetCurResourceByType(RESOURCE_TYPE_DISK), 40);
    m_container.DelDiskToLastestResource(20);
    EXPECT_EQ(m_container.GetCurResourceByType(RESOURCE_TYPE_DISK), 40);
    m_container.SetCurResource(MakeResource(1, 2, 3, 4, 0));
    EXPECT_EQ(Show(m_container.GetStatus().GetCurSysResource()),
              Show(MakeResource(1, 2, 3, 4, 20)));
}

struct CDiskChange {
    int32_t iDisk;
    int32_t iChange;
    int32_t iExpected;
};

TEST_F(ContainerNewestSample, GrowsWithoutBounds) {
    constexpr CDiskChange ADDITIONS[] = {{10, 200, 210},
                                         {10, 0, 10},
                                         {10, -30, -20},
                                         {INT32_TOP, 1, INT32_BOTTOM},
                                         {INT32_BOTTOM, -1, INT32_TOP}};
    for (const auto& [iDisk, iChange, iExpected] : ADDITIONS) {
        m_container.SetCurResource(MakeDisk(iDisk));
        m_container.AddDiskToLastestResource(iChange);
        ExpectNewestDisk(iExpected);
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerNewestSample, ShrinksInSilenceByWhatItHas) {
    constexpr CDiskChange DELETIONS[] = {{10, 3, 7},  {10, 10, 0},   {10, -5, 15},
                                         {-5, -5, 0}, {-5, -20, 15}, {INT32_TOP, -1, INT32_BOTTOM}};
    for (const auto& [iDisk, iChange, iExpected] : DELETIONS) {
        m_container.SetCurResource(MakeDisk(iDisk));
        m_container.DelDiskToLastestResource(iChange);
        ExpectNewestDisk(iExpected);
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerNewestSample, StopsAtZeroAndSaysSo) {
    for (const auto& [iDisk, iChange] :
         std::vector<std::pair<int32_t, int32_t>>{{10, 11}, {-5, 0}, {INT32_BOTTOM, INT32_TOP}}) {
        m_logger.Clear();
        m_container.SetCurResource(MakeDisk(iDisk));
        m_container.DelDiskToLastestResource(iChange);
        ExpectNewestDisk(0);
        EXPECT_THAT(m_logger.GetLines(),
                    ElementsAre(Failed("container del disk", "DelDiskToLastestResource",
                                       "disk param[" + std::to_string(iChange) +
                                           "] larger than container disk[" + std::to_string(iDisk) +
                                           "].")));
    }
}

TEST_F(ContainerNewestSample, WithoutATotalTheRatioIsFarAboveAnyRealOne) {
    m_container.SetTotalResource(MakeDisk(0));
    m_container.SetCurResource(MakeDisk(10));
    for (void (CContainer::*pChange)(int32_t) :
         {&CContainer::AddDiskToLastestResource, &CContainer::DelDiskToLastestResource}) {
        m_container.SetDiskRatio(0);
        (m_container.*pChange)(1);
        EXPECT_EQ(m_container.GetDiskRatio(), 2147483648.0F);
    }
}

bool CompareTaskById(const CResourceTask& t1, const CResourceTask& t2) {
    return t1.GetTaskId()[0] > t2.GetTaskId()[0];
}

TEST_F(ContainerTasks, SortsAreAscendingAndKeepTheOrderOfEquals) {
    const std::list<CResourceTask> tasks = {MakeTask("b1", 2, 5), MakeTask("a1", 1, 5),
                                            MakeTask("b2", 2, -1), MakeTask("c1", -3, 0),
                                            MakeTask("a2", 1, INT32_BOTTOM)};
    m_container.SetResourceTask(tasks, REPORT);
    m_container.SortTaskTableByDisk();
    EXPECT_THAT(TaskIds(m_container), ElementsAre("c1", "a1", "a2", "b1", "b2"));
    m_container.SetResourceTask(tasks, REPORT);
    m_container.SortTaskTableByNet();
    EXPECT_THAT(TaskIds(m_container), ElementsAre("a2", "b2", "c1", "b1", "a1"));
    m_container.SetResourceTask(tasks, REPORT);
    m_container.SortTaskTableByPrivateFunc(&CompareTaskById);
    EXPECT_THAT(TaskIds(m_container), ElementsAre("c1", "b1", "b2", "a1", "a2"));
}

TEST(TaskOrder, IsByTheOneCostAlone) {
    const CResourceTask less = MakeTask("b", -1, 9);
    const CResourceTask more = MakeTask("a", 1, 9);
    EXPECT_TRUE(CompareTaskByDisk(less, more));
    EXPECT_FALSE(CompareTaskByDisk(more, less));
    EXPECT_FALSE(CompareTaskByDisk(less, less));
    EXPECT_FALSE(CompareTaskByNet(less, more));
    EXPECT_TRUE(CompareTaskByNet(MakeTask("b", 9, INT32_BOTTOM), MakeTask("a", 1, INT32_TOP)));
    EXPECT_FALSE(CompareTaskByNet(MakeTask("b", 1, INT32_TOP), MakeTask("a", 9, INT32_BOTTOM)));
}

CResourceTask Immovable(CResourceTask task) {
    task.SetSupportShift(false);
    return task;
}

TEST_F(ContainerTasks, FirstTaskIsTheHeadMovableOrNot) {
    m_container.AddResourceTask({Immovable(MakeTask("a", 1)), MakeTask("b", 0)});
    CResourceTask picked;
    EXPECT_EQ(m_container.GetFirstTask(picked), 0);
    EXPECT_EQ(Show(picked), Show(Immovable(MakeTask("a", 1))));
    EXPECT_THAT(TaskIds(m_container), ElementsAre("a", "b"));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerTasks, SingleTaskIsTheFirstOfThatId) {
    m_container.AddResourceTask({MakeTask("a", 1), MakeTask("b", 2), MakeTask("b", 3)});
    CResourceTask picked;
    EXPECT_EQ(m_container.GetSingleTaskById("b", picked), 0);
    EXPECT_EQ(picked.GetDisk(), 2);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerTasks, PickWithoutATaskIsLoggedAndLeavesTheArgument) {
    CResourceTask picked = MakeTask("former", 1, 2);
    const Shown former = Show(picked);
    EXPECT_EQ(m_container.GetFirstTask(picked), 1);
    EXPECT_EQ(m_container.GetSingleTaskById("a", picked), 1);
    EXPECT_EQ(m_container.GetFirstScheduleableTask(picked, false, false, true, ""), 1);
    EXPECT_EQ(Show(picked), former);
    EXPECT_THAT(
        m_logger.GetLines(),
        ElementsAre(Failed("container get first task", "GetFirstTask", "container have no task."),
                    Failed("container get single task by id", "GetSingleTaskById",
                           "container don't have this task."),
                    Failed("container get first scheduleable task", "GetFirstScheduleableTask",
                           "container have no scheduleable task.")));
}

CResourceTask Marked(const std::string& strId, const std::string& strMark, int32_t iDisk = 0) {
    return MakeTask(strId, iDisk, 0, {{"Mark", strMark}});
}

/// What GetFirstScheduleableTask is asked for.
struct CWanted {
    bool bCnt;
    bool bSmart;
    bool bDisk;
    std::string strKey;
};

struct CPick {
    std::string strName;
    std::list<CResourceTask> tasks;
    std::vector<CWanted> wanted;
    std::string strPicked;      ///< empty: no task qualifies
    std::size_t uiFailedReads;  ///< how many tasks were asked for a key that they lack
};

std::ostream& operator<<(std::ostream& stream, const CPick& pick) {
    return stream << pick.strName;
}

const CWanted CNT_SMART = {true, true, false, "Mark"};
const CWanted CNT_SMART_DISK = {true, true, true, "Mark"};
const CWanted CNT_PLAIN = {true, false, false, "Mark"};
const CWanted CNT_PLAIN_DISK = {true, false, true, "Mark"};
const CWanted DISK = {false, false, true, "Mark"};
const CWanted DISK_SMART = {false, true, true, "Mark"};
const CWanted DISK_NO_KEY = {false, true, true, ""};
const CWanted KEY = {false, false, false, "Mark"};
const CWanted KEY_SMART = {false, true, false, "Mark"};
const CWanted NO_KEY = {false, false, false, ""};
const CWanted NO_KEY_SMART = {false, true, false, ""};

class ContainerPick : public ContainerTasks, public testing::WithParamInterface<CPick> {};

TEST_P(ContainerPick, TakesTheFirstTaskThatQualifies) {
    const CPick& pick = GetParam();
    m_container.SetResourceTask(pick.tasks, REPORT);
    for (const CWanted& wanted : pick.wanted) {
        m_logger.Clear();
        std::vector<CLogLine> expected(
            pick.uiFailedReads,
            Err("resource task, get value by key", 1, "resource_task", "GetValueByKey",
                "can not find, key[" + wanted.strKey + "], value[]"));
        if (pick.strPicked.empty()) {
            expected.push_back(Failed("container get first scheduleable task",
                                      "GetFirstScheduleableTask",
                                      "container have no scheduleable task."));
        }
        CResourceTask picked;
        EXPECT_EQ(m_container.GetFirstScheduleableTask(picked, wanted.bCnt, wanted.bSmart,
                                                       wanted.bDisk, wanted.strKey),
                  pick.strPicked.empty() ? 1 : 0);
        EXPECT_EQ(picked.GetTaskId(), pick.strPicked);
        EXPECT_THAT(m_logger.GetLines(), testing::ElementsAreArray(expected));
    }
}

std::vector<CPick> Picks() {
    const CResourceTask a = MakeTask("A");
    const CResourceTask b = MakeTask("B");
    const CResourceTask c = MakeTask("C");
    return {
        {"SmartNeedsAPositiveMark",
         {Marked("A", "0"), Marked("B", "-1"), Marked("C", "1")},
         {CNT_SMART, CNT_SMART_DISK, KEY, KEY_SMART},
         "C",
         0},
        {"PlainNeedsNoPositiveMark",
         {Marked("A", "1"), Marked("B", "0")},
         {CNT_PLAIN, CNT_PLAIN_DISK},
         "B",
         0},
        {"NegativeMarkIsPlain", {Marked("A", "-2")}, {CNT_PLAIN}, "A", 0},
        {"MarkIsComparedAsANumber",
         {Marked("A", "many"), Marked("B", " 10 days")},
         {CNT_SMART, KEY},
         "B",
         0},
        {"CntPassesOverDiskCostsWithoutReadingTheKey",
         {MakeTask("A", 1), Marked("B", "1")},
         {CNT_SMART, CNT_SMART_DISK},
         "B",
         0},
        {"NegativeDiskCostIsNone", {Marked("A", "0", -1)}, {CNT_PLAIN}, "A", 0},
        {"DiskNeedsADiskCostAndReadsNoKey",
         {a, MakeTask("B", -1), MakeTask("C", 1)},
         {DISK, DISK_SMART, DISK_NO_KEY},
         "C",
         0},
        {"DiskPassesOverImmovable",
         {Immovable(MakeTask("A", 1)), MakeTask("B", 2)},
         {DISK},
         "B",
         0},
        {"KeyAloneLooksAtNoDiskCost",
         {Marked("A", "0", 1), Marked("B", "2", 1)},
         {KEY, KEY_SMART},
         "B",
         0},
        {"NothingWithoutAnyCriterion",
         {a, Marked("B", "1"), MakeTask("C", 1), MakeTask("D", 0, 0, {{"", "1"}})},
         {NO_KEY, NO_KEY_SMART},
         "",
         0},
        {"EmptyKeyIsReadUnderCnt",
         {Immovable(a), MakeTask("B", 3), c},
         {{true, false, false, ""}, {true, false, true, ""}},
         "C",
         1},
        {"EmptyKeyIsAKey",
         {a, MakeTask("B", 0, 0, {{"", "1"}})},
         {{true, true, false, ""}},
         "B",
         1},
        {"SmartTakesTheFirstMark", {Marked("A", "3"), b}, {CNT_SMART}, "A", 0},
        {"SmartInheritsNothingFromImmovable", {Immovable(Marked("A", "3")), b}, {CNT_SMART}, "", 1},
        {"SmartInheritsNothingFromADiskCost", {Marked("A", "3", 1), b}, {CNT_SMART}, "", 1},
        {"PlainInheritsTheMarkOfARejectedTask", {Marked("A", "3"), b}, {CNT_PLAIN}, "", 1},
        {"InheritanceGoesOnUntilTheNextMark",
         {Marked("A", "3"), b, c, Marked("D", "0")},
         {CNT_PLAIN},
         "D",
         2},
        {"InheritanceEndsWithTheNextMark",
         {Marked("A", "0"), b, Marked("C", "2")},
         {CNT_SMART},
         "C",
         1},
        {"KeyTakesTheMarkedBehindTheUnmarked",
         {Marked("A", "0"), Marked("B", "2"), c},
         {KEY},
         "B",
         0},
        {"KeyInheritsNothingFromImmovable", {Immovable(Marked("A", "2")), b}, {KEY}, "", 1},
        {"KeyInheritsZero", {Marked("A", "0"), b}, {KEY, CNT_SMART}, "", 1},
        {"AllImmovable",
         {Immovable(Marked("A", "2", 0)), Immovable(Marked("B", "0", 1))},
         {CNT_SMART, CNT_PLAIN, DISK, KEY},
         "",
         0},
    };
}

INSTANTIATE_TEST_SUITE_P(All, ContainerPick, testing::ValuesIn(Picks()),
                         [](const auto& instance) { return instance.param.strName; });

TEST_F(ContainerTasks, PickedTaskIsAFullCopyAndStaysInTheTable) {
    m_container.AddTask(Marked("A", "3"));
    CResourceTask picked;
    EXPECT_EQ(m_container.GetFirstScheduleableTask(picked, true, true, false, "Mark"), 0);
    EXPECT_EQ(Show(picked), Show(Marked("A", "3")));
    picked.SetTaskId("changed");
    EXPECT_THAT(TaskIds(m_container), ElementsAre("A"));
}

TEST_F(ContainerTasks, WithoutALoggerEveryAnswerIsTheSame) {
    OMAdapter::getInstance().setLogger(nullptr);
    CResourceTask picked;
    EXPECT_EQ(m_container.DelTask(MakeTask("a")), 1);
    EXPECT_EQ(m_container.GetFirstTask(picked), 1);
    EXPECT_EQ(m_container.GetSingleTaskById("a", picked), 1);
    EXPECT_EQ(m_container.GetFirstScheduleableTask(picked, false, false, true, ""), 1);
    m_container.SetTotalResource(MakeDisk(100));
    m_container.SetCurResource(MakeDisk(10));
    m_container.DelDiskToLastestResource(11);
    EXPECT_EQ(m_container.GetDiskRatio(), 0.0F);
    m_container.AddTask(MakeTask("b"));
    EXPECT_EQ(m_container.GetFirstScheduleableTask(picked, true, false, false, "Mark"), 0);
    EXPECT_EQ(picked.GetTaskId(), "b");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

}  // namespace
