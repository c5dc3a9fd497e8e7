#include "cluster.h"

#include "common_service/logger.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_znode_info.h"
#include "framework_service/container_mgr.h"
#include "framework_service/node_mgr.h"
#include "framework_service/plugin_mgr.h"
#include "reference_host/host_settings.h"
#include "reference_host/store.h"

namespace {

constexpr int PRIVATE_PAIRS = 6;
constexpr std::size_t TENTH_OF_LARGEST_TEXT = 6500;

/// A sink at error level whose lines go nowhere.
class CErrorSink : public Logger {
public:
    void writeOperLog(ORVA_LOG_LEVEL, const char*, const char*, int, const char*, const char*,
                      ...) override {}
    void writeTraceLog(const char*, int, const char*, const char*, ...) override {}
};

std::string NodeId(int i) {
    return "node-" + std::to_string(100000 + i);
}

CNode MakeNode(int i) {
    CNode node;
    node.SetNodeId(NodeId(i));
    node.SetNodeIp("10.1." + std::to_string(i / 200) + "." + std::to_string(1 + i % 200));
    node.SetContainerList({CONTAINER_TYPE_CLOUD_STORAGE, "MeroRecord"});
    return node;
}

template <typename Document>
std::string TextOf(Document& document) {
    std::string strText(1 << 20, '\0');
    document.ToJson(strText.data(), static_cast<uint32_t>(strText.size()));
    strText.resize(strText.find('\0'));
    return strText;
}

}  // namespace

CMemoryStore& BenchStore() {
    static const auto pStore = std::make_shared<CMemoryStore>();
    return *pStore;
}

void InstallBenchHost() {
    static CErrorSink sink;
    OMAdapter::getInstance().setLogger(&sink);
    SetStore(std::shared_ptr<IStore>(&BenchStore(), [](IStore*) {}));
    Configure({"Bench", "", PLUGIN_LIB_DIR, ""});
    CPluginMgr::Instance().LoadAllPlugin();
}

std::list<CResourceTask> MakeTasks(int iTasks) {
    return MakeTasks("task-of-some-length", iTasks);
}

std::list<CResourceTask> MakeTasks(const std::string& strOf, int iTasks) {
    std::list<CResourceTask> tasks;
    for (int i = 0; i < iTasks; ++i) {
        CResourceTask& task = tasks.emplace_back();
        task.SetTaskId(strOf + "-" + std::to_string(i));
        task.SetTaskName("recording of camera " + std::to_string(i));
        task.SetDisk(i);
        task.SetNet(i);
        for (int iPair = 0; iPair < PRIVATE_PAIRS; ++iPair) {
            task.InsertSingleKeyValue("private-key-number-" + std::to_string(iPair),
                                      "private-value-number-" + std::to_string(i));
        }
    }
    return tasks;
}

CContainerAddr AddressOf(int i) {
    return {NodeId(i / 2), "MeroRecord" + std::to_string(i % 2)};
}

void FillContainers(int iContainers, int iTasks) {
    ContainerMap containers;
    for (int i = 0; i < iContainers; ++i) {
        const CContainerAddr addr = AddressOf(i);
        CContainer& container = containers[addr];
        container.SetNodeId(addr.GetNodeId());
        container.SetContainerType(addr.GetContainerType());
    }
    StartCluster(containers, iTasks);
}

void StartCluster(const ContainerMap& containers, int iTasks) {
    CContainerMgr::Instance().Init(containers);
    const std::list<CResourceTask> tasks = MakeTasks(iTasks);
    for (const auto& [addr, container] : containers) {
        CContainerMgr::Instance().SetResourceTask(addr, tasks, 0);
    }
}

IPlugin& Recording() {
    return *CPluginMgr::Instance().GetPluginByName("recording");
}

CContainerAddr RecorderAddress(int i) {
    return {NodeId(i), "MeroRecord"};
}

CSystemResource Figures(int iDisk) {
    CSystemResource figures;
    figures.SetDisk(iDisk);
    figures.SetNet(1 << 20);
    return figures;
}

void FillRecorders(int iNodes, int iTasks) {
    std::list<CNode> nodes;
    ContainerMap containers;
    for (int i = 0; i < iNodes; ++i) {
        nodes.push_back(MakeNode(i));
        for (const char* pszType : {"MeroRecord", CONTAINER_TYPE_IMG_DEV}) {
            CContainer& container = containers[CContainerAddr(NodeId(i), pszType)];
            container.SetNodeId(NodeId(i));
            container.SetContainerType(pszType);
        }
    }
    CNodeMgr::Instance().Init(nodes);
    CContainerMgr::Instance().Init(containers);
    for (int i = 0; i < iNodes; ++i) {
        CContainerMgr::Instance().SetSystemResource(RecorderAddress(i), Figures(1 << 20), {});
        CContainerMgr::Instance().SetResourceTask(
            RecorderAddress(i), MakeTasks("task-of-recorder-" + std::to_string(i), iTasks), 0);
    }
}

std::string MakeClusterText(int iTenths) {
    CClusterZNodeInfo document("bench", "as large as it gets", "Bench", 1);
    const std::size_t uiEmpty = TextOf(document).size();
    document.AddNode(MakeNode(0));
    const std::size_t uiPerNode = TextOf(document).size() - uiEmpty;
    const std::size_t uiLargest = TENTH_OF_LARGEST_TEXT * static_cast<std::size_t>(iTenths);
    const auto iNodes = static_cast<int>((uiLargest - uiEmpty) / (uiPerNode + 1));
    for (int i = 1; i < iNodes; ++i) {
        document.AddNode(MakeNode(i));
    }
    return TextOf(document);
}

std::string MakeCloudStorageText(int iTenths) {
    CClusterCloudStorageZNodeInfo document;
    const std::size_t uiLargest = TENTH_OF_LARGEST_TEXT * static_cast<std::size_t>(iTenths);
    for (int i = 0; TextOf(document).size() < uiLargest - 400; ++i) {
        CloudStorageInfo info{"MPU-R", "NVR", 4096, 512, 8, {}};
        for (const char* pszCode : {"storage-1", "storage-2"}) {
            info.allocInfo.push_back({pszCode, 2048, 1024, 0, "storage.example", "/volume/1"});
        }
        document.SetCloudStorageInfo(NodeId(i), info);
    }
    return TextOf(document);
}

std::map<std::string, PlainContainer> MakePlainContainers(int iContainers, int iTasks) {
    std::list<PlainTask> plainTasks;
    for (const CResourceTask& task : MakeTasks(iTasks)) {
        KeyValueMap privateInfo;
        task.GetAllPrivateInfo(privateInfo);
        plainTasks.push_back({task.GetTaskId(), task.GetTaskName(), privateInfo});
    }
    std::map<std::string, PlainContainer> containers;
    for (int i = 0; i < iContainers; ++i) {
        const CContainerAddr addr = AddressOf(i);
        containers[addr.GetNodeId() + addr.GetContainerType()] = {
            addr.GetNodeId(), addr.GetContainerType(), plainTasks};
    }
    return containers;
}
