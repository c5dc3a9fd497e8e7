#include "plugins/model_board.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"

namespace model {

namespace {

/// The costs of a task; a negative one counts as nothing.
ResourceFigures CostsOf(const CResourceTask& task) {
    ResourceFigures costs{task.GetCpu(), task.GetMem(), task.GetIO(), task.GetNet(),
                          task.GetDisk()};
    for (int64_t& llCost : costs) {
        llCost = std::max<int64_t>(llCost, 0);
    }
    return costs;
}

ResourceFigures FiguresOf(const CSystemResource& resource) {
    return {resource.GetCpu(), resource.GetMem(), resource.GetIO(), resource.GetNet(),
            resource.GetDisk()};
}

std::list<CResourceTask> TasksOf(const CContainer& container) {
    std::list<CResourceTask> taskList;
    container.GetResoureTask(taskList);
    return taskList;
}

/// What is asked beyond the library's word that the container is available.
bool MayTakeTasks(const CContainer& container) {
    return container.GetMemberStatus() == CLUSTER_MEMBER_NORMAL && !container.IsFaultShift() &&
           !container.GetFaultStatus();
}

bool Contains(const ContainerMap& containerTable, const CContainerAddr& addr) {
    const auto it = containerTable.find(addr);
    return it != containerTable.end() && it->first == addr;
}

}  // namespace

CContainerLoad::CContainerLoad(const CContainerAddr& addr, const CContainer& container,
                               const std::list<CResourceTask>& taskList, bool bUsable)
    : m_addr(addr),
      m_bUsable(bUsable),
      m_total(FiguresOf(container.GetTotalResource())),
      m_used(FiguresOf(container.GetStatus().GetCurSysResource())),
      m_uiTasks(container.GetTotalTask()) {
    if (container.GetTotalDisk() > 0) {
        // The disk ratio follows the last report, the status the average of the last three.
        m_used[RESOURCE_TYPE_DISK] =
            std::llround(static_cast<double>(container.GetDiskRatio()) * container.GetTotalDisk());
    }
    ResourceFigures sum{};
    for (const CResourceTask& task : taskList) {
        const ResourceFigures costs = CostsOf(task);
        std::transform(sum.begin(), sum.end(), costs.begin(), sum.begin(), std::plus<>());
    }
    for (std::size_t i = 0; i < sum.size(); ++i) {
        m_used[i] = std::max(m_used[i], sum[i]);
    }
}

bool CContainerLoad::HasRoomFor(const CResourceTask& task) const {
    const ResourceFigures costs = CostsOf(task);
    for (std::size_t i = 0; i < costs.size(); ++i) {
        if (costs[i] > 0 && m_used[i] + costs[i] > m_total[i]) {
            return false;
        }
    }
    return true;
}

double CContainerLoad::GetRatio(RESOURCE_TYPE eType) const {
    const auto uiType = static_cast<std::size_t>(eType);
    return m_total[uiType] > 0
               ? static_cast<double>(m_used[uiType]) / static_cast<double>(m_total[uiType])
               : std::numeric_limits<double>::infinity();
}

void CContainerLoad::Take(const CResourceTask& task) {
    const ResourceFigures costs = CostsOf(task);
    std::transform(m_used.begin(), m_used.end(), costs.begin(), m_used.begin(), std::plus<>());
    ++m_uiTasks;
}

void CContainerLoad::Give(const CResourceTask& task) {
    const ResourceFigures costs = CostsOf(task);
    std::transform(m_used.begin(), m_used.end(), costs.begin(), m_used.begin(), std::minus<>());
    --m_uiTasks;
}

CScheduleBoard::CScheduleBoard(const std::string& strContainerType, LoadFunc pLoad)
    : m_pLoad(pLoad) {
    ContainerMap availableTable;
    CFrameworkCommon::Instance().GetAvailableContainer(strContainerType, availableTable);
    ContainerMap containerTable;
    CContainerMgr::Instance().GetAllContainer(containerTable);
    for (const auto& [addr, container] : containerTable) {
        if (addr.GetContainerType() != strContainerType) {
            continue;
        }
        const std::list<CResourceTask> taskList = TasksOf(container);
        const bool bUsable = Contains(availableTable, addr) && MayTakeTasks(container);
        CContainerLoad& load =
            m_containers.try_emplace(addr, addr, container, taskList, bUsable).first->second;
        for (const CResourceTask& task : taskList) {
            m_tasks.try_emplace(task.GetTaskId(), CPlacedTask{task, &load});
        }
    }
}

const CContainerLoad* CScheduleBoard::Place(const CResourceTask& task, bool bReschedule) {
    CContainerLoad* const pHolder = FindHolder(task.GetTaskId());
    if (pHolder != nullptr && pHolder->IsUsable() && !bReschedule) {
        return pHolder;
    }
    CContainerLoad* const pTarget = FindLeastLoaded(task, pHolder);
    if (pTarget != nullptr) {
        Move(task, *pTarget);
    }
    return pTarget;
}

int CScheduleBoard::Shift(const CResourceTask& task, const CContainerAddr& from,
                          const CContainerAddr& to) {
    const CContainerLoad* const pHolder = FindHolder(task.GetTaskId());
    if (pHolder == nullptr || !(pHolder->GetAddr() == from) || from == to) {
        return ORVA_PARA_INVALID;
    }
    if (!task.IsSupportShift()) {
        return ORVA_SYS_NO_SUPPORT;
    }
    CContainerLoad* const pTarget = FindContainer(to);
    if (pTarget == nullptr || !pTarget->IsUsable() || !pTarget->HasRoomFor(task)) {
        return ORVA_FAIL;
    }
    Move(task, *pTarget);
    return ORVA_SUCCEED;
}

std::vector<CTaskMove> CScheduleBoard::Balance(double fThreshold) {
    std::vector<CContainerLoad*> balanced;
    for (auto& [addr, load] : m_containers) {
        if (load.IsUsable() && std::isfinite(m_pLoad(load))) {
            balanced.push_back(&load);
        }
    }
    std::vector<CTaskMove> moves;
    std::set<std::string> movedIds;
    while (!balanced.empty()) {
        const auto [itEmptiest, itFullest] = std::minmax_element(
            balanced.begin(), balanced.end(), [this](const auto* pLeft, const auto* pRight) {
                return IsLessLoaded(*pLeft, *pRight);
            });
        if (m_pLoad(**itFullest) - m_pLoad(**itEmptiest) <= fThreshold) {
            break;
        }
        const CPlacedTask* const pBest = FindBestMove(**itFullest, **itEmptiest, movedIds);
        if (pBest == nullptr) {
            break;
        }
        moves.push_back({pBest->task, (*itFullest)->GetAddr(), (*itEmptiest)->GetAddr()});
        movedIds.insert(pBest->task.GetTaskId());
        Move(moves.back().task, **itEmptiest);
    }
    return moves;
}

CContainerLoad* CScheduleBoard::FindContainer(const CContainerAddr& addr) {
    const auto it = m_containers.find(addr);
    return it != m_containers.end() && it->first == addr ? &it->second : nullptr;
}

CContainerLoad* CScheduleBoard::FindHolder(const std::string& strTaskId) {
    const auto it = m_tasks.find(strTaskId);
    return it != m_tasks.end() ? it->second.pHolder : nullptr;
}

CContainerLoad* CScheduleBoard::FindLeastLoaded(const CResourceTask& task,
                                                const CContainerLoad* pExcept) {
    CContainerLoad* pBest = nullptr;
    for (auto& [addr, load] : m_containers) {
        if (load.IsUsable() && &load != pExcept && load.HasRoomFor(task) &&
            (pBest == nullptr || IsLessLoaded(load, *pBest))) {
            pBest = &load;
        }
    }
    return pBest;
}

const CScheduleBoard::CPlacedTask* CScheduleBoard::FindBestMove(
    const CContainerLoad& fullest, const CContainerLoad& emptiest,
    const std::set<std::string>& movedIds) const {
    const CPlacedTask* pBest = nullptr;
    double fSmallestGap = m_pLoad(fullest) - m_pLoad(emptiest);
    for (const auto& [strTaskId, placed] : m_tasks) {
        if (placed.pHolder != &fullest || !placed.task.IsSupportShift() ||
            !emptiest.HasRoomFor(placed.task) || movedIds.count(strTaskId) != 0) {
            continue;
        }
        CContainerLoad from(fullest);
        CContainerLoad to(emptiest);
        from.Give(placed.task);
        to.Take(placed.task);
        const double fGap = std::abs(m_pLoad(from) - m_pLoad(to));
        if (fGap < fSmallestGap) {
            fSmallestGap = fGap;
            pBest = &placed;
        }
    }
    return pBest;
}

bool CScheduleBoard::IsLessLoaded(const CContainerLoad& left, const CContainerLoad& right) const {
    const auto key = [this](const CContainerLoad& load) {
        return std::make_tuple(m_pLoad(load), load.GetRatio(RESOURCE_TYPE_NET),
                               load.GetTaskCount());
    };
    return key(left) < key(right);
}

void CScheduleBoard::Move(const CResourceTask& task, CContainerLoad& to) {
    const auto [it, bNew] = m_tasks.try_emplace(task.GetTaskId(), CPlacedTask{task, &to});
    if (!bNew) {
        it->second.pHolder->Give(it->second.task);
        it->second = {task, &to};
    }
    to.Take(task);
}

}  // namespace model
