#include "framework_service/cluster_config_znode_info.h"

#include <limits>
#include <string>
#include <vector>

#include "common_service/oper_common.h"
#include "common_service/tarn_def.h"
#include "support/host_fixture.h"
#include "support/json_document.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char ALL_OFF[] =
    R"({"IsLoadBalance":false,"IsFaultShift":false,"IsLoadBalanceOnePeriod":false})";

class ConfigDocument : public CHostTest {
protected:
    /// Switches: load balance, fault shift, one period.
    std::vector<bool> Switches() const {
        return {m_config.IsLoadBalance(), m_config.IsFaultShift(),
                m_config.IsLoadBalanceOnePeriod()};
    }

    /// Thresholds: disk, net, channel.
    std::vector<int> Thresholds() const {
        return {m_config.GetLoadBalanceDiskThreshold(), m_config.GetLoadBalanceNetThreshold(),
                m_config.GetLoadBalanceChannelThreshold()};
    }

    void SetThresholds(int iDisk, int iNet, int iChannel) {
        m_config.SetLoadBalanceDiskThreshold(iDisk);
        m_config.SetLoadBalanceNetThreshold(iNet);
        m_config.SetLoadBalanceChannelThreshold(iChannel);
    }

    void ExpectRefused(const std::string& strText) {
        EXPECT_EQ(m_config.ParseJson(strText.c_str()), ORVA_DATA_INVALID);
        EXPECT_THAT(m_logger.GetLines(),
                    ElementsAre(Err("Cluster Config node info", ORVA_DATA_INVALID,
                                    "cluster_config_znode_info", "ParseJson",
                                    "null or illegal, json text[" + strText + "].")));
        EXPECT_THAT(Switches(), ElementsAre(true, true, true));
        EXPECT_THAT(Thresholds(), ElementsAre(10, 10, 10));
    }

    CClusterConfigZNodeInfo m_config;
};

TEST_F(ConfigDocument, StartsSwitchedOnWithThresholdsOfTen) {
    EXPECT_THAT(Switches(), ElementsAre(true, true, true));
    EXPECT_THAT(Thresholds(), ElementsAre(10, 10, 10));
    EXPECT_EQ(TextOf(m_config),
              R"({"IsFaultShift":true,"IsLoadBalance":true,"IsLoadBalanceOnePeriod":true,)"
              R"("LoadBalanceThreshold":{"ChannelThreshold":10,"DiskThreshold":10,)"
              R"("NetThreshold":10}})"
              "\n");
}

TEST_F(ConfigDocument, SettersTakeAnyValueAndItIsWritten) {
    m_config.SetLoadBalance(false);
    SetThresholds(std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), -1);
    EXPECT_THAT(Switches(), ElementsAre(false, true, true));
    EXPECT_THAT(Thresholds(),
                ElementsAre(std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), -1));
    EXPECT_EQ(TextOf(m_config),
              R"({"IsFaultShift":true,"IsLoadBalance":false,"IsLoadBalanceOnePeriod":true,)"
              R"("LoadBalanceThreshold":{"ChannelThreshold":-1,"DiskThreshold":-2147483648,)"
              R"("NetThreshold":2147483647}})"
              "\n");
    m_config.SetLoadBalance(true);
    m_config.SetFaultShift(false);
    EXPECT_THAT(Switches(), ElementsAre(true, false, true));
    m_config.SetFaultShift(true);
    m_config.SetLoadBalanceOnePeriod(false);
    EXPECT_THAT(Switches(), ElementsAre(true, true, false));
}

TEST_F(ConfigDocument, EachSwitchIsReadFromItsKey) {
    EXPECT_EQ(m_config.ParseJson(
                  R"({"IsLoadBalance":false,"IsFaultShift":true,"IsLoadBalanceOnePeriod":true})"),
              ORVA_SUCCEED);
    EXPECT_THAT(Switches(), ElementsAre(false, true, true));
    EXPECT_EQ(m_config.ParseJson(
                  R"({"IsLoadBalance":true,"IsFaultShift":false,"IsLoadBalanceOnePeriod":true})"),
              ORVA_SUCCEED);
    EXPECT_THAT(Switches(), ElementsAre(true, false, true));
    EXPECT_EQ(m_config.ParseJson(ALL_OFF), ORVA_SUCCEED);
    EXPECT_THAT(Switches(), ElementsAre(false, false, false));
    EXPECT_THAT(Thresholds(), ElementsAre(10, 10, 10));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ConfigDocument, LastOfTwoKeysOfOneNameCounts) {
    EXPECT_EQ(m_config.ParseJson(R"({"IsLoadBalance":"x","IsLoadBalance":false,)"
                                 R"("IsFaultShift":true,"IsLoadBalanceOnePeriod":true})"),
              ORVA_SUCCEED);
    EXPECT_THAT(Switches(), ElementsAre(false, true, true));
}

