#include "serve/view_maker.h"

#include <ctime>
#include <utility>

#include "framework_service/framework_common.h"
#include "framework_service/schedule_mgr.h"

namespace {

std::shared_ptr<const std::list<CPluginFile>> ReadPluginFiles() {
    return std::make_shared<const std::list<CPluginFile>>(CPluginMgr::Instance().GetPluginFiles());
}

}  // namespace

ViewPointer CViewMaker::Make() {
    if (m_pPluginFiles == nullptr) {
        m_pPluginFiles = ReadPluginFiles();
    }
    if (m_pStandardTasks == nullptr) {
        m_pStandardTasks = std::make_shared<const StandardTasks>(m_engine.GetStandardTasks());
    }
    if (m_pRecords == nullptr) {
        m_pRecords = std::make_shared<const CRecordsView>(ReadRecords());
    }
    CClusterView view;
    view.strNotReady.clear();
    view.engine = m_engine.GetView();
    view.bSettling = view.engine.bSettling;
    view.moment = CClusterMoment::Take();
    view.ullDecision = CScheduleMgr::Instance().GetDecisionVerNum();
    view.ullMaster = CScheduleMgr::Instance().GetMasterVerNum();
    view.iCenterDbVersion = CFrameworkCommon::Instance().GetCDBVersion();
    view.pPluginFiles = m_pPluginFiles;
    view.pStandardTasks = m_pStandardTasks;
    view.pRecords = m_pRecords;
    return Keep(std::move(view));
}

ViewPointer CViewMaker::MakeUncommitted(bool bStoreAway) {
    CClusterView view = *m_pLast;
    view.engine.bStoreAway = bStoreAway;
    return Keep(std::move(view));
}

ViewPointer CViewMaker::MakeNotReady(std::string strWhy) {
    CClusterView view = *m_pLast;
    view.strNotReady = std::move(strWhy);
    view.pPluginFiles = ReadPluginFiles();
    return Keep(std::move(view));
}

/// On the engine's thread time() tells the engine's second.
ViewPointer CViewMaker::Keep(CClusterView view) {
    view.ullNumber = m_pLast->ullNumber + 1;
    view.iTime = std::time(nullptr);
    view.pDocuments = m_texts.Get();
    m_pLast = std::make_shared<const CClusterView>(std::move(view));
    return m_pLast;
}
