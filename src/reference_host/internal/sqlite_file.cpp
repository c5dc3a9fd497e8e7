#include "internal/sqlite_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <filesystem>

namespace {

// In SQLite's manner: the lower eight bits are the primary code.
constexpr int FILE_ABSENT = SQLITE_CANTOPEN | (200 << 8);
constexpr int LOG_UNREADABLE = SQLITE_CANTOPEN | (201 << 8);
constexpr int FILE_FOREIGN = SQLITE_NOTADB | (200 << 8);
constexpr int FILE_NEWER = SQLITE_NOTADB | (201 << 8);

/// "ORVA" in the header of a file that is a store's, and the release of its tables.
constexpr std::int64_t APPLICATION_ID = 0x4f525641;
constexpr std::int64_t TABLE_RELEASE = 1;

constexpr unsigned int LOCK_PAUSE_MS = 10;

constexpr char PSZ_MARKS[] =
    "SELECT (SELECT application_id FROM pragma_application_id),"
    " (SELECT user_version FROM pragma_user_version),"
    " (SELECT group_concat(name) FROM sqlite_schema"
    "  WHERE type = 'table' AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\'),"
    " (SELECT group_concat(name) FROM pragma_table_info('node'))";
constexpr char PSZ_CREATE_TABLE[] =
    "CREATE TABLE node (path TEXT PRIMARY KEY, text TEXT, version INTEGER NOT NULL DEFAULT 0)";
constexpr char PSZ_ADD_VERSIONS[] =
    "ALTER TABLE node ADD COLUMN version INTEGER NOT NULL DEFAULT 0";

enum class ELook { READ_ONLY, WITHOUT_LOG, LEAVING_NO_LOG };

bool IsWritable(const std::string& strPath) {
    return faccessat(AT_FDCWD, strPath.c_str(), W_OK, AT_EACCESS) == 0;
}

std::string FolderOf(const std::string& strFile) {
    const std::string strFolder = std::filesystem::path(strFile).parent_path().string();
    return strFolder.empty() ? "." : strFolder;
}

/// The file as a URI: every byte that could mean something there stands in its hexadecimal form.
std::string UriOf(const std::string& strFile) {
    constexpr char PSZ_DIGITS[] = "0123456789ABCDEF";
    std::string strUri = "file:";
    for (const char c : strFile) {
        const auto uc = static_cast<unsigned char>(c);
        if (std::isalnum(uc) != 0) {
            strUri += c;
        } else {
            strUri += {'%', PSZ_DIGITS[uc >> 4U], PSZ_DIGITS[uc & 15U]};
        }
    }
    return strUri;
}

int Open(const std::string& strName, int iFlags, unsigned int uiBusyTimeoutMs,
         CDatabase& pDatabase) {
    sqlite3* pOpened = nullptr;
    const int iRet =
        sqlite3_open_v2(strName.c_str(), &pOpened, iFlags | SQLITE_OPEN_NOMUTEX, nullptr);
    pDatabase.reset(pOpened);
    if (iRet == SQLITE_OK) {
        sqlite3_extended_result_codes(pOpened, 1);
        sqlite3_busy_timeout(pOpened, static_cast<int>(uiBusyTimeoutMs));
    }
    return iRet;
}

int Look(const std::string& strFile, ELook eLook, unsigned int uiBusyTimeoutMs,
         CDatabase& pDatabase, ESqliteTable& eTable) {
    int iRet = SQLITE_OK;
    switch (eLook) {
        case ELook::READ_ONLY:
            iRet = Open(strFile, SQLITE_OPEN_READONLY, uiBusyTimeoutMs, pDatabase);
            break;
        case ELook::WITHOUT_LOG:
            iRet = Open(UriOf(strFile) + "?immutable=1", SQLITE_OPEN_READONLY | SQLITE_OPEN_URI,
                        uiBusyTimeoutMs, pDatabase);
            break;
        case ELook::LEAVING_NO_LOG:
            iRet = Open(strFile, SQLITE_OPEN_READWRITE, uiBusyTimeoutMs, pDatabase);
            break;
    }
    return iRet == SQLITE_OK ? FindSqliteTable(pDatabase.get(), eTable) : iRet;
}

/// Only who may write takes the log's files away again that reading brings forth; where neither
/// that nor a log is possible, the file is all there is.
ELook ChooseLook(const std::string& strFile) {
    if (IsSqliteFileThere(strFile + "-wal") || IsSqliteFileThere(strFile + "-journal")) {
        return ELook::READ_ONLY;
    }
    return IsWritable(strFile) && IsWritable(FolderOf(strFile)) ? ELook::LEAVING_NO_LOG
                                                                : ELook::WITHOUT_LOG;
}

bool HasContent(const std::string& strFile) {
    struct stat info {};
    return stat(strFile.c_str(), &info) == 0 && info.st_size > 0;
}

}  // namespace

