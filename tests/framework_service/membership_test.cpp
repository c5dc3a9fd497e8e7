#include <functional>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/refused_locks.h"
#include "support/registry_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr int NUMERIC_STORE_CODE = 4711;
constexpr char FILE_STEM[] = "framework_common";

CFrameworkCommon& Framework() {
    return CFrameworkCommon::Instance();
}

CLogLine FromCache(const std::string& strFunction, const std::string& strMessage) {
    return Info("framework common, Remove node container from cache", FILE_STEM, strFunction,
                strMessage);
}

/// What a removal tells of the registries.
std::vector<CLogLine> CacheLines(const std::string& strNodeId, const std::string& strType,
                                 unsigned int uiLeft) {
    std::vector<CLogLine> lines = {FromCache(
        "RemoveNodeContainer", "node id[" + strNodeId + "], container id[" + strType +
                                   "], left container num[" + std::to_string(uiLeft) + "].")};
    if (uiLeft == 0) {
        lines.push_back(FromCache("RemoveNodeContainerAndFlush", "node id[" + strNodeId + "]."));
    }
    return lines;
}

/// What a removal tells that reached the store.
std::vector<CLogLine> FlushedLines(const std::string& strNodeId, const std::string& strType,
                                   unsigned int uiLeft) {
    std::vector<CLogLine> lines = CacheLines(strNodeId, strType, uiLeft);
    lines.push_back(Info("framework common, remove container and flush from zk", FILE_STEM,
                         "RemoveNodeContainerAndFlush",
                         "node id[" + strNodeId + "], container id[" + strType +
                             "], container num[" + std::to_string(uiLeft) + "] left."));
    return lines;
}

class Membership : public CRegistryTest {
protected:
    void Add(const std::string& strId, const std::list<std::string>& containers) {
        ASSERT_EQ(Framework().AddNodeAndContainer({{strId, MakeStoredNode(strId, containers)}}), 0);
        m_logger.Clear();
    }

    void Put(const std::optional<std::string>& text) { m_pStore->Put(Path("/Cluster"), text); }
    std::optional<std::string> Stored() const { return m_pStore->Get(Path("/Cluster")); }
};

// ---------------------------------------------------------------- nodes join

TEST_F(Membership, AddingNothingCallsNothing) {
    EXPECT_EQ(Framework().AddNodeAndContainer({}), 0);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    EXPECT_EQ(m_pStore->GetCallCount(), 0U);
}

TEST_F(Membership, AddedNodesEnterBothRegistriesAndNoStore) {
    EXPECT_EQ(Framework().AddNodeAndContainer(
                  {{"n2", MakeStoredNode("n2", {"A"})}, {"n1", MakeStoredNode("n1", {"B", "A"})}}),
              0);
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2"));
    EXPECT_THAT(AddressesOf(AllContainers()),
                ElementsAre(CContainerAddr("n1", "A"), CContainerAddr("n1", "B"),
                            CContainerAddr("n2", "A")));
    EXPECT_EQ(m_pStore->GetCallCount(), 0U);
    const auto generated = [](const std::string& strAddr) {
        return Info("Gen Container Table", FILE_STEM, "GenContainerTable", strAddr);
    };
    const auto unsupported = [](const std::string& strType) {
        return Err("is container support fault shift", 1, "plugin_mgr",
                   "IsContainerSupportFaultShift", "do not support, type[" + strType + "]");
    };
    const auto loaded = [](const std::string& strAddr) {
        return Info("load Container info", FILE_STEM, "LoadContainerInfo", strAddr);
    };
    EXPECT_THAT(
        m_logger.GetLines(),
        ElementsAre(generated("node=n1 container type=B "), generated("node=n1 container type=A "),
                    generated("node=n2 container type=A "), unsupported("B"),
                    loaded("node=n1 container type=B "), unsupported("A"),
                    loaded("node=n1 container type=A "), unsupported("A"),
                    loaded("node=n2 container type=A ")));
}

