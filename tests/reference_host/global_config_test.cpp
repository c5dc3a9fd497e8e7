#include "common_service/global_config.h"

#include <tuple>

#include "reference_host/host_settings.h"
#include "support/host_fixture.h"

namespace {

auto Thresholds() {
    const CHandedOverSettings settings = GetHandedOverSettings();
    return std::make_tuple(settings.iLoadBalanceDiskThreshold, settings.iLoadBalanceNetThreshold,
                           settings.iLoadBalanceChannelThreshold, settings.iClusterForwardType);
}

auto Switches() {
    const CHandedOverSettings settings = GetHandedOverSettings();
    return std::make_tuple(settings.bLoadBalance, settings.bFaultShift,
                           settings.bLoadBalanceOnePeriod);
}

/// What held before anything was handed over.
const auto THRESHOLDS_AT_THE_START = Thresholds();
const auto SWITCHES_AT_THE_START = Switches();

class HandedOverSettings : public CHostTest {};

TEST_F(HandedOverSettings, StartWithTheDefaults) {
    EXPECT_EQ(THRESHOLDS_AT_THE_START, std::make_tuple(10, 10, 10, 0));
    EXPECT_EQ(SWITCHES_AT_THE_START, std::make_tuple(true, true, true));
}

TEST_F(HandedOverSettings, EachHoldsItsOwnValue) {
    CGlobalConfig& config = CGlobalConfig::Instance();
    config.SetLoadBalanceDiskThreshold(1);
    config.SetLoadBalanceNetThreshold(2);
    config.SetLoadBalanceChannelThreshold(3);
    config.SetClusterForwardType(4);
    EXPECT_EQ(Thresholds(), std::make_tuple(1, 2, 3, 4));
}

TEST_F(HandedOverSettings, SwitchesAreIndependent) {
    CGlobalConfig& config = CGlobalConfig::Instance();
    config.SetLoadBalance(false);
    EXPECT_EQ(Switches(), std::make_tuple(false, true, true));
    config.SetFaultShift(false);
    EXPECT_EQ(Switches(), std::make_tuple(false, false, true));
    config.SetLoadBalanceOnePeriod(false);
    EXPECT_EQ(Switches(), std::make_tuple(false, false, false));
}

}  // namespace
