#include <utility>
#include <vector>

#include "support/high_speed_fixture.h"
#include "support/refused_locks.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace high_speed;

namespace {

TEST_F(HighSpeed, UpdateFlagReachesEveryContainerOfTheServiceType) {
    ContainerMap containerMap;
    for (const auto& [pszNode, pszService] :
         {std::pair("n1", "MPU-R"), {"n2", "other"}, {"n3", "MPU-R"}}) {
        CContainer container;
        container.SetServiceType(pszService);
        containerMap[CContainerAddr(pszNode, "A")] = container;
    }
    Manager().Init(containerMap);
    const auto flags = [] {
        std::vector<bool> all;
        for (const auto& [addr, container] : AllContainers()) {
            all.push_back(container.GetUptadeFlag());
        }
        return all;
    };
    Manager().SetUptadeFlag("nobody's", true);
    EXPECT_THAT(flags(), ElementsAre(false, false, false));
    Manager().SetUptadeFlag("MPU-R", true);
    EXPECT_THAT(flags(), ElementsAre(true, false, true));
    {
        const CRefusedLocks refused;
        Manager().SetUptadeFlag("MPU-R", false);
    }
    EXPECT_THAT(flags(), ElementsAre(true, false, true));
    Manager().SetUptadeFlag("MPU-R", false);
    EXPECT_THAT(flags(), ElementsAre(false, false, false));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

}  // namespace
