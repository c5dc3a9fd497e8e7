#include <ostream>
#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "framework_service/container.h"
#include "reference_host/store.h"
#include "support/host_fixture.h"
#include "support/model_values.h"
#include "support/reconfigure.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr int REPORT = 3979;
constexpr int ALLOCATED = 41218;

CLogLine MissingKey(const std::string& strKey, const std::string& strValue) {
    return Err("resource task, get value by key", 1, "resource_task", "GetValueByKey",
               "can not find, key[" + strKey + "], value[" + strValue + "]");
}

CLogLine Calculated(const std::string& strMessage) {
    return Trace("container", "CalcCloudStorageInfo", "CContainer:" + strMessage);
}

class ContainerCloudStorage : public CHostTest {
protected:
    void Report(const std::list<CResourceTask>& tasks, int iMsgType = REPORT) {
        m_container.SetResourceTask(tasks, iMsgType);
    }

    CContainer m_container = MakeContainer("N1", "MeroCloudStorage");
};

const KeyValueMap FULL_REQUEST = {{"ProductType", "P"},   {"ServiceType", "S"},
                                  {"ReqStorage", "100"},  {"ReqPicStorage", "20"},
                                  {"LowPriBitRate", "4"}, {"TranBandWidth", "7"}};

const ORVA_CLOUD_STORAGE_ALLOC_INFO ALLOC_1 = {"c1", 60, 10, 50, "d1", "/p1"};
const ORVA_CLOUD_STORAGE_ALLOC_INFO ALLOC_2 = {"c2", 40, 5, 35, "d2", "/p2"};

CResourceTask Request(const KeyValueMap& privateInfo,
                      const std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO>& allocs = {}) {
    CResourceTask task = MakeTask("t", 0, 0, privateInfo);
    for (const ORVA_CLOUD_STORAGE_ALLOC_INFO& allocInfo : allocs) {
        task.SetAllocInfoList(allocInfo);
    }
    return task;
}

/// The fields that a report fills.
Shown Figures(const CContainer& container) {
    Shown figures = Show(container);
    Shown filled;
    for (const char* pszField : {"ProductType", "ServiceType", "ReqStorage", "ReqPicStorage",
                                 "BitRate", "TranBandWidth", "UpdateFlag", "AllocInfo"}) {
        filled[pszField] = figures.at(pszField);
    }
    return filled;
}

Shown Figures(const std::string& strProductType, const std::string& strServiceType, int iReqStorage,
              int iReqPicStorage, int iBitRate, int iTranBandWidth,
              const std::string& strUpdateFlag,
              const std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO>& allocs = {}) {
    return {{"ProductType", strProductType},
            {"ServiceType", strServiceType},
            {"ReqStorage", std::to_string(iReqStorage)},
            {"ReqPicStorage", std::to_string(iReqPicStorage)},
            {"BitRate", std::to_string(iBitRate)},
            {"TranBandWidth", std::to_string(iTranBandWidth)},
            {"UpdateFlag", strUpdateFlag},
            {"AllocInfo", testing::PrintToString(ShowAll(allocs))}};
}

TEST_F(ContainerCloudStorage, ReportIsTakenOver) {
    Report({Request(FULL_REQUEST, {ALLOC_1, ALLOC_2})});
    EXPECT_EQ(Figures(m_container), Figures("P", "S", 100, 20, 4, 7, "false", {ALLOC_1, ALLOC_2}));
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Calculated("m_iReqStorage:100,m_iBitRate:4,m_iReqPicStorage:20,"
                                       "m_bUpdateFlag:0."),
                            Calculated("CloudStorageCode:c1,AllocStorage:60."),
                            Calculated("CloudStorageCode:c2,AllocStorage:40.")));
}

