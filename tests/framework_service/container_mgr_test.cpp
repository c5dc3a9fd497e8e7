#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "support/container_registry_fixture.h"

using testing::IsEmpty;
using namespace container_registry;

namespace {

TEST_F(ContainerRegistry, InitReplacesTheWholeTableByACopy) {
    ContainerMap containerMap = MakeTable({{"N2", "Cam"}});
    EXPECT_EQ(m_registry.Init(containerMap), 0);
    const ShownTable shown = Show(containerMap);
    containerMap.begin()->second.SetOnline(false);
    EXPECT_EQ(Show(Table()), shown);
    EXPECT_EQ(m_registry.Init({}), 0);
    EXPECT_THAT(Table(), IsEmpty());
}

TEST_F(ContainerRegistry, AllContainersReplaceTheArgumentAsCopies) {
    ContainerMap containerMap = MakeTable({UNKNOWN});
    m_registry.GetAllContainer(containerMap);
    EXPECT_EQ(Show(containerMap), Show(MakeTable({CAM, IMG_DEV})));
    containerMap.at(CAM).AddTask(MakeTask("t"));
    EXPECT_EQ(Show(Table()), Show(MakeTable({CAM, IMG_DEV})));
}

TEST_F(ContainerRegistry, AddedContainersAreCopiedAsTheyAre) {
    ContainerMap added = MakeTable({{"N2", "Cam"}, {"N2", "Rec"}});
    CContainer& container = added.begin()->second;
    container.SetOnline(false);
    container.SetMemberStatus(CLUSTER_MEMBER_REMOVED);
    container.SetResTaskNeedUpdate(false);
    ContainerMap expected = Table();
    expected.insert(added.begin(), added.end());
    EXPECT_EQ(m_registry.AddContainer(added), 0);
    EXPECT_EQ(Show(Table()), Show(expected));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerRegistry, RejoiningContainerKeepsWhatItHas) {
    m_registry.SetResourceTask(CAM, {MakeTask("t", 1, 2)}, REPORT);
    m_registry.SetResourceTask(CAM, {MakeTask("t", 1, 2)}, REPORT);
    m_registry.SetSystemResource(CAM, MakeDisk(100), MakeDisk(40));
    m_registry.SetExtParam(CAM, {{"k", "v"}});
    m_registry.SetContainerFaultShift(CAM, true);
    m_registry.SetContainerOnline(CAM, false);
    m_registry.SetContainerMemberStatus(CAM, 2);
    CContainer expected = Get(CAM);
    ASSERT_FALSE(expected.IsNeedUpdateResTask());
    expected.SetMemberStatus(CLUSTER_MEMBER_NORMAL);
    expected.SetOnline(true);
    expected.SetResTaskNeedUpdate(true);

    ContainerMap rejoining = MakeTable({CAM});
    rejoining.at(CAM).AddTask(MakeTask("other"));
    rejoining.at(CAM).SetOnline(false);
    EXPECT_EQ(m_registry.AddContainer(rejoining), 0);
    EXPECT_EQ(::Show(Get(CAM)), ::Show(expected));
    EXPECT_EQ(::Show(Get(IMG_DEV)), ::Show(MakeContainer("N1", "MeroImgDev")));
}

TEST_F(ContainerRegistry, ReportAfterRejoiningClearsTheNeedForAnUpdateAtOnce) {
    m_registry.SetResourceTask(CAM, {}, REPORT);
    m_registry.AddContainer(MakeTable({CAM}));
    m_registry.SetResourceTask(CAM, {}, REPORT);
    EXPECT_FALSE(Get(CAM).IsNeedUpdateResTask());
}

TEST_F(ContainerRegistry, RemovalTakesTheOneEntry) {
    EXPECT_EQ(m_registry.RemoveContainer(CAM), 0);
    EXPECT_EQ(Show(Table()), Show(MakeTable({IMG_DEV})));
    EXPECT_EQ(m_registry.RemoveContainer(CAM), 0);
    EXPECT_EQ(Show(Table()), Show(MakeTable({IMG_DEV})));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerRegistry, AddressesThatReadTheSameAreOneContainer) {
    const CContainerAddr stored("N1", "0Cam");
    const CContainerAddr same("N10", "Cam");
    m_registry.AddContainer(MakeTable({stored}));
    m_registry.SetContainerOnline(same, false);
    EXPECT_FALSE(m_registry.IsContainerOnline(stored));
    ExpectLine(Info("", "container_mgr", "SetContainerOnline",
                    "containerType=0Cam nodeId=N1 set container offline"));
    m_registry.AddContainer(MakeTable({same}));
    EXPECT_TRUE(m_registry.IsContainerOnline(stored));
    EXPECT_EQ(Show(Table()), Show(MakeTable({stored, CAM, IMG_DEV})));
    m_registry.RemoveContainer(same);
    EXPECT_EQ(Show(Table()), Show(MakeTable({CAM, IMG_DEV})));
}

/// A change of a known container that is said to do what the container's own operation does.
struct CChange {
    std::string strName;
    std::function<void(CContainerMgr&, const CContainerAddr&)> apply;
    std::function<void(CContainer&)> expected;
    std::vector<CLogLine> lines = {};
};

std::ostream& operator<<(std::ostream& stream, const CChange& change) {
    return stream << change.strName;
}

class ContainerRegistryChange : public ContainerRegistry,
                                public testing::WithParamInterface<CChange> {};

TEST_P(ContainerRegistryChange, DoesItsOwnToTheOneContainer) {
    m_registry.SetContainerFaultShift(CAM, true);
    ContainerMap expected = Table();
    GetParam().expected(expected.at(CAM));
    m_logger.Clear();
    GetParam().apply(m_registry, CAM);
    EXPECT_EQ(Show(Table()), Show(expected));
    EXPECT_THAT(m_logger.GetLines(), testing::ElementsAreArray(GetParam().lines));
}

CLogLine DoingFaultShift(int iValue) {
    return Info("set container Doing Fault Shift", "container_mgr", "SetContainerDoingFaultShift",
                "container code[N1:Cam], Doing Fault Shit[" + std::to_string(iValue) + "].");
}

INSTANTIATE_TEST_SUITE_P(
    All, ContainerRegistryChange,
    testing::Values(
        CChange{"Online", [](auto& r, auto& a) { r.SetContainerOnline(a, true); },
                [](CContainer& c) { c.SetFaultShift(false); }},
        CChange{"Offline",
                [](auto& r, auto& a) { r.SetContainerOnline(a, false); },
                [](CContainer& c) { c.SetOnline(false); },
                {Info("", "container_mgr", "SetContainerOnline",
                      "containerType=Cam nodeId=N1 set container offline")}},
        CChange{"SystemResource",
                [](auto& r, auto& a) {
                    r.SetSystemResource(a, MakeResource(1, 2, 3, 4, 100), MakeDisk(40));
                },
                [](CContainer& c) {
                    c.SetTotalResource(MakeResource(1, 2, 3, 4, 100));
                    c.SetCurResource(MakeDisk(40));
                }},
        CChange{"ProcessState",
                [](auto& r, auto& a) {
                    r.SetProcessState(a, {{"p", 1}});
                },
                [](CContainer& c) {
                    c.SetProcessState({{"p", 1}});
                }},
        CChange{"ResourceTask",
                [](auto& r, auto& a) { r.SetResourceTask(a, {MakeTask("t", 1, 2)}, REPORT); },
                [](CContainer& c) { c.SetResourceTask({MakeTask("t", 1, 2)}, REPORT); }},
        CChange{"AddResourceTask",
                [](auto& r, auto& a) { r.AddResourceTask(a, {MakeTask("t", 1, 2)}); },
                [](CContainer& c) { c.AddTask(MakeTask("t", 1, 2)); }},
        CChange{"FaultShiftSet", [](auto& r, auto& a) { r.SetContainerFaultShift(a, true); },
                [](CContainer&) {}},
        CChange{"FaultShiftCleared", [](auto& r, auto& a) { r.SetContainerFaultShift(a, false); },
                [](CContainer& c) { c.SetFaultShift(false); }},
        CChange{"DoingFaultShift",
                [](auto& r, auto& a) { r.SetContainerDoingFaultShift(a, true); },
                [](CContainer& c) { c.SetFaultStatus(true); },
                {DoingFaultShift(1)}},
        CChange{"NoLongerDoingFaultShift",
                [](auto& r, auto& a) {
                    r.SetContainerDoingFaultShift(a, true);
                    r.SetContainerDoingFaultShift(a, false);
                },
                [](CContainer&) {},
                {DoingFaultShift(1), DoingFaultShift(0)}},
        CChange{"MemberStatus", [](auto& r, auto& a) { r.SetContainerMemberStatus(a, 2); },
                [](CContainer& c) { c.SetMemberStatus(2); }},
        CChange{"NeedNoUpdate", [](auto& r, auto& a) { r.SetContainerResTaskNeedUpdate(a, false); },
                [](CContainer& c) { c.SetResTaskNeedUpdate(false); }},
        CChange{"ExtParam",
                [](auto& r, auto& a) {
                    r.SetExtParam(a, {{"old", "1"}});
                    r.SetExtParam(a, {{"new", "2"}});
                },
                [](CContainer& c) {
                    c.SetExtParam({{"new", "2"}});
                }},
        CChange{"ExtParamValue",
                [](auto& r, auto& a) {
                    r.SetExtParamValueByKey(a, "k", "1");
                    r.SetExtParamValueByKey(a, "k", "2");
                    r.SetExtParamValueByKey(a, "l", "3");
                },
                [](CContainer& c) {
                    c.SetExtParam({{"k", "2"}, {"l", "3"}});
                }},
        CChange{"ReportTimeAlone", [](auto& r, auto& a) { r.UpdateContainerReportTime(a); },
                [](CContainer&) {}}),
    [](const auto& instance) { return instance.param.strName; });

TEST_F(ContainerRegistry, RemovalOfTasksSumsTheNetCostsAnew) {
    m_registry.AddResourceTask(CAM, {MakeTask("a", 1, 2), MakeTask("b", 3, -4)});
    m_registry.RemoveResourceTask(CAM, {"a"});
    EXPECT_THAT(TaskIds(Get(CAM)), ElementsAre("b"));
    EXPECT_EQ(Get(CAM).GetTaskTotalNet(), -4);
    EXPECT_EQ(Get(CAM).GetTaskTotalDisk(), 4);
}

TEST_F(ContainerRegistry, TaskListIsAppendedToTheArgument) {
    m_registry.AddResourceTask(CAM, {MakeTask("a"), MakeTask("b")});
    std::list<CResourceTask> tasks = {MakeTask("x")};
    m_registry.GetResTaskList(CAM, tasks);
    EXPECT_THAT(TaskIds(tasks), ElementsAre("x", "a", "b"));
}

TEST_F(ContainerRegistry, TasksBringAnOfflineContainerOnlineOnlyWhenTheyAreAdded) {
    m_registry.SetContainerOnline(CAM, false);
    m_registry.SetResourceTask(CAM, {MakeTask("a")}, REPORT);
    EXPECT_FALSE(m_registry.IsContainerOnline(CAM));
    m_registry.RemoveResourceTask(CAM, {"a"});
    EXPECT_FALSE(m_registry.IsContainerOnline(CAM));
    m_registry.SetContainerFaultShift(CAM, true);
    m_registry.AddResourceTask(CAM, {});
    EXPECT_TRUE(m_registry.IsContainerOnline(CAM));
    EXPECT_TRUE(Get(CAM).IsFaultShift());
}

TEST_F(ContainerRegistry, OnlyAReportedTaskOfAnImageDeviceEndsItsFaultShift) {
    for (const CContainerAddr& addr : {CAM, IMG_DEV}) {
        m_registry.SetContainerFaultShift(addr, true);
        m_registry.SetResourceTask(addr, {}, REPORT);
        EXPECT_TRUE(Get(addr).IsFaultShift());
        m_registry.AddResourceTask(addr, {MakeTask("t")});
        EXPECT_TRUE(Get(addr).IsFaultShift());
        m_registry.SetResourceTask(addr, {MakeTask("t")}, REPORT);
        EXPECT_EQ(Get(addr).IsFaultShift(), addr == CAM);
        EXPECT_THAT(TaskIds(Get(addr)), ElementsAre("t"));
    }
}

TEST_F(ContainerRegistry, ReportOfFiguresRefreshesTheReportTimeEvenWhenAllAreZero) {
    AdvanceClock(61);
    m_registry.SetSystemResource(CAM, {}, {});
    EXPECT_FALSE(Get(CAM).IsReportStatusOutTime(0));
    EXPECT_TRUE(Get(IMG_DEV).IsReportStatusOutTime(60));
    m_registry.UpdateContainerReportTime(IMG_DEV);
    EXPECT_FALSE(Get(IMG_DEV).IsReportStatusOutTime(0));
}

TEST_F(ContainerRegistry, NothingElseRefreshesTheReportTime) {
    AdvanceClock(61);
    m_registry.SetProcessState(CAM, {});
    m_registry.SetResourceTask(CAM, {}, REPORT);
    m_registry.AddResourceTask(CAM, {});
    m_registry.SetContainerOnline(CAM, true);
    m_registry.AddContainer(MakeTable({CAM}));
    EXPECT_TRUE(Get(CAM).IsReportStatusOutTime(60));
}

TEST_F(ContainerRegistry, NewFiguresAreSetAgainstTheNewTotal) {
    m_registry.SetSystemResource(CAM, MakeDisk(100), MakeDisk(50));
    m_registry.SetSystemResource(CAM, MakeDisk(200), MakeDisk(20));
    EXPECT_EQ(Get(CAM).GetDiskRatio(), 0.1F);
    EXPECT_EQ(Get(CAM).GetCurResourceByType(RESOURCE_TYPE_DISK), 35);
}

TEST_F(ContainerRegistry, RemovalFromTheClusterForgetsTheReport) {
    m_registry.SetResourceTask(CAM, {}, REPORT);
    m_registry.SetContainerMemberStatus(CAM, CLUSTER_MEMBER_REMOVED);
    EXPECT_FALSE(Get(CAM).GetHasReportedFlag());
    EXPECT_EQ(Get(CAM).GetMemberStatus(), CLUSTER_MEMBER_REMOVED);
}

TEST_F(ContainerRegistry, ExtendedParameterIsReadOrLoggedByTheContainer) {
    m_registry.SetExtParamValueByKey(CAM, "k", "v");
    std::string strValue = "former";
    m_registry.GetExtParamValueByKey(CAM, "missing", strValue);
    EXPECT_EQ(strValue, "former");
    ExpectLine(Err("Container, get value by key", 1, "container", "GetValueByKey",
                   "can not find, key[missing], value[former]"));
    m_registry.GetExtParamValueByKey(CAM, "k", strValue);
    EXPECT_EQ(strValue, "v");
}

TEST_F(ContainerRegistry, QuestionsAreAnsweredByTheContainer) {
    ContainerMap containerMap = MakeTable({CAM, IMG_DEV});
    CContainer& container = containerMap.at(CAM);
    container.SetOnline(false);
    container.SetSupportFaultShift(true);
    container.SetFaultStatus(true);
    container.SetProcessState({{"p", PROCESS_STATE_STOPPED}});
    m_registry.Init(containerMap);
    EXPECT_FALSE(m_registry.IsContainerOnline(CAM));
    EXPECT_TRUE(m_registry.IsContainerSupportFaultShift(CAM));
    EXPECT_TRUE(m_registry.IsContainerDoingFaultShift(CAM));
    EXPECT_FALSE(m_registry.IsProcessRunning(CAM));
    ExpectLine(Info("", "container", "IsProcessRunning",
                    "containerType=Cam nodeId=N1 process=p stopped."));
    EXPECT_TRUE(m_registry.IsContainerOnline(IMG_DEV));
    EXPECT_FALSE(m_registry.IsContainerSupportFaultShift(IMG_DEV));
    EXPECT_FALSE(m_registry.IsContainerDoingFaultShift(IMG_DEV));
    EXPECT_TRUE(m_registry.IsProcessRunning(IMG_DEV));
}

}  // namespace
