#include "framework_service/base_data.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "framework_service/container_status.h"
#include "framework_service/node_status.h"
#include "support/host_fixture.h"
#include "support/model_values.h"

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int32_t NUMERIC_MAX = std::numeric_limits<int32_t>::max();
constexpr int32_t NUMERIC_MIN = std::numeric_limits<int32_t>::min();

std::vector<int32_t> Values(const CSystemResource& resource) {
    return {resource.GetCpu(), resource.GetMem(), resource.GetIO(), resource.GetNet(),
            resource.GetDisk()};
}

class ResourceFigures : public CHostTest {};

TEST_F(ResourceFigures, StartAtZero) {
    EXPECT_THAT(Values(CSystemResource()), Each(0));
}

TEST_F(ResourceFigures, AreCopiedWhole) {
    const CSystemResource source = MakeResource(1, 2, 3, 4, 5);
    const CSystemResource copy(source);
    CSystemResource assigned = MakeResource(9, 9, 9, 9, 9);
    assigned = source;
    EXPECT_THAT(Values(copy), ElementsAre(1, 2, 3, 4, 5));
    EXPECT_THAT(Values(assigned), ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(ResourceFigures, AreReadByKind) {
    const CSystemResource resource = MakeResource(11, 12, 13, 14, 15);
    EXPECT_EQ(resource.GetResourceByType(RESOURCE_TYPE_CPU), 11);
    EXPECT_EQ(resource.GetResourceByType(RESOURCE_TYPE_MEM), 12);
    EXPECT_EQ(resource.GetResourceByType(RESOURCE_TYPE_IO), 13);
    EXPECT_EQ(resource.GetResourceByType(RESOURCE_TYPE_NET), 14);
    EXPECT_EQ(resource.GetResourceByType(RESOURCE_TYPE_DISK), 15);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ResourceFigures, KindsAndStatesHaveTheirNumbers) {
    EXPECT_THAT((std::vector<int>{RESOURCE_TYPE_CPU, RESOURCE_TYPE_MEM, RESOURCE_TYPE_IO,
                                  RESOURCE_TYPE_NET, RESOURCE_TYPE_DISK}),
                ElementsAre(0, 1, 2, 3, 4));
    EXPECT_EQ(CLUSTER_MEMBER_NORMAL, 0);
    EXPECT_EQ(CLUSTER_MEMBER_REMOVED, 1);
    EXPECT_EQ(PROCESS_STATE_RUNNING, 0);
    EXPECT_EQ(PROCESS_STATE_STOPPED, 1);
    EXPECT_EQ(PROCESS_STATE_FREQUENCY_RESTART, 2);
}

class UnknownResourceKind : public ResourceFigures, public testing::WithParamInterface<int> {};

TEST_P(UnknownResourceKind, IsLoggedAndAnswersOne) {
    const auto eType = static_cast<RESOURCE_TYPE>(GetParam());
    EXPECT_EQ(MakeResource(7, 7, 7, 7, 7).GetResourceByType(eType), 1);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Err("get resource by type", 1, "base_data", "GetResourceByType",
                                "type[" + std::to_string(GetParam()) + "] not found.")));
}

