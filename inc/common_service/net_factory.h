#pragma once

#include <string>

namespace HALD {

/// The peers from which links are accepted, each an address and a link type. Callable from any
/// thread.
class [[gnu::visibility("default")]] CNetFactory {
public:
    static CNetFactory& Instance();

    /// Accepts links from the address; the library's type is VALIDATED_LINK_TYPE, and it does not
    /// look at the answer. Returns 0, also for a link that is there already.
    int AddValidatedLink(const std::string& strIp, int iType);

    /// Accepts them no longer. Returns 0, also for a link that is not there.
    int DelValidatedLink(const std::string& strIp, int iType);
};

}  // namespace HALD
