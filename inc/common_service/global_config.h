#pragma once

#include <atomic>
#include <mutex>
#include <string>

/// The cluster's behaviour switches as this process sees them, and the local address. Callable
/// from any thread; the settings change one by one, not as a group.
class CGlobalConfig {
public:
    static CGlobalConfig& Instance();

    void SetLoadBalance(bool bLoadBalance);
    void SetFaultShift(bool bFaultShift);
    void SetLoadBalanceOnePeriod(bool bOnePeriod);
    void SetLoadBalanceDiskThreshold(int iThreshold);
    void SetLoadBalanceNetThreshold(int iThreshold);
    void SetLoadBalanceChannelThreshold(int iThreshold);
    void SetClusterForwardType(int iForwardType);

    /// The address of this node as dotted text; empty until it is set.
    std::string GetLocalIp();

    /// What the reference host adds: the way back to the settings, and the local address' source.
    bool IsLoadBalance() const;
    bool IsFaultShift() const;
    bool IsLoadBalanceOnePeriod() const;
    int GetLoadBalanceDiskThreshold() const;
    int GetLoadBalanceNetThreshold() const;
    int GetLoadBalanceChannelThreshold() const;
    int GetClusterForwardType() const;
    void SetLocalIp(const std::string& strIp);

private:
    std::atomic<bool> m_bLoadBalance{true};
    std::atomic<bool> m_bFaultShift{true};
    std::atomic<bool> m_bLoadBalanceOnePeriod{true};
    std::atomic<int> m_iLoadBalanceDiskThreshold{10};
    std::atomic<int> m_iLoadBalanceNetThreshold{10};
    std::atomic<int> m_iLoadBalanceChannelThreshold{10};
    std::atomic<int> m_iClusterForwardType{0};

    std::mutex m_mutex;
    std::string m_strLocalIp;  ///< guarded by m_mutex
};
