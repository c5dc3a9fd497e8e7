#include "cluster_engine/nvr.h"

#include <algorithm>

#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"

namespace {

using Nvrs = std::vector<CNvrRecord>;

/// A selection drops what is older, and what has no bandwidth.
constexpr int64_t NUMERIC_EXPIRY = 30;

/// The bit rate shifted by that is taken until the NVR reports again.
constexpr uint32_t NUMERIC_RESERVED_BITS = 4;

auto FindNvr(Nvrs& nvrs, const std::string& strNvr) {
    return std::find_if(nvrs.begin(), nvrs.end(),
                        [&](const CNvrRecord& nvr) { return nvr.strNvr == strNvr; });
}

/// A new one comes first.
void Note(Nvrs& nvrs, const CNvrReport& report, int64_t iNow) {
    auto it = FindNvr(nvrs, report.strNvr);
    it = it != nvrs.end() ? it : nvrs.emplace(nvrs.begin());
    *it = {report.strNvr, iNow, report.iTotal, report.iUsed, report.iTotal - report.iUsed};
}

void NoteSelection(Nvrs& nvrs, const CHighSpeed& input, const std::string& strNvr, int64_t iNow) {
    nvrs.erase(std::remove_if(nvrs.begin(), nvrs.end(),
                              [&](const CNvrRecord& nvr) {
                                  return iNow - nvr.iTime > NUMERIC_EXPIRY || nvr.iFree == 0 ||
                                         nvr.iFree > nvr.iTotal;
                              }),
               nvrs.end());
    std::stable_sort(nvrs.begin(), nvrs.end(), [](const CNvrRecord& left, const CNvrRecord& right) {
        return left.iFree > right.iFree;
    });
    if (const auto it = FindNvr(nvrs, strNvr); it != nvrs.end()) {
        it->iFree =
            static_cast<int32_t>(static_cast<uint32_t>(it->iFree) -
                                 (static_cast<uint32_t>(input.iBitRate) << NUMERIC_RESERVED_BITS));
    }
}

/// The last comes first. What is reserved counts as used: the library asks for no more than what
/// is free.
void Restore(CCluster& cluster, const Nvrs& nvrs, bool bPicture) {
    for (auto it = nvrs.rbegin(); it != nvrs.rend(); ++it) {
        cluster.host.clock.Set(it->iTime);
        CContainerMgr::Instance().UpdateHighSpeedNvrInfo(
            it->strNvr, it->iTotal, it->iTotal - it->iFree, ORVA_STATUS_RUN,
            bPicture ? ORVA_STATUS_RUN : 0, ORVA_STATUS_RUN);
    }
}

}  // namespace

CAnswer TakeNvrReport(CCluster& cluster, const CNvrReport& report) {
    if (report.iTotal < 0 || report.iUsed < 0 || report.iUsed > report.iTotal) {
        return CAnswer::Refuse(EFault::BAD_INPUT, "used must be from 0 to total");
    }
    CContainerMgr::Instance().UpdateHighSpeedNvrInfo(report.strNvr, report.iTotal, report.iUsed,
                                                     report.iMu, report.iImgu, report.iScu);
    if (report.iMu == ORVA_STATUS_RUN && report.iScu == ORVA_STATUS_RUN) {
        Note(cluster.state.nvrs, report, cluster.state.iNow);
        if (report.iImgu == ORVA_STATUS_RUN) {
            Note(cluster.state.pictureNvrs, report, cluster.state.iNow);
        }
    }
    return {};
}

CAnswer SelectNvr(CCluster& cluster, const CHighSpeed& input) {
    if (input.iBitRate <= 0) {
        return CAnswer::Refuse(EFault::BAD_INPUT, "bit_rate: must be above 0");
    }
    CContainerMgr& containers = CContainerMgr::Instance();
    CAnswer answer;
    const int iCode = input.bPicture
                          ? containers.GetPicHighSpeedNvrCode(answer.strNvr, input.iBitRate)
                          : containers.GetHighSpeedNvrCode(answer.strNvr, input.iBitRate);
    Nvrs& nvrs = input.bPicture ? cluster.state.pictureNvrs : cluster.state.nvrs;
    NoteSelection(nvrs, input, answer.strNvr, cluster.state.iNow);
    return iCode == ORVA_SUCCEED ? answer
                                 : CAnswer::Refuse(EFault::NO_ROOM, "no NVR has so much bandwidth");
}

/// A report for pictures goes to both lists. So those come first, and a selection at a time when
/// all are too old empties the other list again.
void RestoreNvrs(CCluster& cluster) {
    Restore(cluster, cluster.state.pictureNvrs, true);
    cluster.host.clock.Set(cluster.state.iNow + NUMERIC_EXPIRY + 1);
    std::string strNvr;
    CContainerMgr::Instance().GetHighSpeedNvrCode(strNvr, 1);
    Restore(cluster, cluster.state.nvrs, false);
}
