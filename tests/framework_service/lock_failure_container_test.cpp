#include "support/container_registry_fixture.h"
#include "support/refused_locks.h"

using testing::IsEmpty;
using namespace container_registry;

namespace {

TEST_P(ContainerRegistryUnreached, DoesNothingAndIsSilentWithoutTheLock) {
    {
        const CRefusedLocks refused;
        GetParam().apply(m_registry, CAM);
        GetParam().apply(m_registry, UNKNOWN);
    }
    EXPECT_EQ(Show(Table()), Show(MakeTable({CAM, IMG_DEV})));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerRegistry, TableOperationsFailInSilenceWithoutTheLock) {
    ContainerMap containerMap = MakeTable({UNKNOWN});
    {
        const CRefusedLocks refused;
        EXPECT_EQ(m_registry.Init({}), 1);
        EXPECT_EQ(m_registry.AddContainer(containerMap), 1);
        EXPECT_EQ(m_registry.RemoveContainer(CAM), 1);
        m_registry.GetAllContainer(containerMap);
    }
    EXPECT_EQ(Show(containerMap), Show(MakeTable({UNKNOWN})));
    EXPECT_EQ(Show(Table()), Show(MakeTable({CAM, IMG_DEV})));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

}  // namespace
