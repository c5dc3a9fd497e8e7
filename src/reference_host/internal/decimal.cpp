#include "internal/decimal.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace {

constexpr std::string_view BLANKS = " \t\n\v\f\r";

}  // namespace

CDecimal ReadDecimal(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(BLANKS), text.size()));
    const bool bNegative = text.substr(0, 1) == "-";
    // from_chars takes the minus sign, but not the plus sign.
    if (text.substr(0, 1) == "+" && text.substr(1, 1) != "-") {
        text.remove_prefix(1);
    }
    CDecimal decimal;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), decimal.iValue);
    decimal.error = result.ec;
    decimal.rest = text.substr(static_cast<std::size_t>(result.ptr - text.data()));
    if (result.ec == std::errc::result_out_of_range) {
        decimal.iValue =
            bNegative ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
    }
    return decimal;
}

bool IsBlank(std::string_view text) {
    return text.find_first_not_of(BLANKS) == std::string_view::npos;
}
