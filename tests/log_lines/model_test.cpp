#include "framework_service/container.h"
#include "log_lines/log_lines.h"
#include "support/model_values.h"

namespace {

CContainer CloudStorageContainer() {
    return MakeContainer("n1", CONTAINER_TYPE_CLOUD_STORAGE);
}

/// A task of a cloud storage report, with an allocation.
CResourceTask CloudStorageTask(const KeyValueMap& figures) {
    CResourceTask task = MakeTask("t1", 0, 0, figures);
    ORVA_CLOUD_STORAGE_ALLOC_INFO allocInfo;
    allocInfo.cloudStorageCode = "c1";
    allocInfo.allocStorage = 4;
    task.SetAllocInfoList(allocInfo);
    return task;
}

const KeyValueMap FIGURES = {{PSZ_TASK_PRODUCT_TYPE, "p"},     {PSZ_TASK_SERVICE_TYPE, "MPU-R"},
                             {PSZ_TASK_REQ_STORAGE, "1"},      {PSZ_TASK_REQ_PIC_STORAGE, "2"},
                             {PSZ_TASK_LOW_PRI_BIT_RATE, "3"}, {PSZ_TASK_TRAN_BAND_WIDTH, "4"}};

const std::vector<CScenario> RECORDS = {
    {"ResourceOfAnUnknownType",
     [](CScene&) { CSystemResource().GetResourceByType(static_cast<RESOURCE_TYPE>(99)); },
     {"ERR|base_data|GetResourceByType|get resource by type|1|type[%d] not found.|type[99] not "
      "found."}},
    {"TaskValueOfAMissingKey",
     [](CScene&) {
         std::string strValue = "old";
         CResourceTask().GetValueByKey("key", strValue);
     },
     {"ERR|resource_task|GetValueByKey|resource task, get value by key|1|can not find, key[%s], "
      "value[%s]|can not find, key[key], value[old]"}},
    {"TaskNumberOfAMissingKey",
     [](CScene&) {
         int iValue = 7;
         CResourceTask().GetIntValueByKey("key", iValue);
     },
     {"ERR|resource_task|GetValueByKey|resource task, get value by key|1|can not find, key[%s], "
      "value[%s]|can not find, key[key], value[]"}},
};

const std::vector<CScenario> CONTAINER = {
    {"ReportTimeout",
     [](CScene&) {
         SetClock(1000);
         CContainer container = MakeContainer("n1", "A");
         AdvanceClock(11);
         container.IsReportStatusOutTime(10);
     },
     {"INFO|container|IsReportStatusOutTime|||containerType=%s nodeId=%s report timeout,diff "
      "time=%ld|containerType=A nodeId=n1 report timeout,diff time=11"}},
    {"StoppedProcess",
     [](CScene&) {
         CContainer container = MakeContainer("n1", "A");
         container.SetProcessState({{"p", PROCESS_STATE_STOPPED}});
         static_cast<void>(container.IsProcessRunning());
     },
     {"INFO|container|IsProcessRunning|||containerType=%s nodeId=%s process=%s "
      "stopped.|containerType=A nodeId=n1 process=p stopped."}},
    {"ValueOfAMissingKey",
     [](CScene&) {
         std::string strValue = "old";
         CContainer().GetValueByKey("key", strValue);
     },
     {"ERR|container|GetValueByKey|Container, get value by key|1|can not find, key[%s], "
      "value[%s]|can not find, key[key], value[old]"}},
    {"NumberOfAMissingKey",
     [](CScene&) {
         int iValue = 7;
         CContainer().GetIntValueByKey("key", iValue);
     },
     {"ERR|container|GetValueByKey|Container, get value by key|1|can not find, key[%s], "
      "value[%s]|can not find, key[key], value[]"}},
    {"FractionOfAMissingKey",
     [](CScene&) {
         float fValue = 0.5F;
         CContainer().GetFloatValueByKey("key", fValue);
     },
     {"ERR|container|GetFloatValueByKey|Container, get float value by key|1|can not find, key[%s], "
      "value[%f]|can not find, key[key], value[0.500000]"}},
    {"DelTaskUnknown",
     [](CScene&) { CContainer().DelTask(MakeTask("ghost")); },
     {"ERR|container|DelTask|container remove task by id|1|connot find task[%s].|connot find "
      "task[ghost]."}},
    {"DelDiskBeyondTheNewest",
     [](CScene&) {
         CContainer container;
         container.SetCurResource(MakeDisk(5));
         container.DelDiskToLastestResource(6);
     },
     {"ERR|container|DelDiskToLastestResource|container del disk|1|disk param[%d] larger than "
      "container disk[%d].|disk param[6] larger than container disk[5]."}},
    {"FirstTaskOfNone",
     [](CScene&) {
         CResourceTask task;
         CContainer().GetFirstTask(task);
     },
     {"ERR|container|GetFirstTask|container get first task|1|container have no task."}},
    {"SingleTaskUnknown",
     [](CScene&) {
         CResourceTask task;
         CContainer().GetSingleTaskById("ghost", task);
     },
     {"ERR|container|GetSingleTaskById|container get single task by id|1|container don't have this "
      "task."}},
    {"FirstScheduleableTaskOfNone",
     [](CScene&) {
         CResourceTask task;
         CContainer().GetFirstScheduleableTask(task, false, false, true, "");
     },
     {"ERR|container|GetFirstScheduleableTask|container get first scheduleable task|1|container "
      "have no scheduleable task."}},
    {"FirstScheduleableTaskOfOneWithoutTheKey",
     [](CScene&) {
         CContainer container;
         container.AddTask(MakeTask("t1"));
         CResourceTask task;
         container.GetFirstScheduleableTask(task, false, false, false, "key");
     },
     {"ERR|resource_task|GetValueByKey|resource task, get value by key|1|can not find, key[%s], "
      "value[%s]|can not find, key[key], value[]",
      "ERR|container|GetFirstScheduleableTask|container get first scheduleable task|1|container "
      "have no scheduleable task."}},
    {"CloudStorageReport",
     [](CScene&) {
         CloudStorageContainer().SetResourceTask({CloudStorageTask(FIGURES)},
                                                 CONTAINER_STATUS_REPORT_REQ);
     },
     {"TRACE|container|CalcCloudStorageInfo|||CContainer:m_iReqStorage:%d,m_iBitRate:%d,m_"
      "iReqPicStorage:%d,m_bUpdateFlag:%d.|CContainer:m_iReqStorage:1,m_iBitRate:3,m_"
      "iReqPicStorage:2,m_bUpdateFlag:1.",
      "TRACE|container|CalcCloudStorageInfo|||CContainer:CloudStorageCode:%s,AllocStorage:%d.|"
      "CContainer:CloudStorageCode:c1,AllocStorage:4."}},
    {"CloudStorageReportWithoutFigures",
     [](CScene&) {
         CloudStorageContainer().SetResourceTask({CloudStorageTask({})},
                                                 CONTAINER_STATUS_REPORT_REQ);
     },
     {"ERR|resource_task|GetValueByKey|resource task, get value by key|1|can not find, key[%s], "
      "value[%s]|can not find, key[ProductType], value[]",
      "ERR|resource_task|GetValueByKey|resource task, get value by key|1|can not find, key[%s], "
      "value[%s]|can not find, key[ServiceType], value[]",
      "ERR|resource_task|GetValueByKey|resource task, get value by key|1|can not find, key[%s], "
      "value[%s]|can not find, key[ReqStorage], value[]",
      "ERR|resource_task|GetValueByKey|resource task, get value by key|1|can not find, key[%s], "
      "value[%s]|can not find, key[ReqPicStorage], value[]",
      "ERR|resource_task|GetValueByKey|resource task, get value by key|1|can not find, key[%s], "
      "value[%s]|can not find, key[LowPriBitRate], value[]",
      "ERR|resource_task|GetValueByKey|resource task, get value by key|1|can not find, key[%s], "
      "value[%s]|can not find, key[TranBandWidth], value[]",
      "TRACE|container|CalcCloudStorageInfo|||CContainer:m_iReqStorage:%d,m_iBitRate:%d,m_"
      "iReqPicStorage:%d,m_bUpdateFlag:%d.|CContainer:m_iReqStorage:0,m_iBitRate:0,m_"
      "iReqPicStorage:0,m_bUpdateFlag:0.",
      "TRACE|container|CalcCloudStorageInfo|||CContainer:CloudStorageCode:%s,AllocStorage:%d.|"
      "CContainer:CloudStorageCode:c1,AllocStorage:4."}},
    {"CloudStorageAllocationAnswer",
     [](CScene&) {
         CloudStorageContainer().SetResourceTask({CloudStorageTask(FIGURES)},
                                                 ALLOC_CLOUD_STORAGE_NOTIFY_RSP);
     },
     {"TRACE|container|CalcCloudStorageInfo|||CContainer:CloudStorageCode:%s,AllocStorage:%d.|"
      "CContainer:CloudStorageCode:c1,AllocStorage:4."}},
    {"SaveWithoutADocument",
     [](CScene&) { CloudStorageContainer().SaveDataToZK(); },
     {"INFO|container|SaveCloudStorageReportInfoToZK|save cloud storage report info to zk||alloc "
      "info list=%d|alloc info list=0"}},
    {"SaveReadFails",
     [](CScene& scene) {
         scene.store.FailCall(1, 5);
         CloudStorageContainer().SaveDataToZK();
     },
     {"ERR|container|SaveCloudStorageReportInfoToZK|GetDataFromZK|5|get cloud storage info from zk "
      "fail. nodeId: %s  cType: %s|get cloud storage info from zk fail. nodeId: n1  cType: "
      "MeroCloudStorage",
      "INFO|container|SaveCloudStorageReportInfoToZK|save cloud storage report info to zk||alloc "
      "info list=%d|alloc info list=0"}},
    {"SaveWriteFails",
     [](CScene& scene) {
         scene.store.FailCall(2, 5);
         CloudStorageContainer().SaveDataToZK();
     },
     {"INFO|container|SaveCloudStorageReportInfoToZK|save cloud storage report info to zk||alloc "
      "info list=%d|alloc info list=0",
      "ERR|container|SaveCloudStorageReportInfoToZK|init cluster session, on successful "
      "response|5|set cloud storage info to zk fail."}},
};

INSTANTIATE_TEST_SUITE_P(Records, LogLines, testing::ValuesIn(RECORDS), NAME_OF_PARAMETER);
INSTANTIATE_TEST_SUITE_P(Container, LogLines, testing::ValuesIn(CONTAINER), NAME_OF_PARAMETER);

}  // namespace
