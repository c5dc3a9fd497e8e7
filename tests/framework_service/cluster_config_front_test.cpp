#include <atomic>
#include <thread>
#include <tuple>

#include "framework_service/framework_common.h"
#include "support/host_fixture.h"

namespace {

constexpr char ALL_ON[] =
    R"({"IsLoadBalance":true,"IsFaultShift":true,"IsLoadBalanceOnePeriod":true})";
constexpr char ALL_OFF[] =
    R"({"IsLoadBalance":false,"IsFaultShift":false,"IsLoadBalanceOnePeriod":false})";

auto Values(const CClusterConfigZNodeInfo& config) {
    return std::make_tuple(config.IsLoadBalance(), config.IsFaultShift(),
                           config.IsLoadBalanceOnePeriod(), config.GetLoadBalanceDiskThreshold(),
                           config.GetLoadBalanceNetThreshold(),
                           config.GetLoadBalanceChannelThreshold());
}

CClusterConfigZNodeInfo Shown() {
    return CFrameworkCommon::Instance().GetClusterConfig();
}

/// What was shown before anything was loaded.
const auto VALUES_AT_THE_START = Values(Shown());

class ShownConfiguration : public CHostTest {
protected:
    int Load(const std::optional<std::string>& text) {
        m_pStore->Put(Path("/ClusterConfig"), text);
        return CFrameworkCommon::Instance().InitClusterConfigFromZK();
    }
};

TEST_F(ShownConfiguration, IsTheDefaultsBeforeTheFirstLoad) {
    EXPECT_EQ(VALUES_AT_THE_START, Values(CClusterConfigZNodeInfo()));
}

TEST_F(ShownConfiguration, IsWhatWasLastHandedOver) {
    EXPECT_EQ(Load(R"({"IsLoadBalance":false,"IsFaultShift":true,"IsLoadBalanceOnePeriod":false})"),
              0);
    EXPECT_EQ(Values(Shown()), std::make_tuple(false, true, false, 10, 10, 10));
    EXPECT_EQ(Load(ALL_OFF), 0);
    EXPECT_EQ(Values(Shown()), std::make_tuple(false, false, false, 10, 10, 10));
    EXPECT_EQ(Load(std::nullopt), 0);
    EXPECT_EQ(Values(Shown()), Values(CClusterConfigZNodeInfo())) << "a node without data";
}

TEST_F(ShownConfiguration, StaysWhenNothingIsHandedOver) {
    EXPECT_EQ(Load(ALL_OFF), 0);
    EXPECT_NE(Load("no json"), 0);
    m_pStore->Erase(Path("/ClusterConfig"));
    EXPECT_EQ(CFrameworkCommon::Instance().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(Values(Shown()), std::make_tuple(false, false, false, 10, 10, 10));
}

TEST_F(ShownConfiguration, IsOfOneLoadForEveryThread) {
    EXPECT_EQ(Load(ALL_ON), 0);
    std::atomic<bool> bDone{false};
    std::thread loader([&] {
        for (int iRound = 0; iRound < 300; ++iRound) {
            Load(iRound % 2 == 0 ? ALL_OFF : ALL_ON);
        }
        bDone = true;
    });
    while (!bDone) {
        const CClusterConfigZNodeInfo config = Shown();
        EXPECT_EQ(config.IsLoadBalance(), config.IsFaultShift());
        EXPECT_EQ(config.IsLoadBalance(), config.IsLoadBalanceOnePeriod());
    }
    loader.join();
}

}  // namespace
