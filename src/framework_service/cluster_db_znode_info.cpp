#include "framework_service/cluster_db_znode_info.h"

#include <algorithm>
#include <utility>

#include "common_service/bounded_string.h"
#include "common_service/tool_help.h"
#include "common_service/xml_common.h"
#include "internal/json_text.h"
#include "internal/null_pointer.h"
#include "internal/store.h"
#include "internal/xml_text.h"
#include "operation_log/operation_log.h"

using namespace framework_internal;
using namespace operation_log;

namespace {

constexpr char OPERATION_ILLEGAL[] = "ccluster db znode info";
constexpr char OPERATION_XML[] = "cluster db info, parse from xml";
constexpr char OPERATION_UPDATE_MASTER[] = "update master db info";
constexpr char OPERATION_VERSION[] = "CClusterDBVerZNodeInfo::ParseJson";
constexpr char MESSAGE_PARSE_FAIL[] = "parse json fail, json text[%s].";
constexpr char MESSAGE_ILLEGAL[] = "json illegal, json text[%s].";

constexpr char PSZ_XML_DB_LIST[] = "DBList";
constexpr char PSZ_XML_DB_INFO[] = "DBInfo";
constexpr char PSZ_XML_DB_CODE[] = "DBCode";
constexpr char PSZ_XML_DB_IP_TYPE[] = "DBIPType";
constexpr char PSZ_XML_DB_IP[] = "DBIP";
constexpr char PSZ_XML_DB_PORT[] = "DBPort";
constexpr char PSZ_XML_DB_ROLE[] = "DBRole";

using DBField = const std::string& (CClusterDBInfo::*)() const;

template <typename List>
auto FindDB(List& listDBInfo, DBField pField, const std::string& strValue) {
    return std::find_if(
        listDBInfo.begin(), listDBInfo.end(),
        [pField, &strValue](const CClusterDBInfo& info) { return (info.*pField)() == strValue; });
}

/// Reads a record; false, with the record untouched, when a member is missing or of another type.
/// A token comes from the slot and never from the text: a text there is replaced, and anything else
/// becomes what the JSON library makes of it. bHasToken says whether a text was there.
bool ReadDBInfo(const Json::Value& dbJson, int iDBType, int iCDBIndex, CClusterDBInfo& info,
                bool& bHasToken) {
    std::string strNodeId;
    std::string strIp;
    int iPort = 0;
    CAnyMember token;
    if (!ReadMembers<CLUSTER_DB_NODE_KEYS>(
            dbJson, To<PSZ_CLUSTER_DB_NODE>(strNodeId), To<PSZ_CLUSTER_DB_IP>(strIp),
            To<PSZ_CLUSTER_DB_PORT>(iPort), To<PSZ_CLUSTER_DB_TOKEN>(token))) {
        return false;
    }
    info.SetDBType(iDBType);
    info.SetNodeId(strNodeId);
    info.SetNodeIp(strIp);
    info.SetPort(iPort);
    std::string strToken;
    bHasToken = token.pValue != nullptr && token.pValue->isString();
    if (bHasToken) {
        CClusterDBInfo::GenerateCDBToken(strToken, iCDBIndex);
    } else if (token.pValue != nullptr) {
        strToken = token.pValue->asString();
    }
    info.SetCDBToken(strToken);
    return true;
}

Json::Value BuildDBJson(const CClusterDBInfo& info) {
    Json::Value dbJson;
    dbJson[PSZ_CLUSTER_DB_NODE] = info.GetNodeId();
    dbJson[PSZ_CLUSTER_DB_IP] = info.GetNodeIp();
    dbJson[PSZ_CLUSTER_DB_PORT] = info.GetPort();
    dbJson[PSZ_CLUSTER_DB_TOKEN] = info.GetCDBToken();
    return dbJson;
}

/// Fills the current "DBInfo" element, which is empty, and leaves the cursor on it.
void FillDBXml(PELU::CXml& xml, const CClusterDBInfo& info) {
    const auto toText = [](int iValue) { return HALD::CToolHelp::IntToStr(iValue, false); };
    xml.AddChildElem(PSZ_XML_DB_CODE);
    xml.IntoElem();
    xml.SetElemValue(info.GetNodeId().c_str());
    AddXmlValue(xml, PSZ_XML_DB_IP_TYPE, "0");
    AddXmlValue(xml, PSZ_XML_DB_IP, info.GetNodeIp());
    AddXmlValue(xml, PSZ_XML_DB_PORT, toText(info.GetPort()));
    xml.AddElem(PSZ_XML_DB_ROLE);
    if (info.GetDBType() == CLUSTER_DB_MASTER || info.GetDBType() == CLUSTER_DB_SLAVE) {
        xml.SetElemValue(toText(info.GetDBType()).c_str());
    }
    xml.OutOfElem();
}

/// Reads the children of an element that has been entered. False when one is missing.
bool ReadDBXml(PELU::CXml& xml, CClusterDBInfo& info) {
    CXmlCommon& xmlCommon = CXmlCommon::Instance();
    std::string strNodeId;
    std::string strIp;
    int iPort = 0;
    int iDBType = CLUSTER_DB_MASTER;
    if (!xmlCommon.GetElemValue(xml, PSZ_XML_DB_CODE, strNodeId, true) ||
        !xmlCommon.GetElemValue(xml, PSZ_XML_DB_IP, strIp, true) ||
        !xmlCommon.GetElemValueInt(xml, PSZ_XML_DB_PORT, iPort) ||
        !xmlCommon.GetElemValueInt(xml, PSZ_XML_DB_ROLE, iDBType)) {
        return false;
    }
    info.SetDBType(iDBType);
    info.SetNodeId(strNodeId);
    info.SetNodeIp(strIp);
    info.SetPort(iPort);
    return true;
}

}  // namespace

