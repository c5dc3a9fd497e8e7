#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "common_service/data/communication_data.h"

/// The whole text that a document writes.
std::string TextOf(CBaseJsonObject& document);

enum class EMemberType { STRING, INT, BOOL, ARRAY };

/// A member that a JSON document must have, by its path as in ".List[0].Key", and its type.
struct CRequiredMember {
    std::string strPath;
    EMemberType eType;
};

/// What a member of a document is to be.
struct CMemberChange {
    std::string strPath;
    std::optional<std::string> jsonText;  ///< nothing: the member is absent
};

std::ostream& operator<<(std::ostream& stream, const CMemberChange& change);

/// Each member absent, null and of each type that it must not have, integers out of range included.
std::vector<CMemberChange> EveryBadMember(const std::vector<CRequiredMember>& members);

/// The text of the document with that member so.
std::string WithMember(const std::string& strText, const CMemberChange& change);
