#include "cluster_engine/membership.h"

#include <algorithm>
#include <utility>

#include "cluster_engine/fault_shift.h"
#include "cluster_engine/library_document.h"
#include "cluster_engine/members.h"
#include "common_service/net_factory.h"
#include "common_service/tarn_conf.h"
#include "common_service/tarn_def.h"
#include "framework_service/cluster_znode_info.h"
#include "framework_service/node_mgr.h"

namespace {

constexpr uint32_t NUMERIC_FORM_VERSION = 1;
constexpr char PSZ_MEMBER[] = "/Engine/Member";

struct CStoredMember {
    std::string strNodeId;
    EMemberStatus eStatus = EMemberStatus::NORMAL;
    bool bDraining = false;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("node", self.strNodeId);
        form.Need("status", self.eStatus);
        form.May("draining", self.bDraining);
    }
};

struct CMemberDocument {
    uint32_t uiVersion = NUMERIC_FORM_VERSION;
    std::vector<CStoredMember> nodes;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("version", self.uiVersion);
        form.May("nodes", self.nodes);
    }
};

using Members = std::map<std::string, CMember>;

std::string TextOf(const Members& members) {
    CMemberDocument document;
    for (const auto& [strNodeId, member] : members) {
        document.nodes.push_back({strNodeId, member.eStatus, member.bDraining});
    }
    return JsonText(document);
}

/// Takes the statuses over, unless the document would be too large.
bool TakeMembers(CClusterState& state, Members members) {
    if (TextOf(members).size() >= NUMERIC_DOCUMENT_BYTES) {
        return false;
    }
    state.members = std::move(members);
    state.bMembersDirty = true;
    return true;
}

CEvent NodeEvent(EEvent eEvent, const std::string& strNodeId, std::string strCause) {
    CEvent event;
    event.eEvent = eEvent;
    event.strNodeId = strNodeId;
    event.strCause = std::move(strCause);
    return event;
}

CNode NodeOf(const CJoin& input) {
    CNode node;
    node.SetNodeId(input.strNodeId);
    node.SetNodeIp(input.strIp);
    node.SetNodeIpType(input.iIpType);
    node.SetNodeRole(input.iNodeRole);
    node.SetDomainRole(input.iDomainRole);
    node.SetContainerList({input.types.begin(), input.types.end()});
    return node;
}

/// Looks at a join before anything is made.
CAnswer LookAt(const CCluster& cluster, const CJoin& input) {
    if (cluster.state.nodes.count(input.strNodeId) != 0) {
        return CAnswer::Refuse(EFault::NODE_KNOWN, input.strNodeId);
    }
    if (!IsId(input.strIp)) {
        return CAnswer::Refuse(EFault::BAD_INPUT, "ip: must be printable, of 1 to 128 bytes");
    }
    if (input.types.size() > cluster.settings.uiListLength) {
        return CAnswer::Refuse(EFault::TOO_MUCH, "types");
    }
    std::set<std::string> types;
    for (const std::string& strType : input.types) {
        if (!IsId(strType)) {
            return CAnswer::Refuse(EFault::BAD_INPUT, "types: one is no id");
        }
        if (!types.insert(strType).second) {
            return CAnswer::Refuse(EFault::BAD_INPUT, "types: one stands twice: " + strType);
        }
        const std::string strOther = WhyRunsTogether(cluster, {input.strNodeId, strType});
        if (!strOther.empty()) {
            return CAnswer::Refuse(EFault::NAMES_RUN_TOGETHER, strOther);
        }
    }
    return {};
}

/// Whoever stands behind a removed node is read as removed too: the new one stands before it.
void InsertNode(CClusterZNodeInfo& document, std::list<CNode> nodes, const CNode& node) {
    const auto removed = std::find_if(nodes.begin(), nodes.end(), [](const CNode& other) {
        return other.GetMemberStatus() == CLUSTER_MEMBER_REMOVED;
    });
    nodes.insert(removed, node);
    document.SetNodeList(nodes);
}

/// Writes the node into the cluster document. Of a write that failed it is not known what it has
/// done: the next commit takes out what should not be there.
CAnswer WriteNode(CCluster& cluster, const CNode& node) {
    CClusterZNodeInfo document("", "", CTARNConf::m_oConf.GetCstClusterCode(), 0);
    bool bAbsent = false;
    CAnswer answer = ReadLibraryDocument(cluster, STORE_NODE_CLUSTER, document, bAbsent);
    if (answer.eFault != EFault::NONE) {
        return answer;
    }
    std::list<CNode> nodes;
    document.GetNodeList(nodes);
    const bool bKnown = std::any_of(nodes.begin(), nodes.end(), [&](const CNode& other) {
        return other.GetNodeId() == node.GetNodeId();
    });
    if (bKnown) {
        return CAnswer::Refuse(EFault::NODE_KNOWN, "in the cluster document: " + node.GetNodeId());
    }
    InsertNode(document, std::move(nodes), node);
    answer = WriteLibraryDocument(cluster, STORE_NODE_CLUSTER, document);
    if (answer.eFault == EFault::STORE_FAILED) {
        cluster.state.unflushed[node.GetNodeId()];
    }
    return answer;
}

