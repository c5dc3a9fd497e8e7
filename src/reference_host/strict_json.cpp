#include "reference_host/strict_json.h"

#include <json/reader.h>

#include <cstdio>
#include <memory>
#include <sstream>

namespace {

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
    std::string strComplaints;
    try {
        if (pReader->parse(text.data(), text.data() + text.size(), &root, &strComplaints)) {
            return std::nullopt;
        }
    } catch (const Json::Exception& exception) {
        return CJsonFault{0, 0, exception.what()};
    }
    return FirstComplaint(strComplaints);
}
