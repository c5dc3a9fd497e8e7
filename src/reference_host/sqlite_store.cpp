#include "reference_host/sqlite_store.h"

#include <algorithm>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <utility>

#include "common_service/tarn_def.h"
#include "internal/sqlite_file.h"
#include "internal/sqlite_hold.h"
#include "internal/store_tree.h"
#include "operation_log/operation_log.h"

using namespace operation_log;

namespace {

constexpr char PSZ_OPEN[] = "open sqlite store";
constexpr char PSZ_READ[] = "read sqlite store";
constexpr char PSZ_WRITE[] = "write sqlite store";
constexpr char PSZ_COMMIT[] = "commit to sqlite store";
constexpr char PSZ_HOLD[] = "hold name in sqlite store";

/// Between two looks for the text of a name that was taken at this moment.
constexpr unsigned int NUMERIC_LOOK_PAUSE_MS = 5;

// Where the table has no versions yet, the name is that of the outer query's column.
constexpr char PSZ_SELECT[] =
    "SELECT (SELECT version FROM node WHERE path = ?1), (SELECT text FROM node WHERE path = ?1)"
    " FROM (SELECT 0 AS version)";
// "0" is the character after "/".
constexpr char PSZ_SELECT_BELOW[] =
    "SELECT path FROM node WHERE path > ?1 || '/' AND path < ?1 || '0'";
constexpr char PSZ_CREATE[] = "INSERT OR IGNORE INTO node (path) VALUES (?1)";
constexpr char PSZ_UPDATE[] = "UPDATE node SET text = ?2, version = version + 1 WHERE path = ?1";

int PrimaryCode(int iCode) {
    return iCode & 0xff;
}

int Execute(sqlite3* pDatabase, const char* pszSql) {
    return sqlite3_exec(pDatabase, pszSql, nullptr, nullptr, nullptr);
}

/// Rolls back unless it was committed, so that a failure leaves the store unchanged.
class CTransaction {
public:
    explicit CTransaction(sqlite3* pDatabase) : m_pDatabase(pDatabase) {}

    ~CTransaction() {
        if (sqlite3_get_autocommit(m_pDatabase) == 0) {
            Execute(m_pDatabase, "ROLLBACK");
        }
    }

    CTransaction(const CTransaction&) = delete;
    CTransaction& operator=(const CTransaction&) = delete;

    int Begin() { return Execute(m_pDatabase, "BEGIN IMMEDIATE"); }
    int Commit() { return Execute(m_pDatabase, "COMMIT"); }

private:
    sqlite3* m_pDatabase;
};

int ReadNode(sqlite3* pDatabase, const std::string& strPath, CStoreAnswer& answer) {
    CRun run(pDatabase, PSZ_SELECT);
    const int iRet = run.Bind(1, strPath).GetRow();
    if (iRet == SQLITE_OK) {
        answer.bExists = !run.IsNull(0);
        answer.text = run.GetText(1);
        answer.iVersion = answer.bExists ? run.GetNumber(0) : STORE_VERSION_ABSENT;
    }
    return iRet;
}

int ReadNamesBelow(sqlite3* pDatabase, const std::string& strPath, std::set<std::string>& setName) {
    const std::string strPrefix = strPath == "/" ? "" : strPath;
    CRun run(pDatabase, PSZ_SELECT_BELOW);
    run.Bind(1, strPrefix);
    int iRet = run.Step();
    for (; iRet == SQLITE_ROW; iRet = run.Step()) {
        if (auto name = GetChildName(strPath, run.GetText(0).value_or(""))) {
            setName.insert(std::move(*name));
        }
    }
    return iRet == SQLITE_DONE ? SQLITE_OK : iRet;
}

}  // namespace

struct __attribute__((visibility("hidden"))) CSqliteStore::CState {
    CState(std::string strFileName, unsigned int uiTimeoutMs, bool bOnlyReads)
        : strFile(std::move(strFileName)), uiBusyTimeoutMs(uiTimeoutMs), bReadOnly(bOnlyReads) {}

