#include <cstdint>
#include <ctime>
#include <functional>
#include <iterator>
#include <limits>
#include <list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/refused_locks.h"
#include "support/registry_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::time_t NUMERIC_NOW = 1000000;
constexpr char FILE_STEM[] = "container_mgr";
constexpr int32_t NUMERIC_MIN = std::numeric_limits<int32_t>::min();
constexpr int32_t NUMERIC_MAX = std::numeric_limits<int32_t>::max();

CContainerMgr& Manager() {
    return CContainerMgr::Instance();
}

std::string Unsigned(int32_t iValue) {
    return std::to_string(static_cast<uint32_t>(iValue));
}

/// A line of a report: how it is told depends on the service.
CLogLine Updated(const std::string& strService, const std::string& strNvr, int32_t iTotal,
                 int32_t iUsed) {
    return Info("UpdateHighSpeedNvrInfo", FILE_STEM, "UpdateHighSpeedNvrInfo",
                "update " + strService + " nvrcode:" + strNvr +
                    ",TotalBrandwidth:" + Unsigned(iTotal) + ",UsedBrandwidth:" + Unsigned(iUsed));
}

CLogLine FirstUpdate(const std::string& strNvr) {
    return Info("UpdateHighSpeedInfoList", FILE_STEM, "UpdateHighSpeedInfoList",
                "first update nvrcode:" + strNvr);
}

/// One of the two selections: its operation and its words.
struct CSelection {
    std::string strName;
    int (CContainerMgr::*pSelect)(std::string&, int32_t);
    std::string strFunction;
    std::string strOperation;
    std::string strEmptyOnEntry;
    std::string strEmptyAfterCleaning;
    std::string strFound;
};

std::ostream& operator<<(std::ostream& stream, const CSelection& selection) {
    return stream << selection.strName;
}

const CSelection GENERAL{"General",
                         &CContainerMgr::GetHighSpeedNvrCode,
                         "GetHighSpeedNvrCode",
                         "get high speed nvr code",
                         "",
                         "m_HighSpeedInfoList is empty",
                         "find most free mpu_t"};
const CSelection PICTURE{"Picture",
                         &CContainerMgr::GetPicHighSpeedNvrCode,
                         "GetPicHighSpeedNvrCode",
                         "get pic high speed nvr code",
                         "m_PicHighSpeedInfoList is empty",
                         "m_PicHighSpeedInfoList is empty",
                         "find most free pic mpu_t"};

class HighSpeed : public CRegistryTest {
protected:
    HighSpeed() { SetClock(NUMERIC_NOW); }

    /// A report of an NVR whose services all run.
    static void Report(const std::string& strNvr, int32_t iTotal, int32_t iUsed = 0) {
        Manager().UpdateHighSpeedNvrInfo(strNvr, iTotal, iUsed, 1, 1, 1);
    }

    /// The code that a selection gives; nothing when it fails, which leaves the code untouched.
    static std::optional<std::string> Select(const CSelection& selection, int32_t iBitRate) {
        std::string strNvr = "untouched";
        const int iRet = (Manager().*selection.pSelect)(strNvr, iBitRate);
        if (iRet == 0) {
            return strNvr;
        }
        EXPECT_EQ(iRet, ORVA_FAIL);
        EXPECT_EQ(strNvr, "untouched");
        return std::nullopt;
    }
};

// ---------------------------------------------------------------- reports

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

// ---------------------------------------------------------------- selection, on either list

class HighSpeedSelection : public HighSpeed, public testing::WithParamInterface<CSelection> {
protected:
    static std::optional<std::string> Pick(int32_t iBitRate) {
        return Select(GetParam(), iBitRate);
    }

    static CLogLine Failed(const std::string& strMessage) {
        return Err(GetParam().strOperation, ORVA_FAIL, FILE_STEM, GetParam().strFunction,
                   strMessage);
    }

    static CLogLine Expired(const std::string& strNvr, std::time_t tmNow, std::time_t tmUpdate) {
        return Failed("nvrCode:" + strNvr + " expire,expire time:30,currentTime:" +
                      std::to_string(tmNow) + ",updateTime:" + std::to_string(tmUpdate));
    }

    static CLogLine Found(const std::string& strNvr, int32_t iTotal, int32_t iUsed, int32_t iFree) {
        return Info(GetParam().strFound, FILE_STEM, GetParam().strFunction,
                    "strNvrCode:" + strNvr + ",TotalBrandwidth:" + Unsigned(iTotal) +
                        ",UsedBrandwidth:" + Unsigned(iUsed) +
                        ",FreeBrandwidth:" + Unsigned(iFree));
    }
};

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

