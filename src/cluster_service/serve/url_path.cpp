#include "serve/url_path.h"

#include <charconv>
#include <cstddef>

#include "cluster_engine/json_fields.h"

namespace {

bool IsName(std::string_view segment) {
    return !segment.empty() && segment.front() == '{';
}

std::string NameIn(std::string_view segment) {
    return std::string(segment.substr(1, segment.size() - 2));
}

}  // namespace

std::optional<std::string> PercentDecode(std::string_view text) {
    std::string strText;
    strText.reserve(text.size());
    for (std::size_t ui = 0; ui < text.size(); ++ui) {
        if (text[ui] != '%') {
            strText += text[ui];
            continue;
        }
        const std::string_view digits = text.substr(ui + 1, 2);
        unsigned char uiByte = 0;
        const auto result =
            std::from_chars(digits.data(), digits.data() + digits.size(), uiByte, 16);
        if (digits.size() != 2 || result.ptr != digits.data() + digits.size()) {
            return std::nullopt;
        }
        strText += static_cast<char>(uiByte);
        ui += 2;
    }
    return strText;
}

std::vector<std::string_view> SplitPath(std::string_view path) {
    std::vector<std::string_view> segments;
    for (std::size_t uiBegin = 0; uiBegin != std::string_view::npos;) {
        const std::size_t uiSlash = path.find('/', uiBegin);
        segments.push_back(path.substr(uiBegin, uiSlash - uiBegin));
        uiBegin = uiSlash == std::string_view::npos ? uiSlash : uiSlash + 1;
    }
    return segments;
}

bool CPathPattern::Matches(const std::vector<std::string_view>& path) const {
    if (path.size() != m_segments.size()) {
        return false;
    }
    for (std::size_t ui = 0; ui < path.size(); ++ui) {
        const bool bMatches =
            IsName(m_segments[ui]) ? !path[ui].empty() : path[ui] == m_segments[ui];
        if (!bMatches) {
            return false;
        }
    }
    return true;
}

bool CPathPattern::Read(const std::vector<std::string_view>& path,
                        std::map<std::string, std::string>& values, std::string& strBad) const {
    for (std::size_t ui = 0; ui < path.size(); ++ui) {
        if (!IsName(m_segments[ui])) {
            continue;
        }
        const std::optional<std::string> value = PercentDecode(path[ui]);
        if (!value || !IsId(*value)) {
            strBad = NameIn(m_segments[ui]);
            return false;
        }
        values[NameIn(m_segments[ui])] = *value;
    }
    return true;
}
