#include "framework_service/cluster_mgr_znode_info.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

#include "common_service/bounded_string.h"
#include "internal/json_text.h"
#include "internal/null_pointer.h"
#include "internal/store.h"
#include "internal/xml_text.h"
#include "operation_log/operation_log.h"

using namespace framework_internal;
using namespace operation_log;

namespace {

constexpr char MESSAGE_ILLEGAL[] = "json illegal, json text[%s].";

constexpr char PSZ_XML_CONTENT[] = "Content";
constexpr char PSZ_XML_DOMAIN_MAIN_INFO[] = "DomainMainInfo";
constexpr char PSZ_XML_DOMAIN_MAIN[] = "DomainMain";
constexpr char PSZ_XML_FLOAT_IP[] = "FloatIP";
constexpr char PSZ_XML_PATH_DOMAIN_MAIN[] = "Content/ClusterBody/DomainMainInfo/DomainMain";
constexpr char PSZ_XML_PATH_FLOAT_IP[] = "Content/ClusterBody/DomainMainInfo/FloatIP";

CClusterMGRInfo MakeMaster(const std::string& strNodeId, const std::string& strNodeIp) {
    CClusterMGRInfo info;
    info.SetNodeId(strNodeId);
    info.SetMGRType(TARN_E_DOMAIN_MAIN);
    info.SetNodeIp(strNodeIp);
    return info;
}

/// The text at a path; nothing when there is no such element.
std::optional<std::string> ReadElement(PELU::CXml& xml, const char* pszPath) {
    const char* pszValue = xml.GetElemValueEx(pszPath);
    return pszValue != nullptr ? std::optional<std::string>(pszValue) : std::nullopt;
}

}  // namespace

CClusterMGRZNodeInfo::CClusterMGRZNodeInfo() : m_masterMGRInfo(MakeMaster("", "")) {}

CClusterMGRZNodeInfo::CClusterMGRZNodeInfo(const CClusterMGRInfo& masterMGRInfo)
    : m_masterMGRInfo(masterMGRInfo) {}

CClusterMGRZNodeInfo::CClusterMGRZNodeInfo(const CClusterMGRInfo& masterMGRInfo,
                                           std::list<CClusterMGRInfo> stMGREleList)
    : m_masterMGRInfo(masterMGRInfo), m_stMGREleList(std::move(stMGREleList)) {}

int32_t CClusterMGRZNodeInfo::ParseJson(const char* pszJson) {
    if (pszJson == nullptr) {
        return LogNullPointer(OPERATION_NULL_JSON, ORVA_DATA_INVALID);
    }
    Json::Value root;
    if (!ParseJsonText(pszJson, root)) {
        return LogFailure("cluster db znode info", ORVA_DATA_INVALID,
                          "parse json fail, json text[%s].", pszJson);
    }
    const Json::Value* pMaster = nullptr;
    if (!ReadMembers<CLUSTER_MGR_KEYS>(root, To<PSZ_CLUSTER_MGR_MASTER>(pMaster))) {
        return LogFailure("ccluster db znode info", ORVA_DATA_INVALID, MESSAGE_ILLEGAL, pszJson);
    }
    std::string strNodeId;
    std::string strNodeIp;
    if (!ReadMembers<CLUSTER_MGR_NODE_KEYS>(*pMaster, To<PSZ_CLUSTER_MGR_NODE>(strNodeId),
                                            To<PSZ_CLUSTER_MGR_IP>(strNodeIp))) {
        return LogFailure("ccluster mgr znode info", ORVA_DATA_INVALID, MESSAGE_ILLEGAL, pszJson);
    }
    m_masterMGRInfo.SetNodeId(strNodeId);
    m_masterMGRInfo.SetNodeIp(strNodeIp);
    return ORVA_SUCCEED;
}

int32_t CClusterMGRZNodeInfo::ToJson(char* pszJson, uint32_t iMaxLen) {
    if (pszJson == nullptr) {
        return LogNullPointer(OPERATION_NULL_JSON, ORVA_FAIL);
    }
    Json::Value root;
    Json::Value& master = root[PSZ_CLUSTER_MGR_MASTER];
    master[PSZ_CLUSTER_MGR_NODE] = m_masterMGRInfo.GetNodeId();
    master[PSZ_CLUSTER_MGR_IP] = m_masterMGRInfo.GetNodeIp();
    WriteJsonText(root, pszJson, iMaxLen);
    return ORVA_SUCCEED;
}

void CClusterMGRZNodeInfo::UpdateAllEleMGRInfo(const std::list<CClusterMGRInfo>&) {}

