#pragma once

#include <atomic>
#include <list>

#include "common_service/thread_mutex.h"
#include "framework_service/base_data.h"
#include "framework_service/store_path.h"

inline constexpr ORVA_STORE_NODE STORE_NODE_VERSION{"/Version", 512};

/// The cluster's two version numbers, which survive a restart in the store, and the list of the
/// containers that are being shifted, which does not. Callable from any thread. Store calls are
/// made with the numbers' lock held. After a failed write memory is ahead of the store, until the
/// next write, which carries both numbers. A lock that cannot be had is never logged.
class CScheduleMgr {
public:
    static CScheduleMgr& Instance() { return m_instance; }

    CScheduleMgr(const CScheduleMgr&) = delete;
    CScheduleMgr& operator=(const CScheduleMgr&) = delete;
    virtual ~CScheduleMgr() = default;

    /// Takes both numbers from the store; a node without data sets them to 0. Returns 0; or,
    /// logged, the store's code with the numbers as they were; or ORVA_FAIL without the lock.
    int Reload();

    /// Read without a lock.
    unsigned long long GetDecisionVerNum() const { return m_ullDecisionVerNum; }
    unsigned long long GetMasterVerNum() const { return m_ullMasterVerNum; }

    /// Adds 1 and writes both numbers. Returns 0 and the new number; or, logged, the store's code,
    /// with the argument untouched and the number increased; or ORVA_FAIL without the lock.
    int IncreaseDecisionVerNum(unsigned long long& ullDecisionVerNum);
    int IncreaseMasterVerNum();

    /// Sets the number, up or down, and writes both. Returns 0; or, logged, ORVA_FAIL, with the
    /// number set.
    int SetDecisionVerNum(unsigned long long ullDecisionVerNum);

    /// Is a container being shifted? Waits for a version operation, not for a change of the list:
    /// the answer is momentary. True without the lock.
    bool IsScheduling();

    /// @name The containers in a shift, in the order of adding, each once
    /// @{
    void AddShiftContainer(const CContainerAddr& containerAddr);
    void RemoveShiftContainer(const CContainerAddr& containerAddr);

    /// Appends copies behind what the argument holds.
    void GetAllShiftContainer(std::list<CContainerAddr>& listContainerAddr);
    /// @}

private:
    CScheduleMgr() = default;

    /// Writes both numbers; the caller holds m_recMutex.
    int UpdateZKVersionNode();

    static CScheduleMgr m_instance;

    // Written under m_recMutex; atomic for their getters, which have no lock.
    std::atomic<unsigned long long> m_ullDecisionVerNum{0};
    std::atomic<unsigned long long> m_ullMasterVerNum{0};
    HALD_Recursive_Thread_Mutex m_recMutex{nullptr, nullptr};  ///< held during store calls
    std::list<CContainerAddr> m_listShiftContianerAddr;        ///< guarded by m_containerMutex
    HALD_Recursive_Thread_Mutex m_containerMutex{nullptr, nullptr};

    /// Is the list not empty? Written under m_containerMutex; atomic for IsScheduling, which holds
    /// the other.
    std::atomic<bool> m_bShifting{false};
};
