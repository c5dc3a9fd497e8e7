#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

#include "common/numbered.h"

/// Numbers in the order that Less gives them, in short sorted runs: adding, taking out and looking
/// for one costs little more than the logarithm of how many there are, and memory hardly more than
/// the numbers themselves. No two are equivalent, and what a number stands for keeps its order as
/// long as the number is in.
template <typename Less>
class CSortedRuns {
public:
    explicit CSortedRuns(Less isLess) : m_isLess(std::move(isLess)) {}

    void Insert(uint32_t uiItem) {
        if (m_runs.empty()) {
            m_runs.push_back({uiItem});
            return;
        }
        auto itRun = RunOf(uiItem);
        if (itRun == m_runs.end()) {
            --itRun;
        }
        itRun->insert(std::lower_bound(itRun->begin(), itRun->end(), uiItem, m_isLess), uiItem);
        if (itRun->size() > LONGEST_RUN) {
            const auto itHalf = itRun->begin() + LONGEST_RUN / 2;
            std::vector<uint32_t> rest(itHalf, itRun->end());
            itRun->erase(itHalf, itRun->end());
            m_runs.insert(std::next(itRun), std::move(rest));
        }
    }

    /// The number must be in.
    void Erase(uint32_t uiItem) {
        const auto itRun = RunOf(uiItem);
        itRun->erase(std::lower_bound(itRun->begin(), itRun->end(), uiItem, m_isLess));
        if (itRun->empty()) {
            m_runs.erase(itRun);
        }
    }

    void Clear() { m_runs = CRuns(); }

    /// The first that is wanted, in order; NUMERIC_NONE when none is.
    template <typename Predicate>
    uint32_t FindFirst(const Predicate& isWanted) const {
        for (const std::vector<uint32_t>& run : m_runs) {
            const auto it = std::find_if(run.begin(), run.end(), isWanted);
            if (it != run.end()) {
                return *it;
            }
        }
        return NUMERIC_NONE;
    }

    /// The last that is ahead and the first that is not, of an order whose beginning is ahead and
    /// whose rest is not; NUMERIC_NONE where there is none.
    template <typename Predicate>
    std::pair<uint32_t, uint32_t> Part(const Predicate& isAhead) const {
        const auto itRun = std::partition_point(
            m_runs.begin(), m_runs.end(),
            [&isAhead](const std::vector<uint32_t>& run) { return isAhead(run.back()); });
        const uint32_t uiBefore = itRun == m_runs.begin() ? NUMERIC_NONE : std::prev(itRun)->back();
        if (itRun == m_runs.end()) {
            return {uiBefore, NUMERIC_NONE};
        }
        const auto it = std::partition_point(itRun->begin(), itRun->end(), isAhead);
        return {it == itRun->begin() ? uiBefore : *std::prev(it), *it};
    }

private:
    static constexpr std::ptrdiff_t LONGEST_RUN = 128;

    using CRuns = std::vector<std::vector<uint32_t>>;

    /// The first run that ends at or behind the number.
    typename CRuns::iterator RunOf(uint32_t uiItem) {
        return std::partition_point(m_runs.begin(), m_runs.end(),
                                    [this, uiItem](const std::vector<uint32_t>& run) {
                                        return m_isLess(run.back(), uiItem);
                                    });
    }

    Less m_isLess;
    CRuns m_runs;  ///< none of them empty
};
