#include "cloud_storage/storage_board.h"

#include <optional>
#include <utility>
#include <vector>

#include "cloud_storage/storage_size.h"
#include "common/work_state.h"
#include "common_service/tarn_def.h"
#include "framework_service/cluster_moment.h"
#include "operation_log/operation_log.h"
#include "orva_plugin_service/cloud_storage_param.h"

using namespace operation_log;

namespace {

constexpr char OPERATION_READ[] = "read cloud storage parameters";
constexpr char OPERATION_ALLOC[] = "cloud storage alloc";
constexpr char OPERATION_REDUCE[] = "cloud storage reduce";

CContainerAddr AddrOf(const std::string& strNodeId) {
    return {strNodeId, CONTAINER_TYPE_CLOUD_STORAGE};
}

/// The parameters whose keys begin so, by the rest of the key.
KeyValueMap ParamsBelow(const KeyValueMap& params, const std::string& strPrefix) {
    KeyValueMap below;
    for (auto it = params.lower_bound(strPrefix);
         it != params.end() && it->first.compare(0, strPrefix.size(), strPrefix) == 0; ++it) {
        below.emplace_hint(below.end(), it->first.substr(strPrefix.size()), it->second);
    }
    return below;
}

/// The words that a container tells its pools apart by.
std::set<std::string> PoolWords(const KeyValueMap& params) {
    std::set<std::string> words;
    for (const auto& [strRest, strValue] : ParamsBelow(params, PSZ_POOL_PARAM)) {
        words.insert(strRest.substr(0, strRest.rfind('.')));
    }
    return words;
}

/// A size by the code of its pool, as PSZ_TAKEN_PARAM has it.
std::map<std::string, int32_t> SizesBelow(const CContainerAddr& addr, const KeyValueMap& params,
                                          const char* pszPrefix) {
    std::map<std::string, int32_t> sizes;
    for (const auto& [strCode, strSize] : ParamsBelow(params, pszPrefix)) {
        if (const std::optional<int32_t> size = ReadStorageSize(strSize)) {
            sizes.emplace(strCode, *size);
        } else {
            LogWarning(OPERATION_READ, "bad size, key[%s%s], value[%s], node[%s].", pszPrefix,
                       strCode.c_str(), strSize.c_str(), addr.GetNodeId().c_str());
        }
    }
    return sizes;
}

CStorageHolding SumOf(const CStorageHoldings& holdings) {
    CStorageHolding sum;
    for (const auto& [addr, holding] : holdings) {
        sum.Add(holding);
    }
    return sum;
}

std::vector<const CStorageHoldings::value_type*> LeastUsedFirst(const CStorageHoldings& holdings) {
    std::vector<const CStorageHoldings::value_type*> ordered;
    for (const auto& entry : holdings) {
        ordered.push_back(&entry);
    }
    std::stable_sort(ordered.begin(), ordered.end(), [](const auto* pLeft, const auto* pRight) {
        return pLeft->second.GetUseRatio() < pRight->second.GetUseRatio();
    });
    return ordered;
}

}  // namespace

void CStorageHolding::Add(const CStorageHolding& other) {
    llAllocated += other.llAllocated;
    llUsed += other.llUsed;
    llTaken += other.llTaken;
    llReleased += other.llReleased;
}

CStorageBoard::CStorageBoard() {
    const std::optional<CClusterMoment> moment = CClusterMoment::Take();
    if (!moment) {
        return;
    }
    moment->VisitContainers(0, [&](const CContainerAddr& addr, const CContainer* pContainer) {
        if (addr.GetContainerType() == CONTAINER_TYPE_CLOUD_STORAGE) {
            ReadContainer(addr, *pContainer, moment->FindNode(pContainer->GetNodeId()));
        }
    });
    for (auto& [strCode, pool] : m_pools) {
        pool.held = SumOf(m_holdings[strCode]);
    }
}

void CStorageBoard::ReadContainer(const CContainerAddr& addr, const CContainer& container,
                                  const CNode* pNode) {
    m_containers.emplace_hint(m_containers.end(), addr, container);
    KeyValueMap params;
    container.GetAllPrivateInfo(params);
    ReadHoldings(addr, container, params);
    const char* const pszNotReady = WhyNotReady(container, CONTAINER_TYPE_CLOUD_STORAGE);
    if (const char* const pszNoWork = pszNotReady != nullptr ? pszNotReady : WhyNoHost(pNode)) {
        m_noWork.emplace(addr, pszNoWork);
    } else {
        ReadPools(addr, params);
    }
}

void CStorageBoard::ReadPools(const CContainerAddr& addr, const KeyValueMap& params) {
    for (const std::string& strWord : PoolWords(params)) {
        KeyValueMap fields = ParamsBelow(params, PoolParam(strWord, ""));
        const std::optional<int32_t> size = ReadStorageSize(fields[PSZ_POOL_SIZE]);
        const std::string& strCode = fields[PSZ_POOL_CODE];
        if (strCode.empty() || !size || *size == 0) {
            LogWarning(OPERATION_READ, "bad pool[%s], code[%s], size[%s], node[%s].",
                       strWord.c_str(), strCode.c_str(), fields[PSZ_POOL_SIZE].c_str(),
                       addr.GetNodeId().c_str());
            continue;
        }
        m_pools.emplace(strCode,
                        CStoragePool{addr, *size, fields[PSZ_POOL_DNS], fields[PSZ_POOL_PATH], {}});
    }
}

