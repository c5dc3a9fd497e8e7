#include "framework_service/container.h"

#include <functional>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "support/fake_clock.h"
#include "support/host_fixture.h"
#include "support/model_values.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int32_t INT32_TOP = std::numeric_limits<int32_t>::max();
constexpr int32_t INT32_BOTTOM = std::numeric_limits<int32_t>::min();
constexpr float RATIO_UNKNOWN = 2147483648.0F;
constexpr std::time_t NOW = 1000000;

class Container : public CHostTest {
protected:
    Container() {
        SetClock(NOW);
        m_container = MakeContainer("N1", "Cam");
    }

    CContainer m_container;
};

Shown NewContainer() {
    const std::string strNoFigures = testing::PrintToString(Show(CSystemResource()));
    return {{"NodeId", ""},
            {"ContainerType", ""},
            {"Online", "true"},
            {"FaultShift", "false"},
            {"SupportFaultShift", "false"},
            {"FaultStatus", "false"},
            {"MsgType", "0"},
            {"LowPriStoreDay", "0"},
            {"TotalResource", strNoFigures},
            {"Status", strNoFigures},
            {"DiskRatio", "0"},
            {"NetRatio", "0"},
            {"MemberStatus", "0"},
            {"HasReported", "false"},
            {"ProcessState", "{}"},
            {"PrivateInfo", "{}"},
            {"Tasks", "{}"},
            {"TaskTotalDisk", "0"},
            {"TaskTotalNet", "0"},
            {"NeedUpdate", "true"},
            {"ProductType", ""},
            {"ServiceType", ""},
            {"ReqStorage", "0"},
            {"ReqPicStorage", "0"},
            {"BitRate", "0"},
            {"TranBandWidth", "0"},
            {"UpdateFlag", "false"},
            {"AllocInfo", "{}"}};
}

