#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/plugin_mgr.h"
#include "plugins/schedule_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

class ImagePlugin : public CScheduleTest {
protected:
    ImagePlugin() : CScheduleTest("image", "MeroImgDev") {}
};

TEST_F(ImagePlugin, ClaimsItsJobsAndItsContainerType) {
    CPluginMgr& manager = CPluginMgr::Instance();
    EXPECT_EQ(manager.GetPluginByJobType(2001), &Plugin());
    EXPECT_EQ(manager.GetPluginByJobType(2002), &Plugin());
    EXPECT_EQ(manager.GetPluginByContainerType("MeroImgDev"), &Plugin());
    EXPECT_TRUE(manager.IsContainerSupportFaultShift("MeroImgDev"));
    std::list<std::string> typeList;
    EXPECT_EQ(manager.GetLogicContainerTypeByRealType("MeroImgDev", typeList), 0);
    EXPECT_THAT(typeList, ElementsAre("ImgAnalysis", "ImgExport"));
    EXPECT_EQ(Plugin().GetSupportLoadBalanceContainers(typeList), 0);
    EXPECT_THAT(typeList, IsEmpty());
}

TEST_F(ImagePlugin, SpreadsByTheNumberOfTasks) {
    AddContainer("a", 0, 0, {{"x"}, {"y"}});
    AddContainer("b", 900, 50);
    EXPECT_EQ(Schedule({{"1"}, {"2"}, {"3"}, {"4"}}), 0);
    EXPECT_THAT(BoundNodes(),
                ElementsAre(Pair("1", "b"), Pair("2", "b"), Pair("3", "a"), Pair("4", "b")));
}

TEST_F(ImagePlugin, EqualNumbersGoByNet) {
    AddContainer("a", 0, 60);
    AddContainer("b", 0, 50);
    EXPECT_EQ(Schedule({{"1", 0, 30}, {"2", 0, 30}}), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("1", "b"), Pair("2", "a")));
}

TEST_F(ImagePlugin, ShiftsTheTasksOfAFailedContainer) {
    AddContainer("a", 0, 0, {{"1"}, {"2"}});
    AddContainer("b", 0, 0, {{"3"}});
    AddContainer("c", 0, 0);
    CContainerMgr::Instance().SetContainerFaultShift(Addr("a"), true);
    std::list<CResourceTask> taskList;
    EXPECT_EQ(Plugin().GetResTaskListInContainer(Addr("a"), taskList, true, false), 0);
    EXPECT_EQ(Plugin().TaskSchedule("a", taskList, m_bindTable, m_ullDecisionVerNum, true), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("1", "c"), Pair("2", "b")));
    EXPECT_EQ(m_ullDecisionVerNum, 41u);
}

TEST_F(ImagePlugin, ReadsTheSameTasks) {
    PELU::CXml xml(nullptr);
    Parse(xml, "<TaskList><Task><TaskID>1</TaskID></Task></TaskList>");
    std::list<CResourceTask> taskList;
    EXPECT_EQ(Plugin().PrivateTaskToResourceTask("node", 2001, xml, taskList), 0);
    EXPECT_THAT(TaskIds(taskList), ElementsAre("1"));
    EXPECT_EQ(Plugin().PrivateTaskToResourceTask("node", 1001, xml, taskList), ORVA_PARA_INVALID);
}

}  // namespace
