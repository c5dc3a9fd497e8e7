#include "internal/zookeeper_session.h"

#include <cerrno>
#include <iterator>
#include <utility>

#include "operation_log/operation_log.h"

using namespace operation_log;

namespace {

constexpr std::chrono::milliseconds RETRY_PAUSE{20};
constexpr std::chrono::milliseconds REOPEN_PAUSE{1000};

constexpr char PSZ_SESSION[] = "keep store session";

CZooKeeperReply ReplyOf(int iCode, const Stat* pStat = nullptr) {
    CZooKeeperReply reply;
    reply.iCode = iCode;
    if (iCode == ZOK && pStat != nullptr) {
        reply.iVersion = pStat->mzxid;
        reply.iTextVersion = pStat->version;
        reply.iOwner = pStat->ephemeralOwner;
    }
    return reply;
}

}  // namespace

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

CSessionKeeper::CSession::CSession(CSessionKeeper& owner)
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
CSessionKeeper::CSession::~CSession() {
    if (m_pHandle != nullptr) {
        std::unique_lock<std::mutex> lock(m_owner.m_mutex);
        m_owner.m_answered.wait_for(lock, m_owner.m_options.sessionTimeout,
                                    [this] { return m_uiOnTheirWay == 0; });
        lock.unlock();
        zookeeper_close(m_pHandle);
    }
}

void CSessionKeeper::Start(const std::shared_ptr<CSessionKeeper>& pKeeper) {
    // The client library's own lines would go to stderr, once per try while a server is down.
    zoo_set_debug_level(static_cast<ZooLogLevel>(0));
    pKeeper->m_keeper = std::thread([pKeeper] { pKeeper->KeepSession(); });
    pKeeper->m_caller = std::thread([pKeeper] { pKeeper->CallWatchers(); });
}

void CSessionKeeper::Stop() {
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

bool CSessionKeeper::IsStopping() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_bStopping;
}

void CSessionKeeper::OnEvent(zhandle_t* pHandle, int iType, int iState, const char* pszPath,
                             void* pSession) {
    CSession& session = *static_cast<CSession*>(pSession);
    CSessionKeeper& keeper = session.m_owner;
    if (iType == ZOO_SESSION_EVENT) {
        keeper.OnSessionState(session, pHandle, iState);
        return;
    }
    std::lock_guard<std::mutex> lock(keeper.m_mutex);
    keeper.FireLocked(keeper.m_pSession.get() == &session ? keeper.m_pSession : nullptr, iType,
                      iState, pszPath);
}

