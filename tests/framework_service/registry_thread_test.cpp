#include <atomic>
#include <functional>
#include <list>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "common_service/tarn_def.h"
#include "framework_service/plugin_mgr.h"
#include "support/registry_fixture.h"

using testing::SizeIs;

namespace {

constexpr unsigned int NUMERIC_THREADS = 8;
constexpr int NUMERIC_ROUNDS = 150;

CClusterCGInfo MakeThreadsCG(const std::string& strSuffix) {
    return MakeCG("n" + strSuffix, "f" + strSuffix, "i" + strSuffix);
}

/// What a thread does over and over, told apart by the thread's suffix.
using COperation = std::function<void(const std::string& strSuffix)>;

/// The registries with twice as many nodes as threads, all of which run container "A" for good.
class RegistriesUnderThreads : public CRegistryTest {
protected:
    RegistriesUnderThreads() {
        OMAdapter::getInstance().setLogger(nullptr);
        std::list<CNode> nodes;
        for (unsigned int i = 0; i < 2 * NUMERIC_THREADS; ++i) {
            nodes.push_back(MakeStoredNode("n" + std::to_string(i), {"A"}));
        }
        EXPECT_EQ(CFrameworkCommon::Instance().InitNodeAndContainer(nodes), 0);
    }

    /// Every thread runs all operations in a row, beginning with another one.
    static void Hammer(const std::vector<COperation>& operations) {
        std::vector<std::thread> threads;
        for (unsigned int uiThread = 0; uiThread < NUMERIC_THREADS; ++uiThread) {
            threads.emplace_back([&operations, uiThread] {
                for (std::size_t i = 0; i < NUMERIC_ROUNDS * operations.size(); ++i) {
                    operations[(i + uiThread) % operations.size()](std::to_string(uiThread));
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

    std::vector<COperation> NodesAndContainers();
    std::vector<COperation> NumbersAndLists();

    void ExpectZero(int iRet) { m_iFailures += iRet != 0; }

    std::atomic<int> m_iFailures{0};
    CNodeMgr& m_nodeMgr = CNodeMgr::Instance();
    CContainerMgr& m_containerMgr = CContainerMgr::Instance();
    CScheduleMgr& m_scheduleMgr = CScheduleMgr::Instance();
    CFrameworkCGCommon& m_cgRegistry = CFrameworkCGCommon::Instance();
};

std::vector<COperation> RegistriesUnderThreads::NodesAndContainers() {
    return {
        [this](const std::string& strSuffix) {
            const CContainerAddr addr("n" + strSuffix, "A");
            m_nodeMgr.AddNode({{"joining" + strSuffix, MakeStoredNode("joining" + strSuffix, {})}});
            m_nodeMgr.SetMemberStatus({addr.GetNodeId()}, CLUSTER_MEMBER_NORMAL);
            m_nodeMgr.SetSystemResource(addr.GetNodeId(), {}, {});
            m_nodeMgr.SetContainerShiftFaultTimes(addr,
                                                  m_nodeMgr.GetContainerShiftFaultTimes(addr) + 1);
        },
        [this](const std::string& strSuffix) {
            const CContainerAddr addr("joining" + strSuffix, "B");
            ExpectZero(m_containerMgr.AddContainer({{addr, CContainer()}}));
            m_containerMgr.SetProcessState(addr, {{"p", PROCESS_STATE_RUNNING}});
            ExpectZero(!m_containerMgr.IsProcessRunning(addr));
            m_containerMgr.SetSystemResource(addr, {}, {});
            m_containerMgr.SetUptadeFlag("", true);
            ExpectZero(m_containerMgr.RemoveContainer(addr));
        },
        [this](const std::string& strSuffix) {
            CResourceTask task;
            task.SetTaskId(strSuffix);
            const CContainerAddr addr("n" + strSuffix, "A");
            m_containerMgr.AddResourceTask(addr, {task});
            std::list<CResourceTask> taskList;
            m_containerMgr.GetResTaskList(addr, taskList);
            ExpectZero(taskList.size() != 1);
            m_containerMgr.RemoveResourceTask(addr, {strSuffix});
        },
        [this](const std::string& strSuffix) {
            m_containerMgr.UpdateHighSpeedNvrInfo("nvr" + strSuffix, 1000, 0, 1, 1, 1);
            std::string strNvr;
            ExpectZero(m_containerMgr.GetHighSpeedNvrCode(strNvr, 1));
            ExpectZero(m_containerMgr.GetPicHighSpeedNvrCode(strNvr, 1));
        },
    };
}

std::vector<COperation> RegistriesUnderThreads::NumbersAndLists() {
    return {
        [this](const std::string& strSuffix) {
            const CContainerAddr addr("n" + strSuffix, "shifted");
            m_scheduleMgr.AddShiftContainer(addr);
            ExpectZero(!m_scheduleMgr.IsScheduling());
            std::list<CContainerAddr> addresses;
            m_scheduleMgr.GetAllShiftContainer(addresses);
            m_scheduleMgr.RemoveShiftContainer(addr);
        },
        [this](const std::string&) {
            unsigned long long ullNumber = 0;
            ExpectZero(m_scheduleMgr.IncreaseDecisionVerNum(ullNumber));
            ExpectZero(m_scheduleMgr.GetDecisionVerNum() < ullNumber);
            ExpectZero(m_scheduleMgr.IncreaseMasterVerNum());
        },
        [this](const std::string& strSuffix) {
            ExpectZero(m_cgRegistry.AddSingleClusterCGInfo(MakeThreadsCG(strSuffix)));
            ExpectZero(m_cgRegistry.UpdateClusterCGInfoByFloatCode(MakeThreadsCG(strSuffix)));
            CClusterCGInfoList cached;
            m_cgRegistry.GetClusterCGInfoList(cached);
            ExpectZero(!cached.IsCGExist("f" + strSuffix));
            ExpectZero(m_cgRegistry.ReloadClusterCGInfoList());
            ExpectZero(m_cgRegistry.RemoveClusterCGInfo("f" + strSuffix));
        },
        [this](const std::string& strSuffix) {
            ContainerMap available;
            CFrameworkCommon::Instance().GetAvailableContainer("A", available);
            ExpectZero(available.count(CContainerAddr("n" + strSuffix, "A")) != 1);
        },
        [this](const std::string&) {
            CPluginMgr& pluginMgr = CPluginMgr::Instance();
            ExpectZero(!pluginMgr.GetPluginFiles().empty());
            ExpectZero(pluginMgr.GetPluginByName("ghost") != nullptr);
            ExpectZero(pluginMgr.GetPluginByJobType(1) != nullptr);
            ExpectZero(pluginMgr.GetPluginByContainerType("A") != nullptr);
            ExpectZero(pluginMgr.IsContainerSupportFaultShift("A"));
        },
        [this](const std::string& strSuffix) {
            m_nodeMgr.RemoveNode("joining" + strSuffix);
            ExpectZero(!m_nodeMgr.IsNodeExist("n" + strSuffix));
            CNode node;
            ExpectZero(!m_nodeMgr.GetNode("n" + strSuffix, node));
        },
    };
}

TEST_F(RegistriesUnderThreads, LoseAndInventNothing) {
    std::vector<COperation> operations = NodesAndContainers();
    const std::vector<COperation> others = NumbersAndLists();
    operations.insert(operations.end(), others.begin(), others.end());
    Hammer(operations);
    EXPECT_EQ(m_iFailures, 0);

    for (unsigned int i = 0; i < NUMERIC_THREADS; ++i) {
        m_nodeMgr.RemoveNode("joining" + std::to_string(i));
        const CContainerAddr addr("n" + std::to_string(i), "A");
        EXPECT_EQ(m_nodeMgr.GetContainerShiftFaultTimes(addr), NUMERIC_ROUNDS + 0U);
        m_nodeMgr.ClearContainerShiftStatus(addr.GetNodeId());
    }
    EXPECT_EQ(m_nodeMgr.GetSize(), 2 * NUMERIC_THREADS);
    EXPECT_THAT(AllContainers(), SizeIs(2 * NUMERIC_THREADS));
    EXPECT_FALSE(m_scheduleMgr.IsScheduling());
    constexpr auto INCREASES = NUMERIC_THREADS * static_cast<unsigned int>(NUMERIC_ROUNDS);
    EXPECT_EQ(m_scheduleMgr.GetDecisionVerNum(), INCREASES);
    EXPECT_EQ(m_scheduleMgr.GetMasterVerNum(), INCREASES);
    EXPECT_EQ(m_pStore->Get(Path("/Version")), R"({"DecisionVerNum":1200,"MasterVerNum":1200})"
                                               "\n");
    CClusterCGInfoList cached;
    m_cgRegistry.GetClusterCGInfoList(cached);
    EXPECT_TRUE(cached.Empty());
    EXPECT_EQ(m_pStore->Get(Path("/MERO/CGList")), "");
}

/// Each selection takes 16 of an NVR's 1600, and the last 16 are never given.
TEST_F(RegistriesUnderThreads, ReserveNoBandwidthTwice) {
    for (unsigned int i = 0; i < NUMERIC_THREADS; ++i) {
        m_containerMgr.UpdateHighSpeedNvrInfo("nvr" + std::to_string(i), 1600, 0, 1, 0, 1);
    }
    std::atomic<unsigned int> uiReserved{0};
    Hammer({[&](const std::string&) {
        std::string strNvr;
        uiReserved += m_containerMgr.GetHighSpeedNvrCode(strNvr, 1) == 0;
    }});
    EXPECT_EQ(uiReserved, NUMERIC_THREADS * 99);
}

/// Each thread asks for the same few entries: the registry admits each once.
TEST_F(RegistriesUnderThreads, AdmitEachCGOnce) {
    std::atomic<unsigned int> uiAdmitted{0};
    Hammer({[&](const std::string&) {
        for (const char* pszSuffix : {"0", "1", "2"}) {
            uiAdmitted += m_cgRegistry.AddSingleClusterCGInfo(MakeThreadsCG(pszSuffix)) == 0;
        }
    }});
    EXPECT_EQ(uiAdmitted, 3U);
}

}  // namespace
