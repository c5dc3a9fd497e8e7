#include <regex>

#include "found.h"
#include "service_fixture.h"

using ::testing::AllOf;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

constexpr char PSZ_CONFIG[] =
    R"({"IsLoadBalance":true,"IsFaultShift":true,"IsLoadBalanceOnePeriod":true})";

/// The second node of every cluster here.
std::string SecondNode() {
    return NodeText("n2", "10.0.0.2", {"MeroImgDev"});
}

/// A centre database whose nodes have addresses.
std::string Database(const std::string& strMaster, const std::vector<std::string>& slaves) {
    static const std::regex NO_ADDRESS("ip-n");
    return std::regex_replace(DatabaseText(strMaster, slaves), NO_ADDRESS, "10.0.0.");
}

/// A cluster document with these nodes as they stand.
std::string ClusterOf(const std::string& strNodes) {
    return R"({"ClusterName":"n","ClusterRemark":"r","ClusterCode":"Main","ClusterNode":)" +
           strNodes + "}";
}

/// A small cluster with nothing wrong.
std::string GoodCluster() {
    return ClusterText(
        {NodeText("n1", "10.0.0.1", {"MeroRecord", "MeroCloudStorage"}), SecondNode()});
}

class CCheckTest : public CServiceTest {
protected:
    CCheckTest() {
        Put("/Cluster", GoodCluster());
        Put("/CloudStorage", CloudStorageText("n1"));
        Put("/ClusterConfig", PSZ_CONFIG);
        Put("/CenterDB", Database("n1", {"n2"}));
        Put("/MEROMGR", R"({"MasterMGR":{"NodeCode":"n1","NodeIp":"10.0.0.1"}})");
        Put("/MERO/CGList", "[]");
        Put("/Version", R"({"DecisionVerNum":1,"MasterVerNum":2})");
    }
};

using Check = CCheckTest;

TEST_F(Check, GoodStoreIsAllWell) {
    const CProcessResult result = Run({"check"});
    EXPECT_EQ(result.iExitCode, 0) << result.strOutput;
    EXPECT_EQ(result.strOutput, "all well: 7 documents checked\n");
    EXPECT_THAT(result.strErrors, IsEmpty());
}

using CheckAlone = CServiceTest;

TEST_F(CheckAlone, SampleIsAllWell) {
    ASSERT_EQ(Run({"import", PSZ_SAMPLE_DIR}).iExitCode, 0);
    const CProcessResult result = Run({"check"});
    EXPECT_EQ(result.iExitCode, 0) << result.strOutput;
    EXPECT_EQ(result.strOutput, "all well: 7 documents checked\n");
}

TEST_F(CheckAlone, StoreWithNothingIsAFinding) {
    Put("", "");
    const CProcessResult result = Run({"check"});
    EXPECT_EQ(result.iExitCode, 5);
    EXPECT_THAT(result.strOutput, HasSubstr("warning   Cluster        is absent\n"));
}

TEST_F(CheckAlone, OneCgEntryForEveryTwoNodesIsFine) {
    const std::vector<std::string> containers{"MeroRecord"};
    Put("/Cluster",
        ClusterText({NodeText("n1", "10.0.0.1", containers), NodeText("n2", "10.0.0.2", containers),
                     NodeText("n3", "10.0.0.3", containers),
                     NodeText("n4", "10.0.0.4", containers)}));
    Put("/MERO/CGList",
        "[" + CgText("n1", "f1", "10.0.1.1") + "," + CgText("n2", "f2", "10.0.1.2") + "]");
    const CProcessResult result = Run({"check"});
    EXPECT_EQ(result.iExitCode, 0) << result.strOutput;
}

