#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "agents/agent.h"
#include "agents/http_client.h"
#include "agents/service_events.h"
#include "play/story.h"
#include "play/timeline.h"

/// Lives a story at a service that is up: reports that come again are those of agents, the other
/// inputs are an operator's. The story's time is that of its lines and goes on as soon as what a
/// line expects has come true: so its hours pass in seconds, while silence, reports and whatever
/// the service does by time take their time. Of one thread.
class CLiveStory {
public:
    /// The time-line outlives it. silence is what the service takes for it: agents report
    /// three times as often.
    CLiveStory(std::string strServer, std::chrono::seconds silence, ITimeline& timeline);

    /// Until the end, or the first line that does not come true, which is told. False then.
    bool Live(const CStory& story);

    /// Lives on until the service shows of each container the tasks that its agent has. False, with
    /// one that differs told, when that does not come true.
    bool AwaitAgreement();

    /// Lives on until it is over. False when something went wrong, which has been told then.
    bool GoOnUntil(const std::function<bool()>& isOver);

    /// The service's containers, as a table is told of them.
    void ShowContainers(const char* pszWhen);

    std::size_t GetInputs() const { return m_uiInputs; }
    std::size_t GetEvents() const { return m_events.GetCount(); }
    std::size_t GetExpectations() const { return m_uiExpectations; }

private:
    bool LiveLine(const CStoryLine& line);
    bool GoOnTo(int64_t iStorySecond);
    bool BeginReports(const CStoryLine& line);
    bool LiveInput(const CStoryLine& line);
    bool AwaitEvent(const CExpectation& expectation);
    bool AwaitContainer(const CExpectation& expectation);

    /// Lives on until it is true. False when it takes too long, or something else went wrong, which
    /// has been told then.
    bool Await(const std::function<bool()>& isTrue);

    /// The agents whose time it is report, and what happened is told.
    bool Step();
    bool TellEvents();
    CAgent& AgentOf(const InputBody& report);
    std::string DifferentWork();

    /// Tells it. False.
    bool Unmet(const std::string& strText);

    const std::string m_strServer;
    const std::chrono::seconds m_silence;
    ITimeline& m_timeline;
    CHttpClient m_client;  ///< the operator's
    CServiceEvents m_events;
    std::map<std::string, CAgent> m_agents;  ///< by the name of the node or NVR
    std::vector<CEvent> m_recent;            ///< since the last input
    std::size_t m_uiLine = 0;
    int64_t m_iStorySecond = 0;
    bool m_bFailed = false;  ///< and it was told
    std::size_t m_uiInputs = 0;
    std::size_t m_uiExpectations = 0;
};
