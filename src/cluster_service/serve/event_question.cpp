#include <string>

#include "serve/event_stream.h"
#include "serve/list_options.h"
#include "serve/question.h"
#include "serve/service_error.h"

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
