#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>

#include "found.h"
#include "reference_host/code_text.h"
#include "service_fixture.h"
#include "support/unprivileged.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

constexpr char PSZ_GOOD_MANAGER[] = R"({"MasterMGR":{"NodeCode":"n1","NodeIp":"10.0.0.1"}})";
constexpr char PSZ_GOOD_VERSION[] = R"({"DecisionVerNum":1,"MasterVerNum":2})";

/// A store with a cluster of one node, and a folder whose files are checked against it. The
/// documents that neither has are notes, which are left out of what is found.
class CCheckFilesTest : public CServiceTest {
protected:
    CCheckFilesTest() {
        Put("/Cluster", ClusterText({NodeText("n1", "10.0.0.1", {"MeroRecord"})}));
        fs::create_directory(File("documents"));
    }

    CProcessResult CheckFolder() const { return Run({"check", "documents", "--json"}); }

    std::vector<std::string> Found() const {
        std::vector<std::string> found = FoundIn(CheckFolder().strOutput);
        found.erase(std::remove_if(found.begin(), found.end(),
                                   [](const std::string& strFinding) {
                                       return strFinding.compare(0, 5, "note ") == 0;
                                   }),
                    found.end());
        return found;
    }
};

using CheckFiles = CCheckFilesTest;

TEST_F(CheckFiles, AFileIsCheckedBeforeItIsInTheStore) {
    WriteDocument("version.json", R"({"DecisionVerNum":1,
 "MasterVerNum":2, "Mastervernum":3})");
    const CProcessResult result = Run({"check", "documents"});
    EXPECT_EQ(result.iExitCode, 5);
    EXPECT_THAT(
        result.strOutput,
        HasSubstr("\nwarning   documents/version.json  line 2, column 20: \"Mastervernum\" is not "
                  "known: no service reads it, and it goes when one writes the document\n"));
    EXPECT_EQ(Stored("/Version"), std::nullopt);
}

TEST_F(CheckFiles, AFileIsCheckedAgainstWhatTheStoreHolds) {
    WriteDocument("manager.json", PSZ_GOOD_MANAGER);
    EXPECT_THAT(Found(), IsEmpty());
    WriteDocument("manager.json", R"({"MasterMGR":{"NodeCode":"n2","NodeIp":"10.0.0.2"}})");
    EXPECT_THAT(Found(), ElementsAre("warning documents/manager.json 1:26 MasterMGR.NodeCode is "
                                     "\"n2\", which is no node of the cluster"));
}

TEST_F(CheckFiles, AFileTakesThePlaceOfTheStoresDocument) {
    Put("/MEROMGR", PSZ_GOOD_MANAGER);
    WriteDocument("cluster.json", ClusterText({NodeText("n2", "10.0.0.2", {"MeroRecord"})}));
    EXPECT_THAT(Found(), ElementsAre("warning MEROMGR 1:26 MasterMGR.NodeCode is \"n1\", which is "
                                     "no node of the cluster"));
}

TEST_F(CheckFiles, AClusterThatCannotBeReadHidesNoOtherFindings) {
    WriteDocument("cluster.json", "{");
    WriteDocument("manager.json", PSZ_GOOD_MANAGER);
    WriteDocument("version.json", "{}");
    EXPECT_THAT(Found(),
                ElementsAre("error documents/cluster.json 1:2 Missing '}' or object member name",
                            "error documents/version.json 1:1 DecisionVerNum is missing"));
}

TEST_F(CheckFiles, TheSampleHasNoFindings) {
    const CProcessResult result =
        RunOn("memory", {"--config-dir", PSZ_SAMPLE_DIR, "check", PSZ_SAMPLE_DIR});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, "all well: 7 documents checked\n");
}

TEST_F(CheckFiles, AnEmptyFileIsAnErrorAsItIsForAnImport) {
    WriteDocument("version.json", "");
    EXPECT_THAT(Found(), ElementsAre("error documents/version.json 1:1 Syntax error: value, object "
                                     "or array expected."));
}

TEST_F(CheckFiles, FilesAreCheckedBeforeThereIsACluster) {
    WriteDocument("version.json", PSZ_GOOD_VERSION);
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--store", "sqlite:store.db", "--cluster-code", "New", "check",
                                   "documents"},
          std::vector<std::string>{"--store", "sqlite:new.db", "check", "documents"}}) {
        const CProcessResult result = RunProcess(PSZ_PROGRAM, arguments, m_dir.GetPath());
        EXPECT_EQ(result.iExitCode, 0) << result.strErrors;
        EXPECT_THAT(result.strOutput, HasSubstr("findings (6)\n"));
    }
    EXPECT_FALSE(fs::exists(File("new.db")));
}

