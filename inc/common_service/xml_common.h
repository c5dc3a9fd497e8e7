#pragma once

#include <map>
#include <string>

#include "common_service/xml.h"

/// Reads values at the cursor of an XML document; the cursor stays. Stateless; one thread at a time
/// per document.
class __attribute__((visibility("default"))) CXmlCommon {
public:
    static CXmlCommon& Instance();

    /// With bFlag true: the text of the first element strName on the current level. With bFlag
    /// false: the text of the current element, which must be named strName. False, with strValue
    /// untouched, when there is no such element; an element without text counts as found when
    /// bFlag is true and gives the empty text, and as not found when bFlag is false.
    bool GetElemValue(PELU::CXml& xml, const std::string& strName, std::string& strValue,
                      bool bFlag);

    /// The same with bFlag true, for a decimal number. False, with iValue untouched, also for text
    /// that is no number or lies out of range.
    bool GetElemValueInt(PELU::CXml& xml, const std::string& strName, int& iValue);

    /// An attribute of the current element. False, with strValue untouched, when it has none.
    bool GetAttributeValue(PELU::CXml& xml, const std::string& strName, std::string& strValue);

    /// Adds each element of the current level, from the first on, as its name and its text; an
    /// element of a known name keeps the first text. Returns 0, or ORVA_XML_INVALID on an empty
    /// level.
    int ParseKeyValueInfoFromXml(PELU::CXml& xml, std::map<std::string, std::string>& keyValues);
};
