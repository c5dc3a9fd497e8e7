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

/// The row of an operation that may cost so many microseconds of processor time, beside another
/// one if it is named.
Comparison Microseconds(const std::string& strTitle, const std::string& strMeasured,
                        const std::string& strBeside, double fTarget) {
    return {strTitle, strMeasured, strBeside, Kind::AT_MOST_BESIDE, fTarget, "us", 1000};
}

/// The row of something that may take so many bytes.
Comparison Bytes(const std::string& strTitle, const std::string& strMeasured, double fTarget) {
    return {strTitle, strMeasured, "", Kind::AT_MOST_BESIDE, fTarget, "bytes", 1};
}

struct Result {
    double fOther;  ///< the other side, or 0
    double fValue;  ///< what the target is for
    bool bMet;
};

Result Judge(const Comparison& row, double fMeasured, double fOther) {
    switch (row.eKind) {
        case Kind::TIMES_FASTER:
            return {fOther, fOther / fMeasured, fOther / fMeasured >= row.fTarget};
        case Kind::AT_MOST_BESIDE: {
            const double fBeside = (fMeasured - fOther) / row.fUnit;
            return {fOther, fBeside, fBeside <= row.fTarget};
        }
        default:
            return {fOther, fMeasured / fOther, fMeasured / fOther <= row.fTarget};
    }
}

/// Calls back with every row whose sides were measured.
void ForEachResult(const Medians& medians,
                   const std::function<void(const Comparison&, const Result&)>& onResult) {
    for (const Comparison& row : AllComparisons()) {
        const auto itMeasured = medians.find(row.strMeasured);
        const auto itPlain = medians.find(row.strPlain);
        if (itMeasured == medians.end() || (itPlain == medians.end() && !row.strPlain.empty())) {
            continue;
        }
        const double fOther = itPlain != medians.end() ? itPlain->second : 0;
        onResult(row, Judge(row, itMeasured->second, fOther));
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
        {"report to the engine / reading and twice the library", "EngineReport/200",
         "ReadAndReportTwice/200", Kind::AT_MOST, 1},
        {"tick at 700 containers / millisecond", "EngineTick", "Millisecond", Kind::AT_MOST, 1},
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
        Microseconds("placement, 600 tasks, beside its number", "PlaceOne/300/2/cpu",
                     "DecisionNumber/cpu", 5),
        Microseconds("placement, 60,000 tasks", "PlaceOne/300/200/cpu", "", 20),
        Microseconds("placement after 20 reports", "PlaceAfterReports/300/200/manual_time", "",
                     100),
        Microseconds("6,000 placements at once, 3,000 nodes", "PlaceAtOnce/3000/2/cpu", "", 20000),
        Microseconds("1,000 tasks of a dead recorder, decided",
                     "DeadRecorderDecided/300/200/iterations:1/manual_time", "", 5000),
        Microseconds("1,000 tasks of a dead recorder, applied",
                     "DeadRecorderApplied/300/200/iterations:1/manual_time", "", 20000),
        Microseconds("balance decision, 60,000 tasks", "Balance/300/200/cpu", "", 5000),
        {"placement, 10 times the containers", "PlaceOne/3000/2/cpu", "PlaceOne/300/2/cpu",
         Kind::AT_MOST, 2},
        {"placement, 10,000 containers / 1,000", "PlaceOne/5000/20/cpu", "PlaceOne/500/20/cpu",
         Kind::AT_MOST, 2},
        {"report over 700 connections / bare handler", "ServiceReport", "BareReport",
         Kind::TIMES_FASTER, 0.7},
        {"99th percentile of its answers / bare handler's", "ServiceReport/99th", "BareReport/99th",
         Kind::AT_MOST, 2},
        {"job of one task / write of the store alone", "ServiceJob/1", "StoreWrite",
         Kind::TIMES_FASTER, 0.4},
        {"job of 100 tasks / job of one", "ServiceJob/100", "ServiceJob/1", Kind::AT_MOST, 3},
        {"dry run of one task / job of one", "ServiceDryRun/1", "ServiceJob/1", Kind::AT_MOST, 1},
        Bytes("memory of the plug-in for a container", "ViewMemory/container", 200),
        Bytes("memory of the plug-in for a task", "ViewMemory/task", 150),
    };
    return ROWS;
}

bool PrintComparisons(const Medians& medians) {
    bool bAllMet = true;
    std::printf("\n%-48s %12s %12s %8s  %s\n", "operation / other side", "ns", "other ns", "value",
                "target");
    ForEachResult(medians, [&](const Comparison& row, const Result& result) {
        bAllMet = bAllMet && result.bMet;
        std::printf("%-48s %12.0f %12.0f %8.2f  %s %.6g %s%s\n", row.strTitle.c_str(),
                    medians.at(row.strMeasured), result.fOther, result.fValue,
                    row.eKind == Kind::TIMES_FASTER ? ">=" : "<=", row.fTarget, row.strUnit.c_str(),
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
        rowJson["other_ns"] = result.fOther;
        rowJson[row.strUnit.empty() ? "ratio" : row.strUnit] = result.fValue;
        rowJson[row.eKind == Kind::TIMES_FASTER ? "at_least" : "at_most"] = row.fTarget;
        rowJson["met"] = result.bMet;
    });
    std::ofstream(strFile) << root.toStyledString();
}
