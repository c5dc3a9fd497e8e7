#include <limits>
#include <ostream>
#include <regex>

#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/plugin_mgr.h"
#include "orva_plugin_service/cloud_storage_param.h"
#include "plugins/schedule_fixture.h"
#include "support/xml_place.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int32_t NUMERIC_MAX = std::numeric_limits<int32_t>::max();
constexpr char PSZ_ANY[] = "<CloudStorageReduce/>";

/// What a node's report says it has of a pool.
struct CHeld {
    std::string strCode;
    int32_t iAllocated;
    int32_t iUsed = 0;
};

std::string AskFor(const std::string& strNodeId, const std::string& strStorage) {
    return "<Node><NodeID>" + strNodeId + "</NodeID><Storage>" + strStorage + "</Storage></Node>";
}

std::string AllocRequest(const std::string& strNodes) {
    return "<CloudStorageAlloc>" + strNodes + "</CloudStorageAlloc>";
}

class CloudStoragePlugin : public CScheduleTest {
protected:
    CloudStoragePlugin() : CScheduleTest("cloud_storage", "MeroCloudStorage") {}

    void AddNode(const std::string& strNodeId, const std::list<CHeld>& heldList = {}) {
        AddContainer(strNodeId, 0, 0);
        Report(strNodeId, heldList);
    }

    void Report(const std::string& strNodeId, const std::list<CHeld>& heldList) {
        CResourceTask task;
        for (const CHeld& held : heldList) {
            task.SetAllocInfoList({held.strCode, held.iAllocated, held.iUsed, 0, "dns", "/path"});
        }
        CContainerMgr::Instance().SetResourceTask(Addr(strNodeId), {task},
                                                  ALLOC_CLOUD_STORAGE_NOTIFY_RSP);
        m_logger.Clear();
    }

    void SetExtParam(const std::string& strNodeId, const std::string& strKey,
                     const std::string& strValue) {
        CContainerMgr::Instance().SetExtParamValueByKey(Addr(strNodeId), strKey, strValue);
    }

    void Offer(const std::string& strNodeId, const std::string& strCode,
               const std::string& strSize) {
        SetExtParam(strNodeId, PoolParam(strCode, PSZ_POOL_CODE), strCode);
        SetExtParam(strNodeId, PoolParam(strCode, PSZ_POOL_SIZE), strSize);
        SetExtParam(strNodeId, PoolParam(strCode, PSZ_POOL_DNS), strCode + ".example");
        SetExtParam(strNodeId, PoolParam(strCode, PSZ_POOL_PATH), "/" + strCode);
    }

    int Alloc(const std::string& strText) {
        PELU::CXml xml(nullptr);
        Parse(xml, strText);
        return Plugin().CloudStorageAlloc(xml, m_shareList);
    }

    int AllocFor(const std::string& strNodeId, int32_t iStorage) {
        return Alloc(AllocRequest(AskFor(strNodeId, std::to_string(iStorage))));
    }

    int Reduce(int iChange, const std::string& strText = PSZ_ANY) {
        PELU::CXml xml(nullptr);
        Parse(xml, strText);
        return Plugin().CloudStorageReduce(xml, m_strCode, iChange, NUMERIC_MAX, m_reduceList);
    }

    /// Each share as "node pool=size pool=size".
    std::list<std::string> Shares() const {
        std::list<std::string> shares;
        for (const ORVA_CLOUD_STORAGE_SEND_INFO& share : m_shareList) {
            std::string& strShare = shares.emplace_back(share.strNodeID);
            for (const ORVA_CLOUD_STORAGE_ALLOC_INFO& info : share.allocInfo) {
                strShare += " " + info.cloudStorageCode + "=" + std::to_string(info.allocStorage);
            }
        }
        return shares;
    }

    /// Each reduction as "node pool=size".
    std::list<std::string> Reductions() const {
        std::list<std::string> reductions;
        for (const ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST& entry : m_reduceList) {
            std::string& strEntry = reductions.emplace_back(entry.strNodeID);
            for (const ORVA_CLOUD_STORAGE_REDUCE_INFO& info : entry.reduceInfoList) {
                strEntry += " " + info.cloudStorageCode + "=" + std::to_string(info.storageSize);
            }
        }
        return reductions;
    }

