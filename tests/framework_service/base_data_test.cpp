#include "framework_service/base_data.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "support/host_fixture.h"

namespace {

class ResourceFigures : public CHostTest {};

TEST_F(ResourceFigures, UnknownKindIsLoggedAndAnswersOne) {
    EXPECT_EQ(CSystemResource().GetResourceByType(static_cast<RESOURCE_TYPE>(5)), 1);
    EXPECT_THAT(m_logger.GetLines(),
                testing::ElementsAre(Err("get resource by type", 1, "base_data",
                                         "GetResourceByType", "type[5] not found.")));
}

/// A short text over few characters, so that concatenations often meet.
std::string RandomText(std::mt19937& random) {
    static constexpr char ALPHABET[] = {'a', 'b', '\x7f', '\x80', '\xff'};
    std::string strText(random() % 5, ' ');
    for (char& c : strText) {
        c = ALPHABET[random() % sizeof(ALPHABET)];
    }
    return strText;
}

TEST(ContainerAddress, OrdersAsTheConcatenationDoes) {
    const unsigned int uiSeed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(uiSeed));
    std::mt19937 random(uiSeed);
    for (int i = 0; i < 200000; ++i) {
        const CContainerAddr left(RandomText(random), RandomText(random));
        const CContainerAddr right(RandomText(random), RandomText(random));
        ASSERT_EQ(left < right, left.GetNodeId() + left.GetContainerType() <
                                    right.GetNodeId() + right.GetContainerType())
            << left.GetNodeId() << "|" << left.GetContainerType() << " and " << right.GetNodeId()
            << "|" << right.GetContainerType();
    }
}

}  // namespace
