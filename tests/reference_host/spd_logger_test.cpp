#include "reference_host/spd_logger.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <thread>
#include <vector>

#include "support/temp_dir.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

namespace {

constexpr char PSZ_TIME[] = "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3} ";

class SpdLogger : public testing::Test {
protected:
    std::unique_ptr<CSpdLogger> Open(ORVA_LOG_LEVEL eLevel) {
        m_settings.eLevel = eLevel;
        auto pLogger = CSpdLogger::Open(m_settings, m_strError);
        EXPECT_NE(pLogger, nullptr) << m_strError;
        return pLogger;
    }

    std::vector<std::string> Lines() const {
        std::ifstream stream(m_settings.strFile);
        std::vector<std::string> lines;
        for (std::string strLine; std::getline(stream, strLine);) {
            lines.push_back(strLine);
        }
        return lines;
    }

    CTempDir m_dir;
    CSpdLoggerSettings m_settings{ORVALOG_INFO, false, m_dir.File("log"), 1 << 20, 2};
    std::string m_strError;
};

TEST_F(SpdLogger, LineTellsTimeLevelPlaceOperationAndMessage) {
    const auto pLogger = Open(ORVALOG_INFO);
    pLogger->writeOperLog(ORVALOG_ERR, "add node", "node_mgr", 12, "AddNode", "node[%s] %d%%", "n",
                          5);
    EXPECT_THAT(Lines(), ElementsAre(MatchesRegex(std::string(PSZ_TIME) +
                                                  "ERR node_mgr:12 AddNode \\[add node\\] "
                                                  "node\\[n\\] 5%")))
        << "flushed while the logger lives";
}

TEST_F(SpdLogger, NothingThatWasLoggedPaintsTheTerminal) {
    const auto pLogger = Open(ORVALOG_INFO);
    pLogger->writeOperLog(ORVALOG_INFO, "o\x1b", "f", 1, "F", "%s", "\x1b[2J\rroot\u202e");
    EXPECT_THAT(Lines(), ElementsAre(testing::EndsWith("[o\\x1b] \\x1b[2J\\rroot\\u202e")));
}

TEST_F(SpdLogger, TraceLineCountsAsDebug) {
    Open(ORVALOG_INFO)->writeTraceLog("node_mgr", 3, "AddNode", "hidden");
    EXPECT_THAT(Lines(), IsEmpty());
    Open(ORVALOG_DEBUG)->writeTraceLog("node_mgr", 3, "AddNode", "text[%s]", "t");
    EXPECT_THAT(Lines(), ElementsAre(MatchesRegex(std::string(PSZ_TIME) +
                                                  "DEBUG node_mgr:3 AddNode text\\[t\\]")));
}

TEST_F(SpdLogger, LevelsUpToTheThresholdAreWritten) {
    for (int iThreshold = ORVALOG_EMERG; iThreshold <= ORVALOG_DEBUG; ++iThreshold) {
        m_settings.strFile = m_dir.File("log" + std::to_string(iThreshold));
        const auto pLogger = Open(static_cast<ORVA_LOG_LEVEL>(iThreshold));
        for (int iLevel = ORVALOG_EMERG; iLevel <= ORVALOG_DEBUG; ++iLevel) {
            pLogger->writeOperLog(static_cast<ORVA_LOG_LEVEL>(iLevel), "o", "f", 1, "F", "m");
        }
        EXPECT_EQ(Lines().size(), static_cast<std::size_t>(iThreshold) + 1);
    }
}

TEST_F(SpdLogger, LineAboveTheThresholdIsNotFormatted) {
    int iCount = -1;
    Open(ORVALOG_ERR)->writeOperLog(ORVALOG_INFO, "o", "f", 1, "F", "abc%n", &iCount);
    EXPECT_EQ(iCount, -1);
}

TEST_F(SpdLogger, LongLineComesOutWhole) {
    const std::string strLong(70000, 'x');
    Open(ORVALOG_INFO)->writeOperLog(ORVALOG_INFO, "o", "f", 1, "F", "<%s>", strLong.c_str());
    ASSERT_EQ(Lines().size(), 1U);
    EXPECT_NE(Lines().front().find("<" + strLong + ">"), std::string::npos);
}

TEST_F(SpdLogger, BracesAndLineFeedsOfAMessageAreHarmless) {
    Open(ORVALOG_INFO)
        ->writeOperLog(ORVALOG_INFO, "o{}", "f", 1, "F", "%s", "{\"a\":{}}\nsecond%d\n");
    EXPECT_THAT(Lines(), ElementsAre(testing::EndsWith("[o{}] {\"a\":{}}\\nsecond%d\\n")));
}

TEST_F(SpdLogger, FileRotatesAtItsSize) {
    m_settings.maxFileSize = 2000;
    const auto pLogger = Open(ORVALOG_INFO);
    for (int iLine = 0; iLine < 200; ++iLine) {
        pLogger->writeOperLog(ORVALOG_INFO, "o", "f", iLine, "F", "some message");
    }
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(m_dir.GetPath())) {
        EXPECT_LE(entry.file_size(), m_settings.maxFileSize);
        ++files;
    }
    EXPECT_EQ(files, 3U) << "the current file and two older ones";
}

