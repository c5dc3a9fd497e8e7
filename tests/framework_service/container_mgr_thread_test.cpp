#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "reference_host/store.h"
#include "support/container_registry_fixture.h"

using namespace container_registry;

namespace {

class ContainerRegistryThreads : public ContainerRegistrySave {
protected:
    static constexpr int NUMERIC_THREADS = 4;
    static constexpr int NUMERIC_ROUNDS = 50;

    /// Runs the work on every thread, iRounds times each.
    static void RunOnThreads(int iRounds,
                             const std::function<void(int iThread, int iRound)>& work) {
        std::vector<std::thread> threads;
        for (int iThread = 0; iThread < NUMERIC_THREADS; ++iThread) {
            threads.emplace_back([&work, iRounds, iThread] {
                for (int iRound = 0; iRound < iRounds; ++iRound) {
                    work(iThread, iRound);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
};

TEST_F(ContainerRegistryThreads, NoAddedTaskIsLost) {
    RunOnThreads(NUMERIC_ROUNDS, [&](int, int iRound) {
        m_registry.AddResourceTask(CAM, {MakeTask(std::to_string(iRound), 1, 2)});
    });
    EXPECT_EQ(Get(CAM).GetTotalTask(), 200U);
    EXPECT_EQ(Get(CAM).GetTaskTotalDisk(), 200);
    EXPECT_EQ(Get(CAM).GetTaskTotalNet(), 400);
}

/// A store that leaves time between a read and the write after it.
class CSlowStore : public CMemoryStore {
public:
    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override {
        const int iRet = CMemoryStore::Read(strPath, pWatcher, answer);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return iRet;
    }
};

TEST_F(ContainerRegistryThreads, NoSavedEntryIsLost) {
    const auto pStore = std::make_shared<CSlowStore>();
    pStore->Put(Path("/CloudStorage"), Document(Entry("N0")));
    SetStore(pStore);
    const std::vector<std::string> nodes = {"N1", "N2", "N3", "N4"};
    std::string strEntries = Entry("N0");
    for (const std::string& strNodeId : nodes) {
        m_registry.AddContainer(MakeTable({{strNodeId, "MeroCloudStorage"}}));
        strEntries += "," + Entry(strNodeId);
    }
    RunOnThreads(1, [&](int iThread, int) {
        m_registry.SaveDataToZK({nodes[static_cast<std::size_t>(iThread)], "MeroCloudStorage"});
    });
    EXPECT_EQ(pStore->Get(Path("/CloudStorage")), Document(strEntries));
    EXPECT_EQ(pStore->GetCallCount(), 8U);
}

TEST_F(ContainerRegistryThreads, NoContainerIsSeenHalfChanged) {
    m_registry.SetResourceTask(CAM, {MakeTask("t", 0, 1)}, REPORT);
    RunOnThreads(NUMERIC_ROUNDS, [&](int iThread, int iRound) {
        if (iThread != 0) {
            for (const auto& [containerAddr, container] : Table()) {
                CContainer summed(container);
                summed.CalcTaskTotalNet();
                EXPECT_EQ(container.GetTaskTotalNet(), summed.GetTaskTotalNet());
            }
            return;
        }
        m_registry.SetResourceTask(CAM, std::list<CResourceTask>(20, MakeTask("t", 0, iRound)),
                                   REPORT);
    });
}

TEST_F(ContainerRegistryThreads, EveryOperationMayMeetEveryOther) {
    RunOnThreads(NUMERIC_ROUNDS, [&](int iThread, int iRound) {
        const CContainerAddr addr = (iThread + iRound) % 2 == 0 ? CAM : CLOUD;
        std::list<CResourceTask> tasks;
        std::string strValue;
        m_registry.AddContainer(MakeTable({addr}));
        m_registry.SetSystemResource(addr, MakeDisk(100), MakeDisk(iRound));
        m_registry.UpdateContainerReportTime(addr);
        m_registry.SetProcessState(addr, {{"p", iRound % 2}});
        m_registry.IsProcessRunning(addr);
        m_registry.SetResourceTask(addr, {MakeTask("t")}, REPORT);
        m_registry.AddResourceTask(addr, {MakeTask("u")});
        m_registry.GetResTaskList(addr, tasks);
        m_registry.RemoveResourceTask(addr, {"u"});
        m_registry.SaveDataToZK(addr);
        m_registry.SetContainerOnline(addr, false);
        m_registry.IsContainerOnline(addr);
        m_registry.SetContainerFaultShift(addr, true);
        m_registry.IsContainerSupportFaultShift(addr);
        m_registry.SetContainerDoingFaultShift(addr, true);
        m_registry.IsContainerDoingFaultShift(addr);
        m_registry.SetContainerMemberStatus(addr, 1);
        m_registry.SetContainerResTaskNeedUpdate(addr, false);
        m_registry.SetExtParam(addr, {{"k", "v"}});
        m_registry.SetExtParamValueByKey(addr, "k", "w");
        m_registry.GetExtParamValueByKey(addr, "k", strValue);
        m_registry.RemoveContainer(addr);
        m_registry.Init(Table());
    });
    m_registry.Init(MakeTable({CAM}));
    m_registry.AddResourceTask(CAM, {MakeTask("t")});
    EXPECT_THAT(TaskIds(Get(CAM)), ElementsAre("t"));
}

}  // namespace
