#include "serve/view_metrics.h"

#include <cstddef>
#include <map>
#include <string>
#include <utility>

#include "framework_service/container.h"
#include "serve/document_name.h"

namespace {

constexpr char PSZ_TYPE[] = "type";

/// The containers of one type, summed.
struct CTypeFigures {
    std::size_t uiContainers = 0;
    std::size_t uiOffline = 0;
    std::size_t uiTasks = 0;
    std::size_t uiShifts = 0;
    std::size_t uiWaiting = 0;
};

using TypeFigures = std::map<std::string, CTypeFigures>;

class CGauge {
public:
    CGauge(std::string strName, std::string strHelp) {
        m_family.name = std::move(strName);
        m_family.help = std::move(strHelp);
        m_family.type = prometheus::MetricType::Gauge;
    }

    CGauge& Add(double fValue) {
        m_family.metric.emplace_back().gauge.value = fValue;
        return *this;
    }

    CGauge& Add(std::string strLabel, std::string strValue, double fValue) {
        Add(fValue);
        m_family.metric.back().label.push_back({std::move(strLabel), std::move(strValue)});
        return *this;
    }

    prometheus::MetricFamily Take() { return std::move(m_family); }

private:
    prometheus::MetricFamily m_family;
};

using Families = std::vector<prometheus::MetricFamily>;

void AddFigure(Families& families, std::string strName, std::string strHelp, double fValue) {
    families.push_back(CGauge(std::move(strName), std::move(strHelp)).Add(fValue).Take());
}

TypeFigures SumTypes(const CClusterView& view) {
    TypeFigures types;
    view.moment->VisitContainers(0, [&types](const auto& addr, const CContainer* pContainer) {
        CTypeFigures& figures = types[addr.GetContainerType()];
        ++figures.uiContainers;
        figures.uiOffline += pContainer->IsOnline() ? 0 : 1;
        figures.uiTasks += pContainer->GetTotalTask();
    });
    for (const CShiftView& shift : view.engine.shifts) {
        CTypeFigures& figures = types[shift.strType];
        ++figures.uiShifts;
        figures.uiWaiting += shift.uiWaiting;
    }
    return types;
}

void AddByType(Families& families, const TypeFigures& types, std::string strName,
               std::string strHelp, std::size_t CTypeFigures::*pFigure) {
    CGauge gauge(std::move(strName), std::move(strHelp));
    for (const auto& [strType, figures] : types) {
        gauge.Add(PSZ_TYPE, strType, static_cast<double>(figures.*pFigure));
    }
    families.push_back(gauge.Take());
}

void AddTypes(Families& families, const CClusterView& view) {
    const TypeFigures types = SumTypes(view);
    AddByType(families, types, "cluster_containers", "Containers of the cluster.",
              &CTypeFigures::uiContainers);
    AddByType(families, types, "cluster_containers_offline", "Containers that are offline.",
              &CTypeFigures::uiOffline);
    AddByType(families, types, "cluster_tasks", "Tasks in the containers.", &CTypeFigures::uiTasks);
    AddByType(families, types, "cluster_shifts_running", "Shifts that run.",
              &CTypeFigures::uiShifts);
    AddByType(families, types, "cluster_tasks_waiting", "Tasks that wait for room.",
              &CTypeFigures::uiWaiting);
}

void AddNodes(Families& families, const CClusterView& view) {
    std::size_t uiNodes = 0;
    std::size_t uiOffline = 0;
    view.moment->VisitNodes(0, [&](const auto& /*strNodeId*/, const CNode* pNode) {
        ++uiNodes;
        uiOffline += pNode->IsOnline() ? 0 : 1;
    });
    AddFigure(families, "cluster_nodes", "Nodes of the cluster.", static_cast<double>(uiNodes));
    AddFigure(families, "cluster_nodes_offline", "Nodes that are offline.",
              static_cast<double>(uiOffline));
    AddFigure(families, "cluster_nodes_draining", "Nodes that are being drained.",
              static_cast<double>(view.engine.draining.size()));
}

void AddPlugins(Families& families, const CClusterView& view) {
    CGauge gauge("cluster_plugin_out_of_service", "Is the plug-in out of service?");
    for (const CPluginView& plugin : view.engine.plugins) {
        gauge.Add("plugin", plugin.strName, plugin.bOutOfService ? 1 : 0);
    }
    families.push_back(gauge.Take());
}

void AddDocuments(Families& families, const CClusterView& view) {
    CGauge size("cluster_document_bytes", "Size of the document as stored.");
    CGauge limit("cluster_document_limit_bytes", "The largest size that the document may have.");
    for (const EDocument eDocument : AllDocuments()) {
        limit.Add("document", NameOf(eDocument), StoreDocumentOf(eDocument).GetMaxSize());
        const auto it = view.pDocuments->find(NameOf(eDocument));
        if (it != view.pDocuments->end()) {
            size.Add("document", NameOf(eDocument),
                     static_cast<double>(it->second.text ? it->second.text->size() : 0));
        }
    }
    families.push_back(size.Take());
    families.push_back(limit.Take());
}

}  // namespace

std::vector<prometheus::MetricFamily> ViewMetrics(const CClusterView& view,
                                                  std::size_t uiQueueLength) {
    Families families;
    AddFigure(families, "cluster_queue_length", "Inputs that wait for the engine.",
              static_cast<double>(uiQueueLength));
    AddFigure(families, "cluster_ready", "Is the cluster loaded and ours, so that inputs count?",
              view.strNotReady.empty() ? 1 : 0);
    if (!view.moment) {
        return families;
    }
    AddFigure(families, "cluster_settling", "Is nothing shifted or balanced yet after a load?",
              view.bSettling ? 1 : 0);
    AddFigure(families, "cluster_store_away", "Does the store count as away?",
              view.engine.bStoreAway ? 1 : 0);
    AddNodes(families, view);
    AddTypes(families, view);
    AddFigure(families, "cluster_types_held", "Container types whose shifts are held.",
              static_cast<double>(view.engine.heldTypes.size()));
    AddPlugins(families, view);
    if (view.pDocuments != nullptr) {
        AddDocuments(families, view);
    }
    AddFigure(families, "cluster_decision_version", "Number of the last decision.",
              static_cast<double>(view.ullDecision));
    AddFigure(families, "cluster_master_version", "Number of the master version.",
              static_cast<double>(view.ullMaster));
    return families;
}
