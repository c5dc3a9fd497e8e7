#include "serve/cluster_view.h"

#include "framework_service/framework_common.h"

namespace {

/// A record that was never loaded names no node and no address.
template <typename Info>
bool IsLoaded(const Info& info) {
    return !info.GetNodeId().empty() || !info.GetNodeIp().empty();
}

}  // namespace

CRecordsView ReadRecords() {
    CRecordsView records;
    CClusterCGInfoList cgList;
    CFrameworkCGCommon::Instance().GetClusterCGInfoList(cgList);
    cgList.GetClusterCGInfoList(records.cgs);
    CFrameworkCommon& framework = CFrameworkCommon::Instance();
    framework.GetClusterDBInfo().GetAllSlaveDB(records.databases);
    if (const CClusterDBInfo& master = framework.GetClusterDBInfo().GetMasterDB();
        IsLoaded(master)) {
        records.databases.push_front(master);
    }
    if (const CClusterMGRInfo& manager = framework.GetClusterMGRInfo().GetMasterMGR();
        IsLoaded(manager)) {
        records.managers.push_back(manager);
    }
    return records;
}
