#include "agents/served_containers.h"

#include <vector>

namespace {

constexpr char PSZ_CONTAINERS[] = "/api/v1/containers";

/// A column that stands in the service's answer under that key.
CColumn<Json::Value> Column(const char* pszTitle, const char* pszKey) {
    return {pszTitle, [pszKey](const Json::Value& container) { return container[pszKey]; }};
}

}  // namespace

std::optional<CTable> AskContainers(CHttpClient& client) {
    const CHttpAnswer answer = client.Get(PSZ_CONTAINERS);
    if (answer.lStatus != 200) {
        return std::nullopt;
    }
    const std::vector<CColumn<Json::Value>> columns{
        Column("node", "node"),
        Column("container", "type"),
        Column("online", "online"),
        Column("tasks", "task_count"),
        Column("disk_percent", "disk_percent"),
        Column("net_percent", "net_percent"),
    };
    return CTable("containers", columns, answer.json["containers"]);
}

std::optional<std::set<std::string>> AskTasks(CHttpClient& client, const std::string& strNodeId,
                                              const std::string& strType) {
    const CHttpAnswer answer = client.Get(PSZ_CONTAINERS + ('/' + CHttpClient::Encoded(strType)) +
                                          '/' + CHttpClient::Encoded(strNodeId) + "/tasks");
    if (answer.lStatus != 200) {
        return std::nullopt;
    }
    std::set<std::string> tasks;
    for (const Json::Value& task : answer.json["tasks"]) {
        tasks.insert(task["id"].asString());
    }
    return tasks;
}
