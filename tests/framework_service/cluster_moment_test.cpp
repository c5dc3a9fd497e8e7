#include "framework_service/cluster_moment.h"

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/acting_logger.h"
#include "support/model_values.h"
#include "support/registry_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

CContainerAddr AddrOf(int i) {
    return {"n" + std::to_string(i), CONTAINER_TYPE_CLOUD_STORAGE};
}

using ShownContainers = std::map<CContainerAddr, Shown>;
using ShownNodes = std::map<std::string, Shown>;

Shown ShowNode(const CNode& node) {
    return {{"Id", node.GetNodeId()},
            {"MemberStatus", testing::PrintToString(node.GetMemberStatus())},
            {"Online", testing::PrintToString(node.IsOnline())},
            {"Disk", testing::PrintToString(node.GetCurResource().GetDisk())}};
}

ShownContainers ShowContainers() {
    ShownContainers shown;
    for (const auto& [addr, container] : AllContainers()) {
        shown.emplace(addr, Show(container));
    }
    return shown;
}

ShownNodes ShowNodes() {
    std::list<CNode> nodes;
    CNodeMgr::Instance().GetAllNode(nodes);
    ShownNodes shown;
    for (const CNode& node : nodes) {
        shown.emplace(node.GetNodeId(), ShowNode(node));
    }
    return shown;
}

CClusterMoment Now() {
    return CClusterMoment::Take().value();
}

/// Everything that a moment shows.
std::pair<ShownContainers, ShownNodes> ShowMoment(const CClusterMoment& moment) {
    std::pair<ShownContainers, ShownNodes> shown;
    moment.VisitContainers(0, [&](const CContainerAddr& addr, const CContainer* pContainer) {
        shown.first.emplace(addr, Show(*pContainer));
    });
    moment.VisitNodes(0, [&](const std::string& strNodeId, const CNode* pNode) {
        shown.second.emplace(strNodeId, ShowNode(*pNode));
    });
    return shown;
}

/// What was told of: the node id of a container and whether it is there.
std::vector<std::pair<std::string, bool>> ToldSince(const CClusterMoment& earlier) {
    std::vector<std::pair<std::string, bool>> told;
    EXPECT_TRUE(
        Now().VisitContainers(earlier.GetContainerNumber(),
                              [&](const CContainerAddr& addr, const CContainer* pContainer) {
                                  told.emplace_back(addr.GetNodeId(), pContainer != nullptr);
                              }));
    return told;
}

std::vector<std::pair<std::string, bool>> NodesToldSince(const CClusterMoment& earlier) {
    std::vector<std::pair<std::string, bool>> told;
    EXPECT_TRUE(Now().VisitNodes(earlier.GetNodeNumber(),
                                 [&](const std::string& strNodeId, const CNode* pNode) {
                                     told.emplace_back(strNodeId, pNode != nullptr);
                                 }));
    return told;
}

/// Tables of its own that follow the registries.
class CFollower {
public:
    void Follow(const CClusterMoment& moment) {
        FollowTable(
            m_containers, moment.GetContainerNumber(), m_ullContainers,
            [&](uint64_t ullSince, const auto& learn) {
                return moment.VisitContainers(ullSince, learn);
            },
            [](const CContainer& container) { return Show(container); });
        FollowTable(
            m_nodes, moment.GetNodeNumber(), m_ullNodes,
            [&](uint64_t ullSince, const auto& learn) {
                return moment.VisitNodes(ullSince, learn);
            },
            ShowNode);
    }

    const ShownContainers& GetContainers() const { return m_containers; }
    const ShownNodes& GetNodes() const { return m_nodes; }
    int GetRestarts() const { return m_iRestarts; }

private:
    template <typename Table, typename Visit, typename Read>
    void FollowTable(Table& table, uint64_t ullNow, uint64_t& ullSince, const Visit& visit,
                     const Read& read) {
        const auto learn = [&](const auto& key, const auto* pValue) {
            table.erase(key);
            if (pValue != nullptr) {
                table.emplace(key, read(*pValue));
            }
        };
        if (!visit(ullSince, learn)) {
            ++m_iRestarts;
            table.clear();
            EXPECT_TRUE(visit(0, learn));
        }
        ullSince = ullNow;
    }

