#include <map>
#include <set>
#include <vector>

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
    std::map<std::string, std::vector<CDocumentEntry>> unknownTypes;
    for (const CCheckedNode& node : store.nodes) {
        for (const CDocumentEntry& type : node.containerTypes) {
            if (!TextOf(type).empty() && knownTypes.count(TextOf(type)) == 0) {
                unknownTypes[TextOf(type)].push_back(type);
            }
        }
    }
    for (const auto& [strType, entries] : unknownTypes) {
        Add(findings, EWeight::WARNING, store.Get(STORE_NODE_CLUSTER), entries.front(),
            "is " + Quoted(strType) + ", a container type that no plug-in knows; it stands there " +
                std::to_string(entries.size()) + " times");
    }
}

void CheckPlugins(const CCheckedStore& store, Findings& findings) {
    const auto add = [&findings](EWeight eWeight, const std::string& strWhat) {
        findings.push_back({eWeight, PSZ_PLUGINS, {std::nullopt, "", strWhat}});
    };
    for (const CPluginFile& file : store.pluginFiles) {
        for (const CLostClaim& claim : file.lost) {
            add(EWeight::WARNING, file.strFile + " loses " + LostText(claim));
        }
        if (!file.strFailure.empty()) {
            add(EWeight::ERROR, file.strFile + " is not loaded: " + file.strFailure);
        }
    }
}
