#include "framework_service/resource_task.h"

#include <limits>
#include <ostream>
#include <string>

#include "common_service/tarn_def.h"
#include "support/host_fixture.h"
#include "support/model_values.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ResourceTask : public CHostTest {
protected:
    KeyValueMap PrivateInfo() const {
        KeyValueMap privateInfo;
        m_task.GetAllPrivateInfo(privateInfo);
        return privateInfo;
    }

    CResourceTask m_task;
};

CLogLine MissingKey(const std::string& strKey, const std::string& strValue) {
    return Err("resource task, get value by key", 1, "resource_task", "GetValueByKey",
               "can not find, key[" + strKey + "], value[" + strValue + "]");
}

CResourceTask FullTask() {
    CResourceTask task = MakeTask("id", 5, 4, {{"k", "v"}});
    task.SetTaskName("name");
    task.SetSupportShift(false);
    task.SetCpu(1);
    task.SetMem(2);
    task.SetIO(3);
    task.SetAllocInfoList({"code", 10, 4, 6, "dns", "path"});
    return task;
}

TEST_F(ResourceTask, NewOneIsMovableAndCostsNothing) {
    EXPECT_EQ(Show(m_task), (Shown{{"TaskId", ""},
                                   {"TaskName", ""},
                                   {"SupportShift", "true"},
                                   {"Cpu", "0"},
                                   {"Mem", "0"},
                                   {"IO", "0"},
                                   {"Net", "0"},
                                   {"Disk", "0"},
                                   {"AllocInfo", "{}"},
                                   {"PrivateInfo", "{}"}}));
}

TEST_F(ResourceTask, NameIdAndMovabilityAreSetEachAlone) {
    Shown expected = Show(m_task);
    m_task.SetTaskId("t1");
    expected["TaskId"] = "t1";
    EXPECT_EQ(Show(m_task), expected);
    m_task.SetTaskName("record");
    expected["TaskName"] = "record";
    EXPECT_EQ(Show(m_task), expected);
    m_task.SetSupportShift(false);
    expected["SupportShift"] = "false";
    EXPECT_EQ(Show(m_task), expected);
}

struct CFigure {
    std::string strName;
    void (CResourceTask::*pSet)(int32_t);
    bool (CResourceTask::*pSetText)(const std::string&);
};

std::ostream& operator<<(std::ostream& stream, const CFigure& figure) {
    return stream << figure.strName;
}

class ResourceTaskFigure : public ResourceTask, public testing::WithParamInterface<CFigure> {};

TEST_P(ResourceTaskFigure, IsSetAlone) {
    for (const int32_t iFigure : {7, -7, std::numeric_limits<int32_t>::min()}) {
        Shown expected = Show(m_task);
        expected[GetParam().strName] = std::to_string(iFigure);
        (m_task.*GetParam().pSet)(iFigure);
        EXPECT_EQ(Show(m_task), expected);
    }
}

TEST_P(ResourceTaskFigure, TextLeavesItAsItIs) {
    (m_task.*GetParam().pSet)(7);
    const Shown before = Show(m_task);
    for (const char* pszText : {"12", "", "x"}) {
        (m_task.*GetParam().pSetText)(pszText);
        EXPECT_EQ(Show(m_task), before);
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    All, ResourceTaskFigure,
    testing::Values(CFigure{"Cpu", &CResourceTask::SetCpu, &CResourceTask::SetCpu},
                    CFigure{"Mem", &CResourceTask::SetMem, &CResourceTask::SetMem},
                    CFigure{"IO", &CResourceTask::SetIO, &CResourceTask::SetIO},
                    CFigure{"Net", &CResourceTask::SetNet, &CResourceTask::SetNet},
                    CFigure{"Disk", &CResourceTask::SetDisk, &CResourceTask::SetDisk}),
    [](const auto& instance) { return instance.param.strName; });

TEST_F(ResourceTask, InsertKeepsTheValueOfAKnownKey) {
    EXPECT_EQ(m_task.InsertSingleKeyValue("k", "first"), 0);
    EXPECT_EQ(m_task.InsertSingleKeyValue("k", "second"), 0);
    EXPECT_EQ(m_task.InsertSingleKeyValue("", ""), 0);
    EXPECT_EQ(PrivateInfo(), (KeyValueMap{{"k", "first"}, {"", ""}}));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ResourceTask, ValueOfAKnownKeyIsReadInSilence) {
    m_task.InsertSingleKeyValue("k", "v");
    std::string strValue = "former";
    EXPECT_EQ(m_task.GetValueByKey("k", strValue), 0);
    EXPECT_EQ(strValue, "v");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ResourceTask, MissingKeyIsLoggedWithTheUntouchedValue) {
    std::string strValue = "former";
    EXPECT_EQ(m_task.GetValueByKey("k", strValue), 1);
    EXPECT_EQ(strValue, "former");
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(MissingKey("k", "former")));
}