/// Also called once for every watch on each change of the session: only a change counts.
void CSessionKeeper::OnSessionState(CSession& session, zhandle_t* pHandle, int iState) {
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
        if (bConnected) {
            session.m_iId = zoo_client_id(pHandle)->client_id;
            m_iTimeout = zoo_recv_timeout(pHandle);
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

void CSessionKeeper::FireLocked(const std::shared_ptr<CSession>& pSession, int iType, int iState,
                                const std::string& strPath) {
    m_setMissed.erase(strPath);
    for (const StoreWatcher pWatcher : m_watches.Take(strPath)) {
        m_fired.push_back({pSession, iType, iState, strPath, pWatcher});
    }
    m_changed.notify_all();
}

void CSessionKeeper::CountAsMissed(const std::string& strPath, StoreWatcher pWatcher) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_watches.Set(strPath, pWatcher);
    m_setMissed.insert(strPath);
    m_changed.notify_all();
}

void CSessionKeeper::KeepSession() {
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
bool CSessionKeeper::IsOverLocked() const {
    return !m_pSession || m_pSession->m_bExpired ||
           (!m_pSession->m_bConnected &&
            Clock::now() >= m_pSession->m_lostSince + m_options.sessionTimeout);
}

void CSessionKeeper::RenewSession(std::unique_lock<std::mutex>& lock) {
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

void CSessionKeeper::AwaitSessionChange(std::unique_lock<std::mutex>& lock) {
    if (m_pSession->m_bConnected) {
        m_changed.wait(lock);
    } else {
        m_changed.wait_until(lock, m_pSession->m_lostSince + m_options.sessionTimeout);
    }
}

/// Watchers are not called on the client library's thread, which would wait for itself when they
/// call the store.
void CSessionKeeper::CallWatchers() {
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

std::shared_ptr<CSessionKeeper::CSession> CSessionKeeper::AwaitConnection(
    Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_until(lock, deadline, [this] { return m_bStopping || IsConnectedLocked(); });
    return !m_bStopping && IsConnectedLocked() ? m_pSession : nullptr;
}

bool CSessionKeeper::PauseBeforeRetry(Clock::time_point deadline) {
    const Clock::time_point end = Clock::now() + RETRY_PAUSE;
    if (end >= deadline) {
        return false;
    }
    std::unique_lock<std::mutex> lock(m_mutex);
    return !m_changed.wait_until(lock, end, [this] { return m_bStopping; });
}

bool CSessionKeeper::PauseInSession(Clock::time_point end) {
    std::unique_lock<std::mutex> lock(m_mutex);
    const std::int64_t iSession = GetSessionLocked();
    m_changed.wait_until(lock, end, [&] { return m_bStopping || GetSessionLocked() != iSession; });
    return !m_bStopping;
}

std::int64_t CSessionKeeper::GetSessionLocked() const {
    return m_pSession && !m_pSession->m_bExpired ? m_pSession->m_iId.load() : 0;
}

/// On the client library's thread, in the order of the server's answers and events: a watch is
/// known here before its event can arrive.
void CSessionKeeper::Complete(const void* pRequest, CZooKeeperReply reply) {
    const std::unique_ptr<CRequest> pOwned(
        const_cast<CRequest*>(static_cast<const CRequest*>(pRequest)));
    const bool bWatchStands =
        reply.iCode == ZOK || (reply.iCode == ZNONODE && pOwned->m_bWatchesAbsent);
    CSessionKeeper& keeper = pOwned->m_pSession->m_owner;
    {
        std::lock_guard<std::mutex> lock(keeper.m_mutex);
        if (bWatchStands) {
            keeper.m_watches.Set(pOwned->m_strWatchedPath, pOwned->m_pWatcher);
        }
        keeper.CountAnsweredLocked(*pOwned->m_pSession);
    }
    pOwned->m_reply.set_value(std::move(reply));
}

void CSessionKeeper::OnData(int iCode, const char* pszData, int iLength, const Stat* pStat,
                            const void* pRequest) {
    CZooKeeperReply reply = ReplyOf(iCode, pStat);
    if (iCode == ZOK && iLength != NO_DATA) {
        reply.text.emplace(pszData, static_cast<std::size_t>(iLength));
    }
    Complete(pRequest, std::move(reply));
}

void CSessionKeeper::OnStat(int iCode, const Stat* pStat, const void* pRequest) {
    Complete(pRequest, ReplyOf(iCode, pStat));
}

void CSessionKeeper::OnPath(int iCode, const char*, const void* pRequest) {
    Complete(pRequest, ReplyOf(iCode));
}

void CSessionKeeper::OnChildren(int iCode, const String_vector* pNames, const void* pRequest) {
    CZooKeeperReply reply = ReplyOf(iCode);
    if (iCode == ZOK && pNames != nullptr) {
        reply.children.assign(pNames->data, pNames->data + pNames->count);
    }
    Complete(pRequest, std::move(reply));
}

void CSessionKeeper::OnDone(int iCode, const void* pRequest) {
    Complete(pRequest, ReplyOf(iCode));
}

void CSessionKeeper::CountAnsweredLocked(CSession& session) {
    if (--session.m_uiOnTheirWay == 0) {
        m_answered.notify_all();
    }
}

int CSessionKeeper::SendCounted(const Send& send, CSession& session, CRequest& request) {
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

CZooKeeperReply CSessionKeeper::Call(const Send& send, std::unique_ptr<CRequest> pRequest,
                                     Clock::time_point deadline) {
    std::future<CZooKeeperReply> reply = pRequest->m_reply.get_future();
    std::int64_t iSession = 0;
    {
        const std::shared_ptr<CSession> pSession = AwaitConnection(deadline);
        if (!pSession) {
            return CZooKeeperReply{};
        }
        iSession = pSession->m_iId;
        const int iCode = SendCounted(send, *pSession, *pRequest);
        if (iCode != ZOK) {
            return ReplyOf(iCode);
        }
        static_cast<void>(pRequest.release());
    }
    CZooKeeperReply answer = reply.wait_until(deadline) == std::future_status::ready
                                 ? reply.get()
                                 : ReplyOf(ZOPERATIONTIMEOUT);
    answer.bSent = true;
    answer.iSession = iSession;
    return answer;
}

/// Every request may be sent again: reading changes nothing, a set is unconditional, and a node
/// that the lost try created is found to exist.
CZooKeeperReply CSessionKeeper::CallUntil(Clock::time_point deadline, const Send& send,
                                          const std::string& strPath, StoreWatcher pWatcher,
                                          bool bWatchesAbsent) {
    CZooKeeperReply reply;
    do {
        auto pRequest = std::unique_ptr<CRequest>(new CRequest{
            nullptr, strPath, pWatcher, bWatchesAbsent, {}, std::promise<CZooKeeperReply>()});
        reply = Call(send, std::move(pRequest), deadline);
    } while (IsTransient(reply.iCode) && PauseBeforeRetry(deadline));
    return reply;
}
