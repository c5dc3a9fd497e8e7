#include <atomic>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "framework_service/cluster_moment.h"
#include "framework_service/container_mgr.h"
#include "plugins/schedule_fixture.h"
#include "support/acting_logger.h"

using testing::AnyOf;
using testing::Each;
using testing::ElementsAre;
using testing::Eq;
using testing::Pair;

namespace {

class PlacementThreads : public CScheduleTest {
protected:
    PlacementThreads() : CScheduleTest("recording", "MeroRecord") {}
    ~PlacementThreads() override { OMAdapter::getInstance().setLogger(nullptr); }

    /// The node that a task of its own is bound to; empty for none.
    std::string NodeFor(const CTaskShape& shape) {
        CTaskContainerMap bindTable;
        unsigned long long ullNumber = 0;
        Plugin().TaskSchedule("node", Tasks({shape}), bindTable, ullNumber, false);
        return bindTable.empty() ? "" : bindTable.begin()->second.GetNodeId();
    }
};

TEST_F(PlacementThreads, CallsAtOnceAnswerAsOneAfterTheOther) {
    AddContainer("a", 300, 0);
    AddContainer("b", 100, 0);
    AddContainer("c", 200, 0, {{"held", 10}});
    std::vector<std::future<std::vector<std::string>>> threads;
    for (int iThread = 0; iThread < 4; ++iThread) {
        threads.push_back(std::async(std::launch::async, [this, iThread] {
            std::vector<std::string> nodes;
            for (int i = 0; i < 300; ++i) {
                nodes.push_back(NodeFor({"new" + std::to_string(iThread), 150}));
                nodes.push_back(NodeFor({"held", 10}) == "c" ? "b" : "not held");
            }
            return nodes;
        }));
    }
    for (auto& thread : threads) {
        EXPECT_THAT(thread.get(), Each(Eq("b"))) << "nothing that was tried out stays";
    }
}

TEST_F(PlacementThreads, CallsBesideChangesAnswerForAMomentOfTheirTime) {
    AddContainer("a", 100, 0);
    AddContainer("b", 500, 0);
    AddContainer("c", 600, 0);
    std::atomic<bool> bStop{false};
    std::thread host([this, &bStop] {
        for (int i = 0; !bStop; ++i) {
            const bool bOn = i % 2 == 0;
            CContainerMgr::Instance().SetContainerFaultShift(Addr("a"), bOn);
            SetMember("b", bOn);
            CContainerMgr::Instance().SetResourceTask(Addr("c"), Tasks({{"t", i % 9}}), 0);
        }
    });
    std::vector<std::future<std::vector<std::string>>> threads;
    for (int iThread = 0; iThread < 3; ++iThread) {
        threads.push_back(std::async(std::launch::async, [this, iThread] {
            std::vector<std::string> nodes;
            for (int i = 0; i < 500; ++i) {
                nodes.push_back(NodeFor({"new" + std::to_string(iThread), 10}));
            }
            return nodes;
        }));
    }
    for (auto& thread : threads) {
        EXPECT_THAT(thread.get(), Each(AnyOf("a", "b", "c")));
    }
    bStop = true;
    host.join();
    CContainerMgr::Instance().SetContainerFaultShift(Addr("a"), true);
    SetMember("b", true);
    EXPECT_EQ(NodeFor({"new", 10}), "b");
}

TEST_F(PlacementThreads, ALineWrittenWithTheTableLockedMayScheduleBesideAnotherThread) {
    AddContainer("a", 100, 0);
    AddContainer("b", 500, 0);
    CActingLogger logger;
    std::vector<std::string> nodes;
    logger.SetAction([&](const std::string&) { nodes.push_back(NodeFor({"in a line", 10})); });
    OMAdapter::getInstance().setLogger(&logger);
    std::atomic<bool> bStop{false};
    std::thread other([this, &bStop] {
        while (!bStop) {
            NodeFor({"beside", 10});
        }
    });
    for (int i = 0; i < 500; ++i) {
        CContainerMgr::Instance().SetContainerOnline(Addr("a"), false);
        CContainerMgr::Instance().SetContainerOnline(Addr("a"), true);
    }
    bStop = true;
    other.join();
    EXPECT_EQ(nodes.size(), 500U);
    EXPECT_THAT(nodes, Each(Eq("b"))) << "the line tells that a is offline";
}

TEST_F(PlacementThreads, ALineOfADecisionMayScheduleAndSeesNothingOfWhatWasTried) {
    AddContainer("a", 0, 0);
    AddContainer("b", 100, 0);
    CActingLogger logger;
    std::string strNode;
    logger.SetAction([&](const std::string&) { strNode = NodeFor({"in a line", 10}); });
    OMAdapter::getInstance().setLogger(&logger);
    Schedule({{"1", 500}, {"too large", 5000}});
    EXPECT_THAT(BoundNodes(), ElementsAre(Pair("1", "a")));
    EXPECT_EQ(strNode, "a");
}

TEST_F(PlacementThreads, ADecisionLeavesNoMomentBehind) {
    AddContainer("a", 0, 0, {{"t", 10}});
    NodeFor({"new", 10});
    const auto taskOf = [this] {
        return &CClusterMoment::Take()->FindContainer(Addr("a"))->GetTaskTable().front();
    };
    const CResourceTask* const pBefore = taskOf();
    CContainerMgr::Instance().AddResourceTask(Addr("a"), Tasks({{"u", 10}}));
    EXPECT_EQ(taskOf(), pBefore) << "nobody held the table, so nothing was copied";
}

}  // namespace
