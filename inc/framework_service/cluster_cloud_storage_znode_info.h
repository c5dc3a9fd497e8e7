#pragma once

#include <json/value.h>

#include <cstdint>
#include <list>
#include <map>
#include <string>

#include "common_service/data/communication_data.h"
#include "common_service/tarn_def.h"
#include "framework_service/detail/copy_on_write.h"
#include "framework_service/document_keys.h"
#include "framework_service/store_path.h"
#include "orva_plugin_service/tarn_orva_data.h"

inline constexpr ORVA_STORE_NODE STORE_NODE_CLOUD_STORAGE{"/CloudStorage", 65536};

inline constexpr char PSZ_CLOUD_STORAGE_SET[] = "CloudStorageSet";
inline constexpr char PSZ_CLOUD_STORAGE_NVRCODE[] = "NvrCode";
inline constexpr char PSZ_CLOUD_STORAGE_SERVICE_TYPE[] = "ServiceType";
inline constexpr char PSZ_CLOUD_STORAGE_PRODUCT_TYPE[] = "ProductType";
inline constexpr char PSZ_CLOUD_STORAGE_REQ[] = "ReqSize";
inline constexpr char PSZ_CLOUD_STORAGE_REQ_PIC[] = "ReqPicSize";
inline constexpr char PSZ_CLOUD_STORAGE_LOWPRI_BIT[] = "LowpriBit";
inline constexpr char PSZ_CLOUD_STORAGE_NODE_LIST[] = "NodeList";
inline constexpr char PSZ_CLOUD_STORAGE_CODE[] = "Code";
inline constexpr char PSZ_CLOUD_STORAGE_ALLOC_SIZE[] = "AllocSize";
inline constexpr char PSZ_CLOUD_STORAGE_USED_SIZE[] = "UsedSize";
inline constexpr char PSZ_CLOUD_STORAGE_DNS[] = "Dns";
inline constexpr char PSZ_CLOUD_STORAGE_PATH[] = "Path";

inline constexpr CDocumentKey CLOUD_STORAGE_ALLOC_KEYS[] = {
    {PSZ_CLOUD_STORAGE_CODE, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_CLOUD_STORAGE_ALLOC_SIZE, EKeyType::INTEGER, EKeyNeed::REQUIRED},
    {PSZ_CLOUD_STORAGE_USED_SIZE, EKeyType::INTEGER, EKeyNeed::REQUIRED},
    {PSZ_CLOUD_STORAGE_DNS, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_CLOUD_STORAGE_PATH, EKeyType::STRING, EKeyNeed::REQUIRED},
};

inline constexpr CDocumentKey CLOUD_STORAGE_ENTRY_KEYS[] = {
    {PSZ_CLOUD_STORAGE_NVRCODE, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_CLOUD_STORAGE_SERVICE_TYPE, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_CLOUD_STORAGE_PRODUCT_TYPE, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_CLOUD_STORAGE_REQ, EKeyType::INTEGER, EKeyNeed::REQUIRED},
    {PSZ_CLOUD_STORAGE_REQ_PIC, EKeyType::INTEGER, EKeyNeed::REQUIRED},
    {PSZ_CLOUD_STORAGE_LOWPRI_BIT, EKeyType::INTEGER, EKeyNeed::REQUIRED},
    {PSZ_CLOUD_STORAGE_NODE_LIST, EKeyType::ARRAY, EKeyNeed::OPTIONAL, CLOUD_STORAGE_ALLOC_KEYS},
};

inline constexpr CDocumentKey CLOUD_STORAGE_KEYS[] = {
    {PSZ_CLOUD_STORAGE_SET, EKeyType::ARRAY, EKeyNeed::REQUIRED, CLOUD_STORAGE_ENTRY_KEYS},
};

inline constexpr CDocumentKey CLOUD_STORAGE_DOCUMENT{"", EKeyType::OBJECT, EKeyNeed::REQUIRED,
                                                     CLOUD_STORAGE_KEYS};

/// What cloud storage one node asked for and holds.
struct CloudStorageInfo {
    std::string strServiceType;
    std::string strProductType;
    int32_t iReqStorage;
    int32_t iReqPicStorage;
    int32_t iLowPriorityBitRate;
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocInfo;
};

/// The cloud storage of all nodes, by node id. A document written from an empty map does not parse
/// again.
class CClusterCloudStorageZNodeInfo : public CBaseJsonObject {
public:
    CClusterCloudStorageZNodeInfo();
    CClusterCloudStorageZNodeInfo(const CClusterCloudStorageZNodeInfo& other);
    CClusterCloudStorageZNodeInfo(CClusterCloudStorageZNodeInfo&& other) noexcept;
    CClusterCloudStorageZNodeInfo& operator=(const CClusterCloudStorageZNodeInfo& rhs);
    CClusterCloudStorageZNodeInfo& operator=(CClusterCloudStorageZNodeInfo&& rhs) noexcept;
    ~CClusterCloudStorageZNodeInfo() override;

    /// Adds the text's entries to the map, replacing those of the same node. A bad entry ends the
    /// parse, logged, with ORVA_DATA_INVALID; the entries before it stay.
    int32_t ParseJson(const char* pszJson) override;
    int32_t ToJson(char* pszJson, uint32_t iMaxLen) override;

    /// Reads one allocation. Returns 0; or, logged, ORVA_DATA_INVALID with the target untouched.
    int32_t ParseNodeJson(const Json::Value& nodeJson, ORVA_CLOUD_STORAGE_ALLOC_INFO& nodeInfo);

    /// Reads an entry without its node id and its allocations, the same way.
    int32_t ParseCloudStorageNodeJson(const Json::Value& nodeJson,
                                      CloudStorageInfo& tempCloudStorageInfo);

    /// Inserts or replaces the entry of a node.
    void SetCloudStorageInfo(const std::string& nodeCode, const CloudStorageInfo& info);

    /// Returns 0 and a copy of the entry; or 1 with the argument untouched.
    int GetCloudStorageInfo(const std::string& nodeCode, CloudStorageInfo& info) const;

    /// A copy of the whole map.
    std::map<std::string, CloudStorageInfo> GetCloudStorageInfoMap() const;

private:
    friend class CFrameworkInternal;

    /// The map itself; the document is empty afterwards.
    std::map<std::string, CloudStorageInfo> TakeMap();

    std::map<std::string, CloudStorageInfo> m_cloudStorageInfoMap;
    /// A pointer to what ToJson writes; null: build it anew.
    CCopyOnWrite<Json::Value> m_json;
};
