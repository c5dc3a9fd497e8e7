#include <ostream>
#include <string>
#include <vector>

#include "support/container_tasks_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace container_tasks;

namespace {

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

const CResourceTask A = MakeTask("A");
const CResourceTask B = MakeTask("B");
const CResourceTask C = MakeTask("C");

const std::vector<CPick> PICKS = {
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
     {A, MakeTask("B", -1), MakeTask("C", 1)},
     {DISK, DISK_SMART, DISK_NO_KEY},
     "C",
     0},
    {"DiskPassesOverImmovable", {Immovable(MakeTask("A", 1)), MakeTask("B", 2)}, {DISK}, "B", 0},
    {"KeyAloneLooksAtNoDiskCost",
     {Marked("A", "0", 1), Marked("B", "2", 1)},
     {KEY, KEY_SMART},
     "B",
     0},
    {"NothingWithoutAnyCriterion",
     {A, Marked("B", "1"), MakeTask("C", 1), MakeTask("D", 0, 0, {{"", "1"}})},
     {NO_KEY, NO_KEY_SMART},
     "",
     0},
    {"EmptyKeyIsReadUnderCnt",
     {Immovable(A), MakeTask("B", 3), C},
     {{true, false, false, ""}, {true, false, true, ""}},
     "C",
     1},
    {"EmptyKeyIsAKey", {A, MakeTask("B", 0, 0, {{"", "1"}})}, {{true, true, false, ""}}, "B", 1},
    {"SmartTakesTheFirstMark", {Marked("A", "3"), B}, {CNT_SMART}, "A", 0},
    {"SmartInheritsNothingFromImmovable", {Immovable(Marked("A", "3")), B}, {CNT_SMART}, "", 1},
    {"SmartInheritsNothingFromADiskCost", {Marked("A", "3", 1), B}, {CNT_SMART}, "", 1},
    {"PlainInheritsTheMarkOfARejectedTask", {Marked("A", "3"), B}, {CNT_PLAIN}, "", 1},
    {"InheritanceGoesOnUntilTheNextMark",
     {Marked("A", "3"), B, C, Marked("D", "0")},
     {CNT_PLAIN},
     "D",
     2},
    {"InheritanceEndsWithTheNextMark",
     {Marked("A", "0"), B, Marked("C", "2")},
     {CNT_SMART},
     "C",
     1},
    {"KeyTakesTheMarkedBehindTheUnmarked", {Marked("A", "0"), Marked("B", "2"), C}, {KEY}, "B", 0},
    {"KeyInheritsNothingFromImmovable", {Immovable(Marked("A", "2")), B}, {KEY}, "", 1},
    {"KeyInheritsZero", {Marked("A", "0"), B}, {KEY, CNT_SMART}, "", 1},
    {"AllImmovable",
     {Immovable(Marked("A", "2", 0)), Immovable(Marked("B", "0", 1))},
     {CNT_SMART, CNT_PLAIN, DISK, KEY},
     "",
     0},
};

INSTANTIATE_TEST_SUITE_P(All, ContainerPick, testing::ValuesIn(PICKS),
                         [](const auto& instance) { return instance.param.strName; });

TEST_F(ContainerTasks, PickedTaskIsAFullCopyAndStaysInTheTable) {
    m_container.AddTask(Marked("A", "3"));
    CResourceTask picked;
    EXPECT_EQ(m_container.GetFirstScheduleableTask(picked, true, true, false, "Mark"), 0);
    EXPECT_EQ(Show(picked), Show(Marked("A", "3")));
    picked.SetTaskId("changed");
    EXPECT_THAT(TaskIds(m_container), ElementsAre("A"));
}

}  // namespace