TEST_P(UnknownResourceKind, AnswersOneWithoutALogger) {
    OMAdapter::getInstance().setLogger(nullptr);
    const auto eType = static_cast<RESOURCE_TYPE>(GetParam());
    EXPECT_EQ(MakeResource(7, 7, 7, 7, 7).GetResourceByType(eType), 1);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(OutsideTheEnumeration, UnknownResourceKind,
                         testing::Values(5, -1, NUMERIC_MAX, NUMERIC_MIN));

struct CAverageCase {
    std::vector<int32_t> samples;
    int32_t iAverage;
};

std::ostream& operator<<(std::ostream& stream, const CAverageCase& averageCase) {
    return stream << testing::PrintToString(averageCase.samples) << " gives "
                  << averageCase.iAverage;
}

class ResourceAverage : public testing::TestWithParam<CAverageCase> {};

TEST_P(ResourceAverage, TruncatesAndWrapsEachFigure) {
    using Setter = void (CSystemResource::*)(int32_t);
    static constexpr Setter setters[] = {&CSystemResource::SetCpu, &CSystemResource::SetMem,
                                         &CSystemResource::SetIO, &CSystemResource::SetNet,
                                         &CSystemResource::SetDisk};
    for (const Setter pSet : setters) {
        std::vector<CSystemResource> samples(GetParam().samples.size());
        for (std::size_t i = 0; i < samples.size(); ++i) {
            (samples[i].*pSet)(GetParam().samples[i]);
        }
        CSystemResource average = MakeResource(9, 9, 9, 9, 9);
        CSystemResource expected;
        (expected.*pSet)(GetParam().iAverage);
        CSystemResource().GetAvgSystemResource(samples, average);
        EXPECT_EQ(Values(average), Values(expected));
    }
}

INSTANTIATE_TEST_SUITE_P(Samples, ResourceAverage,
                         testing::Values(CAverageCase{{42}, 42}, CAverageCase{{-42}, -42},
                                         CAverageCase{{1, 1, 2}, 1}, CAverageCase{{5, 5, 6}, 5},
                                         CAverageCase{{-7, 0, 0}, -2}, CAverageCase{{-1, 0}, 0},
                                         CAverageCase{{1, 0}, 0},
                                         CAverageCase{{NUMERIC_MAX}, NUMERIC_MAX},
                                         CAverageCase{{NUMERIC_MIN}, NUMERIC_MIN},
                                         CAverageCase{{NUMERIC_MAX, 1}, NUMERIC_MIN / 2},
                                         CAverageCase{{NUMERIC_MIN, -1}, NUMERIC_MAX / 2},
                                         CAverageCase{{NUMERIC_MAX, NUMERIC_MAX, 2}, 0}));

TEST_F(ResourceFigures, AverageOfNothingChangesNothing) {
    std::vector<CSystemResource> samples;
    CSystemResource average = MakeResource(1, 2, 3, 4, 5);
    CSystemResource().GetAvgSystemResource(samples, average);
    EXPECT_THAT(Values(average), ElementsAre(1, 2, 3, 4, 5));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ResourceFigures, AverageTakesNothingFromItsObjectAndLeavesTheSamples) {
    std::vector<CSystemResource> samples = {MakeResource(2, 4, 6, 8, 10),
                                            MakeResource(4, 6, 8, 10, 12)};
    CSystemResource object = MakeResource(100, 100, 100, 100, 100);
    CSystemResource average;
    object.GetAvgSystemResource(samples, average);
    EXPECT_THAT(Values(average), ElementsAre(3, 5, 7, 9, 11));
    EXPECT_THAT(Values(object), Each(100));
    EXPECT_THAT(Values(samples[0]), ElementsAre(2, 4, 6, 8, 10));
    EXPECT_THAT(Values(samples[1]), ElementsAre(4, 6, 8, 10, 12));
}

TEST_F(ResourceFigures, AverageMayBeWrittenIntoASample) {
    std::vector<CSystemResource> samples = {MakeResource(2, 4, 6, 8, 10),
                                            MakeResource(4, 6, 8, 10, 12)};
    CSystemResource().GetAvgSystemResource(samples, samples[0]);
    EXPECT_THAT(Values(samples[0]), ElementsAre(3, 5, 7, 9, 11));
}

struct CAddressCase {
    CContainerAddr left;
    CContainerAddr right;
    bool bLess;
    bool bGreater;
    bool bEqual;
};

std::ostream& operator<<(std::ostream& stream, const CAddressCase& addressCase) {
    return stream << addressCase.left.GetNodeId() << '|' << addressCase.left.GetContainerType()
                  << " and " << addressCase.right.GetNodeId() << '|'
                  << addressCase.right.GetContainerType();
}

class ContainerAddressPair : public testing::TestWithParam<CAddressCase> {};

TEST_P(ContainerAddressPair, ComparesAsExpected) {
    const auto& [left, right, bLess, bGreater, bEqual] = GetParam();
    EXPECT_EQ(left < right, bLess);
    EXPECT_EQ(right < left, bGreater);
    EXPECT_EQ(left == right, bEqual);
    EXPECT_EQ(right == left, bEqual);
}

INSTANTIATE_TEST_SUITE_P(
    Addresses, ContainerAddressPair,
    testing::Values(CAddressCase{{"N1", "Cam"}, {"N1", "Cam"}, false, false, true},
                    CAddressCase{{"", ""}, {"", ""}, false, false, true},
                    CAddressCase{{"", ""}, {"", "a"}, true, false, false},
                    CAddressCase{{"N1", "Cam"}, {"N1", "Cbm"}, true, false, false},
                    CAddressCase{{"N1", "Cam"}, {"N2", "Cam"}, true, false, false},
                    CAddressCase{{"N1", "0Cam"}, {"N10", "Cam"}, false, false, false},
                    CAddressCase{{"", "N1"}, {"N1", ""}, false, false, false},
                    CAddressCase{{"A", "Z"}, {"AA", "B"}, false, true, false},
                    CAddressCase{{"a", ""}, {"B", ""}, false, true, false},
                    CAddressCase{{"\x7f", ""}, {"\x80", ""}, true, false, false}));

TEST(ContainerAddress, IsEmptyByDefaultAndCopiedWhole) {
    EXPECT_EQ(CContainerAddr().GetNodeId(), "");
    EXPECT_EQ(CContainerAddr().GetContainerType(), "");
    CContainerAddr source;
    source.SetNodeId("N1");
    source.SetContainerType("Cam");
    const CContainerAddr copy(source);
    CContainerAddr assigned("N2", "Dev");
    assigned = source;
    for (const CContainerAddr& addr : {copy, assigned}) {
        EXPECT_EQ(addr.GetNodeId(), "N1");
        EXPECT_EQ(addr.GetContainerType(), "Cam");
    }
}

TEST(ContainerAddress, OneMapHoldsOneOfTwoThatReadTheSame) {
    std::map<CContainerAddr, int> table;
    table[{"N1", "0Cam"}] = 1;
    table[{"N10", "Cam"}] = 2;
    ASSERT_EQ(table.size(), 1U);
    EXPECT_EQ(table.begin()->first, CContainerAddr("N1", "0Cam"));
    EXPECT_EQ(table.begin()->second, 2);
}

/// A short text over few characters, so that concatenations often meet.
std::string RandomText(std::mt19937& random) {
    static constexpr char ALPHABET[] = {'a', 'b', '\x7f', '\x80', '\xff'};
    std::string strText(random() % 5, ' ');
    for (char& c : strText) {
        c = ALPHABET[random() % sizeof(ALPHABET)];
    }
    return strText;
}

TEST(ContainerAddress, OrdersAsTheConcatenationDoes) {
    const unsigned int uiSeed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(uiSeed));
    std::mt19937 random(uiSeed);
    for (int i = 0; i < 200000; ++i) {
        const CContainerAddr left(RandomText(random), RandomText(random));
        const CContainerAddr right(RandomText(random), RandomText(random));
        ASSERT_EQ(left < right, left.GetNodeId() + left.GetContainerType() <
                                    right.GetNodeId() + right.GetContainerType())
            << left.GetNodeId() << "|" << left.GetContainerType() << " and " << right.GetNodeId()
            << "|" << right.GetContainerType();
    }
}

