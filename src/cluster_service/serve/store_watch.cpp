#include "serve/store_watch.h"

#include <chrono>

#include "serve/document_name.h"

void CStoreWatch::Look() {
    for (const EDocument eDocument : AllDocuments()) {
        Look(eDocument);
    }
}

void CStoreWatch::Start() {
    m_thread = std::thread([this] { Run(); });
}

void CStoreWatch::Stop() {
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_bStop = true;
    }
    m_stopped.notify_one();
    if (m_thread.joinable()) {
        m_thread.join();
    }
    m_pStore.reset();
}

void CStoreWatch::Run() {
    std::unique_lock<std::mutex> guard(m_mutex);
    while (!m_stopped.wait_for(guard, std::chrono::seconds(1), [this] { return m_bStop; })) {
        guard.unlock();
        Look();
        guard.lock();
    }
}

void CStoreWatch::Look(EDocument eDocument) {
    const uint64_t ullWrites = m_texts.CountWrites(eDocument);
    CStoreAnswer answer;
    const std::string strPath = StorePath(StoreDocumentOf(eDocument));
    const int iCode = m_pStore->Read(strPath, nullptr, answer);
    if (m_texts.Found(eDocument, ullWrites, iCode, answer)) {
        m_queue.PushUrgent(CDocumentChanged{eDocument});
    }
}
