#include "common_service/memstat.h"
#include "common_service/tarn_def.h"
#include "contract/host_contract.h"

using namespace host_contract;

namespace {

int AnswerPluginRoot(std::string& strDir) {
    strDir = PLUGIN_ROOT;
    return ORVA_SUCCEED;
}

TEST_F(HostContract, PluginsAreLookedForBelowTheLibraryDirectory) {
    m_host.m_libDirectory = &AnswerPluginRoot;
    EXPECT_EQ(CPluginMgr::Instance().LoadAllPlugin(), 0);
    EXPECT_EQ(m_host.m_calls, (Calls{"get_lib_directory []",
                                     std::string("GetDirFileList ") + PLUGIN_ROOT + "/plugins 0"}));
}

TEST_F(HostContract, CodesOfTheFileServicesComeBack) {
    m_host.m_libDirectory = [](std::string&) { return NUMERIC_STORE_CODE; };
    EXPECT_EQ(CPluginMgr::Instance().LoadAllPlugin(), NUMERIC_STORE_CODE);
    EXPECT_EQ(m_host.CallsTo({"GetDirFileList"}), Calls());
    m_host.m_libDirectory = &AnswerPluginRoot;
    m_host.m_iFileListRet = NUMERIC_STORE_CODE;
    EXPECT_EQ(CPluginMgr::Instance().LoadAllPlugin(), NUMERIC_STORE_CODE);
}

TEST_F(HostContract, FaultShiftSupportComesFromThePluginAtTheStart) {
    m_host.m_libDirectory = &AnswerPluginRoot;
    m_host.m_files = {PLUGIN_FILE};
    ASSERT_EQ(CPluginMgr::Instance().LoadAllPlugin(), 0);
    EXPECT_EQ(g_hald_memstat[HALD_MEMSTAT_PLUGIN_INFO], 1U);
    m_host.m_reads[PATH_CLUSTER] =
        Text(ClusterText(NodeText("n1", "10.0.0.1", "Normal", "A") + "," +
                         NodeText("n2", "10.0.0.2", "Normal", "B")));
    Listen();
    EXPECT_EQ(InitCluster(), 0);
    EXPECT_EQ(Log(),
              (Calls{"log 6 framework_common InitNodeAndContainerFromZK [init node and container "
                     "from zk] ",
                     "log 6 framework_common GenContainerTable [Gen Container Table] node=n1 "
                     "container type=A ",
                     "log 6 framework_common GenContainerTable [Gen Container Table] node=n2 "
                     "container type=B ",
                     "log 6 framework_common LoadContainerInfo [load Container info] node=n1 "
                     "container type=A ",
                     "log 3 plugin_mgr IsContainerSupportFaultShift [is container support fault "
                     "shift] <1> do not support, type[B]",
                     "log 6 framework_common LoadContainerInfo [load Container info] node=n2 "
                     "container type=B ",
                     "log 6 framework_common InitNodeAndContainerFromZK [init framework] cloud "
                     "storage info is empty, not need to init framework."}));
    EXPECT_TRUE(CContainerMgr::Instance().IsContainerSupportFaultShift({"n1", "A"}));
    EXPECT_FALSE(CContainerMgr::Instance().IsContainerSupportFaultShift({"n2", "B"}));
    EXPECT_EQ(CPluginMgr::Instance().UnLoadAllPlugin(), 0);
    EXPECT_EQ(g_hald_memstat[HALD_MEMSTAT_PLUGIN_INFO], 0U);
    EXPECT_TRUE(CContainerMgr::Instance().IsContainerSupportFaultShift({"n1", "A"}))
        << "settled when the container was created";
}

}  // namespace
