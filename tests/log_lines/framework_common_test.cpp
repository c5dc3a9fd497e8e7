#include "log_lines/log_lines.h"

// "init node manager fail." is never written: the node registry takes every list.

namespace {

constexpr char CLOUD_STORAGE_TEXT[] =
    R"({"CloudStorageSet":[{"NvrCode":"n1","ServiceType":"s","ProductType":"p","ReqSize":1,)"
    R"("ReqPicSize":2,"LowpriBit":3}]})";

CFrameworkCommon& Framework() {
    return CFrameworkCommon::Instance();
}

std::map<std::string, CNode> OneNode(const std::list<std::string>& containers) {
    return {{"n1", MakeStoredNode("n1", containers)}};
}

/// A cluster whose only node has a database that the update names.
void SetSlave() {
    CClusterDBInfo slave;
    slave.SetDBType(CLUSTER_DB_SLAVE);
    Framework().GetClusterDBInfo() = CClusterDBZNodeInfo(CClusterDBInfo(), {slave});
}

const std::vector<CScenario> LOADING = {
    {"InitClusterConfigOfAnAbsentNode",
     [](CScene&) { Framework().InitClusterConfigFromZK(); },
     {"INFO|framework_common|InitClusterConfigFromZK|init cluster config from zk||",
      "INFO|framework_common|InitClusterConfigFromZK|init framework||cluster config info is empty, "
      "not need to init framework."}},
    {"InitClusterConfigReadFails",
     [](CScene& scene) {
         scene.store.FailCall(1, 5);
         Framework().InitClusterConfigFromZK();
     },
     {"INFO|framework_common|InitClusterConfigFromZK|init cluster config from zk||",
      "ERR|framework_common|InitClusterConfigFromZK|init framework|5|get cloud storage info from "
      "cluster node fail."}},
    {"InitNodeAndContainerOfAnAbsentNode",
     [](CScene&) { Framework().InitNodeAndContainerFromZK(); },
     {"INFO|framework_common|InitNodeAndContainerFromZK|init node and container from zk||",
      "INFO|framework_common|InitNodeAndContainerFromZK|init framework||cluster node is empty, not "
      "need to init framework."}},
    {"InitNodeAndContainerReadFails",
     [](CScene& scene) {
         scene.store.FailCall(1, 5);
         Framework().InitNodeAndContainerFromZK();
     },
     {"INFO|framework_common|InitNodeAndContainerFromZK|init node and container from zk||",
      "ERR|framework_common|InitNodeAndContainerFromZK|init framework|5|get data from cluster node "
      "fail."}},
    {"InitNodeAndContainerOfATypeThatStandsTwice",
     [](CScene& scene) {
         scene.store.Put("/CloudX/Cluster", ClusterText({{"n1", {"A", "A"}}}));
         Framework().InitNodeAndContainerFromZK();
     },
     {"INFO|framework_common|InitNodeAndContainerFromZK|init node and container from zk||",
      "INFO|framework_common|GenContainerTable|Gen Container Table||node=%s container type=%s "
      "|node=n1 container type=A ",
      "INFO|framework_common|GenContainerTable|Gen Container Table||node=%s container type=%s "
      "|node=n1 container type=A ",
      "ERR|plugin_mgr|IsContainerSupportFaultShift|is container support fault shift|1|do not "
      "support, type[%s]|do not support, type[A]",
      "INFO|framework_common|LoadContainerInfo|load Container info||node=%s container type=%s "
      "|node=n1 container type=A ",
      "ERR|plugin_mgr|IsContainerSupportFaultShift|is container support fault shift|1|do not "
      "support, type[%s]|do not support, type[A]",
      "INFO|framework_common|LoadContainerInfo|load Container info||node=%s container type=%s "
      "|node=n1 container type=A ",
      "ERR|framework_common|LoadContainerInfo|load container info|1|insert map failed",
      "ERR|framework_common|GenContainerTable|init container mgr|1|load container info fail.",
      "ERR|framework_common|InitContainerMgr|framework common, init container mgr|1|gen container "
      "table fail.",
      "ERR|framework_common|InitNodeAndContainer|framework common, init node and contiaer|1|init "
      "contianer manager fail.",
      "ERR|framework_common|InitNodeAndContainerFromZK|framework common, "
      "InitNodeAndContainerFromZK|1|init node Container fail."}},
    {"InitNodeAndContainerWithoutCloudStorage",
     [](CScene& scene) {
         scene.store.Put("/CloudX/Cluster", ClusterText({{"n1", {}}}));
         Framework().InitNodeAndContainerFromZK();
     },
     {"INFO|framework_common|InitNodeAndContainerFromZK|init node and container from zk||",
      "INFO|framework_common|InitNodeAndContainerFromZK|init framework||cloud storage info is "
      "empty, not need to init framework."}},
    {"InitNodeAndContainerReadOfCloudStorageFails",
     [](CScene& scene) {
         scene.store.Put("/CloudX/Cluster", ClusterText({{"n1", {}}}));
         scene.store.FailCall(2, 5);
         Framework().InitNodeAndContainerFromZK();
     },
     {"INFO|framework_common|InitNodeAndContainerFromZK|init node and container from zk||",
      "ERR|framework_common|InitNodeAndContainerFromZK|init framework|5|get cloud storage info "
      "from cluster node fail."}},
    {"InitNodeAndContainerOfAWholeCluster",
     [](CScene& scene) {
         scene.store.Put("/CloudX/Cluster",
                         ClusterText({{"n1", {"MeroCloudStorage"}}, {"n2", {"A"}}}));
         scene.store.Put("/CloudX/CloudStorage", CLOUD_STORAGE_TEXT);
         Framework().InitNodeAndContainerFromZK();
     },
     {"INFO|framework_common|InitNodeAndContainerFromZK|init node and container from zk||",
      "INFO|framework_common|GenContainerTable|Gen Container Table||node=%s container type=%s "
      "|node=n1 container type=MeroCloudStorage ",
      "INFO|framework_common|GenContainerTable|Gen Container Table||node=%s container type=%s "
      "|node=n2 container type=A ",
      "ERR|plugin_mgr|IsContainerSupportFaultShift|is container support fault shift|1|do not "
      "support, type[%s]|do not support, type[MeroCloudStorage]",
      "INFO|framework_common|LoadContainerInfo|load Container info||node=%s container type=%s "
      "|node=n1 container type=MeroCloudStorage ",
      "ERR|plugin_mgr|IsContainerSupportFaultShift|is container support fault shift|1|do not "
      "support, type[%s]|do not support, type[A]",
      "INFO|framework_common|LoadContainerInfo|load Container info||node=%s container type=%s "
      "|node=n2 container type=A ",
      R"(INFO|cluster_cloud_storage_znode_info|ParseJson|cluster storage info||parse json text[%s], size=%d|parse json text[{"CloudStorageSet":[{"NvrCode":"n1","ServiceType":"s","ProductType":"p","ReqSize":1,"ReqPicSize":2,"LowpriBit":3}]}], size=1)",
      "INFO|framework_common|CloudStorageInfoToResTask|ORVA Cloud storage info to "
      "resTask||product[%s] service[%s] reqStorage[%d] reqPicStorage[%d] lowPri[%d]|product[p] "
      "service[s] reqStorage[1] reqPicStorage[2] lowPri[3]",
      "ERR|resource_task|GetValueByKey|resource task, get value by key|1|can not find, key[%s], "
      "value[%s]|can not find, key[TranBandWidth], value[3]",
      "TRACE|container|CalcCloudStorageInfo|||CContainer:m_iReqStorage:%d,m_iBitRate:%d,m_"
      "iReqPicStorage:%d,m_bUpdateFlag:%d.|CContainer:m_iReqStorage:1,m_iBitRate:3,m_"
      "iReqPicStorage:2,m_bUpdateFlag:0."}},
    {"InitNodeAndContainerWithCloudStorageOfAnUnknownContainer",
     [](CScene& scene) {
         scene.store.Put("/CloudX/Cluster", ClusterText({}));
         scene.store.Put("/CloudX/CloudStorage", CLOUD_STORAGE_TEXT);
         Framework().InitNodeAndContainerFromZK();
     },
     {"INFO|framework_common|InitNodeAndContainerFromZK|init node and container from zk||",
      R"(INFO|cluster_cloud_storage_znode_info|ParseJson|cluster storage info||parse json text[%s], size=%d|parse json text[{"CloudStorageSet":[{"NvrCode":"n1","ServiceType":"s","ProductType":"p","ReqSize":1,"ReqPicSize":2,"LowpriBit":3}]}], size=1)",
      "INFO|framework_common|CloudStorageInfoToResTask|ORVA Cloud storage info to "
      "resTask||product[%s] service[%s] reqStorage[%d] reqPicStorage[%d] lowPri[%d]|product[p] "
      "service[s] reqStorage[1] reqPicStorage[2] lowPri[3]",
      "ERR|container_mgr|SetResourceTask|Container mgr set resource task|2|find container failed, "
      "node id=%s container type=%s|find container failed, node id=n1 container "
      "type=MeroCloudStorage"}},
    {"GenContainerTable",
     [](CScene&) {
         ContainerMap table;
         Framework().GenContainerTable({MakeStoredNode("n1", {"A"})}, table);
     },
     {"INFO|framework_common|GenContainerTable|Gen Container Table||node=%s container type=%s "
      "|node=n1 container type=A ",
      "ERR|plugin_mgr|IsContainerSupportFaultShift|is container support fault shift|1|do not "
      "support, type[%s]|do not support, type[A]",
      "INFO|framework_common|LoadContainerInfo|load Container info||node=%s container type=%s "
      "|node=n1 container type=A "}},
    {"GenContainerTableOfATypeThatStandsTwice",
     [](CScene&) {
         ContainerMap table;
         Framework().GenContainerTable({MakeStoredNode("n1", {"A", "A"})}, table);
     },
     {"INFO|framework_common|GenContainerTable|Gen Container Table||node=%s container type=%s "
      "|node=n1 container type=A ",
      "INFO|framework_common|GenContainerTable|Gen Container Table||node=%s container type=%s "
      "|node=n1 container type=A ",
      "ERR|plugin_mgr|IsContainerSupportFaultShift|is container support fault shift|1|do not "
      "support, type[%s]|do not support, type[A]",
      "INFO|framework_common|LoadContainerInfo|load Container info||node=%s container type=%s "
      "|node=n1 container type=A ",
      "ERR|plugin_mgr|IsContainerSupportFaultShift|is container support fault shift|1|do not "
      "support, type[%s]|do not support, type[A]",
      "INFO|framework_common|LoadContainerInfo|load Container info||node=%s container type=%s "
      "|node=n1 container type=A ",
      "ERR|framework_common|LoadContainerInfo|load container info|1|insert map failed",
      "ERR|framework_common|GenContainerTable|init container mgr|1|load container info fail."}},
    {"LoadContainerInfoOfATypeThatStandsTwice",
     [](CScene&) {
         ContainerMap table;
         Framework().LoadContainerInfo({{"n1", "A"}, {"n1", "A"}}, table);
     },
     {"ERR|plugin_mgr|IsContainerSupportFaultShift|is container support fault shift|1|do not "
      "support, type[%s]|do not support, type[A]",
      "INFO|framework_common|LoadContainerInfo|load Container info||node=%s container type=%s "
      "|node=n1 container type=A ",
      "ERR|plugin_mgr|IsContainerSupportFaultShift|is container support fault shift|1|do not "
      "support, type[%s]|do not support, type[A]",
      "INFO|framework_common|LoadContainerInfo|load Container info||node=%s container type=%s "
      "|node=n1 container type=A ",
      "ERR|framework_common|LoadContainerInfo|load container info|1|insert map failed"}},
    {"ParseCDBReadFails",
     [](CScene& scene) {
         scene.store.FailCall(1, 5);
         Framework().ParseCDBFromZK(true);
     },
     {"ERR|cluster_db_znode_info|ParseFromZK|cdb info, parse form zk|1|get center db info from zk "
      "fail."}},
    {"ParseMGRReadFails",
     [](CScene& scene) {
         scene.store.FailCall(1, 5);
         Framework().ParseMGRFromZK(true);
     },
     {"ERR|cluster_mgr_znode_info|ParseFromZK|cmgr info, parse form zk|1|get center mgr info from "
      "zk fail."}},
};

const std::vector<CScenario> MEMBERS = {
    {"AddNodeAndContainer",
     [](CScene&) { Framework().AddNodeAndContainer(OneNode({"A"})); },
     {"INFO|framework_common|GenContainerTable|Gen Container Table||node=%s container type=%s "
      "|node=n1 container type=A ",
      "ERR|plugin_mgr|IsContainerSupportFaultShift|is container support fault shift|1|do not "
      "support, type[%s]|do not support, type[A]",
      "INFO|framework_common|LoadContainerInfo|load Container info||node=%s container type=%s "
      "|node=n1 container type=A "}},
    {"AddNodeAndContainerOfATypeThatStandsTwice",
     [](CScene&) {
         Framework().AddNodeAndContainer(OneNode({"A", "A"}));
     },
     {"INFO|framework_common|GenContainerTable|Gen Container Table||node=%s container type=%s "
      "|node=n1 container type=A ",
      "INFO|framework_common|GenContainerTable|Gen Container Table||node=%s container type=%s "
      "|node=n1 container type=A ",
      "ERR|plugin_mgr|IsContainerSupportFaultShift|is container support fault shift|1|do not "
      "support, type[%s]|do not support, type[A]",
      "INFO|framework_common|LoadContainerInfo|load Container info||node=%s container type=%s "
      "|node=n1 container type=A ",
      "ERR|plugin_mgr|IsContainerSupportFaultShift|is container support fault shift|1|do not "
      "support, type[%s]|do not support, type[A]",
      "INFO|framework_common|LoadContainerInfo|load Container info||node=%s container type=%s "
      "|node=n1 container type=A ",
      "ERR|framework_common|LoadContainerInfo|load container info|1|insert map failed",
      "ERR|framework_common|GenContainerTable|init container mgr|1|load container info fail.",
      "ERR|framework_common|AddNodeAndContainer|framework common, init container mgr|1|gen "
      "container table fail."}},
    {"RemoveNodeContainerFromTheRegistryAlone",
     [](CScene& scene) {
         Framework().AddNodeAndContainer(OneNode({"A", "B"}));
         scene.logger.Clear();
         Framework().RemoveNodeContainerAndFlush("n1", "A");
     },
     {"INFO|framework_common|RemoveNodeContainer|framework common, Remove node container from "
      "cache||node id[%s], container id[%s], left container num[%d].|node id[n1], container id[A], "
      "left container num[1]."}},
    {"RemoveNodeContainerFromTheStore",
     [](CScene& scene) {
         scene.store.Put("/CloudX/Cluster", ClusterText({{"n1", {"A", "B"}}}));
         Framework().AddNodeAndContainer(OneNode({"A", "B"}));
         scene.logger.Clear();
         Framework().RemoveNodeContainerAndFlush("n1", "A");
     },
     {"INFO|framework_common|RemoveNodeContainer|framework common, Remove node container from "
      "cache||node id[%s], container id[%s], left container num[%d].|node id[n1], container id[A], "
      "left container num[1].",
      "INFO|framework_common|RemoveNodeContainerAndFlush|framework common, remove container and "
      "flush from zk||node id[%s], container id[%s], container num[%d] left.|node id[n1], "
      "container id[A], container num[1] left."}},
    {"RemoveLastNodeContainer",
     [](CScene& scene) {
         scene.store.Put("/CloudX/Cluster", ClusterText({{"n1", {"A"}}}));
         Framework().RemoveNodeContainerAndFlush("n1", "A");
     },
     {"INFO|framework_common|RemoveNodeContainer|framework common, Remove node container from "
      "cache||node id[%s], container id[%s], left container num[%d].|node id[n1], container id[A], "
      "left container num[0].",
      "INFO|framework_common|RemoveNodeContainerAndFlush|framework common, Remove node container "
      "from cache||node id[%s].|node id[n1].",
      "INFO|framework_common|RemoveNodeContainerAndFlush|framework common, remove container and "
      "flush from zk||node id[%s], container id[%s], container num[%d] left.|node id[n1], "
      "container id[A], container num[0] left."}},
    {"RemoveNodeContainerWriteFails",
     [](CScene& scene) {
         scene.store.Put("/CloudX/Cluster", ClusterText({{"n1", {"A"}}}));
         scene.store.FailCall(2, 5);
         Framework().RemoveNodeContainerAndFlush("n1", "A");
     },
     {"INFO|framework_common|RemoveNodeContainer|framework common, Remove node container from "
      "cache||node id[%s], container id[%s], left container num[%d].|node id[n1], container id[A], "
      "left container num[0].",
      "INFO|framework_common|RemoveNodeContainerAndFlush|framework common, Remove node container "
      "from cache||node id[%s].|node id[n1].",
      "ERR|framework_common|RemoveNodeContainerAndFlush|framework common, remove container and "
      "flush|5|set cluster info into ZK fail."}},
    {"GetAvailableContainer",
     [](CScene& scene) {
         Framework().AddNodeAndContainer(OneNode({"A", "B"}));
         scene.logger.Clear();
         ContainerMap available;
         Framework().GetAvailableContainer("A", available);
     },
     {"TRACE|framework_common|GetAvailableContainer|||orva plugin, available orva container, node "
      "id[%s].|orva plugin, available orva container, node id[n1]."}},
    {"GetAvailableContainerWithAStoppedProcess",
     [](CScene& scene) {
         Framework().AddNodeAndContainer(OneNode({"A"}));
         CContainerMgr::Instance().SetProcessState({"n1", "A"}, {{"p", PROCESS_STATE_STOPPED}});
         scene.logger.Clear();
         ContainerMap available;
         Framework().GetAvailableContainer("A", available);
     },
     {"INFO|container|IsProcessRunning|||containerType=%s nodeId=%s process=%s "
      "stopped.|containerType=A nodeId=n1 process=p stopped."}},
    {"UpdateClusterCDBWriteFails",
     [](CScene& scene) {
         SetSlave();
         scene.store.FailCall(1, 5);
         CClusterDBInfo update;
         update.SetDBType(CLUSTER_DB_SLAVE);
         update.SetCDBToken("001");
         Framework().UpdateClusterCDB(update, true);
     },
     {"ERR|framework_common|UpdateClusterCDB|update cluster cdb|5|set data to zookeeper fail."}},
    {"UpdateClusterCDBOfAnUnknownMaster",
     [](CScene&) {
         CClusterDBInfo update;
         update.SetDBType(CLUSTER_DB_MASTER);
         update.SetNodeId("ghost");
         Framework().UpdateClusterCDB(update, true);
     },
     {"ERR|cluster_db_znode_info|UpdateMasterDBInfo|update master db info|1|not found slave cdb, "
      "node id[%s].|not found slave cdb, node id[ghost]."}},
};

INSTANTIATE_TEST_SUITE_P(Loading, LogLines, testing::ValuesIn(LOADING), NAME_OF_PARAMETER);
INSTANTIATE_TEST_SUITE_P(Members, LogLines, testing::ValuesIn(MEMBERS), NAME_OF_PARAMETER);

}  // namespace
