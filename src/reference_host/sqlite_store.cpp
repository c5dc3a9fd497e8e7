#include "reference_host/sqlite_store.h"

#include <sqlite3.h>

#include <mutex>
#include <utility>
#include <vector>

#include "internal/log.h"
#include "internal/store_tree.h"

namespace {

constexpr char PSZ_OPEN[] = "open sqlite store";
constexpr char PSZ_READ[] = "read sqlite store";
constexpr char PSZ_WRITE[] = "write sqlite store";

constexpr char PSZ_PREPARE_FILE[] =
    "PRAGMA journal_mode = WAL;"
    "PRAGMA synchronous = FULL;"
    "CREATE TABLE IF NOT EXISTS node (path TEXT PRIMARY KEY, text TEXT);";
constexpr char PSZ_SELECT[] = "SELECT text FROM node WHERE path = ?1";
constexpr char PSZ_CREATE[] = "INSERT OR IGNORE INTO node (path) VALUES (?1)";
constexpr char PSZ_UPDATE[] = "UPDATE node SET text = ?2 WHERE path = ?1";

using CDatabase = std::unique_ptr<sqlite3, decltype(&sqlite3_close_v2)>;
using CStatement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

int PrimaryCode(int iCode) {
    return iCode & 0xff;
}

/// One run of a prepared statement; the parameters live as long as the run.
class CRun {
public:
    CRun(const CStatement& pStatement, const std::string& strPath)
        : m_pStatement(pStatement.get()) {
        Bind(1, strPath);
    }

    ~CRun() {
        sqlite3_reset(m_pStatement);
        sqlite3_clear_bindings(m_pStatement);
    }

    CRun(const CRun&) = delete;
    CRun& operator=(const CRun&) = delete;

    void Bind(int iPosition, const std::string& strValue) {
        const int iRet = sqlite3_bind_text64(m_pStatement, iPosition, strValue.data(),
                                             strValue.size(), SQLITE_STATIC, SQLITE_UTF8);
        m_iBindResult = m_iBindResult == SQLITE_OK ? iRet : m_iBindResult;
    }

    int Step() { return m_iBindResult == SQLITE_OK ? sqlite3_step(m_pStatement) : m_iBindResult; }

    /// SQLITE_OK for a statement that runs to its end.
    int Execute() {
        const int iRet = Step();
        return iRet == SQLITE_DONE ? SQLITE_OK : iRet;
    }

    std::optional<std::string> GetText() const {
        const void* pText = sqlite3_column_blob(m_pStatement, 0);
        const auto length = static_cast<std::size_t>(sqlite3_column_bytes(m_pStatement, 0));
        if (sqlite3_column_type(m_pStatement, 0) == SQLITE_NULL) {
            return std::nullopt;
        }
        return length == 0 ? std::string() : std::string(static_cast<const char*>(pText), length);
    }

private:
    sqlite3_stmt* m_pStatement;
    int m_iBindResult = SQLITE_OK;
};

/// Rolls back unless it was committed, so that a failure leaves the store unchanged.
class CTransaction {
public:
    explicit CTransaction(sqlite3* pDatabase) : m_pDatabase(pDatabase) {}

    ~CTransaction() {
        if (sqlite3_get_autocommit(m_pDatabase) == 0) {
            Execute("ROLLBACK");
        }
    }

    CTransaction(const CTransaction&) = delete;
    CTransaction& operator=(const CTransaction&) = delete;

    int Begin() { return Execute("BEGIN IMMEDIATE"); }
    int Commit() { return Execute("COMMIT"); }

private:
    int Execute(const char* pszSql) {
        return sqlite3_exec(m_pDatabase, pszSql, nullptr, nullptr, nullptr);
    }

    sqlite3* m_pDatabase;
};

}  // namespace

struct CSqliteStore::CState {
    explicit CState(std::string strFileName) : strFile(std::move(strFileName)) {}