    /// The document without the blanks between its elements.
    static std::string WithoutBlanks(PELU::CXml& xml) {
        unsigned int uiLen = 0;
        const char* const pszText = xml.GetXMLStream(uiLen);
        return std::regex_replace(pszText != nullptr ? pszText : "", std::regex("\\n *"), "");
    }

    std::list<ORVA_CLOUD_STORAGE_SEND_INFO> m_shareList;
    std::list<ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST> m_reduceList;
    std::string m_strCode = "untouched";
};

TEST_F(CloudStoragePlugin, ClaimsItsContainerTypeAndNoJob) {
    CPluginMgr& manager = CPluginMgr::Instance();
    EXPECT_EQ(manager.GetPluginByContainerType("MeroCloudStorage"), &Plugin());
    EXPECT_FALSE(manager.IsContainerSupportFaultShift("MeroCloudStorage"));
    std::list<std::string> typeList;
    EXPECT_EQ(manager.GetLogicContainerTypeByRealType("MeroCloudStorage", typeList), 0);
    EXPECT_THAT(typeList, ElementsAre("CloudStorageAlloc", "CloudStorageReduce"));
    std::list<unsigned int> jobList{7};
    EXPECT_EQ(Plugin().GetSupportedJobs(jobList), 0);
    EXPECT_THAT(jobList, IsEmpty());
    EXPECT_EQ(Plugin().GetVersion(), "1.0.0");
}

TEST_F(CloudStoragePlugin, TakesNoTasks) {
    AddNode("a");
    PELU::CXml xml(nullptr);
    std::list<CResourceTask> taskList;
    EXPECT_EQ(Plugin().PrivateTaskToResourceTask("a", 1, xml, taskList), ORVA_SYS_NO_SUPPORT);
    EXPECT_THAT(taskList, IsEmpty());
    EXPECT_EQ(Schedule({{"1"}}), ORVA_SYS_NO_SUPPORT);
    EXPECT_THAT(m_bindTable, IsEmpty()) << "what a table holds counts";
    EXPECT_EQ(m_ullDecisionVerNum, 0u);
    EXPECT_THAT(
        m_logger.GetOperLines(),
        ElementsAre(Err("cloud storage private task to resource task", ORVA_SYS_NO_SUPPORT,
                        "cloud_storage_plugin", "PrivateTaskToResourceTask",
                        "do not support this function."),
                    Err("cloud storage task schedule", ORVA_SYS_NO_SUPPORT, "cloud_storage_plugin",
                        "TaskSchedule", "do not support this function.")));
}

TEST_F(CloudStoragePlugin, ListsEveryCloudStorageContainerBehindWhatTheListHolds) {
    AddNode("a");
    AddNode("b");
    CContainerMgr::Instance().SetContainerOnline(Addr("b"), false);
    CContainerMgr::Instance().AddContainer({{{"a", "MeroRecord"}, CContainer()}});
    std::list<CContainer> containerList(1);
    EXPECT_EQ(Plugin().GetCloudContainerList(containerList), 0);
    std::list<std::string> nodes;
    for (const CContainer& container : containerList) {
        nodes.push_back(container.GetNodeId());
    }
    EXPECT_THAT(nodes, ElementsAre("", "a", "b"));
}

TEST_F(CloudStoragePlugin, ThePoolWithMostRoomGives) {
    AddNode("asks");
    AddNode("offers", {{"small", 100}, {"large", 700}});
    Offer("offers", "large", "1000");
    Offer("offers", "small", "500");
    m_shareList.resize(1);
    EXPECT_EQ(Alloc(AllocRequest("<Node><Other/><NodeID>asks</NodeID><Storage>400</Storage>"
                                 "<LowPriStoreDay>7</LowPriStoreDay></Node>")),
              0);
    EXPECT_THAT(Shares(), ElementsAre("", "asks small=400"));
    const ORVA_CLOUD_STORAGE_SEND_INFO& share = m_shareList.back();
    EXPECT_EQ(share.storageStatus, 0);
    EXPECT_EQ(share.storageChangeSize, 400);
    EXPECT_EQ(share.lowPriStoreDay, 7);
    const ORVA_CLOUD_STORAGE_ALLOC_INFO& info = share.allocInfo.front();
    EXPECT_EQ(info.usedStorage, 0);
    EXPECT_EQ(info.freeStorage, 400);
    EXPECT_EQ(info.dns, "small.example");
    EXPECT_EQ(info.path, "/small");
}

