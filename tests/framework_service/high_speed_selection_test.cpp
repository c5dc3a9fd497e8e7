#include <cstdint>
#include <optional>
#include <string>

#include "support/high_speed_fixture.h"

using testing::ElementsAre;
using namespace high_speed;

namespace {

TEST_P(HighSpeedSelection, OfAnEmptyListFails) {
    EXPECT_EQ(Pick(0), std::nullopt);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Failed(GetParam().strEmptyOnEntry)));
}

TEST_P(HighSpeedSelection, NamesTheMostFreeNvr) {
    Report("a", 1000, 900);
    Report("b", 500, 100);
    Report("c", 2000, 1700);
    m_logger.Clear();
    EXPECT_EQ(Pick(10), "b");
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Found("b", 500, 100, 240)));
}

TEST_P(HighSpeedSelection, NeedMustStayBelowTheFreeBandwidth) {
    Report("nvr", 1600);
    m_logger.Clear();
    EXPECT_EQ(Pick(100), std::nullopt);
    EXPECT_EQ(Pick(99), "nvr");
    EXPECT_EQ(Pick(1), std::nullopt) << "16 are left";
    EXPECT_EQ(Pick(0), "nvr");
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Failed("fail"), Found("nvr", 1600, 0, 16),
                                                 Failed("fail"), Found("nvr", 1600, 0, 16)));
}

TEST_P(HighSpeedSelection, DrainsOneNvrUntilAnotherHasMore) {
    Report("a", 1000);
    Report("b", 900);
    EXPECT_EQ(Pick(5), "a");
    EXPECT_EQ(Pick(5), "a");
    EXPECT_EQ(Pick(5), "b");
    EXPECT_EQ(Pick(5), "a");
}

TEST_P(HighSpeedSelection, ReservesUntilTheNextReport) {
    Report("nvr", 1000);
    EXPECT_EQ(Pick(60), "nvr");
    EXPECT_EQ(Pick(60), std::nullopt) << "40 are left";
    Report("nvr", 1000, 20);
    m_logger.Clear();
    EXPECT_EQ(Pick(60), "nvr");
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Found("nvr", 1000, 20, 20)));
}

TEST_P(HighSpeedSelection, LaterNewcomerWinsATie) {
    Report("a", 1000);
    Report("b", 1000);
    Report("c", 1000);
    Report("a", 1000);
    EXPECT_EQ(Pick(1), "c") << "a second report moves nothing";
    EXPECT_EQ(Pick(1), "b");
    EXPECT_EQ(Pick(1), "a");
}

TEST_P(HighSpeedSelection, ListStaysSortedForLaterTies) {
    Report("a", 1000);
    Report("b", 900);
    Report("c", 800);
    EXPECT_EQ(Pick(1), "a") << "sorted as a, b, c";
    Report("c", 2000);
    Report("b", 2000);
    Report("a", 2000);
    EXPECT_EQ(Pick(0), "a");
}

TEST_P(HighSpeedSelection, ReportOfExactlyThirtySecondsStillCounts) {
    Report("nvr", 1000);
    AdvanceClock(30);
    EXPECT_EQ(Pick(1), "nvr");
}

TEST_P(HighSpeedSelection, OlderReportExpiresEvenWithTheMostFreeBandwidth) {
    Report("old", 5000);
    AdvanceClock(1);
    Report("young", 100);
    AdvanceClock(30);
    m_logger.Clear();
    EXPECT_EQ(Pick(1), "young");
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Expired("old", NUMERIC_NOW + 31, NUMERIC_NOW),
                                                 Found("young", 100, 0, 84)));
}

TEST_P(HighSpeedSelection, FutureReportCounts) {
    AdvanceClock(100000);
    Report("nvr", 1000);
    SetClock(NUMERIC_NOW);
    EXPECT_EQ(Pick(1), "nvr");
    SetClock(0);
    EXPECT_EQ(Pick(1), "nvr");
}

TEST_P(HighSpeedSelection, ListThatIsEmptyAfterCleaningIsTold) {
    Report("nvr", 1000);
    AdvanceClock(31);
    m_logger.Clear();
    EXPECT_EQ(Pick(1), std::nullopt);
    EXPECT_EQ(Pick(1), std::nullopt);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Expired("nvr", NUMERIC_NOW + 31, NUMERIC_NOW),
                                                 Failed(GetParam().strEmptyAfterCleaning),
                                                 Failed(GetParam().strEmptyOnEntry)));
    Report("nvr", 1000);
    EXPECT_EQ(Pick(1), "nvr") << "and filled again";
}

