#include "serve/metrics.h"

#include <prometheus/counter.h>
#include <prometheus/histogram.h>
#include <prometheus/registry.h>
#include <prometheus/text_serializer.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <utility>
#include <variant>
#include <vector>

#include "reference_host/store.h"
#include "serve/document_name.h"
#include "serve/view_metrics.h"

namespace {

using prometheus::Counter;
using prometheus::Family;
using prometheus::Histogram;

constexpr char PSZ_RESULT[] = "result";
constexpr char PSZ_REASON[] = "reason";
constexpr char PSZ_OPERATION[] = "operation";

constexpr std::size_t INPUT_KINDS = std::variant_size_v<InputBody>;
constexpr std::size_t FAULTS = static_cast<std::size_t>(EFault::DOCUMENT_FULL) + 1;

const char* const RESULTS[] = {"done", "in_part", "refused"};

std::size_t ResultOf(const CAnswer& answer) {
    if (answer.eFault != EFault::NONE) {
        return 2;
    }
    return answer.bInPart ? 1 : 0;
}

/// A dry run and an explanation tell of tasks too, but nothing becomes of these.
bool ChangesTasks(const InputBody& input) {
    return !std::holds_alternative<CDryRun>(input) && !std::holds_alternative<CExplain>(input);
}

/// From a tenth of a millisecond, which a report takes, to ten seconds.
const Histogram::BucketBoundaries& Seconds() {
    static const Histogram::BucketBoundaries boundaries{0.0001, 0.0005, 0.001, 0.005, 0.01, 0.05,
                                                        0.1,    0.5,    1,     5,     10};
    return boundaries;
}

double InSeconds(CServiceMetrics::Duration duration) {
    return std::chrono::duration<double>(duration).count();
}

template <std::size_t... KINDS>
constexpr std::array<const char*, INPUT_KINDS> KindNames(std::index_sequence<KINDS...> /*kinds*/) {
    return {std::variant_alternative_t<KINDS, InputBody>::NAME...};
}

constexpr std::array<const char*, INPUT_KINDS> KIND_NAMES =
    KindNames(std::make_index_sequence<INPUT_KINDS>());

/// A counter for each of some names, found by the place of its name.
class CCounters {
public:
    template <typename Names>
    CCounters(Family<Counter>& family, const char* pszLabel, const Names& names,
              prometheus::Labels labels = {}) {
        for (const char* const pszName : names) {
            labels[pszLabel] = pszName;
            m_counters.push_back(&family.Add(labels));
        }
    }

    template <typename Place>
    Counter& operator[](Place place) const {
        return *m_counters[static_cast<std::size_t>(place)];
    }

private:
    std::vector<Counter*> m_counters;
};

Family<Counter>& AddCounter(prometheus::Registry& registry, const char* pszName,
                            const char* pszHelp) {
    return prometheus::BuildCounter().Name(pszName).Help(pszHelp).Register(registry);
}

Family<Histogram>& AddHistogram(prometheus::Registry& registry, const char* pszName,
                                const char* pszHelp) {
    return prometheus::BuildHistogram().Name(pszName).Help(pszHelp).Register(registry);
}

/// What is counted of one kind of input.
struct CInputMetrics {
    CCounters results;
    Histogram& took;
};

std::vector<const char*> FaultNames() {
    std::vector<const char*> names;
    for (std::size_t i = 0; i < FAULTS; ++i) {
        names.push_back(TextOf(static_cast<EFault>(i)).pszName);
    }
    return names;
}

/// How many tasks the event tells of.
double TasksOf(const CEvent& event) {
    return event.uiTasks != 0 ? event.uiTasks : event.strTaskId.empty() ? 0 : 1;
}

enum class EPlacedBy { JOB, REPORT, SHIFT, BALANCE };
const char* const PLACED_BY[] = {"job", "report", "shift", "balance"};

enum class EShiftOutcome { ALL_MOVED, LEFT_OVER, GIVEN_UP };
const char* const SHIFT_OUTCOMES[] = {"all_moved", "left_over", "given_up"};

}  // namespace

class CServiceMetrics::CImpl {
public:
    CImpl();

    void CountTasks(const CAnswer& answer);

    prometheus::Registry registry;
    std::vector<CInputMetrics> inputs;  ///< by kind
    Histogram& waited;
    Family<Counter>& refusals;
    CCounters faults;
    CCounters taskResults;
    Family<Counter>& taskRefusals;
    CCounters events;
    CCounters placements;
    Counter& shiftsStarted;
    CCounters shifts;
    Family<Histogram>& pluginCalls;
    Family<Counter>& lateCalls;
    Family<Histogram>& storeCalls;
    Family<Counter>& storeFailures;
    Histogram& commits;
    Counter& commitFailures;
};