/// Empties what documents the containers have from an earlier life.
CAnswer RenewDocuments(CCluster& cluster, const CJoin& input) {
    for (const std::string& strType : input.types) {
        const int iCode = cluster.assignments.Renew({input.strNodeId, strType});
        if (iCode != ORVA_SUCCEED) {
            return CAnswer::Refuse(
                iCode == ORVA_DATA_INVALID ? EFault::DOCUMENT_UNREADABLE : EFault::STORE_FAILED,
                "an earlier life's document of " + strType);
        }
    }
    return {};
}

/// Looks at a leave before anything is made, and finds who leaves: with its last container a node
/// leaves too.
CAnswer LookAt(CCluster& cluster, const CLeave& input, CLeaving& leaving) {
    if (cluster.state.nodes.count(input.strNodeId) == 0) {
        return CAnswer::Refuse(EFault::UNKNOWN_NODE, input.strNodeId);
    }
    const CContainerAddr addr(input.strNodeId, input.strType);
    const std::vector<CContainerAddr> all = ContainersOf(cluster, input.strNodeId);
    const bool bWhole = input.strType.empty();
    if (!bWhole && std::find(all.begin(), all.end(), addr) == all.end()) {
        return CAnswer::Refuse(EFault::UNKNOWN_CONTAINER, input.strNodeId + ' ' + input.strType);
    }
    if (cluster.store.IsAway()) {
        return CAnswer::Refuse(EFault::STORE_AWAY, input.strNodeId);
    }
    leaving.containers = bWhole ? all : std::vector<CContainerAddr>{addr};
    if (leaving.containers.size() == all.size()) {
        leaving.nodes.insert(input.strNodeId);
    }
    CClusterZNodeInfo document;
    bool bAbsent = false;
    return ReadLibraryDocument(cluster, STORE_NODE_CLUSTER, document, bAbsent);
}

std::set<std::string> AddressesOf(const std::list<CNode>& nodes) {
    std::set<std::string> addresses;
    for (const CNode& node : nodes) {
        addresses.insert(node.GetNodeIp());
    }
    return addresses;
}

/// Takes those that are no members out of the list. True when there was something to take out.
bool StrikeForeign(const CClusterState& state, std::list<CNode>& nodes) {
    bool bStruck = false;
    for (auto it = nodes.begin(); it != nodes.end();) {
        const auto unflushed = state.unflushed.find(it->GetNodeId());
        if (unflushed == state.unflushed.end()) {
            ++it;
            continue;
        }
        if (state.nodes.count(it->GetNodeId()) == 0) {
            it = nodes.erase(it);
            bStruck = true;
            continue;
        }
        std::list<std::string> types;
        it->GetContainerList(types);
        const std::size_t uiBefore = types.size();
        types.remove_if([&](const std::string& strType) {
            return unflushed->second.count(strType) != 0 &&
                   state.containers.count({it->GetNodeId(), strType}) == 0;
        });
        it->SetContainerList(types);
        bStruck = bStruck || types.size() != uiBefore;
        ++it;
    }
    return bStruck;
}

/// Whether the library's own removal reached the store is not known before it is read again. Of a
/// text that cannot be read, whoever mends it says who is a member.
int FlushLeft(CCluster& cluster) {
    CClusterZNodeInfo document;
    bool bAbsent = false;
    const CAnswer read = ReadLibraryDocument(cluster, STORE_NODE_CLUSTER, document, bAbsent);
    if (read.eFault == EFault::STORE_FAILED) {
        return ORVA_FAIL;
    }
    int iCode = ORVA_SUCCEED;
    std::list<CNode> nodes;
    document.GetNodeList(nodes);
    if (StrikeForeign(cluster.state, nodes)) {
        document.SetNodeList(nodes);
        iCode = cluster.store.WriteDocument(STORE_NODE_CLUSTER.pszSuffix,
                                            STORE_NODE_CLUSTER.uiBufLen, document);
    }
    if (iCode == ORVA_SUCCEED) {
        cluster.state.unflushed.clear();
    }
    return iCode;
}

/// Moves what may move out of a container that is drained.
void DrainContainer(CCluster& cluster, const CContainerAddr& addr) {
    CContainerRecord& record = *cluster.assignments.Find(addr);
    record.bDraining = true;
    if (!record.bSilent && !record.bShifted) {
        BeginShift(cluster, addr, true, "its node is drained");
    }
}

