#include "framework_service/cluster_znode_info.h"

#include <json/json.h>

#include <string>
#include <vector>

#include "common_service/oper_common.h"
#include "common_service/tarn_conf.h"
#include "common_service/tarn_def.h"
#include "support/fake_clock.h"
#include "support/host_fixture.h"
#include "support/json_document.h"
#include "support/registry_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::time_t NUMERIC_NOW = 1000000;

constexpr char ONLY_REQUIRED[] = R"({"ClusterName":"n","ClusterRemark":"r","ClusterCode":"c"})";

constexpr char ONE_NODE[] = R"({"ClusterName":"n","ClusterRemark":"r","ClusterCode":"c",)"
                            R"("ClusterForwardType":1,"ClusterNode":[{"NodeID":"N1",)"
                            R"("NodeIP":"10.0.0.1","NodeIPType":1,"NodeRole":2,"DomainRole":3,)"
                            R"("Status":"Normal","Container":[{"ContainerType":"Cam"},)"
                            R"({"ContainerType":"Dev"}]}]})";

constexpr char NODE_OPERATION[] = "cluster znode info";

std::vector<CNode> NodesOf(const CClusterZNodeInfo& cluster) {
    std::list<CNode> nodeList;
    cluster.GetNodeList(nodeList);
    return {nodeList.begin(), nodeList.end()};
}

std::string NodeText(const std::string& strNodeId, const std::string& strStatus) {
    return R"({"NodeID":")" + strNodeId +
           R"(","NodeIP":"","NodeIPType":0,"NodeRole":0,"DomainRole":0,"Status":")" + strStatus +
           R"("})";
}

std::string ClusterText(const std::vector<std::string>& nodeTexts) {
    std::string strNodes;
    for (const std::string& strNodeText : nodeTexts) {
        strNodes += (strNodes.empty() ? "" : ",") + strNodeText;
    }
    return WithMember(ONLY_REQUIRED, {".ClusterNode", "[" + strNodes + "]"});
}

CLogLine NodeLine() {
    return Err(NODE_OPERATION, ORVA_DATA_INVALID, "cluster_znode_info", "ParseNodeJson",
               "node id or node name is null or illegal.");
}

CLogLine DocumentLine(const std::string& strMessage, const std::string& strText) {
    return Err(NODE_OPERATION, ORVA_DATA_INVALID, "cluster_znode_info", "ParseJson",
               strMessage + ", json text[" + strText + "].");
}

/// A document that holds one node with one container, to be changed or left alone.
class ClusterDocument : public CHostTest {
protected:
    ClusterDocument() : m_cluster("old name", "old remark", "old code", 9) {
        m_cluster.AddNode(MakeStoredNode("old", {"Old"}));
    }

    void Parse(const std::string& strText) {
        EXPECT_EQ(m_cluster.ParseJson(strText.c_str()), ORVA_SUCCEED) << strText;
        EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    }

    void ExpectRefused(const std::string& strText, const std::vector<CLogLine>& lines) {
        const std::string strBefore = TextOf(m_cluster);
        EXPECT_EQ(m_cluster.ParseJson(strText.c_str()), ORVA_DATA_INVALID);
        EXPECT_EQ(m_logger.GetLines(), lines);
        EXPECT_EQ(TextOf(m_cluster), strBefore);
    }

    std::vector<int> MemberStatuses() const {
        std::vector<int> statuses;
        for (const CNode& node : NodesOf(m_cluster)) {
            statuses.push_back(node.GetMemberStatus());
        }
        return statuses;
    }

    CClusterZNodeInfo m_cluster;
};

TEST_F(ClusterDocument, StartsEmpty) {
    const CClusterZNodeInfo cluster;
    EXPECT_EQ(cluster.GetClusterName(), "");
    EXPECT_EQ(cluster.GetClusterRemark(), "");
    EXPECT_EQ(cluster.GetClusterCode(), "");
    EXPECT_EQ(cluster.GetClusterForwardType(), 0);
    EXPECT_THAT(NodesOf(cluster), IsEmpty());
}

TEST_F(ClusterDocument, IsBuiltFromNameRemarkCodeAndForwardType) {
    const CClusterZNodeInfo cluster("n", "r", "c", -5);
    EXPECT_EQ(cluster.GetClusterName(), "n");
    EXPECT_EQ(cluster.GetClusterRemark(), "r");
    EXPECT_EQ(cluster.GetClusterCode(), "c");
    EXPECT_EQ(cluster.GetClusterForwardType(), -5);
    EXPECT_THAT(NodesOf(cluster), IsEmpty());
}

