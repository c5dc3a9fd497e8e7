#include "serve/engine_thread.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <mutex>

#include "framework_service/plugin_mgr.h"
#include "reference_host/host_settings.h"
#include "serve/broken_store.h"
#include "serve/comes_true.h"
#include "serve/store_watch.h"
#include "support/registry_fixture.h"
#include "support/scripted_plugin.h"
#include "support/temp_dir.h"

using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr int CODE_OUT_OF_TIME = 5;  // SQLite: somebody else has the file locked
constexpr int CODE_FULL = 13;        // SQLite: no room on the disk
constexpr char PSZ_RECORDER[] = "MeroRecord";

/// The library's clock is that of the tests.
class CNoClock : public IStepClock {
public:
    void Set(int64_t /*iSecond*/) override {}
};

CContainerReport RecorderReport(const std::string& strNodeId) {
    CContainerReport report;
    report.container.strNodeId = strNodeId;
    report.container.strType = PSZ_RECORDER;
    report.total = CFigures{1000, 1000, 1000, 1000, 1000};
    report.used = CFigures();
    return report;
}

CJob Job(const std::string& strTaskId, uint32_t uiJobType = 1001) {
    CJob job;
    job.strNodeId = "n1";
    job.uiJobType = uiJobType;
    job.strXml = "<TaskList><Task><TaskID>" + strTaskId +
                 "</TaskID><TaskName/><Disk>1</Disk><SupportShift>1</SupportShift></Task>"
                 "</TaskList>";
    return job;
}

EFault FaultOf(const CAnswer& answer) {
    return answer.eFault;
}

/// A cluster of two recorders on a memory store, run by an engine thread.
class EngineThread : public CRegistryTest {
protected:
    EngineThread() {
        Configure({"X", "", PLUGIN_LIB_DIR, ""});
        Store({{"n1", {PSZ_RECORDER}}, {"n2", {PSZ_RECORDER}}});
    }

    ~EngineThread() override {
        m_pThread.reset();
        CPluginMgr::Instance().UnLoadAllPlugin();
    }

    void Store(const std::vector<CStoredNode>& nodes) {
        m_pStore->Put(Path("/Cluster"), ClusterText(nodes));
    }

    /// Returns when the first load was tried.
    void Start() {
        m_pQueue = std::make_unique<CInputQueue>(m_settings.uiQueueInputs);
        m_pThread = std::make_unique<CEngineThread>(
            CServiceContext{*m_pQueue, m_view, m_log, m_metrics, m_settings}, m_texts, m_pBroken,
            m_clock, [this](const CLoadReport& report) {
                const std::lock_guard<std::mutex> guard(m_mutex);
                m_loads.push_back(report);
            });
        m_pThread->Start();
        ASSERT_TRUE(ComesTrue([this] { return !Loads().empty(); }));
    }

    /// Both recorders have reported, and a second has passed.
    void Settle() {
        Start();
        Ask(RecorderReport("n1"));
        Ask(RecorderReport("n2"));
        m_pQueue->PushTick();
        ASSERT_TRUE(ComesTrue([this] { return !m_view.Get()->bSettling; }));
    }

    std::vector<CLoadReport> Loads() {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return m_loads;
    }

    std::future<std::vector<CAnswer>> Push(std::vector<InputBody> inputs) {
        const auto pPromise = std::make_shared<std::promise<std::vector<CAnswer>>>();
        EXPECT_EQ(m_pQueue->Push(std::move(inputs),
                                 [pPromise](std::vector<CAnswer> answers) {
                                     pPromise->set_value(std::move(answers));
                                 }),
                  CInputQueue::EPush::TAKEN);
        m_pQueue->HandOver();
        return pPromise->get_future();
    }

    CAnswer Ask(InputBody input) { return Push({std::move(input)}).get().at(0); }

    /// The engine's thread is busy until what this returns is set.
    std::promise<void> Occupy() {
        std::promise<void> release;
        const auto pReached = std::make_shared<std::promise<void>>();
        std::shared_future<void> released = release.get_future().share();
        m_pQueue->Push({RecorderReport("n1")}, [pReached, released](const auto&) {
            pReached->set_value();
            released.wait();
        });
        m_pQueue->HandOver();
        pReached->get_future().wait();
        return release;
    }

