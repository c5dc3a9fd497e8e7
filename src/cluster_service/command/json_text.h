#pragma once

#include <json/value.h>

#include <cstddef>
#include <optional>
#include <string>

/// Parses JSON text. Returns what is wrong with it and where, or nothing.
std::optional<std::string> ParseText(const std::string& strText, Json::Value& root);

/// An offset in a text as line and column, in words.
std::string PlaceOf(const std::string& strText, std::size_t offset);
