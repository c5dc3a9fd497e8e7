#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>

/// Stands between clients and a ZooKeeper server, on a loopback port, and passes bytes on, except
/// around commits, the requests of several operations: there it does as it is told, once.
class CDroppingProxy {
public:
    enum class EAtCommit {
        PASS,
        LOSE_REQUEST,  ///< drops the connection instead of passing the request on
        LOSE_ANSWER,   ///< passes the request on, and drops the connection instead of its answer
        HOLD           ///< keeps the request, and passes nothing on any more
    };

    explicit CDroppingProxy(const std::string& strServer);
    ~CDroppingProxy();

    CDroppingProxy(const CDroppingProxy&) = delete;
    CDroppingProxy& operator=(const CDroppingProxy&) = delete;

    std::string Address() const;

    void AtNextCommit(EAtCommit eAtCommit) { m_eAtCommit = eAtCommit; }

    /// What happens after an answer was lost, before anyone can connect again.
    void OnAnswerLost(std::function<void()> onAnswerLost) { m_onAnswerLost = onAnswerLost; }

    /// How many commits clients have sent, lost ones included.
    int CountCommits() const { return m_iCommits; }

private:
    class CConnection;

    void Run();

    const int m_iServerPort;
    int m_iListener;
    int m_iPort = 0;
    std::atomic<bool> m_bStopping{false};
    std::atomic<EAtCommit> m_eAtCommit{EAtCommit::PASS};
    std::atomic<int> m_iCommits{0};
    std::function<void()> m_onAnswerLost = [] {};
    std::thread m_thread;
};
