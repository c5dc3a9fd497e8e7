#pragma once

#include <string>

/// Is a link of this type accepted from the address? Callable from any thread.
[[gnu::visibility("default")]] bool IsAcceptedLink(const std::string& strIp, int iType);

/// Accepts no link any more.
[[gnu::visibility("default")]] void ForgetAcceptedLinks();
