#pragma once

#include <json/value.h>

#include <string>

#include "cluster_engine/json_fields.h"

/// Parses the body of a request: one JSON value of UTF-8, with no key twice, and nested no deeper
/// than 64. False with the line and column and what is wrong there.
bool ParseBody(const std::string& strBody, Json::Value& value, std::string& strWhy);

/// The fault with its place, to be answered.
std::string TextOf(const CFieldFault& fault);