TEST_F(ResourceTask, NumberIsReadFromTheTextAsFarAsItIsOne) {
    const std::map<std::string, int> numbers = {
        {"12", 12}, {" -7", -7}, {"8x", 8},
        {"x8", 0},  {"", 0},     {"99999999999", std::numeric_limits<int>::max()}};
    for (const auto& [strText, iNumber] : numbers) {
        m_task.InsertSingleKeyValue("key of " + strText, strText);
        int iValue = -1;
        EXPECT_EQ(m_task.GetIntValueByKey("key of " + strText, iValue), 0);
        EXPECT_EQ(iValue, iNumber) << strText;
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ResourceTask, NumberOfAMissingKeyStaysAndIsLoggedOnce) {
    int iValue = 42;
    EXPECT_EQ(m_task.GetIntValueByKey("k", iValue), 1);
    EXPECT_EQ(iValue, 42);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(MissingKey("k", "")));
}

TEST_F(ResourceTask, PrivateInfoFromXmlReplacesWhatWasThere) {
    m_task.InsertSingleKeyValue("old", "1");
    PELU::CXml xml(nullptr);
    ASSERT_TRUE(xml.Parse("<Info><A>1</A><B/><A>2</A></Info>"));
    ASSERT_TRUE(xml.FindElemEx("Info"));
    EXPECT_EQ(m_task.ParsePrivateInfoFromXml(xml), 0);
    EXPECT_EQ(PrivateInfo(), (KeyValueMap{{"A", "1"}, {"B", ""}}));
}

TEST_F(ResourceTask, PrivateInfoIsGoneAfterXmlWithoutAny) {
    m_task.InsertSingleKeyValue("old", "1");
    PELU::CXml xml(nullptr);
    EXPECT_EQ(m_task.ParsePrivateInfoFromXml(xml), ORVA_XML_INVALID);
    EXPECT_THAT(PrivateInfo(), IsEmpty());
}

TEST_F(ResourceTask, AllPrivateInfoReplacesTheArgument) {
    m_task.InsertSingleKeyValue("k", "v");
    KeyValueMap privateInfo = {{"other", "1"}, {"k", "2"}};
    m_task.GetAllPrivateInfo(privateInfo);
    EXPECT_EQ(privateInfo, (KeyValueMap{{"k", "v"}}));
}

TEST_F(ResourceTask, AllocationsAreAppendedOnTheWayInAndOut) {
    const ORVA_CLOUD_STORAGE_ALLOC_INFO first = {"c1", 1, 2, 3, "d1", "p1"};
    const ORVA_CLOUD_STORAGE_ALLOC_INFO second = {"c2", 4, 5, 6, "d2", "p2"};
    m_task.SetAllocInfoList(first);
    m_task.SetAllocInfoList(second);
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocInfoList;
    m_task.GetAllocInfoList(allocInfoList);
    m_task.GetAllocInfoList(allocInfoList);
    EXPECT_THAT(ShowAll(allocInfoList),
                ElementsAre(Show(first), Show(second), Show(first), Show(second)));
}

TEST_F(ResourceTask, CopiesCarryEveryFieldAndAreIndependent) {
    const CResourceTask task = FullTask();
    const Shown shown = Show(task);
    CResourceTask copy(task);
    CResourceTask assigned = MakeTask("other", 9, 9, {{"gone", "1"}});
    assigned.SetAllocInfoList({"gone", 1, 1, 1, "", ""});
    assigned = task;
    EXPECT_EQ(Show(copy), shown);
    EXPECT_EQ(Show(assigned), shown);

    copy.SetTaskId("changed");
    copy.SetAllocInfoList({});
    copy.InsertSingleKeyValue("new", "1");
    EXPECT_EQ(Show(task), shown);
    EXPECT_EQ(Show(assigned), shown);
}

TEST_F(ResourceTask, SelfAssignmentChangesNothing) {
    CResourceTask task = FullTask();
    const Shown shown = Show(task);
    const CResourceTask& same = task;
    task = same;
    EXPECT_EQ(Show(task), shown);
}

TEST_F(ResourceTask, WithoutALoggerAMissingKeyAnswersTheSame) {
    OMAdapter::getInstance().setLogger(nullptr);
    std::string strValue = "former";
    EXPECT_EQ(m_task.GetValueByKey("k", strValue), 1);
    EXPECT_EQ(strValue, "former");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

}  // namespace
