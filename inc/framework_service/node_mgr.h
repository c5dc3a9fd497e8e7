#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <map>
#include <optional>
#include <string>

#include "common_service/thread_mutex.h"
#include "framework_service/base_data.h"
#include "framework_service/detail/snapshot_table.h"
#include "framework_service/tarn_node.h"

/// The process-wide table of the cluster's nodes, and beside it the number of failed fault shifts
/// per container. Callable from any thread. Nodes are held by value and handed out as copies; the
/// store is not touched. On an unknown node an operation does nothing unless it says otherwise, and
/// a lock that cannot be had counts as an unknown node.
class CNodeMgr {
public:
    static CNodeMgr& Instance() { return m_Instance; }

    CNodeMgr(const CNodeMgr&) = delete;
    CNodeMgr& operator=(const CNodeMgr&) = delete;
    virtual ~CNodeMgr() = default;

    /// Replaces the table; of two nodes with one id the later stays. Fault times stay.
    void Init(const std::list<CNode>& nodeList);

    /// Adds the nodes under the map's keys, replacing whole what is there.
    void AddNode(const NodeMap& nodeMap);

    /// Appends a copy of every node, in key order, behind what the argument holds.
    void GetAllNode(std::list<CNode>& nodeList);

    /// True and a copy; or false with the argument untouched.
    bool GetNode(const std::string& strNodeId, CNode& node);

    bool IsNodeExist(const std::string& strNodeCode);

    /// The number of nodes, read without the lock: it may be momentarily stale.
    unsigned int GetSize() const { return m_uiSize; }

    void SetNodeOnline(const std::string& strNodeId, bool bOnline);
    bool IsNodeOnline(const std::string& strNodeId);

    /// Sets the total figures and takes a sample; the report time stays. An unknown node is logged.
    void SetSystemResource(const std::string& strNodeID, const CSystemResource& totalSysRes,
                           const CSystemResource& curSysRes);

    void SetMemberStatus(const std::list<std::string>& nodeCodeList, int iStatus);

    /// The node's fault times stay until they are cleared.
    void RemoveNode(const std::string& strNodeId);

    /// Drops the first entry of that type and tells how many are left: 0 for an unknown node, and
    /// untouched when the lock cannot be had.
    void RemoveNodeContainer(const std::string& strNodeId, const std::string& strContainerType,
                             unsigned int& uiContainerLeftNum);

    /// Replaces the argument by the ids of the nodes whose address equals uiIP under the bit mask.
    /// Returns 0, or ORVA_FAIL with an empty list when the lock cannot be had.
    int GetNearbyNodeListByIP(uint32_t uiIP, uint32_t uiMask, std::list<std::string>& nodeList);

    /// @name Failed fault shifts per container; 0 when never set
    /// @{
    void SetContainerShiftFaultTimes(const CContainerAddr& addr, uint64_t times);
    uint64_t GetContainerShiftFaultTimes(const CContainerAddr& addr);
    void ClearContainerShiftStatus(const std::string& nodeCode);
    void ClearContainerShiftStatus(const std::list<std::string>& nodeCodeList);
    /// @}

private:
    friend class CFrameworkInternal;

    using CNodeTable = CSnapshotTable<std::string, CNode>;

    CNodeMgr() = default;

    /// The table as it is now; nothing without the lock.
    std::optional<CNodeTable> Snapshot();

    void RefreshSizeLocked();

    static CNodeMgr m_Instance;

    CNodeTable m_nodeTable;  ///< guarded by m_mutex
    std::map<CContainerAddr, uint64_t>
        m_containerFaultShiftFailMap;  ///< guarded by m_shiftStatusMutex
    HALD_Recursive_Thread_Mutex m_shiftStatusMutex{nullptr, nullptr};
    HALD_Recursive_Thread_Mutex m_mutex{nullptr, nullptr};
    std::atomic<unsigned int> m_uiSize{0};  ///< the table's; atomic for GetSize, which has no lock
};
