#include "reference_host/zookeeper_store.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <functional>
#include <future>
#include <iterator>
#include <list>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

#include "common_service/tarn_def.h"
#include "internal/commit_operations.h"
#include "internal/store_tree.h"
#include "operation_log/operation_log.h"

using namespace operation_log;

namespace {

using Clock = std::chrono::steady_clock;

/// A server drops the connection on a packet of 1 MiB; the rest is for the request's other fields.
constexpr std::size_t MAX_PATH_AND_TEXT = (1U << 20U) - 1024U;
constexpr std::chrono::milliseconds RETRY_PAUSE{20};
constexpr std::chrono::milliseconds REOPEN_PAUSE{1000};

constexpr char PSZ_SESSION[] = "keep store session";
constexpr char PSZ_READ[] = "read store node";
constexpr char PSZ_WRITE[] = "write store node";
constexpr char PSZ_LIST[] = "list store node";
constexpr char PSZ_COMMIT[] = "commit to store";

/// Whether the same request may succeed on another connection or in another session.
bool IsTransient(int iCode) {
    switch (iCode) {
        case ZCONNECTIONLOSS:
        case ZOPERATIONTIMEOUT:
        case ZINVALIDSTATE:
        case ZSESSIONEXPIRED:
        case ZSESSIONMOVED:
        case ZCLOSING:
        case ZTHROTTLEDOP:
            return true;
        default:
            return false;
    }
}

/// Whether the servers' answer says that they did nothing. Any other failure leaves that open once
/// a request was sent.
bool IsRefusal(int iCode) {
    switch (iCode) {
        case ZSESSIONEXPIRED:
        case ZCLOSING:
            return false;
        case ZBADARGUMENTS:
        case ZUNIMPLEMENTED:
            return true;
        default:
            return iCode < ZAPIERROR;
    }
}

struct CReply {
    int iCode = ZCONNECTIONLOSS;
    std::optional<std::string> text;
    std::int64_t iVersion = STORE_VERSION_ABSENT;  ///< the store's
    int iTextVersion = ANY_VERSION;                ///< the servers', a count of the node's texts
    std::vector<std::string> children;
    bool bSent = false;
};

CReply ReplyOf(int iCode, const Stat* pStat = nullptr) {
    CReply reply;
    reply.iCode = iCode;
    if (iCode == ZOK && pStat != nullptr) {
        reply.iVersion = pStat->mzxid;
        reply.iTextVersion = pStat->version;
    }
    return reply;
}

}  // namespace

/// Sends asynchronous requests only: the client's synchronous calls have no deadline of their own.
class __attribute__((visibility("hidden"))) CZooKeeperStore::CClient {
public:
    explicit CClient(const CZooKeeperOptions& options) : m_options(options) {}

    /// The threads share the client's ownership, so that the last reference to the store may be
    /// dropped by a watcher.
    static void Start(const std::shared_ptr<CClient>& pClient);
    void Stop();

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer);
    int Write(const std::string& strPath, const std::string& strText);
    int List(const std::string& strPath, std::vector<std::string>& children);
    int Commit(const std::vector<CStoreCondition>& conditions,
               const std::vector<CStoreText>& texts);

