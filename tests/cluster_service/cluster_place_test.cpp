#include <filesystem>

#include "service_fixture.h"

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

class ClusterPlace : public CServiceTest {
protected:
    ClusterPlace() {
        Put("/Cluster", ClusterText({NodeText("n1", "10.0.0.1", {"A"})}));
        WriteDocument("version.json", R"({"DecisionVerNum":1,"MasterVerNum":2})");
    }
};

TEST_F(ClusterPlace, ThatIsNotInTheStoreIsAnError) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"export", "out"},
                                                      {"check"},
                                                      {"show"},
                                                      {"remove", "n1", "A", "--yes"},
                                                      {"promote", "n1", "--yes"}}) {
        std::vector<std::string> all{"--cluster-code", "Mian"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const CProcessResult result = Run(all);
        EXPECT_EQ(result.iExitCode, 2) << arguments[0];
        EXPECT_THAT(result.strOutput, IsEmpty());
        EXPECT_EQ(result.strErrors,
                  "no cluster Mian in sqlite:store.db; the clusters there: Main\n");
    }
    EXPECT_FALSE(std::filesystem::exists(File("out")));
}

TEST_F(ClusterPlace, MayBeNewForAnImportAndItsForesight) {
    EXPECT_EQ(Run({"--cluster-code", "New", "diff", "documents"}).iExitCode, 4);
    const CProcessResult result = Run({"--cluster-code", "New", "import", "documents"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strOutput, EndsWith("\ncluster New in sqlite:store.db holds them now\n"));
    EXPECT_EQ(Run({"--cluster-code", "New", "show"}).iExitCode, 0);
    EXPECT_THAT(Run({"--cluster-code", "Old", "show"}).strErrors,
                HasSubstr("the clusters there: Main, New\n"));
}

TEST_F(ClusterPlace, OfAFileThatAnImportWouldMakeIsAllNew) {
    const CProcessResult result = RunOn("sqlite:new.db", {"diff", "documents"});
    EXPECT_EQ(result.iExitCode, 4);
    EXPECT_THAT(result.strOutput, EndsWith("/CloudMain/Version is new\n"));
    EXPECT_FALSE(std::filesystem::exists(File("new.db")));
    EXPECT_EQ(RunOn("sqlite:new.db", {"import", "--dry-run", "documents"}).iExitCode, 4);
    EXPECT_FALSE(std::filesystem::exists(File("new.db")));
    EXPECT_EQ(RunOn("sqlite:nowhere/new.db", {"diff", "documents"}).iExitCode, 2);
    EXPECT_EQ(RunOn("sqlite:new.db", {"show"}).iExitCode, 2);
}

TEST_F(ClusterPlace, IsSaidWhenThereIsNothingToChange) {
    ASSERT_EQ(ImportDocuments().iExitCode, 0);
    EXPECT_THAT(ImportDocuments().strOutput,
                EndsWith("\nnothing to change in cluster Main in sqlite:store.db\n"));
}

TEST_F(ClusterPlace, IsShownAsATextAndNotAsItPaints) {
    const CProcessResult result = Run({"--cluster-code", "a\xc2\x9b\xe2\x80\xae", "show"});
    EXPECT_THAT(result.strErrors, HasSubstr("no cluster a\\u009b\\u202e in sqlite:store.db"));
}

}  // namespace
