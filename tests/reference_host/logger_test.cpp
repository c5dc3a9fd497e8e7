#include "common_service/logger.h"

#include <iterator>
#include <string>

#include "support/host_fixture.h"

using testing::ElementsAre;

namespace {

std::string FormatOf(const char* pszFormat, int iSize) {
    std::string strBuffer(static_cast<std::size_t>(iSize) + 1, '#');
    const int iLength = ORVA_LogFormatErrCode(strBuffer.data(), iSize, 7, pszFormat);
    EXPECT_EQ(strBuffer[static_cast<std::size_t>(iLength)], '\0');
    EXPECT_EQ(strBuffer.back(), '#') << "behind the buffer";
    return strBuffer.c_str();
}

TEST(ErrorCodeFormat, PlaceholdersStayAsTheyStand) {
    EXPECT_EQ(FormatOf("node[%s] has %d of 100%%", 512), "errcode[7], node[%s] has %d of 100%%");
}

TEST(ErrorCodeFormat, AnyCodeIsWritten) {
    char szBuffer[64] = "";
    EXPECT_EQ(ORVA_LogFormatErrCode(szBuffer, sizeof(szBuffer), -2147483647 - 1, "x"), 23);
    EXPECT_STREQ(szBuffer, "errcode[-2147483648], x");
}

TEST(ErrorCodeFormat, LengthStaysBelowTheSize) {
    EXPECT_EQ(FormatOf("abcdef", 18), "errcode[7], abcde");
    EXPECT_EQ(FormatOf("abcdef", 19), "errcode[7], abcdef");
    EXPECT_EQ(FormatOf("abcdef", 1), "");
}

TEST(ErrorCodeFormat, CutNeverLeavesHalfAPlaceholder) {
    const std::string strFormat = "a%s%%%-10.3lld";
    // By the characters of the message that fit: what is left of it.
    const std::string left[] = {"",      "a",     "a",     "a%s",   "a%s",   "a%s%%", "a%s%%",
                                "a%s%%", "a%s%%", "a%s%%", "a%s%%", "a%s%%", "a%s%%"};
    int iFit = 0;
    for (const std::string& strLeft : left) {
        EXPECT_EQ(FormatOf(strFormat.c_str(), 13 + iFit), "errcode[7], " + strLeft) << iFit;
        ++iFit;
    }
}

TEST(ErrorCodeFormat, UnusableArgumentsAreRefused) {
    char szBuffer[8] = "abc";
    EXPECT_LT(ORVA_LogFormatErrCode(nullptr, 8, 1, "x"), 0);
    EXPECT_LT(ORVA_LogFormatErrCode(szBuffer, 0, 1, "x"), 0);
    EXPECT_LT(ORVA_LogFormatErrCode(szBuffer, -1, 1, "x"), 0);
    EXPECT_LT(ORVA_LogFormatErrCode(szBuffer, 8, 1, nullptr), 0);
    EXPECT_STREQ(szBuffer, "abc");
}

class RecordedLines : public CHostTest {};

TEST_F(RecordedLines, TellWhatWasLogged) {
    char szFormat[64] = "";
    ORVA_LogFormatErrCode(szFormat, sizeof(szFormat), -3, "node[%s]");
    Logger* pLogger = OMAdapter::getInstance().getLogger();
    pLogger->writeOperLog(ORVALOG_ERR, "add", "node_mgr", 12, "AddNode", szFormat, "n1");
    pLogger->writeOperLog(ORVALOG_INFO, "add", "node_mgr", 13, "AddNode", "start %d", 5);
    pLogger->writeOperLog(ORVALOG_WARNING, "add", "node_mgr", 14, "AddNode", "odd");
    pLogger->writeTraceLog("node_mgr", 15, "AddNode", "text[%s]", "t");
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Err("add", -3, "node_mgr", "AddNode", "node[n1]"),
                                                 Info("add", "node_mgr", "AddNode", "start 5"),
                                                 Warn("add", "node_mgr", "AddNode", "odd"),
                                                 Trace("node_mgr", "AddNode", "text[t]")));
    EXPECT_EQ(m_logger.GetOperLines().size(), 3U);
}

TEST_F(RecordedLines, NullTakesTheLoggerAway) {
    EXPECT_EQ(OMAdapter::getInstance().getLogger(), &m_logger);
    OMAdapter::getInstance().setLogger(nullptr);
    EXPECT_EQ(OMAdapter::getInstance().getLogger(), nullptr);
}

TEST(LogLevels, NamesGoFromEmergencyToInfo) {
    EXPECT_STREQ(STR_LOG_LEVEL[ORVALOG_EMERG], "EMERG");
    EXPECT_STREQ(STR_LOG_LEVEL[ORVALOG_ERR], "ERR");
    EXPECT_STREQ(STR_LOG_LEVEL[ORVALOG_WARNING], "WARNING");
    EXPECT_STREQ(STR_LOG_LEVEL[ORVALOG_INFO], "INFO");
    EXPECT_EQ(std::size(STR_LOG_LEVEL), 7U);
}

}  // namespace