    std::vector<CEvent> Events() {
        std::vector<CNumberedEvent> read;
        uint64_t ullSince = 0;
        m_log.Read(ullSince, 10000, read);
        std::vector<CEvent> events;
        for (const CNumberedEvent& numbered : read) {
            events.push_back(numbered.event);
        }
        return events;
    }

    std::size_t Count(EEvent eEvent) {
        const std::vector<CEvent> events = Events();
        return static_cast<std::size_t>(
            std::count_if(events.begin(), events.end(),
                          [&](const CEvent& event) { return event.eEvent == eEvent; }));
    }

    /// How many writes there were, since they were taken last, to the engine's own documents.
    std::size_t EngineWrites() {
        const std::vector<std::string> writes = m_pBroken->TakeWrites();
        return static_cast<std::size_t>(
            std::count_if(writes.begin(), writes.end(), [](const std::string& strPath) {
                return strPath.find("/Engine/") != std::string::npos;
            }));
    }

    /// The nodes whose recorders have the task, as a question would be answered.
    std::vector<std::string> NodesWith(const std::string& strTaskId) {
        std::vector<std::string> nodes;
        m_view.Get()->moment->VisitContainers(
            0, [&](const CContainerAddr& addr, const CContainer* pContainer) {
                for (const CResourceTask& task : pContainer->GetTaskTable()) {
                    if (task.GetTaskId() == strTaskId) {
                        nodes.push_back(addr.GetNodeId());
                    }
                }
            });
        return nodes;
    }

    const std::shared_ptr<CBrokenStore> m_pBroken = std::make_shared<CBrokenStore>(m_pStore);
    CServiceSettings m_settings;
    CPublishedView m_view;
    CEventLog m_log{1};
    CServiceMetrics m_metrics;
    CDocumentTexts m_texts;
    CNoClock m_clock;
    std::unique_ptr<CInputQueue> m_pQueue;
    std::unique_ptr<CEngineThread> m_pThread;

private:
    std::mutex m_mutex;
    std::vector<CLoadReport> m_loads;  ///< guarded by m_mutex
};

}  // namespace

TEST_F(EngineThread, TellsWhatItLoadedStepByStep) {
    Start();

    const CLoadReport report = Loads().at(0);
    EXPECT_EQ(report.strFailure, "");
    const auto isStep = [](const char* pszWhat, const char* pszFound) {
        return testing::AllOf(Field(&CLoadReport::CStep::strWhat, pszWhat),
                              Field(&CLoadReport::CStep::strFound, pszFound));
    };
    EXPECT_THAT(
        report.steps,
        ElementsAre(isStep("the plug-ins", "cloud_storage, image, recording"),
                    isStep("the configuration", "fault shift on, load balance on"),
                    isStep("the versions", "absent"),
                    isStep("the cluster", "2 nodes, 2 containers"), isStep("the CG list", "absent"),
                    isStep("the centre database", "absent"), isStep("the manager", "absent"),
                    isStep("the standard tasks", "0"),
                    isStep("what the containers are to do", "0 tasks")));
    EXPECT_EQ(m_view.Get()->strNotReady, "");
    EXPECT_EQ(Count(EEvent::LOADED), 1U);
}

TEST_F(EngineThread, AnswersWhenItIsCommittedShownAndTold) {
    Settle();
    std::promise<std::vector<std::string>> seen;
    m_pQueue->Push({Job("t1")}, [&](const std::vector<CAnswer>& answers) {
        std::vector<std::string> found = NodesWith("t1");
        found.push_back(Count(EEvent::PLACED) == 1 ? "told" : "not told");
        found.push_back(EngineWrites() != 0 ? "written" : "not written");
        found.push_back(answers.at(0).tasks.at(0).strNodeId);
        seen.set_value(found);
    });
    m_pQueue->HandOver();

    const std::vector<std::string> found = seen.get_future().get();
    EXPECT_THAT(found, ElementsAre(found.back(), "told", "written", found.back()));
}

