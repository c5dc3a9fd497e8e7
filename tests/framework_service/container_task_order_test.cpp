#include "support/container_tasks_fixture.h"

using testing::ElementsAre;
using namespace container_tasks;

namespace {

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

}  // namespace
