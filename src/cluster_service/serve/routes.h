#pragma once

#include "serve/http.h"
#include "serve/service_context.h"

/// Answers every request by the table of routes: questions at once from the published view, inputs
/// when the engine's thread has answered them. The context outlives the handler.
HttpHandler MakeRoutes(const CServiceContext& context);
