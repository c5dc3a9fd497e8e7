#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "framework_service/detail/copy_on_write.h"

/// An ordered table of unique keys whose copy is a snapshot at the price of a pointer. The entries
/// stand in short sorted runs: beside a snapshot a change copies the run that it falls into, never
/// the table. As with CCopyOnWrite, one object is for one thread at a time, while copies of it may
/// be used by any threads at once.
template <typename Key, typename Value>
class CSnapshotTable {
    using CEntry = std::pair<Key, Value>;
    using CRun = std::vector<CEntry>;
    using CSharedRun = CCopyOnWrite<CRun>;
    using CRuns = std::vector<CSharedRun>;

public:
    std::size_t Size() const {
        std::size_t uiSize = 0;
        for (const CSharedRun& run : *m_runs) {
            uiSize += run->size();
        }
        return uiSize;
    }

    /// Walks through the entries, pairs of a key and its value, in key order. Lives until the table
    /// is changed.
    class CIterator {
        using CItRun = typename CRuns::const_iterator;

    public:
        CIterator(CItRun itRun, CItRun itEnd) : m_itRun(itRun), m_itEnd(itEnd) { EnterRun(); }

        const CEntry& operator*() const { return *m_pEntry; }

        CIterator& operator++() {
            if (++m_pEntry == m_pRunEnd) {
                ++m_itRun;
                EnterRun();
            }
            return *this;
        }

        bool operator!=(const CIterator& other) const { return m_pEntry != other.m_pEntry; }

    private:
        void EnterRun() {
            const bool bEnd = m_itRun == m_itEnd;
            m_pEntry = bEnd ? nullptr : (*m_itRun)->data();
            m_pRunEnd = bEnd ? nullptr : m_pEntry + (*m_itRun)->size();
        }

        CItRun m_itRun;
        CItRun m_itEnd;
        const CEntry* m_pEntry;
        const CEntry* m_pRunEnd;
    };

    CIterator begin() const { return CIterator(m_runs->begin(), m_runs->end()); }
    CIterator end() const { return CIterator(m_runs->end(), m_runs->end()); }

    /// The key's value, or null. Lives until this object is changed.
    const Value* Find(const Key& key) const { return ValueAt(*m_runs, PlaceOf(key)); }

    /// Finds keys as Find does, at the least cost when each is above the one before. Lives until
    /// the table is changed.
    class CAscendingSearch {
    public:
        explicit CAscendingSearch(const CSnapshotTable& table) : m_runs(*table.m_runs) {}

        const Value* Find(const Key& key) {
            if (IsRunAbove(m_runs, m_uiRun, key)) {
                m_uiRun = RunOf(m_runs, key);
            }
            while (!IsRunAbove(m_runs, m_uiRun + 1, key)) {
                ++m_uiRun;
            }
            return ValueAt(m_runs, PlaceIn(m_runs, m_uiRun, key));
        }

    private:
        const CRuns& m_runs;
        std::size_t m_uiRun = 0;
    };

    /// The key's value for writing, or null. Lives until this object is changed or copied.
    Value* Edit(const Key& key) {
        const CPlace place = PlaceOf(key);
        return place.bTaken ? &m_runs.Edit()[place.uiRun].Edit()[place.uiEntry].second : nullptr;
    }

    /// Adds the key with its value and returns that, as Edit does; null, with nothing changed, when
    /// the table holds the key. Costs least for keys that come in order.
    template <typename... Args>
    Value* Insert(const Key& key, Args&&... args) {
        CPlace place = PlaceOfNew(key);
        if (place.bTaken) {
            return nullptr;
        }
        CRuns& runs = m_runs.Edit();
        if (runs.empty() || place.uiEntry == LONGEST_RUN) {
            place = {runs.empty() ? 0 : place.uiRun + 1, 0, false};
            runs.emplace(At(runs, place.uiRun))->Edit().reserve(LONGEST_RUN);
        } else if (runs[place.uiRun]->size() == LONGEST_RUN) {
            Split(runs, place.uiRun);
            place = PlaceOf(key);
        }
        CRun& run = runs[place.uiRun].Edit();
        const auto it = run.emplace(At(run, place.uiEntry), std::piecewise_construct,
                                    std::forward_as_tuple(key),
                                    std::forward_as_tuple(std::forward<Args>(args)...));
        return &it->second;
    }

    /// Takes the key out and returns its value; nothing when the table does not hold it.
    std::optional<Value> Remove(const Key& key) {
        const CPlace place = PlaceOf(key);
        if (!place.bTaken) {
            return std::nullopt;
        }
        CRuns& runs = m_runs.Edit();
        CRun& run = runs[place.uiRun].Edit();
        std::optional<Value> value = std::move(run[place.uiEntry].second);
        run.erase(At(run, place.uiEntry));
        if (run.empty()) {
            runs.erase(At(runs, place.uiRun));
        }
        return value;
    }

private:
    static constexpr std::size_t LONGEST_RUN = 16;

    /// Where a key stands, or would be inserted.
    struct CPlace {
        std::size_t uiRun;
        std::size_t uiEntry;
        bool bTaken;
    };

    /// Is there no such run, or does it begin above the key?
    static bool IsRunAbove(const CRuns& runs, std::size_t uiRun, const Key& key) {
        return uiRun >= runs.size() || key < runs[uiRun]->front().first;
    }

    /// The last run that begins at or below the key, else the first.
    static std::size_t RunOf(const CRuns& runs, const Key& key) {
        const auto itNext = std::upper_bound(
            runs.begin(), runs.end(), key,
            [](const Key& wanted, const CSharedRun& run) { return wanted < run->front().first; });
        return itNext == runs.begin() ? 0 : static_cast<std::size_t>(itNext - runs.begin()) - 1;
    }

    static CPlace PlaceIn(const CRuns& runs, std::size_t uiRun, const Key& key) {
        if (runs.empty()) {
            return {0, 0, false};
        }
        const CRun& run = *runs[uiRun];
        const auto it = std::lower_bound(
            run.begin(), run.end(), key,
            [](const CEntry& entry, const Key& wanted) { return entry.first < wanted; });
        return {uiRun, static_cast<std::size_t>(it - run.begin()),
                it != run.end() && !(key < it->first)};
    }

    CPlace PlaceOf(const Key& key) const {
        const CRuns& runs = *m_runs;
        return PlaceIn(runs, RunOf(runs, key), key);
    }

    static const Value* ValueAt(const CRuns& runs, const CPlace& place) {
        return place.bTaken ? &(*runs[place.uiRun])[place.uiEntry].second : nullptr;
    }

    CPlace PlaceOfNew(const Key& key) const {
        const bool bLast = !m_runs->empty() && m_runs->back()->back().first < key;
        return bLast ? CPlace{m_runs->size() - 1, m_runs->back()->size(), false} : PlaceOf(key);
    }

    /// Moves the second half of a run into a new one behind it.
    static void Split(CRuns& runs, std::size_t uiRun) {
        CRun& run = runs[uiRun].Edit();
        const auto itHalf = At(run, run.size() / 2);
        CRun rest(std::make_move_iterator(itHalf), std::make_move_iterator(run.end()));
        run.erase(itHalf, run.end());
        runs.insert(At(runs, uiRun + 1), std::move(rest));
    }

    template <typename Vector>
    static auto At(Vector& vector, std::size_t uiIndex) {
        return std::next(vector.begin(), static_cast<std::ptrdiff_t>(uiIndex));
    }

    CCopyOnWrite<CRuns> m_runs;  ///< none of them empty
};