void CClusterDBInfo::GenerateCDBToken(std::string& strCDBToken, int iIndex) {
    char szToken[4] = {};
    ORVA_SNPRINTF(szToken, sizeof(szToken), sizeof(szToken) - 1, "%03d", iIndex);
    strCDBToken = szToken;
}

CClusterDBZNodeInfo::CClusterDBZNodeInfo(const CClusterDBInfo& masterDBInfo,
                                         const std::list<CClusterDBInfo>& listSalveCDBInfo)
    : m_masterDBInfo(masterDBInfo), m_listSlaveDBInfo(listSalveCDBInfo) {
    int iCDBIndex = 0;
    const auto assignToken = [&iCDBIndex](CClusterDBInfo& info) {
        std::string strToken;
        CClusterDBInfo::GenerateCDBToken(strToken, iCDBIndex++);
        info.SetCDBToken(strToken);
    };
    assignToken(m_masterDBInfo);
    std::for_each(m_listSlaveDBInfo.begin(), m_listSlaveDBInfo.end(), assignToken);
}

int32_t CClusterDBZNodeInfo::ParseJson(const char* pszJson) {
    if (pszJson == nullptr) {
        return LogNullPointer(OPERATION_NULL_JSON, ORVA_DATA_INVALID);
    }
    Json::Value root;
    if (!ParseJsonText(pszJson, root)) {
        return LogFailure("cluster db znode info", ORVA_DATA_INVALID, MESSAGE_PARSE_FAIL, pszJson);
    }
    const Json::Value* pMaster = nullptr;
    const Json::Value* pSlaves = nullptr;
    bool bHasToken = false;
    if (!ReadMembers<CLUSTER_DB_KEYS>(root, To<PSZ_CLUSTER_DB_MASTER>(pMaster),
                                      To<PSZ_CLUSTER_DB_SLAVE>(pSlaves)) ||
        !ReadDBInfo(*pMaster, CLUSTER_DB_MASTER, 0, m_masterDBInfo, bHasToken)) {
        return LogFailure(OPERATION_ILLEGAL, ORVA_DATA_INVALID, MESSAGE_ILLEGAL, pszJson);
    }
    int iCDBIndex = bHasToken ? 1 : 0;
    int iRet = ORVA_SUCCEED;
    if (pSlaves->isObject()) {
        iRet = ParseSingleSlaveDB(*pSlaves, iCDBIndex);
    } else {
        for (const Json::Value& slaveJson : *pSlaves) {
            iRet = ParseSingleSlaveDB(slaveJson, iCDBIndex++);
        }
    }
    if (iRet != ORVA_SUCCEED) {
        return LogFailure(OPERATION_ILLEGAL, ORVA_DATA_INVALID,
                          "parse salve db info, json text[%s].", pszJson);
    }
    return ORVA_SUCCEED;
}

int CClusterDBZNodeInfo::ParseSingleSlaveDB(const Json::Value& salveDBJson, int iCDBIndex) {
    CClusterDBInfo info;
    bool bHasToken = false;
    if (!ReadDBInfo(salveDBJson, CLUSTER_DB_SLAVE, iCDBIndex, info, bHasToken)) {
        return LogFailure(OPERATION_ILLEGAL, ORVA_DATA_INVALID, "illegal salve db json.");
    }
    m_listSlaveDBInfo.push_back(std::move(info));
    return ORVA_SUCCEED;
}

