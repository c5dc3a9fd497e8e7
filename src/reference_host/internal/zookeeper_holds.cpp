#include "internal/zookeeper_holds.h"

#include <utility>
#include <vector>

#include "common_service/tarn_def.h"
#include "internal/zookeeper_nodes.h"
#include "operation_log/operation_log.h"

using namespace operation_log;

namespace {

constexpr char PSZ_HOLD[] = "hold name in store";

/// How often the servers are asked within a session's time-out.
constexpr int NUMERIC_BEATS = 6;

using CRequest = CSessionKeeper::CRequest;
using CSession = CSessionKeeper::CSession;
using Send = CSessionKeeper::Send;

CStoreAnswer AnswerOf(CZooKeeperReply reply) {
    return {true, std::move(reply.text), reply.iVersion};
}

bool IsOwn(const CZooKeeperReply& reply) {
    return reply.iCode == ZOK && reply.iOwner != 0 && reply.iOwner == reply.iSession;
}

}  // namespace

int CZooKeeperHolds::Hold(const std::string& strPath, const std::string& strText,
                          const HoldLost& onLost, CStoreAnswer& holder) {
    const std::lock_guard<std::mutex> changing(m_changing);
    if (IsHeld(strPath)) {
        const int iCode = FindHolder(strPath, holder);
        return iCode == ORVA_SUCCEED ? static_cast<int>(STORE_NAME_HELD) : iCode;
    }
    CZooKeeperReply found;
    Clock::time_point askedAt;
    int iCode = Take(strPath, strText, found, askedAt);
    if (iCode == ZOK && found.iOwner == 0) {
        iCode = ZNODEEXISTS;  // a document has this path
    }
    if (iCode != ZOK) {
        return LogFailure(PSZ_HOLD, iCode, "%s: %s", strPath.c_str(), zerror(iCode));
    }
    const bool bOwn = IsOwn(found);
    if (bOwn) {
        Add(strPath, found.iSession, askedAt, onLost);
    }
    holder = AnswerOf(std::move(found));
    return bOwn ? static_cast<int>(ORVA_SUCCEED) : static_cast<int>(STORE_NAME_HELD);
}

/// Makes the node and reads it, whosever it then is. One of our own with another text is what a
/// call that failed has left.
int CZooKeeperHolds::Take(const std::string& strPath, const std::string& strText,
                          CZooKeeperReply& found, Clock::time_point& askedAt) {
    const Clock::time_point deadline = m_pKeeper->Deadline();
    do {
        int iCode = CreateNode(*m_pKeeper, strPath, &strText, deadline, ZOO_EPHEMERAL);
        if (iCode != ZOK && iCode != ZNODEEXISTS) {
            return iCode;
        }
        askedAt = Clock::now();
        found = ReadNode(*m_pKeeper, strPath, nullptr, deadline);
        const bool bLeft = IsOwn(found) && found.text != strText;
        iCode = bLeft ? DeleteInSession(strPath, found.iSession, deadline) : found.iCode;
        if (iCode != ZNONODE && !(bLeft && iCode == ZOK)) {
            return iCode;
        }
    } while (Clock::now() < deadline);
    return ZOPERATIONTIMEOUT;
}

int CZooKeeperHolds::Release(const std::string& strPath) {
    const std::lock_guard<std::mutex> changing(m_changing);
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_mapHold.erase(strPath);
    }
    const Clock::time_point deadline = m_pKeeper->Deadline();
    const CZooKeeperReply found = ReadNode(*m_pKeeper, strPath, nullptr, deadline);
    const int iCode =
        IsOwn(found) ? DeleteInSession(strPath, found.iSession, deadline) : found.iCode;
    if (iCode == ZOK || iCode == ZNONODE) {
        return ORVA_SUCCEED;
    }
    return LogFailure(PSZ_HOLD, iCode, "%s: %s", strPath.c_str(), zerror(iCode));
}

int CZooKeeperHolds::FindHolder(const std::string& strPath, CStoreAnswer& holder) {
    CZooKeeperReply found = ReadNode(*m_pKeeper, strPath, nullptr, m_pKeeper->Deadline());
    if (found.iCode != ZOK && found.iCode != ZNONODE) {
        return LogFailure(PSZ_HOLD, found.iCode, "%s: %s", strPath.c_str(), zerror(found.iCode));
    }
    holder = found.iOwner != 0 ? AnswerOf(std::move(found)) : CStoreAnswer();
    return ORVA_SUCCEED;
}

