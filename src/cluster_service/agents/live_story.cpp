#include "agents/live_story.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <set>
#include <sstream>
#include <thread>
#include <utility>
#include <variant>

#include "agents/input_routes.h"
#include "agents/served_containers.h"
#include "agents/service_answer.h"
#include "play/json_match.h"

namespace {

constexpr std::chrono::milliseconds NUMERIC_STEP{50};
constexpr int NUMERIC_REPORTS_A_SILENCE = 3;

/// Seconds of a story in which everybody reports.
constexpr int64_t NUMERIC_TIME_TO_REPORT = 30;

/// Beyond what the service waits for by itself.
constexpr std::chrono::seconds NUMERIC_PATIENCE{12};

/// The name of the agent that sends the report; null for what is no report.
const std::string* SenderOf(const InputBody& body) {
    if (const auto* const pNode = std::get_if<CNodeReport>(&body); pNode != nullptr) {
        return &pNode->strNodeId;
    }
    if (const auto* const pReport = std::get_if<CContainerReport>(&body); pReport != nullptr) {
        return &pReport->container.strNodeId;
    }
    const auto* const pNvr = std::get_if<CNvrReport>(&body);
    return pNvr != nullptr ? &pNvr->strNvr : nullptr;
}

}  // namespace

CLiveStory::CLiveStory(std::string strServer, std::chrono::seconds silence, ITimeline& timeline)
    : m_strServer(std::move(strServer)),
      m_silence(silence),
      m_timeline(timeline),
      m_client(m_strServer) {}

bool CLiveStory::Live(const CStory& story) {
    return std::all_of(story.lines.begin(), story.lines.end(),
                       [this](const CStoryLine& line) { return LiveLine(line); });
}

bool CLiveStory::LiveLine(const CStoryLine& line) {
    m_uiLine = line.uiLine;
    if (!GoOnTo(line.iTime)) {
        return false;
    }
    if (std::holds_alternative<CInput>(line.content)) {
        return line.iEvery != 0 ? BeginReports(line) : LiveInput(line);
    }
    ++m_uiExpectations;
    const auto& expectation = std::get<CExpectation>(line.content);
    return expectation.wanted.isMember("container") ? AwaitContainer(expectation)
                                                    : AwaitEvent(expectation);
}

/// However fast the hours pass, everybody has reported in between.
bool CLiveStory::GoOnTo(int64_t iStorySecond) {
    const int64_t iPassed = iStorySecond - std::exchange(m_iStorySecond, iStorySecond);
    if (iPassed >= NUMERIC_TIME_TO_REPORT) {
        for (auto& [strName, agent] : m_agents) {
            agent.Hurry();
        }
        if (!Step()) {
            return false;
        }
    }
    for (auto& [strName, agent] : m_agents) {
        agent.GoOnTo(iStorySecond);
    }
    return true;
}

bool CLiveStory::BeginReports(const CStoryLine& line) {
    const InputBody& body = std::get<CInput>(line.content).body;
    if (SenderOf(body) == nullptr) {
        return Unmet("only reports come again and again");
    }
    AgentOf(body).Begin(body, line.iUntil);
    m_recent.clear();
    return true;
}

bool CLiveStory::LiveInput(const CStoryLine& line) {
    if (!Step()) {
        return false;
    }
    m_recent.clear();
    const CInput input{std::time(nullptr), std::get<CInput>(line.content).body};
    const CHttpAnswer answer = SenderOf(input.body) != nullptr
                                   ? AgentOf(input.body).ReportOnce(input.body)
                                   : SendInput(m_client, input.body);
    if (answer.lStatus == 0) {
        return Unmet(FaultOf(answer));
    }
    ++m_uiInputs;
    if (!TellEvents()) {
        return false;
    }
    const Json::Value form = EngineForm(answer.json);
    m_timeline.ShowAnswer(line.uiLine, input, AnswerOf(form));
    if (!line.wantedAnswer) {
        return true;
    }
    ++m_uiExpectations;
    return HasWanted(form, *line.wantedAnswer) ||
           Unmet("expected the answer " + JsonLine(*line.wantedAnswer) + ", it is " +
                 JsonLine(form));
}

