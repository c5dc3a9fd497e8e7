#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

struct CCloseDatabase {
    void operator()(sqlite3* pDatabase) const { sqlite3_close_v2(pDatabase); }
};
struct CFinalizeStatement {
    void operator()(sqlite3_stmt* pStatement) const { sqlite3_finalize(pStatement); }
};
using CDatabase = std::unique_ptr<sqlite3, CCloseDatabase>;

/// One run of a statement. A failure to prepare or to bind is that of the first step.
class CRun {
public:
    CRun(sqlite3* pDatabase, const char* pszSql);

    /// The parameter lives as long as the run.
    CRun& Bind(int iPosition, const std::string& strValue);

    /// SQLITE_ROW, SQLITE_DONE or a code.
    int Step();

    /// SQLITE_OK for a statement that runs to its end.
    int Execute();

    /// SQLITE_OK for a statement that has a row, the only one or the first.
    int GetRow();

    bool IsNull(int iColumn) const;
    std::optional<std::string> GetText(int iColumn) const;
    std::int64_t GetNumber(int iColumn) const;

private:
    std::unique_ptr<sqlite3_stmt, CFinalizeStatement> m_pStatement;
    int m_iResult = SQLITE_OK;
};

/// What a file has of a store's table. The name stands for what is missing in a file of the first
/// releases, whose nodes are at version 0.
enum class ESqliteTable { NONE, WITHOUT_VERSIONS, WHOLE };

/// Opens a store's file for reads alone, beside whoever writes it: creates and changes no file, and
/// leaves none. Answers SQLite's extended codes and others beside them, for ReasonOf: a file that
/// is not there, that is no store's or of a later release, and one whose newest texts lie in a log
/// that cannot be read.
int OpenSqliteToLook(const std::string& strFile, unsigned int uiBusyTimeoutMs, CDatabase& pDatabase,
                     ESqliteTable& eTable);

/// Opens a store's file for writing, creating it when it is missing.
int OpenSqliteToWrite(const std::string& strFile, unsigned int uiBusyTimeoutMs,
                      CDatabase& pDatabase);

/// Has the file written by way of a log, so that readers and the writer do not wait for each other.
int WriteSqliteAhead(sqlite3* pDatabase, unsigned int uiBusyTimeoutMs);

/// Says what the file has, or a code for a file that is no store's.
int FindSqliteTable(sqlite3* pDatabase, ESqliteTable& eTable);

/// Within a transaction: gives the file what it lacks of table and marks.
int CompleteSqliteFile(sqlite3* pDatabase);

/// Whether there is anything of that name.
bool IsSqliteFileThere(const std::string& strFile);

/// Whether the file that is open no longer has the name under which it was opened: it was removed,
/// renamed or replaced.
bool IsSqliteFileGone(sqlite3* pDatabase);

/// SQLITE_OK for a file that is not there, but could be.
int CheckSqliteFolder(const std::string& strFile);

/// Whether a look failed for a log beside the file alone: opening the file to write takes the log
/// in.
bool IsLogInTheWay(int iCode);

std::string ReasonOfSqlite(int iCode);
