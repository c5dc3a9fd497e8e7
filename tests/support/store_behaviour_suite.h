#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include "reference_host/store.h"
#include "support/host_fixture.h"

/// A store to be held to what every store must do:
///     INSTANTIATE_TEST_SUITE_P(Memory, StoreBehaviour, testing::Values(CStoreKind{"Memory",
///     open}));
struct CStoreKind {
    std::string strName;
    std::function<std::shared_ptr<IStore>()> open;  ///< a store ready for use; null is a failure
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

    std::shared_ptr<IStore> m_pStoreUnderTest;

private:
    std::string m_strRoot;
};
