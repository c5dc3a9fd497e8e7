#include <json/value.h>

#include <array>

#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "log_lines/log_lines.h"

// "Fail to get pcIpModifyXml" is never written: what is asked for its text has just got a root.

namespace {

void ParseDatabase(const char* pszJson) {
    CClusterDBZNodeInfo().ParseJson(pszJson);
}

void ParseDatabaseXml(const char* pszXml) {
    PELU::CXml xml(nullptr);
    xml.Parse(pszXml);
    xml.FindElem("DBList");
    xml.IntoElem();
    CClusterDBZNodeInfo().ParseFromXml(xml);
}

CClusterDBInfo OnNode(const std::string& strNodeId) {
    CClusterDBInfo info;
    info.SetNodeId(strNodeId);
    return info;
}

void ParseVersions(const char* pszJson) {
    CClusterDBVerZNodeInfo().ParseJson(pszJson);
}

void ParseManager(const char* pszJson) {
    CClusterMGRZNodeInfo().ParseJson(pszJson);
}

void ParseManagerXml(const char* pszXml) {
    PELU::CXml xml(nullptr);
    xml.Parse(pszXml);
    CClusterMGRZNodeInfo().ParseFromXml(xml);
}

const std::vector<CScenario> DATABASE = {
    {"ParseNull",
     [](CScene&) { ParseDatabase(nullptr); },
     {"ERR|cluster_db_znode_info|ParseJson|Point pszJson is null.|1|Make sure there is something "
      "wrong"}},
    {"ParseNoJson",
     [](CScene&) { ParseDatabase("{"); },
     {"ERR|cluster_db_znode_info|ParseJson|cluster db znode info|109100053|parse json fail, json "
      "text[%s].|parse json fail, json text[{]."}},
    {"ParseNoMaster",
     [](CScene&) { ParseDatabase("{}"); },
     {"ERR|cluster_db_znode_info|ParseJson|ccluster db znode info|109100053|json illegal, json "
      "text[%s].|json illegal, json text[{}]."}},
    {"ParseBadSlave",
     [](CScene&) {
         ParseDatabase(
             R"({"MasterDB":{"NodeCode":"n1","NodeIp":"i","DBPort":1,"DBToken":"t"},"SlaveDB":{}})");
     },
     {"ERR|cluster_db_znode_info|ParseSingleSlaveDB|ccluster db znode info|109100053|illegal salve "
      "db json.",
      R"(ERR|cluster_db_znode_info|ParseJson|ccluster db znode info|109100053|parse salve db info, json text[%s].|parse salve db info, json text[{"MasterDB":{"NodeCode":"n1","NodeIp":"i","DBPort":1,"DBToken":"t"},"SlaveDB":{}}].)"}},
    {"ParseBadSlaveInAnArray",
     [](CScene&) {
         ParseDatabase(
             R"({"MasterDB":{"NodeCode":"n1","NodeIp":"i","DBPort":1,"DBToken":"t"},"SlaveDB":[{}]})");
     },
     {"ERR|cluster_db_znode_info|ParseSingleSlaveDB|ccluster db znode info|109100053|illegal salve "
      "db json.",
      R"(ERR|cluster_db_znode_info|ParseJson|ccluster db znode info|109100053|parse salve db info, json text[%s].|parse salve db info, json text[{"MasterDB":{"NodeCode":"n1","NodeIp":"i","DBPort":1,"DBToken":"t"},"SlaveDB":[{}]}].)"}},
    {"WriteToNull",
     [](CScene&) { CClusterDBZNodeInfo().ToJson(nullptr, 8); },
     {"ERR|cluster_db_znode_info|ToJson|Point pszJson is null.|1|Make sure there is something "
      "wrong"}},
    {"ParseXmlOfAnEmptyElement",
     [](CScene&) { ParseDatabaseXml("<DBList><DBInfo/></DBList>"); },
     {"ERR|cluster_db_znode_info|ParseFromXml|cluster db info, parse from xml|109100027|can not "
      "into node",
      "ERR|cluster_db_znode_info|ParseFromXml|cluster db info, parse from xml|109100027|master or "
      "slave db not found[%d:%d]|master or slave db not found[0:0]"}},
    {"ParseXmlWithoutAnElement",
     [](CScene&) { ParseDatabaseXml("<DBList><DBInfo><DBCode>n1</DBCode></DBInfo></DBList>"); },
     {"ERR|cluster_db_znode_info|ParseFromXml|cluster db info, parse from xml|109100027|can to "
      "find elem",
      "ERR|cluster_db_znode_info|ParseFromXml|cluster db info, parse from xml|109100027|master or "
      "slave db not found[%d:%d]|master or slave db not found[0:0]"}},
    {"ParseXmlOfAnotherRole",
     [](CScene&) {
         ParseDatabaseXml(
             "<DBList><DBInfo><DBCode>n1</DBCode><DBIP>i</DBIP><DBPort>1</DBPort><DBRole>7</"
             "DBRole></DBInfo></DBList>");
     },
     {"ERR|cluster_db_znode_info|ParseFromXml|cluster db info, parse from xml|109100027|wrong "
      "dbtype[%d]|wrong dbtype[7]",
      "ERR|cluster_db_znode_info|ParseFromXml|cluster db info, parse from xml|109100027|master or "
      "slave db not found[%d:%d]|master or slave db not found[0:0]"}},
    {"ReadFails",
     [](CScene& scene) {
         scene.store.FailCall(1, 5);
         CClusterDBZNodeInfo().ParseFromZK(true);
     },
     {"ERR|cluster_db_znode_info|ParseFromZK|cdb info, parse form zk|1|get center db info from zk "
      "fail."}},
    {"UpdateMasterFromAnUnknownNode",
     [](CScene&) { CClusterDBZNodeInfo().UpdateMasterDBInfo(OnNode("ghost")); },
     {"ERR|cluster_db_znode_info|UpdateMasterDBInfo|update master db info|1|not found slave cdb, "
      "node id[%s].|not found slave cdb, node id[ghost]."}},
    {"UpdateMasterFromItself",
     [](CScene&) { CClusterDBZNodeInfo(OnNode("n1"), {}).UpdateMasterDBInfo(OnNode("n1")); },
     {"ERR|cluster_db_znode_info|UpdateMasterDBInfo|update master db info|1|update salve db info "
      "fail, node id[%s].|update salve db info fail, node id[n1]."}},
    {"ParseVersionsNull",
     [](CScene&) { ParseVersions(nullptr); },
     {"ERR|cluster_db_znode_info|ParseJson|Point pszJson is null.|1|Make sure there is something "
      "wrong"}},
    {"ParseVersionsNoJson",
     [](CScene&) { ParseVersions("{"); },
     {"ERR|cluster_db_znode_info|ParseJson|CClusterDBVerZNodeInfo::ParseJson|109100053|parse json "
      "fail, json text[%s].|parse json fail, json text[{]."}},
    {"ParseVersionsNoSet",
     [](CScene&) { ParseVersions("{}"); },
     {"ERR|cluster_db_znode_info|ParseJson|CClusterDBVerZNodeInfo::ParseJson|109100053|json "
      "illegal, json text[%s].|json illegal, json text[{}]."}},
    {"ParseVersionsBadEntry",
     [](CScene&) { ParseVersions(R"({"CdbVerSet":[{}]})"); },
     {R"(ERR|cluster_db_znode_info|ParseJson|CClusterDBVerZNodeInfo::ParseJson|109100053|json illegal, json text[%s].|json illegal, json text[{"CdbVerSet":[{}]}].)"}},
    {"WriteVersionsToNull",
     [](CScene&) { CClusterDBVerZNodeInfo().ToJson(nullptr, 8); },
     {"ERR|cluster_db_znode_info|ToJson|Point pszJson is null.|1|Make sure there is something "
      "wrong"}},
};

const std::vector<CScenario> MANAGER = {
    {"ParseNull",
     [](CScene&) { ParseManager(nullptr); },
     {"ERR|cluster_mgr_znode_info|ParseJson|Point pszJson is null.|1|Make sure there is something "
      "wrong"}},
    {"ParseNoJson",
     [](CScene&) { ParseManager("{"); },
     {"ERR|cluster_mgr_znode_info|ParseJson|cluster db znode info|109100053|parse json fail, json "
      "text[%s].|parse json fail, json text[{]."}},
    {"ParseNoMaster",
     [](CScene&) { ParseManager("{}"); },
     {"ERR|cluster_mgr_znode_info|ParseJson|ccluster db znode info|109100053|json illegal, json "
      "text[%s].|json illegal, json text[{}]."}},
    {"ParseBadMaster",
     [](CScene&) { ParseManager(R"({"MasterMGR":{}})"); },
     {R"(ERR|cluster_mgr_znode_info|ParseJson|ccluster mgr znode info|109100053|json illegal, json text[%s].|json illegal, json text[{"MasterMGR":{}}].)"}},
    {"WriteToNull",
     [](CScene&) { CClusterMGRZNodeInfo().ToJson(nullptr, 8); },
     {"ERR|cluster_mgr_znode_info|ToJson|Point pszJson is null.|1|Make sure there is something "
      "wrong"}},
    {"ParseEmptyXml",
     [](CScene&) { ParseManagerXml(""); },
     {"ERR|cluster_mgr_znode_info|ParseFromXml|Point pszXml is null.|1|Make sure there is "
      "something wrong"}},
    {"ParseXmlWithoutANode",
     [](CScene&) { ParseManagerXml("<Content/>"); },
     {"TRACE|cluster_mgr_znode_info|ParseFromXml|||init cluster message, parse xml "
      "message[%s].|init cluster message, parse xml message[<Content/>].",
      "ERR|cluster_mgr_znode_info|ParseFromXml|Point strNodeId is null.|1|Make sure there is "
      "something wrong"}},
    {"ParseXml",
     [](CScene&) {
         ParseManagerXml(
             "<Content><ClusterBody><DomainMainInfo><DomainMain>n1</DomainMain><FloatIP>10.0.0.1</"
             "FloatIP></DomainMainInfo></ClusterBody></Content>");
     },
     {"TRACE|cluster_mgr_znode_info|ParseFromXml|||init cluster message, parse xml "
      "message[%s].|init cluster message, parse xml "
      "message[<Content><ClusterBody><DomainMainInfo><DomainMain>n1</DomainMain><FloatIP>10.0.0.1</"
      "FloatIP></DomainMainInfo></ClusterBody></Content>].",
      "TRACE|cluster_mgr_znode_info|ParseFromXml|||CClusterMGRZNodeInfo:NvrCode[%s], NodeIp[%s], "
      "MGRType[%d].|CClusterMGRZNodeInfo:NvrCode[n1], NodeIp[10.0.*.*], MGRType[1]."}},
    {"DumpToXml",
     [](CScene&) {
         PELU::CXml xml(nullptr);
         CClusterMGRZNodeInfo().DumpToXml(xml);
     },
     {"TRACE|cluster_mgr_znode_info|DumpToXml|||tarn. pcNodeInfoXml[%s]|tarn. "
      "pcNodeInfoXml[<Content><DomainMainInfo><DomainMain></DomainMain><FloatIP></FloatIP></"
      "DomainMainInfo></Content>]"}},
    {"ReadFails",
     [](CScene& scene) {
         scene.store.FailCall(1, 5);
         CClusterMGRZNodeInfo().ParseFromZK(true);
     },
     {"ERR|cluster_mgr_znode_info|ParseFromZK|cmgr info, parse form zk|1|get center mgr info from "
      "zk fail."}},
    {"GetStringIntoNull",
     [](CScene&) { CClusterMGRZNodeInfo().GetStringFromJson(Json::Value(), "k", nullptr, 8); },
     {"ERR|cluster_mgr_znode_info|GetStringFromJson|pcKeyStr or acVal is NULL|1|"}},
    {"GetStringOfANumber",
     [](CScene&) {
         Json::Value object;
         object["k"] = 5;
         std::array<char, 8> text{};
         CClusterMGRZNodeInfo().GetStringFromJson(object, "k", text.data(), 8);
     },
     {"WARNING|cluster_mgr_znode_info|GetStringFromJson|Get stromg frome json||Get [%s] return "
      "other value, not string.\r\n|Get [k] return other value, not string.\r\n"}},
    {"GetIntIntoNull",
     [](CScene&) { CClusterMGRZNodeInfo().GetIntFromJson(Json::Value(), "k", nullptr); },
     {"ERR|cluster_mgr_znode_info|GetIntFromJson|pcKeyStr or piVal is NULL|1|"}},
    {"GetIntOfAText",
     [](CScene&) {
         Json::Value object;
         object["k"] = "v";
         int iValue = 0;
         CClusterMGRZNodeInfo().GetIntFromJson(object, "k", &iValue);
     },
     {"WARNING|cluster_mgr_znode_info|GetIntFromJson|Get int frome json||Get [%s] return "
      "other value, not string.|Get [k] return other value, not string."}},
};

INSTANTIATE_TEST_SUITE_P(DatabaseDocument, LogLines, testing::ValuesIn(DATABASE),
                         NAME_OF_PARAMETER);
INSTANTIATE_TEST_SUITE_P(ManagerDocument, LogLines, testing::ValuesIn(MANAGER), NAME_OF_PARAMETER);

}  // namespace