TEST_F(Container, NewOneIsOnlineUnreportedAndInNeedOfTasks) {
    EXPECT_EQ(Show(CContainer()), NewContainer());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

struct CAccessor {
    std::string strShown;
    std::string strValue;
    std::function<void(CContainer&)> set;
};

std::ostream& operator<<(std::ostream& stream, const CAccessor& accessor) {
    return stream << accessor.strShown;
}

class ContainerAccessor : public Container, public testing::WithParamInterface<CAccessor> {};

TEST_P(ContainerAccessor, SetsItsOwnFieldAlone) {
    CContainer container;
    GetParam().set(container);
    Shown expected = NewContainer();
    expected[GetParam().strShown] = GetParam().strValue;
    EXPECT_EQ(Show(container), expected);
}

INSTANTIATE_TEST_SUITE_P(
    All, ContainerAccessor,
    testing::Values(
        CAccessor{"NodeId", "N1", [](CContainer& c) { c.SetNodeId("N1"); }},
        CAccessor{"ContainerType", "Cam", [](CContainer& c) { c.SetContainerType("Cam"); }},
        CAccessor{"Online", "false", [](CContainer& c) { c.SetOnline(false); }},
        CAccessor{"FaultShift", "true", [](CContainer& c) { c.SetFaultShift(true); }},
        CAccessor{"SupportFaultShift", "true", [](CContainer& c) { c.SetSupportFaultShift(true); }},
        CAccessor{"FaultStatus", "true", [](CContainer& c) { c.SetFaultStatus(true); }},
        CAccessor{"MsgType", "-3", [](CContainer& c) { c.SetMsgType(-3); }},
        CAccessor{"LowPriStoreDay", "30", [](CContainer& c) { c.SetLowPriStoreDay(30); }},
        CAccessor{"DiskRatio", "0.5", [](CContainer& c) { c.SetDiskRatio(0.5F); }},
        CAccessor{"NetRatio", "0.25", [](CContainer& c) { c.SetNetRatio(0.25F); }},
        CAccessor{"TaskTotalDisk", "-8", [](CContainer& c) { c.SetTaskTotalDisk(-8); }},
        CAccessor{"TaskTotalNet", "9", [](CContainer& c) { c.SetTaskTotalNet(9); }},
        CAccessor{"NeedUpdate", "false", [](CContainer& c) { c.SetResTaskNeedUpdate(false); }},
        CAccessor{"ProductType", "P", [](CContainer& c) { c.SetProductType("P"); }},
        CAccessor{"ServiceType", "MPU-R", [](CContainer& c) { c.SetServiceType("MPU-R"); }},
        CAccessor{"ReqStorage", "1", [](CContainer& c) { c.SetReqStorage(1); }},
        CAccessor{"ReqPicStorage", "2", [](CContainer& c) { c.SetReqPicStorage(2); }},
        CAccessor{"BitRate", "3", [](CContainer& c) { c.SetBitRate(3); }},
        CAccessor{"TranBandWidth", "4", [](CContainer& c) { c.SetTranBandWidth(4); }},
        CAccessor{"UpdateFlag", "true", [](CContainer& c) { c.SetUptadeFlag(true); }},
        CAccessor{"MemberStatus", "5", [](CContainer& c) { c.SetMemberStatus(5); }},
        CAccessor{"ProcessState", "{ (\"p\", 2) }",
                  [](CContainer& c) {
                      c.SetProcessState({{"p", PROCESS_STATE_FREQUENCY_RESTART}});
                  }},
        CAccessor{"PrivateInfo", "{ (\"k\", \"v\") }",
                  [](CContainer& c) {
                      c.SetExtParam({{"k", "v"}});
                  }},
        CAccessor{"TotalResource", testing::PrintToString(Show(MakeResource(1, 2, 3, 4, 5))),
                  [](CContainer& c) { c.SetTotalResource(MakeResource(1, 2, 3, 4, 5)); }}),
    [](const auto& instance) { return instance.param.strShown; });

TEST_F(Container, TotalDiskIsThatOfTheTotalFigures) {
    m_container.SetTotalResource(MakeResource(1, 2, 3, 4, 5));
    EXPECT_EQ(m_container.GetTotalDisk(), 5);
}

TEST_F(Container, StatusIsTheAverageOfTheLastThreeSamples) {
    const std::vector<int32_t> samples = {10, 20, 30, 60, 90, 0, -30};
    const std::vector<int32_t> averages = {10, 15, 20, 36, 60, 50, 20};
    for (std::size_t i = 0; i < samples.size(); ++i) {
        m_container.SetCurResource(MakeDisk(samples[i]));
        EXPECT_EQ(m_container.GetCurResourceByType(RESOURCE_TYPE_DISK), averages[i]) << i;
        EXPECT_EQ(m_container.GetStatus().GetCurSysResource().GetDisk(), averages[i]) << i;
    }
}

TEST_F(Container, EveryFigureIsAveragedAlsoAfterItsSlotIsWrittenOver) {
    for (int32_t i = 1; i <= 4; ++i) {
        m_container.SetCurResource(MakeResource(i, 10 * i, 100 * i, 1000 * i, 10000 * i));
    }
    EXPECT_EQ(m_container.GetCurResourceByType(RESOURCE_TYPE_CPU), 3);
    EXPECT_EQ(m_container.GetCurResourceByType(RESOURCE_TYPE_MEM), 30);
    EXPECT_EQ(m_container.GetCurResourceByType(RESOURCE_TYPE_IO), 300);
    EXPECT_EQ(m_container.GetCurResourceByType(RESOURCE_TYPE_NET), 3000);
    EXPECT_EQ(m_container.GetCurResourceByType(RESOURCE_TYPE_DISK), 30000);
    EXPECT_EQ(m_container.GetTotalDisk(), 0);
}

TEST_F(Container, AverageTruncatesTowardZeroAndItsSumWraps) {
    m_container.SetCurResource(MakeDisk(-1));
    m_container.SetCurResource(MakeDisk(-2));
    EXPECT_EQ(m_container.GetCurResourceByType(RESOURCE_TYPE_DISK), -1);

    CContainer busy;
    busy.SetCurResource(MakeDisk(INT32_TOP));
    busy.SetCurResource(MakeDisk(1));
    EXPECT_EQ(busy.GetCurResourceByType(RESOURCE_TYPE_DISK), INT32_BOTTOM / 2);
}

TEST_F(Container, UnknownResourceTypeIsLoggedAndAnswersOne) {
    m_container.SetCurResource(MakeResource(7, 7, 7, 7, 7));
    EXPECT_EQ(m_container.GetCurResourceByType(static_cast<RESOURCE_TYPE>(-1)), 1);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Err("get resource by type", 1, "base_data",
                                                     "GetResourceByType", "type[-1] not found.")));
}

