#include "request_target.h"

#include <memory>
#include <sstream>
#include <string_view>
#include <utility>

#include "cluster_engine/json_fields.h"
#include "serve/routes.h"
#include "target.h"

namespace {

class CCheckedReply : public IReplyTo {
public:
    ~CCheckedReply() override { Require(m_bAnswered, "a request is answered"); }

    void Send(CHttpReply reply) override {
        Answer();
        Json::Value body;
        CFieldFault fault;
        const std::string& strBody = *reply.pBody;
        const bool bJson = std::string_view(reply.pszType) == "application/json";
        Require(!bJson || IsUtf8(strBody), "an answer is UTF-8");
        Require(
            !bJson || ParseJsonText(strBody.data(), strBody.data() + strBody.size(), body, fault),
            "an answer is JSON");
    }

    void Stream(const char* /*pszType*/, std::unique_ptr<IReplyStream> pStream) override {
        Answer();
        std::string strText;
        pStream->Read(strText);
    }

private:
    void Answer() {
        Require(!m_bAnswered, "a request is answered once");
        m_bAnswered = true;
    }

    bool m_bAnswered = false;
};

CHttpRequest RequestOf(const std::string& strInput) {
    const std::size_t uiEnd = strInput.find('\n');
    std::istringstream line(strInput.substr(0, uiEnd));
    CHttpRequest request;
    std::string strParameter;
    line >> request.strMethod >> request.strPath >> strParameter;
    if (const std::size_t uiSign = strParameter.find('='); uiSign != std::string::npos) {
        request.query[strParameter.substr(0, uiSign)] = strParameter.substr(uiSign + 1);
    }
    if (uiEnd != std::string::npos) {
        request.strBody = strInput.substr(uiEnd + 1);
    }
    return request;
}

/// A service whose cluster is loaded, empty, and agrees to everything.
struct CService {
    CService() {
        CClusterView view;
        view.strNotReady.clear();
        view.moment = CClusterMoment::Take();
        published.Publish(std::make_shared<const CClusterView>(std::move(view)));
    }

    void AnswerInputs() {
        for (CInputBatch& batch : queue.Take(settings.uiQueueInputs, {})) {
            const std::size_t uiInputs = batch.inputs.size();
            batch.onAnswers(std::vector<CAnswer>(uiInputs));
        }
    }

    CServiceSettings settings;
    CInputQueue queue{settings.uiQueueInputs};
    CPublishedView published;
    CEventLog events{1};
    CServiceMetrics metrics;
    HttpHandler handler = MakeRoutes({queue, published, events, metrics, settings});
};

}  // namespace

void FeedRequest(const std::string& strInput) {
    static CService& service = *new CService;
    service.handler(RequestOf(strInput), std::make_shared<CCheckedReply>());
    service.AnswerInputs();
}
