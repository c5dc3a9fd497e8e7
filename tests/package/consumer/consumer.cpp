#include <cstdio>
#include <memory>

#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "framework_service/plugin_mgr.h"
#include "reference_host/host_settings.h"
#include "reference_host/memory_store.h"

namespace {

constexpr char CLUSTER[] =
    R"({"ClusterName":"c","ClusterRemark":"r","ClusterCode":"X","ClusterNode":[)"
    R"({"NodeID":"n1","NodeIP":"10.0.0.1","NodeIPType":0,"NodeRole":0,"DomainRole":0,)"
    R"("Status":"Normal","Container":[{"ContainerType":"A"}]}]})";

/// Tells a step that went wrong.
bool Check(bool bGood, const char* pszStep) {
    if (!bGood) {
        std::fprintf(stderr, "failed: %s\n", pszStep);
    }
    return bGood;
}

bool LoadCluster() {
    return Check(CPluginMgr::Instance().LoadAllPlugin() == 0, "load the plug-in") &&
           Check(CFrameworkCommon::Instance().InitNodeAndContainerFromZK() == 0, "start") &&
           Check(CNodeMgr::Instance().GetSize() == 1, "one node") &&
           Check(CContainerMgr::Instance().IsContainerSupportFaultShift({"n1", "A"}),
                 "the plug-in's capability");
}

}  // namespace

/// A host over a memory store. Its argument is the folder above "plugins".
int main(int iArgs, char** ppszArgs) {
    if (!Check(iArgs == 2, "one argument")) {
        return 1;
    }
    Configure({"X", "", ppszArgs[1], ""});
    const auto pStore = std::make_shared<CMemoryStore>();
    pStore->Put("/CloudX/Cluster", CLUSTER);
    SetStore(pStore);
    const bool bLoaded = LoadCluster();
    CPluginMgr::Instance().UnLoadAllPlugin();
    return bLoaded ? 0 : 1;
}
