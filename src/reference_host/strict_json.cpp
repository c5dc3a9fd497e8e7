#include "reference_host/strict_json.h"

#include <json/reader.h>

#include <cstddef>
#include <cstdio>
#include <memory>
#include <sstream>

namespace {

constexpr int NUMERIC_FOREIGN_DEPTH = 64;

/// The reader's first complaint, "* Line 1, Column 2\n  Reason\n".
CJsonFault FirstComplaint(const std::string& strComplaints) {
    std::istringstream stream(strComplaints);
    std::string strPlace;
    CJsonFault fault;
    std::getline(stream >> std::ws, strPlace);
    std::getline(stream >> std::ws, fault.strReason);
    std::sscanf(strPlace.c_str(), "* Line %d, Column %d", &fault.iLine, &fault.iColumn);
    return fault;
}

std::optional<CJsonFault> Parse(Json::CharReader& reader, std::string_view text,
                                Json::Value& root) {
    std::string strComplaints;
    if (reader.parse(text.data(), text.data() + text.size(), &root, &strComplaints)) {
        return std::nullopt;
    }
    return FirstComplaint(strComplaints);
}

std::unique_ptr<Json::CharReader> ForeignReader() {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["strictRoot"] = false;
    builder["skipBom"] = false;
    builder["stackLimit"] = NUMERIC_FOREIGN_DEPTH + 1;  // the value itself counts too
    return std::unique_ptr<Json::CharReader>(builder.newCharReader());
}

/// Where the nesting passes the limit. Brackets within texts do not nest.
CJsonFault TooDeepFault(std::string_view text) {
    CJsonFault fault{1, 0, "This is nested too deeply."};
    bool bInText = false;
    int iDepth = 0;
    for (std::size_t ui = 0; ui < text.size() && iDepth <= NUMERIC_FOREIGN_DEPTH; ++ui) {
        const char c = text[ui];
        fault.iColumn = c == '\n' ? 0 : fault.iColumn + 1;
        fault.iLine += c == '\n' ? 1 : 0;
        if (bInText && c == '\\') {
            ++ui;
            ++fault.iColumn;
        } else if (c == '"') {
            bInText = !bInText;
        } else if (!bInText) {
            iDepth += c == '[' || c == '{' ? 1 : c == ']' || c == '}' ? -1 : 0;
        }
    }
    return fault;
}

}  // namespace

std::string TextOf(const CJsonFault& fault) {
    if (fault.iLine == 0) {
        return fault.strReason;
    }
    return "line " + std::to_string(fault.iLine) + ", column " + std::to_string(fault.iColumn) +
           ": " + fault.strReason;
}

std::optional<CJsonFault> ParseStrictJson(std::string_view text, Json::Value& root) {
    Json::CharReaderBuilder builder;
    builder["failIfExtra"] = true;
    builder["allowTrailingCommas"] = false;
    builder["skipBom"] = false;
    const std::unique_ptr<Json::CharReader> pReader(builder.newCharReader());
    try {
        return Parse(*pReader, text, root);
    } catch (const Json::Exception& exception) {
        return CJsonFault{0, 0, exception.what()};
    }
}

std::optional<CJsonFault> ParseForeignJson(std::string_view text, Json::Value& root) {
    thread_local const std::unique_ptr<Json::CharReader> pReader = ForeignReader();
    try {
        return Parse(*pReader, text, root);
    } catch (const Json::Exception&) {
        return TooDeepFault(text);  // the one thing that the reader throws for
    }
}
