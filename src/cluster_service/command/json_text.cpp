#include "command/json_text.h"

#include <json/reader.h>

#include <algorithm>
#include <exception>
#include <iterator>
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

std::optional<std::string> ParseText(const std::string& strText, Json::Value& root) {
    Json::CharReaderBuilder builder;
    builder["failIfExtra"] = true;
    const std::unique_ptr<Json::CharReader> pReader(builder.newCharReader());
    std::string strComplaints;
    try {
        if (pReader->parse(strText.data(), strText.data() + strText.size(), &root,
                           &strComplaints)) {
            return std::nullopt;
        }
    } catch (const std::exception& exception) {
        return exception.what();
    }
    return FirstComplaint(strComplaints);
}

std::string PlaceOf(const std::string& strText, std::size_t offset) {
    const auto end = strText.begin() + static_cast<std::ptrdiff_t>(offset);
    const auto iLine = 1 + std::count(strText.begin(), end, '\n');
    const auto iColumn =
        1 +
        std::distance(std::find(std::make_reverse_iterator(end), strText.rend(), '\n').base(), end);
    return "line " + std::to_string(iLine) + ", column " + std::to_string(iColumn);
}