void CStorageBoard::ReadHoldings(const CContainerAddr& addr, const CContainer& container,
                                 const KeyValueMap& params) {
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocInfoList;
    container.GetAllocInfoList(allocInfoList);
    for (const ORVA_CLOUD_STORAGE_ALLOC_INFO& info : allocInfoList) {
        CStorageHolding& holding = m_holdings[info.cloudStorageCode][addr];
        holding.llAllocated += std::max(info.allocStorage, 0);
        holding.llUsed += std::max(info.usedStorage, 0);
    }
    for (const auto& [strCode, iSize] : SizesBelow(addr, params, PSZ_TAKEN_PARAM)) {
        m_holdings[strCode][addr].llTaken = iSize;
    }
    for (const auto& [strCode, iSize] : SizesBelow(addr, params, PSZ_RELEASED_PARAM)) {
        m_holdings[strCode][addr].llReleased = iSize;
    }
}

CStoragePools::value_type* CStorageBoard::FindEmptiest() {
    const auto it =
        std::max_element(m_pools.begin(), m_pools.end(), [](const auto& left, const auto& right) {
            return left.second.GetFree() < right.second.GetFree();
        });
    return it != m_pools.end() ? &*it : nullptr;
}

int CStorageBoard::Allocate(ORVA_CLOUD_STORAGE_SEND_INFO& share) {
    const CContainerAddr addr = AddrOf(share.strNodeID);
    if (m_containers.count(addr) == 0) {
        return LogFailure(OPERATION_ALLOC, ORVA_PARA_INVALID, "unknown node[%s].",
                          share.strNodeID.c_str());
    }
    if (const char* const pszNoWork = WhyNoWork(addr)) {
        return LogFailure(OPERATION_ALLOC, ORVA_FAIL, "node[%s] takes no storage: %s.",
                          share.strNodeID.c_str(), pszNoWork);
    }
    for (int64_t llLeft = share.storageChangeSize; llLeft > 0;) {
        auto* const pEmptiest = FindEmptiest();
        const int64_t llSize =
            pEmptiest != nullptr ? std::min(pEmptiest->second.GetFree(), llLeft) : 0;
        if (llSize == 0) {
            return LogFailure(OPERATION_ALLOC, ORVA_FAIL, "no room for node[%s], %lld of %d.",
                              share.strNodeID.c_str(), static_cast<long long>(llLeft),
                              share.storageChangeSize);
        }
        auto& [strCode, pool] = *pEmptiest;
        const auto iSize = static_cast<int32_t>(llSize);
        share.allocInfo.push_back({strCode, iSize, 0, iSize, pool.strDns, pool.strPath});
        pool.held.llTaken += llSize;
        llLeft -= llSize;
    }
    return ORVA_SUCCEED;
}

std::map<std::string, CStorageHoldings> CStorageBoard::FindGivers(
    const CStorageReduction& reduction) const {
    std::map<std::string, CStorageHoldings> giversByCode;
    for (const auto& [strCode, holdings] : m_holdings) {
        if (!reduction.strCode.empty() && strCode != reduction.strCode) {
            continue;
        }
        CStorageHoldings givers;
        for (const auto& [addr, holding] : holdings) {
            const bool bAsked =
                reduction.nodes.empty() || reduction.nodes.count(addr.GetNodeId()) != 0;
            if (bAsked && WhyNoWork(addr) == nullptr && holding.GetUnused() > 0) {
                givers.emplace(addr, holding);
            }
        }
        if (SumOf(givers).GetUnused() >= reduction.iSize) {
            giversByCode.emplace(strCode, std::move(givers));
        }
    }
    return giversByCode;
}

int CStorageBoard::Reduce(const CStorageReduction& reduction, std::string& strCode,
                          std::list<ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST>& reduceList) const {
    for (const std::string& strNodeId : reduction.nodes) {
        if (m_containers.count(AddrOf(strNodeId)) == 0) {
            return LogFailure(OPERATION_REDUCE, ORVA_PARA_INVALID, "unknown node[%s].",
                              strNodeId.c_str());
        }
    }
    const std::map<std::string, CStorageHoldings> giversByCode = FindGivers(reduction);
    const auto itPool = std::min_element(
        giversByCode.begin(), giversByCode.end(), [](const auto& left, const auto& right) {
            return SumOf(left.second).GetUseRatio() < SumOf(right.second).GetUseRatio();
        });
    if (itPool == giversByCode.end()) {
        return LogFailure(OPERATION_REDUCE, ORVA_FAIL, "no pool has %d to give back, code[%s].",
                          reduction.iSize, reduction.strCode.c_str());
    }
    strCode = itPool->first;
    int64_t llLeft = reduction.iSize;
    for (const auto* const pGiver : LeastUsedFirst(itPool->second)) {
        const auto& [addr, holding] = *pGiver;
        const auto iSize = static_cast<int32_t>(std::min(holding.GetUnused(), llLeft));
        if (iSize == 0) {
            break;
        }
        reduceList.push_back(
            {addr.GetNodeId(), m_containers.at(addr).GetBitRate(), {{strCode, iSize}}});
        llLeft -= iSize;
    }
    return ORVA_SUCCEED;
}

const char* CStorageBoard::WhyNoWork(const CContainerAddr& addr) const {
    const auto it = m_noWork.find(addr);
    return it != m_noWork.end() ? it->second : nullptr;
}

std::string CStorageBoard::WhyNoRoom(const CContainerAddr& addr, int64_t llSize) const {
    if (const char* const pszNoWork = WhyNoWork(addr)) {
        return pszNoWork;
    }
    std::size_t uiPools = 0;
    int64_t llFree = 0;
    for (const auto& [strCode, pool] : m_pools) {
        if (pool.offerer == addr) {
            ++uiPools;
            llFree += pool.GetFree();
        }
    }
    if (uiPools == 0) {
        return "the container offers no pool";
    }
    return llFree >= llSize ? ""
                            : "its pools have " + std::to_string(llFree) + " free, and " +
                                  std::to_string(llSize) + " are asked for";
}
