#include "framework_service/cluster_cloud_storage_znode_info.h"

#include <json/json.h>

#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "common_service/oper_common.h"
#include "common_service/tarn_def.h"
#include "support/host_fixture.h"
#include "support/json_document.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char FILE_NAME[] = "cluster_cloud_storage_znode_info";
constexpr char OPERATION[] = "cluster storage info";

/// Two nodes with one allocation each, not in the order of their codes.
constexpr char TWO_NODES[] =
    R"({"CloudStorageSet":[{"NvrCode":"N2","ServiceType":"st2","ProductType":"pt2","ReqSize":21,)"
    R"("ReqPicSize":22,"LowpriBit":23,"NodeList":[{"Code":"c2","AllocSize":24,"UsedSize":25,)"
    R"("Dns":"d2","Path":"p2"}]},{"NvrCode":"N1","ServiceType":"st1","ProductType":"pt1",)"
    R"("ReqSize":11,"ReqPicSize":12,"LowpriBit":13,"NodeList":[{"Code":"c1","AllocSize":14,)"
    R"("UsedSize":15,"Dns":"d1","Path":"p1"}]}]})";

CloudStorageInfo MakeInfo(const std::string& strServiceType,
                          const std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO>& allocInfo = {}) {
    return {strServiceType, "pt", 1, 2, 3, allocInfo};
}

ORVA_CLOUD_STORAGE_ALLOC_INFO MakeAlloc(const std::string& strCode) {
    return {strCode, 4, 5, 7, "d", "p"};
}

std::string EntryText(const std::string& strCode, const std::string& strServiceType) {
    return R"({"NvrCode":")" + strCode + R"(","ServiceType":")" + strServiceType +
           R"(","ProductType":"pt","ReqSize":1,"ReqPicSize":2,"LowpriBit":3})";
}

CLogLine ParseLine(const std::string& strText, int iSize) {
    return Info(OPERATION, FILE_NAME, "ParseJson",
                "parse json text[" + strText + "], size=" + std::to_string(iSize));
}

CLogLine AllocLine(const std::string& strMessage) {
    return Info(OPERATION, FILE_NAME, "ParseJson", strMessage);
}

CLogLine FailureLine(const std::string& strMessage, const std::string& strText) {
    return Err(OPERATION, ORVA_DATA_INVALID, FILE_NAME, "ParseJson",
               strMessage + ", json text[" + strText + "].");
}

CLogLine IllegalLine(const std::string& strOperation, const std::string& strFunction) {
    return Err(strOperation, ORVA_DATA_INVALID, FILE_NAME, strFunction, "node is null or illegal.");
}

const CLogLine BAD_ENTRY = IllegalLine("cluster cloud storage info", "ParseCloudStorageNodeJson");
const CLogLine BAD_ALLOC = IllegalLine("cluster cloud storage node info", "ParseNodeJson");
const CLogLine ALLOC_OF_N2 = AllocLine("nvr code=N2, code=c2, alloc=24, used=25, dns=d2, path=p2");
const CLogLine ALLOC_OF_N1 = AllocLine("nvr code=N1, code=c1, alloc=14, used=15, dns=d1, path=p1");

/// A document that holds the node "old".
class CloudStorageDocument : public CHostTest {
protected:
    CloudStorageDocument() {
        m_document.SetCloudStorageInfo("old", MakeInfo("old", {MakeAlloc("old")}));
    }

    int Parse(const std::string& strText) { return m_document.ParseJson(strText.c_str()); }

    CloudStorageInfo Known(const std::string& strCode) const {
        CloudStorageInfo info{};
        EXPECT_EQ(m_document.GetCloudStorageInfo(strCode, info), 0) << strCode;
        return info;
    }

    std::vector<std::string> Codes() const {
        std::vector<std::string> codes;
        for (const auto& [strCode, info] : m_document.GetCloudStorageInfoMap()) {
            codes.push_back(strCode);
        }
        return codes;
    }

