#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

#include "cluster_engine/event.h"

/// An event and its number, which grows by one from event to event.
struct CNumberedEvent {
    uint64_t ullNumber = 0;
    CEvent event;
};

/// The fields of the event, its "number", and for people its "subject" and a "sentence".
Json::Value ToJson(const CNumberedEvent& numbered);

/// The number of the first event of a life of the service that begins now: the microsecond since
/// 1970. Numbers of later lives are larger, so that a reader who comes with one of an earlier life
/// is recognised; below 2^53, which is as far as JavaScript counts, until the year 2255.
uint64_t FirstEventNumber();

/// The last events, for whoever asks later. The engine's thread takes, any thread reads.
class CEventLog : public IEventSink {
public:
    explicit CEventLog(uint64_t ullFirst, std::size_t uiKept = 10000)
        : m_ullBegin(ullFirst - 1), m_uiKept(uiKept) {}

    void Take(const CEvent& event) override;

    /// Tells the listeners of what was taken since: once a commit, not once an event.
    void Publish();

    /// Up to uiMost published events behind the number, the oldest first, and moves it to the last
    /// of them. The answer: how many between the number and them are gone for good. 0 reads from
    /// the beginning. So does a number of another life of the service, smaller than any here or,
    /// after the clock went back, larger; what that reader missed there counts as one event.
    uint64_t Read(uint64_t& ullSince, std::size_t uiMost,
                  std::vector<CNumberedEvent>& events) const;

    /// The numbers of the oldest event that is kept and of the last published one, which is the
    /// number before while there is none.
    /// @{
    uint64_t GetFirst() const;
    uint64_t GetLast() const;
    /// @}

    /// Calls wake after each publishing, on the engine's thread, until Forget with what this
    /// returned; no call is running when Forget returns.
    uint64_t Listen(std::function<void()> wake);
    void Forget(uint64_t ullListener);

private:
    bool IsOfAnotherLifeLocked(uint64_t ullNumber) const;

    /// The number of the last event that is gone.
    uint64_t GetGoneLocked() const { return m_ullLast - m_events.size(); }

    const uint64_t m_ullBegin;  ///< the number before the first
    const std::size_t m_uiKept;
    mutable std::mutex m_mutex;  ///< guards everything below
    std::deque<CNumberedEvent> m_events;
    uint64_t m_ullLast = m_ullBegin;       ///< taken
    uint64_t m_ullPublished = m_ullBegin;  ///< the last that readers see
    uint64_t m_ullListener = 0;
    std::map<uint64_t, std::function<void()>> m_listeners;
};
