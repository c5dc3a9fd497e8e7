#include "cluster_engine/state_form.h"

#include <algorithm>
#include <list>
#include <utility>

#include "cluster_engine/library_document.h"
#include "cluster_engine/load.h"
#include "cluster_engine/nvr.h"
#include "cluster_engine/registry_form.h"
#include "common_service/tarn_def.h"
#include "framework_service/plugin_mgr.h"

namespace {

/// How a plug-in has behaved.
struct CPluginHealth {
    std::string strName;
    std::map<std::string, uint32_t> failures;
    bool bOut = false;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("name", self.strName);
        form.May("failures", self.failures);
        form.May("out", self.bOut);
    }
};

/// What was decided about a task.
struct CTaskDecisions {
    using Element = CCluster::DecisionHistory::value_type;
    std::string strType;
    std::string strTaskId;
    std::vector<CDecision> decisions;

    CTaskDecisions() = default;
    explicit CTaskDecisions(const Element& element)
        : strType(element.first.first),
          strTaskId(element.first.second),
          decisions(element.second.begin(), element.second.end()) {}
    explicit operator Element() const {
        return {{strType, strTaskId}, {decisions.begin(), decisions.end()}};
    }

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("type", self.strType);
        form.Need("task", self.strTaskId);
        form.Need("decisions", self.decisions);
    }
};

struct CTaskName {
    std::string strType;
    std::string strTaskId;

    CTaskName() = default;
    explicit CTaskName(const CCluster::TaskKey& key) : strType(key.first), strTaskId(key.second) {}
    explicit operator CCluster::TaskKey() const { return {strType, strTaskId}; }

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("type", self.strType);
        form.Need("task", self.strTaskId);
    }
};

struct CStateForm {
    CClusterState cluster;
    CCluster::DecisionHistory decisions;
    std::deque<CCluster::TaskKey> nowhere;
    CAssignments::COwners documents;
    std::vector<CPluginHealth> plugins;
    CRegistryForm registries;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("cluster", self.cluster);
        ListOf<CTaskDecisions>(form, "decisions", self.decisions);
        ListOf<CTaskName>(form, "nowhere", self.nowhere);
        ListOf<CPlace>(form, "with_documents", self.documents.all);
        ListOf<CPlace>(form, "unread_left", self.documents.unreadLeft);
        form.Need("plugins", self.plugins);
        form.Need("registries", self.registries);
    }
};

/// A plug-in that the state does not name has done nothing wrong yet.
void RestoreHealth(CPluginGate& gate, const std::vector<CPluginHealth>& plugins) {
    for (const CPluginHealth& health : plugins) {
        if (CPluginRecord* const pPlugin = gate.OfName(health.strName); pPlugin != nullptr) {
            pPlugin->failures = health.failures;
            pPlugin->bOut = health.bOut;
        }
    }
}

int Restore(CCluster& cluster, CStateForm form, std::string& strWhy) {
    if (const int iCode = LoadPlugins(); iCode != ORVA_SUCCEED) {
        strWhy = "cannot load the plug-ins";
        return iCode;
    }
    cluster.plugins.Load();
    cluster.ForgetEvents();
    RestoreHealth(cluster.plugins, form.plugins);
    cluster.state = std::move(form.cluster);
    cluster.decisions = std::move(form.decisions);
    cluster.nowhere = std::move(form.nowhere);
    cluster.assignments.Restore(std::move(form.documents));
    const int iCode = RestoreRegistries(cluster, form.registries, strWhy);
    RestoreNvrs(cluster);
    cluster.host.clock.Set(cluster.state.iNow);
    cluster.state.bLoaded = iCode == ORVA_SUCCEED;
    return iCode;
}

}  // namespace

Json::Value StateToJson(const CCluster& cluster) {
    CStateForm form;
    form.cluster = cluster.state;
    form.decisions = cluster.decisions;
    form.nowhere = cluster.nowhere;
    form.documents = cluster.assignments.GetOwners();
    for (const CPluginRecord& plugin : cluster.plugins.GetAll()) {
        form.plugins.push_back({plugin.strName, plugin.failures, plugin.bOut});
    }
    form.registries = ReadRegistries();
    return ToJson(form);
}

int RestoreState(CCluster& cluster, const Json::Value& json, std::string& strWhy) {
    CStateForm form;
    CFieldFault fault;
    if (!FromJson(json, form, fault)) {
        strWhy = "the state cannot be read: \"" + fault.strPlace + "\": " + fault.strFault;
        return ORVA_DATA_INVALID;
    }
    cluster.store.LetVersionsWait();
    cluster.host.gate.Shut();
    const int iCode = Restore(cluster, std::move(form), strWhy);
    cluster.host.gate.Open();
    return iCode;
}
