#pragma once

#include <memory>
#include <string>
#include <vector>

#include "reference_host/store.h"
#include "serve/document_texts.h"
#include "serve/metrics.h"
#include "serve/service_manager.h"

/// The store as the engine and the plug-ins use it, right in front of the store itself: each call
/// is counted, shows the watchdog that there is progress, and lets the limit of a plug-in's call
/// stand still; the texts of documents that it writes are noted.
class CMeteredStore : public IStore {
public:
    CMeteredStore(std::shared_ptr<IStore> pStore, CServiceMetrics& metrics, CDocumentTexts& texts,
                  CWatchdog& watchdog)
        : m_pStore(std::move(pStore)), m_metrics(metrics), m_texts(texts), m_watchdog(watchdog) {}

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override;
    int Write(const std::string& strPath, const std::string& strText) override;
    int List(const std::string& strPath, std::vector<std::string>& children) override;
    int Commit(const std::vector<CStoreCondition>& conditions,
               const std::vector<CStoreText>& texts) override;

private:
    template <typename Call>
    int Measure(const char* pszOperation, const std::string& strPath, const Call& call);

    const std::shared_ptr<IStore> m_pStore;
    CServiceMetrics& m_metrics;
    CDocumentTexts& m_texts;
    CWatchdog& m_watchdog;
};
