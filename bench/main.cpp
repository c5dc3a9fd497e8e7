#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <thread>
#include <vector>

#include "cluster.h"
#include "comparison.h"
#include "report_wait.h"
#include "service_bench.h"
#include "view_memory.h"

namespace {

constexpr char RESULT_FILE[] = "bench.json";

/// Prints each benchmark as usual and keeps the medians.
class CMedianReporter : public benchmark::ConsoleReporter {
public:
    explicit CMedianReporter(Medians& medians) : ConsoleReporter(OO_Tabular), m_medians(medians) {}

    void ReportRuns(const std::vector<Run>& reports) override {
        for (const Run& run : reports) {
            if (run.aggregate_name == "median") {
                m_medians[run.run_name.str()] = run.GetAdjustedRealTime();
                m_medians[run.run_name.str() + "/cpu"] = run.GetAdjustedCPUTime();
            }
        }
        ConsoleReporter::ReportRuns(reports);
    }

private:
    Medians& m_medians;
};

}  // namespace

int main(int argc, char** argv) {
    // Both sides of a ratio are measured by turns, so that a slow moment hits both.
    std::vector<std::string> args = {
        argv[0], "--benchmark_repetitions=21", "--benchmark_min_time=0.05",
        "--benchmark_enable_random_interleaving=true", "--benchmark_report_aggregates_only=true"};
    args.insert(args.end(), argv + 1, argv + argc);
    std::vector<char*> argPointers;
    for (std::string& strArg : args) {
        argPointers.push_back(strArg.data());
    }
    int iArgs = static_cast<int>(argPointers.size());
    benchmark::Initialize(&iArgs, argPointers.data());
    if (benchmark::ReportUnrecognizedArguments(iArgs, argPointers.data())) {
        return 2;
    }

    // A process of one thread would be spared the atomics of locks and reference counts.
    std::thread([] {}).join();
    Medians medians;
    medians["Millisecond"] = 1e6;  // the other side of what has a limit of its own
    try {
        MeasureService(medians);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "the service cannot be measured: %s\n", exception.what());
        return 2;
    }
    InstallBenchHost();
    MeasureReportWait(medians);
    MeasureViewMemory(medians);
    CMedianReporter reporter(medians);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const bool bAllMet = PrintComparisons(medians);
    WriteComparisons(medians, RESULT_FILE);
    return bAllMet ? 0 : 1;
}
