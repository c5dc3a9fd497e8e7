#include "serve/metrics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>
#include <vector>

#include "serve/document_name.h"
#include "support/membership_fixture.h"
#include "support/temp_dir.h"

using std::chrono::milliseconds;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

/// A whole line of the text.
auto HasLine(const std::string& strLine) {
    return HasSubstr("\n" + strLine + "\n");
}

class Metrics : public CRegistryTest {
protected:
    std::string Text() const { return "\n" + m_metrics.Text(m_view, m_uiQueueLength); }

    void Answer(const InputBody& input, const CAnswer& answer) {
        m_metrics.CountInput(input, answer, milliseconds(2), milliseconds(30));
    }

    void Happen(EEvent eEvent, uint32_t uiTasks, const std::string& strTaskId = "") {
        CEvent event;
        event.eEvent = eEvent;
        event.uiTasks = uiTasks;
        event.strTaskId = strTaskId;
        m_metrics.CountEvent(event);
    }

    /// A cluster of two nodes, the container "A" of the second one offline.
    void Load() {
        membership::Framework().AddNodeAndContainer(
            {{"n1", MakeStoredNode("n1", {"A", "B"})}, {"n2", MakeStoredNode("n2", {"A"})}});
        CContainerMgr::Instance().SetContainerOnline({"n2", "A"}, false);
        CNodeMgr::Instance().SetNodeOnline("n2", false);
        CResourceTask task;
        task.SetTaskId("t");
        CContainerMgr::Instance().AddResourceTask({"n1", "A"}, {task});
        m_view.moment = CClusterMoment::Take();
        m_view.strNotReady.clear();
    }

    static CTaskResult Task(ETaskResult eResult, const std::string& strFault = "") {
        CTaskResult result;
        result.eResult = eResult;
        result.strFault = strFault;
        return result;
    }

    CClusterView m_view;
    std::size_t m_uiQueueLength = 0;
    CServiceMetrics m_metrics;
};

TEST_F(Metrics, InputsAreCountedByKindAndResult) {
    Answer(CNodeReport(), {});
    Answer(CNodeReport(), {});
    Answer(CNodeReport(), CAnswer::Refuse(EFault::UNKNOWN_NODE, "n"));
    CAnswer inPart;
    inPart.bInPart = true;
    Answer(CJob(), inPart);
    EXPECT_THAT(Text(),
                AllOf(HasLine(R"(cluster_inputs_total{kind="node_report",result="done"} 2)"),
                      HasLine(R"(cluster_inputs_total{kind="node_report",result="refused"} 1)"),
                      HasLine(R"(cluster_inputs_total{kind="job",result="in_part"} 1)"),
                      HasLine(R"(cluster_inputs_total{kind="tick",result="done"} 0)")));
}

TEST_F(Metrics, TimeOfAnInputIsToldByKindAndItsWaitForAll) {
    Answer(CDrain(), {});
    Answer(CJoin(), {});
    EXPECT_THAT(Text(),
                AllOf(HasLine(R"(cluster_input_duration_seconds_bucket{kind="drain",le="0.01"} 0)"),
                      HasLine(R"(cluster_input_duration_seconds_bucket{kind="drain",le="0.05"} 1)"),
                      HasLine(R"(cluster_input_duration_seconds_sum{kind="drain"} 0.03)"),
                      HasLine("cluster_input_wait_seconds_count 2"),
                      HasLine("cluster_input_wait_seconds_sum 0.004")));
}

TEST_F(Metrics, RefusalsHaveTheirReasonWhereverTheyHappen) {
    Answer(CLeave(), CAnswer::Refuse(EFault::STORE_AWAY, ""));
    m_metrics.CountRefused("queue_full", 3);
    m_metrics.CountRefused("queue_full");
    EXPECT_THAT(Text(), AllOf(HasLine(R"(cluster_refusals_total{reason="store_away"} 1)"),
                              HasLine(R"(cluster_refusals_total{reason="queue_full"} 4)"),
                              HasLine(R"(cluster_refusals_total{reason="no_room"} 0)")));
}

TEST_F(Metrics, TasksOfAJobAreCountedButNotThoseOfADryRun) {
    CAnswer answer;
    answer.tasks = {Task(ETaskResult::PLACED), Task(ETaskResult::PLACED),
                    Task(ETaskResult::REFUSED, "no_room")};
    Answer(CJob(), answer);
    Answer(CDryRun(), answer);
    EXPECT_THAT(Text(), AllOf(HasLine(R"(cluster_task_results_total{result="placed"} 2)"),
                              HasLine(R"(cluster_task_results_total{result="refused"} 1)"),
                              HasLine(R"(cluster_task_refusals_total{reason="no_room"} 1)")));
}

