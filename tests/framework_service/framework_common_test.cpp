#include "framework_service/framework_common.h"

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

#include "common_service/global_config.h"
#include "common_service/net_factory.h"
#include "common_service/tarn_conf.h"
#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/node_mgr.h"
#include "support/host_fixture.h"
#include "support/registry_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Pair;

namespace {

constexpr int NUMERIC_STORE_CODE = 4711;
constexpr char FILE_STEM[] = "framework_common";

CFrameworkCommon& Framework() {
    return CFrameworkCommon::Instance();
}

CLogLine Progress(const std::string& strFunction, const std::string& strMessage) {
    return Info("init framework", FILE_STEM, strFunction, strMessage);
}

CLogLine Failure(const std::string& strFunction, int iCode, const std::string& strMessage) {
    return Err("init framework", iCode, FILE_STEM, strFunction, strMessage);
}

/// What the store may hold in place of a good document, and the code of the read that meets it.
struct CBadText {
    std::string strName;
    std::string strText;
    int iCode = ORVA_DATA_INVALID;
};

std::ostream& operator<<(std::ostream& stream, const CBadText& bad) {
    return stream << bad.strName;
}

std::string Repeat(const std::string& strText, int iTimes) {
    std::string strAll;
    for (int i = 0; i < iTimes; ++i) {
        strAll += strText;
    }
    return strAll;
}

/// The texts that no document takes.
std::vector<CBadText> BadTexts(std::vector<CBadText> ofThisDocument) {
    const std::vector<CBadText> common = {
        {"Malformed", "no json"},   {"Unclosed", R"({"ClusterName":"c")"},
        {"PercentSigns", "%s%n%d"}, {"EmptyObject", "{}"},
        {"NullRoot", "null"},       {"ArrayRoot", R"([{"ClusterName":"c"}])"},
        {"TextRoot", R"("text")"},  {"NumberRoot", "3"},
        {"TrueRoot", "true"},       {"NestedForEver", Repeat("[", 200)},
    };
    ofThisDocument.insert(ofThisDocument.end(), common.begin(), common.end());
    return ofThisDocument;
}

std::string PadTo(const std::string& strText, std::size_t size) {
    return strText + std::string(size - strText.size(), ' ');
}

const auto NAME_OF_BAD_TEXT = [](const testing::TestParamInfo<CBadText>& info) {
    return info.param.strName;
};

// ---------------------------------------------------------------- the configuration document

struct CSettings {
    bool bLoadBalance = false;
    bool bFaultShift = false;
    bool bOnePeriod = false;
    int iDisk = 0;
    int iNet = 0;
    int iChannel = 0;

    friend bool operator==(const CSettings& lhs, const CSettings& rhs) {
        return std::tie(lhs.bLoadBalance, lhs.bFaultShift, lhs.bOnePeriod, lhs.iDisk, lhs.iNet,
                        lhs.iChannel) == std::tie(rhs.bLoadBalance, rhs.bFaultShift, rhs.bOnePeriod,
                                                  rhs.iDisk, rhs.iNet, rhs.iChannel);
    }

    friend std::ostream& operator<<(std::ostream& stream, const CSettings& settings) {
        return stream << settings.bLoadBalance << settings.bFaultShift << settings.bOnePeriod << ' '
                      << settings.iDisk << ' ' << settings.iNet << ' ' << settings.iChannel;
    }
};

class ClusterConfiguration : public CHostTest {
protected:
    ClusterConfiguration() { Set(FORMER); }

    static void Set(const CSettings& settings) {
        CGlobalConfig& config = CGlobalConfig::Instance();
        config.SetLoadBalance(settings.bLoadBalance);
        config.SetFaultShift(settings.bFaultShift);
        config.SetLoadBalanceOnePeriod(settings.bOnePeriod);
        config.SetLoadBalanceDiskThreshold(settings.iDisk);
        config.SetLoadBalanceNetThreshold(settings.iNet);
        config.SetLoadBalanceChannelThreshold(settings.iChannel);
    }

    static CSettings Get() {
        const CGlobalConfig& config = CGlobalConfig::Instance();
        return {config.IsLoadBalance(),
                config.IsFaultShift(),
                config.IsLoadBalanceOnePeriod(),
                config.GetLoadBalanceDiskThreshold(),
                config.GetLoadBalanceNetThreshold(),
                config.GetLoadBalanceChannelThreshold()};
    }

    void Put(const std::optional<std::string>& text) {
        m_pStore->Put(Path("/ClusterConfig"), text);
    }

    std::vector<CLogLine> Lines() const { return m_logger.GetLinesOf(FILE_STEM); }

    /// Different from the defaults and from what the tests' documents say.
    static constexpr CSettings FORMER{false, false, true, 81, 82, 83};

    static constexpr char FUNCTION[] = "InitClusterConfigFromZK";
    const CLogLine BEGIN = Info("init cluster config from zk", FILE_STEM, FUNCTION, "");
};

constexpr char SWITCHES[] = R"("IsLoadBalance":true,"IsFaultShift":true,)"
                            R"("IsLoadBalanceOnePeriod":false)";

TEST_F(ClusterConfiguration, SwitchesAndDefaultThresholdsReachTheHost) {
    Put(std::string("{") + SWITCHES + "}");
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(Get(), (CSettings{true, true, false, 10, 10, 10}));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(BEGIN));
}

