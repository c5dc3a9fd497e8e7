#include <algorithm>
#include <vector>

#include "framework_service/base_data.h"
#include "serve/field_names.h"
#include "serve/list_options.h"
#include "serve/question.h"
#include "serve/service_error.h"
#include "serve/shown_cluster.h"

namespace {

/// The container that the path names, or null.
const CContainer* FindContainer(const CAsked& asked, const CClusterView& view) {
    return view.moment->FindContainer({asked.path.at("node"), asked.path.at("type")});
}

CHttpReply NoContainer(const CAsked& asked) {
    return ErrorReply(EFault::UNKNOWN_CONTAINER,
                      asked.path.at("node") + ' ' + asked.path.at("type"));
}

bool HasType(const CShownNode& node, const std::string& strType) {
    return strType.empty() ||
           std::find(node.types.begin(), node.types.end(), strType) != node.types.end();
}

/// How many there are, for a glance.
struct CCounts {
    uint64_t ullNodes = 0;
    uint64_t ullOfflineNodes = 0;
    uint64_t ullContainers = 0;
    uint64_t ullOfflineContainers = 0;
    uint64_t ullTasks = 0;
};

CCounts Count(const CClusterMoment& moment) {
    CCounts counts;
    moment.VisitNodes(0, [&counts](const std::string&, const CNode* pNode) {
        ++counts.ullNodes;
        counts.ullOfflineNodes += pNode->IsOnline() ? 0 : 1;
    });
    moment.VisitContainers(0, [&counts](const CContainerAddr&, const CContainer* pContainer) {
        ++counts.ullContainers;
        counts.ullOfflineContainers += pContainer->IsOnline() ? 0 : 1;
        counts.ullTasks += pContainer->GetTotalTask();
    });
    return counts;
}

}  // namespace

CHttpReply ShowCluster(const CAsked& /*asked*/, const CClusterView& view) {
    const CCounts counts = Count(*view.moment);
    Json::Value body;
    CFieldWriter writer(body);
    writer.Need("view", view.ullNumber);
    writer.Need("time", view.iTime);
    writer.Need("settling", view.bSettling);
    writer.Need("store_away", view.engine.bStoreAway);
    writer.Need("nodes", counts.ullNodes);
    writer.Need("offline_nodes", counts.ullOfflineNodes);
    writer.Need("containers", counts.ullContainers);
    writer.Need("offline_containers", counts.ullOfflineContainers);
    writer.Need("tasks", counts.ullTasks);
    writer.Need("held_types", view.engine.heldTypes);
    writer.Need("draining", view.engine.draining);
    return {200, JsonLine(body)};
}

CHttpReply ShowNodes(const CAsked& asked, const CClusterView& view) {
    static const CFieldNames NAMES = CFieldNames::Of<CShownNode>();
    CListOptions options;
    if (std::string strWhy; !options.Read(asked.request, NAMES.GetAll(), strWhy)) {
        return ErrorReply(EServiceFault::BAD_REQUEST, strWhy);
    }
    CListAnswer answer("nodes", options);
    view.moment->VisitNodes(0, [&](const std::string& strNodeId, const CNode* pNode) {
        const CShownNode node = ShownNode(*pNode, view);
        if (options.Wants(strNodeId, options.strType, node.bOnline) &&
            HasType(node, options.strType)) {
            answer.Offer(strNodeId, [&] { return ToJson(node); });
        }
    });
    return answer.Reply();
}

CHttpReply ShowNode(const CAsked& asked, const CClusterView& view) {
    const CNode* const pNode = view.moment->FindNode(asked.path.at("node"));
    if (pNode == nullptr) {
        return ErrorReply(EFault::UNKNOWN_NODE, asked.path.at("node"));
    }
    return {200, JsonLine(ToJson(ShownNode(*pNode, view)))};
}

CHttpReply ShowContainers(const CAsked& asked, const CClusterView& view) {
    static const CFieldNames NAMES = CFieldNames::Of<CShownContainer>();
    CListOptions options;
    if (std::string strWhy; !options.Read(asked.request, NAMES.GetAll(), strWhy)) {
        return ErrorReply(EServiceFault::BAD_REQUEST, strWhy);
    }
    CListAnswer answer("containers", options);
    view.moment->VisitContainers(0, [&](const CContainerAddr& addr, const CContainer* pContainer) {
        const std::string& strNodeId = addr.GetNodeId();
        const std::string& strType = addr.GetContainerType();
        if (options.Wants(strNodeId, strType, pContainer->IsOnline()) &&
            (!options.available || *options.available == IsAvailable(*pContainer, view))) {
            // No two containers have a key in common: their addresses would be one.
            answer.Offer(strNodeId + strType,
                         [&] { return ToJson(ShownContainer(*pContainer, view)); });
        }
    });
    return answer.Reply();
}

CHttpReply ShowContainer(const CAsked& asked, const CClusterView& view) {
    const CContainer* const pContainer = FindContainer(asked, view);
    if (pContainer == nullptr) {
        return NoContainer(asked);
    }
    return {200, JsonLine(ToJson(ShownContainer(*pContainer, view)))};
}

CHttpReply ShowTasks(const CAsked& asked, const CClusterView& view) {
    static const CFieldNames NAMES = CFieldNames::Of<CTaskForm>();
    CListOptions options;
    if (std::string strWhy; !options.Read(asked.request, NAMES.GetAll(), strWhy)) {
        return ErrorReply(EServiceFault::BAD_REQUEST, strWhy);
    }
    const CContainer* const pContainer = FindContainer(asked, view);
    if (pContainer == nullptr) {
        return NoContainer(asked);
    }
    std::vector<const CResourceTask*> tasks;
    for (const CResourceTask& task : pContainer->GetTaskTable()) {
        tasks.push_back(&task);
    }
    std::sort(tasks.begin(), tasks.end(), [](const auto* pLeft, const auto* pRight) {
        return pLeft->GetTaskId() < pRight->GetTaskId();
    });
    CListAnswer answer("tasks", options);
    for (const CResourceTask* const pTask : tasks) {
        answer.Offer(pTask->GetTaskId(), [&] { return ToJson(CTaskForm(*pTask)); });
    }
    return answer.Reply();
}
