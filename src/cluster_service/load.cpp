#include "load.h"

#include <string>

#include "common_service/directory.h"
#include "common_service/reference/store.h"
#include "common_service/tarn_def.h"
#include "framework_service/framework_common.h"
#include "framework_service/plugin_mgr.h"

namespace {

bool Succeeded(int iCode, const std::string& strWhat, std::ostream& errors) {
    if (iCode != ORVA_SUCCEED) {
        errors << "cannot load " << strWhat << ": code " << iCode << ", the log says why\n";
    }
    return iCode == ORVA_SUCCEED;
}

}  // namespace

bool LoadPlugins(std::ostream& errors) {
    std::string strLibDir;
    HALD::get_lib_directory(strLibDir);
    return Succeeded(CPluginMgr::Instance().LoadAllPlugin(), "the plug-ins of " + strLibDir,
                     errors);
}

bool LoadService(std::ostream& errors) {
    CFrameworkCommon& framework = CFrameworkCommon::Instance();
    return LoadPlugins(errors) &&
           Succeeded(framework.InitClusterConfigFromZK(), "the cluster configuration", errors) &&
           Succeeded(framework.InitNodeAndContainerFromZK(), "the cluster", errors);
}

CServiceGuard::~CServiceGuard() {
    CPluginMgr::Instance().UnLoadAllPlugin();
    SetStore(nullptr);
}
