#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "internal/zookeeper_session.h"
#include "reference_host/store.h"

/// The names that a store holds: ephemeral nodes of its session. A thread of its own asks the
/// servers for them again and again. A hold counts as long as the session certainly lives, which is
/// its time-out behind the last question that was answered, and no longer: without an answer it is
/// lost before anybody else can have it. Callable from any thread.
class CZooKeeperHolds : public std::enable_shared_from_this<CZooKeeperHolds> {
public:
    explicit CZooKeeperHolds(std::shared_ptr<CSessionKeeper> pKeeper)
        : m_pKeeper(std::move(pKeeper)) {}

    /// As those of IStore; failures are the client's codes.
    int Hold(const std::string& strPath, const std::string& strText, const HoldLost& onLost,
             CStoreAnswer& holder);
    int Release(const std::string& strPath);
    int FindHolder(const std::string& strPath, CStoreAnswer& holder);

    /// Waits for the thread's end, unless called by it. Behind the keeper's stop.
    void Join();

private:
    using Clock = CSessionKeeper::Clock;

    struct CHold {
        std::uint64_t ullNumber;      ///< another one for every hold
        std::int64_t iSession;        ///< in which it was taken
        Clock::time_point goodUntil;  ///< it counts until then
        HoldLost onLost;
    };

    bool IsHeld(const std::string& strPath);
    int Take(const std::string& strPath, const std::string& strText, CZooKeeperReply& found,
             Clock::time_point& askedAt);
    void Add(const std::string& strPath, std::int64_t iSession, Clock::time_point askedAt,
             const HoldLost& onLost);
    int DeleteInSession(const std::string& strPath, std::int64_t iSession,
                        Clock::time_point deadline);

    void Keep();
    void Confirm(const std::string& strPath);
    void Extend(const std::string& strPath, const CHold& hold, Clock::time_point goodUntil);
    void Lose(const std::string& strPath, const CHold& hold);

    Clock::time_point GoodUntil(Clock::time_point askedAt) const;

    const std::shared_ptr<CSessionKeeper> m_pKeeper;
    std::mutex m_changing;  ///< held by a call that takes or leaves a name; before m_mutex

    std::mutex m_mutex;  ///< guards everything below
    std::map<std::string, CHold> m_mapHold;
    std::uint64_t m_ullNewest = 0;
    std::thread m_thread;  ///< started with the first hold
};