int CClusterMGRZNodeInfo::ParseFromXml(PELU::CXml& xml) {
    unsigned int uiLen = 0;
    const char* pszXml = xml.GetXMLStream(uiLen);
    if (pszXml == nullptr) {
        return LogNullPointer("Point pszXml is null.", ORVA_DATA_INVALID);
    }
    LogTrace("init cluster message, parse xml message[%s].", pszXml);
    const std::optional<std::string> nodeId = ReadElement(xml, PSZ_XML_PATH_DOMAIN_MAIN);
    const std::optional<std::string> nodeIp = ReadElement(xml, PSZ_XML_PATH_FLOAT_IP);
    if (!nodeId) {
        return LogNullPointer("Point strNodeId is null.", ORVA_XML_INVALID);
    }
    SetMasterMGRInfo(MakeMaster(*nodeId, nodeIp.value_or("")));
    LogTrace("CClusterMGRZNodeInfo:NvrCode[%s], NodeIp[%s], MGRType[%d].",
             m_masterMGRInfo.GetNodeId().c_str(),
             ORVA_DesensitizeIPAddress(m_masterMGRInfo.GetNodeIp()).c_str(),
             m_masterMGRInfo.GetMGRType());
    return ORVA_SUCCEED;
}

int CClusterMGRZNodeInfo::DumpToXml(PELU::CXml& xml) {
    xml.AddElem(PSZ_XML_CONTENT);
    xml.AddChildElem(PSZ_XML_DOMAIN_MAIN_INFO);
    xml.IntoElem();
    xml.AddChildElem(PSZ_XML_DOMAIN_MAIN);
    xml.IntoElem();
    xml.SetElemValue(m_masterMGRInfo.GetNodeId().c_str());
    AddXmlValue(xml, PSZ_XML_FLOAT_IP, m_masterMGRInfo.GetNodeIp());
    unsigned int uiLen = 0;
    const char* pszXml = xml.GetXMLStream(uiLen);
    if (pszXml == nullptr) {
        return LogFailure("Fail to get pcIpModifyXml", ORVA_FAIL, "");
    }
    LogTrace("tarn. pcNodeInfoXml[%s]", pszXml);
    return ORVA_SUCCEED;
}

int CClusterMGRZNodeInfo::ParseFromZK(bool bNeedWatcher) {
    CClusterMGRZNodeInfo stored;
    bool bDataEmpty = true;
    if (ReadStore(STORE_NODE_MGR, bNeedWatcher ? EWatch::YES : EWatch::NO, stored, bDataEmpty) !=
        ORVA_SUCCEED) {
        return LogFailure("cmgr info, parse form zk", ORVA_FAIL,
                          "get center mgr info from zk fail.");
    }
    m_masterMGRInfo = std::move(stored.m_masterMGRInfo);
    return ORVA_SUCCEED;
}

// The two take their value by copy: hosts are built against that.
// NOLINTBEGIN(performance-unnecessary-value-param)
bool CClusterMGRZNodeInfo::GetStringFromJson(Json::Value jsonVal, const char* pcKeyStr, char* acVal,
                                             int iLen) {
    if (pcKeyStr == nullptr || acVal == nullptr) {
        LogFailure("pcKeyStr or acVal is NULL", ORVA_FAIL, "");
        return false;
    }
    const Json::Value* pMember = FindMember(jsonVal, pcKeyStr);
    const std::optional<std::string_view> text =
        pMember != nullptr ? TextOf(*pMember) : std::nullopt;
    if (!text) {
        LogWarning("Get stromg frome json", "Get [%s] return other value, not string.\r\n",
                   pcKeyStr);
        return false;
    }
    if (iLen > 0) {
        const auto uiSize = static_cast<std::size_t>(iLen);
        strncpy_s(acVal, uiSize, text->data(), std::min(text->size(), uiSize - 1));
    }
    return true;
}

bool CClusterMGRZNodeInfo::GetIntFromJson(Json::Value jsonVal, const char* pcKeyStr, int* piVal) {
    if (pcKeyStr == nullptr || piVal == nullptr) {
        LogFailure("pcKeyStr or piVal is NULL", ORVA_FAIL, "");
        return false;
    }
    const Json::Value* pMember = FindMember(jsonVal, pcKeyStr);
    if (pMember == nullptr || !pMember->isInt()) {
        LogWarning("Get int frome json", "Get [%s] return other value, not string.", pcKeyStr);
        return false;
    }
    *piVal = pMember->asInt();
    return true;
}
// NOLINTEND(performance-unnecessary-value-param)
