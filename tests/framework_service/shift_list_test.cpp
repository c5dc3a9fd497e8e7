#include <list>

#include "support/schedule_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace schedule;

namespace {

TEST_F(ShiftList, KeepsEachContainerOnceInTheOrderOfAdding) {
    for (const CContainerAddr& addr : {B, A, C, B, A}) {
        Manager().AddShiftContainer(addr);
    }
    EXPECT_THAT(All(), ElementsAre(B, A, C));
    Manager().RemoveShiftContainer(A);
    Manager().AddShiftContainer(A);
    EXPECT_THAT(All(), ElementsAre(B, C, A));
}

TEST_F(ShiftList, TellsAddressesApartByBothParts) {
    const CContainerAddr one("n1", "1A");
    const CContainerAddr other("n11", "A");
    ASSERT_FALSE(one < other || other < one) << "to a table they are the same";
    Manager().AddShiftContainer(one);
    Manager().AddShiftContainer(other);
    EXPECT_THAT(All(), ElementsAre(one, other));
    Manager().RemoveShiftContainer(other);
    EXPECT_THAT(All(), ElementsAre(one));
}

TEST_F(ShiftList, IsAppendedToWhatTheCallerHolds) {
    Manager().AddShiftContainer(A);
    std::list<CContainerAddr> addresses = {C};
    Manager().GetAllShiftContainer(addresses);
    EXPECT_THAT(addresses, ElementsAre(C, A));
    addresses.front().SetNodeId("changed");
    addresses.back().SetNodeId("changed");
    EXPECT_THAT(All(), ElementsAre(A));
}

TEST_F(ShiftList, MeansSchedulingUntilItIsEmpty) {
    EXPECT_FALSE(Manager().IsScheduling());
    Manager().AddShiftContainer(A);
    Manager().AddShiftContainer(A);
    Manager().AddShiftContainer(B);
    EXPECT_TRUE(Manager().IsScheduling());
    Manager().RemoveShiftContainer(C);
    Manager().RemoveShiftContainer(A);
    EXPECT_TRUE(Manager().IsScheduling());
    Manager().RemoveShiftContainer(B);
    EXPECT_FALSE(Manager().IsScheduling());
    Manager().RemoveShiftContainer(B);
    EXPECT_FALSE(Manager().IsScheduling());
}

TEST_F(ShiftList, IsNeitherStoredNorLogged) {
    Manager().AddShiftContainer(A);
    EXPECT_TRUE(Manager().IsScheduling());
    Manager().RemoveShiftContainer(A);
    EXPECT_EQ(m_pStore->GetCallCount(), 0U);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

}  // namespace