TEST_P(HighSpeedSelection, CannotBeMadeWithoutTheLock) {
    Report("nvr", 1000);
    m_logger.Clear();
    {
        const CRefusedLocks refused;
        Report("nvr", 5000);
        Report("other", 5000);
        EXPECT_EQ(Pick(1), std::nullopt);
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    EXPECT_EQ(Pick(62), "nvr") << "992 of 1000";
    EXPECT_EQ(Pick(1), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Lists, HighSpeedSelection, testing::Values(GENERAL, PICTURE),
                         NAME_OF_PARAMETER);

TEST_F(HighSpeed, ListsReserveEachForItself) {
    Report("nvr", 1000);
    EXPECT_EQ(Select(GENERAL, 60), "nvr");
    EXPECT_EQ(Select(GENERAL, 60), std::nullopt);
    EXPECT_EQ(Select(PICTURE, 60), "nvr");
    Manager().UpdateHighSpeedNvrInfo("nvr", 1000, 0, 1, 0, 1);
    EXPECT_EQ(Select(GENERAL, 60), "nvr");
    EXPECT_EQ(Select(PICTURE, 60), std::nullopt) << "still reserved";
}

// ---------------------------------------------------------------- the update flag

TEST_F(HighSpeed, UpdateFlagReachesEveryContainerOfTheServiceType) {
    ContainerMap containerMap;
    for (const auto& [pszNode, pszService] :
         {std::pair("n1", "MPU-R"), {"n2", "other"}, {"n3", "MPU-R"}}) {
        CContainer container;
        container.SetServiceType(pszService);
        containerMap[CContainerAddr(pszNode, "A")] = container;
    }
    Manager().Init(containerMap);
    const auto flags = [] {
        std::vector<bool> all;
        for (const auto& [addr, container] : AllContainers()) {
            all.push_back(container.GetUptadeFlag());
        }
        return all;
    };
    Manager().SetUptadeFlag("nobody's", true);
    EXPECT_THAT(flags(), ElementsAre(false, false, false));
    Manager().SetUptadeFlag("MPU-R", true);
    EXPECT_THAT(flags(), ElementsAre(true, false, true));
    {
        const CRefusedLocks refused;
        Manager().SetUptadeFlag("MPU-R", false);
    }
    EXPECT_THAT(flags(), ElementsAre(true, false, true));
    Manager().SetUptadeFlag("MPU-R", false);
    EXPECT_THAT(flags(), ElementsAre(false, false, false));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

// ---------------------------------------------------------------- any order of all

/// The rules of one list, told anew in 64 bits.
struct CHighSpeedModel {
    struct CItem {
        std::string strNvr;
        std::int64_t iTime;
        std::int64_t iTotal;
        std::int64_t iFree;
    };

    static std::int64_t Wrap(std::int64_t iValue) { return static_cast<int32_t>(iValue); }

    void Report(const std::string& strNvr, std::int64_t iNow, std::int64_t iTotal,
                std::int64_t iUsed) {
        for (CItem& item : items) {
            if (item.strNvr == strNvr) {
                item = {strNvr, iNow, iTotal, Wrap(iTotal - iUsed)};
                return;
            }
        }
        items.insert(items.begin(), {strNvr, iNow, iTotal, Wrap(iTotal - iUsed)});
    }

    std::optional<std::string> Select(std::int64_t iNow, std::int64_t iBitRate) {
        std::vector<CItem> sorted;
        for (const CItem& item : items) {
            if (iNow - item.iTime > 30 || item.iFree == 0 || item.iFree > item.iTotal) {
                continue;
            }
            auto it = sorted.begin();
            while (it != sorted.end() && it->iFree >= item.iFree) {
                ++it;
            }
            sorted.insert(it, item);
        }
        items = sorted;
        if (items.empty() || Wrap(iBitRate * 16) >= items[0].iFree) {
            return std::nullopt;
        }
        items[0].iFree = Wrap(items[0].iFree - Wrap(iBitRate * 16));
        return items[0].strNvr;
    }

    std::vector<CItem> items;
};

class HighSpeedSequence : public HighSpeed, public testing::WithParamInterface<unsigned int> {
protected:
    int32_t DrawBandwidth() {
        constexpr int32_t EXTREMES[] = {NUMERIC_MIN, NUMERIC_MIN + 1, -1, 0, 1, NUMERIC_MAX};
        return m_dice.Below(8) == 0 ? EXTREMES[m_dice.Below(std::size(EXTREMES))]
                                    : static_cast<int32_t>(m_dice.Below(20)) * 50;
    }

    void ReportSome() {
        const std::string strNvr = m_dice.OneOf({"a", "b", "c", "d", "e"});
        const int32_t iTotal = DrawBandwidth();
        const int32_t iUsed = m_dice.Below(2) == 0 ? 0 : DrawBandwidth();
        const bool bPicture = m_dice.Below(2) == 0;
        Manager().UpdateHighSpeedNvrInfo(strNvr, iTotal, iUsed, 1, bPicture ? 1 : 0, 1);
        if (iUsed > iTotal) {
            return;
        }
        m_general.Report(strNvr, time(nullptr), iTotal, iUsed);
        if (bPicture) {
            m_picture.Report(strNvr, time(nullptr), iTotal, iUsed);
        }
    }

    void SelectSome() {
        const int32_t iBitRate = DrawBandwidth() / 10;
        EXPECT_EQ(Select(GENERAL, iBitRate), m_general.Select(time(nullptr), iBitRate));
        EXPECT_EQ(Select(PICTURE, iBitRate), m_picture.Select(time(nullptr), iBitRate));
    }

    CHighSpeedModel m_general;
    CHighSpeedModel m_picture;
    CDice m_dice{GetParam()};
};

TEST_P(HighSpeedSequence, SelectsByTheRules) {
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    for (int iStep = 0; iStep < 300 && !HasFailure(); ++iStep) {
        SCOPED_TRACE("step " + std::to_string(iStep));
        m_dice.Below(2) == 0 ? ReportSome() : SelectSome();
        AdvanceClock(static_cast<std::time_t>(m_dice.Below(8)) - 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, HighSpeedSequence, testing::Range(1U, 21U));

}  // namespace
