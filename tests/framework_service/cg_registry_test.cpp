#include <string>

#include "support/cg_registry_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace cg_registry;

namespace {

TEST_F(CGRegistry, IsEmptyUntilItIsLoaded) {
    Put(TextOf({E1}));
    CClusterCGInfoList list = ToList({E2});
    Registry().GetClusterCGInfoList(list);
    EXPECT_TRUE(list.Empty()) << "the argument is replaced";
    EXPECT_EQ(Calls(), 0U);
}

TEST_F(CGRegistry, HandsOutACopy) {
    Fill({E1});
    CClusterCGInfoList list;
    Registry().GetClusterCGInfoList(list);
    list.AddClusterCGInfo(ToInfo(E2));
    EXPECT_EQ(Cached(), Entries{E1});
}

TEST_F(CGRegistry, UpdateMovesTheEntryToTheEnd) {
    Fill({E1, E2, E3});
    const CEntry changed{"n9", "f1", "10.1.0.2", "5"};
    EXPECT_EQ(Registry().UpdateClusterCGInfoByFloatCode(ToInfo(changed)), 0);
    EXPECT_EQ(Cached(), (Entries{E2, E3, changed})) << "no check runs";
    EXPECT_EQ(Stored(), TextOf({E2, E3, changed}));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    EXPECT_EQ(Calls(), 1U);
}

TEST_F(CGRegistry, UpdateOfAnUnknownCodeAddsTheEntryWithoutALimit) {
    EXPECT_EQ(Registry().UpdateClusterCGInfoByFloatCode(ToInfo(E1)), 0);
    EXPECT_EQ(Registry().UpdateClusterCGInfoByFloatCode(ToInfo(E2)), 0);
    EXPECT_EQ(Cached(), (Entries{E1, E2}));
    EXPECT_EQ(Stored(), TextOf({E1, E2}));
}

TEST_F(CGRegistry, FirstOfTwoEntriesWithOneCodeIsUpdatedOrRemoved) {
    const CEntry twin{"n8", "f1", "10.1.0.8"};
    const CEntry changed{"n9", "f1", "10.1.0.9"};
    Fill({E1, twin, E2});
    EXPECT_EQ(Registry().UpdateClusterCGInfoByFloatCode(ToInfo(changed)), 0);
    EXPECT_EQ(Cached(), (Entries{twin, E2, changed}));
    EXPECT_EQ(Registry().RemoveClusterCGInfo("f1"), 0);
    EXPECT_EQ(Cached(), (Entries{E2, changed}));
    EXPECT_EQ(Stored(), TextOf({E2, changed}));
}

CLogLine Removal(const std::string& strMessage) {
    return Info("remove cluster cg", FILE_STEM, "RemoveClusterCGInfo", strMessage);
}

TEST_F(CGRegistry, RemovalLeavesTheOthers) {
    Fill({E1, E2, E3});
    EXPECT_EQ(Registry().RemoveClusterCGInfo("f2"), 0);
    EXPECT_EQ(Cached(), (Entries{E1, E3}));
    EXPECT_EQ(Stored(), TextOf({E1, E3}));
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Removal("update cluster cg into zk and cache, cluster cg code[f2].")));
    EXPECT_EQ(Calls(), 1U);
}

TEST_F(CGRegistry, RemovalOfTheLastEntryStoresAnEmptyText) {
    Fill({E1});
    EXPECT_EQ(Registry().RemoveClusterCGInfo("f1"), 0);
    EXPECT_EQ(Cached(), Entries{});
    EXPECT_EQ(Stored(), "");
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Trace("cluster_cg_info", "ToJson", "cluster cg info, no cg info."),
                            Removal("update cluster cg into zk and cache, cluster cg code[f1].")));
}

TEST_F(CGRegistry, RemovalOfAnUnknownCodeIsASuccessThatWritesNothing) {
    Fill({E1});
    EXPECT_EQ(Registry().RemoveClusterCGInfo("n1"), 0) << "a node's code is no float code";
    EXPECT_EQ(Cached(), Entries{E1});
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Removal("cluster cg code[n1] not exist.")));
    EXPECT_EQ(Calls(), 0U);
}

TEST_F(CGRegistry, SetListGoesToTheStoreAloneUntilAReload) {
    Fill({E1});
    CClusterCGInfoList list = ToList({E2, E3});
    EXPECT_EQ(Registry().SetClusterCGInfoList(list), 0);
    EXPECT_EQ(Stored(), TextOf({E2, E3}));
    EXPECT_EQ(Cached(), Entries{E1});
    EXPECT_EQ(Calls(), 1U);
    EXPECT_EQ(Registry().ReloadClusterCGInfoList(), 0);
    EXPECT_EQ(Cached(), (Entries{E2, E3}));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CGRegistry, EmptyListIsNeverStored) {
    Fill({E1});
    CClusterCGInfoList list;
    EXPECT_EQ(Registry().SetClusterCGInfoList(list), 0);
    EXPECT_EQ(Stored(), TextOf({E1}));
    EXPECT_EQ(Calls(), 0U);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

}  // namespace
