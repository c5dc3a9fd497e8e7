#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "found.h"
#include "service_fixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

/// A folder of standard tasks with nothing wrong.
class CCheckTasksTest : public CServiceTest {
protected:
    CCheckTasksTest() {
        Put("", "");
        fs::create_directory(File("taskmodel"));
        WriteTasks("default.xml", "<TaskList><Task CPU=\"1\">DEFAULT</Task></TaskList>");
    }

    void WriteTasks(const std::string& strFile, const std::string& strText) const {
        m_dir.WriteFile("taskmodel/" + strFile, strText);
    }

    std::vector<std::string> Found() const {
        std::vector<std::string> found =
            FoundIn(Run({"--config-dir", m_dir.GetPath(), "check", "--json"}).strOutput);
        found.erase(std::remove_if(found.begin(), found.end(),
                                   [](const std::string& strFinding) {
                                       return strFinding.find("taskmodel") == std::string::npos;
                                   }),
                    found.end());
        return found;
    }
};

using CheckTasks = CCheckTasksTest;

TEST_F(CheckTasks, FilesThatLoadAreNoFindings) {
    WriteTasks("a.xml", "<TaskList><Task>A</Task><Task>B</Task></TaskList>");
    EXPECT_THAT(Found(), IsEmpty());
}

TEST_F(CheckTasks, AFileThatDoesNotLoadIsAnError) {
    WriteTasks("a.xml", "<TaskList><Task>A</Task>");
    WriteTasks("b.xml", "<Tasks/>");
    WriteTasks("c.xml", "<TaskList/>");
    WriteTasks("d.xml", "<TaskList><Task>D</Task><Task/></TaskList>");
    WriteTasks("e.XML", "no task file");
    ASSERT_EQ(mkfifo(File("taskmodel/f.xml").c_str(), 0600), 0);
    EXPECT_THAT(
        Found(),
        ElementsAre("error taskmodel/a.xml is no XML document",
                    "error taskmodel/b.xml has no element \"TaskList\" at its root",
                    "error taskmodel/c.xml has no element \"Task\" in its \"TaskList\"",
                    "error taskmodel/d.xml has no name in its task 2: it and those behind it are "
                    "not loaded",
                    "error taskmodel/f.xml cannot be read: is no file"));
}

TEST_F(CheckTasks, AFolderWithoutTheDefaultTaskIsAWarning) {
    WriteTasks("default.xml", "<TaskList><Task>default</Task></TaskList>");
    EXPECT_THAT(
        Found(),
        ElementsAre(
            "warning taskmodel has no task \"DEFAULT\": a task without a model of its own has "
            "none"));
}

}  // namespace