    void ExpectRefused(const std::string& strText, const std::vector<CLogLine>& lines,
                       const std::vector<std::string>& codes) {
        EXPECT_EQ(Parse(strText), ORVA_DATA_INVALID);
        EXPECT_EQ(m_logger.GetLines(), lines);
        EXPECT_EQ(Codes(), codes);
    }

    CClusterCloudStorageZNodeInfo m_document;
};

TEST_F(CloudStorageDocument, StartsEmpty) {
    EXPECT_THAT(CClusterCloudStorageZNodeInfo().GetCloudStorageInfoMap(), IsEmpty());
}

TEST_F(CloudStorageDocument, EntryIsInsertedAndReplaced) {
    m_document.SetCloudStorageInfo("N1", MakeInfo("first", {MakeAlloc("c")}));
    m_document.SetCloudStorageInfo("N1", MakeInfo("second"));
    EXPECT_THAT(Codes(), ElementsAre("N1", "old"));
    EXPECT_EQ(Known("N1").strServiceType, "second");
    EXPECT_THAT(Known("N1").allocInfo, IsEmpty());
}

TEST_F(CloudStorageDocument, UnknownCodeAnswersOneAndLeavesTheArgument) {
    CloudStorageInfo info = MakeInfo("mine", {MakeAlloc("mine")});
    EXPECT_EQ(m_document.GetCloudStorageInfo("N1", info), 1);
    EXPECT_EQ(info.strServiceType, "mine");
    EXPECT_EQ(info.allocInfo.size(), 1U);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CloudStorageDocument, MapIsHandedOutAsACopy) {
    m_document.GetCloudStorageInfoMap().clear();
    EXPECT_THAT(Codes(), ElementsAre("old"));
}

TEST_F(CloudStorageDocument, RecordsAreCopiedWholeAlsoOntoThemselves) {
    CloudStorageInfo info = MakeInfo("st", {MakeAlloc("c")});
    const CloudStorageInfo& self = info;
    info = self;
    EXPECT_EQ(info.strServiceType, "st");
    EXPECT_EQ(info.strProductType, "pt");
    EXPECT_EQ(info.iReqStorage, 1);
    EXPECT_EQ(info.iReqPicStorage, 2);
    EXPECT_EQ(info.iLowPriorityBitRate, 3);
    ASSERT_EQ(info.allocInfo.size(), 1U);
    EXPECT_EQ(info.allocInfo.front().cloudStorageCode, "c");
    EXPECT_EQ(info.allocInfo.front().allocStorage, 4);
    EXPECT_EQ(info.allocInfo.front().usedStorage, 5);
    EXPECT_EQ(info.allocInfo.front().freeStorage, 7);
    EXPECT_EQ(info.allocInfo.front().dns, "d");
    EXPECT_EQ(info.allocInfo.front().path, "p");
}

TEST_F(CloudStorageDocument, EntriesAreReadIntoTheMapAndLogged) {
    EXPECT_EQ(Parse(TWO_NODES), ORVA_SUCCEED);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(ParseLine(TWO_NODES, 2), ALLOC_OF_N2, ALLOC_OF_N1));
    EXPECT_THAT(Codes(), ElementsAre("N1", "N2", "old"));
    const CloudStorageInfo info = Known("N1");
    EXPECT_EQ(info.strServiceType, "st1");
    EXPECT_EQ(info.strProductType, "pt1");
    EXPECT_EQ(info.iReqStorage, 11);
    EXPECT_EQ(info.iReqPicStorage, 12);
    EXPECT_EQ(info.iLowPriorityBitRate, 13);
    ASSERT_EQ(info.allocInfo.size(), 1U);
    EXPECT_EQ(info.allocInfo.front().cloudStorageCode, "c1");
    EXPECT_EQ(info.allocInfo.front().allocStorage, 14);
    EXPECT_EQ(info.allocInfo.front().usedStorage, 15);
    EXPECT_EQ(info.allocInfo.front().freeStorage, 0);
    EXPECT_EQ(info.allocInfo.front().dns, "d1");
    EXPECT_EQ(info.allocInfo.front().path, "p1");
}

