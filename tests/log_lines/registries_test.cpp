#include "log_lines/log_lines.h"
#include "support/model_values.h"

namespace {

const CContainerAddr GHOST("ghost", "A");
const CContainerAddr KNOWN("n1", "A");

CContainerMgr& Containers() {
    return CContainerMgr::Instance();
}

void AddKnown() {
    Containers().AddContainer({{KNOWN, MakeContainer("n1", "A")}});
}

void ReportNvr(int32_t iTotal, int32_t iUsed) {
    Containers().UpdateHighSpeedNvrInfo("nvr", iTotal, iUsed, ORVA_STATUS_RUN, ORVA_STATUS_RUN,
                                        ORVA_STATUS_RUN);
}

using CSelection = int (CContainerMgr::*)(std::string&, int32_t);

void Select(CSelection pSelection, int32_t iBitRate) {
    std::string strNvrCode;
    (Containers().*pSelection)(strNvrCode, iBitRate);
}

/// Selects from a list with a report that is too old.
void SelectFromExpired(CScene& scene, CSelection pSelection) {
    SetClock(1000);
    ReportNvr(100, 20);
    AdvanceClock(31);
    scene.logger.Clear();
    Select(pSelection, 1);
}

/// Selects from a list with 80 to give.
void SelectFromOne(CScene& scene, CSelection pSelection, int32_t iBitRate) {
    ReportNvr(100, 20);
    scene.logger.Clear();
    Select(pSelection, iBitRate);
}

constexpr CSelection HIGH_SPEED = &CContainerMgr::GetHighSpeedNvrCode;
constexpr CSelection PIC_HIGH_SPEED = &CContainerMgr::GetPicHighSpeedNvrCode;

const std::vector<CScenario> NODE_REGISTRY = {
    {"SetSystemResourceOfAnUnknownNode",
     [](CScene&) { CNodeMgr::Instance().SetSystemResource("ghost", {}, {}); },
     {"ERR|node_mgr|SetSystemResource|Node mgr set system resource|1|can not find the node, node "
      "id=%s|can not find the node, node id=ghost"}},
};

const std::vector<CScenario> UNKNOWN_CONTAINER = {
    {"SetContainerOnline",
     [](CScene&) { Containers().SetContainerOnline(GHOST, true); },
     {"ERR|container_mgr|SetContainerOnline|set container online|1|find container failed, "
      "code[%s:%s]|find container failed, code[ghost:A]"}},
    {"SetSystemResource",
     [](CScene&) { Containers().SetSystemResource(GHOST, {}, {}); },
     {"ERR|container_mgr|SetSystemResource|Container mgr set system resource|2|find container "
      "failed, node id=%s container id=%s|find container failed, node id=ghost container id=A"}},
    {"SetProcessState",
     [](CScene&) { Containers().SetProcessState(GHOST, {}); },
     {"ERR|container_mgr|SetProcessState|Container mgr set process list|2|find container failed, "
      "node id=%s container id=%s|find container failed, node id=ghost container id=A"}},
    {"SetResourceTask",
     [](CScene&) { Containers().SetResourceTask(GHOST, {}, CONTAINER_STATUS_REPORT_REQ); },
     {"ERR|container_mgr|SetResourceTask|Container mgr set resource task|2|find container failed, "
      "node id=%s container type=%s|find container failed, node id=ghost container type=A"}},
    {"GetResTaskList",
     [](CScene&) {
         std::list<CResourceTask> tasks;
         Containers().GetResTaskList(GHOST, tasks);
     },
     {"ERR|container_mgr|GetResTaskList|Container mgr get resource task|2|find container failed, "
      "node id=%s container id=%s|find container failed, node id=ghost container id=A"}},
    {"RemoveResourceTask",
     [](CScene&) { Containers().RemoveResourceTask(GHOST, {}); },
     {"ERR|container_mgr|RemoveResourceTask|Container mgr remove resource task|2|find container "
      "failed, node id=%s container id=%s|find container failed, node id=ghost container id=A"}},
    {"AddResourceTask",
     [](CScene&) { Containers().AddResourceTask(GHOST, {}); },
     {"ERR|container_mgr|AddResourceTask|Container mgr add resource task|2|find container failed, "
      "node id=%s container id=%s|find container failed, node id=ghost container id=A"}},
    {"SaveDataToZK",
     [](CScene&) { Containers().SaveDataToZK(GHOST); },
     {"ERR|container_mgr|SaveDataToZK|Container mgr set data to zk|2|find container failed, node "
      "id=%s container type=%s|find container failed, node id=ghost container type=A"}},
    {"SetContainerFaultShift",
     [](CScene&) { Containers().SetContainerFaultShift(GHOST, true); },
     {"ERR|container_mgr|SetContainerFaultShift|Container mgr set container fault shift|2|find "
      "container failed, node id=%s container id=%s|find container failed, node id=ghost container "
      "id=A"}},
    {"SetContainerDoingFaultShift",
     [](CScene&) { Containers().SetContainerDoingFaultShift(GHOST, true); },
     {"ERR|container_mgr|SetContainerDoingFaultShift|set container Doing Fault Shift|1|find "
      "container failed, code[%s:%s]|find container failed, code[ghost:A]"}},
    {"SilentOperations",
     [](CScene&) {
         Containers().UpdateContainerReportTime(GHOST);
         Containers().SetContainerResTaskNeedUpdate(GHOST, true);
         Containers().SetContainerMemberStatus(GHOST, 0);
         Containers().SetExtParam(GHOST, {});
         Containers().SetExtParamValueByKey(GHOST, "k", "v");
         std::string strValue;
         Containers().GetExtParamValueByKey(GHOST, "k", strValue);
         Containers().RemoveContainer(GHOST);
         Containers().IsContainerOnline(GHOST);
         Containers().IsProcessRunning(GHOST);
     },
     {}},
};

const std::vector<CScenario> KNOWN_CONTAINER = {
    {"SetContainerOnline",
     [](CScene&) {
         AddKnown();
         Containers().SetContainerOnline(KNOWN, true);
     },
     {}},
    {"SetContainerOffline",
     [](CScene&) {
         AddKnown();
         Containers().SetContainerOnline(KNOWN, false);
     },
     {"INFO|container_mgr|SetContainerOnline|||containerType=%s nodeId=%s set container "
      "offline|containerType=A nodeId=n1 set container offline"}},
    {"SetContainerDoingFaultShift",
     [](CScene&) {
         AddKnown();
         Containers().SetContainerDoingFaultShift(KNOWN, true);
     },
     {"INFO|container_mgr|SetContainerDoingFaultShift|set container Doing Fault Shift||container "
      "code[%s:%s], Doing Fault Shit[%d].|container code[n1:A], Doing Fault Shit[1]."}},
    {"IsProcessRunningWithAStoppedProcess",
     [](CScene&) {
         AddKnown();
         Containers().SetProcessState(KNOWN, {{"p", PROCESS_STATE_STOPPED}});
         Containers().IsProcessRunning(KNOWN);
     },
     {"INFO|container|IsProcessRunning|||containerType=%s nodeId=%s process=%s "
      "stopped.|containerType=A nodeId=n1 process=p stopped."}},
    {"GetExtParamValueOfAMissingKey",
     [](CScene&) {
         AddKnown();
         std::string strValue = "old";
         Containers().GetExtParamValueByKey(KNOWN, "key", strValue);
     },
     {"ERR|container|GetValueByKey|Container, get value by key|1|can not find, key[%s], "
      "value[%s]|can not find, key[key], value[old]"}},
};

const std::vector<CScenario> HIGH_SPEED_LISTS = {
    {"UpdateWithMoreUsedThanThereIs",
     [](CScene&) { ReportNvr(1, 2); },
     {"ERR|container_mgr|UpdateHighSpeedNvrInfo|UpdateHighSpeedNvrInfo|2|nvrCode:%s,"
      "TotalBrandwidth:%u,UsedBrandwidth:%u|nvrCode:nvr,TotalBrandwidth:1,UsedBrandwidth:2"}},
    {"UpdateWithoutPictures",
     [](CScene&) {
         Containers().UpdateHighSpeedNvrInfo("nvr", 100, 20, ORVA_STATUS_RUN, 0, ORVA_STATUS_RUN);
     },
     {"INFO|container_mgr|UpdateHighSpeedInfoList|UpdateHighSpeedInfoList||first update "
      "nvrcode:%s|first update nvrcode:nvr",
      "INFO|container_mgr|UpdateHighSpeedNvrInfo|UpdateHighSpeedNvrInfo||update MU "
      "nvrcode:%s,TotalBrandwidth:%u,UsedBrandwidth:%u|update MU "
      "nvrcode:nvr,TotalBrandwidth:100,UsedBrandwidth:20"}},
    {"UpdateFirst",
     [](CScene&) { ReportNvr(100, 20); },
     {"INFO|container_mgr|UpdateHighSpeedInfoList|UpdateHighSpeedInfoList||first update "
      "nvrcode:%s|first update nvrcode:nvr",
      "INFO|container_mgr|UpdateHighSpeedNvrInfo|UpdateHighSpeedNvrInfo||update MU "
      "nvrcode:%s,TotalBrandwidth:%u,UsedBrandwidth:%u|update MU "
      "nvrcode:nvr,TotalBrandwidth:100,UsedBrandwidth:20",
      "INFO|container_mgr|UpdateHighSpeedInfoList|UpdateHighSpeedInfoList||first update "
      "nvrcode:%s|first update nvrcode:nvr",
      "INFO|container_mgr|UpdateHighSpeedNvrInfo|UpdateHighSpeedNvrInfo||update IMGU "
      "nvrcode:%s,TotalBrandwidth:%u,UsedBrandwidth:%u|update IMGU "
      "nvrcode:nvr,TotalBrandwidth:100,UsedBrandwidth:20"}},
    {"UpdateAgain",
     [](CScene& scene) {
         ReportNvr(100, 20);
         scene.logger.Clear();
         ReportNvr(100, 30);
     },
     {"INFO|container_mgr|UpdateHighSpeedNvrInfo|UpdateHighSpeedNvrInfo||update MU "
      "nvrcode:%s,TotalBrandwidth:%u,UsedBrandwidth:%u|update MU "
      "nvrcode:nvr,TotalBrandwidth:100,UsedBrandwidth:30",
      "INFO|container_mgr|UpdateHighSpeedNvrInfo|UpdateHighSpeedNvrInfo||update IMGU "
      "nvrcode:%s,TotalBrandwidth:%u,UsedBrandwidth:%u|update IMGU "
      "nvrcode:nvr,TotalBrandwidth:100,UsedBrandwidth:30"}},
    {"UpdateListFirst",
     [](CScene&) {
         std::list<HighSpeedDownLoadInfo> list;
         Containers().UpdateHighSpeedInfoList("nvr", 100, 20, list);
     },
     {"INFO|container_mgr|UpdateHighSpeedInfoList|UpdateHighSpeedInfoList||first update "
      "nvrcode:%s|first update nvrcode:nvr"}},
    {"SelectFromNone",
     [](CScene&) { Select(HIGH_SPEED, 1); },
     {"ERR|container_mgr|GetHighSpeedNvrCode|get high speed nvr code|1|"}},
    {"SelectFromExpired",
     [](CScene& scene) { SelectFromExpired(scene, HIGH_SPEED); },
     {"ERR|container_mgr|GetHighSpeedNvrCode|get high speed nvr code|1|nvrCode:%s expire,expire "
      "time:%d,currentTime:%ld,updateTime:%ld|nvrCode:nvr expire,expire "
      "time:30,currentTime:1031,updateTime:1000",
      "ERR|container_mgr|GetHighSpeedNvrCode|get high speed nvr code|1|m_HighSpeedInfoList is "
      "empty"}},
    {"SelectTooMuch",
     [](CScene& scene) { SelectFromOne(scene, HIGH_SPEED, 5); },
     {"ERR|container_mgr|GetHighSpeedNvrCode|get high speed nvr code|1|fail"}},
    {"Select",
     [](CScene& scene) { SelectFromOne(scene, HIGH_SPEED, 4); },
     {"INFO|container_mgr|GetHighSpeedNvrCode|find most free "
      "mpu_t||strNvrCode:%s,TotalBrandwidth:%u,UsedBrandwidth:%u,FreeBrandwidth:%u|strNvrCode:nvr,"
      "TotalBrandwidth:100,UsedBrandwidth:20,FreeBrandwidth:16"}},
    {"SelectPicFromNone",
     [](CScene&) { Select(PIC_HIGH_SPEED, 1); },
     {"ERR|container_mgr|GetPicHighSpeedNvrCode|get pic high speed nvr "
      "code|1|m_PicHighSpeedInfoList is empty"}},
    {"SelectPicFromExpired",
     [](CScene& scene) { SelectFromExpired(scene, PIC_HIGH_SPEED); },
     {"ERR|container_mgr|GetPicHighSpeedNvrCode|get pic high speed nvr code|1|nvrCode:%s "
      "expire,expire time:%d,currentTime:%ld,updateTime:%ld|nvrCode:nvr expire,expire "
      "time:30,currentTime:1031,updateTime:1000",
      "ERR|container_mgr|GetPicHighSpeedNvrCode|get pic high speed nvr "
      "code|1|m_PicHighSpeedInfoList is empty"}},
    {"SelectPicTooMuch",
     [](CScene& scene) { SelectFromOne(scene, PIC_HIGH_SPEED, 5); },
     {"ERR|container_mgr|GetPicHighSpeedNvrCode|get pic high speed nvr code|1|fail"}},
    {"SelectPic",
     [](CScene& scene) { SelectFromOne(scene, PIC_HIGH_SPEED, 4); },
     {"INFO|container_mgr|GetPicHighSpeedNvrCode|find most free pic "
      "mpu_t||strNvrCode:%s,TotalBrandwidth:%u,UsedBrandwidth:%u,FreeBrandwidth:%u|strNvrCode:nvr,"
      "TotalBrandwidth:100,UsedBrandwidth:20,FreeBrandwidth:16"}},
};

const std::vector<CScenario> SCHEDULE = {
    {"ReloadReadFails",
     [](CScene& scene) {
         scene.store.FailCall(1, 5);
         CScheduleMgr::Instance().Reload();
     },
     {"ERR|schedule_mgr|Reload|schedule manager|5|get version data from zk fail."}},
    {"IncreaseDecisionVerNumWriteFails",
     [](CScene& scene) {
         scene.store.FailCall(1, 5);
         unsigned long long ullNumber = 0;
         CScheduleMgr::Instance().IncreaseDecisionVerNum(ullNumber);
     },
     {"ERR|schedule_mgr|IncreaseDecisionVerNum|schedule manager, increase decision verion "
      "num|5|set data to zk fail."}},
    {"IncreaseMasterVerNumWriteFails",
     [](CScene& scene) {
         scene.store.FailCall(1, 5);
         CScheduleMgr::Instance().IncreaseMasterVerNum();
     },
     {"ERR|schedule_mgr|IncreaseMasterVerNum|schedule manager, increase decision verion num|5|set "
      "data to zk fail."}},
    {"SetDecisionVerNumWriteFails",
     [](CScene& scene) {
         scene.store.FailCall(1, 5);
         CScheduleMgr::Instance().SetDecisionVerNum(7);
     },
     {"ERR|schedule_mgr|SetDecisionVerNum|schedule manager, increase decision verion num|1|set "
      "data to zk fail."}},
};

INSTANTIATE_TEST_SUITE_P(NodeRegistry, LogLines, testing::ValuesIn(NODE_REGISTRY),
                         NAME_OF_PARAMETER);
INSTANTIATE_TEST_SUITE_P(UnknownContainer, LogLines, testing::ValuesIn(UNKNOWN_CONTAINER),
                         NAME_OF_PARAMETER);
INSTANTIATE_TEST_SUITE_P(KnownContainer, LogLines, testing::ValuesIn(KNOWN_CONTAINER),
                         NAME_OF_PARAMETER);
INSTANTIATE_TEST_SUITE_P(HighSpeed, LogLines, testing::ValuesIn(HIGH_SPEED_LISTS),
                         NAME_OF_PARAMETER);
INSTANTIATE_TEST_SUITE_P(Schedule, LogLines, testing::ValuesIn(SCHEDULE), NAME_OF_PARAMETER);

}  // namespace
