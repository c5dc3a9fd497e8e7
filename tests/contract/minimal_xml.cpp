// The XML cursor's symbols and nothing else, on elements with a text or children.
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <list>
#include <map>
#include <string>
#include <string_view>

#include "common_service/tarn_def.h"
#include "common_service/xml.h"
#include "common_service/xml_common.h"
#include "contract/minimal_host.h"

namespace {

struct CElement {
    std::string strName;
    std::string strText;
    std::map<std::string, std::string> attributes;
    std::list<CElement> children;
    CElement* pParent = nullptr;

    CElement* Find(std::string_view name) {
        for (CElement& child : children) {
            if (child.strName == name) {
                return &child;
            }
        }
        return nullptr;
    }

    std::list<CElement>::iterator Place() {
        auto it = pParent->children.begin();
        while (&*it != this) {
            ++it;
        }
        return it;
    }

    CElement* Next() {
        const auto it = std::next(Place());
        return it == pParent->children.end() ? nullptr : &*it;
    }

    CElement* Add(std::list<CElement>::iterator before, const char* pszName) {
        return &*children.insert(before, CElement{pszName, "", {}, {}, this});
    }
};

/// What stands in a tag behind its name: KEY="VALUE" KEY="VALUE".
std::map<std::string, std::string> ReadAttributes(std::string_view text) {
    std::map<std::string, std::string> attributes;
    for (std::size_t end = 0; !text.empty(); text.remove_prefix(std::min(end + 2, text.size()))) {
        const std::size_t begin = text.find("=\"");
        end = text.find('"', begin + 2);
        attributes.emplace(text.substr(0, begin), text.substr(begin + 2, end - begin - 2));
    }
    return attributes;
}

/// Reads elements, or a text, up to the end of the element they are in. False on bad text.
bool ReadInto(CElement& element, std::string_view& text) {
    while (!text.empty() && text.substr(0, 2) != "</") {
        if (text.front() != '<') {
            const std::size_t size = std::min(text.find('<'), text.size());
            element.strText += text.substr(0, size);
            text.remove_prefix(size);
            continue;
        }
        const std::size_t end = text.find('>');
        if (end == std::string_view::npos) {
            return false;
        }
        const bool bEmpty = text[end - 1] == '/';
        const std::string_view tag = text.substr(1, end - 1 - (bEmpty ? 1 : 0));
        const std::string strName(tag.substr(0, tag.find(' ')));
        CElement& child = *element.Add(element.children.end(), strName.c_str());
        child.attributes = ReadAttributes(tag.substr(std::min(strName.size() + 1, tag.size())));
        text.remove_prefix(end + 1);
        const std::string strEnd = bEmpty ? "" : "</" + strName + ">";
        if (!bEmpty && (!ReadInto(child, text) || text.substr(0, strEnd.size()) != strEnd)) {
            return false;
        }
        text.remove_prefix(strEnd.size());
    }
    return true;
}

std::string Print(const CElement& element) {
    std::string strText = element.strText;
    for (const CElement& child : element.children) {
        strText += "<" + child.strName + ">" + Print(child) + "</" + child.strName + ">";
    }
    return strText;
}

}  // namespace

namespace PELU {

struct CXml::CState {
    CElement document;
    CElement* pLevel = &document;
    CElement* pCurrent = nullptr;
    CElement* pNewChild = nullptr;
    bool bOnPath = false;
    std::string strStream;

    CElement& Searched() { return bOnPath ? *pCurrent : *pLevel; }

    bool GoTo(CElement* pElement) {
        if (pElement == nullptr) {
            return false;
        }
        pLevel = pElement->pParent;
        pCurrent = pElement;
        pNewChild = nullptr;
        bOnPath = false;
        return true;
    }

