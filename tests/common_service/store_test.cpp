#include "common_service/reference/store.h"

#include "support/store_behaviour_suite.h"

namespace {

std::shared_ptr<IStore> OpenMemoryStore() {
    return std::make_shared<CMemoryStore>();
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Memory, StoreBehaviour,
                         testing::Values(CStoreKind{"Memory", &OpenMemoryStore}));
