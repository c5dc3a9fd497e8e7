#include "log_lines/log_lines.h"

namespace {

CFrameworkCGCommon& Registry() {
    return CFrameworkCGCommon::Instance();
}

CClusterCGInfoList ListOf(const CClusterCGInfo& info) {
    CClusterCGInfoList list;
    list.AddClusterCGInfo(info);
    return list;
}

/// A cluster of so many nodes with the CG f1 on the node n1.
void SetCluster(CScene& scene, int iNodes) {
    std::list<CNode> nodeList;
    for (int i = 1; i <= iNodes; ++i) {
        nodeList.push_back(MakeStoredNode("n" + std::to_string(i), {}));
    }
    CNodeMgr::Instance().Init(nodeList);
    Registry().AddClusterCGInfo(ListOf(MakeCG("n1", "f1", "10.0.0.1")));
    scene.logger.Clear();
}

const std::vector<CScenario> SCENARIOS = {
    {"SetWriteFails",
     [](CScene& scene) {
         scene.store.FailCall(1, 5);
         CClusterCGInfoList list = ListOf(MakeCG("n1", "f1", "i1"));
         Registry().SetClusterCGInfoList(list);
     },
     {"ERR|framework_common|SetClusterCGInfoList|set cluster cg list|5|set cg data into zk fail."}},
    {"AddKnownCode",
     [](CScene& scene) {
         SetCluster(scene, 2);
         Registry().AddClusterCGInfo(ListOf(MakeCG("n2", "f1", "10.0.0.2")));
     },
     {"TRACE|framework_common|AddClusterCGInfo|||cg already exists, no need to add, code[%s].|cg "
      "already exists, no need to add, code[f1]."}},
    {"AddKnownNode",
     [](CScene& scene) {
         SetCluster(scene, 2);
         Registry().AddClusterCGInfo(ListOf(MakeCG("n1", "f2", "10.0.0.2")));
     },
     {"ERR|framework_common|AddClusterCGInfo|add cluster cg info|149132002|node has been cg, "
      "node[%s].|node has been cg, node[n1]."}},
    {"AddKnownAddress",
     [](CScene& scene) {
         SetCluster(scene, 2);
         Registry().AddClusterCGInfo(ListOf(MakeCG("n2", "f2", "10.0.0.1")));
     },
     {"ERR|framework_common|AddClusterCGInfo|add cluster cg info|149132001|float ip is exist, "
      "float ip[%s].|float ip is exist, float ip[10.0.0.1]."}},
    {"AddWriteFails",
     [](CScene& scene) {
         scene.store.FailCall(1, 5);
         Registry().AddClusterCGInfo(ListOf(MakeCG("n1", "f1", "10.0.0.1")));
     },
     {"ERR|framework_common|AddClusterCGInfo|add cluster cg info|5|set cg data into zk fail."}},
    {"AddSingleBeyondTheMost",
     [](CScene& scene) {
         SetCluster(scene, 3);
         Registry().AddSingleClusterCGInfo(MakeCG("n2", "f2", "10.0.0.2"));
     },
     {"ERR|framework_common|AddSingleClusterCGInfo|add single cluster cg|149132003|exceed max cg "
      "num, current cg size[%d], node size[%d].|exceed max cg num, current cg size[1], node "
      "size[3]."}},
    {"AddSingleKnownNode",
     [](CScene& scene) {
         SetCluster(scene, 4);
         Registry().AddSingleClusterCGInfo(MakeCG("n1", "f2", "10.0.0.2"));
     },
     {"ERR|framework_common|AddSingleClusterCGInfo|add single cluster cg|149132002|node has been "
      "cg, node[%s].|node has been cg, node[n1]."}},
    {"AddSingleUnknownNode",
     [](CScene& scene) {
         SetCluster(scene, 4);
         Registry().AddSingleClusterCGInfo(MakeCG("ghost", "f2", "10.0.0.2"));
     },
     {"ERR|framework_common|AddSingleClusterCGInfo|add single cluster cg|149132004|node not exist, "
      "node[%s].|node not exist, node[ghost]."}},
    {"AddSingleKnownCode",
     [](CScene& scene) {
         SetCluster(scene, 4);
         Registry().AddSingleClusterCGInfo(MakeCG("n2", "f1", "10.0.0.2"));
     },
     {"ERR|framework_common|AddSingleClusterCGInfo|add single cluster cg|149132000|cg is exist, "
      "cg[%s].|cg is exist, cg[f1]."}},
    {"AddSingleKnownAddress",
     [](CScene& scene) {
         SetCluster(scene, 4);
         Registry().AddSingleClusterCGInfo(MakeCG("n2", "f2", "10.0.0.1"));
     },
     {"ERR|framework_common|AddSingleClusterCGInfo|add single cluster cg|149132001|float ip is "
      "exist, float ip[%s].|float ip is exist, float ip[10.0.0.1]."}},
    {"AddSingleWriteFails",
     [](CScene& scene) {
         SetCluster(scene, 4);
         scene.store.FailCall(1, 5);
         Registry().AddSingleClusterCGInfo(MakeCG("n2", "f2", "10.0.0.2"));
     },
     {"ERR|framework_common|AddSingleClusterCGInfo|add cluster cg info|5|set cg data into zk "
      "fail."}},
    {"RemoveUnknown",
     [](CScene&) { Registry().RemoveClusterCGInfo("ghost"); },
     {"INFO|framework_common|RemoveClusterCGInfo|remove cluster cg||cluster cg code[%s] not "
      "exist.|cluster cg code[ghost] not exist."}},
    {"Remove",
     [](CScene& scene) {
         SetCluster(scene, 2);
         Registry().RemoveClusterCGInfo("f1");
     },
     {"TRACE|cluster_cg_info|ToJson|||cluster cg info, no cg info.",
      "INFO|framework_common|RemoveClusterCGInfo|remove cluster cg||update cluster cg into zk and "
      "cache, cluster cg code[%s].|update cluster cg into zk and cache, cluster cg code[f1]."}},
    {"RemoveWriteFails",
     [](CScene& scene) {
         SetCluster(scene, 2);
         scene.store.FailCall(1, 5);
         Registry().RemoveClusterCGInfo("f1");
     },
     {"TRACE|cluster_cg_info|ToJson|||cluster cg info, no cg info.",
      "ERR|framework_common|RemoveClusterCGInfo|remove cluster cg info|5|set cg data into zk "
      "fail."}},
    {"UpdateWriteFails",
     [](CScene& scene) {
         SetCluster(scene, 2);
         scene.store.FailCall(1, 5);
         Registry().UpdateClusterCGInfoByFloatCode(MakeCG("n2", "f1", "10.0.0.1"));
     },
     {"ERR|framework_common|UpdateClusterCGInfoByFloatCode|update cluster cg info|5|set cg data "
      "into zk fail."}},
    {"ReloadReadFails",
     [](CScene& scene) {
         scene.store.FailCall(1, 5);
         Registry().ReloadClusterCGInfoList();
     },
     {"ERR|cluster_cg_info|ParseFromZK|CGList info, parse form zk|1|get cg list from zk fail.",
      "ERR|framework_common|ReloadClusterCGInfoList|reload cluster cg list|1|load cg list from zk "
      "fail."}},
};

INSTANTIATE_TEST_SUITE_P(CGRegistry, LogLines, testing::ValuesIn(SCENARIOS), NAME_OF_PARAMETER);

}  // namespace