TEST_F(CheckAlone, AbsentAndEmptyDocumentsAreNotesThatDoNotCount) {
    Put("/Cluster", GoodCluster());
    Put("/MERO/CGList", "");
    const CProcessResult result = Run({"check"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput,
              "findings (6)\n"
              "severity  document       finding\n"
              "note      CloudStorage   is absent\n"
              "note      ClusterConfig  is absent\n"
              "note      CenterDB       is absent\n"
              "note      MEROMGR        is absent\n"
              "note      MERO/CGList    is without data\n"
              "note      Version        is absent\n");
}

struct CFault {
    const char* pszName;
    const char* pszSuffix;
    std::string strText;
    int iExitCode;
    std::vector<std::string> findings;
};

class CheckFinds : public CCheckTest, public ::testing::WithParamInterface<CFault> {};

TEST_P(CheckFinds, WhatIsWrongAndNothingElse) {
    Put(GetParam().pszSuffix, GetParam().strText);
    const CProcessResult result = Run({"check", "--json"});
    EXPECT_EQ(result.iExitCode, GetParam().iExitCode);
    EXPECT_THAT(FoundIn(result.strOutput), ElementsAreArray(GetParam().findings));
}

/// A CG list whose characters take three bytes here and six when the library writes them.
std::string WideCgList() {
    std::string strCode;
    for (int i = 0; i < 160; ++i) {
        strCode += "\xE5\x8C\x97";
    }
    return "[" + CgText("n1", strCode, "10.0.0.9") + "]";
}

INSTANTIATE_TEST_SUITE_P(
    Text, CheckFinds,
    ::testing::Values(
        CFault{
            "Broken", "/Version", "{", 1, {"error Version 1:2 Missing '}' or object member name"}},
        CFault{"TrailingComma",
               "/MEROMGR",
               R"({"MasterMGR":{"NodeCode":"n1",
 "NodeIp":"10.0.0.1",}})",
               1,
               {"error MEROMGR 2:21 MasterMGR.NodeIp is broken: a comma with nothing behind it"}},
        CFault{"TrailingCommaInAList",
               "/Cluster",
               ClusterOf("[" + SecondNode() + ", ]"),
               1,
               {"error Cluster 1:217 ClusterNode[0] is broken: a comma with nothing behind it"}},
        CFault{"ByteOrderMark",
               "/Version",
               "\xEF\xBB\xBF{\"DecisionVerNum\":1,\"MasterVerNum\":2}",
               1,
               {"error Version 1:1 a byte order mark"}},
        CFault{"NoUtf8",
               "/MEROMGR",
               "{\"MasterMGR\":\n {\"NodeCode\":\"\xE5\x8C\x97\xFF\",\"NodeIp\":\"\"}}",
               1,
               {"error MEROMGR 2:16 MasterMGR.NodeCode has a byte that is no UTF-8"}},
        CFault{"CutUtf8",
               "/MEROMGR",
               "{\"MasterMGR\":\"\xE5\x8C\"}",
               1,
               {"error MEROMGR 1:15 MasterMGR has a byte that is no UTF-8"}},
        CFault{"OverlongUtf8",
               "/MEROMGR",
               "\xC0\xAF",
               1,
               {"error MEROMGR 1:1 a byte that is no UTF-8"}},
        CFault{"ArrayForTheDocument",
               "/Version",
               "[]",
               1,
               {"error Version 1:1 the document is no object"}},
        CFault{"NullForTheDocument",
               "/CenterDB",
               " null",
               1,
               {"error CenterDB 1:2 the document is no object"}},
        CFault{"ObjectForTheList",
               "/MERO/CGList",
               R"({"NVRCode":"n1"})",
               1,
               {"error MERO/CGList 1:1 the document is no array"}},
        CFault{"NoListOfEntries",
               "/MERO/CGList",
               "{}",
               5,
               {"warning MERO/CGList 1:1 is not an array: it loads as if it were empty"}},
        CFault{"NullForAnObject",
               "/MEROMGR",
               R"({"MasterMGR":null})",
               1,
               {"error MEROMGR 1:14 MasterMGR is null, not an object"}},
        CFault{"ArrayForAnObject",
               "/MEROMGR",
               R"({"MasterMGR":[]})",
               1,
               {"error MEROMGR 1:14 MasterMGR is not an object"}},
        CFault{"NoObjectInAList",
               "/Cluster",
               ClusterOf("[[]]"),
               1,
               {"error Cluster 1:76 ClusterNode[0] is no object"}},
        CFault{"NestedTooDeeply",
               "/Cluster",
               std::string(5000, '['),
               1,
               {"error Cluster 1:1001 nested too deeply"}},
        CFault{"TooLong",
               "/Version",
               std::string(600, ' '),
               1,
               {"error Version is longer than 511 bytes"}}),
    CaseName<CFault>);