    ShownContainers m_containers;
    ShownNodes m_nodes;
    uint64_t m_ullContainers = 0;
    uint64_t m_ullNodes = 0;
    int m_iRestarts = 0;
};

class ClusterMoment : public CRegistryTest {
protected:
    ClusterMoment() {
        for (int i = 10; i < 60; ++i) {
            AddNodeWithContainer(i);
        }
    }

    static void AddNodeWithContainer(int i) {
        const CContainerAddr addr = AddrOf(i);
        CNodeMgr::Instance().AddNode({{addr.GetNodeId(), MakeStoredNode(addr.GetNodeId())}});
        m_mgr.AddContainer({{addr, MakeContainer(addr.GetNodeId(), addr.GetContainerType())}});
    }

    /// One change of either table; now and then a load of all.
    static void ChangeAtRandom(std::mt19937& random) {
        const CContainerAddr addr = AddrOf(static_cast<int>(random() % 60));
        const bool bFlag = random() % 2 == 0;
        switch (random() % 16) {
            case 0:
                m_mgr.RemoveContainer(addr);
                break;
            case 1:
                CNodeMgr::Instance().RemoveNode(addr.GetNodeId());
                break;
            case 2:
            case 3:
                AddNodeWithContainer(static_cast<int>(random() % 60));
                break;
            case 4:
                m_mgr.SetSystemResource(addr, MakeDisk(100), MakeDisk(7));
                break;
            case 5:
                CNodeMgr::Instance().SetSystemResource(addr.GetNodeId(), MakeDisk(100),
                                                       MakeDisk(static_cast<int>(random() % 9)));
                break;
            case 6:
                CNodeMgr::Instance().SetMemberStatus({addr.GetNodeId()}, bFlag ? 1 : 0);
                break;
            case 7:
                m_mgr.AddResourceTask(addr, {MakeTask("t", 1, 2)});
                break;
            case 8:
                m_mgr.RemoveResourceTask(addr, {"t"});
                break;
            case 9:
                m_mgr.SetContainerOnline(addr, bFlag);
                break;
            case 10:
                m_mgr.SetUptadeFlag("MPU-R", bFlag);
                break;
            case 11:
                if (random() % 64 == 0) {
                    m_mgr.Init(AllContainers());
                }
                break;
            case 12:
                if (random() % 64 == 0) {
                    CNodeMgr::Instance().Init({MakeStoredNode("n1"), MakeStoredNode("n40")});
                }
                break;
            default:
                m_mgr.SetResourceTask(
                    addr, {MakeTask("a", 1, 1, {{PSZ_TASK_SERVICE_TYPE, "MPU-R"}}), MakeTask("b")},
                    0);
        }
    }

    static CContainerMgr& m_mgr;
};

CContainerMgr& ClusterMoment::m_mgr = CContainerMgr::Instance();

TEST_F(ClusterMoment, ShowsTheRegistriesAndKeepsShowingThem) {
    std::mt19937 random(7);
    std::vector<std::pair<CClusterMoment, std::pair<ShownContainers, ShownNodes>>> moments;
    for (int iStep = 0; iStep < 200; ++iStep) {
        ChangeAtRandom(random);
        moments.emplace_back(Now(), std::make_pair(ShowContainers(), ShowNodes()));
    }
    m_mgr.Init({});
    CNodeMgr::Instance().Init({});
    for (const auto& [moment, shown] : moments) {
        ASSERT_EQ(ShowMoment(moment), shown);
        for (int i = 0; i < 60; ++i) {
            const CContainerAddr addr = AddrOf(i);
            ASSERT_EQ(moment.FindContainer(addr) != nullptr, shown.first.count(addr) != 0);
            ASSERT_EQ(moment.FindNode(addr.GetNodeId()) != nullptr,
                      shown.second.count(addr.GetNodeId()) != 0);
        }
    }
}