struct CRatio {
    int32_t iTotal;
    int32_t iCurrent;
    float fRatio;
};

void PrintTo(const CRatio& ratio, std::ostream* pStream) {
    *pStream << ratio.iCurrent << " of " << ratio.iTotal;
}

class ContainerDiskRatio : public Container, public testing::WithParamInterface<CRatio> {};

TEST_P(ContainerDiskRatio, IsUsedOverTotalInSinglePrecision) {
    m_container.CalcDiskRatio(GetParam().iTotal, GetParam().iCurrent);
    EXPECT_EQ(m_container.GetDiskRatio(), GetParam().fRatio);
}

TEST_P(ContainerDiskRatio, FollowsTheSampleAndTheTotalAlike) {
    m_container.SetTotalResource(MakeDisk(GetParam().iTotal));
    m_container.SetCurResource(MakeDisk(GetParam().iCurrent));
    EXPECT_EQ(m_container.GetDiskRatio(), GetParam().fRatio);
    m_container.SetDiskRatio(-1);
    m_container.SetTotalResource(MakeDisk(GetParam().iTotal));
    EXPECT_EQ(m_container.GetDiskRatio(), GetParam().fRatio);
}

// The last: 16777220 over 16777216 once both are rounded to single precision.
INSTANTIATE_TEST_SUITE_P(
    All, ContainerDiskRatio,
    testing::Values(CRatio{200, 50, 0.25F}, CRatio{100, 150, 1.5F}, CRatio{100, 0, 0.0F},
                    CRatio{3, 1, 1.0F / 3.0F}, CRatio{1, -2, -2.0F}, CRatio{0, 5, RATIO_UNKNOWN},
                    CRatio{-1, 5, RATIO_UNKNOWN}, CRatio{INT32_BOTTOM, 5, RATIO_UNKNOWN},
                    CRatio{1, INT32_BOTTOM, -2147483648.0F}, CRatio{INT32_TOP, INT32_TOP, 1.0F},
                    CRatio{16777217, 16777219, 1.0000002384185791F}));

TEST_F(Container, DiskRatioFollowsTheSampleNotTheAverage) {
    m_container.SetTotalResource(MakeDisk(100));
    for (const int32_t iDisk : {10, 20, 30, 60, 90}) {
        m_container.SetCurResource(MakeDisk(iDisk));
        EXPECT_EQ(m_container.GetDiskRatio(), static_cast<float>(iDisk) / 100.0F);
    }
}

TEST_F(Container, NewTotalWithoutASampleLeavesTheDiskRatio) {
    m_container.SetTotalResource(MakeDisk(100));
    EXPECT_EQ(m_container.GetDiskRatio(), 0.0F);
    m_container.SetDiskRatio(0.75F);
    m_container.SetTotalResource(MakeDisk(0));
    EXPECT_EQ(m_container.GetDiskRatio(), 0.75F);
}

TEST_F(Container, NewTotalIsSetAgainstTheNewestSampleAtEveryTurnOfTheRing) {
    for (int32_t iSamples = 1; iSamples <= 7; ++iSamples) {
        m_container.SetCurResource(MakeDisk(10 * iSamples));
        EXPECT_EQ(m_container.GetDiskRatio(), RATIO_UNKNOWN);
        m_container.SetTotalResource(MakeDisk(80));
        EXPECT_EQ(m_container.GetDiskRatio(), static_cast<float>(iSamples) / 8.0F) << iSamples;
        m_container.SetTotalResource(MakeDisk(0));
    }
}

CLogLine TimedOut(const std::string& strDifference) {
    return Info("", "container", "IsReportStatusOutTime",
                "containerType=Cam nodeId=N1 report timeout,diff time=" + strDifference);
}

TEST_F(Container, ReportIsOutOfTimeOnlyPastTheTimeout) {
    SetClock(NOW + 60);
    EXPECT_FALSE(m_container.IsReportStatusOutTime(60));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    SetClock(NOW + 61);
    EXPECT_TRUE(m_container.IsReportStatusOutTime(60));
    EXPECT_TRUE(m_container.IsReportStatusOutTime(60));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(TimedOut("61"), TimedOut("61")));
}

