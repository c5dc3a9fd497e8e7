#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
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
///
/// Each change has a number, the one before plus 1. An entry and its run keep that of their last
/// change, a removed key is remembered with its own: so a copy tells what has changed since it had
/// an earlier number, at the cost of a glance at each run.
template <typename Key, typename Value>
class CSnapshotTable {
    using CEntry = std::pair<Key, Value>;

    struct CNumberedEntry {
        template <typename... Args>
        CNumberedEntry(std::uint64_t ullNumber, const Key& key, Args&&... args)
            : entry(std::piecewise_construct, std::forward_as_tuple(key),
                    std::forward_as_tuple(std::forward<Args>(args)...)),
              ullChange(ullNumber) {}

        CEntry entry;
        std::uint64_t ullChange;
    };

    using CRun = std::vector<CNumberedEntry>;

    struct CNumberedRun {
        CCopyOnWrite<CRun> entries;
        std::uint64_t ullChange;  ///< the highest of its entries'
    };

    using CRuns = std::vector<CNumberedRun>;
    using CRemovals = std::vector<std::pair<Key, std::uint64_t>>;

public:
    std::size_t Size() const {
        std::size_t uiSize = 0;
        for (const CNumberedRun& run : *m_runs) {
            uiSize += run.entries->size();
        }
        return uiSize;
    }

    /// Walks through the entries, pairs of a key and its value, in key order. Lives until the table
    /// is changed.
    class CIterator {
        using CItRun = typename CRuns::const_iterator;

    public:
        CIterator(CItRun itRun, CItRun itEnd) : m_itRun(itRun), m_itEnd(itEnd) { EnterRun(); }

        const CEntry& operator*() const { return m_pEntry->entry; }

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
            m_pEntry = bEnd ? nullptr : m_itRun->entries->data();
            m_pRunEnd = bEnd ? nullptr : m_pEntry + m_itRun->entries->size();
        }