TEST_F(ClusterMoment, TellsWhatHasChangedAndNothingElse) {
    const CClusterMoment before = Now();
    EXPECT_THAT(ToldSince(before), IsEmpty());
    m_mgr.SetContainerMemberStatus(AddrOf(40), CLUSTER_MEMBER_REMOVED);
    m_mgr.AddResourceTask(AddrOf(11), {MakeTask("t")});
    m_mgr.RemoveContainer(AddrOf(30));
    m_mgr.RemoveContainer(AddrOf(20));
    AddNodeWithContainer(30);
    EXPECT_THAT(ToldSince(before),
                ElementsAre(Pair("n30", false), Pair("n20", false), Pair("n11", true),
                            Pair("n30", true), Pair("n40", true)));
    EXPECT_THAT(NodesToldSince(before), ElementsAre(Pair("n30", true)));
    CNodeMgr::Instance().SetMemberStatus({"n12", "unknown"}, CLUSTER_MEMBER_REMOVED);
    CNodeMgr::Instance().RemoveNode("n13");
    EXPECT_THAT(NodesToldSince(before),
                ElementsAre(Pair("n13", false), Pair("n12", true), Pair("n30", true)));
    EXPECT_THAT(ToldSince(Now()), IsEmpty());
}

TEST_F(ClusterMoment, QuestionsAreNoChanges) {
    const CClusterMoment before = Now();
    std::list<CResourceTask> tasks;
    m_mgr.GetResTaskList(AddrOf(10), tasks);
    m_mgr.IsProcessRunning(AddrOf(10));
    m_mgr.SetContainerMemberStatus({"unknown", "A"}, CLUSTER_MEMBER_REMOVED);
    AllContainers();
    EXPECT_EQ(Now().GetContainerNumber(), before.GetContainerNumber());
    EXPECT_EQ(Now().GetNodeNumber(), before.GetNodeNumber());
}

TEST_F(ClusterMoment, DoesNotKnowWhatALoadHasChanged) {
    const CClusterMoment before = Now();
    m_mgr.Init({});
    CNodeMgr::Instance().Init({});
    const auto none = [](const auto&, const auto*) { ADD_FAILURE(); };
    EXPECT_FALSE(Now().VisitContainers(before.GetContainerNumber(), none));
    EXPECT_FALSE(Now().VisitNodes(before.GetNodeNumber(), none));
    EXPECT_FALSE(before.VisitContainers(Now().GetContainerNumber(), none)) << "a later moment's";
    EXPECT_TRUE(Now().VisitContainers(0, none));
}

TEST_F(ClusterMoment, ForgetsMoreRemovalsThanAreLeft) {
    const CClusterMoment before = Now();
    for (int i = 10; i < 35; ++i) {
        m_mgr.RemoveContainer(AddrOf(i));
    }
    EXPECT_EQ(ToldSince(before).size(), 25U);
    m_mgr.RemoveContainer(AddrOf(35));
    EXPECT_FALSE(
        Now().VisitContainers(before.GetContainerNumber(), [](const auto&, const auto*) {}));
}

TEST_F(ClusterMoment, FollowerHoldsWhatTheRegistriesHoldWhereverItIsTaken) {
    const unsigned int uiSeed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(uiSeed));
    std::mt19937 random(uiSeed);
    std::mt19937 lineRandom(uiSeed + 1);
    CFollower follower;
    CFollower lineFollower;
    CActingLogger logger;
    logger.SetAction([&](const std::string&) {
        if (lineRandom() % 4 == 0) {
            lineFollower.Follow(Now());
        } else if (lineRandom() % 8 == 0) {
            ChangeAtRandom(lineRandom);
        }
    });
    OMAdapter::getInstance().setLogger(&logger);
    for (int iStep = 0; iStep < 4000; ++iStep) {
        ChangeAtRandom(random);
        if (random() % 8 != 0) {
            continue;
        }
        const CClusterMoment now = Now();
        follower.Follow(now);
        lineFollower.Follow(now);
        ASSERT_EQ(follower.GetContainers(), ShowContainers());
        ASSERT_EQ(follower.GetNodes(), ShowNodes());
        ASSERT_EQ(lineFollower.GetContainers(), follower.GetContainers());
        ASSERT_EQ(lineFollower.GetNodes(), follower.GetNodes());
    }
    OMAdapter::getInstance().setLogger(&m_logger);
    EXPECT_LT(follower.GetRestarts(), 100) << "most is told, not read anew";
}