TEST_F(ConfigDocument, EmptyAndNullDocumentsAreRefused) {
    for (const char* pszText : {"{}", "null"}) {
        m_logger.Clear();
        ExpectRefused(pszText);
    }
}

class BadSwitch : public ConfigDocument, public testing::WithParamInterface<CMemberChange> {};

TEST_P(BadSwitch, IsRefusedAndNothingIsTaken) {
    ExpectRefused(WithMember(ALL_OFF, GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Config, BadSwitch,
                         testing::ValuesIn(EveryBadMember({{".IsLoadBalance", EMemberType::BOOL},
                                                           {".IsFaultShift", EMemberType::BOOL},
                                                           {".IsLoadBalanceOnePeriod",
                                                            EMemberType::BOOL}})));

class IgnoredThresholds : public ConfigDocument, public testing::WithParamInterface<std::string> {};

TEST_P(IgnoredThresholds, LeaveThoseOfTheObject) {
    SetThresholds(1, 2, 3);
    const std::string strText = WithMember(ALL_OFF, {".LoadBalanceThreshold", GetParam()});
    EXPECT_EQ(m_config.ParseJson(strText.c_str()), ORVA_SUCCEED);
    EXPECT_THAT(Switches(), ElementsAre(false, false, false));
    EXPECT_THAT(Thresholds(), ElementsAre(1, 2, 3));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Config, IgnoredThresholds,
    testing::Values(R"({"DiskThreshold":5,"NetThreshold":6,"ChannelThreshold":7})",
                    R"({"DiskThreshold":"5"})", "{}", "null", "3", "1.5", "\"text\"", "true"));

class ThresholdsInAnArray : public ConfigDocument, public testing::WithParamInterface<std::string> {
protected:
    ThresholdsInAnArray() { SetThresholds(1, 2, 3); }

    const std::string m_strText = WithMember(ALL_OFF, {".LoadBalanceThreshold", GetParam()});
};

TEST_P(ThresholdsInAnArray, AreRefusedByTheJsonLibraryWithTheSwitchesTaken) {
    EXPECT_THROW(m_config.ParseJson(m_strText.c_str()), std::exception);
    EXPECT_THAT(Switches(), ElementsAre(false, false, false));
    EXPECT_THAT(Thresholds(), ElementsAre(1, 2, 3));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_P(ThresholdsInAnArray, AreInvalidDataBehindTheStore) {
    m_pStore->Put(Path("/ClusterConfig"), m_strText);
    bool bDataEmpty = true;
    EXPECT_EQ(COperCommon::GetDataFromZK(Path("/ClusterConfig").c_str(), nullptr, 512, &m_config,
                                         bDataEmpty),
              ORVA_DATA_INVALID);
    EXPECT_FALSE(bDataEmpty);
    EXPECT_THAT(Switches(), ElementsAre(false, false, false));
    EXPECT_THAT(Thresholds(), ElementsAre(1, 2, 3));
    EXPECT_EQ(m_logger.GetLines().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(
    Config, ThresholdsInAnArray,
    testing::Values("[]", "[5,6,7]",
                    R"([{"DiskThreshold":5,"NetThreshold":6,"ChannelThreshold":7}])"));

TEST_F(ConfigDocument, ReadBackItGivesTheSwitchesAndTheReadersThresholds) {
    m_config.SetFaultShift(false);
    SetThresholds(5, 6, 7);
    CClusterConfigZNodeInfo reader;
    EXPECT_EQ(reader.ParseJson(TextOf(m_config).c_str()), ORVA_SUCCEED);
    EXPECT_TRUE(reader.IsLoadBalance());
    EXPECT_FALSE(reader.IsFaultShift());
    EXPECT_TRUE(reader.IsLoadBalanceOnePeriod());
    EXPECT_EQ(reader.GetLoadBalanceDiskThreshold(), 10);
    EXPECT_EQ(reader.GetLoadBalanceNetThreshold(), 10);
    EXPECT_EQ(reader.GetLoadBalanceChannelThreshold(), 10);
}

}  // namespace