    int Look(const std::function<int(sqlite3*)>& look);
    int Connect(bool bCreate);
    int Change(const std::vector<CStoreCondition>& conditions,
               const std::vector<CStoreText>& texts);
    int Write(const std::vector<CStoreCondition>& conditions, const std::vector<CStoreText>& texts);
    int WriteNode(const std::string& strPath, const std::string& strText);
    int CreateNode(const std::string& strPath);

    int ReadOne(const std::string& strPath, CStoreAnswer& answer);
    int TakeName(const std::string& strPath, CSqliteHold& hold);
    int Hold(const std::string& strPath, const std::string& strText, CStoreAnswer& holder);
    int FindHolder(const std::string& strPath, CStoreAnswer& holder);
    bool IsTakenAway();

    /// Nothing is there to write to, or something else than what was opened.
    bool IsGone() const {
        return pDatabase != nullptr ? IsSqliteFileGone(pDatabase.get())
                                    : !IsSqliteFileThere(strFile);
    }

    std::string Reason(int iCode) const { return strFile + ": " + ReasonOfSqlite(iCode); }

    const std::string strFile;
    const unsigned int uiBusyTimeoutMs;
    const bool bReadOnly;
    std::mutex mutex;                            ///< guards everything below
    std::map<std::string, CSqliteHold> mapHold;  ///< names; they go behind the database
    CDatabase pDatabase;
    bool bHasTable = false;
    bool bComplete = false;  ///< the file has all that the first write gives it
    std::vector<std::pair<std::string, bool>> written;  ///< and whether it was created
    CWatchTable watches;
};

/// Nothing is there to be looked at before the first write; SQLITE_OK then, too. Who only reads
/// opens the file each time: how it can be opened depends on who else is at it.
int CSqliteStore::CState::Look(const std::function<int(sqlite3*)>& look) {
    ESqliteTable eTable = ESqliteTable::NONE;
    if (bReadOnly) {
        CDatabase pOwn;
        const int iRet = OpenSqliteToLook(strFile, uiBusyTimeoutMs, pOwn, eTable);
        return iRet != SQLITE_OK || eTable == ESqliteTable::NONE ? iRet : look(pOwn.get());
    }
    int iRet = Connect(false);
    if (iRet != SQLITE_OK || pDatabase == nullptr) {
        return iRet;
    }
    if (!bHasTable) {
        iRet = FindSqliteTable(pDatabase.get(), eTable);
        bHasTable = eTable != ESqliteTable::NONE;
    }
    return iRet == SQLITE_OK && bHasTable ? look(pDatabase.get()) : iRet;
}

/// Without a database, but SQLITE_OK, where there is no file and none to be created.
int CSqliteStore::CState::Connect(bool bCreate) {
    if (pDatabase != nullptr) {
        return SQLITE_OK;
    }
    if (IsSqliteFileThere(strFile)) {
        CDatabase pLooked;
        ESqliteTable eTable = ESqliteTable::NONE;
        const int iRet = OpenSqliteToLook(strFile, uiBusyTimeoutMs, pLooked, eTable);
        // A writer that was killed leaves a log that only the next writer can take in.
        if (iRet != SQLITE_OK && !IsLogInTheWay(iRet)) {
            return iRet;
        }
    } else if (!bCreate) {
        return CheckSqliteFolder(strFile);
    }
    CDatabase pOpened;
    ESqliteTable eTable = ESqliteTable::NONE;
    int iRet = OpenSqliteToWrite(strFile, uiBusyTimeoutMs, pOpened);
    iRet = iRet == SQLITE_OK ? FindSqliteTable(pOpened.get(), eTable) : iRet;
    if (iRet == SQLITE_OK) {
        pDatabase = std::move(pOpened);
    }
    return iRet;
}

