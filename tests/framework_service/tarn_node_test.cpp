#include "framework_service/tarn_node.h"

#include <string>

#include "support/fake_clock.h"
#include "support/host_fixture.h"
#include "support/model_values.h"
#include "support/registry_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::time_t NUMERIC_NOW = 1000000;

class Node : public CHostTest {
protected:
    Node() {
        SetClock(NUMERIC_NOW);
        m_node = CNode();
    }

    int32_t CpuAfterSample(int32_t iCpu) {
        m_node.SetCurResource(MakeCpu(iCpu));
        return m_node.GetCurResource().GetCpu();
    }

    CNode m_node;
};

TEST_F(Node, StartsOnlineNormalAndEmpty) {
    const CNode node;
    EXPECT_EQ(node.GetNodeId(), "");
    EXPECT_EQ(node.GetNodeIp(), "");
    EXPECT_EQ(node.GetNodeIpInt(), 0U);
    EXPECT_EQ(node.GetNodeIpType(), 0);
    EXPECT_EQ(node.GetNodeRole(), 0);
    EXPECT_EQ(node.GetDomainRole(), 0);
    EXPECT_EQ(node.GetNodeServiceType(), 0);
    EXPECT_EQ(node.GetTotalResource().GetCpu(), 0);
    EXPECT_EQ(node.GetCurResource().GetCpu(), 0);
    EXPECT_THAT(ContainersOf(node), IsEmpty());
    EXPECT_TRUE(node.IsOnline());
    EXPECT_EQ(node.GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
}

struct CAddressCase {
    std::string strIp;
    uint32_t uiIp;
};

TEST_F(Node, AddressTextAndNumberChangeTogether) {
    for (const auto& [strIp, uiIp] :
         {CAddressCase{"10.1.2.3", 0x0A010203}, CAddressCase{"255.255.255.255", 0xFFFFFFFF},
          CAddressCase{"no address", 0}, CAddressCase{"192.168.0.1", 0xC0A80001},
          CAddressCase{"", 0}}) {
        m_node.SetNodeIp(strIp);
        EXPECT_EQ(m_node.GetNodeIp(), strIp);
        EXPECT_EQ(m_node.GetNodeIpInt(), uiIp) << strIp;
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(Node, AveragesUpToThreeSamples) {
    EXPECT_EQ(CpuAfterSample(10), 10);
    EXPECT_EQ(CpuAfterSample(20), 15);
    EXPECT_EQ(CpuAfterSample(30), 20);
}

TEST_F(Node, LaterSamplesReplaceOnlyTheFirst) {
    CpuAfterSample(10);
    CpuAfterSample(20);
    CpuAfterSample(30);
    EXPECT_EQ(CpuAfterSample(60), 36);
    EXPECT_EQ(CpuAfterSample(0), 16);
    EXPECT_EQ(CpuAfterSample(-51), 0);
}

TEST_F(Node, SamplesCarryAllFiveFigures) {
    CSystemResource sample;
    sample.SetCpu(1);
    sample.SetMem(2);
    sample.SetIO(3);
    sample.SetNet(4);
    sample.SetDisk(5);
    for (int i = 0; i < 4; ++i) {
        m_node.SetCurResource(sample);
        const CSystemResource& current = m_node.GetCurResource();
        EXPECT_EQ(current.GetCpu(), 1);
        EXPECT_EQ(current.GetMem(), 2);
        EXPECT_EQ(current.GetIO(), 3);
        EXPECT_EQ(current.GetNet(), 4);
        EXPECT_EQ(current.GetDisk(), 5);
    }
}

TEST_F(Node, ItsOwnAverageMayBeTheNextSample) {
    CpuAfterSample(10);
    CpuAfterSample(20);
    m_node.SetCurResource(m_node.GetCurResource());
    EXPECT_EQ(m_node.GetCurResource().GetCpu(), 15);
}

struct CAgeCase {
    std::time_t tmAge;
    bool bOutOfTime;
};

TEST_F(Node, ReportIsOutOfTimeAfterNinetySeconds) {
    for (const auto& [tmAge, bOutOfTime] :
         {CAgeCase{0, false}, CAgeCase{1, false}, CAgeCase{89, false}, CAgeCase{90, false},
          CAgeCase{91, true}, CAgeCase{100000, true}}) {
        SetClock(NUMERIC_NOW);
        m_node.SetStatusReportTime();
        AdvanceClock(tmAge);
        EXPECT_EQ(m_node.IsReportStatusOutTime(), bOutOfTime) << tmAge;
        EXPECT_EQ(m_node.IsReportStatusOutTime(), bOutOfTime) << tmAge << " once more";
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(Node, ReportTimeStartsAtConstruction) {
    AdvanceClock(90);
    EXPECT_FALSE(m_node.IsReportStatusOutTime());
    AdvanceClock(1);
    EXPECT_TRUE(m_node.IsReportStatusOutTime());
    EXPECT_FALSE(CNode().IsReportStatusOutTime());
}

TEST_F(Node, ClockGoneBackIsOutOfTimeOnceAndCountsFromThen) {
    AdvanceClock(-1);
    EXPECT_TRUE(m_node.IsReportStatusOutTime());
    AdvanceClock(1);
    EXPECT_FALSE(m_node.IsReportStatusOutTime());
    AdvanceClock(89);
    EXPECT_FALSE(m_node.IsReportStatusOutTime());
    AdvanceClock(1);
    EXPECT_TRUE(m_node.IsReportStatusOutTime());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(Node, SamplesDoNotTouchTheReportTime) {
    AdvanceClock(91);
    m_node.SetCurResource(MakeCpu(1));
    EXPECT_TRUE(m_node.IsReportStatusOutTime());
}

TEST_F(Node, ContainerListIsAppendedOnReadingAndReplacedOnWriting) {
    m_node.SetContainerList({"old"});
    m_node.SetContainerList({"Cam", "Dev", "Cam"});
    std::list<std::string> containerList = {"first", "second"};
    m_node.GetContainerList(containerList);
    EXPECT_THAT(containerList, ElementsAre("first", "second", "Cam", "Dev", "Cam"));
    m_node.SetContainerList({});
    EXPECT_THAT(ContainersOf(m_node), IsEmpty());
}

/// A node none of whose fields is at its default.
CNode FullNode() {
    CNode node;
    node.SetNodeId("N1");
    node.SetNodeIp("10.0.0.1");
    node.SetNodeIpType(1);
    node.SetNodeRole(2);
    node.SetDomainRole(3);
    node.SetNodeServiceType(4);
    node.SetTotalResource(MakeCpu(100));
    node.SetCurResource(MakeCpu(10));
    node.SetCurResource(MakeCpu(20));
    node.SetCurResource(MakeCpu(30));
    node.SetContainerList({"Cam", "Dev"});
    node.SetOnline(false);
    node.SetMemberStatus(CLUSTER_MEMBER_REMOVED);
    return node;
}

void ExpectFullNode(CNode node) {
    EXPECT_EQ(node.GetNodeId(), "N1");
    EXPECT_EQ(node.GetNodeIp(), "10.0.0.1");
    EXPECT_EQ(node.GetNodeIpInt(), 0x0A000001U);
    EXPECT_EQ(node.GetNodeIpType(), 1);
    EXPECT_EQ(node.GetNodeRole(), 2);
    EXPECT_EQ(node.GetDomainRole(), 3);
    EXPECT_EQ(node.GetNodeServiceType(), 4);
    EXPECT_EQ(node.GetTotalResource().GetCpu(), 100);
    EXPECT_EQ(node.GetCurResource().GetCpu(), 20);
    EXPECT_THAT(ContainersOf(node), ElementsAre("Cam", "Dev"));
    EXPECT_FALSE(node.IsOnline());
    EXPECT_EQ(node.GetMemberStatus(), CLUSTER_MEMBER_REMOVED);
    node.SetCurResource(MakeCpu(60));
    EXPECT_EQ(node.GetCurResource().GetCpu(), 36) << "the samples came along";
    SetClock(NUMERIC_NOW + 90);
    EXPECT_FALSE(node.IsReportStatusOutTime());
    SetClock(NUMERIC_NOW + 91);
    EXPECT_TRUE(node.IsReportStatusOutTime()) << "the report time came along";
}

TEST_F(Node, CopiesCarryEveryField) {
    const CNode source = FullNode();
    AdvanceClock(50);
    CNode assigned;
    assigned.SetContainerList({"old"});
    assigned = source;
    ExpectFullNode(CNode(source));
    ExpectFullNode(assigned);
}

TEST_F(Node, SelfAssignmentChangesNothing) {
    CNode node = FullNode();
    const CNode& self = node;
    node = self;
    ExpectFullNode(node);
}

TEST_F(Node, CopiesAreIndependent) {
    CNode copy = m_node;
    copy.SetContainerList({"Cam"});
    copy.SetCurResource(MakeCpu(10));
    copy.SetOnline(false);
    EXPECT_THAT(ContainersOf(m_node), IsEmpty());
    EXPECT_EQ(m_node.GetCurResource().GetCpu(), 0);
    EXPECT_TRUE(m_node.IsOnline());
}

}  // namespace
