#include <functional>
#include <sstream>
#include <tuple>
#include <vector>

#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/node_mgr.h"
#include "support/fake_clock.h"
#include "support/host_fixture.h"
#include "support/model_values.h"
#include "support/refused_locks.h"
#include "support/registry_fixture.h"

namespace {

constexpr char KNOWN[] = "n1";
constexpr char UNKNOWN[] = "ghost";
constexpr time_t NUMERIC_START = 1000;
constexpr int NUMERIC_REPORT_AGE = 50;

/// An operation of a registry, its result and what it hands out written as one text.
struct COperation {
    std::string strName;
    std::function<std::string()> call;
    std::string strWithoutLock;  ///< the text when the lock cannot be had
};

std::ostream& operator<<(std::ostream& stream, const COperation& operation) {
    return stream << operation.strName;
}

/// The texts of several results, with blanks between.
template <typename... Results>
std::string Tell(const Results&... results) {
    std::ostringstream stream;
    ((stream << results << ' '), ...);
    return stream.str();
}

/// Makes the operations of one registry.
class COperationMaker {
public:
    explicit COperationMaker(const std::string& strRegistry) : m_strRegistry(strRegistry) {}

    COperation Answering(const std::string& strName, const std::function<std::string()>& call,
                         const std::string& strWithoutLock) const {
        return {m_strRegistry + "_" + strName, call, strWithoutLock};
    }

