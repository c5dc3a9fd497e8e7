#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/node_mgr.h"
#include "framework_service/schedule_mgr.h"
#include "orva_plugin_service/cloud_storage_param.h"
#include "plugins/schedule_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// The plug-in is opened at run time and hides what it consists of.
class CloudStorageReason : public CScheduleTest {
protected:
    CloudStorageReason() : CScheduleTest("cloud_storage", "MeroCloudStorage") {}

    void Offer(const std::string& strNodeId, const std::string& strCode,
               const std::string& strSize) {
        CContainerMgr& manager = CContainerMgr::Instance();
        manager.SetExtParamValueByKey(Addr(strNodeId), PoolParam(strCode, PSZ_POOL_CODE), strCode);
        manager.SetExtParamValueByKey(Addr(strNodeId), PoolParam(strCode, PSZ_POOL_SIZE), strSize);
    }

    static CResourceTask Demand(const std::string& strStorage) {
        CResourceTask task;
        task.InsertSingleKeyValue(PSZ_TASK_REQ_STORAGE, strStorage);
        return task;
    }
};

TEST_F(CloudStorageReason, EachContainerSaysWhyItHasNoRoom) {
    for (const char* pszNodeId : {"a", "b", "c", "d", "e", "f", "g", "h", "i"}) {
        AddContainer(pszNodeId, 0, 0);
        Offer(pszNodeId, std::string("pool-") + pszNodeId, "300");
    }
    Offer("b", "second", "200");
    AddContainer("j", 0, 0);
    CContainerMgr& manager = CContainerMgr::Instance();
    manager.SetContainerOnline(Addr("c"), false);
    manager.SetContainerFaultShift(Addr("d"), true);
    manager.SetContainerDoingFaultShift(Addr("e"), true);
    manager.SetProcessState(Addr("f"), {{"p", PROCESS_STATE_STOPPED}});
    manager.SetContainerMemberStatus(Addr("g"), CLUSTER_MEMBER_REMOVED);
    SetMember("h", false);
    manager.SetExtParamValueByKey(Addr("i"), TakenParam("pool-i"), "299");
    EXPECT_THAT(
        Explain(Demand("500")),
        ElementsAre(
            "a: its pools have 300 free, and 500 are asked for", "b: may take",
            "c: the container is offline", "d: the container is in fault shift",
            "e: the container is in fault shift", "f: a process of the container does not run",
            "g: the container is no normal member", "h: the node is no normal member",
            "i: its pools have 1 free, and 500 are asked for", "j: the container offers no pool"));
}

TEST_F(CloudStorageReason, WhatATaskWasGivenItDoesNotAskFor) {
    AddContainer("a", 0, 0);
    Offer("a", "x", "100");
    CResourceTask task = Demand("500");
    task.SetAllocInfoList({"y", 400, 0, 0, "", ""});
    EXPECT_THAT(Explain(task), ElementsAre("a: may take"));
    EXPECT_THAT(Explain(Demand("101")),
                ElementsAre("a: its pools have 100 free, and 101 are asked for"));
}

TEST_F(CloudStorageReason, AnUnknownNodeIsNoRemovedOne) {
    AddContainer("a", 0, 0);
    Offer("a", "x", "100");
    CNodeMgr::Instance().RemoveNode("a");
    EXPECT_THAT(Explain(Demand("1")), ElementsAre("a: the node is unknown"));
}

TEST_F(CloudStorageReason, ATaskThatDoesNotSayAsksForNothing) {
    AddContainer("a", 0, 0);
    Offer("a", "x", "100");
    EXPECT_THAT(Explain({}), ElementsAre("a: may take"));
    EXPECT_THAT(Explain(Demand("much")), ElementsAre("a: may take"));
    EXPECT_THAT(m_logger.GetOperLines(), IsEmpty());
}

TEST_F(CloudStorageReason, ExplainingDecidesNothing) {
    AddContainer("a", 0, 0);
    Offer("a", "x", "100");
    EXPECT_THAT(Explain(Demand("100")), ElementsAre("a: may take"));
    EXPECT_THAT(Explain(Demand("100")), ElementsAre("a: may take"));
    EXPECT_EQ(CScheduleMgr::Instance().GetDecisionVerNum(), 40u);
}

}  // namespace
