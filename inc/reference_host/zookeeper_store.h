#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "reference_host/store.h"

struct CZooKeeperOptions {
    /// "host:port,host:port", with "/folder" behind it to stay below a folder that exists.
    std::string strServers;

    /// After this time without contact the servers forget the session. A server that hangs is left
    /// for the next one after two thirds of it. Servers in their common configuration take no less
    /// than 4000 ms.
    std::chrono::milliseconds sessionTimeout{4000};

    /// The longest that one call takes, retries and waiting for a connection included.
    std::chrono::milliseconds callDeadline{5000};
};

/// A store on a ZooKeeper server or ensemble. It connects on its own, stays at it while no server
/// answers, and opens a new session when the old one is lost; calls wait for it until their
/// deadline.
///
/// Failures are the client's codes (negative), or ORVA_PARA_INVALID for a node or a commit too
/// large for the servers, which is refused before it is sent: a commit goes in one request of less
/// than 1 MiB. A write that failed may still have happened when the connection broke or the
/// deadline passed before the answer. A commit is sent anew only when the servers refused it; one
/// whose answer was lost is STORE_OUTCOME_UNKNOWN, unless a look at the nodes shows every text to
/// be as the commit wanted it and newer than before.
///
/// The version of a node is the number of the servers' transaction that wrote its text. A commit on
/// the absence of a node that it does not write makes and removes that node, or the topmost one
/// missing above it, in its one step: nobody can read it, but a watcher of that node is called.
///
/// A name is held by an ephemeral node, which the servers take away when the session is closed, or
/// its time-out has passed without contact. Without contact the hold is lost a tenth of the
/// time-out before that; also when a commit just then is still to come to the servers, it comes to
/// nothing if the version of the hold is its condition.
///
/// Watchers run on a thread of the store's own, one after the other, and may call the store. They
/// are called for what the contract names, and also when a change may have been missed or the node
/// was deleted: after a lost session for every watched node, and after a read that failed for want
/// of an answer as soon as a server answers; the event is then that of a change. A handler that
/// reads its node with the watcher thus never loses sight of it. The handle that a watcher is given
/// lives until it returns; it is null when its session is over.
class [[gnu::visibility("default")]] CZooKeeperStore : public IStore {
public:
    explicit CZooKeeperStore(const CZooKeeperOptions& options);

    /// Ends the session; watchers that were not yet called are not called any more. Waits for a
    /// watcher that is running, unless called by it, for a name being resolved, and with a server
    /// that hangs for up to the session's time-out.
    ~CZooKeeperStore() override;

    CZooKeeperStore(const CZooKeeperStore&) = delete;
    CZooKeeperStore& operator=(const CZooKeeperStore&) = delete;

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override;
    int Write(const std::string& strPath, const std::string& strText) override;
    int List(const std::string& strPath, std::vector<std::string>& children) override;
    int Commit(const std::vector<CStoreCondition>& conditions, const std::vector<CStoreText>& texts)
        override;
    int Hold(const std::string& strPath, const std::string& strText, const HoldLost& onLost,
             CStoreAnswer& holder) override;
    int Release(const std::string& strPath) override;
    int FindHolder(const std::string& strPath, CStoreAnswer& holder) override;
    std::chrono::milliseconds GetHoldAfterlife() override;

private:
    class CClient;
    std::unique_ptr<CClient> m_pClient;
};
