#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/membership_fixture.h"

using namespace membership;

namespace {

/// The rules of membership, told anew.
struct CMembershipModel {
    std::map<std::string, std::vector<std::string>> nodes;
    std::set<std::string> removedNodes;
    std::set<std::pair<std::string, std::string>> containers;
    std::vector<CStoredNode> stored;

    void Add(const std::string& strId, const std::vector<std::string>& types) {
        nodes[strId] = types;
        removedNodes.erase(strId);
        for (const std::string& strType : types) {
            containers.emplace(strId, strType);
        }
    }

    static void EraseFirst(std::vector<std::string>& types, const std::string& strType) {
        for (auto it = types.begin(); it != types.end(); ++it) {
            if (*it == strType) {
                types.erase(it);
                return;
            }
        }
    }

    void Remove(const std::string& strId, const std::string& strType, bool bReadable,
                bool bWritable) {
        containers.erase({strId, strType});
        EraseFirst(nodes[strId], strType);
        const bool bDrop = nodes[strId].empty();
        if (bDrop) {
            nodes.erase(strId);
            removedNodes.erase(strId);
        }
        if (bReadable && bWritable) {
            RemoveFromStore(strId, strType, bDrop);
        }
    }

    void RemoveFromStore(const std::string& strId, const std::string& strType, bool bDrop) {
        std::vector<CStoredNode> rewritten;
        bool bRemovedSeen = false;
        bool bDropped = false;
        for (CStoredNode node : stored) {
            bRemovedSeen = bRemovedSeen || node.strStatus == "Removed";
            node.strStatus = bRemovedSeen ? "Removed" : "Normal";
            if (node.strId == strId && bDrop && !bDropped) {
                bDropped = true;
                continue;
            }
            if (node.strId == strId && !bDrop) {
                EraseFirst(node.containers, strType);
            }
            rewritten.push_back(node);
        }
        stored = rewritten;
    }

    std::set<std::string> Available(const std::string& strType) const {
        std::set<std::string> ids;
        for (const auto& [strId, strOfType] : containers) {
            if (strOfType == strType && nodes.count(strId) != 0 && removedNodes.count(strId) == 0) {
                ids.insert(strId);
            }
        }
        return ids;
    }
};

class MembershipSequence : public Membership, public testing::WithParamInterface<unsigned int> {
protected:
    MembershipSequence() {
        m_model.stored = {{"n1", {"A", "B"}}, {"n2", {"C"}}, {"n1", {"A"}}, {"n3", {"A", "C"}}};
        Put(ClusterText(m_model.stored));
    }

    std::string DrawNode() { return "n" + std::to_string(m_dice.Below(4)); }
    std::string DrawType() { return m_dice.OneOf({"A", "B", "C"}); }

    void AddSome() {
        const std::string strId = DrawNode();
        std::vector<std::string> types;
        for (const char* pszType : {"A", "B", "C"}) {
            if (m_dice.Below(2) == 0) {
                types.emplace_back(pszType);
            }
        }
        m_model.Add(strId, types);
        EXPECT_EQ(Framework().AddNodeAndContainer(
                      {{strId, MakeStoredNode(strId, {types.begin(), types.end()})}}),
                  0);
    }

    void RemoveSome() {
        const std::string strId = DrawNode();
        const std::string strType = DrawType();
        const auto uiFailing = static_cast<unsigned int>(m_dice.Below(6));
        m_pStore->FailCall(uiFailing, NUMERIC_STORE_CODE);
        m_model.Remove(strId, strType, uiFailing != 1, uiFailing != 2);
        EXPECT_EQ(Framework().RemoveNodeContainerAndFlush(strId, strType), 0);
        m_pStore->FailCall(0, 0);
    }

    void MarkSome() {
        const std::string strId = DrawNode();
        const bool bRemoved = m_dice.Below(2) == 0;
        if (m_model.nodes.count(strId) != 0) {
            bRemoved ? void(m_model.removedNodes.insert(strId))
                     : void(m_model.removedNodes.erase(strId));
        }
        EXPECT_EQ(Framework().SetNodeClusterStatus(
                      {strId}, bRemoved ? CLUSTER_MEMBER_REMOVED : CLUSTER_MEMBER_NORMAL),
                  0);
    }

    void RemoveInStore() {
        if (!m_model.stored.empty()) {
            m_model.stored[m_dice.Below(m_model.stored.size())].strStatus = "Removed";
            Put(ClusterText(m_model.stored));
        }
    }

    void ExpectAsModelled() {
        std::map<std::string, std::vector<std::string>> nodes;
        for (const std::string& strId : NodeIds()) {
            const std::list<std::string> types = ContainersOfNode(strId);
            nodes[strId] = {types.begin(), types.end()};
        }
        EXPECT_EQ(nodes, m_model.nodes);
        std::set<std::pair<std::string, std::string>> containers;
        for (const auto& [addr, container] : AllContainers()) {
            containers.emplace(addr.GetNodeId(), addr.GetContainerType());
        }
        EXPECT_EQ(containers, m_model.containers);
        EXPECT_EQ(Stored(), ClusterText(m_model.stored));
        for (const char* pszType : {"A", "B", "C"}) {
            ContainerMap available;
            Framework().GetAvailableContainer(pszType, available);
            std::set<std::string> ids;
            for (const auto& [addr, container] : available) {
                ids.insert(addr.GetNodeId());
            }
            EXPECT_EQ(ids, m_model.Available(pszType));
        }
    }

    CMembershipModel m_model;
    CDice m_dice{GetParam()};
};

TEST_P(MembershipSequence, StaysInStepWithTheRules) {
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    const std::vector<std::function<void()>> turns = {
        [this] { AddSome(); }, [this] { AddSome(); }, [this] { RemoveSome(); },
        [this] { MarkSome(); }, [this] { RemoveInStore(); }};
    for (int iStep = 0; iStep < 60 && !HasFailure(); ++iStep) {
        SCOPED_TRACE("step " + std::to_string(iStep));
        turns[m_dice.Below(turns.size())]();
        ExpectAsModelled();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, MembershipSequence, testing::Range(1U, 13U));

}  // namespace