private:
    /// One handle of the client library; closed with its last user. The state is guarded by the
    /// client's mutex.
    struct CSession {
        explicit CSession(CClient& owner);
        ~CSession();

        CClient& m_owner;
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
        std::promise<CReply> m_reply;
    };

    /// A watcher that is to be called. It holds the session, whose handle it is given.
    struct CFired {
        std::shared_ptr<CSession> m_pSession;
        int m_iType;
        int m_iState;
        std::string m_strPath;
        StoreWatcher m_pWatcher;
    };

    using Send = std::function<int(CSession&, CRequest*)>;

    static void OnEvent(zhandle_t* pHandle, int iType, int iState, const char* pszPath,
                        void* pSession);
    static void Complete(const void* pRequest, CReply reply);
    static void OnData(int iCode, const char* pszData, int iLength, const Stat* pStat,
                       const void* pRequest);
    static void OnStat(int iCode, const Stat* pStat, const void* pRequest);
    static void OnPath(int iCode, const char* pszPath, const void* pRequest);
    static void OnChildren(int iCode, const String_vector* pNames, const void* pRequest);
    static void OnDone(int iCode, const void* pRequest);

    void OnSessionState(CSession& session, int iState);
    void CountAnsweredLocked(CSession& session);
    int SendCounted(const Send& send, CSession& session, CRequest& request);
    void FireLocked(const std::shared_ptr<CSession>& pSession, int iType, int iState,
                    const std::string& strPath);
    void CountAsMissed(const std::string& strPath, StoreWatcher pWatcher);

    void KeepSession();
    bool IsOverLocked() const;
    void RenewSession(std::unique_lock<std::mutex>& lock);
    void AwaitSessionChange(std::unique_lock<std::mutex>& lock);
    void CallWatchers();

    bool IsConnectedLocked() const { return m_pSession && m_pSession->m_bConnected; }
    std::shared_ptr<CSession> AwaitConnection(Clock::time_point deadline);
    bool PauseBeforeRetry(Clock::time_point deadline);
    CReply Call(const Send& send, std::unique_ptr<CRequest> pRequest, Clock::time_point deadline);
    CReply CallUntil(Clock::time_point deadline, const Send& send, const std::string& strPath = {},
                     StoreWatcher pWatcher = nullptr, bool bWatchesAbsent = false);

    CReply ReadNode(const std::string& strPath, StoreWatcher pWatcher, Clock::time_point deadline);
    int WriteNode(const std::string& strPath, const std::string& strText,
                  Clock::time_point deadline);
    int CreateNode(const std::string& strPath, const std::string* pText,
                   Clock::time_point deadline);

    int LookAt(const std::string& strPath, Clock::time_point deadline, CSeenNodes& seen);
    int LookUpwards(const std::string& strPath, Clock::time_point deadline, CSeenNodes& seen);
    int LookAtAll(const std::vector<CStoreCondition>& conditions,
                  const std::vector<CStoreText>& texts, Clock::time_point deadline,
                  CSeenNodes& seen);
    CReply SendCommit(const std::vector<zoo_op_t>& operations, Clock::time_point deadline);
    int CommitUntil(Clock::time_point deadline, const std::vector<CStoreCondition>& conditions,
                    const std::vector<CStoreText>& texts);
    int FindOutcome(const std::vector<CStoreText>& texts, const CSeenNodes& before,
                    Clock::time_point deadline);

    Clock::time_point Deadline() const { return Clock::now() + m_options.callDeadline; }

    const CZooKeeperOptions m_options;
    std::thread m_keeper;
    std::thread m_caller;
    bool m_bOpenFailed = false;  ///< the keeper's own

    std::mutex m_mutex;
    std::condition_variable m_changed;   ///< anything below changed
    std::condition_variable m_answered;  ///< a session has no request on its way any more
    bool m_bStopping = false;
    std::shared_ptr<CSession> m_pSession;
    CWatchTable m_watches;
    std::set<std::string> m_setMissed;  ///< those watched whose event may have been missed
    std::list<CFired> m_fired;          ///< to be called
};

CZooKeeperStore::CClient::CSession::CSession(CClient& owner)
    : m_owner(owner),
      m_pHandle(zookeeper_init(owner.m_options.strServers.c_str(), OnEvent,
                               static_cast<int>(owner.m_options.sessionTimeout.count()), nullptr,
                               this, ZOO_NO_LOG_CLIENTENV)) {
    if (m_pHandle != nullptr) {
        // By default the client resolves every name at every turn of its loop.
        zoo_set_servers_resolution_delay(m_pHandle, -1);
    }
}

