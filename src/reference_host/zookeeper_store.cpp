#include "reference_host/zookeeper_store.h"

#include <algorithm>
#include <set>
#include <utility>

#include "common_service/tarn_def.h"
#include "internal/commit_operations.h"
#include "internal/store_tree.h"
#include "internal/zookeeper_holds.h"
#include "internal/zookeeper_nodes.h"
#include "internal/zookeeper_session.h"
#include "operation_log/operation_log.h"

using namespace operation_log;

namespace {

using Clock = CSessionKeeper::Clock;
using CRequest = CSessionKeeper::CRequest;
using CSession = CSessionKeeper::CSession;
using Send = CSessionKeeper::Send;

/// A server drops the connection on a packet of 1 MiB; the rest is for the request's other fields.
constexpr std::size_t MAX_PATH_AND_TEXT = (1U << 20U) - 1024U;

constexpr char PSZ_READ[] = "read store node";
constexpr char PSZ_WRITE[] = "write store node";
constexpr char PSZ_LIST[] = "list store node";
constexpr char PSZ_COMMIT[] = "commit to store";
constexpr char PSZ_HOLD[] = "hold name in store";

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

}  // namespace

/// The operations of a store, each made of requests in a session.
class __attribute__((visibility("hidden"))) CZooKeeperStore::CClient {
public:
    explicit CClient(const CZooKeeperOptions& options)
        : m_pKeeper(std::make_shared<CSessionKeeper>(options)),
          m_pHolds(std::make_shared<CZooKeeperHolds>(m_pKeeper)) {
        CSessionKeeper::Start(m_pKeeper);
    }
    ~CClient() {
        m_pKeeper->Stop();
        m_pHolds->Join();
    }

    CClient(const CClient&) = delete;
    CClient& operator=(const CClient&) = delete;

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer);
    int Write(const std::string& strPath, const std::string& strText);
    int List(const std::string& strPath, std::vector<std::string>& children);
    int Commit(const std::vector<CStoreCondition>& conditions,
               const std::vector<CStoreText>& texts);

    CZooKeeperHolds& Holds() const { return *m_pHolds; }

    /// The servers look for sessions that are over once in a while, which is half a session's
    /// time-out at most unless they are told otherwise.
    std::chrono::milliseconds GetHoldAfterlife() const { return m_pKeeper->GetTimeout() * 2; }

private:
    int LookAt(const std::string& strPath, Clock::time_point deadline, CSeenNodes& seen);
    int LookUpwards(const std::string& strPath, Clock::time_point deadline, CSeenNodes& seen);
    int LookAtAll(const std::vector<CStoreCondition>& conditions,
                  const std::vector<CStoreText>& texts, Clock::time_point deadline,
                  CSeenNodes& seen);
    CZooKeeperReply SendCommit(const std::vector<zoo_op_t>& operations, Clock::time_point deadline);
    int CommitUntil(Clock::time_point deadline, const std::vector<CStoreCondition>& conditions,
                    const std::vector<CStoreText>& texts);
    int FindOutcome(const std::vector<CStoreText>& texts, const CSeenNodes& before,
                    Clock::time_point deadline);

    const std::shared_ptr<CSessionKeeper> m_pKeeper;
    const std::shared_ptr<CZooKeeperHolds> m_pHolds;
};

int CZooKeeperStore::CClient::Read(const std::string& strPath, StoreWatcher pWatcher,
                                   CStoreAnswer& answer) {
    CZooKeeperReply reply = ReadNode(*m_pKeeper, strPath, pWatcher, m_pKeeper->Deadline());
    if (reply.iCode == ZOK || reply.iCode == ZNONODE) {
        answer.bExists = reply.iCode == ZOK;
        answer.text = std::move(reply.text);
        answer.iVersion = reply.iVersion;
        return ORVA_SUCCEED;
    }
    if (pWatcher != nullptr && IsTransient(reply.iCode)) {
        m_pKeeper->CountAsMissed(strPath, pWatcher);
    }
    return LogFailure(PSZ_READ, reply.iCode, "%s: %s", strPath.c_str(), zerror(reply.iCode));
}

