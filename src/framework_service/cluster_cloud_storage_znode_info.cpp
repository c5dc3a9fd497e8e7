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
constexpr char PARSE_JSON[] = "ParseJson";
constexpr char PARSE_NODE_JSON[] = "ParseNodeJson";
constexpr char PARSE_CLOUD_STORAGE_NODE_JSON[] = "ParseCloudStorageNodeJson";

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

/// The operation of the name PARSE_NODE_JSON. Clears bAsBuilt when ToJson would not build the same.
int32_t ReadAlloc(const Json::Value& allocJson, ORVA_CLOUD_STORAGE_ALLOC_INFO& allocInfo,
                  bool& bAsBuilt) {
    ORVA_CLOUD_STORAGE_ALLOC_INFO read{};
    if (!ReadMembersAsWritten<CLOUD_STORAGE_ALLOC_KEYS>(
            allocJson, bAsBuilt, To<PSZ_CLOUD_STORAGE_CODE>(read.cloudStorageCode),
            To<PSZ_CLOUD_STORAGE_ALLOC_SIZE>(read.allocStorage),
            To<PSZ_CLOUD_STORAGE_USED_SIZE>(read.usedStorage), To<PSZ_CLOUD_STORAGE_DNS>(read.dns),
            To<PSZ_CLOUD_STORAGE_PATH>(read.path))) {
        return LogFailure({"cluster cloud storage node info", CPlace::Of(PARSE_NODE_JSON)},
                          ORVA_DATA_INVALID, "node is null or illegal.");
    }
    bAsBuilt = bAsBuilt && allocJson.size() == std::size(CLOUD_STORAGE_ALLOC_KEYS);
    read.freeStorage = allocInfo.freeStorage;
    allocInfo = std::move(read);
    return ORVA_SUCCEED;
}

/// The same of the name PARSE_CLOUD_STORAGE_NODE_JSON, for what an entry holds beside its node and
/// its allocations.
int32_t ReadRequest(const Json::Value& entryJson, CloudStorageInfo& info, bool& bAsBuilt) {
    CloudStorageInfo read{};
    if (!ReadMembersAsWritten<CLOUD_STORAGE_ENTRY_KEYS>(
            entryJson, bAsBuilt, To<PSZ_CLOUD_STORAGE_SERVICE_TYPE>(read.strServiceType),
            To<PSZ_CLOUD_STORAGE_PRODUCT_TYPE>(read.strProductType),
            To<PSZ_CLOUD_STORAGE_REQ>(read.iReqStorage),
            To<PSZ_CLOUD_STORAGE_REQ_PIC>(read.iReqPicStorage),
            To<PSZ_CLOUD_STORAGE_LOWPRI_BIT>(read.iLowPriorityBitRate))) {
        return LogFailure({"cluster cloud storage info", CPlace::Of(PARSE_CLOUD_STORAGE_NODE_JSON)},
                          ORVA_DATA_INVALID, "node is null or illegal.");
    }
    read.allocInfo.swap(info.allocInfo);
    info = std::move(read);
    return ORVA_SUCCEED;
}

/// Appends an entry's allocations for PARSE_JSON.
bool ReadAllocs(const Json::Value& allocsJson, const std::string& strNodeCode,
                std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO>& allocInfoList, bool& bAsBuilt) {
    for (const Json::Value& allocJson : allocsJson) {
        ORVA_CLOUD_STORAGE_ALLOC_INFO& allocInfo = allocInfoList.emplace_back();
        if (ReadAlloc(allocJson, allocInfo, bAsBuilt) != ORVA_SUCCEED) {
            return false;
        }
        LogInfo({OPERATION, CPlace::Of(PARSE_JSON)},
                "nvr code=%s, code=%s, alloc=%d, used=%d, dns=%s, path=%s", strNodeCode.c_str(),
                allocInfo.cloudStorageCode.c_str(), allocInfo.allocStorage, allocInfo.usedStorage,
                allocInfo.dns.c_str(), allocInfo.path.c_str());
    }
    return true;
}

/// Reads an entry for PARSE_JSON. Returns null, or the line that says what is wrong.
const char* ReadEntry(const Json::Value& entryJson, std::string& strNodeCode,
                      CloudStorageInfo& info, bool& bAsBuilt) {
    const Json::Value* pAllocs = nullptr;
    if (!ReadMembers<CLOUD_STORAGE_ENTRY_KEYS>(entryJson,
                                               To<PSZ_CLOUD_STORAGE_NVRCODE>(strNodeCode),
                                               To<PSZ_CLOUD_STORAGE_NODE_LIST>(pAllocs))) {
        return "node code is invalid, json text[%s].";
    }
    if (ReadRequest(entryJson, info, bAsBuilt) != ORVA_SUCCEED) {
        return "parse cloud storage node failed, json text[%s].";
    }
    if (pAllocs != nullptr && !ReadAllocs(*pAllocs, strNodeCode, info.allocInfo, bAsBuilt)) {
        return "parse node json fail, json text[%s].";
    }
    bAsBuilt = bAsBuilt && entryJson.size() == std::size(CLOUD_STORAGE_ENTRY_KEYS) -
                                                   (info.allocInfo.empty() ? 1 : 0);
    return nullptr;
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
    const Json::Value* pEntries = nullptr;
    if (!ReadMembers<CLOUD_STORAGE_KEYS>(root, To<PSZ_CLOUD_STORAGE_SET>(pEntries))) {
        return LogFailure(OPERATION, ORVA_DATA_INVALID,
                          "CloudStorageSet is invalid, json text[%s].", pszJson);
    }
    LogInfo(OPERATION, "parse json text[%s], size=%d", pszJson, static_cast<int>(pEntries->size()));
    // What ToJson would build from the map is here already, if nothing in the text differs from it.
    bool bAsBuilt = m_cloudStorageInfoMap.empty() && root.size() == 1 && !pEntries->empty();
    m_json = {};
    for (const Json::Value& entryJson : *pEntries) {
        std::string strNodeCode;
        CloudStorageInfo info{};
        if (const char* const pszFault = ReadEntry(entryJson, strNodeCode, info, bAsBuilt);
            pszFault != nullptr) {
            return LogFailure(OPERATION, ORVA_DATA_INVALID, pszFault, pszJson);
        }
        bAsBuilt = bAsBuilt && (m_cloudStorageInfoMap.empty() ||
                                m_cloudStorageInfoMap.rbegin()->first < strNodeCode);
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
    return ReadAlloc(nodeJson, nodeInfo, bAsBuilt);
}

int32_t CClusterCloudStorageZNodeInfo::ParseCloudStorageNodeJson(
    const Json::Value& nodeJson, CloudStorageInfo& tempCloudStorageInfo) {
    bool bAsBuilt = true;
    return ReadRequest(nodeJson, tempCloudStorageInfo, bAsBuilt);
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
