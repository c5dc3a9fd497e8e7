#pragma once

#include "framework_service/container.h"

/// How full a container is, as plug-ins see it: what is reported as used and what the tasks cost
/// are two views of one thing, of which the larger counts. In percent of the total; 0 without one.
/// @{
int DiskPercent(const CContainer& container);
int NetPercent(const CContainer& container);
/// @}
