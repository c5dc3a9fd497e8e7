#include "common/cluster_view.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

#include "common/work_state.h"

namespace {

uint32_t HashOf(std::string_view taskId) {
    return static_cast<uint32_t>(std::hash<std::string_view>()(taskId));
}

void Add(const TaskCosts& costs, ResourceFigures& sum) {
    std::transform(costs.begin(), costs.end(), sum.begin(), sum.begin(), std::plus<int64_t>());
}

}  // namespace

CClusterView::CClusterView(const std::string& strContainerType, LoadFunc pLoad)
    : m_strContainerType(strContainerType), m_pLoad(pLoad) {}

void CClusterView::Forget() {
    const std::lock_guard guard(m_mutex);
    Clear();
}

void CClusterView::Clear() {
    m_ullContainerNumber = 0;
    m_ullNodeNumber = 0;
    m_containers.Clear();
    m_byAddress.Clear();
    m_byLoad.Clear();
    m_strangers.clear();
    m_tasks.Clear();
    m_taskIndex.Clear();
    m_skipped = std::vector<uint32_t>();
}

bool CClusterView::Follow(const CClusterMoment& moment) {
    if (moment.GetContainerNumber() < m_ullContainerNumber ||
        moment.GetNodeNumber() < m_ullNodeNumber) {
        return false;
    }
    const auto learn = [&](const CContainerAddr& addr, const CContainer* pContainer) {
        if (addr.GetContainerType() != m_strContainerType) {
            return;
        }
        if (pContainer != nullptr) {
            Read(addr, *pContainer, moment);
        } else {
            Drop(addr);
        }
    };
    if (!moment.VisitContainers(m_ullContainerNumber, learn)) {
        Clear();
        moment.VisitContainers(0, learn);
    }
    FollowNodes(moment);
    m_ullContainerNumber = moment.GetContainerNumber();
    m_ullNodeNumber = moment.GetNodeNumber();
    return true;
}

uint32_t CClusterView::FindContainer(const CContainerAddr& addr) const {
    return addr.GetContainerType() == m_strContainerType ? FindOnNode(addr.GetNodeId())
                                                         : NUMERIC_NONE;
}

uint32_t CClusterView::FindTask(std::string_view taskId) const {
    return m_taskIndex.Find(HashOf(taskId), [&](uint32_t uiTask) {
        return m_tasks[uiTask].bHeld && m_tasks[uiTask].id.View() == taskId;
    });
}

uint32_t CClusterView::FindFullest() const {
    return m_byLoad
        .Part([this](uint32_t uiContainer) { return std::isfinite(Measure(GetLoad(uiContainer))); })
        .first;
}

void CClusterView::SetLoad(uint32_t uiContainer, const CContainerLoad& load) {
    Rearrange(uiContainer, [&load](CContainerEntry& entry) { entry.load = load; });
}

bool CClusterView::CByLoad::operator()(uint32_t uiLeft, uint32_t uiRight) const {
    const CContainerLoad& left = view.GetLoad(uiLeft);
    const CContainerLoad& right = view.GetLoad(uiRight);
    const double fLeft = view.Measure(left);
    const double fRight = view.Measure(right);
    if (fLeft != fRight) {
        return fLeft < fRight;
    }
    const double fLeftNet = left.GetRatio(RESOURCE_TYPE_NET);
    const double fRightNet = right.GetRatio(RESOURCE_TYPE_NET);
    if (fLeftNet != fRightNet) {
        return fLeftNet < fRightNet;
    }
    if (left.GetTaskCount() != right.GetTaskCount()) {
        return left.GetTaskCount() < right.GetTaskCount();
    }
    return CByAddress{view}(uiLeft, uiRight);
}

bool CClusterView::IsAhead(const std::string& strLeftNodeId,
                           const std::string& strRightNodeId) const {
    // One type behind both: ids of one length decide.
    return strLeftNodeId.size() == strRightNodeId.size()
               ? strLeftNodeId < strRightNodeId
               : strLeftNodeId + m_strContainerType < strRightNodeId + m_strContainerType;
}

uint32_t CClusterView::FindOnNode(const std::string& strNodeId) const {
    const auto isBefore = [&](uint32_t uiContainer) {
        return IsAhead(m_containers[uiContainer].strNodeId, strNodeId);
    };
    const uint32_t uiFound = m_byAddress.Part(isBefore).second;
    return uiFound != NUMERIC_NONE && m_containers[uiFound].strNodeId == strNodeId ? uiFound
                                                                                   : NUMERIC_NONE;
}

template <typename Change>
void CClusterView::Rearrange(uint32_t uiContainer, const Change& change) {
    CContainerEntry& entry = m_containers[uiContainer];
    if (entry.IsUsable()) {
        m_byLoad.Erase(uiContainer);
    }
    change(entry);
    if (entry.IsUsable()) {
        m_byLoad.Insert(uiContainer);
    }
}

