#include <filesystem>
#include <fstream>

#include "framework_service/IPlugin.h"
#include "framework_service/plugin_info.h"
#include "framework_service/plugin_mgr.h"
#include "log_lines/log_lines.h"
#include "support/reconfigure.h"

// Never written: "cannot keep library mapped" and "fail to new plugininfo", which need a loader and
// an allocator that fail; "plugin is null" and "fail to unload plugin", for the manager's tables
// hold only records with a plug-in.

namespace {

CPluginMgr& Manager() {
    return CPluginMgr::Instance();
}

/// Loads the fixture of that name as the only plug-in.
void LoadOnly(CScene& scene, const char* pszFixture) {
    scene.folder.Add(pszFixture, "a.so");
    Manager().LoadAllPlugin();
}

/// A plug-in that answers only what it must.
class CSilentPlugin : public IPlugin {
public:
    std::string GetName() override { return "silent"; }
    int GetSupportedJobs(std::list<unsigned int>&) override { return 0; }
    int GetSupportedContainers(std::list<std::string>&) override { return 0; }
    int GetContainerBindTable(ContainerTypeBindMap&) override { return 0; }
    int PrivateTaskToResourceTask(const std::string&, uint32_t, PELU::CXml&,
                                  std::list<CResourceTask>&) override {
        return 0;
    }
    int TaskSchedule(const std::string&, const std::list<CResourceTask>&, CTaskContainerMap&,
                     unsigned long long&, bool) override {
        return 0;
    }
};

void CallWhatIsNotSupported(IPlugin& plugin) {
    std::list<CContainerAddr> addresses;
    std::list<CResourceTask> tasks;
    std::list<CContainer> containers;
    std::list<ORVA_CLOUD_STORAGE_SEND_INFO> sendInfoList;
    std::list<ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST> reduceList;
    CTaskContainerMap unbound;
    CTaskContainerMap bound;
    std::map<std::string, int> results;
    unsigned long long ullNumber = 0;
    std::string strCode;
    PELU::CXml xml(nullptr);
    plugin.GetRedirectNodeByJobType(1, addresses);
    plugin.AssembleShiftResult("n1", {}, 1, true, xml);
    plugin.AssembleScheduleResult({}, 0, {}, xml);
    plugin.GetResTaskListInContainer({}, tasks, true, true);
    plugin.GetResTaskInfoByTaskId({}, "t1", tasks);
    plugin.LoadBalanceSchedule(tasks, unbound, bound, ullNumber);
    plugin.ManualTaskSchedule({}, {}, bound, results, ullNumber);
    plugin.GenCloudStorageReportXml(xml, true);
    plugin.CloudStorageAlloc(xml, sendInfoList);
    plugin.CloudStorageReduce(xml, strCode, 1, 1, reduceList);
    plugin.GetCloudContainerList(containers);
    plugin.BuildAllocReqXml({}, xml);
    plugin.BuildReduceReqXML({}, xml);
    plugin.SetContainerMaxTaskNum("p", 1);
    plugin.CheckSysResourceByContainerType("A");
}

const std::vector<CScenario> INTERFACE = {
    {"WhatIsNotSupported",
     [](CScene&) {
         CSilentPlugin plugin;
         CallWhatIsNotSupported(plugin);
     },
     {"ERR|IPlugin|GetRedirectNodeByJobType|IPlugin get redirect node by job type|109100007|do not "
      "support this function.",
      "ERR|IPlugin|AssembleShiftResult|IPlugin assemble shift result|109100007|do not support this "
      "function.",
      "ERR|IPlugin|AssembleScheduleResult|IPlugin assemble schedule result|109100007|do not "
      "support this function.",
      "ERR|IPlugin|GetResTaskListInContainer|IPlugin get res task list in container|109100007|do "
      "not support this function.",
      "ERR|IPlugin|GetResTaskInfoByTaskId|IPlugin get res task info by task id|109100007|do not "
      "support this function.",
      "ERR|IPlugin|LoadBalanceSchedule|IPlugin load balance by disk ratio|109100007|do not support "
      "this function.",
      "ERR|IPlugin|ManualTaskSchedule|IPlugin ManualTaskSchedule|109100007|do not support this "
      "function.",
      "ERR|IPlugin|GenCloudStorageReportXml|IPlugin CloudStorageReport|109100007|do not support "
      "this function.",
      "ERR|IPlugin|CloudStorageAlloc|IPlugin CloudStorageAlloc|109100007|do not support this "
      "function.",
      "ERR|IPlugin|CloudStorageReduce|IPlugin CloudStorageReduce|109100007|do not support this "
      "function.",
      "ERR|IPlugin|GetCloudContainerList|IPlugin GetCloudContainerList|109100007|do not support "
      "this function.",
      "ERR|IPlugin|BuildAllocReqXml|IPlugin BuildAllocReqXml|109100007|do not support this "
      "function.",
      "ERR|IPlugin|BuildReduceReqXML|IPlugin BuildReduceReqXML|109100007|do not support this "
      "function.",
      "ERR|IPlugin|SetContainerMaxTaskNum|IPlugin set container max task num|109100007|do not "
      "support this function.",
      "ERR|IPlugin|CheckSysResourceByContainerType|IPlugin "
      "CheckSysResourceByContainerType|109100007|do not support this function."}},
    {"NotifyShiftInOfUnknownContainers",
     [](CScene&) {
         CSilentPlugin plugin;
         CResourceTask task;
         task.SetTaskId("t1");
         plugin.NotifyShiftIn({"n2", "A"}, {task}, {{"t1", {"n1", "A"}}}, 1);
     },
     {"ERR|container_mgr|RemoveResourceTask|Container mgr remove resource task|2|find container "
      "failed, node id=%s container id=%s|find container failed, node id=n1 container id=A",
      "ERR|container_mgr|AddResourceTask|Container mgr add resource task|2|find container failed, "
      "node id=%s container id=%s|find container failed, node id=n2 container id=A"}},
};

const std::vector<CScenario> LOADER = {
    {"WithoutAName",
     [](CScene&) { CPluginInfo("").LoadLibrary(); },
     {"ERR|plugin_info|LoadLibrary|plugin info load library.|1|lib name is empty.",
      "ERR|plugin_info|UnLoadLibrary|plugin info unload library.|0|null plugin, name[%s]|null "
      "plugin, name[]"}},
    {"WithoutAFolder",
     [](CScene&) {
         Reconfigure(&CHostSettings::strLibDir, "");
         CPluginInfo("a.so").LoadLibrary();
     },
     {"ERR|plugin_info|LoadLibrary|plugin info load library|1|get lib dir failed.",
      "ERR|plugin_info|UnLoadLibrary|plugin info unload library.|0|null plugin, name[%s]|null "
      "plugin, name[a.so]"}},
    {"NoLibrary",
     [](CScene& scene) {
         std::ofstream(scene.folder.File("a.so")) << "text";
         CPluginInfo("a.so").LoadLibrary();
     },
     {"ERR|plugin_info|LoadLibrary|plugin info load library.|-1|failure to open library[%s] as "
      "errno[%s].|failure to open library[DIR/plugins/a.so] as errno[DIR/plugins/a.so: file too "
      "short].",
      "ERR|plugin_info|UnLoadLibrary|plugin info unload library.|0|null plugin, name[%s]|null "
      "plugin, name[a.so]"}},
    {"NoEntryPoint",
     [](CScene& scene) {
         scene.folder.Add("no_entry", "a.so");
         CPluginInfo("a.so").LoadLibrary();
     },
     {"ERR|plugin_info|LoadLibrary|plugin info load library.|1|failure to find the symbol of "
      "'CreatePlugin', library[%s], errno[%s].|failure to find the symbol of 'CreatePlugin', "
      "library[DIR/plugins/a.so], errno[DIR/plugins/a.so: undefined symbol: CreatePlugin].",
      "ERR|plugin_info|UnLoadLibrary|plugin info unload library.|0|null plugin, name[%s]|null "
      "plugin, name[a.so]"}},
    {"NoObject",
     [](CScene& scene) {
         scene.folder.Add("no_object", "a.so");
         CPluginInfo("a.so").LoadLibrary();
     },
     {"ERR|plugin_info|LoadLibrary|plugin info load library.|0|failure to creat sdk, lib name[%s], "
      "errno[%d].|failure to creat sdk, lib name[a.so], errno[0].",
      "ERR|plugin_info|UnLoadLibrary|plugin info unload library.|0|null plugin, name[%s]|null "
      "plugin, name[a.so]"}},
    {"CreateFails",
     [](CScene& scene) {
         scene.folder.Add("fails_create", "a.so");
         CPluginInfo("a.so").LoadLibrary();
     },
     {"ERR|plugin_info|LoadLibrary|plugin info load library.|5|failure to creat sdk, lib name[%s], "
      "errno[%d].|failure to creat sdk, lib name[a.so], errno[0].",
      "ERR|plugin_info|UnLoadLibrary|plugin info unload library.|0|null plugin, name[%s]|null "
      "plugin, name[a.so]"}},
    {"CreateThrows",
     [](CScene& scene) {
         scene.folder.Add("throws_create", "a.so");
         CPluginInfo("a.so").LoadLibrary();
     },
     {"ERR|plugin_info|LoadLibrary|call plugin|1|plugin threw, name[%s], reason[%s].|plugin threw, "
      "name[a.so], reason[CreatePlugin of throws_create].",
      "ERR|plugin_info|LoadLibrary|plugin info load library.|1|failure to creat sdk, lib name[%s], "
      "errno[%d].|failure to creat sdk, lib name[a.so], errno[0].",
      "ERR|plugin_info|UnLoadLibrary|plugin info unload library.|0|null plugin, name[%s]|null "
      "plugin, name[a.so]"}},
    {"CreateThrowsANumber",
     [](CScene& scene) {
         scene.folder.Add("throws_int", "a.so");
         CPluginInfo("a.so").LoadLibrary();
     },
     {"ERR|plugin_info|LoadLibrary|call plugin|1|plugin threw, name[%s], reason unknown.|plugin "
      "threw, name[a.so], reason unknown.",
      "ERR|plugin_info|LoadLibrary|plugin info load library.|1|failure to creat sdk, lib name[%s], "
      "errno[%d].|failure to creat sdk, lib name[a.so], errno[0].",
      "ERR|plugin_info|UnLoadLibrary|plugin info unload library.|0|null plugin, name[%s]|null "
      "plugin, name[a.so]"}},
    {"InitFails",
     [](CScene& scene) {
         scene.folder.Add("fails_Init", "a.so");
         CPluginInfo("a.so").LoadLibrary();
     },
     {"ERR|plugin_info|LoadLibrary|plugin info load library.|5|fail to init plugin, name[%s]|fail "
      "to init plugin, name[a.so]"}},
    {"InitThrows",
     [](CScene& scene) {
         scene.folder.Add("throws_Init", "a.so");
         CPluginInfo("a.so").LoadLibrary();
     },
     {"ERR|plugin_info|LoadLibrary|call plugin|1|plugin threw, name[%s], reason[%s].|plugin threw, "
      "name[a.so], reason[Init of throws_Init].",
      "ERR|plugin_info|LoadLibrary|plugin info load library.|1|fail to init plugin, name[%s]|fail "
      "to init plugin, name[a.so]"}},
    {"UnInitThrows",
     [](CScene& scene) {
         scene.folder.Add("throws_UnInit", "a.so");
         CPluginInfo("a.so").LoadLibrary();
     },
     {"INFO|plugin_info|LoadLibrary|plugin info load library.||success to load "
      "library[%s:%s].|success to load library[throws_UnInit:a.so].",
      "ERR|plugin_info|UnLoadLibrary|call plugin|1|plugin threw, name[%s], reason[%s].|plugin "
      "threw, name[a.so], reason[UnInit of throws_UnInit]."}},
    {"Good",
     [](CScene& scene) {
         scene.folder.Add("alpha", "a.so");
         CPluginInfo("a.so").LoadLibrary();
     },
     {"INFO|plugin_info|LoadLibrary|plugin info load library.||success to load "
      "library[%s:%s].|success to load library[alpha:a.so]."}},
    {"QuestionsBeforeTheLoad",
     [](CScene&) {
         CPluginInfo info("a.so");
         std::list<unsigned int> jobs;
         std::list<std::string> types;
         ContainerTypeBindMap binds;
         info.GetSupportedJobs(jobs);
         info.GetSupportedContainers(types);
         info.GetContainerBindTable(binds);
         info.GetSupportFaultShiftContainers(types);
         info.GetSupportLoadBalanceContainers(types);
     },
     {"ERR|plugin_info|GetSupportedJobs|Point m_pPlugin is null.|1|Make sure there is something "
      "wrong",
      "ERR|plugin_info|GetSupportedContainers|Point m_pPlugin is null.|1|Make sure there is "
      "something wrong",
      "ERR|plugin_info|GetContainerBindTable|Point m_pPlugin is null.|1|Make sure there is "
      "something wrong",
      "ERR|plugin_info|GetSupportFaultShiftContainers|Point m_pPlugin is null.|1|Make sure there "
      "is something wrong",
      "ERR|plugin_info|GetSupportLoadBalanceContainers|Point m_pPlugin is null.|1|Make sure there "
      "is something wrong",
      "ERR|plugin_info|UnLoadLibrary|plugin info unload library.|0|null plugin, name[%s]|null "
      "plugin, name[a.so]"}},
};

const std::vector<CScenario> MANAGER = {
    {"LoadWithoutALibraryDirectory",
     [](CScene&) {
         Reconfigure(&CHostSettings::strLibDir, "");
         Manager().LoadAllPlugin();
     },
     {"ERR|plugin_mgr|FindAllPlugin|find all plugin|1|get lib dir failed.",
      "ERR|plugin_mgr|LoadAllPlugin|load all plugin|1|find plugin failed."}},
    {"LoadWithoutAFolder",
     [](CScene& scene) {
         std::filesystem::remove(scene.folder.File(""));
         Manager().LoadAllPlugin();
     },
     {"ERR|plugin_mgr|FindAllPlugin|find all plugin|1|get file list from dir[%s] failed.|get file "
      "list from dir[DIR/plugins] failed.",
      "ERR|plugin_mgr|LoadAllPlugin|load all plugin|1|find plugin failed."}},
    {"LoadNoEntryPoint",
     [](CScene& scene) { LoadOnly(scene, "no_entry"); },
     {"ERR|plugin_info|LoadLibrary|plugin info load library.|1|failure to find the symbol of "
      "'CreatePlugin', library[%s], errno[%s].|failure to find the symbol of 'CreatePlugin', "
      "library[DIR/plugins/a.so], errno[DIR/plugins/a.so: undefined symbol: CreatePlugin].",
      "ERR|plugin_info|UnLoadLibrary|plugin info unload library.|0|null plugin, name[%s]|null "
      "plugin, name[a.so]",
      "ERR|plugin_mgr|LoadSinglePlugin|load single plugin.|1|fail to load plugin, name[%s]|fail to "
      "load plugin, name[a.so]",
      "ERR|plugin_mgr|LoadAllPlugin|load all plugin|1|load single plugin, name[%s]|load single "
      "plugin, name[a.so]"}},
    {"LoadJobsFail",
     [](CScene& scene) { LoadOnly(scene, "fails_GetSupportedJobs"); },
     {"INFO|plugin_info|LoadLibrary|plugin info load library.||success to load "
      "library[%s:%s].|success to load library[fails_GetSupportedJobs:a.so].",
      "ERR|plugin_mgr|LoadSinglePlugin|load single plugin.|5|fail to get job capability, "
      "name[%s]|fail to get job capability, name[a.so]",
      "ERR|plugin_mgr|LoadAllPlugin|load all plugin|1|load single plugin, name[%s]|load single "
      "plugin, name[a.so]"}},
    {"LoadJobsThrow",
     [](CScene& scene) { LoadOnly(scene, "throws_GetSupportedJobs"); },
     {"INFO|plugin_info|LoadLibrary|plugin info load library.||success to load "
      "library[%s:%s].|success to load library[throws_GetSupportedJobs:a.so].",
      "ERR|plugin_info|GetSupportedJobs|call plugin|1|plugin threw, name[%s], reason[%s].|plugin "
      "threw, name[a.so], reason[GetSupportedJobs of throws_GetSupportedJobs].",
      "ERR|plugin_mgr|LoadSinglePlugin|load single plugin.|1|fail to get job capability, "
      "name[%s]|fail to get job capability, name[a.so]",
      "ERR|plugin_mgr|LoadAllPlugin|load all plugin|1|load single plugin, name[%s]|load single "
      "plugin, name[a.so]"}},
    {"LoadContainersFail",
     [](CScene& scene) { LoadOnly(scene, "fails_GetSupportedContainers"); },
     {"INFO|plugin_info|LoadLibrary|plugin info load library.||success to load "
      "library[%s:%s].|success to load library[fails_GetSupportedContainers:a.so].",
      "ERR|plugin_mgr|LoadSinglePlugin|load single plugin.|5|fail to get container capability, "
      "name[%s]|fail to get container capability, name[a.so]",
      "ERR|plugin_mgr|LoadAllPlugin|load all plugin|1|load single plugin, name[%s]|load single "
      "plugin, name[a.so]"}},
    {"LoadContainersThrow",
     [](CScene& scene) { LoadOnly(scene, "throws_GetSupportedContainers"); },
     {"INFO|plugin_info|LoadLibrary|plugin info load library.||success to load "
      "library[%s:%s].|success to load library[throws_GetSupportedContainers:a.so].",
      "ERR|plugin_info|GetSupportedContainers|call plugin|1|plugin threw, name[%s], "
      "reason[%s].|plugin threw, name[a.so], reason[GetSupportedContainers of "
      "throws_GetSupportedContainers].",
      "ERR|plugin_mgr|LoadSinglePlugin|load single plugin.|1|fail to get container capability, "
      "name[%s]|fail to get container capability, name[a.so]",
      "ERR|plugin_mgr|LoadAllPlugin|load all plugin|1|load single plugin, name[%s]|load single "
      "plugin, name[a.so]"}},
    {"LoadBindTableFails",
     [](CScene& scene) { LoadOnly(scene, "fails_GetContainerBindTable"); },
     {"INFO|plugin_info|LoadLibrary|plugin info load library.||success to load "
      "library[%s:%s].|success to load library[fails_GetContainerBindTable:a.so].",
      "ERR|plugin_mgr|LoadSinglePlugin|load single plugin.|5|fail to get container bind table, "
      "name[%s]|fail to get container bind table, name[a.so]",
      "ERR|plugin_mgr|LoadAllPlugin|load all plugin|1|load single plugin, name[%s]|load single "
      "plugin, name[a.so]"}},
    {"LoadBindTableThrows",
     [](CScene& scene) { LoadOnly(scene, "throws_GetContainerBindTable"); },
     {"INFO|plugin_info|LoadLibrary|plugin info load library.||success to load "
      "library[%s:%s].|success to load library[throws_GetContainerBindTable:a.so].",
      "ERR|plugin_info|GetContainerBindTable|call plugin|1|plugin threw, name[%s], "
      "reason[%s].|plugin threw, name[a.so], reason[GetContainerBindTable of "
      "throws_GetContainerBindTable].",
      "ERR|plugin_mgr|LoadSinglePlugin|load single plugin.|1|fail to get container bind table, "
      "name[%s]|fail to get container bind table, name[a.so]",
      "ERR|plugin_mgr|LoadAllPlugin|load all plugin|1|load single plugin, name[%s]|load single "
      "plugin, name[a.so]"}},
    {"LoadFaultShiftFails",
     [](CScene& scene) { LoadOnly(scene, "fails_GetSupportFaultShiftContainers"); },
     {"INFO|plugin_info|LoadLibrary|plugin info load library.||success to load "
      "library[%s:%s].|success to load library[fails_GetSupportFaultShiftContainers:a.so].",
      "ERR|plugin_mgr|LoadSinglePlugin|load single plugin.|5|fail to get support fault shift "
      "container capability, name[%s]|fail to get support fault shift container capability, "
      "name[a.so]",
      "ERR|plugin_mgr|LoadAllPlugin|load all plugin|1|load single plugin, name[%s]|load single "
      "plugin, name[a.so]"}},
    {"LoadFaultShiftThrows",
     [](CScene& scene) { LoadOnly(scene, "throws_GetSupportFaultShiftContainers"); },
     {"INFO|plugin_info|LoadLibrary|plugin info load library.||success to load "
      "library[%s:%s].|success to load library[throws_GetSupportFaultShiftContainers:a.so].",
      "ERR|plugin_info|GetSupportFaultShiftContainers|call plugin|1|plugin threw, name[%s], "
      "reason[%s].|plugin threw, name[a.so], reason[GetSupportFaultShiftContainers of "
      "throws_GetSupportFaultShiftContainers].",
      "ERR|plugin_mgr|LoadSinglePlugin|load single plugin.|1|fail to get support fault shift "
      "container capability, name[%s]|fail to get support fault shift container capability, "
      "name[a.so]",
      "ERR|plugin_mgr|LoadAllPlugin|load all plugin|1|load single plugin, name[%s]|load single "
      "plugin, name[a.so]"}},
    {"LoadLoadBalanceFails",
     [](CScene& scene) { LoadOnly(scene, "fails_GetSupportLoadBalanceContainers"); },
     {"INFO|plugin_info|LoadLibrary|plugin info load library.||success to load "
      "library[%s:%s].|success to load library[fails_GetSupportLoadBalanceContainers:a.so].",
      "ERR|plugin_mgr|LoadSinglePlugin|load single plugin.|5|fail to get support load balance "
      "container capability, name[%s]|fail to get support load balance container capability, "
      "name[a.so]",
      "ERR|plugin_mgr|LoadAllPlugin|load all plugin|1|load single plugin, name[%s]|load single "
      "plugin, name[a.so]"}},
    {"LoadLoadBalanceThrows",
     [](CScene& scene) { LoadOnly(scene, "throws_GetSupportLoadBalanceContainers"); },
     {"INFO|plugin_info|LoadLibrary|plugin info load library.||success to load "
      "library[%s:%s].|success to load library[throws_GetSupportLoadBalanceContainers:a.so].",
      "ERR|plugin_info|GetSupportLoadBalanceContainers|call plugin|1|plugin threw, name[%s], "
      "reason[%s].|plugin threw, name[a.so], reason[GetSupportLoadBalanceContainers of "
      "throws_GetSupportLoadBalanceContainers].",
      "ERR|plugin_mgr|LoadSinglePlugin|load single plugin.|1|fail to get support load balance "
      "container capability, name[%s]|fail to get support load balance container capability, "
      "name[a.so]",
      "ERR|plugin_mgr|LoadAllPlugin|load all plugin|1|load single plugin, name[%s]|load single "
      "plugin, name[a.so]"}},
    {"LoadAndUnload",
     [](CScene& scene) {
         LoadOnly(scene, "alpha");
         Manager().RoutingAll();
         Manager().UnLoadAllPlugin();
     },
     {"INFO|plugin_info|LoadLibrary|plugin info load library.||success to load "
      "library[%s:%s].|success to load library[alpha:a.so]."}},
    {"UnknownName",
     [](CScene&) { Manager().GetPluginByName("ghost"); },
     {"ERR|plugin_mgr|GetPluginByName|get plugin by name|1|find plugin failed, name[%s]|find "
      "plugin failed, name[ghost]"}},
    {"UnknownContainerType",
     [](CScene&) { Manager().GetPluginByContainerType("A"); },
     {"ERR|plugin_mgr|GetPluginByContainerType|get plugin by container type|1|find plugin failed, "
      "name[%s]|find plugin failed, name[A]"}},
    {"UnknownJobType",
     [](CScene&) { Manager().GetPluginByJobType(7); },
     {"ERR|plugin_mgr|GetPluginByJobType|get plugin by job type|1|find plugin failed, "
      "type[%d]|find plugin failed, type[7]"}},
    {"UnknownRealType",
     [](CScene&) {
         std::list<std::string> types;
         Manager().GetLogicContainerTypeByRealType("A", types);
     },
     {"ERR|plugin_mgr|GetLogicContainerTypeByRealType|get logic container by real type|1|can not "
      "find, type[%s]|can not find, type[A]"}},
    {"NoFaultShift",
     [](CScene&) { Manager().IsContainerSupportFaultShift("A"); },
     {"ERR|plugin_mgr|IsContainerSupportFaultShift|is container support fault shift|1|do not "
      "support, type[%s]|do not support, type[A]"}},
};

INSTANTIATE_TEST_SUITE_P(PluginInterface, LogLines, testing::ValuesIn(INTERFACE),
                         NAME_OF_PARAMETER);
INSTANTIATE_TEST_SUITE_P(PluginLoader, LogLines, testing::ValuesIn(LOADER), NAME_OF_PARAMETER);
INSTANTIATE_TEST_SUITE_P(PluginManager, LogLines, testing::ValuesIn(MANAGER), NAME_OF_PARAMETER);

}  // namespace
