#include "common_service/xml.h"

#include <cstring>
#include <string>
#include <string_view>

#include "internal/xml_state.h"

namespace PELU {

namespace {

using tinyxml2::XMLElement;
using tinyxml2::XMLNode;

/// The parser takes a document of several roots, or with text beside them.
bool IsWellFormed(const tinyxml2::XMLDocument& document) {
    if (document.Error() || document.RootElement() == nullptr ||
        document.RootElement()->NextSiblingElement() != nullptr) {
        return false;
    }
    for (const XMLNode* pNode = document.FirstChild(); pNode != nullptr;
         pNode = pNode->NextSibling()) {
        if (pNode->ToText() != nullptr) {
            return false;
        }
    }
    return true;
}

/// The first of that name from the element on.
XMLElement* FindFrom(XMLElement* pFrom, const char* pszName) {
    if (pFrom == nullptr || pszName == nullptr || std::strcmp(pFrom->Name(), pszName) == 0) {
        return pszName == nullptr ? nullptr : pFrom;
    }
    return pFrom->NextSiblingElement(pszName);
}

}  // namespace

bool CXml::CState::Settle() {
    GoTo(&document, nullptr);
    if (IsWellFormed(document)) {
        return true;
    }
    document.Clear();
    return false;
}

XMLElement* CXml::CState::ElementAt(const char* pszPath) {
    XMLNode* pNode = &document;
    std::string_view path = pszPath == nullptr ? "" : pszPath;
    while (pNode != nullptr) {
        const std::size_t length = path.find('/');
        pNode = pNode->FirstChildElement(std::string(path.substr(0, length)).c_str());
        if (length == std::string_view::npos) {
            break;
        }
        path.remove_prefix(length + 1);
    }
    return pNode == nullptr ? nullptr : pNode->ToElement();
}

CXml::CXml(const char* pszFileName) : m_pState(std::make_shared<CState>()) {
    if (pszFileName != nullptr) {
        Load(pszFileName);
    }
}

CXml::~CXml() = default;

bool CXml::Load(const char* pszFile) {
    m_pState->document.Clear();
    if (pszFile != nullptr) {
        m_pState->document.LoadFile(pszFile);
    }
    return m_pState->Settle();
}

bool CXml::Parse(const char* pszText) {
    m_pState->document.Clear();
    if (pszText != nullptr) {
        m_pState->document.Parse(pszText);
    }
    return m_pState->Settle();
}

bool CXml::FindElemEx(const char* pszPath) {
    const bool bFound = m_pState->GoToIfFound(m_pState->ElementAt(pszPath));
    m_pState->bOnPath = m_pState->bOnPath || bFound;
    return bFound;
}

bool CXml::FindElem(const char* pszName) {
    return m_pState->GoToIfFound(FindFrom(m_pState->Searched().FirstChildElement(), pszName));
}

bool CXml::FindElemValue(const char* pszName) {
    if (m_pState->pCurrent == nullptr || m_pState->bOnPath) {
        return FindElem(pszName);
    }
    return m_pState->GoToIfFound(FindFrom(m_pState->pCurrent, pszName));
}

bool CXml::IntoElem() {
    CState& state = *m_pState;
    if (state.pCurrent == nullptr) {
        return false;
    }
    XMLElement* pChild =
        state.pNewChild != nullptr ? state.pNewChild : state.pCurrent->FirstChildElement();
    return pChild != nullptr && state.GoTo(state.pCurrent, pChild);
}

void CXml::OutOfElem() {
    XMLElement* pParent = m_pState->pLevel->ToElement();
    if (pParent != nullptr) {
        m_pState->GoTo(pParent->Parent(), pParent);
    }
}

bool CXml::NextElem() {
    const CState& state = *m_pState;
    return m_pState->GoToIfFound(state.pCurrent == nullptr ? state.pLevel->FirstChildElement()
                                                           : state.pCurrent->NextSiblingElement());
}

bool CXml::AddElem(const char* pszName) {
    if (pszName == nullptr || *pszName == '\0') {
        return false;
    }
    CState& state = *m_pState;
    XMLElement* pElement = state.document.NewElement(pszName);
    if (state.pCurrent == nullptr) {
        state.pLevel->InsertFirstChild(pElement);
    } else {
        state.pLevel->InsertAfterChild(state.pCurrent, pElement);
    }
    return state.GoTo(state.pLevel, pElement);
}

bool CXml::AddChildElem(const char* pszName) {
    CState& state = *m_pState;
    if (state.pCurrent == nullptr || pszName == nullptr || *pszName == '\0') {
        return false;
    }
    state.pNewChild = state.pCurrent->InsertNewChildElement(pszName);
    return true;
}

bool CXml::SetElemValue(const char* pszValue) {
    CState& state = *m_pState;
    if (state.pCurrent == nullptr || pszValue == nullptr) {
        return false;
    }
    for (XMLNode* pNode = state.pCurrent->FirstChild(); pNode != nullptr;) {
        XMLNode* pNext = pNode->NextSibling();
        if (pNode->ToText() != nullptr) {
            state.pCurrent->DeleteChild(pNode);
        }
        pNode = pNext;
    }
    state.pCurrent->InsertFirstChild(state.document.NewText(pszValue));
    return true;
}

bool CXml::RemoveElem() {
    CState& state = *m_pState;
    if (state.pCurrent == nullptr) {
        return false;
    }
    XMLElement* pRemoved = state.pCurrent;
    state.GoTo(state.pLevel, pRemoved->PreviousSiblingElement());
    state.pLevel->DeleteChild(pRemoved);
    return true;
}

const char* CXml::GetXMLStream(unsigned int& uiLen) {
    CState& state = *m_pState;
    if (state.document.RootElement() == nullptr) {
        return nullptr;
    }
    state.printer.ClearBuffer();
    state.document.Print(&state.printer);
    uiLen = static_cast<unsigned int>(state.printer.CStrSize() - 1);
    return state.printer.CStr();
}

const char* CXml::GetElemValueEx(const char* pszPath) {
    const XMLElement* pElement = m_pState->ElementAt(pszPath);
    return pElement == nullptr ? nullptr : CState::TextOf(*pElement);
}

}  // namespace PELU