TEST_F(CloudStorageDocument, AllocationsKeepTheirOrder) {
    m_document.SetCloudStorageInfo("N1", MakeInfo("st", {MakeAlloc("z"), MakeAlloc("a")}));
    ASSERT_EQ(Parse(TextOf(m_document)), ORVA_SUCCEED);
    const CloudStorageInfo info = Known("N1");
    std::vector<std::string> codes;
    for (const ORVA_CLOUD_STORAGE_ALLOC_INFO& alloc : info.allocInfo) {
        codes.push_back(alloc.cloudStorageCode);
    }
    EXPECT_THAT(codes, ElementsAre("z", "a"));
}

TEST_F(CloudStorageDocument, EmptySetChangesNothing) {
    const std::string strText = R"({"CloudStorageSet":[]})";
    EXPECT_EQ(Parse(strText), ORVA_SUCCEED);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(ParseLine(strText, 0)));
    EXPECT_THAT(Codes(), ElementsAre("old"));
}

TEST_F(CloudStorageDocument, EntryReplacesThatOfItsNodeWholeAndTheLaterOfTwoWins) {
    const std::string strText = R"({"CloudStorageSet":[)" + EntryText("old", "first") + "," +
                                EntryText("", "") + "," + EntryText("old", "second") + "]}";
    EXPECT_EQ(Parse(strText), ORVA_SUCCEED);
    EXPECT_THAT(Codes(), ElementsAre("", "old"));
    EXPECT_EQ(Known("old").strServiceType, "second");
    EXPECT_THAT(Known("old").allocInfo, IsEmpty());
}

TEST_F(CloudStorageDocument, LastOfTwoKeysOfOneNameCounts) {
    EXPECT_EQ(Parse(R"({"CloudStorageSet":5,"CloudStorageSet":[{"ReqSize":"x",)" +
                    EntryText("N1", "st").substr(1) + "]}"),
              ORVA_SUCCEED);
    EXPECT_EQ(Known("N1").iReqStorage, 1);
}

TEST_F(CloudStorageDocument, WholeNumbersOfAnyFormAreIntegers) {
    std::string strText = TWO_NODES;
    for (const auto& [strPath, strNumber] :
         {std::pair{".ReqSize", "5.0"}, std::pair{".ReqPicSize", "-2147483648"},
          std::pair{".LowpriBit", "2147483647"}, std::pair{".NodeList[0].AllocSize", "1e3"},
          std::pair{".NodeList[0].UsedSize", "-0"}}) {
        strText = WithMember(strText, {std::string(".CloudStorageSet[1]") + strPath, strNumber});
    }
    EXPECT_EQ(Parse(strText), ORVA_SUCCEED);
    const CloudStorageInfo info = Known("N1");
    EXPECT_EQ(info.iReqStorage, 5);
    EXPECT_EQ(info.iReqPicStorage, std::numeric_limits<int32_t>::min());
    EXPECT_EQ(info.iLowPriorityBitRate, std::numeric_limits<int32_t>::max());
    EXPECT_EQ(info.allocInfo.front().allocStorage, 1000);
    EXPECT_EQ(info.allocInfo.front().usedStorage, 0);
}

class NoAllocations : public CloudStorageDocument,
                      public testing::WithParamInterface<std::string> {};

TEST_P(NoAllocations, AreAnEmptyListWithoutAWord) {
    const std::string strText = WithMember(TWO_NODES, {".CloudStorageSet[0].NodeList", GetParam()});
    EXPECT_EQ(Parse(strText), ORVA_SUCCEED);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(ParseLine(strText, 2), ALLOC_OF_N1));
    EXPECT_THAT(Known("N2").allocInfo, IsEmpty());
    EXPECT_EQ(Known("N2").strServiceType, "st2");
}