INSTANTIATE_TEST_SUITE_P(
    Keys, CheckFinds,
    ::testing::Values(
        CFault{"Missing",
               "/MEROMGR",
               R"({"MasterMGR":{}})",
               1,
               {"error MEROMGR 1:14 MasterMGR.NodeCode is missing"}},
        CFault{
            "NumberAsText",
            "/CenterDB",
            R"({"MasterDB":{"NodeCode":"n1","NodeIp":"10.0.0.1","DBPort":"6001","DBToken":"a"},"SlaveDB":[{"NodeCode":"n2","NodeIp":"10.0.0.2","DBPort":6001,"DBToken":"b"}]})",
            1,
            {"error CenterDB 1:59 MasterDB.DBPort is not an integer"}},
        CFault{
            "BooleanForANumber",
            "/CloudStorage",
            R"({"CloudStorageSet":[{"NvrCode":"n1","ServiceType":"s","ProductType":"p","ReqSize":true,"ReqPicSize":5,"LowpriBit":1}]})",
            1,
            {"error CloudStorage 1:83 CloudStorageSet[0].ReqSize is not an integer"}},
        CFault{"NumberForABoolean",
               "/ClusterConfig",
               R"({"IsLoadBalance":1,"IsFaultShift":true,"IsLoadBalanceOnePeriod":true})",
               1,
               {"error ClusterConfig 1:18 IsLoadBalance is not true or false"}},
        CFault{"FractionForAVersion",
               "/Version",
               R"({"DecisionVerNum":1.0,"MasterVerNum":2})",
               1,
               {"error Version 1:19 DecisionVerNum is not a version number"}},
        CFault{
            "WholeFraction",
            "/Cluster",
            ClusterOf(
                R"([{"NodeID":"n1","NodeIP":"10.0.0.1","NodeIPType":0,"NodeRole":2.0,"DomainRole":0,"Status":"Normal","Container":[{"ContainerType":"MeroCloudStorage"}]},{"NodeID":"n2","NodeIP":"10.0.0.2","NodeIPType":0,"NodeRole":2,"DomainRole":0,"Status":"Normal","Container":[{"ContainerType":"MeroCloudStorage"}]}])"),
            5,
            {"warning Cluster 1:137 ClusterNode[0].NodeRole is 2.0 and loads as 2"}},
        CFault{
            "OptionalOfAnotherType",
            "/Cluster",
            ClusterOf(
                R"([{"NodeID":"n1","NodeIP":"10.0.0.1","NodeIPType":0,"NodeRole":2,"DomainRole":0,"Status":"Normal","Container":[{"ContainerType":"MeroCloudStorage"}]},{"NodeID":"n2","NodeIP":"10.0.0.2","NodeIPType":0,"NodeRole":2,"DomainRole":0,"Status":"Normal","Container":[{"ContainerType":"MeroCloudStorage"}]}],"ClusterForwardType":"7")"),
            5,
            {"warning Cluster 1:394 ClusterForwardType is not an integer, and is not read as one"}},
        CFault{
            "OptionalNull",
            "/Cluster",
            ClusterOf(
                R"([{"NodeID":"n1","NodeIP":"10.0.0.1","NodeIPType":0,"NodeRole":2,"DomainRole":0,"Status":"Normal","Container":[{"ContainerType":"MeroCloudStorage"}]},{"NodeID":"n2","NodeIP":"10.0.0.2","NodeIPType":0,"NodeRole":2,"DomainRole":0,"Status":"Normal","Container":[{"ContainerType":"MeroCloudStorage"}]}],"ClusterForwardType":null)"),
            5,
            {"warning Cluster 1:394 ClusterForwardType is null, not an integer, and is not read as "
             "one"}},
        CFault{
            "NodesThatAreNoList",
            "/Cluster",
            ClusterOf(
                R"({"NodeID":"n1","NodeIP":"10.0.0.1","NodeIPType":0,"NodeRole":2,"DomainRole":0,"Status":"Normal","Container":[{"ContainerType":"MeroCloudStorage"}]})"),
            5,
            {"warning Cluster 1:75 ClusterNode is not an array, and is not read as one",
             "warning CloudStorage 1:32 CloudStorageSet[0].NvrCode is \"n1\", which is no node of "
             "the cluster",
             "warning CenterDB 1:25 MasterDB.NodeCode is \"n1\", which is no node of the cluster",
             "warning CenterDB 1:102 SlaveDB[0].NodeCode is \"n2\", which is no node of the "
             "cluster",
             "warning MEROMGR 1:26 MasterMGR.NodeCode is \"n1\", which is no node of the cluster"}},
        CFault{
            "TokenThatIsANumber",
            "/CenterDB",
            R"({"MasterDB":{"NodeCode":"n1","NodeIp":"10.0.0.1","DBPort":6001,"DBToken":"a"},"SlaveDB":[{"NodeCode":"n2","NodeIp":"10.0.0.2","DBPort":6001,"DBToken":7}]})",
            5,
            {"warning CenterDB 1:151 SlaveDB[0].DBToken is not a string, and is not read as one"}},
        CFault{
            "TokenThatIsAList",
            "/CenterDB",
            R"({"MasterDB":{"NodeCode":"n1","NodeIp":"10.0.0.1","DBPort":6001,"DBToken":"a"},"SlaveDB":[{"NodeCode":"n2","NodeIp":"10.0.0.2","DBPort":6001,"DBToken":[]}]})",
            1,
            {"error CenterDB 1:151 SlaveDB[0].DBToken is not a string"}},
        CFault{
            "SlaveThatIsPassedOver",
            "/CenterDB",
            R"({"MasterDB":{"NodeCode":"n1","NodeIp":"10.0.0.1","DBPort":6001,"DBToken":"a"},"SlaveDB":[{"NodeCode":"n2"},{"NodeCode":"n2","NodeIp":"10.0.0.2","DBPort":6001,"DBToken":"b"}]})",
            5,
            {"warning CenterDB 1:90 SlaveDB[0].NodeIp is missing, and what it belongs to is passed "
             "over",
             "warning CenterDB 1:90 SlaveDB[0].DBPort is missing, and what it belongs to is passed "
             "over"}},
        CFault{
            "Unknown",
            "/Cluster",
            ClusterOf(
                R"([{"NodeID":"n1","NodeIP":"10.0.0.1","NodeIPType":0,"NodeRole":2,"DomainRole":0,"Status":"Normal","Containers":[],"Container":[{"ContainerType":"MeroCloudStorage"}]},{"NodeID":"n2","NodeIP":"10.0.0.2","NodeIPType":0,"NodeRole":2,"DomainRole":0,"Status":"Normal","Container":[{"ContainerType":"MeroCloudStorage"}]}])"),
            5,
            {"warning Cluster 1:172 ClusterNode[0].Containers is not known: no service reads it, "
             "and it goes when one writes the document"}},
        CFault{"UnknownAtTheRoot",
               "/Version",
               R"({"DecisionVerNum":1,"MasterVerNum":2,
  // why
  "Why": {"DecisionVerNum": 3}})",
               5,
               {"warning Version 3:3 Why is not known: no service reads it, and it goes when one "
                "writes the document"}},
        CFault{"Repeated",
               "/Version",
               R"({"DecisionVerNum":1,"MasterVerNum":2,"Decision\u0056erNum":3})",
               5,
               {"warning Version 1:38 DecisionVerNum stands there more than once: the last one "
                "counts"}},
        CFault{
            "ThresholdsIgnored",
            "/ClusterConfig",
            R"({"IsLoadBalance":true,"IsFaultShift":true,"IsLoadBalanceOnePeriod":true,"LoadBalanceThreshold":{"DiskThreshold":5,"NetThreshold":5,"ChannelThreshold":5}})",
            5,
            {"warning ClusterConfig 1:96 LoadBalanceThreshold is ignored on reading: the "
             "thresholds stay at their defaults"}},
        CFault{
            "ThresholdsAsAList",
            "/ClusterConfig",
            R"({"IsLoadBalance":true,"IsFaultShift":true,"IsLoadBalanceOnePeriod":true,"LoadBalanceThreshold":[]})",
            1,
            {"error ClusterConfig 1:96 LoadBalanceThreshold is not an object"}}),
    CaseName<CFault>);

