#include "common/task_index.h"

#include <utility>

namespace {

constexpr std::size_t NUMERIC_FEWEST_PLACES = 16;

}  // namespace

void CTaskIndex::Insert(uint32_t uiHash, uint32_t uiItem) {
    if (4 * (m_uiItems + 1) > 3 * m_places.size()) {
        std::vector<CPlace> former(m_places.empty() ? NUMERIC_FEWEST_PLACES : 2 * m_places.size());
        std::swap(former, m_places);
        for (const CPlace& place : former) {
            if (place.uiItem != NUMERIC_NONE) {
                Put(place);
            }
        }
    }
    Put({uiHash, uiItem});
    ++m_uiItems;
}

void CTaskIndex::Put(CPlace place) {
    std::size_t i = Home(place.uiHash);
    while (m_places[i].uiItem != NUMERIC_NONE) {
        i = Next(i);
    }
    m_places[i] = place;
}

void CTaskIndex::Erase(uint32_t uiHash, uint32_t uiItem) {
    std::size_t uiHole = Home(uiHash);
    while (m_places[uiHole].uiItem != uiItem) {
        uiHole = Next(uiHole);
    }
    // What follows without a gap and would be looked for from before the hole moves into it.
    for (std::size_t i = Next(uiHole); m_places[i].uiItem != NUMERIC_NONE; i = Next(i)) {
        const std::size_t uiMask = m_places.size() - 1;
        const std::size_t uiFromHome = (i - Home(m_places[i].uiHash)) & uiMask;
        if (uiFromHome >= ((i - uiHole) & uiMask)) {
            m_places[uiHole] = m_places[i];
            uiHole = i;
        }
    }
    m_places[uiHole] = {};
    --m_uiItems;
}

void CTaskIndex::Clear() {
    m_places = std::vector<CPlace>();
    m_uiItems = 0;
}
