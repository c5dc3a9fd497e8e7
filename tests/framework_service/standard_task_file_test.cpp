#include <filesystem>
#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/reconfigure.h"
#include "support/standard_tasks_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using namespace standard_tasks;

namespace {

/// A file between two good ones: what is told of it, and whether its first two models are kept.
struct CBadFile {
    std::string strName;
    std::string strText;
    std::vector<CLogLine> lines;
    bool bTwoKept = false;
};

std::ostream& operator<<(std::ostream& stream, const CBadFile& bad) {
    return stream << bad.strName;
}

class BadStandardTaskFile : public StandardTasks, public testing::WithParamInterface<CBadFile> {};

TEST_P(BadStandardTaskFile, IsToldAndDoesNotStopTheOthers) {
    WriteFile("a.xml", "<TaskList><Task>before</Task></TaskList>");
    WriteFile("b.xml", GetParam().strText);
    WriteFile("c.xml", "<TaskList><Task>behind</Task></TaskList>");
    std::vector<CLogLine> expected = {BEGIN, FileBegin("a.xml"), FileEnd("a.xml"),
                                      FileBegin("b.xml")};
    expected.insert(expected.end(), GetParam().lines.begin(), GetParam().lines.end());
    for (const CLogLine& line : {FileBegin("c.xml"), FileEnd("c.xml"), END}) {
        expected.push_back(line);
    }
    EXPECT_THAT(Load(), ElementsAreArray(expected));
    EXPECT_EQ(Model("before"), "before");
    EXPECT_EQ(Model("behind"), "behind");
    EXPECT_EQ(Model("first"), GetParam().bTwoKept ? "first" : "");
    EXPECT_EQ(Model("second"), GetParam().bTwoKept ? "second" : "");
    EXPECT_EQ(Model("last"), "");
}

std::vector<CLogLine> Unparsed(const std::string& strMessage) {
    return {NotParsed(strMessage), PARSE_FAILED, FileFailed("b.xml", ORVA_XML_INVALID)};
}

const std::vector<CLogLine> NOT_LOADED = {
    Err(XML_FAILED, ORVA_FAIL, FILE_STEM, SINGLE, "config file[b.xml]"),
    FileFailed("b.xml", ORVA_FAIL)};

constexpr char FIRST_TWO[] = "<TaskList><Task>first</Task><Task>second</Task>";

INSTANTIATE_TEST_SUITE_P(
    Files, BadStandardTaskFile,
    testing::Values(
        CBadFile{"Empty", "", NOT_LOADED}, CBadFile{"NoXml", "no xml", NOT_LOADED},
        CBadFile{"Unclosed", std::string(FIRST_TWO), NOT_LOADED},
        CBadFile{"OtherRoot", "<Tasks><Task>first</Task></Tasks>",
                 Unparsed("cannot find tasklist node")},
        CBadFile{"ListBelowTheRoot", "<R><TaskList><Task>first</Task></TaskList></R>",
                 Unparsed("cannot find tasklist node")},
        CBadFile{"NoTask", "<TaskList/>", Unparsed("cannot find task node")},
        CBadFile{"OtherElementsAlone", "<TaskList><task>first</task></TaskList>",
                 Unparsed("cannot find task node")},
        CBadFile{"TaskBelowATask", "<TaskList><A><Task>first</Task></A></TaskList>",
                 Unparsed("cannot find task node")},
        CBadFile{"EmptyTaskBehindTwo",
                 std::string(FIRST_TWO) + "<Task CPU=\"1\"/><Task>last</Task></TaskList>",
                 Unparsed("parse xml failed"), true},
        CBadFile{"OtherElementBehindTwo",
                 std::string(FIRST_TWO) + "<Other>x</Other><Task>last</Task></TaskList>",
                 Unparsed("parse xml failed"), true}),
    NAME_OF_PARAMETER);

TEST_F(StandardTasks, ElementsBeforeTheFirstTaskAreSkipped) {
    WriteFile("a.xml", "<TaskList><Other>x</Other><!-- c --><Task>m</Task></TaskList>");
    EXPECT_THAT(Load(), ElementsAre(BEGIN, FileBegin("a.xml"), FileEnd("a.xml"), END));
    EXPECT_EQ(Model("m"), "m");
    EXPECT_EQ(Model("x"), "");
}

TEST_F(StandardTasks, MissingFolderIsASuccessWithoutModels) {
    WriteFile("a.xml", "<TaskList><Task>m</Task></TaskList>");
    Load();
    const std::string strFolder = m_dir.File("taskmodel");
    std::filesystem::remove_all(strFolder);
    EXPECT_THAT(Load(), ElementsAre(BEGIN,
                                    Err("get task file failed", ORVA_FAIL, FILE_STEM,
                                        "GetAllStandardTaskFile",
                                        "get file list from dir[" + strFolder + "] failed."),
                                    END));
    EXPECT_EQ(Model("m"), "");
}

TEST_F(StandardTasks, MissingConfigurationDirectoryIsASuccessWithoutModels) {
    WriteFile("a.xml", "<TaskList><Task>m</Task></TaskList>");
    Load();
    Reconfigure(&CHostSettings::strConfigDir, "");
    EXPECT_THAT(Load(), ElementsAre(BEGIN,
                                    Err("get task file failed", ORVA_FAIL, FILE_STEM,
                                        "GetAllStandardTaskFile", "get conf dir failed."),
                                    END));
    EXPECT_EQ(Model("m"), "");
}

}  // namespace