INSTANTIATE_TEST_SUITE_P(
    Values, CheckFinds,
    ::testing::Values(
        CFault{
            "OddStatus",
            "/Cluster",
            ClusterOf(
                R"([{"NodeID":"n1","NodeIP":"10.0.0.1","NodeIPType":0,"NodeRole":2,"DomainRole":0,"Status":"removed","Container":[{"ContainerType":"MeroCloudStorage"}]},{"NodeID":"n2","NodeIP":"10.0.0.2","NodeIPType":0,"NodeRole":2,"DomainRole":0,"Status":"Normal","Container":[{"ContainerType":"MeroCloudStorage"}]}])"),
            5,
            {"warning Cluster 1:163 ClusterNode[0].Status is \"removed\", not \"Normal\" or "
             "\"Removed\""}},
        CFault{"EmptyNodeId",
               "/Cluster",
               ClusterText({NodeText("", "10.0.0.9", {"MeroRecord"}),
                            NodeText("n1", "10.0.0.1", {"MeroCloudStorage"}), SecondNode()}),
               5,
               {"warning Cluster 1:109 ClusterNode[0].NodeID is empty"}},
        CFault{"EmptyContainerType",
               "/Cluster",
               ClusterText({NodeText("n1", "10.0.0.1", {"MeroCloudStorage", ""}), SecondNode()}),
               5,
               {"warning Cluster 1:262 ClusterNode[0].Container[1].ContainerType is empty"}},
        CFault{"EmptyFloatCode",
               "/MERO/CGList",
               "[" + CgText("n1", "", "10.0.1.1") + "]",
               5,
               {"warning MERO/CGList 1:32 [0].FloatCGCode is empty"}},
        CFault{
            "NodeAddress",
            "/Cluster",
            ClusterText({NodeText("n1", "10.0.0.999", {"MeroCloudStorage"}), SecondNode()}),
            5,
            {"warning Cluster 1:123 ClusterNode[0].NodeIP is \"10.0.0.999\", which is no address"}},
        CFault{"FloatAddress",
               "/MERO/CGList",
               "[" + CgText("n1", "f1", "10.0.1") + "]",
               5,
               {"warning MERO/CGList 1:47 [0].FloatIP is \"10.0.1\", which is no address"}},
        CFault{
            "DatabaseAddressAndPort",
            "/CenterDB",
            R"({"MasterDB":{"NodeCode":"n1","NodeIp":"10.0.0.1","DBPort":6001,"DBToken":"a"},"SlaveDB":[{"NodeCode":"n2","NodeIp":"db2","DBPort":65536,"DBToken":"b"}]})",
            5,
            {"warning CenterDB 1:116 SlaveDB[0].NodeIp is \"db2\", which is no address",
             "warning CenterDB 1:131 SlaveDB[0].DBPort is 65536, which is no port"}},
        CFault{
            "PortZero",
            "/CenterDB",
            R"({"MasterDB":{"NodeCode":"n1","NodeIp":"10.0.0.1","DBPort":0,"DBToken":"a"},"SlaveDB":{"NodeCode":"n2","NodeIp":"10.0.0.2","DBPort":6001,"DBToken":"b"}})",
            5,
            {"warning CenterDB 1:59 MasterDB.DBPort is 0, which is no port"}},
        CFault{"ManagerAddress",
               "/MEROMGR",
               R"({"MasterMGR":{"NodeCode":"n1","NodeIp":" 10.0.0.1"}})",
               5,
               {"warning MEROMGR 1:40 MasterMGR.NodeIp is \" 10.0.0.1\", which is no address"}},
        CFault{"AnotherClustersCode",
               "/Cluster",
               std::regex_replace(GoodCluster(), std::regex("Main"), "Side"),
               5,
               {"warning Cluster 1:54 ClusterCode is \"Side\", and this is the cluster \"Main\""}},
        CFault{"NearTheLimit",
               "/ClusterConfig",
               PSZ_CONFIG + std::string(410 - sizeof PSZ_CONFIG, ' '),
               5,
               {"warning ClusterConfig takes 409 bytes of at most 511, more than which the service "
                "does not write"}},
        CFault{"WouldNotFitWhenWritten",
               "/MERO/CGList",
               WideCgList(),
               1,
               {"error MERO/CGList would take 1038 bytes when the service writes it, at most 1023 "
                "fit"}},
        CFault{"CgNearTheLimit",
               "/MERO/CGList",
               "[" + CgText("n1", std::string(742, 'f'), "10.0.1.1") + "]",
               5,
               {"warning MERO/CGList takes 820 bytes of at most 1023, more than which the service "
                "does not write"}},
        CFault{"DatabaseNearTheLimit",
               "/CenterDB",
               Database("n1", {"n2"}) + std::string(420 - Database("n1", {"n2"}).size(), ' '),
               5,
               {"warning CenterDB takes 420 bytes of at most 511, more than which the service does "
                "not write"}}),
    CaseName<CFault>);

