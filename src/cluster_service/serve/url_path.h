#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The text with each "%41" turned into its byte; nothing when a percent sign is followed by
/// anything else than two hexadecimal digits.
std::optional<std::string> PercentDecode(std::string_view text);

/// The parts of a path between its slashes, still encoded: an id may hold a slash as "%2F".
std::vector<std::string_view> SplitPath(std::string_view path);

/// A path of the table of routes, as in "/api/v1/nodes/{node}".
class CPathPattern {
public:
    explicit CPathPattern(std::string_view pattern) : m_segments(SplitPath(pattern)) {}

    /// A part in braces takes any part that is not empty.
    bool Matches(const std::vector<std::string_view>& path) const;

    /// What stands in a matching path for the parts in braces, decoded, by their names. False with
    /// the name of one that is no id.
    bool Read(const std::vector<std::string_view>& path, std::map<std::string, std::string>& values,
              std::string& strBad) const;

private:
    std::vector<std::string_view> m_segments;  ///< of the pattern, which outlives this
};
