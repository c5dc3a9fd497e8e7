#include "cluster_engine/engine_fixture.h"
#include "common_service/tarn_def.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

CContainerAddr Storage(const std::string& strNodeId) {
    return {strNodeId, CONTAINER_TYPE_CLOUD_STORAGE};
}

/// Nodes s1, which offers pool-a with 1000, and s2.
class CloudStorage : public CEngineTest {
protected:
    CloudStorage() {
        Store({{"s1", {"MeroCloudStorage"}}, {"s2", {"MeroCloudStorage"}}});
        Load();
        Settle();
        Must(Demand("s1"));
        Must(Demand("s2"));
    }

    /// An ordinary report: what the node asks for, and what it offers.
    CContainerReport Demand(const std::string& strNodeId) {
        CContainerReport report;
        report.container = Storage(strNodeId);
        report.tasks.emplace();
        CReportedTask& task = report.tasks->emplace_back();
        task.strTaskId = "demand";
        task.privateInfo = {{"ProductType", "P"},   {"ServiceType", "MPU-R"},
                            {"ReqStorage", "500"},  {"ReqPicStorage", "1"},
                            {"LowPriBitRate", "2"}, {"TranBandWidth", "3"}};
        report.parameters.emplace();
        if (strNodeId == "s1") {
            *report.parameters = {{"Pool.1.Code", "pool-a"}, {"Pool.1.Size", "1000"}};
        }
        return report;
    }

    /// A report that answers a request: what the node has.
    CContainerReport Response(const std::string& strNodeId, int32_t iAllocated) {
        CContainerReport report;
        report.container = Storage(strNodeId);
        report.iMessageType = ALLOC_CLOUD_STORAGE_NOTIFY_RSP;
        CAllocationForm allocation;
        allocation.strPool = "pool-a";
        allocation.iAllocated = iAllocated;
        report.allocations = {allocation};
        return report;
    }

    CAnswer Allocate(const std::string& strNodeId, int32_t iSize) {
        return Do(CStorageAllocate{"<CloudStorageAlloc><Node><NodeID>" + strNodeId +
                                   "</NodeID><Storage>" + std::to_string(iSize) +
                                   "</Storage></Node></CloudStorageAlloc>"});
    }

    CAnswer Reduce(int32_t iSize, int32_t iTotal) {
        return Do(CStorageReduce{"<CloudStorageReduce><Code>pool-a</Code></CloudStorageReduce>",
                                 iSize, iTotal});
    }

    static std::string Parameter(const std::string& strNodeId, const std::string& strKey) {
        std::string strValue = "none";
        CContainerMgr::Instance().GetExtParamValueByKey(Storage(strNodeId), strKey, strValue);
        return strValue;
    }

    std::string Document() { return m_pStore->Get(Path("/CloudStorage")).value_or(""); }
};

TEST_F(CloudStorage, RequestIsHandedUntilItIsHeardAndSavedWhenItIsAnswered) {
    const CAnswer answer = Allocate("s2", 300);
    ASSERT_EQ(answer.eFault, EFault::NONE);
    EXPECT_THAT(answer.strXml, HasSubstr("<CloudStorageAllocReport>"));
    const std::vector<CEvent> events = m_events.Of(EEvent::STORAGE_ALLOCATED);
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_EQ(events[0].strNodeId, "s2");
    EXPECT_EQ(events[0].strCause, "300 of pool-a");
    EXPECT_EQ(Parameter("s2", "Taken.pool-a"), "300");

    EXPECT_THAT(Must(Demand("s1")).messages, IsEmpty());
    const CAnswer first = Must(Demand("s2"));
    ASSERT_THAT(first.messages, SizeIs(1));
    EXPECT_THAT(first.messages[0], HasSubstr("<AllocSize>300</AllocSize>"));
    EXPECT_EQ(Must(Demand("s2")).messages, first.messages);
    EXPECT_EQ(Parameter("s2", "Taken.pool-a"), "300");

    CContainerReport heard = Demand("s2");
    heard.ullSeen = first.ullNumber;
    EXPECT_THAT(Must(heard).messages, IsEmpty());
    EXPECT_EQ(Parameter("s2", "Taken.pool-a"), "300");

    CContainerReport response = Response("s2", 300);
    response.ullSeen = first.ullNumber;
    Must(response);
    EXPECT_EQ(Parameter("s2", "Taken.pool-a"), "0");
    EXPECT_THAT(Document(), HasSubstr("pool-a"));
    EXPECT_EQ(m_events.Count(EEvent::STORAGE_SAVED), 1U);
    EXPECT_EQ(AllContainers().at(Storage("s2")).GetReqStorage(), 500);
}

TEST_F(CloudStorage, WhatIsNotReportedYetCountsAsTaken) {
    ASSERT_EQ(Allocate("s2", 700).eFault, EFault::NONE);
    EXPECT_EQ(Allocate("s1", 400).eFault, EFault::NO_ROOM);
    EXPECT_EQ(Allocate("s1", 300).eFault, EFault::NONE);
}

TEST_F(CloudStorage, WhatIsNotReportedInAMinuteCountsNoLonger) {
    Allocate("s2", 700);
    Pass(59);
    EXPECT_EQ(Allocate("s1", 400).eFault, EFault::NO_ROOM);
    Pass(1);
    EXPECT_EQ(Parameter("s2", "Taken.pool-a"), "0");
    EXPECT_EQ(Allocate("s1", 400).eFault, EFault::NONE);
    EXPECT_THAT(Must(Demand("s2")).messages, IsEmpty()) << "the request is withdrawn";
}

