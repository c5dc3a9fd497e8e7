#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "command/difference.h"
#include "command/stage.h"

/// What a change makes of one document.
struct CDocumentDifference {
    std::string strPath;  ///< in the store
    bool bIsNew = false;  ///< it had no text before
    std::vector<CFieldChange> askedFor;
    std::vector<CFieldChange> alongside;  ///< what comes along, since the document is written anew
    std::vector<std::string> notes;       ///< what no field shows, such as comments that go
};

CDocumentDifference FindDifference(const CStagedChange& change,
                                   const std::function<bool(const std::string&)>& isAskedFor);

/// For a person: the document, and below it a line for each place; of a new one, that it is new.
void Print(const CDocumentDifference& difference, std::ostream& output);

/// For programs: an object with "document", "changes", "alongside" and "notes".
Json::Value ToJson(const CDocumentDifference& difference);
