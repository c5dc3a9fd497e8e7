#include "reference_host/shown_text.h"

#include <gtest/gtest.h>

#include <clocale>

TEST(ShownText, LeavesPrintableTextsAlone) {
    EXPECT_EQ(ShownText("record-01 \"Nord\" 100%"), "record-01 \"Nord\" 100%");
    EXPECT_EQ(ShownText("录像节点 Überwachung é 👍"), "录像节点 Überwachung é 👍");
    EXPECT_EQ(ShownText(""), "");
}

TEST(ShownText, EscapesWhatWouldMoveTheCursorOrPaintTheTerminal) {
    EXPECT_EQ(ShownText("a\x1b[31mred\x1b[0m"), "a\\x1b[31mred\\x1b[0m");
    EXPECT_EQ(ShownText("two\nlines\r\tand a bell\a"), "two\\nlines\\r\\tand a bell\\x07");
    EXPECT_EQ(ShownText("del\x7f and csi\xc2\x9b"), "del\\x7f and csi\\u009b");
    EXPECT_EQ(ShownText(std::string_view("a\0b", 3)), "a\\x00b");
    EXPECT_EQ(ShownText("line\u2028and paragraph\u2029"), "line\\u2028and paragraph\\u2029");
}

TEST(ShownText, EscapesWhatTurnsTheDirectionOrHides) {
    EXPECT_EQ(ShownText("gpj.\u202eexe"), "gpj.\\u202eexe");
    EXPECT_EQ(ShownText("\u2066a\u2069 \u200f \u061c"), "\\u2066a\\u2069 \\u200f \\u061c");
    EXPECT_EQ(ShownText("node\u200b1\ufeff"), "node\\u200b1\\ufeff");
    EXPECT_EQ(ShownText("\U000e0041"), "\\U000e0041");
}

TEST(ShownText, EscapesBytesThatAreNoUtf8OneByOne) {
    EXPECT_EQ(ShownText("a\xff\xfe"), "a\\xff\\xfe");
    EXPECT_EQ(ShownText("cut \xe5\xbd"), "cut \\xe5\\xbd");
    EXPECT_EQ(ShownText("overlong \xc0\xaf surrogate \xed\xa0\x80"),
              "overlong \\xc0\\xaf surrogate \\xed\\xa0\\x80");
}

TEST(ShownText, NoTwoTextsLookTheSame) {
    EXPECT_EQ(ShownText("back\\slash"), "back\\\\slash");
    EXPECT_NE(ShownText("\\n"), ShownText("\n"));
}

TEST(ShownText, CountsColumnsAsATerminalDoes) {
    EXPECT_EQ(ColumnsOf("plain"), 5U);
    EXPECT_EQ(ColumnsOf("录像"), 4U);
    EXPECT_EQ(ColumnsOf("Ü"), 1U);
    EXPECT_EQ(ColumnsOf("e\u0301"), 1U) << "a combining accent takes no column";
    EXPECT_EQ(ColumnsOf(""), 0U);
}

TEST(ShownText, LeavesTheThreadsLocaleAlone) {
    const std::string strBefore = setlocale(LC_ALL, nullptr);
    const locale_t before = uselocale(nullptr);
    ShownText("\x1bü");
    EXPECT_EQ(uselocale(nullptr), before);
    EXPECT_EQ(setlocale(LC_ALL, nullptr), strBefore);
}