TEST_F(ContainerCloudStorage, ReportOfAnotherTypeIsNot) {
    m_container.SetContainerType("Cam");
    Report({Request(FULL_REQUEST, {ALLOC_1})});
    EXPECT_EQ(Figures(m_container), Figures(CContainer()));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerCloudStorage, CalculationItselfLooksAtNoType) {
    m_container.SetContainerType("Cam");
    Report({Request(FULL_REQUEST, {ALLOC_1})});
    m_container.CalcCloudStorageInfo(REPORT);
    EXPECT_EQ(Figures(m_container), Figures("P", "S", 100, 20, 4, 7, "false", {ALLOC_1}));
}

TEST_F(ContainerCloudStorage, LastTaskDecides) {
    Report({Request(FULL_REQUEST, {ALLOC_1}), Request({{"ProductType", "P2"},
                                                       {"ServiceType", "S2"},
                                                       {"ReqStorage", "1"},
                                                       {"ReqPicStorage", "2"},
                                                       {"LowPriBitRate", "3"},
                                                       {"TranBandWidth", "4"}},
                                                      {ALLOC_2})});
    EXPECT_EQ(Figures(m_container), Figures("P2", "S2", 1, 2, 3, 4, "false", {ALLOC_2}));
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Calculated("m_iReqStorage:100,m_iBitRate:4,m_iReqPicStorage:20,"
                                       "m_bUpdateFlag:0."),
                            Calculated("CloudStorageCode:c1,AllocStorage:60."),
                            Calculated("m_iReqStorage:1,m_iBitRate:3,m_iReqPicStorage:2,"
                                       "m_bUpdateFlag:0."),
                            Calculated("CloudStorageCode:c2,AllocStorage:40.")));
}

TEST_F(ContainerCloudStorage, EmptyReportKeepsWhatWasThere) {
    Report({Request(FULL_REQUEST, {ALLOC_1})});
    m_logger.Clear();
    Report({});
    EXPECT_EQ(Figures(m_container), Figures("P", "S", 100, 20, 4, 7, "false", {ALLOC_1}));
    EXPECT_EQ(m_container.GetTotalTask(), 0U);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerCloudStorage, TaskWithoutAllocationsEmptiesTheirList) {
    Report({Request(FULL_REQUEST, {ALLOC_1})});
    Report({Request(FULL_REQUEST)});
    EXPECT_EQ(Figures(m_container), Figures("P", "S", 100, 20, 4, 7, "false"));
}

TEST_F(ContainerCloudStorage, AnswerToAnAllocationBringsTheAllocationsAlone) {
    Report({Request(FULL_REQUEST, {ALLOC_1})});
    m_logger.Clear();
    Report({Request({{"ProductType", "P2"}, {"ServiceType", "MPU-R"}, {"ReqStorage", "1"}},
                    {ALLOC_2, ALLOC_1})},
           ALLOCATED);
    EXPECT_EQ(Figures(m_container), Figures("P", "S", 100, 20, 4, 7, "false", {ALLOC_2, ALLOC_1}));
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Calculated("CloudStorageCode:c2,AllocStorage:40."),
                            Calculated("CloudStorageCode:c1,AllocStorage:60.")));
}

TEST_F(ContainerCloudStorage, AnyOtherMessageIsAReport) {
    for (const int iMsgType : {0, -1, ALLOCATED - 1, ALLOCATED + 1}) {
        m_container = MakeContainer("N1", "MeroCloudStorage");
        Report({Request(FULL_REQUEST)}, iMsgType);
        EXPECT_EQ(m_container.GetProductType(), "P") << iMsgType;
    }
}

