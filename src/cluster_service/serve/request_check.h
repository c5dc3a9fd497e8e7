#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "serve/service_error.h"

/// What of a request's head decides whether it is let in.
struct CRequestHead {
    std::string strUrl;  ///< as it was sent
    std::size_t uiHeaderBytes = 0;
    std::size_t uiHosts = 0;  ///< headers of that name
    std::string strHost;
    std::optional<std::string> origin;
    std::string strContentType;
    bool bBody = false;
    uint64_t ullBodyBytes = 0;  ///< 0 when they are not told
};

/// Why a request is refused.
struct CRequestFault {
    EServiceFault eFault = EServiceFault::BAD_REQUEST;
    std::string strAbout;
};

/// A browser sends to loopback what any page tells it to: only what names one of our hosts, comes
/// from no other site's page and brings no body but JSON is let in. Nothing when all is well.
std::optional<CRequestFault> FindFault(const CRequestHead& head,
                                       const std::vector<std::string>& hosts,
                                       std::size_t uiMaxBodyBytes);

CRequestFault BodyTooLarge(std::size_t uiMaxBodyBytes);
