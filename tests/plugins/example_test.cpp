#include "common_service/tarn_def.h"
#include "framework_service/plugin_mgr.h"
#include "plugins/schedule_fixture.h"

using testing::ElementsAre;
using testing::Pair;

namespace {

/// The plug-in of the guide, as its own build makes it.
class ExamplePlugin : public CScheduleTest {
protected:
    ExamplePlugin() : CScheduleTest("example", "MeroExample", EXAMPLE_LIB_DIR) {}
};

TEST_F(ExamplePlugin, IsFoundByItsJobAndSchedules) {
    ASSERT_EQ(CPluginMgr::Instance().GetPluginByJobType(9001), &Plugin());
    PELU::CXml xml(nullptr);
    Parse(xml, "<TaskID>1</TaskID>");
    std::list<CResourceTask> taskList;
    ASSERT_EQ(Plugin().PrivateTaskToResourceTask("node", 9001, xml, taskList), 0);
    EXPECT_THAT(TaskIds(taskList), ElementsAre("1"));
    AddContainer("a", 0, 0);
    AddContainer("b", 0, 0);
    EXPECT_EQ(Plugin().TaskSchedule("node", taskList, m_bindTable, m_ullDecisionVerNum, false), 0);
    EXPECT_THAT(m_bindTable, ElementsAre(Pair("1", Addr("a"))));
    EXPECT_EQ(m_ullDecisionVerNum, 41u);
}

TEST_F(ExamplePlugin, AppendsTheTaskOfARequestOrNothing) {
    std::list<CResourceTask> taskList = Tasks({{"0"}});
    PELU::CXml bad(nullptr);
    Parse(bad, "<Other>1</Other>");
    EXPECT_EQ(Plugin().PrivateTaskToResourceTask("node", 9001, bad, taskList), ORVA_XML_INVALID);
    EXPECT_THAT(TaskIds(taskList), ElementsAre("0"));
    PELU::CXml good(nullptr);
    Parse(good, "<TaskID>1</TaskID>");
    EXPECT_EQ(Plugin().PrivateTaskToResourceTask("node", 9001, good, taskList), 0);
    EXPECT_THAT(TaskIds(taskList), ElementsAre("0", "1"));
}

}  // namespace
