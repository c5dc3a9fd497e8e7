#pragma once

#include "command/table.h"

/// The cluster's containers as they are: online, with how many tasks, how full.
CTable PlayedContainers();
