#include "common_service/tarn_def.h"
#include "serve/routes_fixture.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

class Questions : public RoutesTest {
protected:
    /// The values of a field in a list, in its order.
    static std::vector<std::string> Column(const Json::Value& list, const char* pszField) {
        std::vector<std::string> values;
        for (const Json::Value& entry : list) {
            values.push_back(entry[pszField].asString());
        }
        return values;
    }

    std::vector<std::string> Nodes(const Query& query) {
        return Column(Get("/api/v1/nodes", query)["nodes"], "node");
    }

    /// "n1A" for each.
    std::vector<std::string> Containers(const Query& query) {
        std::vector<std::string> names;
        const Json::Value body = Get("/api/v1/containers", query);
        for (const Json::Value& entry : body["containers"]) {
            names.push_back(entry["node"].asString() + entry["type"].asString());
        }
        return names;
    }

    std::string Refusal(const std::string& strPath, const Query& query = {}) {
        return ErrorOf(*Send("GET", strPath, "", query));
    }

    static CResourceTask Task(const std::string& strTaskId, int32_t iDisk) {
        CResourceTask task;
        task.SetTaskId(strTaskId);
        task.SetDisk(iDisk);
        return task;
    }

    void LoadThree() {
        Load({{"n1", {"A", "B"}}, {"n2", {"A"}}, {"n3", {"B"}}});
        CNodeMgr::Instance().SetNodeOnline("n2", false);
        CContainerMgr::Instance().SetContainerOnline({"n2", "A"}, false);
        Publish();
    }

    void Happen(EEvent eEvent, const std::string& strNodeId) {
        CEvent event;
        event.eEvent = eEvent;
        event.strNodeId = strNodeId;
        event.iTime = 1000;
        event.strCause = "so it is";
        m_events.Take(event);
        m_events.Publish();
    }
};

TEST_F(Questions, NodeIsShownWithWhatItHas) {
    CNode node = MakeStoredNode("n1", {"A", "B"}, "10.0.0.1");
    node.SetMemberStatus(CLUSTER_MEMBER_REMOVED);
    CNodeMgr::Instance().Init({node});
    m_view.engine.draining = {"n1"};
    Load();
    EXPECT_EQ(JsonLine(Get("/api/v1/nodes/n1")),
              R"({"domain_role":0,"draining":true,"ip":"10.0.0.1","ip_type":0,)"
              R"("member_status":"removed","node":"n1","node_role":0,"online":true,)"
              R"("service_type":0,"total":{},"types":["A","B"],"used":{}})");
    EXPECT_EQ(JsonLine(Get("/api/v1/nodes")["nodes"][0]), JsonLine(Get("/api/v1/nodes/n1")));
}

TEST_F(Questions, ContainerIsShownWithItsLoad) {
    Load({{"n1", {"A"}}});
    CSystemResource total;
    total.SetDisk(200);
    total.SetNet(10);
    CSystemResource used;
    used.SetDisk(20);
    used.SetNet(5);
    CContainerMgr& containers = CContainerMgr::Instance();
    containers.SetSystemResource({"n1", "A"}, total, used);
    containers.SetExtParam({"n1", "A"}, {{"key", "value"}});
    containers.AddResourceTask({"n1", "A"}, {Task("t1", 30), Task("t2", 20)});
    Publish();
    EXPECT_EQ(JsonLine(Get("/api/v1/containers/A/n1")),
              R"({"available":true,"disk_percent":25,"fault_shift":false,"may_shift":false,)"
              R"("member_status":"normal","net_percent":50,"node":"n1","online":true,)"
              R"("parameters":{"key":"value"},"processes":{},"reported":false,"shifting":false,)"
              R"("task_count":2,"total":{"disk":200,"net":10},"type":"A",)"
              R"("used":{"disk":20,"net":5}})");
}

TEST_F(Questions, CloudStorageContainerShowsItsStorage) {
    Load({{"n1", {CONTAINER_TYPE_CLOUD_STORAGE, "A"}}});
    const std::string strPath = std::string("/api/v1/containers/") + CONTAINER_TYPE_CLOUD_STORAGE;
    EXPECT_TRUE(Get(strPath + "/n1").isMember("storage"));
    EXPECT_FALSE(Get("/api/v1/containers/A/n1").isMember("storage"));
}

