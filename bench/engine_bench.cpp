#include <benchmark/benchmark.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "cluster.h"
#include "cluster_engine/engine.h"
#include "framework_service/container_mgr.h"
#include "reference_host/host_settings.h"
#include "shell/direct_runner.h"
#include "shell/gate_store.h"

namespace {

/// So many nodes of two containers each find room in the cluster document.
constexpr int NODES = 350;
constexpr int CONTAINERS = 2 * NODES;
constexpr int TASKS_OF_A_CONTAINER = 100;
constexpr const char* TYPES[] = {"MeroRecord", "MeroImgDev"};

class CNoClock : public IStepClock {
public:
    void Set(int64_t /*iSecond*/) override {}
};

class CNoEvents : public IEventSink {
public:
    void Take(const CEvent& /*event*/) override {}
};

CContainerAddr Address(int iContainer) {
    return {"n" + std::to_string(iContainer / 2), TYPES[iContainer % 2]};
}

std::string ClusterText() {
    std::string strNodes;
    for (int i = 0; i < CONTAINERS; i += 2) {
        strNodes += (i == 0 ? "" : ",") + std::string(R"({"Container":[{"ContainerType":")") +
                    TYPES[0] + R"("},{"ContainerType":")" + TYPES[1] +
                    R"("}],"DomainRole":0,"NodeID":")" + Address(i).GetNodeId() +
                    R"(","NodeIP":"","NodeIPType":0,"NodeRole":0,"Status":"Normal"})";
    }
    return R"({"ClusterCode":"","ClusterName":"","ClusterNode":[)" + strNodes +
           R"(],"ClusterRemark":""})";
}

/// A report of so many tasks, as a container sends it.
CInput ReportOf(int iContainer, int iTasks) {
    CContainerReport report;
    report.container = Address(iContainer);
    report.total = CFigures{100, 100, 100, 100, 100};
    report.used = CFigures{1, 2, 3, 4, 5};
    report.tasks.emplace();
    for (const CResourceTask& task : MakeTasks(iTasks)) {
        const CTaskForm form(task);
        CReportedTask& reported = report.tasks->emplace_back();
        reported.strTaskId = std::to_string(iContainer) + '/' + form.strTaskId;
        reported.name = form.strName;
        reported.movable = form.bMovable;
        reported.costs = form.costs;
        reported.privateInfo = form.privateInfo;
    }
    return {1, std::move(report)};
}

/// An engine of 700 containers that have reported.
class CBenchCluster {
public:
    CBenchCluster()
        : m_gate(std::shared_ptr<IStore>(&BenchStore(), [](IStore*) {})),
          m_engine({m_events, m_runner, m_clock, m_gate}, {}) {
        Configure({"Bench", "", PLUGIN_LIB_DIR, ""});
        BenchStore().Put("/CloudBench/Cluster", ClusterText());
        std::string strWhy;
        if (m_engine.Load(1, strWhy) != 0) {
            throw std::runtime_error(strWhy);
        }
        for (int i = 0; i < CONTAINERS; ++i) {
            Apply(ReportOf(i, TASKS_OF_A_CONTAINER));
        }
        CContainerMgr::Instance().GetAllContainer(m_containers);
    }

    /// Puts its containers into the registry, which other benchmarks fill with theirs.
    void Enter() const { CContainerMgr::Instance().Init(m_containers); }

    void Apply(const CInput& input) {
        benchmark::DoNotOptimize(m_engine.Apply(input));
        m_engine.Commit();
    }

private:
    CNoEvents m_events;
    CDirectRunner m_runner;
    CNoClock m_clock;
    CGateStore m_gate;
    CClusterEngine m_engine;
    ContainerMap m_containers;
};

/// A process loads one engine, which stays: to fill it takes longer than what is measured.
CBenchCluster& Cluster() {
    static CBenchCluster& cluster = *new CBenchCluster;
    cluster.Enter();
    return cluster;
}

CInput ReadInput(const std::string& strText) {
    Json::Value json;
    CFieldFault fault;
    CInput input;
    ParseJsonText(strText.data(), strText.data() + strText.size(), json, fault);
    InputFromJson(json, input, fault);
    return input;
}

int Tasks(const benchmark::State& state) {
    return static_cast<int>(state.range(0));
}

/// A report through the engine's door, from its text to the commit.
void EngineReport(benchmark::State& state) {
    CBenchCluster& cluster = Cluster();
    const std::string strText = JsonLine(InputToJson(ReportOf(0, Tasks(state))));
    cluster.Apply(ReadInput(strText));
    for (auto _ : state) {
        cluster.Apply(ReadInput(strText));
    }
}

/// Reading its text, and twice what the library does with it.
void ReadAndReportTwice(benchmark::State& state) {
    Cluster();
    const std::string strText = JsonLine(InputToJson(ReportOf(0, Tasks(state))));
    const std::list<CResourceTask> tasks = MakeTasks(Tasks(state));
    const CContainerAddr addr = Address(0);
    const CSystemResource total = CFigures{100, 100, 100, 100, 100}.ToResource();
    CContainerMgr::Instance().SetResourceTask(addr, tasks, 0);
    for (auto _ : state) {
        benchmark::DoNotOptimize(ReadInput(strText));
        for (int i = 0; i < 2; ++i) {
            CContainerMgr::Instance().SetResourceTask(addr, tasks, 0);
            CContainerMgr::Instance().SetSystemResource(addr, total, total);
        }
    }
}

/// A second in which nothing is to do.
void EngineTick(benchmark::State& state) {
    CBenchCluster& cluster = Cluster();
    const CInput tick{1, CTick()};
    for (auto _ : state) {
        cluster.Apply(tick);
    }
}

BENCHMARK(EngineReport)->Arg(200);
BENCHMARK(ReadAndReportTwice)->Arg(200);
BENCHMARK(EngineTick);

}  // namespace
