#include "contract/host_contract.h"

using namespace host_contract;

namespace {

TEST_F(HostContract, ConfigurationIsReadThenSetInOrder) {
    m_host.m_reads[PATH_CONFIG] = Text(CONFIG);
    EXPECT_EQ(CFrameworkCommon::Instance().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(m_host.m_calls, (Calls{"getLogger", "GetCstClusterCode",
                                     "GetDataFromZK /CloudX/ClusterConfig 512 unwatched filled",
                                     "CGlobalConfig::Instance"} +
                               SetterCalls("0", "1", "0")));
}

TEST_F(HostContract, TwoCallsReadTwiceAndSetTwelveTimes) {
    m_host.m_reads[PATH_CONFIG] = Text(CONFIG);
    EXPECT_EQ(CFrameworkCommon::Instance().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(CFrameworkCommon::Instance().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(m_host.CallsTo({"GetDataFromZK"}).size(), 2U);
    EXPECT_EQ(m_host.CallsTo(SETTERS), SetterCalls("0", "1", "0") + SetterCalls("0", "1", "0"));
}

TEST_F(HostContract, PathIsComposedForEachRead) {
    CFrameworkCommon::Instance().InitClusterConfigFromZK();
    m_host.m_strClusterCode = "/Y";
    CFrameworkCommon::Instance().InitClusterConfigFromZK();
    m_host.m_strClusterCode = "";
    CFrameworkCommon::Instance().InitClusterConfigFromZK();
    EXPECT_EQ(m_host.CallsTo({"GetDataFromZK"}),
              (Calls{"GetDataFromZK /CloudX/ClusterConfig 512 unwatched filled",
                     "GetDataFromZK /Cloud/Y/ClusterConfig 512 unwatched filled",
                     "GetDataFromZK /Cloud/ClusterConfig 512 unwatched filled"}));
}

}  // namespace
