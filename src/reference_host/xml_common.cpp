#include "common_service/xml_common.h"

#include "common_service/tarn_def.h"
#include "internal/decimal.h"
#include "internal/xml_state.h"

using tinyxml2::XMLElement;

CXmlCommon& CXmlCommon::Instance() {
    static CXmlCommon instance;
    return instance;
}

bool CXmlCommon::GetElemValue(PELU::CXml& xml, const std::string& strName, std::string& strValue,
                              bool bFlag) {
    const PELU::CXml::CState& state = *xml.m_pState;
    if (bFlag) {
        const XMLElement* pElement = state.Searched().FirstChildElement(strName.c_str());
        if (pElement != nullptr) {
            strValue = state.TextOf(*pElement);
        }
        return pElement != nullptr;
    }
    if (state.pCurrent == nullptr || strName != state.pCurrent->Name() ||
        *state.TextOf(*state.pCurrent) == '\0') {
        return false;
    }
    strValue = state.TextOf(*state.pCurrent);
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
    const XMLElement* pElement = xml.m_pState->pCurrent;
    const char* pszValue = pElement == nullptr ? nullptr : pElement->Attribute(strName.c_str());
    if (pszValue == nullptr) {
        return false;
    }
    strValue = pszValue;
    return true;
}

int CXmlCommon::ParseKeyValueInfoFromXml(PELU::CXml& xml,
                                         std::map<std::string, std::string>& keyValues) {
    const XMLElement* pElement = xml.m_pState->Searched().FirstChildElement();
    if (pElement == nullptr) {
        return ORVA_XML_INVALID;
    }
    for (; pElement != nullptr; pElement = pElement->NextSiblingElement()) {
        keyValues.emplace(pElement->Name(), PELU::CXml::CState::TextOf(*pElement));
    }
    return ORVA_SUCCEED;
}
