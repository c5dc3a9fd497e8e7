#pragma once

#include <string>

#include "agents/http_client.h"
#include "cluster_engine/answer.h"

/// Why a request was not answered as it should: the error that came, or why none did.
std::string FaultOf(const CHttpAnswer& answer);

/// The answer to an input in the form in which stories expect it (AnswerToJson).
Json::Value EngineForm(Json::Value answer);

/// And as the engine gave it; of a fault that it does not have nothing but that it was refused.
CAnswer AnswerOf(const Json::Value& engineForm);
