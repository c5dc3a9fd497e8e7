#include "command/key_fault.h"

#include <cstddef>
#include <vector>

#include "command/text_place.h"

namespace {

template <bool (Json::Value::*... pTests)() const>
bool IsAnyOf(const Json::Value& value) {
    return ((value.*pTests)() || ...);
}

/// A type that a key's value must have.
struct CTypeTest {
    bool (*pIs)(const Json::Value& value);
    const char* pszName;
};

CTypeTest TestOf(EKeyType eType) {
    using Json::Value;
    switch (eType) {
        case EKeyType::STRING:
            return {IsAnyOf<&Value::isString>, "a string"};
        case EKeyType::INTEGER:
            return {IsAnyOf<&Value::isInt>, "an integer"};
        case EKeyType::UNSIGNED:
            return {IsAnyOf<&Value::isUInt64>, "a version number"};
        case EKeyType::BOOLEAN:
            return {IsAnyOf<&Value::isBool>, "true or false"};
        case EKeyType::OBJECT:
            return {IsAnyOf<&Value::isObject>, "an object"};
        case EKeyType::ARRAY:
            return {IsAnyOf<&Value::isArray>, "an array"};
        default:
            return {IsAnyOf<&Value::isObject, &Value::isArray>, "an object or an array"};
    }
}

/// The rows that lead from the root to an object. An array on the way stands for each of its
/// elements.
using KeyPath = std::vector<const CDocumentKey*>;

/// Looks for a required key everywhere that a path leads to.
class CKeySearch {
public:
    CKeySearch(const KeyPath& path, const CDocumentKey& key, const std::string& strText)
        : m_path(path), m_key(key), m_strText(strText) {}

    /// What is wrong first below a value that lies at this depth of the path; nothing if all is
    /// well.
    std::optional<std::string> FindFault(const Json::Value& value, const std::string& strName = {},
                                         std::size_t depth = 0) const {
        if (value.isArray()) {
            return FindFaultInElements(value, strName, depth);
        }
        if (!value.isObject()) {
            return Fault(strName, "is no object", value);
        }
        if (depth == m_path.size()) {
            return FindFaultInKey(value, strName);
        }
        const CDocumentKey& key = *m_path[depth];
        const Json::Value& next = value[key.pszKey];
        return !next.isNull() && TestOf(key.eType).pIs(next)
                   ? FindFault(next, Join(strName, key.pszKey), depth + 1)
                   : std::nullopt;
    }

private:
    static std::string Join(const std::string& strName, const char* pszKey) {
        return strName.empty() ? pszKey : strName + "." + pszKey;
    }

    std::optional<std::string> FindFaultInElements(const Json::Value& array,
                                                   const std::string& strName,
                                                   std::size_t depth) const {
        for (Json::ArrayIndex uiIndex = 0; uiIndex < array.size(); ++uiIndex) {
            const std::string strElement = strName + "[" + std::to_string(uiIndex) + "]";
            if (auto fault = FindFault(array[uiIndex], strElement, depth)) {
                return fault;
            }
        }
        return std::nullopt;
    }

    std::optional<std::string> FindFaultInKey(const Json::Value& object,
                                              const std::string& strName) const {
        const Json::Value& member = object[m_key.pszKey];
        if (member.isNull()) {
            return Fault(Join(strName, m_key.pszKey), "is missing", object);
        }
        if (const CTypeTest test = TestOf(m_key.eType); !test.pIs(member)) {
            return Fault(Join(strName, m_key.pszKey), std::string("is not ") + test.pszName,
                         member);
        }
        return std::nullopt;
    }

    std::optional<std::string> Fault(const std::string& strName, const std::string& strWhat,
                                     const Json::Value& value) const {
        const auto offset = static_cast<std::size_t>(value.getOffsetStart());
        return PlaceOf(m_strText, offset) + ": " +
               (strName.empty() ? "the document" : "\"" + strName + "\"") + " " + strWhat;
    }

    const KeyPath& m_path;
    const CDocumentKey& m_key;
    const std::string& m_strText;
};

/// In an object itself before what lies in it.
std::optional<std::string> FindFaultBelow(const CDocumentKey& parent, const KeyPath& path,
                                          const std::string& strText, const Json::Value& root) {
    for (const CDocumentKey& key : parent.keys) {
        if (key.eNeed == EKeyNeed::REQUIRED) {
            if (auto fault = CKeySearch(path, key, strText).FindFault(root)) {
                return fault;
            }
        }
    }
    for (const CDocumentKey& key : parent.keys) {
        KeyPath keyPath(path);
        keyPath.push_back(&key);
        if (auto fault = FindFaultBelow(key, keyPath, strText, root)) {
            return fault;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> FindKeyFault(const CDocumentKey& document, const std::string& strText,
                                        const Json::Value& root) {
    return FindFaultBelow(document, {}, strText, root);
}
