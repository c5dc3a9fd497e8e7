#include "framework_service/cluster_cloud_storage_znode_info.h"

#include <iterator>
#include <utility>

#include "internal/json_text.h"
#include "internal/null_pointer.h"
#include "operation_log/operation_log.h"

using namespace framework_internal;
using namespace operation_log;

namespace {

constexpr char OPERATION[] = "cluster storage info";
constexpr Json::ArrayIndex NUMERIC_ALLOC_MEMBERS = 5;
constexpr Json::ArrayIndex NUMERIC_ENTRY_MEMBERS = 6;  ///< without "NodeList"

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

Json::Value BuildJson(const std::map<std::string, CloudStorageInfo>& infoMap) {
    Json::Value root;
    Json::Value& entries = root[PSZ_CLOUD_STORAGE_SET];
    for (const auto& [strNodeCode, info] : infoMap) {
        entries.append(BuildEntryJson(strNodeCode, info));
    }
    return root;
}

}  // namespace

CClusterCloudStorageZNodeInfo::CClusterCloudStorageZNodeInfo() = default;
CClusterCloudStorageZNodeInfo::CClusterCloudStorageZNodeInfo(
    const CClusterCloudStorageZNodeInfo& other) = default;
CClusterCloudStorageZNodeInfo::CClusterCloudStorageZNodeInfo(
    CClusterCloudStorageZNodeInfo&& other) noexcept = default;
CClusterCloudStorageZNodeInfo& CClusterCloudStorageZNodeInfo::operator=(
    const CClusterCloudStorageZNodeInfo& rhs) = default;
CClusterCloudStorageZNodeInfo& CClusterCloudStorageZNodeInfo::operator=(
    CClusterCloudStorageZNodeInfo&& rhs) noexcept = default;
CClusterCloudStorageZNodeInfo::~CClusterCloudStorageZNodeInfo() = default;

int32_t CClusterCloudStorageZNodeInfo::ParseJson(const char* pszJson) {
    if (pszJson == nullptr) {
        return LogNullPointer(OPERATION_NULL_JSON, ORVA_DATA_INVALID);
    }
    Json::Value root;
    if (!ParseJsonText(pszJson, root)) {
        return LogFailure(OPERATION, ORVA_DATA_INVALID, "parse json fail, json text[%s].", pszJson);
    }
    const Json::Value* pEntries = FindArray(root, PSZ_CLOUD_STORAGE_SET);
    if (pEntries == nullptr) {
        return LogFailure(OPERATION, ORVA_DATA_INVALID,
                          "CloudStorageSet is invalid, json text[%s].", pszJson);
    }
    LogInfo(OPERATION, "parse json text[%s], size=%d", pszJson, static_cast<int>(pEntries->size()));
    // What ToJson would build from the map is here already, if nothing in the text differs from it.
    bool bAsBuilt = m_cloudStorageInfoMap.empty() && root.size() == 1 && !pEntries->empty();
    m_json = {};
    for (const Json::Value& entryJson : *pEntries) {
        std::string strNodeCode;
        if (!ReadMembers(entryJson, {{PSZ_CLOUD_STORAGE_NVRCODE, strNodeCode}})) {
            return LogFailure(OPERATION, ORVA_DATA_INVALID, "node code is invalid, json text[%s].",
                              pszJson);
        }
        CloudStorageInfo info{};
        if (ParseCloudStorageNodeJson(entryJson, info, bAsBuilt) != ORVA_SUCCEED) {
            return LogFailure(OPERATION, ORVA_DATA_INVALID,
                              "parse cloud storage node failed, json text[%s].", pszJson);
        }
        if (const Json::Value* pAllocs = FindArray(entryJson, PSZ_CLOUD_STORAGE_NODE_LIST);
            pAllocs != nullptr) {
            for (const Json::Value& allocJson : *pAllocs) {
                ORVA_CLOUD_STORAGE_ALLOC_INFO& allocInfo = info.allocInfo.emplace_back();
                if (ParseNodeJson(allocJson, allocInfo, bAsBuilt) != ORVA_SUCCEED) {
                    return LogFailure(OPERATION, ORVA_DATA_INVALID,
                                      "parse node json fail, json text[%s].", pszJson);
                }
                bAsBuilt = bAsBuilt && allocJson.size() == NUMERIC_ALLOC_MEMBERS;
                LogInfo(OPERATION, "nvr code=%s, code=%s, alloc=%d, used=%d, dns=%s, path=%s",
                        strNodeCode.c_str(), allocInfo.cloudStorageCode.c_str(),
                        allocInfo.allocStorage, allocInfo.usedStorage, allocInfo.dns.c_str(),
                        allocInfo.path.c_str());
            }
        }
        bAsBuilt = bAsBuilt &&
                   (m_cloudStorageInfoMap.empty() ||
                    m_cloudStorageInfoMap.rbegin()->first < strNodeCode) &&
                   entryJson.size() == NUMERIC_ENTRY_MEMBERS + (info.allocInfo.empty() ? 0 : 1);
        m_cloudStorageInfoMap.insert_or_assign(m_cloudStorageInfoMap.end(), std::move(strNodeCode),
                                               std::move(info));
    }
    if (bAsBuilt) {
        m_json = std::move(root);
    }
    return ORVA_SUCCEED;
}