TEST_F(ClusterConfiguration, StoredThresholdsNeverReachTheHost) {
    for (const char* pszThresholds :
         {R"({"DiskThreshold":5,"NetThreshold":6,"ChannelThreshold":7})", "null", "3", "\"x\""}) {
        SCOPED_TRACE(pszThresholds);
        Set(FORMER);
        Put(std::string("{") + SWITCHES + R"(,"LoadBalanceThreshold":)" + pszThresholds + "}");
        EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
        EXPECT_EQ(Get(), (CSettings{true, true, false, 10, 10, 10}));
    }
}

TEST_F(ClusterConfiguration, EachSwitchGoesItsOwnWay) {
    for (int i = 0; i < 8; ++i) {
        const bool bLoadBalance = (i & 1) != 0;
        const bool bFaultShift = (i & 2) != 0;
        const bool bOnePeriod = (i & 4) != 0;
        const auto text = [](bool b) { return b ? "true" : "false"; };
        Put(std::string(R"({"IsLoadBalance":)") + text(bLoadBalance) + R"(,"IsFaultShift":)" +
            text(bFaultShift) + R"(,"IsLoadBalanceOnePeriod":)" + text(bOnePeriod) + "}");
        EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
        EXPECT_EQ(Get(), (CSettings{bLoadBalance, bFaultShift, bOnePeriod, 10, 10, 10}));
    }
}

TEST_F(ClusterConfiguration, AbsentDocumentIsASuccessThatSetsNothing) {
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(Get(), FORMER);
    EXPECT_THAT(
        m_logger.GetLines(),
        ElementsAre(BEGIN, Progress(FUNCTION,
                                    "cluster config info is empty, not need to init framework.")));
}

TEST_F(ClusterConfiguration, NodeWithoutDataGivesTheDefaults) {
    Put(std::nullopt);
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(Get(), (CSettings{true, true, true, 10, 10, 10}));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(BEGIN));
}

TEST_F(ClusterConfiguration, FailingStoreGivesItsCodeAndSetsNothing) {
    Put(std::string("{") + SWITCHES + "}");
    for (unsigned int uiNth = 1;; ++uiNth) {
        SCOPED_TRACE(uiNth);
        Set(FORMER);
        m_logger.Clear();
        const unsigned int uiCallsBefore = m_pStore->GetCallCount();
        m_pStore->FailCall(uiNth, NUMERIC_STORE_CODE);
        const int iRet = Framework().InitClusterConfigFromZK();
        if (m_pStore->GetCallCount() - uiCallsBefore < uiNth) {
            EXPECT_EQ(iRet, 0);
            EXPECT_EQ(uiNth, 2U) << "one read";
            break;
        }
        EXPECT_EQ(iRet, NUMERIC_STORE_CODE);
        EXPECT_EQ(Get(), FORMER);
        EXPECT_THAT(m_logger.GetLines(),
                    ElementsAre(BEGIN, Failure(FUNCTION, NUMERIC_STORE_CODE,
                                               "get cloud storage info from cluster node fail.")));
    }
    EXPECT_EQ(Get(), (CSettings{true, true, false, 10, 10, 10}));
}

TEST_F(ClusterConfiguration, EveryCallReadsAndSetsAnew) {
    Put(std::string("{") + SWITCHES + "}");
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    Set(FORMER);
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(Get(), (CSettings{true, true, false, 10, 10, 10}));
    EXPECT_EQ(m_pStore->GetCallCount(), 2U);
}

TEST_F(ClusterConfiguration, IsReadBelowTheClusterCodeOfTheMoment) {
    Put(std::string("{") + SWITCHES + "}");
    CTARNConf::m_oConf.SetCstClusterCode("Y");
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(Get(), FORMER) << "/CloudY/ClusterConfig is absent";
}

TEST_F(ClusterConfiguration, TextMayFillItsBufferButForOneCharacter) {
    Put(PadTo(std::string("{") + SWITCHES + "}", 511));
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(Get(), (CSettings{true, true, false, 10, 10, 10}));
}

TEST_F(ClusterConfiguration, NullLoggerChangesNoResult) {
    OMAdapter::getInstance().setLogger(nullptr);
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), 0);
    Put("no json");
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), ORVA_DATA_INVALID);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

class BadClusterConfiguration : public ClusterConfiguration,
                                public testing::WithParamInterface<CBadText> {};

TEST_P(BadClusterConfiguration, GivesACodeAndSetsNothing) {
    Put(GetParam().strText);
    EXPECT_EQ(Framework().InitClusterConfigFromZK(), GetParam().iCode);
    EXPECT_EQ(Get(), FORMER);
    EXPECT_THAT(Lines(),
                ElementsAre(BEGIN, Failure(FUNCTION, GetParam().iCode,
                                           "get cloud storage info from cluster node fail.")));
}

INSTANTIATE_TEST_SUITE_P(
    Text, BadClusterConfiguration,
    testing::ValuesIn(BadTexts({
        {"NumberForSwitch",
         R"({"IsLoadBalance":true,"IsFaultShift":1,"IsLoadBalanceOnePeriod":true})"},
        {"MissingSwitch", R"({"IsLoadBalance":true,"IsFaultShift":true})"},
        {"NullSwitch",
         R"({"IsLoadBalance":null,"IsFaultShift":true,"IsLoadBalanceOnePeriod":true})"},
        {"ThresholdArray", std::string("{") + SWITCHES + R"(,"LoadBalanceThreshold":[5,6,7]})"},
        {"EmptyThresholdArray", std::string("{") + SWITCHES + R"(,"LoadBalanceThreshold":[]})"},
        {"Oversized", PadTo(std::string("{") + SWITCHES + "}", 512), STORE_TEXT_TOO_LONG},
    })),
    NAME_OF_BAD_TEXT);

