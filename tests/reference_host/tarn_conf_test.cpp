#include "common_service/tarn_conf.h"

#include "support/host_fixture.h"

namespace {

class ClusterCode : public CHostTest {};

TEST_F(ClusterCode, IsWhatWasSet) {
    EXPECT_EQ(CTARNConf::m_oConf.GetCstClusterCode(), "X");
    CTARNConf::m_oConf.SetCstClusterCode("c01");
    EXPECT_EQ(CTARNConf::m_oConf.GetCstClusterCode(), "c01");
}

}  // namespace
