#include "framework_service/copy_on_write.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <thread>
#include <vector>

#include "framework_service/container_mgr.h"
#include "support/host_fixture.h"

namespace {

TEST(CopyOnWrite, StartsEmptyAndReadsAsSuch) {
    const CCopyOnWrite<std::string> value;
    EXPECT_EQ(*value, "");
    EXPECT_TRUE(value->empty());
}

TEST(CopyOnWrite, CopiesShareUntilOneIsEdited) {
    CCopyOnWrite<std::string> original(std::string("before"));
    const CCopyOnWrite<std::string> copy(original);
    EXPECT_EQ(&*copy, &*original);
    original.Edit() = "after";
    EXPECT_EQ(*copy, "before");
    EXPECT_EQ(*original, "after");
}

TEST(CopyOnWrite, EditOfAnUnsharedValueStaysInPlace) {
    CCopyOnWrite<std::string> value(std::string("text"));
    const std::string* const pBefore = &*value;
    value.Edit() += "s";
    EXPECT_EQ(&*value, pBefore);
    EXPECT_EQ(*value, "texts");
}

TEST(CopyOnWrite, EditAfterTheCopyWentStaysInPlace) {
    CCopyOnWrite<std::string> value(std::string("text"));
    const std::string* const pBefore = &*value;
    { const CCopyOnWrite<std::string> copy(value); }
    EXPECT_EQ(&value.Edit(), pBefore);
}

TEST(CopyOnWrite, SurvivesAssignmentToItself) {
    CCopyOnWrite<std::string> value(std::string("text"));
    const CCopyOnWrite<std::string>& self = value;
    value = self;
    EXPECT_EQ(*value, "text");
}

TEST(CopyOnWrite, IsEmptyAfterBeingMovedFromAndUsableAgain) {
    CCopyOnWrite<std::string> value(std::string("text"));
    const CCopyOnWrite<std::string> moved(std::move(value));
    EXPECT_EQ(*moved, "text");
    EXPECT_EQ(*value, "");  // NOLINT(bugprone-use-after-move)
    value.Edit() = "new";
    EXPECT_EQ(*value, "new");
}

class Snapshots : public CHostTest {
protected:
    ~Snapshots() override { CContainerMgr::Instance().Init({}); }
};

CResourceTask MakeTask(unsigned int uiMark) {
    CResourceTask task;
    task.SetTaskId(std::to_string(uiMark));
    task.InsertSingleKeyValue("mark", std::to_string(uiMark));
    return task;
}

/// Everything in the container that writers set, as one text.
std::string Describe(const CContainer& container) {
    std::string strText;
    std::list<CResourceTask> tasks;
    container.GetResoureTask(tasks);
    for (const CResourceTask& task : tasks) {
        KeyValueMap privateInfo;
        task.GetAllPrivateInfo(privateInfo);
        strText += task.GetTaskId() + "=" + privateInfo["mark"] + ";";
    }
    KeyValueMap privateInfo;
    container.GetAllPrivateInfo(privateInfo);
    for (const auto& [strKey, strValue] : privateInfo) {
        strText += strKey + "=" + strValue + ";";
    }
    std::map<std::string, int> processes;
    container.GetProcessState(processes);
    for (const auto& [strProcess, iState] : processes) {
        strText += strProcess + "=" + std::to_string(iState) + ";";
    }
    return strText;
}

/// One random change through the registry, of every kind that touches shared storage.
void ChangeAtRandom(const CContainerAddr& addr, std::mt19937& random) {
    CContainerMgr& containerMgr = CContainerMgr::Instance();
    const auto uiMark = static_cast<unsigned int>(random() % 50);
    switch (random() % 6) {
        case 0:
            return containerMgr.SetResourceTask(addr, {MakeTask(uiMark), MakeTask(uiMark + 1)}, 0);
        case 1:
            return containerMgr.AddResourceTask(addr, {MakeTask(uiMark)});
        case 2:
            return containerMgr.RemoveResourceTask(addr, {std::to_string(uiMark)});
        case 3:
            return containerMgr.SetExtParamValueByKey(addr, "mark", std::to_string(uiMark));
        case 4:
            return containerMgr.SetProcessState(addr, {{"p", static_cast<int>(uiMark)}});
        default:
            return containerMgr.SetExtParam(addr, {{"whole", std::to_string(uiMark)}});
    }
}

TEST_F(Snapshots, HoldWhatWasTrueWhenTheyWereTaken) {
    const unsigned int uiSeed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(uiSeed));
    const std::vector<CContainerAddr> addrs = {{"node1", "A"}, {"node2", "A"}, {"node3", "B"}};
    ContainerMap containers;
    for (const CContainerAddr& addr : addrs) {
        containers[addr].SetNodeId(addr.GetNodeId());
    }
    CContainerMgr::Instance().Init(containers);
    OMAdapter::getInstance().setLogger(nullptr);

    constexpr unsigned int THREADS = 4;
    constexpr int STEPS = 400;
    std::vector<std::string> broken(THREADS);
    std::vector<std::thread> threads;
    for (unsigned int uiThread = 0; uiThread < THREADS; ++uiThread) {
        threads.emplace_back([&, uiThread] {
            std::mt19937 random(uiSeed + uiThread);
            std::vector<std::pair<ContainerMap, std::string>> snapshots;
            for (int iStep = 0; iStep < STEPS; ++iStep) {
                const CContainerAddr& addr = addrs[random() % addrs.size()];
                ChangeAtRandom(addr, random);
                ContainerMap snapshot;
                CContainerMgr::Instance().GetAllContainer(snapshot);
                std::string strThen = Describe(snapshot.at(addr));
                // A copy of the copy that goes its own way must not show in the snapshot either.
                CContainer other(snapshot.at(addr));
                other.AddTask(MakeTask(1000));
                other.SetValueByKey("mark", "other");
                snapshots.emplace_back(std::move(snapshot), addr.GetNodeId() + "|" + strThen);
            }
            for (const auto& [snapshot, strThen] : snapshots) {
                const std::string strNodeId = strThen.substr(0, strThen.find('|'));
                for (const auto& [addr, container] : snapshot) {
                    if (addr.GetNodeId() == strNodeId &&
                        strNodeId + "|" + Describe(container) != strThen) {
                        broken[uiThread] = strThen;
                    }
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(broken, testing::Each(testing::IsEmpty()));
}

}  // namespace
