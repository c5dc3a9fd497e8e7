#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "reference_host/store.h"

struct CZooKeeperOptions {
    /// "host:port,host:port", with "/folder" behind it to stay below a folder that exists.
    std::string strServers;

    /// After this time without contact the servers forget the session. A server that hangs is left
    /// for the next one after two thirds of it.
    std::chrono::milliseconds sessionTimeout{6000};

    /// The longest that one read or write takes, retries and waiting for a connection included.
    std::chrono::milliseconds callDeadline{5000};
};

/// A store on a ZooKeeper server or ensemble. It connects on its own, stays at it while no server
/// answers, and opens a new session when the old one is lost; calls wait for it until their
/// deadline.
///
/// Failures are the client's codes (negative), or ORVA_PARA_INVALID for a node too large for the
/// servers, which is refused before it is sent. A write that failed may still have happened when
/// the connection broke or the deadline passed before the answer.
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

private:
    class CClient;
    std::shared_ptr<CClient> m_pClient;
};
