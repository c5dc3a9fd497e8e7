#include "comparison.h"

#include <json/value.h>
#include <json/writer.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>

namespace {

using Kind = Comparison::Kind;

/// How many nodes the documents of a tenth of the largest size have.
constexpr double CLUSTER_NODES = 31;
constexpr double CLOUD_STORAGE_NODES = 19;

/// The row of an operation on fSize and on ten times as many: its cost grows with n log n at most.
Comparison Growth(const std::string& strTitle, const std::string& strTenfold,
                  const std::string& strSingle, double fSize) {
    return {strTitle + ", 10 times the size", strTenfold, strSingle, Kind::AT_MOST,
            10 * std::log2(10 * fSize) / std::log2(fSize)};
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
        Growth("all containers", "GetAllContainer/6000", "GetAllContainer/600", 600),
        {"longest report wait beside a reader / alone", "ReportWait/600", "ReportWait/alone",
         Kind::AT_MOST, 10},
        Growth("longest report wait", "ReportWait/6000", "ReportWait/600", 600),
        {"container look-up / building the concatenation", "LookUp/600", "LookUpBuilt/600",
         Kind::TIMES_FASTER, 8},
        Growth("container look-up", "LookUp/6000", "LookUp/600", 600),
        {"status report / lock and look-up", "StatusReport/1000", "LockAndLookUp/1000",
         Kind::AT_MOST, 2},
        Growth("status report", "StatusReport/10000", "StatusReport/1000", 1000),
        {"task report / copy and hand over", "TaskReport/100", "TaskHandOver/100", Kind::AT_MOST,
         1.1},
        Growth("task report", "TaskReport/1000", "TaskReport/100", 100),
        {"load of /Cluster / parse", "LoadCluster/10", "ParseCluster/10", Kind::AT_MOST, 1.5},
        Growth("load of /Cluster", "LoadCluster/10", "LoadCluster/1", CLUSTER_NODES),
        {"load of both documents / parse", "LoadBoth/10", "ParseBoth/10", Kind::AT_MOST, 1.3},
        Growth("load of both documents", "LoadBoth/10", "LoadBoth/1", CLUSTER_NODES),
        {"save of cloud storage / parse and write", "SaveCloudStorage/10", "ParseAndWrite/10",
         Kind::AT_MOST, 1.15},
        Growth("save of cloud storage", "SaveCloudStorage/10", "SaveCloudStorage/1",
               CLOUD_STORAGE_NODES),
        {"available containers / copies of them", "Available/1000", "CopyContainers/50",
         Kind::AT_MOST, 5},
        {"available containers / copying the whole table", "Available/1000", "AvailableByCopy/1000",
         Kind::TIMES_FASTER, 5},
        Growth("available containers", "Available/10000", "Available/1000", 1000),
        {"high-speed selection / pass and sort", "HighSpeed/300", "PassAndSort/300", Kind::AT_MOST,
         3},
        Growth("high-speed selection", "HighSpeed/3000", "HighSpeed/300", 300),
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