/// The client library leaks requests that fail while it closes. It fails them by itself after two
/// thirds of the session's time-out.
CZooKeeperStore::CClient::CSession::~CSession() {
    if (m_pHandle != nullptr) {
        std::unique_lock<std::mutex> lock(m_owner.m_mutex);
        m_owner.m_answered.wait_for(lock, m_owner.m_options.sessionTimeout,
                                    [this] { return m_uiOnTheirWay == 0; });
        lock.unlock();
        zookeeper_close(m_pHandle);
    }
}

void CZooKeeperStore::CClient::Start(const std::shared_ptr<CClient>& pClient) {
    pClient->m_keeper = std::thread([pClient] { pClient->KeepSession(); });
    pClient->m_caller = std::thread([pClient] { pClient->CallWatchers(); });
}

void CZooKeeperStore::CClient::Stop() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_bStopping = true;
        m_changed.notify_all();
    }
    m_keeper.join();
    std::shared_ptr<CSession> pSession;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        pSession.swap(m_pSession);
    }
    pSession.reset();
    if (m_caller.get_id() == std::this_thread::get_id()) {
        m_caller.detach();
    } else {
        m_caller.join();
    }
}

void CZooKeeperStore::CClient::OnEvent(zhandle_t*, int iType, int iState, const char* pszPath,
                                       void* pSession) {
    CSession& session = *static_cast<CSession*>(pSession);
    CClient& client = session.m_owner;
    if (iType == ZOO_SESSION_EVENT) {
        client.OnSessionState(session, iState);
        return;
    }
    std::lock_guard<std::mutex> lock(client.m_mutex);
    client.FireLocked(client.m_pSession.get() == &session ? client.m_pSession : nullptr, iType,
                      iState, pszPath);
}

/// Also called once for every watch on each change of the session: only a change counts.
void CZooKeeperStore::CClient::OnSessionState(CSession& session, int iState) {
    const bool bConnected = iState == ZOO_CONNECTED_STATE;
    const bool bExpired = iState == ZOO_EXPIRED_SESSION_STATE || iState == ZOO_AUTH_FAILED_STATE;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (session.m_bConnected == bConnected && session.m_bExpired == bExpired) {
            return;
        }
        if (session.m_bConnected) {
            session.m_lostSince = Clock::now();
        }
        session.m_bConnected = bConnected;
        session.m_bExpired = bExpired;
        m_changed.notify_all();
    }
    if (bExpired) {
        LogWarning(PSZ_SESSION, "session lost, opening another");
    } else if (!bConnected) {
        LogWarning(PSZ_SESSION, "connection lost, seeking another");
    }
}

void CZooKeeperStore::CClient::FireLocked(const std::shared_ptr<CSession>& pSession, int iType,
                                          int iState, const std::string& strPath) {
    m_setMissed.erase(strPath);
    for (const StoreWatcher pWatcher : m_watches.Take(strPath)) {
        m_fired.push_back({pSession, iType, iState, strPath, pWatcher});
    }
    m_changed.notify_all();
}

void CZooKeeperStore::CClient::CountAsMissed(const std::string& strPath, StoreWatcher pWatcher) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_watches.Set(strPath, pWatcher);
    m_setMissed.insert(strPath);
    m_changed.notify_all();
}

void CZooKeeperStore::CClient::KeepSession() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_bStopping) {
        if (IsOverLocked()) {
            RenewSession(lock);
        } else if (IsConnectedLocked() && !m_setMissed.empty()) {
            FireLocked(m_pSession, ZOO_CHANGED_EVENT, ZOO_CONNECTED_STATE,
                       std::string(*m_setMissed.begin()));
        } else {
            AwaitSessionChange(lock);
        }
    }
}

