#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "framework_service/schedule_mgr.h"
#include "plugins/model_board.h"
#include "plugins/schedule_fixture.h"

namespace {

/// One of the plug-ins, and by what the model spreads its tasks.
struct CMeasured {
    std::string strName;
    std::string strContainerType;
    model::LoadFunc pLoad;
};

double DiskRatio(const model::CContainerLoad& load) {
    return load.GetRatio(RESOURCE_TYPE_DISK);
}

double TaskCount(const model::CContainerLoad& load) {
    return static_cast<double>(load.GetTaskCount());
}

/// What a decision answers.
struct CAnswer {
    int iRet = ORVA_SUCCEED;
    std::vector<std::pair<std::string, int>> moved;  ///< ids and their disk costs
    std::map<std::string, CContainerAddr> unbound;
    std::map<std::string, CContainerAddr> bound;
    std::map<std::string, int> results;

    bool operator==(const CAnswer& other) const {
        return iRet == other.iRet && moved == other.moved && unbound == other.unbound &&
               bound == other.bound && results == other.results;
    }
};

std::ostream& operator<<(std::ostream& stream, const CAnswer& answer) {
    stream << answer.iRet << ", results " << testing::PrintToString(answer.results) << ", moved "
           << testing::PrintToString(answer.moved);
    for (const auto& [strTaskId, addr] : answer.bound) {
        stream << ", " << strTaskId << " to " << addr.GetNodeId();
    }
    return stream;
}

/// Draws of one seed.
class CDraw {
public:
    explicit CDraw(unsigned int uiSeed) : m_random(uiSeed) {}

    int Below(int iCount) { return static_cast<int>(m_random() % static_cast<unsigned>(iCount)); }
    bool OneIn(int iCount) { return Below(iCount) == 0; }

    /// Ids of several lengths, of which some continue others.
    std::string NodeId() {
        static const char* const IDS[] = {"n1",
                                          "n10",
                                          "n100",
                                          "n2",
                                          "n20",
                                          "n3",
                                          "n30",
                                          "nMero",
                                          "n",
                                          "m0",
                                          "a-node-with-a-long-name"};
        return IDS[Below(static_cast<int>(std::size(IDS)))];
    }

    CResourceTask Task() {
        CTaskShape shape;
        shape.strTaskId = (OneIn(2) ? "t" : "task-with-a-long-name-") + std::to_string(Below(24));
        shape.iDisk = OneIn(12) ? -7 : OneIn(4) ? 0 : 10 * Below(20);
        shape.iNet = OneIn(3) ? Below(30) : 0;
        shape.bSupportShift = !OneIn(5);
        return shape.ToTask();
    }

    std::list<CResourceTask> TaskList(int iMost) {
        std::list<CResourceTask> tasks;
        for (int i = Below(iMost + 1); i > 0; --i) {
            tasks.push_back(Task());
        }
        return tasks;
    }

    CSystemResource Figures(int iDisk, int iNet) {
        CSystemResource figures;
        figures.SetDisk(100 * Below(iDisk / 100 + 1));
        figures.SetNet(10 * Below(iNet / 10 + 1));
        return figures;
    }

private:
    std::mt19937 m_random;
};

class PlacementModel : public CScheduleTest, public testing::WithParamInterface<CMeasured> {
protected:
    PlacementModel() : CScheduleTest(GetParam().strName, GetParam().strContainerType) {}

    /// A container of the plug-in's type under the node's id, or of one that sorts as it does.
    static CContainerAddr DrawAddr(CDraw& draw) {
        const std::string& strType = GetParam().strContainerType;
        return {draw.NodeId(), draw.OneIn(10) ? "0" + strType : strType};
    }

    static CContainer DrawContainer(CDraw& draw, const CContainerAddr& addr) {
        CContainer container;
        container.SetNodeId(draw.OneIn(20) ? draw.NodeId() : addr.GetNodeId());
        container.SetContainerType(draw.OneIn(30) ? "other" : addr.GetContainerType());
        if (!draw.OneIn(6)) {
            container.SetTotalResource(draw.Figures(1000, 100));
            container.SetCurResource(draw.Figures(800, 60));
        }
        container.AddResourceTask(draw.TaskList(5));
        return container;
    }

    static CNode DrawNode(CDraw& draw, const std::string& strNodeId) {
        CNode node;
        node.SetNodeId(strNodeId);
        node.SetMemberStatus(draw.OneIn(6) ? CLUSTER_MEMBER_REMOVED : CLUSTER_MEMBER_NORMAL);
        return node;
    }

