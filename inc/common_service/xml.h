#pragma once

#include <memory>

class CXmlCommon;

namespace PELU {

/// A cursor over one XML document. It stands on a current element of a level or, on a new document,
/// before the first element of the top level. A move that fails leaves the cursor where it stood.
/// One thread at a time.
class [[gnu::visibility("default")]] CXml {
public:
    /// With a file name, as Load; with null, an empty document.
    CXml(const char* pszFileName);
    ~CXml();
    CXml(const CXml&) = delete;
    CXml& operator=(const CXml&) = delete;

    /// Replaces the document by the file and resets the cursor. False when there is no such file or
    /// it is no well-formed XML; the document is then empty.
    bool Load(const char* pszFile);

    /// As Load, from text.
    bool Parse(const char* pszText);

    /// Goes to the element at a path from the root, names joined by "/". It is then the current
    /// element; but names, those that CXmlCommon reads included, are looked for among its children
    /// until the cursor moves.
    bool FindElemEx(const char* pszPath);

    /// Goes to the first element of that name on the current level.
    bool FindElem(const char* pszName);

    /// As FindElem, but looks from the current element on, so that a walk with NextElem goes
    /// forward.
    bool FindElemValue(const char* pszName);

    /// Goes down to the first child of the current element, or to the one that AddChildElem has
    /// just added; false if it has none.
    bool IntoElem();

    /// Goes back up to the parent; on the top level nothing happens.
    void OutOfElem();

    /// Goes to the next sibling; false at the last. From before the first element: to the first.
    bool NextElem();

    /// Adds an element behind the current one and goes there. On an empty document: the root. The
    /// caller sees to it that the document keeps one root.
    bool AddElem(const char* pszName);

    /// Adds a last child to the current element. The cursor stays; the next IntoElem goes to it.
    bool AddChildElem(const char* pszName);

    /// Replaces the text of the current element; its children stay.
    bool SetElemValue(const char* pszValue);

    /// Removes the current element; the cursor stands on the one before it, or before the first.
    bool RemoveElem();

    /// The document as text, its length in uiLen; null when the document is empty. The text belongs
    /// to this object and lives until the next call of GetXMLStream.
    const char* GetXMLStream(unsigned int& uiLen);

    /// The text of the element at a path from the root; null when there is no such element. An
    /// element without text gives the empty text. The cursor stays.
    const char* GetElemValueEx(const char* pszPath);

private:
    friend class ::CXmlCommon;

    /// The host's own: the document and the cursor's place in it. Shared, not unique, so that the
    /// operations can be defined where it is incomplete.
    struct CState;
    std::shared_ptr<CState> m_pState;
};

}  // namespace PELU
