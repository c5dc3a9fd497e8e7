#include <chrono>
#include <functional>
#include <future>
#include <list>
#include <string>
#include <utility>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/acting_logger.h"
#include "support/model_values.h"
#include "support/registry_fixture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

const CContainerAddr ADDR("n5", CONTAINER_TYPE_CLOUD_STORAGE);

CResourceTask CloudTask(const std::string& strId, const std::string& strService = "S") {
    return MakeTask(strId, 0, 1,
                    {{PSZ_TASK_PRODUCT_TYPE, "P"},
                     {PSZ_TASK_SERVICE_TYPE, strService},
                     {PSZ_TASK_REQ_STORAGE, "11"},
                     {PSZ_TASK_REQ_PIC_STORAGE, "22"},
                     {PSZ_TASK_LOW_PRI_BIT_RATE, "33"}});
}

/// Cloud storage containers "n0" to "n9", and a host that comes back from its log sink.
class CalledBack : public CRegistryTest {
protected:
    CalledBack() {
        ContainerMap containers;
        for (int i = 0; i < 10; ++i) {
            AddTo(containers, "n" + std::to_string(i));
        }
        m_mgr.Init(containers);
        OMAdapter::getInstance().setLogger(&m_acting);
    }
    ~CalledBack() override { OMAdapter::getInstance().setLogger(nullptr); }

    static void AddTo(ContainerMap& containers, const std::string& strNodeId) {
        const CContainerAddr addr(strNodeId, CONTAINER_TYPE_CLOUD_STORAGE);
        containers.emplace(addr, MakeContainer(strNodeId, CONTAINER_TYPE_CLOUD_STORAGE));
    }

    /// Runs the action in the first line of that format, or of any format.
    void OnceInLine(const std::string& strFormat, std::function<void()> action) {
        m_acting.SetAction([this, strFormat, action = std::move(action)](const std::string& strIn) {
            if (strIn.find(strFormat) != std::string::npos) {
                const auto act = action;
                m_acting.SetAction(nullptr);
                act();
            }
        });
    }

    static CContainer Find(const CContainerAddr& addr = ADDR) {
        const ContainerMap containers = AllContainers();
        const auto it = containers.find(addr);
        EXPECT_NE(it, containers.end());
        return it != containers.end() ? it->second : CContainer();
    }

    static std::map<std::string, Shown> ShowOthers() {
        std::map<std::string, Shown> shown;
        for (const auto& [addr, container] : AllContainers()) {
            if (!(addr == ADDR)) {
                shown.emplace(addr.GetNodeId(), Show(container));
            }
        }
        return shown;
    }

    CContainerMgr& m_mgr = CContainerMgr::Instance();
    CActingLogger m_acting;
};

TEST_F(CalledBack, ReportStaysWithItsContainerWhateverIsAddedAndRemovedMeanwhile) {
    const auto before = ShowOthers();
    int iLine = 0;
    m_acting.SetAction([&](const std::string&) {
        ContainerMap added;
        AddTo(added, "n4" + std::to_string(iLine++));
        m_mgr.AddContainer(added);
        m_mgr.RemoveContainer(CContainerAddr("n0", CONTAINER_TYPE_CLOUD_STORAGE));
    });
    m_mgr.SetResourceTask(ADDR, {CloudTask("t"), MakeTask("u")}, 0);
    EXPECT_GT(iLine, 2);
    const CContainer container = Find();
    EXPECT_THAT(TaskIds(container), ElementsAre("t", "u"));
    EXPECT_EQ(container.GetNodeId(), "n5");
    EXPECT_EQ(container.GetReqStorage(), 0) << "the last task decides, and lacks every key";
    EXPECT_TRUE(container.GetHasReportedFlag());
    for (const auto& [strNodeId, shown] : ShowOthers()) {
        if (before.count(strNodeId) != 0) {
            EXPECT_EQ(shown, before.at(strNodeId)) << strNodeId;
        } else {
            EXPECT_EQ(shown, Show(MakeContainer(strNodeId, CONTAINER_TYPE_CLOUD_STORAGE)));
        }
    }
}

TEST_F(CalledBack, ReportOfARemovedContainerGoesNowhere) {
    const auto before = ShowOthers();
    OnceInLine("can not find", [&] { m_mgr.RemoveContainer(ADDR); });
    m_mgr.SetResourceTask(ADDR, {CloudTask("t")}, 0);
    EXPECT_EQ(AllContainers().count(ADDR), 0U);
    EXPECT_EQ(ShowOthers(), before);
}

