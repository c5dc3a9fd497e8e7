#include "serve/event_log.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "cluster_engine/event_text.h"

Json::Value ToJson(const CNumberedEvent& numbered) {
    Json::Value json = ToJson(numbered.event);
    json["number"] = Json::UInt64{numbered.ullNumber};
    json["subject"] = EventSubject(numbered.event);
    json["sentence"] = EventSentence(numbered.event);
    return json;
}

uint64_t FirstEventNumber() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

void CEventLog::Take(const CEvent& event) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_events.push_back({++m_ullLast, event});
    if (m_events.size() > m_uiKept) {
        m_events.pop_front();
    }
}

void CEventLog::Publish() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_ullPublished == m_ullLast) {
        return;
    }
    m_ullPublished = m_ullLast;
    for (const auto& [ullListener, wake] : m_listeners) {
        wake();
    }
}

bool CEventLog::IsOfAnotherLifeLocked(uint64_t ullNumber) const {
    return ullNumber != 0 && (ullNumber < m_ullBegin || ullNumber > m_ullPublished);
}

uint64_t CEventLog::Read(uint64_t& ullSince, std::size_t uiMost,
                         std::vector<CNumberedEvent>& events) const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    const bool bOfAnotherLife = IsOfAnotherLifeLocked(ullSince);
    const uint64_t ullFrom = bOfAnotherLife ? m_ullBegin : std::max(ullSince, m_ullBegin);
    ullSince = std::min(std::max(ullFrom, GetGoneLocked()), m_ullPublished);
    const uint64_t ullMissed = ullSince - ullFrom + (bOfAnotherLife ? 1 : 0);
    for (; ullSince < m_ullPublished && events.size() < uiMost; ++ullSince) {
        events.push_back(m_events[ullSince - GetGoneLocked()]);
    }
    return ullMissed;
}

uint64_t CEventLog::GetFirst() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return std::min(GetGoneLocked(), m_ullPublished) + 1;
}

uint64_t CEventLog::GetLast() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_ullPublished;
}

uint64_t CEventLog::Listen(std::function<void()> wake) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_listeners.emplace(++m_ullListener, std::move(wake));
    return m_ullListener;
}

void CEventLog::Forget(uint64_t ullListener) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_listeners.erase(ullListener);
}
