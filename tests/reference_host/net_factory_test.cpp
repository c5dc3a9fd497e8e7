#include "common_service/net_factory.h"

#include "common_service/tarn_def.h"
#include "reference_host/accepted_links.h"
#include "support/host_fixture.h"

namespace {

class AcceptedLinks : public CHostTest {};

TEST_F(AcceptedLinks, LinkIsAddressAndTypeTogether) {
    HALD::CNetFactory& factory = HALD::CNetFactory::Instance();
    EXPECT_EQ(factory.AddValidatedLink("10.0.0.1", VALIDATED_LINK_TYPE), 0);
    EXPECT_TRUE(IsAcceptedLink("10.0.0.1", VALIDATED_LINK_TYPE));
    EXPECT_FALSE(IsAcceptedLink("10.0.0.1", 1));
    EXPECT_FALSE(IsAcceptedLink("10.0.0.2", VALIDATED_LINK_TYPE));
}

TEST_F(AcceptedLinks, LinkAddedTwiceIsGoneAfterOneDelete) {
    HALD::CNetFactory& factory = HALD::CNetFactory::Instance();
    EXPECT_EQ(factory.AddValidatedLink("10.0.0.1", 1), 0);
    EXPECT_EQ(factory.AddValidatedLink("10.0.0.1", 1), 0);
    EXPECT_EQ(factory.DelValidatedLink("10.0.0.1", 1), 0);
    EXPECT_FALSE(IsAcceptedLink("10.0.0.1", 1));
    EXPECT_EQ(factory.DelValidatedLink("10.0.0.1", 1), 0);
}

TEST_F(AcceptedLinks, NoneIsLeftAfterForgetting) {
    HALD::CNetFactory::Instance().AddValidatedLink("10.0.0.1", 1);
    HALD::CNetFactory::Instance().AddValidatedLink("10.0.0.2", 2);
    ForgetAcceptedLinks();
    EXPECT_FALSE(IsAcceptedLink("10.0.0.1", 1));
    EXPECT_FALSE(IsAcceptedLink("10.0.0.2", 2));
}

}  // namespace
