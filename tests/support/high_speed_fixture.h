#pragma once

#include <cstdint>
#include <ctime>
#include <limits>
#include <optional>
#include <string>

#include "common_service/tarn_def.h"
#include "support/registry_fixture.h"

namespace high_speed {

inline constexpr std::time_t NUMERIC_NOW = 1000000;
inline constexpr char FILE_STEM[] = "container_mgr";
inline constexpr int32_t NUMERIC_MIN = std::numeric_limits<int32_t>::min();
inline constexpr int32_t NUMERIC_MAX = std::numeric_limits<int32_t>::max();

inline CContainerMgr& Manager() {
    return CContainerMgr::Instance();
}

inline std::string Unsigned(int32_t iValue) {
    return std::to_string(static_cast<uint32_t>(iValue));
}

/// A line of a report: how it is told depends on the service.
inline CLogLine Updated(const std::string& strService, const std::string& strNvr, int32_t iTotal,
                        int32_t iUsed) {
    return Info("UpdateHighSpeedNvrInfo", FILE_STEM, "UpdateHighSpeedNvrInfo",
                "update " + strService + " nvrcode:" + strNvr +
                    ",TotalBrandwidth:" + Unsigned(iTotal) + ",UsedBrandwidth:" + Unsigned(iUsed));
}

inline CLogLine FirstUpdate(const std::string& strNvr) {
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

inline std::ostream& operator<<(std::ostream& stream, const CSelection& selection) {
    return stream << selection.strName;
}

inline const CSelection GENERAL{"General",
                                &CContainerMgr::GetHighSpeedNvrCode,
                                "GetHighSpeedNvrCode",
                                "get high speed nvr code",
                                "",
                                "m_HighSpeedInfoList is empty",
                                "find most free mpu_t"};
inline const CSelection PICTURE{"Picture",
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

}  // namespace high_speed