TEST_F(ContainerCloudStorage, UpdateFlagOfMpuRStaysForLaterServiceTypes) {
    Report({Request({{"ProductType", "P"}, {"ServiceType", "MPU-R"}})});
    EXPECT_TRUE(m_container.GetUptadeFlag());
    EXPECT_THAT(m_logger.GetLines(),
                testing::Contains(Calculated("m_iReqStorage:0,m_iBitRate:0,m_iReqPicStorage:0,"
                                             "m_bUpdateFlag:1.")));
    Report({Request(FULL_REQUEST)});
    EXPECT_EQ(m_container.GetServiceType(), "S");
    EXPECT_TRUE(m_container.GetUptadeFlag());
    m_container.SetUptadeFlag(false);
    Report({Request(FULL_REQUEST)});
    EXPECT_FALSE(m_container.GetUptadeFlag());
}

TEST_F(ContainerCloudStorage, UpdateFlagNeedsTheWholeServiceType) {
    for (const char* pszServiceType : {"MPU", "MPU-RX", "mpu-r", ""}) {
        Report({Request({{"ServiceType", pszServiceType}})});
        EXPECT_FALSE(m_container.GetUptadeFlag()) << pszServiceType;
    }
}

struct CMissing {
    std::string strName;
    KeyValueMap privateInfo;
    Shown figures;
    std::vector<CLogLine> lines;
};

std::ostream& operator<<(std::ostream& stream, const CMissing& missing) {
    return stream << missing.strName;
}

class ContainerCloudStorageMissing : public ContainerCloudStorage,
                                     public testing::WithParamInterface<CMissing> {};

TEST_P(ContainerCloudStorageMissing, KeyTakesTheValueOfTheKeyBeforeIt) {
    const CMissing& missing = GetParam();
    m_container.SetTranBandWidth(99);
    Report({Request(missing.privateInfo)});
    EXPECT_EQ(Figures(m_container), missing.figures);
    EXPECT_THAT(m_logger.GetOperLines(), ElementsAreArray(missing.lines));
}

INSTANTIATE_TEST_SUITE_P(
    All, ContainerCloudStorageMissing,
    testing::Values(CMissing{"ProductType",
                             {{"ServiceType", "S"},
                              {"ReqStorage", "1"},
                              {"ReqPicStorage", "2"},
                              {"LowPriBitRate", "3"},
                              {"TranBandWidth", "4"}},
                             Figures("", "S", 1, 2, 3, 4, "false"),
                             {MissingKey("ProductType", "")}},
                    CMissing{"ServiceType",
                             {{"ProductType", "MPU-R"},
                              {"ReqStorage", "1"},
                              {"ReqPicStorage", "2"},
                              {"LowPriBitRate", "3"},
                              {"TranBandWidth", "4"}},
                             Figures("MPU-R", "MPU-R", 1, 2, 3, 4, "true"),
                             {MissingKey("ServiceType", "MPU-R")}},
                    CMissing{"ReqStorage",
                             {{"ProductType", "P"},
                              {"ServiceType", "5S"},
                              {"ReqPicStorage", "2"},
                              {"LowPriBitRate", "3"},
                              {"TranBandWidth", "4"}},
                             Figures("P", "5S", 5, 2, 3, 4, "false"),
                             {MissingKey("ReqStorage", "5S")}},
                    CMissing{
                        "TwoInARow",
                        {{"ProductType", "P"},
                         {"ServiceType", "S"},
                         {"ReqStorage", "100"},
                         {"TranBandWidth", "4"}},
                        Figures("P", "S", 100, 100, 100, 4, "false"),
                        {MissingKey("ReqPicStorage", "100"), MissingKey("LowPriBitRate", "100")}},
                    CMissing{"TranBandWidth",
                             {{"ProductType", "P"},
                              {"ServiceType", "S"},
                              {"ReqStorage", "1"},
                              {"ReqPicStorage", "2"},
                              {"LowPriBitRate", "4"}},
                             Figures("P", "S", 1, 2, 4, 4, "false"),
                             {MissingKey("TranBandWidth", "4")}},
                    CMissing{"All",
                             {},
                             Figures("", "", 0, 0, 0, 0, "false"),
                             {MissingKey("ProductType", ""), MissingKey("ServiceType", ""),
                              MissingKey("ReqStorage", ""), MissingKey("ReqPicStorage", ""),
                              MissingKey("LowPriBitRate", ""), MissingKey("TranBandWidth", "")}}),
    [](const auto& instance) { return instance.param.strName; });

