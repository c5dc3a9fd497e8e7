#pragma once

#include <cstdint>
#include <list>
#include <utility>

#include "framework_service/detail/copy_on_write.h"
#include "framework_service/resource_task.h"

/// The tasks of a container, shared as CCopyOnWrite shares, with a number for what they are: tables
/// of one number hold the same tasks. Each edit takes a number that no table of this process had.
/// Edits that only put tasks behind the others are told apart from the rest.
class CTaskTable {
public:
    /// Without tasks; its number is 0.
    CTaskTable() = default;

    CTaskTable(std::list<CResourceTask> tasks)
        : m_tasks(std::move(tasks)), m_ullNumber(NextNumber()), m_ullGrownSince(m_ullNumber) {}

    const std::list<CResourceTask>& operator*() const { return *m_tasks; }
    const std::list<CResourceTask>* operator->() const { return &*m_tasks; }

    /// The tasks for writing, until this object is copied, assigned or gone.
    std::list<CResourceTask>& Edit() {
        std::list<CResourceTask>& tasks = EditEnd();
        m_ullGrownSince = m_ullNumber;
        return tasks;
    }

    /// The same, for who only puts tasks behind those that are there.
    std::list<CResourceTask>& EditEnd() {
        m_ullNumber = NextNumber();
        return m_tasks.Edit();
    }

    std::uint64_t GetNumber() const { return m_ullNumber; }

    /// The number of the last edit that did more than put tasks behind the others.
    std::uint64_t GetGrownSince() const { return m_ullGrownSince; }

private:
    static std::uint64_t NextNumber();

    CCopyOnWrite<std::list<CResourceTask>> m_tasks;
    std::uint64_t m_ullNumber = 0;
    std::uint64_t m_ullGrownSince = 0;
};