TEST_F(EngineThread, CommitsOnceForAllThatWait) {
    Store({{"n1", {PSZ_RECORDER}}});
    Start();
    Ask(RecorderReport("n1"));
    m_pQueue->PushTick();
    Ask(Job("first"));
    EngineWrites();
    Ask(Job("alone"));
    const std::size_t uiAlone = EngineWrites();
    ASSERT_NE(uiAlone, 0U);

    std::promise<void> release = Occupy();
    std::vector<std::future<std::vector<CAnswer>>> answers;
    for (const char* const pszTaskId : {"a", "b", "c", "d"}) {
        answers.push_back(Push({Job(pszTaskId)}));
    }
    release.set_value();

    for (auto& answer : answers) {
        EXPECT_EQ(FaultOf(answer.get().at(0)), EFault::NONE);
    }
    EXPECT_EQ(EngineWrites(), uiAlone);
    EXPECT_THAT(NodesWith("a"), ElementsAre("n1"));
    EXPECT_THAT(NodesWith("d"), ElementsAre("n1"));
}

TEST_F(EngineThread, AnswersABatchInItsOrder) {
    Settle();

    const std::vector<CAnswer> answers =
        Push({RecorderReport("n1"), RecorderReport("nobody"), Job("t1")}).get();

    ASSERT_EQ(answers.size(), 3U);
    EXPECT_EQ(answers[0].eFault, EFault::NONE);
    EXPECT_EQ(answers[1].eFault, EFault::UNKNOWN_CONTAINER);
    EXPECT_EQ(answers[2].tasks.at(0).strTaskId, "t1");
}

TEST_F(EngineThread, NamesAFullStoreWhereTheAnswerPromisedSomething) {
    Settle();
    m_pBroken->Break("/Engine/", CODE_FULL);

    EXPECT_EQ(FaultOf(Ask(Job("t1"))), EFault::STORE_FAILED);
    EXPECT_EQ(FaultOf(Ask(RecorderReport("n1"))), EFault::NONE);
    EXPECT_THAT(NodesWith("t1"), IsEmpty());
    EXPECT_EQ(Count(EEvent::PLACED), 0U);

    m_pBroken->Break("", 0);
    EXPECT_EQ(FaultOf(Ask(Job("t1"))), EFault::NONE);
    EXPECT_EQ(NodesWith("t1").size(), 1U);
    EXPECT_EQ(Count(EEvent::PLACED), 1U);
}

TEST_F(EngineThread, SaysOfWhatCouldNotBeStoredThatItMayTakeEffectLater) {
    Settle();
    m_pBroken->Break("/Engine/", CODE_FULL);
    EXPECT_THAT(Ask(Job("t1")).strAbout, HasSubstr("may still take effect"));

    m_pBroken->Break("", 0);
    m_pQueue->PushTick();
    EXPECT_TRUE(ComesTrue([this] { return NodesWith("t1").size() == 1; }));
}

TEST_F(EngineThread, NamesAStoreThatIsAwayAndGoesOnTakingReports) {
    Settle();
    m_pBroken->Break("/Engine/", CODE_OUT_OF_TIME);

    EXPECT_EQ(FaultOf(Ask(Job("t1"))), EFault::STORE_AWAY);
    EXPECT_EQ(FaultOf(Ask(Job("t2"))), EFault::STORE_AWAY);
    EXPECT_EQ(FaultOf(Ask(RecorderReport("n1"))), EFault::NONE);

    m_pQueue->PushTick();
    EXPECT_TRUE(ComesTrue([this] { return m_view.Get()->engine.bStoreAway; }));
    m_pBroken->Break("", 0);
    m_pQueue->PushTick();
    EXPECT_TRUE(ComesTrue([this] { return !m_view.Get()->engine.bStoreAway; }));
    EXPECT_EQ(FaultOf(Ask(Job("t2"))), EFault::NONE);
}

TEST_F(EngineThread, ShowsAStoreAsAwayThatIsReadAndTakesNoWrites) {
    Settle();
    m_pBroken->Break("/Engine/Assignment", CODE_OUT_OF_TIME);
    EXPECT_EQ(FaultOf(Ask(Job("t1"))), EFault::STORE_AWAY);
    m_pQueue->PushTick();
    EXPECT_TRUE(ComesTrue([this] { return m_view.Get()->engine.bStoreAway; }));

    m_pBroken->Break("", 0);
    m_pQueue->PushTick();
    EXPECT_TRUE(ComesTrue([this] { return !m_view.Get()->engine.bStoreAway; }));
    EXPECT_EQ(NodesWith("t1").size(), 1U);
}