TEST_F(CalledBack, ReportLeavesTheContainerThatReplacesItsOwn) {
    const Shown fresh = Show(MakeContainer("n5", CONTAINER_TYPE_CLOUD_STORAGE));
    const ContainerMap all = AllContainers();
    const std::function<void()> replacements[] = {[&] {
                                                      m_mgr.RemoveContainer(ADDR);
                                                      m_mgr.AddContainer(all);
                                                  },
                                                  [&] { m_mgr.Init(all); }};
    for (const auto& replace : replacements) {
        OnceInLine("can not find", replace);
        m_mgr.SetResourceTask(ADDR, {MakeTask("t")}, 0);
        EXPECT_EQ(Show(Find()), fresh);
    }
}

TEST_F(CalledBack, ReportWithinAReportIsFollowedByTheRestOfTheOuterOne) {
    OnceInLine("m_bUpdateFlag", [&] {
        m_mgr.SetResourceTask(ADDR, {CloudTask("inner", "I")}, 0);
        m_mgr.AddResourceTask(ADDR, {MakeTask("added", 5, 6)});
    });
    CResourceTask last = CloudTask("second", "O");
    last.SetAllocInfoList({});
    m_mgr.SetResourceTask(ADDR, {CloudTask("first", "F"), last}, 0);
    const CContainer container = Find();
    EXPECT_THAT(TaskIds(container), ElementsAre("inner", "added"));
    EXPECT_EQ(container.GetTaskTotalNet(), 7);
    EXPECT_EQ(container.GetTaskTotalDisk(), 5);
    EXPECT_EQ(container.GetServiceType(), "O");
    EXPECT_FALSE(container.IsNeedUpdateResTask()) << "the outer report is the second";
}

TEST_F(CalledBack, ChangesOfTheSameContainerStay) {
    OnceInLine("m_bUpdateFlag", [&] {
        EXPECT_THAT(TaskIds(Find()), ElementsAre("t")) << "the table is replaced first";
        m_mgr.SetUptadeFlag("MPU-R", false);
        m_mgr.SetExtParamValueByKey(ADDR, "k", "v");
        m_mgr.SetContainerOnline(ADDR, false);
        m_mgr.SetContainerResTaskNeedUpdate(ADDR, false);
    });
    m_mgr.SetResourceTask(ADDR, {CloudTask("t", "MPU-R")}, 0);
    const CContainer container = Find();
    std::string strValue;
    EXPECT_EQ(container.GetValueByKey("k", strValue), 0);
    EXPECT_EQ(strValue, "v");
    EXPECT_FALSE(container.IsOnline());
    EXPECT_FALSE(container.IsNeedUpdateResTask());
    EXPECT_FALSE(container.GetUptadeFlag());
    EXPECT_EQ(container.GetServiceType(), "MPU-R");
    EXPECT_EQ(container.GetTranBandWidth(), 33);
    EXPECT_TRUE(container.GetHasReportedFlag());
}

TEST_F(CalledBack, CopiesTakenMeanwhileStayAsTheyWere) {
    std::vector<std::pair<CContainer, Shown>> copies;
    m_acting.SetAction([&](const std::string&) {
        const CContainer copy = Find();
        copies.emplace_back(copy, Show(copy));
    });
    m_mgr.SetResourceTask(ADDR, {CloudTask("t", "MPU-R"), MakeTask("u"), CloudTask("v")}, 0);
    m_mgr.SetContainerDoingFaultShift(ADDR, true);
    m_mgr.SetContainerOnline(ADDR, false);
    EXPECT_GT(copies.size(), 10U);
    for (const auto& [copy, shown] : copies) {
        EXPECT_EQ(Show(copy), shown);
    }
}

TEST_F(CalledBack, ReportGoesOnInATableThatWasCopiedAndChangedMeanwhile) {
    CNodeMgr::Instance().Init({MakeStoredNode("n5", {})});
    m_acting.ActInLinesOfActions();
    OnceInLine("m_bUpdateFlag", [&] {
        OnceInLine("available orva container",
                   [&] { m_mgr.SetExtParamValueByKey(ADDR, "k", "v"); });
        ContainerMap available;
        CFrameworkCommon::Instance().GetAvailableContainer(CONTAINER_TYPE_CLOUD_STORAGE, available);
        EXPECT_EQ(available.size(), 1U);
    });
    CResourceTask task = CloudTask("t");
    task.SetAllocInfoList({});
    m_mgr.SetResourceTask(ADDR, {task}, 0);
    const CContainer container = Find();
    std::string strValue;
    EXPECT_EQ(container.GetValueByKey("k", strValue), 0);
    EXPECT_TRUE(container.GetHasReportedFlag());
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocInfoList;
    container.GetAllocInfoList(allocInfoList);
    EXPECT_EQ(allocInfoList.size(), 1U);
}

