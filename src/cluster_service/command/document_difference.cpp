#include "command/document_difference.h"

#include <algorithm>
#include <optional>

#include "reference_host/shown_text.h"
#include "reference_host/strict_json.h"
#include "reference_host/version_keys.h"

namespace {

/// A text as JSON; nothing, with the reason, for one that is none.
std::optional<Json::Value> Parsed(const std::string& strText, std::string& strFault) {
    Json::Value value;
    const std::optional<CJsonFault> fault = ParseStrictJson(strText, value);
    strFault = fault ? TextOf(*fault) : "";
    return fault ? std::nullopt : std::make_optional(value);
}

bool HasComments(const Json::Value& value) {
    if (value.hasComment(Json::commentBefore) || value.hasComment(Json::commentAfter) ||
        value.hasComment(Json::commentAfterOnSameLine)) {
        return true;
    }
    return std::any_of(value.begin(), value.end(), HasComments);
}

bool IsLowerVersion(const CFieldChange& change) {
    const bool bVersion =
        change.strPath == PSZ_DECISION_VER_NUM || change.strPath == PSZ_MASTER_VER_NUM;
    return bVersion && change.before && change.after && change.before->isUInt64() &&
           change.after->isUInt64() && change.after->asUInt64() < change.before->asUInt64();
}

void PrintChanges(const std::vector<CFieldChange>& changes, std::ostream& output) {
    for (const CFieldChange& change : changes) {
        output << "  " << TextOf(change) << '\n';
    }
}

Json::Value ListOf(const std::vector<CFieldChange>& changes) {
    Json::Value list(Json::arrayValue);
    for (const CFieldChange& change : changes) {
        list.append(ToJson(change));
    }
    return list;
}

}  // namespace

CDocumentDifference FindDifference(const CStagedChange& change,
                                   const std::function<bool(const std::string&)>& isAskedFor) {
    const bool bHadText = change.before && !change.before->empty();
    CDocumentDifference difference{change.strPath, !bHadText, {}, {}, {}};
    std::string strFault;
    const std::optional<Json::Value> before =
        bHadText ? Parsed(*change.before, strFault) : std::nullopt;
    if (bHadText && !before) {
        difference.notes.push_back("what it holds now is no document: " + strFault);
    }
    const std::optional<Json::Value> after =
        change.strAfter.empty() ? std::nullopt : Parsed(change.strAfter, strFault);
    if (!change.strAfter.empty() && !after) {
        difference.notes.push_back("what it would hold is no document: " + strFault);
    }
    for (CFieldChange& field :
         FindChanges(before ? &*before : nullptr, after ? &*after : nullptr)) {
        if (IsLowerVersion(field)) {
            difference.notes.push_back(field.strPath + " goes back below the store's");
        }
        const bool bAskedFor = isAskedFor(field.strPath);
        (bAskedFor ? difference.askedFor : difference.alongside).push_back(std::move(field));
    }
    if (before && HasComments(*before) && !(after && HasComments(*after))) {
        difference.notes.push_back("its comments go");
    }
    if (before && after && difference.askedFor.empty() && difference.alongside.empty()) {
        difference.notes.push_back("says the same in another form");
    }
    return difference;
}

void Print(const CDocumentDifference& difference, std::ostream& output) {
    output << ShownText(difference.strPath) << (difference.bIsNew ? " is new\n" : "\n");
    if (!difference.bIsNew) {
        PrintChanges(difference.askedFor, output);
    }
    if (!difference.alongside.empty()) {
        output << "  and, since the document is written anew:\n";
        PrintChanges(difference.alongside, output);
    }
    for (const std::string& strNote : difference.notes) {
        output << "  " << ShownText(strNote) << '\n';
    }
}

Json::Value ToJson(const CDocumentDifference& difference) {
    Json::Value object(Json::objectValue);
    object["document"] = difference.strPath;
    object["changes"] = ListOf(difference.askedFor);
    object["alongside"] = ListOf(difference.alongside);
    Json::Value& notes = object["notes"] = Json::Value(Json::arrayValue);
    for (const std::string& strNote : difference.notes) {
        notes.append(strNote);
    }
    return object;
}
