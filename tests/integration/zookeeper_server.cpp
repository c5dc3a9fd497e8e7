#include "zookeeper_server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr char SERVER_JAR[] = "/usr/share/java/zookeeper.jar";
/// Writes the server's warnings and errors to its standard error.
constexpr char LOG_JAR[] = "/usr/share/java/slf4j-simple.jar";
/// What each transaction log begins with, before its first transaction.
constexpr std::uintmax_t LOG_HEAD_SIZE = 16;
constexpr milliseconds START_LIMIT{30000};
constexpr milliseconds POLL_PAUSE{20};

/// An IPv4 stream socket on the loopback interface, closed with the object.
class CLoopbackSocket {
public:
    explicit CLoopbackSocket(int iPort)
        : m_iSocket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        m_address.sin_family = AF_INET;
        m_address.sin_port = htons(static_cast<uint16_t>(iPort));
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const timeval patience{1, 0};
        setsockopt(m_iSocket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
    }
    ~CLoopbackSocket() { close(m_iSocket); }
    CLoopbackSocket(const CLoopbackSocket&) = delete;
    CLoopbackSocket& operator=(const CLoopbackSocket&) = delete;

    bool Bind() const { return bind(m_iSocket, Address(), sizeof(m_address)) == 0; }
    bool Connect() const { return connect(m_iSocket, Address(), sizeof(m_address)) == 0; }

    void Send(const std::string& strText) const {
        static_cast<void>(send(m_iSocket, strText.data(), strText.size(), MSG_NOSIGNAL));
    }

    std::string ReceiveAll() const {
        std::string strText;
        std::array<char, 4096> buffer{};
        for (;;) {
            const ssize_t lLength = recv(m_iSocket, buffer.data(), buffer.size(), 0);
            if (lLength <= 0) {
                return strText;
            }
            strText.append(buffer.data(), static_cast<std::size_t>(lLength));
        }
    }

private:
    const sockaddr* Address() const { return reinterpret_cast<const sockaddr*>(&m_address); }

    int m_iSocket;
    sockaddr_in m_address{};
};

std::string TextOf(const std::string& strFile) {
    std::ostringstream text;
    text << std::ifstream(strFile).rdbuf();
    return text.str();
}

/// Between fork and exec: only what a signal handler may call.
[[noreturn]] void BecomeServer(const char* pszLogFile, char* const* ppszArguments) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int iLog = open(pszLogFile, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    dup2(iLog, STDOUT_FILENO);
    dup2(iLog, STDERR_FILENO);
    execvp(ppszArguments[0], ppszArguments);
    const char* const pszReason = std::strerror(errno);
    static_cast<void>(!write(STDERR_FILENO, pszReason, std::strlen(pszReason)));
    _exit(127);
}

}  // namespace

int FreeLoopbackPort() {
    static std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> ports(20000, 32000);
    for (int iTry = 0; iTry < 1000; ++iTry) {
        const int iPort = ports(random);
        if (CLoopbackSocket(iPort).Bind()) {
            return iPort;
        }
    }
    throw std::runtime_error("no free loopback port");
}

CZooKeeperServer::CZooKeeperServer(int iMember, const std::string& strEnsembleConfig)
    : m_iMember(iMember), m_iPort(FreeLoopbackPort()) {
    EraseData();
    m_dir.WriteFile("zoo.cfg",
                    "tickTime=200\n"
                    "dataDir=" +
                        m_dir.File("data") +
                        "\n"
                        "clientPort=" +
                        std::to_string(m_iPort) +
                        "\n"
                        "clientPortAddress=127.0.0.1\n"
                        "maxClientCnxns=0\n"
                        "snapCount=1000\n"
                        "admin.enableServer=false\n"
                        "4lw.commands.whitelist=srvr\n" +
                        strEnsembleConfig);
}

CZooKeeperServer::~CZooKeeperServer() {
    End(SIGKILL);
}

void CZooKeeperServer::EraseData() const {
    fs::remove_all(m_dir.File("data"));
    fs::create_directory(m_dir.File("data"));
    m_dir.WriteFile("data/myid", std::to_string(m_iMember) + "\n");
}