TEST_F(Questions, AvailableIsWhatTheLibraryGivesPlugins) {
    LoadThree();
    Load({{"n4", {"A"}}, {"n5", {"A"}}});
    CContainerMgr::Instance().SetProcessState({"n4", "A"}, {{"p", PROCESS_STATE_STOPPED}});
    membership::Framework().SetNodeClusterStatus({"n5"}, CLUSTER_MEMBER_REMOVED);
    Publish();
    ContainerMap available;
    membership::Framework().GetAvailableContainer("A", available);
    ASSERT_EQ(available.size(), 1U);
    EXPECT_THAT(Containers({{"type", "A"}, {"available", "true"}}), ElementsAre("n1A"));
    EXPECT_THAT(Containers({{"type", "A"}, {"available", "false"}}),
                ElementsAre("n2A", "n4A", "n5A"));
}

TEST_F(Questions, ListsAreFiltered) {
    LoadThree();
    EXPECT_THAT(Nodes({}), ElementsAre("n1", "n2", "n3"));
    EXPECT_THAT(Nodes({{"online", "false"}}), ElementsAre("n2"));
    EXPECT_THAT(Nodes({{"type", "B"}}), ElementsAre("n1", "n3"));
    EXPECT_THAT(Nodes({{"type", "B"}, {"node", "n3"}}), ElementsAre("n3"));
    EXPECT_THAT(Nodes({{"type", "C"}}), IsEmpty());
    EXPECT_THAT(Containers({{"online", "true"}}), ElementsAre("n1A", "n1B", "n3B"));
    EXPECT_THAT(Containers({{"node", "n1"}, {"type", "A"}}), ElementsAre("n1A"));
}

TEST_F(Questions, EntriesAreCutToTheirFields) {
    LoadThree();
    EXPECT_EQ(JsonLine(Get("/api/v1/nodes", {{"fields", "node,online"}, {"limit", "1"}})),
              R"({"next":"n1","nodes":[{"node":"n1","online":true}]})");
}

TEST_F(Questions, PagesFollowEachOther) {
    LoadThree();
    Query query{{"limit", "2"}};
    std::vector<std::vector<std::string>> pages;
    while (pages.size() < 5) {
        const Json::Value page = Get("/api/v1/containers", query);
        pages.push_back(Column(page["containers"], "node"));
        if (!page.isMember("next")) {
            break;
        }
        query["after"] = page["next"].asString();
    }
    EXPECT_THAT(pages, ElementsAre(ElementsAre("n1", "n1"), ElementsAre("n2", "n3")));
}

TEST_F(Questions, OptionsThatMakeNoSenseAreRefused) {
    LoadThree();
    EXPECT_EQ(Refusal("/api/v1/nodes", {{"online", "maybe"}}),
              "400 bad_request online must be true or false");
    EXPECT_EQ(Refusal("/api/v1/nodes", {{"limit", "0"}}),
              "400 bad_request limit must be a whole number from 1 to 100000");
    EXPECT_EQ(Refusal("/api/v1/nodes", {{"limit", "2x"}}),
              "400 bad_request limit must be a whole number from 1 to 100000");
    EXPECT_THAT(Refusal("/api/v1/nodes", {{"fields", "node,colour"}}),
                HasSubstr("400 bad_request fields must be some of: node ip "));
    EXPECT_EQ(Refusal("/api/v1/nodes", {{"available", "true"}}),
              "400 bad_request the parameter available is not known");
}

TEST_F(Questions, UnknownThingsAreNamed) {
    LoadThree();
    EXPECT_EQ(Refusal("/api/v1/nodes/n9"), "404 unknown_node n9");
    EXPECT_EQ(Refusal("/api/v1/containers/A/n3"), "404 unknown_container n3 A");
    EXPECT_EQ(Refusal("/api/v1/containers/A/n3/tasks"), "404 unknown_container n3 A");
    EXPECT_EQ(Refusal("/api/v1/documents/other"), "404 unknown_entry other");
}

TEST_F(Questions, TasksOfAContainerGoByTheirIds) {
    Load({{"n1", {"A"}}});
    CContainerMgr::Instance().AddResourceTask({"n1", "A"}, {Task("t2", 2), Task("t1", 1)});
    Publish();
    EXPECT_EQ(JsonLine(Get("/api/v1/containers/A/n1/tasks")),
              R"({"tasks":[{"costs":{"disk":1},"id":"t1"},{"costs":{"disk":2},"id":"t2"}]})");
    EXPECT_EQ(JsonLine(Get("/api/v1/containers/A/n1/tasks", {{"after", "t1"}, {"fields", "id"}})),
              R"({"tasks":[{"id":"t2"}]})");
}

TEST_F(Questions, ClusterIsSeenAtAGlance) {
    LoadThree();
    m_view.engine.heldTypes = {"A"};
    m_view.iTime = 77;
    m_view.ullNumber = 5;
    m_view.bSettling = false;
    Publish();
    EXPECT_EQ(JsonLine(Get("/api/v1/cluster")),
              R"({"containers":4,"draining":[],"held_types":["A"],"nodes":3,)"
              R"("offline_containers":1,"offline_nodes":1,"settling":false,"store_away":false,)"
              R"("tasks":0,"time":77,"view":5})");
}