/// A session out of touch for longer than its time-out is over without being told so: a server
/// that was restored from an older state never lets it in again, and names may resolve anew.
bool CZooKeeperStore::CClient::IsOverLocked() const {
    return !m_pSession || m_pSession->m_bExpired ||
           (!m_pSession->m_bConnected &&
            Clock::now() >= m_pSession->m_lostSince + m_options.sessionTimeout);
}

void CZooKeeperStore::CClient::RenewSession(std::unique_lock<std::mutex>& lock) {
    std::shared_ptr<CSession> pSession = std::move(m_pSession);
    m_setMissed = m_watches.GetPaths();
    lock.unlock();
    pSession.reset();
    pSession = std::make_shared<CSession>(*this);
    const bool bFailed = pSession->m_pHandle == nullptr;
    if (bFailed && !m_bOpenFailed) {
        LogFailure(PSZ_SESSION, errno, "list of servers is malformed or does not resolve");
    }
    m_bOpenFailed = bFailed;
    lock.lock();
    if (bFailed) {
        m_changed.wait_for(lock, REOPEN_PAUSE, [this] { return m_bStopping; });
        return;
    }
    m_pSession = std::move(pSession);
    m_changed.notify_all();
}

void CZooKeeperStore::CClient::AwaitSessionChange(std::unique_lock<std::mutex>& lock) {
    if (m_pSession->m_bConnected) {
        m_changed.wait(lock);
    } else {
        m_changed.wait_until(lock, m_pSession->m_lostSince + m_options.sessionTimeout);
    }
}

/// Watchers are not called on the client library's thread, which would wait for itself when they
/// call the store.
void CZooKeeperStore::CClient::CallWatchers() {
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_bStopping || !m_fired.empty(); });
        std::list<CFired> called;
        called.splice(called.end(), m_fired, m_fired.begin(),
                      m_bStopping ? m_fired.end() : std::next(m_fired.begin()));
        const bool bStopping = m_bStopping;
        lock.unlock();
        if (bStopping) {
            return;
        }
        const CFired& fired = called.front();
        zhandle_t* const pHandle = fired.m_pSession ? fired.m_pSession->m_pHandle : nullptr;
        fired.m_pWatcher(pHandle, fired.m_iType, fired.m_iState, fired.m_strPath.c_str(), nullptr);
        called.clear();
        lock.lock();
    }
}

std::shared_ptr<CZooKeeperStore::CClient::CSession> CZooKeeperStore::CClient::AwaitConnection(
    Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_until(lock, deadline, [this] { return m_bStopping || IsConnectedLocked(); });
    return !m_bStopping && IsConnectedLocked() ? m_pSession : nullptr;
}

/// Lets the news of a lost connection arrive before the next try. False when there is to be none.
bool CZooKeeperStore::CClient::PauseBeforeRetry(Clock::time_point deadline) {
    const Clock::time_point end = Clock::now() + RETRY_PAUSE;
    if (end >= deadline) {
        return false;
    }
    std::unique_lock<std::mutex> lock(m_mutex);
    return !m_changed.wait_until(lock, end, [this] { return m_bStopping; });
}

/// On the client library's thread, in the order of the server's answers and events: a watch is
/// known here before its event can arrive.
void CZooKeeperStore::CClient::Complete(const void* pRequest, CReply reply) {
    const std::unique_ptr<CRequest> pOwned(
        const_cast<CRequest*>(static_cast<const CRequest*>(pRequest)));
    const bool bWatchStands =
        reply.iCode == ZOK || (reply.iCode == ZNONODE && pOwned->m_bWatchesAbsent);
    CClient& client = pOwned->m_pSession->m_owner;
    {
        std::lock_guard<std::mutex> lock(client.m_mutex);
        if (bWatchStands) {
            client.m_watches.Set(pOwned->m_strWatchedPath, pOwned->m_pWatcher);
        }
        client.CountAnsweredLocked(*pOwned->m_pSession);
    }
    pOwned->m_reply.set_value(std::move(reply));
}

