#include "serve/routes.h"

#include <algorithm>

#include "serve/route.h"
#include "serve/routes_fixture.h"

using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

class Routes : public RoutesTest {
protected:
    /// What becomes of the request: the input that it hands over.
    std::string InputOf(const std::string& strMethod, const std::string& strPath,
                        const std::string& strBody = "") {
        const auto pReply = Send(strMethod, strPath, strBody);
        EXPECT_FALSE(pReply->m_reply) << ErrorOf(*pReply);
        const std::string strInput = AnswerOne(Done());
        EXPECT_EQ(StatusOf(*pReply), 200U);
        EXPECT_EQ(BodyOf(*pReply)["result"], "done");
        return strInput;
    }

    std::string Refusal(const std::string& strMethod, const std::string& strPath,
                        const std::string& strBody = "") {
        const auto pReply = Send(strMethod, strPath, strBody);
        EXPECT_TRUE(Take().empty());
        return ErrorOf(*pReply);
    }
};

struct CSent {
    const char* pszMethod;
    const char* pszPath;
    const char* pszBody;
    const char* pszInput;
};

class EveryInput : public Routes, public testing::WithParamInterface<CSent> {};

constexpr CSent SENT[] = {
    {"POST", "/api/v1/jobs", R"({"node":"n","job_type":7,"xml":"<a/>"})",
     R"({"input":"job","job_type":7,"node":"n","xml":"<a/>"})"},
    {"POST", "/api/v1/dry-runs", R"({"node":"n","job_type":7,"xml":""})",
     R"({"input":"dry_run","job_type":7,"node":"n","xml":""})"},
    {"POST", "/api/v1/tasks/A/end", R"({"tasks":["t"]})",
     R"({"input":"end_tasks","tasks":["t"],"type":"A"})"},
    {"GET", "/api/v1/tasks/A/t/explain", "", R"({"input":"explain","task":"t","type":"A"})"},
    {"POST", "/api/v1/shifts/manual", R"({"type":"A","moves":[{"task":"t","from":"n","to":"m"}]})",
     R"({"input":"manual_shift","moves":[{"from":"n","task":"t","to":"m"}],"type":"A"})"},
    {"POST", "/api/v1/high-speed", R"({"bit_rate":4})", R"({"bit_rate":4,"input":"high_speed"})"},
    {"POST", "/api/v1/nodes", R"({"node":"n","ip":"1.2.3.4","types":["A"]})",
     R"({"input":"join","ip":"1.2.3.4","node":"n","types":["A"]})"},
    {"DELETE", "/api/v1/nodes/n", "", R"({"input":"leave","node":"n"})"},
    {"DELETE", "/api/v1/containers/A/n", "", R"({"input":"leave","node":"n","type":"A"})"},
    {"POST", "/api/v1/nodes/n/drain", "", R"({"input":"drain","node":"n"})"},
    {"PUT", "/api/v1/member-status", R"({"nodes":["n"],"status":"removed"})",
     R"({"input":"member_status","nodes":["n"],"status":"removed"})"},
    {"POST", "/api/v1/cgs", R"({"node":"n","float_code":"f","float_ip":"1.1.1.1"})",
     R"({"float_code":"f","float_ip":"1.1.1.1","input":"cg_add","node":"n"})"},
    {"PUT", "/api/v1/cgs/f", R"({"node":"n","float_ip":"1.1.1.1"})",
     R"({"float_code":"f","float_ip":"1.1.1.1","input":"cg_update","node":"n"})"},
    {"DELETE", "/api/v1/cgs/f", "", R"({"float_code":"f","input":"cg_remove"})"},
    {"POST", "/api/v1/center-db/promote", R"({"node":"n"})", R"({"input":"promote","node":"n"})"},
    {"POST", "/api/v1/documents/manager/reload", "",
     R"({"document":"manager","input":"document_changed"})"},
    {"POST", "/api/v1/storage/allocate", R"({"xml":"<a/>"})",
     R"({"input":"storage_allocate","xml":"<a/>"})"},
    {"POST", "/api/v1/storage/reduce", R"({"xml":"<a/>","change_size":1,"total_size":2})",
     R"({"change_size":1,"input":"storage_reduce","total_size":2,"xml":"<a/>"})"},
    {"POST", "/api/v1/storage/n/save", "", R"({"input":"storage_save","node":"n"})"},
    {"POST", "/api/v1/plugins/rec/readmit", "{}", R"({"input":"readmit","plugin":"rec"})"},
    {"POST", "/api/v1/types/A/shift-anyway", "", R"({"input":"shift_anyway","type":"A"})"},
    {"POST", "/api/v1/balance", "", R"({"input":"balance_now"})"},
    {"POST", "/api/v1/standard-tasks/read", "", R"({"input":"read_standard_tasks"})"},
    {"POST", "/api/v1/versions/master/next", "", R"({"input":"next_master_version"})"},
    {"POST", "/api/v1/reports", R"({"input":"node_report","node":"n"})",
     R"({"input":"node_report","node":"n"})"},
    {"POST", "/api/v1/reports", R"({"input":"container_report","node":"n","type":"A","tasks":[]})",
     R"({"input":"container_report","node":"n","tasks":[],"type":"A"})"},
    {"POST", "/api/v1/reports", R"({"input":"nvr_report","nvr":"v","total":2,"used":1})",
     R"({"input":"nvr_report","nvr":"v","total":2,"used":1})"},
};

