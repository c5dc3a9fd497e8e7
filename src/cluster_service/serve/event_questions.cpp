#include <string>
#include <vector>

#include "serve/event_stream.h"
#include "serve/list_options.h"
#include "serve/question.h"
#include "serve/service_error.h"

namespace {

constexpr uint64_t NUMERIC_EVENTS = 1000;
constexpr uint64_t NUMERIC_MOST_EVENTS = 10000;

}  // namespace

CHttpReply ShowEvents(const CAsked& asked, const CClusterView& /*view*/) {
    uint64_t ullSince = 0;
    uint64_t ullLimit = NUMERIC_EVENTS;
    std::string strWhy;
    if (!ReadNumber(asked.request, "since", 0, UINT64_MAX, ullSince, strWhy) ||
        !ReadNumber(asked.request, "limit", 1, NUMERIC_MOST_EVENTS, ullLimit, strWhy)) {
        return ErrorReply(EServiceFault::BAD_REQUEST, strWhy);
    }
    std::vector<CNumberedEvent> events;
    const uint64_t ullMissed = asked.context.events.Read(ullSince, ullLimit, events);
    Json::Value body;
    Json::Value& shown = body["events"] = Json::Value(Json::arrayValue);
    for (const CNumberedEvent& event : events) {
        shown.append(ToJson(event));
    }
    body["missed"] = static_cast<Json::UInt64>(ullMissed);
    body["first"] = static_cast<Json::UInt64>(asked.context.events.GetFirst());
    body["last"] = static_cast<Json::UInt64>(asked.context.events.GetLast());
    return {200, JsonLine(body)};
}

/// A client that connects anew names the last event that it had in a header, and that counts.
void StreamEvents(const CAsked& asked) {
    CHttpRequest request = asked.request;
    if (!request.strLastEventId.empty()) {
        request.query["since"] = request.strLastEventId;
    }
    uint64_t ullSince = asked.context.events.GetLast();
    std::string strWhy;
    if (!ReadNumber(request, "since", 0, UINT64_MAX, ullSince, strWhy)) {
        return asked.pReplyTo->Send(ErrorReply(EServiceFault::BAD_REQUEST, strWhy));
    }
    asked.pReplyTo->Stream(PSZ_EVENT_STREAM, MakeEventStream(asked.context.events, ullSince));
}
