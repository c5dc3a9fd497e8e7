#include "comparison.h"

#include <json/value.h>
#include <json/writer.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>

namespace {

using Kind = Comparison::Kind;

/// How much longer ten times the work may take when it grows with n log n.
double GrowthLimit(double fSize) {
    return 10 * std::log2(10 * fSize) / std::log2(fSize);
}

struct Result {
    double fRatio;
    bool bMet;
};

/// Calls back with every row whose sides were measured.
void ForEachResult(const Medians& medians,
                   const std::function<void(const Comparison&, const Result&)>& onResult) {
    for (const Comparison& row : AllComparisons()) {
        const auto itMeasured = medians.find(row.strMeasured);
        const auto itPlain = medians.find(row.strPlain);
        if (itMeasured == medians.end() || itPlain == medians.end()) {
            continue;
        }
        const bool bFaster = row.eKind == Kind::TIMES_FASTER;
        const double fRatio =
            bFaster ? itPlain->second / itMeasured->second : itMeasured->second / itPlain->second;
        onResult(row, {fRatio, bFaster ? fRatio >= row.fTarget : fRatio <= row.fTarget});
    }
}

}  // namespace

const std::vector<Comparison>& AllComparisons() {
    static const std::vector<Comparison> ROWS = {
        {"all containers / plain deep copy", "GetAllContainer/600", "PlainDeepCopy/600",
         Kind::TIMES_FASTER, 300},
        {"longest report wait beside readers / alone", "ReportWait/readers", "ReportWait/alone",
         Kind::AT_MOST, 10},
        {"container look-up / building the concatenation", "LookUp/600", "LookUpBuilt/600",
         Kind::TIMES_FASTER, 8},
        {"status report / lock and look-up", "StatusReport/1000", "LockAndLookUp/1000",
         Kind::AT_MOST, 2},
        {"task report / copy and hand over", "TaskReport/600", "TaskHandOver/600", Kind::AT_MOST,
         1.1},
        {"load of /Cluster / parse", "LoadCluster/1", "ParseCluster/1", Kind::AT_MOST, 1.5},
        {"load of both documents / parse", "LoadBoth/1", "ParseBoth/1", Kind::AT_MOST, 1.3},
        {"save of cloud storage / parse and write", "SaveCloudStorage/1", "ParseAndWrite/1",
         Kind::AT_MOST, 1.15},
        {"available containers / copies of them", "Available/1000", "CopyContainers/50",
         Kind::AT_MOST, 5},
        {"available containers / copying the whole table", "Available/1000", "AvailableByCopy/1000",
         Kind::TIMES_FASTER, 5},
        {"high-speed selection / pass and sort", "HighSpeed/300", "PassAndSort/300", Kind::AT_MOST,
         3},
        {"all containers, 10 times as many", "GetAllContainer/6000", "GetAllContainer/600",
         Kind::AT_MOST, GrowthLimit(600)},
        {"status report, 10 times as many", "StatusReport/10000", "StatusReport/1000",
         Kind::AT_MOST, GrowthLimit(1000)},
        {"available containers, 10 times as many", "Available/10000", "Available/1000",
         Kind::AT_MOST, GrowthLimit(1000)},
        {"high-speed selection, 10 times as many", "HighSpeed/3000", "HighSpeed/300", Kind::AT_MOST,
         GrowthLimit(300)},
    };
    return ROWS;
}

bool PrintComparisons(const Medians& medians) {
    bool bAllMet = true;
    std::printf("\n%-48s %12s %12s %8s  %s\n", "operation / other side", "ns", "other ns", "ratio",
                "target");
    ForEachResult(medians, [&](const Comparison& row, const Result& result) {
        bAllMet = bAllMet && result.bMet;
        std::printf("%-48s %12.0f %12.0f %8.2f  %s %.4g%s\n", row.strTitle.c_str(),
                    medians.at(row.strMeasured), medians.at(row.strPlain), result.fRatio,
                    row.eKind == Kind::AT_MOST ? "<=" : ">=", row.fTarget,
                    result.bMet ? "" : "  MISSED");
    });
    return bAllMet;
}

void WriteComparisons(const Medians& medians, const std::string& strFile) {
    Json::Value root(Json::arrayValue);
    ForEachResult(medians, [&](const Comparison& row, const Result& result) {
        Json::Value& rowJson = root.append(Json::objectValue);
        rowJson["operation"] = row.strTitle;
        rowJson["ns"] = medians.at(row.strMeasured);
        rowJson["other_ns"] = medians.at(row.strPlain);
        rowJson["ratio"] = result.fRatio;
        rowJson[row.eKind == Kind::AT_MOST ? "at_most" : "at_least"] = row.fTarget;
        rowJson["met"] = result.bMet;
    });
    std::ofstream(strFile) << root.toStyledString();
}
