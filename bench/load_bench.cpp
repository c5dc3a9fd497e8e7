#include <benchmark/benchmark.h>
#include <json/reader.h>
#include <json/writer.h>

#include "cluster.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"

// The documents are read and written by these two classes: they are the measure.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace {

Json::Value Parse(const std::string& strText) {
    Json::Value root;
    Json::Reader().parse(strText, root);
    return root;
}

int Tenths(const benchmark::State& state) {
    return static_cast<int>(state.range(0));
}

/// Measures the operation after one call that pays for the memory that others have left behind.
template <typename Operation>
void Measure(benchmark::State& state, const Operation& operation) {
    operation();
    for (auto _ : state) {
        operation();
    }
}

/// Loads the stored cluster over what was loaded before.
void Load(benchmark::State& state, const std::string& strCloudStorageText) {
    FillContainers(0, 0);
    BenchStore().Put("/CloudBench/Cluster", MakeClusterText(Tenths(state)));
    BenchStore().Put("/CloudBench/CloudStorage", strCloudStorageText);
    Measure(state, [] { CFrameworkCommon::Instance().InitNodeAndContainerFromZK(); });
}

void LoadCluster(benchmark::State& state) {
    Load(state, "{\"CloudStorageSet\":[]}");
}

void LoadBoth(benchmark::State& state) {
    Load(state, MakeCloudStorageText(Tenths(state)));
}

void ParseCluster(benchmark::State& state) {
    const std::string strText = MakeClusterText(Tenths(state));
    Measure(state, [&] { benchmark::DoNotOptimize(Parse(strText)); });
}

void ParseBoth(benchmark::State& state) {
    const std::string strCluster = MakeClusterText(Tenths(state));
    const std::string strCloudStorage = MakeCloudStorageText(Tenths(state));
    Measure(state, [&] {
        benchmark::DoNotOptimize(Parse(strCluster));
        benchmark::DoNotOptimize(Parse(strCloudStorage));
    });
}

void SaveCloudStorage(benchmark::State& state) {
    BenchStore().Put("/CloudBench/Cluster", MakeClusterText(Tenths(state)));
    BenchStore().Put("/CloudBench/CloudStorage", MakeCloudStorageText(Tenths(state)));
    CFrameworkCommon::Instance().InitNodeAndContainerFromZK();
    ContainerMap containers;
    CContainerMgr::Instance().GetAllContainer(containers);
    const CContainerAddr addr(containers.begin()->first.GetNodeId(), CONTAINER_TYPE_CLOUD_STORAGE);
    Measure(state, [&addr] { CContainerMgr::Instance().SaveDataToZK(addr); });
}

void ParseAndWrite(benchmark::State& state) {
    const std::string strText = MakeCloudStorageText(Tenths(state));
    Measure(state, [&] { benchmark::DoNotOptimize(Json::FastWriter().write(Parse(strText))); });
}

BENCHMARK(LoadCluster)->Arg(1)->Arg(10);
BENCHMARK(ParseCluster)->Arg(10);
BENCHMARK(LoadBoth)->Arg(1)->Arg(10);
BENCHMARK(ParseBoth)->Arg(10);
BENCHMARK(SaveCloudStorage)->Arg(1)->Arg(10);
BENCHMARK(ParseAndWrite)->Arg(10);

}  // namespace
