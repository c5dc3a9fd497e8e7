#pragma once

#include <string>

/// Ends the session that this program opened last, on the server: a second handle joins it and
/// closes it, as the server itself does with a session that is out of time, until the server knows
/// it no more. False when it cannot.
bool ExpireNewestSession(const std::string& strServers);
