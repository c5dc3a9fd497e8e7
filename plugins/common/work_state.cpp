#include "common/work_state.h"

#include <algorithm>

namespace {

bool IsRunning(const CContainer& container) {
    const std::map<std::string, int>& processTable = container.GetProcessTable();
    return std::all_of(processTable.begin(), processTable.end(),
                       [](const auto& process) { return process.second == PROCESS_STATE_RUNNING; });
}

}  // namespace

const char* WhyNotReady(const CContainer& container, const std::string& strContainerType) {
    if (container.GetContainerType() != strContainerType) {
        return "the container names another type";
    }
    if (container.GetMemberStatus() != CLUSTER_MEMBER_NORMAL) {
        return "the container is no normal member";
    }
    if (container.IsFaultShift() || container.GetFaultStatus()) {
        return "the container is in fault shift";
    }
    if (!container.IsOnline()) {
        return "the container is offline";
    }
    return IsRunning(container) ? nullptr : "a process of the container does not run";
}

const char* WhyNoHost(const CNode* pNode) {
    if (pNode == nullptr) {
        return "the node is unknown";
    }
    return pNode->GetMemberStatus() == CLUSTER_MEMBER_NORMAL ? nullptr
                                                             : "the node is no normal member";
}
