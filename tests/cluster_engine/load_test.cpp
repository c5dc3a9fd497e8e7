#include <filesystem>

#include "cluster_engine/engine_fixture.h"
#include "framework_service/plugin_mgr.h"
#include "reference_host/host_settings.h"
#include "support/temp_dir.h"

namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

namespace fs = std::filesystem;

class EngineLoad : public CEngineTest {
protected:
    void SetUp() override { Store({{"r1", {"MeroRecord"}}}); }

    std::string m_strWhy;
};

TEST_F(EngineLoad, PlugInThatDoesNotLoadIsNamedAndTriedAgain) {
    const CTempDir dir;
    fs::create_directory(dir.File("plugins"));
    const std::string strBad = dir.WriteFile("plugins/bad.so", "no library");
    CPluginMgr::Instance().UnLoadAllPlugin();
    Configure({"X", "", dir.GetPath(), ""});
    EXPECT_NE(m_pEngine->Load(m_iNow, m_strWhy), 0);
    EXPECT_THAT(m_strWhy, StartsWith("cannot load the plug-ins: bad.so: "));
    EXPECT_NE(m_pEngine->Load(m_iNow, m_strWhy), 0) << "the rest alone is not what was wanted";
    fs::remove(strBad);
    EXPECT_EQ(m_pEngine->Load(m_iNow, m_strWhy), 0) << m_strWhy;
}

TEST_F(EngineLoad, EachStepIsTold) {
    std::vector<std::string> steps;
    const auto tell = [&](const std::string& strWhat, const std::string& strFound) {
        steps.push_back(strWhat + ": " + strFound);
    };
    ASSERT_EQ(m_pEngine->Load(m_iNow, m_strWhy, tell), 0) << m_strWhy;
    EXPECT_THAT(steps, ElementsAre(StartsWith("the plug-ins: "),
                                   "the configuration: fault shift on, load balance on",
                                   "the versions: absent", "the cluster: 1 node, 1 container",
                                   "the CG list: absent", "the centre database: absent",
                                   "the manager: absent", StartsWith("the standard tasks: "),
                                   "what the containers are to do: 0 tasks"));
}

}  // namespace
