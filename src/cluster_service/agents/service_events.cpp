#include "agents/service_events.h"

#include "agents/service_answer.h"
#include "cluster_engine/json_fields.h"

bool CServiceEvents::Read(CHttpClient& client, std::vector<CEvent>& events, std::string& strWhy) {
    for (bool bMore = true; bMore;) {
        const CHttpAnswer answer = client.Get("/api/v1/events?since=" + std::to_string(m_ullLast));
        if (answer.lStatus != 200) {
            strWhy = "the events are not told: " + FaultOf(answer);
            return false;
        }
        if (answer.json["missed"].asUInt64() != 0) {
            strWhy = "the service has forgotten events that nobody has read, or was started again";
            return false;
        }
        const Json::Value& list = answer.json["events"];
        for (const Json::Value& json : list) {
            CFieldFault fault;
            std::size_t uiUnknown = 0;
            if (!FromJson(json, events.emplace_back(), fault, &uiUnknown)) {
                strWhy = "an event cannot be read: " + JsonLine(json);
                return false;
            }
            m_ullLast = json["number"].asUInt64();
        }
        m_uiCount += list.size();
        bMore = !list.empty();
    }
    return true;
}
