#pragma once

#include <string>

/// Feeds a request to the service's routes: the first line is the method, the path and a query of
/// one parameter ("GET /api/v1/nodes limit=1"), the rest the body. It is answered once, in JSON.
void FeedRequest(const std::string& strInput);
