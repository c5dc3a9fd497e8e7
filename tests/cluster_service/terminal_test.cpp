#include <algorithm>
#include <cwchar>

#include "service_fixture.h"

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

/// The characters of a UTF-8 text.
std::u32string CharactersOf(const std::string& strText) {
    std::u32string characters;
    for (const char c : strText) {
        const auto uc = static_cast<unsigned char>(c);
        if (uc < 0x80) {
            characters += uc;
        } else if (uc >= 0xC0) {
            characters += uc & (uc >= 0xF0 ? 0x07U : uc >= 0xE0 ? 0x0FU : 0x1FU);
        } else {
            characters.back() = (characters.back() << 6U) | (uc & 0x3FU);
        }
    }
    return characters;
}

/// How far a character moves the cursor, for those that occur here.
std::size_t WidthOf(char32_t character) {
    const bool bCombining = character >= 0x300 && character <= 0x36F;
    const bool bWide = (character >= 0x4E00 && character <= 0x9FFF) ||
                       (character >= 0x1F300 && character <= 0x1FAFF);
    return bCombining ? 0 : bWide ? 2 : 1;
}

/// In which column of the screen the word begins.
std::size_t ColumnOf(const std::string& strLine, const std::string& strWord) {
    std::size_t uiColumn = 0;
    for (const char32_t character : CharactersOf(strLine.substr(0, strLine.find(strWord)))) {
        uiColumn += WidthOf(character);
    }
    return uiColumn;
}

/// What would move the cursor, colour the screen, turn the writing or hide.
bool PaintsTheTerminal(char32_t character) {
    const bool bControl = (character < 0x20 && character != U'\n' && character != U'\r') ||
                          (character >= 0x7F && character <= 0x9F);
    const bool bMark = (character >= 0x200B && character <= 0x200F) ||
                       (character >= 0x2028 && character <= 0x202E) || character == 0xFEFF;
    return bControl || bMark;
}

std::vector<std::string> LinesOf(const std::string& strScreen) {
    std::vector<std::string> lines;
    std::size_t begin = 0;
    for (auto end = strScreen.find("\r\n"); end != std::string::npos;
         end = strScreen.find("\r\n", begin)) {
        lines.push_back(strScreen.substr(begin, end - begin));
        begin = end + 2;
    }
    return lines;
}

class Terminal : public CServiceTest {
protected:
    Terminal() {
        Put("/Cluster",
            ClusterText({NodeText("plain", "10.0.0.1", {"A", "B"}),
                         NodeText("\xe5\xbd\x95\xe5\x83\x8f-01", "10.0.0.2", {"A"}),
                         NodeText("e\xcc\x81t\xc3\xa9", "10.0.0.3", {"A"}),
                         NodeText("\xf0\x9f\x91\x8d", "10.0.0.4", {"A"}),
                         NodeText("\\u001b[31mred\\u009b2J", "10.0.0.5", {"A", "B"}),
                         NodeText("two\\nlines\\r\\u007f", "10.0.0.6", {"\\u202egnp.A", "B"}),
                         NodeText("\xe2\x80\xae\xe2\x80\x8b\xef\xbb\xbf", "10.0.0.7", {"A"})}));
        Put("/CenterDB", DatabaseText("\\u001b]0;title\\u0007", {"\\u001bc"}));
        WriteDocument("manager.json",
                      R"({"MasterMGR":{"NodeCode":"\u001b[2J","NodeIp":"\u202e1"},"x\u001bc":1})");
    }

    CProcessResult Show(const std::vector<std::string>& arguments,
                        const std::string& strTyped = "") const {
        return RunOn("sqlite:store.db", arguments, CTerminal{strTyped, true});
    }
};

TEST_F(Terminal, ColumnsStandBelowTheirTitles) {
    const CProcessResult result = Show({"show", "nodes"});
    EXPECT_EQ(result.iExitCode, 0);
    const std::vector<std::string> lines = LinesOf(result.strOutput);
    ASSERT_EQ(lines.size(), 9U) << "a name takes one line";
    for (std::size_t i = 2; i < lines.size(); ++i) {
        EXPECT_EQ(ColumnOf(lines[i], "10.0.0."), ColumnOf(lines[1], "address")) << lines[i];
        EXPECT_EQ(ColumnOf(lines[i], "normal"), ColumnOf(lines[1], "member")) << lines[i];
    }
}

TEST_F(Terminal, IsNotPaintedByANameOfAnyDocument) {
    Put("/Version", "{\x1b[2J\xff\n");
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"show"},
                                                      {"check"},
                                                      {"export", "out\x1b[31m"},
                                                      {"diff", "documents"},
                                                      {"import", "documents"},
                                                      {"promote",
                                                       "\x1b"
                                                       "c"},
                                                      {"remove", "\x1b[31mred", "A"},
                                                      {"remove", "plain", "A"},
                                                      {"--cluster-code", "\xc2\x9b", "check"},
                                                      {"show", "no\x1b[31m"},
                                                      {"\x1b[31m"},
                                                      {"--log-level", "info", "show"},
                                                      {"--log-file", "/no/\x1b[31m", "show"},
                                                      {"--config", "no\x1b[31m", "show"}}) {
        const CProcessResult result = Show(arguments, "n\n");
        const std::u32string screen = CharactersOf(result.strOutput);
        EXPECT_FALSE(screen.empty());
        EXPECT_TRUE(std::none_of(screen.begin(), screen.end(), PaintsTheTerminal))
            << testing::PrintToString(arguments) << testing::PrintToString(result.strOutput);
    }
}

TEST_F(Terminal, ShowsTheQuestionThenTheAnswer) {
    const CProcessResult result = Show({"remove",
                                        "\x1b[31mred\xc2\x9b"
                                        "2J",
                                        "A"},
                                       "y\n");
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strOutput,
                HasSubstr("cluster Main in sqlite:store.db: Remove container A from node "
                          "\\x1b[31mred\\u009b2J? [y/N] "));
    EXPECT_THAT(result.strOutput, EndsWith("cluster Main in sqlite:store.db holds node "
                                           "\\x1b[31mred\\u009b2J with: B\r\n"));
}

}  // namespace