/// How often each line stands in the file and the older ones.
std::map<std::string, int> CountLines(const std::string& strFolder) {
    std::map<std::string, int> counts;
    for (const auto& entry : std::filesystem::directory_iterator(strFolder)) {
        std::ifstream stream(entry.path());
        for (std::string strLine; std::getline(stream, strLine);) {
            ++counts[strLine.substr(strLine.rfind(' ') + 1)];
        }
    }
    return counts;
}

TEST_F(SpdLogger, TwoProgramsLoseNoLineOfOneFileThatBothRotate) {
    constexpr int NUMERIC_LINES = 400;
    m_settings.maxFileSize = 4000;
    m_settings.maxFiles = 50;
    std::vector<pid_t> programs;
    for (const char* pszProgram : {"a", "b", "c"}) {
        programs.push_back(fork());
        if (programs.back() == 0) {
            const auto pLogger = CSpdLogger::Open(m_settings, m_strError);
            for (int iLine = 0; iLine < NUMERIC_LINES; ++iLine) {
                pLogger->writeOperLog(ORVALOG_INFO, "o", "f", 1, "F", "%s%d", pszProgram, iLine);
            }
            _exit(pLogger->HasLostLines() ? 1 : 0);
        }
    }
    for (const pid_t iProgram : programs) {
        int iStatus = -1;
        waitpid(iProgram, &iStatus, 0);
        EXPECT_EQ(iStatus, 0);
    }
    const auto counts = CountLines(m_dir.GetPath());
    EXPECT_EQ(counts.size(), programs.size() * NUMERIC_LINES);
    for (const auto& [strLine, iCount] : counts) {
        EXPECT_EQ(iCount, 1) << strLine;
    }
    for (const auto& entry : std::filesystem::directory_iterator(m_dir.GetPath())) {
        EXPECT_LE(entry.file_size(), m_settings.maxFileSize);
    }
}

TEST_F(SpdLogger, WithoutOlderFilesTheFileBeginsAnew) {
    m_settings.maxFileSize = 2000;
    m_settings.maxFiles = 0;
    const auto pLogger = Open(ORVALOG_INFO);
    for (int iLine = 0; iLine < 200; ++iLine) {
        pLogger->writeOperLog(ORVALOG_INFO, "o", "f", iLine, "F", "some message");
    }
    EXPECT_LE(std::filesystem::file_size(m_settings.strFile), m_settings.maxFileSize);
    EXPECT_THAT(Lines().back(), testing::HasSubstr("f:199"));
}

TEST_F(SpdLogger, FileKeepsTheUmask) {
    const mode_t former = umask(077);
    Open(ORVALOG_INFO);
    umask(former);
    EXPECT_EQ(std::filesystem::status(m_settings.strFile).permissions(),
              std::filesystem::perms(0600));
}

TEST_F(SpdLogger, FileThatCannotBeOpenedIsAReasonNotAnException) {
    for (const std::string& strFile : {m_dir.GetPath(), m_dir.WriteFile("file", "") + "/log"}) {
        m_settings.strFile = strFile;
        m_strError.clear();
        EXPECT_EQ(CSpdLogger::Open(m_settings, m_strError), nullptr);
        EXPECT_NE(m_strError.find(strFile), std::string::npos) << m_strError;
    }
}

TEST_F(SpdLogger, FullDiskNeverThrows) {
    m_settings.strFile = "/dev/full";
    testing::internal::CaptureStderr();
    const auto pLogger = Open(ORVALOG_INFO);
    EXPECT_FALSE(pLogger->HasLostLines());
    EXPECT_NO_THROW(pLogger->writeOperLog(ORVALOG_ERR, "o", "f", 1, "F", "lost"));
    EXPECT_TRUE(pLogger->HasLostLines());
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("a log line was lost: "));
}

TEST_F(SpdLogger, ConsoleIsTheStandardErrorStream) {
    m_settings.strFile.clear();
    m_settings.bConsole = true;
    testing::internal::CaptureStderr();
    Open(ORVALOG_INFO)->writeOperLog(ORVALOG_INFO, "o", "f", 1, "F", "message");
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                MatchesRegex(std::string(PSZ_TIME) + "INFO f:1 F \\[o\\] message\n"));
}

TEST_F(SpdLogger, LinesOfManyThreadsStayWhole) {
    const auto pLogger = Open(ORVALOG_INFO);
    std::vector<std::thread> threads;
    for (int iThread = 0; iThread < 4; ++iThread) {
        threads.emplace_back([&] {
            for (int iLine = 0; iLine < 100; ++iLine) {
                pLogger->writeOperLog(ORVALOG_INFO, "o", "f", 1, "F", "%s", "message");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(Lines(), testing::AllOf(testing::SizeIs(400),
                                        testing::Each(testing::EndsWith("f:1 F [o] message"))));
}

}  // namespace
