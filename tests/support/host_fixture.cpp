#include "support/host_fixture.h"

#include "common_service/global_config.h"
#include "reference_host/accepted_links.h"
#include "reference_host/host_settings.h"
#include "support/fake_clock.h"

namespace {

constexpr char PSZ_CLUSTER_CODE[] = "X";

void ResetGlobalConfig() {
    CGlobalConfig& config = CGlobalConfig::Instance();
    const CHandedOverSettings fresh;
    config.SetLoadBalance(fresh.bLoadBalance);
    config.SetFaultShift(fresh.bFaultShift);
    config.SetLoadBalanceOnePeriod(fresh.bLoadBalanceOnePeriod);
    config.SetLoadBalanceDiskThreshold(fresh.iLoadBalanceDiskThreshold);
    config.SetLoadBalanceNetThreshold(fresh.iLoadBalanceNetThreshold);
    config.SetLoadBalanceChannelThreshold(fresh.iLoadBalanceChannelThreshold);
    config.SetClusterForwardType(fresh.iClusterForwardType);
}

}  // namespace

CHostTest::CHostTest() {
    ResetGlobalConfig();
    ResetClock();
    Configure({PSZ_CLUSTER_CODE, "", "", ""});
    ForgetAcceptedLinks();
    SetNodeEventHandler(nullptr);
    SetStore(m_pStore);
    OMAdapter::getInstance().setLogger(&m_logger);
}

CHostTest::~CHostTest() {
    OMAdapter::getInstance().setLogger(nullptr);
    SetStore(nullptr);
    SetNodeEventHandler(nullptr);
    ResetClock();
}

std::string CHostTest::Path(const std::string& strSuffix) {
    return std::string("/Cloud") + PSZ_CLUSTER_CODE + strSuffix;
}