    COperation Silent(const std::string& strName, const std::function<void()>& call) const {
        const auto callAndTellNothing = [call] {
            call();
            return std::string();
        };
        return Answering(strName, callAndTellNothing, "");
    }

private:
    std::string m_strRegistry;
};

CNode MakeBusyNode(const std::string& strId) {
    return MakeStoredNode(strId, {"A", "B"}, "10.0.0.1");
}

CContainer MakeBusyContainer(const CContainerAddr& addr) {
    CContainer container = MakeContainer(addr.GetNodeId(), addr.GetContainerType());
    container.SetSupportFaultShift(true);
    container.SetFaultStatus(true);
    container.SetValueByKey("key", "value");
    container.AddTask(MakeTask("t1"));
    return container;
}

/// An NVR with bandwidth to give, on both lists.
void ReportNvr(CContainerMgr& mgr) {
    mgr.UpdateHighSpeedNvrInfo("nvr", 1000, 0, ORVA_STATUS_RUN, ORVA_STATUS_RUN, ORVA_STATUS_RUN);
}

std::vector<COperation> NodeQuestions(const std::string& strNodeId) {
    CNodeMgr& mgr = CNodeMgr::Instance();
    const CContainerAddr addr(strNodeId, "A");
    const COperationMaker of("CNodeMgr");
    return {
        of.Answering(
            "GetAllNode",
            [&mgr] {
                std::list<CNode> nodeList(2);
                mgr.GetAllNode(nodeList);
                return Tell(nodeList.size());
            },
            Tell(2)),
        of.Answering(
            "GetNode",
            [&mgr, strNodeId] {
                CNode node = MakeBusyNode("old");
                const bool bFound = mgr.GetNode(strNodeId, node);
                return Tell(bFound, node.GetNodeId());
            },
            Tell(false, "old")),
        of.Answering(
            "IsNodeExist", [&mgr, strNodeId] { return Tell(mgr.IsNodeExist(strNodeId)); },
            Tell(false)),
        of.Answering(
            "IsNodeOnline", [&mgr, strNodeId] { return Tell(mgr.IsNodeOnline(strNodeId)); },
            Tell(false)),
        of.Answering(
            "GetNearbyNodeListByIP",
            [&mgr] {
                std::list<std::string> nodeList = {"old"};
                const int iRet = mgr.GetNearbyNodeListByIP(0, 0, nodeList);
                return Tell(iRet, nodeList.size());
            },
            Tell(ORVA_FAIL, 0)),
        of.Answering(
            "GetContainerShiftFaultTimes",
            [&mgr, addr] { return Tell(mgr.GetContainerShiftFaultTimes(addr)); }, Tell(0)),
    };
}

std::vector<COperation> NodeChanges(const std::string& strNodeId) {
    CNodeMgr& mgr = CNodeMgr::Instance();
    const CContainerAddr addr(strNodeId, "A");
    const COperationMaker of("CNodeMgr");
    return {
        of.Silent("Init", [&mgr] { mgr.Init({MakeBusyNode("n9")}); }),
        of.Silent("AddNode",
                  [&mgr] {
                      mgr.AddNode({{"n9", MakeBusyNode("n9")}});
                  }),
        of.Silent("SetNodeOnline", [&mgr, strNodeId] { mgr.SetNodeOnline(strNodeId, false); }),
        of.Silent("SetSystemResource",
                  [&mgr, strNodeId] { mgr.SetSystemResource(strNodeId, MakeCpu(5), MakeCpu(6)); }),
        of.Silent("SetMemberStatus", [&mgr, strNodeId] { mgr.SetMemberStatus({strNodeId}, 1); }),
        of.Silent("RemoveNode", [&mgr, strNodeId] { mgr.RemoveNode(strNodeId); }),
        of.Answering(
            "RemoveNodeContainer",
            [&mgr, strNodeId] {
                unsigned int uiLeft = 77;
                mgr.RemoveNodeContainer(strNodeId, "A", uiLeft);
                return Tell(uiLeft);
            },
            Tell(77)),
        of.Silent("SetContainerShiftFaultTimes",
                  [&mgr, addr] { mgr.SetContainerShiftFaultTimes(addr, 9); }),
        of.Silent("ClearContainerShiftStatus",
                  [&mgr, strNodeId] { mgr.ClearContainerShiftStatus(strNodeId); }),
        of.Silent("ClearContainerShiftStatusOfList",
                  [&mgr, strNodeId] {
                      mgr.ClearContainerShiftStatus(std::list<std::string>{strNodeId});
                  }),
    };
}

std::vector<COperation> ContainerTable(const std::string& strNodeId) {
    CContainerMgr& mgr = CContainerMgr::Instance();
    const CContainerAddr addr(strNodeId, CONTAINER_TYPE_CLOUD_STORAGE);
    const CContainerAddr added("n9", "A");
    const COperationMaker of("CContainerMgr");
    return {
        of.Answering(
            "Init",
            [&mgr, added] {
                return Tell(mgr.Init({{added, MakeBusyContainer(added)}}));
            },
            Tell(ORVA_FAIL)),
        of.Answering(
            "GetAllContainer",
            [&mgr, added] {
                ContainerMap containerMap = {{added, MakeBusyContainer(added)}};
                mgr.GetAllContainer(containerMap);
                return Tell(containerMap.size(), containerMap.begin()->first.GetNodeId());
            },
            Tell(1, "n9")),
        of.Answering(
            "AddContainer",
            [&mgr, added] {
                return Tell(mgr.AddContainer({{added, MakeBusyContainer(added)}}));
            },
            Tell(ORVA_FAIL)),
        of.Answering(
            "RemoveContainer", [&mgr, addr] { return Tell(mgr.RemoveContainer(addr)); },
            Tell(ORVA_FAIL)),
    };
}

std::vector<COperation> ContainerStates(const std::string& strNodeId) {
    CContainerMgr& mgr = CContainerMgr::Instance();
    const CContainerAddr addr(strNodeId, CONTAINER_TYPE_CLOUD_STORAGE);
    const COperationMaker of("CContainerMgr");
    const auto question = [&](const char* pszName,
                              bool (CContainerMgr::*pQuestion)(const CContainerAddr&)) {
        return of.Answering(
            pszName, [&mgr, addr, pQuestion] { return Tell((mgr.*pQuestion)(addr)); }, Tell(false));
    };
    return {
        of.Silent("SetContainerOnline", [&mgr, addr] { mgr.SetContainerOnline(addr, false); }),
        question("IsContainerOnline", &CContainerMgr::IsContainerOnline),
        of.Silent("SetSystemResource",
                  [&mgr, addr] { mgr.SetSystemResource(addr, MakeCpu(5), MakeCpu(6)); }),
        of.Silent("UpdateContainerReportTime",
                  [&mgr, addr] { mgr.UpdateContainerReportTime(addr); }),
        of.Silent("SetProcessState",
                  [&mgr, addr] {
                      mgr.SetProcessState(addr, {{"p", 1}});
                  }),
        question("IsProcessRunning", &CContainerMgr::IsProcessRunning),
        of.Silent("SetContainerFaultShift",
                  [&mgr, addr] { mgr.SetContainerFaultShift(addr, true); }),
        question("IsContainerSupportFaultShift", &CContainerMgr::IsContainerSupportFaultShift),
        of.Silent("SetContainerDoingFaultShift",
                  [&mgr, addr] { mgr.SetContainerDoingFaultShift(addr, false); }),
        question("IsContainerDoingFaultShift", &CContainerMgr::IsContainerDoingFaultShift),
        of.Silent("SetContainerMemberStatus",
                  [&mgr, addr] { mgr.SetContainerMemberStatus(addr, CLUSTER_MEMBER_REMOVED); }),
    };
}

std::vector<COperation> ContainerTasks(const std::string& strNodeId) {
    CContainerMgr& mgr = CContainerMgr::Instance();
    const CContainerAddr addr(strNodeId, CONTAINER_TYPE_CLOUD_STORAGE);
    const COperationMaker of("CContainerMgr");
    return {
        of.Silent("SetResourceTask",
                  [&mgr, addr] {
                      mgr.SetResourceTask(addr, {MakeTask("t2")}, CONTAINER_STATUS_REPORT_REQ);
                  }),
        of.Answering(
            "GetResTaskList",
            [&mgr, addr] {
                std::list<CResourceTask> taskList = {MakeTask("old")};
                mgr.GetResTaskList(addr, taskList);
                return Tell(taskList.size());
            },
            Tell(1)),
        of.Silent("RemoveResourceTask", [&mgr, addr] { mgr.RemoveResourceTask(addr, {"t1"}); }),
        of.Silent("AddResourceTask", [&mgr, addr] { mgr.AddResourceTask(addr, {MakeTask("t2")}); }),
        of.Silent("SaveDataToZK", [&mgr, addr] { mgr.SaveDataToZK(addr); }),
        of.Silent("SetContainerResTaskNeedUpdate",
                  [&mgr, addr] { mgr.SetContainerResTaskNeedUpdate(addr, false); }),
        of.Silent("SetExtParam", [&mgr, addr] { mgr.SetExtParam(addr, {}); }),
        of.Silent("SetExtParamValueByKey",
                  [&mgr, addr] { mgr.SetExtParamValueByKey(addr, "key", "new"); }),
        of.Answering(
            "GetExtParamValueByKey",
            [&mgr, addr] {
                std::string strValue = "old";
                mgr.GetExtParamValueByKey(addr, "key", strValue);
                return Tell(strValue);
            },
            Tell("old")),
    };
}

std::vector<COperation> HighSpeedSelections() {
    CContainerMgr& mgr = CContainerMgr::Instance();
    using Selection = int (CContainerMgr::*)(std::string&, int32_t);
    const COperationMaker of("CContainerMgr");
    const auto selection = [&](const char* pszName, Selection pSelection) {
        return of.Answering(
            pszName,
            [&mgr, pSelection] {
                std::string strNvrCode = "old";
                const int iRet = (mgr.*pSelection)(strNvrCode, 1);
                return Tell(iRet, strNvrCode);
            },
            Tell(ORVA_FAIL, "old"));
    };
    return {
        of.Silent("UpdateHighSpeedNvrInfo", [&mgr] { ReportNvr(mgr); }),
        selection("GetHighSpeedNvrCode", &CContainerMgr::GetHighSpeedNvrCode),
        selection("GetPicHighSpeedNvrCode", &CContainerMgr::GetPicHighSpeedNvrCode),
        of.Silent("SetUptadeFlag", [&mgr] { mgr.SetUptadeFlag("", true); }),
    };
}

/// The operations of every registry, on what strNodeId names.
std::vector<COperation> Operations(const std::string& strNodeId) {
    std::vector<COperation> operations;
    for (const auto& ofRegistry :
         {NodeQuestions(strNodeId), NodeChanges(strNodeId), ContainerTable(strNodeId),
          ContainerStates(strNodeId), ContainerTasks(strNodeId), HighSpeedSelections()}) {
        operations.insert(operations.end(), ofRegistry.begin(), ofRegistry.end());
    }
    return operations;
}

std::string DescribeNode(const CNode& node) {
    std::list<std::string> containerList;
    node.GetContainerList(containerList);
    return Tell(node.GetNodeId(), node.IsOnline(), node.GetMemberStatus(), containerList.size(),
                node.GetTotalResource().GetCpu(), node.GetCurResource().GetCpu());
}

std::string DescribeContainer(CContainer container) {
    std::list<CResourceTask> taskList;
    container.GetResoureTask(taskList);
    std::string strTasks;
    for (const CResourceTask& task : taskList) {
        strTasks += task.GetTaskId() + ",";
    }
    KeyValueMap privateInfo;
    container.GetAllPrivateInfo(privateInfo);
    std::map<std::string, int> processTable;
    container.GetProcessState(processTable);
    return Tell(container.GetNodeId(), container.GetContainerType(), container.IsOnline(),
                container.IsFaultShift(), container.IsSupportFaultShift(),
                container.GetFaultStatus(), container.GetMemberStatus(),
                container.IsNeedUpdateResTask(), container.GetUptadeFlag(), strTasks,
                privateInfo["key"], processTable.size(), container.GetTotalResource().GetCpu(),
                container.GetStatus().GetCurSysResource().GetCpu(),
                container.IsReportStatusOutTime(NUMERIC_REPORT_AGE - 1));
}

class LockFailure : public CHostTest {
protected:
    LockFailure() {
        SetClock(NUMERIC_START);
        CNodeMgr::Instance().Init({MakeBusyNode(KNOWN), MakeBusyNode("n2")});
        CNodeMgr::Instance().SetContainerShiftFaultTimes(FAULTY, 3);
        const CContainerAddr addr(KNOWN, CONTAINER_TYPE_CLOUD_STORAGE);
        CContainerMgr::Instance().Init({{addr, MakeBusyContainer(addr)}});
        AdvanceClock(NUMERIC_REPORT_AGE);
        ReportNvr(CContainerMgr::Instance());
        m_logger.Clear();
    }