TEST_F(ContainerCloudStorage, MissingKeyInheritsNothingFromTheTaskBefore) {
    Report({Request(FULL_REQUEST), Request({})});
    EXPECT_EQ(Figures(m_container), Figures("", "", 0, 0, 0, 0, "false"));
}

TEST_F(ContainerCloudStorage, TextThatIsNoNumberIsZero) {
    KeyValueMap request = FULL_REQUEST;
    request["ReqStorage"] = "much";
    request["ReqPicStorage"] = "-99999999999";
    Report({Request(request)});
    EXPECT_EQ(Figures(m_container), Figures("P", "S", 0, -2147483647 - 1, 4, 7, "false"));
}

TEST_F(ContainerCloudStorage, AllocationsAreAppendedToTheArgument) {
    Report({Request({}, {ALLOC_1})});
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocInfoList = {ALLOC_2};
    m_container.GetAllocInfoList(allocInfoList);
    m_container.GetAllocInfoList(allocInfoList);
    EXPECT_THAT(ShowAll(allocInfoList), ElementsAre(Show(ALLOC_2), Show(ALLOC_1), Show(ALLOC_1)));
}

constexpr char OTHER_ENTRY[] =
    R"({"LowpriBit":3,"NvrCode":"N0","ProductType":"P0","ReqPicSize":2,"ReqSize":1,)"
    R"("ServiceType":"S0"})";
constexpr char FORMER_ENTRY[] =
    R"({"LowpriBit":0,"NodeList":[{"AllocSize":1,"Code":"c0","Dns":"d0","Path":"p0",)"
    R"("UsedSize":0}],"NvrCode":"N1","ProductType":"","ReqPicSize":0,"ReqSize":0,)"
    R"("ServiceType":""})";
constexpr char OWN_ENTRY[] =
    R"({"LowpriBit":4,"NodeList":[{"AllocSize":60,"Code":"c1","Dns":"d1","Path":"/p1",)"
    R"("UsedSize":10},{"AllocSize":40,"Code":"c2","Dns":"d2","Path":"/p2","UsedSize":5}],)"
    R"("NvrCode":"N1","ProductType":"P","ReqPicSize":20,"ReqSize":100,"ServiceType":"S"})";
constexpr char LAST_ENTRY[] =
    R"({"LowpriBit":6,"NvrCode":"N2","ProductType":"P2","ReqPicSize":5,"ReqSize":4,)"
    R"("ServiceType":"S2"})";

std::string Document(const std::vector<std::string>& entries) {
    std::string strEntries;
    for (const std::string& strEntry : entries) {
        strEntries += (strEntries.empty() ? "" : ",") + strEntry;
    }
    return "{\"CloudStorageSet\":[" + strEntries + "]}\n";
}

CLogLine Saving(int iAllocations) {
    return Info("save cloud storage report info to zk", "container",
                "SaveCloudStorageReportInfoToZK",
                "alloc info list=" + std::to_string(iAllocations));
}

CLogLine ReadFailed(int iCode) {
    return Err("GetDataFromZK", iCode, "container", "SaveCloudStorageReportInfoToZK",
               "get cloud storage info from zk fail. nodeId: N1  cType: MeroCloudStorage");
}

CLogLine WriteFailed(int iCode) {
    return Err("init cluster session, on successful response", iCode, "container",
               "SaveCloudStorageReportInfoToZK", "set cloud storage info to zk fail.");
}

class ContainerCloudStorageSave : public ContainerCloudStorage {
protected:
    ContainerCloudStorageSave() {
        Report({Request(FULL_REQUEST, {ALLOC_1, ALLOC_2})});
        m_shown = Show(m_container);
        m_logger.Clear();
    }

