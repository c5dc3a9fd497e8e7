#include <vector>

#include "common_service/global_config.h"
#include "common_service/net_factory.h"
#include "common_service/tarn_def.h"
#include "reference_host/accepted_links.h"
#include "reference_host/host_settings.h"
#include "support/cluster_start_fixture.h"
#include "support/reconfigure.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using namespace cluster_start;

namespace {

TEST_F(ClusterStart, TellsEachStepInOrder) {
    PutCluster(ClusterText({{"n1", {"MeroCloudStorage", "B"}, "Normal", "10.0.0.1"}}));
    const std::string strCloudStorage = CloudStorageText(EntryText("n1", 100, ALLOCS));
    PutCloudStorage(strCloudStorage);
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);

    constexpr char DOCUMENT[] = "cluster_cloud_storage_znode_info";
    constexpr char OPERATION[] = "cluster storage info";
    EXPECT_THAT(
        m_logger.GetLines(),
        ElementsAreArray(
            std::vector<CLogLine>{BEGIN} + GenLines({{"n1", "MeroCloudStorage"}, {"n1", "B"}}) +
            std::vector<CLogLine>{
                Info(OPERATION, DOCUMENT, "ParseJson",
                     "parse json text[" + strCloudStorage + "], size=1"),
                Info(OPERATION, DOCUMENT, "ParseJson",
                     "nvr code=n1, code=c2, alloc=20, used=2, dns=d2, path=/2"),
                Info(OPERATION, DOCUMENT, "ParseJson",
                     "nvr code=n1, code=c1, alloc=10, used=1, dns=d1, path=/1"),
                Info("ORVA Cloud storage info to resTask", FILE_STEM, "CloudStorageInfoToResTask",
                     "product[P] service[S] reqStorage[100] reqPicStorage[-3] lowPri[4]"),
                Err("resource task, get value by key", 1, "resource_task", "GetValueByKey",
                    "can not find, key[TranBandWidth], value[4]"),
                Trace("container", "CalcCloudStorageInfo",
                      "CContainer:m_iReqStorage:100,m_iBitRate:4,m_iReqPicStorage:-3,"
                      "m_bUpdateFlag:0."),
                Trace("container", "CalcCloudStorageInfo",
                      "CContainer:CloudStorageCode:c2,AllocStorage:20."),
                Trace("container", "CalcCloudStorageInfo",
                      "CContainer:CloudStorageCode:c1,AllocStorage:10."),
            }));
}

