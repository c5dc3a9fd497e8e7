#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

/// Someone else at work on a file of SQLite's.
class CSqliteConnection {
public:
    explicit CSqliteConnection(const std::string& strFile) {
        EXPECT_EQ(sqlite3_open(strFile.c_str(), &m_pDatabase), SQLITE_OK);
    }
    ~CSqliteConnection() { sqlite3_close(m_pDatabase); }
    CSqliteConnection(const CSqliteConnection&) = delete;
    CSqliteConnection& operator=(const CSqliteConnection&) = delete;

    void Execute(const char* pszSql) {
        EXPECT_EQ(sqlite3_exec(m_pDatabase, pszSql, nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(m_pDatabase);
    }

private:
    sqlite3* m_pDatabase = nullptr;
};