/// What a drain has done to the tasks so far.
void AddDrainResults(const CCluster& cluster, const CContainerAddr& addr,
                     const std::vector<std::string>& ids, CAnswer& answer) {
    const auto shift = cluster.state.shifts.find(addr);
    for (const std::string& strTaskId : ids) {
        const CContainerAddr& holder =
            *cluster.assignments.Holder(addr.GetContainerType(), strTaskId);
        CTaskResult result;
        result.strTaskId = strTaskId;
        result.strNodeId = holder.GetNodeId();
        result.strType = addr.GetContainerType();
        const bool bWaits =
            shift != cluster.state.shifts.end() && shift->second.waiting.count(strTaskId) != 0;
        result.eResult = !(holder == addr) ? ETaskResult::MOVED
                         : bWaits          ? ETaskResult::WAITS
                                           : ETaskResult::STAYS;
        answer.tasks.push_back(std::move(result));
    }
}

void EndDrain(CCluster& cluster, const CContainerAddr& addr, const std::string& strCause) {
    CContainerRecord& record = *cluster.assignments.Find(addr);
    if (!record.bDraining) {
        return;
    }
    record.bDraining = false;
    record.bShifted = false;
    EndShift(cluster, addr, strCause);
}

/// Is anything of the node still being drained?
bool ContinueDrain(CCluster& cluster, const std::string& strNodeId) {
    bool bDraining = false;
    for (const CContainerAddr& addr : ContainersOf(cluster, strNodeId)) {
        CContainerRecord& record = *cluster.assignments.Find(addr);
        if (record.bSilent || record.tasks.empty()) {
            EndDrain(cluster, addr, record.bSilent ? "it fell silent" : "it is empty");
        }
        bDraining = bDraining || record.bDraining;
        if (record.bDraining && cluster.state.bSettled && !cluster.store.IsAway()) {
            DrainContainer(cluster, addr);
        }
    }
    return bDraining;
}

void SetStatus(CCluster& cluster, const std::string& strNodeId, EMemberStatus eStatus) {
    ApplyStatus(cluster, strNodeId, eStatus);
    if (eStatus == EMemberStatus::NORMAL) {
        for (const CContainerAddr& addr : ContainersOf(cluster, strNodeId)) {
            EndDrain(cluster, addr, "its node is a normal member");
        }
    }
    cluster.Tell(NodeEvent(EEvent::MEMBER_STATUS, strNodeId, NameOf(eStatus)));
}

EMemberStatus StatusOf(const std::string& strNodeId) {
    CNode node;
    CNodeMgr::Instance().GetNode(strNodeId, node);
    return node.GetMemberStatus() == CLUSTER_MEMBER_NORMAL ? EMemberStatus::NORMAL
                                                           : EMemberStatus::REMOVED;
}

/// The nodes of the document that are members; a text that cannot be read is said.
Members ReadMembers(CCluster& cluster, const std::string& strText) {
    Json::Value json;
    CFieldFault fault;
    CMemberDocument document;
    Members members;
    if (!ParseJsonText(strText.data(), strText.data() + strText.size(), json, fault) ||
        !FromJson(json, document, fault) || document.uiVersion != NUMERIC_FORM_VERSION) {
        cluster.Tell(NodeEvent(EEvent::DOCUMENT_UNREADABLE, "", PSZ_MEMBER));
        return members;
    }
    for (const CStoredMember& stored : document.nodes) {
        if (cluster.state.nodes.count(stored.strNodeId) != 0) {
            members[stored.strNodeId] = {stored.eStatus, stored.bDraining};
        }
    }
    return members;
}

}  // namespace

CAnswer Join(CCluster& cluster, const CJoin& input) {
    CAnswer answer = LookAt(cluster, input);
    if (answer.eFault != EFault::NONE) {
        return answer;
    }
    if (cluster.store.IsAway()) {
        return CAnswer::Refuse(EFault::STORE_AWAY, input.strNodeId);
    }
    answer = RenewDocuments(cluster, input);
    if (answer.eFault != EFault::NONE) {
        return answer;
    }
    const CNode node = NodeOf(input);
    answer = WriteNode(cluster, node);
    if (answer.eFault == EFault::NONE) {
        HALD::CNetFactory::Instance().AddValidatedLink(input.strIp, VALIDATED_LINK_TYPE);
        EnterNode(cluster, node);
    }
    return answer;
}

