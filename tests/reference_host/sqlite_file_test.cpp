#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "reference_host/sqlite_store.h"
#include "support/host_fixture.h"
#include "support/sqlite_connection.h"
#include "support/temp_dir.h"
#include "support/unprivileged.h"

using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

namespace fs = std::filesystem;

/// A file as the first releases made them.
constexpr char PSZ_FIRST_RELEASE[] =
    "PRAGMA journal_mode = WAL;"
    "CREATE TABLE node (path TEXT PRIMARY KEY, text TEXT);"
    "INSERT INTO node VALUES ('/top', NULL), ('/top/a', '[1]');";

std::string BytesOf(const std::string& strFile) {
    std::ostringstream bytes;
    bytes << std::ifstream(strFile, std::ios::binary).rdbuf();
    return bytes.str();
}

class SqliteFile : public CHostTest {
protected:
    std::shared_ptr<CSqliteStore> Open() { return CSqliteStore::Open(m_strFile, m_strError, 50); }

    std::shared_ptr<CSqliteStore> OpenReadOnly() {
        return CSqliteStore::OpenReadOnly(m_strFile, m_strError, 50);
    }

    void Make(const char* pszSql) const { CSqliteConnection(m_strFile).Execute(pszSql); }

    void Fill(const std::string& strText) {
        const auto pStore = Open();
        ASSERT_NE(pStore, nullptr) << m_strError;
        ASSERT_EQ(pStore->Write("/top/a", strText), 0);
    }

    std::vector<std::string> Files() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_dir.GetPath())) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

    /// Neither way to open it leaves a trace.
    void ExpectRefused(const std::string& strReason) {
        const std::string strBytes = BytesOf(m_strFile);
        const std::vector<std::string> files = Files();
        EXPECT_EQ(Open(), nullptr);
        EXPECT_EQ(m_strError, m_strFile + ": " + strReason);
        EXPECT_EQ(OpenReadOnly(), nullptr);
        EXPECT_EQ(m_strError, m_strFile + ": " + strReason);
        EXPECT_EQ(BytesOf(m_strFile), strBytes);
        EXPECT_EQ(Files(), files);
    }

    static CStoreAnswer ReadFrom(IStore& store, const std::string& strPath = "/top/a") {
        CStoreAnswer answer;
        EXPECT_EQ(store.Read(strPath, nullptr, answer), 0);
        return answer;
    }

    /// Everybody may enter and read the folder, and who may write it can do so too.
    void SetFolderMode(mode_t mode) const { chmod(m_dir.GetPath().c_str(), mode); }

    void TearDown() override { SetFolderMode(0700); }

    CTempDir m_dir;
    const std::string m_strFile = m_dir.File("store");
    std::string m_strError;
};

TEST_F(SqliteFile, IsCreatedWithTheFirstWriteOnly) {
    const auto pStore = Open();
    ASSERT_NE(pStore, nullptr) << m_strError;
    EXPECT_FALSE(ReadFrom(*pStore).bExists);
    std::vector<std::string> children;
    EXPECT_EQ(pStore->List("/top", children), STORE_NODE_ABSENT);
    EXPECT_EQ(pStore->Commit({{"/top/a", 1}}, {{"/top/a", "[]"}}), STORE_CONDITION_FAILED);
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_EQ(pStore->Commit({{"/top/a", STORE_VERSION_ABSENT}}, {{"/top/a", "[]"}}), 0);
    EXPECT_TRUE(fs::exists(m_strFile));
}

TEST_F(SqliteFile, ThatSomeoneElseCreatesMeanwhileIsRead) {
    const auto pStore = Open();
    ASSERT_NE(pStore, nullptr);
    EXPECT_FALSE(ReadFrom(*pStore).bExists);
    Fill("[1]");
    EXPECT_EQ(ReadFrom(*pStore).text, "[1]");
}

