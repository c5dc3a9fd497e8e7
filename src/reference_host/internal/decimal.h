#pragma once

#include <string_view>
#include <system_error>

/// The decimal number at the start of a text, after blanks and one sign.
struct CDecimal {
    std::errc error{};      ///< invalid_argument: no number; result_out_of_range: beyond int
    int iValue = 0;         ///< 0 for no number, the nearest limit beyond int
    std::string_view rest;  ///< the text behind the number
};

CDecimal ReadDecimal(std::string_view text);

/// Is there nothing in the text but blanks?
bool IsBlank(std::string_view text);
