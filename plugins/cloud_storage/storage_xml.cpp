#include "cloud_storage/storage_xml.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "cloud_storage/storage_size.h"
#include "common/task_xml.h"
#include "common_service/tarn_def.h"
#include "common_service/xml_common.h"
#include "operation_log/operation_log.h"

using namespace operation_log;

namespace {

constexpr char OPERATION_READ[] = "read cloud storage request";

/// Reads the id of the Node that was entered. False, logged, without one or when it is in nodes.
bool ReadNodeId(PELU::CXml& xml, bool bEntered, std::set<std::string>& nodes,
                std::string& strNodeId) {
    if (!bEntered || !CXmlCommon::Instance().GetElemValue(xml, "NodeID", strNodeId, true) ||
        strNodeId.empty()) {
        LogFailure(OPERATION_READ, ORVA_XML_INVALID, "a node has no NodeID.");
        return false;
    }
    if (!nodes.insert(strNodeId).second) {
        LogFailure(OPERATION_READ, ORVA_XML_INVALID, "node stands twice, id[%s].",
                   strNodeId.c_str());
        return false;
    }
    return true;
}

/// Collects the id of each Node of the current element and calls read with it, the cursor below the
/// Node, until one is refused.
template <typename Read>
bool ReadNodes(PELU::CXml& xml, std::set<std::string>& nodes, Read read) {
    if (!xml.IntoElem()) {
        return true;
    }
    bool bGood = true;
    for (bool bNode = xml.FindElem("Node"); bNode && bGood;
         bNode = xml.NextElem() && xml.FindElemValue("Node")) {
        const bool bEntered = xml.IntoElem();
        std::string strNodeId;
        bGood = ReadNodeId(xml, bEntered, nodes, strNodeId) && read(strNodeId);
        if (bEntered) {
            xml.OutOfElem();
        }
    }
    xml.OutOfElem();
    return bGood;
}

/// Reads a number of iMin or more; an absent element leaves iValue. False, logged, when that is
/// less, or for anything else.
bool ReadNumber(PELU::CXml& xml, const char* pszName, int32_t iMin, int32_t& iValue) {
    std::string strText = std::to_string(iValue);
    CXmlCommon::Instance().GetElemValue(xml, pszName, strText, true);
    const std::optional<int32_t> size = ReadStorageSize(strText);
    if (!size || *size < iMin) {
        LogFailure(OPERATION_READ, ORVA_XML_INVALID, "bad number, %s[%s].", pszName,
                   strText.c_str());
        return false;
    }
    iValue = *size;
    return true;
}

/// Writes an element with these texts, of which there must be one, and behind them what write makes
/// of each entry.
template <typename Entries, typename Write>
int WriteWith(PELU::CXml& xml, const char* pszName, const std::list<CXmlText>& texts,
              const Entries& entries, Write write) {
    int iRet = WriteElement(xml, pszName, texts);
    if (iRet != ORVA_SUCCEED) {
        return iRet;
    }
    xml.IntoElem();
    while (xml.NextElem()) {
    }
    for (auto it = entries.begin(); it != entries.end() && iRet == ORVA_SUCCEED; ++it) {
        iRet = write(*it);
    }
    xml.OutOfElem();
    return iRet;
}

int WriteNode(const CContainer& container, PELU::CXml& xml) {
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocInfoList;
    container.GetAllocInfoList(allocInfoList);
    return WriteWith(xml, "Node",
                     {{"NodeID", container.GetNodeId()},
                      {"ServiceType", container.GetServiceType()},
                      {"ProductType", container.GetProductType()},
                      {"ReqStorage", std::to_string(container.GetReqStorage())},
                      {"ReqPicStorage", std::to_string(container.GetReqPicStorage())},
                      {"LowPriBitRate", std::to_string(container.GetBitRate())}},
                     allocInfoList, [&](const ORVA_CLOUD_STORAGE_ALLOC_INFO& info) {
                         return WriteElement(xml, "AllocInfo",
                                             {{"Code", info.cloudStorageCode},
                                              {"AllocSize", std::to_string(info.allocStorage)},
                                              {"UsedSize", std::to_string(info.usedStorage)},
                                              {"Dns", info.dns},
                                              {"Path", info.path}});
                     });
}

int WritePool(const CStoragePools::value_type& entry, PELU::CXml& xml) {
    const auto& [strCode, pool] = entry;
    const CStorageHolding& held = pool.held;
    return WriteElement(xml, "Pool",
                        {{"Code", strCode},
                         {"Size", std::to_string(pool.iSize)},
                         {"AllocSize", std::to_string(held.llAllocated + held.llTaken)},
                         {"UsedSize", std::to_string(held.llUsed)},
                         {"FreeSize", std::to_string(pool.GetFree())},
                         {"Dns", pool.strDns},
                         {"Path", pool.strPath}});
}

}  // namespace