bool CLiveStory::AwaitEvent(const CExpectation& expectation) {
    const int64_t iWanted = expectation.times.value_or(1);
    int64_t iFound = 0;
    const bool bCame = Await([&] {
        iFound = std::count_if(m_recent.begin(), m_recent.end(), [&](const CEvent& event) {
            return HasWanted(ToJson(event), expectation.wanted);
        });
        return iFound >= iWanted;
    });
    if (m_bFailed || (bCame && (iFound == iWanted || !expectation.times))) {
        return !m_bFailed;
    }
    return Unmet("expected " + std::to_string(iWanted) + " times" +
                 (expectation.times ? "" : " at least") + ", happened " + std::to_string(iFound) +
                 " times since the last input: " + JsonLine(expectation.wanted));
}

bool CLiveStory::AwaitContainer(const CExpectation& expectation) {
    Json::Value wanted;
    wanted["containers"].append(expectation.wanted);
    Json::Value rows;
    const bool bCame = Await([&] {
        const std::optional<CTable> containers = AskContainers(m_client);
        rows["containers"] = containers ? containers->ToJson() : Json::Value();
        return HasWanted(rows, wanted);
    });
    return bCame || m_bFailed ? !m_bFailed
                              : Unmet("no such container: " + JsonLine(expectation.wanted));
}

bool CLiveStory::AwaitAgreement() {
    std::string strDifferent;
    const bool bCame = Await([&] {
        strDifferent = DifferentWork();
        return strDifferent.empty();
    });
    return bCame || m_bFailed ? !m_bFailed : Unmet(strDifferent);
}

/// A container whose agent has other tasks than the service shows; empty when there is none.
std::string CLiveStory::DifferentWork() {
    for (const auto& [strNode, agent] : m_agents) {
        for (const auto& [strType, tasks] : agent.GetWork()) {
            const auto shown = AskTasks(m_client, strNode, strType);
            if (shown == tasks) {
                continue;
            }
            std::ostringstream text;
            text << strNode << ' ' << strType << " has " << tasks.size() << " tasks, the service ";
            if (shown) {
                text << "shows " << shown->size() << ", or others";
            } else {
                text << "does not show it";
            }
            return text.str();
        }
    }
    return {};
}

bool CLiveStory::GoOnUntil(const std::function<bool()>& isOver) {
    while (!isOver()) {
        if (!Step()) {
            return false;
        }
        std::this_thread::sleep_for(NUMERIC_STEP);
    }
    return true;
}

void CLiveStory::ShowContainers(const char* pszWhen) {
    if (const std::optional<CTable> containers = AskContainers(m_client)) {
        m_timeline.ShowContainers(pszWhen, *containers);
    }
}

bool CLiveStory::Await(const std::function<bool()>& isTrue) {
    const auto limit = CAgent::Clock::now() + 2 * m_silence + NUMERIC_PATIENCE;
    bool bTrue = false;
    return GoOnUntil([&] {
               bTrue = isTrue();
               return bTrue || CAgent::Clock::now() > limit;
           }) &&
           bTrue;
}

bool CLiveStory::Step() {
    const auto interval = CAgent::Clock::duration(m_silence) / NUMERIC_REPORTS_A_SILENCE;
    for (auto& [strName, agent] : m_agents) {
        std::string strWhy;
        if (!agent.Report(CAgent::Clock::now(), interval, strWhy)) {
            return Unmet(strWhy.insert(0, strName + ": "));
        }
    }
    return TellEvents();
}

bool CLiveStory::TellEvents() {
    std::vector<CEvent> events;
    std::string strWhy;
    if (!m_events.Read(m_client, events, strWhy)) {
        return Unmet(strWhy);
    }
    m_timeline.ShowEvents(events);
    m_recent.insert(m_recent.end(), events.begin(), events.end());
    return true;
}

CAgent& CLiveStory::AgentOf(const InputBody& report) {
    return m_agents.try_emplace(*SenderOf(report), m_strServer).first->second;
}

bool CLiveStory::Unmet(const std::string& strText) {
    m_bFailed = true;
    m_timeline.ShowUnmet(m_uiLine, strText);
    return false;
}
