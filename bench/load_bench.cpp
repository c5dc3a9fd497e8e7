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

/// Loads the stored cluster, with or without its cloud storage, over what it loaded before.
void Load(benchmark::State& state, bool bCloudStorage) {
    FillContainers(0, 0);
    BenchStore().Put("/CloudBench/CloudStorage",
                     bCloudStorage ? MakeCloudStorageText() : "{\"CloudStorageSet\":[]}");
    for (auto _ : state) {
        benchmark::DoNotOptimize(CFrameworkCommon::Instance().InitNodeAndContainerFromZK());
    }
}

void LoadCluster(benchmark::State& state) {
    Load(state, false);
}

void LoadBoth(benchmark::State& state) {
    Load(state, true);
}

void ParseCluster(benchmark::State& state) {
    const std::string strText = MakeClusterText();
    for (auto _ : state) {
        benchmark::DoNotOptimize(Parse(strText));
    }
}

void ParseBoth(benchmark::State& state) {
    const std::string strCluster = MakeClusterText();
    const std::string strCloudStorage = MakeCloudStorageText();
    for (auto _ : state) {
        benchmark::DoNotOptimize(Parse(strCluster));
        benchmark::DoNotOptimize(Parse(strCloudStorage));
    }
}

void SaveCloudStorage(benchmark::State& state) {
    BenchStore().Put("/CloudBench/CloudStorage", MakeCloudStorageText());
    CFrameworkCommon::Instance().InitNodeAndContainerFromZK();
    ContainerMap containers;
    CContainerMgr::Instance().GetAllContainer(containers);
    const CContainerAddr addr(containers.begin()->first.GetNodeId(), CONTAINER_TYPE_CLOUD_STORAGE);
    for (auto _ : state) {
        CContainerMgr::Instance().SaveDataToZK(addr);
    }
}

void ParseAndWrite(benchmark::State& state) {
    const std::string strText = MakeCloudStorageText();
    for (auto _ : state) {
        benchmark::DoNotOptimize(Json::FastWriter().write(Parse(strText)));
    }
}

BENCHMARK(LoadCluster)->Arg(1);
BENCHMARK(ParseCluster)->Arg(1);
BENCHMARK(LoadBoth)->Arg(1);
BENCHMARK(ParseBoth)->Arg(1);
BENCHMARK(SaveCloudStorage)->Arg(1);
BENCHMARK(ParseAndWrite)->Arg(1);

}  // namespace
