#include "framework_service/node_mgr.h"

#include <algorithm>
#include <utility>

#include "common_service/tarn_def.h"
#include "internal/node_containers.h"
#include "internal/registry.h"
#include "operation_log/operation_log.h"

using namespace framework_internal;
using namespace operation_log;

CNodeMgr CNodeMgr::m_Instance;

namespace {

/// Puts the node under the key, in place of the one that is there.
void PutNode(CSnapshotTable<std::string, CNode>& nodeTable, const std::string& strNodeId,
             const CNode& node) {
    if (nodeTable.Insert(strNodeId, node) == nullptr) {
        *nodeTable.Edit(strNodeId) = node;
    }
}

}  // namespace

void CNodeMgr::RefreshSizeLocked() {
    m_uiSize = static_cast<unsigned int>(m_nodeTable.Size());
}

void CNodeMgr::Init(const std::list<CNode>& nodeList) {
    CNodeTable nodeTable;
    for (const CNode& node : nodeList) {
        PutNode(nodeTable, node.GetNodeId(), node);
    }
    const MutexGuard guard(m_mutex);
    if (guard.locked()) {
        nodeTable.Succeed(m_nodeTable);
        std::swap(m_nodeTable, nodeTable);
        RefreshSizeLocked();
    }
}

void CNodeMgr::AddNode(const NodeMap& nodeMap) {
    const MutexGuard guard(m_mutex);
    if (!guard.locked()) {
        return;
    }
    for (const auto& [strNodeId, node] : nodeMap) {
        PutNode(m_nodeTable, strNodeId, node);
    }
    RefreshSizeLocked();
}

std::optional<CNodeMgr::CNodeTable> CNodeMgr::Snapshot() {
    const MutexGuard guard(m_mutex);
    if (!guard.locked()) {
        return std::nullopt;
    }
    return m_nodeTable;
}

void CNodeMgr::GetAllNode(std::list<CNode>& nodeList) {
    const std::optional<CNodeTable> snapshot = Snapshot();
    if (!snapshot) {
        return;
    }
    for (const auto& [strNodeId, node] : *snapshot) {
        nodeList.push_back(node);
    }
}

bool CNodeMgr::GetNode(const std::string& strNodeId, CNode& node) {
    return ReadEntry(m_mutex, m_nodeTable, strNodeId,
                     [&node](const CNode& known) { node = known; });
}

bool CNodeMgr::IsNodeExist(const std::string& strNodeCode) {
    return ReadEntry(m_mutex, m_nodeTable, strNodeCode, [](const CNode&) {});
}

void CNodeMgr::SetNodeOnline(const std::string& strNodeId, bool bOnline) {
    ChangeEntry(m_mutex, m_nodeTable, strNodeId,
                [bOnline](CNode& node) { node.SetOnline(bOnline); });
}

bool CNodeMgr::IsNodeOnline(const std::string& strNodeId) {
    bool bOnline = false;
    ReadEntry(m_mutex, m_nodeTable, strNodeId,
              [&bOnline](const CNode& node) { bOnline = node.IsOnline(); });
    return bOnline;
}

void CNodeMgr::SetSystemResource(const std::string& strNodeID, const CSystemResource& totalSysRes,
                                 const CSystemResource& curSysRes) {
    const CPlacedText operation("Node mgr set system resource");
    const auto setResource = [&](CNode& node) {
        node.SetTotalResource(totalSysRes);
        node.SetCurResource(curSysRes);
    };
    ChangeEntry(m_mutex, m_nodeTable, strNodeID, setResource, [&] {
        LogFailure(operation, ORVA_FAIL, "can not find the node, node id=%s", strNodeID.c_str());
    });
}

void CNodeMgr::SetMemberStatus(const std::list<std::string>& nodeCodeList, int iStatus) {
    const MutexGuard guard(m_mutex);
    if (!guard.locked()) {
        return;
    }
    for (const std::string& strNodeCode : nodeCodeList) {
        if (CNode* const pNode = m_nodeTable.Edit(strNodeCode); pNode != nullptr) {
            pNode->SetMemberStatus(iStatus);
        }
    }
}

void CNodeMgr::RemoveNode(const std::string& strNodeId) {
    std::optional<CNode> removed;
    const MutexGuard guard(m_mutex);
    if (!guard.locked()) {
        return;
    }
    removed = m_nodeTable.Remove(strNodeId);
    RefreshSizeLocked();
}

void CNodeMgr::RemoveNodeContainer(const std::string& strNodeId,
                                   const std::string& strContainerType,
                                   unsigned int& uiContainerLeftNum) {
    const auto dropContainer = [&](CNode& node) {
        uiContainerLeftNum = DropContainerType(node, strContainerType);
    };
    ChangeEntry(m_mutex, m_nodeTable, strNodeId, dropContainer, [&] { uiContainerLeftNum = 0; });
}

int CNodeMgr::GetNearbyNodeListByIP(uint32_t uiIP, uint32_t uiMask,
                                    std::list<std::string>& nodeList) {
    nodeList.clear();
    const std::optional<CNodeTable> snapshot = Snapshot();
    if (!snapshot) {
        return ORVA_FAIL;
    }
    for (const auto& [strKey, node] : *snapshot) {
        if ((node.GetNodeIpInt() & uiMask) == (uiIP & uiMask)) {
            nodeList.push_back(node.GetNodeId());
        }
    }
    return ORVA_SUCCEED;
}

void CNodeMgr::SetContainerShiftFaultTimes(const CContainerAddr& addr, uint64_t times) {
    const MutexGuard guard(m_shiftStatusMutex);
    if (guard.locked()) {
        m_containerFaultShiftFailMap.insert_or_assign(addr, times);
    }
}

uint64_t CNodeMgr::GetContainerShiftFaultTimes(const CContainerAddr& addr) {
    const MutexGuard guard(m_shiftStatusMutex);
    if (!guard.locked()) {
        return 0;
    }
    const auto it = m_containerFaultShiftFailMap.find(addr);
    return it != m_containerFaultShiftFailMap.end() ? it->second : 0;
}

void CNodeMgr::ClearContainerShiftStatus(const std::string& nodeCode) {
    ClearContainerShiftStatus(std::list<std::string>{nodeCode});
}

void CNodeMgr::ClearContainerShiftStatus(const std::list<std::string>& nodeCodeList) {
    const MutexGuard guard(m_shiftStatusMutex);
    if (!guard.locked()) {
        return;
    }
    for (auto it = m_containerFaultShiftFailMap.begin();
         it != m_containerFaultShiftFailMap.end();) {
        const bool bListed = std::find(nodeCodeList.begin(), nodeCodeList.end(),
                                       it->first.GetNodeId()) != nodeCodeList.end();
        it = bListed ? m_containerFaultShiftFailMap.erase(it) : std::next(it);
    }
}
