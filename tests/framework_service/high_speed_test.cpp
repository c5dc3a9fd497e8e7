#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/high_speed_fixture.h"

using testing::ElementsAre;
using namespace high_speed;

namespace {

TEST_F(HighSpeed, FirstReportIsToldApartFromLaterOnes) {
    Report("nvr", 100, 40);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(FirstUpdate("nvr"), Updated("MU", "nvr", 100, 40), FirstUpdate("nvr"),
                            Updated("IMGU", "nvr", 100, 40)));
    m_logger.Clear();
    Report("nvr", -10, -20);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Updated("MU", "nvr", -10, -20), Updated("IMGU", "nvr", -10, -20)));
}

TEST_F(HighSpeed, BadReportIsLoggedAndLeavesTheEntry) {
    Report("nvr", 1000);
    const auto refused = [](const std::string& strNvr, int32_t iTotal, int32_t iUsed) {
        return Err("UpdateHighSpeedNvrInfo", ORVA_PARA_INVALID, FILE_STEM, "UpdateHighSpeedNvrInfo",
                   "nvrCode:" + strNvr + ",TotalBrandwidth:" + Unsigned(iTotal) +
                       ",UsedBrandwidth:" + Unsigned(iUsed));
    };
    m_logger.Clear();
    Report("nvr", 10, 11);
    Report("", 5000, 0);
    Report("nvr", NUMERIC_MIN, NUMERIC_MAX);
    Manager().UpdateHighSpeedNvrInfo("nvr", 0, 1, 0, 0, 0);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(refused("nvr", 10, 11), refused("", 5000, 0),
                            refused("nvr", NUMERIC_MIN, NUMERIC_MAX), refused("nvr", 0, 1)));
    EXPECT_EQ(Select(GENERAL, 62), "nvr") << "992 of 1000";
}

TEST_F(HighSpeed, OnlyRunningServicesFillTheirLists) {
    struct CServices {
        int32_t iMU;
        int32_t iIMGU;
        int32_t iSCU;
        bool bGeneral;
        bool bPicture;
    };
    int iNvr = 0;
    for (const CServices& services : {CServices{1, 1, 1, true, true},
                                      {1, 0, 1, true, false},
                                      {1, 2, 1, true, false},
                                      {0, 1, 1, false, false},
                                      {1, 1, 0, false, false},
                                      {2, 1, 1, false, false},
                                      {1, 1, -1, false, false},
                                      {0, 0, 0, false, false}}) {
        const std::string strNvr = "nvr" + std::to_string(++iNvr);
        SCOPED_TRACE(strNvr);
        m_logger.Clear();
        Manager().UpdateHighSpeedNvrInfo(strNvr, 1000, 0, services.iMU, services.iIMGU,
                                         services.iSCU);
        EXPECT_EQ(m_logger.GetLines().size(),
                  (services.bGeneral ? 2U : 0U) + (services.bPicture ? 2U : 0U));
        EXPECT_EQ(Select(GENERAL, 1).has_value(), services.bGeneral);
        EXPECT_EQ(Select(PICTURE, 1).has_value(), services.bPicture);
        AdvanceClock(31);
        EXPECT_EQ(Select(GENERAL, 1), std::nullopt);
        EXPECT_EQ(Select(PICTURE, 1), std::nullopt);
    }
}

TEST_F(HighSpeed, NvrThatStopsItsServicesStaysUntilItExpires) {
    Report("nvr", 1000);
    AdvanceClock(20);
    Manager().UpdateHighSpeedNvrInfo("nvr", 5000, 0, 0, 1, 1);
    AdvanceClock(10);
    EXPECT_EQ(Select(GENERAL, 1), "nvr");
    AdvanceClock(1);
    EXPECT_EQ(Select(GENERAL, 1), std::nullopt);
}

TEST_F(HighSpeed, AListIsUpdatedInPlaceAndANewEntryComesFirst) {
    std::list<HighSpeedDownLoadInfo> infoList;
    const auto update = [&infoList](const std::string& strNvr, int32_t iTotal, int32_t iUsed) {
        Manager().UpdateHighSpeedInfoList(strNvr, iTotal, iUsed, infoList);
    };
    update("a", 100, 1);
    AdvanceClock(5);
    update("b", 200, 2);
    AdvanceClock(5);
    update("a", NUMERIC_MAX, -1);
    ASSERT_EQ(infoList.size(), 2U);
    const HighSpeedDownLoadInfo& b = infoList.front();
    EXPECT_EQ(b.strNvrCode, "b");
    EXPECT_EQ(b.tUpdateTime, NUMERIC_NOW + 5);
    EXPECT_EQ(b.uiTotalBrandwidth, 200);
    EXPECT_EQ(b.uiUsedBrandwidth, 2);
    EXPECT_EQ(b.uiFreeBrandwidth, 198);
    const HighSpeedDownLoadInfo& a = infoList.back();
    EXPECT_EQ(a.strNvrCode, "a");
    EXPECT_EQ(a.tUpdateTime, NUMERIC_NOW + 10);
    EXPECT_EQ(a.uiTotalBrandwidth, NUMERIC_MAX);
    EXPECT_EQ(a.uiUsedBrandwidth, -1);
    EXPECT_EQ(a.uiFreeBrandwidth, NUMERIC_MIN) << "in 32 bits";
    EXPECT_EQ(m_logger.GetLines(), (std::vector<CLogLine>{FirstUpdate("a"), FirstUpdate("b")}));
}

TEST(HighSpeedEntry, IsZeroWhenBuiltByDefault) {
    const HighSpeedDownLoadInfo info;
    EXPECT_EQ(info.strNvrCode, "");
    EXPECT_EQ(info.tUpdateTime, 0);
    EXPECT_EQ(info.uiTotalBrandwidth, 0);
    EXPECT_EQ(info.uiUsedBrandwidth, 0);
    EXPECT_EQ(info.uiFreeBrandwidth, 0);
    EXPECT_EQ(ORVA_STATUS_RUN, 1);
}

TEST(HighSpeedEntry, ComesBeforeOneWithLessFreeBandwidth) {
    HighSpeedDownLoadInfo more;
    more.uiFreeBrandwidth = NUMERIC_MAX;
    HighSpeedDownLoadInfo less;
    less.uiFreeBrandwidth = NUMERIC_MIN;
    less.uiTotalBrandwidth = NUMERIC_MAX;
    EXPECT_TRUE(SortHighSpeedInfo(more, less));
    EXPECT_FALSE(SortHighSpeedInfo(less, more));
    EXPECT_FALSE(SortHighSpeedInfo(more, more));
}

TEST_F(HighSpeed, ListsReserveEachForItself) {
    Report("nvr", 1000);
    EXPECT_EQ(Select(GENERAL, 60), "nvr");
    EXPECT_EQ(Select(GENERAL, 60), std::nullopt);
    EXPECT_EQ(Select(PICTURE, 60), "nvr");
    Manager().UpdateHighSpeedNvrInfo("nvr", 1000, 0, 1, 0, 1);
    EXPECT_EQ(Select(GENERAL, 60), "nvr");
    EXPECT_EQ(Select(PICTURE, 60), std::nullopt) << "still reserved";
}

}  // namespace
