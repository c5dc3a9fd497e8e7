#include "common/schedule_board.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>

#include "common_service/tarn_def.h"

CScheduleBoard::CScheduleBoard(CClusterView& view)
    : m_view(view), m_moment(CClusterMoment::Take()), m_lock(view.GetMutex()) {
    // The moment is taken without the view's lock, since it waits for the registries. Another
    // thread may have brought the view beyond it meanwhile.
    while (m_moment && !m_view.Follow(*m_moment)) {
        m_lock.unlock();
        m_moment = CClusterMoment::Take();
        m_lock.lock();
    }
}

CScheduleBoard::~CScheduleBoard() {
    for (const auto& [uiContainer, load] : m_formerLoads) {
        m_view.SetLoad(uiContainer, load);
    }
}

std::optional<CContainerAddr> CScheduleBoard::Place(const CResourceTask& task, bool bReschedule) {
    if (!m_moment) {
        return std::nullopt;
    }
    const uint32_t uiHeldTask = m_view.FindTask(task.GetTaskId());
    const uint32_t uiHolder = HolderOf(uiHeldTask);
    if (uiHolder != NUMERIC_NONE && m_view.IsUsable(uiHolder) && !bReschedule) {
        return m_view.GetAddr(uiHolder);
    }
    const TaskCosts costs = CostsOf(task);
    const uint32_t uiTarget = m_view.FindUsable([&](uint32_t uiContainer) {
        return uiContainer != uiHolder && m_view.GetLoad(uiContainer).HasRoomFor(costs);
    });
    if (uiTarget == NUMERIC_NONE) {
        return std::nullopt;
    }
    Move(uiHeldTask, costs, uiTarget);
    return m_view.GetAddr(uiTarget);
}

void CScheduleBoard::Explain(const CResourceTask& task,
                             std::list<CPlacementReason>& reasons) const {
    if (!m_moment) {
        return;
    }
    const uint32_t uiHolder = HolderOf(m_view.FindTask(task.GetTaskId()));
    const TaskCosts costs = CostsOf(task);
    m_view.VisitContainers([&](uint32_t uiContainer) {
        std::string strWhyNot;
        if (const char* const pszWhyNot = m_view.WhyNotUsable(uiContainer)) {
            strWhyNot = pszWhyNot;
        } else if (uiContainer != uiHolder) {
            strWhyNot = m_view.GetLoad(uiContainer).WhyNoRoomFor(costs);
        }
        reasons.push_back({m_view.GetAddr(uiContainer), strWhyNot.empty(), strWhyNot});
    });
}

int CScheduleBoard::Shift(const CResourceTask& task, const CContainerAddr& from,
                          const CContainerAddr& to) {
    const uint32_t uiHeldTask = m_moment ? m_view.FindTask(task.GetTaskId()) : NUMERIC_NONE;
    if (uiHeldTask == NUMERIC_NONE ||
        !(m_view.GetAddr(m_view.GetTask(uiHeldTask).uiContainer) == from) || from == to) {
        return ORVA_PARA_INVALID;
    }
    if (!task.IsSupportShift()) {
        return ORVA_SYS_NO_SUPPORT;
    }
    const TaskCosts costs = CostsOf(task);
    const uint32_t uiTarget = m_view.FindContainer(to);
    if (uiTarget == NUMERIC_NONE || !m_view.IsUsable(uiTarget) ||
        !m_view.GetLoad(uiTarget).HasRoomFor(costs)) {
        return ORVA_FAIL;
    }
    Move(uiHeldTask, costs, uiTarget);
    return ORVA_SUCCEED;
}