// ---------------------------------------------------------------- the cluster's start

/// A node as the cluster document has it.
struct CMember {
    std::string strId;
    std::string strIp;
    std::vector<std::string> containers;
    std::string strStatus = "Normal";
};

std::string NodeText(const CMember& member) {
    std::string strContainers;
    for (const std::string& strType : member.containers) {
        strContainers += (strContainers.empty() ? "" : ",");
        strContainers += R"({"ContainerType":")" + strType + R"("})";
    }
    return R"({"NodeID":")" + member.strId + R"(","NodeIP":")" + member.strIp +
           R"(","NodeIPType":1,"NodeRole":2,"DomainRole":3,"Status":")" + member.strStatus +
           R"(","Container":[)" + strContainers + "]}";
}

std::string ClusterText(const std::vector<CMember>& members, int iForwardType = 0) {
    std::string strNodes;
    for (const CMember& member : members) {
        strNodes += (strNodes.empty() ? "" : ",") + NodeText(member);
    }
    return R"({"ClusterName":"c","ClusterRemark":"r","ClusterCode":"X","ClusterForwardType":)" +
           std::to_string(iForwardType) + R"(,"ClusterNode":[)" + strNodes + "]}";
}

/// An entry of the cloud storage document; strAllocs is the text of its "NodeList".
std::string EntryText(const std::string& strNodeId, int iReqStorage,
                      const std::string& strAllocs = "[]") {
    return R"({"NvrCode":")" + strNodeId + R"(","ServiceType":"S","ProductType":"P","ReqSize":)" +
           std::to_string(iReqStorage) + R"(,"ReqPicSize":-3,"LowpriBit":4,"NodeList":)" +
           strAllocs + "}";
}

std::string CloudStorageText(const std::string& strEntries) {
    return R"({"CloudStorageSet":[)" + strEntries + "]}";
}

constexpr char ALLOCS[] = R"([{"Code":"c2","AllocSize":20,"UsedSize":2,"Dns":"d2","Path":"/2"},)"
                          R"({"Code":"c1","AllocSize":10,"UsedSize":1,"Dns":"d1","Path":"/1"}])";

CNode MakeNode(const std::string& strId, const std::list<std::string>& containers) {
    CNode node;
    node.SetNodeId(strId);
    node.SetContainerList(containers);
    return node;
}

std::vector<CContainerAddr> Addresses(const ContainerMap& containerMap) {
    std::vector<CContainerAddr> addresses;
    for (const auto& [containerAddr, container] : containerMap) {
        addresses.push_back(containerAddr);
    }
    return addresses;
}

/// What becomes of each address on its way to a container, no plug-in being loaded.
std::vector<CLogLine> GenLines(const std::vector<CContainerAddr>& addresses,
                               std::size_t uiLoaded = std::string::npos) {
    const auto textOf = [](const CContainerAddr& addr) {
        return "node=" + addr.GetNodeId() + " container type=" + addr.GetContainerType() + " ";
    };
    std::vector<CLogLine> lines;
    for (const CContainerAddr& addr : addresses) {
        lines.push_back(Info("Gen Container Table", FILE_STEM, "GenContainerTable", textOf(addr)));
    }
    for (std::size_t i = 0; i < std::min(uiLoaded, addresses.size()); ++i) {
        lines.push_back(Err("is container support fault shift", 1, "plugin_mgr",
                            "IsContainerSupportFaultShift",
                            "do not support, type[" + addresses[i].GetContainerType() + "]"));
        lines.push_back(
            Info("load Container info", FILE_STEM, "LoadContainerInfo", textOf(addresses[i])));
    }
    return lines;
}

const CLogLine INSERT_FAILED =
    Err("load container info", 1, FILE_STEM, "LoadContainerInfo", "insert map failed");
const CLogLine LOAD_FAILED =
    Err("init container mgr", 1, FILE_STEM, "GenContainerTable", "load container info fail.");
const CLogLine GEN_FAILED = Err("framework common, init container mgr", 1, FILE_STEM,
                                "InitContainerMgr", "gen container table fail.");
const CLogLine CONTAINER_MGR_FAILED = Err("framework common, init node and contiaer", 1, FILE_STEM,
                                          "InitNodeAndContainer", "init contianer manager fail.");

std::vector<CLogLine> operator+(std::vector<CLogLine> lhs, const std::vector<CLogLine>& rhs) {
    lhs.insert(lhs.end(), rhs.begin(), rhs.end());
    return lhs;
}

class ClusterStart : public CHostTest {
protected:
    ClusterStart() { EmptyRegistries(); }
    ~ClusterStart() override { EmptyRegistries(); }

    static void EmptyRegistries() {
        CNodeMgr::Instance().Init({});
        CContainerMgr::Instance().Init({});
    }

    void PutCluster(const std::optional<std::string>& text) {
        m_pStore->Put(Path("/Cluster"), text);
    }

