#include "reference_host/sqlite_store.h"

#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include "support/host_fixture.h"
#include "support/sqlite_connection.h"
#include "support/temp_dir.h"
#include "support/unprivileged.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;

namespace {

constexpr unsigned int NUMERIC_TIMEOUT_MS = 50;

/// The one error line of a failure: its operation, SQLite's code, the file and SQLite's reason.
auto OneLine(const char* pszOperation, int iCode, const std::string& strFile,
             const std::string& strReason) {
    return ElementsAre(
        AllOf(Field(&CLogLine::eLevel, ORVALOG_ERR), Field(&CLogLine::strOperation, pszOperation),
              Field(&CLogLine::strFile, "sqlite_store"), Field(&CLogLine::code, Optional(iCode)),
              Field(&CLogLine::strMessage, AllOf(HasSubstr(strFile), HasSubstr(strReason)))));
}

class SqliteStore : public CHostTest {
protected:
    std::shared_ptr<CSqliteStore> Open(const std::string& strFile) {
        return CSqliteStore::Open(strFile, m_strError, NUMERIC_TIMEOUT_MS);
    }

    /// A store with a text in it, closed again.
    void Fill(const std::string& strText) {
        const auto pStore = Open(m_strFile);
        ASSERT_NE(pStore, nullptr) << m_strError;
        ASSERT_EQ(pStore->Write("/a", strText), 0);
    }

    void ExpectOpenFails(const std::string& strFile, int iCode, const std::string& strReason) {
        m_strError.clear();
        m_logger.Clear();
        EXPECT_EQ(Open(strFile), nullptr);
        EXPECT_THAT(m_strError, AllOf(HasSubstr(strFile), HasSubstr(strReason)));
        EXPECT_THAT(m_logger.GetLines(), OneLine("open sqlite store", iCode, strFile, strReason));
    }

    static std::string TextOf(IStore& store, const std::string& strPath) {
        CStoreAnswer answer;
        EXPECT_EQ(store.Read(strPath, nullptr, answer), 0);
        return answer.text.value_or("<none>");
    }

    CTempDir m_dir;
    const std::string m_strFile = m_dir.File("store");
    std::string m_strError;
};

/// No file of this process grows beyond so many bytes.
class CFileSizeLimit {
public:
    explicit CFileSizeLimit(rlim_t limit) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit narrow{limit, m_before.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &narrow), 0);
    }
    ~CFileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_pBefore);
    }
    CFileSizeLimit(const CFileSizeLimit&) = delete;
    CFileSizeLimit& operator=(const CFileSizeLimit&) = delete;

private:
    rlimit m_before{};
    void (*m_pBefore)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

