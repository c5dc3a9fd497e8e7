#include <tuple>
#include <vector>

#include "common_service/global_config.h"
#include "common_service/tarn_def.h"
#include "reference_host/host_settings.h"
#include "support/cluster_start_fixture.h"
#include "support/reconfigure.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace cluster_start;

namespace {

struct CSettings {
    bool bLoadBalance = false;
    bool bFaultShift = false;
    bool bOnePeriod = false;
    int iDisk = 0;
    int iNet = 0;
    int iChannel = 0;

    friend bool operator==(const CSettings& lhs, const CSettings& rhs) {
        return std::tie(lhs.bLoadBalance, lhs.bFaultShift, lhs.bOnePeriod, lhs.iDisk, lhs.iNet,
                        lhs.iChannel) == std::tie(rhs.bLoadBalance, rhs.bFaultShift, rhs.bOnePeriod,
                                                  rhs.iDisk, rhs.iNet, rhs.iChannel);
    }

    friend std::ostream& operator<<(std::ostream& stream, const CSettings& settings) {
        return stream << settings.bLoadBalance << settings.bFaultShift << settings.bOnePeriod << ' '
                      << settings.iDisk << ' ' << settings.iNet << ' ' << settings.iChannel;
    }
};

class ClusterConfiguration : public CHostTest {
protected:
    ClusterConfiguration() { Set(FORMER); }

    static void Set(const CSettings& settings) {
        CGlobalConfig& config = CGlobalConfig::Instance();
        config.SetLoadBalance(settings.bLoadBalance);
        config.SetFaultShift(settings.bFaultShift);
        config.SetLoadBalanceOnePeriod(settings.bOnePeriod);
        config.SetLoadBalanceDiskThreshold(settings.iDisk);
        config.SetLoadBalanceNetThreshold(settings.iNet);
        config.SetLoadBalanceChannelThreshold(settings.iChannel);
    }

    static CSettings Get() {
        const CHandedOverSettings config = GetHandedOverSettings();
        return {config.bLoadBalance,
                config.bFaultShift,
                config.bLoadBalanceOnePeriod,
                config.iLoadBalanceDiskThreshold,
                config.iLoadBalanceNetThreshold,
                config.iLoadBalanceChannelThreshold};
    }

    void Put(const std::optional<std::string>& text) {
        m_pStore->Put(Path("/ClusterConfig"), text);
    }

    std::vector<CLogLine> Lines() const { return m_logger.GetLinesOf(FILE_STEM); }

    /// Different from the defaults and from what the tests' documents say.
    static constexpr CSettings FORMER{false, false, true, 81, 82, 83};

    static constexpr char FUNCTION[] = "InitClusterConfigFromZK";
    const CLogLine BEGIN = Info("init cluster config from zk", FILE_STEM, FUNCTION, "");
};

constexpr char SWITCHES[] = R"("IsLoadBalance":true,"IsFaultShift":true,)"
                            R"("IsLoadBalanceOnePeriod":false)";

TEST_F(ClusterConfiguration, SwitchesAndDefaultThresholdsReachTheHost) {
    Put(std::string("{") + SWITCHES + "}");
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(Get(), (CSettings{true, true, false, 10, 10, 10}));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(BEGIN));
}

TEST_F(ClusterConfiguration, StoredThresholdsNeverReachTheHost) {
    for (const char* pszThresholds :
         {R"({"DiskThreshold":5,"NetThreshold":6,"ChannelThreshold":7})", "null", "3", "\"x\""}) {
        SCOPED_TRACE(pszThresholds);
        Set(FORMER);
        Put(std::string("{") + SWITCHES + R"(,"LoadBalanceThreshold":)" + pszThresholds + "}");
        EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
        EXPECT_EQ(Get(), (CSettings{true, true, false, 10, 10, 10}));
    }
}

TEST_F(ClusterConfiguration, EachSwitchGoesItsOwnWay) {
    for (int i = 0; i < 8; ++i) {
        const bool bLoadBalance = (i & 1) != 0;
        const bool bFaultShift = (i & 2) != 0;
        const bool bOnePeriod = (i & 4) != 0;
        const auto text = [](bool b) { return b ? "true" : "false"; };
        Put(std::string(R"({"IsLoadBalance":)") + text(bLoadBalance) + R"(,"IsFaultShift":)" +
            text(bFaultShift) + R"(,"IsLoadBalanceOnePeriod":)" + text(bOnePeriod) + "}");
        EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
        EXPECT_EQ(Get(), (CSettings{bLoadBalance, bFaultShift, bOnePeriod, 10, 10, 10}));
    }
}