    static void ChangeNodes(CDraw& draw) {
        CNodeMgr& mgr = CNodeMgr::Instance();
        const std::string strNodeId = draw.NodeId();
        switch (draw.Below(6)) {
            case 0:
                return mgr.SetMemberStatus({strNodeId}, draw.Below(2));
            case 1:
                return mgr.RemoveNode(strNodeId);
            case 2:
                if (draw.OneIn(8)) {
                    mgr.Init({DrawNode(draw, draw.NodeId()), DrawNode(draw, draw.NodeId())});
                }
                return;
            case 3:
                return mgr.SetSystemResource(strNodeId, {}, {});
            default:
                return mgr.AddNode({{strNodeId, DrawNode(draw, strNodeId)}});
        }
    }

    static void ChangeContainers(CDraw& draw) {
        CContainerMgr& mgr = CContainerMgr::Instance();
        const CContainerAddr addr = DrawAddr(draw);
        switch (draw.Below(14)) {
            case 0:
                mgr.RemoveContainer(addr);
                return;
            case 1:
            case 2:
                mgr.AddContainer({{addr, DrawContainer(draw, addr)}});
                return;
            case 3:
                return mgr.SetContainerOnline(addr, !draw.OneIn(3));
            case 4:
                return mgr.SetContainerFaultShift(addr, draw.OneIn(3));
            case 5:
                return mgr.SetContainerDoingFaultShift(addr, draw.OneIn(3));
            case 6:
                return mgr.SetContainerMemberStatus(addr, draw.OneIn(3) ? 1 : 0);
            case 7:
                return mgr.SetProcessState(addr, {{"p", draw.OneIn(3) ? draw.Below(3) : 0}});
            case 8:
                return mgr.AddResourceTask(addr, draw.TaskList(3));
            case 9:
                return mgr.RemoveResourceTask(addr, {draw.Task().GetTaskId()});
            case 10:
                if (draw.OneIn(16)) {
                    ContainerMap containers;
                    mgr.GetAllContainer(containers);
                    mgr.Init(draw.OneIn(2) ? containers : ContainerMap());
                }
                return;
            case 11:
                return mgr.SetSystemResource(addr, draw.Figures(1000, 100), draw.Figures(800, 60));
            default:
                return mgr.SetResourceTask(addr, ReportOf(draw, addr), 0);
        }
    }

    /// What the container reports: its tasks with one more, one less, or in another order, or
    /// others.
    static std::list<CResourceTask> ReportOf(CDraw& draw, const CContainerAddr& addr) {
        std::list<CResourceTask> tasks;
        CContainerMgr::Instance().GetResTaskList(addr, tasks);
        if (tasks.empty() || draw.OneIn(4)) {
            return draw.TaskList(8);
        }
        const auto it = std::next(tasks.begin(), draw.Below(static_cast<int>(tasks.size())));
        switch (draw.Below(4)) {
            case 0:
                tasks.erase(it);
                break;
            case 1:
                *it = draw.Task();
                break;
            case 2:
                tasks.splice(tasks.begin(), tasks, it, tasks.end());
                break;
            default:
                tasks.insert(it, draw.Task());
        }
        return tasks;
    }

    model::CScheduleBoard Board() const {
        return model::CScheduleBoard(GetParam().strContainerType, GetParam().pLoad);
    }

    CAnswer ModelSchedule(const std::list<CResourceTask>& tasks, bool bReschedule) const {
        model::CScheduleBoard board = Board();
        CAnswer answer;
        for (const CResourceTask& task : tasks) {
            if (answer.bound.count(task.GetTaskId()) != 0) {
                continue;
            }
            if (const auto* pLoad = board.Place(task, bReschedule); pLoad != nullptr) {
                answer.bound.emplace(task.GetTaskId(), pLoad->GetAddr());
            } else {
                answer.iRet = ORVA_FAIL;
            }
        }
        return answer;
    }

    CAnswer RealSchedule(const std::list<CResourceTask>& tasks, bool bReschedule) {
        CAnswer answer;
        answer.iRet =
            Plugin().TaskSchedule("node", tasks, answer.bound, m_ullDecisionVerNum, bReschedule);
        return answer;
    }

    CAnswer ModelShift(const std::list<CResourceTask>& tasks, const CTaskShiftMap& shifts) const {
        model::CScheduleBoard board = Board();
        CAnswer answer;
        for (const auto& [strTaskId, shift] : shifts) {
            int iRet = ORVA_PARA_INVALID;
            for (const CResourceTask& task : tasks) {
                if (task.GetTaskId() == strTaskId) {
                    iRet = board.Shift(task, shift.GetOutContainer(), shift.GetInContainer());
                    break;
                }
            }
            answer.results[strTaskId] = iRet;
            if (iRet == ORVA_SUCCEED) {
                answer.bound.emplace(strTaskId, shift.GetInContainer());
            } else {
                answer.iRet = ORVA_FAIL;
            }
        }
        return answer;
    }

