#include "command/load.h"

#include <algorithm>
#include <filesystem>
#include <list>
#include <optional>
#include <sstream>
#include <string>

#include "command/document_fault.h"
#include "command/held_log.h"
#include "command/store_document.h"
#include "command/store_text.h"
#include "common_service/directory.h"
#include "common_service/tarn_def.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_config_znode_info.h"
#include "framework_service/cluster_znode_info.h"
#include "framework_service/framework_common.h"
#include "framework_service/plugin_mgr.h"
#include "framework_service/schedule_mgr.h"
#include "framework_service/standard_task_mgr.h"
#include "reference_host/code_text.h"
#include "reference_host/shown_text.h"
#include "reference_host/store.h"

namespace {

/// Says what is wrong with the stored document: that it cannot be read, or a fault of its text. Is
/// there nothing wrong?
bool IsStoredWell(const ORVA_STORE_NODE& node, std::ostream& errors) {
    const CStoreDocument& document = FindDocument(node);
    const CStoredText stored = ReadFromStore(document);
    if (!StoreAnswered(document, stored.iCode, errors)) {
        return false;
    }
    const std::optional<CDocumentFault> fault =
        stored.strText.empty() ? std::nullopt : FindRefusal(document, stored.strText);
    if (fault) {
        errors << ShownText(StorePath(document)) << ": " << ShownText(TextOf(*fault)) << '\n';
    }
    return !fault;
}

/// Loads what stands in one document. What it failed with is looked for in the document.
bool LoadDocument(const ORVA_STORE_NODE& node, int (*pLoad)(), std::ostream& errors) {
    const CStoreDocument& document = FindDocument(node);
    const CStoredText stored = ReadFromStore(document);
    if (!StoreAnswered(document, stored.iCode, errors)) {
        return false;
    }
    const int iCode = stored.strText.empty() ? ORVA_SUCCEED : RunLogged(pLoad);
    if (iCode != ORVA_SUCCEED && IsStoredWell(node, errors)) {
        errors << ShownText(StorePath(document)) << ": does not load: " << CodeText(iCode) << '\n';
    }
    return iCode == ORVA_SUCCEED;
}

/// Which plug-in file did not load and why, or why the folder cannot be read, or else the code.
std::string PluginFailure(const std::string& strLibDir, int iCode) {
    const std::list<CPluginFile> files = CPluginMgr::Instance().GetPluginFiles();
    const auto it = std::find_if(files.begin(), files.end(),
                                 [](const CPluginFile& file) { return !file.strFailure.empty(); });
    if (it != files.end()) {
        return ShownText(it->strFile) + ": " + ShownText(it->strFailure);
    }
    std::error_code error;
    const std::filesystem::directory_iterator folder(strLibDir + "/plugins", error);
    return error ? "its folder \"plugins\": " + error.message() : CodeText(iCode);
}

}  // namespace

bool LoadPlugins(std::ostream& errors) {
    const int iCode = RunLogged([] { return CPluginMgr::Instance().LoadAllPlugin(); });
    if (iCode != ORVA_SUCCEED) {
        std::string strLibDir;
        HALD::get_lib_directory(strLibDir);
        errors << "cannot load the plug-ins of " << ShownText(strLibDir) << ": "
               << PluginFailure(strLibDir, iCode) << '\n';
    }
    return iCode == ORVA_SUCCEED;
}

bool LoadClusterConfig(std::ostream& errors) {
    return LoadDocument(
        STORE_NODE_CLUSTER_CONFIG,
        [] { return CFrameworkCommon::Instance().InitClusterConfigFromZK(); }, errors);
}

bool LoadNodes(std::ostream& errors) {
    const int iCode =
        RunLogged([] { return CFrameworkCommon::Instance().InitNodeAndContainerFromZK(); });
    if (iCode == ORVA_SUCCEED) {
        return true;
    }
    if (!IsStoredWell(STORE_NODE_CLUSTER, errors)) {
        return false;
    }
    std::ostringstream ofCloudStorage;
    if (!IsStoredWell(STORE_NODE_CLOUD_STORAGE, ofCloudStorage)) {
        return true;
    }
    errors << "the cluster does not load: " << CodeText(iCode) << '\n';
    return false;
}

bool LoadCloudStorage(std::ostream& errors) {
    return IsStoredWell(STORE_NODE_CLOUD_STORAGE, errors);
}

bool LoadCluster(std::ostream& errors) {
    return LoadClusterConfig(errors) && LoadNodes(errors) && LoadCloudStorage(errors);
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
        errors << ShownText(strFolder) << ": no such folder, there are no standard tasks\n";
        return true;
    }
    const int iCode = RunLogged([] { return CStdTaskMgr::Instance().Load(); });
    if (iCode != ORVA_SUCCEED) {
        errors << "cannot load the standard tasks of " << ShownText(strFolder) << ": "
               << CodeText(iCode) << '\n';
    }
    return iCode == ORVA_SUCCEED;
}

CServiceGuard::~CServiceGuard() {
    CPluginMgr::Instance().UnLoadAllPlugin();
    SetStore(nullptr);
}
