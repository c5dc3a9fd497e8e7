#pragma once

#include <string>

#include "internal/zookeeper_session.h"

// Single nodes on ZooKeeper servers. Each call ends at the deadline, and returns the client's code.

/// The node's text. A watcher stands, when there was an answer, on an absent node too.
CZooKeeperReply ReadNode(CSessionKeeper& keeper, const std::string& strPath, StoreWatcher pWatcher,
                         CSessionKeeper::Clock::time_point deadline);

/// Creates a node, without data when there is no text, and those missing above it. An ephemeral
/// one goes with the session. ZNODEEXISTS may be what a try has done whose answer was lost.
int CreateNode(CSessionKeeper& keeper, const std::string& strPath, const std::string* pText,
               CSessionKeeper::Clock::time_point deadline, int iMode = ZOO_PERSISTENT);

/// Gives a node its text, creating what is missing.
int WriteNode(CSessionKeeper& keeper, const std::string& strPath, const std::string& strText,
              CSessionKeeper::Clock::time_point deadline);
