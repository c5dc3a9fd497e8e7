#pragma once

#include <tinyxml2.h>

#include "common_service/xml.h"

namespace PELU {

/// The document and the cursor's place in it.
struct __attribute__((visibility("hidden"))) CXml::CState {
    tinyxml2::XMLDocument document;
    tinyxml2::XMLPrinter printer{nullptr, true};
    tinyxml2::XMLNode* pLevel = &document;      ///< what holds the elements that are walked
    tinyxml2::XMLElement* pCurrent = nullptr;   ///< null before the first element of the level
    tinyxml2::XMLElement* pNewChild = nullptr;  ///< what AddChildElem added to the current element
    bool bOnPath = false;                       ///< FindElemEx went here, and no move came after it

    /// Where names are looked for: below the element that FindElemEx found, or else on the level.
    tinyxml2::XMLNode& Searched() const { return bOnPath ? *pCurrent : *pLevel; }

    /// The text of an element; empty when it has none.
    static const char* TextOf(const tinyxml2::XMLElement& element) {
        const char* pszText = element.GetText();
        return pszText == nullptr ? "" : pszText;
    }

    bool GoTo(tinyxml2::XMLNode* pNewLevel, tinyxml2::XMLElement* pNewCurrent) {
        pLevel = pNewLevel;
        pCurrent = pNewCurrent;
        pNewChild = nullptr;
        bOnPath = false;
        return true;
    }

    bool GoToIfFound(tinyxml2::XMLElement* pFound) {
        return pFound != nullptr && GoTo(pFound->Parent(), pFound);
    }

    /// Settles a load: the cursor on the top level of what was read, or of an empty document.
    bool Settle();

    /// Null when there is none.
    tinyxml2::XMLElement* ElementAt(const char* pszPath);
};

}  // namespace PELU