TEST_F(CloudStoragePlugin, WhatAPoolLacksTheNextGives) {
    AddNode("a");
    Offer("a", "x", "100");
    Offer("a", "y", "300");
    Offer("a", "z", "200");
    EXPECT_EQ(AllocFor("a", 550), 0);
    EXPECT_THAT(Shares(), ElementsAre("a y=300 z=200 x=50"));
}

TEST_F(CloudStoragePlugin, OfEqualPoolsTheFirstCodeGives) {
    AddNode("a");
    Offer("a", "y", "100");
    Offer("a", "x", "100");
    EXPECT_EQ(AllocFor("a", 1), 0);
    EXPECT_THAT(Shares(), ElementsAre("a x=1"));
}

TEST_F(CloudStoragePlugin, ANodeSeesWhatThoseBeforeItGot) {
    AddNode("a");
    AddNode("b");
    Offer("a", "x", "500");
    Offer("b", "y", "400");
    EXPECT_EQ(Alloc(AllocRequest(AskFor("b", "200") + AskFor("a", "300"))), 0);
    EXPECT_THAT(Shares(), ElementsAre("b x=200", "a y=300"));
}

TEST_F(CloudStoragePlugin, KeepsNothingOfWhatItGave) {
    AddNode("a");
    Offer("a", "x", "100");
    EXPECT_EQ(AllocFor("a", 100), 0);
    EXPECT_EQ(AllocFor("a", 100), 0);
    EXPECT_THAT(Shares(), ElementsAre("a x=100", "a x=100"));
}

TEST_F(CloudStoragePlugin, WhatAnyContainerHoldsIsAllocated) {
    AddNode("a", {{"x", 100}, {"x", 50}});
    AddNode("b", {{"x", 200}});
    AddNode("c", {{"y", 5000}, {"x", -70}});
    CContainerMgr::Instance().SetContainerOnline(Addr("b"), false);
    Offer("a", "x", "400");
    EXPECT_EQ(AllocFor("a", 51), ORVA_FAIL);
    EXPECT_EQ(AllocFor("a", 50), 0);
}

TEST_F(CloudStoragePlugin, WhatIsTakenMeanwhileIsAllocatedUntilItIsReported) {
    AddNode("a");
    AddNode("b");
    Offer("a", "x", "400");
    SetExtParam("b", TakenParam("x"), "300");
    EXPECT_EQ(AllocFor("a", 101), ORVA_FAIL);
    Report("b", {{"x", 300}});
    SetExtParam("b", TakenParam("x"), "0");
    EXPECT_EQ(AllocFor("a", 101), ORVA_FAIL);
    EXPECT_EQ(AllocFor("a", 100), 0);
}

TEST_F(CloudStoragePlugin, SumsBeyondANumbersRangeAreNoRoom) {
    AddNode("a", {{"x", NUMERIC_MAX}});
    AddNode("b", {{"x", NUMERIC_MAX}});
    Offer("a", "x", std::to_string(NUMERIC_MAX));
    SetExtParam("a", TakenParam("x"), std::to_string(NUMERIC_MAX));
    EXPECT_EQ(AllocFor("a", 1), ORVA_FAIL);
    Report("a", {});
    Report("b", {});
    SetExtParam("a", TakenParam("x"), "0");
    EXPECT_EQ(AllocFor("a", NUMERIC_MAX), 0);
}