TEST_F(ClusterConfiguration, AbsentDocumentIsASuccessThatSetsNothing) {
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(Get(), FORMER);
    EXPECT_THAT(
        m_logger.GetLines(),
        ElementsAre(BEGIN, Progress(FUNCTION,
                                    "cluster config info is empty, not need to init framework.")));
}

TEST_F(ClusterConfiguration, NodeWithoutDataGivesTheDefaults) {
    Put(std::nullopt);
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(Get(), (CSettings{true, true, true, 10, 10, 10}));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(BEGIN));
}

TEST_F(ClusterConfiguration, FailingStoreGivesItsCodeAndSetsNothing) {
    Put(std::string("{") + SWITCHES + "}");
    for (unsigned int uiNth = 1;; ++uiNth) {
        SCOPED_TRACE(uiNth);
        Set(FORMER);
        m_logger.Clear();
        const unsigned int uiCallsBefore = m_pStore->GetCallCount();
        m_pStore->FailCall(uiNth, NUMERIC_STORE_CODE);
        const int iRet = Framework().InitClusterConfigFromZK();
        if (m_pStore->GetCallCount() - uiCallsBefore < uiNth) {
            EXPECT_EQ(iRet, 0);
            EXPECT_EQ(uiNth, 2U) << "one read";
            break;
        }
        EXPECT_EQ(iRet, NUMERIC_STORE_CODE);
        EXPECT_EQ(Get(), FORMER);
        EXPECT_THAT(m_logger.GetLines(),
                    ElementsAre(BEGIN, Failure(FUNCTION, NUMERIC_STORE_CODE,
                                               "get cloud storage info from cluster node fail.")));
    }
    EXPECT_EQ(Get(), (CSettings{true, true, false, 10, 10, 10}));
}

TEST_F(ClusterConfiguration, EveryCallReadsAndSetsAnew) {
    Put(std::string("{") + SWITCHES + "}");
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    Set(FORMER);
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(Get(), (CSettings{true, true, false, 10, 10, 10}));
    EXPECT_EQ(m_pStore->GetCallCount(), 2U);
}

TEST_F(ClusterConfiguration, IsReadBelowTheClusterCodeOfTheMoment) {
    Put(std::string("{") + SWITCHES + "}");
    Reconfigure(&CHostSettings::strClusterCode, "Y");
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(Get(), FORMER) << "/CloudY/ClusterConfig is absent";
}

TEST_F(ClusterConfiguration, TextMayFillItsBufferButForOneCharacter) {
    Put(PadTo(std::string("{") + SWITCHES + "}", 511));
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(Get(), (CSettings{true, true, false, 10, 10, 10}));
}

TEST_F(ClusterConfiguration, NullLoggerChangesNoResult) {
    OMAdapter::getInstance().setLogger(nullptr);
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    Put("no json");
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), ORVA_DATA_INVALID);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

class BadClusterConfiguration : public ClusterConfiguration,
                                public testing::WithParamInterface<CBadText> {};

TEST_P(BadClusterConfiguration, GivesACodeAndSetsNothing) {
    Put(GetParam().strText);
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), GetParam().iCode);
    EXPECT_EQ(Get(), FORMER);
    EXPECT_THAT(Lines(),
                ElementsAre(BEGIN, Failure(FUNCTION, GetParam().iCode,
                                           "get cloud storage info from cluster node fail.")));
}

INSTANTIATE_TEST_SUITE_P(
    Text, BadClusterConfiguration,
    testing::ValuesIn(BadTexts({
        {"NumberForSwitch",
         R"({"IsLoadBalance":true,"IsFaultShift":1,"IsLoadBalanceOnePeriod":true})"},
        {"MissingSwitch", R"({"IsLoadBalance":true,"IsFaultShift":true})"},
        {"NullSwitch",
         R"({"IsLoadBalance":null,"IsFaultShift":true,"IsLoadBalanceOnePeriod":true})"},
        {"ThresholdArray", std::string("{") + SWITCHES + R"(,"LoadBalanceThreshold":[5,6,7]})"},
        {"EmptyThresholdArray", std::string("{") + SWITCHES + R"(,"LoadBalanceThreshold":[]})"},
        {"Oversized", PadTo(std::string("{") + SWITCHES + "}", 512), STORE_TEXT_TOO_LONG},
    })),
    NAME_OF_BAD_TEXT);

}  // namespace
