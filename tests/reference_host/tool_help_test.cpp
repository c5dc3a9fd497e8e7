#include "common_service/tool_help.h"

#include <gtest/gtest.h>

using HALD::CToolHelp;

namespace {

constexpr int NUMERIC_MAX = 2147483647;
constexpr int NUMERIC_MIN = -NUMERIC_MAX - 1;

TEST(NumberText, IsPlainDecimal) {
    EXPECT_EQ(CToolHelp::IntToStr(0, false), "0");
    EXPECT_EQ(CToolHelp::IntToStr(-17, false), "-17");
    EXPECT_EQ(CToolHelp::IntToStr(NUMERIC_MAX, false), "2147483647");
    EXPECT_EQ(CToolHelp::IntToStr(NUMERIC_MIN, false), "-2147483648");
}

struct CNumberCase {
    const char* pszText;
    int iValue;
};

class NumberOfText : public testing::TestWithParam<CNumberCase> {};

TEST_P(NumberOfText, IsTheNumberAtItsStart) {
    EXPECT_EQ(CToolHelp::StrToInt(GetParam().pszText, false), GetParam().iValue)
        << GetParam().pszText;
}

INSTANTIATE_TEST_SUITE_P(
    All, NumberOfText,
    testing::Values(CNumberCase{"42", 42}, CNumberCase{"-42", -42}, CNumberCase{"+42", 42},
                    CNumberCase{" \t\r\n 42", 42}, CNumberCase{"042", 42}, CNumberCase{"42abc", 42},
                    CNumberCase{"4 2", 4}, CNumberCase{"4.9", 4}, CNumberCase{"", 0},
                    CNumberCase{" ", 0}, CNumberCase{"abc", 0}, CNumberCase{"+", 0},
                    CNumberCase{"-", 0}, CNumberCase{"+-5", 0}, CNumberCase{"-+5", 0},
                    CNumberCase{"--5", 0}, CNumberCase{"++5", 0}, CNumberCase{"- 5", 0},
                    CNumberCase{"0x10", 0}, CNumberCase{"2147483647", NUMERIC_MAX},
                    CNumberCase{"2147483648", NUMERIC_MAX}, CNumberCase{"+9999999999", NUMERIC_MAX},
                    CNumberCase{"-2147483648", NUMERIC_MIN},
                    CNumberCase{"-2147483649", NUMERIC_MIN},
                    CNumberCase{"99999999999999999999999", NUMERIC_MAX}));

}  // namespace
