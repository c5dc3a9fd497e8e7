#pragma once

#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "framework_service/cluster_cg_info.h"
#include "support/host_fixture.h"
#include "support/registry_fixture.h"

namespace cg_document {

inline constexpr char FILE_NAME[] = "cluster_cg_info";
inline constexpr char ENTRY_TEXT[] =
    R"({"NVRCode":"a","FloatCGCode":"b","FloatIP":"c","DecisionVerNum":"1"})";

/// Node, float code, float address and version number.
inline std::string Tell(const CClusterCGInfo& info) {
    return info.GetNodeCode() + ' ' + info.GetFloatCode() + ' ' + info.GetFloatIp() + ' ' +
           info.GetDecVerNum();
}

inline std::vector<std::string> Tell(const CClusterCGInfoList& list) {
    std::list<CClusterCGInfo> entries(1);
    list.GetClusterCGInfoList(entries);
    std::vector<std::string> records;
    for (const CClusterCGInfo& info : entries) {
        records.push_back(Tell(info));
    }
    return records;
}

inline CClusterCGInfoList MakeList(const std::list<CClusterCGInfo>& entries) {
    CClusterCGInfoList list;
    list.SetClusterCGInfoList(entries);
    return list;
}

inline std::string XmlOf(PELU::CXml& xml) {
    unsigned int uiLen = 0;
    const char* pszXml = xml.GetXMLStream(uiLen);
    return pszXml == nullptr ? "" : pszXml;
}

inline CLogLine JsonLine(const std::string& strFunction, const std::string& strMessage) {
    return Err("cluster cg info", ORVA_DATA_INVALID, FILE_NAME, strFunction, strMessage);
}

inline CLogLine TextLine(const std::string& strMessage, const std::string& strText) {
    return JsonLine("ParseJson", strMessage + ", json text[" + strText + "].");
}

inline CLogLine NullPointerLine(const std::string& strFunction) {
    return Err("Point pszJson is null.", ORVA_FAIL, FILE_NAME, strFunction,
               "Make sure there is something wrong");
}

inline const CLogLine BAD_ENTRY = JsonLine("ParseJson", "parse json fail.");
inline const CLogLine NO_ELEMENT = Err("parse cluster cg info xml fail", ORVA_DATA_INVALID,
                                       FILE_NAME, "ParseXml", "not found CGInfo element.");

inline CLogLine ListXmlLine(const std::string& strMessage) {
    return Err("parse cluster cg info list xml fail", ORVA_DATA_INVALID, FILE_NAME, "ParseXml",
               strMessage);
}

class CGDocument : public CHostTest {
protected:
    int Parse(const std::string& strText) { return m_document.ParseJson(strText.c_str()); }

    CClusterCGInfoList m_document =
        MakeList({MakeCG("a", "b", "c", "1"), MakeCG("d", "e", "f", "2")});
    const std::vector<std::string> m_before = Tell(m_document);
};

}  // namespace cg_document
