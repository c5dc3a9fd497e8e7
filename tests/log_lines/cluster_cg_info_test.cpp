#include "framework_service/cluster_cg_info.h"

#include <json/value.h>

#include <array>

#include "log_lines/log_lines.h"

namespace {

int Parse(const char* pszJson) {
    return CClusterCGInfoList().ParseJson(pszJson);
}

void ParseXml(const char* pszXml) {
    PELU::CXml xml(nullptr);
    xml.Parse(pszXml);
    CClusterCGInfoList().ParseXml(xml);
}

CClusterCGInfoList OneEntry() {
    CClusterCGInfoList list;
    list.AddClusterCGInfo({});
    return list;
}

const std::vector<CScenario> SCENARIOS = {
    {"ParseNull",
     [](CScene&) { Parse(nullptr); },
     {"ERR|cluster_cg_info|ParseJson|Point pszJson is null.|1|Make sure there is something wrong"}},
    {"ParseNoJson",
     [](CScene&) { Parse("{"); },
     {"ERR|cluster_cg_info|ParseJson|cluster cg info|109100053|parse json fail, json "
      "text[%s].|parse json fail, json text[{]."}},
    {"ParseEmptyValue",
     [](CScene&) { Parse("[]"); },
     {"TRACE|cluster_cg_info|ParseJson|||cluster cg info, no cg info found"}},
    {"ParseNoArray",
     [](CScene&) { Parse(R"({"a":1})"); },
     {R"(ERR|cluster_cg_info|ParseJson|cluster cg info|109100053|not found cg list, json text[%s].|not found cg list, json text[{"a":1}].)"}},
    {"ParseBadEntry",
     [](CScene&) { Parse("[{}]"); },
     {"ERR|cluster_cg_info|ParseJson|cluster cg info|109100053|parse json fail.",
      "ERR|cluster_cg_info|ParseJson|cluster cg info|109100053|parse cg json fail, json "
      "text[%s].|parse cg json fail, json text[[{}]]."}},
    {"WriteNoEntry",
     [](CScene&) {
         std::array<char, 8> text{};
         CClusterCGInfoList().ToJson(text.data(), text.size());
     },
     {"TRACE|cluster_cg_info|ToJson|||cluster cg info, no cg info."}},
    {"WriteToNull",
     [](CScene&) { OneEntry().ToJson(nullptr, 8); },
     {"ERR|cluster_cg_info|ToJson|Point pszJson is null.|1|Make sure there is something wrong"}},
    {"WriteToNoRoom",
     [](CScene&) {
         std::array<char, 8> text{};
         OneEntry().ToJson(text.data(), 0);
     },
     {"ERR|cluster_cg_info|ToJson|cluster cg info|109100053|to json fail, illegal length."}},
    {"ParseXmlWithoutAList",
     [](CScene&) { ParseXml("<Other/>"); },
     {"ERR|cluster_cg_info|ParseXml|parse cluster cg info list xml fail|109100053|not found CGList "
      "element."}},
    {"ParseXmlOfAnEmptyList",
     [](CScene&) { ParseXml("<CGList/>"); },
     {"WARNING|cluster_cg_info|ParseXml|parse cluster cg info list xml fail||no CGInfo exist."}},
    {"ParseXmlOfAnotherElement",
     [](CScene&) { ParseXml("<CGList><Other/></CGList>"); },
     {"ERR|cluster_cg_info|ParseXml|parse cluster cg info xml fail|109100053|not found CGInfo "
      "element.",
      "ERR|cluster_cg_info|ParseXml|parse cluster cg info list xml fail|109100053|parse single cg "
      "info fail."}},
    {"ParseXmlWithoutANodeCode",
     [](CScene&) { ParseXml("<CGList><CGInfo><FloatIP>1</FloatIP></CGInfo></CGList>"); },
     {"ERR|cluster_cg_info|ParseXml|parse cluster cg info xml fail|109100053|not found CGInfo "
      "element.",
      "ERR|cluster_cg_info|ParseXml|parse cluster cg info list xml fail|109100053|parse single cg "
      "info fail."}},
    {"ReadFails",
     [](CScene& scene) {
         scene.store.FailCall(1, 5);
         CClusterCGInfoList().ParseFromZK();
     },
     {"ERR|cluster_cg_info|ParseFromZK|CGList info, parse form zk|1|get cg list from zk fail."}},
};

INSTANTIATE_TEST_SUITE_P(CGDocument, LogLines, testing::ValuesIn(SCENARIOS), NAME_OF_PARAMETER);

}  // namespace
