#include "cluster_engine/event.h"
#include "serve/routes_fixture.h"

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Pair;
using ::testing::StartsWith;

namespace {

class PageFile : public RoutesTest,
                 public ::testing::WithParamInterface<std::pair<const char*, const char*>> {};

TEST_P(PageFile, IsGivenWithItsTypeAndTakesNothingFromElsewhere) {
    const auto& [pszPath, pszType] = GetParam();
    const auto pReply = Send("GET", pszPath);
    ASSERT_EQ(StatusOf(*pReply), 200U);
    EXPECT_THAT(pReply->m_reply->pszType, StartsWith(pszType));
    EXPECT_FALSE(pReply->m_reply->pBody->empty());
    const auto& headers = pReply->m_reply->headers;
    EXPECT_THAT(headers,
                Contains(Pair("Content-Security-Policy", StartsWith("default-src 'self';"))));
    EXPECT_THAT(headers, Contains(Pair("X-Content-Type-Options", "nosniff")));
    EXPECT_THAT(headers, Contains(Pair("Referrer-Policy", "no-referrer")));
    EXPECT_THAT(headers, Contains(Pair("Cache-Control", "no-cache")));
    EXPECT_EQ(StatusOf(*Send("GET", pszPath, "", {}, headers.at("ETag"))), 304U);
}

TEST_P(PageFile, TakesNothing) {
    const auto pReply = Send("POST", GetParam().first, "{}");
    EXPECT_EQ(ErrorOf(*pReply), "405 wrong_method POST");
    EXPECT_EQ(pReply->m_reply->headers.at("Allow"), "GET, HEAD");
}

INSTANTIATE_TEST_SUITE_P(Each, PageFile,
                         ::testing::Values(std::pair{"/", "text/html"},
                                           std::pair{"/style.css", "text/css"},
                                           std::pair{"/page.js", "text/javascript"},
                                           std::pair{"/parts.js", "text/javascript"},
                                           std::pair{"/service.js", "text/javascript"},
                                           std::pair{"/icon.svg", "image/svg+xml"}));

class Page : public RoutesTest {};

TEST_F(Page, HasNothingUnderOtherPaths) {
    for (const char* const pszPath : {"", "//", "/index.html", "/page.js/", "/../page.js"}) {
        EXPECT_EQ(StatusOf(*Send("GET", pszPath)), 404U) << pszPath;
    }
}

TEST_F(Page, ListensToEveryKindOfEvent) {
    const std::string strScript = *Send("GET", "/service.js")->m_reply->pBody;
    for (const char* const pszKind : CEnumNames<EEvent>::NAMES) {
        EXPECT_THAT(strScript, HasSubstr('"' + std::string(pszKind) + '"'));
    }
}

}  // namespace
