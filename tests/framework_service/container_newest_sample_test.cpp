#include <string>
#include <vector>

#include "support/container_tasks_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace container_tasks;

namespace {

/// With a total disk of 100 the disk ratio tells the newest disk figure.
class ContainerNewestSample : public ContainerTasks {
protected:
    ContainerNewestSample() { m_container.SetTotalResource(MakeDisk(100)); }

    void ExpectNewestDisk(int32_t iDisk) {
        EXPECT_EQ(m_container.GetDiskRatio(), static_cast<float>(iDisk) / 100.0F);
        // The ratio also of the figure that the ring now holds.
        m_container.SetDiskRatio(-1);
        m_container.SetTotalResource(MakeDisk(100));
        EXPECT_EQ(m_container.GetDiskRatio(), static_cast<float>(iDisk) / 100.0F);
    }
};

TEST_F(ContainerNewestSample, IsLeftAloneInAnEmptyRing) {
    m_container.SetDiskRatio(0.5F);
    m_container.AddDiskToLastestResource(5);
    m_container.DelDiskToLastestResource(5);
    EXPECT_EQ(m_container.GetDiskRatio(), 0.5F);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerNewestSample, IsChangedAtEveryTurnOfTheRing) {
    for (int32_t iSamples = 1; iSamples <= 7; ++iSamples) {
        m_container.SetCurResource(MakeDisk(10 * iSamples));
        m_container.AddDiskToLastestResource(7);
        ExpectNewestDisk(10 * iSamples + 7);
        m_container.DelDiskToLastestResource(3);
        ExpectNewestDisk(10 * iSamples + 4);
    }
}

TEST_F(ContainerNewestSample, EntersTheAverageWithTheNextSample) {
    m_container.SetCurResource(MakeResource(1, 2, 3, 4, 10));
    m_container.AddDiskToLastestResource(20);
    EXPECT_EQ(m_container.GetCurResourceByType(RESOURCE_TYPE_DISK), 10);
    m_container.SetCurResource(MakeResource(1, 2, 3, 4, 50));
    EXPECT_EQ(m_container.GetCurResourceByType(RESOURCE_TYPE_DISK), 40);
    m_container.DelDiskToLastestResource(20);
    EXPECT_EQ(m_container.GetCurResourceByType(RESOURCE_TYPE_DISK), 40);
    m_container.SetCurResource(MakeResource(1, 2, 3, 4, 0));
    EXPECT_EQ(Show(m_container.GetStatus().GetCurSysResource()),
              Show(MakeResource(1, 2, 3, 4, 20)));
}

struct CDiskChange {
    int32_t iDisk;
    int32_t iChange;
    int32_t iExpected;
};

TEST_F(ContainerNewestSample, GrowsWithoutBounds) {
    constexpr CDiskChange ADDITIONS[] = {{10, 200, 210},
                                         {10, 0, 10},
                                         {10, -30, -20},
                                         {INT32_TOP, 1, INT32_BOTTOM},
                                         {INT32_BOTTOM, -1, INT32_TOP}};
    for (const auto& [iDisk, iChange, iExpected] : ADDITIONS) {
        m_container.SetCurResource(MakeDisk(iDisk));
        m_container.AddDiskToLastestResource(iChange);
        ExpectNewestDisk(iExpected);
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerNewestSample, ShrinksInSilenceByWhatItHas) {
    constexpr CDiskChange DELETIONS[] = {{10, 3, 7},  {10, 10, 0},   {10, -5, 15},
                                         {-5, -5, 0}, {-5, -20, 15}, {INT32_TOP, -1, INT32_BOTTOM}};
    for (const auto& [iDisk, iChange, iExpected] : DELETIONS) {
        m_container.SetCurResource(MakeDisk(iDisk));
        m_container.DelDiskToLastestResource(iChange);
        ExpectNewestDisk(iExpected);
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerNewestSample, StopsAtZeroAndSaysSo) {
    for (const auto& [iDisk, iChange] :
         std::vector<std::pair<int32_t, int32_t>>{{10, 11}, {-5, 0}, {INT32_BOTTOM, INT32_TOP}}) {
        m_logger.Clear();
        m_container.SetCurResource(MakeDisk(iDisk));
        m_container.DelDiskToLastestResource(iChange);
        ExpectNewestDisk(0);
        EXPECT_THAT(m_logger.GetLines(),
                    ElementsAre(Failed("container del disk", "DelDiskToLastestResource",
                                       "disk param[" + std::to_string(iChange) +
                                           "] larger than container disk[" + std::to_string(iDisk) +
                                           "].")));
    }
}

TEST_F(ContainerNewestSample, WithoutATotalTheRatioIsFarAboveAnyRealOne) {
    m_container.SetTotalResource(MakeDisk(0));
    m_container.SetCurResource(MakeDisk(10));
    for (void (CContainer::*pChange)(int32_t) :
         {&CContainer::AddDiskToLastestResource, &CContainer::DelDiskToLastestResource}) {
        m_container.SetDiskRatio(0);
        (m_container.*pChange)(1);
        EXPECT_EQ(m_container.GetDiskRatio(), 2147483648.0F);
    }
}

}  // namespace
