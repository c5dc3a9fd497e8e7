#include "serve/service_error.h"

#include <cstddef>
#include <iterator>
#include <utility>

#include "cluster_engine/json_fields.h"

namespace {

constexpr unsigned int NUMERIC_COME_BACK = 503;
constexpr std::size_t NUMERIC_SHOWN_BYTES = 200;

/// By EFault.
constexpr unsigned int STATUSES[] = {
    200,  // NONE
    400,  // BAD_INPUT
    413,  // TOO_MUCH
    503,  // NOT_LOADED
    404,  // UNKNOWN_NODE
    404,  // UNKNOWN_CONTAINER
    404,  // UNKNOWN_TASK
    404,  // UNKNOWN_PLUGIN
    404,  // UNKNOWN_ENTRY
    409,  // NODE_KNOWN
    409,  // NAMES_RUN_TOGETHER
    422,  // NO_PLUGIN
    503,  // PLUGIN_OUT_OF_SERVICE
    502,  // PLUGIN_FAILED
    422,  // PLUGIN_REFUSED
    503,  // PLUGIN_BUSY
    409,  // NO_ROOM
    409,  // CANNOT_MOVE
    409,  // NOT_PLACED_THERE
    409,  // REFUSED_BY_RULE
    503,  // STORE_FAILED
    503,  // STORE_AWAY
    409,  // DOCUMENT_UNREADABLE
    409,  // DOCUMENT_FULL
};
static_assert(std::size(STATUSES) == static_cast<std::size_t>(EFault::DOCUMENT_FULL) + 1);

struct CServiceFault {
    unsigned int uiStatus;
    CFaultText text;
};

/// By EServiceFault.
constexpr CServiceFault SERVICE_FAULTS[] = {
    {400, {"bad_json", 2001, "The body is no JSON.", "Mend the place that is named."}},
    {404,
     {"unknown_path", 2002, "There is nothing at this path.", "Look at /api/v1/openapi.json."}},
    {405,
     {"wrong_method", 2003, "The path does not take this method.",
      "The header Allow names those that it takes."}},
    {503,
     {"not_ready", 2004, "The cluster cannot be asked or changed yet.",
      "Wait; /readyz says what for."}},
    {503, {"queue_full", 2005, "Too many inputs wait already.", "Send it again a little later."}},
    {503,
     {"stopping", 2006, "The service takes no input any more.",
      "Send it again once the service runs anew."}},
    {400, {"bad_request", 2007, "The request cannot be read.", "Mend what is named."}},
    {403,
     {"foreign_host", 2008, "The request is meant for another host.",
      "Name this service's own address in Host."}},
    {415,
     {"not_json", 2009, "The body is not declared as JSON.",
      "Send Content-Type: application/json."}},
    {413, {"body_too_large", 2010, "The body is larger than allowed.", "Split it."}},
    {431, {"header_too_large", 2011, "The header is larger than allowed.", "Send less of it."}},
    {408, {"too_slow", 2012, "The request took too long to arrive.", "Send it in one go."}},
    {500,
     {"no_answer", 2013, "The request was dropped without an answer.",
      "Ask whether it took effect before sending it again."}},
    {403,
     {"foreign_origin", 2014, "The request comes from a page of another site.",
      "Open the service's own page."}},
    {414, {"url_too_long", 2015, "The URL is longer than allowed.", "Ask for less at a time."}},
    {503,
     {"too_many_connections", 2016, "More connections are open than the settings allow.",
      "Close some, and keep one connection for all requests."}},
    {504,
     {"outcome_unknown", 2017, "The request was not answered in time; it may still take effect.",
      "Ask whether it took effect before sending it again."}},
};
static_assert(std::size(SERVICE_FAULTS) ==
              static_cast<std::size_t>(EServiceFault::OUTCOME_UNKNOWN) + 1);

const CServiceFault& Of(EServiceFault eFault) {
    return SERVICE_FAULTS[static_cast<std::size_t>(eFault)];
}

struct CErrorBody {
    CFaultForm error;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need(PSZ_ERROR, self.error);
    }
};

CHttpReply MakeReply(unsigned int uiStatus, std::string strBody) {
    CHttpReply reply(uiStatus, std::move(strBody));
    if (uiStatus == NUMERIC_COME_BACK) {
        reply.headers["Retry-After"] = "1";
    }
    return reply;
}

}  // namespace

const char* NameOfFault(EServiceFault eFault) {
    return Of(eFault).text.pszName;
}

unsigned int StatusOf(EFault eFault) {
    return STATUSES[static_cast<std::size_t>(eFault)];
}

CHttpReply ErrorReply(EFault eFault, const std::string& strAbout) {
    return MakeReply(StatusOf(eFault), JsonText(CErrorBody{{TextOf(eFault), strAbout}}));
}

CHttpReply ErrorReply(EServiceFault eFault, const std::string& strAbout) {
    const CServiceFault& fault = Of(eFault);
    return MakeReply(fault.uiStatus, JsonText(CErrorBody{{fault.text, strAbout}}));
}

std::string ShownAgain(const std::string& strSent) {
    return strSent.size() <= NUMERIC_SHOWN_BYTES && IsUtf8(strSent) ? strSent : "";
}

CHttpReply AnswerReply(EFault eFault, std::string strBody) {
    return MakeReply(StatusOf(eFault), std::move(strBody));
}