int32_t CClusterDBZNodeInfo::ToJson(char* pszJson, uint32_t iMaxLen) {
    if (pszJson == nullptr) {
        return LogNullPointer(OPERATION_NULL_JSON, ORVA_FAIL);
    }
    Json::Value root;
    root[PSZ_CLUSTER_DB_MASTER] = BuildDBJson(m_masterDBInfo);
    Json::Value& slaves = root[PSZ_CLUSTER_DB_SLAVE];
    for (const CClusterDBInfo& info : m_listSlaveDBInfo) {
        slaves.append(BuildDBJson(info));
    }
    WriteJsonText(root, pszJson, iMaxLen);
    return ORVA_SUCCEED;
}

int CClusterDBZNodeInfo::ParseFromXml(PELU::CXml& xml) {
    CClusterDBInfo info;
    bool bHaveMaster = false;
    bool bHaveSlave = false;
    int iRet = ORVA_FAIL;
    do {
        if (!xml.IntoElem()) {
            iRet = LogFailure(OPERATION_XML, ORVA_XML_INVALID, "can not into node");
            break;
        }
        const bool bRead = ReadDBXml(xml, info);
        xml.OutOfElem();
        if (!bRead) {
            LogFailure(OPERATION_XML, ORVA_XML_INVALID, "can to find elem");
            break;
        }
        if (info.GetDBType() == CLUSTER_DB_MASTER) {
            SetMasterDBInfo(info);
            bHaveMaster = true;
        } else if (info.GetDBType() == CLUSTER_DB_SLAVE) {
            AddSlaveDBInfo(info);
            bHaveSlave = true;
        } else {
            LogFailure(OPERATION_XML, ORVA_XML_INVALID, "wrong dbtype[%d]", info.GetDBType());
            break;
        }
        iRet = ORVA_SUCCEED;
    } while (xml.NextElem());
    if (!bHaveMaster || !bHaveSlave) {
        return LogFailure(OPERATION_XML, ORVA_XML_INVALID, "master or slave db not found[%d:%d]",
                          bHaveMaster, bHaveSlave);
    }
    return iRet;
}

int CClusterDBZNodeInfo::DumpToXml(PELU::CXml& xml) {
    xml.AddElem(PSZ_XML_DB_LIST);
    xml.AddChildElem(PSZ_XML_DB_INFO);
    xml.IntoElem();
    FillDBXml(xml, m_masterDBInfo);
    for (const CClusterDBInfo& info : m_listSlaveDBInfo) {
        xml.AddElem(PSZ_XML_DB_INFO);
        FillDBXml(xml, info);
    }
    xml.OutOfElem();
    return ORVA_SUCCEED;
}

int CClusterDBZNodeInfo::ParseFromZK(bool bNeedWatcher) {
    CClusterDBZNodeInfo stored;
    bool bDataEmpty = true;
    if (ReadStore(STORE_NODE_CENTER_DB, bNeedWatcher ? EWatch::YES : EWatch::NO, stored,
                  bDataEmpty) != ORVA_SUCCEED) {
        return LogFailure("cdb info, parse form zk", ORVA_FAIL, "get center db info from zk fail.");
    }
    m_listSlaveDBInfo = std::move(stored.m_listSlaveDBInfo);
    m_masterDBInfo = std::move(stored.m_masterDBInfo);
    return ORVA_SUCCEED;
}

void CClusterDBZNodeInfo::RemoveSlaveDBInfoByNodeID(const std::string& strNodeID) {
    const auto it = FindDB(m_listSlaveDBInfo, &CClusterDBInfo::GetNodeId, strNodeID);
    if (it != m_listSlaveDBInfo.end()) {
        m_listSlaveDBInfo.erase(it);
    }
}

bool CClusterDBZNodeInfo::IsMasterDB(const std::string& strNodeID) const {
    return m_masterDBInfo.GetNodeId() == strNodeID;
}

bool CClusterDBZNodeInfo::IsSlaveDB(const std::string& strNodeID) const {
    return FindDB(m_listSlaveDBInfo, &CClusterDBInfo::GetNodeId, strNodeID) !=
           m_listSlaveDBInfo.end();
}

bool CClusterDBZNodeInfo::GetCDBInfo(const std::string& strNodeID,
                                     CClusterDBInfo& clusterDBInfo) const {
    if (IsMasterDB(strNodeID)) {
        clusterDBInfo = m_masterDBInfo;
        return true;
    }
    const auto it = FindDB(m_listSlaveDBInfo, &CClusterDBInfo::GetNodeId, strNodeID);
    if (it == m_listSlaveDBInfo.end()) {
        return false;
    }
    clusterDBInfo = *it;
    return true;
}

