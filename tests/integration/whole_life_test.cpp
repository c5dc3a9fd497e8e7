#include <memory>
#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "fired_watches.h"
#include "reference_host/accepted_links.h"
#include "reference_host/host_settings.h"
#include "reference_host/zookeeper_store.h"
#include "support/reconfigure.h"
#include "support/registry_fixture.h"
#include "zookeeper_server.h"

namespace {

using testing::ElementsAre;

constexpr char CLUSTER_CODE[] = "WholeLife";
constexpr char CLOUD_STORAGE[] = "MeroCloudStorage";

constexpr char CONFIGURATION[] =
    "{\"IsFaultShift\":true,\"IsLoadBalance\":false,\"IsLoadBalanceOnePeriod\":true}\n";

constexpr char DATABASES[] =
    "{\"MasterDB\":{\"DBPort\":6001,\"DBToken\":\"000\",\"NodeCode\":\"n1\",\"NodeIp\":\"i1\"},"
    "\"SlaveDB\":[{\"DBPort\":6002,\"DBToken\":\"001\",\"NodeCode\":\"n2\",\"NodeIp\":\"i2\"}]}\n";

constexpr char CLOUD_STORAGE_OF_N2[] =
    "{\"LowpriBit\":4,\"NodeList\":[{\"AllocSize\":10,\"Code\":\"c2\",\"Dns\":\"d\","
    "\"Path\":\"/p\",\"UsedSize\":1}],\"NvrCode\":\"n2\",\"ProductType\":\"P\","
    "\"ReqPicSize\":3,\"ReqSize\":2,\"ServiceType\":\"S\"}";

/// A cluster whose documents lie on a coordination server, as another program sees them.
class WholeLife : public CRegistryTest {
protected:
    WholeLife() {
        Reconfigure(&CHostSettings::strClusterCode, CLUSTER_CODE);
        SetStore(std::make_shared<CZooKeeperStore>(Options()));
        SetNodeEventHandler(&RecordFired);
        Put("/ClusterConfig", CONFIGURATION);
        Put("/Cluster", ClusterText({{"n1", {"A", CLOUD_STORAGE}}, {"n2", {"A", CLOUD_STORAGE}}}));
        Put("/CloudStorage", std::string("{\"CloudStorageSet\":[") + CLOUD_STORAGE_OF_N2 + "]}\n");
        Put("/CenterDB", DATABASES);
        Put("/MEROMGR", "{\"MasterMGR\":{\"NodeCode\":\"n1\",\"NodeIp\":\"i1\"}}\n");
        Put("/MERO/CGList", "");
    }

    static CZooKeeperOptions Options() {
        CZooKeeperOptions options;
        options.strServers = SharedServer().Address();
        return options;
    }

    static std::string NodePath(const std::string& strSuffix) {
        return std::string("/Cloud") + CLUSTER_CODE + strSuffix;
    }

    void Put(const std::string& strSuffix, const std::string& strText) {
        ASSERT_EQ(m_outside.Write(NodePath(strSuffix), strText), 0);
    }

    std::string Stored(const std::string& strSuffix) {
        CStoreAnswer answer;
        EXPECT_EQ(m_outside.Read(NodePath(strSuffix), nullptr, answer), 0);
        return answer.text.value_or("nothing");
    }

    void Load() {
        CFrameworkCommon& framework = CFrameworkCommon::Instance();
        EXPECT_EQ(framework.InitClusterConfigFromZK(), 0);
        EXPECT_EQ(framework.InitNodeAndContainerFromZK(), 0);
        EXPECT_EQ(framework.ParseCDBFromZK(true), 0);
        EXPECT_EQ(framework.ParseMGRFromZK(true), 0);
        EXPECT_EQ(CFrameworkCGCommon::Instance().ReloadClusterCGInfoList(), 0);
    }

    void ExpectLoaded();
    void Join();
    void Report();
    void Shift();
    void RemoveContainers();
    void AddAndRemoveCGs();
    void Promote();
    void LoadAgain();

