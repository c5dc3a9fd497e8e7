#include "framework_service/standard_task_mgr.h"

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "common_service/directory.h"
#include "common_service/tarn_def.h"
#include "support/registry_fixture.h"
#include "support/temp_dir.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

constexpr char FILE_STEM[] = "standard_task_mgr";
constexpr char LOAD[] = "load standard task table";
constexpr char LOAD_ONE[] = "load single standard task table";
constexpr char XML_FAILED[] = "standard xml load failed";
constexpr char SINGLE[] = "LoadTaskBySingleFile";

CStdTaskMgr& Manager() {
    return CStdTaskMgr::Instance();
}

const CLogLine BEGIN = Info(LOAD, FILE_STEM, "Load", "start");
const CLogLine END = Info(LOAD, FILE_STEM, "Load", "succeed");

CLogLine FileBegin(const std::string& strName) {
    return Info(LOAD_ONE, FILE_STEM, SINGLE, "start, name[" + strName + "]");
}

CLogLine FileEnd(const std::string& strName) {
    return Info(LOAD, FILE_STEM, SINGLE, "succeed, name[" + strName + "]");
}

CLogLine FileFailed(const std::string& strName, int iCode) {
    return Err(LOAD, iCode, FILE_STEM, "Load", "load task from xml[" + strName + "] failed.");
}

CLogLine NotParsed(const std::string& strMessage) {
    return Err("parse standard task table", ORVA_XML_INVALID, FILE_STEM, "ParseStandardTaskTable",
               strMessage);
}

const CLogLine PARSE_FAILED =
    Err(XML_FAILED, ORVA_XML_INVALID, FILE_STEM, SINGLE, "parse xml failed");

/// Every file lies in the folder "taskmodel" of a configuration directory of the test's own.
class StandardTasks : public CHostTest {
protected:
    StandardTasks() {
        std::filesystem::create_directory(m_dir.File("taskmodel"));
        HALD::set_config_directory(m_dir.GetPath());
    }

    /// Leaves an empty table behind.
    ~StandardTasks() override {
        HALD::set_config_directory("");
        Manager().Load();
    }

    void WriteFile(const std::string& strName, const std::string& strText) const {
        m_dir.WriteFile("taskmodel/" + strName, strText);
    }

    /// The lines of a load, of which each gives one.
    std::vector<CLogLine> Load() {
        m_logger.Clear();
        EXPECT_EQ(Manager().Load(), 0);
        return m_logger.GetLinesOf(FILE_STEM);
    }

    /// The name of the model that is handed out; empty when there is none.
    std::string Model(const std::string& strName) {
        CResourceTask task;
        task.SetTaskName("untouched");
        const int iRet = Manager().GetStandardTask(strName, task);
        if (iRet == 0) {
            return task.GetTaskName();
        }
        EXPECT_EQ(iRet, ORVA_FAIL);
        EXPECT_EQ(task.GetTaskName(), "untouched");
        return "";
    }

    const CTempDir m_dir;
};

TEST_F(StandardTasks, ModelsOfAllFilesAreHandedOutByName) {
    WriteFile("b.xml", "<TaskList><Task>decode</Task><Task>DEFAULT</Task></TaskList>");
    WriteFile("a.xml", "<?xml version=\"1.0\"?><TaskList><Task CPU=\"5\">record</Task></TaskList>");
    EXPECT_THAT(Load(), ElementsAre(BEGIN, FileBegin("a.xml"), FileEnd("a.xml"), FileBegin("b.xml"),
                                    FileEnd("b.xml"), END));
    m_logger.Clear();
    EXPECT_EQ(Model("record"), "record");
    EXPECT_EQ(Model("decode"), "decode");
    EXPECT_EQ(Model("nobody's"), "DEFAULT");
    EXPECT_EQ(Model("RECORD"), "DEFAULT");
    EXPECT_EQ(Model(""), "DEFAULT");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty()) << "the fall back is not told";
}

TEST_F(StandardTasks, UnknownNameWithoutADefaultIsAFailure) {
    WriteFile("a.xml", "<TaskList><Task>record</Task></TaskList>");
    Load();
    m_logger.Clear();
    EXPECT_EQ(Model("decode"), "");
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Err("Std task mgr", ORVA_FAIL, FILE_STEM, "GetStandardTask",
                                "get default standard task failed, task name=decode")));
    EXPECT_EQ(Model("DEFAULT"), "");
    EXPECT_EQ(Model("record"), "record");
}

TEST_F(StandardTasks, FiguresInTheFileHaveNoEffect) {
    WriteFile("a.xml", R"(<TaskList><Task CPU="50" MEM="60" IO="70" NET="80" DISK="90">m</Task>)"
                       R"(<Task CPU="many">n</Task></TaskList>)");
    Load();
    for (const char* pszName : {"m", "n"}) {
        CResourceTask task;
        ASSERT_EQ(Manager().GetStandardTask(pszName, task), 0);
        EXPECT_EQ(task.GetCpu(), 0);
        EXPECT_EQ(task.GetMem(), 0);
        EXPECT_EQ(task.GetIO(), 0);
        EXPECT_EQ(task.GetNet(), 0);
        EXPECT_EQ(task.GetDisk(), 0);
    }
}