TEST_F(Questions, PluginIsShownWithClaimsAndHealth) {
    CPluginFile file;
    file.strFile = "librec.so";
    file.strName = "rec";
    file.held.jobs = {7};
    file.held.containers = {"A"};
    file.held.containerBinds["R"] = {"A"};
    file.lost.push_back({CLostClaim::KIND_JOB, "8", "libother.so"});
    CPluginFile broken;
    broken.strFile = "broken.so";
    broken.strFailure = "no entry point";
    CPluginView running;
    running.strName = "rec";
    running.bOutOfService = true;
    running.failures["Schedule"] = 3;
    m_view.pPluginFiles =
        std::make_shared<const std::list<CPluginFile>>(std::list<CPluginFile>{file, broken});
    m_view.engine.plugins = {running};
    Load();
    const Json::Value plugins = Get("/api/v1/plugins")["plugins"];
    EXPECT_EQ(JsonLine(plugins[0]),
              R"({"balance_types":[],"failures":{"Schedule":3},"file":"librec.so","job_types":[7],)"
              R"("logic_types":{"R":["A"]},)"
              R"("lost":[{"file":"libother.so","key":"8","kind":"job_type"}],"name":"rec",)"
              R"("out_of_service":true,"shift_types":[],"types":["A"]})");
    EXPECT_EQ(plugins[1]["failure"], "no entry point");
}

TEST_F(Questions, DocumentIsShownAsItIsStored) {
    const std::string strText = "{\n\t\"a\": \"\\u00e9 é\"}";
    auto pDocuments = std::make_shared<std::map<std::string, CStoredDocument>>();
    (*pDocuments)["manager"] = {true, strText, true};
    (*pDocuments)["cg_list"] = {true, std::string("\xff\x01", 2), false};
    m_view.pDocuments = pDocuments;
    Load();
    EXPECT_EQ(Get("/api/v1/documents/manager")["text"].asString(), strText);
    EXPECT_EQ(JsonLine(Get("/api/v1/documents/cg_list")),
              R"({"asked":false,"bytes":2,"document":"cg_list","exists":true,)"
              R"("fault":"line 1, column 1: a byte that is no UTF-8","hex":"ff01","limit":1023})");
    const Json::Value documents = Get("/api/v1/documents")["documents"];
    EXPECT_THAT(Column(documents, "document"),
                ElementsAre("cluster", "cloud_storage", "configuration", "cg_list", "center_db",
                            "manager", "version"));
    EXPECT_EQ(JsonLine(documents[0]), R"({"asked":true,"bytes":0,"document":"cluster",)"
                                      R"("exists":false,"limit":65535})");
}

TEST_F(Questions, RecordsAreShown) {
    CRecordsView records;
    records.cgs.emplace_back();
    records.cgs.back().SetCGCode("n1");
    records.cgs.back().SetFloatCode("f");
    records.cgs.back().SetFloatIp("1.1.1.1");
    records.databases.emplace_back();
    records.databases.back().SetDBType(CLUSTER_DB_MASTER);
    records.databases.back().SetNodeId("n2");
    records.managers.emplace_back();
    records.managers.back().SetNodeId("n3");
    m_view.pRecords = std::make_shared<const CRecordsView>(records);
    m_view.ullDecision = 8;
    m_view.ullMaster = 2;
    CShiftView shift;
    shift.strType = "A";
    m_view.engine.shifts = {shift};
    Load();
    EXPECT_EQ(JsonLine(Get("/api/v1/cgs")),
              R"({"cgs":[{"decision":"0","float_code":"f","float_ip":"1.1.1.1","node":"n1"}]})");
    EXPECT_EQ(Get("/api/v1/center-db")["databases"][0]["node"], "n2");
    EXPECT_TRUE(Get("/api/v1/center-db")["databases"][0]["master"].asBool());
    EXPECT_EQ(JsonLine(Get("/api/v1/managers")), R"({"managers":[{"ip":"","node":"n3"}]})");
    EXPECT_EQ(JsonLine(Get("/api/v1/versions")),
              R"({"center_db":0,"decision":8,"master":2,"shifts":[{"cause":"","draining":false,)"
              R"("given_up":false,"next_try":0,"started":0,"type":"A","waiting":0}]})");
}

