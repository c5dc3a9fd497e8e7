#pragma once

#include <optional>
#include <set>
#include <string>

#include "agents/http_client.h"
#include "command/table.h"

/// The service's containers in the columns of play/container_table.h; nothing when it does not show
/// them.
std::optional<CTable> AskContainers(CHttpClient& client);

/// The ids of the tasks that the service shows in one container; nothing when it does not show
/// them.
std::optional<std::set<std::string>> AskTasks(CHttpClient& client, const std::string& strNodeId,
                                              const std::string& strType);
