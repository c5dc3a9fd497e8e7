#pragma once

#include <json/value.h>

#include <cstdint>
#include <list>
#include <string>

#include "common_service/data/communication_data.h"
#include "common_service/tarn_def.h"
#include "common_service/xml.h"
#include "framework_service/document_keys.h"
#include "framework_service/store_path.h"

inline constexpr ORVA_STORE_NODE STORE_NODE_MGR{"/MEROMGR", 1024};

inline constexpr char PSZ_CLUSTER_MGR_MASTER[] = "MasterMGR";
inline constexpr char PSZ_CLUSTER_MGR_NODE[] = "NodeCode";
inline constexpr char PSZ_CLUSTER_MGR_IP[] = "NodeIp";

inline constexpr CDocumentKey CLUSTER_MGR_NODE_KEYS[] = {
    {PSZ_CLUSTER_MGR_NODE, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_CLUSTER_MGR_IP, EKeyType::STRING, EKeyNeed::REQUIRED},
};

inline constexpr CDocumentKey CLUSTER_MGR_KEYS[] = {
    {PSZ_CLUSTER_MGR_MASTER, EKeyType::OBJECT, EKeyNeed::REQUIRED, CLUSTER_MGR_NODE_KEYS},
};

inline constexpr CDocumentKey CLUSTER_MGR_DOCUMENT{"", EKeyType::OBJECT, EKeyNeed::REQUIRED,
                                                   CLUSTER_MGR_KEYS};

/// The types of a manager.
enum tagTARN_E_DOMAIN_TYPE {
    TARN_E_DOMAIN_NONE = 0,
    TARN_E_DOMAIN_MAIN = 1,
    TARN_E_DOMAIN_SLAVE = 2,
    TARN_E_DOMAIN_BUTT = 3,
};

/// One manager node. A plain value; no lock.
class CClusterMGRInfo {
public:
    CClusterMGRInfo() = default;
    CClusterMGRInfo(const CClusterMGRInfo&) = default;
    CClusterMGRInfo(CClusterMGRInfo&&) = default;
    CClusterMGRInfo& operator=(const CClusterMGRInfo&) = default;
    CClusterMGRInfo& operator=(CClusterMGRInfo&&) = default;
    virtual ~CClusterMGRInfo() = default;

    const std::string& GetNodeId() const { return m_strNodeId; }
    void SetNodeId(const std::string& strNodeId) { m_strNodeId = strNodeId; }
    int GetMGRType() const { return m_iMGRType; }
    void SetMGRType(int iMGRType) { m_iMGRType = iMGRType; }
    const std::string& GetNodeIp() const { return m_strIp; }
    void SetNodeIp(const std::string& strNodeIp) { m_strIp = strNodeIp; }

private:
    std::string m_strNodeId;
    int m_iMGRType = TARN_E_DOMAIN_NONE;
    std::string m_strIp;
};

/// The cluster's master manager, and in memory alone a candidate and further records. No lock. The
/// XML that it writes has another shape than the one that it reads.
class CClusterMGRZNodeInfo : public CBaseJsonObject {
public:
    CClusterMGRZNodeInfo();
    CClusterMGRZNodeInfo(const CClusterMGRInfo& masterMGRInfo);
    CClusterMGRZNodeInfo(const CClusterMGRInfo& masterMGRInfo,
                         std::list<CClusterMGRInfo> stMGREleList);

    /// Sets the master's node and address; its type stays. Nothing is changed on failure.
    int32_t ParseJson(const char* pszJson) override;
    int32_t ToJson(char* pszJson, uint32_t iMaxLen) override;

    void SetMasterMGRInfo(const CClusterMGRInfo& masterMGRInfo) { m_masterMGRInfo = masterMGRInfo; }
    const CClusterMGRInfo& GetMasterMGR() const { return m_masterMGRInfo; }
    void SetMasterCandidateMGRInfo(const CClusterMGRInfo& stMGRInfo) {
        m_stMasterCandidate = stMGRInfo;
    }
    const CClusterMGRInfo& GetMasterCandidateMGRInfo() const { return m_stMasterCandidate; }

    /// Swaps: the caller's list comes back with the former records.
    void SetAllEleMGRInfo(std::list<CClusterMGRInfo>& stAllEleMGRInfoList) {
        m_stMGREleList.swap(stAllEleMGRInfoList);
    }
    std::list<CClusterMGRInfo>& GetAllEleMGRInfo() { return m_stMGREleList; }

    /// Does nothing.
    void UpdateAllEleMGRInfo(const std::list<CClusterMGRInfo>& stAllEleMGRInfoList);

    /// Takes the master's node and address out of the whole document; no address counts as the
    /// empty one. Returns 0; or, logged, a code with the object untouched.
    int ParseFromXml(PELU::CXml& xml);

    /// Adds the master behind the cursor's element and leaves the cursor where it ended. Returns 0;
    /// or, logged, 1 when the document gives no text.
    int DumpToXml(PELU::CXml& xml);

    /// Reads the master from the store. Returns 0; or, logged, 1 with the object untouched.
    int ParseFromZK(bool bNeedWatcher);

    /// Copies a text member out, cut to iLen - 1 characters; a length of 0 copies nothing. False,
    /// logged and untouched, without the member or for a null pointer.
    bool GetStringFromJson(Json::Value jsonVal, const char* pcKeyStr, char* acVal, int iLen);

    /// The same for a number.
    bool GetIntFromJson(Json::Value jsonVal, const char* pcKeyStr, int* piVal);

private:
    CClusterMGRInfo m_masterMGRInfo;
    CClusterMGRInfo m_stMasterCandidate;
    std::list<CClusterMGRInfo> m_stMGREleList;
};
