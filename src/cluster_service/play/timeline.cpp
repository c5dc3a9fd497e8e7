#include "play/timeline.h"

#include <algorithm>
#include <ctime>
#include <map>
#include <tuple>
#include <utility>

#include "cluster_engine/event_text.h"
#include "reference_host/shown_text.h"

namespace {

constexpr int64_t NUMERIC_DAY = 86400;
constexpr std::size_t NUMERIC_SUBJECT_COLUMNS = 32;

std::string TimeText(int64_t iTime, const char* pszForm) {
    const std::time_t tmTime = iTime;
    std::tm parts{};
    gmtime_r(&tmTime, &parts);
    char szText[32];
    std::strftime(szText, sizeof(szText), pszForm, &parts);
    return szText;
}

/// Do the two differ in nothing but the container?
bool IsLike(const CEvent& left, const CEvent& right) {
    const auto tie = [](const CEvent& event) {
        return std::tie(event.eEvent, event.iTime, event.strTaskId, event.uiTasks, event.strFrom,
                        event.strCause, event.ullDecision);
    };
    return tie(left) == tie(right);
}

std::string Named(std::size_t uiCount, const char* pszOne, const char* pszMany) {
    return std::to_string(uiCount) + ' ' + (uiCount == 1 ? pszOne : pszMany);
}

/// How many tasks came to what, as in "10 placed, 2 refused".
std::string ResultText(const std::vector<CTaskResult>& tasks) {
    std::map<ETaskResult, std::size_t> counts;
    for (const CTaskResult& task : tasks) {
        ++counts[task.eResult];
    }
    std::string strText;
    for (const auto& [eResult, uiCount] : counts) {
        strText += (strText.empty() ? "" : ", ") + std::to_string(uiCount) + ' ' + NameOf(eResult);
    }
    return strText;
}

/// Do the tasks of the answer tell more than events do?
bool IsResultShown(const CInput& input, const CAnswer& answer) {
    return answer.bInPart || std::holds_alternative<CDryRun>(input.body) ||
           std::any_of(answer.tasks.begin(), answer.tasks.end(),
                       [](const CTaskResult& task) { return task.eResult == ETaskResult::STAYS; });
}

/// What is not in an event: a refusal, or an answer to a question. Empty for any other answer.
std::string AnswerSentence(const CInput& input, const CAnswer& answer) {
    if (answer.eFault != EFault::NONE) {
        const CFaultText& text = TextOf(answer.eFault);
        return std::string("is refused: ") + text.pszSentence +
               (answer.strAbout.empty() ? "" : " (" + answer.strAbout + ')');
    }
    if (!answer.strNvr.empty()) {
        return "is answered: " + answer.strNvr;
    }
    if (!answer.reasons.empty() || !answer.decisions.empty()) {
        const auto uiPossible =
            std::count_if(answer.reasons.begin(), answer.reasons.end(),
                          [](const CReason& reason) { return reason.bPossible; });
        return "is answered: " +
               Named(static_cast<std::size_t>(uiPossible), "container could", "containers could") +
               " take it, the last decision: " +
               (answer.decisions.empty() ? "none" : answer.decisions.front().strWhy);
    }
    if (IsResultShown(input, answer)) {
        return "is answered: " + ResultText(answer.tasks);
    }
    return answer.drop.empty() ? ""
                               : "is answered: drop " + Named(answer.drop.size(), "task", "tasks");
}

}  // namespace

void CTextTimeline::ShowContainers(const char* pszWhen, const CTable& containers) {
    m_stream << '\n' << pszWhen << ": ";
    containers.Print(m_stream);
}

void CTextTimeline::ShowEvents(const std::vector<CEvent>& events) {
    for (auto it = events.begin(); it != events.end();) {
        const auto last = std::find_if(it, events.end(),
                                       [&](const CEvent& event) { return !IsLike(*it, event); });
        std::string strSubject = EventSubject(*it);
        if (const auto uiMore = std::distance(it, last) - 1; uiMore > 0) {
            strSubject += " and " + std::to_string(uiMore) + " more";
        }
        ShowLine(it->iTime, strSubject,
                 EventSentence(*it) +
                     (it->ullDecision != 0 ? "  #" + std::to_string(it->ullDecision) : ""));
        it = last;
    }
}

void CTextTimeline::ShowAnswer(std::size_t uiLine, const CInput& input, const CAnswer& answer) {
    const std::string strText = AnswerSentence(input, answer);
    const bool bSame = strText == std::exchange(m_answers[uiLine], strText);
    if (!strText.empty() && !bSame) {
        ShowLine(input.iTime, InputName(input.body), strText);
    }
}

void CTextTimeline::ShowUnmet(std::size_t uiLine, const std::string& strText) {
    m_stream << "!! line " << uiLine << ": " << ShownText(strText) << '\n';
}

void CTextTimeline::ShowLine(int64_t iTime, const std::string& strSubject,
                             const std::string& strText) {
    if (const int64_t iDay = iTime / NUMERIC_DAY; iDay != m_iDay) {
        m_iDay = iDay;
        m_stream << '\n' << TimeText(iTime, "%A, %Y-%m-%d") << '\n';
    }
    std::string strShown = ShownText(strSubject);
    const std::size_t uiColumns = ColumnsOf(strShown);
    strShown.append(uiColumns < NUMERIC_SUBJECT_COLUMNS ? NUMERIC_SUBJECT_COLUMNS - uiColumns : 0,
                    ' ');
    m_stream << TimeText(iTime, "%H:%M:%S") << "  " << strShown << "  " << ShownText(strText)
             << '\n';
}

void CJsonTimeline::ShowContainers(const char* pszWhen, const CTable& containers) {
    Json::Value json;
    json["when"] = pszWhen;
    json["containers"] = containers.ToJson();
    ShowObject(json);
}

void CJsonTimeline::ShowEvents(const std::vector<CEvent>& events) {
    for (const CEvent& event : events) {
        ShowObject(ToJson(event));
    }
}

void CJsonTimeline::ShowAnswer(std::size_t uiLine, const CInput& input, const CAnswer& answer) {
    Json::Value json;
    json["line"] = Json::UInt64{uiLine};
    json[PSZ_INPUT_TIME] = Json::Int64{input.iTime};
    json[PSZ_INPUT_KIND] = InputName(input.body);
    json["answer"] = AnswerToJson(answer);
    ShowObject(json);
}

void CJsonTimeline::ShowUnmet(std::size_t uiLine, const std::string& strText) {
    Json::Value json;
    json["line"] = Json::UInt64{uiLine};
    json["unmet"] = strText;
    ShowObject(json);
}

void CJsonTimeline::ShowObject(const Json::Value& json) {
    m_stream << JsonLine(json) << '\n';
}

std::unique_ptr<ITimeline> MakeTimeline(bool bJson, std::ostream& stream) {
    if (bJson) {
        return std::make_unique<CJsonTimeline>(stream);
    }
    return std::make_unique<CTextTimeline>(stream);
}
