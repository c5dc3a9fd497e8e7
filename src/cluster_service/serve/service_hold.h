#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include "command/cluster_place.h"
#include "reference_host/store.h"
#include "serve/wakeups.h"

/// The name by which a service holds its cluster, so that no other runs it too. When it is lost,
/// the main thread is woken. On the main thread alone.
class CServiceHold {
public:
    /// The wakeups outlive the store.
    CServiceHold(std::shared_ptr<IStore> pStore, CClusterPlace place, const CWakeups& wakeups)
        : m_pStore(std::move(pStore)), m_place(std::move(place)), m_wakeups(wakeups) {}

    /// Holds the cluster for the service at that address. While another seems to have it, waits as
    /// long as that one may be dead, and tells so once. Returns EXIT_DONE; EXIT_REFUSED when
    /// another has it, or EXIT_COULD_NOT when the store does not tell, said on the stream.
    int Take(const std::string& strUrl, const std::function<void(const std::string&)>& say,
             std::ostream& errors);

    /// The store for whoever writes while the cluster is held.
    std::shared_ptr<IStore> GetStore() const { return m_pHeld; }

    /// Says who has the cluster, if somebody does.
    void SayHolder(std::ostream& errors);

    /// Can the store be asked who has it?
    bool CanBeAsked();

    /// Lets go of the store; the hold ends when the store does. It is not released before: a store
    /// that may be gone could let that take longer than there is.
    void LetGo();

private:
    std::string GetPath() const;
    std::string Holder(const CStoreAnswer& holder) const;

    std::shared_ptr<IStore> m_pStore;
    const CClusterPlace m_place;
    const CWakeups& m_wakeups;
    std::shared_ptr<IStore> m_pHeld;
};
