#include "child_process.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace {

constexpr char LISTENING[] = "listening on http://";

}  // namespace

CChildProcess::CChildProcess(const std::function<void()>& run) {
    int ends[2];
    if (pipe(ends) != 0 || (m_iPid = fork()) < 0) {
        throw std::runtime_error("cannot start a process");
    }
    if (m_iPid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        close(ends[1]);
        run();
        _exit(EXIT_FAILURE);
    }
    close(ends[1]);
    m_iOutput = ends[0];
}

CChildProcess::~CChildProcess() {
    if (m_iPid > 0) {
        kill(m_iPid, SIGKILL);
        waitpid(m_iPid, nullptr, 0);
    }
    close(m_iOutput);
}

uint16_t CChildProcess::AwaitPort() {
    std::string strLine;
    for (char c = 0; read(m_iOutput, &c, 1) == 1;) {
        if (c != '\n') {
            strLine += c;
            continue;
        }
        if (strLine.rfind(LISTENING, 0) == 0) {
            return static_cast<uint16_t>(std::stoi(strLine.substr(strLine.rfind(':') + 1)));
        }
        strLine.clear();
    }
    throw std::runtime_error("a server did not start");
}

void CChildProcess::AwaitEnd() {
    int iStatus = 0;
    waitpid(m_iPid, &iStatus, 0);
    m_iPid = -1;
    if (iStatus != 0) {
        throw std::runtime_error("a process that the benchmark needs has failed");
    }
}