int CSqliteStore::CState::Write(const std::vector<CStoreCondition>& conditions,
                                const std::vector<CStoreText>& texts) {
    const auto iWanted = std::find_if(conditions.begin(), conditions.end(), [](const auto& each) {
        return each.iVersion != STORE_VERSION_ABSENT;
    });
    if (iWanted != conditions.end() && IsGone()) {
        return STORE_CONDITION_FAILED;
    }
    int iRet = Connect(true);
    if (iRet == SQLITE_OK && !bComplete) {
        iRet = WriteSqliteAhead(pDatabase.get(), uiBusyTimeoutMs);
    }
    if (iRet != SQLITE_OK) {
        return iRet;
    }
    CTransaction transaction(pDatabase.get());
    iRet = transaction.Begin();
    if (iRet == SQLITE_OK && !bComplete) {
        iRet = CompleteSqliteFile(pDatabase.get());
    }
    for (auto it = conditions.begin(); iRet == SQLITE_OK && it != conditions.end(); ++it) {
        CStoreAnswer answer;
        iRet = ReadNode(pDatabase.get(), it->strPath, answer);
        if (iRet == SQLITE_OK && answer.iVersion != it->iVersion) {
            return STORE_CONDITION_FAILED;
        }
    }
    for (auto it = texts.begin(); iRet == SQLITE_OK && it != texts.end(); ++it) {
        iRet = WriteNode(it->strPath, it->strText);
    }
    iRet = iRet == SQLITE_OK ? transaction.Commit() : iRet;
    if (iRet == SQLITE_OK) {
        bHasTable = true;
        bComplete = true;
    }
    return iRet;
}

int CSqliteStore::CState::WriteNode(const std::string& strPath, const std::string& strText) {
    for (const std::string& strParent : GetParentPaths(strPath)) {
        const int iRet = CreateNode(strParent);
        if (iRet != SQLITE_OK) {
            return iRet;
        }
    }
    const std::size_t count = written.size();
    const int iRet = CreateNode(strPath);
    if (written.size() == count) {
        written.emplace_back(strPath, false);
    }
    return iRet == SQLITE_OK
               ? CRun(pDatabase.get(), PSZ_UPDATE).Bind(1, strPath).Bind(2, strText).Execute()
               : iRet;
}

int CSqliteStore::CState::CreateNode(const std::string& strPath) {
    const int iRet = CRun(pDatabase.get(), PSZ_CREATE).Bind(1, strPath).Execute();
    if (iRet == SQLITE_OK && sqlite3_changes(pDatabase.get()) != 0) {
        written.emplace_back(strPath, true);
    }
    return iRet;
}

int CSqliteStore::CState::Change(const std::vector<CStoreCondition>& conditions,
                                 const std::vector<CStoreText>& texts) {
    CNodeEvents events;
    {
        const std::lock_guard<std::mutex> guard(mutex);
        written.clear();
        const int iRet = bReadOnly ? SQLITE_READONLY : Write(conditions, texts);
        if (iRet != SQLITE_OK) {
            return iRet;
        }
        for (const auto& [strPath, bCreated] : written) {
            if (bCreated) {
                events.AddCreated(strPath, watches);
            } else {
                events.AddChanged(strPath, watches);
            }
        }
    }
    events.Fire();
    return SQLITE_OK;
}

int CSqliteStore::CState::ReadOne(const std::string& strPath, CStoreAnswer& answer) {
    const std::lock_guard<std::mutex> guard(mutex);
    return Look([&](sqlite3* pOpened) { return ReadNode(pOpened, strPath, answer); });
}

/// Makes the file, if it is not there, to have something to lock.
int CSqliteStore::CState::TakeName(const std::string& strPath, CSqliteHold& hold) {
    const std::lock_guard<std::mutex> guard(mutex);
    const int iRet = bReadOnly ? SQLITE_READONLY : Connect(true);
    return iRet == SQLITE_OK ? hold.Take(strFile, strPath) : iRet;
}

