#pragma once

#include <string>

#include "framework_service/tarn_node.h"

namespace [[gnu::visibility("hidden")]] framework_internal {

/// Drops the first container of that type from the node; a further one stays. Returns how many
/// containers are left.
unsigned int DropContainerType(CNode& node, const std::string& strContainerType);

}  // namespace framework_internal