    void PutCloudStorage(const std::optional<std::string>& text) {
        m_pStore->Put(Path("/CloudStorage"), text);
    }

    /// A first load, of which later ones find the traces.
    void LoadFormer(const std::vector<CMember>& members) {
        PutCluster(ClusterText(members, 7));
        ASSERT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
        m_logger.Clear();
    }

    static std::vector<CContainerAddr> ContainerAddrs() { return Addresses(AllContainers()); }

    static CContainer CloudStorage(const std::string& strNodeId) {
        return AllContainers()[CContainerAddr(strNodeId, CONTAINER_TYPE_CLOUD_STORAGE)];
    }

    static std::vector<CResourceTask> Tasks(const CContainer& container) {
        std::list<CResourceTask> taskList;
        container.GetResoureTask(taskList);
        return {taskList.begin(), taskList.end()};
    }

    static bool IsLinked(const std::string& strIp) {
        return HALD::CNetFactory::Instance().IsValidatedLink(strIp, 70106);
    }

    std::vector<CLogLine> Lines() const { return m_logger.GetLinesOf(FILE_STEM); }

    static constexpr char FUNCTION[] = "InitNodeAndContainerFromZK";
    const CLogLine BEGIN = Info("init node and container from zk", FILE_STEM, FUNCTION, "");
    const CLogLine NO_CLOUD_STORAGE =
        Progress(FUNCTION, "cloud storage info is empty, not need to init framework.");
};

TEST_F(ClusterStart, TellsEachStepInOrder) {
    PutCluster(ClusterText({{"n1", "10.0.0.1", {"MeroCloudStorage", "B"}}}));
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
    PutCluster(ClusterText({{"n2", "10.0.0.2", {"A"}}, {"n1", "10.0.0.1", {"A", "B"}}}, 5));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2"));
    EXPECT_THAT(ContainerAddrs(), ElementsAre(CContainerAddr("n1", "A"), CContainerAddr("n1", "B"),
                                              CContainerAddr("n2", "A")));
    EXPECT_EQ(CGlobalConfig::Instance().GetClusterForwardType(), 5);

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
    PutCluster(ClusterText({{"n1", "10.0.0.1", {"A"}}}));
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
    const std::vector<CMember> members = {{"n1", "10.0.0.1", {"A"}}};
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
    PutCluster(ClusterText({{"n1", "10.0.0.1", {"MeroCloudStorage"}}, {"n2", "10.0.0.2", {"A"}}}));
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
    LoadFormer({{"n1", "10.0.0.1", {"MeroCloudStorage"}}});
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
    EXPECT_EQ(CGlobalConfig::Instance().GetClusterForwardType(), 7);
    EXPECT_EQ(m_pStore->GetCallCount() - uiCallsBefore, 1U) << "cloud storage is not read";
}

TEST_F(ClusterStart, ClusterWithoutNodesEmptiesTheModel) {
    for (const std::optional<std::string>& text :
         {std::optional<std::string>(R"({"ClusterName":"","ClusterRemark":"","ClusterCode":""})"),
          std::optional<std::string>()}) {
        SCOPED_TRACE(text.value_or("no data"));
        HALD::CNetFactory::Instance().Clear();
        CGlobalConfig::Instance().SetLocalIp("10.0.0.2");
        LoadFormer({{"n1", "10.0.0.1", {"A"}}, {"n2", "10.0.0.2", {"A"}}});
        PutCluster(text);
        EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
        EXPECT_THAT(m_logger.GetLines(), ElementsAre(BEGIN, NO_CLOUD_STORAGE));
        EXPECT_THAT(NodeIds(), IsEmpty());
        EXPECT_THAT(ContainerAddrs(), IsEmpty());
        EXPECT_EQ(CGlobalConfig::Instance().GetClusterForwardType(), 0);
        EXPECT_FALSE(IsLinked("10.0.0.1"));
        EXPECT_TRUE(IsLinked("10.0.0.2")) << "the local address keeps its link";
    }
}

TEST_F(ClusterStart, ForwardTypeOfTheWrongKindCountsAsZero) {
    CGlobalConfig::Instance().SetClusterForwardType(9);
    PutCluster(
        R"({"ClusterName":"c","ClusterRemark":"r","ClusterCode":"X","ClusterForwardType":"1"})");
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(CGlobalConfig::Instance().GetClusterForwardType(), 0);
}