TEST(TaskShift, KeepsTheTaskAndBothContainers) {
    CTaskShiftInfo shift;
    EXPECT_EQ(shift.GetTaskId(), "");
    EXPECT_EQ(shift.GetOutContainer(), CContainerAddr());
    EXPECT_EQ(shift.GetInContainer(), CContainerAddr());
    shift.SetTaskId("T1");
    shift.SetOutContainer({"N1", "Cam"});
    shift.SetInContainer({"N2", "Dev"});
    const CTaskShiftInfo copy(shift);
    EXPECT_EQ(copy.GetTaskId(), "T1");
    EXPECT_EQ(copy.GetOutContainer(), CContainerAddr("N1", "Cam"));
    EXPECT_EQ(copy.GetInContainer(), CContainerAddr("N2", "Dev"));
}

template <typename Status>
class StatusRecord : public testing::Test {};

using StatusRecords = testing::Types<CNodeStatus, CContainerStatus>;
TYPED_TEST_SUITE(StatusRecord, StatusRecords);

TYPED_TEST(StatusRecord, StartsEmptyIsValidAndKeepsItsFields) {
    TypeParam status;
    EXPECT_EQ(status.GetNodeId(), "");
    EXPECT_THAT(Values(status.GetCurSysResource()), Each(0));
    EXPECT_TRUE(status.IsParamValid());
    status.SetNodeId("N1");
    status.SetCurSysResource(MakeResource(1, 2, 3, 4, 5));
    status.Print();
    const TypeParam copy(status);
    status.SetNodeId("N2");
    status.SetCurSysResource(MakeResource(6, 7, 8, 9, 10));
    EXPECT_EQ(status.GetNodeId(), "N2");
    EXPECT_EQ(copy.GetNodeId(), "N1");
    EXPECT_THAT(Values(copy.GetCurSysResource()), ElementsAre(1, 2, 3, 4, 5));
}

TEST(ContainerStatus, KeepsItsType) {
    CContainerStatus status;
    EXPECT_EQ(status.GetContainerType(), "");
    status.SetContainerType("Cam");
    const CContainerStatus copy(status);
    status.SetContainerType("Dev");
    EXPECT_EQ(status.GetContainerType(), "Dev");
    EXPECT_EQ(copy.GetContainerType(), "Cam");
}

}  // namespace