TEST_F(ClusterStart, NodesEnterTheTableAsTheyAreStored) {
    PutCluster(ClusterText(
        {{"n2", {"A"}, "Normal", "10.0.0.2"}, {"n1", {"A", "B"}, "Normal", "10.0.0.1"}}, 5));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2"));
    EXPECT_THAT(ContainerAddrs(), ElementsAre(CContainerAddr("n1", "A"), CContainerAddr("n1", "B"),
                                              CContainerAddr("n2", "A")));
    EXPECT_EQ(GetHandedOverSettings().iClusterForwardType, 5);

    CNode node;
    ASSERT_TRUE(CNodeMgr::Instance().GetNode("n1", node));
    std::list<std::string> containerList;
    node.GetContainerList(containerList);
    EXPECT_EQ(node.GetNodeIp(), "10.0.0.1");
    EXPECT_EQ(node.GetNodeIpInt(), 0x0A000001U);
    EXPECT_EQ(node.GetNodeIpType(), 1);
    EXPECT_EQ(node.GetNodeRole(), 2);
    EXPECT_EQ(node.GetDomainRole(), 3);
    EXPECT_EQ(node.GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    EXPECT_THAT(containerList, ElementsAre("A", "B"));
}

TEST_F(ClusterStart, ContainersAreBornWithTheirDefaults) {
    PutCluster(ClusterText({{"n1", {"A"}, "Normal", "10.0.0.1"}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    const CContainer container = AllContainers()[CContainerAddr("n1", "A")];
    EXPECT_EQ(container.GetNodeId(), "n1");
    EXPECT_EQ(container.GetContainerType(), "A");
    EXPECT_TRUE(container.IsOnline());
    EXPECT_FALSE(container.IsFaultShift());
    EXPECT_FALSE(container.IsSupportFaultShift());
    EXPECT_FALSE(container.GetFaultStatus());
    EXPECT_TRUE(container.IsNeedUpdateResTask());
    EXPECT_FALSE(container.GetHasReportedFlag());
    EXPECT_EQ(container.GetMemberStatus(), CLUSTER_MEMBER_NORMAL);
    EXPECT_EQ(container.GetTotalTask(), 0U);
}

TEST_F(ClusterStart, AnotherLoadIsARestartOfTheModel) {
    const std::vector<CStoredNode> members = {{"n1", {"A"}, "Normal", "10.0.0.1"}};
    LoadFormer(members);
    CNodeMgr::Instance().SetNodeOnline("n1", false);
    const CContainerAddr addr("n1", "A");
    CContainerMgr::Instance().AddResourceTask(addr, {CResourceTask()});
    CContainerMgr::Instance().SetContainerOnline(addr, false);
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_TRUE(CNodeMgr::Instance().IsNodeOnline("n1"));
    EXPECT_TRUE(CContainerMgr::Instance().IsContainerOnline(addr));
    EXPECT_EQ(AllContainers()[addr].GetTotalTask(), 0U);
}

TEST_F(ClusterStart, TheSameLoadTwiceTellsAndLeavesTheSame) {
    PutCluster(ClusterText(
        {{"n1", {"MeroCloudStorage"}, "Normal", "10.0.0.1"}, {"n2", {"A"}, "Normal", "10.0.0.2"}}));
    PutCloudStorage(CloudStorageText(EntryText("n1", 100)));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    const std::vector<CLogLine> lines = m_logger.GetLines();
    const std::vector<CContainerAddr> addresses = ContainerAddrs();
    m_logger.Clear();
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(m_logger.GetLines(), lines);
    EXPECT_EQ(ContainerAddrs(), addresses);
    EXPECT_EQ(Tasks(CloudStorage("n1")).size(), 1U);
    EXPECT_TRUE(IsLinked("10.0.0.1"));
    EXPECT_TRUE(IsLinked("10.0.0.2"));
    EXPECT_EQ(m_pStore->GetCallCount(), 4U);
}

TEST_F(ClusterStart, AbsentClusterLeavesAnEarlierLoadInForce) {
    LoadFormer({{"n1", {"MeroCloudStorage"}, "Normal", "10.0.0.1"}});
    m_pStore->Erase(Path("/Cluster"));
    PutCloudStorage(CloudStorageText(EntryText("n1", 100)));
    const unsigned int uiCallsBefore = m_pStore->GetCallCount();
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(BEGIN, Progress(FUNCTION,
                                            "cluster node is empty, not need to init framework.")));
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    EXPECT_EQ(CloudStorage("n1").GetTotalTask(), 0U);
    EXPECT_TRUE(IsLinked("10.0.0.1"));
    EXPECT_EQ(GetHandedOverSettings().iClusterForwardType, 7);
    EXPECT_EQ(m_pStore->GetCallCount() - uiCallsBefore, 1U) << "cloud storage is not read";
}

TEST_F(ClusterStart, ClusterWithoutNodesEmptiesTheModel) {
    for (const std::optional<std::string>& text :
         {std::optional<std::string>(R"({"ClusterName":"","ClusterRemark":"","ClusterCode":""})"),
          std::optional<std::string>()}) {
        SCOPED_TRACE(text.value_or("no data"));
        ForgetAcceptedLinks();
        Reconfigure(&CHostSettings::strLocalIp, "10.0.0.2");
        LoadFormer({{"n1", {"A"}, "Normal", "10.0.0.1"}, {"n2", {"A"}, "Normal", "10.0.0.2"}});
        PutCluster(text);
        EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
        EXPECT_THAT(m_logger.GetLines(), ElementsAre(BEGIN, NO_CLOUD_STORAGE));
        EXPECT_THAT(NodeIds(), IsEmpty());
        EXPECT_THAT(ContainerAddrs(), IsEmpty());
        EXPECT_EQ(GetHandedOverSettings().iClusterForwardType, 0);
        EXPECT_FALSE(IsLinked("10.0.0.1"));
        EXPECT_TRUE(IsLinked("10.0.0.2")) << "the local address keeps its link";
    }
}

TEST_F(ClusterStart, ForwardTypeOfTheWrongKindCountsAsZero) {
    CGlobalConfig::Instance().SetClusterForwardType(9);
    PutCluster(
        R"({"ClusterName":"c","ClusterRemark":"r","ClusterCode":"X","ClusterForwardType":"1"})");
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(GetHandedOverSettings().iClusterForwardType, 0);
}

TEST_F(ClusterStart, LinksFollowTheMembers) {
    HALD::CNetFactory::Instance().AddValidatedLink("10.0.0.1", 1);
    LoadFormer({{"gone", {}, "Normal", "10.0.0.1"},
                {"moved", {}, "Normal", "10.0.0.2"},
                {"stays", {}, "Normal", "10.0.0.3"}});
    PutCluster(ClusterText({{"heir", {}, "Normal", "10.0.0.2"},
                            {"stays", {}, "Normal", "10.0.0.3"},
                            {"moved", {}, "Normal", "10.0.0.4"}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_FALSE(IsLinked("10.0.0.1"));
    EXPECT_TRUE(IsLinked("10.0.0.2")) << "another node has the address now";
    EXPECT_TRUE(IsLinked("10.0.0.3"));
    EXPECT_TRUE(IsLinked("10.0.0.4"));
    EXPECT_TRUE(IsAcceptedLink("10.0.0.1", 1)) << "links of another type are not the framework's";
}

TEST_F(ClusterStart, FirstLoadTakesNoLinkAway) {
    HALD::CNetFactory::Instance().AddValidatedLink("10.0.0.9", 70106);
    PutCluster(ClusterText({{"n1", {}, "Normal", "10.0.0.1"}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_TRUE(IsLinked("10.0.0.9"));
}

TEST_F(ClusterStart, RemovedNodesLoseTheirLinksAndKeepTheirContainers) {
    Reconfigure(&CHostSettings::strLocalIp, "10.0.0.3");
    const std::string strLocal = "10.0.0.3";
    LoadFormer({{"n1", {"A"}, "Normal", "10.0.0.1"},
                {"n2", {"A"}, "Normal", "10.0.0.2"},
                {"n3", {"A"}, "Normal", strLocal}});
    PutCluster(ClusterText({{"n1", {"A"}, "Normal", "10.0.0.1"},
                            {"n2", {"A"}, "Removed", "10.0.0.2"},
                            {"n3", {"A"}, "Normal", strLocal},
                            {"n4", {"A"}, "Normal", "10.0.0.4"}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_TRUE(IsLinked("10.0.0.1"));
    EXPECT_FALSE(IsLinked("10.0.0.2"));
    EXPECT_TRUE(IsLinked(strLocal)) << "removed by carry-over, but local";
    EXPECT_FALSE(IsLinked("10.0.0.4")) << "behind a removed node every node counts as removed";
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2", "n3", "n4"));
    EXPECT_EQ(ContainerAddrs().size(), 4U);
    for (const auto& [strId, iStatus] :
         std::map<std::string, int>{{"n1", CLUSTER_MEMBER_NORMAL},
                                    {"n2", CLUSTER_MEMBER_REMOVED},
                                    {"n3", CLUSTER_MEMBER_REMOVED},
                                    {"n4", CLUSTER_MEMBER_REMOVED}}) {
        CNode node;
        ASSERT_TRUE(CNodeMgr::Instance().GetNode(strId, node));
        EXPECT_EQ(node.GetMemberStatus(), iStatus) << strId;
        EXPECT_EQ(AllContainers()[CContainerAddr(strId, "A")].GetMemberStatus(),
                  CLUSTER_MEMBER_NORMAL)
            << strId;
    }
}

TEST_F(ClusterStart, NodeWithoutContainersIsANodeAlone) {
    PutCluster(ClusterText({{"n1", {}, "Normal", "10.0.0.1"}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    EXPECT_THAT(ContainerAddrs(), IsEmpty());
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(BEGIN, NO_CLOUD_STORAGE));
}

TEST_F(ClusterStart, PercentSignsInNamesAreText) {
    PutCluster(ClusterText({{"%s%n", {"%d"}, "Normal", "10.0.0.1"}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAreArray(std::vector<CLogLine>{BEGIN} + GenLines({{"%s%n", "%d"}}) +
                                 std::vector<CLogLine>{NO_CLOUD_STORAGE}));
}

TEST_F(ClusterStart, ContainerTypeTwiceOnANodeFailsTheLoad) {
    LoadFormer({{"old", {"A"}, "Normal", "10.0.0.9"}});
    PutCluster(ClusterText({{"n1", {"A", "B", "A", "C"}, "Normal", "10.0.0.1"}}, 5));
    PutCloudStorage(CloudStorageText(EntryText("n1", 100)));
    const unsigned int uiCallsBefore = m_pStore->GetCallCount();
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), ORVA_FAIL);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAreArray(std::vector<CLogLine>{BEGIN} +
                                 GenLines({{"n1", "A"}, {"n1", "B"}, {"n1", "A"}, {"n1", "C"}}, 3) +
                                 std::vector<CLogLine>{
                                     INSERT_FAILED, LOAD_FAILED, GEN_FAILED, CONTAINER_MGR_FAILED,
                                     Err("framework common, InitNodeAndContainerFromZK", 1,
                                         FILE_STEM, FUNCTION, "init node Container fail.")}));
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    EXPECT_THAT(ContainerAddrs(), ElementsAre(CContainerAddr("old", "A")));
    EXPECT_EQ(GetHandedOverSettings().iClusterForwardType, 5);
    EXPECT_TRUE(IsLinked("10.0.0.1"));
    EXPECT_FALSE(IsLinked("10.0.0.9"));
    EXPECT_EQ(m_pStore->GetCallCount() - uiCallsBefore, 1U) << "cloud storage is not read";
}

TEST_F(ClusterStart, NodeListedTwiceFailsByItsContainers) {
    PutCluster(
        ClusterText({{"n1", {"A"}, "Normal", "10.0.0.1"}, {"n1", {"A"}, "Normal", "10.0.0.2"}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), ORVA_FAIL);
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    EXPECT_TRUE(IsLinked("10.0.0.1"));
    EXPECT_TRUE(IsLinked("10.0.0.2"));
}

TEST_F(ClusterStart, AddressesThatReadTheSameCannotBothBeHeld) {
    PutCluster(
        ClusterText({{"a", {"bc"}, "Normal", "10.0.0.1"}, {"ab", {"c"}, "Normal", "10.0.0.2"}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), ORVA_FAIL);
    EXPECT_THAT(NodeIds(), ElementsAre("a", "ab"));
    EXPECT_THAT(ContainerAddrs(), IsEmpty());
}

TEST_F(ClusterStart, FailingStoreStopsTheLoadWhereItFails) {
    const std::vector<CStoredNode> former = {{"n1", {"MeroCloudStorage"}, "Normal", "10.0.0.1"}};
    const std::vector<CStoredNode> now = {{"n2", {"MeroCloudStorage"}, "Normal", "10.0.0.2"}};
    const std::string strCloudStorage = CloudStorageText(EntryText("n2", 100));
    std::vector<int> results;
    for (unsigned int uiNth = 1;; ++uiNth) {
        SCOPED_TRACE(uiNth);
        PutCloudStorage(std::nullopt);
        LoadFormer(former);
        PutCluster(ClusterText(now, 5));
        PutCloudStorage(strCloudStorage);
        const unsigned int uiCallsBefore = m_pStore->GetCallCount();
        m_pStore->FailCall(uiNth, NUMERIC_STORE_CODE);
        results.push_back(Framework().InitNodeAndContainerFromZK());

        const bool bClusterRead = uiNth > 1;
        EXPECT_THAT(NodeIds(), ElementsAre(bClusterRead ? "n2" : "n1"));
        EXPECT_EQ(GetHandedOverSettings().iClusterForwardType, bClusterRead ? 5 : 7);
        EXPECT_EQ(IsLinked("10.0.0.1"), !bClusterRead);
        EXPECT_EQ(IsLinked("10.0.0.2"), bClusterRead);
        EXPECT_EQ(CloudStorage("n2").GetTotalTask(), uiNth > 2 ? 1U : 0U);
        if (m_pStore->GetCallCount() - uiCallsBefore < uiNth) {
            break;
        }
        EXPECT_EQ(Lines().back(),
                  Failure(FUNCTION, NUMERIC_STORE_CODE,
                          bClusterRead ? "get cloud storage info from cluster node fail."
                                       : "get data from cluster node fail."));
    }
    EXPECT_THAT(results, ElementsAre(NUMERIC_STORE_CODE, NUMERIC_STORE_CODE, 0));
}

TEST_F(ClusterStart, TextMayFillItsBufferButForOneCharacter) {
    PutCluster(PadTo(ClusterText({{"n1", {"MeroCloudStorage"}, "Normal", "10.0.0.1"}}), 65535));
    PutCloudStorage(PadTo(CloudStorageText(EntryText("n1", 100)), 65535));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(CloudStorage("n1").GetReqStorage(), 100);
}

TEST_F(ClusterStart, NullLoggerChangesNoResult) {
    OMAdapter::getInstance().setLogger(nullptr);
    PutCluster(ClusterText({{"n1", {"A", "A"}, "Normal", "10.0.0.1"}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), ORVA_FAIL);
    PutCluster("no json");
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), ORVA_DATA_INVALID);
    PutCluster(ClusterText({{"n1", {"MeroCloudStorage"}, "Normal", "10.0.0.1"}}));
    PutCloudStorage(CloudStorageText(EntryText("n1", 100) + "," + EntryText("ghost", 1)));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(CloudStorage("n1").GetReqStorage(), 100);
}

class BadCluster : public ClusterStart, public testing::WithParamInterface<CBadText> {};

TEST_P(BadCluster, GivesACodeAndChangesNothing) {
    LoadFormer({{"old", {"A"}, "Normal", "10.0.0.9"}});
    PutCluster(GetParam().strText);
    const unsigned int uiCallsBefore = m_pStore->GetCallCount();
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), GetParam().iCode);
    EXPECT_THAT(Lines(), ElementsAre(BEGIN, Failure(FUNCTION, GetParam().iCode,
                                                    "get data from cluster node fail.")));
    EXPECT_THAT(NodeIds(), ElementsAre("old"));
    EXPECT_THAT(ContainerAddrs(), ElementsAre(CContainerAddr("old", "A")));
    EXPECT_TRUE(IsLinked("10.0.0.9"));
    EXPECT_EQ(GetHandedOverSettings().iClusterForwardType, 7);
    EXPECT_EQ(m_pStore->GetCallCount() - uiCallsBefore, 1U) << "cloud storage is not read";
}

/// A cluster document whose "ClusterNode" is an array of this text.
std::string ClusterWithNode(const std::string& strNode) {
    return R"({"ClusterName":"c","ClusterRemark":"r","ClusterCode":"X","ClusterNode":[)" + strNode +
           "]}";
}

std::string GoodNode() {
    return NodeText({"n1", {"A"}, "Normal", "10.0.0.1"});
}

std::string GoodNodeWith(const std::string& strOld, const std::string& strNew) {
    std::string strNode = GoodNode();
    return strNode.replace(strNode.find(strOld), strOld.size(), strNew);
}

INSTANTIATE_TEST_SUITE_P(
    Text, BadCluster,
    testing::ValuesIn(BadTexts({
        {"Truncated", ClusterText({{"n1", {"A"}, "Normal", "10.0.0.1"}}).substr(0, 120)},
        {"DeepArrays", Repeat("[", NUMERIC_DEEP) + Repeat("]", NUMERIC_DEEP)},
        {"DeepObjects", Repeat("{\"a\":", NUMERIC_DEEP) + "1" + Repeat("}", NUMERIC_DEEP)},
        {"DeepInsideANode", ClusterWithNode(Repeat("[", NUMERIC_DEEP) + Repeat("]", NUMERIC_DEEP))},
        {"Oversized", PadTo(ClusterText({}), 65536), STORE_TEXT_TOO_LONG},
        {"MissingName", R"({"ClusterRemark":"r","ClusterCode":"X"})"},
        {"NullName", R"({"ClusterName":null,"ClusterRemark":"r","ClusterCode":"X"})"},
        {"NumberForRemark", R"({"ClusterName":"c","ClusterRemark":1,"ClusterCode":"X"})"},
        {"ArrayForCode", R"({"ClusterName":"c","ClusterRemark":"r","ClusterCode":[]})"},
        {"NodeIsEmpty", ClusterWithNode("{}")},
        {"NodeIsNull", ClusterWithNode("null")},
        {"NodeIsText", ClusterWithNode("\"n1\"")},
        {"NodeIsNumber", ClusterWithNode("1")},
        {"NodeIsArray", ClusterWithNode("[" + GoodNode() + "]")},
        {"NodeIdIsNumber", ClusterWithNode(GoodNodeWith("\"n1\"", "1"))},
        {"NodeIpIsNull", ClusterWithNode(GoodNodeWith("\"10.0.0.1\"", "null"))},
        {"NodeIpTypeIsText",
         ClusterWithNode(GoodNodeWith("\"NodeIPType\":1", R"("NodeIPType":"1")"))},
        {"NodeRoleIsTooLarge",
         ClusterWithNode(GoodNodeWith("\"NodeRole\":2", "\"NodeRole\":2147483648"))},
        {"DomainRoleIsMissing", ClusterWithNode(GoodNodeWith("\"DomainRole\":3,", ""))},
        {"StatusIsBoolean", ClusterWithNode(GoodNodeWith("\"Normal\"", "true"))},
        {"ContainerTypeIsNumber", ClusterWithNode(GoodNodeWith("\"A\"", "1"))},
        {"ContainerTypeIsMissing", ClusterWithNode(GoodNodeWith("\"ContainerType\"", "\"Type\""))},
        {"ContainerIsText", ClusterWithNode(GoodNodeWith(R"({"ContainerType":"A"})", "\"A\""))},
        {"SecondNodeIsBad", ClusterWithNode(GoodNode() + ",{}")},
    })),
    NAME_OF_BAD_TEXT);

}  // namespace