int32_t CClusterCloudStorageZNodeInfo::ToJson(char* pszJson, uint32_t iMaxLen) {
    if (pszJson == nullptr) {
        return LogNullPointer(OPERATION_NULL_JSON, ORVA_FAIL);
    }
    if (m_json->isNull()) {
        m_json = BuildJson(m_cloudStorageInfoMap);
    }
    WriteJsonText(*m_json, pszJson, iMaxLen);
    return ORVA_SUCCEED;
}

int32_t CClusterCloudStorageZNodeInfo::ParseNodeJson(const Json::Value& nodeJson,
                                                     ORVA_CLOUD_STORAGE_ALLOC_INFO& nodeInfo) {
    bool bAsBuilt = true;
    return ParseNodeJson(nodeJson, nodeInfo, bAsBuilt);
}

int32_t CClusterCloudStorageZNodeInfo::ParseNodeJson(const Json::Value& nodeJson,
                                                     ORVA_CLOUD_STORAGE_ALLOC_INFO& nodeInfo,
                                                     bool& bAsBuilt) {
    std::string strCode;
    int iAllocSize = 0;
    int iUsedSize = 0;
    std::string strDns;
    std::string strPath;
    if (!ReadMembers(nodeJson,
                     {{PSZ_CLOUD_STORAGE_CODE, strCode},
                      {PSZ_CLOUD_STORAGE_ALLOC_SIZE, iAllocSize},
                      {PSZ_CLOUD_STORAGE_USED_SIZE, iUsedSize},
                      {PSZ_CLOUD_STORAGE_DNS, strDns},
                      {PSZ_CLOUD_STORAGE_PATH, strPath}},
                     &bAsBuilt)) {
        return LogFailure("cluster cloud storage node info", ORVA_DATA_INVALID,
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
    bool bAsBuilt = true;
    return ParseCloudStorageNodeJson(nodeJson, tempCloudStorageInfo, bAsBuilt);
}

int32_t CClusterCloudStorageZNodeInfo::ParseCloudStorageNodeJson(
    const Json::Value& nodeJson, CloudStorageInfo& tempCloudStorageInfo, bool& bAsBuilt) {
    std::string strServiceType;
    std::string strProductType;
    int iReqStorage = 0;
    int iReqPicStorage = 0;
    int iLowPriorityBitRate = 0;
    if (!ReadMembers(nodeJson,
                     {{PSZ_CLOUD_STORAGE_SERVICE_TYPE, strServiceType},
                      {PSZ_CLOUD_STORAGE_PRODUCT_TYPE, strProductType},
                      {PSZ_CLOUD_STORAGE_REQ, iReqStorage},
                      {PSZ_CLOUD_STORAGE_REQ_PIC, iReqPicStorage},
                      {PSZ_CLOUD_STORAGE_LOWPRI_BIT, iLowPriorityBitRate}},
                     &bAsBuilt)) {
        return LogFailure("cluster cloud storage info", ORVA_DATA_INVALID,
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
    const auto [it, bInserted] = m_cloudStorageInfoMap.insert_or_assign(nodeCode, info);
    if (bInserted) {
        m_json = {};
    } else if (!m_json->isNull()) {
        const auto iEntry = std::distance(m_cloudStorageInfoMap.begin(), it);
        m_json.Edit()[PSZ_CLOUD_STORAGE_SET][static_cast<Json::ArrayIndex>(iEntry)] =
            BuildEntryJson(nodeCode, info);
    }
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

std::map<std::string, CloudStorageInfo> CClusterCloudStorageZNodeInfo::TakeMap() {
    m_json = {};
    return std::exchange(m_cloudStorageInfoMap, {});
}