TEST_F(EngineThread, LivesThroughTheSecondsThatItWorkedThrough) {
    m_settings.engine.iSilence = 3;
    m_settings.engine.iNobodyWatched = 2;
    Settle();
    const std::size_t uiSettlings = Count(EEvent::SETTLING);
    const std::time_t tmNow = std::time(nullptr);

    std::promise<void> release = Occupy();
    for (int iSecond = 1; iSecond <= 8; ++iSecond) {
        SetClock(tmNow + iSecond);
        m_pQueue->PushTick();
        m_pQueue->Push({RecorderReport("n2")}, [](const auto&) {});
    }
    release.set_value();

    EXPECT_TRUE(ComesTrue([this] { return Count(EEvent::OFFLINE) != 0; }));
    Ask(CNextMasterVersion());
    EXPECT_EQ(Count(EEvent::SETTLING), uiSettlings);
    EXPECT_THAT(Events(), Contains(testing::AllOf(Field(&CEvent::eEvent, EEvent::OFFLINE),
                                                  Field(&CEvent::strNodeId, "n1"))));
    EXPECT_THAT(Events(), Not(Contains(testing::AllOf(Field(&CEvent::eEvent, EEvent::OFFLINE),
                                                      Field(&CEvent::strType, PSZ_RECORDER),
                                                      Field(&CEvent::strNodeId, "n2")))));
}

TEST_F(EngineThread, SettlesAnewWhenReportsWereRefused) {
    m_settings.uiQueueInputs = 1;
    Settle();
    std::promise<void> release = Occupy();
    auto waiting = Push({RecorderReport("n1")});
    ASSERT_EQ(m_pQueue->Push({RecorderReport("n2")}, [](const auto&) {}), CInputQueue::EPush::FULL);
    m_pQueue->PushTick();
    release.set_value();
    waiting.get();

    EXPECT_TRUE(ComesTrue([this] {
        const std::vector<CEvent> events = Events();
        return std::any_of(events.begin(), events.end(), [](const CEvent& event) {
            return event.eEvent == EEvent::SETTLING && event.strCause == "reports were refused";
        });
    }));
}

TEST_F(EngineThread, WaitsForAClusterDocumentThatCannotBeRead) {
    m_pStore->Put(Path("/Cluster"), "{\n \"ClusterNode\": 7");
    CInputQueue told(1);
    CStoreWatch watch(m_pStore, m_texts, told);
    watch.Look();
    Start();

    EXPECT_THAT(Loads().at(0).strFailure, HasSubstr("cannot load the cluster"));
    EXPECT_THAT(m_view.Get()->strNotReady, HasSubstr("/CloudX/Cluster: line 2"));
    const CAnswer answer = Ask(RecorderReport("n1"));
    EXPECT_EQ(answer.eFault, EFault::NOT_LOADED);
    EXPECT_EQ(answer.strAbout, m_view.Get()->strNotReady);

    Store({{"n1", {PSZ_RECORDER}}});
    watch.Look();
    EXPECT_TRUE(ComesTrue([this] { return Loads().back().strFailure.empty(); }));
    EXPECT_EQ(m_view.Get()->strNotReady, "");
    EXPECT_EQ(FaultOf(Ask(RecorderReport("n1"))), EFault::NONE);
}

TEST_F(EngineThread, TriesToLoadAgainWhenNobodyTellsItOfAChange) {
    m_pBroken->Break("/Cluster", CODE_OUT_OF_TIME);
    Start();
    EXPECT_NE(m_view.Get()->strNotReady, "");

    m_pBroken->Break("", 0);
    EXPECT_TRUE(ComesTrue([this] { return m_view.Get()->strNotReady.empty(); }));
}

TEST_F(EngineThread, ShowsWhichPluginFileKeepsTheClusterFromBeingLoaded) {
    const CTempDir folder;
    std::filesystem::create_directory(folder.File("plugins"));
    folder.WriteFile("plugins/bad.so", "no plug-in");
    Configure({"X", "", folder.GetPath(), ""});
    Start();

    EXPECT_THAT(m_view.Get()->strNotReady, HasSubstr("cannot load the plug-ins: bad.so"));
    EXPECT_THAT(*m_view.Get()->pPluginFiles,
                ElementsAre(testing::AllOf(Field(&CPluginFile::strFile, "bad.so"),
                                           Field(&CPluginFile::strFailure, Not(IsEmpty())))));
}

