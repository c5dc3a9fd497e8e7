#include "command/difference.h"

#include <json/writer.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_znode_info.h"
#include "reference_host/shown_text.h"

namespace {

/// What an entry of a list is called by; the first of these keys that it has.
constexpr const char* NAMING_KEYS[] = {PSZ_NODE_ID, PSZ_CG_FLOAT_CODE, PSZ_CLOUD_STORAGE_NVRCODE,
                                       PSZ_NODE_CONTAINER_TYPE, PSZ_CLOUD_STORAGE_CODE};

std::string OneLine(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["commentStyle"] = "None";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, value);
}

std::optional<std::string> NameOf(const Json::Value& entry) {
    if (!entry.isObject()) {
        return std::nullopt;
    }
    for (const char* pszKey : NAMING_KEYS) {
        if (entry[pszKey].isString()) {
            return entry[pszKey].asString();
        }
    }
    return std::nullopt;
}

/// The names of a list's entries, in order; nothing when one has none or two have the same.
std::optional<std::vector<std::string>> NamesOf(const Json::Value& list) {
    std::vector<std::string> names;
    for (const Json::Value& entry : list) {
        const std::optional<std::string> name = NameOf(entry);
        if (!name) {
            return std::nullopt;
        }
        names.push_back(*name);
    }
    const bool bUnique = std::set<std::string>(names.begin(), names.end()).size() == names.size();
    return bUnique ? std::make_optional(names) : std::nullopt;
}

std::vector<std::string> Intersection(const std::vector<std::string>& names,
                                      const std::vector<std::string>& others) {
    std::vector<std::string> common;
    std::copy_if(names.begin(), names.end(), std::back_inserter(common),
                 [&others](const std::string& strName) {
                     return std::find(others.begin(), others.end(), strName) != others.end();
                 });
    return common;
}

Json::Value ListOf(const std::vector<std::string>& names) {
    Json::Value list(Json::arrayValue);
    for (const std::string& strName : names) {
        list.append(strName);
    }
    return list;
}

class CComparison {
public:
    void Compare(const std::string& strPath, const Json::Value* pBefore,
                 const Json::Value* pAfter) {
        if (pBefore != nullptr && pAfter != nullptr) {
            if (pBefore->isObject() && pAfter->isObject()) {
                CompareObjects(strPath, *pBefore, *pAfter);
                return;
            }
            if (pBefore->isArray() && pAfter->isArray()) {
                CompareLists(strPath, *pBefore, *pAfter);
                return;
            }
            if (*pBefore == *pAfter) {
                return;
            }
        }
        if (IsFilledList(pBefore, pAfter) || IsFilledList(pAfter, pBefore)) {
            const Json::Value none(Json::arrayValue);
            CompareLists(strPath, pBefore != nullptr ? *pBefore : none,
                         pAfter != nullptr ? *pAfter : none);
            return;
        }
        changes.push_back({strPath, Copied(pBefore), Copied(pAfter)});
    }

    std::vector<CFieldChange> changes;

private:
    static std::optional<Json::Value> Copied(const Json::Value* pValue) {
        return pValue != nullptr ? std::make_optional(*pValue) : std::nullopt;
    }

    /// A list that comes or goes is told entry by entry.
    static bool IsFilledList(const Json::Value* pList, const Json::Value* pOther) {
        return pOther == nullptr && pList != nullptr && pList->isArray() && !pList->empty();
    }

    static const Json::Value* Member(const Json::Value& object, const std::string& strKey) {
        return object.find(strKey.data(), strKey.data() + strKey.size());
    }

    static const Json::Value* Element(const Json::Value& list, Json::ArrayIndex uiIndex) {
        return uiIndex < list.size() ? &list[uiIndex] : nullptr;
    }

    static const Json::Value* Named(const Json::Value& list, const std::string& strName) {
        const auto it =
            std::find_if(list.begin(), list.end(),
                         [&strName](const Json::Value& entry) { return NameOf(entry) == strName; });
        return it != list.end() ? &*it : nullptr;
    }

    void CompareObjects(const std::string& strPath, const Json::Value& before,
                        const Json::Value& after) {
        const std::string strStem = strPath.empty() ? "" : strPath + ".";
        for (const std::string& strKey : before.getMemberNames()) {
            Compare(strStem + strKey, Member(before, strKey), Member(after, strKey));
        }
        for (const std::string& strKey : after.getMemberNames()) {
            if (!before.isMember(strKey)) {
                Compare(strStem + strKey, nullptr, Member(after, strKey));
            }
        }
    }

    void CompareLists(const std::string& strPath, const Json::Value& before,
                      const Json::Value& after) {
        const auto namesBefore = NamesOf(before);
        const auto namesAfter = NamesOf(after);
        if (namesBefore && namesAfter) {
            CompareNamed(strPath, before, *namesBefore, after, *namesAfter);
            return;
        }
        for (Json::ArrayIndex i = 0; i < std::max(before.size(), after.size()); ++i) {
            Compare(strPath + "[" + std::to_string(i) + "]", Element(before, i), Element(after, i));
        }
    }

    void CompareNamed(const std::string& strPath, const Json::Value& before,
                      const std::vector<std::string>& namesBefore, const Json::Value& after,
                      const std::vector<std::string>& namesAfter) {
        const auto entryPath = [&strPath](const std::string& strName) {
            return strPath + "[\"" + strName + "\"]";
        };
        for (const std::string& strName : namesBefore) {
            Compare(entryPath(strName), Named(before, strName), Named(after, strName));
        }
        for (const std::string& strName : namesAfter) {
            if (Named(before, strName) == nullptr) {
                Compare(entryPath(strName), nullptr, Named(after, strName));
            }
        }
        const std::vector<std::string> stayed = Intersection(namesBefore, namesAfter);
        const std::vector<std::string> order = Intersection(namesAfter, namesBefore);
        if (stayed != order) {
            changes.push_back(
                {strPath.empty() ? "order" : "order of " + strPath, ListOf(stayed), ListOf(order)});
        }
    }
};

std::string ValueText(const std::optional<Json::Value>& value) {
    return value ? ShownText(OneLine(*value)) : "nothing";
}

}  // namespace

std::vector<CFieldChange> FindChanges(const Json::Value* pBefore, const Json::Value* pAfter) {
    // An object that comes or goes is told key by key.
    const Json::Value none(Json::objectValue);
    const auto orNone = [&none](const Json::Value* pValue, const Json::Value* pOther) {
        return pValue == nullptr && pOther != nullptr && pOther->isObject() ? &none : pValue;
    };
    CComparison comparison;
    comparison.Compare("", orNone(pBefore, pAfter), orNone(pAfter, pBefore));
    return std::move(comparison.changes);
}

std::string TextOf(const CFieldChange& change) {
    const std::string strPath = change.strPath.empty() ? "all of it" : ShownText(change.strPath);
    return strPath + ": was " + ValueText(change.before) + ", will be " + ValueText(change.after);
}

Json::Value ToJson(const CFieldChange& change) {
    Json::Value object(Json::objectValue);
    object["path"] = change.strPath;
    if (change.before) {
        object["before"] = *change.before;
    }
    if (change.after) {
        object["after"] = *change.after;
    }
    return object;
}
