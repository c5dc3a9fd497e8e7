#include "serve/request_check.h"

#include <strings.h>

#include <algorithm>

namespace {

constexpr std::size_t NUMERIC_MAX_URL_BYTES = 8192;
constexpr std::size_t NUMERIC_MAX_HEADER_BYTES = 8192;
constexpr char PSZ_JSON[] = "application/json";
constexpr char PSZ_SCHEME[] = "http://";

bool IsOneOf(const std::vector<std::string>& hosts, const std::string& strHost) {
    return std::any_of(hosts.begin(), hosts.end(), [&](const std::string& strOne) {
        return strcasecmp(strOne.c_str(), strHost.c_str()) == 0;
    });
}

bool IsOurs(const std::vector<std::string>& hosts, const std::string& strOrigin) {
    const std::string strScheme = PSZ_SCHEME;
    return strOrigin.compare(0, strScheme.size(), strScheme) == 0 &&
           IsOneOf(hosts, strOrigin.substr(strScheme.size()));
}

bool IsJson(const std::string& strContentType) {
    const std::string strType = strContentType.substr(0, strContentType.find(';'));
    const std::size_t uiLast = strType.find_last_not_of(" \t");
    return uiLast != std::string::npos &&
           strcasecmp(strType.substr(0, uiLast + 1).c_str(), PSZ_JSON) == 0;
}

std::string MoreThan(std::size_t uiBytes) {
    return "more than " + std::to_string(uiBytes) + " bytes";
}

}  // namespace

std::optional<CRequestFault> FindFault(const CRequestHead& head,
                                       const std::vector<std::string>& hosts,
                                       std::size_t uiMaxBodyBytes) {
    if (head.strUrl.size() > NUMERIC_MAX_URL_BYTES) {
        return CRequestFault{EServiceFault::URL_TOO_LONG, MoreThan(NUMERIC_MAX_URL_BYTES)};
    }
    if (head.uiHeaderBytes > NUMERIC_MAX_HEADER_BYTES) {
        return CRequestFault{EServiceFault::HEADER_TOO_LARGE, MoreThan(NUMERIC_MAX_HEADER_BYTES)};
    }
    if (head.strUrl.empty() || head.strUrl.front() != '/') {
        return CRequestFault{EServiceFault::BAD_REQUEST, "a path begins with /"};
    }
    if (head.uiHosts != 1) {
        return CRequestFault{EServiceFault::BAD_REQUEST, "there must be one Host"};
    }
    if (!IsOneOf(hosts, head.strHost)) {
        return CRequestFault{EServiceFault::FOREIGN_HOST, ShownAgain(head.strHost)};
    }
    if (head.origin.has_value() && !IsOurs(hosts, *head.origin)) {
        return CRequestFault{EServiceFault::FOREIGN_ORIGIN, ShownAgain(*head.origin)};
    }
    if (head.bBody && !IsJson(head.strContentType)) {
        return CRequestFault{EServiceFault::NOT_JSON, ShownAgain(head.strContentType)};
    }
    if (head.ullBodyBytes > uiMaxBodyBytes) {
        return BodyTooLarge(uiMaxBodyBytes);
    }
    return std::nullopt;
}

CRequestFault BodyTooLarge(std::size_t uiMaxBodyBytes) {
    return {EServiceFault::BODY_TOO_LARGE, MoreThan(uiMaxBodyBytes)};
}
