#include "common_service/xml_common.h"

#include <algorithm>

#include "common_service/tarn_def.h"
#include "internal/decimal.h"

CXmlCommon& CXmlCommon::Instance() {
    static CXmlCommon instance;
    return instance;
}

bool CXmlCommon::GetElemValue(PELU::CXml& xml, const std::string& strName, std::string& strValue,
                              bool bFlag) {
    if (!bFlag) {
        const char* pszName = xml.GetElemName();
        const char* pszValue = xml.GetElemValue();
        if (pszName == nullptr || strName != pszName || *pszValue == '\0') {
            return false;
        }
        strValue = pszValue;
        return true;
    }
    const auto level = xml.GetLevel();
    const auto it = std::find_if(level.begin(), level.end(),
                                 [&](const auto& element) { return element.first == strName; });
    if (it == level.end()) {
        return false;
    }
    strValue = it->second;
    return true;
}

bool CXmlCommon::GetElemValueInt(PELU::CXml& xml, const std::string& strName, int& iValue) {
    std::string strValue;
    if (!GetElemValue(xml, strName, strValue, true)) {
        return false;
    }
    const CDecimal decimal = ReadDecimal(strValue);
    if (decimal.error != std::errc{} || !IsBlank(decimal.rest)) {
        return false;
    }
    iValue = decimal.iValue;
    return true;
}

bool CXmlCommon::GetAttributeValue(PELU::CXml& xml, const std::string& strName,
                                   std::string& strValue) {
    const char* pszValue = xml.GetAttribute(strName.c_str());
    if (pszValue == nullptr) {
        return false;
    }
    strValue = pszValue;
    return true;
}

int CXmlCommon::ParseKeyValueInfoFromXml(PELU::CXml& xml,
                                         std::map<std::string, std::string>& keyValues) {
    const auto level = xml.GetLevel();
    if (level.empty()) {
        return ORVA_XML_INVALID;
    }
    keyValues.insert(level.begin(), level.end());
    return ORVA_SUCCEED;
}