TEST_F(CloudStoragePlugin, OnlyAContainerThatMayTakeWorkOffersPools) {
    AddNode("a");
    AddNode("b");
    Offer("b", "x", "100");
    CContainerMgr& manager = CContainerMgr::Instance();
    manager.SetContainerOnline(Addr("b"), false);
    EXPECT_EQ(AllocFor("a", 1), ORVA_FAIL);
    manager.SetContainerOnline(Addr("b"), true);
    manager.SetContainerFaultShift(Addr("b"), true);
    EXPECT_EQ(AllocFor("a", 1), ORVA_FAIL);
    manager.SetContainerFaultShift(Addr("b"), false);
    manager.SetProcessState(Addr("b"), {{"p", PROCESS_STATE_STOPPED}});
    EXPECT_EQ(AllocFor("a", 1), ORVA_FAIL);
    manager.SetProcessState(Addr("b"), {});
    SetMember("b", false);
    EXPECT_EQ(AllocFor("a", 1), ORVA_FAIL);
    SetMember("b", true);
    EXPECT_EQ(AllocFor("a", 1), 0);
}

TEST_F(CloudStoragePlugin, APoolThatSeveralOfferCountsOnceAsTheFirstUsableSays) {
    AddNode("a");
    AddNode("b");
    AddNode("c");
    Offer("a", "x", "1000");
    Offer("b", "x", "300");
    Offer("c", "x", "200");
    CContainerMgr::Instance().SetContainerOnline(Addr("a"), false);
    EXPECT_EQ(AllocFor("c", 301), ORVA_FAIL);
    EXPECT_EQ(AllocFor("c", 300), 0);
}

TEST_F(CloudStoragePlugin, ParametersThatCannotBeReadArePassedOverWithAWarning) {
    AddNode("a");
    Offer("a", "x", "100");
    Offer("a", "v", "0");
    Offer("a", "y", "-1");
    Offer("a", "z", "99999999999");
    SetExtParam("a", "Pool.1.Code", "");
    SetExtParam("a", "Pool.2.Size", "5");
    SetExtParam("a", "Pool.3.Code", "w");
    SetExtParam("a", TakenParam("x"), "5 or so");
    m_logger.Clear();
    EXPECT_EQ(AllocFor("a", 100), 0);
    const auto bad = [](const std::string& strWord, const std::string& strCode,
                        const std::string& strSize) {
        return Warn(
            "read cloud storage parameters", "storage_board", "ReadPools",
            "bad pool[" + strWord + "], code[" + strCode + "], size[" + strSize + "], node[a].");
    };
    EXPECT_THAT(m_logger.GetOperLines(),
                ElementsAre(Warn("read cloud storage parameters", "storage_board", "SizesBelow",
                                 "bad size, key[Taken.x], value[5 or so], node[a]."),
                            bad("1", "", ""), bad("2", "", "5"), bad("3", "w", ""),
                            bad("v", "v", "0"), bad("y", "y", "-1"), bad("z", "z", "99999999999")));
}

TEST_F(CloudStoragePlugin, WithoutRoomForAllNobodyGetsAnything) {
    AddNode("a");
    AddNode("b");
    Offer("a", "x", "100");
    m_shareList.resize(1);
    EXPECT_EQ(Alloc(AllocRequest(AskFor("a", "60") + AskFor("b", "60"))), ORVA_FAIL);
    EXPECT_THAT(Shares(), ElementsAre(""));
    EXPECT_THAT(m_logger.GetOperLines(),
                ElementsAre(Err("cloud storage alloc", ORVA_FAIL, "storage_board", "Allocate",
                                "no room for node[b], 20 of 60.")));
}

TEST_F(CloudStoragePlugin, AnUnknownNodeAndOneThatTakesNoWorkGetNothing) {
    AddNode("a");
    AddNode("b");
    Offer("a", "x", "100");
    SetMember("b", false);
    EXPECT_EQ(Alloc(AllocRequest(AskFor("a", "1") + AskFor("c", "1"))), ORVA_PARA_INVALID);
    EXPECT_EQ(AllocFor("b", 1), ORVA_FAIL);
    EXPECT_THAT(m_shareList, IsEmpty());
    EXPECT_THAT(m_logger.GetOperLines(),
                ElementsAre(Err("cloud storage alloc", ORVA_PARA_INVALID, "storage_board",
                                "Allocate", "unknown node[c]."),
                            Err("cloud storage alloc", ORVA_FAIL, "storage_board", "Allocate",
                                "node[b] takes no storage: the node is no normal member.")));
}