TEST_F(Container, ReportOfNowIsOutOfANegativeTimeout) {
    EXPECT_FALSE(m_container.IsReportStatusOutTime(0));
    EXPECT_TRUE(m_container.IsReportStatusOutTime(-1));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(TimedOut("0")));
}

TEST_F(Container, NewReportRestartsTheTimeout) {
    SetClock(NOW + 61);
    m_container.SetStatusReportTime();
    EXPECT_FALSE(m_container.IsReportStatusOutTime(60));
    AdvanceClock(61);
    EXPECT_TRUE(m_container.IsReportStatusOutTime(60));
}

TEST_F(Container, ReportFromTheFutureIsOutOfTimeOnceInSilenceThenFresh) {
    SetClock(NOW - 1);
    EXPECT_TRUE(m_container.IsReportStatusOutTime(60));
    EXPECT_FALSE(m_container.IsReportStatusOutTime(60));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    AdvanceClock(61);
    EXPECT_TRUE(m_container.IsReportStatusOutTime(60));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(TimedOut("61")));
}

TEST_F(Container, ReportTimeIsTellableBeyond32Bits) {
    AdvanceClock(5000000000);
    EXPECT_TRUE(m_container.IsReportStatusOutTime(INT32_TOP));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(TimedOut("5000000000")));
}

TEST_F(Container, OnlyRemovalForgetsTheReport) {
    m_container.SetResourceTask({}, 3979);
    for (const int iStatus : {0, 2, -1}) {
        m_container.SetMemberStatus(iStatus);
        EXPECT_EQ(m_container.GetMemberStatus(), iStatus);
        EXPECT_TRUE(m_container.GetHasReportedFlag());
    }
    m_container.SetMemberStatus(CLUSTER_MEMBER_REMOVED);
    EXPECT_EQ(m_container.GetMemberStatus(), 1);
    EXPECT_FALSE(m_container.GetHasReportedFlag());
    m_container.SetMemberStatus(CLUSTER_MEMBER_NORMAL);
    EXPECT_FALSE(m_container.GetHasReportedFlag());
}

TEST_F(Container, ProcessTableIsReplacedOnTheWayInAndOut) {
    m_container.SetProcessState({{"a", 0}, {"b", 1}});
    m_container.SetProcessState({{"c", 2}});
    std::map<std::string, int> processTable = {{"other", 1}};
    m_container.GetProcessState(processTable);
    EXPECT_EQ(processTable, (std::map<std::string, int>{{"c", 2}}));
}

TEST_F(Container, RunsWhileEveryReportedProcessRuns) {
    EXPECT_TRUE(m_container.IsProcessRunning());
    m_container.SetProcessState({{"a", PROCESS_STATE_RUNNING}, {"b", PROCESS_STATE_RUNNING}});
    EXPECT_TRUE(m_container.IsProcessRunning());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(Container, FirstProcessThatDoesNotRunIsNamedAlone) {
    for (const int iState : {1, 2, 3, -1}) {
        m_logger.Clear();
        m_container.SetProcessState({{"c", PROCESS_STATE_STOPPED}, {"b", iState}, {"a", 0}});
        EXPECT_FALSE(m_container.IsProcessRunning());
        EXPECT_THAT(m_logger.GetLines(),
                    ElementsAre(Info("", "container", "IsProcessRunning",
                                     "containerType=Cam nodeId=N1 process=b stopped.")));
    }
}

CLogLine MissingText(const std::string& strKey, const std::string& strValue) {
    return Err("Container, get value by key", 1, "container", "GetValueByKey",
               "can not find, key[" + strKey + "], value[" + strValue + "]");
}

class ContainerPrivateInfo : public Container {
protected:
    std::string Text(const std::string& strKey) const {
        std::string strValue = "unread";
        m_container.GetValueByKey(strKey, strValue);
        return strValue;
    }
};

TEST_F(ContainerPrivateInfo, EveryWriterAddsAndOverwrites) {
    EXPECT_EQ(m_container.InsertSingleKeyValue("k", "1"), 0);
    EXPECT_EQ(Text("k"), "1");
    EXPECT_EQ(m_container.InsertSingleKeyValue("k", "2"), 0);
    EXPECT_EQ(Text("k"), "2");
    EXPECT_EQ(m_container.InsertSingleKeyIntValue("k", -3), 0);
    EXPECT_EQ(Text("k"), "-3");
    EXPECT_EQ(m_container.SetValueByKey("k", "4"), 0);
    EXPECT_EQ(Text("k"), "4");
    EXPECT_EQ(m_container.SetIntValueByKey("k", INT32_BOTTOM), 0);
    EXPECT_EQ(Text("k"), "-2147483648");
    EXPECT_EQ(m_container.InsertSingleKeyIntValue("a", 5), 0);
    EXPECT_EQ(m_container.SetValueByKey("b", "6"), 0);
    EXPECT_EQ(m_container.SetIntValueByKey("c", 7), 0);
    KeyValueMap privateInfo;
    m_container.GetAllPrivateInfo(privateInfo);
    EXPECT_EQ(privateInfo, (KeyValueMap{{"a", "5"}, {"b", "6"}, {"c", "7"}, {"k", "-2147483648"}}));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerPrivateInfo, MissingTextIsLoggedWithTheUntouchedValue) {
    std::string strValue = "former";
    EXPECT_EQ(m_container.GetValueByKey("k", strValue), 1);
    EXPECT_EQ(strValue, "former");
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(MissingText("k", "former")));
}