TEST_F(Metrics, EventsAreCountedWithTheTasksThatTheyPlaced) {
    Happen(EEvent::PLACED, 5);
    Happen(EEvent::PLACED, 0, "t");
    Happen(EEvent::SHIFTED, 2);
    Happen(EEvent::BALANCED, 1);
    EXPECT_THAT(Text(), AllOf(HasLine(R"(cluster_events_total{event="placed"} 2)"),
                              HasLine(R"(cluster_events_total{event="joined"} 0)"),
                              HasLine(R"(cluster_placements_total{by="job"} 6)"),
                              HasLine(R"(cluster_placements_total{by="shift"} 2)"),
                              HasLine(R"(cluster_placements_total{by="balance"} 1)"),
                              HasLine(R"(cluster_placements_total{by="report"} 0)")));
}

TEST_F(Metrics, ShiftsAreCountedByOutcome) {
    Happen(EEvent::SHIFT_STARTED, 4);
    Happen(EEvent::SHIFT_STARTED, 4);
    Happen(EEvent::SHIFT_GIVEN_UP, 4);
    Happen(EEvent::SHIFT_ENDED, 0);
    Happen(EEvent::SHIFT_ENDED, 3);
    EXPECT_THAT(Text(), AllOf(HasLine("cluster_shifts_started_total 2"),
                              HasLine(R"(cluster_shifts_total{outcome="all_moved"} 1)"),
                              HasLine(R"(cluster_shifts_total{outcome="left_over"} 1)"),
                              HasLine(R"(cluster_shifts_total{outcome="given_up"} 1)")));
}

TEST_F(Metrics, CallsOfAPluginAreToldByOperation) {
    m_metrics.CountPluginCall("rec", "Schedule", milliseconds(2), true);
    EXPECT_THAT(Text(), AllOf(HasLine(R"(cluster_plugin_call_duration_seconds_count{)"
                                      R"(operation="Schedule",plugin="rec"} 1)"),
                              Not(HasSubstr("cluster_plugin_calls_late_total{"))));
    m_metrics.CountPluginCall("rec", "Schedule", milliseconds(2000), false);
    EXPECT_THAT(Text(), HasLine(R"(cluster_plugin_calls_late_total{)"
                                R"(operation="Schedule",plugin="rec"} 1)"));
}

TEST_F(Metrics, StoreCallsAreToldByDocument) {
    m_metrics.CountStoreCall("write", Path("/Cluster"), milliseconds(2), 0);
    m_metrics.CountStoreCall("commit", "", milliseconds(2), 0);
    m_metrics.CountStoreCall("list", Path("/Engine/Assignment/n1"), milliseconds(2),
                             STORE_NODE_ABSENT);
    const std::string strCount = "cluster_store_call_duration_seconds_count";
    EXPECT_THAT(Text(),
                AllOf(HasLine(strCount + R"({document="cluster",operation="write"} 1)"),
                      HasLine(strCount + R"({document="several",operation="commit"} 1)"),
                      HasLine(strCount + R"({document="engine_assignment",operation="list"} 1)"),
                      Not(HasSubstr("cluster_store_call_failures_total{"))));
}

TEST_F(Metrics, FailedStoreCallsAreCountedAsSuch) {
    m_metrics.CountStoreCall("write", Path("/MERO/CGList"), milliseconds(2), 4711);
    EXPECT_THAT(Text(), HasLine(R"(cluster_store_call_failures_total{)"
                                R"(document="cg_list",operation="write"} 1)"));
}

TEST_F(Metrics, CommitsAreCountedWithTheirFailures) {
    m_metrics.CountCommit(milliseconds(2), 0);
    m_metrics.CountCommit(milliseconds(2), 4711);
    EXPECT_THAT(Text(), AllOf(HasLine("cluster_commit_duration_seconds_count 2"),
                              HasLine("cluster_commit_failures_total 1")));
}

TEST_F(Metrics, ClusterThatIsNotLoadedHasNoFigures) {
    m_uiQueueLength = 17;
    EXPECT_THAT(Text(), AllOf(HasLine("cluster_ready 0"), HasLine("cluster_queue_length 17"),
                              Not(HasSubstr("cluster_nodes"))));
}