TEST_F(CloudStoragePlugin, LeavesTheCursorOnTheRequest) {
    AddNode("a");
    Offer("a", "x", "100");
    PELU::CXml xml(nullptr);
    Parse(xml, "<Body><Head/>" + AllocRequest(AskFor("a", "1")) + "</Body>");
    ASSERT_TRUE(xml.FindElemEx("Body"));
    ASSERT_TRUE(xml.IntoElem());
    EXPECT_EQ(Plugin().CloudStorageAlloc(xml, m_shareList), 0);
    EXPECT_EQ(CurrentElement(xml), "CloudStorageAlloc");
}

TEST_F(CloudStoragePlugin, ThoseThatUseLeastGiveFirstAndNeverWhatTheyUse) {
    AddNode("a", {{"x", 100, 90}});
    AddNode("b", {{"x", 100, 20}});
    AddNode("c", {{"x", 1000, 500}});
    AddNode("d", {{"x", 10, 30}});
    EXPECT_EQ(Reduce(580), 0);
    EXPECT_EQ(m_strCode, "x");
    EXPECT_THAT(Reductions(), ElementsAre("b x=80", "c x=500"));
    m_reduceList.clear();
    EXPECT_EQ(Reduce(590), 0);
    EXPECT_THAT(Reductions(), ElementsAre("b x=80", "c x=500", "a x=10"));
    EXPECT_EQ(Reduce(591), ORVA_FAIL);
}

TEST_F(CloudStoragePlugin, NobodyGivesMoreThanTheyHaveWhateverTheySayTheyUse) {
    AddNode("a", {{"x", 100, -50}});
    EXPECT_EQ(Reduce(101), ORVA_FAIL);
    EXPECT_EQ(Reduce(100), 0);
}

TEST_F(CloudStoragePlugin, TheLeastUsedPoolWithEnoughIsReduced) {
    AddNode("a", {{"least", 100, 0}, {"less", 500, 100}, {"more", 500, 200}});
    EXPECT_EQ(Reduce(100), 0);
    EXPECT_EQ(m_strCode, "least");
    EXPECT_EQ(Reduce(101), 0);
    EXPECT_EQ(m_strCode, "less");
    EXPECT_EQ(Reduce(1, "<CloudStorageReduce><Code>more</Code></CloudStorageReduce>"), 0);
    EXPECT_EQ(m_strCode, "more");
    EXPECT_THAT(Reductions(), ElementsAre("a least=100", "a less=101", "a more=1"));
}

TEST_F(CloudStoragePlugin, OnlyTheNodesThatARequestNamesAreReduced) {
    AddNode("a", {{"x", 100}});
    AddNode("b", {{"x", 100, 50}});
    const std::string strB =
        "<CloudStorageReduce><Node><NodeID>b</NodeID></Node></CloudStorageReduce>";
    EXPECT_EQ(Reduce(50, strB), 0);
    EXPECT_THAT(Reductions(), ElementsAre("b x=50"));
    EXPECT_EQ(Reduce(51, strB), ORVA_FAIL);
}

TEST_F(CloudStoragePlugin, WhatIsReleasedMeanwhileIsNotTakenBackTwice) {
    AddNode("a", {{"x", 100}});
    AddNode("b", {{"x", 100, 50}});
    SetExtParam("a", ReleasedParam("x"), "70");
    EXPECT_EQ(Reduce(60), 0);
    EXPECT_THAT(Reductions(), ElementsAre("a x=30", "b x=30"));
}

