#include "agents/agent.h"

#include <algorithm>
#include <utility>

#include "agents/input_routes.h"
#include "agents/service_answer.h"
#include "cluster_engine/answer.h"
#include "common_service/tarn_def.h"

namespace {

constexpr char PSZ_REPORTS[] = "/api/v1/reports";

/// The report of a container whose tasks are work; null for any other. Those of cloud storage are
/// figures.
const CContainerReport* WorkReport(const InputBody& report) {
    const auto* const pReport = std::get_if<CContainerReport>(&report);
    return pReport != nullptr && pReport->container.strType != CONTAINER_TYPE_CLOUD_STORAGE
               ? pReport
               : nullptr;
}

/// What a report is about: of two with the same the later one counts.
std::string Subject(const InputBody& report) {
    const auto* const pContainer = std::get_if<CContainerReport>(&report);
    return pContainer != nullptr ? pContainer->container.strType : "";
}

}  // namespace

void CAgent::Begin(const InputBody& report, int64_t iUntil) {
    const std::string strSubject = Subject(report);
    const auto isSame = [&](const CRepeated& one) { return Subject(one.report) == strSubject; };
    m_reports.erase(std::remove_if(m_reports.begin(), m_reports.end(), isSame), m_reports.end());
    m_reports.push_back({report, iUntil});
    Hurry();
}

void CAgent::GoOnTo(int64_t iStorySecond) {
    const auto isOver = [&](const CRepeated& one) { return one.iUntil < iStorySecond; };
    m_reports.erase(std::remove_if(m_reports.begin(), m_reports.end(), isOver), m_reports.end());
}

bool CAgent::Report(Clock::time_point now, Clock::duration interval, std::string& strWhy) {
    if (m_reports.empty() || now < m_due) {
        return true;
    }
    m_due = now + interval;
    Json::Value list(Json::arrayValue);
    for (const CRepeated& one : m_reports) {
        list.append(ToJson(one.report));
    }
    const CHttpAnswer answer = m_client.Send("POST", PSZ_REPORTS, list);
    const Json::Value& answers = answer.json["answers"];
    if (answer.lStatus != 200 || answers.size() != list.size()) {
        strWhy = FaultOf(answer);
        return false;
    }
    for (Json::ArrayIndex i = 0; i < answers.size(); ++i) {
        Learn(m_reports[i].report, answers[i]);
        if (answers[i]["result"] != "done") {
            strWhy = JsonLine(list[i]) + " is answered " + JsonLine(answers[i]);
        }
    }
    return strWhy.empty();
}

CHttpAnswer CAgent::ReportOnce(const InputBody& report) {
    CHttpAnswer answer = m_client.Send("POST", PSZ_REPORTS, ToJson(report));
    Learn(report, answer.json);
    return answer;
}

std::map<std::string, std::set<std::string>> CAgent::GetWork() const {
    std::map<std::string, std::set<std::string>> work;
    for (const CRepeated& one : m_reports) {
        if (WorkReport(one.report) == nullptr) {
            continue;
        }
        const std::string strType = Subject(one.report);
        const auto it = m_work.find(strType);
        work[strType] = it != m_work.end() ? it->second.tasks : std::set<std::string>();
    }
    return work;
}

Json::Value CAgent::ToJson(const InputBody& report) {
    const CContainerReport* const pReport = WorkReport(report);
    if (pReport == nullptr) {
        return ReportToJson(report);
    }
    const CWork& work = m_work[pReport->container.strType];
    CContainerReport own = *pReport;
    own.ullSeen = work.ullSeen;
    own.tasks.emplace();
    for (const std::string& strTask : work.tasks) {
        own.tasks->emplace_back().strTaskId = strTask;
    }
    return ReportToJson(own);
}

void CAgent::Learn(const InputBody& report, const Json::Value& answer) {
    const CContainerReport* const pReport = WorkReport(report);
    if (pReport == nullptr || !answer.isMember("number")) {
        return;
    }
    CWork& work = m_work[pReport->container.strType];
    work.ullSeen = answer["number"].asUInt64();
    for (const Json::Value& task : answer["take_up"]) {
        work.tasks.insert(task["id"].asString());
    }
    for (const Json::Value& task : answer["drop"]) {
        work.tasks.erase(task.asString());
    }
}
