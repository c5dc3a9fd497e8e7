#include "command/text_place.h"

#include <algorithm>

namespace {

unsigned char ByteAt(std::string_view text, std::size_t offset) {
    return offset < text.size() ? static_cast<unsigned char>(text[offset]) : 0;
}

bool IsContinuation(unsigned char uc) {
    return (uc & 0xC0U) == 0x80U;
}

/// Where the line behind this one begins; the end of the text when there is none. Lines end as the
/// JSON reader has them end: with LF, CR or both.
std::size_t NextLine(std::string_view text, std::size_t offset) {
    const std::size_t end = text.find_first_of("\r\n", offset);
    if (end == std::string_view::npos) {
        return text.size();
    }
    return end + (text.compare(end, 2, "\r\n") == 0 ? 2 : 1);
}

/// The bytes of the character that begins here; 0 where none does. The first two bytes tell
/// whether it is written as short as it can be and is a character at all.
std::size_t LengthOfCharacter(std::string_view text, std::size_t offset) {
    struct CForm {
        unsigned char ucFirst, ucLast;   ///< of the first byte
        unsigned char ucSecond, ucUpTo;  ///< of the second
        std::size_t uiLength;
    };
    static constexpr CForm FORMS[] = {
        {0x00, 0x7F, 0x00, 0xFF, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
        {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
        {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
    };
    const unsigned char ucFirst = ByteAt(text, offset);
    const unsigned char ucSecond = ByteAt(text, offset + 1);
    for (const CForm& form : FORMS) {
        if (ucFirst < form.ucFirst || ucFirst > form.ucLast) {
            continue;
        }
        bool bWhole = ucSecond >= form.ucSecond && ucSecond <= form.ucUpTo;
        for (std::size_t i = 2; i < form.uiLength; ++i) {
            bWhole = bWhole && IsContinuation(ByteAt(text, offset + i));
        }
        return bWhole ? form.uiLength : 0;
    }
    return 0;
}

}  // namespace

CTextPlace PlaceAt(std::string_view text, std::size_t offset) {
    CTextPlace place;
    std::size_t begin = 0;
    for (std::size_t next = NextLine(text, 0);
         next <= offset && next > begin && (text[next - 1] == '\n' || text[next - 1] == '\r');
         next = NextLine(text, begin)) {
        begin = next;
        ++place.iLine;
    }
    const std::string_view before = text.substr(begin, offset - begin);
    place.iColumn += static_cast<int>(std::count_if(before.begin(), before.end(), [](char c) {
        return !IsContinuation(static_cast<unsigned char>(c));
    }));
    return place;
}

std::size_t OffsetOf(std::string_view text, int iLine, int iColumn) {
    std::size_t offset = 0;
    for (int i = 1; i < iLine; ++i) {
        offset = NextLine(text, offset);
    }
    return std::min(offset + static_cast<std::size_t>(iColumn - 1), text.size());
}

std::optional<std::size_t> FindNonUtf8(std::string_view text) {
    for (std::size_t offset = 0; offset < text.size();) {
        const std::size_t length = LengthOfCharacter(text, offset);
        if (length == 0) {
            return offset;
        }
        offset += length;
    }
    return std::nullopt;
}
