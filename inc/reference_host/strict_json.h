#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <string_view>

/// Parses a text that is one JSON value with nothing behind it. Returns nothing, or else what is
/// wrong first and where, in words; root then holds what was read until there. A text that is
/// nested too deeply for the JSON library is wrong too. Callable from any thread.
[[gnu::visibility("default")]] std::optional<std::string> ParseStrictJson(std::string_view text,
                                                                          Json::Value& root);
