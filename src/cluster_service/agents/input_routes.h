#pragma once

#include "agents/http_client.h"
#include "cluster_engine/input.h"

/// A body as a report of a list: its fields, and its kind under "input".
Json::Value ReportToJson(const InputBody& body);

/// Sends an input where a service takes its kind.
CHttpAnswer SendInput(CHttpClient& client, const InputBody& body);