CServiceMetrics::CImpl::CImpl()
    : waited(AddHistogram(registry, "cluster_input_wait_seconds",
                          "Time that an input waited in the queue.")
                 .Add({}, Seconds())),
      refusals(
          AddCounter(registry, "cluster_refusals_total", "Inputs and requests that were refused.")),
      faults(refusals, PSZ_REASON, FaultNames()),
      taskResults(
          AddCounter(registry, "cluster_task_results_total", "What became of the tasks of inputs."),
          PSZ_RESULT, CEnumNames<ETaskResult>::NAMES),
      taskRefusals(AddCounter(registry, "cluster_task_refusals_total", "Tasks that were refused.")),
      events(AddCounter(registry, "cluster_events_total", "What happened."), "event",
             CEnumNames<EEvent>::NAMES),
      placements(
          AddCounter(registry, "cluster_placements_total", "Tasks that were put into a container."),
          "by", PLACED_BY),
      shiftsStarted(
          AddCounter(registry, "cluster_shifts_started_total", "Shifts that were started.")
              .Add({})),
      shifts(AddCounter(registry, "cluster_shifts_total",
                        "Shifts that came to an end or were given up."),
             "outcome", SHIFT_OUTCOMES),
      pluginCalls(AddHistogram(registry, "cluster_plugin_call_duration_seconds",
                               "Time of a plug-in's call, its store calls included.")),
      lateCalls(AddCounter(registry, "cluster_plugin_calls_late_total",
                           "Calls of a plug-in that did not come back in time.")),
      storeCalls(
          AddHistogram(registry, "cluster_store_call_duration_seconds", "Time of a store call.")),
      storeFailures(AddCounter(registry, "cluster_store_call_failures_total",
                               "Store calls that came to a failure.")),
      commits(AddHistogram(registry, "cluster_commit_duration_seconds",
                           "Time of a commit of what inputs changed.")
                  .Add({}, Seconds())),
      commitFailures(
          AddCounter(registry, "cluster_commit_failures_total", "Commits that the store failed.")
              .Add({})) {
    Family<Counter>& results =
        AddCounter(registry, "cluster_inputs_total", "Inputs that were answered.");
    Family<Histogram>& took =
        AddHistogram(registry, "cluster_input_duration_seconds",
                     "Time of an input from entering the queue to its answer.");
    for (const char* const pszKind : KIND_NAMES) {
        const prometheus::Labels labels{{"kind", pszKind}};
        inputs.push_back(
            {CCounters(results, PSZ_RESULT, RESULTS, labels), took.Add(labels, Seconds())});
    }
}

void CServiceMetrics::CImpl::CountTasks(const CAnswer& answer) {
    for (const CTaskResult& task : answer.tasks) {
        taskResults[task.eResult].Increment();
        if (task.eResult == ETaskResult::REFUSED) {
            taskRefusals.Add({{PSZ_REASON, task.strFault}}).Increment();
        }
    }
}

CServiceMetrics::CServiceMetrics() : m_pImpl(std::make_unique<CImpl>()) {}

CServiceMetrics::~CServiceMetrics() = default;

void CServiceMetrics::CountInput(const InputBody& input, const CAnswer& answer, Duration waited,
                                 Duration took) {
    const CInputMetrics& metrics = m_pImpl->inputs[input.index()];
    metrics.results[ResultOf(answer)].Increment();
    metrics.took.Observe(InSeconds(took));
    m_pImpl->waited.Observe(InSeconds(waited));
    if (answer.eFault != EFault::NONE) {
        m_pImpl->faults[answer.eFault].Increment();
    }
    if (ChangesTasks(input)) {
        m_pImpl->CountTasks(answer);
    }
}

void CServiceMetrics::CountRefused(const std::string& strReason, std::size_t uiInputs) {
    m_pImpl->refusals.Add({{PSZ_REASON, strReason}}).Increment(static_cast<double>(uiInputs));
}

void CServiceMetrics::CountEvent(const CEvent& event) {
    m_pImpl->events[event.eEvent].Increment();
    switch (event.eEvent) {
        case EEvent::PLACED:
            return m_pImpl->placements[EPlacedBy::JOB].Increment(TasksOf(event));
        case EEvent::ADOPTED:
            return m_pImpl->placements[EPlacedBy::REPORT].Increment(TasksOf(event));
        case EEvent::SHIFTED:
            return m_pImpl->placements[EPlacedBy::SHIFT].Increment(TasksOf(event));
        case EEvent::BALANCED:
            return m_pImpl->placements[EPlacedBy::BALANCE].Increment(TasksOf(event));
        case EEvent::SHIFT_STARTED:
            return m_pImpl->shiftsStarted.Increment();
        case EEvent::SHIFT_ENDED:
            return m_pImpl
                ->shifts[event.uiTasks == 0 ? EShiftOutcome::ALL_MOVED : EShiftOutcome::LEFT_OVER]
                .Increment();
        case EEvent::SHIFT_GIVEN_UP:
            return m_pImpl->shifts[EShiftOutcome::GIVEN_UP].Increment();
        default:
            return;
    }
}

void CServiceMetrics::CountPluginCall(const std::string& strPlugin, const std::string& strOperation,
                                      Duration took, bool bBack) {
    const prometheus::Labels labels{{"plugin", strPlugin}, {PSZ_OPERATION, strOperation}};
    m_pImpl->pluginCalls.Add(labels, Seconds()).Observe(InSeconds(took));
    if (!bBack) {
        m_pImpl->lateCalls.Add(labels).Increment();
    }
}

void CServiceMetrics::CountStoreCall(const char* pszOperation, const std::string& strPath,
                                     Duration took, int iCode) {
    const std::string strDocument = strPath.empty() ? "several" : DocumentName(strPath);
    const prometheus::Labels labels{{PSZ_OPERATION, pszOperation}, {"document", strDocument}};
    m_pImpl->storeCalls.Add(labels, Seconds()).Observe(InSeconds(took));
    if (iCode != 0 && iCode != STORE_NODE_ABSENT) {
        m_pImpl->storeFailures.Add(labels).Increment();
    }
}

void CServiceMetrics::CountCommit(Duration took, int iCode) {
    m_pImpl->commits.Observe(InSeconds(took));
    if (iCode != 0) {
        m_pImpl->commitFailures.Increment();
    }
}

std::string CServiceMetrics::Text(const CClusterView& view, std::size_t uiQueueLength) const {
    std::vector<prometheus::MetricFamily> families = ViewMetrics(view, uiQueueLength);
    std::vector<prometheus::MetricFamily> counted = m_pImpl->registry.Collect();
    families.insert(families.end(), std::make_move_iterator(counted.begin()),
                    std::make_move_iterator(counted.end()));
    return prometheus::TextSerializer().Serialize(families);
}
