#pragma once

#include <cstddef>

/// What the documents of the store are made of, as data. Each document's header has a table of the
/// keys of each of its objects, and one row for the document itself. The documents read by these
/// rows, so that whoever checks, shows or describes a document need not say it again.

/// What a key's value must be.
enum class EKeyType {
    STRING,           ///< of any length that the document's buffer holds, also empty
    INTEGER,          ///< of 32 bits with a sign; 3.0 counts as one
    UNSIGNED,         ///< of 64 bits without a sign
    BOOLEAN,          ///< true or false
    OBJECT,           ///< one object
    ARRAY,            ///< of objects
    OBJECT_OR_ARRAY,  ///< either
};

/// What becomes of an object that is read, when a key is absent, null or of another type.
enum class EKeyNeed {
    REQUIRED,  ///< the object is refused, and the document with it
    OPTIONAL,  ///< the key counts as absent
};

/// Constants that lie in a row, by reference.
template <typename T>
class CConstants {
public:
    constexpr CConstants() = default;

    template <std::size_t SIZE>
    // NOLINTNEXTLINE(google-explicit-constructor): an array stands for its elements
    constexpr CConstants(const T (&constants)[SIZE]) : m_pBegin(constants), m_uiSize(SIZE) {}

    constexpr const T* begin() const { return m_pBegin; }
    constexpr const T* end() const { return m_pBegin + m_uiSize; }
    constexpr std::size_t size() const { return m_uiSize; }
    constexpr bool empty() const { return m_uiSize == 0; }

private:
    const T* m_pBegin = nullptr;
    std::size_t m_uiSize = 0;
};

/// One key of an object of a document; with an empty key, the document itself.
struct CDocumentKey {
    const char* pszKey;
    EKeyType eType;
    EKeyNeed eNeed;

    /// The keys of the object that is the value, or of each object in it.
    CConstants<CDocumentKey> keys{};

    /// The texts that a string is written as. Any other is read too, as the document says. Empty:
    /// any text may stand there.
    CConstants<const char*> texts{};
};
