#include <memory>
#include <string>
#include <vector>

#include "reference_host/store.h"
#include "support/container_registry_fixture.h"

using testing::IsEmpty;
using namespace container_registry;

namespace {

TEST_F(ContainerRegistrySave, OrdinaryTypeTouchesNoStore) {
    m_registry.SaveDataToZK(CAM);
    EXPECT_EQ(m_pStore->GetCallCount(), 0U);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerRegistrySave, NothingElseTouchesTheStore) {
    m_registry.SetResourceTask(CLOUD, {MakeTask("t")}, REPORT);
    m_registry.AddContainer(MakeTable({CLOUD}));
    m_registry.RemoveContainer(CLOUD);
    EXPECT_EQ(m_pStore->GetCallCount(), 0U);
}

TEST_F(ContainerRegistrySave, EveryFailingCallEndsInTheLog) {
    const CLogLine saving = Info("save cloud storage report info to zk", "container",
                                 "SaveCloudStorageReportInfoToZK", "alloc info list=0");
    struct COutcome {
        std::string strStored;
        std::vector<CLogLine> lines;
    };
    const std::vector<COutcome> outcomes = {
        {Document(Entry("N1")),
         {Err("GetDataFromZK", -7, "container", "SaveCloudStorageReportInfoToZK",
              "get cloud storage info from zk fail. nodeId: N1  cType: MeroCloudStorage"),
          saving}},
        {Document(Entry("N0")),
         {saving, Err("init cluster session, on successful response", -7, "container",
                      "SaveCloudStorageReportInfoToZK", "set cloud storage info to zk fail.")}},
        {Document(Entry("N0") + "," + Entry("N1")), {saving}}};
    const ShownTable before = Show(Table());
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        m_logger.Clear();
        m_pStore->Put(Path("/CloudStorage"), Document(Entry("N0")));
        m_pStore->FailCall(static_cast<unsigned int>(i + 1), -7);
        m_registry.SaveDataToZK(CLOUD);
        EXPECT_EQ(Stored(), outcomes[i].strStored) << i;
        EXPECT_EQ(m_logger.GetLinesOf("container"), outcomes[i].lines) << i;
        EXPECT_EQ(Show(Table()), before);
    }
    EXPECT_EQ(m_pStore->GetCallCount(), 2 * outcomes.size());
}

/// A store whose calls come back into the registry, on the thread that holds its lock.
class CReentrantStore : public CMemoryStore {
public:
    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override {
        CContainerMgr::Instance().SetExtParamValueByKey(CLOUD, "read", strPath);
        return CMemoryStore::Read(strPath, pWatcher, answer);
    }
};

TEST_F(ContainerRegistrySave, StoreMayComeBackOnTheSameThread) {
    SetStore(std::make_shared<CReentrantStore>());
    m_registry.SaveDataToZK(CLOUD);
    std::string strPath;
    m_registry.GetExtParamValueByKey(CLOUD, "read", strPath);
    EXPECT_EQ(strPath, Path("/CloudStorage"));
}

/// A store whose reads end the membership of the container that is being saved.
class CRemovingStore : public CMemoryStore {
public:
    int Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) override {
        CContainerMgr::Instance().RemoveContainer(CLOUD);
        return CMemoryStore::Read(strPath, pWatcher, answer);
    }
};

TEST_F(ContainerRegistrySave, SavesWhatItFoundThoughTheStoreTakesTheContainerAway) {
    const auto pStore = std::make_shared<CRemovingStore>();
    SetStore(pStore);
    m_registry.SaveDataToZK(CLOUD);
    EXPECT_EQ(pStore->Get(Path("/CloudStorage")), Document(Entry("N1")));
    EXPECT_EQ(Table().count(CLOUD), 0U);
}

}  // namespace