void CClusterView::Read(const CContainerAddr& addr, const CContainer& container,
                        const CClusterMoment& moment) {
    const uint32_t uiKnown = FindOnNode(addr.GetNodeId());
    const uint32_t uiContainer = uiKnown != NUMERIC_NONE ? uiKnown : AddContainer(addr.GetNodeId());
    if (container.GetNodeId() != addr.GetNodeId()) {
        m_strangers[uiContainer] = container.GetNodeId();
    }
    FollowTasks(uiContainer, container);
    const CNode* const pNode = moment.FindNode(container.GetNodeId());
    Rearrange(uiContainer, [&](CContainerEntry& entry) {
        entry.load = CContainerLoad(container, entry.taskSum);
        entry.pszNotReady = WhyNotReady(container, m_strContainerType);
        entry.pszNoHost = WhyNoHost(pNode);
    });
}

uint32_t CClusterView::AddContainer(const std::string& strNodeId) {
    CContainerEntry entry;
    entry.strNodeId = strNodeId;
    const uint32_t uiContainer = m_containers.Add(std::move(entry));
    m_byAddress.Insert(uiContainer);
    return uiContainer;
}

void CClusterView::Drop(const CContainerAddr& addr) {
    const uint32_t uiContainer = FindOnNode(addr.GetNodeId());
    if (uiContainer == NUMERIC_NONE) {
        return;
    }
    ReadTasks(uiContainer, {});
    Rearrange(uiContainer, [](CContainerEntry& entry) { entry.pszNotReady = PSZ_NOT_THERE; });
    m_byAddress.Erase(uiContainer);
    m_strangers.erase(uiContainer);
    m_containers.GiveBack(uiContainer);
}

void CClusterView::FollowNodes(const CClusterMoment& moment) {
    const auto learn = [this](const std::string& strNodeId, const CNode* pNode) {
        const uint32_t uiContainer = FindOnNode(strNodeId);
        if (uiContainer != NUMERIC_NONE && m_strangers.count(uiContainer) == 0) {
            SetHost(uiContainer, pNode);
        }
        for (const auto& [uiStranger, strNamedNodeId] : m_strangers) {
            if (strNamedNodeId == strNodeId) {
                SetHost(uiStranger, pNode);
            }
        }
    };
    if (moment.VisitNodes(m_ullNodeNumber, learn)) {
        return;
    }
    VisitContainers([&](uint32_t uiContainer) {
        const auto it = m_strangers.find(uiContainer);
        const std::string& strNodeId =
            it != m_strangers.end() ? it->second : m_containers[uiContainer].strNodeId;
        SetHost(uiContainer, moment.FindNode(strNodeId));
    });
}

void CClusterView::SetHost(uint32_t uiContainer, const CNode* pNode) {
    const char* const pszNoHost = WhyNoHost(pNode);
    if (pszNoHost != m_containers[uiContainer].pszNoHost) {
        Rearrange(uiContainer,
                  [pszNoHost](CContainerEntry& entry) { entry.pszNoHost = pszNoHost; });
    }
}

void CClusterView::FollowTasks(uint32_t uiContainer, const CContainer& container) {
    CContainerEntry& entry = m_containers[uiContainer];
    if (entry.ullTaskTable == container.GetTaskTableNumber()) {
        return;
    }
    if (entry.ullTaskTable >= container.GetTaskTableGrownSince()) {
        ReadMoreTasks(uiContainer, container.GetTaskTable());
    } else {
        ReadTasks(uiContainer, container.GetTaskTable());
    }
    entry.ullTaskTable = container.GetTaskTableNumber();
}

void CClusterView::ReadMoreTasks(uint32_t uiContainer, const std::list<CResourceTask>& taskTable) {
    CContainerEntry& entry = m_containers[uiContainer];
    const std::size_t uiMore = taskTable.size() - entry.load.GetTaskCount();
    for (auto it = std::prev(taskTable.end(), static_cast<std::ptrdiff_t>(uiMore));
         it != taskTable.end(); ++it) {
        const TaskCosts costs = CostsOf(*it);
        Add(costs, entry.taskSum);
        if (FindTaskIn(uiContainer, it->GetTaskId()) == NUMERIC_NONE) {
            const uint32_t uiTask = AddTask(uiContainer, it->GetTaskId());
            m_tasks[uiTask].costs = costs;
            m_tasks[uiTask].bSupportShift = it->IsSupportShift();
            Append(entry, uiTask);
        }
    }
}

void CClusterView::Append(CContainerEntry& entry, uint32_t uiTask) {
    uint32_t& uiNext =
        entry.uiLastTask != NUMERIC_NONE ? m_tasks[entry.uiLastTask].uiNext : entry.uiFirstTask;
    uiNext = uiTask;
    entry.uiLastTask = uiTask;
}

