#include "command/whole_file.h"

#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>
#include <thread>

#include "service_fixture.h"
#include "support/soak.h"

using ::testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

mode_t ModeOf(const std::string& strFile) {
    struct stat status {};
    EXPECT_EQ(stat(strFile.c_str(), &status), 0);
    return status.st_mode & 0777U;
}

std::size_t CountFiles(const std::string& strFolder) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(strFolder), fs::directory_iterator()));
}

TEST(WholeFile, IsReplacedOrLeftAsItWas) {
    const CTempDir dir;
    EXPECT_THAT(WriteWholeFile(dir.File("file"), "new"), IsEmpty());
    EXPECT_EQ(ReadText(dir.File("file")), "new");
    EXPECT_THAT(WriteWholeFile(dir.File("file"), "newer"), IsEmpty());
    EXPECT_EQ(ReadText(dir.File("file")), "newer");
    fs::create_directory(dir.File("folder"));
    EXPECT_EQ(WriteWholeFile(dir.File("folder"), "new"), "Is a directory");
    EXPECT_EQ(WriteWholeFile(dir.File("nowhere/file"), "new"), "No such file or directory");
    EXPECT_EQ(CountFiles(dir.GetPath()), 2U) << "nothing temporary is left behind";
}

TEST(WholeFile, ANewOneKeepsTheUmaskAndAnotherItsMode) {
    const CTempDir dir;
    const mode_t former = umask(027);
    EXPECT_THAT(WriteWholeFile(dir.File("new"), "text"), IsEmpty());
    EXPECT_EQ(ModeOf(dir.File("new")), 0640U);
    for (const mode_t mode : {0600U, 0400U, 0664U}) {
        EXPECT_EQ(chmod(dir.File("new").c_str(), mode), 0);
        EXPECT_THAT(WriteWholeFile(dir.File("new"), "text"), IsEmpty());
        EXPECT_EQ(ModeOf(dir.File("new")), mode);
    }
    umask(former);
}

[[noreturn]] void ReplaceForever(const std::string& strFile) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (;;) {
        WriteWholeFile(strFile, std::string(20000, 'x'));
    }
}

/// While it lives, the helper that a killed writer leaves behind is this process' child.
class COrphans {
public:
    COrphans() { EXPECT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0); }
    ~COrphans() { EXPECT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 0), 0); }
    COrphans(const COrphans&) = delete;
    COrphans& operator=(const COrphans&) = delete;

    void AwaitEnd() const {
        while (waitpid(-1, nullptr, 0) > 0) {
        }
    }
};

TEST(WholeFile, AKilledWriterLeavesNothingBesideIt) {
    const COrphans orphans;
    const CTempDir dir;
    const std::string strFile = dir.WriteFile("file", std::string(20000, 'x'));
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> microseconds(500, 5000);
    for (int iRound = 0; iRound < SoakRounds(1000); ++iRound) {
        const pid_t iWriter = fork();
        ASSERT_GE(iWriter, 0);
        if (iWriter == 0) {
            ReplaceForever(strFile);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
        kill(iWriter, SIGKILL);
        orphans.AwaitEnd();
        ASSERT_EQ(CountFiles(dir.GetPath()), 1U);
        ASSERT_EQ(fs::file_size(strFile), 20000U);
    }
}

TEST(WholeFile, OfTwoWritersIsWholeAndAlone) {
    const CTempDir dir;
    const std::string strFile = dir.WriteFile("file", std::string(20000, 'x'));
    std::vector<pid_t> writers;
    for (int iWriter = 0; iWriter < 3; ++iWriter) {
        writers.push_back(fork());
        if (writers.back() == 0) {
            bool bWritten = true;
            for (int iRound = 0; iRound < SoakRounds(1000); ++iRound) {
                bWritten = bWritten && WriteWholeFile(strFile, std::string(20000, 'x')).empty();
            }
            _exit(bWritten ? 0 : 1);
        }
    }
    for (const pid_t iWriter : writers) {
        int iStatus = -1;
        waitpid(iWriter, &iStatus, 0);
        EXPECT_EQ(iStatus, 0);
    }
    EXPECT_EQ(CountFiles(dir.GetPath()), 1U);
    EXPECT_EQ(fs::file_size(strFile), 20000U);
}

class KilledExport : public CServiceTest {};

TEST_F(KilledExport, LeavesWholeFilesAndNothingBeside) {
    const COrphans orphans;
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> milliseconds(10, 60);
    ASSERT_EQ(Run({"import", PSZ_SAMPLE_DIR}).iExitCode, 0);
    ASSERT_EQ(Run({"export", "out"}).iExitCode, 0);
    const std::size_t uiFiles = CountFiles(File("out"));
    for (int iRound = 0; iRound < SoakRounds(200); ++iRound) {
        RunProcess("/usr/bin/timeout",
                   {"--foreground", "-s", "KILL", "0.0" + std::to_string(milliseconds(random)),
                    PSZ_PROGRAM, "--store", "sqlite:store.db", "export", "out"},
                   m_dir.GetPath());
        orphans.AwaitEnd();
        ASSERT_EQ(CountFiles(File("out")), uiFiles);
        for (const auto& entry : fs::directory_iterator(File("out"))) {
            ASSERT_EQ(ReadText(entry.path()),
                      ReadText(fs::path(PSZ_SAMPLE_DIR) / entry.path().filename()));
        }
    }
}

}  // namespace