    CZooKeeperStore m_outside{Options()};
};

void WholeLife::ExpectLoaded() {
    EXPECT_TRUE(GetHandedOverSettings().bFaultShift);
    EXPECT_FALSE(GetHandedOverSettings().bLoadBalance);
    EXPECT_EQ(GetHandedOverSettings().iClusterForwardType, 7);
    EXPECT_TRUE(IsAcceptedLink("10.0.0.1", VALIDATED_LINK_TYPE));
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2"));
    EXPECT_THAT(AddressesOf(AllContainers()),
                ElementsAre(CContainerAddr("n1", "A"), CContainerAddr("n1", CLOUD_STORAGE),
                            CContainerAddr("n2", "A"), CContainerAddr("n2", CLOUD_STORAGE)));
    EXPECT_EQ(AllContainers()[CContainerAddr("n2", CLOUD_STORAGE)].GetReqStorage(), 2);
    EXPECT_EQ(CFrameworkCommon::Instance().GetClusterMGRInfo().GetMasterMGR().GetNodeId(), "n1");
}

void WholeLife::Join() {
    const std::string strBefore = Stored("/Cluster");
    EXPECT_EQ(CFrameworkCommon::Instance().AddNodeAndContainer(
                  {{"n3", MakeStoredNode("n3", {"A"})}, {"n4", MakeStoredNode("n4", {})}}),
              0);
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n2", "n3", "n4"));
    EXPECT_EQ(Stored("/Cluster"), strBefore);
}

/// A report of what n1 asks for and was given, which then goes to the store.
void WholeLife::Report() {
    CResourceTask task;
    task.InsertSingleKeyValue(PSZ_TASK_PRODUCT_TYPE, "Q");
    task.InsertSingleKeyValue(PSZ_TASK_SERVICE_TYPE, "MPU-R");
    task.InsertSingleKeyValue(PSZ_TASK_REQ_STORAGE, "100");
    task.InsertSingleKeyValue(PSZ_TASK_REQ_PIC_STORAGE, "50");
    task.InsertSingleKeyValue(PSZ_TASK_LOW_PRI_BIT_RATE, "8");
    ORVA_CLOUD_STORAGE_ALLOC_INFO allocInfo;
    allocInfo.cloudStorageCode = "c1";
    allocInfo.allocStorage = 90;
    task.SetAllocInfoList(allocInfo);
    CContainerMgr& mgr = CContainerMgr::Instance();
    const CContainerAddr addr("n1", CLOUD_STORAGE);
    mgr.SetResourceTask(addr, {task}, CONTAINER_STATUS_REPORT_REQ);
    EXPECT_TRUE(AllContainers()[addr].GetUptadeFlag());
    mgr.SetUptadeFlag("MPU-R", false);
    mgr.SaveDataToZK(addr);
    EXPECT_FALSE(AllContainers()[addr].GetUptadeFlag());
    EXPECT_EQ(Stored("/CloudStorage"),
              std::string("{\"CloudStorageSet\":[{\"LowpriBit\":8,\"NodeList\":[{\"AllocSize\":90,"
                          "\"Code\":\"c1\",\"Dns\":\"\",\"Path\":\"\",\"UsedSize\":0}],"
                          "\"NvrCode\":\"n1\",\"ProductType\":\"Q\",\"ReqPicSize\":50,"
                          "\"ReqSize\":100,\"ServiceType\":\"MPU-R\"},") +
                  CLOUD_STORAGE_OF_N2 + "]}\n");
}

/// A task goes from n1 to n3, as a decision with a number of its own.
void WholeLife::Shift() {
    CContainerMgr& mgr = CContainerMgr::Instance();
    CScheduleMgr& scheduleMgr = CScheduleMgr::Instance();
    const CContainerAddr from("n1", "A");
    const CContainerAddr to("n3", "A");
    CResourceTask task;
    task.SetTaskId("t1");
    mgr.SetResourceTask(from, {task}, CONTAINER_STATUS_REPORT_REQ);
    ContainerMap available;
    CFrameworkCommon::Instance().GetAvailableContainer("A", available);
    EXPECT_THAT(AddressesOf(available), ElementsAre(from, CContainerAddr("n2", "A"), to));

    scheduleMgr.AddShiftContainer(from);
    EXPECT_TRUE(scheduleMgr.IsScheduling());
    unsigned long long ullDecision = 0;
    EXPECT_EQ(scheduleMgr.IncreaseDecisionVerNum(ullDecision), 0);
    EXPECT_EQ(ullDecision, 1U);
    EXPECT_EQ(Stored("/Version"), "{\"DecisionVerNum\":1,\"MasterVerNum\":0}\n");
    mgr.AddResourceTask(to, {task});
    mgr.RemoveResourceTask(from, {"t1"});
    scheduleMgr.RemoveShiftContainer(from);
    EXPECT_FALSE(scheduleMgr.IsScheduling());
    EXPECT_EQ(AllContainers()[from].GetTotalTask(), 0U);
    EXPECT_EQ(AllContainers()[to].GetTotalTask(), 1U);
}

void WholeLife::RemoveContainers() {
    CFrameworkCommon& framework = CFrameworkCommon::Instance();
    EXPECT_EQ(framework.RemoveNodeContainerAndFlush("n2", "A"), 0);
    EXPECT_EQ(Stored("/Cluster"),
              ClusterText({{"n1", {"A", CLOUD_STORAGE}}, {"n2", {CLOUD_STORAGE}}}));
    EXPECT_EQ(framework.RemoveNodeContainerAndFlush("n2", CLOUD_STORAGE), 0);
    EXPECT_EQ(Stored("/Cluster"), ClusterText({{"n1", {"A", CLOUD_STORAGE}}}));
    EXPECT_THAT(NodeIds(), ElementsAre("n1", "n3", "n4"));
}

CClusterCGInfo MakeDecidedCG(const std::string& strNode, const std::string& strFloatCode) {
    return MakeCG(strNode, strFloatCode, "i-" + strFloatCode,
                  std::to_string(CScheduleMgr::Instance().GetDecisionVerNum()));
}

void WholeLife::AddAndRemoveCGs() {
    CFrameworkCGCommon& registry = CFrameworkCGCommon::Instance();
    const std::string strFirst =
        "[{\"DecisionVerNum\":\"1\",\"FloatCGCode\":\"f1\",\"FloatIP\":\"i-f1\","
        "\"NVRCode\":\"n1\"}]\n";
    EXPECT_EQ(registry.AddSingleClusterCGInfo(MakeDecidedCG("n1", "f1")), 0);
    EXPECT_EQ(Stored("/MERO/CGList"), strFirst);
    EXPECT_TRUE(AwaitFired(NodePath("/MERO/CGList"))) << "the load has set the watch";
    EXPECT_EQ(registry.AddSingleClusterCGInfo(MakeDecidedCG("n3", "f3")), ORVA_TARN_FCG_EXCEED_MAX);
    EXPECT_EQ(Stored("/MERO/CGList"), strFirst);
    EXPECT_EQ(registry.RemoveClusterCGInfo("f1"), 0);
    EXPECT_EQ(Stored("/MERO/CGList"), "");
    EXPECT_EQ(registry.AddSingleClusterCGInfo(MakeDecidedCG("n3", "f3")), 0);
    EXPECT_EQ(Stored("/MERO/CGList"),
              "[{\"DecisionVerNum\":\"1\",\"FloatCGCode\":\"f3\",\"FloatIP\":\"i-f3\","
              "\"NVRCode\":\"n3\"}]\n");
}

void WholeLife::Promote() {
    CFrameworkCommon& framework = CFrameworkCommon::Instance();
    CClusterDBInfo promoted;
    ASSERT_TRUE(framework.GetClusterDBInfo().GetCDBInfo("n2", promoted));
    promoted.SetDBType(CLUSTER_DB_MASTER);
    EXPECT_EQ(framework.UpdateClusterCDB(promoted, false), 0);
    EXPECT_EQ(Stored("/CenterDB"), DATABASES);
    CClusterDBInfo replaced;
    replaced.SetNodeId("n3");
    replaced.SetNodeIp("i3");
    replaced.SetCDBToken("001");
    EXPECT_EQ(framework.UpdateClusterCDB(replaced, true), 0);
    EXPECT_EQ(Stored("/CenterDB"),
              "{\"MasterDB\":{\"DBPort\":6001,\"DBToken\":\"000\",\"NodeCode\":\"n2\","
              "\"NodeIp\":\"i2\"},\"SlaveDB\":[{\"DBPort\":6002,\"DBToken\":\"001\","
              "\"NodeCode\":\"n3\",\"NodeIp\":\"i3\"}]}\n");
    EXPECT_TRUE(AwaitFired(NodePath("/CenterDB")));
    EXPECT_EQ(CScheduleMgr::Instance().IncreaseMasterVerNum(), 0);
    EXPECT_EQ(Stored("/Version"), "{\"DecisionVerNum\":1,\"MasterVerNum\":1}\n");
}

/// What the store holds comes back, what was in memory alone does not.
void WholeLife::LoadAgain() {
    EXPECT_EQ(CScheduleMgr::Instance().SetDecisionVerNum(5), 0);
    Put("/Version", "{\"DecisionVerNum\":8,\"MasterVerNum\":9}\n");
    EXPECT_EQ(CScheduleMgr::Instance().Reload(), 0);
    EXPECT_EQ(CScheduleMgr::Instance().GetDecisionVerNum(), 8U);
    EXPECT_EQ(CScheduleMgr::Instance().GetMasterVerNum(), 9U);
    Load();
    EXPECT_THAT(NodeIds(), ElementsAre("n1"));
    EXPECT_THAT(AddressesOf(AllContainers()),
                ElementsAre(CContainerAddr("n1", "A"), CContainerAddr("n1", CLOUD_STORAGE)));
    EXPECT_EQ(AllContainers()[CContainerAddr("n1", CLOUD_STORAGE)].GetReqStorage(), 100);
    EXPECT_TRUE(CFrameworkCommon::Instance().GetClusterDBInfo().IsMasterDB("n2"));
    EXPECT_TRUE(CFrameworkCommon::Instance().GetClusterDBInfo().IsSlaveDB("n3"));
    CClusterCGInfoList cached;
    CFrameworkCGCommon::Instance().GetClusterCGInfoList(cached);
    EXPECT_TRUE(cached.IsNodeExist("n3"));
    EXPECT_EQ(cached.GetSize(), 1U);
}

TEST_F(WholeLife, LeavesEachStepInTheStoreAndComesBackFromIt) {
    Load();
    ExpectLoaded();
    Join();
    Report();
    Shift();
    RemoveContainers();
    AddAndRemoveCGs();
    Promote();
    LoadAgain();
    EXPECT_EQ(Stored("/ClusterConfig"), CONFIGURATION);
}

}  // namespace