TEST_F(ClusterMoment, OneNumberOfATaskTableStandsForTheSameTasks) {
    std::mt19937 random(3);
    std::map<uint64_t, std::vector<Shown>> tables;
    for (int iStep = 0; iStep < 2000; ++iStep) {
        ChangeAtRandom(random);
        Now().VisitContainers(0, [&](const CContainerAddr&, const CContainer* pContainer) {
            const auto tasks = ShowAll(pContainer->GetTaskTable());
            const auto it = tables.emplace(pContainer->GetTaskTableNumber(), tasks).first;
            ASSERT_EQ(it->second, tasks);
        });
    }
    EXPECT_GT(tables.size(), 100U);
}

TEST_F(ClusterMoment, ATaskTableThatHasGrownBeginsWithWhatItWas) {
    std::mt19937 random(4);
    std::map<CContainerAddr, std::pair<uint64_t, std::vector<Shown>>> former;
    int iGrown = 0;
    for (int iStep = 0; iStep < 5000; ++iStep) {
        ChangeAtRandom(random);
        std::map<CContainerAddr, std::pair<uint64_t, std::vector<Shown>>> present;
        Now().VisitContainers(0, [&](const CContainerAddr& addr, const CContainer* pContainer) {
            const auto tasks = ShowAll(pContainer->GetTaskTable());
            present[addr] = {pContainer->GetTaskTableNumber(), tasks};
            const auto it = former.find(addr);
            if (it == former.end() || it->second.first < pContainer->GetTaskTableGrownSince()) {
                return;
            }
            const std::vector<Shown>& was = it->second.second;
            ASSERT_GE(tasks.size(), was.size());
            ASSERT_TRUE(std::equal(was.begin(), was.end(), tasks.begin()));
            iGrown += tasks.size() > was.size() ? 1 : 0;
        });
        former = std::move(present);
    }
    EXPECT_GT(iGrown, 50);
}

TEST_F(ClusterMoment, ATaskTableGrowsByAddedTasksAlone) {
    const auto grownSince = [] {
        return Now().FindContainer(AddrOf(10))->GetTaskTableGrownSince();
    };
    EXPECT_EQ(grownSince(), 0U);
    m_mgr.AddResourceTask(AddrOf(10), {MakeTask("a")});
    m_mgr.AddResourceTask(AddrOf(10), {MakeTask("b")});
    EXPECT_EQ(grownSince(), 0U);
    m_mgr.SetResourceTask(AddrOf(10), {MakeTask("a"), MakeTask("b")}, 0);
    const uint64_t ullReported = grownSince();
    EXPECT_NE(ullReported, 0U);
    m_mgr.AddResourceTask(AddrOf(10), {MakeTask("c")});
    EXPECT_EQ(grownSince(), ullReported);
    m_mgr.RemoveResourceTask(AddrOf(10), {"a"});
    EXPECT_GT(grownSince(), ullReported);
}

TEST_F(ClusterMoment, AReportOfFiguresKeepsTheNumberOfTheTaskTable) {
    const auto numberOf = [](int i) {
        return Now().FindContainer(AddrOf(i))->GetTaskTableNumber();
    };
    EXPECT_EQ(numberOf(10), 0U);
    m_mgr.SetResourceTask(AddrOf(10), {MakeTask("t")}, 0);
    const uint64_t ullReported = numberOf(10);
    EXPECT_NE(ullReported, 0U);
    m_mgr.SetSystemResource(AddrOf(10), MakeDisk(100), MakeDisk(1));
    m_mgr.SetContainerOnline(AddrOf(10), false);
    m_mgr.RemoveResourceTask(AddrOf(10), {"not there"});
    EXPECT_EQ(numberOf(10), ullReported);
    m_mgr.RemoveResourceTask(AddrOf(10), {"t"});
    EXPECT_NE(numberOf(10), ullReported);
}

}  // namespace
