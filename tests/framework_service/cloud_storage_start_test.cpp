#include <vector>

#include "common_service/tarn_def.h"
#include "support/cluster_start_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using namespace cluster_start;

namespace {

class CloudStorageStart : public ClusterStart {
protected:
    CloudStorageStart() {
        PutCluster(ClusterText({{"n1", {"MeroCloudStorage", "A"}, "Normal", "10.0.0.1"},
                                {"n2", {"MeroCloudStorage"}, "Normal", "10.0.0.2"},
                                {"n3", {"A"}, "Normal", "10.0.0.3"}}));
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

}  // namespace
