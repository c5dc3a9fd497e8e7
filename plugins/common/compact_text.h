#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

/// A text that stays as it is. One of up to 31 characters lies within the object, so that whoever
/// compares many of them, as ids are, does not leave the object for it.
class CCompactText {
public:
    CCompactText() = default;

    explicit CCompactText(std::string_view text) {
        if (text.size() <= LONGEST_WITHIN) {
            std::memcpy(m_szText, text.data(), text.size());
            m_uiLength = static_cast<uint8_t>(text.size());
            return;
        }
        char* const pszCopy = new char[text.size()];
        std::memcpy(pszCopy, text.data(), text.size());
        Put({pszCopy, text.size()});
        m_uiLength = ELSEWHERE;
    }

    CCompactText(CCompactText&& other) noexcept { Swap(other); }
    CCompactText& operator=(CCompactText other) noexcept {
        Swap(other);
        return *this;
    }

    ~CCompactText() {
        if (m_uiLength == ELSEWHERE) {
            delete[] View().data();
        }
    }

    /// Lives as long as the object stays where it is.
    std::string_view View() const {
        if (m_uiLength != ELSEWHERE) {
            return {m_szText, m_uiLength};
        }
        std::string_view text;
        std::memcpy(&text, m_szText, sizeof(text));
        return text;
    }

private:
    static constexpr std::size_t LONGEST_WITHIN = 31;
    static constexpr uint8_t ELSEWHERE = UINT8_MAX;

    void Put(std::string_view text) { std::memcpy(m_szText, &text, sizeof(text)); }

    void Swap(CCompactText& other) noexcept {
        std::swap(m_szText, other.m_szText);
        std::swap(m_uiLength, other.m_uiLength);
    }

    alignas(std::string_view) char m_szText[LONGEST_WITHIN]{};
    uint8_t m_uiLength = 0;  ///< ELSEWHERE: m_szText holds where the text lies
};
