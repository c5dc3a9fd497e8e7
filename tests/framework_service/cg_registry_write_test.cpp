#include "support/cg_registry_fixture.h"

using testing::ElementsAre;
using namespace cg_registry;

namespace {

TEST_P(CGWrite, FailsWithTheStoresCodeOrSucceeds) {
    SetNodes(6);
    Fill({E1, E2});
    m_pStore->FailCall(1, NUMERIC_STORE_CODE);
    EXPECT_EQ(GetParam().call(), NUMERIC_STORE_CODE);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(WriteFailed(GetParam().strOperation, GetParam().strFunction)));
    EXPECT_EQ(Cached(), GetParam().cachedAfterFailure);
    EXPECT_EQ(Stored(), TextOf({E1, E2}));
    m_pStore->FailCall(2, NUMERIC_STORE_CODE);
    EXPECT_EQ(GetParam().call(), 0) << "there is one call";
    EXPECT_EQ(Stored(), TextOf(GetParam().storedAfter));
}

INSTANTIATE_TEST_SUITE_P(
    Operations, CGWrite,
    testing::Values(CWrite{"AddSingle",
                           [] { return Registry().AddSingleClusterCGInfo(ToInfo(E3)); },
                           "add cluster cg info",
                           SINGLE,
                           {E1, E2},
                           {E1, E2, E3}},
                    CWrite{"AddBatch",
                           [] { return Registry().AddClusterCGInfo(ToList({E3})); },
                           "add cluster cg info",
                           BATCH,
                           {E1, E2, E3},
                           {E1, E2, E3}},
                    CWrite{"Update",
                           [] { return Registry().UpdateClusterCGInfoByFloatCode(ToInfo(E1)); },
                           "update cluster cg info",
                           "UpdateClusterCGInfoByFloatCode",
                           {E1, E2},
                           {E2, E1}},
                    CWrite{"Remove",
                           [] { return Registry().RemoveClusterCGInfo("f1"); },
                           "remove cluster cg info",
                           "RemoveClusterCGInfo",
                           {E1, E2},
                           {E2}},
                    CWrite{"SetList",
                           [] {
                               CClusterCGInfoList list = ToList({E3});
                               return Registry().SetClusterCGInfoList(list);
                           },
                           "set cluster cg list",
                           "SetClusterCGInfoList",
                           {E1, E2},
                           {E3}}),
    NAME_OF_PARAMETER);

}  // namespace