void CZooKeeperHolds::Join() {
    if (m_thread.get_id() == std::this_thread::get_id()) {
        m_thread.detach();
    } else if (m_thread.joinable()) {
        m_thread.join();
    }
}

bool CZooKeeperHolds::IsHeld(const std::string& strPath) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_mapHold.count(strPath) != 0;
}

/// The thread shares the ownership, so that the last reference to the store may be dropped by it.
void CZooKeeperHolds::Add(const std::string& strPath, std::int64_t iSession,
                          Clock::time_point askedAt, const HoldLost& onLost) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_mapHold.insert_or_assign(strPath, CHold{++m_ullNewest, iSession, GoodUntil(askedAt), onLost});
    if (!m_thread.joinable()) {
        m_thread = std::thread([pHolds = shared_from_this()] { pHolds->Keep(); });
    }
}

/// The node of an earlier session is not there any more, and one of that name is another's.
int CZooKeeperHolds::DeleteInSession(const std::string& strPath, std::int64_t iSession,
                                     Clock::time_point deadline) {
    const Send remove = [&](CSession& session, CRequest* pRequest) {
        return session.m_iId == iSession
                   ? zoo_adelete(session.m_pHandle, strPath.c_str(), ANY_VERSION,
                                 CSessionKeeper::OnDone, pRequest)
                   : static_cast<int>(ZNONODE);
    };
    return m_pKeeper->CallUntil(deadline, remove).iCode;
}

void CZooKeeperHolds::Keep() {
    while (m_pKeeper->PauseInSession(Clock::now() + m_pKeeper->GetTimeout() / NUMERIC_BEATS)) {
        std::vector<std::string> paths;
        {
            const std::lock_guard<std::mutex> guard(m_mutex);
            for (const auto& [strPath, hold] : m_mapHold) {
                paths.push_back(strPath);
            }
        }
        for (const std::string& strPath : paths) {
            Confirm(strPath);
        }
    }
}

/// Asks until there is an answer, or the hold does not count any more.
void CZooKeeperHolds::Confirm(const std::string& strPath) {
    CHold hold;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        const auto it = m_mapHold.find(strPath);
        if (it == m_mapHold.end()) {
            return;
        }
        hold = it->second;
    }
    const Send look = [&](CSession& session, CRequest* pRequest) {
        return session.m_iId == hold.iSession
                   ? zoo_awexists(session.m_pHandle, strPath.c_str(), nullptr, nullptr,
                                  CSessionKeeper::OnStat, pRequest)
                   : static_cast<int>(ZNONODE);
    };
    do {
        const Clock::time_point askedAt = Clock::now();
        const CZooKeeperReply reply =
            m_pKeeper->Call(look, std::make_unique<CRequest>(), hold.goodUntil);
        if (IsOwn(reply) && Clock::now() < GoodUntil(askedAt)) {
            Extend(strPath, hold, GoodUntil(askedAt));
            return;
        }
        if (!IsTransient(reply.iCode)) {
            break;
        }
    } while (m_pKeeper->PauseBeforeRetry(hold.goodUntil));
    if (!m_pKeeper->IsStopping()) {
        Lose(strPath, hold);
    }
}

void CZooKeeperHolds::Extend(const std::string& strPath, const CHold& hold,
                             Clock::time_point goodUntil) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto it = m_mapHold.find(strPath);
    if (it != m_mapHold.end() && it->second.ullNumber == hold.ullNumber) {
        it->second.goodUntil = goodUntil;
    }
}

void CZooKeeperHolds::Lose(const std::string& strPath, const CHold& hold) {
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        const auto it = m_mapHold.find(strPath);
        if (it == m_mapHold.end() || it->second.ullNumber != hold.ullNumber) {
            return;
        }
        m_mapHold.erase(it);
    }
    LogWarning(PSZ_HOLD, "%s: not held any more", strPath.c_str());
    hold.onLost();
}

/// A tenth of the time is left for the thread to wake up.
CZooKeeperHolds::Clock::time_point CZooKeeperHolds::GoodUntil(Clock::time_point askedAt) const {
    return askedAt + m_pKeeper->GetTimeout() * 9 / 10;
}
