#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/plugin_info.h"

namespace {

TEST(Conversion, ManagerStandsForItsDocument) {
    CClusterMGRInfo master;
    master.SetNodeId("n1");
    const CClusterMGRZNodeInfo document = master;
    EXPECT_EQ(document.GetMasterMGR().GetNodeId(), "n1");
}

TEST(Conversion, LibraryNameStandsForItsPlugin) {
    EXPECT_TRUE((std::is_convertible_v<const std::string&, CPluginInfo>));
}

}  // namespace
