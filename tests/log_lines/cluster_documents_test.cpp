#include <json/value.h>

#include <array>

#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_config_znode_info.h"
#include "framework_service/cluster_znode_info.h"
#include "log_lines/log_lines.h"

// The line about bad thresholds of the configuration document is never written: they are looked for
// in an array alone, in which the JSON library refuses every look-up by name.

namespace {

template <typename Document>
int Parse(const char* pszJson) {
    return Document().ParseJson(pszJson);
}

const auto ParseCloudStorage = &Parse<CClusterCloudStorageZNodeInfo>;
const auto ParseConfig = &Parse<CClusterConfigZNodeInfo>;
const auto ParseCluster = &Parse<CClusterZNodeInfo>;

const std::vector<CScenario> CLOUD_STORAGE = {
    {"ParseNull",
     [](CScene&) { ParseCloudStorage(nullptr); },
     {"ERR|cluster_cloud_storage_znode_info|ParseJson|Point pszJson is null.|1|Make sure there is "
      "something wrong"}},
    {"ParseNoJson",
     [](CScene&) { ParseCloudStorage("{"); },
     {"ERR|cluster_cloud_storage_znode_info|ParseJson|cluster storage info|109100053|parse json "
      "fail, json text[%s].|parse json fail, json text[{]."}},
    {"ParseNoSet",
     [](CScene&) { ParseCloudStorage("{}"); },
     {"ERR|cluster_cloud_storage_znode_info|ParseJson|cluster storage "
      "info|109100053|CloudStorageSet is invalid, json text[%s].|CloudStorageSet is invalid, json "
      "text[{}]."}},
    {"ParseNoNodeCode",
     [](CScene&) { ParseCloudStorage(R"({"CloudStorageSet":[{}]})"); },
     {R"(INFO|cluster_cloud_storage_znode_info|ParseJson|cluster storage info||parse json text[%s], size=%d|parse json text[{"CloudStorageSet":[{}]}], size=1)",
      R"(ERR|cluster_cloud_storage_znode_info|ParseJson|cluster storage info|109100053|node code is invalid, json text[%s].|node code is invalid, json text[{"CloudStorageSet":[{}]}].)"}},
    {"ParseBadEntry",
     [](CScene&) { ParseCloudStorage(R"({"CloudStorageSet":[{"NvrCode":"n1"}]})"); },
     {R"(INFO|cluster_cloud_storage_znode_info|ParseJson|cluster storage info||parse json text[%s], size=%d|parse json text[{"CloudStorageSet":[{"NvrCode":"n1"}]}], size=1)",
      "ERR|cluster_cloud_storage_znode_info|ParseCloudStorageNodeJson|cluster cloud storage "
      "info|109100053|node is null or illegal.",
      R"(ERR|cluster_cloud_storage_znode_info|ParseJson|cluster storage info|109100053|parse cloud storage node failed, json text[%s].|parse cloud storage node failed, json text[{"CloudStorageSet":[{"NvrCode":"n1"}]}].)"}},
    {"ParseBadAllocation",
     [](CScene&) {
         ParseCloudStorage(
             R"({"CloudStorageSet":[{"NvrCode":"n1","ServiceType":"s","ProductType":"p","ReqSize":1,"ReqPicSize":2,"LowpriBit":3,"NodeList":[{}]}]})");
     },
     {R"(INFO|cluster_cloud_storage_znode_info|ParseJson|cluster storage info||parse json text[%s], size=%d|parse json text[{"CloudStorageSet":[{"NvrCode":"n1","ServiceType":"s","ProductType":"p","ReqSize":1,"ReqPicSize":2,"LowpriBit":3,"NodeList":[{}]}]}], size=1)",
      "ERR|cluster_cloud_storage_znode_info|ParseNodeJson|cluster cloud storage node "
      "info|109100053|node is null or illegal.",
      R"(ERR|cluster_cloud_storage_znode_info|ParseJson|cluster storage info|109100053|parse node json fail, json text[%s].|parse node json fail, json text[{"CloudStorageSet":[{"NvrCode":"n1","ServiceType":"s","ProductType":"p","ReqSize":1,"ReqPicSize":2,"LowpriBit":3,"NodeList":[{}]}]}].)"}},
    {"ParseWhole",
     [](CScene&) {
         ParseCloudStorage(
             R"({"CloudStorageSet":[{"NvrCode":"n1","ServiceType":"s","ProductType":"p","ReqSize":1,"ReqPicSize":2,"LowpriBit":3,"NodeList":[{"Code":"c","AllocSize":4,"UsedSize":5,"Dns":"d","Path":"p"}]}]})");
     },
     {R"(INFO|cluster_cloud_storage_znode_info|ParseJson|cluster storage info||parse json text[%s], size=%d|parse json text[{"CloudStorageSet":[{"NvrCode":"n1","ServiceType":"s","ProductType":"p","ReqSize":1,"ReqPicSize":2,"LowpriBit":3,"NodeList":[{"Code":"c","AllocSize":4,"UsedSize":5,"Dns":"d","Path":"p"}]}]}], size=1)",
      "INFO|cluster_cloud_storage_znode_info|ParseJson|cluster storage info||nvr code=%s, code=%s, "
      "alloc=%d, used=%d, dns=%s, path=%s|nvr code=n1, code=c, alloc=4, used=5, dns=d, path=p"}},
    {"ParseBadNodeJson",
     [](CScene&) {
         ORVA_CLOUD_STORAGE_ALLOC_INFO info;
         CClusterCloudStorageZNodeInfo().ParseNodeJson(Json::Value(Json::objectValue), info);
     },
     {"ERR|cluster_cloud_storage_znode_info|ParseNodeJson|cluster cloud storage node "
      "info|109100053|node is null or illegal."}},
    {"ParseBadCloudStorageNodeJson",
     [](CScene&) {
         CloudStorageInfo info;
         CClusterCloudStorageZNodeInfo().ParseCloudStorageNodeJson(Json::Value(Json::objectValue),
                                                                   info);
     },
     {"ERR|cluster_cloud_storage_znode_info|ParseCloudStorageNodeJson|cluster cloud storage "
      "info|109100053|node is null or illegal."}},
    {"WriteToNull",
     [](CScene&) { CClusterCloudStorageZNodeInfo().ToJson(nullptr, 8); },
     {"ERR|cluster_cloud_storage_znode_info|ToJson|Point pszJson is null.|1|Make sure there is "
      "something wrong"}},
};

const std::vector<CScenario> CONFIG = {
    {"ParseNull",
     [](CScene&) { ParseConfig(nullptr); },
     {"ERR|cluster_config_znode_info|ParseJson|Point pszJson is null.|1|Make sure there is "
      "something wrong"}},
    {"ParseNoJson",
     [](CScene&) { ParseConfig("{"); },
     {"ERR|cluster_config_znode_info|ParseJson|Cluster Config node info, parse json "
      "fail|109100053|json text[%s].|json text[{]."}},
    {"ParseNoSwitches",
     [](CScene&) { ParseConfig("{}"); },
     {"ERR|cluster_config_znode_info|ParseJson|Cluster Config node info|109100053|null or illegal, "
      "json text[%s].|null or illegal, json text[{}]."}},
    {"WriteToNull",
     [](CScene&) { CClusterConfigZNodeInfo().ToJson(nullptr, 8); },
     {"ERR|cluster_config_znode_info|ToJson|Point pszJson is null.|1|Make sure there is something "
      "wrong"}},
};

const std::vector<CScenario> CLUSTER = {
    {"ParseNull",
     [](CScene&) { ParseCluster(nullptr); },
     {"ERR|cluster_znode_info|ParseJson|Point pszJson is null.|1|Make sure there is something "
      "wrong"}},
    {"ParseNoJson",
     [](CScene&) { ParseCluster("{"); },
     {"ERR|cluster_znode_info|ParseJson|cluster znode info|109100053|parse json fail, json "
      "text[%s].|parse json fail, json text[{]."}},
    {"ParseNoName",
     [](CScene&) { ParseCluster("{}"); },
     {"ERR|cluster_znode_info|ParseJson|cluster znode info|109100053|cluster id or name is null or "
      "illegal, json text[%s].|cluster id or name is null or illegal, json text[{}]."}},
    {"ParseBadNode",
     [](CScene&) {
         ParseCluster(
             R"({"ClusterName":"c","ClusterRemark":"r","ClusterCode":"X","ClusterNode":[{}]})");
     },
     {"ERR|cluster_znode_info|ParseNodeJson|cluster znode info|109100053|node id or node name is "
      "null or illegal.",
      R"(ERR|cluster_znode_info|ParseJson|cluster znode info|109100053|parse node json fail, json text[%s].|parse node json fail, json text[{"ClusterName":"c","ClusterRemark":"r","ClusterCode":"X","ClusterNode":[{}]}].)"}},
    {"ParseBadNodeJson",
     [](CScene&) {
         CNode node;
         ParseNodeJson(Json::Value(Json::objectValue), node);
     },
     {"ERR|cluster_znode_info|ParseNodeJson|cluster znode info|109100053|node id or node name is "
      "null or illegal."}},
    {"WriteToNull",
     [](CScene&) { CClusterZNodeInfo().ToJson(nullptr, 8); },
     {"ERR|cluster_znode_info|ToJson|Point pszJson is null.|1|Make sure there is something wrong"}},
    {"WriteToNoRoom",
     [](CScene&) {
         std::array<char, 8> text{};
         CClusterZNodeInfo().ToJson(text.data(), 0);
     },
     {"ERR|cluster_znode_info|ToJson|cluster znode info|109100053|to json fail, illegal length."}},
};

INSTANTIATE_TEST_SUITE_P(CloudStorageDocument, LogLines, testing::ValuesIn(CLOUD_STORAGE),
                         NAME_OF_PARAMETER);
INSTANTIATE_TEST_SUITE_P(ConfigDocument, LogLines, testing::ValuesIn(CONFIG), NAME_OF_PARAMETER);
INSTANTIATE_TEST_SUITE_P(ClusterDocument, LogLines, testing::ValuesIn(CLUSTER), NAME_OF_PARAMETER);

}  // namespace