void CZooKeeperStore::CClient::OnData(int iCode, const char* pszData, int iLength,
                                      const Stat* pStat, const void* pRequest) {
    CReply reply = ReplyOf(iCode, pStat);
    if (iCode == ZOK && iLength != NO_DATA) {
        reply.text.emplace(pszData, static_cast<std::size_t>(iLength));
    }
    Complete(pRequest, std::move(reply));
}

void CZooKeeperStore::CClient::OnStat(int iCode, const Stat* pStat, const void* pRequest) {
    Complete(pRequest, ReplyOf(iCode, pStat));
}

void CZooKeeperStore::CClient::OnPath(int iCode, const char*, const void* pRequest) {
    Complete(pRequest, ReplyOf(iCode));
}

void CZooKeeperStore::CClient::OnChildren(int iCode, const String_vector* pNames,
                                          const void* pRequest) {
    CReply reply = ReplyOf(iCode);
    if (iCode == ZOK && pNames != nullptr) {
        reply.children.assign(pNames->data, pNames->data + pNames->count);
    }
    Complete(pRequest, std::move(reply));
}

void CZooKeeperStore::CClient::OnDone(int iCode, const void* pRequest) {
    Complete(pRequest, ReplyOf(iCode));
}

void CZooKeeperStore::CClient::CountAnsweredLocked(CSession& session) {
    if (--session.m_uiOnTheirWay == 0) {
        m_answered.notify_all();
    }
}

int CZooKeeperStore::CClient::SendCounted(const Send& send, CSession& session, CRequest& request) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        ++session.m_uiOnTheirWay;
    }
    request.m_pSession = &session;
    const int iCode = send(session, &request);
    if (iCode != ZOK) {
        std::lock_guard<std::mutex> lock(m_mutex);
        CountAnsweredLocked(session);
    }
    return iCode;
}

CReply CZooKeeperStore::CClient::Call(const Send& send, std::unique_ptr<CRequest> pRequest,
                                      Clock::time_point deadline) {
    std::future<CReply> reply = pRequest->m_reply.get_future();
    {
        const std::shared_ptr<CSession> pSession = AwaitConnection(deadline);
        if (!pSession) {
            return CReply{};
        }
        const int iCode = SendCounted(send, *pSession, *pRequest);
        if (iCode != ZOK) {
            return ReplyOf(iCode);
        }
        static_cast<void>(pRequest.release());
    }
    CReply answer = reply.wait_until(deadline) == std::future_status::ready
                        ? reply.get()
                        : ReplyOf(ZOPERATIONTIMEOUT);
    answer.bSent = true;
    return answer;
}

/// Every request may be sent again: reading changes nothing, a set is unconditional, and a node
/// that the lost try created is found to exist.
CReply CZooKeeperStore::CClient::CallUntil(Clock::time_point deadline, const Send& send,
                                           const std::string& strPath, StoreWatcher pWatcher,
                                           bool bWatchesAbsent) {
    CReply reply;
    do {
        auto pRequest = std::unique_ptr<CRequest>(
            new CRequest{nullptr, strPath, pWatcher, bWatchesAbsent, {}, std::promise<CReply>()});
        reply = Call(send, std::move(pRequest), deadline);
    } while (IsTransient(reply.iCode) && PauseBeforeRetry(deadline));
    return reply;
}

/// A watch set by a get needs a node; between the get that missed it and the watch on its absence
/// it may have come.
CReply CZooKeeperStore::CClient::ReadNode(const std::string& strPath, StoreWatcher pWatcher,
                                          Clock::time_point deadline) {
    const watcher_fn pOnEvent = pWatcher != nullptr ? OnEvent : nullptr;
    const Send get = [&](CSession& session, CRequest* pRequest) {
        return zoo_awget(session.m_pHandle, strPath.c_str(), pOnEvent, &session, OnData, pRequest);
    };
    const Send watchAbsent = [&](CSession& session, CRequest* pRequest) {
        return zoo_awexists(session.m_pHandle, strPath.c_str(), pOnEvent, &session, OnStat,
                            pRequest);
    };
    for (;;) {
        CReply reply = CallUntil(deadline, get, strPath, pWatcher);
        if (reply.iCode != ZNONODE || pWatcher == nullptr) {
            return reply;
        }
        reply = CallUntil(deadline, watchAbsent, strPath, pWatcher, true);
        if (reply.iCode != ZOK) {
            return reply;
        }
    }
}

