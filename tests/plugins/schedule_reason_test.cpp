#include <functional>
#include <utility>
#include <vector>

#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/node_mgr.h"
#include "framework_service/schedule_mgr.h"
#include "plugins/schedule_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// What the recording and the image plug-in say, by name and container type.
class ScheduleReason : public CScheduleTest,
                       public testing::WithParamInterface<std::pair<const char*, const char*>> {
protected:
    ScheduleReason() : CScheduleTest(GetParam().first, GetParam().second) {}

    static CResourceTask Task(int iDisk, int iNet = 0) {
        return CTaskShape{"new", iDisk, iNet}.ToTask();
    }
};

TEST_P(ScheduleReason, EachContainerSaysWhyItTakesNoWork) {
    for (const char* pszNodeId : {"h", "g", "f", "e", "d", "c", "b", "a"}) {
        AddContainer(pszNodeId, 100, 10);
    }
    CContainerMgr& manager = CContainerMgr::Instance();
    manager.SetContainerOnline(Addr("b"), false);
    manager.SetContainerFaultShift(Addr("c"), true);
    manager.SetContainerDoingFaultShift(Addr("d"), true);
    manager.SetProcessState(Addr("e"), {{"p", PROCESS_STATE_STOPPED}});
    manager.SetContainerMemberStatus(Addr("f"), CLUSTER_MEMBER_REMOVED);
    SetMember("g", false);
    CNodeMgr::Instance().RemoveNode("h");
    CContainer other;
    other.SetNodeId("a");
    other.SetContainerType("other");
    manager.AddContainer({{Addr("i"), other}});
    EXPECT_THAT(
        Explain(Task(10)),
        ElementsAre("a: may take", "b: the container is offline",
                    "c: the container is in fault shift", "d: the container is in fault shift",
                    "e: a process of the container does not run",
                    "f: the container is no normal member", "g: the node is no normal member",
                    "h: the node is unknown", "i: the container names another type"));
}

TEST_P(ScheduleReason, TheFirstFigureOfWhichTooLittleIsLeft) {
    AddContainer("a", 995, 10);
    AddContainer("b", 995, 96);
    AddContainer("c", 990, 95);
    AddContainer("d", 1200, 10);
    AddSilentContainer("e");
    EXPECT_THAT(Explain(Task(10, 5)),
                ElementsAre("a: too little disk: 5 of 1000 left, 10 asked",
                            "b: too little net: 4 of 100 left, 5 asked", "c: may take",
                            "d: too little disk: 0 of 1000 left, 10 asked",
                            "e: too little net: 0 of 0 left, 5 asked"));
}

TEST_P(ScheduleReason, EveryFigureHasItsName) {
    AddSilentContainer("a");
    const std::vector<std::pair<std::function<void(CResourceTask&)>, std::string>> asks{
        {[](CResourceTask& task) { task.SetCpu(7); }, "cpu"},
        {[](CResourceTask& task) { task.SetMem(7); }, "memory"},
        {[](CResourceTask& task) { task.SetIO(7); }, "io"},
        {[](CResourceTask& task) { task.SetNet(7); }, "net"},
        {[](CResourceTask& task) { task.SetDisk(7); }, "disk"}};
    for (const auto& [ask, strName] : asks) {
        CResourceTask task = Task(0);
        ask(task);
        EXPECT_THAT(Explain(task),
                    ElementsAre("a: too little " + strName + ": 0 of 0 left, 7 asked"));
    }
    EXPECT_THAT(Explain(Task(-7)), ElementsAre("a: may take"));
}

TEST_P(ScheduleReason, TasksThatAreNotReportedAsUsedYetTakeRoomToo) {
    AddContainer("a", 100, 10, {{"x", 600}, {"y", 300}});
    EXPECT_THAT(Explain(Task(101)), ElementsAre("a: too little disk: 100 of 1000 left, 101 asked"));
}

TEST_P(ScheduleReason, AContainerMayKeepWhatItHoldsAsLongAsItTakesWork) {
    AddContainer("a", 1000, 10, {{"new", 1000}});
    AddContainer("b", 100, 10);
    EXPECT_THAT(Explain(Task(1000)),
                ElementsAre("a: may take", "b: too little disk: 900 of 1000 left, 1000 asked"));
    SetMember("a", false);
    EXPECT_THAT(Explain(Task(900)), ElementsAre("a: the node is no normal member", "b: may take"));
}

TEST_P(ScheduleReason, StandBehindWhatTheListHolds) {
    AddContainer("a", 0, 0);
    std::list<CPlacementReason> reasons{{Addr("before"), false, "held"}};
    auto* const pReason = dynamic_cast<IPlacementReason*>(&Plugin());
    ASSERT_NE(pReason, nullptr);
    pReason->ExplainPlacement(Task(1), reasons);
    ASSERT_EQ(reasons.size(), 2u);
    EXPECT_EQ(reasons.front().container, Addr("before"));
    EXPECT_EQ(reasons.back().container, Addr("a"));
}

TEST_P(ScheduleReason, DecidesAndChangesNothing) {
    AddContainer("a", 500, 10, {{"held", 500}});
    m_logger.Clear();
    for (int i = 0; i < 3; ++i) {
        EXPECT_THAT(Explain(Task(500)), ElementsAre("a: may take"));
    }
    EXPECT_EQ(CScheduleMgr::Instance().GetDecisionVerNum(), 40u);
    std::list<CResourceTask> tasks;
    CContainerMgr::Instance().GetResTaskList(Addr("a"), tasks);
    EXPECT_THAT(TaskIds(tasks), ElementsAre("held"));
    EXPECT_THAT(m_logger.GetOperLines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(, ScheduleReason,
                         testing::Values(std::pair{"recording", "MeroRecord"},
                                         std::pair{"image", CONTAINER_TYPE_IMG_DEV}),
                         [](const auto& instance) { return instance.param.first; });

}  // namespace
