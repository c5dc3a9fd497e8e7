#include <memory>
#include <string>

#include "reference_host/host_settings.h"
#include "serve/embedded.h"
#include "serve/question.h"
#include "serve/service_error.h"

namespace {

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
