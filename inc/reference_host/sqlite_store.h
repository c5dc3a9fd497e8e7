#pragma once

#include <memory>
#include <string>

#include "reference_host/store.h"

/// A store in one SQLite file: nothing to start, and a write that was answered with 0 survives a
/// power failure. Answers SQLite's primary result codes and logs each failure with its reason.
/// Watchers run on the writing thread and hear of this object's writes only: the file belongs to
/// one process.
class [[gnu::visibility("default")]] CSqliteStore : public IStore {
public:
    static constexpr unsigned int NUMERIC_BUSY_TIMEOUT_MS = 2000;

    /// Opens the file, creating it where it is missing; its folder must be there. Null on failure,
    /// with the reason in strError and in the log. A call on a file that someone else has locked
    /// gives up after the time-out.
    static std::shared_ptr<CSqliteStore> Open(
        const std::string& strFile, std::string& strError,
        unsigned int uiBusyTimeoutMs = NUMERIC_BUSY_TIMEOUT_MS);

    ~CSqliteStore() override;

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override;
    int Write(const std::string& strPath, const std::string& strText) override;

private:
    struct CState;

    [[gnu::visibility("hidden")]] explicit CSqliteStore(std::unique_ptr<CState> pState);

    std::unique_ptr<CState> m_pState;
};