    /// Saves, and looks at what no save may change: the container, and the two calls of the store.
    void Save() {
        const unsigned int uiCallsBefore = m_pStore->GetCallCount();
        m_container.SaveDataToZK();
        EXPECT_EQ(m_pStore->GetCallCount() - uiCallsBefore, 2U);
        EXPECT_EQ(Show(m_container), m_shown);
    }

    std::optional<std::string> Stored() const { return m_pStore->Get(Path("/CloudStorage")); }

    /// What the container itself logged; the document logs what it reads.
    std::vector<CLogLine> OwnLines() const { return m_logger.GetLinesOf("container"); }

    Shown m_shown;
};

TEST_F(ContainerCloudStorageSave, FirstOneWritesThisNodeAloneAndQuietly) {
    Save();
    EXPECT_EQ(Stored(), Document({OWN_ENTRY}));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Saving(2)));
}

TEST_F(ContainerCloudStorageSave, NodeWithoutDataIsAFirstOneToo) {
    for (const std::optional<std::string>& text : {std::optional<std::string>(), {""}}) {
        m_logger.Clear();
        m_pStore->Put(Path("/CloudStorage"), text);
        Save();
        EXPECT_EQ(Stored(), Document({OWN_ENTRY}));
        EXPECT_THAT(m_logger.GetLines(), ElementsAre(Saving(2)));
    }
}

TEST_F(ContainerCloudStorageSave, ReplacesTheEntryOfThisNodeAmongTheOthers) {
    const std::string strFormer = Document({LAST_ENTRY, FORMER_ENTRY, OTHER_ENTRY});
    m_pStore->Put(Path("/CloudStorage"), strFormer);
    Save();
    EXPECT_EQ(Stored(), Document({OTHER_ENTRY, OWN_ENTRY, LAST_ENTRY}));
    EXPECT_THAT(
        m_logger.GetLines(),
        ElementsAre(Info("cluster storage info", "cluster_cloud_storage_znode_info", "ParseJson",
                         "parse json text[" + strFormer + "], size=3"),
                    Info("cluster storage info", "cluster_cloud_storage_znode_info", "ParseJson",
                         "nvr code=N1, code=c0, alloc=1, used=0, dns=d0, path=p0"),
                    Saving(2)));
}

TEST_F(ContainerCloudStorageSave, AddsTheEntryOfThisNode) {
    m_pStore->Put(Path("/CloudStorage"), Document({OTHER_ENTRY}));
    Save();
    EXPECT_EQ(Stored(), Document({OTHER_ENTRY, OWN_ENTRY}));
    EXPECT_THAT(OwnLines(), ElementsAre(Saving(2)));
}

TEST_F(ContainerCloudStorageSave, WithoutAllocationsTheEntryHasNoList) {
    m_container = MakeContainer("N1", "MeroCloudStorage");
    m_container.SetTranBandWidth(7);
    m_container.SetUptadeFlag(true);
    m_shown = Show(m_container);
    Save();
    EXPECT_EQ(Stored(),
              Document({R"({"LowpriBit":0,"NvrCode":"N1","ProductType":"","ReqPicSize":0,)"
                        R"("ReqSize":0,"ServiceType":""})"}));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Saving(0)));
}

TEST_F(ContainerCloudStorageSave, GoesToTheClusterCodeOfTheDay) {
    Reconfigure(&CHostSettings::strClusterCode, "Y");
    Save();
    EXPECT_EQ(m_pStore->Get("/CloudY/CloudStorage"), Document({OWN_ENTRY}));
    EXPECT_EQ(Stored(), std::nullopt);
}