TEST_P(EveryInput, ReachesTheEngineAsItWasSent) {
    Load();
    EXPECT_EQ(InputOf(GetParam().pszMethod, GetParam().pszPath, GetParam().pszBody),
              GetParam().pszInput);
}

INSTANTIATE_TEST_SUITE_P(Routes, EveryInput, testing::ValuesIn(SENT));

template <std::size_t... KINDS>
std::set<std::string> AllKinds(std::index_sequence<KINDS...>) {
    return {std::variant_alternative_t<KINDS, InputBody>::NAME...};
}

TEST(RouteTable, HasEveryKindOfInputButTheTick) {
    std::set<std::string> kinds =
        AllKinds(std::make_index_sequence<std::variant_size_v<InputBody>>());
    for (const CSent& sent : SENT) {
        Json::Value input;
        CFieldFault fault;
        const std::string strInput = sent.pszInput;
        ASSERT_TRUE(
            ParseJsonText(strInput.data(), strInput.data() + strInput.size(), input, fault));
        kinds.erase(input["input"].asString());
    }
    EXPECT_THAT(kinds, testing::ElementsAre("tick"));
}

TEST_F(Routes, IdsInThePathArePercentDecodedAfterItIsSplit) {
    Load();
    EXPECT_EQ(InputOf("DELETE", "/api/v1/containers/A%2fB/n%C3%A9%201"),
              "{\"input\":\"leave\",\"node\":\"né 1\",\"type\":\"A/B\"}");
}

TEST_F(Routes, PathThatIsNoIdIsRefused) {
    Load();
    const std::string strSentence = " in the path must be an id, encoded";
    EXPECT_EQ(Refusal("DELETE", "/api/v1/nodes/%zz"), "400 bad_request node" + strSentence);
    EXPECT_EQ(Refusal("DELETE", "/api/v1/nodes/%4"), "400 bad_request node" + strSentence);
    EXPECT_EQ(Refusal("DELETE", "/api/v1/nodes/%ff"), "400 bad_request node" + strSentence);
    EXPECT_EQ(Refusal("DELETE", "/api/v1/nodes/%00"), "400 bad_request node" + strSentence);
    EXPECT_EQ(Refusal("DELETE", "/api/v1/nodes/" + std::string(129, 'n')),
              "400 bad_request node" + strSentence);
}

TEST_F(Routes, UnknownPathIsNamed) {
    EXPECT_EQ(Refusal("GET", "/api/v1/nowhere"), "404 unknown_path /api/v1/nowhere");
    EXPECT_EQ(Refusal("GET", "/api/v1/nodes/"), "404 unknown_path /api/v1/nodes/");
    EXPECT_EQ(Refusal("GET", "/api/v1/\xff"), "404 unknown_path");
    EXPECT_EQ(Refusal("GET", ""), "404 unknown_path");
}

TEST_F(Routes, OtherMethodIsToldWhichAreTaken) {
    const auto pReply = Send("PATCH", "/api/v1/nodes/n");
    EXPECT_EQ(ErrorOf(*pReply), "405 wrong_method PATCH");
    EXPECT_EQ(pReply->m_reply->headers.at("Allow"), "DELETE, GET, HEAD");
    EXPECT_EQ(Send("GET", "/api/v1/balance")->m_reply->headers.at("Allow"), "POST");
}

TEST_F(Routes, BodyThatIsNoJsonIsRefusedWithItsPlace) {
    Load();
    const std::string strPath = "/api/v1/jobs";
    EXPECT_THAT(Refusal("POST", strPath, "{\n  \"node\": x}"),
                StartsWith("400 bad_json line 2, column 11: "));
    EXPECT_THAT(Refusal("POST", strPath, R"({"node":"n","node":"n"})"),
                StartsWith("400 bad_json line 1, column "));
    EXPECT_THAT(Refusal("POST", strPath, R"({"node":"n")"), StartsWith("400 bad_json line 1"));
    EXPECT_THAT(Refusal("POST", strPath, R"({} {})"), StartsWith("400 bad_json line 1"));
    EXPECT_EQ(Refusal("POST", strPath, "{\"xml\":\n \"\xc3\xa9\xff\"}"),
              "400 bad_json line 2, column 5: This is no UTF-8.");
    EXPECT_EQ(Refusal("POST", strPath, "\n[\"[\\\"[\"," + std::string(1000, '[')),
              "400 bad_json line 2, column 72: This is nested too deeply.");
}

