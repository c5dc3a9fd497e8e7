#include "serve/input_queue.h"

#include <algorithm>
#include <ctime>
#include <iterator>
#include <utility>

namespace {

/// A tick takes nobody's room.
std::size_t CountOf(const CInputBatch& batch) {
    return std::holds_alternative<CTick>(batch.inputs.front()) ? 0 : batch.inputs.size();
}

CInputBatch BatchOf(std::vector<InputBody> inputs, OnAnswers onAnswers) {
    CInputBatch batch;
    batch.iTime = std::time(nullptr);
    batch.entered = std::chrono::steady_clock::now();
    batch.inputs = std::move(inputs);
    batch.onAnswers = std::move(onAnswers);
    return batch;
}

}  // namespace

bool IsReport(const InputBody& input) {
    return std::holds_alternative<CNodeReport>(input) ||
           std::holds_alternative<CContainerReport>(input) ||
           std::holds_alternative<CNvrReport>(input);
}

CInputQueue::EPush CInputQueue::Push(std::vector<InputBody> inputs, OnAnswers onAnswers) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_bClosed) {
        return EPush::CLOSED;
    }
    if (inputs.size() > m_uiMaxInputs - std::min(m_uiInputs, m_uiMaxInputs)) {
        m_bRefusedReports =
            m_bRefusedReports || std::any_of(inputs.begin(), inputs.end(), IsReport);
        return EPush::FULL;
    }
    m_uiInputs += inputs.size();
    m_batches.push_back(BatchOf(std::move(inputs), std::move(onAnswers)));
    return EPush::TAKEN;
}

void CInputQueue::HandOver() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (!m_batches.empty()) {
        m_more.notify_one();
    }
}

void CInputQueue::PushUrgent(InputBody input) {
    CInputBatch batch = BatchOf({std::move(input)}, {});
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_urgent.push_back(std::move(batch));
    m_more.notify_one();
}

void CInputQueue::PushTick() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    CTick tick;
    tick.bReportsRefused = std::exchange(m_bRefusedReports, false);
    m_batches.push_back(BatchOf({tick}, {}));
    m_more.notify_one();
}

std::vector<CInputBatch> CInputQueue::Take(std::size_t uiMost,
                                           std::chrono::steady_clock::time_point deadline) {
    std::unique_lock<std::mutex> guard(m_mutex);
    m_more.wait_until(guard, deadline,
                      [this] { return m_bEnded || !m_urgent.empty() || !m_batches.empty(); });
    std::vector<CInputBatch> taken(std::make_move_iterator(m_urgent.begin()),
                                   std::make_move_iterator(m_urgent.end()));
    m_urgent.clear();
    std::size_t uiTaken = taken.size();
    taken.reserve(uiTaken + std::min(uiMost, m_batches.size()));
    while (!m_batches.empty() &&
           (taken.empty() || uiTaken + m_batches.front().inputs.size() <= uiMost)) {
        uiTaken += m_batches.front().inputs.size();
        m_uiInputs -= CountOf(m_batches.front());
        taken.push_back(std::move(m_batches.front()));
        m_batches.pop_front();
    }
    return taken;
}

void CInputQueue::Close() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_bClosed = true;
}

void CInputQueue::End() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_bClosed = true;
    m_bEnded = true;
    m_more.notify_one();
}

bool CInputQueue::IsWorkedOff() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_bEnded && m_urgent.empty() && m_batches.empty();
}

std::size_t CInputQueue::GetLength() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_uiInputs + m_urgent.size();
}
