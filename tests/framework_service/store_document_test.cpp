#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "common_service/oper_common.h"
#include "common_service/tarn_def.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/cluster_config_znode_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/cluster_znode_info.h"
#include "support/host_fixture.h"
#include "support/json_document.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

/// A document class, and what differs between the classes.
struct CDocumentKind {
    std::string strFile;
    ORVA_STORE_NODE node;
    std::string strSuffix;
    unsigned int uiBufLen;
    std::string strMalformedOperation;
    std::string strMalformedMessage;
    std::function<std::unique_ptr<CBaseJsonObject>()> make;
    int iLengthZero;      ///< what writing into a buffer of length 0 returns
    std::string strText;  ///< a text as such a document writes it
};

std::ostream& operator<<(std::ostream& stream, const CDocumentKind& kind) {
    return stream << kind.strFile;
}

template <typename Document>
std::unique_ptr<CBaseJsonObject> Make() {
    return std::make_unique<Document>();
}

/// Valid JSON that is no object, and an array that is nested too deeply to be read.
const std::vector<std::string> TEXTS_THAT_THE_READER_REFUSES = {
    "[]", "[1,2]", "5", "-1.5", "\"text\"", "true", std::string(2000, '[')};

class StoreDocument : public CHostTest, public testing::WithParamInterface<CDocumentKind> {
protected:
    std::string NodePath() const { return Path(GetParam().strSuffix); }

    int ReadStore(bool& bDataEmpty) {
        return COperCommon::GetDataFromZK(NodePath().c_str(), nullptr, GetParam().uiBufLen,
                                          m_pDocument.get(), bDataEmpty);
    }

    CLogLine NullPointerLine(const std::string& strFunction) const {
        return Err("Point pszJson is null.", ORVA_FAIL, GetParam().strFile, strFunction,
                   "Make sure there is something wrong");
    }

    const std::unique_ptr<CBaseJsonObject> m_pDocument = GetParam().make();
};

TEST_P(StoreDocument, HasItsPlaceAndItsSize) {
    EXPECT_EQ(GetParam().node.pszSuffix, GetParam().strSuffix);
    EXPECT_EQ(GetParam().node.uiBufLen, GetParam().uiBufLen);
}

TEST_P(StoreDocument, WritesWhatItRead) {
    EXPECT_EQ(m_pDocument->ParseJson(GetParam().strText.c_str()), ORVA_SUCCEED);
    EXPECT_EQ(TextOf(*m_pDocument), GetParam().strText);
}

TEST_P(StoreDocument, GoesThroughTheStore) {
    m_pDocument->ParseJson(GetParam().strText.c_str());
    ASSERT_EQ(COperCommon::SetDataToZK(NodePath().c_str(), GetParam().uiBufLen, m_pDocument.get()),
              ORVA_SUCCEED);
    EXPECT_EQ(m_pStore->Get(NodePath()), GetParam().strText);
    const auto pRead = GetParam().make();
    bool bDataEmpty = true;
    EXPECT_EQ(COperCommon::GetDataFromZK(NodePath().c_str(), nullptr, GetParam().uiBufLen,
                                         pRead.get(), bDataEmpty),
              ORVA_SUCCEED);
    EXPECT_FALSE(bDataEmpty);
    EXPECT_EQ(TextOf(*pRead), GetParam().strText);
}

TEST_P(StoreDocument, ReadsCommentsTextBehindTheEndAndUnknownKeys) {
    const std::string& strText = GetParam().strText;
    for (const std::string& strVariant :
         {"/* before */" + strText + "// behind", "// before\n" + strText, strText + "}]garbage",
          " \t\r\n" + strText, "{\"Unknown\":{\"a\":[1,null]}," + strText.substr(1)}) {
        const auto pDocument = GetParam().make();
        EXPECT_EQ(pDocument->ParseJson(strVariant.c_str()), ORVA_SUCCEED) << strVariant;
        EXPECT_EQ(TextOf(*pDocument), strText) << strVariant;
    }
}

TEST_P(StoreDocument, NullTextIsInvalidDataButLoggedAsAFailure) {
    EXPECT_EQ(m_pDocument->ParseJson(nullptr), ORVA_DATA_INVALID);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(NullPointerLine("ParseJson")));
}