TEST_F(ContainerCloudStorageSave, OtherTypesCallNoStore) {
    for (const char* pszType : {"", "Cam", "MeroImgDev", "meroCloudStorage"}) {
        m_container.SetContainerType(pszType);
        m_container.SaveDataToZK();
    }
    EXPECT_EQ(m_pStore->GetCallCount(), 0U);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ContainerCloudStorageSave, ReportItselfLooksAtNoType) {
    m_container.SetContainerType("Cam");
    m_container.SaveCloudStorageReportInfoToZK();
    EXPECT_EQ(Stored(), Document({OWN_ENTRY}));
}

TEST_F(ContainerCloudStorageSave, FailedReadIsLoggedAndThisNodeIsWrittenAlone) {
    m_pStore->Put(Path("/CloudStorage"), Document({OTHER_ENTRY, LAST_ENTRY}));
    m_pStore->FailCall(1, -4);
    Save();
    EXPECT_EQ(Stored(), Document({OWN_ENTRY}));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(ReadFailed(-4), Saving(2)));
}

TEST_F(ContainerCloudStorageSave, BadEntryIsLoggedAndTheEntriesBeforeItAreWritten) {
    m_pStore->Put(Path("/CloudStorage"), Document({LAST_ENTRY, R"({"NvrCode":5})", OTHER_ENTRY}));
    Save();
    EXPECT_EQ(Stored(), Document({OWN_ENTRY, LAST_ENTRY}));
    EXPECT_THAT(OwnLines(), ElementsAre(ReadFailed(ORVA_DATA_INVALID), Saving(2)));
}

TEST_F(ContainerCloudStorageSave, TextThatIsNoDocumentIsLoggedAndWrittenOver) {
    for (const char* pszText : {"{", "[]", "{}", "{\"CloudStorageSet\":null}", "x"}) {
        m_logger.Clear();
        m_pStore->Put(Path("/CloudStorage"), pszText);
        Save();
        EXPECT_EQ(Stored(), Document({OWN_ENTRY})) << pszText;
        EXPECT_THAT(OwnLines(), ElementsAre(ReadFailed(ORVA_DATA_INVALID), Saving(2))) << pszText;
    }
}

TEST_F(ContainerCloudStorageSave, FailedWriteIsLoggedAndTheNextSaveTriesAgain) {
    m_pStore->Put(Path("/CloudStorage"), Document({OTHER_ENTRY}));
    m_pStore->FailCall(2, -112);
    Save();
    EXPECT_EQ(Stored(), Document({OTHER_ENTRY}));
    EXPECT_THAT(OwnLines(), ElementsAre(Saving(2), WriteFailed(-112)));
    Save();
    EXPECT_EQ(Stored(), Document({OTHER_ENTRY, OWN_ENTRY}));
}

TEST_F(ContainerCloudStorageSave, WithoutAStoreBothFailuresAreLogged) {
    SetStore(nullptr);
    m_container.SaveDataToZK();
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(ReadFailed(STORE_NOT_SET), Saving(2), WriteFailed(STORE_NOT_SET)));
}

TEST_F(ContainerCloudStorageSave, DocumentTooLongForItsNodeIsRefusedAndTheLastOneStays) {
    m_pStore->Put(Path("/CloudStorage"), Document({OTHER_ENTRY}));
    m_container.SetProductType(std::string(65536, 'P'));
    m_container.SaveDataToZK();
    EXPECT_EQ(Stored(), Document({OTHER_ENTRY}));
    EXPECT_THAT(OwnLines(), ElementsAre(Saving(2), WriteFailed(ORVA_DATA_INVALID)));
}

TEST_F(ContainerCloudStorageSave, WithoutALoggerTheSameIsWritten) {
    OMAdapter::getInstance().setLogger(nullptr);
    m_pStore->FailCall(1, -4);
    Save();
    EXPECT_EQ(Stored(), Document({OWN_ENTRY}));
    Report({Request({}, {ALLOC_1})});
    EXPECT_EQ(Figures(m_container), Figures("", "", 0, 0, 0, 0, "false", {ALLOC_1}));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

}  // namespace
