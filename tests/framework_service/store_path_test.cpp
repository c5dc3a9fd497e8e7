#include "framework_service/store_path.h"

#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_znode_info.h"
#include "support/host_fixture.h"

namespace {

class DocumentPath : public CHostTest {};

TEST_F(DocumentPath, IsRootClusterCodeAndSuffixWithNothingBetween) {
    EXPECT_EQ(StorePath(STORE_NODE_CLUSTER), "/CloudX/Cluster");
    EXPECT_EQ(StorePath(STORE_NODE_CG_LIST), "/CloudX/MERO/CGList");
}

}  // namespace
