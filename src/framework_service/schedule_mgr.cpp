#include "framework_service/schedule_mgr.h"

#include <algorithm>

#include "common_service/data/version_znode.h"
#include "common_service/tarn_def.h"
#include "internal/registry.h"
#include "internal/store.h"
#include "operation_log/operation_log.h"

using namespace framework_internal;
using namespace operation_log;

CScheduleMgr CScheduleMgr::m_instance;

namespace {

/// A failed write of the numbers; both of them log it as the decision number's.
int LogWriteFailure(int iCode, CPlace place = CPlace::Here()) {
    return LogFailure({"schedule manager, increase decision verion num", place}, iCode,
                      "set data to zk fail.");
}

}  // namespace

int CScheduleMgr::Reload() {
    const MutexGuard guard(m_recMutex);
    if (!guard.locked()) {
        return ORVA_FAIL;
    }
    bool bEmptyData = false;
    CVersionZNode document;
    const int iRet = ReadStore(STORE_NODE_VERSION, EWatch::NO, document, bEmptyData);
    if (iRet != ORVA_SUCCEED) {
        return LogFailure("schedule manager", iRet, "get version data from zk fail.");
    }
    m_ullDecisionVerNum = bEmptyData ? 0 : document.GetDecisionVerNum();
    m_ullMasterVerNum = bEmptyData ? 0 : document.GetMasterVerNum();
    return ORVA_SUCCEED;
}

int CScheduleMgr::UpdateZKVersionNode() {
    CVersionZNode document;
    document.SetDecisionVerNum(m_ullDecisionVerNum);
    document.SetMasterVerNum(m_ullMasterVerNum);
    return WriteStore(STORE_NODE_VERSION, document);
}

int CScheduleMgr::IncreaseDecisionVerNum(unsigned long long& ullDecisionVerNum) {
    const MutexGuard guard(m_recMutex);
    if (!guard.locked()) {
        return ORVA_FAIL;
    }
    ++m_ullDecisionVerNum;
    if (const int iRet = UpdateZKVersionNode(); iRet != ORVA_SUCCEED) {
        return LogWriteFailure(iRet);
    }
    ullDecisionVerNum = m_ullDecisionVerNum;
    return ORVA_SUCCEED;
}

int CScheduleMgr::IncreaseMasterVerNum() {
    const MutexGuard guard(m_recMutex);
    if (!guard.locked()) {
        return ORVA_FAIL;
    }
    ++m_ullMasterVerNum;
    if (const int iRet = UpdateZKVersionNode(); iRet != ORVA_SUCCEED) {
        return LogWriteFailure(iRet);
    }
    return ORVA_SUCCEED;
}

int CScheduleMgr::SetDecisionVerNum(unsigned long long ullDecisionVerNum) {
    const MutexGuard guard(m_recMutex);
    if (!guard.locked()) {
        return ORVA_FAIL;
    }
    m_ullDecisionVerNum = ullDecisionVerNum;
    if (UpdateZKVersionNode() != ORVA_SUCCEED) {
        return LogWriteFailure(ORVA_FAIL);
    }
    return ORVA_SUCCEED;
}

bool CScheduleMgr::IsScheduling() {
    const MutexGuard guard(m_recMutex);
    return !guard.locked() || m_bShifting;
}

void CScheduleMgr::AddShiftContainer(const CContainerAddr& containerAddr) {
    const MutexGuard guard(m_containerMutex);
    if (!guard.locked()) {
        return;
    }
    std::list<CContainerAddr>& shifting = m_listShiftContianerAddr;
    if (std::find(shifting.begin(), shifting.end(), containerAddr) == shifting.end()) {
        shifting.push_back(containerAddr);
        m_bShifting = true;
    }
}

void CScheduleMgr::RemoveShiftContainer(const CContainerAddr& containerAddr) {
    const MutexGuard guard(m_containerMutex);
    if (!guard.locked()) {
        return;
    }
    std::list<CContainerAddr>& shifting = m_listShiftContianerAddr;
    const auto it = std::find(shifting.begin(), shifting.end(), containerAddr);
    if (it != shifting.end()) {
        shifting.erase(it);
        m_bShifting = !shifting.empty();
    }
}

void CScheduleMgr::GetAllShiftContainer(std::list<CContainerAddr>& listContainerAddr) {
    const MutexGuard guard(m_containerMutex);
    if (guard.locked()) {
        listContainerAddr.insert(listContainerAddr.end(), m_listShiftContianerAddr.begin(),
                                 m_listShiftContianerAddr.end());
    }
}
