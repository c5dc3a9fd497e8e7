#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/value.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cluster_engine/json_fields.h"
#include "serve/event_log.h"
#include "serve/routes.h"
#include "support/membership_fixture.h"

/// A client that keeps what it is answered.
class CKeptReply : public IReplyTo {
public:
    void Send(CHttpReply reply) override {
        EXPECT_FALSE(m_reply) << "answered twice";
        m_reply = std::move(reply);
    }
    void Stream(const char* pszType, std::unique_ptr<IReplyStream> pStream) override {
        m_strStreamType = pszType;
        m_pStream = std::move(pStream);
    }

    std::optional<CHttpReply> m_reply;
    std::string m_strStreamType;
    std::unique_ptr<IReplyStream> m_pStream;
};

/// The routes on a queue that the test works off by hand, and a view that it makes by hand.
class RoutesTest : public CRegistryTest {
protected:
    using Query = std::map<std::string, std::string>;

    RoutesTest() { m_settings.uiQueueInputs = QUEUE_INPUTS; }

    /// Asks, and gives what is answered at once or later.
    std::shared_ptr<CKeptReply> Send(const std::string& strMethod, const std::string& strPath,
                                     const std::string& strBody = "", const Query& query = {},
                                     const std::string& strIfNoneMatch = "") {
        CHttpRequest request;
        request.strMethod = strMethod;
        request.strPath = strPath;
        request.strBody = strBody;
        request.query = query;
        request.strIfNoneMatch = strIfNoneMatch;
        return Send(request);
    }

    std::shared_ptr<CKeptReply> Send(const CHttpRequest& request) {
        auto pReply = std::make_shared<CKeptReply>();
        m_handler(request, pReply);
        return pReply;
    }

    /// The body of a question's answer.
    Json::Value Get(const std::string& strPath, const Query& query = {}) {
        const auto pReply = Send("GET", strPath, "", query);
        EXPECT_EQ(StatusOf(*pReply), 200U) << strPath;
        return BodyOf(*pReply);
    }

    static unsigned int StatusOf(const CKeptReply& reply) {
        return reply.m_reply ? reply.m_reply->uiStatus : 0;
    }

    static Json::Value BodyOf(const CKeptReply& reply) {
        Json::Value body;
        CFieldFault fault;
        const std::string strBody = reply.m_reply ? *reply.m_reply->pBody : "";
        EXPECT_TRUE(ParseJsonText(strBody.data(), strBody.data() + strBody.size(), body, fault))
            << strBody;
        return body;
    }

    /// "404 unknown_node n9": status, name and what it is about.
    static std::string ErrorOf(const CKeptReply& reply) {
        const Json::Value error = BodyOf(reply)["error"];
        EXPECT_TRUE(error["code"].isInt());
        EXPECT_FALSE(error["sentence"].asString().empty());
        EXPECT_FALSE(error["remedy"].asString().empty());
        return std::to_string(StatusOf(reply)) + ' ' + error["name"].asString() +
               (error.isMember("about") ? ' ' + error["about"].asString() : "");
    }

    /// What waits for the engine's thread.
    std::vector<CInputBatch> Take() {
        return m_queue.Take(QUEUE_INPUTS, std::chrono::steady_clock::now());
    }

    /// The only input that waits, as JSON with its second taken off; it is answered so.
    std::string AnswerOne(const CAnswer& answer) {
        std::vector<CInputBatch> batches = Take();
        if (batches.size() != 1 || batches.front().inputs.size() != 1) {
            return "not one input but " + std::to_string(batches.size());
        }
        Json::Value json = InputToJson({0, batches.front().inputs.front()});
        json.removeMember("time");
        batches.front().onAnswers({answer});
        return JsonLine(json);
    }

    static CAnswer Done() { return {}; }

    /// The cluster is loaded and has these nodes with these types.
    void Load(const std::map<std::string, std::vector<std::string>>& nodes = {}) {
        std::map<std::string, CNode> stored;
        for (const auto& [strNodeId, types] : nodes) {
            stored[strNodeId] = MakeStoredNode(strNodeId, {types.begin(), types.end()});
        }
        membership::Framework().AddNodeAndContainer(stored);
        m_view.strNotReady.clear();
        Publish();
    }

    /// What the test has changed is what questions see.
    void Publish() {
        m_view.moment = CClusterMoment::Take();
        m_published.Publish(std::make_shared<const CClusterView>(m_view));
    }

    static constexpr std::size_t QUEUE_INPUTS = 4;

    CInputQueue m_queue{QUEUE_INPUTS};
    CPublishedView m_published;
    CEventLog m_events{1, 5};
    CServiceMetrics m_metrics;
    CServiceSettings m_settings;
    CClusterView m_view;
    HttpHandler m_handler = MakeRoutes({m_queue, m_published, m_events, m_metrics, m_settings});
};