TEST_F(Membership, NodeWithoutContainersEntersTheNodeTableOnly) {
    EXPECT_EQ(Framework().AddNodeAndContainer({{"n1", MakeStoredNode("n1", {})}}), 0);
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    EXPECT_THAT(AllContainers(), IsEmpty());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(Membership, KeyServesTheNodeTableAndTheNodesOwnIdItsContainers) {
    EXPECT_EQ(Framework().AddNodeAndContainer({{"key", MakeStoredNode("id", {"A"})}}), 0);
    EXPECT_TRUE(CNodeMgr::Instance().IsNodeExist("key"));
    EXPECT_FALSE(CNodeMgr::Instance().IsNodeExist("id"));
    EXPECT_THAT(AddressesOf(AllContainers()), ElementsAre(CContainerAddr("id", "A")));
}

TEST_F(Membership, RepeatedTypeAddsTheNodesAndNoContainer) {
    EXPECT_EQ(Framework().AddNodeAndContainer({{"n1", MakeStoredNode("n1", {"A"})},
                                               {"n2", MakeStoredNode("n2", {"B", "B"})},
                                               {"n3", MakeStoredNode("n3", {"C"})}}),
              ORVA_FAIL);
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2", "n3"));
    EXPECT_THAT(AllContainers(), IsEmpty());
    const std::vector<CLogLine> lines = m_logger.GetLines();
    ASSERT_GE(lines.size(), 3U);
    EXPECT_THAT(std::vector<CLogLine>(lines.end() - 3, lines.end()),
                ElementsAre(Err("load container info", 1, FILE_STEM, "LoadContainerInfo",
                                "insert map failed"),
                            Err("init container mgr", 1, FILE_STEM, "GenContainerTable",
                                "load container info fail."),
                            Err("framework common, init container mgr", 1, FILE_STEM,
                                "AddNodeAndContainer", "gen container table fail.")));
}

TEST_F(Membership, NodeThatRejoinsIsOverwrittenAndItsContainersComeBackToLife) {
    Add("n1", {"A"});
    const CContainerAddr addr("n1", "A");
    CContainerMgr& mgr = CContainerMgr::Instance();
    CNodeMgr::Instance().SetMemberStatus({"n1"}, CLUSTER_MEMBER_REMOVED);
    mgr.SetContainerOnline(addr, false);
    mgr.SetContainerMemberStatus(addr, CLUSTER_MEMBER_REMOVED);
    mgr.SetContainerResTaskNeedUpdate(addr, false);
    mgr.SetExtParamValueByKey(addr, "key", "kept");

    Add("n1", {"A", "B"});
    CNode node;
    ASSERT_TRUE(CNodeMgr::Instance().GetNode("n1", node));
    EXPECT_EQ(node.GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    EXPECT_THAT(ContainersOfNode("n1"), ElementsAre("A", "B"));
    const CContainer container = AllContainers()[addr];
    EXPECT_TRUE(container.IsOnline());
    EXPECT_TRUE(container.IsNeedUpdateResTask());
    EXPECT_EQ(container.GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    std::string strValue;
    EXPECT_EQ(container.GetValueByKey("key", strValue), 0);
    EXPECT_EQ(strValue, "kept");
}

TEST_F(Membership, NodeThatRejoinsWithFewerTypesLeavesTheContainersOfTheOthers) {
    Add("n1", {"A", "B"});
    Add("n1", {"B"});
    EXPECT_THAT(ContainersOfNode("n1"), ElementsAre("B"));
    EXPECT_THAT(AllContainers(), SizeIs(2));
}

// ---------------------------------------------------------------- a container leaves

TEST_F(Membership, LastContainerTakesItsNodeAlong) {
    Add("n1", {"A"});
    Add("n2", {"A"});
    Put(R"({"ClusterName":"c","ClusterRemark":"r","ClusterCode":"X","ClusterForwardType":7,)"
        R"("ClusterNode":[{"NodeID":"n1","NodeIP":"10.0.0.1","NodeIPType":1,"NodeRole":2,)"
        R"("DomainRole":3,"Status":"Normal","Container":[{"ContainerType":"A"}]},)"
        R"({"NodeID":"n2","NodeIP":"10.0.0.2","NodeIPType":4,"NodeRole":5,"DomainRole":6,)"
        R"("Status":"Normal","Container":[{"ContainerType":"A"}]}]})");
    EXPECT_EQ(Framework().RemoveNodeContainerAndFlush("n1", "A"), 0);
    EXPECT_THAT(NodeIds(), ElementsAre("n2"));
    EXPECT_THAT(AddressesOf(AllContainers()), ElementsAre(CContainerAddr("n2", "A")));
    EXPECT_EQ(Stored(),
              "{\"ClusterCode\":\"X\",\"ClusterForwardType\":7,\"ClusterName\":\"c\","
              "\"ClusterNode\":[{\"Container\":[{\"ContainerType\":\"A\"}],\"DomainRole\":6,"
              "\"NodeID\":\"n2\",\"NodeIP\":\"10.0.0.2\",\"NodeIPType\":4,\"NodeRole\":5,"
              "\"Status\":\"Normal\"}],\"ClusterRemark\":\"r\"}\n");
    EXPECT_THAT(m_logger.GetLines(), ElementsAreArray(FlushedLines("n1", "A", 0)));
    EXPECT_EQ(m_pStore->GetCallCount(), 2U) << "one read, one write";
}

/// A removal of type "A" from node "n1": what the cache and the store held, and what the store
/// holds afterwards.
struct CRemoval {
    std::string strName;
    std::list<std::string> cached;  ///< containers of n1 in the cache; none: n1 is unknown
    std::vector<CStoredNode> stored;
    unsigned int uiLeft;
    std::vector<CStoredNode> storedAfter;
};

std::ostream& operator<<(std::ostream& stream, const CRemoval& removal) {
    return stream << removal.strName;
}

class MembershipRemoval : public Membership, public testing::WithParamInterface<CRemoval> {};

TEST_P(MembershipRemoval, FollowsTheCachedCount) {
    const CRemoval& removal = GetParam();
    if (!removal.cached.empty()) {
        Add("n1", removal.cached);
    }
    Add("other", {"A"});
    Put(ClusterText(removal.stored));
    EXPECT_EQ(Framework().RemoveNodeContainerAndFlush("n1", "A"), 0);
    EXPECT_EQ(Stored(), ClusterText(removal.storedAfter));
    EXPECT_EQ(CNodeMgr::Instance().IsNodeExist("n1"), removal.uiLeft != 0);
    EXPECT_EQ(ContainersOfNode("n1").size(), removal.uiLeft);
    EXPECT_THAT(ContainersOfNode("other"), ElementsAre("A"));
    EXPECT_EQ(AllContainers().count(CContainerAddr("n1", "A")), 0U);
    EXPECT_EQ(AllContainers().count(CContainerAddr("other", "A")), 1U);
    EXPECT_THAT(m_logger.GetLines(), ElementsAreArray(FlushedLines("n1", "A", removal.uiLeft)));
}

INSTANTIATE_TEST_SUITE_P(
    Store, MembershipRemoval,
    testing::Values(CRemoval{"OneOfTwo",
                             {"A", "B"},
                             {{"n0", {"A"}}, {"n1", {"A", "B"}}, {"n2", {"A"}}},
                             1,
                             {{"n0", {"A"}}, {"n1", {"B"}}, {"n2", {"A"}}}},
                    CRemoval{"OnlyOne", {"A"}, {{"n1", {"A"}}}, 0, {}},
                    CRemoval{"UnknownNodeLosesItsWholeEntry",
                             {},
                             {{"n0", {}}, {"n1", {"A", "B", "C"}}},
                             0,
                             {{"n0", {}}}},
                    CRemoval{"StoredListHasMoreThanTheCache",
                             {"A"},
                             {{"n1", {"A", "B"}}, {"n2", {}}},
                             0,
                             {{"n2", {}}}},
                    CRemoval{"StoredListHasLessThanTheCache",
                             {"A", "B"},
                             {{"n1", {"A"}}, {"n2", {}}},
                             1,
                             {{"n1", {}}, {"n2", {}}}},
                    CRemoval{"StoredListHasTheTypeTwice",
                             {"A", "B"},
                             {{"n1", {"B", "A", "C", "A"}}},
                             1,
                             {{"n1", {"B", "C", "A"}}}},
                    CRemoval{"TypeThatTheCachedNodeLacks",
                             {"B", "C"},
                             {{"n1", {"B", "C"}}},
                             2,
                             {{"n1", {"B", "C"}}}},
                    CRemoval{"TwoEntriesOfTheNodeBothLoseTheType",
                             {"A", "B"},
                             {{"n1", {"A", "B"}}, {"n2", {"A"}}, {"n1", {"A"}}},
                             1,
                             {{"n1", {"B"}}, {"n2", {"A"}}, {"n1", {}}}},
                    CRemoval{"OnlyTheFirstOfTwoEntriesIsErased",
                             {"A"},
                             {{"n0", {}}, {"n1", {"A"}}, {"n2", {}}, {"n1", {"B"}}},
                             0,
                             {{"n0", {}}, {"n2", {}}, {"n1", {"B"}}}},
                    CRemoval{"NodeThatTheStoreLacks", {"A"}, {{"n2", {"A"}}}, 0, {{"n2", {"A"}}}},
                    CRemoval{"StoreWithoutNodes", {"A"}, {}, 0, {}},
                    CRemoval{"RemovedCarriesOverToLaterNodes",
                             {"A", "B"},
                             {{"n0", {}}, {"n1", {"A", "B"}, "Removed"}, {"n2", {"A"}}, {"n3", {}}},
                             1,
                             {{"n0", {}},
                              {"n1", {"B"}, "Removed"},
                              {"n2", {"A"}, "Removed"},
                              {"n3", {}, "Removed"}}},
                    CRemoval{"ErasedNodeStillCarriesRemovedOver",
                             {"A"},
                             {{"n0", {}}, {"n1", {"A"}, "Removed"}, {"n2", {"A"}}},
                             0,
                             {{"n0", {}}, {"n2", {"A"}, "Removed"}}}),
    NAME_OF_PARAMETER);

/// What the store may hold so that a removal leaves it as it is.
struct CUnreadable {
    std::string strName;
    std::function<void(CMemoryStore&, const std::string& strPath)> prepare;
};

std::ostream& operator<<(std::ostream& stream, const CUnreadable& unreadable) {
    return stream << unreadable.strName;
}

class MembershipWithoutDocument : public Membership,
                                  public testing::WithParamInterface<CUnreadable> {};

TEST_P(MembershipWithoutDocument, RemovalChangesTheCacheAndTellsNothingMore) {
    Add("n1", {"A"});
    GetParam().prepare(*m_pStore, Path("/Cluster"));
    const CStoreAnswer before = m_pStore->GetNode(Path("/Cluster"));
    EXPECT_EQ(Framework().RemoveNodeContainerAndFlush("n1", "A"), 0);
    EXPECT_THAT(NodeIds(), IsEmpty());
    EXPECT_THAT(AllContainers(), IsEmpty());
    EXPECT_THAT(m_logger.GetLinesOf(FILE_STEM), ElementsAreArray(CacheLines("n1", "A", 0)));
    EXPECT_EQ(m_pStore->GetCallCount(), 1U) << "the read";
    EXPECT_EQ(m_pStore->GetNode(Path("/Cluster")).bExists, before.bExists);
    EXPECT_EQ(Stored(), before.text);
}

INSTANTIATE_TEST_SUITE_P(
    Store, MembershipWithoutDocument,
    testing::Values(CUnreadable{"Absent", [](CMemoryStore&, const std::string&) {}},
                    CUnreadable{"WithoutData",
                                [](CMemoryStore& store, const std::string& strPath) {
                                    store.Put(strPath, std::nullopt);
                                }},
                    CUnreadable{"Malformed",
                                [](CMemoryStore& store, const std::string& strPath) {
                                    store.Put(strPath, "no json");
                                }},
                    CUnreadable{"Failing",
                                [](CMemoryStore& store, const std::string& strPath) {
                                    store.Put(strPath, ClusterText({{"n1", {"A"}}}));
                                    store.FailCall(1, NUMERIC_STORE_CODE);
                                }}),
    NAME_OF_PARAMETER);

TEST_F(Membership, FailedWriteIsLoggedAndStillASuccess) {
    Add("n1", {"A", "B"});
    const std::string strBefore = ClusterText({{"n1", {"A", "B"}}});
    Put(strBefore);
    m_pStore->FailCall(2, NUMERIC_STORE_CODE);
    EXPECT_EQ(Framework().RemoveNodeContainerAndFlush("n1", "A"), 0);
    EXPECT_THAT(ContainersOfNode("n1"), ElementsAre("B"));
    EXPECT_EQ(Stored(), strBefore);
    std::vector<CLogLine> expected = CacheLines("n1", "A", 1);
    expected.push_back(Err("framework common, remove container and flush", NUMERIC_STORE_CODE,
                           FILE_STEM, "RemoveNodeContainerAndFlush",
                           "set cluster info into ZK fail."));
    EXPECT_THAT(m_logger.GetLines(), ElementsAreArray(expected));
}

TEST_F(Membership, RemovalThatTheStoreMissedShowsUntilTheNextLoad) {
    Add("n1", {"A", "B"});
    Put(ClusterText({{"n1", {"A", "B"}}}));
    m_pStore->FailCall(2, NUMERIC_STORE_CODE);
    EXPECT_EQ(Framework().RemoveNodeContainerAndFlush("n1", "A"), 0);
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_THAT(ContainersOfNode("n1"), ElementsAre("A", "B"));
    EXPECT_THAT(AllContainers(), SizeIs(2));
}

TEST_F(Membership, FullDocumentIsWrittenBack) {
    std::vector<CStoredNode> stored = {{"n1", {"A"}}};
    const std::string strPadding(1000, 'x');
    while (ClusterText(stored).size() + strPadding.size() + 200 < 65535) {
        stored.push_back({"p" + std::to_string(stored.size()), {strPadding}});
    }
    stored.push_back({"last", {""}});
    stored.back().containers[0].assign(65535 - ClusterText(stored).size(), 'y');
    ASSERT_EQ(ClusterText(stored).size(), 65535U);
    Put(ClusterText(stored));
    EXPECT_EQ(Framework().RemoveNodeContainerAndFlush("n1", "A"), 0);
    stored.erase(stored.begin());
    EXPECT_EQ(Stored(), ClusterText(stored));
}

// ---------------------------------------------------------------- member status

TEST_F(Membership, StatusReachesTheKnownNodesAsItIs) {
    Add("n1", {"A"});
    Add("n2", {"A"});
    for (const int iStatus : {CLUSTER_MEMBER_REMOVED + 0, 77, -1, CLUSTER_MEMBER_NORMAL + 0}) {
        EXPECT_EQ(Framework().SetNodeClusterStatus({"ghost", "n2"}, iStatus), 0);
        CNode node;
        ASSERT_TRUE(CNodeMgr::Instance().GetNode("n2", node));
        EXPECT_EQ(node.GetMemberStatus(), iStatus);
        ASSERT_TRUE(CNodeMgr::Instance().GetNode("n1", node));
        EXPECT_EQ(node.GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    }
    EXPECT_FALSE(CNodeMgr::Instance().IsNodeExist("ghost"));
    EXPECT_EQ(AllContainers()[CContainerAddr("n2", "A")].GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    EXPECT_EQ(Framework().SetNodeClusterStatus({}, CLUSTER_MEMBER_REMOVED), 0);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    EXPECT_EQ(m_pStore->GetCallCount(), 0U);
}

// ---------------------------------------------------------------- available containers

class AvailableContainers : public Membership {
protected:
    AvailableContainers() {
        for (const char* pszId : {"n1", "n2", "n3"}) {
            Add(pszId, {"A", "B"});
        }
    }

    /// The containers of type "A" that are available, by node.
    std::vector<std::string> Available() {
        m_logger.Clear();
        ContainerMap containerMap;
        Framework().GetAvailableContainer("A", containerMap);
        std::vector<std::string> ids;
        for (const auto& [addr, container] : containerMap) {
            EXPECT_EQ(addr.GetContainerType(), "A");
            EXPECT_EQ(addr.GetNodeId(), container.GetNodeId());
            ids.push_back(addr.GetNodeId());
        }
        return ids;
    }

    static CLogLine Kept(const std::string& strNodeId) {
        return Trace(FILE_STEM, "GetAvailableContainer",
                     "orva plugin, available orva container, node id[" + strNodeId + "].");
    }
};

TEST_F(AvailableContainers, AreThoseOfTheTypeEachWithATraceLine) {
    EXPECT_THAT(Available(), ElementsAre("n1", "n2", "n3"));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Kept("n1"), Kept("n2"), Kept("n3")));
    EXPECT_THAT(AllContainers(), SizeIs(6)) << "the table keeps all";
}

TEST_F(AvailableContainers, ReplaceWhatTheArgumentHeld) {
    ContainerMap containerMap = {{CContainerAddr("old", "A"), CContainer()}};
    Framework().GetAvailableContainer("A", containerMap);
    EXPECT_THAT(containerMap, SizeIs(3));
    Framework().GetAvailableContainer("nobody's", containerMap);
    EXPECT_THAT(containerMap, IsEmpty());
}

TEST_F(AvailableContainers, AreNoneWhenTheTablesCannotBeRead) {
    ContainerMap containerMap = {{CContainerAddr("old", "A"), CContainer()}};
    const CRefusedLocks refused;
    Framework().GetAvailableContainer("A", containerMap);
    EXPECT_THAT(containerMap, IsEmpty());
}

TEST_F(AvailableContainers, MayBeAskedForByATypeThatTheArgumentNames) {
    ContainerMap containerMap;
    Framework().GetAvailableContainer("A", containerMap);
    Framework().GetAvailableContainer(containerMap.begin()->first.GetContainerType(), containerMap);
    EXPECT_THAT(containerMap, SizeIs(3));
}

TEST_F(AvailableContainers, NeedANodeThatIsKnown) {
    CNodeMgr::Instance().RemoveNode("n2");
    EXPECT_THAT(Available(), ElementsAre("n1", "n3"));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Kept("n1"), Kept("n3")));
}

TEST_F(AvailableContainers, NeedANodeThatIsANormalMember) {
    for (const int iStatus : {CLUSTER_MEMBER_REMOVED + 0, 2, -1}) {
        Framework().SetNodeClusterStatus({"n1"}, iStatus);
        EXPECT_THAT(Available(), ElementsAre("n2", "n3")) << iStatus;
    }
    EXPECT_THAT(AllContainers(), SizeIs(6));
    Framework().SetNodeClusterStatus({"n1"}, CLUSTER_MEMBER_NORMAL);
    EXPECT_THAT(Available(), ElementsAre("n1", "n2", "n3"));
}

TEST_F(AvailableContainers, NeedToBeOnlineThemselves) {
    CContainerMgr::Instance().SetContainerOnline(CContainerAddr("n2", "A"), false);
    CContainerMgr::Instance().SetContainerOnline(CContainerAddr("n3", "B"), false);
    EXPECT_THAT(Available(), ElementsAre("n1", "n3"));
}

TEST_F(AvailableContainers, NeedEveryProcessToRun) {
    const CContainerAddr addr("n2", "A");
    CContainerMgr& mgr = CContainerMgr::Instance();
    mgr.SetProcessState(addr, {{"p1", PROCESS_STATE_RUNNING}, {"p2", PROCESS_STATE_RUNNING}});
    EXPECT_THAT(Available(), ElementsAre("n1", "n2", "n3"));
    for (const int iState : {PROCESS_STATE_STOPPED + 0, PROCESS_STATE_FREQUENCY_RESTART + 0, 9}) {
        mgr.SetProcessState(addr, {{"p1", PROCESS_STATE_RUNNING}, {"p2", iState}, {"p3", iState}});
        EXPECT_THAT(Available(), ElementsAre("n1", "n3"));
        EXPECT_THAT(m_logger.GetLines(),
                    ElementsAre(Kept("n1"),
                                Info("", "container", "IsProcessRunning",
                                     "containerType=A nodeId=n2 process=p2 stopped."),
                                Kept("n3")));
    }
}

TEST_F(AvailableContainers, StoppedProcessIsToldOfContainersThatPassAllElseAlone) {
    const std::map<std::string, int> stopped = {{"p", PROCESS_STATE_STOPPED}};
    CContainerMgr& mgr = CContainerMgr::Instance();
    for (const char* pszId : {"n1", "n2", "n3"}) {
        mgr.SetProcessState(CContainerAddr(pszId, "A"), stopped);
        mgr.SetProcessState(CContainerAddr(pszId, "B"), stopped);
    }
    CNodeMgr::Instance().RemoveNode("n1");
    Framework().SetNodeClusterStatus({"n2"}, CLUSTER_MEMBER_REMOVED);
    mgr.SetContainerOnline(CContainerAddr("n3", "A"), false);
    EXPECT_THAT(Available(), IsEmpty());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(AvailableContainers, AreNoMatterOfTheNodesOnlineFlagOrTheContainersMemberStatus) {
    CNodeMgr::Instance().SetNodeOnline("n1", false);
    CContainerMgr::Instance().SetContainerMemberStatus(CContainerAddr("n2", "A"),
                                                       CLUSTER_MEMBER_REMOVED);
    EXPECT_THAT(Available(), ElementsAre("n1", "n2", "n3"));
}

TEST_F(AvailableContainers, AreCopies) {
    ContainerMap containerMap;
    Framework().GetAvailableContainer("A", containerMap);
    CContainerMgr::Instance().SetContainerOnline(CContainerAddr("n1", "A"), false);
    CContainerMgr::Instance().RemoveContainer(CContainerAddr("n2", "A"));
    EXPECT_TRUE(containerMap[CContainerAddr("n1", "A")].IsOnline());
    EXPECT_THAT(containerMap, SizeIs(3));
}

// ---------------------------------------------------------------- any order of all

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