TEST_F(CalledBack, LinesOutliveTheContainerThatTheyName) {
    const CContainerAddr addr("a node with a name that is long",
                              "a type with a name as long as that");
    const auto addAndRemoveInLine = [&] {
        CContainer container = MakeContainer(addr.GetNodeId(), addr.GetContainerType());
        container.SetProcessState({{"a process with a name that is long", PROCESS_STATE_STOPPED}});
        m_mgr.AddContainer({{addr, container}});
        OnceInLine("", [&] { m_mgr.RemoveContainer(addr); });
    };
    const std::string strNames =
        "containerType=" + addr.GetContainerType() + " nodeId=" + addr.GetNodeId();
    addAndRemoveInLine();
    m_mgr.SetContainerOnline(addr, false);
    addAndRemoveInLine();
    m_mgr.SetContainerDoingFaultShift(addr, true);
    addAndRemoveInLine();
    EXPECT_FALSE(m_mgr.IsProcessRunning(addr));
    EXPECT_THAT(m_acting.GetMessages(),
                ElementsAre(strNames + " set container offline",
                            "container code[" + addr.GetNodeId() + ":" + addr.GetContainerType() +
                                "], Doing Fault Shit[1].",
                            strNames + " process=a process with a name that is long stopped."));
    EXPECT_EQ(AllContainers().count(addr), 0U);
}

TEST_F(CalledBack, ContainerOfAUserMayBeChangedByItsLines) {
    CContainer container = MakeContainer("n", CONTAINER_TYPE_CLOUD_STORAGE);
    m_acting.SetAction([&](const std::string&) {
        container.AddTask(MakeTask("added"));
        container.RemoveResourceTask({"t"});
    });
    container.SetResourceTask({CloudTask("t"), MakeTask("u")}, 0);
    EXPECT_EQ(TaskIds(container).front(), "u");
    EXPECT_THAT(TaskIds(container), Contains("added"));
    CResourceTask task;
    container.GetFirstScheduleableTask(task, false, false, false, "k");
}

/// Every line about an unknown object.
const std::pair<const char*, void (*)()> UNKNOWN_OBJECTS[] = {
    {"SetContainerOnline", [] { CContainerMgr::Instance().SetContainerOnline({}, true); }},
    {"SetSystemResource", [] { CContainerMgr::Instance().SetSystemResource({}, {}, {}); }},
    {"SetProcessState", [] { CContainerMgr::Instance().SetProcessState({}, {}); }},
    {"SetResourceTask", [] { CContainerMgr::Instance().SetResourceTask({}, {}, 0); }},
    {"SaveDataToZK", [] { CContainerMgr::Instance().SaveDataToZK({}); }},
    {"GetResTaskList",
     [] {
         std::list<CResourceTask> tasks;
         CContainerMgr::Instance().GetResTaskList({}, tasks);
     }},
    {"RemoveResourceTask", [] { CContainerMgr::Instance().RemoveResourceTask({}, {}); }},
    {"AddResourceTask", [] { CContainerMgr::Instance().AddResourceTask({}, {}); }},
    {"SetContainerFaultShift", [] { CContainerMgr::Instance().SetContainerFaultShift({}, true); }},
    {"SetContainerDoingFaultShift",
     [] { CContainerMgr::Instance().SetContainerDoingFaultShift({}, true); }},
    {"SetSystemResource of a node", [] { CNodeMgr::Instance().SetSystemResource("", {}, {}); }}};

TEST_F(CalledBack, LineAboutAnUnknownObjectIsWrittenWithTheLockHeld) {
    for (const auto& [pszOperation, pOperation] : UNKNOWN_OBJECTS) {
        std::future<void> others;
        OnceInLine("", [&others, &pszOperation = pszOperation] {
            others = std::async(std::launch::async, [] {
                CContainerMgr::Instance().IsContainerOnline(ADDR);
                CNodeMgr::Instance().IsNodeOnline("");
            });
            EXPECT_EQ(others.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout)
                << pszOperation;
        });
        pOperation();
        ASSERT_TRUE(others.valid()) << pszOperation;
        others.wait();
    }
}

/// A store that does something in a call of its own.
class CActingStore : public CMemoryStore {
public:
    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override {
        const int iRet = CMemoryStore::Read(strPath, pWatcher, answer);
        m_inRead();
        return iRet;
    }

    std::function<void()> m_inRead = [] {};
};

