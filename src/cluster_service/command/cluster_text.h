#pragma once

#include <json/value.h>

#include <cstddef>
#include <list>
#include <string>

/// What the stored text of a good cluster document says itself, before a load makes its own of it.

/// The nodes, as an array.
const Json::Value& NodesOf(const Json::Value& cluster);

/// In the order of the document, one that stands there twice twice.
std::list<std::string> NodeIdsOf(const Json::Value& cluster);

/// The container types of every entry of that node.
std::list<std::string> ContainersOf(const Json::Value& cluster, const std::string& strNodeId);

/// A node that says something else and loads as removed.
struct CTurnedNode {
    std::size_t index;  ///< among the nodes
    std::string strId;
    std::string strStatus;   ///< what it says
    std::string strRemoved;  ///< the first removed node, behind which it stands
};

std::list<CTurnedNode> NodesReadAsRemoved(const Json::Value& cluster);
