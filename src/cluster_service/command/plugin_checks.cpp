#include <map>
#include <set>

#include "command/checks.h"
#include "command/plugin_table.h"
#include "common_service/tarn_def.h"
#include "framework_service/cluster_znode_info.h"

namespace {

/// Where a finding stands that is about the plug-in folder and no document.
constexpr char PSZ_PLUGINS[] = "plugins";

/// Every container type that a plug-in has an answer for.
std::set<std::string> KnownContainerTypes(const CCheckedStore& store) {
    std::set<std::string> types{CONTAINER_TYPE_CLOUD_STORAGE};
    for (const CPluginFile& file : store.pluginFiles) {
        const CPluginClaims& held = file.held;
        types.insert(held.containers.begin(), held.containers.end());
        types.insert(held.faultShiftContainers.begin(), held.faultShiftContainers.end());
        types.insert(held.loadBalanceContainers.begin(), held.loadBalanceContainers.end());
        for (const auto& [strRealType, logicTypes] : held.containerBinds) {
            types.insert(strRealType);
            types.insert(logicTypes.begin(), logicTypes.end());
        }
    }
    return types;
}

}  // namespace

void CheckContainerTypes(const CCheckedStore& store, Findings& findings) {
    if (!store.bPluginsLoaded) {
        return;
    }
    const std::set<std::string> knownTypes = KnownContainerTypes(store);
    std::map<std::string, int> unknownTypes;
    for (const CNode& node : store.nodeList) {
        for (const std::string& strType : ContainersOf(node)) {
            if (knownTypes.count(strType) == 0) {
                ++unknownTypes[strType];
            }
        }
    }
    for (const auto& [strType, iCount] : unknownTypes) {
        Add(findings, PSZ_WARNING, STORE_NODE_CLUSTER,
            "no plug-in knows the container type " + Quoted(strType) + ", which stands there " +
                std::to_string(iCount) + " times");
    }
}

void CheckPlugins(const CCheckedStore& store, Findings& findings) {
    for (const CPluginFile& file : store.pluginFiles) {
        for (const CLostClaim& claim : file.lost) {
            findings.push_back(
                {PSZ_WARNING, PSZ_PLUGINS, file.strFile + " loses " + LostText(claim)});
        }
        if (!file.strFailure.empty()) {
            findings.push_back(
                {PSZ_ERROR, PSZ_PLUGINS, file.strFile + " is not loaded: " + file.strFailure});
        }
    }
}
