#include "common_service/global_config.h"

#include <string>
#include <thread>

#include "support/host_fixture.h"

namespace {

class GlobalConfig : public CHostTest {};

TEST_F(GlobalConfig, StartWithTheDefaults) {
    const CGlobalConfig& config = CGlobalConfig::Instance();
    EXPECT_TRUE(config.IsLoadBalance());
    EXPECT_TRUE(config.IsFaultShift());
    EXPECT_TRUE(config.IsLoadBalanceOnePeriod());
    EXPECT_EQ(config.GetLoadBalanceDiskThreshold(), 10);
    EXPECT_EQ(config.GetLoadBalanceNetThreshold(), 10);
    EXPECT_EQ(config.GetLoadBalanceChannelThreshold(), 10);
    EXPECT_EQ(config.GetClusterForwardType(), 0);
    EXPECT_EQ(CGlobalConfig::Instance().GetLocalIp(), "");
}

TEST_F(GlobalConfig, EachHoldsItsOwnValue) {
    CGlobalConfig& config = CGlobalConfig::Instance();
    config.SetLoadBalanceDiskThreshold(1);
    config.SetLoadBalanceNetThreshold(2);
    config.SetLoadBalanceChannelThreshold(3);
    config.SetClusterForwardType(4);
    config.SetLocalIp("10.0.0.1");
    EXPECT_EQ(config.GetLoadBalanceDiskThreshold(), 1);
    EXPECT_EQ(config.GetLoadBalanceNetThreshold(), 2);
    EXPECT_EQ(config.GetLoadBalanceChannelThreshold(), 3);
    EXPECT_EQ(config.GetClusterForwardType(), 4);
    EXPECT_EQ(config.GetLocalIp(), "10.0.0.1");
}

TEST_F(GlobalConfig, SwitchesAreIndependent) {
    CGlobalConfig& config = CGlobalConfig::Instance();
    config.SetLoadBalance(false);
    EXPECT_TRUE(config.IsFaultShift() && config.IsLoadBalanceOnePeriod());
    config.SetFaultShift(false);
    EXPECT_TRUE(config.IsLoadBalanceOnePeriod());
    config.SetLoadBalanceOnePeriod(false);
    EXPECT_FALSE(config.IsLoadBalance() || config.IsFaultShift() ||
                 config.IsLoadBalanceOnePeriod());
}

TEST_F(GlobalConfig, LocalAddressIsReadWholeWhileItChanges) {
    CGlobalConfig& config = CGlobalConfig::Instance();
    const std::string strShort = "10.0.0.1";
    const std::string strLong = "longer than a text kept in place: 192.168.100.100";
    config.SetLocalIp(strShort);
    std::thread writer([&] {
        for (int iRound = 0; iRound < 1000; ++iRound) {
            config.SetLocalIp(iRound % 2 == 0 ? strLong : strShort);
        }
    });
    for (int iRound = 0; iRound < 1000; ++iRound) {
        const std::string strIp = config.GetLocalIp();
        EXPECT_TRUE(strIp == strShort || strIp == strLong) << strIp;
    }
    writer.join();
}

}  // namespace
