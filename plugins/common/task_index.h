#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/numbered.h"

/// Numbers by the hash of what they stand for: a table of eight bytes a place, at most three
/// quarters full. Numbers of one hash stand beside each other, in no order.
class CTaskIndex {
public:
    void Insert(uint32_t uiHash, uint32_t uiItem);

    /// The number must be in, with that hash.
    void Erase(uint32_t uiHash, uint32_t uiItem);

    void Clear();

    /// One of that hash that is wanted; NUMERIC_NONE when there is none.
    template <typename Predicate>
    uint32_t Find(uint32_t uiHash, const Predicate& isWanted) const {
        if (m_places.empty()) {
            return NUMERIC_NONE;
        }
        for (std::size_t i = Home(uiHash); m_places[i].uiItem != NUMERIC_NONE; i = Next(i)) {
            if (m_places[i].uiHash == uiHash && isWanted(m_places[i].uiItem)) {
                return m_places[i].uiItem;
            }
        }
        return NUMERIC_NONE;
    }

private:
    struct CPlace {
        uint32_t uiHash = 0;
        uint32_t uiItem = NUMERIC_NONE;
    };

    // The number of places is a power of two.
    std::size_t Home(uint32_t uiHash) const { return uiHash & (m_places.size() - 1); }
    std::size_t Next(std::size_t uiPlace) const { return (uiPlace + 1) & (m_places.size() - 1); }

    void Put(CPlace place);

    std::vector<CPlace> m_places;
    std::size_t m_uiItems = 0;
};
