#include "support/name_holder_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>

namespace {

constexpr std::chrono::milliseconds DEADLINE{30000};

struct CPipe {
    CPipe() {
        if (pipe2(ends, O_CLOEXEC) != 0) {
            throw std::runtime_error(std::strerror(errno));
        }
    }

    int ends[2];
};

}  // namespace

CNameHolderProcess::CNameHolderProcess(const std::string& strStore, const std::string& strPath,
                                       const std::string& strText) {
    const CPipe input;
    const CPipe output;
    m_iProcess = fork();
    if (m_iProcess < 0) {
        throw std::runtime_error(std::strerror(errno));
    }
    if (m_iProcess == 0) {
        if (dup2(input.ends[0], STDIN_FILENO) >= 0 && dup2(output.ends[1], STDOUT_FILENO) >= 0) {
            execl(PSZ_NAME_HOLDER, PSZ_NAME_HOLDER, strStore.c_str(), strPath.c_str(),
                  strText.c_str(), nullptr);
        }
        _exit(1);
    }
    close(input.ends[0]);
    close(output.ends[1]);
    m_iInput = input.ends[1];
    m_iOutput = output.ends[0];
}

CNameHolderProcess::~CNameHolderProcess() {
    Kill();
    close(m_iInput);
    close(m_iOutput);
}

std::string CNameHolderProcess::Line() {
    const auto deadline = std::chrono::steady_clock::now() + DEADLINE;
    while (m_strRead.find('\n') == std::string::npos) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd said{m_iOutput, POLLIN, 0};
        char szBuffer[1024];
        if (left.count() <= 0 || poll(&said, 1, static_cast<int>(left.count())) <= 0) {
            return "";
        }
        const ssize_t count = read(m_iOutput, szBuffer, sizeof szBuffer);
        if (count <= 0) {
            return "";
        }
        m_strRead.append(szBuffer, static_cast<std::size_t>(count));
    }
    const std::size_t length = m_strRead.find('\n');
    std::string strLine = m_strRead.substr(0, length);
    m_strRead.erase(0, length + 1);
    return strLine;
}

void CNameHolderProcess::Say(const std::string& strLine) const {
    const std::string strText = strLine + "\n";
    if (write(m_iInput, strText.data(), strText.size()) != static_cast<ssize_t>(strText.size())) {
        throw std::runtime_error(std::strerror(errno));
    }
}

void CNameHolderProcess::Kill() {
    if (m_iProcess > 0) {
        kill(m_iProcess, SIGKILL);
        waitpid(m_iProcess, nullptr, 0);
        m_iProcess = 0;
    }
}

void CNameHolderProcess::Pause() const {
    kill(m_iProcess, SIGSTOP);
    waitpid(m_iProcess, nullptr, WUNTRACED);  // its threads stop one after the other
}

void CNameHolderProcess::GoOn() const {
    kill(m_iProcess, SIGCONT);
}
