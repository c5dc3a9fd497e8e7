#include "cluster_engine/engine_fixture.h"

#include <algorithm>

#include "common_service/oper_common.h"
#include "framework_service/plugin_mgr.h"
#include "reference_host/host_settings.h"

std::vector<CEvent> CEventList::Of(EEvent eEvent) const {
    std::vector<CEvent> found;
    std::copy_if(m_events.begin(), m_events.end(), std::back_inserter(found),
                 [&](const CEvent& event) { return event.eEvent == eEvent; });
    return found;
}

std::string JobXml(const std::vector<CTestTask>& tasks) {
    std::string strXml = "<TaskList>";
    for (const CTestTask& task : tasks) {
        strXml += "<Task><TaskID>" + task.strId + "</TaskID><TaskName>" + task.strName +
                  "</TaskName><Disk>" + std::to_string(task.iDisk) + "</Disk><SupportShift>" +
                  (task.bMovable ? "1" : "0") + "</SupportShift></Task>";
    }
    return strXml + "</TaskList>";
}

std::string ConfigurationText(const CTestConfiguration& configuration) {
    const auto toText = [](bool bValue) { return bValue ? "true" : "false"; };
    return std::string(R"({"IsLoadBalance":)") + toText(configuration.bLoadBalance) +
           R"(,"IsFaultShift":)" + toText(configuration.bFaultShift) +
           R"(,"IsLoadBalanceOnePeriod":)" + toText(configuration.bOnePeriod) + "}";
}

CEngineTest::CEngineTest() {
    Configure({"X", "", PLUGIN_LIB_DIR, ""});
    Begin();
}

CEngineTest::~CEngineTest() {
    m_pEngine.reset();
    CPluginMgr::Instance().UnLoadAllPlugin();
    m_pStore->Put(Path("/ClusterConfig"), ConfigurationText({}));
    CFrameworkCommon::Instance().InitClusterConfigFromZK();
}

/// The configuration is process-wide, and stays where a document is missing.
void CEngineTest::ResetConfiguration() {
    SetStore(std::make_shared<CMemoryStore>());
    CClusterConfigZNodeInfo defaults;
    COperCommon::SetDataToZK(StorePath(STORE_NODE_CLUSTER_CONFIG).c_str(),
                             STORE_NODE_CLUSTER_CONFIG.uiBufLen, &defaults);
    CFrameworkCommon::Instance().InitClusterConfigFromZK();
}

void CEngineTest::Begin() {
    ResetConfiguration();
    m_pFailing = std::make_shared<CFailingStore>(m_pStore);
    m_pGate = std::make_shared<CGateStore>(m_pFailing);
    SetStore(m_pGate);
    m_pEngine = std::make_unique<CClusterEngine>(CEngineHost{m_events, m_runner, m_clock, *m_pGate},
                                                 m_settings);
}

void CEngineTest::Store(const std::vector<CStoredNode>& nodes) {
    m_pStore->Put(Path("/Cluster"), ClusterText(nodes));
}

void CEngineTest::Load() {
    std::string strWhy;
    ASSERT_EQ(m_pEngine->Load(m_iNow, strWhy), 0) << strWhy;
}

void CEngineTest::Restart() {
    m_pEngine.reset();
    CPluginMgr::Instance().UnLoadAllPlugin();
    EmptyRegistries();
    m_seen.clear();
    Begin();
    Load();
}

void CEngineTest::StartOver(const std::vector<CStoredNode>& nodes) {
    for (const auto& [strPath, strText] : Texts()) {
        m_pStore->Erase(strPath);
    }
    Store(nodes);
    m_iNow = NUMERIC_START;
    m_events.Clear();
    Restart();
    Settle();
}

CAnswer CEngineTest::Do(const InputBody& body) {
    const CAnswer answer = m_pEngine->Apply({m_iNow, body});
    m_pEngine->Commit();
    return answer;
}

CAnswer CEngineTest::Must(const InputBody& body) {
    const CAnswer answer = Do(body);
    EXPECT_EQ(answer.eFault, EFault::NONE)
        << InputName(body) << ": " << TextOf(answer.eFault).pszName << ", " << answer.strAbout;
    return answer;
}

void CEngineTest::Pass(int64_t iSeconds) {
    for (int64_t i = 0; i < iSeconds; ++i) {
        ++m_iNow;
        Do(CTick());
    }
}

void CEngineTest::PassReporting(int64_t iSeconds, const std::vector<CContainerAddr>& reporting) {
    for (int64_t i = 0; i < iSeconds; ++i) {
        if (i % 10 == 0) {
            for (const CContainerAddr& addr : reporting) {
                Must(ReportOf(addr));
            }
        }
        Pass(1);
    }
}

CContainerReport ReportOf(const CContainerAddr& addr) {
    std::list<CResourceTask> tasks;
    CContainerMgr::Instance().GetResTaskList(addr, tasks);
    CContainerReport report;
    report.container = addr;
    report.total = CFigures{1000, 1000, 1000, 1000, 1000};
    report.used = CFigures();
    if (addr.GetContainerType() == CONTAINER_TYPE_CLOUD_STORAGE) {
        return report;
    }
    report.tasks.emplace();
    for (const CResourceTask& task : tasks) {
        CReportedTask reported;
        reported.strTaskId = task.GetTaskId();
        reported.costs = CTaskForm(task).costs;
        report.used->iDisk += task.GetDisk();
        report.tasks->push_back(std::move(reported));
    }
    return report;
}

void CEngineTest::Settle() {
    for (const auto& [addr, container] : AllContainers()) {
        Must(ReportOf(addr));
    }
    Pass(1);
    ASSERT_EQ(m_events.Count(EEvent::SETTLED), 1U);
    m_events.Clear();
}

std::map<std::string, std::string> CEngineTest::Texts(const std::string& strBelow) {
    std::map<std::string, std::string> texts;
    if (const auto text = m_pStore->Get(strBelow); text) {
        texts[strBelow] = *text;
    }
    std::vector<std::string> children;
    m_pStore->List(strBelow, children);
    for (const std::string& strChild : children) {
        texts.merge(Texts((strBelow == "/" ? "" : strBelow) + '/' + strChild));
    }
    return texts;
}

CAnswer CEngineTest::Record(const std::vector<CTestTask>& tasks) {
    CJob job;
    std::list<CNode> nodes;
    CNodeMgr::Instance().GetAllNode(nodes);
    job.strNodeId = nodes.front().GetNodeId();
    job.uiJobType = 1001;
    job.strXml = JobXml(tasks);
    return Do(job);
}

std::vector<std::string> CEngineTest::TasksOf(const CContainerAddr& addr) {
    std::list<CResourceTask> tasks;
    CContainerMgr::Instance().GetResTaskList(addr, tasks);
    std::vector<std::string> ids;
    for (const CResourceTask& task : tasks) {
        ids.push_back(task.GetTaskId());
    }
    return ids;
}

std::string CEngineTest::NodeOf(const std::string& strTaskId) {
    for (const auto& [addr, container] : AllContainers()) {
        const std::vector<std::string> ids = TasksOf(addr);
        if (std::find(ids.begin(), ids.end(), strTaskId) != ids.end()) {
            return addr.GetNodeId();
        }
    }
    return "";
}
