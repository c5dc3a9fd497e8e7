#include "cluster_engine/input.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::HasSubstr;

/// An input of each kind, first with all that it may have, then with what it must have.
const std::vector<std::string> TEXTS = {
    R"("input":"node_report","node":"n1","time":1,"total":{"cpu":-1},"used":{"net":2147483647})",
    R"("input":"node_report","node":"n/%","time":0)",
    R"("allocations":[{"allocated":2,"dns":"d","free":1,"path":"/p","pool":"c","used":1}],)"
    R"("input":"container_report","message_type":41218,"node":"n1","parameters":{"a":"b"},)"
    R"("processes":{"p":2},"seen":18446744073709551615,)"
    R"("tasks":[{"costs":{"disk":5},"id":"t","movable":true,"name":"","private":{}},{"id":"u"}],)"
    R"("time":2,"total":{},"type":"MeroRecord","used":{"io":1,"mem":2})",
    R"("input":"container_report","node":"n1","tasks":[],"time":2,"type":"MeroRecord")",
    R"("input":"container_report","node":"n1","time":2,"type":"MeroRecord")",
    R"("imgu":1,"input":"nvr_report","mu":2,"nvr":"v","scu":3,"time":3,"total":9,"used":4)",
    R"("input":"nvr_report","nvr":"v","time":3,"total":9,"used":4)",
    R"("input":"job","job_type":1001,"node":"n1","time":4,"xml":"<TaskList/>\n")",
    R"("input":"dry_run","job_type":4294967295,"node":"n1","time":4,"xml":"")",
    R"("input":"end_tasks","tasks":["a","b/c"],"time":5,"type":"MeroRecord")",
    R"("input":"manual_shift","moves":[{"from":"n1","task":"t","to":"n2"}],"time":6,"type":"T")",
    R"("bit_rate":4,"input":"high_speed","picture":true,"time":7)",
    R"("bit_rate":-4,"input":"high_speed","time":7)",
    R"("input":"explain","task":"t","time":8,"type":"T")",
    R"("domain_role":3,"input":"join","ip":"10.0.0.1","ip_type":1,"node":"n","node_role":2,)"
    R"("time":9,"types":["A","B"])",
    R"("input":"join","ip":"","node":"n","time":9)",
    R"("input":"leave","node":"n","time":10,"type":"T")",
    R"("input":"leave","node":"n","time":10)",
    R"("input":"drain","node":"n","time":11)",
    R"("input":"member_status","nodes":["n","m"],"status":"removed","time":12)",
    R"("float_code":"f","float_ip":"10.0.0.2","input":"cg_add","node":"n","time":13)",
    R"("float_code":"f","float_ip":"10.0.0.2","input":"cg_update","node":"n","time":13)",
    R"("float_code":"f","input":"cg_remove","time":13)",
    R"("input":"promote","node":"n","time":14)",
    R"("document":"cloud_storage","input":"document_changed","time":15)",
    R"("input":"storage_allocate","time":16,"xml":"<a/>")",
    R"("change_size":1,"input":"storage_reduce","time":16,"total_size":2,"xml":"<a/>")",
    R"("input":"storage_save","node":"n","time":17)",
    R"("input":"readmit","plugin":"p","time":18)",
    R"("input":"shift_anyway","time":19,"type":"T")",
    R"("input":"balance_now","time":20)",
    R"("input":"read_standard_tasks","time":21)",
    R"("input":"next_master_version","time":22)",
    R"("input":"tick","time":253402300799)",
};

/// Reads the text as an input: its fault, or the text that is written again.
std::string ReadAgain(const std::string& strText, std::size_t* puiUnknown = nullptr) {
    Json::Value json;
    CFieldFault fault;
    EXPECT_TRUE(ParseJsonText(strText.data(), strText.data() + strText.size(), json, fault));
    CInput input;
    const bool bRead = InputFromJson(json, input, fault, puiUnknown);
    return bRead ? JsonLine(InputToJson(input)) : fault.strPlace + ": " + fault.strFault;
}

TEST(Input, EveryKindRoundTripsToTheByte) {
    std::set<std::string> kinds;
    for (const std::string& strFields : TEXTS) {
        const std::string strText = '{' + strFields + '}';
        EXPECT_EQ(ReadAgain(strText), strText);
        const std::size_t uiName = strText.find("\"input\":\"") + 9;
        kinds.insert(strText.substr(uiName, strText.find('"', uiName) - uiName));
    }
    EXPECT_EQ(kinds.size(), std::variant_size_v<InputBody>) << "a kind has no text here";
}

TEST(Input, UnknownFieldOfEachKindIsNamed) {
    for (const std::string& strFields : TEXTS) {
        EXPECT_EQ(ReadAgain('{' + strFields + R"(,"zzz":1})"), "zzz: is not known") << strFields;
    }
}

TEST(Input, OnlyReportsPassOverWhatTheyDoNotKnow) {
    for (const std::string& strFields : TEXTS) {
        std::size_t uiUnknown = 0;
        const std::string strAgain = ReadAgain('{' + strFields + R"(,"zzz":1})", &uiUnknown);
        const bool bReport = strFields.find("_report\"") != std::string::npos;
        EXPECT_EQ(strAgain, bReport ? '{' + strFields + '}' : "zzz: is not known") << strFields;
        EXPECT_EQ(uiUnknown, bReport ? 1U : 0U) << strFields;
    }
}

TEST(Input, FaultNamesItsPlace) {
    const std::string strNoId = ": must be an id: printable, of 1 to 128 bytes";
    const std::string strReport = R"({"input":"container_report","node":"n","time":1,"type":"T",)";
    const std::vector<std::pair<std::string, std::string>> faults = {
        {R"([])", "input: must name the kind of the input"},
        {R"({"time":1})", "input: must name the kind of the input"},
        {R"({"input":7,"time":1})", "input: must name the kind of the input"},
        {R"({"input":"none","time":1})", "input: is no kind of input"},
        {R"({"input":"tick"})", "time: is missing"},
        {R"({"input":"tick","time":"1"})",
         "time: must be a whole number from -9223372036854775808 to 9223372036854775807"},
        {R"({"input":"tick","time":-1})", "time: must be a second from 0 to 253402300799"},
        {R"({"input":"tick","time":253402300800})",
         "time: must be a second from 0 to 253402300799"},
        {R"({"input":"drain","node":"a\nb","time":1})", "node" + strNoId},
        {R"({"input":"leave","node":"a","time":1,"type":""})", "type" + strNoId},
        {R"({"input":"end_tasks","tasks":["a",""],"time":1,"type":"T"})", "tasks[1]" + strNoId},
        {R"({"input":"join","ip":"","node":"n","time":1,"types":["\u0001"]})",
         "types[0]" + strNoId},
        {R"({"input":"member_status","nodes":["a"],"status":"gone","time":1})",
         "status: must be one of: normal, removed"},
        {R"({"input":"job","job_type":-1,"node":"n","time":1,"xml":""})",
         "job_type: must be a whole number from 0 to 4294967295"},
        {strReport + R"("tasks":[{"id":"a"},{"costs":{"disk":1e3},"id":"b"}]})",
         "tasks[1].costs.disk: must be a whole number from -2147483648 to 2147483647"},
        {strReport + R"("tasks":[{"id":"a","private":{"k":null}}]})",
         "tasks[0].private.k: must be a text"},
        {strReport + R"("processes":{"p":"up"}})",
         "processes.p: must be a whole number from -2147483648 to 2147483647"},
    };
    for (const auto& [strText, strFault] : faults) {
        EXPECT_EQ(ReadAgain(strText), strFault) << strText;
    }
}

}  // namespace
