#include "command/load.h"

#include <filesystem>
#include <string>

#include "command/store_document.h"
#include "command/store_text.h"
#include "common_service/data/version_znode.h"
#include "common_service/directory.h"
#include "common_service/tarn_def.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/framework_common.h"
#include "framework_service/plugin_mgr.h"
#include "framework_service/schedule_mgr.h"
#include "framework_service/standard_task_mgr.h"
#include "reference_host/store.h"

namespace {

bool Succeeded(int iCode, const std::string& strWhat, std::ostream& errors) {
    if (iCode != ORVA_SUCCEED) {
        errors << "cannot load " << strWhat << ": code " << iCode << ", the log says why\n";
    }
    return iCode == ORVA_SUCCEED;
}

bool LoadDocument(const ORVA_STORE_NODE& node, int (*pLoad)(), std::ostream& errors) {
    const CStoreDocument& document = FindDocument(node);
    const CStoredText stored = ReadFromStore(document);
    if (!StoreAnswered(document, stored.iCode, errors)) {
        return false;
    }
    return stored.strText.empty() || Succeeded(pLoad(), StorePath(document), errors);
}

}  // namespace

bool LoadPlugins(std::ostream& errors) {
    std::string strLibDir;
    HALD::get_lib_directory(strLibDir);
    return Succeeded(CPluginMgr::Instance().LoadAllPlugin(), "the plug-ins of " + strLibDir,
                     errors);
}

bool LoadCluster(std::ostream& errors) {
    CFrameworkCommon& framework = CFrameworkCommon::Instance();
    return Succeeded(framework.InitClusterConfigFromZK(), "the cluster configuration", errors) &&
           Succeeded(framework.InitNodeAndContainerFromZK(), "the cluster", errors);
}

bool LoadService(std::ostream& errors) {
    return LoadPlugins(errors) && LoadCluster(errors);
}

bool LoadCgList(std::ostream& errors) {
    return LoadDocument(
        STORE_NODE_CG_LIST, [] { return CFrameworkCGCommon::Instance().ReloadClusterCGInfoList(); },
        errors);
}

bool LoadDatabase(std::ostream& errors) {
    return LoadDocument(
        STORE_NODE_CENTER_DB, [] { return CFrameworkCommon::Instance().ParseCDBFromZK(true); },
        errors);
}

bool LoadManager(std::ostream& errors) {
    return LoadDocument(
        STORE_NODE_MGR, [] { return CFrameworkCommon::Instance().ParseMGRFromZK(true); }, errors);
}

bool LoadVersions(std::ostream& errors) {
    return LoadDocument(
        STORE_NODE_VERSION, [] { return CScheduleMgr::Instance().Reload(); }, errors);
}

bool LoadTasks(std::ostream& errors) {
    std::string strConfigDir;
    HALD::get_config_directory(strConfigDir);
    const std::string strFolder = strConfigDir + "/taskmodel";
    std::error_code error;
    if (!std::filesystem::exists(strFolder, error)) {
        errors << strFolder << ": no such folder, there are no standard tasks\n";
        return true;
    }
    return Succeeded(CStdTaskMgr::Instance().Load(), "the standard tasks of " + strFolder, errors);
}

CServiceGuard::~CServiceGuard() {
    CPluginMgr::Instance().UnLoadAllPlugin();
    SetStore(nullptr);
}
