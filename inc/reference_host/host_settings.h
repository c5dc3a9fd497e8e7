#pragma once

#include <string>

/// What the host is told at its start.
struct CHostSettings {
    std::string strClusterCode;  ///< names the cluster in every store path
    std::string strLocalIp;      ///< this node's address as dotted text; empty when it has none
    std::string strLibDir;     ///< with the folder "plugins"; without it the plug-ins fail to load
    std::string strConfigDir;  ///< with the folder "taskmodel"; may be missing likewise
};

/// Replaces all settings; until then each is empty. Called before the first use of the library, or
/// later while no other thread uses the library or the host.
[[gnu::visibility("default")]] void Configure(const CHostSettings& settings);

/// What Configure was told. From any thread, as long as none calls Configure.
[[gnu::visibility("default")]] const CHostSettings& GetHostSettings();

/// What the library handed over from the cluster's documents, or what holds until it does.
struct CHandedOverSettings {
    bool bLoadBalance = true;
    bool bFaultShift = true;
    bool bLoadBalanceOnePeriod = true;
    int iLoadBalanceDiskThreshold = 10;
    int iLoadBalanceNetThreshold = 10;
    int iLoadBalanceChannelThreshold = 10;
    int iClusterForwardType = 0;
};

/// Callable from any thread. Settings of one load may be seen one by one, as they come.
[[gnu::visibility("default")]] CHandedOverSettings GetHandedOverSettings();