TEST_P(StoreDocument, NullBufferIsAFailure) {
    EXPECT_EQ(m_pDocument->ToJson(nullptr, 100), ORVA_FAIL);
    EXPECT_EQ(m_pDocument->ToJson(nullptr, 0), ORVA_FAIL);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(NullPointerLine("ToJson"), NullPointerLine("ToJson")));
}

TEST_P(StoreDocument, MalformedTextIsLoggedAndChangesNothing) {
    const std::string& strGood = GetParam().strText;
    m_pDocument->ParseJson(strGood.c_str());
    for (const std::string& strText :
         {std::string(), std::string(" \n"), std::string("{"), std::string("{]"),
          std::string("{\"a\" 1}"), std::string("nul"), std::string("'a'"), std::string("%s%n%d"),
          "\xEF\xBB\xBF" + strGood, strGood.substr(0, strGood.size() - 2)}) {
        m_logger.Clear();
        EXPECT_EQ(m_pDocument->ParseJson(strText.c_str()), ORVA_DATA_INVALID) << strText;
        EXPECT_THAT(
            m_logger.GetLines(),
            ElementsAre(Err(GetParam().strMalformedOperation, ORVA_DATA_INVALID, GetParam().strFile,
                            "ParseJson",
                            GetParam().strMalformedMessage + "json text[" + strText + "].")));
        EXPECT_EQ(TextOf(*m_pDocument), strGood) << strText;
    }
}