TEST_F(CloudStoragePlugin, ANodeThatTakesNoWorkIsNotReduced) {
    AddNode("a", {{"x", 100}});
    CContainerMgr::Instance().SetContainerOnline(Addr("a"), false);
    m_logger.Clear();
    EXPECT_EQ(Reduce(1), ORVA_FAIL);
    EXPECT_EQ(m_strCode, "untouched");
    EXPECT_THAT(m_logger.GetOperLines(),
                ElementsAre(Err("cloud storage reduce", ORVA_FAIL, "storage_board", "Reduce",
                                "no pool has 1 to give back, code[].")));
}

TEST_F(CloudStoragePlugin, AReductionBearsTheNodesLowPriorityBitRate) {
    AddNode("a", {{"x", 100}});
    CResourceTask task;
    for (const char* pszKey :
         {PSZ_TASK_PRODUCT_TYPE, PSZ_TASK_SERVICE_TYPE, PSZ_TASK_REQ_STORAGE,
          PSZ_TASK_REQ_PIC_STORAGE, PSZ_TASK_LOW_PRI_BIT_RATE, PSZ_TASK_TRAN_BAND_WIDTH}) {
        task.InsertSingleKeyValue(pszKey, "2048");
    }
    task.SetAllocInfoList({"x", 100, 0, 0, "", ""});
    CContainerMgr::Instance().SetResourceTask(Addr("a"), {task}, CONTAINER_STATUS_REPORT_REQ);
    EXPECT_EQ(Reduce(1), 0);
    EXPECT_EQ(m_reduceList.front().lowPriority, 2048);
}

struct CSizes {
    int iChange;
    int iTotal;
};

TEST_F(CloudStoragePlugin, SizesThatDoNotGoTogetherReduceNothing) {
    AddNode("a", {{"x", 100}});
    for (const CSizes& sizes : {CSizes{0, 100}, {-1, 100}, {1, 0}, {100, 99}, {1, -1}}) {
        PELU::CXml xml(nullptr);
        Parse(xml, PSZ_ANY);
        m_logger.Clear();
        EXPECT_EQ(
            Plugin().CloudStorageReduce(xml, m_strCode, sizes.iChange, sizes.iTotal, m_reduceList),
            ORVA_PARA_INVALID);
        EXPECT_THAT(m_logger.GetOperLines(),
                    ElementsAre(Err("cloud storage reduce", ORVA_PARA_INVALID,
                                    "cloud_storage_plugin", "CloudStorageReduce",
                                    "cannot reduce " + std::to_string(sizes.iTotal) + " by " +
                                        std::to_string(sizes.iChange) + ".")));
    }
    EXPECT_EQ(m_strCode, "untouched");
    EXPECT_THAT(m_reduceList, IsEmpty());
}

struct CBadRequest {
    std::string strName;
    std::string strText;
    std::string strFunction;
    std::string strMessage;
};

std::ostream& operator<<(std::ostream& stream, const CBadRequest& request) {
    return stream << request.strText;
}

class CloudStorageRequest : public CloudStoragePlugin,
                            public testing::WithParamInterface<CBadRequest> {
protected:
    void ExpectLine() {
        EXPECT_THAT(m_logger.GetOperLines(),
                    ElementsAre(Err("read cloud storage request", ORVA_XML_INVALID, "storage_xml",
                                    GetParam().strFunction, GetParam().strMessage)));
    }
};

using CloudStorageAllocRequest = CloudStorageRequest;
using CloudStorageReduceRequest = CloudStorageRequest;

TEST_P(CloudStorageAllocRequest, IsRefusedWhenItCannotBeRead) {
    AddNode("a");
    Offer("a", "x", "100");
    EXPECT_EQ(Alloc(GetParam().strText), ORVA_XML_INVALID);
    EXPECT_THAT(m_shareList, IsEmpty());
    ExpectLine();
}

