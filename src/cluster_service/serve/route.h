#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "serve/http.h"
#include "serve/service_context.h"

struct CRoute;

/// A request on its way through the table of routes.
struct CAsked {
    const CRoute& route;
    const CHttpRequest& request;
    const std::map<std::string, std::string>& path;  ///< what stands for the names in its path
    const CServiceContext& context;
    const std::shared_ptr<IReplyTo>& pReplyTo;
};

/// One row: which request, and who takes it.
struct CRoute {
    const char* pszMethod;
    const char* pszPath;
    const char* pszOperation;  ///< its own name
    void (*pTake)(const CAsked& asked);
    const char* pszInput = nullptr;       ///< the kind of input that it takes, if it is one
    std::vector<const char*> query = {};  ///< what may stand behind the path's question mark
};

/// All that the service can be asked, and told.
const std::vector<CRoute>& RouteTable();
