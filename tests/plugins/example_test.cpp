#include "common_service/directory.h"
#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/plugin_mgr.h"
#include "framework_service/schedule_mgr.h"
#include "support/host_fixture.h"

using testing::ElementsAre;
using testing::Pair;

namespace {

/// The plug-in of the guide, as its own build makes it.
class ExamplePlugin : public CHostTest {
protected:
    ~ExamplePlugin() override {
        CContainerMgr::Instance().Init({});
        CPluginMgr::Instance().UnLoadAllPlugin();
    }
};

TEST_F(ExamplePlugin, IsFoundByItsJobAndSchedules) {
    HALD::set_lib_directory(EXAMPLE_LIB_DIR);
    ASSERT_EQ(CPluginMgr::Instance().LoadAllPlugin(), 0);
    IPlugin* const pPlugin = CPluginMgr::Instance().GetPluginByJobType(9001);
    ASSERT_NE(pPlugin, nullptr);

    PELU::CXml xml(nullptr);
    ASSERT_TRUE(xml.Parse("<TaskID>1</TaskID>"));
    std::list<CResourceTask> taskList;
    ASSERT_EQ(pPlugin->PrivateTaskToResourceTask("node", 9001, xml, taskList), 0);

    CTaskContainerMap bindTable;
    unsigned long long ullDecisionVerNum = 0;
    EXPECT_EQ(pPlugin->TaskSchedule("node", taskList, bindTable, ullDecisionVerNum, false),
              ORVA_FAIL);
    const CContainerAddr addr("node", "MeroExample");
    CContainerMgr::Instance().AddContainer({{addr, CContainer()}});
    ASSERT_EQ(CScheduleMgr::Instance().SetDecisionVerNum(40), 0);
    EXPECT_EQ(pPlugin->TaskSchedule("node", taskList, bindTable, ullDecisionVerNum, false), 0);
    EXPECT_THAT(bindTable, ElementsAre(Pair("1", addr)));
    EXPECT_EQ(ullDecisionVerNum, 41u);
}

}  // namespace
