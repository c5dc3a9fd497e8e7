#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <string_view>

/// What is wrong with a text that should be JSON. Lines and columns count from 1, columns in bytes;
/// 0 where there is no saying.
struct CJsonFault {
    int iLine = 0;
    int iColumn = 0;
    std::string strReason;
};

/// The fault in words, with its place.
[[gnu::visibility("default")]] std::string TextOf(const CJsonFault& fault);

/// Parses a text that is one JSON value with nothing before or behind it, and without commas that
/// nothing follows. Returns nothing, or else what is wrong first; root then holds what was read
/// until there. A text that is nested too deeply for the JSON library is wrong too. Callable from
/// any thread.
[[gnu::visibility("default")]] std::optional<CJsonFault> ParseStrictJson(std::string_view text,
                                                                         Json::Value& root);

/// The same for a text that somebody sent: it also has no comment and no key twice, and is nested
/// no deeper than 64. The first bracket that is too deep is told with its place.
[[gnu::visibility("default")]] std::optional<CJsonFault> ParseForeignJson(std::string_view text,
                                                                          Json::Value& root);
