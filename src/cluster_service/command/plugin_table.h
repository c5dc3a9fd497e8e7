#pragma once

#include <string>

#include "command/table.h"
#include "framework_service/plugin_mgr.h"

/// A line for each file of the plug-in folder: what its plug-in is and holds, what it claimed and
/// another has, and why it is not loaded.
CTable PluginTable();

/// What was lost to whom, in words.
std::string LostText(const CLostClaim& claim);