TEST_F(SqliteStore, TextOutlivesTheStore) {
    Fill("[1]\n");
    const auto pStore = Open(m_strFile);
    ASSERT_NE(pStore, nullptr);
    EXPECT_EQ(TextOf(*pStore, "/a"), "[1]\n");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(SqliteStore, FileWritesAheadOfItsLog) {
    const auto pStore = Open(m_strFile);
    ASSERT_NE(pStore, nullptr);
    EXPECT_EQ(pStore->Write("/a", "[1]\n"), 0);
    EXPECT_TRUE(std::filesystem::exists(m_strFile + "-wal"));
}

TEST_F(SqliteStore, TwoStoresOnOneFileSeeEachOthersTexts) {
    const auto pFirst = Open(m_strFile);
    const auto pSecond = Open(m_strFile);
    ASSERT_TRUE(pFirst != nullptr && pSecond != nullptr);
    EXPECT_EQ(pFirst->Write("/a", "[1]\n"), 0);
    EXPECT_EQ(TextOf(*pSecond, "/a"), "[1]\n");
    EXPECT_EQ(pSecond->Write("/a", "[2]\n"), 0);
    EXPECT_EQ(TextOf(*pFirst, "/a"), "[2]\n");
}

TEST_F(SqliteStore, WhatCannotBeOpenedIsSaid) {
    ExpectOpenFails(m_dir.File("missing/store"), SQLITE_CANTOPEN, "unable to open");
    ExpectOpenFails(m_dir.GetPath(), SQLITE_CANTOPEN, "unable to open");
    ExpectOpenFails(m_dir.WriteFile("garbage", std::string(5000, 'x')), SQLITE_NOTADB,
                    "not a database");
}

TEST_F(SqliteStore, FileThatMayOnlyBeReadIsSaid) {
    Fill("[1]\n");
    chmod(m_strFile.c_str(), 0444);
    chmod(m_dir.GetPath().c_str(), 0777);
    const CUnprivileged unprivileged;
    ExpectOpenFails(m_strFile, SQLITE_READONLY, "readonly");
}

TEST_F(SqliteStore, DamagedFileIsACodeAndALineOnRead) {
    Fill("[\"" + std::string(50000, 'a') + "\"]\n");
    std::fstream stream(m_strFile, std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(4096);
    stream << std::string(std::filesystem::file_size(m_strFile) - 4096, '\xff');
    stream.close();
    const auto pStore = Open(m_strFile);
    ASSERT_NE(pStore, nullptr);
    CStoreAnswer answer{true, "untouched"};
    EXPECT_EQ(pStore->Read("/a", nullptr, answer), SQLITE_CORRUPT);
    EXPECT_EQ(answer.text, "untouched");
    EXPECT_THAT(m_logger.GetLines(),
                OneLine("read sqlite store", SQLITE_CORRUPT, m_strFile, "malformed"));
    EXPECT_NE(CSqliteStore::FindDamage(m_strFile), "");
}

TEST_F(SqliteStore, SoundFileHasNoDamageNorHasOneThatIsNotThere) {
    EXPECT_EQ(CSqliteStore::FindDamage(m_strFile), "");
    Fill("[1]\n");
    EXPECT_EQ(CSqliteStore::FindDamage(m_strFile), "");
}

TEST_F(SqliteStore, LockedFileGivesUpInTimeAndRecovers) {
    Fill("[1]\n");
    const auto pStore = Open(m_strFile);
    ASSERT_NE(pStore, nullptr);
    CSqliteConnection other(m_strFile);
    other.Execute("BEGIN IMMEDIATE");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(pStore->Write("/a", "[2]\n"), SQLITE_BUSY);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(TextOf(*pStore, "/a"), "[1]\n") << "a reader is not held up";
    EXPECT_THAT(m_logger.GetLines(),
                OneLine("write sqlite store", SQLITE_BUSY, m_strFile, "locked"));
    other.Execute("ROLLBACK");
    EXPECT_EQ(pStore->Write("/a", "[2]\n"), 0);
    EXPECT_EQ(TextOf(*pStore, "/a"), "[2]\n");
}

TEST_F(SqliteStore, LockThatIsReleasedInTimeIsWaitedFor) {
    const auto pStore = CSqliteStore::Open(m_strFile, m_strError);
    ASSERT_NE(pStore, nullptr);
    CSqliteConnection other(m_strFile);
    other.Execute("BEGIN IMMEDIATE");
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        other.Execute("ROLLBACK");
    });
    EXPECT_EQ(pStore->Write("/a", "[2]\n"), 0);
    release.join();
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(SqliteStore, WriteThatFailsHalfWayLeavesNoParents) {
    Fill("[1]\n");
    const auto pStore = Open(m_strFile);
    ASSERT_NE(pStore, nullptr);
    CSqliteConnection(m_strFile).Execute(
        "CREATE TRIGGER refuse BEFORE INSERT ON node WHEN new.path = '/new/leaf' "
        "BEGIN SELECT RAISE(FAIL, 'refused'); END");
    EXPECT_EQ(pStore->Write("/new/leaf", "[]\n"), SQLITE_CONSTRAINT);
    CStoreAnswer answer;
    EXPECT_EQ(pStore->Read("/new", nullptr, answer), 0);
    EXPECT_FALSE(answer.bExists);
    EXPECT_EQ(pStore->Commit({}, {{"/a", "[2]\n"}, {"/new/leaf", "[]\n"}}), SQLITE_CONSTRAINT);
    EXPECT_EQ(TextOf(*pStore, "/a"), "[1]\n");
    EXPECT_EQ(pStore->Write("/a", "[]\n"), 0) << "no transaction stays open";
}

TEST_F(SqliteStore, FileLockedWhileOpeningIsSaid) {
    Fill("[1]\n");
    CSqliteConnection other(m_strFile);
    other.Execute("PRAGMA locking_mode = EXCLUSIVE");
    other.Execute("BEGIN EXCLUSIVE");
    ExpectOpenFails(m_strFile, SQLITE_BUSY, "locked");
}

int g_iFired = 0;

TEST_F(SqliteStore, FailedWriteLeavesTheStoreAndItsWatches) {
    Fill("[1]\n");
    const auto pStore = Open(m_strFile);
    ASSERT_NE(pStore, nullptr);
    g_iFired = 0;
    CStoreAnswer answer;
    pStore->Read(
        "/new", [](zhandle_t*, int, int, const char*, void*) { ++g_iFired; }, answer);
    const std::string strText = "[\"" + std::string(500000, 'a') + "\"]\n";
    {
        const CFileSizeLimit limit(100000);
        EXPECT_EQ(pStore->Write("/new/leaf", strText), SQLITE_IOERR);
    }
    EXPECT_THAT(m_logger.GetLines(),
                OneLine("write sqlite store", SQLITE_IOERR, m_strFile, "disk I/O error"));
    EXPECT_EQ(TextOf(*pStore, "/a"), "[1]\n");
    EXPECT_EQ(TextOf(*pStore, "/new"), "<none>");
    EXPECT_EQ(g_iFired, 0);
    EXPECT_EQ(pStore->Write("/new/leaf", strText), 0);
    EXPECT_EQ(TextOf(*pStore, "/new/leaf"), strText);
    EXPECT_EQ(g_iFired, 1);
}

}  // namespace
