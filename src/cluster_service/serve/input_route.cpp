#include "serve/input_route.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "serve/input_body.h"
#include "serve/service_error.h"

namespace {

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

/// What becomes of one report.
struct CReportAnswer {
    CAnswer answer;
    bool bFromEngine = true;    ///< false: it cannot be read
    std::size_t uiUnknown = 0;  ///< fields that were passed over

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        const CAnswerForm told = AnswerForm(self.answer);
        CAnswerForm::Fields(form, told);
        form.Need("unknown_fields", self.uiUnknown);
    }
};

/// What becomes of the reports of one request.
struct CReports {
    std::vector<InputBody> inputs;
    std::vector<CReportAnswer> answers;
    bool bList = false;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("answers", self.answers);
    }
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
    CReportAnswer& report = reports.answers.emplace_back();
    report.bFromEngine = ReadReport(json, input, report.uiUnknown, fault);
    if (report.bFromEngine) {
        reports.inputs.push_back(std::move(input.body));
    } else {
        report.answer = CAnswer::Refuse(EFault::BAD_INPUT, TextOf(fault));
    }
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

/// Puts the engine's answers where it is to say something.
void FillAnswers(CReports& reports, std::vector<CAnswer> answers) {
    auto next = answers.begin();
    for (CReportAnswer& report : reports.answers) {
        if (report.bFromEngine) {
            report.answer = std::move(*next++);
        }
    }
}

CHttpReply ReplyOf(const CReports& reports) {
    if (reports.bList) {
        return AnswerReply(EFault::NONE, JsonText(reports));
    }
    const CReportAnswer& only = reports.answers.front();
    return AnswerReply(only.answer.eFault, JsonText(only));
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
    Push(asked, std::move(inputs),
         [pReplyTo = asked.pReplyTo](const std::vector<CAnswer>& answers) {
             const CAnswer& answer = answers.front();
             pReplyTo->Send(AnswerReply(answer.eFault, JsonText(AnswerForm(answer))));
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
        return asked.pReplyTo->Send(ReplyOf(reports));
    }
    std::vector<InputBody> inputs = std::move(reports.inputs);
    Push(asked, std::move(inputs),
         [pReplyTo = asked.pReplyTo,
          reports = std::move(reports)](std::vector<CAnswer> answers) mutable {
             FillAnswers(reports, std::move(answers));
             pReplyTo->Send(ReplyOf(reports));
         });
}
