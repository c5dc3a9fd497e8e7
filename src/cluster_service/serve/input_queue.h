#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

#include "cluster_engine/answer.h"
#include "cluster_engine/input.h"

/// Told once, on the engine's thread, after the commit that decides: the answers in the order of
/// the inputs.
using OnAnswers = std::function<void(std::vector<CAnswer> answers)>;

/// Inputs that came together, with whoever waits for their answers.
struct CInputBatch {
    int64_t iTime = 0;  ///< when it entered the queue
    std::chrono::steady_clock::time_point entered;
    std::vector<InputBody> inputs;
    OnAnswers onAnswers;
};

/// Is it what an agent tells of itself?
bool IsReport(const InputBody& input);

/// What waits for the engine's thread. Any thread pushes, the engine's takes.
class CInputQueue {
public:
    enum class EPush {
        TAKEN,
        FULL,    ///< so many inputs wait that these are refused
        CLOSED,  ///< no input is taken: the service is stopping, or its hold is lost
    };

    explicit CInputQueue(std::size_t uiMaxInputs) : m_uiMaxInputs(uiMaxInputs) {}

    /// A batch, of one input at least, is taken whole or not at all; onAnswers of a refused one is
    /// never called. One with more inputs than may wait at all is always refused. Take hears of it
    /// by HandOver, at its deadline or with the next tick.
    EPush Push(std::vector<InputBody> inputs, OnAnswers onAnswers);

    /// Wakes Take for what was pushed: once for many, when there is nothing more to push at once.
    void HandOver();

    /// For what must be heard however full the queue is: that a document has changed.
    void PushUrgent(InputBody input);

    /// A second has passed: told in its place among the inputs, however full the queue is, and with
    /// whether reports were refused since the one before.
    void PushTick();

    /// All that waits, up to uiMost inputs or one batch, the urgent first. Waits until the deadline
    /// for something; empty then.
    std::vector<CInputBatch> Take(std::size_t uiMost,
                                  std::chrono::steady_clock::time_point deadline);

    /// Takes no input any more; what waits stays.
    void Close();

    /// Closes, and Take waits no more.
    void End();

    /// Has it ended, and was all taken that came before?
    bool IsWorkedOff() const;

    /// How many inputs wait.
    std::size_t GetLength() const;

private:
    const std::size_t m_uiMaxInputs;
    mutable std::mutex m_mutex;  ///< guards everything below
    std::condition_variable m_more;
    std::deque<CInputBatch> m_urgent;
    std::deque<CInputBatch> m_batches;
    std::size_t m_uiInputs = 0;  ///< within m_batches, but for ticks
    bool m_bClosed = false;
    bool m_bEnded = false;
    bool m_bRefusedReports = false;
};
