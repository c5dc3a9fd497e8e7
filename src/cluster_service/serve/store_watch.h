#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "reference_host/store.h"
#include "serve/document_texts.h"
#include "serve/input_queue.h"

/// Reads each document of the cluster once a second, on a thread of its own, and tells the queue
/// of those that somebody else has written. It asks no store for a watch: a file's does not hear of
/// other programs, and one that was lost would not be missed.
class CStoreWatch {
public:
    CStoreWatch(std::shared_ptr<IStore> pStore, CDocumentTexts& texts, CInputQueue& queue)
        : m_pStore(std::move(pStore)), m_texts(texts), m_queue(queue) {}
    ~CStoreWatch() { Stop(); }
    CStoreWatch(const CStoreWatch&) = delete;
    CStoreWatch& operator=(const CStoreWatch&) = delete;

    /// Reads all of them now, on the calling thread.
    void Look();

    void Start();

    /// Returns when the thread has ended, and lets go of the store.
    void Stop();

private:
    void Run();
    void Look(EDocument eDocument);

    std::shared_ptr<IStore> m_pStore;
    CDocumentTexts& m_texts;
    CInputQueue& m_queue;
    std::mutex m_mutex;
    std::condition_variable m_stopped;
    bool m_bStop = false;  ///< guarded by m_mutex
    std::thread m_thread;
};
