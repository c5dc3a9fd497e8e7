#include "operation_log/operation_log.h"

#include <gmock/gmock.h>

#include "support/host_fixture.h"

using namespace operation_log;
using ::testing::ElementsAre;

namespace {

constexpr char FILE_WORD[] = "operation_log_test";

/// Logs on behalf of its caller.
int FailFor(const char* pszWhat, CPlace place = CPlace::Here()) {
    return LogFailure({"helper", place}, 7, "what[%s].", pszWhat);
}

int CallHelper() {
    return FailFor("call");
}

template <typename Value>
void LogOf(Value value) {
    LogInfo({"template", CPlace::Of("LogOf")}, "%d", static_cast<int>(value));
}

}  // namespace

class OperationLog : public CHostTest {};

TEST_F(OperationLog, EveryLineBearsThePlaceOfItsCall) {
    const int iLine = __LINE__ + 1;
    const CPlacedText operation("operation");
    EXPECT_EQ(operation.place.iLine, iLine);

    LogInfo("info", "%d and %s", 1, "two");
    LogWarning("warning", "");
    EXPECT_EQ(LogFailure("failure", 5, "at %d", 6), 5);
    LogTrace("trace %c", 'x');
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Info("info", FILE_WORD, "TestBody", "1 and two"),
                                                 Warn("warning", FILE_WORD, "TestBody", ""),
                                                 Err("failure", 5, FILE_WORD, "TestBody", "at 6"),
                                                 Trace(FILE_WORD, "TestBody", "trace x")));
}

TEST_F(OperationLog, AHelpersLineNamesItsCaller) {
    EXPECT_EQ(CallHelper(), 7);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Err("helper", 7, FILE_WORD, "CallHelper", "what[call].")));
}

TEST_F(OperationLog, APlaceCanBearTheNameOfAnotherOperation) {
    LogOf('\1');
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Info("template", FILE_WORD, "LogOf", "1")));
}

TEST_F(OperationLog, NothingIsWrittenWithoutALogger) {
    OMAdapter::getInstance().setLogger(nullptr);
    EXPECT_EQ(LogFailure("failure", 5, "text"), 5);
    LogInfo("info", "text");
    LogTrace("text");
    OMAdapter::getInstance().setLogger(&m_logger);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre());
}

TEST_F(OperationLog, AMessageBeyondTheBufferIsCut) {
    const std::string strLong(1000, 'm');
    LogFailure("long", 1, strLong.c_str());
    const std::vector<CLogLine> lines = m_logger.GetLines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_LT(lines[0].strMessage.size(), 512U);
    EXPECT_EQ(lines[0].strMessage, strLong.substr(0, lines[0].strMessage.size()));
}

TEST(FileWord, IsTheFileWithoutFolderAndExtension) {
    EXPECT_STREQ(CFileWord("/a.b/c/node_mgr.cpp").Get(), "node_mgr");
    EXPECT_STREQ(CFileWord("../src/IPlugin.cpp").Get(), "IPlugin");
    EXPECT_STREQ(CFileWord("plain").Get(), "plain");
    EXPECT_STREQ(CFileWord("two.dots.h").Get(), "two.dots");
    EXPECT_STREQ(CFileWord("").Get(), "");
}

TEST(FileWord, IsCutAtItsBuffer) {
    EXPECT_EQ(std::string(CFileWord(std::string(300, 'n').c_str()).Get()), std::string(255, 'n'));
}
