#include <chrono>
#include <future>
#include <stdexcept>

#include "common_service/tarn_def.h"
#include "contract/host_contract.h"
#include "framework_service/cluster_config_znode_info.h"

using namespace host_contract;

namespace {

CMinimalHost::ReadAnswer Throws() {
    return [](CBaseJsonObject&, bool&) -> int { throw std::runtime_error("host"); };
}

TEST_F(HostContract, ThrowingReadLeavesTheModelAsItWas) {
    m_host.m_reads[PATH_CLUSTER] = Text(ClusterText(NodeText("n1", "10.0.0.1")));
    EXPECT_EQ(InitCluster(), 0);
    m_host.m_reads[PATH_CLUSTER] = Throws();
    EXPECT_THROW(InitCluster(), std::runtime_error);
    EXPECT_TRUE(CNodeMgr::Instance().IsNodeExist("n1"));
    m_host.m_reads[PATH_CONFIG] = Throws();
    EXPECT_THROW(InitConfig(), std::runtime_error);
    EXPECT_EQ(m_host.CallsTo(SETTERS), Calls());
}

TEST_F(HostContract, ThrowingStoreLeavesNoLockBehind) {
    m_host.m_reads[PATH_CLUSTER] = Text(ClusterText(NodeText("n1", "10.0.0.1")));
    EXPECT_EQ(InitCluster(), 0);
    m_host.m_reads[PATH_CLOUD_STORAGE] = Throws();
    EXPECT_THROW(
        CContainerMgr::Instance().SaveDataToZK(CContainerAddr("n1", CONTAINER_TYPE_CLOUD_STORAGE)),
        std::runtime_error);
    const std::future<void> other = std::async(std::launch::async, [] {
        ContainerMap containerMap;
        CContainerMgr::Instance().GetAllContainer(containerMap);
    });
    ASSERT_EQ(other.wait_for(std::chrono::seconds(30)), std::future_status::ready);
}

TEST_F(HostContract, DocumentThrowsOutOfItsParseWithNothingTakenOver) {
    for (const char* pszText : {"[1]", "\"text\"", "3"}) {
        SCOPED_TRACE(pszText);
        CClusterConfigZNodeInfo document;
        document.SetFaultShift(false);
        EXPECT_THROW(document.ParseJson(pszText), std::exception);
        EXPECT_TRUE(document.IsLoadBalance());
        EXPECT_FALSE(document.IsFaultShift());
    }
}

}  // namespace