TEST_F(CheckFiles, TheFolderMustBeThere) {
    EXPECT_EQ(Run({"check", "nowhere"}).iExitCode, 2);
}

TEST_F(CheckFiles, WhatIsNoFileOrTooLargeIsAnError) {
    ASSERT_EQ(mkfifo(File("documents/cluster.json").c_str(), 0600), 0);
    fs::create_directory(File("documents/manager.json"));
    fs::create_symlink("nowhere", File("documents/center_db.json"));
    fs::create_symlink("/dev/zero", File("documents/cg_list.json"));
    WriteDocument("version.json", PSZ_GOOD_VERSION + std::string(600, ' '));
    EXPECT_EQ(CheckFolder().iExitCode, 1);
    EXPECT_THAT(Found(),
                ElementsAre("error documents/cluster.json cannot be read: is no file",
                            "error documents/center_db.json cannot be read: No such file or "
                            "directory",
                            "error documents/manager.json cannot be read: is no file",
                            "error documents/cg_list.json cannot be read: is no file",
                            "error documents/version.json is longer than 511 bytes"));
}

TEST_F(CheckFiles, AFileThatMayNotBeReadIsAnError) {
    WriteDocument("version.json", PSZ_GOOD_VERSION);
    fs::permissions(File("documents/version.json"), fs::perms::none);
    fs::permissions(m_dir.GetPath(), fs::perms::all);
    const CUnprivileged unprivileged;
    EXPECT_THAT(Found(), ElementsAre("error documents/version.json cannot be read: Permission "
                                     "denied"));
}

TEST_F(CheckFiles, ErrorsComeBeforeWarningsAndWarningsBeforeNotes) {
    WriteDocument("cluster.json", ClusterText({NodeText("n1", "10.0.0.300", {"MeroRecord"})}));
    WriteDocument("version.json", "[]");
    const CProcessResult result = Run({"check", "documents"});
    EXPECT_EQ(result.iExitCode, 1);
    EXPECT_TRUE(std::regex_match(
        result.strOutput,
        std::regex("findings \\(7\\)\nseverity [^\n]*\nerror [^\n]*\nwarning [^\n]*\n"
                   "(note [^\n]*\n){5}")))
        << result.strOutput;
}

TEST_F(CheckFiles, WhatADocumentHoldsIsShownAsText) {
    WriteDocument("version.json",
                  "{\"DecisionVerNum\":1,\"MasterVerNum\":2,\"\\u001b[2J\\n\xE2\x80\xAE\":3}");
    const CProcessResult result = Run({"check", "documents"});
    EXPECT_THAT(result.strOutput, HasSubstr("\"\\x1b[2J\\n\\u202e\" is not known"));
}

TEST_F(CheckFiles, ADamagedStoreFileAndWhatItHidesAreErrors) {
    Put("/Version", PSZ_GOOD_VERSION);
    Put("/Cluster", std::string(60000, ' '));
    std::fstream file(File("store.db"), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(-40000, std::ios::end);
    file << std::string(30000, '\xFF');
    file.close();
    const CProcessResult result = Run({"check", "--json"});
    EXPECT_EQ(result.iExitCode, 1);
    const std::vector<std::string> found = FoundIn(result.strOutput);
    ASSERT_GE(found.size(), 2U);
    EXPECT_EQ(found[0].find("error sqlite:store.db is damaged: "), 0U) << found[0];
    EXPECT_EQ(found[1], "error Cluster cannot be read: " + CodeText(11));
    EXPECT_EQ(std::count(found.begin(), found.end(), "note Version is absent"), 0);
}

TEST_F(CheckFiles, AStoreFileThatCannotEvenBeOpenedForItsDamageIsAnError) {
    fs::resize_file(File("store.db"), 5000);
    const CProcessResult result = Run({"check", "--json"});
    EXPECT_EQ(result.iExitCode, 1);
    const std::vector<std::string> found = FoundIn(result.strOutput);
    ASSERT_EQ(found.size(), 8U);
    EXPECT_EQ(found[0].find("error sqlite:store.db is damaged: "), 0U);
    EXPECT_EQ(Run({"show"}).iExitCode, 2);
}

}  // namespace