    int Prepare(unsigned int uiBusyTimeoutMs) {
        sqlite3* pOpened = nullptr;
        const int iFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
        int iRet = sqlite3_open_v2(strFile.c_str(), &pOpened, iFlags, nullptr);
        pDatabase.reset(pOpened);
        if (iRet != SQLITE_OK) {
            return iRet;
        }
        // SQLite opens a file that may not be written for reading, and says so only on a write.
        if (sqlite3_db_readonly(pOpened, "main") != 0) {
            return SQLITE_READONLY;
        }
        sqlite3_busy_timeout(pOpened, static_cast<int>(uiBusyTimeoutMs));
        iRet = sqlite3_exec(pOpened, PSZ_PREPARE_FILE, nullptr, nullptr, nullptr);
        const std::pair<CStatement*, const char*> statements[] = {
            {&pSelect, PSZ_SELECT}, {&pCreate, PSZ_CREATE}, {&pUpdate, PSZ_UPDATE}};
        for (const auto& [pStatement, pszSql] : statements) {
            sqlite3_stmt* pPrepared = nullptr;
            if (iRet == SQLITE_OK) {
                iRet = sqlite3_prepare_v3(pOpened, pszSql, -1, SQLITE_PREPARE_PERSISTENT,
                                          &pPrepared, nullptr);
            }
            pStatement->reset(pPrepared);
        }
        return iRet;
    }

    /// On success, created holds the nodes that were missing, the written one last.
    int Write(const std::string& strPath, const std::string& strText,
              std::vector<std::string>& created) {
        CTransaction transaction(pDatabase.get());
        int iRet = transaction.Begin();
        std::vector<std::string> paths = GetParentPaths(strPath);
        paths.push_back(strPath);
        for (const std::string& strMissing : paths) {
            if (iRet != SQLITE_OK) {
                return iRet;
            }
            iRet = CRun(pCreate, strMissing).Execute();
            if (sqlite3_changes(pDatabase.get()) != 0) {
                created.push_back(strMissing);
            }
        }
        if (iRet != SQLITE_OK) {
            return iRet;
        }
        CRun run(pUpdate, strPath);
        run.Bind(2, strText);
        iRet = run.Execute();
        return iRet == SQLITE_OK ? transaction.Commit() : iRet;
    }

    /// From the code: the connection's own message is that of its last call, a rollback perhaps.
    std::string Reason(int iCode) const { return strFile + ": " + sqlite3_errstr(iCode); }

    const std::string strFile;
    std::mutex mutex;  ///< guards everything below
    CDatabase pDatabase{nullptr, &sqlite3_close_v2};
    CStatement pSelect{nullptr, &sqlite3_finalize};
    CStatement pCreate{nullptr, &sqlite3_finalize};
    CStatement pUpdate{nullptr, &sqlite3_finalize};
    CWatchTable watches;
};

CSqliteStore::CSqliteStore(std::unique_ptr<CState> pState) : m_pState(std::move(pState)) {}

CSqliteStore::~CSqliteStore() = default;

std::shared_ptr<CSqliteStore> CSqliteStore::Open(const std::string& strFile, std::string& strError,
                                                 unsigned int uiBusyTimeoutMs) {
    auto pState = std::make_unique<CState>(strFile);
    const int iRet = pState->Prepare(uiBusyTimeoutMs);
    if (iRet != SQLITE_OK) {
        strError = pState->Reason(iRet);
        LogError(PSZ_OPEN, PrimaryCode(iRet), strError);
        return nullptr;
    }
    return std::shared_ptr<CSqliteStore>(new CSqliteStore(std::move(pState)));
}

int CSqliteStore::Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    CRun run(m_pState->pSelect, strPath);
    const int iRet = run.Step();
    if (iRet != SQLITE_ROW && iRet != SQLITE_DONE) {
        LogError(PSZ_READ, PrimaryCode(iRet), m_pState->Reason(iRet));
        return PrimaryCode(iRet);
    }
    m_pState->watches.Set(strPath, pWatcher);
    answer = iRet == SQLITE_ROW ? CStoreAnswer{true, run.GetText()} : CStoreAnswer{};
    return 0;
}

int CSqliteStore::Write(const std::string& strPath, const std::string& strText) {
    CNodeEvents events;
    {
        const std::lock_guard<std::mutex> guard(m_pState->mutex);
        std::vector<std::string> created;
        const int iRet = m_pState->Write(strPath, strText, created);
        if (iRet != SQLITE_OK) {
            LogError(PSZ_WRITE, PrimaryCode(iRet), m_pState->Reason(iRet));
            return PrimaryCode(iRet);
        }
        for (const std::string& strCreated : created) {
            events.AddCreated(strCreated, m_pState->watches);
        }
        if (created.empty() || created.back() != strPath) {
            events.AddChanged(strPath, m_pState->watches);
        }
    }
    events.Fire();
    return 0;
}