INSTANTIATE_TEST_SUITE_P(
    Alloc, CloudStorageAllocRequest,
    testing::Values(CBadRequest{"Other", "<Other/>", "ReadAllocRequest", "no CloudStorageAlloc."},
                    CBadRequest{"Empty", AllocRequest(""), "ReadAllocRequest", "no Node."},
                    CBadRequest{"NodeWithoutChildren", AllocRequest("<NodeID>a</NodeID><Node/>"),
                                "ReadNodeId", "a node has no NodeID."},
                    CBadRequest{"NoId", AllocRequest("<Node><Storage>1</Storage></Node>"),
                                "ReadNodeId", "a node has no NodeID."},
                    CBadRequest{"EmptyId", AllocRequest(AskFor("", "1")), "ReadNodeId",
                                "a node has no NodeID."},
                    CBadRequest{"Twice", AllocRequest(AskFor("a", "1") + AskFor("a", "2")),
                                "ReadNodeId", "node stands twice, id[a]."},
                    CBadRequest{"NoStorage", AllocRequest("<Node><NodeID>a</NodeID></Node>"),
                                "ReadNumber", "bad number, Storage[0]."},
                    CBadRequest{"Nothing", AllocRequest(AskFor("a", "0")), "ReadNumber",
                                "bad number, Storage[0]."},
                    CBadRequest{"Negative", AllocRequest(AskFor("a", "-1")), "ReadNumber",
                                "bad number, Storage[-1]."},
                    CBadRequest{"Huge", AllocRequest(AskFor("a", "2147483648")), "ReadNumber",
                                "bad number, Storage[2147483648]."},
                    CBadRequest{"NoNumber", AllocRequest(AskFor("a", "1x")), "ReadNumber",
                                "bad number, Storage[1x]."},
                    CBadRequest{"SecondIsBad", AllocRequest(AskFor("a", "1") + AskFor("b", "")),
                                "ReadNumber", "bad number, Storage[]."},
                    CBadRequest{"NegativeDays",
                                AllocRequest("<Node><NodeID>a</NodeID><Storage>1</Storage>"
                                             "<LowPriStoreDay>-1</LowPriStoreDay></Node>"),
                                "ReadNumber", "bad number, LowPriStoreDay[-1]."}),
    [](const auto& request) { return request.param.strName; });

TEST_P(CloudStorageReduceRequest, IsRefusedWhenItCannotBeRead) {
    AddNode("a", {{"x", 100}});
    EXPECT_EQ(Reduce(1, GetParam().strText), ORVA_XML_INVALID);
    EXPECT_EQ(m_strCode, "untouched");
    EXPECT_THAT(m_reduceList, IsEmpty());
    ExpectLine();
}

INSTANTIATE_TEST_SUITE_P(
    Reduce, CloudStorageReduceRequest,
    testing::Values(
        CBadRequest{"Other", "<Other/>", "ReadReduceRequest", "no CloudStorageReduce."},
        CBadRequest{"NodeWithoutChildren", "<CloudStorageReduce><Node/></CloudStorageReduce>",
                    "ReadNodeId", "a node has no NodeID."},
        CBadRequest{"Twice",
                    "<CloudStorageReduce><Node><NodeID>a</NodeID></Node><Node><NodeID>a</NodeID>"
                    "</Node></CloudStorageReduce>",
                    "ReadNodeId", "node stands twice, id[a]."}),
    [](const auto& request) { return request.param.strName; });

TEST_F(CloudStoragePlugin, ANamedNodeThatIsUnknownReducesNothing) {
    AddNode("a", {{"x", 100}});
    EXPECT_EQ(Reduce(1,
                     "<CloudStorageReduce><Node><NodeID>a</NodeID></Node><Node><NodeID>b</NodeID>"
                     "</Node></CloudStorageReduce>"),
              ORVA_PARA_INVALID);
    EXPECT_THAT(m_reduceList, IsEmpty());
    EXPECT_THAT(m_logger.GetOperLines(),
                ElementsAre(Err("cloud storage reduce", ORVA_PARA_INVALID, "storage_board",
                                "Reduce", "unknown node[b].")));
}

