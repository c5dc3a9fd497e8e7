#include "support/host_fixture.h"

#include "common_service/directory.h"
#include "common_service/global_config.h"
#include "common_service/net_factory.h"
#include "common_service/tarn_conf.h"
#include "common_service/tarn_def.h"
#include "support/fake_clock.h"

namespace {

constexpr char PSZ_CLUSTER_CODE[] = "X";

void ResetGlobalConfig() {
    CGlobalConfig& config = CGlobalConfig::Instance();
    const CGlobalConfig fresh;
    config.SetLoadBalance(fresh.IsLoadBalance());
    config.SetFaultShift(fresh.IsFaultShift());
    config.SetLoadBalanceOnePeriod(fresh.IsLoadBalanceOnePeriod());
    config.SetLoadBalanceDiskThreshold(fresh.GetLoadBalanceDiskThreshold());
    config.SetLoadBalanceNetThreshold(fresh.GetLoadBalanceNetThreshold());
    config.SetLoadBalanceChannelThreshold(fresh.GetLoadBalanceChannelThreshold());
    config.SetClusterForwardType(fresh.GetClusterForwardType());
    config.SetLocalIp("");
}

}  // namespace

CHostTest::CHostTest() {
    ResetGlobalConfig();
    ResetClock();
    CTARNConf::m_oConf.SetCstClusterCode(PSZ_CLUSTER_CODE);
    HALD::set_lib_directory("");
    HALD::set_config_directory("");
    HALD::CNetFactory::Instance().Clear();
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
    return std::string(PSZ_STORE_ROOT) + PSZ_CLUSTER_CODE + strSuffix;
}
