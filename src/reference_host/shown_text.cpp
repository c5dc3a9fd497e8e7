#include "reference_host/shown_text.h"

#include <wctype.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cwchar>

namespace {

/// The calling thread reads UTF-8 for as long as this lives.
class CUtf8Locale {
public:
    CUtf8Locale() : m_former(uselocale(Utf8())) {}
    ~CUtf8Locale() { uselocale(m_former); }
    CUtf8Locale(const CUtf8Locale&) = delete;
    CUtf8Locale& operator=(const CUtf8Locale&) = delete;

private:
    /// Never freed: the log writes until the process ends.
    static locale_t Utf8() {
        static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return utf8;
    }

    const locale_t m_former;
};

/// The first character of a text and its length in bytes; 0 for a byte that begins none.
struct CCharacter {
    wchar_t value = 0;
    std::size_t uiLength = 0;
};

CCharacter FirstCharacter(std::string_view text) {
    CCharacter character;
    std::mbstate_t state{};
    const std::size_t uiLength = std::mbrtowc(&character.value, text.data(), text.size(), &state);
    if (uiLength == 0) {
        character.uiLength = 1;  // a zero byte
    } else if (uiLength <= text.size()) {
        character.uiLength = uiLength;
    }
    return character;
}

/// Characters that print nothing of their own and change how others look or run.
bool IsInvisible(wchar_t value) {
    struct CRange {
        wchar_t first;
        wchar_t last;
    };
    static constexpr CRange RANGES[] = {
        {0xAD, 0xAD},     {0x61C, 0x61C},   {0x180E, 0x180E}, {0x200B, 0x200F},   {0x202A, 0x202E},
        {0x2060, 0x206F}, {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE007F},
    };
    return std::any_of(std::begin(RANGES), std::end(RANGES), [value](const CRange& range) {
        return value >= range.first && value <= range.last;
    });
}

bool IsShownAsItIs(wchar_t value) {
    return value != L'\\' && iswprint(static_cast<wint_t>(value)) != 0 && !IsInvisible(value);
}

/// As ShownText would show it: most texts are plain, and need no locale.
bool IsPlain(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return c >= ' ' && c <= '~' && c != '\\'; });
}

std::string Numbered(const char* pszFormat, uint32_t uiValue) {
    char szText[16];
    std::snprintf(szText, sizeof(szText), pszFormat, uiValue);
    return szText;
}

std::string Escaped(uint32_t uiValue) {
    switch (uiValue) {
        case '\\':
            return "\\\\";
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return Numbered(uiValue < 0x80      ? "\\x%02x"
                            : uiValue < 0x10000 ? "\\u%04x"
                                                : "\\U%08x",
                            uiValue);
    }
}

}  // namespace

std::string ShownText(std::string_view text) {
    if (IsPlain(text)) {
        return std::string(text);
    }
    const CUtf8Locale locale;
    std::string strShown;
    while (!text.empty()) {
        const CCharacter character = FirstCharacter(text);
        const std::size_t uiLength = std::max<std::size_t>(character.uiLength, 1);
        if (character.uiLength == 0) {
            strShown += Numbered("\\x%02x", static_cast<unsigned char>(text.front()));
        } else if (IsShownAsItIs(character.value)) {
            strShown.append(text.substr(0, uiLength));
        } else {
            strShown += Escaped(static_cast<uint32_t>(character.value));
        }
        text.remove_prefix(uiLength);
    }
    return strShown;
}

std::size_t ColumnsOf(std::string_view shownText) {
    if (IsPlain(shownText)) {
        return shownText.size();
    }
    const CUtf8Locale locale;
    std::size_t uiColumns = 0;
    while (!shownText.empty()) {
        const CCharacter character = FirstCharacter(shownText);
        uiColumns += static_cast<std::size_t>(std::max(wcwidth(character.value), 0));
        shownText.remove_prefix(std::max<std::size_t>(character.uiLength, 1));
    }
    return uiColumns;
}