TEST_F(SqliteFile, ThatAnotherHasReplacedIsWrittenNoMore) {
    Fill("[1]");
    const auto pStore = Open();
    ASSERT_NE(pStore, nullptr);
    fs::rename(m_strFile, m_dir.File("former"));
    Fill("[2]");
    EXPECT_EQ(pStore->Commit({{"/top/a", 1}}, {{"/top/a", "[3]"}}), STORE_CONDITION_FAILED);
    EXPECT_EQ(ReadFrom(*Open()).text, "[2]");
}

TEST_F(SqliteFile, IsMarkedAsAStores) {
    Fill("[1]");
    EXPECT_EQ(BytesOf(m_strFile).substr(68, 4), "ORVA");
    EXPECT_EQ(BytesOf(m_strFile).substr(60, 4), std::string("\0\0\0\1", 4));
}

TEST_F(SqliteFile, OfTheFirstReleasesIsReadAsItIs) {
    Make(PSZ_FIRST_RELEASE);
    const std::string strBytes = BytesOf(m_strFile);
    for (const auto& pStore : {Open(), OpenReadOnly()}) {
        ASSERT_NE(pStore, nullptr) << m_strError;
        EXPECT_EQ(ReadFrom(*pStore).text, "[1]");
        EXPECT_EQ(ReadFrom(*pStore).iVersion, 0);
        EXPECT_EQ(ReadFrom(*pStore, "/top").text, std::nullopt);
        EXPECT_EQ(ReadFrom(*pStore, "/else").iVersion, STORE_VERSION_ABSENT);
    }
    EXPECT_EQ(BytesOf(m_strFile), strBytes);
}

TEST_F(SqliteFile, OfTheFirstReleasesIsGivenMarkAndVersionsWithItsFirstWrite) {
    Make(PSZ_FIRST_RELEASE);
    const auto pReader = OpenReadOnly();
    const auto pOther = Open();
    ASSERT_TRUE(pReader != nullptr && pOther != nullptr) << m_strError;
    EXPECT_EQ(ReadFrom(*pOther).iVersion, 0);
    {
        const auto pStore = Open();
        ASSERT_NE(pStore, nullptr) << m_strError;
        EXPECT_EQ(pStore->Commit({{"/top/a", 0}}, {{"/top/a", "[2]"}}), 0);
    }
    for (IStore* pStore :
         {static_cast<IStore*>(pReader.get()), static_cast<IStore*>(pOther.get())}) {
        EXPECT_EQ(ReadFrom(*pStore).text, "[2]");
        EXPECT_EQ(ReadFrom(*pStore).iVersion, 1);
        EXPECT_EQ(ReadFrom(*pStore, "/top").iVersion, 0);
    }
    EXPECT_EQ(pOther->Commit({{"/top/a", 0}}, {{"/top/a", "[3]"}}), STORE_CONDITION_FAILED);
    EXPECT_EQ(pOther->Commit({{"/top/a", 1}}, {{"/top/a", "[3]"}}), 0);
}

TEST_F(SqliteFile, OfTheFirstReleasesStaysOneAfterARefusedWrite) {
    Make(PSZ_FIRST_RELEASE);
    EXPECT_EQ(Open()->Commit({{"/top/a", 1}}, {{"/top/a", "[2]"}}), STORE_CONDITION_FAILED);
    EXPECT_EQ(BytesOf(m_strFile).substr(68, 4), std::string(4, '\0'));
    EXPECT_EQ(ReadFrom(*Open()).iVersion, 0);
}

TEST_F(SqliteFile, OfAnotherProgramIsRefusedAndLeftAsItIs) {
    Make("PRAGMA journal_mode = WAL; CREATE TABLE song (title TEXT)");
    ExpectRefused("is a database of another program");
}

TEST_F(SqliteFile, WithAnotherProgramsMarkIsRefused) {
    Make(PSZ_FIRST_RELEASE);
    Make("PRAGMA application_id = 77");
    ExpectRefused("is a database of another program");
}

TEST_F(SqliteFile, WithATableOfTheSameNameIsRefused) {
    Make("CREATE TABLE node (path TEXT, parent TEXT)");
    ExpectRefused("is a database of another program");
}