TEST_F(CloudStoragePlugin, BuildsWhatANodeIsSentForItsShare) {
    ORVA_CLOUD_STORAGE_SEND_INFO share{"a<b", 0, 30, 7, {}};
    share.allocInfo.push_back({"x", 20, 0, 20, "x.example", "/x"});
    share.allocInfo.push_back({"y", 10, 0, 10, "", ""});
    PELU::CXml xml(nullptr);
    EXPECT_EQ(Plugin().BuildAllocReqXml(share, xml), 0);
    EXPECT_EQ(CurrentElement(xml), "CloudStorageAllocReq");
    EXPECT_EQ(WithoutBlanks(xml),
              "<CloudStorageAllocReq><NodeID>a&lt;b</NodeID><StorageStatus>0</StorageStatus>"
              "<StorageChangeSize>30</StorageChangeSize><LowPriStoreDay>7</LowPriStoreDay>"
              "<AllocInfo><Code>x</Code><AllocSize>20</AllocSize><UsedSize>0</UsedSize>"
              "<FreeSize>20</FreeSize><Dns>x.example</Dns><Path>/x</Path></AllocInfo>"
              "<AllocInfo><Code>y</Code><AllocSize>10</AllocSize><UsedSize>0</UsedSize>"
              "<FreeSize>10</FreeSize><Dns></Dns><Path></Path></AllocInfo>"
              "</CloudStorageAllocReq>");
}

TEST_F(CloudStoragePlugin, BuildsWhatANodeIsSentForItsReductions) {
    PELU::CXml xml(nullptr);
    EXPECT_EQ(Plugin().BuildReduceReqXML({"a", 2048, {{"x", 20}, {"y", 10}}}, xml), 0);
    EXPECT_EQ(CurrentElement(xml), "CloudStorageReduceReq");
    EXPECT_EQ(WithoutBlanks(xml),
              "<CloudStorageReduceReq><NodeID>a</NodeID><LowPriority>2048</LowPriority>"
              "<ReduceInfo><Code>x</Code><Size>20</Size></ReduceInfo>"
              "<ReduceInfo><Code>y</Code><Size>10</Size></ReduceInfo></CloudStorageReduceReq>");
}

TEST_F(CloudStoragePlugin, ReportsWhatEachNodeHasAfterAnAllocation) {
    AddNode("a", {{"x", 100, 20}});
    AddNode("b");
    PELU::CXml xml(nullptr);
    EXPECT_EQ(Plugin().GenCloudStorageReportXml(xml, true), 0);
    const std::string strAsked =
        "<ServiceType></ServiceType><ProductType></ProductType><ReqStorage>0</ReqStorage>"
        "<ReqPicStorage>0</ReqPicStorage><LowPriBitRate>0</LowPriBitRate>";
    EXPECT_EQ(WithoutBlanks(xml),
              "<CloudStorageAllocReport><Count>2</Count><Node><NodeID>a</NodeID>" + strAsked +
                  "<AllocInfo><Code>x</Code><AllocSize>100</AllocSize>"
                  "<UsedSize>20</UsedSize><Dns>dns</Dns><Path>/path</Path>"
                  "</AllocInfo></Node><Node><NodeID>b</NodeID>" +
                  strAsked + "</Node></CloudStorageAllocReport>");
}

TEST_F(CloudStoragePlugin, ReportsWhatEachPoolHasLeftAfterAReduction) {
    AddNode("a", {{"x", 100, 20}});
    Offer("a", "x", "400");
    Offer("a", "y", "50");
    SetExtParam("a", TakenParam("x"), "30");
    PELU::CXml xml(nullptr);
    EXPECT_EQ(Plugin().GenCloudStorageReportXml(xml, false), 0);
    EXPECT_EQ(WithoutBlanks(xml),
              "<CloudStorageReduceReport><Count>2</Count><Pool><Code>x</Code><Size>400</Size>"
              "<AllocSize>130</AllocSize><UsedSize>20</UsedSize><FreeSize>270</FreeSize>"
              "<Dns>x.example</Dns><Path>/x</Path></Pool><Pool><Code>y</Code><Size>50</Size>"
              "<AllocSize>0</AllocSize><UsedSize>0</UsedSize><FreeSize>50</FreeSize>"
              "<Dns>y.example</Dns><Path>/y</Path></Pool></CloudStorageReduceReport>");
}

}  // namespace