INSTANTIATE_TEST_SUITE_P(CloudStorage, NoAllocations,
                         testing::Values("null", "\"x\"", "5", "1.5", "true", "{}", "[]"));

class BadSet : public CloudStorageDocument, public testing::WithParamInterface<CMemberChange> {};

TEST_P(BadSet, IsRefused) {
    const std::string strText = WithMember(TWO_NODES, GetParam());
    ExpectRefused(strText, {FailureLine("CloudStorageSet is invalid", strText)}, {"old"});
}

INSTANTIATE_TEST_SUITE_P(CloudStorage, BadSet,
                         testing::ValuesIn(EveryBadMember({{".CloudStorageSet",
                                                            EMemberType::ARRAY}})));

TEST_F(CloudStorageDocument, NullDocumentIsRefused) {
    ExpectRefused("null", {FailureLine("CloudStorageSet is invalid", "null")}, {"old"});
}

/// The second entry is bad: the first stays.
class BadEntry : public CloudStorageDocument, public testing::WithParamInterface<CMemberChange> {};

TEST_P(BadEntry, EndsTheParse) {
    const std::string strText = WithMember(TWO_NODES, GetParam());
    ExpectRefused(strText,
                  {ParseLine(strText, 2), ALLOC_OF_N2, BAD_ENTRY,
                   FailureLine("parse cloud storage node failed", strText)},
                  {"N2", "old"});
}

INSTANTIATE_TEST_SUITE_P(
    CloudStorage, BadEntry,
    testing::ValuesIn(EveryBadMember({{".CloudStorageSet[1].ServiceType", EMemberType::STRING},
                                      {".CloudStorageSet[1].ProductType", EMemberType::STRING},
                                      {".CloudStorageSet[1].ReqSize", EMemberType::INT},
                                      {".CloudStorageSet[1].ReqPicSize", EMemberType::INT},
                                      {".CloudStorageSet[1].LowpriBit", EMemberType::INT}})));

class BadNodeCode : public CloudStorageDocument,
                    public testing::WithParamInterface<CMemberChange> {};

TEST_P(BadNodeCode, EndsTheParse) {
    const std::string strText = WithMember(TWO_NODES, GetParam());
    ExpectRefused(
        strText, {ParseLine(strText, 2), ALLOC_OF_N2, FailureLine("node code is invalid", strText)},
        {"N2", "old"});
}

INSTANTIATE_TEST_SUITE_P(CloudStorage, BadNodeCode,
                         testing::ValuesIn(EveryBadMember({{".CloudStorageSet[1].NvrCode",
                                                            EMemberType::STRING}})));

class BadAllocation : public CloudStorageDocument,
                      public testing::WithParamInterface<CMemberChange> {};

TEST_P(BadAllocation, EndsTheParse) {
    const std::string strText = WithMember(TWO_NODES, GetParam());
    ExpectRefused(strText,
                  {ParseLine(strText, 2), ALLOC_OF_N2, BAD_ALLOC,
                   FailureLine("parse node json fail", strText)},
                  {"N2", "old"});
}

INSTANTIATE_TEST_SUITE_P(CloudStorage, BadAllocation,
                         testing::ValuesIn(EveryBadMember(
                             {{".CloudStorageSet[1].NodeList[0].Code", EMemberType::STRING},
                              {".CloudStorageSet[1].NodeList[0].AllocSize", EMemberType::INT},
                              {".CloudStorageSet[1].NodeList[0].UsedSize", EMemberType::INT},
                              {".CloudStorageSet[1].NodeList[0].Dns", EMemberType::STRING},
                              {".CloudStorageSet[1].NodeList[0].Path", EMemberType::STRING}})));

TEST_F(CloudStorageDocument, NullEntryHasNoNodeCode) {
    const std::string strText = R"({"CloudStorageSet":[null]})";
    ExpectRefused(strText, {ParseLine(strText, 1), FailureLine("node code is invalid", strText)},
                  {"old"});
}

