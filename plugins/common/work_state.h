#pragma once

#include <string>

#include "framework_service/container.h"
#include "framework_service/tarn_node.h"

// Who takes work, whatever the work is: a container that the library calls available (IPlugin.h),
// and that is a normal member and not in fault shift. A reason says why not, as a clause; null when
// there is nothing against it. Nothing is logged.

/// As far as the container itself goes. The type is that of its address.
const char* WhyNotReady(const CContainer& container, const std::string& strContainerType);

/// As far as the node goes that the container names; null for one that is unknown.
const char* WhyNoHost(const CNode* pNode);