class SaveCalledBack : public CalledBack {
protected:
    SaveCalledBack() {
        SetStore(m_pActing);
        m_mgr.SetResourceTask(ADDR, {CloudTask("t", "before")}, 0);
    }

    std::string Written() const { return m_pActing->Get(Path("/CloudStorage")).value_or(""); }

    const std::shared_ptr<CActingStore> m_pActing = std::make_shared<CActingStore>();
};

TEST_F(SaveCalledBack, WritesTheContainerAsItIsAfterTheRead) {
    m_pActing->m_inRead = [&] { m_mgr.SetResourceTask(ADDR, {CloudTask("t", "after")}, 0); };
    m_mgr.SaveDataToZK(ADDR);
    EXPECT_THAT(Written(), HasSubstr("\"after\""));
}

TEST_F(SaveCalledBack, WritesTheContainerThatIsThereAfterTheRead) {
    const ContainerMap all = AllContainers();
    m_pActing->m_inRead = [&] {
        m_mgr.RemoveContainer(ADDR);
        m_mgr.AddContainer(all);
        m_mgr.SetResourceTask(ADDR, {CloudTask("t", "other")}, 0);
    };
    m_mgr.SaveDataToZK(ADDR);
    EXPECT_THAT(Written(), HasSubstr("\"other\""));
}

TEST_F(SaveCalledBack, KeepsTheLockDuringTheStoreCalls) {
    std::future<bool> other;
    m_pActing->m_inRead = [&] {
        other = std::async(std::launch::async, [&] { return m_mgr.IsContainerOnline(ADDR); });
        EXPECT_EQ(other.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    };
    m_mgr.SaveDataToZK(ADDR);
    EXPECT_TRUE(other.get());
}

TEST_F(CalledBack, SelectionMayBeMadeInALineOfASelection) {
    SetClock(1000);
    for (const char* pszCode : {"a", "b", "c"}) {
        m_mgr.UpdateHighSpeedNvrInfo(pszCode, 100, 0, 1, 0, 1);
    }
    SetClock(1031);
    m_mgr.UpdateHighSpeedNvrInfo("d", 100, 0, 1, 0, 1);
    std::string strInner;
    OnceInLine("expire", [&] { m_mgr.GetHighSpeedNvrCode(strInner, 1); });
    std::string strOuter;
    EXPECT_EQ(m_mgr.GetHighSpeedNvrCode(strOuter, 1), 0);
    EXPECT_EQ(strInner, "d");
    EXPECT_EQ(strOuter, "d");
    EXPECT_THAT(m_acting.GetMessages().back(), HasSubstr("FreeBrandwidth:68"));
}

CContainer* g_pSorted = nullptr;
void (*g_pInComparison)() = nullptr;

bool ByDiskCalledBack(const CResourceTask& left, const CResourceTask& right) {
    if (g_pInComparison != nullptr) {
        std::exchange(g_pInComparison, nullptr)();
    }
    return left.GetDisk() < right.GetDisk();
}

/// Sorts three tasks by disk, with that done in the first comparison.
std::vector<std::string> SortWith(void (*pInComparison)()) {
    CContainer container;
    container.AddResourceTask({MakeTask("c", 3), MakeTask("a", 1), MakeTask("b", 2)});
    g_pSorted = &container;
    g_pInComparison = pInComparison;
    container.SortTaskTableByPrivateFunc(ByDiskCalledBack);
    return TaskIds(container);
}

TEST(SortCalledBack, FindsTheWholeTableAsItWas) {
    static CContainer copy;
    EXPECT_THAT(SortWith([] {
                    EXPECT_THAT(TaskIds(*g_pSorted), ElementsAre("c", "a", "b"));
                    copy = *g_pSorted;
                }),
                ElementsAre("a", "b", "c"));
    EXPECT_THAT(TaskIds(copy), ElementsAre("c", "a", "b"));
    copy = CContainer();
}

TEST(SortCalledBack, LosesNothingThatIsAddedAndKeepsNothingThatIsRemoved) {
    EXPECT_THAT(SortWith([] { g_pSorted->AddTask(MakeTask("new", 0)); }),
                ElementsAre("a", "b", "c", "new"));
    EXPECT_THAT(SortWith([] { g_pSorted->RemoveResourceTask({"b"}); }), ElementsAre("a", "c"));
    EXPECT_THAT(SortWith([] {
                    g_pSorted->SetResourceTask({MakeTask("c"), MakeTask("d"), MakeTask("a")}, 0);
                }),
                ElementsAre("a", "c", "d"));
    EXPECT_THAT(SortWith([] { g_pSorted->SetResourceTask({}, 0); }), IsEmpty());
}

}  // namespace
