#include <fcntl.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>

#include "reference_host/sqlite_store.h"
#include "support/host_fixture.h"
#include "support/name_holder_process.h"
#include "support/sqlite_connection.h"
#include "support/temp_dir.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::Optional;

namespace {

constexpr char PSZ_NAME[] = "/top/name";

class SqliteHold : public CHostTest {
protected:
    std::shared_ptr<CSqliteStore> Open(const std::string& strFile) {
        std::string strError;
        auto pStore = CSqliteStore::Open(strFile, strError);
        EXPECT_NE(pStore, nullptr) << strError;
        return pStore;
    }

    std::shared_ptr<CSqliteStore> Open() { return Open(m_strFile); }

    static int Hold(IStore& store, CStoreAnswer& holder) {
        return store.Hold(
            PSZ_NAME, "mine", [] { ADD_FAILURE() << "lost"; }, holder);
    }

    static std::string HolderOf(IStore& store) {
        CStoreAnswer holder;
        EXPECT_EQ(store.FindHolder(PSZ_NAME, holder), 0);
        return holder.bExists ? holder.text.value_or("<no data>") : "nobody";
    }

    const CTempDir m_dir;
    const std::string m_strFile = m_dir.File("store");
    const std::string m_strStore = "sqlite:" + m_strFile;
};

/// Whether SQLite has a lock on the file, asked from beside. As long as it lives the process has
/// the file open once more: closing it would end the locks.
class CSqliteLocks {
public:
    explicit CSqliteLocks(const std::string& strFile)
        : m_iDescriptor(open(strFile.c_str(), O_RDWR | O_CLOEXEC)) {}
    ~CSqliteLocks() { close(m_iDescriptor); }
    CSqliteLocks(const CSqliteLocks&) = delete;
    CSqliteLocks& operator=(const CSqliteLocks&) = delete;

    bool AreThere() const {
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        lock.l_start = 0x40000000;
        lock.l_len = 512;
        EXPECT_EQ(fcntl(m_iDescriptor, F_OFD_GETLK, &lock), 0);
        return lock.l_type != F_UNLCK;
    }

private:
    const int m_iDescriptor;
};

TEST_F(SqliteHold, NameOfAnotherProgramIsRefusedWithItsText) {
    CNameHolderProcess other(m_strStore, PSZ_NAME, "another program");
    ASSERT_EQ(other.Line(), "held");
    const auto pStore = Open();
    CStoreAnswer holder;
    EXPECT_EQ(Hold(*pStore, holder), STORE_NAME_HELD);
    EXPECT_EQ(holder.text, "another program");
    EXPECT_EQ(HolderOf(*pStore), "another program");
    other.Say("release");
    ASSERT_EQ(other.Line(), "released, code 0");
    EXPECT_EQ(HolderOf(*pStore), "nobody");
    EXPECT_EQ(Hold(*pStore, holder), 0);
    CNameHolderProcess third(m_strStore, PSZ_NAME, "a third program");
    EXPECT_EQ(third.Line(), "refused, held by mine");
}

TEST_F(SqliteHold, KilledHoldersNameIsFreeAtOnce) {
    const auto pStore = Open();
    CStoreAnswer holder;
    for (int iRound = 0; iRound < 5; ++iRound) {
        CNameHolderProcess other(m_strStore, PSZ_NAME, "another program");
        ASSERT_EQ(other.Line(), "held");
        other.Kill();
        EXPECT_EQ(HolderOf(*pStore), "nobody");
        EXPECT_EQ(Hold(*pStore, holder), 0);
        EXPECT_EQ(holder.text, "mine");
        EXPECT_EQ(pStore->Release(PSZ_NAME), 0);
    }
}

TEST_F(SqliteHold, PausedHolderKeepsItsName) {
    CNameHolderProcess other(m_strStore, PSZ_NAME, "another program");
    ASSERT_EQ(other.Line(), "held");
    other.Pause();
    const auto pStore = Open();
    CStoreAnswer holder;
    EXPECT_EQ(Hold(*pStore, holder), STORE_NAME_HELD);
    EXPECT_EQ(pStore->Write("/node", "[1]\n"), 0);
    other.GoOn();
    other.Say("commit");
    EXPECT_EQ(other.Line(), "committed, code 0");
}

TEST_F(SqliteHold, FileIsMadeByTheFirstHoldAndNotByALook) {
    const auto pStore = Open();
    EXPECT_EQ(HolderOf(*pStore), "nobody");
    EXPECT_FALSE(std::filesystem::exists(m_strFile));
    CStoreAnswer holder;
    EXPECT_EQ(Hold(*pStore, holder), 0);
    EXPECT_EQ(HolderOf(*Open()), "mine");
}

TEST_F(SqliteHold, FileThatIsTakenAwayCannotBeAskedWhoHoldsIt) {
    const auto pStore = Open();
    CStoreAnswer holder;
    ASSERT_EQ(Hold(*pStore, holder), 0);
    std::filesystem::rename(m_strFile, m_dir.File("away"));
    EXPECT_EQ(pStore->FindHolder(PSZ_NAME, holder), SQLITE_CANTOPEN);
    std::filesystem::rename(m_dir.File("away"), m_strFile);
    EXPECT_EQ(HolderOf(*pStore), "mine");
}

TEST_F(SqliteHold, NameIsTheSameByWhateverPathTheFileIsReached) {
    const auto pStore = Open();
    CStoreAnswer holder;
    ASSERT_EQ(Hold(*pStore, holder), 0);
    std::filesystem::create_symlink(m_strFile, m_dir.File("link"));
    EXPECT_EQ(HolderOf(*Open(m_dir.File("link"))), "mine");
    EXPECT_EQ(Hold(*Open(m_dir.File("link")), holder), STORE_NAME_HELD);
}

TEST_F(SqliteHold, ReaderIsToldOfTheHolderAndHoldsNothing) {
    const auto pStore = Open();
    CStoreAnswer holder;
    ASSERT_EQ(Hold(*pStore, holder), 0);
    std::string strError;
    const auto pReader = CSqliteStore::OpenReadOnly(m_strFile, strError);
    ASSERT_NE(pReader, nullptr) << strError;
    EXPECT_EQ(HolderOf(*pReader), "mine");
    ASSERT_EQ(pStore->Release(PSZ_NAME), 0);
    holder = {true, "untouched"};
    EXPECT_EQ(Hold(*pReader, holder), SQLITE_READONLY);
    EXPECT_EQ(holder.text, "untouched");
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(AllOf(Field(&CLogLine::strOperation, "hold name in sqlite store"),
                                  Field(&CLogLine::code, Optional(SQLITE_READONLY)),
                                  Field(&CLogLine::strMessage, HasSubstr(m_strFile)))));
}

