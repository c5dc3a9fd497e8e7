#pragma once

#include <string>

/// Takes the cluster's behaviour switches from the library, and gives it the local address.
/// Callable from any thread; the settings come one by one, not as a group.
class [[gnu::visibility("default")]] CGlobalConfig {
public:
    static CGlobalConfig& Instance();

    void SetLoadBalance(bool bLoadBalance);
    void SetFaultShift(bool bFaultShift);
    void SetLoadBalanceOnePeriod(bool bOnePeriod);
    void SetLoadBalanceDiskThreshold(int iThreshold);
    void SetLoadBalanceNetThreshold(int iThreshold);
    void SetLoadBalanceChannelThreshold(int iThreshold);
    void SetClusterForwardType(int iForwardType);

    /// The address of this node as dotted text; empty when it has none.
    std::string GetLocalIp();
};
