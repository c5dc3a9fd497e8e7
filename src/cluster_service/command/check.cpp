#include "command/check.h"

#include <algorithm>
#include <vector>

#include "command/checks.h"
#include "command/exit_code.h"
#include "command/load.h"
#include "command/table.h"

namespace {

constexpr void (*CHECKS[])(const CCheckedStore&, Findings&) = {
    CheckPresence,
    CheckText,
    CheckSize,
    CheckNodeIds,
    CheckContainerAddresses,
    CheckNormalBehindRemoved,
    CheckNodeIps,
    CheckContainerTypes,
    CheckCloudStorageNodes,
    CheckThresholds,
    CheckCgEntries,
    CheckDatabase,
    CheckManager,
    CheckPlugins,
};

int Report(const Findings& findings, std::ostream& output) {
    if (findings.empty()) {
        output << "all well: " << StoreDocuments().size() << " documents checked\n";
        return EXIT_DONE;
    }
    CTable("findings",
           std::vector<CColumn<CFinding>>{
               {"severity", [](const CFinding& finding) { return finding.pszSeverity; }},
               {"document", [](const CFinding& finding) { return finding.strDocument; }},
               {"finding", [](const CFinding& finding) { return finding.strText; }}},
           findings)
        .Print(output);
    const bool bOnlyNotes =
        std::all_of(findings.begin(), findings.end(),
                    [](const CFinding& finding) { return finding.pszSeverity == PSZ_NOTE; });
    return bOnlyNotes ? EXIT_DONE : EXIT_REFUSED;
}

}  // namespace

int Check(std::ostream& output, std::ostream& errors) {
    CCheckedStore store;
    if (!ReadStore(store, errors)) {
        return EXIT_COULD_NOT;
    }
    store.bPluginsLoaded = LoadPlugins(errors);
    store.pluginFiles = CPluginMgr::Instance().GetPluginFiles();
    Findings findings;
    for (const auto pCheck : CHECKS) {
        pCheck(store, findings);
    }
    const int iResult = Report(findings, output);
    return store.bPluginsLoaded ? iResult : EXIT_COULD_NOT;
}