int CSqliteStore::CState::Hold(const std::string& strPath, const std::string& strText,
                               CStoreAnswer& holder) {
    CStoreAnswer found;
    CSqliteHold hold;
    int iRet = TakeName(strPath, hold);
    while (iRet == STORE_NAME_HELD) {
        iRet = FindHolder(strPath, found);
        if (iRet == SQLITE_OK && found.bExists) {
            holder = std::move(found);
            return STORE_NAME_HELD;
        }
        iRet = iRet == SQLITE_OK ? TakeName(strPath, hold) : iRet;  // it was let go of meanwhile
    }
    iRet = iRet == SQLITE_OK ? Change({}, {{strPath, strText}}) : iRet;
    iRet = iRet == SQLITE_OK ? ReadOne(strPath, found) : iRet;
    iRet = iRet == SQLITE_OK ? hold.Tell() : iRet;
    if (iRet == SQLITE_OK) {
        const std::lock_guard<std::mutex> guard(mutex);
        mapHold.emplace(strPath, std::move(hold));
        holder = std::move(found);
    }
    return iRet;
}

/// Whether the file was opened and nothing has its name any more.
bool CSqliteStore::CState::IsTakenAway() {
    const std::lock_guard<std::mutex> guard(mutex);
    return pDatabase != nullptr && !IsSqliteFileThere(strFile);
}

/// The text of a name that is held but not told yet is soon there, unless its holder hangs.
int CSqliteStore::CState::FindHolder(const std::string& strPath, CStoreAnswer& holder) {
    for (unsigned int uiWaitedMs = 0;; uiWaitedMs += NUMERIC_LOOK_PAUSE_MS) {
        EHeld eHeld = EHeld::NO;
        int iRet = IsTakenAway() ? SQLITE_CANTOPEN : CSqliteHold::Look(strFile, strPath, eHeld);
        if (iRet == SQLITE_OK && eHeld == EHeld::UNTOLD && uiWaitedMs < uiBusyTimeoutMs) {
            sqlite3_sleep(static_cast<int>(NUMERIC_LOOK_PAUSE_MS));
            continue;
        }
        CStoreAnswer found;
        if (iRet == SQLITE_OK && eHeld == EHeld::TOLD) {
            iRet = ReadOne(strPath, found);
        }
        if (iRet == SQLITE_OK) {
            found.bExists = eHeld != EHeld::NO;
            holder = std::move(found);
        }
        return iRet;
    }
}

CSqliteStore::CSqliteStore(std::unique_ptr<CState> pState) : m_pState(std::move(pState)) {}

CSqliteStore::~CSqliteStore() = default;

std::shared_ptr<CSqliteStore> CSqliteStore::Open(const std::string& strFile, std::string& strError,
                                                 unsigned int uiBusyTimeoutMs) {
    return Open(std::make_unique<CState>(strFile, uiBusyTimeoutMs, false), strError);
}

std::shared_ptr<CSqliteStore> CSqliteStore::OpenReadOnly(const std::string& strFile,
                                                         std::string& strError,
                                                         unsigned int uiBusyTimeoutMs) {
    return Open(std::make_unique<CState>(strFile, uiBusyTimeoutMs, true), strError);
}

std::shared_ptr<CSqliteStore> CSqliteStore::Open(std::unique_ptr<CState> pState,
                                                 std::string& strError) {
    const auto nothing = [](sqlite3*) { return SQLITE_OK; };
    const int iRet = pState->bReadOnly ? pState->Look(nothing) : pState->Connect(false);
    if (iRet != SQLITE_OK) {
        strError = pState->Reason(iRet);
        LogFailure(PSZ_OPEN, PrimaryCode(iRet), "%s", strError.c_str());
        return nullptr;
    }
    return std::shared_ptr<CSqliteStore>(new CSqliteStore(std::move(pState)));
}

