#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <numeric>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/detail/snapshot_table.h"
#include "support/host_fixture.h"

namespace {

using CTable = CSnapshotTable<int, std::string>;

std::map<int, std::string> ToMap(const CTable& table) {
    std::map<int, std::string> map;
    int iBefore = -1;
    for (const auto& [iKey, strValue] : table) {
        EXPECT_GT(iKey, iBefore);
        iBefore = iKey;
        map.emplace(iKey, strValue);
    }
    return map;
}

CTable MakeTable(const std::map<int, std::string>& map) {
    CTable table;
    for (const auto& [iKey, strValue] : map) {
        EXPECT_NE(table.Insert(iKey, strValue), nullptr);
    }
    return table;
}

std::map<int, std::string> MakeMap(int iSize) {
    std::map<int, std::string> map;
    for (int i = 0; i < iSize; ++i) {
        map.emplace(2 * i, std::to_string(i));
    }
    return map;
}

class SnapshotTableOfSize : public testing::TestWithParam<int> {};

TEST_P(SnapshotTableOfSize, HoldsWhatTheMapHeldAndNothingElse) {
    const std::map<int, std::string> map = MakeMap(GetParam());
    CTable table = MakeTable(map);
    EXPECT_EQ(table.Size(), map.size());
    EXPECT_EQ(ToMap(table), map);
    for (int iKey = -1; iKey <= 2 * GetParam() + 1; ++iKey) {
        const auto it = map.find(iKey);
        const std::string* const pFound = std::as_const(table).Find(iKey);
        EXPECT_EQ(pFound != nullptr, it != map.end()) << iKey;
        EXPECT_EQ(table.Edit(iKey) != nullptr, it != map.end()) << iKey;
        if (pFound != nullptr && it != map.end()) {
            EXPECT_EQ(*pFound, it->second);
        }
    }
}

TEST_P(SnapshotTableOfSize, IsSearchedAlikeWhateverTheOrderOfTheKeys) {
    const CTable table = MakeTable(MakeMap(GetParam()));
    std::vector<int> keys(static_cast<std::size_t>(2 * GetParam() + 3));
    std::iota(keys.begin(), keys.end(), -1);
    std::vector<int> shuffled = keys;
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(1));
    for (const std::vector<int>& order :
         {keys, std::vector<int>(keys.rbegin(), keys.rend()), shuffled}) {
        CTable::CAscendingSearch search(table);
        for (const int iKey : order) {
            EXPECT_EQ(search.Find(iKey), table.Find(iKey)) << iKey;
        }
    }
}

TEST_P(SnapshotTableOfSize, EmptiesEntryByEntry) {
    std::map<int, std::string> map = MakeMap(GetParam());
    CTable table = MakeTable(map);
    while (!map.empty()) {
        const auto it = std::next(map.begin(), static_cast<std::ptrdiff_t>(map.size() / 2));
        EXPECT_EQ(table.Remove(it->first), it->second);
        map.erase(it);
        EXPECT_EQ(ToMap(table), map);
    }
    EXPECT_EQ(table.Size(), 0U);
    EXPECT_EQ(table.Remove(0), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Sizes, SnapshotTableOfSize,
                         testing::Values(0, 1, 15, 16, 17, 32, 33, 200));

TEST(SnapshotTable, BehavesAsAMapAndItsCopiesAsCopiesOfTheMap) {
    const unsigned int uiSeed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(uiSeed));
    std::mt19937 random(uiSeed);
    CTable table;
    std::map<int, std::string> map;
    std::vector<std::pair<CTable, std::map<int, std::string>>> snapshots;
    for (int iStep = 0; iStep < 4000; ++iStep) {
        const auto iKey = static_cast<int>(random() % 300);
        const std::string strValue = std::to_string(iStep);
        // Grows for the first half and shrinks from then on.
        const bool bRemove = random() % 4 == 0 || (iStep > 2000 && random() % 2 == 0);
        if (const std::string* const pNew = table.Insert(iKey, strValue); pNew != nullptr) {
            ASSERT_EQ(*pNew, strValue);
            ASSERT_TRUE(map.emplace(iKey, strValue).second);
        } else if (bRemove) {
            ASSERT_EQ(table.Remove(iKey), map.at(iKey));
            map.erase(iKey);
        } else {
            ASSERT_EQ(*table.Edit(iKey), map.at(iKey));
            *table.Edit(iKey) = strValue;
            map.at(iKey) = strValue;
        }
        if (random() % 16 == 0) {
            snapshots.emplace_back(table, map);
        }
    }
    EXPECT_EQ(ToMap(table), map);
    for (const auto& [snapshot, then] : snapshots) {
        ASSERT_EQ(ToMap(snapshot), then);
        ASSERT_EQ(snapshot.Size(), then.size());
    }
}

