#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include "reference_host/store.h"
#include "support/host_fixture.h"

/// Opens a store on data that every call shares: each time a store of its own, as another program
/// has one, except in memory, where there is but one. Null is a failure.
using StoreOpener = std::function<std::shared_ptr<IStore>()>;

/// A store to be held to what every store must do:
///     INSTANTIATE_TEST_SUITE_P(Memory, StoreBehaviour, testing::Values(CStoreKind{"Memory",
///     makePlace}));
struct CStoreKind {
    std::string strName;
    std::function<StoreOpener()> makePlace;  ///< for the data of one test
};

std::ostream& operator<<(std::ostream& stream, const CStoreKind& kind);

/// Every test works below a node of its own, so that the tests may share one server.
class StoreBehaviour : public CHostTest, public ::testing::WithParamInterface<CStoreKind> {
protected:
    void SetUp() override;
    void TearDown() override;

    /// A path below this test's node.
    std::string Node(const std::string& strName) const;

    /// The text of a node as the store itself tells it.
    std::string TextOf(const std::string& strName) const;

    /// The version of a node as the store itself tells it.
    std::int64_t VersionOf(const std::string& strName) const;

    StoreOpener m_open;
    std::shared_ptr<IStore> m_pStoreUnderTest;

private:
    std::string m_strRoot;
};

/// What a store must do, beside that, whose texts outlive the program.
class LastingStoreBehaviour : public StoreBehaviour {};
