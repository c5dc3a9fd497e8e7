#include "agents/service_answer.h"

#include "cluster_engine/json_fields.h"

namespace {

constexpr char PSZ_ERROR[] = "error";
constexpr char PSZ_FAULT[] = "fault";

EFault FaultNamed(const std::string& strName) {
    for (auto eFault = EFault::NONE; eFault < EFault::DOCUMENT_FULL;) {
        eFault = static_cast<EFault>(static_cast<int>(eFault) + 1);
        if (strName == TextOf(eFault).pszName) {
            return eFault;
        }
    }
    return EFault::BAD_INPUT;
}

}  // namespace

std::string FaultOf(const CHttpAnswer& answer) {
    return answer.lStatus == 0 ? answer.strFault
                               : std::to_string(answer.lStatus) + ' ' + JsonLine(answer.json);
}

Json::Value EngineForm(Json::Value answer) {
    if (answer.isMember(PSZ_ERROR)) {
        answer[PSZ_FAULT] = answer[PSZ_ERROR];
        answer.removeMember(PSZ_ERROR);
        answer["result"] = "refused";
    }
    return answer;
}

CAnswer AnswerOf(const Json::Value& engineForm) {
    CAnswer answer;
    CFieldFault fault;
    std::size_t uiUnknown = 0;
    FromJson(engineForm, answer, fault, &uiUnknown);
    answer.bInPart = engineForm["result"] == "in_part";
    if (engineForm.isMember(PSZ_FAULT)) {
        answer.eFault = FaultNamed(engineForm[PSZ_FAULT]["name"].asString());
        answer.strAbout = engineForm[PSZ_FAULT]["about"].asString();
    }
    return answer;
}
