#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "common_service/xml.h"
#include "contract/minimal_host.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "framework_service/standard_task_mgr.h"

namespace {

using Calls = std::vector<std::string>;

constexpr int NUMERIC_STORE_CODE = 4711;

CNode MakeNode(const std::string& strId, const std::string& strIp) {
    CNode node;
    node.SetNodeId(strId);
    node.SetNodeIp(strIp);
    return node;
}

/// Does something at each failure that is logged.
class CFailureListener : public CRecordingLog {
public:
    explicit CFailureListener(std::function<void()> onLine) : m_onLine(std::move(onLine)) {}

    void writeOperLog(ORVA_LOG_LEVEL eLevel, const char*, const char*, int, const char*,
                      const char*, ...) override __attribute__((format(printf, 7, 8))) {
        if (eLevel == ORVALOG_ERR) {
            m_onLine();
        }
    }

private:
    std::function<void()> m_onLine;
};

/// What the library has done, and not yet done, when it calls its host.
class CallOut : public testing::Test {
protected:
    CallOut() { Reset(); }
    ~CallOut() override { Reset(); }

    void Reset() {
        CNodeMgr::Instance().Init({});
        CContainerMgr::Instance().Init({});
        m_host.Reset();
        CStdTaskMgr::Instance().Load();
        m_host.Reset();
    }

    CMinimalHost& m_host = CMinimalHost::Instance();
};

TEST_F(CallOut, NodesThatComeWhileLinksAreAddedLoseTheirsAsOldOnes) {
    m_host.m_reads["/CloudX/Cluster"] =
        Text(R"({"ClusterName":"c","ClusterRemark":"r","ClusterCode":"X","ClusterNode":[)"
             R"({"NodeID":"n1","NodeIP":"10.0.0.1","NodeIPType":0,"NodeRole":0,"DomainRole":0,)"
             R"("Status":"Normal"}]})");
    CNodeMgr::Instance().Init({MakeNode("n2", "10.0.0.2")});
    m_host.m_onAddLink = [] { CNodeMgr::Instance().Init({MakeNode("n3", "10.0.0.3")}); };
    EXPECT_EQ(CFrameworkCommon::Instance().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(m_host.CallsTo({"AddValidatedLink", "DelValidatedLink"}),
              (Calls{"AddValidatedLink 10.0.0.1 70106", "DelValidatedLink 10.0.0.3 70106"}));
}

TEST_F(CallOut, EntryThatTheStoreRefusedIsGoneWhenItIsLogged) {
    CNodeMgr::Instance().Init({MakeNode("n1", "10.0.0.1"), MakeNode("n2", "10.0.0.2")});
    std::vector<unsigned int> sizes;
    CFailureListener listener([&sizes] {
        CClusterCGInfoList cached;
        CFrameworkCGCommon::Instance().GetClusterCGInfoList(cached);
        sizes.push_back(cached.GetSize());
    });
    m_host.m_onWrite = [](const std::string&) { return NUMERIC_STORE_CODE; };
    m_host.m_pLogger = &listener;
    CClusterCGInfo info;
    info.SetCGCode("n1");
    EXPECT_EQ(CFrameworkCGCommon::Instance().AddSingleClusterCGInfo(info), NUMERIC_STORE_CODE);
    EXPECT_EQ(sizes, std::vector<unsigned int>{0});
}

TEST_F(CallOut, FilesOfAListingThatFailedAreNotLoaded) {
    m_host.m_libDirectory = [](std::string&) { return 0; };
    m_host.m_strXmlFile = "<TaskList><Task>model</Task></TaskList>";
    m_host.m_files = {"a.xml"};
    m_host.m_iFileListRet = NUMERIC_STORE_CODE;
    EXPECT_EQ(CStdTaskMgr::Instance().Load(), 0);
    EXPECT_EQ(m_host.CallsTo({"CXml::Load"}), Calls());
    m_host.m_iFileListRet = 0;
    EXPECT_EQ(CStdTaskMgr::Instance().Load(), 0);
    EXPECT_EQ(m_host.CallsTo({"CXml::Load"}), Calls{"CXml::Load /taskmodel/a.xml"});
}

TEST_F(CallOut, AttributesOfATaskAreReadIntoTheTextOfItsName) {
    m_host.m_libDirectory = [](std::string&) { return 0; };
    m_host.m_strXmlFile = R"(<TaskList><Task IO="5">model</Task></TaskList>)";
    m_host.m_files = {"a.xml"};
    EXPECT_EQ(CStdTaskMgr::Instance().Load(), 0);
    EXPECT_EQ(m_host.CallsTo({"GetAttributeValue"}),
              (Calls{"GetAttributeValue CPU [model]", "GetAttributeValue MEM [model]",
                     "GetAttributeValue IO [model]", "GetAttributeValue NET [5]",
                     "GetAttributeValue DISK [5]"}));
    CResourceTask task;
    EXPECT_EQ(CStdTaskMgr::Instance().GetStandardTask("model", task), 0);
    EXPECT_EQ(task.GetTaskName(), "model");
}

TEST_F(CallOut, ManagersNodeAndAddressAreBothReadBeforeOneIsMissed) {
    PELU::CXml xml(nullptr);
    ASSERT_TRUE(xml.Parse("<Content/>"));
    EXPECT_EQ(CClusterMGRZNodeInfo().ParseFromXml(xml), ORVA_XML_INVALID);
    EXPECT_EQ(m_host.CallsTo({"GetElemValueEx"}),
              (Calls{"GetElemValueEx Content/ClusterBody/DomainMainInfo/DomainMain",
                     "GetElemValueEx Content/ClusterBody/DomainMainInfo/FloatIP"}));
}

}  // namespace