TEST_F(ClusterDocument, SettersAssign) {
    m_cluster.SetClusterName("n");
    m_cluster.SetClusterRemark("r");
    m_cluster.SetClusterCode("c");
    m_cluster.SetClusterForwardType(2);
    EXPECT_EQ(m_cluster.GetClusterName(), "n");
    EXPECT_EQ(m_cluster.GetClusterRemark(), "r");
    EXPECT_EQ(m_cluster.GetClusterCode(), "c");
    EXPECT_EQ(m_cluster.GetClusterForwardType(), 2);
}

TEST_F(ClusterDocument, NodesAreAddedReplacedAndReadBehindWhatTheListHolds) {
    CNode node = MakeStoredNode("N1");
    m_cluster.SetNodeList({node});
    m_cluster.AddNode(MakeStoredNode("N2"));
    node.SetNodeId("changed later");
    std::list<CNode> nodeList = {MakeStoredNode("mine")};
    m_cluster.GetNodeList(nodeList);
    std::vector<std::string> ids;
    for (const CNode& listed : nodeList) {
        ids.push_back(listed.GetNodeId());
    }
    EXPECT_THAT(ids, ElementsAre("mine", "N1", "N2"));
}

TEST_F(ClusterDocument, OnlyTheRequiredKeysMakeADocumentWithoutNodes) {
    Parse(ONLY_REQUIRED);
    EXPECT_EQ(m_cluster.GetClusterName(), "n");
    EXPECT_EQ(m_cluster.GetClusterRemark(), "r");
    EXPECT_EQ(m_cluster.GetClusterCode(), "c");
    EXPECT_EQ(m_cluster.GetClusterForwardType(), 0);
    EXPECT_THAT(NodesOf(m_cluster), IsEmpty());
}