CRun::CRun(sqlite3* pDatabase, const char* pszSql) {
    sqlite3_stmt* pStatement = nullptr;
    m_iResult = sqlite3_prepare_v2(pDatabase, pszSql, -1, &pStatement, nullptr);
    m_pStatement.reset(pStatement);
}

CRun& CRun::Bind(int iPosition, const std::string& strValue) {
    if (m_iResult == SQLITE_OK) {
        m_iResult = sqlite3_bind_text64(m_pStatement.get(), iPosition, strValue.data(),
                                        strValue.size(), SQLITE_STATIC, SQLITE_UTF8);
    }
    return *this;
}

int CRun::Step() {
    return m_iResult == SQLITE_OK ? sqlite3_step(m_pStatement.get()) : m_iResult;
}

int CRun::Execute() {
    const int iRet = Step();
    return iRet == SQLITE_DONE ? SQLITE_OK : iRet;
}

int CRun::GetRow() {
    const int iRet = Step();
    return iRet == SQLITE_ROW ? SQLITE_OK : iRet;
}

bool CRun::IsNull(int iColumn) const {
    return sqlite3_column_type(m_pStatement.get(), iColumn) == SQLITE_NULL;
}

std::optional<std::string> CRun::GetText(int iColumn) const {
    if (IsNull(iColumn)) {
        return std::nullopt;
    }
    const void* pText = sqlite3_column_blob(m_pStatement.get(), iColumn);
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(m_pStatement.get(), iColumn));
    return length == 0 ? std::string() : std::string(static_cast<const char*>(pText), length);
}

std::int64_t CRun::GetNumber(int iColumn) const {
    return sqlite3_column_int64(m_pStatement.get(), iColumn);
}

int OpenSqliteToLook(const std::string& strFile, unsigned int uiBusyTimeoutMs, CDatabase& pDatabase,
                     ESqliteTable& eTable) {
    if (!IsSqliteFileThere(strFile)) {
        return FILE_ABSENT;
    }
    std::error_code error;
    if (!std::filesystem::is_regular_file(strFile, error)) {
        return SQLITE_CANTOPEN;
    }
    const ELook eLook = ChooseLook(strFile);
    const int iRet = Look(strFile, eLook, uiBusyTimeoutMs, pDatabase, eTable);
    const int iPrimary = iRet & 0xff;
    if (eLook != ELook::READ_ONLY || (iPrimary != SQLITE_CANTOPEN && iPrimary != SQLITE_READONLY)) {
        return iRet;
    }
    if (HasContent(strFile + "-wal") || HasContent(strFile + "-journal")) {
        return LOG_UNREADABLE;
    }
    return Look(strFile, ELook::WITHOUT_LOG, uiBusyTimeoutMs, pDatabase, eTable);
}

int OpenSqliteToWrite(const std::string& strFile, unsigned int uiBusyTimeoutMs,
                      CDatabase& pDatabase) {
    const int iRet =
        Open(strFile, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, uiBusyTimeoutMs, pDatabase);
    if (iRet != SQLITE_OK) {
        return iRet;
    }
    // SQLite opens a file that may not be written for reading, and says so only on a write.
    if (sqlite3_db_readonly(pDatabase.get(), "main") != 0) {
        return SQLITE_READONLY;
    }
    return sqlite3_exec(pDatabase.get(), "PRAGMA synchronous = FULL", nullptr, nullptr, nullptr);
}

