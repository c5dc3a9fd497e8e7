#include "reference_host/store.h"

#include "reference_host/sqlite_store.h"
#include "support/store_behaviour_suite.h"
#include "support/temp_dir.h"

namespace {

StoreOpener MakeMemoryPlace() {
    return [pStore = std::make_shared<CMemoryStore>()] { return pStore; };
}

StoreOpener MakeSqlitePlace() {
    return [pDir = std::make_shared<CTempDir>()]() -> std::shared_ptr<IStore> {
        std::string strError;
        return CSqliteStore::Open(pDir->File("store"), strError);
    };
}

/// A store that can do no more than it must.
class CPlainStore : public IStore {
public:
    int Read(const std::string&, StoreWatcher, CStoreAnswer&) override { return 0; }
    int Write(const std::string&, const std::string&) override { return 0; }
};

TEST(PlainStore, AnswersThatItNeitherListsNorCommits) {
    CPlainStore store;
    std::vector<std::string> children{"untouched"};
    EXPECT_EQ(store.List("/", children), STORE_NO_SUPPORT);
    EXPECT_EQ(children, std::vector<std::string>{"untouched"});
    EXPECT_EQ(store.Commit({}, {{"/a", "text"}}), STORE_NO_SUPPORT);
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Memory, StoreBehaviour,
                         testing::Values(CStoreKind{"Memory", &MakeMemoryPlace}));
INSTANTIATE_TEST_SUITE_P(Sqlite, StoreBehaviour,
                         testing::Values(CStoreKind{"Sqlite", &MakeSqlitePlace}));
INSTANTIATE_TEST_SUITE_P(Sqlite, LastingStoreBehaviour,
                         testing::Values(CStoreKind{"Sqlite", &MakeSqlitePlace}));
