#pragma once

#include <json/value.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "agents/http_client.h"
#include "cluster_engine/input.h"

/// What runs on one machine of a cluster, as far as the service can tell: it reports, takes up the
/// tasks that it is given and drops what it is told to drop. While nobody lets it report it goes on
/// with what it has, and hears of nothing.
class CAgent {
public:
    using Clock = std::chrono::steady_clock;

    explicit CAgent(const std::string& strServer) : m_client(strServer) {}

    /// From now on the report, of a node, a container or an NVR, comes again and again; another one
    /// of the same is replaced.
    void Begin(const InputBody& report, int64_t iUntil);

    /// The story has come to this second: reports that end before it come no more.
    void GoOnTo(int64_t iStorySecond);

    /// All is due at once.
    void Hurry() { m_due = {}; }

    /// Sends what is due as one list. False, with the reason, when the service did not answer or
    /// refused one.
    bool Report(Clock::time_point now, Clock::duration interval, std::string& strWhy);

    /// Sends one report now, with the agent's own tasks in place of the report's, and returns its
    /// answer.
    CHttpAnswer ReportOnce(const InputBody& report);

    /// The tasks of each container that works and reports.
    std::map<std::string, std::set<std::string>> GetWork() const;

private:
    struct CRepeated {
        InputBody report;
        int64_t iUntil = 0;
    };

    /// What a container has, and has heard.
    struct CWork {
        std::set<std::string> tasks;
        uint64_t ullSeen = 0;
    };

    Json::Value ToJson(const InputBody& report);
    void Learn(const InputBody& report, const Json::Value& answer);

    CHttpClient m_client;
    std::vector<CRepeated> m_reports;
    std::map<std::string, CWork> m_work;  ///< by container type
    Clock::time_point m_due;
};
