#include "cluster_engine/engine_fixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EngineView : public CEngineTest {
protected:
    void SetUp() override {
        Store({{"r1", {"MeroRecord"}}, {"r2", {"MeroRecord"}}});
        Load();
    }
};

TEST_F(EngineView, TellsWhetherItIsSettling) {
    EXPECT_TRUE(m_pEngine->GetView().bSettling);
    Settle();
    EXPECT_FALSE(m_pEngine->GetView().bSettling);
}

TEST_F(EngineView, ShowsWhatEachPlugInTakes) {
    const CEngineView view = m_pEngine->GetView();
    const auto it =
        std::find_if(view.plugins.begin(), view.plugins.end(), [](const CPluginView& p) {
            return p.types.size() == 1 && p.types.front() == "MeroRecord";
        });
    ASSERT_NE(it, view.plugins.end());
    EXPECT_THAT(it->jobTypes, ElementsAre(1001U, 1002U));
    EXPECT_FALSE(it->bOutOfService);
}

TEST_F(EngineView, ShowsDrainingNodesAndTheirShifts) {
    Settle();
    EXPECT_THAT(m_pEngine->GetView().draining, IsEmpty());
    Record({{"a", 5}});
    Must(ReportOf(Recorder(NodeOf("a"))));
    const std::string strNode = NodeOf("a");
    Must(CMemberStatus{{strNode == "r1" ? "r2" : "r1"}, EMemberStatus::REMOVED});
    Must(CDrain{strNode});
    const CEngineView view = m_pEngine->GetView();
    EXPECT_THAT(view.draining, ElementsAre(strNode));
    ASSERT_EQ(view.shifts.size(), 1U);
    EXPECT_EQ(view.shifts.front().strNodeId, strNode);
    EXPECT_EQ(view.shifts.front().uiWaiting, 1U);
    EXPECT_TRUE(view.shifts.front().bDraining);
}

}  // namespace