TEST_F(Questions, StandardTasksAreShownByName) {
    CResourceTask task;
    task.InsertSingleKeyValue("k", "v");
    m_view.pStandardTasks = std::make_shared<const std::map<std::string, CResourceTask>>(
        std::map<std::string, CResourceTask>{{"RECORD", task}});
    Load();
    EXPECT_EQ(JsonLine(Get("/api/v1/standard-tasks")),
              R"({"standard_tasks":[{"movable":true,"name":"RECORD","private":{"k":"v"}}]})");
}

TEST_F(Questions, EventsAreReadOnFromANumber) {
    for (const char* const pszNode : {"n1", "n2", "n3", "n4", "n5", "n6", "n7"}) {
        Happen(EEvent::JOINED, pszNode);
    }
    EXPECT_EQ(
        JsonLine(Get("/api/v1/events", {{"since", "6"}})),
        R"({"events":[{"cause":"so it is","event":"joined","node":"n7","number":7,)"
        R"("sentence":"joins: so it is","subject":"n7","time":1000}],"first":3,"last":7,"missed":0})");
    const Json::Value first = Get("/api/v1/events", {{"limit", "2"}});
    EXPECT_THAT(Column(first["events"], "node"), ElementsAre("n3", "n4"));
    EXPECT_EQ(first["missed"], 2);
    EXPECT_EQ(Refusal("/api/v1/events", {{"since", "-1"}}),
              "400 bad_request since must be a whole number from 0 to 18446744073709551615");
}

TEST_F(Questions, StreamBeginsBehindWhatTheClientHas) {
    Happen(EEvent::JOINED, "n1");
    Happen(EEvent::LEFT, "n1");
    CHttpRequest request;
    request.strMethod = "GET";
    request.strPath = "/api/v1/events/stream";
    request.query = {{"since", "0"}};
    request.strLastEventId = "1";
    const auto pReply = Send(request);
    ASSERT_NE(pReply->m_pStream, nullptr);
    EXPECT_EQ(pReply->m_strStreamType, "text/event-stream");
    std::string strText;
    EXPECT_TRUE(pReply->m_pStream->Read(strText));
    EXPECT_THAT(strText, HasSubstr("id: 2\n"));
    EXPECT_THAT(strText, Not(HasSubstr("id: 1\n")));
    request.strLastEventId = "x";
    EXPECT_THAT(ErrorOf(*Send(request)), HasSubstr("400 bad_request since must be"));
}

TEST_F(Questions, SettingsAreShownAlsoWhereTheyAreTheDefault) {
    m_settings.engine.iSilence = 3;
    const Json::Value settings = Get("/api/v1/settings");
    EXPECT_EQ(settings["engine"]["silence"], 3);
    EXPECT_EQ(settings["engine"]["take_up"], 300);
    EXPECT_EQ(settings["service"]["queue_inputs"], 4);
    EXPECT_EQ(settings["cluster_code"], "X");
    EXPECT_TRUE(settings["cluster"]["fault_shift"].isBool());
}

TEST_F(Questions, ReadinessTellsWhatItWaitsFor) {
    EXPECT_EQ(Refusal("/readyz"), "503 not_ready starting");
    EXPECT_EQ(Refusal("/api/v1/nodes"), "503 not_ready starting");
    EXPECT_EQ(Refusal("/api/v1/documents"), "503 not_ready starting");
    EXPECT_EQ(JsonLine(Get("/healthz")), R"({"healthy":true})");
    Load();
    EXPECT_EQ(JsonLine(Get("/readyz")), R"({"ready":true})");
}

TEST_F(Questions, MetricsAreText) {
    const auto pReply = Send("GET", "/metrics");
    EXPECT_STREQ(pReply->m_reply->pszType, "text/plain; version=0.0.4; charset=utf-8");
    EXPECT_THAT(*pReply->m_reply->pBody, HasSubstr("cluster_ready 0\n"));
}

TEST_F(Questions, WhoHasTheSameAlreadyIsToldJustThat) {
    LoadThree();
    const auto pFirst = Send("GET", "/api/v1/nodes");
    const std::string strTag = pFirst->m_reply->headers.at("ETag");
    const auto pSame = Send("GET", "/api/v1/nodes", "", {}, "\"other\", W/" + strTag);
    EXPECT_EQ(StatusOf(*pSame), 304U);
    EXPECT_EQ(*pSame->m_reply->pBody, "");
    EXPECT_EQ(pSame->m_reply->headers.at("ETag"), strTag);
    CNodeMgr::Instance().SetNodeOnline("n1", false);
    Publish();
    EXPECT_EQ(StatusOf(*Send("GET", "/api/v1/nodes", "", {}, strTag)), 200U);
    EXPECT_EQ(StatusOf(*Send("GET", "/api/v1/nodes/n9", "", {}, "*")), 404U);
}

}  // namespace
