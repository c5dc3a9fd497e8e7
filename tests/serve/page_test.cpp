#include "serve/page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cluster_engine/event.h"

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Pair;
using ::testing::StartsWith;

namespace {

class PageFile : public ::testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(PageFile, IsGivenWithItsTypeAndTakesNothingFromElsewhere) {
    const auto& [pszPath, pszType] = GetParam();
    const std::optional<CHttpReply> reply = PageReply(pszPath);
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->uiStatus, 200U);
    EXPECT_THAT(reply->pszType, StartsWith(pszType));
    EXPECT_FALSE(reply->pBody->empty());
    EXPECT_THAT(reply->headers,
                Contains(Pair("Content-Security-Policy", StartsWith("default-src 'self';"))));
    EXPECT_THAT(reply->headers, Contains(Pair("X-Content-Type-Options", "nosniff")));
    EXPECT_THAT(reply->headers, Contains(Pair("Referrer-Policy", "no-referrer")));
}

INSTANTIATE_TEST_SUITE_P(Each, PageFile,
                         ::testing::Values(std::pair{"/", "text/html"},
                                           std::pair{"/style.css", "text/css"},
                                           std::pair{"/page.js", "text/javascript"},
                                           std::pair{"/parts.js", "text/javascript"},
                                           std::pair{"/service.js", "text/javascript"},
                                           std::pair{"/icon.svg", "image/svg+xml"}));

TEST(Page, HasNothingUnderOtherPaths) {
    for (const char* const pszPath : {"", "/index.html", "/page.js/", "/../page.js", "/api"}) {
        EXPECT_FALSE(PageReply(pszPath)) << pszPath;
    }
}

TEST(Page, ListensToEveryKindOfEvent) {
    for (const char* const pszKind : CEnumNames<EEvent>::NAMES) {
        EXPECT_THAT(*PageReply("/service.js")->pBody, HasSubstr('"' + std::string(pszKind) + '"'));
    }
}

}  // namespace
