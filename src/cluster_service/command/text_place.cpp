#include "command/text_place.h"

#include <algorithm>
#include <iterator>

std::string PlaceOf(const std::string& strText, std::size_t offset) {
    const auto end = strText.begin() + static_cast<std::ptrdiff_t>(offset);
    const auto iLine = 1 + std::count(strText.begin(), end, '\n');
    const auto iColumn =
        1 +
        std::distance(std::find(std::make_reverse_iterator(end), strText.rend(), '\n').base(), end);
    return "line " + std::to_string(iLine) + ", column " + std::to_string(iColumn);
}