TEST_F(SqliteHold, FileOfAnotherProgramIsNotTaken) {
    const auto pStore = Open();
    CSqliteConnection(m_strFile).Execute("CREATE TABLE book (title TEXT)");
    CStoreAnswer holder;
    EXPECT_EQ(Hold(*pStore, holder), SQLITE_NOTADB);
    EXPECT_EQ(HolderOf(*pStore), "nobody");
}

TEST_F(SqliteHold, LockedFileIsNotHeld) {
    const auto pStore = Open();
    ASSERT_EQ(pStore->Write("/node", "[1]\n"), 0);
    CSqliteConnection writer(m_strFile);
    writer.Execute("BEGIN IMMEDIATE");
    CStoreAnswer holder;
    EXPECT_EQ(Hold(*pStore, holder), SQLITE_BUSY);
    EXPECT_EQ(HolderOf(*pStore), "nobody");
    writer.Execute("ROLLBACK");
    EXPECT_EQ(Hold(*pStore, holder), 0);
}

TEST_F(SqliteHold, LocksOfSqliteAreLeftAlone) {
    const auto pStore = Open();
    ASSERT_EQ(pStore->Write("/node", "[1]\n"), 0);
    const CSqliteLocks locks(m_strFile);
    ASSERT_TRUE(locks.AreThere());
    {
        const auto pOther = Open();
        CStoreAnswer holder;
        EXPECT_EQ(HolderOf(*pOther), "nobody");
        ASSERT_EQ(Hold(*pOther, holder), 0);
        EXPECT_EQ(HolderOf(*pStore), "mine");
        EXPECT_EQ(pOther->Release(PSZ_NAME), 0);
        ASSERT_EQ(Hold(*pOther, holder), 0);
    }
    EXPECT_TRUE(locks.AreThere());
    EXPECT_EQ(HolderOf(*pStore), "nobody");
}

TEST_F(SqliteHold, HoldingAgainAndAgainTakesNoMoreDescriptors) {
    const auto countOpen = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto pStore = Open();
    CStoreAnswer holder;
    const auto holdRefuseAndRelease = [&] {
        EXPECT_EQ(Hold(*pStore, holder), 0);
        EXPECT_EQ(Hold(*pStore, holder), STORE_NAME_HELD);
        EXPECT_EQ(pStore->Release(PSZ_NAME), 0);
    };
    holdRefuseAndRelease();
    const auto before = countOpen();
    for (int iRound = 0; iRound < 20; ++iRound) {
        holdRefuseAndRelease();
    }
    EXPECT_EQ(countOpen(), before);
}

}  // namespace
