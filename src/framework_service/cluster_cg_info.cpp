#include "framework_service/cluster_cg_info.h"

#include <algorithm>
#include <utility>

#include "common_service/bounded_string.h"
#include "common_service/xml_common.h"
#include "internal/json_text.h"
#include "internal/null_pointer.h"
#include "internal/store.h"
#include "internal/xml_text.h"
#include "operation_log/operation_log.h"

using namespace framework_internal;
using namespace operation_log;

namespace {

constexpr char OPERATION_JSON[] = "cluster cg info";
constexpr char OPERATION_XML[] = "parse cluster cg info xml fail";
constexpr char OPERATION_LIST_XML[] = "parse cluster cg info list xml fail";

constexpr char PSZ_CG_LIST[] = "CGList";
constexpr char PSZ_CG_INFO[] = "CGInfo";
constexpr char PSZ_CG_FLOAT_STATUS[] = "FloatCGStatus";
constexpr char PSZ_CG_PLACEHOLDER[] = "Tmp";

using CGField = const std::string& (CClusterCGInfo::*)() const;

auto FindEntry(const std::list<CClusterCGInfo>& listClusterCG, CGField pField,
               const std::string& strValue) {
    return std::find_if(
        listClusterCG.begin(), listClusterCG.end(),
        [pField, &strValue](const CClusterCGInfo& info) { return (info.*pField)() == strValue; });
}

bool HasEntry(const std::list<CClusterCGInfo>& listClusterCG, CGField pField,
              const std::string& strValue) {
    return FindEntry(listClusterCG, pField, strValue) != listClusterCG.end();
}

bool CopyEntry(const std::list<CClusterCGInfo>& listClusterCG, CGField pField,
               const std::string& strValue, CClusterCGInfo& clusterCGInfo) {
    const auto it = FindEntry(listClusterCG, pField, strValue);
    if (it == listClusterCG.end()) {
        return false;
    }
    clusterCGInfo = *it;
    return true;
}

}  // namespace

bool CClusterCGInfo::operator==(const CClusterCGInfo& rhs) const {
    return m_strCode == rhs.m_strCode && m_strFloatCode == rhs.m_strFloatCode &&
           m_strFloatIp == rhs.m_strFloatIp && m_strDecVerNum == rhs.m_strDecVerNum;
}

void CClusterCGInfo::DumpToXml(PELU::CXml& xml) {
    xml.AddElem(PSZ_CG_INFO);
    xml.AddChildElem(PSZ_CG_NVRCODE);
    xml.IntoElem();
    xml.SetElemValue(m_strCode.c_str());
    AddXmlValue(xml, PSZ_CG_FLOAT_CODE, m_strFloatCode);
    AddXmlValue(xml, PSZ_CG_FLOAT_IP, m_strFloatIp);
    AddXmlValue(xml, PSZ_CG_DECISION_VER_NUM, m_strDecVerNum);
    if (!m_strStatus.empty()) {
        AddXmlValue(xml, PSZ_CG_FLOAT_STATUS, m_strStatus);
    }
    xml.OutOfElem();
}

int32_t CClusterCGInfo::ParseXml(PELU::CXml& xml) {
    constexpr char MESSAGE[] = "not found CGInfo element.";
    if (!xml.FindElemValue(PSZ_CG_INFO) || !xml.IntoElem()) {
        return LogFailure(OPERATION_XML, ORVA_DATA_INVALID, MESSAGE);
    }
    CXmlCommon& xmlCommon = CXmlCommon::Instance();
    xmlCommon.GetElemValue(xml, PSZ_CG_NVRCODE, m_strCode, true);
    if (m_strCode.empty()) {
        xml.OutOfElem();
        return LogFailure(OPERATION_XML, ORVA_DATA_INVALID, MESSAGE);
    }
    xmlCommon.GetElemValue(xml, PSZ_CG_FLOAT_CODE, m_strFloatCode, true);
    xmlCommon.GetElemValue(xml, PSZ_CG_FLOAT_IP, m_strFloatIp, true);
    xmlCommon.GetElemValue(xml, PSZ_CG_DECISION_VER_NUM, m_strDecVerNum, true);
    if (m_strDecVerNum.empty()) {
        m_strDecVerNum = "0";
    }
    xml.OutOfElem();
    return ORVA_SUCCEED;
}