TEST_F(ClusterDocument, NodeIsReadWhole) {
    Parse(ONE_NODE);
    EXPECT_EQ(m_cluster.GetClusterForwardType(), 1);
    const std::vector<CNode> nodes = NodesOf(m_cluster);
    ASSERT_EQ(nodes.size(), 1U);
    EXPECT_EQ(nodes[0].GetNodeId(), "N1");
    EXPECT_EQ(nodes[0].GetNodeIp(), "10.0.0.1");
    EXPECT_EQ(nodes[0].GetNodeIpInt(), 0x0A000001U);
    EXPECT_EQ(nodes[0].GetNodeIpType(), 1);
    EXPECT_EQ(nodes[0].GetNodeRole(), 2);
    EXPECT_EQ(nodes[0].GetDomainRole(), 3);
    EXPECT_EQ(nodes[0].GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    EXPECT_THAT(ContainersOf(nodes[0]), ElementsAre("Cam", "Dev"));
}

TEST_F(ClusterDocument, WhatIsMeasuredIsNotStored) {
    SetClock(NUMERIC_NOW);
    CNode node = MakeStoredNode("N1");
    CSystemResource resource;
    resource.SetCpu(5);
    node.SetTotalResource(resource);
    node.SetCurResource(resource);
    node.SetNodeServiceType(4);
    node.SetOnline(false);
    m_cluster.SetNodeList({node});
    AdvanceClock(91);
    Parse(TextOf(m_cluster));
    CNode parsed = NodesOf(m_cluster).at(0);
    EXPECT_EQ(parsed.GetTotalResource().GetCpu(), 0);
    EXPECT_EQ(parsed.GetCurResource().GetCpu(), 0);
    EXPECT_EQ(parsed.GetNodeServiceType(), 0);
    EXPECT_TRUE(parsed.IsOnline());
    EXPECT_FALSE(parsed.IsReportStatusOutTime());
}

TEST_F(ClusterDocument, IsWrittenOnOneLineWithSortedKeysAndWithoutEmptyLists) {
    CClusterZNodeInfo cluster("n", "", "c", -1);
    EXPECT_EQ(TextOf(cluster), R"({"ClusterCode":"c","ClusterForwardType":-1,"ClusterName":"n",)"
                               R"("ClusterRemark":""})"
                               "\n");
    CNode node = MakeStoredNode("N1", {"Cam", "Cam"});
    node.SetNodeIp("bad");
    node.SetNodeIpType(1);
    node.SetNodeRole(-2);
    node.SetDomainRole(3);
    cluster.AddNode(node);
    cluster.AddNode(MakeStoredNode(""));
    EXPECT_EQ(TextOf(cluster),
              R"({"ClusterCode":"c","ClusterForwardType":-1,"ClusterName":"n","ClusterNode":[)"
              R"({"Container":[{"ContainerType":"Cam"},{"ContainerType":"Cam"}],"DomainRole":3,)"
              R"("NodeID":"N1","NodeIP":"bad","NodeIPType":1,"NodeRole":-2,"Status":"Normal"},)"
              R"({"DomainRole":0,"NodeID":"","NodeIP":"","NodeIPType":0,"NodeRole":0,)"
              R"("Status":"Normal"}],"ClusterRemark":""})"
              "\n");
    Parse(TextOf(cluster));
    EXPECT_THAT(ContainersOf(NodesOf(m_cluster).at(0)), ElementsAre("Cam", "Cam"));
    EXPECT_THAT(ContainersOf(NodesOf(m_cluster).at(1)), IsEmpty());
}

TEST_F(ClusterDocument, EmptyTextsAreAccepted) {
    Parse(R"({"ClusterName":"","ClusterRemark":"","ClusterCode":"","ClusterNode":[)" +
          NodeText("", "") + "]}");
    EXPECT_EQ(m_cluster.GetClusterName(), "");
    EXPECT_EQ(NodesOf(m_cluster).at(0).GetNodeId(), "");
}

TEST_F(ClusterDocument, CodeMayDifferFromTheConfiguredOne) {
    ASSERT_NE(CTARNConf::m_oConf.GetCstClusterCode(), "c");
    Parse(ONLY_REQUIRED);
    EXPECT_EQ(m_cluster.GetClusterCode(), "c");
}

TEST_F(ClusterDocument, LastOfTwoKeysOfOneNameCounts) {
    Parse(R"({"ClusterName":5,"ClusterName":"n","ClusterRemark":"r","ClusterCode":"c"})");
    EXPECT_EQ(m_cluster.GetClusterName(), "n");
}

TEST_F(ClusterDocument, TextOfAllLanguagesComesBackAndIsWrittenInAscii) {
    CClusterZNodeInfo cluster("\u96c6\u7fa4", "a\"b\\c\n\t", "\U0001F600", 0);
    EXPECT_EQ(TextOf(cluster), R"({"ClusterCode":"\ud83d\ude00","ClusterForwardType":0,)"
                               R"("ClusterName":"\u96c6\u7fa4","ClusterRemark":"a\"b\\c\n\t"})"
                               "\n");
    Parse(TextOf(cluster));
    EXPECT_EQ(m_cluster.GetClusterName(), "\u96c6\u7fa4");
    EXPECT_EQ(m_cluster.GetClusterRemark(), "a\"b\\c\n\t");
    EXPECT_EQ(m_cluster.GetClusterCode(), "\U0001F600");
}

struct CForwardTypeCase {
    std::string strJson;
    int iForwardType;
};

TEST_F(ClusterDocument, ForwardTypeThatIsNoIntegerCountsAsZero) {
    for (const auto& [strJson, iForwardType] :
         {CForwardTypeCase{"7", 7}, CForwardTypeCase{"-7", -7}, CForwardTypeCase{"7.0", 7},
          CForwardTypeCase{"7e2", 700}, CForwardTypeCase{"2147483647", 2147483647},
          CForwardTypeCase{"-2147483648", -2147483647 - 1}, CForwardTypeCase{"2147483648", 0},
          CForwardTypeCase{"-2147483649", 0}, CForwardTypeCase{"18446744073709551615", 0},
          CForwardTypeCase{"7.5", 0}, CForwardTypeCase{"\"7\"", 0}, CForwardTypeCase{"true", 0},
          CForwardTypeCase{"null", 0}, CForwardTypeCase{"[7]", 0}, CForwardTypeCase{"{}", 0}}) {
        m_cluster.SetClusterForwardType(9);
        Parse(R"({"ClusterName":"n","ClusterRemark":"r","ClusterCode":"c","ClusterForwardType":)" +
              strJson + "}");
        EXPECT_EQ(m_cluster.GetClusterForwardType(), iForwardType) << strJson;
    }
}

class NoArray : public ClusterDocument, public testing::WithParamInterface<std::string> {};

