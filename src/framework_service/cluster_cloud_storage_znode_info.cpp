#include "framework_service/cluster_cloud_storage_znode_info.h"

#include <utility>

#include "internal/json_text.h"
#include "internal/log.h"

using namespace framework_internal;

namespace {

constexpr char OPERATION[] = "cluster storage info";

Json::Value BuildAllocJson(const ORVA_CLOUD_STORAGE_ALLOC_INFO& allocInfo) {
    Json::Value allocJson;
    allocJson[PSZ_CLOUD_STORAGE_CODE] = allocInfo.cloudStorageCode;
    allocJson[PSZ_CLOUD_STORAGE_ALLOC_SIZE] = allocInfo.allocStorage;
    allocJson[PSZ_CLOUD_STORAGE_USED_SIZE] = allocInfo.usedStorage;
    allocJson[PSZ_CLOUD_STORAGE_DNS] = allocInfo.dns;
    allocJson[PSZ_CLOUD_STORAGE_PATH] = allocInfo.path;
    return allocJson;
}

Json::Value BuildEntryJson(const std::string& strNodeCode, const CloudStorageInfo& info) {
    Json::Value entryJson;
    entryJson[PSZ_CLOUD_STORAGE_NVRCODE] = strNodeCode;
    entryJson[PSZ_CLOUD_STORAGE_SERVICE_TYPE] = info.strServiceType;
    entryJson[PSZ_CLOUD_STORAGE_PRODUCT_TYPE] = info.strProductType;
    entryJson[PSZ_CLOUD_STORAGE_REQ] = info.iReqStorage;
    entryJson[PSZ_CLOUD_STORAGE_REQ_PIC] = info.iReqPicStorage;
    entryJson[PSZ_CLOUD_STORAGE_LOWPRI_BIT] = info.iLowPriorityBitRate;
    for (const ORVA_CLOUD_STORAGE_ALLOC_INFO& allocInfo : info.allocInfo) {
        entryJson[PSZ_CLOUD_STORAGE_NODE_LIST].append(BuildAllocJson(allocInfo));
    }
    return entryJson;
}

}  // namespace

int32_t CClusterCloudStorageZNodeInfo::ParseJson(const char* pszJson) {
    if (pszJson == nullptr) {
        return LogNullPointer(HERE, OPERATION_NULL_JSON, ORVA_DATA_INVALID);
    }
    Json::Value root;
    if (!ParseJsonText(pszJson, root)) {
        return LogFailure(HERE, OPERATION, ORVA_DATA_INVALID, "parse json fail, json text[%s].",
                          pszJson);
    }
    const Json::Value* pEntries = FindArray(root, PSZ_CLOUD_STORAGE_SET);
    if (pEntries == nullptr) {
        return LogFailure(HERE, OPERATION, ORVA_DATA_INVALID,
                          "CloudStorageSet is invalid, json text[%s].", pszJson);
    }
    LogInfo(HERE, OPERATION, "parse json text[%s], size=%d", pszJson,
            static_cast<int>(pEntries->size()));
    for (const Json::Value& entryJson : *pEntries) {
        std::string strNodeCode;
        if (!ReadMembers(entryJson, {{PSZ_CLOUD_STORAGE_NVRCODE, strNodeCode}})) {
            return LogFailure(HERE, OPERATION, ORVA_DATA_INVALID,
                              "node code is invalid, json text[%s].", pszJson);
        }
        CloudStorageInfo info{};
        if (ParseCloudStorageNodeJson(entryJson, info) != ORVA_SUCCEED) {
            return LogFailure(HERE, OPERATION, ORVA_DATA_INVALID,
                              "parse cloud storage node failed, json text[%s].", pszJson);
        }
        if (const Json::Value* pAllocs = FindArray(entryJson, PSZ_CLOUD_STORAGE_NODE_LIST);
            pAllocs != nullptr) {
            for (const Json::Value& allocJson : *pAllocs) {
                ORVA_CLOUD_STORAGE_ALLOC_INFO& allocInfo = info.allocInfo.emplace_back();
                if (ParseNodeJson(allocJson, allocInfo) != ORVA_SUCCEED) {
                    return LogFailure(HERE, OPERATION, ORVA_DATA_INVALID,
                                      "parse node json fail, json text[%s].", pszJson);
                }
                LogInfo(HERE, OPERATION, "nvr code=%s, code=%s, alloc=%d, used=%d, dns=%s, path=%s",
                        strNodeCode.c_str(), allocInfo.cloudStorageCode.c_str(),
                        allocInfo.allocStorage, allocInfo.usedStorage, allocInfo.dns.c_str(),
                        allocInfo.path.c_str());
            }
        }
        m_cloudStorageInfoMap.insert_or_assign(std::move(strNodeCode), std::move(info));
    }
    return ORVA_SUCCEED;
}