int CZooKeeperStore::CClient::Write(const std::string& strPath, const std::string& strText) {
    if (strPath.size() + strText.size() > MAX_PATH_AND_TEXT) {
        return LogFailure(PSZ_WRITE, ORVA_PARA_INVALID, "%s: %zu bytes are too many",
                          strPath.c_str(), strText.size());
    }
    const int iCode = WriteNode(*m_pKeeper, strPath, strText, m_pKeeper->Deadline());
    if (iCode != ZOK) {
        LogFailure(PSZ_WRITE, iCode, "%s: %s", strPath.c_str(), zerror(iCode));
    }
    return iCode;
}

int CZooKeeperStore::CClient::List(const std::string& strPath, std::vector<std::string>& children) {
    const Send list = [&](CSession& session, CRequest* pRequest) {
        return zoo_aget_children(session.m_pHandle, strPath.c_str(), 0, CSessionKeeper::OnChildren,
                                 pRequest);
    };
    CZooKeeperReply reply = m_pKeeper->CallUntil(m_pKeeper->Deadline(), list);
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
        return zoo_awexists(session.m_pHandle, strPath.c_str(), nullptr, nullptr,
                            CSessionKeeper::OnStat, pRequest);
    };
    const CZooKeeperReply reply = m_pKeeper->CallUntil(deadline, look);
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

CZooKeeperReply CZooKeeperStore::CClient::SendCommit(const std::vector<zoo_op_t>& operations,
                                                     Clock::time_point deadline) {
    const Send commit = [&](CSession& session, CRequest* pRequest) {
        return zoo_amulti(session.m_pHandle, static_cast<int>(operations.size()), operations.data(),
                          pRequest->m_results.data(), CSessionKeeper::OnDone, pRequest);
    };
    auto pRequest = std::make_unique<CRequest>();
    pRequest->m_results.resize(operations.size());
    return m_pKeeper->Call(commit, std::move(pRequest), deadline);
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
        const CZooKeeperReply reply =
            SendCommit(CCommitOperations(conditions, texts, seen).Get(), deadline);
        if (reply.iCode == ZOK) {
            return ZOK;
        }
        if (reply.bSent && !IsRefusal(reply.iCode)) {
            return texts.empty() ? reply.iCode : FindOutcome(texts, seen, deadline);
        }
        if (IsTransient(reply.iCode)) {
            if (!m_pKeeper->PauseBeforeRetry(deadline)) {
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
        return zoo_async(session.m_pHandle, texts.front().strPath.c_str(), CSessionKeeper::OnPath,
                         pRequest);
    };
    if (m_pKeeper->CallUntil(deadline, catchUp).iCode != ZOK) {
        return STORE_OUTCOME_UNKNOWN;
    }
    std::set<std::int64_t> setVersion;
    for (const CStoreText& text : texts) {
        const CZooKeeperReply reply = ReadNode(*m_pKeeper, text.strPath, nullptr, deadline);
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
    const int iCode = CommitUntil(m_pKeeper->Deadline(), conditions, texts);
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
    : m_pClient(std::make_unique<CClient>(options)) {}

CZooKeeperStore::~CZooKeeperStore() = default;

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

int CZooKeeperStore::Hold(const std::string& strPath, const std::string& strText,
                          const HoldLost& onLost, CStoreAnswer& holder) {
    if (strPath.size() + strText.size() > MAX_PATH_AND_TEXT) {
        return LogFailure(PSZ_HOLD, ORVA_PARA_INVALID, "%s: %zu bytes are too many",
                          strPath.c_str(), strText.size());
    }
    return m_pClient->Holds().Hold(strPath, strText, onLost, holder);
}

int CZooKeeperStore::Release(const std::string& strPath) {
    return m_pClient->Holds().Release(strPath);
}

int CZooKeeperStore::FindHolder(const std::string& strPath, CStoreAnswer& holder) {
    return m_pClient->Holds().FindHolder(strPath, holder);
}

std::chrono::milliseconds CZooKeeperStore::GetHoldAfterlife() {
    return m_pClient->GetHoldAfterlife();
}