TEST_F(SqliteFile, WithTheMarkButWithoutTheTableIsRefused) {
    Fill("[1]");
    Make("DROP TABLE node");
    ExpectRefused("database disk image is malformed");
}

TEST_F(SqliteFile, OfALaterReleaseIsRefused) {
    Fill("[1]");
    Make("PRAGMA user_version = 2");
    ExpectRefused("is a store of a later release");
}

TEST_F(SqliteFile, ThatIsDamagedIsRefused) {
    Fill("[1]");
    std::fstream stream(m_strFile, std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(100);
    stream << std::string(3000, '\xff');
    stream.close();
    ExpectRefused("database disk image is malformed");
}

TEST_F(SqliteFile, ThatIsNoDatabaseIsRefused) {
    m_dir.WriteFile("store", "an operator's notes\n");
    ExpectRefused("file is not a database");
}

TEST_F(SqliteFile, ThatIsNoFileIsRefused) {
    ASSERT_EQ(mkfifo(m_strFile.c_str(), 0600), 0);
    EXPECT_EQ(Open(), nullptr);
    EXPECT_EQ(OpenReadOnly(), nullptr);
    EXPECT_EQ(m_strError, m_strFile + ": unable to open database file");
}

TEST_F(SqliteFile, ToBeReadMustBeThere) {
    EXPECT_EQ(OpenReadOnly(), nullptr);
    EXPECT_EQ(m_strError, m_strFile + ": no such file");
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(SqliteFile, WithoutAnyTableReadsAsAStoreWithoutNodes) {
    m_dir.WriteFile("store", "");
    const auto pStore = OpenReadOnly();
    ASSERT_NE(pStore, nullptr) << m_strError;
    EXPECT_FALSE(ReadFrom(*pStore).bExists);
    EXPECT_THAT(Files(), UnorderedElementsAre("store"));
}

TEST_F(SqliteFile, ThatAKilledWriterLeftHalfWayIsRolledBack) {
    if (const pid_t pid = fork(); pid == 0) {
        CSqliteConnection connection(m_strFile);
        connection.Execute("PRAGMA cache_size = 1; BEGIN; CREATE TABLE half (text);");
        for (int i = 0; i < 100; ++i) {
            connection.Execute("INSERT INTO half VALUES (zeroblob(4000));");
        }
        _exit(0);
    } else {
        waitpid(pid, nullptr, 0);
    }
    ASSERT_GT(fs::file_size(m_strFile + "-journal"), 0U);
    EXPECT_EQ(OpenReadOnly(), nullptr) << "its writer's work is not to be shown";
    Fill("[1]");
    CStoreAnswer answer;
    const auto pStore = OpenReadOnly();
    ASSERT_NE(pStore, nullptr) << m_strError;
    EXPECT_EQ(pStore->Read("/top/a", nullptr, answer), 0);
    EXPECT_EQ(answer.text, "[1]");
}

TEST_F(SqliteFile, OnlyLookedAtStaysAloneAndAsItIs) {
    Fill("[1]");
    const std::string strBytes = BytesOf(m_strFile);
    {
        const auto pStore = OpenReadOnly();
        ASSERT_NE(pStore, nullptr) << m_strError;
        EXPECT_EQ(ReadFrom(*pStore).text, "[1]");
        EXPECT_EQ(pStore->Write("/top/a", "[2]"), SQLITE_READONLY);
        EXPECT_EQ(pStore->Commit({}, {{"/top/a", "[2]"}}), SQLITE_READONLY);
        EXPECT_THAT(Files(), UnorderedElementsAre("store"));
    }
    EXPECT_EQ(BytesOf(m_strFile), strBytes);
}

TEST_F(SqliteFile, OnlyLookedAtMayBeReadOnlyInAReadOnlyFolder) {
    Fill("[1]");
    chmod(m_strFile.c_str(), 0444);
    for (const mode_t folderMode : {0555, 0777}) {
        SetFolderMode(folderMode);
        const CUnprivileged unprivileged;
        const auto pStore = OpenReadOnly();
        ASSERT_NE(pStore, nullptr) << m_strError;
        EXPECT_EQ(ReadFrom(*pStore).text, "[1]");
        EXPECT_THAT(Files(), UnorderedElementsAre("store"));
    }
}

TEST_F(SqliteFile, OnlyLookedAtShowsWhatAnotherJustWrote) {
    Fill("[1]");
    const auto pReader = OpenReadOnly();
    ASSERT_NE(pReader, nullptr) << m_strError;
    const auto pWriter = Open();
    for (const char* pszText : {"[2]", "[3]"}) {
        ASSERT_EQ(pWriter->Write("/top/a", pszText), 0);
        EXPECT_EQ(ReadFrom(*pReader).text, pszText);
    }
    chmod(m_strFile.c_str(), 0444);
    chmod((m_strFile + "-wal").c_str(), 0444);
    chmod((m_strFile + "-shm").c_str(), 0444);
    SetFolderMode(0555);
    const CUnprivileged unprivileged;
    EXPECT_EQ(ReadFrom(*OpenReadOnly()).text, "[3]");
}

TEST_F(SqliteFile, OnlyLookedAtNeverShowsTextsOlderThanALogBesideIt) {
    Fill("[1]");
    const CTempDir copyDir;
    {
        const auto pWriter = Open();
        ASSERT_EQ(pWriter->Write("/top/a", "[2]"), 0);
        fs::copy(m_strFile, copyDir.File("store"));
        fs::copy(m_strFile + "-wal", copyDir.File("store-wal"));
    }
    chmod(copyDir.GetPath().c_str(), 0555);
    {
        const CUnprivileged unprivileged;
        EXPECT_EQ(CSqliteStore::OpenReadOnly(copyDir.File("store"), m_strError, 50), nullptr);
        EXPECT_THAT(m_strError, HasSubstr("newest texts are in a log beside it"));
    }
    chmod(copyDir.GetPath().c_str(), 0700);
    const auto pStore = CSqliteStore::OpenReadOnly(copyDir.File("store"), m_strError, 50);
    ASSERT_NE(pStore, nullptr) << m_strError;
    EXPECT_EQ(ReadFrom(*pStore).text, "[2]");
}

TEST_F(SqliteFile, NameMayHoldAnyCharacter) {
    const CTempDir strangeDir;
    const std::string strStrange = strangeDir.File("a b?c#d%20&mode=rwc");
    {
        const auto pStore = CSqliteStore::Open(strStrange, m_strError, 50);
        ASSERT_NE(pStore, nullptr) << m_strError;
        ASSERT_EQ(pStore->Write("/top/a", "[1]"), 0);
    }
    chmod(strangeDir.GetPath().c_str(), 0555);
    chmod(strStrange.c_str(), 0444);
    {
        const CUnprivileged unprivileged;
        const auto pStore = CSqliteStore::OpenReadOnly(strStrange, m_strError, 50);
        ASSERT_NE(pStore, nullptr) << m_strError;
        EXPECT_EQ(ReadFrom(*pStore).text, "[1]");
    }
    chmod(strangeDir.GetPath().c_str(), 0700);
}

TEST_F(SqliteFile, ThatTwoCreateAtOnceKeepsTheTextsOfBoth) {
    for (int iRound = 0; iRound < 10; ++iRound) {
        const CTempDir dir;
        std::atomic<int> iFailures{0};
        const auto write = [&](const std::string& strPath) {
            std::string strError;
            const auto pStore = CSqliteStore::Open(dir.File("store"), strError);
            iFailures += pStore == nullptr || pStore->Write(strPath, "[]") != 0;
        };
        std::thread other(write, "/a");
        write("/b");
        other.join();
        ASSERT_EQ(iFailures, 0);
        const auto pStore = CSqliteStore::OpenReadOnly(dir.File("store"), m_strError);
        ASSERT_NE(pStore, nullptr) << m_strError;
        EXPECT_TRUE(ReadFrom(*pStore, "/a").bExists && ReadFrom(*pStore, "/b").bExists);
    }
}

}  // namespace