TEST_P(StoreDocument, ExceptionOfTheJsonLibraryGoesThroughAndChangesNothing) {
    m_pDocument->ParseJson(GetParam().strText.c_str());
    m_logger.Clear();
    for (const std::string& strText : TEXTS_THAT_THE_READER_REFUSES) {
        EXPECT_THROW(m_pDocument->ParseJson(strText.c_str()), std::exception) << strText;
        EXPECT_EQ(TextOf(*m_pDocument), GetParam().strText) << strText;
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_P(StoreDocument, ExceptionOfTheJsonLibraryIsInvalidDataBehindTheStore) {
    for (const std::string& strText : TEXTS_THAT_THE_READER_REFUSES) {
        if (strText.size() >= GetParam().uiBufLen) {
            continue;
        }
        m_logger.Clear();
        m_pStore->Put(NodePath(), strText);
        bool bDataEmpty = true;
        EXPECT_EQ(ReadStore(bDataEmpty), ORVA_DATA_INVALID) << strText;
        EXPECT_FALSE(bDataEmpty);
        ASSERT_EQ(m_logger.GetLines().size(), 1U) << strText;
        const CLogLine line = m_logger.GetLines().front();
        EXPECT_THAT(line.strMessage,
                    StartsWith("document of " + NodePath() + " threw an exception: "));
        EXPECT_EQ(line, Err("read store node", ORVA_DATA_INVALID, "oper_common", "GetDataFromZK",
                            line.strMessage));
    }
}

TEST_P(StoreDocument, WithoutALoggerTheResultsAreTheSame) {
    OMAdapter::getInstance().setLogger(nullptr);
    EXPECT_EQ(m_pDocument->ParseJson(nullptr), ORVA_DATA_INVALID);
    EXPECT_EQ(m_pDocument->ParseJson("{"), ORVA_DATA_INVALID);
    EXPECT_EQ(m_pDocument->ParseJson("null"), ORVA_DATA_INVALID);
    EXPECT_EQ(m_pDocument->ToJson(nullptr, 100), ORVA_FAIL);
    EXPECT_EQ(m_pDocument->ParseJson(GetParam().strText.c_str()), ORVA_SUCCEED);
    EXPECT_EQ(TextOf(*m_pDocument), GetParam().strText);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_P(StoreDocument, TextIsCutToItsBufferAndTheRestOfTheBufferCleared) {
    const std::string& strText = GetParam().strText;
    m_pDocument->ParseJson(strText.c_str());
    m_logger.Clear();
    for (std::size_t uiLen = 1; uiLen < strText.size() + 5; ++uiLen) {
        std::string strBuffer(uiLen + 1, '#');
        EXPECT_EQ(m_pDocument->ToJson(strBuffer.data(), static_cast<uint32_t>(uiLen)),
                  ORVA_SUCCEED);
        std::string strExpected = strText.substr(0, uiLen - 1);
        strExpected.resize(uiLen, '\0');
        EXPECT_EQ(strBuffer, strExpected + '#') << "length " << uiLen;
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_P(StoreDocument, BufferOfLengthZeroIsLeftAlone) {
    char cBuffer = '#';
    EXPECT_EQ(m_pDocument->ToJson(&cBuffer, 0), GetParam().iLengthZero);
    EXPECT_EQ(cBuffer, '#');
    EXPECT_EQ(m_logger.GetLines().size(), GetParam().iLengthZero == ORVA_SUCCEED ? 0U : 1U);
}

// The host chooses the place of the database versions: the one here is the test's.
INSTANTIATE_TEST_SUITE_P(
    Every, StoreDocument,
    testing::Values(
        CDocumentKind{
            "cluster_znode_info", STORE_NODE_CLUSTER, "/Cluster", 65536, "cluster znode info",
            "parse json fail, ", Make<CClusterZNodeInfo>, ORVA_DATA_INVALID,
            R"({"ClusterCode":"c","ClusterForwardType":1,"ClusterName":"n","ClusterNode":[)"
            R"({"Container":[{"ContainerType":"Cam"}],"DomainRole":1,"NodeID":"N1",)"
            R"("NodeIP":"10.0.0.1","NodeIPType":2,"NodeRole":3,"Status":"Normal"}],)"
            R"("ClusterRemark":"r"})"
            "\n"},
        CDocumentKind{"cluster_config_znode_info", STORE_NODE_CLUSTER_CONFIG, "/ClusterConfig", 512,
                      "Cluster Config node info, parse json fail", "",
                      Make<CClusterConfigZNodeInfo>, ORVA_SUCCEED,
                      R"({"IsFaultShift":false,"IsLoadBalance":true,)"
                      R"("IsLoadBalanceOnePeriod":false,"LoadBalanceThreshold":)"
                      R"({"ChannelThreshold":10,"DiskThreshold":10,"NetThreshold":10}})"
                      "\n"},
        CDocumentKind{"cluster_cloud_storage_znode_info", STORE_NODE_CLOUD_STORAGE, "/CloudStorage",
                      65536, "cluster storage info", "parse json fail, ",
                      Make<CClusterCloudStorageZNodeInfo>, ORVA_SUCCEED,
                      R"({"CloudStorageSet":[{"LowpriBit":3,"NodeList":[{"AllocSize":4,"Code":"c",)"
                      R"("Dns":"d","Path":"p","UsedSize":5}],"NvrCode":"N1","ProductType":"pt",)"
                      R"("ReqPicSize":2,"ReqSize":1,"ServiceType":"st"}]})"
                      "\n"},
        CDocumentKind{"cluster_db_znode_info", STORE_NODE_CENTER_DB, "/CenterDB", 512,
                      "cluster db znode info", "parse json fail, ", Make<CClusterDBZNodeInfo>,
                      ORVA_SUCCEED,
                      R"({"MasterDB":{"DBPort":1,"DBToken":"000","NodeCode":"N1","NodeIp":"a"},)"
                      R"("SlaveDB":[{"DBPort":2,"DBToken":"001","NodeCode":"N2","NodeIp":"b"}]})"
                      "\n"},
        CDocumentKind{"cluster_db_znode_info",
                      {"/CdbVer", 1024},
                      "/CdbVer",
                      1024,
                      "CClusterDBVerZNodeInfo::ParseJson",
                      "parse json fail, ",
                      Make<CClusterDBVerZNodeInfo>,
                      ORVA_SUCCEED,
                      R"({"CdbVerSet":[{"CdbVer":"1","NvrCode":"N1"}]})"
                      "\n"},
        CDocumentKind{"cluster_mgr_znode_info", STORE_NODE_MGR, "/MEROMGR", 1024,
                      "cluster db znode info", "parse json fail, ", Make<CClusterMGRZNodeInfo>,
                      ORVA_SUCCEED,
                      R"({"MasterMGR":{"NodeCode":"N1","NodeIp":"a"}})"
                      "\n"}));

}  // namespace