std::vector<CTaskMove> CScheduleBoard::Balance(double fThreshold) {
    std::vector<CTaskMove> moves;
    std::vector<uint32_t> movedTasks;
    while (m_moment) {
        const uint32_t uiFullest = m_view.FindFullest();
        if (uiFullest == NUMERIC_NONE) {
            break;
        }
        const uint32_t uiEmptiest = m_view.FindUsable([](uint32_t) { return true; });
        if (m_view.Measure(m_view.GetLoad(uiFullest)) -
                m_view.Measure(m_view.GetLoad(uiEmptiest)) <=
            fThreshold) {
            break;
        }
        const uint32_t uiTask = FindBestMove(uiFullest, uiEmptiest);
        if (uiTask == NUMERIC_NONE) {
            break;
        }
        moves.push_back({{}, m_view.GetAddr(uiFullest), m_view.GetAddr(uiEmptiest)});
        movedTasks.push_back(uiTask);
        m_movedTasks.insert(uiTask);
        Move(uiTask, m_view.GetTask(uiTask).costs, uiEmptiest);
    }
    ReadTasks(movedTasks, moves);
    return moves;
}

uint32_t CScheduleBoard::HolderOf(uint32_t uiHeldTask) const {
    return uiHeldTask != NUMERIC_NONE ? m_view.GetTask(uiHeldTask).uiContainer : NUMERIC_NONE;
}

uint32_t CScheduleBoard::FindBestMove(uint32_t uiFullest, uint32_t uiEmptiest) const {
    const CContainerLoad& fullest = m_view.GetLoad(uiFullest);
    const CContainerLoad& emptiest = m_view.GetLoad(uiEmptiest);
    uint32_t uiBest = NUMERIC_NONE;
    double fSmallestGap = m_view.Measure(fullest) - m_view.Measure(emptiest);
    m_view.VisitHeldTasks(uiFullest, [&](uint32_t uiTask) {
        const CHeldTask& task = m_view.GetTask(uiTask);
        if (!task.bSupportShift || !emptiest.HasRoomFor(task.costs)) {
            return;
        }
        CContainerLoad from(fullest);
        CContainerLoad to(emptiest);
        from.Give(task.costs);
        to.Take(task.costs);
        const double fGap = std::abs(m_view.Measure(from) - m_view.Measure(to));
        // Of moves that are as good the task with the lowest id.
        const bool bBetter =
            fGap < fSmallestGap || (fGap == fSmallestGap && uiBest != NUMERIC_NONE &&
                                    task.id.View() < m_view.GetTask(uiBest).id.View());
        if (bBetter && m_movedTasks.count(uiTask) == 0) {
            fSmallestGap = fGap;
            uiBest = uiTask;
        }
    });
    return uiBest;
}

void CScheduleBoard::ReadTasks(const std::vector<uint32_t>& movedTasks,
                               std::vector<CTaskMove>& moves) const {
    std::map<uint32_t, std::unordered_map<std::string_view, CTaskMove*>> movesFrom;
    for (std::size_t i = 0; i < moves.size(); ++i) {
        const CHeldTask& held = m_view.GetTask(movedTasks[i]);
        movesFrom[held.uiContainer].emplace(held.id.View(), &moves[i]);
    }
    for (auto& [uiContainer, movesById] : movesFrom) {
        for (const CResourceTask& task :
             m_moment->FindContainer(m_view.GetAddr(uiContainer))->GetTaskTable()) {
            const auto it = movesById.find(task.GetTaskId());
            if (it != movesById.end()) {
                it->second->task = task;
                movesById.erase(it);
            }
        }
    }
}

void CScheduleBoard::Move(uint32_t uiHeldTask, const TaskCosts& costs, uint32_t uiTo) {
    if (uiHeldTask != NUMERIC_NONE) {
        const CHeldTask& held = m_view.GetTask(uiHeldTask);
        ChangeLoad(held.uiContainer, [&held](CContainerLoad& load) { load.Give(held.costs); });
    }
    ChangeLoad(uiTo, [&costs](CContainerLoad& load) { load.Take(costs); });
}

template <typename Change>
void CScheduleBoard::ChangeLoad(uint32_t uiContainer, const Change& change) {
    CContainerLoad load = m_view.GetLoad(uiContainer);
    m_formerLoads.try_emplace(uiContainer, load);
    change(load);
    m_view.SetLoad(uiContainer, load);
}
