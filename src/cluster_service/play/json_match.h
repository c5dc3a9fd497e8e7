#pragma once

#include <json/value.h>

/// Does the value have all that is wanted? Of an object the members that are named, of a list an
/// element for each wanted one, anything else as it is.
bool HasWanted(const Json::Value& value, const Json::Value& wanted);
