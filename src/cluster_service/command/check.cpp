#include "command/check.h"

#include <json/writer.h>

#include <algorithm>
#include <sstream>

#include "command/checks.h"
#include "command/load.h"
#include "command/open_store.h"
#include "command/table.h"

namespace {

constexpr void (*CHECKS[])(const CCheckedStore&, Findings&) = {
    CheckPresence,
    CheckText,
    CheckKeys,
    CheckValues,
    CheckSize,
    CheckClusterCode,
    CheckNodeIds,
    CheckContainerAddresses,
    CheckNormalBehindRemoved,
    CheckNodesWithoutContainers,
    CheckContainerTypes,
    CheckCloudStorageNodes,
    CheckThresholds,
    CheckCgEntries,
    CheckDatabase,
    CheckManager,
    CheckPlugins,
    CheckTasks,
};

void PrintText(const Findings& findings, std::ostream& output) {
    if (findings.empty()) {
        output << "all well: " << StoreDocuments().size() << " documents checked\n";
        return;
    }
    CTable("findings",
           std::vector<CColumn<CFinding>>{
               {"severity", [](const CFinding& finding) { return RowOf(finding.eWeight).pszName; }},
               {"document", [](const CFinding& finding) { return finding.strDocument; }},
               {"finding", [](const CFinding& finding) { return TextOf(finding.fault); }}},
           findings)
        .Print(output);
}

Json::Value ToJson(const CFinding& finding) {
    Json::Value object(Json::objectValue);
    object["severity"] = RowOf(finding.eWeight).pszName;
    object["document"] = finding.strDocument;
    if (finding.fault.place) {
        object["line"] = finding.fault.place->iLine;
        object["column"] = finding.fault.place->iColumn;
    }
    if (!finding.fault.strPath.empty()) {
        object["path"] = finding.fault.strPath;
    }
    object["finding"] = finding.fault.strWhat;
    return object;
}

void PrintJson(const Findings& findings, std::ostream& output) {
    Json::Value root(Json::objectValue);
    Json::Value& list = root["findings"] = Json::Value(Json::arrayValue);
    for (const CFinding& finding : findings) {
        list.append(ToJson(finding));
    }
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    output << Json::writeString(builder, root) << '\n';
}

/// Loads the plug-ins. False, said on the stream, when they did not load and none of them tells
/// why, which would be a finding.
bool ReadPlugins(CCheckedStore& store, std::ostream& errors) {
    std::ostringstream reason;
    store.bPluginsLoaded = LoadPlugins(reason);
    store.pluginFiles = CPluginMgr::Instance().GetPluginFiles();
    const bool bTold =
        store.bPluginsLoaded ||
        std::any_of(store.pluginFiles.begin(), store.pluginFiles.end(),
                    [](const CPluginFile& file) { return !file.strFailure.empty(); });
    errors << (bTold ? "" : reason.str());
    return bTold;
}

}  // namespace

int Check(const CCheckOptions& options, std::ostream& output, std::ostream& errors) {
    CCheckedStore store;
    store.strDamage = FindStoreDamage(options.strStore);
    if (!ReadStore(options.strDir, store, errors)) {
        return EXIT_COULD_NOT;
    }
    const bool bPluginsTold = ReadPlugins(store, errors);
    Findings findings;
    if (!store.strDamage.empty()) {
        findings.push_back({EWeight::ERROR,
                            options.strStore,
                            {std::nullopt, "", "is damaged: " + store.strDamage}});
    }
    for (const auto pCheck : CHECKS) {
        pCheck(store, findings);
    }
    findings.sort(
        [](const CFinding& one, const CFinding& other) { return one.eWeight < other.eWeight; });
    (options.bJson ? PrintJson : PrintText)(findings, output);
    if (!bPluginsTold) {
        return EXIT_COULD_NOT;
    }
    return findings.empty() ? EXIT_DONE : RowOf(findings.front().eWeight).eExitCode;
}
