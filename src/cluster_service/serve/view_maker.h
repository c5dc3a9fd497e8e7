#pragma once

#include <list>
#include <map>
#include <memory>
#include <string>

#include "cluster_engine/engine.h"
#include "serve/cluster_view.h"
#include "serve/document_texts.h"

/// Makes the views of a cluster, on the engine's thread. What did not change is shared with the
/// view before.
class CViewMaker {
public:
    CViewMaker(const CClusterEngine& engine, const CDocumentTexts& texts)
        : m_engine(engine), m_texts(texts) {}

    /// The cluster as it is, right after a commit.
    ViewPointer Make();

    /// The cluster as it was at the last commit, and whether the store is away now.
    ViewPointer MakeUncommitted(bool bStoreAway);

    /// The same, and why nothing of it can be asked; plug-in files as they are, since one of them
    /// may be why.
    ViewPointer MakeNotReady(std::string strWhy);

    /// The standard tasks were read again.
    void ForgetStandardTasks() { m_pStandardTasks.reset(); }

    /// The library's copies of small documents may have changed.
    void ForgetRecords() { m_pRecords.reset(); }

private:
    using StandardTasks = std::map<std::string, CResourceTask>;

    ViewPointer Keep(CClusterView view);

    const CClusterEngine& m_engine;
    const CDocumentTexts& m_texts;
    std::shared_ptr<const std::list<CPluginFile>> m_pPluginFiles;
    std::shared_ptr<const StandardTasks> m_pStandardTasks;
    std::shared_ptr<const CRecordsView> m_pRecords;
    ViewPointer m_pLast = std::make_shared<const CClusterView>();
};
