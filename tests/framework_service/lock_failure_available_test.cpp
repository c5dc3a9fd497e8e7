#include "support/membership_fixture.h"
#include "support/refused_locks.h"

using testing::IsEmpty;
using namespace membership;

namespace {

TEST_F(AvailableContainers, AreNoneWhenTheTablesCannotBeRead) {
    ContainerMap containerMap = {{CContainerAddr("old", "A"), CContainer()}};
    const CRefusedLocks refused;
    Framework().GetAvailableContainer("A", containerMap);
    EXPECT_THAT(containerMap, IsEmpty());
}

}  // namespace
