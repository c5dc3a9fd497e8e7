#include "command/plugin_list.h"

#include "framework_service/IPlugin.h"
#include "framework_service/plugin_mgr.h"

void CLoadedPlugin::AddKnownTypes(std::set<std::string>& types) const {
    types.insert(containers.begin(), containers.end());
    types.insert(faultShiftContainers.begin(), faultShiftContainers.end());
    types.insert(loadBalanceContainers.begin(), loadBalanceContainers.end());
    for (const auto& [strRealType, logicTypes] : binds) {
        types.insert(strRealType);
        types.insert(logicTypes.begin(), logicTypes.end());
    }
}

std::list<CLoadedPlugin> LoadedPlugins() {
    std::list<std::string> nameList;
    CPluginMgr::Instance().GetAllPluginName(nameList);
    std::list<CLoadedPlugin> plugins;
    for (const std::string& strName : nameList) {
        IPlugin* pPlugin = CPluginMgr::Instance().GetPluginByName(strName);
        if (pPlugin == nullptr) {
            continue;
        }
        CLoadedPlugin plugin;
        plugin.strName = strName;
        plugin.strVersion = pPlugin->GetVersion();
        pPlugin->GetSupportedJobs(plugin.jobs);
        pPlugin->GetSupportedContainers(plugin.containers);
        pPlugin->GetContainerBindTable(plugin.binds);
        pPlugin->GetSupportFaultShiftContainers(plugin.faultShiftContainers);
        pPlugin->GetSupportLoadBalanceContainers(plugin.loadBalanceContainers);
        plugins.push_back(std::move(plugin));
    }
    return plugins;
}
