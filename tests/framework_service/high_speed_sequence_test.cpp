#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "support/high_speed_fixture.h"

using namespace high_speed;

namespace {

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
