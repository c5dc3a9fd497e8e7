#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "framework_service/copy_on_write.h"

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
    CSnapshotTable() = default;

    explicit CSnapshotTable(std::map<Key, Value> entries) {
        CRuns& runs = m_runs.Edit();
        for (auto& [key, value] : entries) {
            if (runs.empty() || runs.back()->size() == LONGEST_RUN) {
                runs.emplace_back().Edit().reserve(LONGEST_RUN);
            }
            runs.back().Edit().emplace_back(key, std::move(value));
        }
    }

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
    public:
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
        friend class CSnapshotTable;
        using CItRun = typename CRuns::const_iterator;

        CIterator(CItRun itRun, CItRun itEnd) : m_itRun(itRun), m_itEnd(itEnd) { EnterRun(); }

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
    const Value* Find(const Key& key) const {
        const CPlace place = PlaceOf(key);
        return place.bTaken ? &(*(*m_runs)[place.uiRun])[place.uiEntry].second : nullptr;
    }

    /// The key's value for writing, or null. Lives until this object is changed or copied.
    Value* Edit(const Key& key) {
        const CPlace place = PlaceOf(key);
        return place.bTaken ? &m_runs.Edit()[place.uiRun].Edit()[place.uiEntry].second : nullptr;
    }

    /// Adds a key that the table does not hold yet.
    void Insert(const Key& key, Value value) {
        const CPlace place = PlaceOf(key);
        CRuns& runs = m_runs.Edit();
        if (runs.empty()) {
            runs.emplace_back();
        }
        CRun& run = runs[place.uiRun].Edit();
        run.emplace(At(run, place.uiEntry), key, std::move(value));
        if (run.size() > LONGEST_RUN) {
            const auto itHalf = At(run, run.size() / 2);
            CRun rest(std::make_move_iterator(itHalf), std::make_move_iterator(run.end()));
            run.erase(itHalf, run.end());
            runs.insert(At(runs, place.uiRun + 1), std::move(rest));
        }
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

    CPlace PlaceOf(const Key& key) const {
        const auto itNext = std::upper_bound(
            m_runs->begin(), m_runs->end(), key,
            [](const Key& wanted, const CSharedRun& run) { return wanted < run->front().first; });
        if (itNext == m_runs->begin()) {
            return {0, 0, false};
        }
        const CRun& run = **std::prev(itNext);
        const auto it = std::lower_bound(
            run.begin(), run.end(), key,
            [](const CEntry& entry, const Key& wanted) { return entry.first < wanted; });
        return {static_cast<std::size_t>(itNext - m_runs->begin()) - 1,
                static_cast<std::size_t>(it - run.begin()), it != run.end() && !(key < it->first)};
    }

    template <typename Vector>
    static auto At(Vector& vector, std::size_t uiIndex) {
        return std::next(vector.begin(), static_cast<std::ptrdiff_t>(uiIndex));
    }

    CCopyOnWrite<CRuns> m_runs;  ///< none of them empty
};
