#include "internal/zookeeper_nodes.h"

namespace {

using Clock = CSessionKeeper::Clock;
using CRequest = CSessionKeeper::CRequest;
using CSession = CSessionKeeper::CSession;
using Send = CSessionKeeper::Send;

}  // namespace

/// A watch set by a get needs a node; between the get that missed it and the watch on its absence
/// it may have come.
CZooKeeperReply ReadNode(CSessionKeeper& keeper, const std::string& strPath, StoreWatcher pWatcher,
                         Clock::time_point deadline) {
    const watcher_fn pOnEvent = pWatcher != nullptr ? CSessionKeeper::OnEvent : nullptr;
    const Send get = [&](CSession& session, CRequest* pRequest) {
        return zoo_awget(session.m_pHandle, strPath.c_str(), pOnEvent, &session,
                         CSessionKeeper::OnData, pRequest);
    };
    const Send watchAbsent = [&](CSession& session, CRequest* pRequest) {
        return zoo_awexists(session.m_pHandle, strPath.c_str(), pOnEvent, &session,
                            CSessionKeeper::OnStat, pRequest);
    };
    for (;;) {
        CZooKeeperReply reply = keeper.CallUntil(deadline, get, strPath, pWatcher);
        if (reply.iCode != ZNONODE || pWatcher == nullptr) {
            return reply;
        }
        reply = keeper.CallUntil(deadline, watchAbsent, strPath, pWatcher, true);
        if (reply.iCode != ZOK) {
            return reply;
        }
    }
}

int CreateNode(CSessionKeeper& keeper, const std::string& strPath, const std::string* pText,
               Clock::time_point deadline, int iMode) {
    const char* const pszData = pText != nullptr ? pText->data() : nullptr;
    const int iLength = pText != nullptr ? static_cast<int>(pText->size()) : NO_DATA;
    const Send create = [&](CSession& session, CRequest* pRequest) {
        return zoo_acreate(session.m_pHandle, strPath.c_str(), pszData, iLength,
                           &ZOO_OPEN_ACL_UNSAFE, iMode, CSessionKeeper::OnPath, pRequest);
    };
    const int iCode = keeper.CallUntil(deadline, create).iCode;
    const std::size_t ulParentLen = strPath.rfind('/');
    if (iCode != ZNONODE || ulParentLen == 0) {
        return iCode;
    }
    const int iParentCode = CreateNode(keeper, strPath.substr(0, ulParentLen), nullptr, deadline);
    if (iParentCode != ZOK && iParentCode != ZNODEEXISTS) {
        return iParentCode;
    }
    return keeper.CallUntil(deadline, create).iCode;
}

int WriteNode(CSessionKeeper& keeper, const std::string& strPath, const std::string& strText,
              Clock::time_point deadline) {
    const Send set = [&](CSession& session, CRequest* pRequest) {
        return zoo_aset(session.m_pHandle, strPath.c_str(), strText.data(),
                        static_cast<int>(strText.size()), ANY_VERSION, CSessionKeeper::OnStat,
                        pRequest);
    };
    for (;;) {
        const int iSetCode = keeper.CallUntil(deadline, set).iCode;
        if (iSetCode != ZNONODE) {
            return iSetCode;
        }
        const int iCreateCode = CreateNode(keeper, strPath, &strText, deadline);
        if (iCreateCode != ZNODEEXISTS) {
            return iCreateCode;
        }
    }
}