int CZooKeeperStore::CClient::Read(const std::string& strPath, StoreWatcher pWatcher,
                                   CStoreAnswer& answer) {
    CReply reply = ReadNode(strPath, pWatcher, Deadline());
    if (reply.iCode == ZOK || reply.iCode == ZNONODE) {
        answer.bExists = reply.iCode == ZOK;
        answer.text = std::move(reply.text);
        answer.iVersion = reply.iVersion;
        return ORVA_SUCCEED;
    }
    if (pWatcher != nullptr && IsTransient(reply.iCode)) {
        CountAsMissed(strPath, pWatcher);
    }
    return LogFailure(PSZ_READ, reply.iCode, "%s: %s", strPath.c_str(), zerror(reply.iCode));
}

int CZooKeeperStore::CClient::CreateNode(const std::string& strPath, const std::string* pText,
                                         Clock::time_point deadline) {
    const char* const pszData = pText != nullptr ? pText->data() : nullptr;
    const int iLength = pText != nullptr ? static_cast<int>(pText->size()) : NO_DATA;
    const Send create = [&](CSession& session, CRequest* pRequest) {
        return zoo_acreate(session.m_pHandle, strPath.c_str(), pszData, iLength,
                           &ZOO_OPEN_ACL_UNSAFE, ZOO_PERSISTENT, OnPath, pRequest);
    };
    const int iCode = CallUntil(deadline, create).iCode;
    const std::size_t ulParentLen = strPath.rfind('/');
    if (iCode != ZNONODE || ulParentLen == 0) {
        return iCode;
    }
    const int iParentCode = CreateNode(strPath.substr(0, ulParentLen), nullptr, deadline);
    if (iParentCode != ZOK && iParentCode != ZNODEEXISTS) {
        return iParentCode;
    }
    return CallUntil(deadline, create).iCode;
}

int CZooKeeperStore::CClient::WriteNode(const std::string& strPath, const std::string& strText,
                                        Clock::time_point deadline) {
    const Send set = [&](CSession& session, CRequest* pRequest) {
        return zoo_aset(session.m_pHandle, strPath.c_str(), strText.data(),
                        static_cast<int>(strText.size()), ANY_VERSION, OnStat, pRequest);
    };
    for (;;) {
        const int iSetCode = CallUntil(deadline, set).iCode;
        if (iSetCode != ZNONODE) {
            return iSetCode;
        }
        const int iCreateCode = CreateNode(strPath, &strText, deadline);
        if (iCreateCode != ZNODEEXISTS) {
            return iCreateCode;
        }
    }
}

int CZooKeeperStore::CClient::Write(const std::string& strPath, const std::string& strText) {
    if (strPath.size() + strText.size() > MAX_PATH_AND_TEXT) {
        return LogFailure(PSZ_WRITE, ORVA_PARA_INVALID, "%s: %zu bytes are too many",
                          strPath.c_str(), strText.size());
    }
    const int iCode = WriteNode(strPath, strText, Deadline());
    if (iCode != ZOK) {
        LogFailure(PSZ_WRITE, iCode, "%s: %s", strPath.c_str(), zerror(iCode));
    }
    return iCode;
}