TEST_F(Metrics, RegistriesAreCountedByType) {
    Load();
    m_view.engine.draining = {"n1"};
    CShiftView shift;
    shift.strType = "A";
    shift.uiWaiting = 4;
    m_view.engine.shifts = {shift, shift};
    EXPECT_THAT(Text(),
                AllOf(HasLine("cluster_ready 1"), HasLine("cluster_nodes 2"),
                      HasLine("cluster_nodes_offline 1"), HasLine("cluster_nodes_draining 1"),
                      HasLine(R"(cluster_containers{type="A"} 2)"),
                      HasLine(R"(cluster_containers_offline{type="A"} 1)"),
                      HasLine(R"(cluster_containers_offline{type="B"} 0)"),
                      HasLine(R"(cluster_tasks{type="A"} 1)"),
                      HasLine(R"(cluster_shifts_running{type="A"} 2)"),
                      HasLine(R"(cluster_tasks_waiting{type="A"} 8)")));
}

TEST_F(Metrics, DocumentsStandBesideTheirLimits) {
    Load();
    auto pDocuments = std::make_shared<std::map<std::string, CStoredDocument>>();
    (*pDocuments)["cluster"] = {true, std::string(1234, ' ')};
    (*pDocuments)["center_db"] = {};
    m_view.pDocuments = pDocuments;
    EXPECT_THAT(Text(),
                AllOf(HasLine(R"(cluster_document_bytes{document="cluster"} 1234)"),
                      HasLine(R"(cluster_document_limit_bytes{document="cluster"} 65535)"),
                      HasLine(R"(cluster_document_bytes{document="center_db"} 0)"),
                      HasLine(R"(cluster_document_limit_bytes{document="center_db"} 511)")));
}

TEST_F(Metrics, PluginsAndVersionsAreShown) {
    Load();
    CPluginView plugin;
    plugin.strName = "rec";
    plugin.bOutOfService = true;
    m_view.engine.plugins = {plugin};
    m_view.ullDecision = 99;
    m_view.ullMaster = 3;
    EXPECT_THAT(Text(),
                AllOf(HasLine(R"(cluster_plugin_out_of_service{plugin="rec"} 1)"),
                      HasLine("cluster_decision_version 99"), HasLine("cluster_master_version 3")));
}

TEST_F(Metrics, CountsFromSeveralThreadsAddUp) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this] {
            for (int k = 0; k < 1000; ++k) {
                Answer(CTick(), {});
                m_metrics.CountStoreCall("read", Path("/Cluster"), milliseconds(1), 0);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(Text(), AllOf(HasLine(R"(cluster_inputs_total{kind="tick",result="done"} 4000)"),
                              HasLine(R"(cluster_store_call_duration_seconds_count{)"
                                      R"(document="cluster",operation="read"} 4000)")));
}

TEST_F(Metrics, TextIsWhatPrometheusWantsIt) {
    Load();
    m_view.pDocuments = std::make_shared<const std::map<std::string, CStoredDocument>>();
    m_view.engine.plugins.resize(1);
    Happen(EEvent::PLACED, 1);
    m_metrics.CountRefused("with \"quotes\"\nand a line feed");
    m_metrics.CountPluginCall("rec", "Schedule", milliseconds(2), false);
    m_metrics.CountStoreCall("read", Path("/Cluster"), milliseconds(2), 1);
    const CTempDir dir;
    const std::string strFile = dir.WriteFile("metrics", m_metrics.Text(m_view, 1));
    EXPECT_EQ(std::system(("promtool check metrics < " + strFile).c_str()), 0);
}

TEST(DocumentNames, PathsAreNamedAfterTheirDocument) {
    const std::string strRoot = StorePath(ORVA_STORE_NODE{"", 0});
    EXPECT_EQ(DocumentName(strRoot + "/Cluster"), "cluster");
    EXPECT_EQ(DocumentName(strRoot + "/MERO/CGList"), "cg_list");
    EXPECT_EQ(DocumentName(strRoot + "/ClusterConfig"), "configuration");
    EXPECT_EQ(DocumentName(strRoot + "/Engine/Index"), "engine_index");
    EXPECT_EQ(DocumentName(strRoot + "/Engine/Assignment/n1/A/0"), "engine_assignment");
    EXPECT_EQ(DocumentName(strRoot + "/ClusterX"), "other");
    EXPECT_EQ(DocumentName("/elsewhere/Cluster"), "other");
}

}  // namespace