/// A server that was killed between making a log and writing its head does not start again from it.
/// Such a log holds no transaction yet, and goes as it would by an operator's hand.
void CZooKeeperServer::RemoveHeadlessLogs() const {
    const fs::path folder = m_dir.File("data/version-2");
    if (!fs::exists(folder)) {
        return;
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (entry.path().stem() == "log" && entry.file_size() < LOG_HEAD_SIZE) {
            fs::remove(entry.path());
        }
    }
}

void CZooKeeperServer::Start() {
    RemoveHeadlessLogs();
    if (!fs::exists(SERVER_JAR)) {
        throw std::runtime_error(std::string(SERVER_JAR) +
                                 " is missing: install the packages zookeeper and "
                                 "default-jre-headless");
    }
    std::vector<std::string> arguments{"java",
                                       "-Xmx64m",
                                       "-XX:+UseSerialGC",
                                       "-XX:TieredStopAtLevel=1",
                                       "-XX:-UsePerfData",
                                       "-Dzookeeper.preAllocSize=1024",
                                       "-Dorg.slf4j.simpleLogger.defaultLogLevel=warn",
                                       "-cp",
                                       std::string(SERVER_JAR) + ":" + LOG_JAR,
                                       "org.apache.zookeeper.server.quorum.QuorumPeerMain",
                                       m_dir.File("zoo.cfg")};
    std::vector<char*> pointers;
    for (std::string& strArgument : arguments) {
        pointers.push_back(strArgument.data());
    }
    pointers.push_back(nullptr);
    const std::string strLogFile = m_dir.File("log");
    m_iProcess = fork();
    if (m_iProcess == 0) {
        BecomeServer(strLogFile.c_str(), pointers.data());
    }
}

void CZooKeeperServer::AwaitServing() const {
    const auto limit = steady_clock::now() + START_LIMIT;
    while (Ask("srvr").find("Mode: ") == std::string::npos) {
        if (HasExited() || steady_clock::now() > limit) {
            throw std::runtime_error("the ZooKeeper server does not serve: " +
                                     TextOf(m_dir.File("log")));
        }
        std::this_thread::sleep_for(POLL_PAUSE);
    }
}

void CZooKeeperServer::StartServing() {
    Start();
    AwaitServing();
}

void CZooKeeperServer::Stop() {
    End(SIGTERM);
}
void CZooKeeperServer::Kill() {
    End(SIGKILL);
}
void CZooKeeperServer::Freeze() const {
    Signal(SIGSTOP);
    waitpid(m_iProcess, nullptr, WUNTRACED);  // its threads stop one after the other
}
void CZooKeeperServer::Thaw() const {
    Signal(SIGCONT);
}

void CZooKeeperServer::End(int iSignal) {
    if (m_iProcess > 0 && !HasExited()) {
        kill(m_iProcess, iSignal);
        waitpid(m_iProcess, nullptr, 0);
    }
    m_iProcess = 0;
}

void CZooKeeperServer::Signal(int iSignal) const {
    if (m_iProcess <= 0 || kill(m_iProcess, iSignal) != 0) {
        throw std::runtime_error("no ZooKeeper server runs");
    }
}

bool CZooKeeperServer::HasExited() const {
    if (m_iProcess > 0 && waitpid(m_iProcess, nullptr, WNOHANG) == m_iProcess) {
        m_iProcess = 0;
    }
    return m_iProcess <= 0;
}

bool CZooKeeperServer::IsLeader() const {
    return Ask("srvr").find("Mode: leader") != std::string::npos;
}

std::string CZooKeeperServer::Address() const {
    return "127.0.0.1:" + std::to_string(m_iPort);
}

std::string CZooKeeperServer::Ask(const std::string& strCommand) const {
    const CLoopbackSocket connection(m_iPort);
    if (!connection.Connect()) {
        return {};
    }
    connection.Send(strCommand);
    return connection.ReceiveAll();
}

CZooKeeperServer& SharedServer() {
    static CZooKeeperServer& server = *[] {
        static CZooKeeperServer started;
        started.StartServing();
        return &started;
    }();
    return server;
}