TEST_F(StandardTasks, EveryFieldOfTheModelIsTakenOver) {
    WriteFile("a.xml", "<TaskList><Task>m</Task></TaskList>");
    Load();
    CResourceTask task;
    task.SetTaskId("id");
    task.SetSupportShift(false);
    task.SetCpu(1);
    task.SetDisk(2);
    task.InsertSingleKeyValue("key", "value");
    ORVA_CLOUD_STORAGE_ALLOC_INFO allocInfo;
    task.SetAllocInfoList(allocInfo);
    ASSERT_EQ(Manager().GetStandardTask("m", task), 0);
    KeyValueMap privateInfo;
    task.GetAllPrivateInfo(privateInfo);
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocInfoList;
    task.GetAllocInfoList(allocInfoList);
    EXPECT_EQ(task.GetTaskId(), "");
    EXPECT_EQ(task.GetTaskName(), "m");
    EXPECT_TRUE(task.IsSupportShift());
    EXPECT_EQ(task.GetCpu(), 0);
    EXPECT_EQ(task.GetDisk(), 0);
    EXPECT_THAT(privateInfo, IsEmpty());
    EXPECT_THAT(allocInfoList, IsEmpty());
}

TEST_F(StandardTasks, HandedOutModelIsACopy) {
    WriteFile("a.xml", "<TaskList><Task>m</Task></TaskList>");
    Load();
    CResourceTask task;
    ASSERT_EQ(Manager().GetStandardTask("m", task), 0);
    task.SetCpu(5);
    ASSERT_EQ(Manager().GetStandardTask("m", task), 0);
    EXPECT_EQ(task.GetCpu(), 0);
}

TEST_F(StandardTasks, WholeTableIsHandedOutInPlaceOfWhatTheArgumentHeld) {
    CStdTaskMgr::TaskMap models{{"stale", {}}};
    Manager().Load();
    Manager().GetAllStandardTask(models);
    EXPECT_THAT(models, IsEmpty());
    WriteFile("a.xml", "<TaskList><Task>n</Task><Task>DEFAULT</Task><Task>m</Task></TaskList>");
    Load();
    Manager().GetAllStandardTask(models);
    std::vector<std::string> names;
    for (const auto& [strName, model] : models) {
        EXPECT_EQ(model.GetTaskName(), strName);
        names.push_back(strName);
    }
    EXPECT_THAT(names, ElementsAre("DEFAULT", "m", "n"));
    models.clear();
    EXPECT_EQ(Model("m"), "m") << "what was handed out is a copy";
}

TEST_F(StandardTasks, RepeatedNameIsNoFault) {
    WriteFile("a.xml", "<TaskList><Task>m</Task><Task>m</Task></TaskList>");
    WriteFile("b.xml", "<TaskList><Task>m</Task><Task>n</Task></TaskList>");
    EXPECT_THAT(Load(), ElementsAre(BEGIN, FileBegin("a.xml"), FileEnd("a.xml"), FileBegin("b.xml"),
                                    FileEnd("b.xml"), END));
    EXPECT_EQ(Model("m"), "m");
    EXPECT_EQ(Model("n"), "n");
}

TEST_F(StandardTasks, LoadDropsTheFormerModels) {
    WriteFile("a.xml", "<TaskList><Task>m</Task><Task>DEFAULT</Task></TaskList>");
    Load();
    WriteFile("a.xml", "<TaskList><Task>n</Task></TaskList>");
    Load();
    EXPECT_EQ(Model("m"), "");
    EXPECT_EQ(Model("n"), "n");
}

TEST_F(StandardTasks, OnlyNamesBeforeTheLowerCaseSuffixCount) {
    const std::string strText = "<TaskList><Task>m</Task></TaskList>";
    for (const char* pszName :
         {".xml", "a.XML", "a.Xml", "axml", "a.xml.bak", "a.xmlx", "xml", "x", "a.txt"}) {
        WriteFile(pszName, strText);
    }
    std::filesystem::create_directory(m_dir.File("taskmodel/folder.xml"));
    std::filesystem::create_directory(m_dir.File("taskmodel/below"));
    m_dir.WriteFile("taskmodel/below/deep.xml", strText);
    m_dir.WriteFile("outside.xml", strText);
    EXPECT_THAT(Load(), ElementsAre(BEGIN, END));
    EXPECT_EQ(Model("m"), "");
    WriteFile("..xml", strText);
    EXPECT_THAT(Load(), ElementsAre(BEGIN, FileBegin("..xml"), FileEnd("..xml"), END));
}

// ---------------------------------------------------------------- files that are not so good

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
    HALD::set_config_directory("");
    EXPECT_THAT(Load(), ElementsAre(BEGIN,
                                    Err("get task file failed", ORVA_FAIL, FILE_STEM,
                                        "GetAllStandardTaskFile", "get conf dir failed."),
                                    END));
    EXPECT_EQ(Model("m"), "");
}

}  // namespace
