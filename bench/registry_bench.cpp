#include <benchmark/benchmark.h>

#include <ace/Guard_T.h>

#include <map>
#include <vector>

#include "cluster.h"
#include "common_service/thread_mutex.h"
#include "framework_service/container_mgr.h"

namespace {

constexpr int CONTAINERS = 600;
constexpr int TASKS = 100;

int Size(const benchmark::State& state) {
    return static_cast<int>(state.range(0));
}

void GetAllContainer(benchmark::State& state) {
    FillContainers(Size(state), TASKS);
    for (auto _ : state) {
        ContainerMap containers;
        CContainerMgr::Instance().GetAllContainer(containers);
        benchmark::DoNotOptimize(containers);
    }
}

void PlainDeepCopy(benchmark::State& state) {
    const auto containers = MakePlainContainers(Size(state), TASKS);
    for (auto _ : state) {
        auto copy = containers;
        benchmark::DoNotOptimize(copy);
    }
}

/// The order of addresses as the concatenation that it stands for.
struct ByConcatenation {
    bool operator()(const CContainerAddr& left, const CContainerAddr& right) const {
        return left.GetNodeId() + left.GetContainerType() <
               right.GetNodeId() + right.GetContainerType();
    }
};

template <typename Table>
void LookUpAll(benchmark::State& state) {
    Table table;
    std::vector<CContainerAddr> addrs;
    for (int i = 0; i < Size(state); ++i) {
        addrs.push_back(AddressOf(i));
        table.emplace(AddressOf(i), i);
    }
    std::size_t uiNext = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(table.find(addrs[uiNext]));
        uiNext = (uiNext + 7) % addrs.size();
    }
}

void LookUp(benchmark::State& state) {
    LookUpAll<std::map<CContainerAddr, int>>(state);
}

void LookUpBuilt(benchmark::State& state) {
    LookUpAll<std::map<CContainerAddr, int, ByConcatenation>>(state);
}

void StatusReport(benchmark::State& state) {
    FillContainers(Size(state), 0);
    std::vector<CContainerAddr> addrs;
    for (int i = 0; i < Size(state); ++i) {
        addrs.push_back(AddressOf(i));
    }
    CSystemResource total;
    total.SetDisk(1000);
    CSystemResource current;
    std::size_t uiNext = 0;
    for (auto _ : state) {
        current.SetDisk(static_cast<int32_t>(uiNext));
        CContainerMgr::Instance().SetSystemResource(addrs[uiNext], total, current);
        uiNext = (uiNext + 7) % addrs.size();
    }
}

void LockAndLookUp(benchmark::State& state) {
    std::map<std::string, CContainer> table;
    std::vector<std::string> keys;
    for (int i = 0; i < Size(state); ++i) {
        keys.push_back(AddressOf(i).GetNodeId() + AddressOf(i).GetContainerType());
        table.emplace(keys.back(), CContainer());
    }
    HALD_Recursive_Thread_Mutex mutex;
    std::size_t uiNext = 0;
    for (auto _ : state) {
        const ACE_Guard<HALD_Recursive_Thread_Mutex> guard(mutex);
        benchmark::DoNotOptimize(table.find(keys[uiNext]));
        uiNext = (uiNext + 7) % keys.size();
    }
}

void TaskReport(benchmark::State& state) {
    FillContainers(CONTAINERS, 0);
    const std::list<CResourceTask> tasks = MakeTasks(Size(state));
    for (auto _ : state) {
        CContainerMgr::Instance().SetResourceTask(AddressOf(0), tasks, 0);
    }
}

void TaskHandOver(benchmark::State& state) {
    const std::list<CResourceTask> tasks = MakeTasks(Size(state));
    HALD_Recursive_Thread_Mutex mutex;
    std::list<CResourceTask> held;
    for (auto _ : state) {
        std::list<CResourceTask> copy(tasks);
        const ACE_Guard<HALD_Recursive_Thread_Mutex> guard(mutex);
        held.swap(copy);
    }
}

BENCHMARK(GetAllContainer)->Arg(600)->Arg(6000);
BENCHMARK(PlainDeepCopy)->Arg(600);
BENCHMARK(LookUp)->Arg(600)->Arg(6000);
BENCHMARK(LookUpBuilt)->Arg(600);
BENCHMARK(StatusReport)->Arg(1000)->Arg(10000);
BENCHMARK(LockAndLookUp)->Arg(1000);
BENCHMARK(TaskReport)->Arg(100)->Arg(1000);
BENCHMARK(TaskHandOver)->Arg(100);

}  // namespace