int CZooKeeperStore::CClient::List(const std::string& strPath, std::vector<std::string>& children) {
    const Send list = [&](CSession& session, CRequest* pRequest) {
        return zoo_aget_children(session.m_pHandle, strPath.c_str(), 0, OnChildren, pRequest);
    };
    CReply reply = CallUntil(Deadline(), list);
    if (reply.iCode == ZNONODE) {
        return STORE_NODE_ABSENT;
    }
    if (reply.iCode != ZOK) {
        return LogFailure(PSZ_LIST, reply.iCode, "%s: %s", strPath.c_str(), zerror(reply.iCode));
    }
    std::sort(reply.children.begin(), reply.children.end());
    children = std::move(reply.children);
    return ORVA_SUCCEED;
}

int CZooKeeperStore::CClient::LookAt(const std::string& strPath, Clock::time_point deadline,
                                     CSeenNodes& seen) {
    if (seen.count(strPath) != 0) {
        return ZOK;
    }
    const Send look = [&](CSession& session, CRequest* pRequest) {
        return zoo_awexists(session.m_pHandle, strPath.c_str(), nullptr, nullptr, OnStat, pRequest);
    };
    const CReply reply = CallUntil(deadline, look);
    const bool bKnown = reply.iCode == ZOK || reply.iCode == ZNONODE;
    if (bKnown) {
        seen[strPath] = {reply.iVersion, reply.iTextVersion};
    }
    return bKnown ? static_cast<int>(ZOK) : reply.iCode;
}

/// At the node, and from a missing one up to one that is there.
int CZooKeeperStore::CClient::LookUpwards(const std::string& strPath, Clock::time_point deadline,
                                          CSeenNodes& seen) {
    std::vector<std::string> paths = GetParentPaths(strPath);
    paths.push_back(strPath);
    for (auto it = paths.rbegin(); it != paths.rend(); ++it) {
        const int iCode = LookAt(*it, deadline, seen);
        if (iCode != ZOK || seen.at(*it).iVersion != STORE_VERSION_ABSENT) {
            return iCode;
        }
    }
    return ZOK;
}

/// STORE_CONDITION_FAILED when a condition does not hold.
int CZooKeeperStore::CClient::LookAtAll(const std::vector<CStoreCondition>& conditions,
                                        const std::vector<CStoreText>& texts,
                                        Clock::time_point deadline, CSeenNodes& seen) {
    for (const CStoreCondition& condition : conditions) {
        const int iCode = LookUpwards(condition.strPath, deadline, seen);
        if (iCode != ZOK) {
            return iCode;
        }
        if (seen.at(condition.strPath).iVersion != condition.iVersion) {
            return STORE_CONDITION_FAILED;
        }
    }
    for (const CStoreText& text : texts) {
        const int iCode = LookUpwards(text.strPath, deadline, seen);
        if (iCode != ZOK) {
            return iCode;
        }
    }
    return ZOK;
}

CReply CZooKeeperStore::CClient::SendCommit(const std::vector<zoo_op_t>& operations,
                                            Clock::time_point deadline) {
    const Send commit = [&](CSession& session, CRequest* pRequest) {
        return zoo_amulti(session.m_pHandle, static_cast<int>(operations.size()), operations.data(),
                          pRequest->m_results.data(), OnDone, pRequest);
    };
    auto pRequest = std::make_unique<CRequest>();
    pRequest->m_results.resize(operations.size());
    return Call(commit, std::move(pRequest), deadline);
}

/// A commit that met other nodes than were looked at is computed anew; one that is refused for the
/// same nodes again is refused for good.
int CZooKeeperStore::CClient::CommitUntil(Clock::time_point deadline,
                                          const std::vector<CStoreCondition>& conditions,
                                          const std::vector<CStoreText>& texts) {
    int iRefusal = ZOK;
    for (CSeenNodes before;;) {
        CSeenNodes seen;
        const int iCode = LookAtAll(conditions, texts, deadline, seen);
        if (iCode != ZOK) {
            return iCode;
        }
        if (iRefusal != ZOK && before == seen) {
            return iRefusal;
        }
        const CReply reply = SendCommit(CCommitOperations(conditions, texts, seen).Get(), deadline);
        if (reply.iCode == ZOK) {
            return ZOK;
        }
        if (reply.bSent && !IsRefusal(reply.iCode)) {
            return texts.empty() ? reply.iCode : FindOutcome(texts, seen, deadline);
        }
        if (IsTransient(reply.iCode)) {
            if (!PauseBeforeRetry(deadline)) {
                return reply.iCode;
            }
            continue;
        }
        iRefusal = reply.iCode;
        before = std::move(seen);
    }
}