    CAnswer RealShift(const std::list<CResourceTask>& tasks, const CTaskShiftMap& shifts) {
        CAnswer answer;
        answer.iRet = Plugin().ManualTaskSchedule(tasks, shifts, answer.bound, answer.results,
                                                  m_ullDecisionVerNum);
        return answer;
    }

    CAnswer ModelBalance() const {
        model::CScheduleBoard board = Board();
        CAnswer answer;
        const int iThreshold =
            CFrameworkCommon::Instance().GetClusterConfig().GetLoadBalanceDiskThreshold();
        for (const model::CTaskMove& move : board.Balance(iThreshold / 100.0)) {
            answer.moved.emplace_back(move.task.GetTaskId(), move.task.GetDisk());
            answer.unbound.emplace(move.task.GetTaskId(), move.from);
            answer.bound.emplace(move.task.GetTaskId(), move.to);
        }
        return answer;
    }

    CAnswer RealBalance() {
        CAnswer answer;
        std::list<CResourceTask> moved;
        answer.iRet =
            Plugin().LoadBalanceSchedule(moved, answer.unbound, answer.bound, m_ullDecisionVerNum);
        for (const CResourceTask& task : moved) {
            answer.moved.emplace_back(task.GetTaskId(), task.GetDisk());
        }
        return answer;
    }

    /// Shifts, mostly of tasks from where they are.
    static CTaskShiftMap DrawShifts(CDraw& draw, const std::list<CResourceTask>& tasks) {
        CTaskShiftMap shifts;
        for (const CResourceTask& task : tasks) {
            CTaskShiftInfo& shift = shifts[draw.OneIn(10) ? "lost" : task.GetTaskId()];
            shift.SetOutContainer(DrawAddr(draw));
            shift.SetInContainer(DrawAddr(draw));
            std::list<CResourceTask> held;
            CContainerMgr::Instance().GetResTaskList(shift.GetOutContainer(), held);
            if (!held.empty() && !draw.OneIn(3)) {
                shifts[held.front().GetTaskId()] = shift;
            }
        }
        return shifts;
    }

    static void FillCluster(CDraw& draw) {
        CContainerMgr::Instance().Init({});
        CNodeMgr::Instance().Init({});
        for (int i = draw.Below(40); i > 0; --i) {
            const CContainerAddr addr = DrawAddr(draw);
            CNodeMgr::Instance().AddNode({{addr.GetNodeId(), DrawNode(draw, addr.GetNodeId())}});
            CContainerMgr::Instance().AddContainer({{addr, DrawContainer(draw, addr)}});
        }
    }

    static void ChangeCluster(CDraw& draw) {
        for (int i = draw.Below(4); i > 0; --i) {
            draw.OneIn(6) ? ChangeNodes(draw) : ChangeContainers(draw);
        }
    }

    /// Where the task goes; nothing when no container takes it.
    std::optional<CContainerAddr> Chosen(const CResourceTask& task, bool bReschedule) {
        const CAnswer answer = RealSchedule({task}, bReschedule);
        return answer.bound.empty() ? std::nullopt
                                    : std::make_optional(answer.bound.begin()->second);
    }

    /// Where the task goes when a process of every other container has stopped.
    std::optional<CContainerAddr> ChosenAlone(const CResourceTask& task,
                                              const CContainerAddr& alone) {
        CContainerMgr& mgr = CContainerMgr::Instance();
        ContainerMap containers;
        mgr.GetAllContainer(containers);
        containers.erase(alone);
        for (const auto& [addr, container] : containers) {
            mgr.SetProcessState(addr, {{"p", PROCESS_STATE_STOPPED}});
        }
        const std::optional<CContainerAddr> chosen = Chosen(task, false);
        for (const auto& [addr, container] : containers) {
            mgr.SetProcessState(addr, container.GetProcessTable());
        }
        return chosen;
    }

    /// The containers of the plug-in's type.
    static std::vector<CContainerAddr> Addresses() {
        ContainerMap containers;
        CContainerMgr::Instance().GetAllContainer(containers);
        std::vector<CContainerAddr> addresses;
        for (const auto& [addr, container] : containers) {
            if (addr.GetContainerType() == GetParam().strContainerType) {
                addresses.push_back(addr);
            }
        }
        return addresses;
    }

