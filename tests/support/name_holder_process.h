#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>

/// The session of a name_holder on ZooKeeper servers.
constexpr std::chrono::milliseconds NAME_HOLDER_SESSION{2000};

/// Another program, name_holder, that holds a name; gone with the object, if it is not before.
class CNameHolderProcess {
public:
    /// Starts it on "sqlite:FILE" or "zookeeper:HOST:PORT". Its first line tells how that went:
    /// "held", or "refused, held by TEXT".
    CNameHolderProcess(const std::string& strStore, const std::string& strPath,
                       const std::string& strText);
    ~CNameHolderProcess();
    CNameHolderProcess(const CNameHolderProcess&) = delete;
    CNameHolderProcess& operator=(const CNameHolderProcess&) = delete;

    /// The next line that it says; empty when none comes for long.
    std::string Line();

    void Say(const std::string& strLine) const;

    void Kill();
    void Pause() const;
    void GoOn() const;

private:
    pid_t m_iProcess;
    int m_iInput;   ///< that of the program, as the next
    int m_iOutput;  ///< read by us
    std::string m_strRead;
};
