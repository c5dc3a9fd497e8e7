#include "common_service/net_factory.h"

#include "common_service/tarn_def.h"
#include "support/host_fixture.h"

namespace {

class ValidatedLinks : public CHostTest {};

TEST_F(ValidatedLinks, LinkIsAddressAndTypeTogether) {
    HALD::CNetFactory& factory = HALD::CNetFactory::Instance();
    EXPECT_EQ(factory.AddValidatedLink("10.0.0.1", VALIDATED_LINK_TYPE), 0);
    EXPECT_TRUE(factory.IsValidatedLink("10.0.0.1", VALIDATED_LINK_TYPE));
    EXPECT_FALSE(factory.IsValidatedLink("10.0.0.1", 1));
    EXPECT_FALSE(factory.IsValidatedLink("10.0.0.2", VALIDATED_LINK_TYPE));
}

TEST_F(ValidatedLinks, LinkAddedTwiceIsGoneAfterOneDelete) {
    HALD::CNetFactory& factory = HALD::CNetFactory::Instance();
    EXPECT_EQ(factory.AddValidatedLink("10.0.0.1", 1), 0);
    EXPECT_EQ(factory.AddValidatedLink("10.0.0.1", 1), 0);
    EXPECT_EQ(factory.DelValidatedLink("10.0.0.1", 1), 0);
    EXPECT_FALSE(factory.IsValidatedLink("10.0.0.1", 1));
    EXPECT_EQ(factory.DelValidatedLink("10.0.0.1", 1), 0);
}

}  // namespace
