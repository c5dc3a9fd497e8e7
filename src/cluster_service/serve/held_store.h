#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "reference_host/store.h"

/// The store of a service that holds its cluster by a name: what it writes is written only as long
/// as nobody else has held the name since, also while the service does not know yet that its hold
/// is lost, as when it was stopped for a while.
class CHeldStore : public IStore {
public:
    /// onLost is called, on the thread of the call, by each write that comes too late.
    CHeldStore(std::shared_ptr<IStore> pStore, CStoreCondition hold, std::function<void()> onLost)
        : m_pStore(std::move(pStore)), m_hold(std::move(hold)), m_onLost(std::move(onLost)) {}

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override;
    int Write(const std::string& strPath, const std::string& strText) override;
    int List(const std::string& strPath, std::vector<std::string>& children) override;
    int Commit(const std::vector<CStoreCondition>& conditions,
               const std::vector<CStoreText>& texts) override;

private:
    const std::shared_ptr<IStore> m_pStore;
    const CStoreCondition m_hold;
    const std::function<void()> m_onLost;
};
