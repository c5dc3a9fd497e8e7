#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "serve/event_log.h"
#include "serve/http.h"

inline constexpr char PSZ_EVENT_STREAM[] = "text/event-stream";

/// The events behind that number, and then each as it comes, as server-sent events: "id" is the
/// number, "event" the event's name, "data" its JSON. A reader for whom some came too late is told
/// by an event "missed" how many. After so long a silence comes an empty comment: a client that is
/// gone is noticed by writing to it alone. The log outlives the stream.
std::unique_ptr<IReplyStream> MakeEventStream(
    CEventLog& log, uint64_t ullSince, std::chrono::seconds silence = std::chrono::seconds(15));
