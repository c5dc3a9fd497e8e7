#pragma once

#ifndef THREADED
#define THREADED
#endif
#include <zookeeper/zookeeper.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <future>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "internal/commit_operations.h"
#include "internal/store_tree.h"
#include "reference_host/zookeeper_store.h"

/// Whether the same request may succeed on another connection or in another session.
bool IsTransient(int iCode);

struct CZooKeeperReply {
    int iCode = ZCONNECTIONLOSS;
    std::optional<std::string> text;
    std::int64_t iVersion = STORE_VERSION_ABSENT;  ///< the store's
    int iTextVersion = ANY_VERSION;                ///< the servers', a count of the node's texts
    std::int64_t iOwner = 0;    ///< the session with which the node goes; 0 when it stays
    std::int64_t iSession = 0;  ///< the session that the request was sent in; 0 when in none
    std::vector<std::string> children;
    bool bSent = false;
};

/// Keeps a session with the servers: connects, stays at it while no server answers, and opens
/// another when one is lost. Sends requests in it and calls watchers. Callable from any thread.
/// Sends asynchronous requests only: the client's synchronous calls have no deadline of their own.
class CSessionKeeper {
public:
    using Clock = std::chrono::steady_clock;

    /// One handle of the client library; closed with its last user. The state is guarded by the
    /// keeper's mutex.
    struct CSession {
        explicit CSession(CSessionKeeper& owner);
        ~CSession();

        CSessionKeeper& m_owner;
        std::atomic<std::int64_t> m_iId{0};  ///< the servers' number for it, once connected
        bool m_bConnected = false;
        bool m_bExpired = false;
        unsigned int m_uiOnTheirWay = 0;  ///< requests without an answer
        Clock::time_point m_lostSince = Clock::now();
        zhandle_t* m_pHandle;
    };

    /// A request on its way. Owned by the client library from sending to completion, so that a
    /// caller may turn away at its deadline.
    struct CRequest {
        CSession* m_pSession = nullptr;
        std::string m_strWatchedPath;
        StoreWatcher m_pWatcher = nullptr;
        bool m_bWatchesAbsent = false;
        std::vector<zoo_op_result_t> m_results;  ///< one for each operation of a commit
        std::promise<CZooKeeperReply> m_reply;
    };

    /// Hands a request to the client library, with one of the completions below. Returns its code.
    using Send = std::function<int(CSession&, CRequest*)>;

    explicit CSessionKeeper(const CZooKeeperOptions& options) : m_options(options) {}

    /// The threads share the keeper's ownership, so that the last reference to the store may be
    /// dropped by a watcher.
    static void Start(const std::shared_ptr<CSessionKeeper>& pKeeper);

    /// Ends the session. Waits for a watcher that is running, unless called by it.
    void Stop();

    bool IsStopping();

    /// When a call that begins now ends at the latest.
    Clock::time_point Deadline() const { return Clock::now() + m_options.callDeadline; }

    /// Sends a request once, when there is a connection.
    CZooKeeperReply Call(const Send& send, std::unique_ptr<CRequest> pRequest,
                         Clock::time_point deadline);

    /// Sends a request until it is answered. With a watcher, the request sets OnEvent on the path.
    CZooKeeperReply CallUntil(Clock::time_point deadline, const Send& send,
                              const std::string& strPath = {}, StoreWatcher pWatcher = nullptr,
                              bool bWatchesAbsent = false);

    /// Lets the news of a lost connection arrive before the next try. False when there is to be
    /// none.
    bool PauseBeforeRetry(Clock::time_point deadline);

    /// Waits, at most until the session is another one. False when everything is to stop.
    bool PauseInSession(Clock::time_point end);

    /// How long the servers keep a session that they do not hear of.
    std::chrono::milliseconds GetTimeout() const { return std::chrono::milliseconds(m_iTimeout); }

    /// Counts the event of a watched node as one that may have been missed.
    void CountAsMissed(const std::string& strPath, StoreWatcher pWatcher);

    /// The client library's watcher, with the session as its context, and its completions.
    static void OnEvent(zhandle_t* pHandle, int iType, int iState, const char* pszPath,
                        void* pSession);
    static void OnData(int iCode, const char* pszData, int iLength, const Stat* pStat,
                       const void* pRequest);
    static void OnStat(int iCode, const Stat* pStat, const void* pRequest);
    static void OnPath(int iCode, const char* pszPath, const void* pRequest);
    static void OnChildren(int iCode, const String_vector* pNames, const void* pRequest);
    static void OnDone(int iCode, const void* pRequest);

private:
    /// A watcher that is to be called. It holds the session, whose handle it is given.
    struct CFired {
        std::shared_ptr<CSession> m_pSession;
        int m_iType;
        int m_iState;
        std::string m_strPath;
        StoreWatcher m_pWatcher;
    };

    static void Complete(const void* pRequest, CZooKeeperReply reply);

    void OnSessionState(CSession& session, zhandle_t* pHandle, int iState);
    void CountAnsweredLocked(CSession& session);
    int SendCounted(const Send& send, CSession& session, CRequest& request);
    void FireLocked(const std::shared_ptr<CSession>& pSession, int iType, int iState,
                    const std::string& strPath);

    void KeepSession();
    bool IsOverLocked() const;
    void RenewSession(std::unique_lock<std::mutex>& lock);
    void AwaitSessionChange(std::unique_lock<std::mutex>& lock);
    void CallWatchers();

    std::int64_t GetSessionLocked() const;
    bool IsConnectedLocked() const { return m_pSession && m_pSession->m_bConnected; }
    std::shared_ptr<CSession> AwaitConnection(Clock::time_point deadline);

    const CZooKeeperOptions m_options;
    std::atomic<std::int64_t> m_iTimeout{m_options.sessionTimeout.count()};  ///< as agreed
    std::thread m_keeper;
    std::thread m_caller;
    bool m_bOpenFailed = false;  ///< the keeper thread's own

    std::mutex m_mutex;
    std::condition_variable m_changed;   ///< anything below changed
    std::condition_variable m_answered;  ///< a session has no request on its way any more
    bool m_bStopping = false;
    std::shared_ptr<CSession> m_pSession;
    CWatchTable m_watches;
    std::set<std::string> m_setMissed;  ///< those watched whose event may have been missed
    std::list<CFired> m_fired;          ///< to be called
};
