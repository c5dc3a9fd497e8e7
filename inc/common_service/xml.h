#pragma once

#include <list>
#include <memory>
#include <string>
#include <utility>

namespace PELU {

/// A cursor over one XML document. It stands on a current element of a level or, on a new document
/// and after FindElemEx, on a level before its first element. A move that fails leaves the cursor
/// where it stood. One thread at a time.
class CXml {
public:
    /// With a file name, as Load; with null, an empty document.
    explicit CXml(const char* pszFileName);
    ~CXml();
    CXml(const CXml&) = delete;
    CXml& operator=(const CXml&) = delete;

    /// Replaces the document by the file and resets the cursor. False when there is no such file or
    /// it is no well-formed XML; the document is then empty.
    bool Load(const char* pszFile);

    /// What the reference host adds: Load from text.
    bool Parse(const char* pszText);

    /// Goes to the element at a path from the root, names joined by "/", and enters it, so that
    /// FindElem looks among its children.
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

    /// What the reference host adds, for CXmlCommon: name, text and attribute at the cursor, null
    /// when there is none.
    const char* GetElemName() const;
    const char* GetElemValue() const;
    const char* GetAttribute(const char* pszName) const;

    /// The elements of the current level in order, each as its name and its text.
    std::list<std::pair<std::string, std::string>> GetLevel() const;

private:
    struct CState;

    // Shared, not unique, so that another host may define the operations without completing CState.
    std::shared_ptr<CState> m_pState;
};

}  // namespace PELU
