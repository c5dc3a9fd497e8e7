#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

#include "cluster_engine/event.h"

/// An event and its number, which grows by one from event to event, from 1 at the service's start.
struct CNumberedEvent {
    uint64_t ullNumber = 0;
    CEvent event;
};

/// The fields of the event, its "number", and for people its "subject" and a "sentence".
Json::Value ToJson(const CNumberedEvent& numbered);

/// The last events, for whoever asks later. The engine's thread takes, any thread reads.
class CEventLog : public IEventSink {
public:
    explicit CEventLog(std::size_t uiKept = 10000) : m_uiKept(uiKept) {}

    void Take(const CEvent& event) override;

    /// Tells the listeners of what was taken since: once a commit, not once an event.
    void Publish();

    /// Up to uiMost published events behind the number, the oldest first. The answer: how many
    /// behind it are gone for good. A number from another life of the service, larger than any
    /// here, reads from the beginning, and all count as gone.
    uint64_t Read(uint64_t ullSince, std::size_t uiMost, std::vector<CNumberedEvent>& events) const;

    /// The number of the last published event.
    uint64_t GetLast() const;

    /// Calls wake after each publishing, on the engine's thread, until Forget with what this
    /// returned; no call is running when Forget returns.
    uint64_t Listen(std::function<void()> wake);
    void Forget(uint64_t ullListener);

private:
    const std::size_t m_uiKept;
    mutable std::mutex m_mutex;  ///< guards everything below
    std::deque<CNumberedEvent> m_events;
    uint64_t m_ullLast = 0;       ///< taken
    uint64_t m_ullPublished = 0;  ///< the last that readers see
    uint64_t m_ullListener = 0;
    std::map<uint64_t, std::function<void()>> m_listeners;
};
