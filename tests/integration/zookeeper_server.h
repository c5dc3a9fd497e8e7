#pragma once

#include <sys/types.h>

#include <string>

#include "support/temp_dir.h"

/// A port of the loopback interface that nobody listens on, below those that the system gives to
/// connecting clients: one of them could take the place of a stopped server.
int FreeLoopbackPort();

/// A coordination server of its own: a process on a free loopback port with a folder for its data,
/// both gone with the object, the process also when the program dies. Every operation throws
/// std::runtime_error, with the reason, when the server does not do as it is told.
class CZooKeeperServer {
public:
    /// Configures the server without starting it. A member of an ensemble takes its number and the
    /// lines that all members share.
    explicit CZooKeeperServer(int iMember = 0, const std::string& strEnsembleConfig = {});
    ~CZooKeeperServer();

    CZooKeeperServer(const CZooKeeperServer&) = delete;
    CZooKeeperServer& operator=(const CZooKeeperServer&) = delete;

    /// Starts the process, which ends with the calling thread; AwaitServing returns once it serves
    /// clients.
    void Start();
    void AwaitServing() const;
    void StartServing();

    void Stop();  ///< in good order
    void Kill();  ///< as by a crash

    /// Between the two the server takes connections and bytes but answers nothing.
    void Freeze() const;
    void Thaw() const;

    /// Of a server that does not run.
    void EraseData() const;

    bool IsLeader() const;
    std::string Address() const;

private:
    void RemoveHeadlessLogs() const;
    void End(int iSignal);
    void Signal(int iSignal) const;
    bool HasExited() const;
    std::string Ask(const std::string& strCommand) const;

    const int m_iMember;
    const int m_iPort;
    const CTempDir m_dir;
    mutable pid_t m_iProcess = 0;  ///< 0 when none runs
};

/// The server of all tests that leave their server alone: started with the first of them, ended
/// with the program.
CZooKeeperServer& SharedServer();
