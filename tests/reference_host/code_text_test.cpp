#include "reference_host/code_text.h"

#include <gmock/gmock.h>

#include <fstream>
#include <set>
#include <sstream>

#include "common_service/tarn_def.h"
#include "reference_host/store.h"

namespace {

TEST(CodeText, SaysTheReasonThenTheNameThenTheNumber) {
    EXPECT_EQ(CodeText(-4), "no server answers (ZCONNECTIONLOSS, code -4)");
    EXPECT_EQ(CodeText(11), "the store's file is damaged (SQLITE_CORRUPT, code 11)");
    EXPECT_EQ(CodeText(ORVA_DATA_INVALID),
              "not the data that is expected (ORVA_DATA_INVALID, code 109100053)");
    EXPECT_EQ(CodeText(STORE_TEXT_TOO_LONG),
              "longer than a service reads (STORE_TEXT_TOO_LONG, code 109200002)");
}

TEST(CodeText, OfACodeWithoutANameIsItsNumber) {
    EXPECT_EQ(CodeText(77), "code 77");
    EXPECT_EQ(CodeText(-9999), "code -9999");
}

TEST(CodeText, NamesEveryCodeOnce) {
    std::set<int> setCode;
    for (const CNamedCode& code : NamedCodes()) {
        EXPECT_TRUE(setCode.insert(code.iCode).second) << code.pszName;
    }
}

TEST(CodeText, GuideListsEveryCode) {
    std::ostringstream guide;
    guide << std::ifstream(PSZ_OPERATING_GUIDE).rdbuf();
    for (const CNamedCode& code : NamedCodes()) {
        EXPECT_THAT(guide.str(),
                    testing::HasSubstr("| " + std::to_string(code.iCode) + " | `" + code.pszName +
                                       "` | " + code.pszWords + " |\n"));
    }
}

}  // namespace