TEST_F(CloudStorageDocument, AllocationsBeforeABadOneAreLoggedButTheEntryIsDropped) {
    const std::string strText =
        WithMember(TWO_NODES, {".CloudStorageSet[0].NodeList",
                               R"([{"Code":"c","AllocSize":1,"UsedSize":2,"Dns":"","Path":""},)"
                               R"(null])"});
    ExpectRefused(
        strText,
        {ParseLine(strText, 2), AllocLine("nvr code=N2, code=c, alloc=1, used=2, dns=, path="),
         BAD_ALLOC, FailureLine("parse node json fail", strText)},
        {"old"});
}

class StorageEntryThatIsNoObject : public CloudStorageDocument,
                                   public testing::WithParamInterface<std::string> {
protected:
    const std::string m_strText = WithMember(
        TWO_NODES, {".CloudStorageSet", "[" + EntryText("N1", "st") + "," + GetParam() + "]"});
};

TEST_P(StorageEntryThatIsNoObject, IsRefusedByTheJsonLibraryAndEarlierEntriesStay) {
    EXPECT_THROW(Parse(m_strText), std::exception);
    EXPECT_THAT(Codes(), ElementsAre("N1", "old"));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(ParseLine(m_strText, 2)));
}

TEST_P(StorageEntryThatIsNoObject, IsInvalidDataBehindTheStore) {
    m_pStore->Put(Path("/CloudStorage"), m_strText);
    bool bDataEmpty = true;
    EXPECT_EQ(COperCommon::GetDataFromZK(Path("/CloudStorage").c_str(), nullptr, 65536, &m_document,
                                         bDataEmpty),
              ORVA_DATA_INVALID);
    EXPECT_FALSE(bDataEmpty);
    EXPECT_THAT(Codes(), ElementsAre("N1", "old"));
}

INSTANTIATE_TEST_SUITE_P(CloudStorage, StorageEntryThatIsNoObject,
                         testing::Values("5", "\"x\"", "[]", "true",
                                         R"({"NvrCode":"N2","ServiceType":"","ProductType":"",)"
                                         R"("ReqSize":1,"ReqPicSize":2,"LowpriBit":3,)"
                                         R"("NodeList":[5]})"));

TEST_F(CloudStorageDocument, IsWrittenInTheOrderOfTheCodesWithoutFreeSizes) {
    CClusterCloudStorageZNodeInfo document;
    document.SetCloudStorageInfo("N2", MakeInfo("b"));
    document.SetCloudStorageInfo("N1", MakeInfo("a", {MakeAlloc("y"), MakeAlloc("x")}));
    EXPECT_EQ(TextOf(document),
              R"({"CloudStorageSet":[{"LowpriBit":3,"NodeList":[)"
              R"({"AllocSize":4,"Code":"y","Dns":"d","Path":"p","UsedSize":5},)"
              R"({"AllocSize":4,"Code":"x","Dns":"d","Path":"p","UsedSize":5}],)"
              R"("NvrCode":"N1","ProductType":"pt","ReqPicSize":2,"ReqSize":1,"ServiceType":"a"},)"
              R"({"LowpriBit":3,"NvrCode":"N2","ProductType":"pt","ReqPicSize":2,"ReqSize":1,)"
              R"("ServiceType":"b"}]})"
              "\n");
    EXPECT_EQ(Parse(TextOf(document)), ORVA_SUCCEED);
    EXPECT_EQ(Known("N1").allocInfo.front().freeStorage, 0);
    EXPECT_THAT(Known("N2").allocInfo, IsEmpty());
}

TEST_F(CloudStorageDocument, EmptyMapIsWrittenAsNullWhichIsRefused) {
    CClusterCloudStorageZNodeInfo empty;
    const std::string strText = TextOf(empty);
    EXPECT_EQ(strText, "{\"CloudStorageSet\":null}\n");
    ExpectRefused(strText, {FailureLine("CloudStorageSet is invalid", strText)}, {"old"});
}