int CSqliteStore::Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    CStoreAnswer found;
    const int iRet =
        m_pState->Look([&](sqlite3* pDatabase) { return ReadNode(pDatabase, strPath, found); });
    if (iRet != SQLITE_OK) {
        return LogFailure(PSZ_READ, PrimaryCode(iRet), "%s", m_pState->Reason(iRet).c_str());
    }
    m_pState->watches.Set(strPath, pWatcher);
    answer = std::move(found);
    return 0;
}

int CSqliteStore::List(const std::string& strPath, std::vector<std::string>& children) {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    CStoreAnswer node;
    std::set<std::string> setName;
    const int iRet = m_pState->Look([&](sqlite3* pDatabase) {
        const int iNodeRet = ReadNode(pDatabase, strPath, node);
        return iNodeRet == SQLITE_OK ? ReadNamesBelow(pDatabase, strPath, setName) : iNodeRet;
    });
    if (iRet != SQLITE_OK) {
        return LogFailure(PSZ_READ, PrimaryCode(iRet), "%s", m_pState->Reason(iRet).c_str());
    }
    if (!node.bExists && setName.empty() && strPath != "/") {
        return STORE_NODE_ABSENT;
    }
    children.assign(setName.begin(), setName.end());
    return 0;
}

int CSqliteStore::Write(const std::string& strPath, const std::string& strText) {
    const int iRet = m_pState->Change({}, {{strPath, strText}});
    if (iRet != SQLITE_OK) {
        LogFailure(PSZ_WRITE, PrimaryCode(iRet), "%s", m_pState->Reason(iRet).c_str());
    }
    return PrimaryCode(iRet);
}

int CSqliteStore::Commit(const std::vector<CStoreCondition>& conditions,
                         const std::vector<CStoreText>& texts) {
    if (NamesANodeTwice(texts)) {
        return ORVA_PARA_INVALID;
    }
    const int iRet = m_pState->Change(conditions, texts);
    if (iRet == STORE_CONDITION_FAILED) {
        return iRet;
    }
    if (iRet != SQLITE_OK) {
        LogFailure(PSZ_COMMIT, PrimaryCode(iRet), "%s", m_pState->Reason(iRet).c_str());
    }
    return PrimaryCode(iRet);
}

/// A hold on a file is never lost.
int CSqliteStore::Hold(const std::string& strPath, const std::string& strText, const HoldLost&,
                       CStoreAnswer& holder) {
    const int iRet = m_pState->Hold(strPath, strText, holder);
    if (iRet == STORE_NAME_HELD) {
        return iRet;
    }
    if (iRet != SQLITE_OK) {
        LogFailure(PSZ_HOLD, PrimaryCode(iRet), "%s", m_pState->Reason(iRet).c_str());
    }
    return PrimaryCode(iRet);
}

int CSqliteStore::Release(const std::string& strPath) {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    m_pState->mapHold.erase(strPath);
    return 0;
}

int CSqliteStore::FindHolder(const std::string& strPath, CStoreAnswer& holder) {
    const int iRet = m_pState->FindHolder(strPath, holder);
    if (iRet != SQLITE_OK) {
        LogFailure(PSZ_HOLD, PrimaryCode(iRet), "%s", m_pState->Reason(iRet).c_str());
    }
    return PrimaryCode(iRet);
}

std::string CSqliteStore::FindDamage(const std::string& strFile, unsigned int uiBusyTimeoutMs) {
    CState state(strFile, uiBusyTimeoutMs, true);
    std::string strFound = "ok";
    const int iRet = state.Look([&strFound](sqlite3* pDatabase) {
        CRun run(pDatabase, "PRAGMA integrity_check(1)");
        const int iRowRet = run.GetRow();
        strFound = iRowRet == SQLITE_OK ? run.GetText(0).value_or("") : strFound;
        return iRowRet;
    });
    if (PrimaryCode(iRet) == SQLITE_CORRUPT) {
        return ReasonOfSqlite(iRet);
    }
    // Behind a line that names the database.
    return strFound == "ok" ? "" : strFound.substr(strFound.rfind('\n') + 1);
}