/// After a commit whose answer was lost. It may still be under way when its texts are not there:
/// only their presence decides.
int CZooKeeperStore::CClient::FindOutcome(const std::vector<CStoreText>& texts,
                                          const CSeenNodes& before, Clock::time_point deadline) {
    const Send catchUp = [&](CSession& session, CRequest* pRequest) {
        return zoo_async(session.m_pHandle, texts.front().strPath.c_str(), OnPath, pRequest);
    };
    if (CallUntil(deadline, catchUp).iCode != ZOK) {
        return STORE_OUTCOME_UNKNOWN;
    }
    std::set<std::int64_t> setVersion;
    for (const CStoreText& text : texts) {
        const CReply reply = ReadNode(text.strPath, nullptr, deadline);
        if (reply.iCode != ZOK || reply.text != text.strText ||
            reply.iVersion == before.at(text.strPath).iVersion) {
            return STORE_OUTCOME_UNKNOWN;
        }
        setVersion.insert(reply.iVersion);
    }
    return setVersion.size() == 1 ? static_cast<int>(ZOK) : STORE_OUTCOME_UNKNOWN;
}

int CZooKeeperStore::CClient::Commit(const std::vector<CStoreCondition>& conditions,
                                     const std::vector<CStoreText>& texts) {
    if (NamesANodeTwice(texts)) {
        return ORVA_PARA_INVALID;
    }
    const std::size_t ulSize = CCommitOperations::GetLargestSize(conditions, texts);
    if (ulSize > MAX_PATH_AND_TEXT) {
        return LogFailure(PSZ_COMMIT, ORVA_PARA_INVALID, "%zu bytes are too many", ulSize);
    }
    if (conditions.empty() && texts.empty()) {
        return ORVA_SUCCEED;
    }
    const int iCode = CommitUntil(Deadline(), conditions, texts);
    if (iCode != ORVA_SUCCEED && iCode != STORE_CONDITION_FAILED) {
        const std::string& strPath =
            texts.empty() ? conditions.front().strPath : texts.front().strPath;
        LogFailure(PSZ_COMMIT, iCode, "%s: %s", strPath.c_str(),
                   iCode == STORE_OUTCOME_UNKNOWN
                       ? "answer lost, and the texts are not all as committed"
                       : zerror(iCode));
    }
    return iCode;
}

CZooKeeperStore::CZooKeeperStore(const CZooKeeperOptions& options)
    : m_pClient(std::make_shared<CClient>(options)) {
    // The client library's own lines would go to stderr, once per try while a server is down.
    zoo_set_debug_level(static_cast<ZooLogLevel>(0));
    CClient::Start(m_pClient);
}

CZooKeeperStore::~CZooKeeperStore() {
    m_pClient->Stop();
}

int CZooKeeperStore::Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) {
    return m_pClient->Read(strPath, pWatcher, answer);
}

int CZooKeeperStore::Write(const std::string& strPath, const std::string& strText) {
    return m_pClient->Write(strPath, strText);
}

int CZooKeeperStore::List(const std::string& strPath, std::vector<std::string>& children) {
    return m_pClient->List(strPath, children);
}

int CZooKeeperStore::Commit(const std::vector<CStoreCondition>& conditions,
                            const std::vector<CStoreText>& texts) {
    return m_pClient->Commit(conditions, texts);
}
