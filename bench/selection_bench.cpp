#include <benchmark/benchmark.h>

#include <iterator>
#include <list>

#include "cluster.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"

namespace {

constexpr int TASKS = 100;
constexpr int TYPES = 10;

/// Fills the registries with containers of ten types, of which one in twenty is of the first type
/// and online.
void FillTypes(int iContainers) {
    std::list<CNode> nodes;
    ContainerMap containers;
    for (int i = 0; i < iContainers; ++i) {
        CNode node;
        node.SetNodeId(AddressOf(2 * i).GetNodeId());
        nodes.push_back(node);
        CContainer container;
        container.SetNodeId(node.GetNodeId());
        container.SetContainerType("type-" + std::to_string(i % TYPES));
        container.SetOnline(i % (2 * TYPES) == 0);
        containers.emplace(CContainerAddr(node.GetNodeId(), container.GetContainerType()),
                           container);
    }
    CNodeMgr::Instance().Init(nodes);
    StartCluster(containers, TASKS);
}

void Available(benchmark::State& state) {
    FillTypes(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        ContainerMap available;
        CFrameworkCommon::Instance().GetAvailableContainer("type-0", available);
        benchmark::DoNotOptimize(available);
    }
}

/// The same by copying the whole table and every node, and throwing away what does not qualify.
void AvailableByCopy(benchmark::State& state) {
    FillTypes(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        ContainerMap available;
        CContainerMgr::Instance().GetAllContainer(available);
        for (auto it = available.begin(); it != available.end();) {
            CNode node;
            const bool bAvailable = CNodeMgr::Instance().GetNode(it->second.GetNodeId(), node) &&
                                    node.GetMemberStatus() == CLUSTER_MEMBER_NORMAL &&
                                    it->second.GetContainerType() == "type-0" &&
                                    it->second.IsOnline() && it->second.IsProcessRunning();
            it = bAvailable ? std::next(it) : available.erase(it);
        }
        benchmark::DoNotOptimize(available);
    }
}

void CopyContainers(benchmark::State& state) {
    FillContainers(static_cast<int>(state.range(0)), TASKS);
    ContainerMap containers;
    CContainerMgr::Instance().GetAllContainer(containers);
    for (auto _ : state) {
        ContainerMap copy(containers);
        benchmark::DoNotOptimize(copy);
    }
}

constexpr int32_t TOTAL_BANDWIDTH = 1 << 30;

void Report(int iNvr, int32_t iUsed) {
    CContainerMgr::Instance().UpdateHighSpeedNvrInfo("nvr-" + std::to_string(iNvr), TOTAL_BANDWIDTH,
                                                     iUsed, ORVA_STATUS_RUN, 0, ORVA_STATUS_RUN);
}

void HighSpeed(benchmark::State& state) {
    const auto iNvrs = static_cast<int>(state.range(0));
    for (int i = 0; i < iNvrs; ++i) {
        Report(i, i);
    }
    std::string strNvrCode;
    for (auto _ : state) {
        CContainerMgr::Instance().GetHighSpeedNvrCode(strNvrCode, 0);
    }
    // Without free bandwidth the entries go at the next selection.
    for (int i = 0; i < iNvrs; ++i) {
        Report(i, TOTAL_BANDWIDTH);
    }
    CContainerMgr::Instance().GetHighSpeedNvrCode(strNvrCode, 0);
}

/// What a selection cannot do without, on a list that is in order already.
void PassAndSort(benchmark::State& state) {
    std::list<HighSpeedDownLoadInfo> infos;
    for (int i = 0; i < static_cast<int>(state.range(0)); ++i) {
        infos.push_back({"nvr-" + std::to_string(i), 1, TOTAL_BANDWIDTH, i, TOTAL_BANDWIDTH - i});
    }
    for (auto _ : state) {
        int64_t iSum = 0;
        for (const HighSpeedDownLoadInfo& info : infos) {
            iSum += info.tUpdateTime;
        }
        benchmark::DoNotOptimize(iSum);
        infos.sort(SortHighSpeedInfo);
    }
}

BENCHMARK(Available)->Arg(1000)->Arg(10000);
BENCHMARK(AvailableByCopy)->Arg(1000);
BENCHMARK(CopyContainers)->Arg(50);
BENCHMARK(HighSpeed)->Arg(300)->Arg(3000);
BENCHMARK(PassAndSort)->Arg(300);

}  // namespace