void CClusterView::ReadTasks(uint32_t uiContainer, const std::list<CResourceTask>& taskTable) {
    CContainerEntry& entry = m_containers[uiContainer];
    entry.taskSum = {};
    m_skipped.clear();
    uint32_t uiFormer = entry.uiFirstTask;  // the first that was neither told of nor skipped
    entry.uiFirstTask = NUMERIC_NONE;
    entry.uiLastTask = NUMERIC_NONE;
    for (const CResourceTask& task : taskTable) {
        const TaskCosts costs = CostsOf(task);
        Add(costs, entry.taskSum);
        // A report mostly tells the tasks of the one before, in the same order.
        uint32_t uiTask = uiFormer;
        if (uiTask == NUMERIC_NONE || m_tasks[uiTask].id.View() != task.GetTaskId()) {
            uiTask = FindTaskIn(uiContainer, task.GetTaskId());
        }
        if (uiTask == NUMERIC_NONE) {
            uiTask = AddTask(uiContainer, task.GetTaskId());
        } else if (m_tasks[uiTask].bTold) {
            continue;
        } else if (!m_tasks[uiTask].bSkipped) {
            SkipUntil(uiTask, uiFormer);
            uiFormer = m_tasks[uiTask].uiNext;
        }
        CHeldTask& held = m_tasks[uiTask];
        held.costs = costs;
        held.bSupportShift = task.IsSupportShift();
        held.bTold = true;
        Append(entry, uiTask);
    }
    SkipUntil(NUMERIC_NONE, uiFormer);
    if (entry.uiLastTask != NUMERIC_NONE) {
        m_tasks[entry.uiLastTask].uiNext = NUMERIC_NONE;
    }
    DropSkippedTasks();
    for (uint32_t i = entry.uiFirstTask; i != NUMERIC_NONE; i = m_tasks[i].uiNext) {
        m_tasks[i].bTold = false;
    }
}

void CClusterView::SkipUntil(uint32_t uiTask, uint32_t uiFormer) {
    for (; uiFormer != uiTask; uiFormer = m_tasks[uiFormer].uiNext) {
        m_tasks[uiFormer].bSkipped = true;
        m_skipped.push_back(uiFormer);
    }
}

void CClusterView::DropSkippedTasks() {
    for (const uint32_t uiTask : m_skipped) {
        m_tasks[uiTask].bSkipped = false;
        if (!m_tasks[uiTask].bTold) {
            DropTask(uiTask);
        }
    }
}

uint32_t CClusterView::FindTaskIn(uint32_t uiContainer, std::string_view taskId) const {
    return m_taskIndex.Find(HashOf(taskId), [&](uint32_t uiTask) {
        return m_tasks[uiTask].uiContainer == uiContainer && m_tasks[uiTask].id.View() == taskId;
    });
}

uint32_t CClusterView::FindFirstTask(std::string_view taskId) const {
    uint32_t uiFirst = NUMERIC_NONE;
    m_taskIndex.Find(HashOf(taskId), [&](uint32_t uiTask) {
        const CHeldTask& task = m_tasks[uiTask];
        if (task.id.View() == taskId &&
            (uiFirst == NUMERIC_NONE ||
             CByAddress{*this}(task.uiContainer, m_tasks[uiFirst].uiContainer))) {
            uiFirst = uiTask;
        }
        return false;
    });
    return uiFirst;
}

uint32_t CClusterView::AddTask(uint32_t uiContainer, std::string_view taskId) {
    const uint32_t uiHolder = FindTask(taskId);
    const bool bFirst =
        uiHolder == NUMERIC_NONE || CByAddress{*this}(uiContainer, m_tasks[uiHolder].uiContainer);
    if (bFirst && uiHolder != NUMERIC_NONE) {
        m_tasks[uiHolder].bHeld = false;
    }
    CHeldTask task;
    task.id = CCompactText(taskId);
    task.uiContainer = uiContainer;
    task.bHeld = bFirst;
    const uint32_t uiTask = m_tasks.Add(std::move(task));
    m_taskIndex.Insert(HashOf(taskId), uiTask);
    return uiTask;
}

void CClusterView::DropTask(uint32_t uiTask) {
    const CCompactText id = std::move(m_tasks[uiTask].id);
    const bool bHeld = m_tasks[uiTask].bHeld;
    m_taskIndex.Erase(HashOf(id.View()), uiTask);
    m_tasks.GiveBack(uiTask);
    if (!bHeld) {
        return;
    }
    if (const uint32_t uiNext = FindFirstTask(id.View()); uiNext != NUMERIC_NONE) {
        m_tasks[uiNext].bHeld = true;
    }
}
