#pragma once

#include <cstddef>
#include <string>

/// An offset in a text as line and column, in words.
std::string PlaceOf(const std::string& strText, std::size_t offset);
