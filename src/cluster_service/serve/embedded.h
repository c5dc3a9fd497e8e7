#pragma once

#include <string_view>

/// Files that are part of the program: serve/CMakeLists.txt says which.

extern const std::string_view TEXT_OPENAPI;
extern const std::string_view PAGE_HTML;
extern const std::string_view PAGE_STYLE;
extern const std::string_view PAGE_SCRIPT;
extern const std::string_view PAGE_PARTS;
extern const std::string_view PAGE_SERVICE;
extern const std::string_view PAGE_ICON;
