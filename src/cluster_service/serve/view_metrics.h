#pragma once

#include <prometheus/metric_family.h>

#include <cstddef>
#include <vector>

#include "serve/cluster_view.h"

/// What the queue and a view show in figures: sizes of the registries, who is offline, tasks,
/// shifts that run, plug-ins, document sizes, versions. Of a cluster that was never loaded there is
/// nothing but the queue, and that it is not ready.
std::vector<prometheus::MetricFamily> ViewMetrics(const CClusterView& view,
                                                  std::size_t uiQueueLength);
