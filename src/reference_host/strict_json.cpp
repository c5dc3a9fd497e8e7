#include "reference_host/strict_json.h"

#include <json/reader.h>

#include <algorithm>
#include <memory>
#include <sstream>

namespace {

/// The reader's first complaint, "* Line 1, Column 2\n  Reason\n", on one line.
std::string FirstComplaint(const std::string& strComplaints) {
    std::istringstream stream(strComplaints);
    std::string strPlace;
    std::string strReason;
    std::getline(stream >> std::ws, strPlace);
    std::getline(stream >> std::ws, strReason);
    std::replace(strPlace.begin(), strPlace.end(), 'L', 'l');
    std::replace(strPlace.begin(), strPlace.end(), 'C', 'c');
    return strPlace.substr(strPlace.find('l')) + ": " + strReason;
}

}  // namespace

std::optional<std::string> ParseStrictJson(std::string_view text, Json::Value& root) {
    Json::CharReaderBuilder builder;
    builder["failIfExtra"] = true;
    const std::unique_ptr<Json::CharReader> pReader(builder.newCharReader());
    std::string strComplaints;
    try {
        if (pReader->parse(text.data(), text.data() + text.size(), &root, &strComplaints)) {
            return std::nullopt;
        }
    } catch (const Json::Exception& exception) {
        return exception.what();
    }
    return FirstComplaint(strComplaints);
}