int WriteSqliteAhead(sqlite3* pDatabase, unsigned int uiBusyTimeoutMs) {
    // SQLite itself does not wait for a lock that is in the way of this.
    for (unsigned int uiWaitedMs = 0;; uiWaitedMs += LOCK_PAUSE_MS) {
        const int iRet =
            sqlite3_exec(pDatabase, "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr);
        if ((iRet & 0xff) != SQLITE_BUSY || uiWaitedMs >= uiBusyTimeoutMs) {
            return iRet;
        }
        sqlite3_sleep(static_cast<int>(LOCK_PAUSE_MS));
    }
}

int FindSqliteTable(sqlite3* pDatabase, ESqliteTable& eTable) {
    CRun run(pDatabase, PSZ_MARKS);
    const int iRet = run.GetRow();
    if (iRet != SQLITE_OK) {
        return iRet;
    }
    const std::int64_t iApplication = run.GetNumber(0);
    const std::int64_t iRelease = run.GetNumber(1);
    const std::string strTables = run.GetText(2).value_or("");
    const std::string strColumns = run.GetText(3).value_or("");
    if (iApplication == APPLICATION_ID && iRelease > TABLE_RELEASE) {
        return FILE_NEWER;
    }
    if (iApplication == APPLICATION_ID) {
        eTable = ESqliteTable::WHOLE;
        return strColumns == "path,text,version" ? SQLITE_OK : SQLITE_CORRUPT;
    }
    if (iApplication != 0 || iRelease != 0) {
        return FILE_FOREIGN;
    }
    eTable = strTables.empty() ? ESqliteTable::NONE : ESqliteTable::WITHOUT_VERSIONS;
    return strTables.empty() || (strTables == "node" && strColumns == "path,text") ? SQLITE_OK
                                                                                   : FILE_FOREIGN;
}

int CompleteSqliteFile(sqlite3* pDatabase) {
    ESqliteTable eTable = ESqliteTable::NONE;
    const int iRet = FindSqliteTable(pDatabase, eTable);
    if (iRet != SQLITE_OK || eTable == ESqliteTable::WHOLE) {
        return iRet;
    }
    const std::string strSql =
        std::string(eTable == ESqliteTable::NONE ? PSZ_CREATE_TABLE : PSZ_ADD_VERSIONS) +
        "; PRAGMA application_id = " + std::to_string(APPLICATION_ID) +
        "; PRAGMA user_version = " + std::to_string(TABLE_RELEASE);
    return sqlite3_exec(pDatabase, strSql.c_str(), nullptr, nullptr, nullptr);
}

bool IsSqliteFileThere(const std::string& strFile) {
    std::error_code error;
    return std::filesystem::symlink_status(strFile, error).type() !=
           std::filesystem::file_type::not_found;
}

bool IsSqliteFileGone(sqlite3* pDatabase) {
    int iMoved = 0;
    sqlite3_file_control(pDatabase, "main", SQLITE_FCNTL_HAS_MOVED, &iMoved);
    return iMoved != 0;
}

int CheckSqliteFolder(const std::string& strFile) {
    std::error_code error;
    const std::string strFolder = FolderOf(strFile);
    return std::filesystem::is_directory(strFolder, error) && IsWritable(strFolder)
               ? SQLITE_OK
               : SQLITE_CANTOPEN;
}

bool IsLogInTheWay(int iCode) {
    return iCode == LOG_UNREADABLE;
}

std::string ReasonOfSqlite(int iCode) {
    switch (iCode) {
        case FILE_ABSENT:
            return "no such file";
        case LOG_UNREADABLE:
            return "its newest texts are in a log beside it that cannot be read";
        case FILE_FOREIGN:
            return "is a database of another program";
        case FILE_NEWER:
            return "is a store of a later release";
        default:
            return sqlite3_errstr(iCode);
    }
}
