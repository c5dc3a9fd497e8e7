#include "command/plugin_table.h"

#include <exception>
#include <list>
#include <vector>

#include "framework_service/IPlugin.h"

namespace {

struct CPluginRow {
    CPluginFile file;
    std::string strVersion;
};

/// Asks the plug-in for its version, which is all that the load does not keep. What it throws
/// stands as its failure.
CPluginRow RowOf(const CPluginFile& file) {
    CPluginRow row{file, {}};
    if (file.pPlugin == nullptr) {
        return row;
    }
    try {
        row.strVersion = file.pPlugin->GetVersion();
    } catch (const std::exception& exception) {
        row.file.strFailure = std::string("GetVersion threw: ") + exception.what();
    } catch (...) {
        row.file.strFailure = "GetVersion threw";
    }
    return row;
}

std::list<std::string> LogicTypesOf(const CPluginFile& file) {
    std::list<std::string> logicTypes;
    for (const auto& bind : file.held.containerBinds) {
        logicTypes.insert(logicTypes.end(), bind.second.begin(), bind.second.end());
    }
    return logicTypes;
}

std::list<std::string> LostTexts(const CPluginFile& file) {
    std::list<std::string> texts;
    for (const CLostClaim& claim : file.lost) {
        texts.push_back(LostText(claim));
    }
    return texts;
}

}  // namespace

CTable PluginTable() {
    static const std::vector<CColumn<CPluginRow>> columns{
        {"plugin", [](const CPluginRow& row) { return row.file.strName; }},
        {"file", [](const CPluginRow& row) { return row.file.strFile; }},
        {"version", [](const CPluginRow& row) { return row.strVersion; }},
        {"jobs", [](const CPluginRow& row) { return ListValue(row.file.held.jobs); }},
        {"containers", [](const CPluginRow& row) { return ListValue(row.file.held.containers); }},
        {"logic_types", [](const CPluginRow& row) { return ListValue(LogicTypesOf(row.file)); }},
        {"fault_shift",
         [](const CPluginRow& row) { return ListValue(row.file.held.faultShiftContainers); }},
        {"load_balance",
         [](const CPluginRow& row) { return ListValue(row.file.held.loadBalanceContainers); }},
        {"lost", [](const CPluginRow& row) { return ListValue(LostTexts(row.file)); }},
        {"failure", [](const CPluginRow& row) { return row.file.strFailure; }},
    };
    std::list<CPluginRow> rows;
    for (const CPluginFile& file : CPluginMgr::Instance().GetPluginFiles()) {
        rows.push_back(RowOf(file));
    }
    return {"plugins", columns, rows};
}

std::string LostText(const CLostClaim& claim) {
    static constexpr const char* KINDS[] = {"name", "job type", "container type", "real type"};
    return std::string(KINDS[claim.eKind]) + " " + claim.strKey + " to " + claim.strFile;
}