TEST_P(NoArray, OfNodesIsADocumentWithoutNodes) {
    Parse(WithMember(ONE_NODE, {".ClusterNode", GetParam()}));
    EXPECT_THAT(NodesOf(m_cluster), IsEmpty());
}

TEST_P(NoArray, OfContainersIsANodeWithoutContainers) {
    Parse(WithMember(ONE_NODE, {".ClusterNode[0].Container", GetParam()}));
    EXPECT_THAT(ContainersOf(NodesOf(m_cluster).at(0)), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Cluster, NoArray,
                         testing::Values("null", "{}", R"({"ContainerType":"Cam"})", "\"text\"",
                                         "5", "1.5", "true", "[]"));

TEST_F(ClusterDocument, NodeWithoutContainersDoesNotInheritThoseBeforeIt) {
    Parse(WithMember(ClusterText({NodeText("N1", "Normal"), NodeText("N2", "Normal")}),
                     {".ClusterNode[0].Container", R"([{"ContainerType":"Cam"}])"}));
    EXPECT_THAT(ContainersOf(NodesOf(m_cluster).at(0)), ElementsAre("Cam"));
    EXPECT_THAT(ContainersOf(NodesOf(m_cluster).at(1)), IsEmpty());
}

TEST_F(ClusterDocument, NodesOfTheSameTypesEachHaveTheirOwn) {
    const std::string strNodes =
        ClusterText({NodeText("N1", "Normal"), NodeText("N2", "Normal"), NodeText("N3", "Normal")});
    const std::string strTypes = R"([{"ContainerType":"Cam"},{"ContainerType":"Dev"}])";
    Parse(WithMember(WithMember(WithMember(strNodes, {".ClusterNode[0].Container", strTypes}),
                                {".ClusterNode[1].Container", strTypes}),
                     {".ClusterNode[2].Container", R"([{"ContainerType":"Dev"}])"}));
    std::vector<CNode> nodes = NodesOf(m_cluster);
    EXPECT_THAT(ContainersOf(nodes.at(0)), ElementsAre("Cam", "Dev"));
    nodes.at(0).SetContainerList({"Other"});
    EXPECT_THAT(ContainersOf(nodes.at(1)), ElementsAre("Cam", "Dev"));
    EXPECT_THAT(ContainersOf(nodes.at(2)), ElementsAre("Dev"));
}

TEST_F(ClusterDocument, NodeWithSomeOfTheTypesBeforeItHasThoseAlone) {
    const std::string strNodes =
        ClusterText({NodeText("N1", "Normal"), NodeText("N2", "Normal"), NodeText("N3", "Normal")});
    Parse(WithMember(
        WithMember(WithMember(strNodes, {".ClusterNode[0].Container",
                                         R"([{"ContainerType":"Cam"},{"ContainerType":"Dev"}])"}),
                   {".ClusterNode[1].Container", R"([{"ContainerType":"Cam"}])"}),
        {".ClusterNode[2].Container", "[]"}));
    EXPECT_THAT(ContainersOf(NodesOf(m_cluster).at(0)), ElementsAre("Cam", "Dev"));
    EXPECT_THAT(ContainersOf(NodesOf(m_cluster).at(1)), ElementsAre("Cam"));
    EXPECT_THAT(ContainersOf(NodesOf(m_cluster).at(2)), IsEmpty());
}

TEST_F(ClusterDocument, RemovedCarriesOverToLaterNodes) {
    Parse(ClusterText({NodeText("N1", "Normal"), NodeText("N2", "Removed"),
                       NodeText("N3", "Normal"), NodeText("N4", "other")}));
    EXPECT_THAT(MemberStatuses(), ElementsAre(0, 1, 1, 1));
    Parse(TextOf(m_cluster));
    EXPECT_THAT(MemberStatuses(), ElementsAre(0, 1, 1, 1));
    EXPECT_NE(TextOf(m_cluster).find(R"("NodeID":"N3","NodeIP":"","NodeIPType":0,"NodeRole":0,)"
                                     R"("Status":"Removed")"),
              std::string::npos);
}

TEST_F(ClusterDocument, RemovedDoesNotCarryOverToTheNextDocument) {
    Parse(ClusterText({NodeText("N1", "Removed")}));
    Parse(ClusterText({NodeText("N1", "Normal")}));
    EXPECT_THAT(MemberStatuses(), ElementsAre(0));
}

TEST_F(ClusterDocument, OnlyTheExactWordRemoves) {
    Parse(ClusterText({NodeText("N1", "removed"), NodeText("N2", "REMOVED"),
                       NodeText("N3", "Removed "), NodeText("N4", ""), NodeText("N5", "other")}));
    EXPECT_THAT(MemberStatuses(), ElementsAre(0, 0, 0, 0, 0));
}

TEST_F(ClusterDocument, EveryStatusButRemovedIsWrittenAsNormal) {
    for (const int iStatus : {CLUSTER_MEMBER_NORMAL + 0, 2, -1, 42}) {
        CNode node;
        node.SetMemberStatus(iStatus);
        Json::Value nodeJson;
        EXPECT_EQ(BuildNodeJson(node, nodeJson), 0);
        EXPECT_EQ(nodeJson[PSZ_NODE_STATUS].asString(), "Normal") << iStatus;
    }
}

class BadClusterMember : public ClusterDocument,
                         public testing::WithParamInterface<CMemberChange> {};

TEST_P(BadClusterMember, RefusesTheDocument) {
    const std::string strText = WithMember(ONE_NODE, GetParam());
    ExpectRefused(strText, {DocumentLine("cluster id or name is null or illegal", strText)});
}

INSTANTIATE_TEST_SUITE_P(Cluster, BadClusterMember,
                         testing::ValuesIn(EveryBadMember({{".ClusterName", EMemberType::STRING},
                                                           {".ClusterRemark", EMemberType::STRING},
                                                           {".ClusterCode",
                                                            EMemberType::STRING}})));

class BadNodeMember : public ClusterDocument, public testing::WithParamInterface<CMemberChange> {};

TEST_P(BadNodeMember, RefusesTheDocument) {
    const std::string strText = WithMember(ONE_NODE, GetParam());
    ExpectRefused(strText, {NodeLine(), DocumentLine("parse node json fail", strText)});
}

INSTANTIATE_TEST_SUITE_P(
    Cluster, BadNodeMember,
    testing::ValuesIn(EveryBadMember({{".ClusterNode[0].NodeID", EMemberType::STRING},
                                      {".ClusterNode[0].NodeIP", EMemberType::STRING},
                                      {".ClusterNode[0].NodeIPType", EMemberType::INT},
                                      {".ClusterNode[0].NodeRole", EMemberType::INT},
                                      {".ClusterNode[0].DomainRole", EMemberType::INT},
                                      {".ClusterNode[0].Status", EMemberType::STRING},
                                      {".ClusterNode[0].Container[1].ContainerType",
                                       EMemberType::STRING}})));

TEST_F(ClusterDocument, NullAndEmptyDocumentsAreRefused) {
    for (const char* pszText : {"null", "{}"}) {
        m_logger.Clear();
        ExpectRefused(pszText, {DocumentLine("cluster id or name is null or illegal", pszText)});
    }
}

TEST_F(ClusterDocument, OneBadNodeOfTenRefusesTheDocument) {
    std::vector<std::string> nodeTexts(10, NodeText("N", "Removed"));
    nodeTexts[7] = "null";
    const std::string strText = ClusterText(nodeTexts);
    ExpectRefused(strText, {NodeLine(), DocumentLine("parse node json fail", strText)});
}

TEST_F(ClusterDocument, ContainerEntryNullRefusesTheDocument) {
    const std::string strText = WithMember(ONE_NODE, {".ClusterNode[0].Container", "[null]"});
    ExpectRefused(strText, {NodeLine(), DocumentLine("parse node json fail", strText)});
}

TEST_F(ClusterDocument, ContainerEntryNullBehindTheTypesOfTheNodeBeforeRefusesTheDocument) {
    const std::string strNodes = ClusterText({NodeText("N1", "Normal"), NodeText("N2", "Normal")});
    const std::string strText = WithMember(
        WithMember(strNodes, {".ClusterNode[0].Container", R"([{"ContainerType":"Cam"}])"}),
        {".ClusterNode[1].Container", R"([{"ContainerType":"Cam"},null])"});
    ExpectRefused(strText, {NodeLine(), DocumentLine("parse node json fail", strText)});
}

class EntryThatIsNoObject : public ClusterDocument,
                            public testing::WithParamInterface<CMemberChange> {};

TEST_P(EntryThatIsNoObject, IsRefusedByTheJsonLibrary) {
    const std::string strBefore = TextOf(m_cluster);
    const std::string strText = WithMember(ONE_NODE, GetParam());
    EXPECT_THROW(m_cluster.ParseJson(strText.c_str()), std::exception);
    EXPECT_EQ(TextOf(m_cluster), strBefore);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_P(EntryThatIsNoObject, IsInvalidDataBehindTheStore) {
    m_pStore->Put(Path("/Cluster"), WithMember(ONE_NODE, GetParam()));
    bool bDataEmpty = true;
    EXPECT_EQ(COperCommon::GetDataFromZK(Path("/Cluster").c_str(), nullptr, 65536, &m_cluster,
                                         bDataEmpty),
              ORVA_DATA_INVALID);
    EXPECT_FALSE(bDataEmpty);
    EXPECT_EQ(m_cluster.GetClusterName(), "old name");
    EXPECT_EQ(m_logger.GetLines().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Cluster, EntryThatIsNoObject,
                         testing::Values(CMemberChange{".ClusterNode", "[5]"},
                                         CMemberChange{".ClusterNode", "[\"x\"]"},
                                         CMemberChange{".ClusterNode", "[[]]"},
                                         CMemberChange{".ClusterNode", "[true]"},
                                         CMemberChange{".ClusterNode[0].Container", "[5]"},
                                         CMemberChange{".ClusterNode[0].Container", "[\"Cam\"]"},
                                         CMemberChange{".ClusterNode[0].Container", "[[]]"}));

TEST_F(ClusterDocument, BufferOfLengthZeroIsRefusedAndLeftAlone) {
    char cBuffer = '#';
    EXPECT_EQ(m_cluster.ToJson(&cBuffer, 0), ORVA_DATA_INVALID);
    EXPECT_EQ(cBuffer, '#');
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Err(NODE_OPERATION, ORVA_DATA_INVALID, "cluster_znode_info", "ToJson",
                                "to json fail, illegal length.")));
}

TEST_F(ClusterDocument, NodeIsBuiltIntoWhatTheObjectHolds) {
    Json::Value nodeJson;
    nodeJson["Mine"] = 1;
    nodeJson[PSZ_NODE_CONTAINER].append("old");
    EXPECT_EQ(BuildNodeJson(MakeStoredNode("N1", {"Cam"}), nodeJson), 0);
    EXPECT_EQ(nodeJson["Mine"].asInt(), 1);
    EXPECT_EQ(nodeJson[PSZ_NODE_ID].asString(), "N1");
    ASSERT_EQ(nodeJson[PSZ_NODE_CONTAINER].size(), 1U) << "the old containers are replaced";
    EXPECT_EQ(nodeJson[PSZ_NODE_CONTAINER][0][PSZ_NODE_CONTAINER_TYPE].asString(), "Cam");
}

TEST_F(ClusterDocument, RefusedNodeIsLeftUntouched) {
    CNode node = MakeStoredNode("mine", {"Mine"});
    node.SetNodeIp("10.0.0.9");
    Json::Value nodeJson;
    BuildNodeJson(MakeStoredNode("N1", {"Cam"}), nodeJson);
    nodeJson[PSZ_NODE_STATUS] = "Removed";
    nodeJson[PSZ_NODE_CONTAINER].append(Json::objectValue);
    EXPECT_EQ(ParseNodeJson(nodeJson, node), ORVA_DATA_INVALID);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(NodeLine()));
    EXPECT_EQ(node.GetNodeId(), "mine");
    EXPECT_EQ(node.GetNodeIp(), "10.0.0.9");
    EXPECT_EQ(node.GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    EXPECT_THAT(ContainersOf(node), ElementsAre("Mine"));
}

TEST_F(ClusterDocument, ReadNodeReplacesAllButAnyStatusThatIsNotRemoved) {
    CNode node = MakeStoredNode("mine", {"Mine"});
    node.SetNodeServiceType(4);
    node.SetMemberStatus(42);
    Json::Value nodeJson;
    BuildNodeJson(MakeStoredNode("N1"), nodeJson);
    EXPECT_EQ(ParseNodeJson(nodeJson, node), 0);
    EXPECT_EQ(node.GetNodeId(), "N1");
    EXPECT_THAT(ContainersOf(node), IsEmpty());
    EXPECT_EQ(node.GetNodeServiceType(), 4);
    EXPECT_EQ(node.GetMemberStatus(), 42);
    nodeJson[PSZ_NODE_STATUS] = "Removed";
    EXPECT_EQ(ParseNodeJson(nodeJson, node), 0);
    EXPECT_EQ(node.GetMemberStatus(), CLUSTER_MEMBER_REMOVED);
}

}  // namespace
