#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <vector>

/// A type that a key's value must have.
struct CKeyType {
    bool (*pIs)(const Json::Value& value);
    const char* pszName;
};

/// A key that a document cannot do without, in the object that a path of keys leads to from the
/// root. An array on the path stands for each of its elements. Where the path ends early nothing is
/// required.
struct CRequiredKey {
    std::vector<const char*> path;
    const char* pszKey;
    const CKeyType& type;
};

extern const std::vector<CRequiredKey> CLUSTER_KEYS;
extern const std::vector<CRequiredKey> CLOUD_STORAGE_KEYS;
extern const std::vector<CRequiredKey> CLUSTER_CONFIG_KEYS;
extern const std::vector<CRequiredKey> CENTER_DB_KEYS;
extern const std::vector<CRequiredKey> MANAGER_KEYS;
extern const std::vector<CRequiredKey> CG_LIST_KEYS;
extern const std::vector<CRequiredKey> VERSION_KEYS;

/// The first key that the text, with this root, lacks or has with another type, and its place;
/// nothing if there is none.
std::optional<std::string> FindKeyFault(const std::vector<CRequiredKey>& keys,
                                        const std::string& strText, const Json::Value& root);