bool CClusterDBZNodeInfo::UpdateSlaveDBInfoByToken(const std::string& strToken,
                                                   const CClusterDBInfo& clusterDBInfo) {
    const auto it = FindDB(m_listSlaveDBInfo, &CClusterDBInfo::GetCDBToken, strToken);
    if (it == m_listSlaveDBInfo.end()) {
        return false;
    }
    it->SetNodeId(clusterDBInfo.GetNodeId());
    it->SetNodeIp(clusterDBInfo.GetNodeIp());
    return true;
}

bool CClusterDBZNodeInfo::UpdateMasterDBInfo(const CClusterDBInfo& clusterDBInfo) {
    CClusterDBInfo oldSlaveDBInfo;
    if (!GetCDBInfo(clusterDBInfo.GetNodeId(), oldSlaveDBInfo)) {
        LogFailure(OPERATION_UPDATE_MASTER, ORVA_FAIL, "not found slave cdb, node id[%s].",
                   clusterDBInfo.GetNodeId().c_str());
        return false;
    }
    if (!UpdateSlaveDBInfoByToken(oldSlaveDBInfo.GetCDBToken(), m_masterDBInfo)) {
        LogFailure(OPERATION_UPDATE_MASTER, ORVA_FAIL, "update salve db info fail, node id[%s].",
                   clusterDBInfo.GetNodeId().c_str());
        return false;
    }
    m_masterDBInfo.SetNodeId(clusterDBInfo.GetNodeId());
    m_masterDBInfo.SetNodeIp(clusterDBInfo.GetNodeIp());
    return true;
}

int32_t CClusterDBVerZNodeInfo::ParseJson(const char* pszJson) {
    if (pszJson == nullptr) {
        return LogNullPointer(OPERATION_NULL_JSON, ORVA_DATA_INVALID);
    }
    Json::Value root;
    if (!ParseJsonText(pszJson, root)) {
        return LogFailure(OPERATION_VERSION, ORVA_DATA_INVALID, MESSAGE_PARSE_FAIL, pszJson);
    }
    const Json::Value* pEntries = nullptr;
    if (!ReadMembers<CLUSTER_CDB_VER_KEYS>(root, To<PSZ_CLUSTER_CDB_VER_SET>(pEntries))) {
        return LogFailure(OPERATION_VERSION, ORVA_DATA_INVALID, MESSAGE_ILLEGAL, pszJson);
    }
    for (const Json::Value& entryJson : *pEntries) {
        std::string strNodeCode;
        CenterDbVerInfo verInfo;
        if (!ReadMembers<CLUSTER_CDB_VER_ENTRY_KEYS>(
                entryJson, To<PSZ_CLUSTER_CDB_NODECODE>(strNodeCode),
                To<PSZ_CLUSTER_CDB_VER_VALUE>(verInfo.m_cdbVer))) {
            return LogFailure(OPERATION_VERSION, ORVA_DATA_INVALID, MESSAGE_ILLEGAL, pszJson);
        }
        m_cdbVerInfoMap.insert_or_assign(std::move(strNodeCode), std::move(verInfo));
    }
    return ORVA_SUCCEED;
}

int32_t CClusterDBVerZNodeInfo::ToJson(char* pszJson, uint32_t iMaxLen) {
    if (pszJson == nullptr) {
        return LogNullPointer(OPERATION_NULL_JSON, ORVA_FAIL);
    }
    Json::Value root;
    Json::Value& entries = root[PSZ_CLUSTER_CDB_VER_SET];
    for (const auto& [strNodeCode, verInfo] : m_cdbVerInfoMap) {
        Json::Value& entryJson = entries.append(Json::objectValue);
        entryJson[PSZ_CLUSTER_CDB_NODECODE] = strNodeCode;
        entryJson[PSZ_CLUSTER_CDB_VER_VALUE] = verInfo.m_cdbVer;
    }
    WriteJsonText(root, pszJson, iMaxLen);
    return ORVA_SUCCEED;
}

void CClusterDBVerZNodeInfo::SetVerInfo(const std::string& nodeCode,
                                        const CenterDbVerInfo& verInfo) {
    m_cdbVerInfoMap.insert_or_assign(nodeCode, verInfo);
}

int CClusterDBVerZNodeInfo::GetVerInfo(const std::string& nodeCode,
                                       CenterDbVerInfo& verInfo) const {
    const auto it = m_cdbVerInfoMap.find(nodeCode);
    if (it == m_cdbVerInfoMap.end()) {
        return ORVA_FAIL;
    }
    verInfo = it->second;
    return ORVA_SUCCEED;
}
