#include "contract/host_contract.h"

using namespace host_contract;

namespace {

TEST_F(HostContract, LinksAreAddedThenDeletedThenTheRegistriesChange) {
    m_host.m_strLocalIp = "10.0.0.2";
    m_host.m_reads[PATH_CLUSTER] =
        Text(ClusterText(NodeText("n1", "10.0.0.1") + "," + NodeText("n2", "10.0.0.2") + "," +
                         NodeText("n3", "10.0.0.3") + "," + NodeText("n4", "10.0.0.4")));
    EXPECT_EQ(CFrameworkCommon::Instance().InitNodeAndContainerFromZK(), 0);

    m_host.m_calls.clear();
    m_host.m_reads[PATH_CLUSTER] =
        Text(ClusterText(NodeText("n5", "10.0.0.5") + "," + NodeText("n1", "10.0.0.1") + "," +
                         NodeText("n4", "10.0.0.4", "Removed")));
    m_host.m_reads[PATH_CLOUD_STORAGE] = Text(CLOUD_STORAGE);
    m_host.m_onDeleteLink = [this] {
        ContainerMap containerMap;
        CContainerMgr::Instance().GetAllContainer(containerMap);
        m_host.Record("registries " + std::to_string(CNodeMgr::Instance().GetSize()) + " " +
                      std::to_string(containerMap.size()));
    };
    EXPECT_EQ(CFrameworkCommon::Instance().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(m_host.CallsTo({"GetDataFromZK", "SetClusterForwardType", "AddValidatedLink",
                              "DelValidatedLink", "registries", "IntToStr"}),
              (Calls{"GetDataFromZK /CloudX/Cluster 65536 unwatched filled",
                     "SetClusterForwardType 5", "AddValidatedLink 10.0.0.5 70106",
                     "AddValidatedLink 10.0.0.1 70106", "DelValidatedLink 10.0.0.3 70106",
                     "registries 4 4", "DelValidatedLink 10.0.0.4 70106", "registries 4 4",
                     "GetDataFromZK /CloudX/CloudStorage 65536 unwatched filled", "IntToStr 1 0",
                     "IntToStr 2 0", "IntToStr 3 0"}));
    EXPECT_EQ(CNodeMgr::Instance().GetSize(), 3U);
}

TEST_F(HostContract, SameAddressTwiceIsAddedAndDeletedTwice) {
    m_host.m_reads[PATH_CLUSTER] =
        Text(ClusterText(NodeText("n1", "10.0.0.1") + "," + NodeText("n2", "10.0.0.1")));
    EXPECT_EQ(CFrameworkCommon::Instance().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(m_host.CallsTo({"AddValidatedLink", "DelValidatedLink"}),
              Calls(2, "AddValidatedLink 10.0.0.1 70106"));
    m_host.m_calls.clear();
    m_host.m_reads[PATH_CLUSTER] = Text(ClusterText(""));
    EXPECT_EQ(CFrameworkCommon::Instance().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(m_host.CallsTo({"AddValidatedLink", "DelValidatedLink"}),
              Calls(2, "DelValidatedLink 10.0.0.1 70106"));
}

}  // namespace