    CElement* ElementAt(std::string_view path) {
        CElement* pElement = &document;
        while (pElement != nullptr && !path.empty()) {
            const std::size_t size = std::min(path.find('/'), path.size());
            pElement = pElement->Find(path.substr(0, size));
            path.remove_prefix(std::min(size + 1, path.size()));
        }
        return pElement;
    }
};

CXml::CXml(const char*) : m_pState(std::make_shared<CState>()) {}

CXml::~CXml() = default;

bool CXml::Load(const char* pszFile) {
    CMinimalHost& host = CMinimalHost::Instance();
    host.Record(std::string("CXml::Load ") + pszFile);
    return !host.m_strXmlFile.empty() && Parse(host.m_strXmlFile.c_str());
}

bool CXml::Parse(const char* pszText) {
    m_pState = std::make_shared<CState>();
    std::string_view text = pszText;
    return ReadInto(m_pState->document, text) && text.empty();
}

bool CXml::FindElemEx(const char* pszPath) {
    const bool bFound = m_pState->GoTo(m_pState->ElementAt(pszPath));
    m_pState->bOnPath = m_pState->bOnPath || bFound;
    return bFound;
}

bool CXml::FindElem(const char* pszName) {
    return m_pState->GoTo(m_pState->Searched().Find(pszName));
}

bool CXml::FindElemValue(const char* pszName) {
    CState& state = *m_pState;
    if (state.pCurrent == nullptr || state.bOnPath) {
        return FindElem(pszName);
    }
    CElement* pElement = state.pCurrent;
    while (pElement != nullptr && pElement->strName != pszName) {
        pElement = pElement->Next();
    }
    return state.GoTo(pElement);
}

bool CXml::IntoElem() {
    CState& state = *m_pState;
    if (state.pCurrent == nullptr || state.pCurrent->children.empty()) {
        return false;
    }
    return state.GoTo(state.pNewChild != nullptr ? state.pNewChild
                                                 : &state.pCurrent->children.front());
}

void CXml::OutOfElem() {
    if (m_pState->pLevel != &m_pState->document) {
        m_pState->GoTo(m_pState->pLevel);
    }
}

bool CXml::NextElem() {
    CState& state = *m_pState;
    return state.pCurrent != nullptr && state.GoTo(state.pCurrent->Next());
}

bool CXml::AddElem(const char* pszName) {
    CState& state = *m_pState;
    const auto before = state.pCurrent == nullptr ? state.pLevel->children.begin()
                                                  : std::next(state.pCurrent->Place());
    return state.GoTo(state.pLevel->Add(before, pszName));
}

bool CXml::AddChildElem(const char* pszName) {
    CState& state = *m_pState;
    if (state.pCurrent == nullptr) {
        return false;
    }
    state.pNewChild = state.pCurrent->Add(state.pCurrent->children.end(), pszName);
    return true;
}

bool CXml::SetElemValue(const char* pszValue) {
    if (m_pState->pCurrent == nullptr) {
        return false;
    }
    m_pState->pCurrent->strText = pszValue;
    return true;
}

bool CXml::RemoveElem() {
    CState& state = *m_pState;
    if (state.pCurrent == nullptr) {
        return false;
    }
    const auto removed = state.pCurrent->Place();
    state.pCurrent = removed == state.pLevel->children.begin() ? nullptr : &*std::prev(removed);
    state.bOnPath = false;
    state.pLevel->children.erase(removed);
    return true;
}

const char* CXml::GetXMLStream(unsigned int& uiLen) {
    m_pState->strStream = Print(m_pState->document);
    uiLen = static_cast<unsigned int>(m_pState->strStream.size());
    return m_pState->document.children.empty() ? nullptr : m_pState->strStream.c_str();
}

const char* CXml::GetElemValueEx(const char* pszPath) {
    CMinimalHost::Instance().Record(std::string("GetElemValueEx ") + pszPath);
    const CElement* pElement = m_pState->ElementAt(pszPath);
    return pElement == nullptr ? nullptr : pElement->strText.c_str();
}

}  // namespace PELU

CXmlCommon& CXmlCommon::Instance() {
    static CXmlCommon xmlCommon;
    return xmlCommon;
}

bool CXmlCommon::GetElemValue(PELU::CXml& xml, const std::string& strName, std::string& strValue,
                              bool bFlag) {
    PELU::CXml::CState& state = *xml.m_pState;
    const CElement* pElement = bFlag ? state.Searched().Find(strName) : state.pCurrent;
    if (pElement == nullptr || pElement->strName != strName ||
        (!bFlag && pElement->strText.empty())) {
        return false;
    }
    strValue = pElement->strText;
    return true;
}

bool CXmlCommon::GetElemValueInt(PELU::CXml& xml, const std::string& strName, int& iValue) {
    std::string strValue;
    return GetElemValue(xml, strName, strValue, true) &&
           std::sscanf(strValue.c_str(), "%d", &iValue) == 1;
}

bool CXmlCommon::GetAttributeValue(PELU::CXml& xml, const std::string& strName,
                                   std::string& strValue) {
    CMinimalHost::Instance().Record("GetAttributeValue " + strName + " [" + strValue + "]");
    const CElement* pElement = xml.m_pState->pCurrent;
    if (pElement == nullptr || pElement->attributes.count(strName) == 0) {
        return false;
    }
    strValue = pElement->attributes.at(strName);
    return true;
}

int CXmlCommon::ParseKeyValueInfoFromXml(PELU::CXml& xml,
                                         std::map<std::string, std::string>& keyValues) {
    for (const CElement& element : xml.m_pState->Searched().children) {
        keyValues.emplace(element.strName, element.strText);
    }
    return keyValues.empty() ? ORVA_XML_INVALID : ORVA_SUCCEED;
}