int32_t CClusterCloudStorageZNodeInfo::ToJson(char* pszJson, uint32_t iMaxLen) {
    if (pszJson == nullptr) {
        return LogNullPointer(HERE, OPERATION_NULL_JSON, ORVA_FAIL);
    }
    Json::Value root;
    Json::Value& entries = root[PSZ_CLOUD_STORAGE_SET];
    for (const auto& [strNodeCode, info] : m_cloudStorageInfoMap) {
        entries.append(BuildEntryJson(strNodeCode, info));
    }
    WriteJsonText(root, pszJson, iMaxLen);
    return ORVA_SUCCEED;
}

int32_t CClusterCloudStorageZNodeInfo::ParseNodeJson(const Json::Value& nodeJson,
                                                     ORVA_CLOUD_STORAGE_ALLOC_INFO& nodeInfo) {
    std::string strCode;
    int iAllocSize = 0;
    int iUsedSize = 0;
    std::string strDns;
    std::string strPath;
    if (!ReadMembers(nodeJson, {{PSZ_CLOUD_STORAGE_CODE, strCode},
                                {PSZ_CLOUD_STORAGE_ALLOC_SIZE, iAllocSize},
                                {PSZ_CLOUD_STORAGE_USED_SIZE, iUsedSize},
                                {PSZ_CLOUD_STORAGE_DNS, strDns},
                                {PSZ_CLOUD_STORAGE_PATH, strPath}})) {
        return LogFailure(HERE, "cluster cloud storage node info", ORVA_DATA_INVALID,
                          "node is null or illegal.");
    }
    nodeInfo.cloudStorageCode = std::move(strCode);
    nodeInfo.allocStorage = iAllocSize;
    nodeInfo.usedStorage = iUsedSize;
    nodeInfo.dns = std::move(strDns);
    nodeInfo.path = std::move(strPath);
    return ORVA_SUCCEED;
}

int32_t CClusterCloudStorageZNodeInfo::ParseCloudStorageNodeJson(
    const Json::Value& nodeJson, CloudStorageInfo& tempCloudStorageInfo) {
    std::string strServiceType;
    std::string strProductType;
    int iReqStorage = 0;
    int iReqPicStorage = 0;
    int iLowPriorityBitRate = 0;
    if (!ReadMembers(nodeJson, {{PSZ_CLOUD_STORAGE_SERVICE_TYPE, strServiceType},
                                {PSZ_CLOUD_STORAGE_PRODUCT_TYPE, strProductType},
                                {PSZ_CLOUD_STORAGE_REQ, iReqStorage},
                                {PSZ_CLOUD_STORAGE_REQ_PIC, iReqPicStorage},
                                {PSZ_CLOUD_STORAGE_LOWPRI_BIT, iLowPriorityBitRate}})) {
        return LogFailure(HERE, "cluster cloud storage info", ORVA_DATA_INVALID,
                          "node is null or illegal.");
    }
    tempCloudStorageInfo.strServiceType = std::move(strServiceType);
    tempCloudStorageInfo.strProductType = std::move(strProductType);
    tempCloudStorageInfo.iReqStorage = iReqStorage;
    tempCloudStorageInfo.iReqPicStorage = iReqPicStorage;
    tempCloudStorageInfo.iLowPriorityBitRate = iLowPriorityBitRate;
    return ORVA_SUCCEED;
}

void CClusterCloudStorageZNodeInfo::SetCloudStorageInfo(const std::string& nodeCode,
                                                        const CloudStorageInfo& info) {
    m_cloudStorageInfoMap.insert_or_assign(nodeCode, info);
}

int CClusterCloudStorageZNodeInfo::GetCloudStorageInfo(const std::string& nodeCode,
                                                       CloudStorageInfo& info) const {
    const auto it = m_cloudStorageInfoMap.find(nodeCode);
    if (it == m_cloudStorageInfoMap.end()) {
        return ORVA_FAIL;
    }
    info = it->second;
    return ORVA_SUCCEED;
}

std::map<std::string, CloudStorageInfo> CClusterCloudStorageZNodeInfo::GetCloudStorageInfoMap()
    const {
    return m_cloudStorageInfoMap;
}
