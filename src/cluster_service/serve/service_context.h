#pragma once

#include <string>

#include "serve/cluster_view.h"
#include "serve/event_log.h"
#include "serve/input_queue.h"
#include "serve/metrics.h"
#include "serve/service_settings.h"

/// What the routes work with; all of it outlives the server.
struct CServiceContext {
    CInputQueue& queue;
    CPublishedView& view;
    CEventLog& events;
    CServiceMetrics& metrics;
    const CServiceSettings& settings;
};
