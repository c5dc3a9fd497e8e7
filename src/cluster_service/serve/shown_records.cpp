#include "serve/shown_records.h"

namespace {

/// By CLostClaim::KIND.
constexpr const char* CLAIM_KINDS[] = {"name", "job_type", "container_type", "real_type"};

template <typename T>
std::vector<T> ToVector(const std::list<T>& list) {
    return {list.begin(), list.end()};
}

}  // namespace

CShownPlugin Shown(const CPluginFile& file, const CPluginView* pRunning) {
    CShownPlugin shown;
    shown.strName = file.strName;
    shown.strFile = file.strFile;
    shown.strFailure = file.strFailure;
    shown.jobTypes.assign(file.held.jobs.begin(), file.held.jobs.end());
    shown.types = ToVector(file.held.containers);
    for (const auto& [strType, logicTypes] : file.held.containerBinds) {
        shown.logicTypes[strType] = ToVector(logicTypes);
    }
    shown.shiftTypes = ToVector(file.held.faultShiftContainers);
    shown.balanceTypes = ToVector(file.held.loadBalanceContainers);
    for (const CLostClaim& claim : file.lost) {
        shown.lost.push_back({CLAIM_KINDS[claim.eKind], claim.strKey, claim.strFile});
    }
    if (pRunning != nullptr) {
        shown.bOutOfService = pRunning->bOutOfService;
        shown.failures = pRunning->failures;
    }
    return shown;
}

CShownCg Shown(const CClusterCGInfo& cg) {
    return {cg.GetNodeCode(), cg.GetFloatCode(), cg.GetFloatIp(), cg.GetDecVerNum()};
}

CShownDatabase Shown(const CClusterDBInfo& database) {
    return {database.GetDBType() == CLUSTER_DB_MASTER, database.GetNodeId(), database.GetNodeIp(),
            database.GetPort(), database.GetCDBToken()};
}

CShownManager Shown(const CClusterMGRInfo& manager) {
    return {manager.GetNodeId(), manager.GetNodeIp()};
}

CShownStandardTask Shown(const std::string& strName, const CResourceTask& task) {
    CShownStandardTask shown{strName, task.IsSupportShift(), {}};
    task.GetAllPrivateInfo(shown.privateInfo);
    return shown;
}
