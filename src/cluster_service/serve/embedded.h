#pragma once

#include <string_view>

/// Files that are part of the program: serve/CMakeLists.txt says which.

extern const std::string_view TEXT_OPENAPI;