INSTANTIATE_TEST_SUITE_P(
    Nodes, CheckFinds,
    ::testing::Values(
        CFault{"NodeIdTwice",
               "/Cluster",
               ClusterText({NodeText("n1", "10.0.0.1", {"MeroCloudStorage"}),
                            NodeText("n1", "10.0.0.2", {"MeroRecord"}), SecondNode()}),
               5,
               {"warning Cluster 1:257 ClusterNode[1].NodeID is \"n1\" once more: the later entry "
                "counts"}},
        CFault{"ContainerTypeTwice",
               "/Cluster",
               ClusterText({NodeText("n1", "10.0.0.1",
                                     {"MeroCloudStorage", "MeroRecord", "MeroRecord"}),
                            SecondNode()}),
               1,
               {"error Cluster 1:293 ClusterNode[0].Container[2].ContainerType is \"MeroRecord\" "
                "on node \"n1\" once more: the cluster does not load"}},
        CFault{"ContainerOfANodeIdTwice",
               "/Cluster",
               ClusterText({NodeText("n1", "10.0.0.1", {"MeroCloudStorage"}),
                            NodeText("n1", "10.0.0.1", {"MeroCloudStorage"}), SecondNode()}),
               1,
               {"error Cluster 1:373 ClusterNode[1].Container[0].ContainerType is "
                "\"MeroCloudStorage\" on node \"n1\" once more: the cluster does not load",
                "warning Cluster 1:257 ClusterNode[1].NodeID is \"n1\" once more: the later entry "
                "counts"}},
        CFault{"AddressesThatReadTheSame",
               "/Cluster",
               ClusterText({NodeText("n1", "10.0.0.1", {"MeroCloudStorage"}),
                            NodeText("n", "10.0.0.2", {"1MeroCloudStorage"}), SecondNode()}),
               1,
               {"error Cluster 1:372 ClusterNode[1].Container[0].ContainerType is "
                "\"1MeroCloudStorage\" on node \"n\", which reads the same as \"MeroCloudStorage\" "
                "on node \"n1\": the cluster does not load",
                "warning Cluster 1:372 ClusterNode[1].Container[0].ContainerType is "
                "\"1MeroCloudStorage\", a container type that no plug-in knows; it stands there 1 "
                "times"}},
        CFault{
            "NodeWithoutContainers",
            "/Cluster",
            ClusterText({NodeText("n1", "10.0.0.1", {"MeroCloudStorage"}),
                         NodeText("n2", "10.0.0.2", {})}),
            5,
            {"warning Cluster 1:257 ClusterNode[1].NodeID is \"n2\", a node without containers"}},
        CFault{"NormalBehindRemoved",
               "/Cluster",
               ClusterText({NodeText("n2", "10.0.0.1", {}, "Removed"),
                            NodeText("n1", "10.0.0.2", {"MeroCloudStorage"}),
                            NodeText("n3", "10.0.0.3", {}, "Removed")}),
               5,
               {"warning Cluster 1:299 ClusterNode[1].Status is \"Normal\", and node \"n1\" loads "
                "as removed, since it stands behind the removed node \"n2\""}},
        CFault{"UnknownContainerType",
               "/Cluster",
               ClusterText({NodeText("n1", "10.0.0.1", {"MeroCloudStorage", "Odd"}),
                            NodeText("n2", "10.0.0.2", {"Odd"})}),
               5,
               {"warning Cluster 1:262 ClusterNode[0].Container[1].ContainerType is \"Odd\", a "
                "container type that no plug-in knows; it stands there 2 times"}},
        CFault{"CloudStorageOfNoNode",
               "/CloudStorage",
               CloudStorageText("n9"),
               5,
               {"warning CloudStorage 1:32 CloudStorageSet[0].NvrCode is \"n9\", which is no node "
                "of the cluster"}},
        CFault{"CloudStorageWithoutContainer",
               "/CloudStorage",
               CloudStorageText("n2"),
               5,
               {"warning CloudStorage 1:32 CloudStorageSet[0].NvrCode is \"n2\", a node without "
                "the container MeroCloudStorage: the entry is of no use"}},
        CFault{"CgOfNoNode",
               "/MERO/CGList",
               "[" + CgText("n9", "f1", "10.0.1.1") + "]",
               5,
               {"warning MERO/CGList 1:13 [0].NVRCode is \"n9\", which is no node of the cluster"}},
        CFault{"CgEntriesAlike",
               "/MERO/CGList",
               "[" + CgText("n1", "f1", "10.0.1.1") + "," + CgText("n1", "f1", "10.0.1.1") + "]",
               5,
               {"warning MERO/CGList 1:91 [1].NVRCode is \"n1\" once more",
                "warning MERO/CGList 1:110 [1].FloatCGCode is \"f1\" once more",
                "warning MERO/CGList 1:125 [1].FloatIP is \"10.0.1.1\" once more",
                "warning MERO/CGList has 2 entries, and 2 nodes admit at most 1"}},
        CFault{
            "DatabasesOfNoNode",
            "/CenterDB",
            Database("n8", {"n9"}),
            5,
            {"warning CenterDB 1:25 MasterDB.NodeCode is \"n8\", which is no node of the cluster",
             "warning CenterDB 1:102 SlaveDB[0].NodeCode is \"n9\", which is no node of the "
             "cluster"}},
        CFault{"MasterThatIsASlave",
               "/CenterDB",
               Database("n1", {"n2", "n1"}),
               5,
               {"warning CenterDB 1:168 SlaveDB[1].NodeCode is \"n1\", which is the master too"}},
        CFault{"SlaveTwice",
               "/CenterDB",
               Database("n1", {"n2", "n2"}),
               5,
               {"warning CenterDB 1:168 SlaveDB[1].NodeCode is \"n2\" once more"}},
        CFault{
            "SlavesWithoutTokens",
            "/CenterDB",
            R"({"MasterDB":{"NodeCode":"n1","NodeIp":"10.0.0.1","DBPort":6001,"DBToken":"a"},"SlaveDB":[{"NodeCode":"n2","NodeIp":"10.0.0.2","DBPort":6001},{"NodeCode":"n1","NodeIp":"10.0.0.2","DBPort":6001}]})",
            5,
            {"warning CenterDB 1:154 SlaveDB[1].NodeCode is \"n1\", which is the master too",
             "warning CenterDB 1:142 SlaveDB[1] has the token \"\" as another slave has: a "
             "promotion would confuse them"}},
        CFault{"NoSlave",
               "/CenterDB",
               Database("n1", {}),
               5,
               {"warning CenterDB has no slave: what a service writes of it cannot be read again"}},
        CFault{"ManagerOfNoNode",
               "/MEROMGR",
               R"({"MasterMGR":{"NodeCode":"n9","NodeIp":"10.0.0.9"}})",
               5,
               {"warning MEROMGR 1:26 MasterMGR.NodeCode is \"n9\", which is no node of the "
                "cluster"}}),
    CaseName<CFault>);

