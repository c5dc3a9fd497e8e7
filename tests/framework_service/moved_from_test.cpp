#include <string>
#include <utility>

#include "support/model_values.h"
#include "support/registry_fixture.h"

using testing::ElementsAre;

namespace {

constexpr char LONG_TEXT[] = "a text that no string keeps within itself";

class MovedFrom : public CHostTest {};

TEST_F(MovedFrom, NodeKeepsAddressTextAndNumberTogether) {
    CNode node = MakeStoredNode(LONG_TEXT, {"A"});
    node.SetNodeIp("10.1.2.3");
    node.SetCurResource(MakeDisk(7));
    CNode taker(std::move(node));
    CNode other;
    other = std::move(taker);
    for (const CNode* pNode : {&node, &taker, &other}) {
        EXPECT_EQ(pNode->GetNodeId(), LONG_TEXT);
        EXPECT_EQ(pNode->GetNodeIp(), "10.1.2.3");
        EXPECT_EQ(pNode->GetNodeIpInt(), 0x0A010203U);
        EXPECT_EQ(pNode->GetCurResource().GetDisk(), 7);
        EXPECT_THAT(ContainersOf(*pNode), ElementsAre("A"));
    }
}

TEST_F(MovedFrom, ContainerKeepsTotalsAndSamplesTogether) {
    CContainer container = MakeContainer(LONG_TEXT, "B");
    container.SetTotalResource(MakeDisk(100));
    container.SetCurResource(MakeDisk(10));
    container.SetResourceTask({MakeTask("t", 3, 4)}, 0);
    container.SetProcessState({{"p", PROCESS_STATE_STOPPED}});
    container.SetValueByKey("k", "v");
    const Shown before = Show(container);
    CContainer taker(std::move(container));
    CContainer other;
    other = std::move(taker);
    EXPECT_EQ(Show(container), before);
    EXPECT_EQ(Show(taker), before);
    EXPECT_EQ(Show(other), before);
    container.AddDiskToLastestResource(20);
    EXPECT_FLOAT_EQ(container.GetDiskRatio(), 0.3F);
}

TEST_F(MovedFrom, TaskAndAddressesKeepTheirTexts) {
    CResourceTask task = MakeTask(LONG_TEXT, 1, 2, {{"k", "v"}});
    task.SetAllocInfoList({});
    const Shown before = Show(task);
    const CResourceTask taker(std::move(task));
    EXPECT_EQ(Show(task), before);
    EXPECT_EQ(Show(taker), before);

    CTaskShiftInfo shift;
    shift.SetTaskId(LONG_TEXT);
    shift.SetOutContainer(CContainerAddr(LONG_TEXT, "A"));
    const CTaskShiftInfo shiftTaker(std::move(shift));
    EXPECT_EQ(shift.GetTaskId(), LONG_TEXT);
    EXPECT_EQ(shift.GetOutContainer(), shiftTaker.GetOutContainer());

    CContainerAddr addr(LONG_TEXT, "A");
    const CContainerAddr addrTaker(std::move(addr));
    EXPECT_EQ(addr, addrTaker);
}

}  // namespace