TEST(SnapshotTable, CopiesOnlyTheRunThatChangesHoweverItWasFilled) {
    const std::map<int, std::string> map = MakeMap(200);
    CTable filledBackwards;
    for (auto it = map.rbegin(); it != map.rend(); ++it) {
        filledBackwards.Insert(it->first, it->second);
    }
    for (CTable table : {MakeTable(map), filledBackwards}) {
        const CTable snapshot(table);
        table.Edit(0)->append("changed");
        EXPECT_EQ(*snapshot.Find(0), "0");
        EXPECT_NE(std::as_const(table).Find(0), snapshot.Find(0));
        EXPECT_EQ(std::as_const(table).Find(398), snapshot.Find(398));
    }
}

/// What a follower of the table knows, after it has followed.
void Follow(const CTable& table, std::uint64_t& ullSince, std::map<int, std::string>& known) {
    const auto learn = [&known](int iKey, const std::string* pValue) {
        known.erase(iKey);
        if (pValue != nullptr) {
            known.emplace(iKey, *pValue);
        }
    };
    if (!table.VisitChanges(ullSince, learn)) {
        known.clear();
        EXPECT_TRUE(table.VisitChanges(0, learn));
    }
    ullSince = table.LastChange();
}

TEST(SnapshotTable, TellsEachFollowerWhatHasChangedSinceItsNumber) {
    const unsigned int uiSeed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(uiSeed));
    std::mt19937 random(uiSeed);
    CTable table;
    std::map<int, std::string> known[3];
    std::uint64_t ullSince[3] = {};
    for (int iStep = 0; iStep < 20000; ++iStep) {
        // Grows and shrinks by turns, down to nothing.
        const bool bGrow = (iStep / 1000) % 2 == 0;
        const auto iKey = static_cast<int>(random() % 200);
        if (random() % 3 == 0) {
            if (std::string* const pValue = table.Edit(iKey); pValue != nullptr) {
                *pValue = std::to_string(iStep);
            }
        } else if (bGrow == (random() % 8 != 0)) {
            table.Insert(iKey, std::to_string(iStep));
        } else {
            table.Remove(iKey);
        }
        if (iStep % 3001 == 0) {
            CTable loaded = MakeTable(MakeMap(iStep % 2 == 0 ? 0 : 50));
            loaded.Succeed(table);
            table = loaded;
        }
        // One is always near, one far behind at times, one nearly always.
        const std::size_t uiFollower = random() % 64 == 0 ? 2 : random() % 8 == 0 ? 1 : 0;
        Follow(table, ullSince[uiFollower], known[uiFollower]);
        ASSERT_EQ(known[uiFollower], ToMap(table)) << iStep << ", follower " << uiFollower;
    }
}

TEST(SnapshotTable, TellsOfOneChangeInOneRunAlone) {
    CTable table = MakeTable(MakeMap(200));
    const std::uint64_t ullBefore = table.LastChange();
    table.Edit(100);
    int iTold = 0;
    EXPECT_TRUE(table.VisitChanges(ullBefore, [&iTold](int iKey, const std::string*) {
        EXPECT_EQ(iKey, 100);
        ++iTold;
    }));
    EXPECT_EQ(iTold, 1);
}

/// Copies a container whenever something is logged.
class CCopyingLogger : public Logger {
public:
    explicit CCopyingLogger(const CContainer& container) : m_container(container) {}

    void writeOperLog(ORVA_LOG_LEVEL, const char*, const char*, int, const char*, const char*,
                      ...) override {
        m_copies.push_back(m_container);
    }
    void writeTraceLog(const char*, int, const char*, const char*, ...) override {
        m_copies.push_back(m_container);
    }

