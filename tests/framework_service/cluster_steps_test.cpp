#include <vector>

#include "common_service/tarn_def.h"
#include "support/cluster_start_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using namespace cluster_start;

namespace {

using ClusterSteps = ClusterStart;

TEST_F(ClusterSteps, NodeTableIsReplaced) {
    EXPECT_EQ(Framework().InitNodeMgr({MakeStoredNode("n1", {"A"}), MakeStoredNode("n2", {})}), 0);
    EXPECT_EQ(Framework().InitNodeMgr({MakeStoredNode("n3", {"A"})}), 0);
    EXPECT_THAT(NodeIds(), ElementsAre("n3"));
    EXPECT_THAT(ContainerAddrs(), IsEmpty());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ClusterSteps, ContainerTableIsReplaced) {
    EXPECT_EQ(Framework().InitContainerMgr({MakeStoredNode("n1", {"A", "B"})}), 0);
    EXPECT_EQ(
        Framework().InitContainerMgr({MakeStoredNode("n1", {"B"}), MakeStoredNode("n2", {"B"})}),
        0);
    EXPECT_THAT(ContainerAddrs(),
                ElementsAre(CContainerAddr("n1", "B"), CContainerAddr("n2", "B")));
    EXPECT_THAT(NodeIds(), IsEmpty());
    EXPECT_EQ(Framework().InitContainerMgr({}), 0);
    EXPECT_THAT(ContainerAddrs(), IsEmpty());
}

TEST_F(ClusterSteps, ContainerTableStaysWhenItCannotBeReplaced) {
    EXPECT_EQ(Framework().InitContainerMgr({MakeStoredNode("n1", {"A"})}), 0);
    m_logger.Clear();
    EXPECT_EQ(Framework().InitContainerMgr({MakeStoredNode("n2", {"A", "A"})}), ORVA_FAIL);
    EXPECT_THAT(ContainerAddrs(), ElementsAre(CContainerAddr("n1", "A")));
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAreArray(GenLines({{"n2", "A"}, {"n2", "A"}}) +
                                 std::vector<CLogLine>{INSERT_FAILED, LOAD_FAILED, GEN_FAILED}));
}

TEST_F(ClusterSteps, NodesAndContainersAreReplacedTogether) {
    EXPECT_EQ(Framework().InitNodeAndContainer({MakeStoredNode("n1", {"A"})}), 0);
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    EXPECT_THAT(ContainerAddrs(), ElementsAre(CContainerAddr("n1", "A")));
    EXPECT_THAT(m_logger.GetLines(), ElementsAreArray(GenLines({{"n1", "A"}})));

    m_logger.Clear();
    EXPECT_EQ(Framework().InitNodeAndContainer({MakeStoredNode("n2", {"A", "A"})}), ORVA_FAIL);
    EXPECT_THAT(NodeIds(), ElementsAre("n2"));
    EXPECT_THAT(ContainerAddrs(), ElementsAre(CContainerAddr("n1", "A")));
    EXPECT_EQ(m_logger.GetLines().back(), CONTAINER_MGR_FAILED);

    m_logger.Clear();
    EXPECT_EQ(Framework().InitNodeAndContainer({}), 0);
    EXPECT_THAT(NodeIds(), IsEmpty());
    EXPECT_THAT(ContainerAddrs(), IsEmpty());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ClusterSteps, GeneratedContainersAreAddedToTheMap) {
    ContainerMap containerMap;
    containerMap[CContainerAddr("n0", "A")].SetTaskTotalDisk(7);
    EXPECT_EQ(Framework().GenContainerTable({MakeStoredNode("n1", {"A"}), MakeStoredNode("n2", {})},
                                            containerMap),
              0);
    EXPECT_THAT(AddressesOf(containerMap),
                ElementsAre(CContainerAddr("n0", "A"), CContainerAddr("n1", "A")));
    EXPECT_EQ(containerMap[CContainerAddr("n0", "A")].GetTaskTotalDisk(), 7);
    EXPECT_THAT(ContainerAddrs(), IsEmpty()) << "the registry is not touched";
}

TEST_F(ClusterSteps, LoadingStopsAtTheFirstAddressThatIsThere) {
    ContainerMap containerMap;
    containerMap[CContainerAddr("n1", "B")].SetTaskTotalDisk(7);
    EXPECT_EQ(Framework().LoadContainerInfo({{"n1", "A"}, {"n1", "B"}, {"n1", "C"}}, containerMap),
              ORVA_FAIL);
    EXPECT_THAT(AddressesOf(containerMap),
                ElementsAre(CContainerAddr("n1", "A"), CContainerAddr("n1", "B")));
    EXPECT_EQ(containerMap[CContainerAddr("n1", "B")].GetTaskTotalDisk(), 7);
    EXPECT_EQ(m_logger.GetLines().back(), INSERT_FAILED);
}

TEST_F(ClusterSteps, NothingToLoadIsASuccess) {
    ContainerMap containerMap;
    EXPECT_EQ(Framework().LoadContainerInfo({}, containerMap), 0);
    EXPECT_EQ(Framework().GenContainerTable({}, containerMap), 0);
    EXPECT_TRUE(containerMap.empty());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

}  // namespace
