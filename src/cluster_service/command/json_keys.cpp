#include "command/json_keys.h"

#include <algorithm>
#include <set>

#include "reference_host/strict_json.h"

namespace {

/// What a key's text between its quotes says.
std::string DecodedKey(std::string_view token) {
    Json::Value key;
    return token.find('\\') == std::string_view::npos || ParseStrictJson(token, key) ||
                   !key.isString()
               ? std::string(token.substr(1, token.size() - 2))
               : key.asString();
}

/// Goes through a text token by token and knows where it is.
class CJsonWalk {
public:
    explicit CJsonWalk(std::string_view text) : m_text(text) {}

    void GoTo(std::size_t end) {
        while (m_offset < std::min(end, m_text.size())) {
            Step();
        }
    }

    void GoBelow(std::size_t depth) {
        while (m_offset < m_text.size() && m_levels.size() <= depth) {
            Step();
        }
    }

    std::size_t GetOffset() const { return m_offset; }

    std::string GetPath() const {
        std::string strPath;
        for (const CLevel& level : m_levels) {
            if (!level.bObject) {
                strPath = Joined(strPath, level.index);
            } else if (!level.strKey.empty()) {
                strPath = Joined(strPath, level.strKey);
            }
        }
        return strPath;
    }

    std::vector<CTextKey> keys;

private:
    struct CLevel {
        bool bObject;
        bool bKeyNext;
        std::size_t index = 0;
        std::string strKey{};
        std::set<std::string> keys{};
    };

    void Step() {
        switch (m_text[m_offset]) {
            case '{':
            case '[': {
                const bool bObject = m_text[m_offset++] == '{';
                m_levels.push_back({bObject, bObject});
                break;
            }
            case '}':
            case ']':
                ++m_offset;
                if (!m_levels.empty()) {
                    m_levels.pop_back();
                }
                break;
            case ',':
                ++m_offset;
                if (!m_levels.empty()) {
                    m_levels.back().bKeyNext = m_levels.back().bObject;
                    ++m_levels.back().index;
                }
                break;
            case '"':
                StepOverString();
                break;
            case '/':
                StepOverComment();
                break;
            default:
                ++m_offset;
        }
    }

    void StepOverString() {
        const std::size_t begin = m_offset++;
        while (m_offset < m_text.size() && m_text[m_offset] != '"') {
            m_offset += m_text[m_offset] == '\\' ? 2 : 1;
        }
        m_offset = std::min(m_offset + 1, m_text.size());
        if (!m_levels.empty() && m_levels.back().bKeyNext) {
            CLevel& level = m_levels.back();
            level.bKeyNext = false;
            level.strKey = DecodedKey(m_text.substr(begin, m_offset - begin));
            const bool bRepeated = !level.keys.insert(level.strKey).second;
            keys.push_back({GetPath(), begin, bRepeated});
        }
    }

    void StepOverComment() {
        const bool bLine = m_text.compare(m_offset, 2, "//") == 0;
        const std::size_t end = m_text.find(bLine ? "\n" : "*/", m_offset + 2);
        m_offset = end == std::string_view::npos ? m_text.size() : end + (bLine ? 1 : 2);
    }

    const std::string_view m_text;
    std::size_t m_offset = 0;
    std::vector<CLevel> m_levels;
};

}  // namespace

std::vector<CTextKey> KeysOf(std::string_view text) {
    CJsonWalk walk(text);
    walk.GoTo(text.size());
    return std::move(walk.keys);
}

std::string KeyPathAt(std::string_view text, std::size_t offset) {
    CJsonWalk walk(text);
    walk.GoTo(offset);
    return walk.GetPath();
}

std::size_t OffsetBelow(std::string_view text, std::size_t depth) {
    CJsonWalk walk(text);
    walk.GoBelow(depth);
    return walk.GetOffset() - (walk.GetOffset() < text.size() ? 1 : 0);
}

std::string Joined(const std::string& strPath, const std::string& strKey) {
    return strPath.empty() ? strKey : strPath + "." + strKey;
}

std::string Joined(const std::string& strPath, std::size_t index) {
    return strPath + "[" + std::to_string(index) + "]";
}