    /// Draws a decision and has both make it: the model's answer, then the plug-in's.
    std::pair<CAnswer, CAnswer> Decide(CDraw& draw) {
        std::list<CResourceTask> tasks = draw.TaskList(6);
        const int iKind = draw.Below(5);
        if (iKind == 0 && GetParam().strName == "recording") {
            return {ModelBalance(), RealBalance()};
        }
        if (iKind == 1) {
            const CTaskShiftMap shifts = DrawShifts(draw, tasks);
            for (const auto& [strTaskId, shift] : shifts) {
                CContainerMgr::Instance().GetResTaskList(shift.GetOutContainer(), tasks);
            }
            return {ModelShift(tasks, shifts), RealShift(tasks, shifts)};
        }
        const bool bReschedule = draw.OneIn(3);
        return {ModelSchedule(tasks, bReschedule), RealSchedule(tasks, bReschedule)};
    }

    /// Carries a decision out, as a service does.
    void Apply(CDraw& draw, const CAnswer& answer) {
        for (const auto& [strTaskId, addr] : answer.bound) {
            CResourceTask task = draw.Task();
            task.SetTaskId(strTaskId);
            Plugin().NotifyShiftIn(addr, {task}, answer.unbound, m_ullDecisionVerNum);
        }
    }
};

TEST_P(PlacementModel, DecidesAsTheModelDoes) {
    constexpr int CLUSTERS = 100;
    constexpr int DECISIONS = 500;
    const unsigned int uiSeed = std::random_device()();
    std::printf("%s: seed %u, %d decisions\n", GetParam().strName.c_str(), uiSeed,
                CLUSTERS * DECISIONS);
    OMAdapter::getInstance().setLogger(nullptr);
    CDraw draw(uiSeed);
    int iBound = 0;
    for (int iCluster = 0; iCluster < CLUSTERS; ++iCluster) {
        FillCluster(draw);
        for (int iDecision = 0; iDecision < DECISIONS; ++iDecision) {
            ChangeCluster(draw);
            const unsigned long long ullBefore = CScheduleMgr::Instance().GetDecisionVerNum();
            const auto [expected, answer] = Decide(draw);
            ASSERT_EQ(answer, expected)
                << "seed " << uiSeed << ", cluster " << iCluster << ", decision " << iDecision;
            ASSERT_EQ(CScheduleMgr::Instance().GetDecisionVerNum(),
                      ullBefore + (answer.bound.empty() ? 0 : 1));
            iBound += static_cast<int>(answer.bound.size());
            if (draw.OneIn(3)) {
                Apply(draw, answer);
            }
        }
    }
    EXPECT_GT(iBound, CLUSTERS * DECISIONS / 2) << "the clusters have room";
}

TEST_P(PlacementModel, GoesWhereTheReasonsAllowItAndNowhereElse) {
    constexpr int CLUSTERS = 50;
    constexpr int TASKS = 40;
    const unsigned int uiSeed = std::random_device()();
    OMAdapter::getInstance().setLogger(nullptr);
    CDraw draw(uiSeed);
    int iPossible = 0;
    int iImpossible = 0;
    for (int iCluster = 0; iCluster < CLUSTERS; ++iCluster) {
        FillCluster(draw);
        for (int iTask = 0; iTask < TASKS; ++iTask) {
            SCOPED_TRACE("seed " + std::to_string(uiSeed) + ", cluster " +
                         std::to_string(iCluster) + ", task " + std::to_string(iTask));
            ChangeCluster(draw);
            const CResourceTask task = draw.Task();
            const std::list<CPlacementReason> reasons = Reasons(task);
            std::vector<CContainerAddr> explained;
            std::vector<CContainerAddr> possible;
            for (const CPlacementReason& reason : reasons) {
                explained.push_back(reason.container);
                if (reason.bPossible) {
                    possible.push_back(reason.container);
                }
                ASSERT_EQ(ChosenAlone(task, reason.container),
                          reason.bPossible ? std::make_optional(reason.container) : std::nullopt)
                    << reason.container.GetNodeId() << ": " << reason.strReason;
            }
            ASSERT_EQ(explained, Addresses());
            const std::optional<CContainerAddr> kept = Chosen(task, false);
            ASSERT_EQ(kept.has_value(), !possible.empty());
            for (const auto& chosen : {kept, Chosen(task, true)}) {
                ASSERT_TRUE(!chosen || std::count(possible.begin(), possible.end(), *chosen) == 1);
            }
            iPossible += static_cast<int>(possible.size());
            iImpossible += static_cast<int>(explained.size() - possible.size());
        }
    }
    EXPECT_GT(iPossible, CLUSTERS * TASKS / 2);
    EXPECT_GT(iImpossible, CLUSTERS * TASKS / 2);
}

INSTANTIATE_TEST_SUITE_P(, PlacementModel,
                         testing::Values(CMeasured{"recording", "MeroRecord", &DiskRatio},
                                         CMeasured{"image", CONTAINER_TYPE_IMG_DEV, &TaskCount}),
                         [](const auto& instance) { return instance.param.strName; });

}  // namespace