TEST_F(ClusterStart, LinksFollowTheMembers) {
    HALD::CNetFactory::Instance().AddValidatedLink("10.0.0.1", 1);
    LoadFormer({{"gone", "10.0.0.1", {}}, {"moved", "10.0.0.2", {}}, {"stays", "10.0.0.3", {}}});
    PutCluster(ClusterText(
        {{"heir", "10.0.0.2", {}}, {"stays", "10.0.0.3", {}}, {"moved", "10.0.0.4", {}}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_FALSE(IsLinked("10.0.0.1"));
    EXPECT_TRUE(IsLinked("10.0.0.2")) << "another node has the address now";
    EXPECT_TRUE(IsLinked("10.0.0.3"));
    EXPECT_TRUE(IsLinked("10.0.0.4"));
    EXPECT_TRUE(HALD::CNetFactory::Instance().IsValidatedLink("10.0.0.1", 1))
        << "links of another type are not the framework's";
}

TEST_F(ClusterStart, FirstLoadTakesNoLinkAway) {
    HALD::CNetFactory::Instance().AddValidatedLink("10.0.0.9", 70106);
    PutCluster(ClusterText({{"n1", "10.0.0.1", {}}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_TRUE(IsLinked("10.0.0.9"));
}

TEST_F(ClusterStart, RemovedNodesLoseTheirLinksAndKeepTheirContainers) {
    CGlobalConfig::Instance().SetLocalIp("10.0.0.3");
    const std::string strLocal = "10.0.0.3";
    LoadFormer({{"n1", "10.0.0.1", {"A"}}, {"n2", "10.0.0.2", {"A"}}, {"n3", strLocal, {"A"}}});
    PutCluster(ClusterText({{"n1", "10.0.0.1", {"A"}},
                            {"n2", "10.0.0.2", {"A"}, "Removed"},
                            {"n3", strLocal, {"A"}},
                            {"n4", "10.0.0.4", {"A"}}}));
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
    PutCluster(ClusterText({{"n1", "10.0.0.1", {}}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    EXPECT_THAT(ContainerAddrs(), IsEmpty());
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(BEGIN, NO_CLOUD_STORAGE));
}

TEST_F(ClusterStart, PercentSignsInNamesAreText) {
    PutCluster(ClusterText({{"%s%n", "10.0.0.1", {"%d"}}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAreArray(std::vector<CLogLine>{BEGIN} + GenLines({{"%s%n", "%d"}}) +
                                 std::vector<CLogLine>{NO_CLOUD_STORAGE}));
}

TEST_F(ClusterStart, ContainerTypeTwiceOnANodeFailsTheLoad) {
    LoadFormer({{"old", "10.0.0.9", {"A"}}});
    PutCluster(ClusterText({{"n1", "10.0.0.1", {"A", "B", "A", "C"}}}, 5));
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
    EXPECT_EQ(CGlobalConfig::Instance().GetClusterForwardType(), 5);
    EXPECT_TRUE(IsLinked("10.0.0.1"));
    EXPECT_FALSE(IsLinked("10.0.0.9"));
    EXPECT_EQ(m_pStore->GetCallCount() - uiCallsBefore, 1U) << "cloud storage is not read";
}

TEST_F(ClusterStart, NodeListedTwiceFailsByItsContainers) {
    PutCluster(ClusterText({{"n1", "10.0.0.1", {"A"}}, {"n1", "10.0.0.2", {"A"}}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), ORVA_FAIL);
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    EXPECT_TRUE(IsLinked("10.0.0.1"));
    EXPECT_TRUE(IsLinked("10.0.0.2"));
}

TEST_F(ClusterStart, AddressesThatReadTheSameCannotBothBeHeld) {
    PutCluster(ClusterText({{"a", "10.0.0.1", {"bc"}}, {"ab", "10.0.0.2", {"c"}}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), ORVA_FAIL);
    EXPECT_THAT(NodeIds(), ElementsAre("a", "ab"));
    EXPECT_THAT(ContainerAddrs(), IsEmpty());
}

TEST_F(ClusterStart, FailingStoreStopsTheLoadWhereItFails) {
    const std::vector<CMember> former = {{"n1", "10.0.0.1", {"MeroCloudStorage"}}};
    const std::vector<CMember> now = {{"n2", "10.0.0.2", {"MeroCloudStorage"}}};
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
        EXPECT_EQ(CGlobalConfig::Instance().GetClusterForwardType(), bClusterRead ? 5 : 7);
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
    PutCluster(PadTo(ClusterText({{"n1", "10.0.0.1", {"MeroCloudStorage"}}}), 65535));
    PutCloudStorage(PadTo(CloudStorageText(EntryText("n1", 100)), 65535));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(CloudStorage("n1").GetReqStorage(), 100);
}

TEST_F(ClusterStart, NullLoggerChangesNoResult) {
    OMAdapter::getInstance().setLogger(nullptr);
    PutCluster(ClusterText({{"n1", "10.0.0.1", {"A", "A"}}}));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), ORVA_FAIL);
    PutCluster("no json");
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), ORVA_DATA_INVALID);
    PutCluster(ClusterText({{"n1", "10.0.0.1", {"MeroCloudStorage"}}}));
    PutCloudStorage(CloudStorageText(EntryText("n1", 100) + "," + EntryText("ghost", 1)));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(CloudStorage("n1").GetReqStorage(), 100);
}

constexpr int NUMERIC_DEEP = 10000;

class BadCluster : public ClusterStart, public testing::WithParamInterface<CBadText> {};

TEST_P(BadCluster, GivesACodeAndChangesNothing) {
    LoadFormer({{"old", "10.0.0.9", {"A"}}});
    PutCluster(GetParam().strText);
    const unsigned int uiCallsBefore = m_pStore->GetCallCount();
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), GetParam().iCode);
    EXPECT_THAT(Lines(), ElementsAre(BEGIN, Failure(FUNCTION, GetParam().iCode,
                                                    "get data from cluster node fail.")));
    EXPECT_THAT(NodeIds(), ElementsAre("old"));
    EXPECT_THAT(ContainerAddrs(), ElementsAre(CContainerAddr("old", "A")));
    EXPECT_TRUE(IsLinked("10.0.0.9"));
    EXPECT_EQ(CGlobalConfig::Instance().GetClusterForwardType(), 7);
    EXPECT_EQ(m_pStore->GetCallCount() - uiCallsBefore, 1U) << "cloud storage is not read";
}

/// A cluster document whose "ClusterNode" is an array of this text.
std::string ClusterWithNode(const std::string& strNode) {
    return R"({"ClusterName":"c","ClusterRemark":"r","ClusterCode":"X","ClusterNode":[)" + strNode +
           "]}";
}

std::string GoodNode() {
    return NodeText({"n1", "10.0.0.1", {"A"}});
}

std::string GoodNodeWith(const std::string& strOld, const std::string& strNew) {
    std::string strNode = GoodNode();
    return strNode.replace(strNode.find(strOld), strOld.size(), strNew);
}

INSTANTIATE_TEST_SUITE_P(
    Text, BadCluster,
    testing::ValuesIn(BadTexts({
        {"Truncated", ClusterText({{"n1", "10.0.0.1", {"A"}}}).substr(0, 120)},
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

// ---------------------------------------------------------------- cloud storage at the start

class CloudStorageStart : public ClusterStart {
protected:
    CloudStorageStart() {
        PutCluster(ClusterText({{"n1", "10.0.0.1", {"MeroCloudStorage", "A"}},
                                {"n2", "10.0.0.2", {"MeroCloudStorage"}},
                                {"n3", "10.0.0.3", {"A"}}}));
    }

    /// The order in which entries became tasks, told by their figures.
    std::vector<std::string> TaskMessages() const {
        std::vector<std::string> messages;
        for (const CLogLine& line : Lines()) {
            if (line.strFunction == "CloudStorageInfoToResTask") {
                messages.push_back(line.strMessage);
            }
        }
        return messages;
    }
};

TEST_F(CloudStorageStart, EntryBecomesTheOneTaskOfItsContainer) {
    PutCloudStorage(CloudStorageText(EntryText("n1", 100, ALLOCS)));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    const CContainer container = CloudStorage("n1");
    const std::vector<CResourceTask> tasks = Tasks(container);
    ASSERT_EQ(tasks.size(), 1U);
    const CResourceTask& task = tasks.front();
    KeyValueMap privateInfo;
    task.GetAllPrivateInfo(privateInfo);
    EXPECT_THAT(privateInfo, ElementsAre(Pair("LowPriBitRate", "4"), Pair("ProductType", "P"),
                                         Pair("ReqPicStorage", "-3"), Pair("ReqStorage", "100"),
                                         Pair("ServiceType", "S")));
    EXPECT_EQ(task.GetTaskId(), "");
    EXPECT_EQ(task.GetTaskName(), "");
    EXPECT_TRUE(task.IsSupportShift());
    for (const int32_t iCost :
         {task.GetCpu(), task.GetMem(), task.GetIO(), task.GetNet(), task.GetDisk()}) {
        EXPECT_EQ(iCost, 0);
    }
    EXPECT_EQ(container.GetProductType(), "P");
    EXPECT_EQ(container.GetServiceType(), "S");
    EXPECT_EQ(container.GetReqStorage(), 100);
    EXPECT_EQ(container.GetReqPicStorage(), -3);
    EXPECT_EQ(container.GetBitRate(), 4);
    EXPECT_EQ(container.GetTranBandWidth(), 4) << "the task has none: the bit rate reads through";
    EXPECT_FALSE(container.GetUptadeFlag());
    EXPECT_TRUE(container.GetHasReportedFlag());
}

TEST_F(CloudStorageStart, AllocationsKeepTheirOrder) {
    PutCloudStorage(CloudStorageText(EntryText("n1", 100, ALLOCS)));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    const CContainer container = CloudStorage("n1");
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> ofContainer;
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> ofTask;
    container.GetAllocInfoList(ofContainer);
    Tasks(container).at(0).GetAllocInfoList(ofTask);
    for (const auto& allocInfoList : {ofContainer, ofTask}) {
        ASSERT_EQ(allocInfoList.size(), 2U);
        const ORVA_CLOUD_STORAGE_ALLOC_INFO& first = allocInfoList.front();
        EXPECT_EQ(first.cloudStorageCode, "c2");
        EXPECT_EQ(first.allocStorage, 20);
        EXPECT_EQ(first.usedStorage, 2);
        EXPECT_EQ(first.freeStorage, 0);
        EXPECT_EQ(first.dns, "d2");
        EXPECT_EQ(first.path, "/2");
        EXPECT_EQ(allocInfoList.back().cloudStorageCode, "c1");
    }
}

TEST_F(CloudStorageStart, EntryWithoutAllocationsGivesATaskWithoutAllocations) {
    PutCloudStorage(CloudStorageText(EntryText("n1", 100)));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocInfoList;
    Tasks(CloudStorage("n1")).at(0).GetAllocInfoList(allocInfoList);
    EXPECT_THAT(allocInfoList, IsEmpty());
}

TEST_F(CloudStorageStart, EntriesAreAppliedInTheOrderOfTheirNodes) {
    PutCloudStorage(CloudStorageText(EntryText("n2", -2) + "," + EntryText("n1", 1)));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_THAT(TaskMessages(),
                ElementsAre("product[P] service[S] reqStorage[1] reqPicStorage[-3] lowPri[4]",
                            "product[P] service[S] reqStorage[-2] reqPicStorage[-3] lowPri[4]"));
    EXPECT_EQ(CloudStorage("n1").GetReqStorage(), 1);
    EXPECT_EQ(CloudStorage("n2").GetReqStorage(), -2);
}

TEST_F(CloudStorageStart, LimitsOfTheFiguresPassThrough) {
    PutCloudStorage(
        CloudStorageText(EntryText("n1", INT32_MIN) + "," + EntryText("n2", INT32_MAX)));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(CloudStorage("n1").GetReqStorage(), INT32_MIN);
    EXPECT_EQ(CloudStorage("n2").GetReqStorage(), INT32_MAX);
}

TEST_F(CloudStorageStart, TheLaterOfTwoEntriesOfANodeCounts) {
    PutCloudStorage(CloudStorageText(EntryText("n1", 1) + "," + EntryText("n1", 2)));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(Tasks(CloudStorage("n1")).size(), 1U);
    EXPECT_EQ(CloudStorage("n1").GetReqStorage(), 2);
}

TEST_F(CloudStorageStart, ServiceOfAnMpuMarksTheContainerForAnUpdate) {
    std::string strEntry = EntryText("n1", 1);
    strEntry.replace(strEntry.find("\"S\""), 3, "\"MPU-R\"");
    PutCloudStorage(CloudStorageText(strEntry));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_TRUE(CloudStorage("n1").GetUptadeFlag());
}

TEST_F(CloudStorageStart, EntriesWithoutAContainerCostOneLineEach) {
    PutCloudStorage(CloudStorageText(EntryText("n3", 1) + "," + EntryText("ghost", 1) + "," +
                                     EntryText("n2", 7)));
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    const auto unknown = [](const std::string& strNodeId) {
        return Err(
            "Container mgr set resource task", 2, "container_mgr", "SetResourceTask",
            "find container failed, node id=" + strNodeId + " container type=MeroCloudStorage");
    };
    EXPECT_THAT(m_logger.GetLinesOf("container_mgr"), ElementsAre(unknown("ghost"), unknown("n3")));
    EXPECT_THAT(ContainerAddrs(),
                ElementsAre(CContainerAddr("n1", "A"), CContainerAddr("n1", "MeroCloudStorage"),
                            CContainerAddr("n2", "MeroCloudStorage"), CContainerAddr("n3", "A")));
    EXPECT_EQ(CloudStorage("n2").GetReqStorage(), 7);
    EXPECT_EQ(AllContainers()[CContainerAddr("n3", "A")].GetTotalTask(), 0U);
}

TEST_F(CloudStorageStart, NothingStoredIsASuccessWithoutTasks) {
    for (const std::optional<std::string>& text :
         {std::optional<std::string>(), std::optional<std::string>(CloudStorageText(""))}) {
        SCOPED_TRACE(text.value_or("no data"));
        PutCloudStorage(text);
        EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
        EXPECT_EQ(CloudStorage("n1").GetTotalTask(), 0U);
        EXPECT_THAT(TaskMessages(), IsEmpty());
    }
}

TEST_F(CloudStorageStart, AbsentDocumentIsToldAndIsASuccess) {
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(m_logger.GetLines().back(), NO_CLOUD_STORAGE);
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2", "n3"));
}

class BadCloudStorage : public CloudStorageStart, public testing::WithParamInterface<CBadText> {};

TEST_P(BadCloudStorage, GivesACodeAndAppliesNoTask) {
    PutCloudStorage(GetParam().strText);
    EXPECT_EQ(Framework().InitNodeAndContainerFromZK(), GetParam().iCode);
    EXPECT_EQ(Lines().back(), Failure(FUNCTION, GetParam().iCode,
                                      "get cloud storage info from cluster node fail."));
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2", "n3"));
    EXPECT_EQ(ContainerAddrs().size(), 4U);
    EXPECT_EQ(CloudStorage("n1").GetTotalTask(), 0U);
    EXPECT_THAT(TaskMessages(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Text, BadCloudStorage,
    testing::ValuesIn(BadTexts({
        {"Truncated", CloudStorageText(EntryText("n1", 1)).substr(0, 60)},
        {"DeepArrays", Repeat("[", NUMERIC_DEEP) + Repeat("]", NUMERIC_DEEP)},
        {"DeepEntries", CloudStorageText(Repeat("[", NUMERIC_DEEP) + Repeat("]", NUMERIC_DEEP))},
        {"Oversized", PadTo(CloudStorageText(EntryText("n1", 1)), 65536), STORE_TEXT_TOO_LONG},
        {"WrittenFromAnEmptyMap", R"({"CloudStorageSet":null})"},
        {"SetIsObject", R"({"CloudStorageSet":{}})"},
        {"EntryIsEmpty", CloudStorageText("{}")},
        {"EntryIsNull", CloudStorageText("null")},
        {"EntryIsArray", CloudStorageText("[]")},
        {"EntryIsNumber", CloudStorageText("1")},
        {"SecondEntryIsBad", CloudStorageText(EntryText("n1", 1) + ",{}")},
        {"NvrCodeIsNumber", CloudStorageText(R"({"NvrCode":1})")},
        {"FigureIsMissing",
         CloudStorageText(R"({"NvrCode":"n1","ServiceType":"S","ProductType":"P"})")},
        {"AllocationIsEmpty", CloudStorageText(EntryText("n1", 1, "[{}]"))},
        {"AllocationIsArray", CloudStorageText(EntryText("n1", 1, "[[]]"))},
        {"AllocSizeIsText",
         CloudStorageText(EntryText(
             "n1", 1, R"([{"Code":"c","AllocSize":"5","UsedSize":2,"Dns":"d","Path":"/"}])"))},
    })),
    NAME_OF_BAD_TEXT);

// ---------------------------------------------------------------- the steps by themselves

using ClusterSteps = ClusterStart;

TEST_F(ClusterSteps, NodeTableIsReplaced) {
    EXPECT_EQ(Framework().InitNodeMgr({MakeNode("n1", {"A"}), MakeNode("n2", {})}), 0);
    EXPECT_EQ(Framework().InitNodeMgr({MakeNode("n3", {"A"})}), 0);
    EXPECT_THAT(NodeIds(), ElementsAre("n3"));
    EXPECT_THAT(ContainerAddrs(), IsEmpty());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ClusterSteps, ContainerTableIsReplaced) {
    EXPECT_EQ(Framework().InitContainerMgr({MakeNode("n1", {"A", "B"})}), 0);
    EXPECT_EQ(Framework().InitContainerMgr({MakeNode("n1", {"B"}), MakeNode("n2", {"B"})}), 0);
    EXPECT_THAT(ContainerAddrs(),
                ElementsAre(CContainerAddr("n1", "B"), CContainerAddr("n2", "B")));
    EXPECT_THAT(NodeIds(), IsEmpty());
    EXPECT_EQ(Framework().InitContainerMgr({}), 0);
    EXPECT_THAT(ContainerAddrs(), IsEmpty());
}

TEST_F(ClusterSteps, ContainerTableStaysWhenItCannotBeReplaced) {
    EXPECT_EQ(Framework().InitContainerMgr({MakeNode("n1", {"A"})}), 0);
    m_logger.Clear();
    EXPECT_EQ(Framework().InitContainerMgr({MakeNode("n2", {"A", "A"})}), ORVA_FAIL);
    EXPECT_THAT(ContainerAddrs(), ElementsAre(CContainerAddr("n1", "A")));
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAreArray(GenLines({{"n2", "A"}, {"n2", "A"}}) +
                                 std::vector<CLogLine>{INSERT_FAILED, LOAD_FAILED, GEN_FAILED}));
}

TEST_F(ClusterSteps, NodesAndContainersAreReplacedTogether) {
    EXPECT_EQ(Framework().InitNodeAndContainer({MakeNode("n1", {"A"})}), 0);
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    EXPECT_THAT(ContainerAddrs(), ElementsAre(CContainerAddr("n1", "A")));
    EXPECT_THAT(m_logger.GetLines(), ElementsAreArray(GenLines({{"n1", "A"}})));

    m_logger.Clear();
    EXPECT_EQ(Framework().InitNodeAndContainer({MakeNode("n2", {"A", "A"})}), ORVA_FAIL);
    EXPECT_THAT(NodeIds(), ElementsAre("n2"));
    EXPECT_THAT(ContainerAddrs(), ElementsAre(CContainerAddr("n1", "A")));
    EXPECT_EQ(m_logger.GetLines().back(), CONTAINER_MGR_FAILED);

    m_logger.Clear();
    EXPECT_EQ(Framework().InitNodeAndContainer({}), 0);
    EXPECT_THAT(NodeIds(), IsEmpty());
    EXPECT_THAT(ContainerAddrs(), IsEmpty());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ClusterSteps, GeneratedContainersAreAddedToTheMap) {
    ContainerMap containerMap;
    containerMap[CContainerAddr("n0", "A")].SetTaskTotalDisk(7);
    EXPECT_EQ(
        Framework().GenContainerTable({MakeNode("n1", {"A"}), MakeNode("n2", {})}, containerMap),
        0);
    EXPECT_THAT(Addresses(containerMap),
                ElementsAre(CContainerAddr("n0", "A"), CContainerAddr("n1", "A")));
    EXPECT_EQ(containerMap[CContainerAddr("n0", "A")].GetTaskTotalDisk(), 7);
    EXPECT_THAT(ContainerAddrs(), IsEmpty()) << "the registry is not touched";
}

TEST_F(ClusterSteps, LoadingStopsAtTheFirstAddressThatIsThere) {
    ContainerMap containerMap;
    containerMap[CContainerAddr("n1", "B")].SetTaskTotalDisk(7);
    EXPECT_EQ(Framework().LoadContainerInfo({{"n1", "A"}, {"n1", "B"}, {"n1", "C"}}, containerMap),
              ORVA_FAIL);
    EXPECT_THAT(Addresses(containerMap),
                ElementsAre(CContainerAddr("n1", "A"), CContainerAddr("n1", "B")));
    EXPECT_EQ(containerMap[CContainerAddr("n1", "B")].GetTaskTotalDisk(), 7);
    EXPECT_EQ(m_logger.GetLines().back(), INSERT_FAILED);
}

TEST_F(ClusterSteps, NothingToLoadIsASuccess) {
    ContainerMap containerMap;
    EXPECT_EQ(Framework().LoadContainerInfo({}, containerMap), 0);
    EXPECT_EQ(Framework().GenContainerTable({}, containerMap), 0);
    EXPECT_TRUE(containerMap.empty());
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

}  // namespace