int32_t CClusterCGInfo::ToJson(Json::Value& cgJson) const {
    cgJson[PSZ_CG_NVRCODE] = m_strCode;
    cgJson[PSZ_CG_FLOAT_CODE] = m_strFloatCode;
    cgJson[PSZ_CG_FLOAT_IP] = m_strFloatIp;
    cgJson[PSZ_CG_DECISION_VER_NUM] = m_strDecVerNum;
    return ORVA_SUCCEED;
}

int32_t CClusterCGInfo::ParseJson(const Json::Value& nodeJson) {
    CClusterCGInfo parsed(*this);
    if (!ReadMembers<CG_KEYS>(nodeJson, To<PSZ_CG_NVRCODE>(parsed.m_strCode),
                              To<PSZ_CG_FLOAT_CODE>(parsed.m_strFloatCode),
                              To<PSZ_CG_FLOAT_IP>(parsed.m_strFloatIp),
                              To<PSZ_CG_DECISION_VER_NUM>(parsed.m_strDecVerNum))) {
        return LogFailure(OPERATION_JSON, ORVA_DATA_INVALID, "parse json fail.");
    }
    *this = std::move(parsed);
    return ORVA_SUCCEED;
}

bool CClusterCGInfoList::operator==(const CClusterCGInfoList& rhs) const {
    const auto isInRhs = [&rhs](const CClusterCGInfo& info) {
        CClusterCGInfo other;
        return rhs.GetCGInfo(info.GetNodeCode(), other) && info == other;
    };
    return GetSize() == rhs.GetSize() &&
           std::all_of(m_listClusterCG.begin(), m_listClusterCG.end(), isInRhs);
}

int32_t CClusterCGInfoList::ParseJson(const char* pszJson) {
    if (pszJson == nullptr) {
        return LogNullPointer(OPERATION_NULL_JSON, ORVA_DATA_INVALID);
    }
    if (*pszJson == '\0') {
        return ORVA_SUCCEED;
    }
    Json::Value root;
    if (!ParseJsonText(pszJson, root)) {
        return LogFailure(OPERATION_JSON, ORVA_DATA_INVALID, "parse json fail, json text[%s].",
                          pszJson);
    }
    if (root.empty()) {
        LogTrace("cluster cg info, no cg info found");
        return ORVA_SUCCEED;
    }
    if (!root.isArray()) {
        return LogFailure(OPERATION_JSON, ORVA_DATA_INVALID, "not found cg list, json text[%s].",
                          pszJson);
    }
    std::list<CClusterCGInfo> listClusterCG;
    for (const Json::Value& cgJson : root) {
        if (listClusterCG.emplace_back().ParseJson(cgJson) != ORVA_SUCCEED) {
            return LogFailure(OPERATION_JSON, ORVA_DATA_INVALID,
                              "parse cg json fail, json text[%s].", pszJson);
        }
    }
    m_listClusterCG.swap(listClusterCG);
    return ORVA_SUCCEED;
}

int32_t CClusterCGInfoList::ToJson(char* pszJson, uint32_t iMaxLen) {
    if (m_listClusterCG.empty()) {
        memset_s(pszJson, iMaxLen, 0, iMaxLen);
        LogTrace("cluster cg info, no cg info.");
        return ORVA_SUCCEED;
    }
    if (pszJson == nullptr) {
        return LogNullPointer(OPERATION_NULL_JSON, ORVA_FAIL);
    }
    if (iMaxLen == 0) {
        return LogFailure(OPERATION_JSON, ORVA_DATA_INVALID, "to json fail, illegal length.");
    }
    Json::Value root;
    for (const CClusterCGInfo& info : m_listClusterCG) {
        info.ToJson(root.append(Json::objectValue));
    }
    WriteJsonText(root, pszJson, iMaxLen);
    return ORVA_SUCCEED;
}

