#include "serve/input_route.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "serve/input_body.h"
#include "serve/service_error.h"

namespace {

constexpr char PSZ_UNKNOWN_FIELDS[] = "unknown_fields";
constexpr const char* REPORT_NAMES[] = {CNodeReport::NAME, CContainerReport::NAME,
                                        CNvrReport::NAME};

void Refuse(const CAsked& asked, EServiceFault eFault, const std::string& strAbout) {
    asked.context.metrics.CountRefused(NameOfFault(eFault));
    asked.pReplyTo->Send(ErrorReply(eFault, strAbout));
}

void Refuse(const CAsked& asked, EFault eFault, const std::string& strAbout) {
    asked.context.metrics.CountRefused(TextOf(eFault).pszName);
    asked.pReplyTo->Send(ErrorReply(eFault, strAbout));
}

/// The body, or, refused, nothing. No body at all is an object without fields.
std::optional<Json::Value> ReadBody(const CAsked& asked) {
    Json::Value json(Json::objectValue);
    std::string strWhy;
    const bool bEmpty = asked.request.strBody.empty();
    const std::string& strMethod = asked.request.strMethod;
    if (!bEmpty && strMethod != "POST" && strMethod != "PUT") {
        Refuse(asked, EServiceFault::BAD_REQUEST, strMethod + " takes no body here");
        return std::nullopt;
    }
    if (!bEmpty && !ParseBody(asked.request.strBody, json, strWhy)) {
        Refuse(asked, EServiceFault::BAD_JSON, strWhy);
        return std::nullopt;
    }
    return json;
}

/// Hands the inputs to the engine's thread, or says why not.
void Push(const CAsked& asked, std::vector<InputBody> inputs, OnAnswers onAnswers) {
    const std::string strNotReady = asked.context.view.Get()->strNotReady;
    if (!strNotReady.empty()) {
        return Refuse(asked, EServiceFault::NOT_READY, strNotReady);
    }
    switch (asked.context.queue.Push(std::move(inputs), std::move(onAnswers))) {
        case CInputQueue::EPush::TAKEN:
            return;
        case CInputQueue::EPush::FULL:
            return Refuse(asked, EServiceFault::QUEUE_FULL, "");
        case CInputQueue::EPush::CLOSED:
            return Refuse(asked, EServiceFault::STOPPING, "");
    }
}

/// Makes the body and what stands in the path one input in JSON.
bool CompleteInput(const CAsked& asked, Json::Value& json, CFieldFault& fault) {
    if (!json.isObject()) {
        fault = {"", "must be an object"};
        return false;
    }
    for (const char* const pszKey : {PSZ_INPUT_TIME, PSZ_INPUT_KIND}) {
        if (json.isMember(pszKey)) {
            fault = {pszKey, "is not known"};
            return false;
        }
    }
    for (const auto& [strName, strValue] : asked.path) {
        if (json.isMember(strName)) {
            fault = {strName, "stands in the path already"};
            return false;
        }
        json[strName] = strValue;
    }
    json[PSZ_INPUT_TIME] = 0;
    json[PSZ_INPUT_KIND] = asked.route.pszInput;
    return true;
}

/// What becomes of the reports of one request.
struct CReports {
    std::vector<InputBody> inputs;
    std::vector<Json::Value> answers;  ///< of those that cannot be read; null for the others
    std::vector<std::size_t> unknown;  ///< fields that were passed over, by report
    EFault eFault = EFault::NONE;      ///< of the last one
    bool bList = false;
};

bool ReadReport(Json::Value& json, CInput& input, std::size_t& uiUnknown, CFieldFault& fault) {
    if (!json.isObject()) {
        fault = {"", "must be an object"};
        return false;
    }
    const Json::Value& name = json[PSZ_INPUT_KIND];
    const bool bReport =
        name.isString() && std::find(std::begin(REPORT_NAMES), std::end(REPORT_NAMES),
                                     name.asString()) != std::end(REPORT_NAMES);
    if (!bReport) {
        fault = {PSZ_INPUT_KIND, "must be one of: node_report, container_report, nvr_report"};
        return false;
    }
    uiUnknown += json.isMember(PSZ_INPUT_TIME) ? 1 : 0;
    json[PSZ_INPUT_TIME] = 0;
    return InputFromJson(json, input, fault, &uiUnknown);
}

void AddReport(Json::Value& json, CReports& reports) {
    CInput input;
    CFieldFault fault;
    std::size_t uiUnknown = 0;
    reports.answers.emplace_back();
    if (ReadReport(json, input, uiUnknown, fault)) {
        reports.inputs.push_back(std::move(input.body));
    } else {
        reports.eFault = EFault::BAD_INPUT;
        reports.answers.back() = AnswerBody(CAnswer::Refuse(reports.eFault, TextOf(fault)));
    }
    reports.unknown.push_back(uiUnknown);
}

CReports ReadReports(Json::Value& json) {
    CReports reports;
    reports.bList = json.isArray();
    if (!reports.bList) {
        AddReport(json, reports);
        return reports;
    }
    for (Json::Value& report : json) {
        AddReport(report, reports);
    }
    return reports;
}

/// Puts the engine's answers where none stands yet.
void FillAnswers(CReports& reports, const std::vector<CAnswer>& answers) {
    auto next = answers.begin();
    for (std::size_t ui = 0; ui < reports.answers.size(); ++ui) {
        Json::Value& answer = reports.answers[ui];
        if (answer.isNull() && next != answers.end()) {
            answer = AnswerBody(*next);
            reports.eFault = next->eFault;
            ++next;
        }
        answer[PSZ_UNKNOWN_FIELDS] = static_cast<Json::UInt64>(reports.unknown[ui]);
    }
}

CHttpReply ReplyOf(CReports& reports) {
    if (!reports.bList) {
        return AnswerReply(reports.answers.front(), reports.eFault);
    }
    Json::Value body;
    Json::Value& answers = body["answers"] = Json::Value(Json::arrayValue);
    for (Json::Value& answer : reports.answers) {
        answers.append(std::move(answer));
    }
    return AnswerReply(body, EFault::NONE);
}

}  // namespace

