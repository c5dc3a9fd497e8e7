#pragma once

#include <ostream>
#include <string>

/// Takes a container out of the stored cluster, and its node with the last one. Says what the store
/// holds afterwards. Returns an exit code.
int Remove(const std::string& strNodeId, const std::string& strContainerType, bool bYes,
           std::ostream& output, std::ostream& errors);

/// Makes a slave of the centre database its master, in the store too. Says what the store holds
/// afterwards. Returns an exit code.
int Promote(const std::string& strNodeId, bool bYes, std::ostream& output, std::ostream& errors);