void CClusterCGInfoList::DumpToXml(PELU::CXml& xml) {
    xml.AddElem(PSZ_CG_LIST);
    // Elements are added behind a current one: the placeholder stands in for it before the first.
    xml.AddChildElem(PSZ_CG_PLACEHOLDER);
    xml.IntoElem();
    for (CClusterCGInfo& info : m_listClusterCG) {
        info.DumpToXml(xml);
    }
    if (xml.FindElem(PSZ_CG_PLACEHOLDER)) {
        xml.RemoveElem();
    }
    xml.OutOfElem();
}

int32_t CClusterCGInfoList::ParseXml(PELU::CXml& xml) {
    if (!xml.FindElem(PSZ_CG_LIST)) {
        return LogFailure(OPERATION_LIST_XML, ORVA_DATA_INVALID, "not found CGList element.");
    }
    if (!xml.IntoElem()) {
        LogWarning(OPERATION_LIST_XML, "no CGInfo exist.");
        return ORVA_SUCCEED;
    }
    do {
        CClusterCGInfo info;
        if (const int32_t iRet = info.ParseXml(xml); iRet != ORVA_SUCCEED) {
            LogFailure(OPERATION_LIST_XML, iRet, "parse single cg info fail.");
            xml.OutOfElem();
            return iRet;
        }
        m_listClusterCG.push_back(std::move(info));
    } while (xml.NextElem());
    xml.OutOfElem();
    return ORVA_SUCCEED;
}

int CClusterCGInfoList::ParseFromZK() {
    CClusterCGInfoList stored;
    bool bEmpty = true;
    if (ReadStore(STORE_NODE_CG_LIST, EWatch::YES, stored, bEmpty) != ORVA_SUCCEED) {
        return LogFailure("CGList info, parse form zk", ORVA_FAIL, "get cg list from zk fail.");
    }
    if (!bEmpty) {
        m_listClusterCG.swap(stored.m_listClusterCG);
    }
    return ORVA_SUCCEED;
}

bool CClusterCGInfoList::GetCGInfo(const std::string& strNodeCode,
                                   CClusterCGInfo& clusterCGInfo) const {
    return CopyEntry(m_listClusterCG, &CClusterCGInfo::GetNodeCode, strNodeCode, clusterCGInfo);
}

bool CClusterCGInfoList::GetCGInfoByFloatCode(const std::string& strFloatCode,
                                              CClusterCGInfo& clusterCGInfo) const {
    return CopyEntry(m_listClusterCG, &CClusterCGInfo::GetFloatCode, strFloatCode, clusterCGInfo);
}

bool CClusterCGInfoList::IsCGExist(const std::string& strCGCode) const {
    return HasEntry(m_listClusterCG, &CClusterCGInfo::GetFloatCode, strCGCode);
}

bool CClusterCGInfoList::IsNodeExist(const std::string& strNode) const {
    return HasEntry(m_listClusterCG, &CClusterCGInfo::GetNodeCode, strNode);
}

bool CClusterCGInfoList::IsFloatIPExist(const std::string& strFloatIP) const {
    return HasEntry(m_listClusterCG, &CClusterCGInfo::GetFloatIp, strFloatIP);
}

void CClusterCGInfoList::RemoveClusterCG(const std::string& strCGCode) {
    const auto it = FindEntry(m_listClusterCG, &CClusterCGInfo::GetFloatCode, strCGCode);
    if (it != m_listClusterCG.end()) {
        m_listClusterCG.erase(it);
    }
}
