#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <vector>

/// One place of a document that a change gives another value.
struct CFieldChange {
    std::string strPath;  ///< as `ClusterNode["record-01"].NodeIP`; empty for all of it
    std::optional<Json::Value> before;  ///< nothing: it was not there
    std::optional<Json::Value> after;   ///< nothing: it will not be there
};

/// What tells two documents apart, null for one that is not there: the smallest places that differ,
/// in the order of the keys and of the list before, what is new behind it. Entries of a list are
/// told by what they are called by (a node's id, a container's type, a float code), where no two of
/// either list are called the same, and else by their position; a list whose entries only changes
/// places is one change.
std::vector<CFieldChange> FindChanges(const Json::Value* pBefore, const Json::Value* pAfter);

/// The change in one line for a person.
std::string TextOf(const CFieldChange& change);

/// The same for programs: an object with "path", and "before" and "after" where they are.
Json::Value ToJson(const CFieldChange& change);
