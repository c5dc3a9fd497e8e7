#include <filesystem>
#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/standard_tasks_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace standard_tasks;

namespace {

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

}  // namespace