TEST_F(Routes, BodyOfAnotherShapeIsRefusedWithItsPlace) {
    Load();
    EXPECT_EQ(Refusal("POST", "/api/v1/jobs", "[]"), "400 bad_input must be an object");
    EXPECT_EQ(Refusal("POST", "/api/v1/jobs"), "400 bad_input node is missing");
    EXPECT_EQ(Refusal("POST", "/api/v1/jobs", R"({"node":"n","job_type":-1,"xml":""})"),
              "400 bad_input job_type must be a whole number from 0 to 4294967295");
    EXPECT_EQ(Refusal("POST", "/api/v1/shifts/manual",
                      R"({"type":"A","moves":[{"task":"t","from":"n","to":7}]})"),
              "400 bad_input moves[0].to must be a text");
    EXPECT_EQ(Refusal("POST", "/api/v1/balance", R"({"now":true})"),
              "400 bad_input now is not known");
    EXPECT_EQ(Refusal("POST", "/api/v1/balance", R"({"time":3})"),
              "400 bad_input time is not known");
    EXPECT_EQ(Refusal("POST", "/api/v1/balance", R"({"input":"tick"})"),
              "400 bad_input input is not known");
    EXPECT_EQ(Refusal("PUT", "/api/v1/cgs/f", R"({"float_code":"f"})"),
              "400 bad_input float_code stands in the path already");
    EXPECT_EQ(Refusal("DELETE", "/api/v1/nodes/n", R"({"type":"A"})"),
              "400 bad_request DELETE takes no body here");
    EXPECT_THAT(Refusal("POST", "/api/v1/documents/other/reload"),
                HasSubstr("document must be one of: cluster, "));
}

TEST_F(Routes, ParameterThatIsNotKnownIsRefused) {
    Load();
    const auto pReply = Send("POST", "/api/v1/balance", "", {{"colour", "red"}});
    EXPECT_EQ(ErrorOf(*pReply), "400 bad_request the parameter colour is not known");
    EXPECT_TRUE(Take().empty());
    EXPECT_EQ(StatusOf(*Send("GET", "/healthz", "", {{"probe", "7"}})), 200U);
}

TEST_F(Routes, RefusedInputIsAnsweredByItsFault) {
    Load();
    const auto pReply = Send("DELETE", "/api/v1/nodes/n");
    AnswerOne(CAnswer::Refuse(EFault::UNKNOWN_NODE, "n"));
    EXPECT_EQ(ErrorOf(*pReply), "404 unknown_node n");
    EXPECT_EQ(BodyOf(*pReply)["result"], "refused");
    EXPECT_FALSE(BodyOf(*pReply).isMember("fault"));
}

TEST_F(Routes, StoreThatIsAwayTellsWhenToComeBack) {
    Load();
    const auto pReply = Send("POST", "/api/v1/balance");
    AnswerOne(CAnswer::Refuse(EFault::STORE_AWAY, ""));
    EXPECT_EQ(ErrorOf(*pReply), "503 store_away");
    EXPECT_EQ(pReply->m_reply->headers.at("Retry-After"), "1");
}

TEST_F(Routes, JobIsAnsweredByWhatBecameOfItsTasks) {
    Load();
    const auto pReply = Send("POST", "/api/v1/jobs", R"({"node":"n","job_type":7,"xml":"x"})");
    CAnswer answer;
    answer.bInPart = true;
    answer.tasks.resize(1);
    answer.tasks.front().strTaskId = "t";
    answer.tasks.front().strFault = "no_room";
    AnswerOne(answer);
    EXPECT_EQ(*pReply->m_reply->pBody,
              R"({"result":"in_part","in_part":true,)"
              R"("tasks":[{"task":"t","result":"refused","fault":"no_room"}]})");
}

TEST_F(Routes, NothingIsTakenBeforeTheClusterIsLoaded) {
    m_view.strNotReady = "the cluster document cannot be read";
    Publish();
    EXPECT_EQ(Refusal("POST", "/api/v1/balance"),
              "503 not_ready the cluster document cannot be read");
    EXPECT_EQ(Refusal("POST", "/api/v1/reports", R"({"input":"node_report","node":"n"})"),
              "503 not_ready the cluster document cannot be read");
}