CAnswer Leave(CCluster& cluster, const CLeave& input) {
    CLeaving leaving;
    CAnswer answer = LookAt(cluster, input, leaving);
    if (answer.eFault == EFault::NONE) {
        answer = TakeWorkOut(cluster, leaving);
    }
    if (answer.eFault != EFault::NONE) {
        return answer;
    }
    std::list<CNode> before;
    CNodeMgr::Instance().GetAllNode(before);
    RemoveMembers(cluster, leaving, true);
    std::list<CNode> after;
    CNodeMgr::Instance().GetAllNode(after);
    DropLinks(before, AddressesOf(after));
    return answer;
}

CAnswer Drain(CCluster& cluster, const CDrain& input) {
    const std::string& strNodeId = input.strNodeId;
    if (cluster.state.nodes.count(strNodeId) == 0) {
        return CAnswer::Refuse(EFault::UNKNOWN_NODE, strNodeId);
    }
    if (cluster.store.IsAway()) {
        return CAnswer::Refuse(EFault::STORE_AWAY, strNodeId);
    }
    Members members = cluster.state.members;
    members[strNodeId] = {EMemberStatus::REMOVED, true};
    if (!TakeMembers(cluster.state, std::move(members))) {
        return CAnswer::Refuse(EFault::DOCUMENT_FULL, PSZ_MEMBER);
    }
    ApplyStatus(cluster, strNodeId, EMemberStatus::REMOVED);
    cluster.Tell(NodeEvent(EEvent::DRAINING, strNodeId, ""));
    CAnswer answer;
    for (const CContainerAddr& addr : ContainersOf(cluster, strNodeId)) {
        std::vector<std::string> ids;
        for (const auto& [strTaskId, task] : cluster.assignments.Find(addr)->tasks) {
            ids.push_back(strTaskId);
        }
        DrainContainer(cluster, addr);
        AddDrainResults(cluster, addr, ids, answer);
    }
    return answer;
}

CAnswer SetMemberStatus(CCluster& cluster, const CMemberStatus& input) {
    if (input.nodes.size() > cluster.settings.uiListLength) {
        return CAnswer::Refuse(EFault::TOO_MUCH, "nodes");
    }
    Members members = cluster.state.members;
    for (const std::string& strNodeId : input.nodes) {
        if (cluster.state.nodes.count(strNodeId) == 0) {
            return CAnswer::Refuse(EFault::UNKNOWN_NODE, strNodeId);
        }
        CMember& member = members[strNodeId];
        member.eStatus = input.eStatus;
        member.bDraining = member.bDraining && input.eStatus == EMemberStatus::REMOVED;
    }
    if (!TakeMembers(cluster.state, std::move(members))) {
        return CAnswer::Refuse(EFault::DOCUMENT_FULL, PSZ_MEMBER);
    }
    for (const std::string& strNodeId :
         std::set<std::string>(input.nodes.begin(), input.nodes.end())) {
        if (StatusOf(strNodeId) != input.eStatus) {
            SetStatus(cluster, strNodeId, input.eStatus);
        }
    }
    return {};
}

void ContinueDrains(CCluster& cluster) {
    for (auto& [strNodeId, member] : cluster.state.members) {
        if (!member.bDraining || ContinueDrain(cluster, strNodeId)) {
            continue;
        }
        member.bDraining = false;
        cluster.state.bMembersDirty = true;
        cluster.Tell(NodeEvent(EEvent::DRAINED, strNodeId, ""));
    }
}

int LoadMemberStatus(CCluster& cluster) {
    std::string strText;
    bool bAbsent = false;
    const int iCode = cluster.store.Read(PSZ_MEMBER, strText, bAbsent);
    if (iCode != ORVA_SUCCEED) {
        return iCode;
    }
    cluster.state.members = bAbsent ? Members() : ReadMembers(cluster, strText);
    for (const auto& [strNodeId, node] : cluster.state.nodes) {
        const auto it = cluster.state.members.find(strNodeId);
        const bool bSet = it != cluster.state.members.end();
        ApplyStatus(cluster, strNodeId, bSet ? it->second.eStatus : StatusOf(strNodeId));
        for (const CContainerAddr& addr : ContainersOf(cluster, strNodeId)) {
            cluster.assignments.Find(addr)->bDraining = bSet && it->second.bDraining;
        }
    }
    return ORVA_SUCCEED;
}

int CommitMembership(CCluster& cluster) {
    int iCode = ORVA_SUCCEED;
    if (cluster.state.bMembersDirty) {
        iCode = cluster.store.Write(PSZ_MEMBER, TextOf(cluster.state.members));
        cluster.state.bMembersDirty = iCode != ORVA_SUCCEED;
    }
    if (iCode == ORVA_SUCCEED && !cluster.state.unflushed.empty()) {
        iCode = FlushLeft(cluster);
    }
    return iCode;
}

bool IsMembershipDirty(const CCluster& cluster) {
    return cluster.state.bMembersDirty || !cluster.state.unflushed.empty();
}
