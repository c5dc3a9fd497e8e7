#pragma once

#include <algorithm>
#include <cstdint>
#include <list>
#include <map>
#include <set>
#include <string>

#include "framework_service/base_data.h"
#include "framework_service/container.h"
#include "framework_service/tarn_node.h"
#include "orva_plugin_service/tarn_orva_data.h"

/// A request to take storage back: from whom and of which pool.
struct CStorageReduction {
    std::string strCode;          ///< empty: the pool whose storage is used least
    std::set<std::string> nodes;  ///< empty: every node
    int32_t iSize = 0;
};

/// What a container has of a pool.
struct CStorageHolding {
    int64_t llAllocated = 0;  ///< as reported
    int64_t llUsed = 0;
    int64_t llTaken = 0;     ///< allocated and not reported yet
    int64_t llReleased = 0;  ///< reduced and not reported yet

    void Add(const CStorageHolding& other);

    /// What can be taken back.
    int64_t GetUnused() const { return std::max<int64_t>(llAllocated - llUsed - llReleased, 0); }

    /// Used over allocated; something must be allocated.
    double GetUseRatio() const {
        return static_cast<double>(llUsed) / static_cast<double>(llAllocated);
    }
};

using CStorageHoldings = std::map<CContainerAddr, CStorageHolding>;

/// A pool as its container offers it.
struct CStoragePool {
    CContainerAddr offerer;
    int32_t iSize = 0;
    std::string strDns;
    std::string strPath;
    CStorageHolding held;  ///< by all containers together

    int64_t GetFree() const {
        return std::max<int64_t>(iSize - held.llAllocated - held.llTaken, 0);
    }
};

using CStoragePools = std::map<std::string, CStoragePool>;  ///< by code

/// All cloud storage containers with the pools that they offer and the storage that they hold,
/// copied once from the registries; a request is worked out here, so that each of its steps sees
/// those before it. Only a container that may take work offers pools, is given storage and gives
/// some back, while what any container holds is allocated. Of a pool that several offer the first
/// one's word counts, in the order of the addresses. Parameters that cannot be read are passed
/// over, with a warning.
class CStorageBoard {
public:
    CStorageBoard();
    CStorageBoard(const CStorageBoard&) = delete;
    CStorageBoard& operator=(const CStorageBoard&) = delete;

    const ContainerMap& GetContainers() const { return m_containers; }
    const CStoragePools& GetPools() const { return m_pools; }

    /// Takes storageChangeSize for the node from the pools with most room, and adds one record to
    /// allocInfo for each of them. Returns 0; or, logged, ORVA_PARA_INVALID for an unknown node,
    /// ORVA_FAIL when the node takes nothing now or the pools have too little room.
    int Allocate(ORVA_CLOUD_STORAGE_SEND_INFO& share);

    /// Takes storage of one pool back, from the holders that use least of theirs and never what is
    /// used. Names the pool and appends an entry for each holder. Returns 0; or, logged,
    /// ORVA_PARA_INVALID for an unknown node, ORVA_FAIL when no pool has so much to give back.
    int Reduce(const CStorageReduction& reduction, std::string& strCode,
               std::list<ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST>& reduceList) const;

    /// Why the pools of one of the containers cannot give so much; empty when they can.
    std::string WhyNoRoom(const CContainerAddr& addr, int64_t llSize) const;

private:
    /// Why one of the containers takes no work; null when it does.
    const char* WhyNoWork(const CContainerAddr& addr) const;

    void ReadContainer(const CContainerAddr& addr, const CContainer& container, const CNode* pNode);
    void ReadPools(const CContainerAddr& addr, const KeyValueMap& params);
    void ReadHoldings(const CContainerAddr& addr, const CContainer& container,
                      const KeyValueMap& params);

    /// The pool with most room, the first of equals; null without a pool.
    CStoragePools::value_type* FindEmptiest();

    /// What the reduction may take from, by code: the pools that have enough to give back, and of
    /// those the containers that can be told.
    std::map<std::string, CStorageHoldings> FindGivers(const CStorageReduction& reduction) const;

    ContainerMap m_containers;
    std::map<CContainerAddr, const char*> m_noWork;  ///< why, of those that take none
    CStoragePools m_pools;
    std::map<std::string, CStorageHoldings> m_holdings;  ///< by code, of pools nobody offers too
};
