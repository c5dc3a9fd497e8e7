#include "serve/routes.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "serve/route.h"
#include "serve/service_error.h"
#include "serve/url_path.h"

namespace {

/// Browsers and probes add words of their own to what does not lie below "/api/".
bool HasUnknownParameter(const CRoute& route, const CHttpRequest& request, std::string& strBad) {
    if (std::string_view(route.pszPath).rfind("/api/", 0) != 0) {
        return false;
    }
    for (const auto& parameter : request.query) {
        if (std::find(route.query.begin(), route.query.end(), parameter.first) ==
            route.query.end()) {
            strBad = ShownAgain(parameter.first);
            return true;
        }
    }
    return false;
}

/// Finds the row of a request.
class CRouter {
public:
    CRouter() {
        for (const CRoute& route : RouteTable()) {
            m_rows.emplace_back(CPathPattern(route.pszPath), &route);
        }
    }

    void Take(const CServiceContext& context, const CHttpRequest& request,
              const std::shared_ptr<IReplyTo>& pReplyTo) const {
        const std::vector<std::string_view> path = SplitPath(request.strPath);
        std::set<std::string> allowed;
        for (const auto& [pattern, pRoute] : m_rows) {
            if (!pattern.Matches(path)) {
                continue;
            }
            if (request.strMethod == pRoute->pszMethod) {
                return Take(context, request, pReplyTo, *pRoute, pattern, path);
            }
            allowed.insert(pRoute->pszMethod);
        }
        pReplyTo->Send(NoRoute(request, allowed));
    }

private:
    static CHttpReply NoRoute(const CHttpRequest& request, std::set<std::string> allowed) {
        if (allowed.empty()) {
            return ErrorReply(EServiceFault::UNKNOWN_PATH, ShownAgain(request.strPath));
        }
        if (allowed.count("GET") != 0) {
            allowed.insert("HEAD");
        }
        std::string strAllow;
        for (const std::string& strMethod : allowed) {
            strAllow += (strAllow.empty() ? "" : ", ") + strMethod;
        }
        CHttpReply reply = ErrorReply(EServiceFault::WRONG_METHOD, ShownAgain(request.strMethod));
        reply.headers["Allow"] = strAllow;
        return reply;
    }

    static void Take(const CServiceContext& context, const CHttpRequest& request,
                     const std::shared_ptr<IReplyTo>& pReplyTo, const CRoute& route,
                     const CPathPattern& pattern, const std::vector<std::string_view>& path) {
        std::map<std::string, std::string> values;
        if (std::string strBad; !pattern.Read(path, values, strBad)) {
            return pReplyTo->Send(ErrorReply(EServiceFault::BAD_REQUEST,
                                             strBad + " in the path must be an id, encoded"));
        }
        if (std::string strBad; HasUnknownParameter(route, request, strBad)) {
            return pReplyTo->Send(ErrorReply(EServiceFault::BAD_REQUEST,
                                             "the parameter " + strBad + " is not known"));
        }
        route.pTake({route, request, values, context, pReplyTo});
    }

    std::vector<std::pair<CPathPattern, const CRoute*>> m_rows;
};

}  // namespace

HttpHandler MakeRoutes(const CServiceContext& context) {
    const auto pRouter = std::make_shared<const CRouter>();
    return
        [pRouter, context](const CHttpRequest& request, const std::shared_ptr<IReplyTo>& pReplyTo) {
            pRouter->Take(context, request, pReplyTo);
        };
}
