#pragma once

#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

/// What stands for nothing where the number of something is asked for.
inline constexpr uint32_t NUMERIC_NONE = UINT32_MAX;

/// Objects under numbers that stay theirs; a number that was given back is given out again.
template <typename Item>
class CNumbered {
public:
    uint32_t Add(Item item) {
        if (m_free.empty()) {
            m_items.push_back(std::move(item));
            return static_cast<uint32_t>(m_items.size() - 1);
        }
        const uint32_t uiNumber = m_free.back();
        m_free.pop_back();
        m_items[uiNumber] = std::move(item);
        return uiNumber;
    }

    void GiveBack(uint32_t uiNumber) {
        m_items[uiNumber] = Item();
        m_free.push_back(uiNumber);
    }

    void Clear() {
        m_items = std::deque<Item>();
        m_free = std::vector<uint32_t>();
    }

    Item& operator[](uint32_t uiNumber) { return m_items[uiNumber]; }
    const Item& operator[](uint32_t uiNumber) const { return m_items[uiNumber]; }

private:
    std::deque<Item> m_items;
    std::vector<uint32_t> m_free;
};