TEST_F(ContainerPrivateInfo, NumberIsReadFromTheText) {
    m_container.InsertSingleKeyValue("k", "-12 days");
    m_container.InsertSingleKeyValue("none", "days");
    int iValue = 42;
    EXPECT_EQ(m_container.GetIntValueByKey("k", iValue), 0);
    EXPECT_EQ(iValue, -12);
    EXPECT_EQ(m_container.GetIntValueByKey("none", iValue), 0);
    EXPECT_EQ(iValue, 0);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerPrivateInfo, NumberOfAMissingKeyStaysAndIsLoggedOnce) {
    int iValue = 42;
    EXPECT_EQ(m_container.GetIntValueByKey("k", iValue), 1);
    EXPECT_EQ(iValue, 42);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(MissingText("k", "")));
}

TEST_F(ContainerPrivateInfo, FloatsOverwriteToo) {
    EXPECT_EQ(m_container.InsertSingleKeyFloatValue("k", 1.5F), 0);
    EXPECT_EQ(m_container.InsertSingleKeyFloatValue("k", -0.1F), 0);
    float fValue = 0;
    EXPECT_EQ(m_container.GetFloatValueByKey("k", fValue), 0);
    EXPECT_EQ(fValue, -0.1F);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerPrivateInfo, TextsAndFloatsAreKeptApart) {
    m_container.InsertSingleKeyFloatValue("float", 1.5F);
    m_container.InsertSingleKeyValue("text", "1.5");
    std::string strValue = "former";
    EXPECT_EQ(m_container.GetValueByKey("float", strValue), 1);
    EXPECT_EQ(strValue, "former");
    float fValue = 2.5F;
    EXPECT_EQ(m_container.GetFloatValueByKey("text", fValue), 1);
    EXPECT_EQ(fValue, 2.5F);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(MissingText("float", "former"),
                            Err("Container, get float value by key", 1, "container",
                                "GetFloatValueByKey", "can not find, key[text], value[2.500000]")));
}

TEST_F(ContainerPrivateInfo, IsReplacedAsAWholeOnTheWayInAndOut) {
    m_container.InsertSingleKeyValue("old", "1");
    m_container.InsertSingleKeyFloatValue("float", 1.5F);
    m_container.SetExtParam({{"new", "2"}});
    KeyValueMap privateInfo = {{"other", "3"}};
    m_container.GetAllPrivateInfo(privateInfo);
    EXPECT_EQ(privateInfo, (KeyValueMap{{"new", "2"}}));
    float fValue = 0;
    EXPECT_EQ(m_container.GetFloatValueByKey("float", fValue), 0);
}

