#include <functional>
#include <string>
#include <vector>

#include "support/membership_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;
using namespace membership;

namespace {

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

}  // namespace
