#pragma once

#include <string>

#include "common_service/xml.h"

namespace [[gnu::visibility("hidden")]] framework_internal {

/// Adds an element with a text behind the current one and goes there.
inline void AddXmlValue(PELU::CXml& xml, const char* pszName, const std::string& strValue) {
    xml.AddElem(pszName);
    xml.SetElemValue(strValue.c_str());
}

}  // namespace framework_internal
