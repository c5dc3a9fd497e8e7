#include "cluster_engine/cluster.h"

#include <algorithm>
#include <cstddef>
#include <list>

#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/schedule_mgr.h"

namespace {

/// Do both hold the same tasks at the same costs, in whatever order?
bool IsSameTable(const std::list<CResourceTask>& table, const CContainerRecord& record) {
    if (table.size() != record.tasks.size()) {
        return false;
    }
    return std::all_of(table.begin(), table.end(), [&](const CResourceTask& task) {
        const auto it = record.tasks.find(task.GetTaskId());
        return it != record.tasks.end() && CTaskForm(it->second.task) == CTaskForm(task);
    });
}

std::list<CResourceTask> TableOf(const CContainerRecord& record) {
    std::list<CResourceTask> table;
    for (const auto& [strTaskId, task] : record.tasks) {
        table.push_back(task.task);
    }
    return table;
}

std::list<std::string> IdsOf(const std::list<CResourceTask>& table) {
    std::list<std::string> ids;
    for (const CResourceTask& task : table) {
        ids.push_back(task.GetTaskId());
    }
    return ids;
}

/// Is it about what went wrong, whatever becomes of the input?
bool IsMishap(EEvent eEvent) {
    return eEvent == EEvent::PLUGIN_FAILED || eEvent == EEvent::PLUGIN_OUT ||
           eEvent == EEvent::STORE_FAILED;
}

/// Fills the table as it would be without the call: as a report does where there was one.
void RestoreTable(const CContainerAddr& addr, const CContainerRecord& record,
                  const std::list<CResourceTask>& table) {
    CContainerMgr& containers = CContainerMgr::Instance();
    const bool bOnline = containers.IsContainerOnline(addr);
    if (record.bReportedTasks) {
        containers.SetResourceTask(addr, TableOf(record), CONTAINER_STATUS_REPORT_REQ);
    } else {
        containers.RemoveResourceTask(addr, IdsOf(table));
        containers.AddResourceTask(addr, TableOf(record));
    }
    if (containers.IsContainerOnline(addr) != bOnline) {
        containers.SetContainerOnline(addr, bOnline);
    }
}

}  // namespace

CCluster::CCluster(const CEngineHost& engineHost, const CEngineSettings& engineSettings)
    : host(engineHost),
      settings(engineSettings),
      store(host.gate),
      assignments(state, store),
      plugins(host, settings, [this](const CPluginRecord& plugin, const CCallResult& result) {
          CEvent event;
          event.eEvent = result.eFault == EFault::STORE_FAILED ? EEvent::STORE_FAILED
                         : plugin.bOut                         ? EEvent::PLUGIN_OUT
                                                               : EEvent::PLUGIN_FAILED;
          event.strCause = plugin.strName + ": " + result.strWhy;
          Tell(std::move(event));
      }) {}

void CCluster::Begin() {
    const int64_t iNow = state.iNow;
    state = CClusterState();
    state.iNow = iNow;
    m_events.clear();
    decisions.clear();
    nowhere.clear();
}

void CCluster::Tell(CEvent event) {
    event.iTime = state.iNow;
    m_events.push_back(std::move(event));
}

void CCluster::TellNow(CEvent event) {
    event.iTime = state.iNow;
    host.events.Take(event);
}

void CCluster::TellSink() {
    std::vector<CEvent> events;
    events.swap(m_events);
    for (const CEvent& event : events) {
        host.events.Take(event);
    }
}

void CCluster::Note(const std::string& strType, const std::string& strTaskId, CDecision decision) {
    decision.iTime = state.iNow;
    if (decision.strNodeId.empty()) {
        nowhere.emplace_back(strType, strTaskId);
    }
    std::vector<CDecision>& ofTask = decisions[{strType, strTaskId}];
    ofTask.insert(ofTask.begin(), std::move(decision));
    if (ofTask.size() > settings.uiDecisionsKept) {
        ofTask.pop_back();
    }
    ForgetNowhere();
}

void CCluster::ForgetNowhere() {
    while (nowhere.size() > settings.uiEndedKept) {
        const auto it = decisions.find(nowhere.front());
        if (it != decisions.end() && it->second.front().strNodeId.empty()) {
            decisions.erase(it);
        }
        nowhere.pop_front();
    }
}

std::vector<CDecision> CCluster::Decisions(const std::string& strType,
                                           const std::string& strTaskId) const {
    const auto it = decisions.find({strType, strTaskId});
    return it != decisions.end() ? it->second : std::vector<CDecision>();
}

int CCluster::RaiseDecision(unsigned long long& ullDecision) {
    CScheduleMgr& versions = CScheduleMgr::Instance();
    int iCode = ORVA_SUCCEED;
    if (ullDecision > state.ullHighestDecision && ullDecision <= versions.GetDecisionVerNum()) {
        return iCode;
    }
    if (versions.GetDecisionVerNum() < state.ullHighestDecision) {
        iCode = versions.SetDecisionVerNum(state.ullHighestDecision);
    }
    return iCode != ORVA_SUCCEED ? iCode : versions.IncreaseDecisionVerNum(ullDecision);
}

void CCluster::RestoreTables(const CPluginRecord& plugin) {
    const std::list<std::string>& types = plugin.claims.containers;
    for (const auto& [addr, record] : state.containers) {
        const std::string& strType = addr.GetContainerType();
        if (strType == CONTAINER_TYPE_CLOUD_STORAGE ||
            std::find(types.begin(), types.end(), strType) == types.end()) {
            continue;
        }
        std::list<CResourceTask> table;
        CContainerMgr::Instance().GetResTaskList(addr, table);
        if (!IsSameTable(table, record)) {
            RestoreTable(addr, record, table);
        }
    }
}

CCluster::CMark CCluster::Remember() const {
    return {state, assignments.Remember(), m_events.size(), decisions};
}

void CCluster::GoBack(CMark mark) {
    const uint64_t ullHighest = std::max(state.ullHighestDecision, mark.state.ullHighestDecision);
    state = std::move(mark.state);
    state.ullHighestDecision = ullHighest;  // a document that was written may bear it
    assignments.GoBack(std::move(mark.assignments));
    decisions = std::move(mark.decisions);
    const auto itNew = m_events.begin() + static_cast<std::ptrdiff_t>(mark.uiEvents);
    m_events.erase(std::remove_if(itNew, m_events.end(),
                                  [](const CEvent& event) { return !IsMishap(event.eEvent); }),
                   m_events.end());
    for (const CPluginRecord& plugin : plugins.GetAll()) {
        RestoreTables(plugin);
    }
}

CEvent ContainerEvent(EEvent eEvent, const CContainerAddr& addr, std::string strCause) {
    CEvent event;
    event.eEvent = eEvent;
    event.strNodeId = addr.GetNodeId();
    event.strType = addr.GetContainerType();
    event.strCause = std::move(strCause);
    return event;
}

CEvent TasksEvent(EEvent eEvent, const CContainerAddr& addr, const std::list<std::string>& taskIds,
                  std::string strCause) {
    CEvent event = ContainerEvent(eEvent, addr, std::move(strCause));
    event.uiTasks = static_cast<uint32_t>(taskIds.size());
    event.strTaskId = taskIds.size() == 1 ? taskIds.front() : "";
    return event;
}