TEST_F(CloudStorageDocument, AllocationIsReadWithoutItsFreeSize) {
    Json::Value allocJson;
    allocJson[PSZ_CLOUD_STORAGE_CODE] = "c";
    allocJson[PSZ_CLOUD_STORAGE_ALLOC_SIZE] = 1;
    allocJson[PSZ_CLOUD_STORAGE_USED_SIZE] = 2;
    allocJson[PSZ_CLOUD_STORAGE_DNS] = "d";
    ORVA_CLOUD_STORAGE_ALLOC_INFO alloc = {"mine", 4, 5, 7, "my d", "my p"};
    EXPECT_EQ(m_document.ParseNodeJson(allocJson, alloc), ORVA_DATA_INVALID);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(BAD_ALLOC));
    EXPECT_EQ(alloc.cloudStorageCode, "mine");
    EXPECT_EQ(alloc.allocStorage, 4);
    EXPECT_EQ(alloc.usedStorage, 5);
    EXPECT_EQ(alloc.dns, "my d");
    EXPECT_EQ(alloc.path, "my p");

    allocJson[PSZ_CLOUD_STORAGE_PATH] = "p";
    EXPECT_EQ(m_document.ParseNodeJson(allocJson, alloc), ORVA_SUCCEED);
    EXPECT_EQ(alloc.cloudStorageCode, "c");
    EXPECT_EQ(alloc.allocStorage, 1);
    EXPECT_EQ(alloc.usedStorage, 2);
    EXPECT_EQ(alloc.freeStorage, 7);
    EXPECT_EQ(alloc.dns, "d");
    EXPECT_EQ(alloc.path, "p");
}

TEST_F(CloudStorageDocument, FlatKeysOfAnEntryAreReadWithoutItsAllocations) {
    Json::Value entryJson;
    entryJson[PSZ_CLOUD_STORAGE_SERVICE_TYPE] = "st";
    entryJson[PSZ_CLOUD_STORAGE_PRODUCT_TYPE] = "pt";
    entryJson[PSZ_CLOUD_STORAGE_REQ] = 1;
    entryJson[PSZ_CLOUD_STORAGE_REQ_PIC] = 2;
    entryJson[PSZ_CLOUD_STORAGE_NODE_LIST] = Json::arrayValue;
    CloudStorageInfo info = {"my st", "my pt", 7, 8, 9, {MakeAlloc("mine")}};
    EXPECT_EQ(m_document.ParseCloudStorageNodeJson(entryJson, info), ORVA_DATA_INVALID);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(BAD_ENTRY));
    EXPECT_EQ(info.strServiceType, "my st");
    EXPECT_EQ(info.strProductType, "my pt");
    EXPECT_EQ(info.iReqStorage, 7);
    EXPECT_EQ(info.iReqPicStorage, 8);
    EXPECT_EQ(info.iLowPriorityBitRate, 9);

    entryJson[PSZ_CLOUD_STORAGE_LOWPRI_BIT] = 3;
    EXPECT_EQ(m_document.ParseCloudStorageNodeJson(entryJson, info), ORVA_SUCCEED);
    EXPECT_EQ(info.strServiceType, "st");
    EXPECT_EQ(info.strProductType, "pt");
    EXPECT_EQ(info.iReqStorage, 1);
    EXPECT_EQ(info.iReqPicStorage, 2);
    EXPECT_EQ(info.iLowPriorityBitRate, 3);
    EXPECT_EQ(info.allocInfo.size(), 1U);
}

/// What a document writes that was given this one's entries one by one.
std::string TextOfEntries(const CClusterCloudStorageZNodeInfo& document) {
    CClusterCloudStorageZNodeInfo filled;
    for (const auto& [strCode, info] : document.GetCloudStorageInfoMap()) {
        filled.SetCloudStorageInfo(strCode, info);
    }
    return TextOf(filled);
}

