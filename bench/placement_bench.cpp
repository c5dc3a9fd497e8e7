#include <benchmark/benchmark.h>

#include <ctime>
#include <iterator>
#include <string>
#include <vector>

#include "cluster.h"
#include "framework_service/IPlugin.h"
#include "framework_service/container_mgr.h"
#include "framework_service/schedule_mgr.h"

namespace {

constexpr int REPORTS = 10;
constexpr int DEAD_TASKS = 1000;

int Nodes(const benchmark::State& state) {
    return static_cast<int>(state.range(0));
}

int TasksEach(const benchmark::State& state) {
    return static_cast<int>(state.range(1));
}

/// The answer of one decision.
struct CDecision {
    CTaskContainerMap bindTable;
    unsigned long long ullNumber = 0;
    int iRet = 0;
};

CDecision Schedule(const std::list<CResourceTask>& tasks) {
    CDecision decision;
    decision.iRet =
        Recording().TaskSchedule("node", tasks, decision.bindTable, decision.ullNumber, false);
    return decision;
}

/// One decision before the first that is measured, which reads the cluster whole.
void FillAndRead(int iNodes, int iTasks) {
    FillRecorders(iNodes, iTasks);
    Schedule(MakeTasks("first", 1));
}

/// The processor time of this thread in seconds.
double ProcessorTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// Measures the operation alone of what each step takes.
template <typename Prepare, typename Operation>
void MeasureAlone(benchmark::State& state, const Prepare& prepare, const Operation& operation) {
    for (auto _ : state) {
        prepare();
        const double fStart = ProcessorTime();
        operation();
        state.SetIterationTime(ProcessorTime() - fStart);
    }
}

void DecisionNumber(benchmark::State& state) {
    unsigned long long ullNumber = 0;
    for (auto _ : state) {
        CScheduleMgr::Instance().IncreaseDecisionVerNum(ullNumber);
    }
}

void PlaceOne(benchmark::State& state) {
    FillAndRead(Nodes(state), TasksEach(state));
    const std::list<CResourceTask> task = MakeTasks("new", 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Schedule(task));
    }
}

/// The task lists of recorders, each with another task at a place of its own for every round.
class CReports {
public:
    explicit CReports(int iTasks) {
        for (int i = 0; i < REPORTS; ++i) {
            m_tasks.push_back(MakeTasks("task-of-recorder-" + std::to_string(2 * i), iTasks));
        }
    }

    void Send() {
        ++m_iRound;
        for (int i = 0; i < REPORTS; ++i) {
            CContainerMgr::Instance().SetSystemResource(RecorderAddress(2 * i + 1),
                                                        Figures(1 << 20), Figures(m_iRound % 100));
            std::list<CResourceTask>& tasks = m_tasks[static_cast<std::size_t>(i)];
            const auto iPlace = static_cast<std::ptrdiff_t>(
                static_cast<std::size_t>(m_iRound * 7 + i) % tasks.size());
            std::next(tasks.begin(), iPlace)
                ->SetTaskId("new-in-round-" + std::to_string(m_iRound) + "-" + std::to_string(i));
            CContainerMgr::Instance().SetResourceTask(RecorderAddress(2 * i), tasks, 0);
        }
    }

private:
    std::vector<std::list<CResourceTask>> m_tasks;
    int m_iRound = 0;
};

void PlaceAfterReports(benchmark::State& state) {
    FillAndRead(Nodes(state), TasksEach(state));
    CReports reports(TasksEach(state));
    const std::list<CResourceTask> task = MakeTasks("new", 1);
    MeasureAlone(
        state, [&reports] { reports.Send(); }, [&task] { Schedule(task); });
}

void PlaceAtOnce(benchmark::State& state) {
    FillAndRead(Nodes(state), TasksEach(state));
    const std::list<CResourceTask> tasks = MakeTasks("new", 6000);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Schedule(tasks));
    }
}

/// Gives the first recorder a thousand tasks, and takes it down.
std::list<CResourceTask> KillRecorder(int iNodes, int iTasks) {
    FillAndRead(iNodes, iTasks);
    const std::list<CResourceTask> tasks = MakeTasks("dead", DEAD_TASKS);
    CContainerMgr::Instance().SetResourceTask(RecorderAddress(0), tasks, 0);
    Schedule(MakeTasks("new", 1));
    CContainerMgr::Instance().SetContainerOnline(RecorderAddress(0), false);
    return tasks;
}

void DeadRecorderDecided(benchmark::State& state) {
    std::list<CResourceTask> tasks;
    MeasureAlone(
        state, [&] { tasks = KillRecorder(Nodes(state), TasksEach(state)); },
        [&tasks] { benchmark::DoNotOptimize(Schedule(tasks)); });
}

/// NotifyShiftIn for each container that takes some of the tasks.
void Apply(const std::list<CResourceTask>& tasks, const CDecision& decision) {
    std::map<CContainerAddr, std::list<CResourceTask>> shifts;
    CTaskContainerMap unbindTable;
    for (const CResourceTask& task : tasks) {
        shifts[decision.bindTable.at(task.GetTaskId())].push_back(task);
        unbindTable.emplace(task.GetTaskId(), RecorderAddress(0));
    }
    for (const auto& [addr, taskList] : shifts) {
        Recording().NotifyShiftIn(addr, taskList, unbindTable, decision.ullNumber);
    }
}

void DeadRecorderApplied(benchmark::State& state) {
    std::list<CResourceTask> tasks;
    CDecision decision;
    MeasureAlone(
        state,
        [&] {
            tasks = KillRecorder(Nodes(state), TasksEach(state));
            decision = Schedule(tasks);
        },
        [&] { Apply(tasks, decision); });
}

/// One recorder in fifty has room for but twice its tasks, the others for fifty times theirs.
void Balance(benchmark::State& state) {
    FillAndRead(Nodes(state), TasksEach(state));
    for (int i = 0; i < Nodes(state); i += 50) {
        CContainerMgr::Instance().SetSystemResource(
            RecorderAddress(i), Figures(TasksEach(state) * TasksEach(state)), {});
    }
    CDecision decision;
    std::list<CResourceTask> moved;
    CTaskContainerMap unbindTable;
    for (auto _ : state) {
        Recording().LoadBalanceSchedule(moved, unbindTable, decision.bindTable, decision.ullNumber);
    }
    state.counters["moved"] = static_cast<double>(moved.size());
}

BENCHMARK(DecisionNumber);
BENCHMARK(PlaceOne)
    ->Args({300, 2})
    ->Args({300, 200})
    ->Args({3000, 2})
    ->Args({3000, 20})
    ->Args({500, 20})
    ->Args({5000, 20});
BENCHMARK(PlaceAfterReports)->Args({300, 200})->UseManualTime();
BENCHMARK(PlaceAtOnce)->Args({3000, 2});
BENCHMARK(DeadRecorderDecided)->Args({300, 200})->UseManualTime()->Iterations(1);
BENCHMARK(DeadRecorderApplied)->Args({300, 200})->UseManualTime()->Iterations(1);
BENCHMARK(Balance)->Args({300, 200});

}  // namespace
