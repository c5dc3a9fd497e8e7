#include "shell/journal_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/temp_dir.h"

namespace {

using testing::UnorderedElementsAre;

class JournalFiles : public testing::Test {
protected:
    std::string File(const std::string& strName) const { return m_dir.File(strName); }

    CJournalFiles Keeping(uint32_t uiFiles) const {
        return CJournalFiles({File("journal"), 0, uiFiles});
    }

    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_dir.GetPath())) {
            names.push_back(entry.path().filename());
        }
        return names;
    }

    const CTempDir m_dir;
};

TEST_F(JournalFiles, FirstHasTheNameItself) {
    EXPECT_EQ(Keeping(0).NameNext(), File("journal"));
}

TEST_F(JournalFiles, NextComesBehindAllThatAreThere) {
    m_dir.WriteFile("journal", "");
    EXPECT_EQ(Keeping(0).NameNext(), File("journal.2"));
    m_dir.WriteFile("journal.9", "");
    m_dir.WriteFile("journal.10", "");
    EXPECT_EQ(Keeping(0).NameNext(), File("journal.11"));
}

TEST_F(JournalFiles, NumberOfARemovedFileIsNotTakenAgain) {
    m_dir.WriteFile("journal.3", "");
    EXPECT_EQ(Keeping(0).NameNext(), File("journal.4"));
}

TEST_F(JournalFiles, NamesInAnotherFolderAndWithoutOneAreFound) {
    m_dir.WriteFile("journal", "");
    EXPECT_EQ(CJournalFiles({m_dir.GetPath() + "/./journal", 0, 0}).NameNext(),
              m_dir.GetPath() + "/./journal.2");
    EXPECT_EQ(CJournalFiles({"no-such-journal", 0, 0}).NameNext(), "no-such-journal");
    EXPECT_EQ(CJournalFiles({File("no/folder/journal"), 0, 0}).NameNext(),
              File("no/folder/journal"));
}

TEST_F(JournalFiles, NameThatCameToNothingIsPassedOver) {
    CJournalFiles files = Keeping(0);
    EXPECT_EQ(files.NameNext(), File("journal"));
    EXPECT_EQ(files.NameNext(), File("journal.2"));
}

TEST_F(JournalFiles, DeviceIsNotRemoved) {
    std::filesystem::create_symlink("/dev/full", File("journal"));
    m_dir.WriteFile("journal.2", "");
    EXPECT_EQ(Keeping(1).RemoveOldest(), "");
    EXPECT_THAT(Names(), UnorderedElementsAre("journal", "journal.2"));
}

TEST_F(JournalFiles, OldestAreRemovedAndNobodyElses) {
    const std::vector<std::string> others = {
        "journa",     "journal.0", "journal.",  "journal.1", "journal.02", "journal.2.gz",
        "journal.-2", "journals",  "journal.x", "other.2",   "journal.2x", "Journal.2"};
    for (const std::string& strName : others) {
        m_dir.WriteFile(strName, "");
    }
    for (const char* const pszName : {"journal", "journal.2", "journal.10", "journal.11"}) {
        m_dir.WriteFile(pszName, "");
    }
    EXPECT_EQ(Keeping(2).RemoveOldest(), "");
    std::vector<std::string> left = others;
    left.insert(left.end(), {"journal.10", "journal.11"});
    EXPECT_THAT(Names(), testing::UnorderedElementsAreArray(left));
}

TEST_F(JournalFiles, AllStayUnlessANumberIsGiven) {
    m_dir.WriteFile("journal", "");
    m_dir.WriteFile("journal.2", "");
    EXPECT_EQ(Keeping(0).RemoveOldest(), "");
    EXPECT_EQ(Keeping(2).RemoveOldest(), "");
    EXPECT_THAT(Names(), UnorderedElementsAre("journal", "journal.2"));
}

}  // namespace
