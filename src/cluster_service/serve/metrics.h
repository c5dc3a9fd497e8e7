#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "cluster_engine/answer.h"
#include "cluster_engine/event.h"
#include "cluster_engine/input.h"
#include "serve/cluster_view.h"

/// What the service counts and measures of itself, for Prometheus; every name begins with
/// "cluster_". Every operation may be called on any thread. Those that each report or event needs
/// look nothing up and take no lock but a histogram's own.
class CServiceMetrics {
public:
    using Duration = std::chrono::steady_clock::duration;

    CServiceMetrics();
    ~CServiceMetrics();
    CServiceMetrics(const CServiceMetrics&) = delete;
    CServiceMetrics& operator=(const CServiceMetrics&) = delete;

    /// An input was answered: it waited so long in the queue, and took so long from entering it to
    /// its answer.
    void CountInput(const InputBody& input, const CAnswer& answer, Duration waited, Duration took);

    /// Inputs and requests that were refused before the engine: "queue_full", "foreign_host", ….
    void CountRefused(const std::string& strReason, std::size_t uiInputs = 1);

    void CountEvent(const CEvent& event);

    /// A call of a plug-in came back, or was given up when its time was over.
    void CountPluginCall(const std::string& strPlugin, const std::string& strOperation,
                         Duration took, bool bBack);

    /// A call of the store on that path, none for several, came to that code.
    void CountStoreCall(const char* pszOperation, const std::string& strPath, Duration took,
                        int iCode);

    void CountCommit(Duration took, int iCode);

    /// The whole text of /metrics; what a view and the queue show is read now.
    std::string Text(const CClusterView& view, std::size_t uiQueueLength) const;

private:
    class CImpl;
    std::unique_ptr<CImpl> m_pImpl;
};