const std::string ORDERED_NODES =
    R"({"CloudStorageSet":[)" + EntryText("N1", "st1") +
    R"(,{"NvrCode":"N2","ServiceType":"st2","ProductType":"pt","ReqSize":1,"ReqPicSize":2,)"
    R"("LowpriBit":3,"NodeList":[{"Code":"c1","AllocSize":4,"UsedSize":5,"Dns":"d","Path":"p"},)"
    R"({"Code":"c2","AllocSize":4,"UsedSize":5,"Dns":"d","Path":"p"}]},)" +
    EntryText("N3", "st3") + "]}";

std::vector<std::string> TextsInEveryForm() {
    std::vector<std::string> texts = {
        ORDERED_NODES,
        TWO_NODES,
        "{\"CloudStorageSet\":[]}",
        "/* of two */ {\"CloudStorageSet\":[" + EntryText("N2", "a") + " // the first\n]}",
        R"({"CloudStorageSet":[)" + EntryText("N2", "a") + "," + EntryText("N2", "b") + "]}",
        R"({"CloudStorageSet":[)" + EntryText("N3", "a") + "," + EntryText("N1", "b") + "," +
            EntryText("N3", "c") + "]}",
        R"({"CloudStorageSet":[)" + EntryText("", "") + "," + EntryText(R"(N\u0000)", "b\\u0000c") +
            "," + EntryText(R"(N\u0000\u00e4)", R"(\"\\\n\u4e2d)") + "]}"};
    const std::string strEntry = ".CloudStorageSet[1]";
    for (const std::string strMember : {".ReqSize", ".ReqPicSize", ".LowpriBit",
                                        ".NodeList[1].AllocSize", ".NodeList[0].UsedSize"}) {
        for (const char* pszNumber : {"3.0", "-0", "-7", "2e2"}) {
            texts.push_back(WithMember(ORDERED_NODES, {strEntry + strMember, pszNumber}));
        }
    }
    for (const char* pszList : {"[]", "\"x\"", "null", "{}", "5", "1.5", "true"}) {
        texts.push_back(WithMember(ORDERED_NODES, {strEntry + ".NodeList", pszList}));
    }
    for (const std::string& strObject : {std::string(), strEntry, strEntry + ".NodeList[1]"}) {
        for (const char* pszExtra : {"1", "1.5", "null", "[]"}) {
            texts.push_back(WithMember(ORDERED_NODES, {strObject + ".Extra", pszExtra}));
        }
    }
    return texts;
}

/// A text in any form, read into an empty document.
class CloudStorageText : public CloudStorageDocument,
                         public testing::WithParamInterface<std::string> {
protected:
    CloudStorageText() {
        m_document = {};
        EXPECT_EQ(Parse(GetParam()), ORVA_SUCCEED);
    }
};

TEST_P(CloudStorageText, IsWrittenAsItsEntriesAre) {
    EXPECT_EQ(TextOf(m_document), TextOfEntries(m_document));
    EXPECT_EQ(TextOf(m_document), TextOfEntries(m_document)) << "a second time";
}

TEST_P(CloudStorageText, IsWrittenWithTheEntryThatWasSet) {
    const CClusterCloudStorageZNodeInfo parsed = m_document;
    const std::string strBefore = TextOfEntries(parsed);
    for (const std::string strCode : {"", "N0", "N1", "N2", "N20", "N3", "N4"}) {
        for (const auto& info : {MakeInfo("set"), MakeInfo("set", {MakeAlloc("x")})}) {
            m_document = parsed;
            m_document.SetCloudStorageInfo(strCode, info);
            EXPECT_EQ(TextOf(m_document), TextOfEntries(m_document)) << strCode;
        }
    }
    m_document = parsed;
    EXPECT_EQ(TextOf(m_document), strBefore) << "copies share nothing";
}

