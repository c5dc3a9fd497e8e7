#include "common_service/file_common.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "common_service/tarn_def.h"
#include "support/temp_dir.h"

using testing::ElementsAre;

namespace {

class DirectoryListing : public testing::Test {
protected:
    int List() { return CFileCommon::GetDirFileList(m_dir.GetPath(), m_fileList); }

    CTempDir m_dir;
    std::list<std::string> m_fileList{"before"};
};

TEST_F(DirectoryListing, NamesAreSortedBytewiseBehindWhatWasThere) {
    for (const char* pszName : {"b", "a.xml", "B", ".hidden", "a"}) {
        m_dir.WriteFile(pszName, "");
    }
    EXPECT_EQ(List(), 0);
    EXPECT_THAT(m_fileList, ElementsAre("before", ".hidden", "B", "a", "a.xml", "b"));
}

TEST_F(DirectoryListing, LinksToFilesCountAndFoldersDoNot) {
    m_dir.WriteFile("file", "");
    std::filesystem::create_directory(m_dir.File("folder"));
    std::filesystem::create_symlink("file", m_dir.File("link"));
    std::filesystem::create_symlink("folder", m_dir.File("folderlink"));
    std::filesystem::create_symlink("nowhere", m_dir.File("broken"));
    EXPECT_EQ(List(), 0);
    EXPECT_THAT(m_fileList, ElementsAre("before", "file", "link"));
}

TEST_F(DirectoryListing, EmptyFolderIsNoFailure) {
    EXPECT_EQ(List(), 0);
    EXPECT_THAT(m_fileList, ElementsAre("before"));
}

TEST_F(DirectoryListing, WhatIsNoFolderFailsUntouched) {
    for (const std::string& strDir :
         {m_dir.File("missing"), m_dir.WriteFile("file", ""), std::string()}) {
        EXPECT_EQ(CFileCommon::GetDirFileList(strDir, m_fileList), ORVA_FAIL) << strDir;
        EXPECT_THAT(m_fileList, ElementsAre("before"));
    }
}

}  // namespace
