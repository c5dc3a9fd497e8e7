#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// A place in a text, as an editor counts: lines and characters from 1.
struct CTextPlace {
    int iLine = 1;
    int iColumn = 1;
};

CTextPlace PlaceAt(std::string_view text, std::size_t offset);

/// The offset of a place whose column counts bytes.
std::size_t OffsetOf(std::string_view text, int iLine, int iColumn);

/// Where the text is no UTF-8 first; nothing if it is all.
std::optional<std::size_t> FindNonUtf8(std::string_view text);
