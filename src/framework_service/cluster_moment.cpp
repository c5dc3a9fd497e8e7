#include "framework_service/cluster_moment.h"

#include "internal/framework_internal.h"

std::optional<CClusterMoment> CClusterMoment::Take() {
    auto containers = CFrameworkInternal::Snapshot(CContainerMgr::Instance());
    if (!containers) {
        return std::nullopt;
    }
    auto nodes = CFrameworkInternal::Snapshot(CNodeMgr::Instance());
    if (!nodes) {
        return std::nullopt;
    }
    return CClusterMoment(std::move(*containers), std::move(*nodes));
}