/// A container with no field at its default; the oldest sample of its ring is in the middle.
CContainer FullContainer() {
    CResourceTask task = MakeTask("t", 5, 4, {{"ServiceType", "MPU-R"}, {"LowPriBitRate", "8"}});
    task.SetAllocInfoList({"code", 10, 4, 6, "dns", "path"});
    CContainer container = MakeContainer("N1", "MeroCloudStorage");
    container.SetResourceTask({task}, 3979);
    container.SetResourceTask({task}, 3979);
    container.AddTask(MakeTask("u", 7, 6));
    container.SetTotalResource(MakeResource(1, 2, 3, 4, 100));
    for (const int32_t iDisk : {10, 20, 30, 60}) {
        container.SetCurResource(MakeResource(5, 6, 7, 8, iDisk));
    }
    container.SetProcessState({{"p", PROCESS_STATE_STOPPED}});
    container.SetOnline(false);
    container.SetFaultShift(true);
    container.SetSupportFaultShift(true);
    container.SetMemberStatus(2);
    container.SetNetRatio(0.5F);
    container.InsertSingleKeyValue("k", "v");
    container.InsertSingleKeyFloatValue("f", 1.5F);
    container.SetProductType("P");
    container.SetReqStorage(1);
    container.SetReqPicStorage(2);
    container.SetMsgType(3);
    container.SetLowPriStoreDay(4);
    container.SetFaultStatus(true);
    return container;
}

/// The answers that show what no accessor shows: ring, report time and float values.
void ExpectToGoOnAsAFullContainer(CContainer container) {
    SetClock(NOW + 61);
    EXPECT_TRUE(container.IsReportStatusOutTime(60));
    EXPECT_FALSE(container.IsReportStatusOutTime(61));
    container.SetTotalResource(MakeDisk(120));
    EXPECT_EQ(container.GetDiskRatio(), 0.5F);
    container.SetCurResource(MakeDisk(90));
    EXPECT_EQ(container.GetCurResourceByType(RESOURCE_TYPE_DISK), 60);
    float fValue = 0;
    EXPECT_EQ(container.GetFloatValueByKey("f", fValue), 0);
    EXPECT_EQ(fValue, 1.5F);
}

TEST_F(Container, FullOneDiffersFromANewOneInEveryField) {
    const Shown full = Show(FullContainer());
    for (const auto& [strField, strValue] : NewContainer()) {
        EXPECT_NE(full.at(strField), strValue) << strField;
    }
}

TEST_F(Container, CopiesAreFullSnapshots) {
    const CContainer container = FullContainer();
    SetClock(NOW + 30);
    const CContainer copy(container);
    const CContainer assigned = [&container] {
        CContainer other = MakeContainer("N2", "Cam");
        other = container;
        return other;
    }();
    for (const CContainer* pCopy : {&copy, &assigned}) {
        EXPECT_EQ(Show(*pCopy), Show(container));
        ExpectToGoOnAsAFullContainer(*pCopy);
    }
}

TEST_F(Container, CopiesAreIndependentOfTheOriginal) {
    CContainer container = FullContainer();
    const CContainer copy(container);
    const Shown shown = Show(copy);
    container.SetResourceTask({}, 3979);
    container.SetCurResource(MakeDisk(0));
    container.SetTotalResource(MakeDisk(7));
    container.SetProcessState({});
    container.SetExtParam({});
    container.InsertSingleKeyFloatValue("f", 0.0F);
    container.SetMemberStatus(CLUSTER_MEMBER_REMOVED);
    SetClock(NOW + 30);
    container.SetStatusReportTime();
    EXPECT_EQ(Show(copy), shown);
    ExpectToGoOnAsAFullContainer(copy);
}

TEST_F(Container, SelfAssignmentChangesNothing) {
    CContainer container = FullContainer();
    const Shown shown = Show(container);
    const CContainer& same = container;
    container = same;
    EXPECT_EQ(Show(container), shown);
    ExpectToGoOnAsAFullContainer(container);
}

TEST_F(Container, WithoutALoggerEveryAnswerIsTheSame) {
    OMAdapter::getInstance().setLogger(nullptr);
    AdvanceClock(61);
    EXPECT_TRUE(m_container.IsReportStatusOutTime(60));
    m_container.SetProcessState({{"p", PROCESS_STATE_STOPPED}});
    EXPECT_FALSE(m_container.IsProcessRunning());
    int iValue = 42;
    EXPECT_EQ(m_container.GetIntValueByKey("k", iValue), 1);
    EXPECT_EQ(iValue, 42);
    EXPECT_EQ(m_container.GetCurResourceByType(static_cast<RESOURCE_TYPE>(5)), 1);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

}  // namespace