TEST_F(Routes, FullQueueTellsWhenToComeBack) {
    Load();
    for (std::size_t ui = 0; ui < QUEUE_INPUTS; ++ui) {
        EXPECT_FALSE(Send("POST", "/api/v1/balance")->m_reply);
    }
    const auto pReply = Send("POST", "/api/v1/balance");
    EXPECT_EQ(ErrorOf(*pReply), "503 queue_full");
    EXPECT_EQ(pReply->m_reply->headers.at("Retry-After"), "1");
    EXPECT_THAT(m_metrics.Text(m_view, 0), HasSubstr("reason=\"queue_full\"} 1\n"));
}

TEST_F(Routes, StoppingServiceTakesNothing) {
    Load();
    m_queue.Close();
    EXPECT_EQ(Refusal("POST", "/api/v1/balance"), "503 stopping");
}

TEST_F(Routes, ReportsPassOverUnknownFieldsAndCountThem) {
    Load();
    const auto pReply = Send("POST", "/api/v1/reports",
                             R"({"input":"node_report","node":"n","mood":"good","time":9,)"
                             R"("total":{"gpu":3},"used":{}})");
    EXPECT_EQ(AnswerOne(Done()), R"({"input":"node_report","node":"n","total":{},"used":{}})");
    EXPECT_EQ(*pReply->m_reply->pBody, R"({"result":"done","unknown_fields":3})");
}

TEST_F(Routes, BadReportIsRefusedByItself) {
    Load();
    EXPECT_EQ(Refusal("POST", "/api/v1/reports", R"({"input":"node_report"})"),
              "400 bad_input node is missing");
    EXPECT_EQ(Refusal("POST", "/api/v1/reports", R"({"input":"balance_now"})"),
              "400 bad_input input must be one of: node_report, container_report, nvr_report");
    EXPECT_EQ(Refusal("POST", "/api/v1/reports", "7"), "400 bad_input must be an object");
    EXPECT_THAT(m_metrics.Text(m_view, 0), HasSubstr("reason=\"bad_input\"} 3\n"));
}

TEST_F(Routes, ListOfReportsIsAnsweredInItsOrderEachForItself) {
    Load();
    const auto pReply = Send("POST", "/api/v1/reports",
                             R"([{"input":"node_report","node":"n","x":1},[],)"
                             R"({"input":"nvr_report","nvr":"v","total":1,"used":"2"},)"
                             R"({"input":"container_report","node":"m","type":"A"}])");
    std::vector<CInputBatch> batches = Take();
    ASSERT_EQ(batches.size(), 1U);
    ASSERT_EQ(batches.front().inputs.size(), 2U);
    CAnswer numbered;
    numbered.ullNumber = 5;
    batches.front().onAnswers({CAnswer::Refuse(EFault::UNKNOWN_NODE, "n"), numbered});
    EXPECT_EQ(StatusOf(*pReply), 200U);
    const Json::Value answers = BodyOf(*pReply)["answers"];
    ASSERT_EQ(answers.size(), 4U);
    EXPECT_EQ(answers[0]["error"]["name"], "unknown_node");
    EXPECT_EQ(answers[0]["unknown_fields"], 1);
    EXPECT_EQ(answers[1]["error"]["about"], "must be an object");
    EXPECT_EQ(answers[2]["error"]["about"],
              "used must be a whole number from -2147483648 to 2147483647");
    EXPECT_EQ(JsonLine(answers[3]), R"({"number":5,"result":"done","unknown_fields":0})");
}

TEST_F(Routes, ListOfReportsWithNothingToDoIsAnsweredAtOnce) {
    Load();
    EXPECT_EQ(*Send("POST", "/api/v1/reports", "[]")->m_reply->pBody, R"({"answers":[]})");
    EXPECT_EQ(BodyOf(*Send("POST", "/api/v1/reports", "[1]"))["answers"][0]["result"], "refused");
    EXPECT_TRUE(Take().empty());
}

TEST_F(Routes, ListOfReportsIsNoLongerThanTheQueue) {
    Load();
    EXPECT_EQ(Refusal("POST", "/api/v1/reports", "[1,2,3,4,5]"),
              "413 too_much a list of reports has 4 at most");
}

TEST_F(Routes, ReportsThatTheQueueDoesNotTakeAreRefusedTogether) {
    Load();
    EXPECT_FALSE(Send("POST", "/api/v1/balance")->m_reply);
    const std::string strReport = R"({"input":"node_report","node":"n"})";
    const auto pReply =
        Send("POST", "/api/v1/reports",
             '[' + strReport + ',' + strReport + ',' + strReport + ',' + strReport + ']');
    EXPECT_EQ(ErrorOf(*pReply), "503 queue_full");
}

}  // namespace