void TakeInput(const CAsked& asked) {
    std::optional<Json::Value> json = ReadBody(asked);
    if (!json) {
        return;
    }
    CInput input;
    CFieldFault fault;
    if (!CompleteInput(asked, *json, fault) || !InputFromJson(*json, input, fault)) {
        return Refuse(asked, EFault::BAD_INPUT, TextOf(fault));
    }
    std::vector<InputBody> inputs;
    inputs.push_back(std::move(input.body));
    Push(asked, std::move(inputs), [pReplyTo = asked.pReplyTo](std::vector<CAnswer> answers) {
        pReplyTo->Send(AnswerReply(AnswerBody(answers.front()), answers.front().eFault));
    });
}

void TakeReports(const CAsked& asked) {
    std::optional<Json::Value> json = ReadBody(asked);
    if (!json) {
        return;
    }
    const std::size_t uiMost = std::min<std::size_t>(asked.context.settings.engine.uiListLength,
                                                     asked.context.settings.uiQueueInputs);
    if (json->isArray() && json->size() > uiMost) {
        return Refuse(asked, EFault::TOO_MUCH,
                      "a list of reports has " + std::to_string(uiMost) + " at most");
    }
    CReports reports = ReadReports(*json);
    if (const std::size_t uiBad = reports.answers.size() - reports.inputs.size(); uiBad != 0) {
        asked.context.metrics.CountRefused(TextOf(EFault::BAD_INPUT).pszName, uiBad);
    }
    if (reports.inputs.empty()) {
        FillAnswers(reports, {});
        return asked.pReplyTo->Send(ReplyOf(reports));
    }
    std::vector<InputBody> inputs = std::move(reports.inputs);
    Push(asked, std::move(inputs),
         [pReplyTo = asked.pReplyTo,
          reports = std::move(reports)](const std::vector<CAnswer>& answers) mutable {
             FillAnswers(reports, answers);
             pReplyTo->Send(ReplyOf(reports));
         });
}
