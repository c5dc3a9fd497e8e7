#include <memory>
#include <string>
#include <vector>

#include "reference_host/host_settings.h"
#include "serve/embedded.h"
#include "serve/list_options.h"
#include "serve/question.h"
#include "serve/service_error.h"

namespace {

constexpr uint64_t NUMERIC_EVENTS = 1000;
constexpr uint64_t NUMERIC_MOST_EVENTS = 10000;

/// Writes also what has its default.
class CWholeWriter : public CFieldWriter {
public:
    using CFieldWriter::CFieldWriter;

    template <typename T>
    void May(const char* pszKey, const T& value, const T& /*absent*/) {
        Need(pszKey, value);
    }
};

Json::Value EngineSettings(const CEngineSettings& settings) {
    Json::Value json;
    CWholeWriter writer(json);
    CEngineSettings::Fields(writer, settings);
    return json;
}

/// What the cluster's configuration document sets.
Json::Value ClusterSettings() {
    const CHandedOverSettings settings = GetHandedOverSettings();
    Json::Value json;
    CFieldWriter writer(json);
    writer.Need("load_balance", settings.bLoadBalance);
    writer.Need("fault_shift", settings.bFaultShift);
    writer.Need("load_balance_one_period", settings.bLoadBalanceOnePeriod);
    writer.Need("disk_threshold", settings.iLoadBalanceDiskThreshold);
    writer.Need("net_threshold", settings.iLoadBalanceNetThreshold);
    writer.Need("channel_threshold", settings.iLoadBalanceChannelThreshold);
    writer.Need("cluster_forward_type", settings.iClusterForwardType);
    return json;
}

Json::Value ServiceSettings(const CServiceSettings& settings) {
    Json::Value json;
    CFieldWriter writer(json);
    writer.Need("listen", settings.strListen);
    writer.Need("plugin_milliseconds", settings.iPluginMilliseconds);
    writer.Need("queue_inputs", settings.uiQueueInputs);
    writer.Need("journal", settings.journal.strFile);
    writer.Need("journal_bytes", settings.journal.ullMaxBytes);
    writer.Need("journal_files", settings.journal.uiKept);
    return json;
}

}  // namespace

CHttpReply ShowEvents(const CAsked& asked, const CClusterView& /*view*/) {
    uint64_t ullSince = 0;
    uint64_t ullLimit = NUMERIC_EVENTS;
    std::string strWhy;
    if (!ReadNumber(asked.request, "since", 0, UINT64_MAX, ullSince, strWhy) ||
        !ReadNumber(asked.request, "limit", 1, NUMERIC_MOST_EVENTS, ullLimit, strWhy)) {
        return ErrorReply(EServiceFault::BAD_REQUEST, strWhy);
    }
    std::vector<CNumberedEvent> events;
    const uint64_t ullMissed = asked.context.events.Read(ullSince, ullLimit, events);
    Json::Value body;
    Json::Value& shown = body["events"] = Json::Value(Json::arrayValue);
    for (const CNumberedEvent& event : events) {
        shown.append(ToJson(event));
    }
    body["missed"] = static_cast<Json::UInt64>(ullMissed);
    body["first"] = static_cast<Json::UInt64>(asked.context.events.GetFirst());
    body["last"] = static_cast<Json::UInt64>(asked.context.events.GetLast());
    return {200, JsonLine(body)};
}

CHttpReply ShowSettings(const CAsked& asked, const CClusterView& /*view*/) {
    Json::Value body;
    body["cluster_code"] = GetHostSettings().strClusterCode;
    body["local_ip"] = GetHostSettings().strLocalIp;
    body["service"] = ServiceSettings(asked.context.settings);
    body["engine"] = EngineSettings(asked.context.settings.engine);
    body["cluster"] = ClusterSettings();
    return {200, JsonLine(body)};
}

CHttpReply ShowOpenApi(const CAsked& /*asked*/, const CClusterView& /*view*/) {
    static const auto TEXT = std::make_shared<const std::string>(TEXT_OPENAPI);
    CHttpReply reply;
    reply.pBody = TEXT;
    return reply;
}

CHttpReply ShowMetrics(const CAsked& asked, const CClusterView& view) {
    CHttpReply reply(200, asked.context.metrics.Text(view, asked.context.queue.GetLength()));
    reply.pszType = "text/plain; version=0.0.4; charset=utf-8";
    return reply;
}

CHttpReply ShowHealth(const CAsked& /*asked*/, const CClusterView& /*view*/) {
    return {200, R"({"healthy":true})"};
}

CHttpReply ShowReadiness(const CAsked& /*asked*/, const CClusterView& view) {
    if (!view.strNotReady.empty()) {
        return ErrorReply(EServiceFault::NOT_READY, view.strNotReady);
    }
    return {200, R"({"ready":true})"};
}
