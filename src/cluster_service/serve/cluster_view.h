#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cluster_engine/engine.h"
#include "cluster_engine/forms.h"
#include "cluster_engine/settings.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/cluster_moment.h"
#include "framework_service/plugin_mgr.h"
#include "framework_service/resource_task.h"

/// What the cluster's small documents say, as the library understood them last.
struct CRecordsView {
    std::list<CClusterCGInfo> cgs;
    std::list<CClusterDBInfo> databases;  ///< the master before the others
    std::list<CClusterMGRInfo> managers;
};

/// On the engine's thread.
CRecordsView ReadRecords();

/// A document as the store has it.
struct CStoredDocument {
    bool bExists = false;
    std::optional<std::string> text;
    bool bReadable = true;  ///< false: the store could not be asked; what it had before stands here
};

/// The cluster as of one commit, for questions. Never changed once it is published: any thread may
/// hold it as long as it wants. What did not change since the view before is shared with it.
struct CClusterView {
    /// Why nothing can be answered or taken yet; empty when the cluster is loaded and ours.
    std::string strNotReady = "starting";

    uint64_t ullNumber = 0;  ///< grows with each view
    int64_t iTime = 0;       ///< the engine's second
    bool bSettling = true;

    std::optional<CClusterMoment> moment;  ///< nodes and containers; none before the first load
    CEngineView engine;                    ///< what no registry has: shifts, plug-ins, drains

    uint64_t ullDecision = 0;
    uint64_t ullMaster = 0;
    int iCenterDbVersion = 0;

    /// By EDocument: as stored, with the store's text.
    std::shared_ptr<const std::map<std::string, CStoredDocument>> pDocuments;

    /// The standard tasks by name.
    std::shared_ptr<const std::map<std::string, CResourceTask>> pStandardTasks;

    /// What became of the files of the plug-in folder when they were loaded.
    std::shared_ptr<const std::list<CPluginFile>> pPluginFiles;

    /// The records that the library keeps copies of.
    std::shared_ptr<const CRecordsView> pRecords;
};

using ViewPointer = std::shared_ptr<const CClusterView>;

/// Where the engine's thread publishes and everyone else looks.
class CPublishedView {
public:
    CPublishedView() : m_pView(std::make_shared<const CClusterView>()) {}

    ViewPointer Get() const {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return m_pView;
    }

    void Publish(ViewPointer pView) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (!m_bClosed) {
            m_pView.swap(pView);
        }
    }

    /// From now on nothing can be asked, whatever is published.
    void Close(std::string strWhy) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        auto pView = std::make_shared<CClusterView>(*m_pView);
        pView->strNotReady = std::move(strWhy);
        ++pView->ullNumber;
        m_pView = std::move(pView);
        m_bClosed = true;
    }

private:
    mutable std::mutex m_mutex;  ///< guards everything below
    ViewPointer m_pView;
    bool m_bClosed = false;
};
