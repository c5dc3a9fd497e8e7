#include <ostream>

#include "common_service/global_config.h"
#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/node_mgr.h"
#include "plugins/schedule_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

struct CSubject {
    std::string strPlugin;
    std::string strContainerType;
    std::string strLibDir;
};

std::ostream& operator<<(std::ostream& stream, const CSubject& subject) {
    return stream << subject.strPlugin;
}

const CSubject RECORDING{"recording", "MeroRecord", PLUGIN_LIB_DIR};
const CSubject IMAGE{"image", "MeroImgDev", PLUGIN_LIB_DIR};
const CSubject EXAMPLE{"example", "MeroExample", EXAMPLE_LIB_DIR};

/// Every plug-in, with a first choice "a" and a second choice "b".
class Availability : public CScheduleTest, public testing::WithParamInterface<CSubject> {
protected:
    Availability()
        : CScheduleTest(GetParam().strPlugin, GetParam().strContainerType, GetParam().strLibDir) {}

    void SetUp() override {
        CScheduleTest::SetUp();
        AddContainer("a", 100, 10);
        AddContainer("b", 500, 50, {{"held", 10}});
    }

    std::string Chosen() {
        EXPECT_EQ(Schedule({{"new", 10}}), 0);
        return m_bindTable.count("new") != 0 ? m_bindTable.at("new").GetNodeId() : "none";
    }
};

TEST_P(Availability, ANormalMemberTakesWork) {
    EXPECT_EQ(Chosen(), "a");
}

TEST_P(Availability, ARemovedNodeTakesNoWorkUntilItIsBack) {
    SetMember("a", false);
    EXPECT_EQ(Chosen(), "b");
    SetMember("a", true);
    EXPECT_EQ(Chosen(), "a");
}

TEST_P(Availability, AnUnknownNodeTakesNoWork) {
    CNodeMgr::Instance().RemoveNode("a");
    EXPECT_EQ(Chosen(), "b");
}

TEST_P(Availability, AContainerThatIsOfflineTakesNoWork) {
    CContainerMgr::Instance().SetContainerOnline(Addr("a"), false);
    EXPECT_EQ(Chosen(), "b");
}

TEST_P(Availability, AContainerWithAStoppedProcessTakesNoWork) {
    CContainerMgr::Instance().SetProcessState(Addr("a"), {{"worker", PROCESS_STATE_STOPPED}});
    EXPECT_EQ(Chosen(), "b");
}

TEST_P(Availability, WhatTheTableHeldIsGoneWhetherTasksFindAPlaceOrNot) {
    EXPECT_EQ(Schedule({{"new", 10}}), 0);
    EXPECT_THAT(m_bindTable, ElementsAre(Pair("new", Addr("a"))));
    EXPECT_EQ(m_ullDecisionVerNum, 41u);
    SetMember("a", false);
    SetMember("b", false);
    EXPECT_EQ(Schedule({{"new", 10}}), ORVA_FAIL);
    EXPECT_THAT(m_bindTable, IsEmpty());
    EXPECT_EQ(m_ullDecisionVerNum, 41u);
}

TEST_P(Availability, WithoutTasksNothingIsDecided) {
    EXPECT_EQ(Schedule({}), 0);
    EXPECT_THAT(m_bindTable, IsEmpty());
    EXPECT_EQ(m_ullDecisionVerNum, 0u);
}

TEST_P(Availability, WithoutAVersionNumberNothingIsDecided) {
    constexpr int NUMERIC_STORE_CODE = 4711;
    m_pStore->FailCall(1, NUMERIC_STORE_CODE);
    EXPECT_EQ(Schedule({{"new", 10}}), NUMERIC_STORE_CODE);
    EXPECT_THAT(m_bindTable, IsEmpty());
    EXPECT_EQ(m_ullDecisionVerNum, 0u);
}

std::string SubjectName(const testing::TestParamInfo<CSubject>& info) {
    return info.param.strPlugin;
}

INSTANTIATE_TEST_SUITE_P(, Availability, testing::Values(RECORDING, IMAGE, EXAMPLE), SubjectName);

/// The plug-ins that know which container holds a task.
class HeldTask : public Availability {
protected:
    int ShiftByHand(const std::string& strFrom, const std::string& strTo) {
        CTaskShiftInfo shift;
        shift.SetOutContainer(Addr(strFrom));
        shift.SetInContainer(Addr(strTo));
        std::map<std::string, int> resultMap;
        const int iRet = Plugin().ManualTaskSchedule(Tasks({{"held", 10}}), {{"held", shift}},
                                                     m_bindTable, resultMap, m_ullDecisionVerNum);
        EXPECT_THAT(resultMap, ElementsAre(Pair("held", iRet)));
        return iRet;
    }
};

TEST_P(HeldTask, LeavesARemovedNode) {
    EXPECT_EQ(Schedule({{"held", 10}}), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("held", "b")));
    SetMember("b", false);
    EXPECT_EQ(Schedule({{"held", 10}}), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("held", "a")));
}

TEST_P(HeldTask, IsNotShiftedByHandToARemovedNodeUntilThatIsBack) {
    SetMember("a", false);
    EXPECT_EQ(ShiftByHand("b", "a"), ORVA_FAIL);
    EXPECT_THAT(m_bindTable, IsEmpty());
    SetMember("a", true);
    EXPECT_EQ(ShiftByHand("b", "a"), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("held", "a")));
}

TEST_P(HeldTask, IsShiftedByHandFromARemovedNode) {
    SetMember("b", false);
    EXPECT_EQ(ShiftByHand("b", "a"), 0);
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("held", "a")));
}

INSTANTIATE_TEST_SUITE_P(, HeldTask, testing::Values(RECORDING, IMAGE), SubjectName);

class BalancedNodes : public CScheduleTest {
protected:
    BalancedNodes() : CScheduleTest(RECORDING.strPlugin, RECORDING.strContainerType) {}

    int Balance() {
        return Plugin().LoadBalanceSchedule(m_movedList, m_unbindTable, m_bindTable,
                                            m_ullDecisionVerNum);
    }

    std::list<CResourceTask> m_movedList;
    CTaskContainerMap m_unbindTable;
};

TEST_F(BalancedNodes, ARemovedNodeIsNoTargetUntilItIsBack) {
    AddContainer("empty", 0, 0);
    AddContainer("full", 800, 0, {{"1", 300}});
    AddContainer("middle", 300, 0);
    SetMember("empty", false);
    EXPECT_EQ(Balance(), 0);
    EXPECT_THAT(m_bindTable, ElementsAre(Pair("1", Addr("middle"))));
    SetMember("empty", true);
    EXPECT_EQ(Balance(), 0);
    EXPECT_THAT(m_bindTable, ElementsAre(Pair("1", Addr("empty"))));
}

TEST_F(BalancedNodes, ARemovedNodeIsNotLeftByBalancing) {
    AddContainer("empty", 0, 0);
    AddContainer("full", 800, 0, {{"1", 300}});
    SetMember("full", false);
    EXPECT_EQ(Balance(), 0);
    EXPECT_THAT(m_bindTable, IsEmpty());
    EXPECT_THAT(m_unbindTable, IsEmpty());
    EXPECT_THAT(m_movedList, IsEmpty());
}

}  // namespace
