#pragma once

#include <json/value.h>

#include <string>

#include "cluster_engine/answer.h"
#include "serve/http.h"

/// Why the service itself refuses a request, before or beside the engine. Each has a stable name
/// and number, as EFault's have.
enum class EServiceFault {
    BAD_JSON,
    UNKNOWN_PATH,
    WRONG_METHOD,
    NOT_READY,
    QUEUE_FULL,
    STOPPING,
    BAD_REQUEST,
    FOREIGN_HOST,
    NOT_JSON,
    BODY_TOO_LARGE,
    HEADER_TOO_LARGE,
    TOO_SLOW,
    NO_ANSWER,
    FOREIGN_ORIGIN,
    URL_TOO_LONG,
    TOO_MANY_CONNECTIONS,
    OUTCOME_UNKNOWN,
};

/// The key of an error.
inline constexpr char PSZ_ERROR[] = "error";

/// The name by which it is counted and answered.
const char* NameOfFault(EServiceFault eFault);

/// The HTTP status of an answer with that fault; 200 without one.
unsigned int StatusOf(EFault eFault);

/// The one shape of an error: {"error": {"name", "code", "sentence", "remedy", "about"}}. A 503
/// tells when to come back.
/// @{
CHttpReply ErrorReply(EFault eFault, const std::string& strAbout);
CHttpReply ErrorReply(EServiceFault eFault, const std::string& strAbout);
/// @}

/// What a client sent, as an error may be about it: nothing when it is long or no UTF-8.
std::string ShownAgain(const std::string& strSent);

/// The whole reply to an input that the engine answered so.
CHttpReply AnswerReply(EFault eFault, std::string strBody);

/// What the engine answers, with a refusal in the one shape of an error.
inline CAnswerForm AnswerForm(const CAnswer& answer) {
    return {answer, PSZ_ERROR};
}