    ~LockFailure() override {
        CNodeMgr::Instance().Init({});
        CNodeMgr::Instance().ClearContainerShiftStatus(std::list<std::string>{KNOWN, UNKNOWN});
        CContainerMgr::Instance().Init({});
    }

    /// Everything that the registries hold, what was logged since the last time, and how often
    /// the store was called.
    std::tuple<std::vector<std::string>, std::vector<CLogLine>, unsigned int> State() {
        const std::vector<CLogLine> lines = m_logger.GetLines();
        std::vector<std::string> model = {
            Tell(CNodeMgr::Instance().GetSize(),
                 CNodeMgr::Instance().GetContainerShiftFaultTimes(FAULTY))};
        std::list<CNode> nodeList;
        CNodeMgr::Instance().GetAllNode(nodeList);
        for (const CNode& node : nodeList) {
            model.push_back(DescribeNode(node));
        }
        ContainerMap containerMap;
        CContainerMgr::Instance().GetAllContainer(containerMap);
        for (const auto& [addr, container] : containerMap) {
            model.push_back(DescribeContainer(container));
        }
        m_logger.Clear();
        return {model, lines, m_pStore->GetCallCount()};
    }

    const CContainerAddr FAULTY{KNOWN, "A"};
};

class LockFailureOf : public LockFailure, public testing::WithParamInterface<COperation> {};

TEST_P(LockFailureOf, AnswersChangesNothingAndLogsNothing) {
    const auto before = State();
    std::string strAnswer;
    {
        const CRefusedLocks refused;
        strAnswer = GetParam().call();
    }
    EXPECT_EQ(strAnswer, GetParam().strWithoutLock);
    EXPECT_EQ(State(), before);
}

const auto NAME_OF_OPERATION = [](const testing::TestParamInfo<COperation>& info) {
    return info.param.strName;
};

INSTANTIATE_TEST_SUITE_P(Known, LockFailureOf, testing::ValuesIn(Operations(KNOWN)),
                         NAME_OF_OPERATION);
INSTANTIATE_TEST_SUITE_P(Unknown, LockFailureOf, testing::ValuesIn(Operations(UNKNOWN)),
                         NAME_OF_OPERATION);

class LockSuccessOf : public LockFailureOf {};

/// Without it the test above could pass on an operation that never does anything.
TEST_P(LockSuccessOf, AnswersOtherwiseOrChangesSomething) {
    const auto before = State();
    const std::string strAnswer = GetParam().call();
    EXPECT_NE(std::tuple(strAnswer, State()), std::tuple(GetParam().strWithoutLock, before));
}

INSTANTIATE_TEST_SUITE_P(Known, LockSuccessOf, testing::ValuesIn(Operations(KNOWN)),
                         NAME_OF_OPERATION);

TEST_F(LockFailure, NumberOfNodesIsReadWithoutTheLock) {
    const CRefusedLocks refused;
    EXPECT_EQ(CNodeMgr::Instance().GetSize(), 2U);
}

}  // namespace
