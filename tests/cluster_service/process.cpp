#include "process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "support/temp_dir.h"

namespace {

constexpr std::chrono::seconds DEADLINE{30};
constexpr std::chrono::milliseconds PAUSE{2};
constexpr int EXIT_NOT_STARTED = 127;

std::string TextOf(const std::string& strFile) {
    std::ostringstream text;
    text << std::ifstream(strFile, std::ios::binary).rdbuf();
    return text.str();
}

bool Redirect(int iFile, const char* pszFile, int iFlags) {
    const int iTarget = open(pszFile, iFlags, S_IRUSR | S_IWUSR);
    return iTarget >= 0 && dup2(iTarget, iFile) >= 0;
}

/// A terminal of the test's own. Both ends stay open until the program has ended.
class CPseudoTerminal {
public:
    explicit CPseudoTerminal(const std::string& strTyped)
        : m_iMaster(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        char szName[PATH_MAX] = {};
        if (m_iMaster < 0 || grantpt(m_iMaster) != 0 || unlockpt(m_iMaster) != 0 ||
            ptsname_r(m_iMaster, szName, sizeof szName) != 0) {
            throw std::runtime_error("cannot open a terminal");
        }
        m_strName = szName;
        m_iSlave = open(szName, O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (write(m_iMaster, strTyped.data(), strTyped.size()) !=
            static_cast<ssize_t>(strTyped.size())) {
            throw std::runtime_error("cannot type");
        }
    }
    ~CPseudoTerminal() {
        close(m_iSlave);
        close(m_iMaster);
    }
    CPseudoTerminal(const CPseudoTerminal&) = delete;
    CPseudoTerminal& operator=(const CPseudoTerminal&) = delete;

    const std::string& GetName() const { return m_strName; }

    /// What has come to be shown since the last call.
    std::string TakeShown() const {
        std::string strShown;
        char szBuffer[4096];
        while (IsSomethingShown()) {
            const ssize_t count = read(m_iMaster, szBuffer, sizeof szBuffer);
            if (count <= 0) {
                break;
            }
            strShown.append(szBuffer, static_cast<std::size_t>(count));
        }
        return strShown;
    }

private:
    bool IsSomethingShown() const {
        pollfd shown{m_iMaster, POLLIN, 0};
        return poll(&shown, 1, 0) > 0;
    }

    const int m_iMaster;
    int m_iSlave = -1;
    std::string m_strName;
};

int AwaitEnd(pid_t iProcess, const std::function<void()>& meanwhile) {
    const auto deadline = std::chrono::steady_clock::now() + DEADLINE;
    int iStatus = 0;
    while (waitpid(iProcess, &iStatus, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            kill(iProcess, SIGKILL);
            waitpid(iProcess, &iStatus, 0);
            throw std::runtime_error("the program did not end");
        }
        meanwhile();
        std::this_thread::sleep_for(PAUSE);
    }
    meanwhile();
    return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1;
}

}  // namespace

CProcessResult RunProcess(const std::string& strProgram, const std::vector<std::string>& arguments,
                          const std::string& strFolder, const std::optional<CTerminal>& terminal) {
    const CTempDir dir;
    std::string strOutput = dir.File("output");
    std::string strErrors = dir.File("errors");
    std::vector<std::string> words{strProgram};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& strWord : words) {
        argv.push_back(strWord.data());
    }
    argv.push_back(nullptr);

    std::optional<CPseudoTerminal> pseudoTerminal;
    std::string strInput = "/dev/null";
    if (terminal) {
        pseudoTerminal.emplace(terminal->strTyped);
        strInput = pseudoTerminal->GetName();
    }
    const bool bShows = terminal && terminal->bShows;
    if (bShows) {
        strOutput = strErrors = strInput;
    }
    const pid_t iProcess = fork();
    if (iProcess < 0) {
        throw std::runtime_error(std::strerror(errno));
    }
    if (iProcess == 0) {
        const int iWrite = O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY;
        if (chdir(strFolder.c_str()) == 0 &&
            Redirect(STDIN_FILENO, strInput.c_str(), O_RDONLY | O_NOCTTY) &&
            Redirect(STDOUT_FILENO, strOutput.c_str(), iWrite) &&
            Redirect(STDERR_FILENO, strErrors.c_str(), iWrite)) {
            execv(argv[0], argv.data());
        }
        _exit(EXIT_NOT_STARTED);
    }
    CProcessResult result;
    std::string strShown;
    result.iExitCode = AwaitEnd(iProcess, [&] {
        if (bShows) {
            strShown += pseudoTerminal->TakeShown();
        }
    });
    if (result.iExitCode == EXIT_NOT_STARTED) {
        throw std::runtime_error("cannot start " + strProgram);
    }
    result.strOutput = bShows ? strShown : TextOf(strOutput);
    result.strErrors = bShows ? "" : TextOf(strErrors);
    return result;
}