INSTANTIATE_TEST_SUITE_P(CloudStorage, CloudStorageText, testing::ValuesIn(TextsInEveryForm()));

TEST_F(CloudStorageDocument, FreeSizeThatWasSetComesBackAfterATextWasRead) {
    m_document = {};
    ASSERT_EQ(Parse(ORDERED_NODES), ORVA_SUCCEED);
    m_document.SetCloudStorageInfo("N2", MakeInfo("set", {MakeAlloc("c")}));
    EXPECT_EQ(Known("N2").allocInfo.front().freeStorage, 7);
    EXPECT_EQ(Known("N2").strServiceType, "set");
}

TEST_F(CloudStorageDocument, TextsThatAddUpAreWrittenTogether) {
    m_document = {};
    for (const std::string& strText :
         {ORDERED_NODES, R"({"CloudStorageSet":[)" + EntryText("N4", "later") + "]}",
          std::string(TWO_NODES), std::string(R"({"CloudStorageSet":[]})"), ORDERED_NODES}) {
        EXPECT_EQ(Parse(strText), ORVA_SUCCEED);
        EXPECT_EQ(TextOf(m_document), TextOfEntries(m_document)) << strText;
    }
}

TEST_F(CloudStorageDocument, EntriesBeforeABadOneAreWritten) {
    const std::string strGood = EntryText("N4", "good");
    for (const std::string strBad : {R"({"NvrCode":"N5"})", "null", "5"}) {
        for (const char* pszFirst : {ORDERED_NODES.c_str(), R"({"CloudStorageSet":[]})"}) {
            m_document = {};
            ASSERT_EQ(Parse(pszFirst), ORVA_SUCCEED);
            try {
                EXPECT_EQ(Parse(R"({"CloudStorageSet":[)" + strGood + "," + strBad + "]}"),
                          ORVA_DATA_INVALID);
            } catch (const std::exception&) {
                EXPECT_EQ(strBad, "5") << "refused by the JSON library";
            }
            EXPECT_EQ(Known("N4").strServiceType, "good");
            EXPECT_EQ(TextOf(m_document), TextOfEntries(m_document)) << strBad;
        }
    }
}

TEST_F(CloudStorageDocument, MovesWithWhatItWasReadFrom) {
    m_document = {};
    ASSERT_EQ(Parse(ORDERED_NODES), ORVA_SUCCEED);
    CClusterCloudStorageZNodeInfo other;
    ASSERT_EQ(other.ParseJson(TWO_NODES), ORVA_SUCCEED);
    const std::string strText = TextOf(m_document);
    other = std::move(m_document);
    EXPECT_EQ(TextOf(other), strText);
    EXPECT_EQ(TextOf(m_document), TextOfEntries(m_document)) << "what is left";
}

TEST_F(CloudStorageDocument, IsWrittenAsItsEntriesAreAfterAnyChanges) {
    const std::vector<std::string> texts = TextsInEveryForm();
    std::mt19937 random(20);
    const auto pick = [&random](std::size_t uiCount) { return random() % uiCount; };
    for (int iDocument = 0; iDocument < 200; ++iDocument) {
        m_document = {};
        for (int iChange = 0; iChange < 8; ++iChange) {
            const std::string strCode = "N" + std::to_string(pick(6));
            switch (pick(4)) {
                case 0:
                    Parse(texts[pick(texts.size())]);
                    break;
                case 1:
                    m_document.ParseJson(TextOf(m_document).c_str());
                    break;
                default:
                    m_document.SetCloudStorageInfo(
                        strCode, MakeInfo(strCode, std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO>(
                                                       pick(3), MakeAlloc(strCode))));
            }
            if (pick(2) == 0) {
                ASSERT_EQ(TextOf(m_document), TextOfEntries(m_document)) << iDocument;
            }
        }
        ASSERT_EQ(TextOf(m_document), TextOfEntries(m_document)) << iDocument;
    }
}

}  // namespace
