#include "serve/worker_runner.h"

#include <algorithm>
#include <condition_variable>
#include <ctime>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

using Clock = std::chrono::steady_clock;

/// A call, its time and whether it is over.
class CWorkerRunner::CCall {
public:
    CCall(std::shared_ptr<std::function<void()>> pWork, int64_t iSecond)
        : m_pWork(std::move(pWork)), m_iSecond(iSecond) {}

    /// On the worker's thread, where nothing of the call is left when it is done.
    void Make(IStepClock& clock) {
        clock.Set(m_iSecond);
        (*m_pWork)();
        m_pWork.reset();
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_bDone = true;
        m_changed.notify_one();
    }

    /// Waits until it is over, or has used up the limit outside the store.
    bool Await(Clock::duration limit) {
        std::unique_lock<std::mutex> guard(m_mutex);
        while (!m_bDone) {
            const Clock::duration left = limit - UsedLocked();
            if (left <= Clock::duration::zero()) {
                return false;
            }
            if (m_stay) {
                m_bAwaitsEndOfStay = true;
                m_changed.wait(guard);
                m_bAwaitsEndOfStay = false;
            } else {
                m_changed.wait_for(guard, left);
            }
        }
        return true;
    }

    bool IsDone() {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return m_bDone;
    }

    /// Nobody is woken: who waits for the limit finds the stay when that would be over.
    void BeginStay() {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_stay = Clock::now();
    }

    void EndStay() {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_stays += Clock::now() - *m_stay;
        m_stay.reset();
        if (m_bAwaitsEndOfStay) {
            m_changed.notify_one();
        }
    }

private:
    Clock::duration UsedLocked() const {
        const Clock::time_point until = m_stay ? *m_stay : Clock::now();
        return until - m_begun - m_stays;
    }

    std::shared_ptr<std::function<void()>> m_pWork;  ///< on the worker's thread
    const int64_t m_iSecond;
    const Clock::time_point m_begun = Clock::now();
    std::mutex m_mutex;  ///< guards everything below
    std::condition_variable m_changed;
    bool m_bDone = false;
    std::optional<Clock::time_point> m_stay;  ///< since when it is in the store
    Clock::duration m_stays{};                ///< how long it was there before
    bool m_bAwaitsEndOfStay = false;
};

namespace {

/// The call that runs on this thread.
thread_local CWorkerRunner::CCall* g_pCall = nullptr;

}  // namespace

/// A thread that makes one call after the other. It owns what it works with, since nobody waits
/// for one that is abandoned.
class CWorkerRunner::CWorker {
public:
    static std::shared_ptr<CWorker> Start(IStepClock& clock) {
        auto pWorker = std::make_shared<CWorker>();
        std::thread([pWorker, &clock] { pWorker->Run(clock); }).detach();
        return pWorker;
    }

    void Give(std::shared_ptr<CCall> pCall) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_pCall = std::move(pCall);
        m_changed.notify_one();
    }

    /// No call comes any more: it ends after the one that it is at.
    void Release() {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_bReleased = true;
        m_changed.notify_one();
    }

private:
    void Run(IStepClock& clock) {
        while (const std::shared_ptr<CCall> pCall = Await()) {
            g_pCall = pCall.get();
            pCall->Make(clock);
            g_pCall = nullptr;
        }
    }

    std::shared_ptr<CCall> Await() {
        std::unique_lock<std::mutex> guard(m_mutex);
        m_changed.wait(guard, [this] { return m_pCall != nullptr || m_bReleased; });
        return std::exchange(m_pCall, nullptr);
    }

    std::mutex m_mutex;  ///< guards everything below
    std::condition_variable m_changed;
    std::shared_ptr<CCall> m_pCall;
    bool m_bReleased = false;
};

CStoreStay::CStoreStay() {
    if (g_pCall != nullptr) {
        g_pCall->BeginStay();
    }
}

CStoreStay::~CStoreStay() {
    if (g_pCall != nullptr) {
        g_pCall->EndStay();
    }
}

CWorkerRunner::CWorkerRunner(IStepClock& clock, Duration limit, OnCall onCall)
    : m_clock(clock), m_limit(limit), m_onCall(std::move(onCall)) {}

CWorkerRunner::~CWorkerRunner() {
    if (m_pWorker != nullptr) {
        m_pWorker->Release();
    }
}

bool CWorkerRunner::Run(const std::string& strPlugin, const std::string& strOperation,
                        std::shared_ptr<std::function<void()>> pCall) {
    if (m_pWorker == nullptr) {
        m_pWorker = CWorker::Start(m_clock);
    }
    const Clock::time_point begun = Clock::now();
    const auto pRun = std::make_shared<CCall>(std::move(pCall), std::time(nullptr));
    m_pWorker->Give(pRun);
    const bool bBack = pRun->Await(m_limit);
    if (!bBack) {
        m_late[strPlugin] = pRun;
        m_pWorker->Release();
        m_pWorker.reset();
    }
    m_onCall(strPlugin, strOperation, Clock::now() - begun, bBack);
    return bBack;
}

bool CWorkerRunner::IsBusy(const std::string& strPlugin) {
    const auto it = m_late.find(strPlugin);
    return it != m_late.end() && !it->second->IsDone();
}

bool CWorkerRunner::IsAnyBusy() {
    return std::any_of(m_late.begin(), m_late.end(),
                       [](const auto& entry) { return !entry.second->IsDone(); });
}
