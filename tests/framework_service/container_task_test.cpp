#include <ostream>
#include <string>

#include "support/container_tasks_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace container_tasks;

namespace {

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
