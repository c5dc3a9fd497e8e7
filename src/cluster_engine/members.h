#pragma once

#include <list>
#include <set>
#include <string>
#include <vector>

#include "cluster_engine/cluster.h"
#include "framework_service/tarn_node.h"

/// How members enter and leave the registries and the engine's own records, whoever says that they
/// do: an input, or the cluster document.

/// Who leaves.
struct CLeaving {
    std::set<std::string> nodes;             ///< with all of their containers
    std::vector<CContainerAddr> containers;  ///< those of the nodes too
};

/// The containers of a node that the engine knows, in their order.
std::vector<CContainerAddr> ContainersOf(const CCluster& cluster, const std::string& strNodeId);

/// Why the container cannot be a member beside those that are, or have just left; empty when it
/// can.
std::string WhyRunsTogether(const CCluster& cluster, const CContainerAddr& addr);

/// A node that is no member yet, with all of its containers.
void EnterNode(CCluster& cluster, const CNode& node);

/// Containers of a node that is a member already.
void EnterContainers(CCluster& cluster, const CNode& node, const std::list<std::string>& types);

/// The member status of a node and of its containers, in the registries and here.
void ApplyStatus(CCluster& cluster, const std::string& strNodeId, EMemberStatus eStatus);

/// Takes the work out of containers that leave: it moves as in a fault shift, what finds no room
/// is homeless, what may not move ends. The answer names the tasks. When that cannot be written
/// the input is refused and nothing has changed.
CAnswer TakeWorkOut(CCluster& cluster, const CLeaving& leaving);

/// They are members no more. With bFlush the library takes them out of the cluster document.
void RemoveMembers(CCluster& cluster, const CLeaving& leaving, bool bFlush);

/// Links are no longer accepted from those of the nodes whose address is none of the others, nor
/// our own.
void DropLinks(const std::list<CNode>& nodes, const std::set<std::string>& others);
