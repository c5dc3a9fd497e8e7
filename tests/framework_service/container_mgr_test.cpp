#include "framework_service/container_mgr.h"

#include <chrono>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "reference_host/store.h"
#include "support/fake_clock.h"
#include "support/host_fixture.h"
#include "support/model_values.h"
#include "support/refused_locks.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int REPORT = 3979;
constexpr std::time_t NOW = 1000000;

const CContainerAddr CAM("N1", "Cam");
const CContainerAddr IMG_DEV("N1", "MeroImgDev");
const CContainerAddr UNKNOWN("N9", "Cam");

using ShownTable = std::map<std::string, Shown>;

ShownTable Show(const ContainerMap& containerMap) {
    ShownTable table;
    for (const auto& [containerAddr, container] : containerMap) {
        table[containerAddr.GetNodeId() + ":" + containerAddr.GetContainerType()] =
            ::Show(container);
    }
    return table;
}

ContainerMap MakeTable(const std::vector<CContainerAddr>& addresses) {
    ContainerMap containerMap;
    for (const CContainerAddr& addr : addresses) {
        containerMap[addr] = MakeContainer(addr.GetNodeId(), addr.GetContainerType());
    }
    return containerMap;
}

/// The registry with two containers, CAM and IMG_DEV; empty again afterwards.
class ContainerRegistry : public CHostTest {
protected:
    ContainerRegistry() {
        SetClock(NOW);
        m_registry.Init(MakeTable({CAM, IMG_DEV}));
    }
    ~ContainerRegistry() override { m_registry.Init({}); }

    ContainerMap Table() const {
        ContainerMap containerMap;
        m_registry.GetAllContainer(containerMap);
        return containerMap;
    }

    CContainer Get(const CContainerAddr& addr) const { return Table().at(addr); }

    /// The one line that was logged.
    void ExpectLine(const CLogLine& line) const {
        EXPECT_THAT(m_logger.GetLines(), ElementsAre(line));
    }

    CContainerMgr& m_registry = CContainerMgr::Instance();
};

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

/// An operation that does not reach its container, and what it logs when there is none.
struct CUnreached {
    std::string strName;
    std::function<void(CContainerMgr&, const CContainerAddr&)> apply;
    std::vector<CLogLine> lines = {};
};

std::ostream& operator<<(std::ostream& stream, const CUnreached& unreached) {
    return stream << unreached.strName;
}

class ContainerRegistryUnreached : public ContainerRegistry,
                                   public testing::WithParamInterface<CUnreached> {};

TEST_P(ContainerRegistryUnreached, LeavesTheTableAndLogsOnlyWhereAnUnknownOneIsAFailure) {
    GetParam().apply(m_registry, UNKNOWN);
    EXPECT_EQ(Show(Table()), Show(MakeTable({CAM, IMG_DEV})));
    EXPECT_THAT(m_logger.GetLines(), testing::ElementsAreArray(GetParam().lines));
}