int ReadAllocRequest(PELU::CXml& xml, std::list<ORVA_CLOUD_STORAGE_SEND_INFO>& shareList) {
    if (!xml.FindElem("CloudStorageAlloc")) {
        return LogFailure(OPERATION_READ, ORVA_XML_INVALID, "no CloudStorageAlloc.");
    }
    std::list<ORVA_CLOUD_STORAGE_SEND_INFO> readList;
    std::set<std::string> nodes;
    const bool bGood = ReadNodes(xml, nodes, [&](const std::string& strNodeId) {
        ORVA_CLOUD_STORAGE_SEND_INFO& share = readList.emplace_back();
        share.strNodeID = strNodeId;
        return ReadNumber(xml, "Storage", 1, share.storageChangeSize) &&
               ReadNumber(xml, "LowPriStoreDay", 0, share.lowPriStoreDay);
    });
    if (!bGood) {
        return ORVA_XML_INVALID;
    }
    if (readList.empty()) {
        return LogFailure(OPERATION_READ, ORVA_XML_INVALID, "no Node.");
    }
    shareList.splice(shareList.end(), readList);
    return ORVA_SUCCEED;
}

int ReadReduceRequest(PELU::CXml& xml, CStorageReduction& reduction) {
    if (!xml.FindElem("CloudStorageReduce")) {
        return LogFailure(OPERATION_READ, ORVA_XML_INVALID, "no CloudStorageReduce.");
    }
    if (xml.IntoElem()) {
        CXmlCommon::Instance().GetElemValue(xml, "Code", reduction.strCode, true);
        xml.OutOfElem();
    }
    const bool bGood = ReadNodes(xml, reduction.nodes, [](const std::string&) { return true; });
    return bGood ? ORVA_SUCCEED : ORVA_XML_INVALID;
}

int WriteAllocRequest(const ORVA_CLOUD_STORAGE_SEND_INFO& share, PELU::CXml& xml) {
    return WriteWith(xml, "CloudStorageAllocReq",
                     {{"NodeID", share.strNodeID},
                      {"StorageStatus", std::to_string(share.storageStatus)},
                      {"StorageChangeSize", std::to_string(share.storageChangeSize)},
                      {"LowPriStoreDay", std::to_string(share.lowPriStoreDay)}},
                     share.allocInfo, [&](const ORVA_CLOUD_STORAGE_ALLOC_INFO& info) {
                         return WriteElement(xml, "AllocInfo",
                                             {{"Code", info.cloudStorageCode},
                                              {"AllocSize", std::to_string(info.allocStorage)},
                                              {"UsedSize", std::to_string(info.usedStorage)},
                                              {"FreeSize", std::to_string(info.freeStorage)},
                                              {"Dns", info.dns},
                                              {"Path", info.path}});
                     });
}

int WriteReduceRequest(const ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST& reductions, PELU::CXml& xml) {
    return WriteWith(
        xml, "CloudStorageReduceReq",
        {{"NodeID", reductions.strNodeID}, {"LowPriority", std::to_string(reductions.lowPriority)}},
        reductions.reduceInfoList, [&](const ORVA_CLOUD_STORAGE_REDUCE_INFO& info) {
            return WriteElement(
                xml, "ReduceInfo",
                {{"Code", info.cloudStorageCode}, {"Size", std::to_string(info.storageSize)}});
        });
}

int WriteAllocReport(const CStorageBoard& board, PELU::CXml& xml) {
    const ContainerMap& containers = board.GetContainers();
    return WriteWith(xml, "CloudStorageAllocReport", {{"Count", std::to_string(containers.size())}},
                     containers, [&](const auto& entry) { return WriteNode(entry.second, xml); });
}

int WriteReduceReport(const CStorageBoard& board, PELU::CXml& xml) {
    const CStoragePools& pools = board.GetPools();
    return WriteWith(xml, "CloudStorageReduceReport", {{"Count", std::to_string(pools.size())}},
                     pools, [&](const auto& entry) { return WritePool(entry, xml); });
}
