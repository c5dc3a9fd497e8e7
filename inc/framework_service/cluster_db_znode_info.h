#pragma once

#include <json/value.h>

#include <cstdint>
#include <list>
#include <map>
#include <string>

#include "common_service/data/communication_data.h"
#include "common_service/tarn_def.h"
#include "common_service/xml.h"
#include "framework_service/document_keys.h"
#include "framework_service/store_path.h"

inline constexpr ORVA_STORE_NODE STORE_NODE_CENTER_DB{"/CenterDB", 512};

inline constexpr char PSZ_CLUSTER_DB_MASTER[] = "MasterDB";
inline constexpr char PSZ_CLUSTER_DB_SLAVE[] = "SlaveDB";
inline constexpr char PSZ_CLUSTER_DB_NODE[] = "NodeCode";
inline constexpr char PSZ_CLUSTER_DB_IP[] = "NodeIp";
inline constexpr char PSZ_CLUSTER_DB_PORT[] = "DBPort";
inline constexpr char PSZ_CLUSTER_DB_TOKEN[] = "DBToken";

inline constexpr char PSZ_CLUSTER_CDB_VER_SET[] = "CdbVerSet";
inline constexpr char PSZ_CLUSTER_CDB_NODECODE[] = "NvrCode";
inline constexpr char PSZ_CLUSTER_CDB_VER_VALUE[] = "CdbVer";

/// A token that is no text becomes what the JSON library makes of it, and refuses the document when
/// that makes no text of it.
inline constexpr CDocumentKey CLUSTER_DB_NODE_KEYS[] = {
    {PSZ_CLUSTER_DB_NODE, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_CLUSTER_DB_IP, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_CLUSTER_DB_PORT, EKeyType::INTEGER, EKeyNeed::REQUIRED},
    {PSZ_CLUSTER_DB_TOKEN, EKeyType::STRING, EKeyNeed::OPTIONAL},
};

/// Of the slaves only the last one's keys refuse the document.
inline constexpr CDocumentKey CLUSTER_DB_KEYS[] = {
    {PSZ_CLUSTER_DB_MASTER, EKeyType::OBJECT, EKeyNeed::REQUIRED, CLUSTER_DB_NODE_KEYS},
    {PSZ_CLUSTER_DB_SLAVE, EKeyType::OBJECT_OR_ARRAY, EKeyNeed::REQUIRED, CLUSTER_DB_NODE_KEYS},
};

inline constexpr CDocumentKey CLUSTER_DB_DOCUMENT{"", EKeyType::OBJECT, EKeyNeed::REQUIRED,
                                                  CLUSTER_DB_KEYS};

inline constexpr CDocumentKey CLUSTER_CDB_VER_ENTRY_KEYS[] = {
    {PSZ_CLUSTER_CDB_NODECODE, EKeyType::STRING, EKeyNeed::REQUIRED},
    {PSZ_CLUSTER_CDB_VER_VALUE, EKeyType::STRING, EKeyNeed::REQUIRED},
};

inline constexpr CDocumentKey CLUSTER_CDB_VER_KEYS[] = {
    {PSZ_CLUSTER_CDB_VER_SET, EKeyType::ARRAY, EKeyNeed::REQUIRED, CLUSTER_CDB_VER_ENTRY_KEYS},
};

inline constexpr CDocumentKey CLUSTER_CDB_VER_DOCUMENT{"", EKeyType::OBJECT, EKeyNeed::REQUIRED,
                                                       CLUSTER_CDB_VER_KEYS};

/// Roles of a database.
enum {
    CLUSTER_DB_MASTER = 1,
    CLUSTER_DB_SLAVE = 2,
};

/// One database node. Its token names a slot of the arrangement, not a machine: "000" is the
/// master's, "001" and upward the slaves', in their order. A plain value; no lock.
class CClusterDBInfo {
public:
    CClusterDBInfo() = default;
    CClusterDBInfo(const CClusterDBInfo&) = default;
    CClusterDBInfo(CClusterDBInfo&&) = default;
    CClusterDBInfo& operator=(const CClusterDBInfo&) = default;
    CClusterDBInfo& operator=(CClusterDBInfo&&) = default;
    virtual ~CClusterDBInfo() = default;

    const std::string& GetNodeId() const { return m_strNodeId; }
    void SetNodeId(const std::string& strNodeId) { m_strNodeId = strNodeId; }
    int GetDBType() const { return m_iDBType; }
    void SetDBType(int iDBType) { m_iDBType = iDBType; }
    const std::string& GetNodeIp() const { return m_strIp; }
    void SetNodeIp(const std::string& strNodeIp) { m_strIp = strNodeIp; }
    int GetPort() const { return m_iPort; }
    void SetPort(int iPort) { m_iPort = iPort; }
    const std::string& GetCDBToken() const { return m_strToken; }
    void SetCDBToken(const std::string& strCDBToken) { m_strToken = strCDBToken; }