TEST_P(ContainerRegistryUnreached, IsSilentWithoutALogger) {
    OMAdapter::getInstance().setLogger(nullptr);
    GetParam().apply(m_registry, UNKNOWN);
    EXPECT_EQ(Show(Table()), Show(MakeTable({CAM, IMG_DEV})));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_P(ContainerRegistryUnreached, DoesNothingAndIsSilentWithoutTheLock) {
    {
        const CRefusedLocks refused;
        GetParam().apply(m_registry, CAM);
        GetParam().apply(m_registry, UNKNOWN);
    }
    EXPECT_EQ(Show(Table()), Show(MakeTable({CAM, IMG_DEV})));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerRegistry, TableOperationsFailInSilenceWithoutTheLock) {
    ContainerMap containerMap = MakeTable({UNKNOWN});
    {
        const CRefusedLocks refused;
        EXPECT_EQ(m_registry.Init({}), 1);
        EXPECT_EQ(m_registry.AddContainer(containerMap), 1);
        EXPECT_EQ(m_registry.RemoveContainer(CAM), 1);
        m_registry.GetAllContainer(containerMap);
    }
    EXPECT_EQ(Show(containerMap), Show(MakeTable({UNKNOWN})));
    EXPECT_EQ(Show(Table()), Show(MakeTable({CAM, IMG_DEV})));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

std::vector<CLogLine> NotFound(const std::string& strOperation, int iCode,
                               const std::string& strFunction, const std::string& strWhich) {
    return {Err(strOperation, iCode, "container_mgr", strFunction,
                "find container failed, " + strWhich)};
}

constexpr char CODE[] = "code[N9:Cam]";
constexpr char CONTAINER_ID[] = "node id=N9 container id=Cam";
constexpr char CONTAINER_TYPE[] = "node id=N9 container type=Cam";

INSTANTIATE_TEST_SUITE_P(
    Logged, ContainerRegistryUnreached,
    testing::Values(
        CUnreached{"SetContainerOnline", [](auto& r, auto& a) { r.SetContainerOnline(a, true); },
                   NotFound("set container online", 1, "SetContainerOnline", CODE)},
        CUnreached{"SetContainerOffline", [](auto& r, auto& a) { r.SetContainerOnline(a, false); },
                   NotFound("set container online", 1, "SetContainerOnline", CODE)},
        CUnreached{
            "SetSystemResource", [](auto& r, auto& a) { r.SetSystemResource(a, {}, {}); },
            NotFound("Container mgr set system resource", 2, "SetSystemResource", CONTAINER_ID)},
        CUnreached{"SetProcessState", [](auto& r, auto& a) { r.SetProcessState(a, {}); },
                   NotFound("Container mgr set process list", 2, "SetProcessState", CONTAINER_ID)},
        CUnreached{
            "SetResourceTask",
            [](auto& r, auto& a) { r.SetResourceTask(a, {MakeTask("t")}, REPORT); },
            NotFound("Container mgr set resource task", 2, "SetResourceTask", CONTAINER_TYPE)},
        CUnreached{"SaveDataToZK", [](auto& r, auto& a) { r.SaveDataToZK(a); },
                   NotFound("Container mgr set data to zk", 2, "SaveDataToZK", CONTAINER_TYPE)},
        CUnreached{"GetResTaskList",
                   [](auto& r, auto& a) {
                       std::list<CResourceTask> tasks = {MakeTask("x")};
                       r.GetResTaskList(a, tasks);
                       EXPECT_THAT(TaskIds(tasks), ElementsAre("x"));
                   },
                   NotFound("Container mgr get resource task", 2, "GetResTaskList", CONTAINER_ID)},
        CUnreached{
            "RemoveResourceTask", [](auto& r, auto& a) { r.RemoveResourceTask(a, {"t"}); },
            NotFound("Container mgr remove resource task", 2, "RemoveResourceTask", CONTAINER_ID)},
        CUnreached{"AddResourceTask",
                   [](auto& r, auto& a) { r.AddResourceTask(a, {MakeTask("t")}); },
                   NotFound("Container mgr add resource task", 2, "AddResourceTask", CONTAINER_ID)},
        CUnreached{"SetContainerFaultShift",
                   [](auto& r, auto& a) { r.SetContainerFaultShift(a, true); },
                   NotFound("Container mgr set container fault shift", 2, "SetContainerFaultShift",
                            CONTAINER_ID)},
        CUnreached{
            "SetContainerDoingFaultShift",
            [](auto& r, auto& a) { r.SetContainerDoingFaultShift(a, true); },
            NotFound("set container Doing Fault Shift", 1, "SetContainerDoingFaultShift", CODE)}),
    [](const auto& instance) { return instance.param.strName; });

INSTANTIATE_TEST_SUITE_P(
    Silent, ContainerRegistryUnreached,
    testing::Values(
        CUnreached{"RemoveContainer", [](auto& r, auto& a) { r.RemoveContainer(a); }},
        CUnreached{"IsContainerOnline",
                   [](auto& r, auto& a) { EXPECT_FALSE(r.IsContainerOnline(a)); }},
        CUnreached{"IsProcessRunning",
                   [](auto& r, auto& a) { EXPECT_FALSE(r.IsProcessRunning(a)); }},
        CUnreached{"IsContainerSupportFaultShift",
                   [](auto& r, auto& a) { EXPECT_FALSE(r.IsContainerSupportFaultShift(a)); }},
        CUnreached{"IsContainerDoingFaultShift",
                   [](auto& r, auto& a) { EXPECT_FALSE(r.IsContainerDoingFaultShift(a)); }},
        CUnreached{"UpdateContainerReportTime",
                   [](auto& r, auto& a) { r.UpdateContainerReportTime(a); }},
        CUnreached{"SetContainerMemberStatus",
                   [](auto& r, auto& a) { r.SetContainerMemberStatus(a, 1); }},
        CUnreached{"SetContainerResTaskNeedUpdate",
                   [](auto& r, auto& a) { r.SetContainerResTaskNeedUpdate(a, false); }},
        CUnreached{"SetExtParam",
                   [](auto& r, auto& a) {
                       r.SetExtParam(a, {{"k", "v"}});
                   }},
        CUnreached{"SetExtParamValueByKey",
                   [](auto& r, auto& a) { r.SetExtParamValueByKey(a, "k", "v"); }},
        CUnreached{"GetExtParamValueByKey",
                   [](auto& r, auto& a) {
                       std::string strValue = "former";
                       r.GetExtParamValueByKey(a, "k", strValue);
                       EXPECT_EQ(strValue, "former");
                   }}),
    [](const auto& instance) { return instance.param.strName; });

const CContainerAddr CLOUD("N1", "MeroCloudStorage");

std::string Entry(const std::string& strNodeId) {
    return "{\"LowpriBit\":0,\"NvrCode\":\"" + strNodeId +
           "\",\"ProductType\":\"\",\"ReqPicSize\":0,\"ReqSize\":0,\"ServiceType\":\"\"}";
}

std::string Document(const std::string& strEntries) {
    return "{\"CloudStorageSet\":[" + strEntries + "]}\n";
}

class ContainerRegistrySave : public ContainerRegistry {
protected:
    ContainerRegistrySave() {
        m_registry.Init(MakeTable({CAM, CLOUD}));
        m_pStore->Put(Path("/CloudStorage"), Document(Entry("N0")));
    }

    std::optional<std::string> Stored() const { return m_pStore->Get(Path("/CloudStorage")); }
};

TEST_F(ContainerRegistrySave, OrdinaryTypeTouchesNoStore) {
    m_registry.SaveDataToZK(CAM);
    EXPECT_EQ(m_pStore->GetCallCount(), 0U);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerRegistrySave, NothingElseTouchesTheStore) {
    m_registry.SetResourceTask(CLOUD, {MakeTask("t")}, REPORT);
    m_registry.AddContainer(MakeTable({CLOUD}));
    m_registry.RemoveContainer(CLOUD);
    EXPECT_EQ(m_pStore->GetCallCount(), 0U);
}

TEST_F(ContainerRegistrySave, EveryFailingCallEndsInTheLog) {
    const CLogLine saving = Info("save cloud storage report info to zk", "container",
                                 "SaveCloudStorageReportInfoToZK", "alloc info list=0");
    struct COutcome {
        std::string strStored;
        std::vector<CLogLine> lines;
    };
    const std::vector<COutcome> outcomes = {
        {Document(Entry("N1")),
         {Err("GetDataFromZK", -7, "container", "SaveCloudStorageReportInfoToZK",
              "get cloud storage info from zk fail. nodeId: N1  cType: MeroCloudStorage"),
          saving}},
        {Document(Entry("N0")),
         {saving, Err("init cluster session, on successful response", -7, "container",
                      "SaveCloudStorageReportInfoToZK", "set cloud storage info to zk fail.")}},
        {Document(Entry("N0") + "," + Entry("N1")), {saving}}};
    const ShownTable before = Show(Table());
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        m_logger.Clear();
        m_pStore->Put(Path("/CloudStorage"), Document(Entry("N0")));
        m_pStore->FailCall(static_cast<unsigned int>(i + 1), -7);
        m_registry.SaveDataToZK(CLOUD);
        EXPECT_EQ(Stored(), outcomes[i].strStored) << i;
        EXPECT_EQ(m_logger.GetLinesOf("container"), outcomes[i].lines) << i;
        EXPECT_EQ(Show(Table()), before);
    }
    EXPECT_EQ(m_pStore->GetCallCount(), 2 * outcomes.size());
}

/// A store whose calls come back into the registry, on the thread that holds its lock.
class CReentrantStore : public CMemoryStore {
public:
    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override {
        CContainerMgr::Instance().SetExtParamValueByKey(CLOUD, "read", strPath);
        return CMemoryStore::Read(strPath, pWatcher, answer);
    }
};

TEST_F(ContainerRegistrySave, StoreMayComeBackOnTheSameThread) {
    SetStore(std::make_shared<CReentrantStore>());
    m_registry.SaveDataToZK(CLOUD);
    std::string strPath;
    m_registry.GetExtParamValueByKey(CLOUD, "read", strPath);
    EXPECT_EQ(strPath, Path("/CloudStorage"));
}

/// A store whose reads end the membership of the container that is being saved.
class CRemovingStore : public CMemoryStore {
public:
    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override {
        CContainerMgr::Instance().RemoveContainer(CLOUD);
        return CMemoryStore::Read(strPath, pWatcher, answer);
    }
};

TEST_F(ContainerRegistrySave, SavesWhatItFoundThoughTheStoreTakesTheContainerAway) {
    const auto pStore = std::make_shared<CRemovingStore>();
    SetStore(pStore);
    m_registry.SaveDataToZK(CLOUD);
    EXPECT_EQ(pStore->Get(Path("/CloudStorage")), Document(Entry("N1")));
    EXPECT_EQ(Table().count(CLOUD), 0U);
}

class ContainerRegistryThreads : public ContainerRegistrySave {
protected:
    static constexpr int NUMERIC_THREADS = 4;
    static constexpr int NUMERIC_ROUNDS = 50;

    /// Runs the work on every thread, iRounds times each.
    static void RunOnThreads(int iRounds,
                             const std::function<void(int iThread, int iRound)>& work) {
        std::vector<std::thread> threads;
        for (int iThread = 0; iThread < NUMERIC_THREADS; ++iThread) {
            threads.emplace_back([&work, iRounds, iThread] {
                for (int iRound = 0; iRound < iRounds; ++iRound) {
                    work(iThread, iRound);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
};

TEST_F(ContainerRegistryThreads, NoAddedTaskIsLost) {
    RunOnThreads(NUMERIC_ROUNDS, [&](int, int iRound) {
        m_registry.AddResourceTask(CAM, {MakeTask(std::to_string(iRound), 1, 2)});
    });
    EXPECT_EQ(Get(CAM).GetTotalTask(), 200U);
    EXPECT_EQ(Get(CAM).GetTaskTotalDisk(), 200);
    EXPECT_EQ(Get(CAM).GetTaskTotalNet(), 400);
}

/// A store that leaves time between a read and the write after it.
class CSlowStore : public CMemoryStore {
public:
    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override {
        const int iRet = CMemoryStore::Read(strPath, pWatcher, answer);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return iRet;
    }
};

TEST_F(ContainerRegistryThreads, NoSavedEntryIsLost) {
    const auto pStore = std::make_shared<CSlowStore>();
    pStore->Put(Path("/CloudStorage"), Document(Entry("N0")));
    SetStore(pStore);
    const std::vector<std::string> nodes = {"N1", "N2", "N3", "N4"};
    std::string strEntries = Entry("N0");
    for (const std::string& strNodeId : nodes) {
        m_registry.AddContainer(MakeTable({{strNodeId, "MeroCloudStorage"}}));
        strEntries += "," + Entry(strNodeId);
    }
    RunOnThreads(1, [&](int iThread, int) {
        m_registry.SaveDataToZK({nodes[static_cast<std::size_t>(iThread)], "MeroCloudStorage"});
    });
    EXPECT_EQ(pStore->Get(Path("/CloudStorage")), Document(strEntries));
    EXPECT_EQ(pStore->GetCallCount(), 8U);
}

TEST_F(ContainerRegistryThreads, NoContainerIsSeenHalfChanged) {
    m_registry.SetResourceTask(CAM, {MakeTask("t", 0, 1)}, REPORT);
    RunOnThreads(NUMERIC_ROUNDS, [&](int iThread, int iRound) {
        if (iThread != 0) {
            for (const auto& [containerAddr, container] : Table()) {
                CContainer summed(container);
                summed.CalcTaskTotalNet();
                EXPECT_EQ(container.GetTaskTotalNet(), summed.GetTaskTotalNet());
            }
            return;
        }
        m_registry.SetResourceTask(CAM, std::list<CResourceTask>(20, MakeTask("t", 0, iRound)),
                                   REPORT);
    });
}

TEST_F(ContainerRegistryThreads, EveryOperationMayMeetEveryOther) {
    RunOnThreads(NUMERIC_ROUNDS, [&](int iThread, int iRound) {
        const CContainerAddr addr = (iThread + iRound) % 2 == 0 ? CAM : CLOUD;
        std::list<CResourceTask> tasks;
        std::string strValue;
        m_registry.AddContainer(MakeTable({addr}));
        m_registry.SetSystemResource(addr, MakeDisk(100), MakeDisk(iRound));
        m_registry.UpdateContainerReportTime(addr);
        m_registry.SetProcessState(addr, {{"p", iRound % 2}});
        m_registry.IsProcessRunning(addr);
        m_registry.SetResourceTask(addr, {MakeTask("t")}, REPORT);
        m_registry.AddResourceTask(addr, {MakeTask("u")});
        m_registry.GetResTaskList(addr, tasks);
        m_registry.RemoveResourceTask(addr, {"u"});
        m_registry.SaveDataToZK(addr);
        m_registry.SetContainerOnline(addr, false);
        m_registry.IsContainerOnline(addr);
        m_registry.SetContainerFaultShift(addr, true);
        m_registry.IsContainerSupportFaultShift(addr);
        m_registry.SetContainerDoingFaultShift(addr, true);
        m_registry.IsContainerDoingFaultShift(addr);
        m_registry.SetContainerMemberStatus(addr, 1);
        m_registry.SetContainerResTaskNeedUpdate(addr, false);
        m_registry.SetExtParam(addr, {{"k", "v"}});
        m_registry.SetExtParamValueByKey(addr, "k", "w");
        m_registry.GetExtParamValueByKey(addr, "k", strValue);
        m_registry.RemoveContainer(addr);
        m_registry.Init(Table());
    });
    m_registry.Init(MakeTable({CAM}));
    m_registry.AddResourceTask(CAM, {MakeTask("t")});
    EXPECT_THAT(TaskIds(Get(CAM)), ElementsAre("t"));
}

}  // namespace