TEST_F(EngineThread, BringsInADocumentThatSomebodyElseChanged) {
    Settle();
    Store({{"n1", {PSZ_RECORDER}}, {"n2", {PSZ_RECORDER}}, {"n3", {PSZ_RECORDER}}});
    m_pQueue->PushUrgent(CDocumentChanged{EDocument::CLUSTER});

    EXPECT_TRUE(ComesTrue([this] { return m_view.Get()->moment->FindNode("n3") != nullptr; }));
}

TEST_F(EngineThread, ShowsADocumentAsItWroteIt) {
    Settle();
    CJoin join;
    join.strNodeId = "n9";
    join.strIp = "10.0.0.9";
    join.types = {PSZ_RECORDER};
    ASSERT_EQ(FaultOf(Ask(join)), EFault::NONE);

    EXPECT_EQ(m_view.Get()->pDocuments->at("cluster").text, m_pStore->Get(Path("/Cluster")));
    EXPECT_THAT(*m_view.Get()->pDocuments->at("cluster").text, HasSubstr("n9"));
}

TEST_F(EngineThread, ShowsWhatReportsChangedSoonAfter) {
    Settle();
    CContainerReport report = RecorderReport("n2");
    report.total->iCpu = 4321;
    Ask(report);

    EXPECT_TRUE(ComesTrue([this] {
        const ViewPointer pView = m_view.Get();
        const CContainer* const pContainer = pView->moment->FindContainer({"n2", PSZ_RECORDER});
        return pContainer->GetTotalResource().GetCpu() == 4321;
    }));
}

TEST_F(EngineThread, WorksOffWhatWaitsWhenItIsStopped) {
    Settle();
    std::promise<void> release = Occupy();
    auto first = Push({Job("t1")});
    auto last = Push({Job("t2")});
    auto stopped = std::async(std::launch::async, [this] { m_pThread->Stop(); });
    ASSERT_TRUE(ComesTrue(
        [this] { return m_pQueue->Push({CBalanceNow()}, {}) == CInputQueue::EPush::CLOSED; }));
    release.set_value();
    stopped.get();

    EXPECT_EQ(FaultOf(first.get().at(0)), EFault::NONE);
    EXPECT_EQ(FaultOf(last.get().at(0)), EFault::NONE);
    EXPECT_FALSE(m_pThread->HasLateCall());
    EXPECT_EQ(m_view.Get()->strNotReady, "stopped");
    EXPECT_THAT(CPluginMgr::Instance().GetPluginFiles(), IsEmpty());
}

TEST_F(EngineThread, WritesAJournalThatBeginsWithItsState) {
    const CTempDir folder;
    m_settings.journal.strFile = folder.File("journal");
    m_settings.journal.ullMaxBytes = 1U << 20U;
    Settle();
    Ask(Job("t1"));
    m_pThread->Stop();

    std::ifstream stream(m_settings.journal.strFile);
    const std::string strText{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_THAT(strText, HasSubstr("\"state\""));
    EXPECT_THAT(strText, HasSubstr("\"input\":\"job\""));
    EXPECT_THAT(strText, HasSubstr("\"input\":\"tick\""));
}

TEST_F(EngineThread, EndsWhileAPluginDoesNotComeBack) {
    Configure({"X", "", SCRIPTED_LIB_DIR, ""});
    Store({{"n1", {PSZ_SCRIPTED_TYPE}}});
    m_settings.iPluginMilliseconds = 20;
    Start();
    void* const pLibrary = dlopen(SCRIPTED_LIB_DIR "/plugins/scripted.so", RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(pLibrary, nullptr);
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): what dlsym is for
    CScript& script = reinterpret_cast<ScriptFunc>(dlsym(pLibrary, "GetScript"))();
    std::promise<void> release;
    std::promise<void> over;
    script.readJob = [&](std::list<CResourceTask>&) {
        release.get_future().wait();
        over.set_value();
        return 0;
    };

    EXPECT_EQ(FaultOf(Ask(Job("t1", NUMERIC_SCRIPTED_JOB))), EFault::PLUGIN_FAILED);
    EXPECT_EQ(FaultOf(Ask(Job("t2", NUMERIC_SCRIPTED_JOB))), EFault::PLUGIN_OUT_OF_SERVICE);
    m_pThread->Stop();
    EXPECT_TRUE(m_pThread->HasLateCall());

    release.set_value();
    over.get_future().wait();
    script = CScript();
    dlclose(pLibrary);
}
