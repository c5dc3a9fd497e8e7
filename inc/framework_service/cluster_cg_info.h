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

inline constexpr ORVA_STORE_NODE STORE_NODE_CG_LIST{"/MERO/CGList", 1024};

inline constexpr char PSZ_CG_NVRCODE[] = "NVRCode";
inline constexpr char PSZ_CG_FLOAT_CODE[] = "FloatCGCode";
inline constexpr char PSZ_CG_FLOAT_IP[] = "FloatIP";
inline constexpr char PSZ_CG_DECISION_VER_NUM[] = "DecisionVerNum";

inline constexpr CDocumentKey CG_KEYS[] = {
    {PSZ_CG_NVRCODE, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_CG_FLOAT_CODE, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_CG_FLOAT_IP, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_CG_DECISION_VER_NUM, EKeyType::STRING, EKeyNeed::REQUIRED},
};

/// An object without keys is read as well, as no entries.
inline constexpr CDocumentKey CG_LIST_DOCUMENT{"", EKeyType::ARRAY, EKeyNeed::REQUIRED, CG_KEYS};

/// One CG entry: a node bound to a float code and a float address, with the version number of the
/// decision as text. A plain value; no lock. The same names are JSON keys and XML elements; the
/// status is written to XML alone and never read back.
class CClusterCGInfo {
public:
    CClusterCGInfo() = default;
    CClusterCGInfo(const CClusterCGInfo&) = default;
    CClusterCGInfo(CClusterCGInfo&&) = default;
    CClusterCGInfo& operator=(const CClusterCGInfo&) = default;
    CClusterCGInfo& operator=(CClusterCGInfo&&) = default;
    virtual ~CClusterCGInfo() = default;

    /// The status plays no part.
    bool operator==(const CClusterCGInfo& rhs) const;
    bool operator!=(const CClusterCGInfo& rhs) const { return !(*this == rhs); }

    const std::string& GetNodeCode() const { return m_strCode; }
    void SetCGCode(const std::string& strCGCode) { m_strCode = strCGCode; }
    const std::string& GetFloatCode() const { return m_strFloatCode; }
    void SetFloatCode(const std::string& strFloatCode) { m_strFloatCode = strFloatCode; }
    const std::string& GetFloatIp() const { return m_strFloatIp; }
    void SetFloatIp(const std::string& strFloatIp) { m_strFloatIp = strFloatIp; }
    const std::string& GetDecVerNum() const { return m_strDecVerNum; }
    void SetDecVerNum(const std::string& strDecVerNum) { m_strDecVerNum = strDecVerNum; }
    void SetStatus(const std::string& strStatus) { m_strStatus = strStatus; }

    /// Adds a "CGInfo" element behind the cursor's and leaves the cursor on it.
    void DumpToXml(PELU::CXml& xml);

    /// Reads the next "CGInfo" element from the cursor on. Returns 0; or, logged,
    /// ORVA_DATA_INVALID without the element or its "NVRCode".
    int32_t ParseXml(PELU::CXml& xml);

    /// Sets the stored members on an object. Always 0.
    int32_t ToJson(Json::Value& cgJson) const;

    /// Returns 0; or, logged, ORVA_DATA_INVALID with the entry untouched.
    int32_t ParseJson(const Json::Value& nodeJson);

private:
    std::string m_strCode;
    std::string m_strFloatCode;
    std::string m_strFloatIp;
    std::string m_strDecVerNum = "0";
    std::string m_strStatus;
};

/// The CG entries of the cluster, in the order of their adding. It enforces no uniqueness:
/// CFrameworkCGCommon does. An empty list is stored as empty text.
class CClusterCGInfoList : public CBaseJsonObject {
public:
    CClusterCGInfoList() = default;
    CClusterCGInfoList(const CClusterCGInfoList&) = default;
    CClusterCGInfoList& operator=(const CClusterCGInfoList&) = default;

    /// Do both hold the same entries, in whatever order?
    bool operator==(const CClusterCGInfoList& rhs) const;

    /// Replaces the list, or changes nothing. An empty document is a success that keeps the list.
    int32_t ParseJson(const char* pszJson) override;

    /// A length of 0 is refused with ORVA_DATA_INVALID, unless the list is empty.
    int32_t ToJson(char* pszJson, uint32_t iMaxLen) override;

    /// Adds a "CGList" element with the entries behind the cursor's.
    void DumpToXml(PELU::CXml& xml);

    /// Appends the entries of "CGList" on the cursor's level. Returns 0, also for an empty list;
    /// or, logged, the code of the failure, with the entries before it appended.
    int32_t ParseXml(PELU::CXml& xml);

    /// Reads the list from the store and sets the watcher on its node. Returns 0; or, logged, 1
    /// with the list untouched. A node without data keeps the list.
    int ParseFromZK();

    bool Empty() const { return m_listClusterCG.empty(); }
    unsigned int GetSize() const { return static_cast<unsigned int>(m_listClusterCG.size()); }
    void SetClusterCGInfoList(const std::list<CClusterCGInfo>& listClusterCG) {
        m_listClusterCG = listClusterCG;
    }

    /// Replaces the argument by a copy.
    void GetClusterCGInfoList(std::list<CClusterCGInfo>& listClusterCG) const {
        listClusterCG = m_listClusterCG;
    }
    void AddClusterCGInfo(const CClusterCGInfo& clusterCGInfo) {
        m_listClusterCG.push_back(clusterCGInfo);
    }

    /// True and a copy of the first match; or false with the argument untouched.
    bool GetCGInfo(const std::string& strNodeCode, CClusterCGInfo& clusterCGInfo) const;
    bool GetCGInfoByFloatCode(const std::string& strFloatCode, CClusterCGInfo& clusterCGInfo) const;

    /// A CG is named by its float code.
    bool IsCGExist(const std::string& strCGCode) const;
    bool IsNodeExist(const std::string& strNode) const;
    bool IsFloatIPExist(const std::string& strFloatIP) const;

    /// Removes the first entry of that float code, if there is one.
    void RemoveClusterCG(const std::string& strCGCode);

private:
    std::list<CClusterCGInfo> m_listClusterCG;
};