        CItRun m_itRun;
        CItRun m_itEnd;
        const CNumberedEntry* m_pEntry;
        const CNumberedEntry* m_pRunEnd;
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
        if (!place.bTaken) {
            return nullptr;
        }
        CNumberedRun& run = m_runs.Edit()[place.uiRun];
        CNumberedEntry& entry = run.entries.Edit()[place.uiEntry];
        run.ullChange = entry.ullChange = ++m_ullLastChange;
        return &entry.entry.second;
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
            runs.insert(At(runs, place.uiRun), CNumberedRun{})->entries.Edit().reserve(LONGEST_RUN);
        } else if (runs[place.uiRun].entries->size() == LONGEST_RUN) {
            Split(runs, place.uiRun);
            place = PlaceOf(key);
        }
        runs[place.uiRun].ullChange = ++m_ullLastChange;
        CRun& run = runs[place.uiRun].entries.Edit();
        const auto it =
            run.emplace(At(run, place.uiEntry), m_ullLastChange, key, std::forward<Args>(args)...);
        return &it->entry.second;
    }

    /// Takes the key out and returns its value; nothing when the table does not hold it.
    std::optional<Value> Remove(const Key& key) {
        const CPlace place = PlaceOf(key);
        if (!place.bTaken) {
            return std::nullopt;
        }
        CRuns& runs = m_runs.Edit();
        CRun& run = runs[place.uiRun].entries.Edit();
        std::optional<Value> value = std::move(run[place.uiEntry].entry.second);
        Remember(run[place.uiEntry].entry.first);
        run.erase(At(run, place.uiEntry));
        if (run.empty()) {
            runs.erase(At(runs, place.uiRun));
        }
        ForgetLongMemory();
        return value;
    }

    /// The number of the last change; 0 before the first.
    std::uint64_t LastChange() const { return m_ullLastChange; }

    /// Tells what has changed since the table had that number: visit(key, nullptr) for each key
    /// that was removed, in the order of removal, then visit(key, &value) for each entry that was
    /// inserted or edited, in key order. A key that was removed and inserted again is told twice;
    /// since 0 every entry is told and nothing else. False, with nothing told, when the table does
    /// not know: it was replaced since, or has lost more keys than it holds.
    template <typename Visitor>
    bool VisitChanges(std::uint64_t ullSince, const Visitor& visit) const {
        if (ullSince != 0 && (ullSince < m_ullMemory || ullSince > m_ullLastChange)) {
            return false;
        }
        if (ullSince != 0 && ullSince != m_ullLastChange) {
            VisitRemovals(ullSince, visit);
        }
        for (const CNumberedRun& run : *m_runs) {
            if (run.ullChange > ullSince) {
                VisitRun(*run.entries, ullSince, visit);
            }
        }
        return true;
    }

    /// Makes this table, which was filled on its own, the successor of another: its numbers go on
    /// from there, and what differs from the other it does not know.
    void Succeed(const CSnapshotTable& former) {
        m_ullLastChange += former.m_ullLastChange + 1;
        m_ullMemory = m_ullLastChange;
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
        return uiRun >= runs.size() || key < runs[uiRun].entries->front().entry.first;
    }

    /// The last run that begins at or below the key, else the first.
    static std::size_t RunOf(const CRuns& runs, const Key& key) {
        const auto itNext = std::upper_bound(runs.begin(), runs.end(), key,
                                             [](const Key& wanted, const CNumberedRun& run) {
                                                 return wanted < run.entries->front().entry.first;
                                             });
        return itNext == runs.begin() ? 0 : static_cast<std::size_t>(itNext - runs.begin()) - 1;
    }

    static CPlace PlaceIn(const CRuns& runs, std::size_t uiRun, const Key& key) {
        if (runs.empty()) {
            return {0, 0, false};
        }
        const CRun& run = *runs[uiRun].entries;
        const auto it = std::lower_bound(run.begin(), run.end(), key,
                                         [](const CNumberedEntry& entry, const Key& wanted) {
                                             return entry.entry.first < wanted;
                                         });
        return {uiRun, static_cast<std::size_t>(it - run.begin()),
                it != run.end() && !(key < it->entry.first)};
    }

    CPlace PlaceOf(const Key& key) const {
        const CRuns& runs = *m_runs;
        return PlaceIn(runs, RunOf(runs, key), key);
    }

    static const Value* ValueAt(const CRuns& runs, const CPlace& place) {
        return place.bTaken ? &(*runs[place.uiRun].entries)[place.uiEntry].entry.second : nullptr;
    }

    CPlace PlaceOfNew(const Key& key) const {
        if (m_runs->empty() || !(m_runs->back().entries->back().entry.first < key)) {
            return PlaceOf(key);
        }
        return {m_runs->size() - 1, m_runs->back().entries->size(), false};
    }

    /// Moves the second half of a run into a new one behind it.
    static void Split(CRuns& runs, std::size_t uiRun) {
        CRun& run = runs[uiRun].entries.Edit();
        const auto itHalf = At(run, run.size() / 2);
        CRun rest(std::make_move_iterator(itHalf), std::make_move_iterator(run.end()));
        run.erase(itHalf, run.end());
        runs.insert(At(runs, uiRun + 1), CNumberedRun{std::move(rest), runs[uiRun].ullChange});
    }

    void Remember(const Key& removed) {
        m_removals.Edit().emplace_back(removed, ++m_ullLastChange);
    }

    /// Whoever is behind by more removals than there are entries reads them all with less effort.
    void ForgetLongMemory() {
        if (m_removals->size() > Size()) {
            m_removals = {};
            m_ullMemory = m_ullLastChange;
        }
    }

    template <typename Visitor>
    void VisitRemovals(std::uint64_t ullSince, const Visitor& visit) const {
        auto it = std::upper_bound(m_removals->begin(), m_removals->end(), ullSince,
                                   [](std::uint64_t ullNumber, const auto& removal) {
                                       return ullNumber < removal.second;
                                   });
        for (; it != m_removals->end(); ++it) {
            visit(it->first, static_cast<const Value*>(nullptr));
        }
    }

    template <typename Visitor>
    static void VisitRun(const CRun& run, std::uint64_t ullSince, const Visitor& visit) {
        for (const CNumberedEntry& entry : run) {
            if (entry.ullChange > ullSince) {
                visit(entry.entry.first, &entry.entry.second);
            }
        }
    }

    template <typename Vector>
    static auto At(Vector& vector, std::size_t uiIndex) {
        return std::next(vector.begin(), static_cast<std::ptrdiff_t>(uiIndex));
    }

    CCopyOnWrite<CRuns> m_runs;          ///< none of them empty
    CCopyOnWrite<CRemovals> m_removals;  ///< since m_ullMemory, ascending
    std::uint64_t m_ullLastChange = 0;
    std::uint64_t m_ullMemory = 0;  ///< what changed since this number or a later one is known
};