TEST_P(HighSpeedSelection, EveryStaleEntryIsErasedInListOrder) {
    Report("a", 1000);
    Report("b", 2000);
    AdvanceClock(31);
    Report("c", 10, 10);
    m_logger.Clear();
    EXPECT_EQ(Pick(1), std::nullopt);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Expired("b", NUMERIC_NOW + 31, NUMERIC_NOW),
                                                 Expired("a", NUMERIC_NOW + 31, NUMERIC_NOW),
                                                 Failed(GetParam().strEmptyAfterCleaning)));
}

TEST_P(HighSpeedSelection, ErasesInSilenceWhatHasNoOrImpossibleBandwidth) {
    Report("full", 1000, 1000);
    Report("negativeUsed", 1000, -1);
    Report("nothing", 0, 0);
    m_logger.Clear();
    EXPECT_EQ(Pick(1), std::nullopt);
    EXPECT_EQ(Pick(1), std::nullopt);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Failed(GetParam().strEmptyAfterCleaning),
                                                 Failed(GetParam().strEmptyOnEntry)));
}

TEST_P(HighSpeedSelection, StaleEntryWithoutBandwidthIsToldAsStale) {
    Report("full", 1000, 1000);
    AdvanceClock(31);
    m_logger.Clear();
    EXPECT_EQ(Pick(1), std::nullopt);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Expired("full", NUMERIC_NOW + 31, NUMERIC_NOW),
                                                 Failed(GetParam().strEmptyAfterCleaning)));
}

TEST_P(HighSpeedSelection, NegativeFreeBandwidthIsKeptForNegativeNeeds) {
    Report("nvr", NUMERIC_MAX, NUMERIC_MIN + NUMERIC_MAX);
    Report("wrapped", NUMERIC_MAX, NUMERIC_MIN);
    m_logger.Clear();
    EXPECT_EQ(Pick(0), std::nullopt) << "both wrap below zero";
    EXPECT_EQ(Pick(-1), "wrapped") << "-1 is the most";
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Failed("fail"), Found("wrapped", NUMERIC_MAX, NUMERIC_MIN, 15)));
}

/// A bit rate on an NVR that reports free bandwidth, and what is left; nothing when it fails.
struct CNeed {
    std::string strName;
    int32_t iTotal;
    int32_t iBitRate;
    std::optional<int32_t> left;
};

std::ostream& operator<<(std::ostream& stream, const CNeed& need) {
    return stream << need.strName;
}

class HighSpeedNeed : public HighSpeed, public testing::WithParamInterface<CNeed> {};

TEST_P(HighSpeedNeed, IsReckonedIn32Bits) {
    Report("nvr", GetParam().iTotal);
    m_logger.Clear();
    EXPECT_EQ(Select(GENERAL, GetParam().iBitRate).has_value(), GetParam().left.has_value());
    if (GetParam().left) {
        EXPECT_THAT(m_logger.GetLines(),
                    ElementsAre(Info(
                        "find most free mpu_t", FILE_STEM, "GetHighSpeedNvrCode",
                        "strNvrCode:nvr,TotalBrandwidth:" + Unsigned(GetParam().iTotal) +
                            ",UsedBrandwidth:0,FreeBrandwidth:" + Unsigned(*GetParam().left))));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Extremes, HighSpeedNeed,
    testing::Values(CNeed{"Zero", 5, 0, 5}, CNeed{"NegativeNeedGivesBandwidthBack", 5, -1, 21},
                    CNeed{"NeedWrapsToNegative", 5, 0x08000000, NUMERIC_MIN + 5},
                    CNeed{"AllBitsShiftedOut", 5, 0x10000000, 5},
                    CNeed{"LargestThatFits", NUMERIC_MAX, 0x07FFFFFF, 15},
                    CNeed{"LargestBitRate", 5, NUMERIC_MAX, 21},
                    CNeed{"SmallestBitRate", 5, NUMERIC_MIN, 5},
                    CNeed{"LargeNeed", 5, 0x04000000, std::nullopt}),
    NAME_OF_PARAMETER);

INSTANTIATE_TEST_SUITE_P(Lists, HighSpeedSelection, testing::Values(GENERAL, PICTURE),
                         NAME_OF_PARAMETER);

}  // namespace
