#include "serve/event_log.h"

#include <algorithm>
#include <utility>

#include "cluster_engine/event_text.h"

Json::Value ToJson(const CNumberedEvent& numbered) {
    Json::Value json = ToJson(numbered.event);
    json["number"] = Json::UInt64{numbered.ullNumber};
    json["subject"] = EventSubject(numbered.event);
    json["sentence"] = EventSentence(numbered.event);
    return json;
}

void CEventLog::Take(const CEvent& event) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_events.push_back({++m_ullLast, event});
    if (m_events.size() > m_uiKept) {
        m_events.pop_front();
    }
}

void CEventLog::Publish() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_ullPublished == m_ullLast) {
        return;
    }
    m_ullPublished = m_ullLast;
    for (const auto& [ullListener, wake] : m_listeners) {
        wake();
    }
}

uint64_t CEventLog::Read(uint64_t ullSince, std::size_t uiMost,
                         std::vector<CNumberedEvent>& events) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const uint64_t ullGone = m_ullLast - m_events.size();  // the number of the last that is gone
    const uint64_t ullFrom = ullSince > m_ullPublished ? 0 : ullSince;
    const uint64_t ullFirst = std::min(std::max(ullFrom, ullGone), m_ullPublished);
    for (uint64_t ull = ullFirst; ull < m_ullPublished && events.size() < uiMost; ++ull) {
        events.push_back(m_events[ull - ullGone]);
    }
    return ullFirst - ullFrom;
}

uint64_t CEventLog::GetLast() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_ullPublished;
}

uint64_t CEventLog::Listen(std::function<void()> wake) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_listeners.emplace(++m_ullListener, std::move(wake));
    return m_ullListener;
}

void CEventLog::Forget(uint64_t ullListener) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_listeners.erase(ullListener);
}
