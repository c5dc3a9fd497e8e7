#include "cluster_engine/life.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

void WriteAll(int iPipe, const std::string& strText) {
    for (std::size_t uiAt = 0; uiAt < strText.size();) {
        const ssize_t iWritten = write(iPipe, strText.data() + uiAt, strText.size() - uiAt);
        if (iWritten <= 0) {
            _exit(EXIT_FAILURE);
        }
        uiAt += static_cast<std::size_t>(iWritten);
    }
}

[[noreturn]] void Live(int iPipe, const std::function<std::string()>& run) {
    WriteAll(iPipe, run());
    std::fflush(nullptr);
    _exit(testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
}

}  // namespace

std::string InLife(const std::function<std::string()>& run) {
    int pipes[2];
    std::fflush(nullptr);
    if (pipe(pipes) != 0) {
        ADD_FAILURE() << "no pipe";
        return "";
    }
    const pid_t iProcess = fork();
    if (iProcess == 0) {
        close(pipes[0]);
        Live(pipes[1], run);
    }
    close(pipes[1]);
    std::string strResult;
    char szPart[65536];
    for (ssize_t iRead = 0; (iRead = read(pipes[0], szPart, sizeof(szPart))) > 0;) {
        strResult.append(szPart, static_cast<std::size_t>(iRead));
    }
    close(pipes[0]);
    int iStatus = -1;
    waitpid(iProcess, &iStatus, 0);
    EXPECT_EQ(iStatus, 0) << "the life failed, or ended early";
    return strResult;
}