TEST_F(Check, NodesBeforeARemovedOneAndTheRemovedOnesThemselvesAreFine) {
    Put("/Cluster", ClusterText({NodeText("n1", "10.0.0.1", {"MeroCloudStorage"}),
                                 NodeText("n2", "10.0.0.2", {}, "Removed"),
                                 NodeText("n3", "10.0.0.3", {}, "Removed")}));
    EXPECT_EQ(Run({"check"}).iExitCode, 0);
}

TEST_F(Check, FindingThatMakesALoadFailIsTrue) {
    Put("/Cluster", ClusterText({NodeText("n1", "10.0.0.1", {"MeroRecord", "MeroRecord"})}));
    EXPECT_EQ(Run({"show"}).iExitCode, 2);
    Put("/Cluster",
        ClusterText({NodeText("n1", "10.0.0.1", {"2X"}), NodeText("n12", "10.0.0.2", {"X"})}));
    EXPECT_EQ(Run({"show"}).iExitCode, 2);
}

TEST_F(Check, WithoutPluginsSaysSoAndChecksTheRest) {
    Put("/Version", "{}");
    const CProcessResult result = Run({"--lib-dir", ".", "check"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strErrors, HasSubstr("cannot load the plug-ins of ."));
    EXPECT_THAT(result.strOutput, AllOf(HasSubstr("\"DecisionVerNum\" is missing"),
                                        ::testing::Not(HasSubstr("no plug-in knows"))));
}

}  // namespace
