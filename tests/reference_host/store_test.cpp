#include "reference_host/store.h"

#include "reference_host/sqlite_store.h"
#include "support/store_behaviour_suite.h"
#include "support/temp_dir.h"

namespace {

std::shared_ptr<IStore> OpenMemoryStore() {
    return std::make_shared<CMemoryStore>();
}

/// The folder goes after the store.
struct CStoreInTempDir {
    CTempDir dir;
    std::string strError;
    std::shared_ptr<CSqliteStore> pStore = CSqliteStore::Open(dir.File("store"), strError);
};

std::shared_ptr<IStore> OpenSqliteStore() {
    const auto pOwner = std::make_shared<CStoreInTempDir>();
    return {pOwner, pOwner->pStore.get()};
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Memory, StoreBehaviour,
                         testing::Values(CStoreKind{"Memory", &OpenMemoryStore}));
INSTANTIATE_TEST_SUITE_P(Sqlite, StoreBehaviour,
                         testing::Values(CStoreKind{"Sqlite", &OpenSqliteStore}));
