#pragma once

#include <list>
#include <set>
#include <string>
#include <vector>

#include "cluster_engine/cluster.h"

/// How work gets to a container: decided by the type's plug-in, checked, carried out, written down.
/// Every rule that places or moves tasks goes this way.

/// Why the container may not get new work, in words; empty when it may.
std::string WhyNotUsable(CCluster& cluster, const CContainerAddr& addr);

/// A task on its way to a container.
struct CPlacedTask {
    CAssignedTask task;
    CContainerAddr to;
};

/// Why and for whom tasks are placed.
struct CMoveReason {
    std::string strBy;     ///< the rule, as decisions name it
    std::string strCause;  ///< in words
    EEvent eEvent = EEvent::SHIFTED;
};

/// Asks the plug-in where the tasks may go, and strikes what is no placement: of a task that nobody
/// asked about, into a container that may not get work. A container that does not exist or is not
/// of the plug-in's types is a failure of the plug-in.
CCallResult Decide(CCluster& cluster, CPluginRecord& plugin, const std::string& strAsker,
                   const std::list<CResourceTask>& tasks, bool bReschedule, CPlacement& placement);

/// Puts the tasks where they go, out of wherever they are, in the library's tables and in the
/// assignments, under one decision number, which is raised where it is an old one. Tells the nodes,
/// and one event a container. On a failure what was not carried out stays where it was.
CCallResult CarryOut(CCluster& cluster, CPluginRecord& plugin, std::vector<CPlacedTask> placed,
                     unsigned long long& ullDecision, const CMoveReason& reason);

/// Decides and carries out for tasks that a container, or what is homeless, has. Replaces stuck,
/// which must not be taskIds itself, by the ids of those that are still there.
CCallResult MoveAway(CCluster& cluster, CPluginRecord& plugin, const CContainerAddr& from,
                     const std::set<std::string>& taskIds, bool bReschedule,
                     const CMoveReason& reason, std::set<std::string>& stuck);
