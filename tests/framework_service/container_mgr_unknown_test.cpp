#include <string>
#include <vector>

#include "support/container_registry_fixture.h"

using testing::IsEmpty;
using namespace container_registry;

namespace {

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

}  // namespace
