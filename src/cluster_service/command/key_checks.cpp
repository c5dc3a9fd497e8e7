#include <algorithm>
#include <cstring>
#include <map>
#include <string_view>

#include "command/checks.h"
#include "command/json_keys.h"
#include "command/key_fault.h"
#include "common_service/oper_common.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/cluster_znode_info.h"

namespace {

constexpr int NUMERIC_MAX_PORT = 65535;

std::string FindEmptyText(const Json::Value& value) {
    return value.isString() && value.asString().empty() ? "is empty" : "";
}

std::string FindNoAddress(const Json::Value& value) {
    return value.isString() && COperCommon::IPToUint(value.asString()) == 0
               ? "is " + Quoted(value.asString()) + ", which is no address"
               : "";
}

std::string FindNoPort(const Json::Value& value) {
    return value.isInt() && (value.asInt() < 1 || value.asInt() > NUMERIC_MAX_PORT)
               ? "is " + std::to_string(value.asInt()) + ", which is no port"
               : "";
}

/// What the value of a key must be beyond its type, in every document that has the key. A rule
/// answers what is wrong, empty if nothing is.
struct CValueRule {
    const char* pszKey;
    std::string (*pFind)(const Json::Value& value);
};

constexpr CValueRule VALUE_RULES[] = {
    {PSZ_NODE_ID, FindEmptyText},
    {PSZ_NODE_CONTAINER_TYPE, FindEmptyText},
    {PSZ_CLOUD_STORAGE_NVRCODE, FindEmptyText},
    {PSZ_CLOUD_STORAGE_CODE, FindEmptyText},
    {PSZ_CG_NVRCODE, FindEmptyText},
    {PSZ_CG_FLOAT_CODE, FindEmptyText},
    {PSZ_CLUSTER_DB_NODE, FindEmptyText},  // and the manager's
    {PSZ_NODE_IP, FindNoAddress},
    {PSZ_CG_FLOAT_IP, FindNoAddress},
    {PSZ_CLUSTER_DB_IP, FindNoAddress},  // and the manager's
    {PSZ_CLUSTER_DB_PORT, FindNoPort},
};
static_assert(std::string_view(PSZ_CLUSTER_DB_NODE) == PSZ_CLUSTER_MGR_NODE);
static_assert(std::string_view(PSZ_CLUSTER_DB_IP) == PSZ_CLUSTER_MGR_IP);

/// A text that is none of those that the key is written as.
std::string FindOddText(const CDocumentKey& key, const Json::Value& value) {
    if (key.texts.empty() || !value.isString() ||
        std::find(key.texts.begin(), key.texts.end(), value.asString()) != key.texts.end()) {
        return "";
    }
    std::string strTexts;
    for (const char* pszText : key.texts) {
        strTexts.append(strTexts.empty() ? "" : " or ").append(Quoted(pszText));
    }
    return "is " + Quoted(value.asString()) + ", not " + strTexts;
}

/// A number with a fraction or an exponent that counts as an integer.
std::string FindOddNumber(const CDocumentKey& key, const Json::Value& value,
                          const std::string& strText) {
    if (key.eType != EKeyType::INTEGER || value.type() != Json::realValue || !value.isInt()) {
        return "";
    }
    const auto begin = static_cast<std::size_t>(value.getOffsetStart());
    const auto end = static_cast<std::size_t>(value.getOffsetLimit());
    return "is " + strText.substr(begin, end - begin) + " and loads as " +
           std::to_string(value.asLargestInt());
}

void CheckValue(const CCheckedDocument& document, const CDocumentKey& key,
                const CDocumentEntry& member, Findings& findings) {
    const auto add = [&](const std::string& strWhat) {
        if (!strWhat.empty()) {
            Add(findings, EWeight::WARNING, document, member, strWhat);
        }
    };
    add(FindOddText(key, *member.pValue));
    add(FindOddNumber(key, *member.pValue, document.stored.strText));
    for (const CValueRule& rule : VALUE_RULES) {
        if (std::strcmp(rule.pszKey, key.pszKey) == 0) {
            add(rule.pFind(*member.pValue));
        }
    }
}

bool IsKnown(const CConstants<CDocumentKey>& keys, const std::string& strKey) {
    return std::any_of(keys.begin(), keys.end(),
                       [&strKey](const CDocumentKey& key) { return strKey == key.pszKey; });
}

/// Where the keys stand, the last of each path.
using KeyPlaces = std::map<std::string, std::size_t>;

void CheckUnknownKeys(const CCheckedDocument& document, const CDocumentEntry& object,
                      const CConstants<CDocumentKey>& keys, const KeyPlaces& places,
                      Findings& findings) {
    for (const std::string& strKey : object.pValue->getMemberNames()) {
        if (!IsKnown(keys, strKey)) {
            const std::string strPath = Joined(object.strPath, strKey);
            findings.push_back(
                {EWeight::WARNING,
                 document.strName,
                 {PlaceAt(document.stored.strText, places.at(strPath)), strPath,
                  "is not known: no service reads it, and it goes when one writes the document"}});
        }
    }
}

void CheckKeysOf(const CCheckedDocument& document, Findings& findings) {
    const std::string& strText = document.stored.strText;
    KeyPlaces places;
    for (const CTextKey& key : KeysOf(strText)) {
        places[key.strPath] = key.offset;
        if (key.bRepeated) {
            findings.push_back({EWeight::WARNING,
                                document.strName,
                                {PlaceAt(strText, key.offset), key.strPath,
                                 "stands there more than once: the last one counts"}});
        }
    }
    const CDocumentKey& keys = document.pDocument->keys;
    if (!IsOfType(keys.eType, document.root)) {
        Add(findings, EWeight::WARNING, document, document.Root(),
            std::string("is not ") + NameOf(keys.eType) + ": it loads as if it were empty");
        return;
    }
    for (CKeyFault& keyFault : FindKeyFaults(keys, strText, document.root)) {
        keyFault.fault.strWhat += keyFault.eNeed == EKeyNeed::REQUIRED
                                      ? ", and what it belongs to is passed over"
                                      : ", and is not read as one";
        findings.push_back({EWeight::WARNING, document.strName, keyFault.fault});
    }
    VisitObjects(keys, document.root,
                 [&](const CDocumentEntry& entry, const CConstants<CDocumentKey>& rows) {
                     if (entry.pValue->isObject()) {
                         CheckUnknownKeys(document, entry, rows, places, findings);
                     }
                 });
}

}  // namespace

void CheckKeys(const CCheckedStore& store, Findings& findings) {
    for (const CCheckedDocument& document : store.documents) {
        if (document.IsGood()) {
            CheckKeysOf(document, findings);
        }
    }
}

void CheckValues(const CCheckedStore& store, Findings& findings) {
    for (const CCheckedDocument& document : store.documents) {
        const CDocumentKey& keys = document.pDocument->keys;
        if (!document.IsGood() || !IsOfType(keys.eType, document.root)) {
            continue;
        }
        VisitObjects(keys, document.root,
                     [&](const CDocumentEntry& entry, const CConstants<CDocumentKey>& rows) {
                         for (const CDocumentKey& key : rows) {
                             CheckValue(document, key, MemberOf(entry, key.pszKey), findings);
                         }
                     });
    }
}