TEST_F(CloudStorage, ResponseToOneRequestIsNoneToTheNext) {
    Allocate("s2", 300);
    const CAnswer first = Must(Demand("s2"));
    Allocate("s2", 200);
    CContainerReport response = Response("s2", 300);
    response.ullSeen = first.ullNumber;
    EXPECT_THAT(Must(response).messages, ElementsAre(HasSubstr("<AllocSize>200</AllocSize>")));
    EXPECT_EQ(Parameter("s2", "Taken.pool-a"), "200");
}

TEST_F(CloudStorage, ReductionGoesTheSameWay) {
    Allocate("s2", 300);
    Must(Demand("s2"));
    Must(Response("s2", 300));
    ASSERT_EQ(Reduce(100, 300).eFault, EFault::NONE);
    EXPECT_EQ(m_events.Count(EEvent::STORAGE_REDUCED), 1U);
    EXPECT_EQ(Parameter("s2", "Released.pool-a"), "100");
    EXPECT_EQ(Reduce(201, 300).eFault, EFault::NO_ROOM);
    EXPECT_THAT(Must(Demand("s2")).messages, ElementsAre(HasSubstr("<Size>100</Size>")));
    Must(Response("s2", 200));
    EXPECT_EQ(Parameter("s2", "Released.pool-a"), "0");
    EXPECT_THAT(Document(), HasSubstr("200"));
}

TEST_F(CloudStorage, BadRequestsAreNamed) {
    EXPECT_EQ(Do(CStorageAllocate{"<Cloud"}).eFault, EFault::BAD_INPUT);
    const CAnswer unreadable = Do(CStorageAllocate{"<Other/>"});
    EXPECT_EQ(unreadable.eFault, EFault::BAD_INPUT);
    EXPECT_EQ(unreadable.strAbout, "xml: the plug-in cannot read it");
    const CAnswer unknown = Allocate("nobody", 1);
    EXPECT_EQ(unknown.eFault, EFault::REFUSED_BY_RULE);
    EXPECT_EQ(unknown.strAbout, "the plug-in does not allow one of the values");
    EXPECT_EQ(Reduce(2, 1).eFault, EFault::REFUSED_BY_RULE);
    EXPECT_EQ(Do(CStorageSave{"nobody"}).eFault, EFault::UNKNOWN_CONTAINER);
}

TEST_F(CloudStorage, TasksOfAStorageContainerAreNoWork) {
    const auto before = Texts();
    CContainerReport report = Demand("s1");
    report.tasks->front().strTaskId = "other";
    const CAnswer answer = Must(report);
    EXPECT_THAT(answer.takeUp, IsEmpty());
    EXPECT_THAT(answer.drop, IsEmpty());
    EXPECT_THAT(TasksOf(Storage("s1")), ElementsAre("other"));
    EXPECT_EQ(Texts(), before);
    Pass(200);
    EXPECT_EQ(m_events.Count(EEvent::SHIFT_STARTED), 0U);
    EXPECT_EQ(m_events.Count(EEvent::ADOPTED), 0U);
}

TEST_F(CloudStorage, SaveEndsTheUpdateFlag) {
    EXPECT_TRUE(AllContainers().at(Storage("s1")).GetUptadeFlag());
    Must(CStorageSave{"s1"});
    EXPECT_FALSE(AllContainers().at(Storage("s1")).GetUptadeFlag());
    EXPECT_THAT(Document(), HasSubstr("s1"));
}

TEST_F(CloudStorage, DocumentThatCannotBeReadIsNotSavedOver) {
    m_pStore->Put(Path("/CloudStorage"), "no JSON");
    EXPECT_EQ(Do(CStorageSave{"s1"}).eFault, EFault::DOCUMENT_UNREADABLE);
    EXPECT_EQ(Document(), "no JSON");
    EXPECT_TRUE(AllContainers().at(Storage("s1")).GetUptadeFlag());
}

TEST_F(CloudStorage, EveryStoreCallOfASaveMayFailAndNoEntryIsLost) {
    for (unsigned int uiNth = 1; uiNth <= 5; ++uiNth) {
        SCOPED_TRACE(uiNth);
        m_pStore->Erase(Path("/CloudStorage"));
        Must(CStorageSave{"s1"});
        m_pStore->FailCall(uiNth, 99);
        const unsigned int uiBefore = m_pStore->GetCallCount();
        const EFault eFault = Do(CStorageSave{"s2"}).eFault;
        EXPECT_EQ(eFault, m_pStore->GetCallCount() - uiBefore < uiNth ? EFault::NONE
                                                                      : EFault::STORE_FAILED);
        Pass(1);
        EXPECT_THAT(Document(), HasSubstr("s1"));
        if (uiNth > 1) {
            EXPECT_THAT(Document(), HasSubstr("s2")) << "what was begun is finished";
        }
    }
}

TEST_F(CloudStorage, ResponseThatCannotBeSavedIsSavedLater) {
    Allocate("s2", 300);
    Must(Demand("s2"));
    m_pStore->FailCall(1, 99);
    Must(Response("s2", 300));
    EXPECT_EQ(m_events.Count(EEvent::STORAGE_SAVED), 0U);
    Pass(1);
    EXPECT_EQ(m_events.Count(EEvent::STORAGE_SAVED), 1U);
    EXPECT_THAT(Document(), HasSubstr("pool-a"));
}

TEST_F(CloudStorage, ContainerThatMayNotGetWorkOffersNothing) {
    Must(CMemberStatus{{"s1"}, EMemberStatus::REMOVED});
    EXPECT_EQ(Allocate("s2", 1).eFault, EFault::NO_ROOM);
}

}  // namespace
