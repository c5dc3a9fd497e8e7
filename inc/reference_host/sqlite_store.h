#pragma once

#include <memory>
#include <string>
#include <vector>

#include "reference_host/store.h"

/// A store in one SQLite file: nothing to start, and a write that was answered with 0 survives a
/// power failure. Answers SQLite's primary result codes and logs each failure with its reason.
/// Several programs may use the file at once, a commit of one being a condition for the others;
/// watchers run on the writing thread and hear of this object's writes only.
///
/// A name is held by a lock on the file that no reader or writer feels. It is never lost, and gone
/// with its process at once, however that ends; a child that the process forked keeps it.
///
/// The file is marked as a store's: a database that another program made, or a later release, is
/// refused with SQLITE_NOTADB and left as it is. A file of the first releases, which has no mark
/// and no versions, is read as it is, each node at version 0, and given both with its first write.
class [[gnu::visibility("default")]] CSqliteStore : public IStore {
public:
    static constexpr unsigned int NUMERIC_BUSY_TIMEOUT_MS = 2000;

    /// Opens the file to read and write it. Its folder must be there; the file itself is created
    /// with the first write and reads as a store without nodes until then. Null on failure, with
    /// the reason in strError and in the log. A call on a file that someone else has locked gives
    /// up after the time-out.
    static std::shared_ptr<CSqliteStore> Open(
        const std::string& strFile, std::string& strError,
        unsigned int uiBusyTimeoutMs = NUMERIC_BUSY_TIMEOUT_MS);

    /// Opens a file that is there to read it alone, also where neither it nor its folder may be
    /// written, and beside those who write it. Changes nothing and leaves no file; a write answers
    /// SQLITE_READONLY. Every call opens the file anew. Where texts may still be in a log beside
    /// the file and the log cannot be read, it is refused: nothing stale is shown.
    static std::shared_ptr<CSqliteStore> OpenReadOnly(
        const std::string& strFile, std::string& strError,
        unsigned int uiBusyTimeoutMs = NUMERIC_BUSY_TIMEOUT_MS);

    /// What is wrong with the file itself, in SQLite's words; empty for a sound one and for one
    /// that cannot be looked at for another reason, as a file of another kind. Reads all of it, and
    /// changes nothing.
    static std::string FindDamage(const std::string& strFile,
                                  unsigned int uiBusyTimeoutMs = NUMERIC_BUSY_TIMEOUT_MS);

    ~CSqliteStore() override;

    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override;
    int Write(const std::string& strPath, const std::string& strText) override;
    int List(const std::string& strPath, std::vector<std::string>& children) override;
    int Commit(const std::vector<CStoreCondition>& conditions, const std::vector<CStoreText>& texts)
        override;
    int Hold(const std::string& strPath, const std::string& strText, const HoldLost& onLost,
             CStoreAnswer& holder) override;
    int Release(const std::string& strPath) override;
    int FindHolder(const std::string& strPath, CStoreAnswer& holder) override;

private:
    struct CState;

    [[gnu::visibility("hidden")]] explicit CSqliteStore(std::unique_ptr<CState> pState);
    [[gnu::visibility("hidden")]] static std::shared_ptr<CSqliteStore> Open(
        std::unique_ptr<CState> pState, std::string & strError);

    std::unique_ptr<CState> m_pState;
};