    const std::vector<CContainer>& GetCopies() const { return m_copies; }

private:
    const CContainer& m_container;
    std::vector<CContainer> m_copies;
};

class CopyByTheLogger : public CHostTest {
protected:
    CopyByTheLogger() { OMAdapter::getInstance().setLogger(&m_copyingLogger); }
    ~CopyByTheLogger() override { OMAdapter::getInstance().setLogger(nullptr); }

    CContainer m_container;
    CCopyingLogger m_copyingLogger{m_container};
};

TEST_F(CopyByTheLogger, KeepsTheNewestSampleOfItsMoment) {
    CSystemResource total;
    total.SetDisk(100);
    CSystemResource sample;
    sample.SetDisk(10);
    m_container.SetCurResource(sample);
    m_container.DelDiskToLastestResource(11);
    m_container.SetTotalResource(total);
    EXPECT_EQ(m_container.GetDiskRatio(), 0.0F);
    ASSERT_EQ(m_copyingLogger.GetCopies().size(), 1U);
    CContainer copy = m_copyingLogger.GetCopies().front();
    copy.SetTotalResource(total);
    EXPECT_EQ(copy.GetDiskRatio(), 0.1F);
}

TEST_F(CopyByTheLogger, KeepsTheCloudStorageFiguresOfItsMoment) {
    CResourceTask task;
    task.InsertSingleKeyValue(PSZ_TASK_SERVICE_TYPE, "MPU-R");
    m_container.SetContainerType(CONTAINER_TYPE_CLOUD_STORAGE);
    m_container.SetResourceTask({task}, 0);
    EXPECT_EQ(m_container.GetServiceType(), "MPU-R");
    EXPECT_TRUE(m_container.GetUptadeFlag());
    // The first line tells of the missing product type.
    ASSERT_FALSE(m_copyingLogger.GetCopies().empty());
    const CContainer& copy = m_copyingLogger.GetCopies().front();
    EXPECT_EQ(copy.GetServiceType(), "");
    EXPECT_FALSE(copy.GetUptadeFlag());
}

class Snapshots : public CHostTest {
protected:
    Snapshots() { OMAdapter::getInstance().setLogger(nullptr); }
    ~Snapshots() override { CContainerMgr::Instance().Init({}); }
};

CResourceTask MakeMarkedTask(unsigned int uiMark) {
    CResourceTask task;
    task.SetTaskId(std::to_string(uiMark));
    task.InsertSingleKeyValue("mark", std::to_string(uiMark));
    task.InsertSingleKeyValue(PSZ_TASK_SERVICE_TYPE, std::to_string(uiMark % 3));
    return task;
}

/// Everything in the containers that writers set, as one text.
std::string Describe(const ContainerMap& containers) {
    std::string strText;
    for (const auto& [addr, container] : containers) {
        strText += "\n" + addr.GetNodeId() + addr.GetContainerType() + ":" +
                   std::to_string(container.GetStatus().GetCurSysResource().GetDisk()) + ";" +
                   std::to_string(container.GetDiskRatio()) + ";" + container.GetServiceType() +
                   ";" + std::to_string(container.GetUptadeFlag()) + ";";
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
    }
    return strText;
}

/// One random change through the registry, of every kind that touches shared storage.
void ChangeAtRandom(const CContainerAddr& addr, std::mt19937& random) {
    CContainerMgr& containerMgr = CContainerMgr::Instance();
    const auto iMark = static_cast<int>(random() % 50);
    const auto uiMark = static_cast<unsigned int>(iMark);
    switch (random() % 10) {
        case 0:
            return containerMgr.SetResourceTask(
                addr, {MakeMarkedTask(uiMark), MakeMarkedTask(uiMark + 1)}, 0);
        case 1:
            return containerMgr.AddResourceTask(addr, {MakeMarkedTask(uiMark)});
        case 2:
            return containerMgr.RemoveResourceTask(addr, {std::to_string(uiMark)});
        case 3:
            return containerMgr.SetExtParamValueByKey(addr, "mark", std::to_string(uiMark));
        case 4:
            return containerMgr.SetProcessState(addr, {{"p", iMark}});
        case 5:
            return containerMgr.SetExtParam(addr, {{"whole", std::to_string(uiMark)}});
        case 6:
            return containerMgr.SetUptadeFlag(std::to_string(uiMark % 3), uiMark % 2 == 0);
        case 7:
            containerMgr.RemoveContainer(addr);
            return;
        case 8: {
            CContainer container;
            container.SetNodeId(addr.GetNodeId());
            container.SetContainerType(addr.GetContainerType());
            containerMgr.AddContainer({{addr, container}});
            return;
        }
        default: {
            CSystemResource resource;
            resource.SetDisk(iMark);
            return containerMgr.SetSystemResource(addr, resource, resource);
        }
    }
}