    /// The token of a slot: three digits, never more.
    static void GenerateCDBToken(std::string& strCDBToken, int iIndex);

private:
    std::string m_strNodeId;
    int m_iDBType = CLUSTER_DB_SLAVE;
    std::string m_strIp;
    int m_iPort = 6001;
    std::string m_strToken;
};

/// The centre database: one master and any number of slaves. No lock. A stored token is derived
/// again from its position; a master without slaves cannot be read back from its own text.
class CClusterDBZNodeInfo : public CBaseJsonObject {
public:
    CClusterDBZNodeInfo() = default;

    /// Takes copies and gives each the token of its slot.
    CClusterDBZNodeInfo(const CClusterDBInfo& masterDBInfo,
                        const std::list<CClusterDBInfo>& listSalveCDBInfo);

    /// Sets the master and appends the slaves. Only the last slave decides: a bad one before it is
    /// logged, left out and uses up its position. Returns 0; or, logged, ORVA_DATA_INVALID, which
    /// leaves what was taken until then.
    int32_t ParseJson(const char* pszJson) override;
    int32_t ToJson(char* pszJson, uint32_t iMaxLen) override;

    /// Appends one slave. Returns 0; or, logged, ORVA_DATA_INVALID.
    int ParseSingleSlaveDB(const Json::Value& salveDBJson, int iCDBIndex);

    /// Reads the "DBInfo" elements from the cursor on. Returns 0 once a master and a slave were
    /// found, whatever came behind them; failures are logged.
    int ParseFromXml(PELU::CXml& xml);

    /// Adds a "DBList" element behind the cursor's. Always 0.
    int DumpToXml(PELU::CXml& xml);

    /// Reads the arrangement from the store. Returns 0; or, logged, 1 with the object untouched.
    int ParseFromZK(bool bNeedWatcher);

    void SetMasterDBInfo(const CClusterDBInfo& masterDBInfo) { m_masterDBInfo = masterDBInfo; }
    const CClusterDBInfo& GetMasterDB() const { return m_masterDBInfo; }
    void AddSlaveDBInfo(const CClusterDBInfo& slaveDBInfo) {
        m_listSlaveDBInfo.push_back(slaveDBInfo);
    }

    /// Replaces the argument by a copy.
    void GetAllSlaveDB(std::list<CClusterDBInfo>& listSlaveDBInfo) const {
        listSlaveDBInfo = m_listSlaveDBInfo;
    }
    void SetSlaveDBInfoList(const std::list<CClusterDBInfo>& listSlaveDBInfo) {
        m_listSlaveDBInfo = listSlaveDBInfo;
    }

    /// Removes the first slave on that node, if there is one.
    void RemoveSlaveDBInfoByNodeID(const std::string& strNodeID);

    bool IsMasterDB(const std::string& strNodeID) const;
    bool IsSlaveDB(const std::string& strNodeID) const;

    /// True and a copy of the master or else the first slave on that node; or false with the
    /// argument untouched.
    bool GetCDBInfo(const std::string& strNodeID, CClusterDBInfo& clusterDBInfo) const;

    /// Puts another node and address into the first slave slot of that token; its port, role and
    /// token stay. False when there is no such slot.
    bool UpdateSlaveDBInfoByToken(const std::string& strToken, const CClusterDBInfo& clusterDBInfo);

    /// Promotes the database on that node: it and the master change slots, tokens and ports stay
    /// where they are. False, logged and unchanged, when no slave is on the node.
    bool UpdateMasterDBInfo(const CClusterDBInfo& clusterDBInfo);

private:
    CClusterDBInfo m_masterDBInfo;
    std::list<CClusterDBInfo> m_listSlaveDBInfo;
};

/// The version of one node's database.
struct CenterDbVerInfo {
    std::string m_cdbVer;
};

/// The database versions, by node code. No lock. A document written from an empty map does not
/// parse again.
class CClusterDBVerZNodeInfo : public CBaseJsonObject {
public:
    /// Adds the text's entries to the map. Returns 0; or, logged, ORVA_DATA_INVALID, with the
    /// entries before the bad one in the map.
    int32_t ParseJson(const char* pszJson) override;
    int32_t ToJson(char* pszJson, uint32_t iMaxLen) override;

    /// Inserts or replaces.
    void SetVerInfo(const std::string& nodeCode, const CenterDbVerInfo& verInfo);

    /// Returns 0 and a copy; or 1 with the argument untouched.
    int GetVerInfo(const std::string& nodeCode, CenterDbVerInfo& verInfo) const;

private:
    std::map<std::string, CenterDbVerInfo> m_cdbVerInfoMap;
};