/// Writes to every part of a copy that it may share with others.
void ChangeACopy(CContainer container) {
    container.AddTask(MakeMarkedTask(1000));
    container.SetValueByKey("mark", "other");
    container.SetProcessState({{"other", 1}});
    container.SetCurResource(CSystemResource());
    container.AddDiskToLastestResource(1000);
    container.SetServiceType("other");
}

TEST_F(Snapshots, HoldWhatWasTrueWhenTheyWereTaken) {
    const unsigned int uiSeed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(uiSeed));
    std::vector<CContainerAddr> addrs;
    ContainerMap containers;
    for (int i = 0; i < 40; ++i) {
        addrs.emplace_back("node" + std::to_string(i), CONTAINER_TYPE_CLOUD_STORAGE);
        containers[addrs.back()].SetContainerType(CONTAINER_TYPE_CLOUD_STORAGE);
    }
    CContainerMgr::Instance().Init(containers);

    constexpr unsigned int THREADS = 4;
    constexpr int STEPS = 200;
    std::vector<std::string> broken(THREADS);
    std::vector<std::thread> threads;
    for (unsigned int uiThread = 0; uiThread < THREADS; ++uiThread) {
        threads.emplace_back([&, uiThread] {
            std::mt19937 random(uiSeed + uiThread);
            std::vector<std::pair<ContainerMap, std::string>> snapshots;
            for (int iStep = 0; iStep < STEPS; ++iStep) {
                ChangeAtRandom(addrs[random() % addrs.size()], random);
                ContainerMap snapshot;
                CContainerMgr::Instance().GetAllContainer(snapshot);
                std::string strThen = Describe(snapshot);
                if (!snapshot.empty()) {
                    ChangeACopy(snapshot.begin()->second);
                }
                snapshots.emplace_back(std::move(snapshot), std::move(strThen));
            }
            for (const auto& [snapshot, strThen] : snapshots) {
                if (Describe(snapshot) != strThen) {
                    broken[uiThread] = strThen;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(broken, testing::Each(testing::IsEmpty()));
}

TEST_F(Snapshots, AreOfOneMoment) {
    // Far apart in the table, so that no run of it holds both.
    ContainerMap containers;
    for (int i = 100; i < 200; ++i) {
        containers[CContainerAddr("node" + std::to_string(i), "A")];
    }
    CContainerMgr::Instance().Init(containers);
    const CContainerAddr first("node199", "A");
    const CContainerAddr second("node100", "A");

    std::atomic<bool> bStop{false};
    std::thread writer([&] {
        for (int iMark = 1; !bStop; ++iMark) {
            CContainerMgr::Instance().SetProcessState(first, {{"mark", iMark}});
            CContainerMgr::Instance().SetProcessState(second, {{"mark", iMark}});
        }
    });
    const auto markOf = [](const ContainerMap& snapshot, const CContainerAddr& addr) {
        std::map<std::string, int> processes;
        snapshot.at(addr).GetProcessState(processes);
        return processes["mark"];
    };
    int iBroken = 0;
    for (int i = 0; i < 2000; ++i) {
        ContainerMap snapshot;
        CContainerMgr::Instance().GetAllContainer(snapshot);
        const int iAhead = markOf(snapshot, first) - markOf(snapshot, second);
        iBroken += iAhead != 0 && iAhead != 1;
    }
    bStop = true;
    writer.join();
    EXPECT_EQ(iBroken, 0);
}

}  // namespace
