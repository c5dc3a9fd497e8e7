#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common_service/oper_common.h"
#include "common_service/tarn_def.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "support/host_fixture.h"
#include "support/json_document.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// A document that loads itself from the store, and what differs between the classes.
struct CLoadKind {
    std::string strFile;
    std::string strSuffix;
    unsigned int uiBufLen;
    std::string strOperation;
    std::string strMessage;
    std::function<std::unique_ptr<CBaseJsonObject>()> make;
    std::function<int(CBaseJsonObject&)> load;
    bool bWatches;
    std::string strBeforeName;  ///< a text as such a document writes it, around a name
    std::string strBehindName;
    std::string strWithoutData;  ///< what a node without data makes of it; nothing: it stays
    std::string strThrowing;     ///< a text on which the JSON library throws

    std::string TextWith(const std::string& strName) const {
        return strBeforeName + strName + strBehindName;
    }
};

std::ostream& operator<<(std::ostream& stream, const CLoadKind& kind) {
    return stream << kind.strFile << (kind.bWatches ? " with a watcher" : "");
}

std::vector<std::string> g_events;

/// A document that holds the name "held".
class StoreLoad : public CHostTest, public testing::WithParamInterface<CLoadKind> {
protected:
    StoreLoad() {
        g_events.clear();
        SetNodeEventHandler([](const std::string& strPath) { g_events.push_back(strPath); });
        m_pDocument->ParseJson(m_strHeld.c_str());
        m_logger.Clear();
    }

    int Load() { return GetParam().load(*m_pDocument); }

    void ExpectFailedAndUntouched() {
        EXPECT_EQ(Load(), ORVA_FAIL);
        EXPECT_EQ(TextOf(*m_pDocument), m_strHeld);
        const std::vector<CLogLine> lines = m_logger.GetLines();
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.back(), Err(GetParam().strOperation, ORVA_FAIL, GetParam().strFile,
                                    "ParseFromZK", GetParam().strMessage));
        EXPECT_EQ(m_logger.GetLinesOf("oper_common").size(), m_uiHostLines);
    }

    const std::string m_strPath = Path(GetParam().strSuffix);
    const std::string m_strHeld = GetParam().TextWith("held");
    const std::string m_strStored = GetParam().TextWith("stored");
    const std::unique_ptr<CBaseJsonObject> m_pDocument = GetParam().make();
    std::size_t m_uiHostLines = 0;
};

TEST_P(StoreLoad, TakesTheStoredDocumentOverInOneRead) {
    m_pStore->Put(m_strPath, m_strStored);
    EXPECT_EQ(Load(), ORVA_SUCCEED);
    EXPECT_EQ(TextOf(*m_pDocument), m_strStored);
    EXPECT_EQ(m_pStore->GetCallCount(), 1U);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_P(StoreLoad, NodeWithoutDataIsASuccess) {
    for (const std::optional<std::string>& text : {std::optional<std::string>(), {""}}) {
        m_pStore->Put(m_strPath, text);
        EXPECT_EQ(Load(), ORVA_SUCCEED);
        EXPECT_EQ(TextOf(*m_pDocument),
                  GetParam().strWithoutData.empty() ? m_strHeld : GetParam().strWithoutData);
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_P(StoreLoad, AbsentNodeIsAFailure) {
    ExpectFailedAndUntouched();
}

TEST_P(StoreLoad, FailedReadIsAFailureWhateverTheStoreCalledIt) {
    m_pStore->Put(m_strPath, m_strStored);
    m_pStore->FailCall(1, -112);
    ExpectFailedAndUntouched();
}

TEST_P(StoreLoad, RefusedTextIsAFailure) {
    m_pStore->Put(m_strPath, "{");
    ExpectFailedAndUntouched();
    EXPECT_EQ(m_logger.GetLines().size(), 2U);
}

TEST_P(StoreLoad, TextOnWhichTheJsonLibraryThrowsIsAFailure) {
    m_pStore->Put(m_strPath, GetParam().strThrowing);
    m_uiHostLines = 1;
    ExpectFailedAndUntouched();
}

TEST_P(StoreLoad, LongestTextIsOneCharacterShorterThanTheBuffer) {
    const std::string strLongest =
        m_strStored + std::string(GetParam().uiBufLen - 1 - m_strStored.size(), ' ');
    m_pStore->Put(m_strPath, strLongest);
    EXPECT_EQ(Load(), ORVA_SUCCEED);
    EXPECT_EQ(TextOf(*m_pDocument), m_strStored);
}

TEST_P(StoreLoad, TextThatIsTooLongIsAFailure) {
    m_pStore->Put(m_strPath,
                  m_strStored + std::string(GetParam().uiBufLen - m_strStored.size(), ' '));
    m_uiHostLines = 1;
    ExpectFailedAndUntouched();
}

TEST_P(StoreLoad, WatcherHearsTheNextWriteAlone) {
    m_pStore->Put(m_strPath, m_strStored);
    const auto expected = GetParam().bWatches ? 1U : 0U;
    Load();
    EXPECT_THAT(g_events, IsEmpty());
    m_pStore->Write(m_strPath, m_strHeld);
    m_pStore->Write(m_strPath, m_strStored);
    EXPECT_EQ(g_events, std::vector<std::string>(expected, m_strPath));
    Load();
    m_pStore->Write(m_strPath, m_strHeld);
    EXPECT_EQ(g_events, std::vector<std::string>(2 * expected, m_strPath));
}

TEST_P(StoreLoad, WatcherOnAnAbsentNodeHearsItsCreation) {
    Load();
    m_pStore->Write(m_strPath, m_strStored);
    EXPECT_EQ(g_events, std::vector<std::string>(GetParam().bWatches ? 1 : 0, m_strPath));
}

TEST_P(StoreLoad, TextThatDoesNotFitIsNotWritten) {
    m_pStore->Put(m_strPath, m_strHeld);
    const auto pTooLong = GetParam().make();
    pTooLong->ParseJson(GetParam().TextWith(std::string(GetParam().uiBufLen, 'n')).c_str());
    EXPECT_EQ(COperCommon::SetDataToZK(m_strPath.c_str(), GetParam().uiBufLen, pTooLong.get()),
              ORVA_DATA_INVALID);
    EXPECT_EQ(m_pStore->Get(m_strPath), m_strHeld);
    EXPECT_EQ(Load(), ORVA_SUCCEED);
    EXPECT_EQ(TextOf(*m_pDocument), m_strHeld);
}

TEST_P(StoreLoad, NonAsciiNamesThatCanBeReadDoubleAndMayNotFitTheirOwnBuffer) {
    std::string strName;
    while (strName.size() * 5 < GetParam().uiBufLen * 3) {
        strName += "\xE5\x8C\x97";
    }
    m_pStore->Put(m_strPath, GetParam().TextWith(strName));
    ASSERT_EQ(Load(), ORVA_SUCCEED);
    EXPECT_GT(TextOf(*m_pDocument).size(), GetParam().uiBufLen);
    EXPECT_EQ(COperCommon::SetDataToZK(m_strPath.c_str(), GetParam().uiBufLen, m_pDocument.get()),
              ORVA_DATA_INVALID);
    EXPECT_EQ(m_pStore->Get(m_strPath), GetParam().TextWith(strName));
}

template <typename Document>
std::unique_ptr<CBaseJsonObject> Make() {
    return std::make_unique<Document>();
}

template <typename Document, bool bNeedWatcher>
int LoadWith(CBaseJsonObject& document) {
    return static_cast<Document&>(document).ParseFromZK(bNeedWatcher);
}

template <bool bNeedWatcher>
CLoadKind Database() {
    return {"cluster_db_znode_info",
            "/CenterDB",
            512,
            "cdb info, parse form zk",
            "get center db info from zk fail.",
            Make<CClusterDBZNodeInfo>,
            LoadWith<CClusterDBZNodeInfo, bNeedWatcher>,
            bNeedWatcher,
            R"({"MasterDB":{"DBPort":1,"DBToken":"000","NodeCode":")",
            R"(","NodeIp":""},"SlaveDB":[{"DBPort":2,"DBToken":"001","NodeCode":"","NodeIp":""}]})"
            "\n",
            R"({"MasterDB":{"DBPort":6001,"DBToken":"","NodeCode":"","NodeIp":""},"SlaveDB":null})"
            "\n",
            "[]"};
}

template <bool bNeedWatcher>
CLoadKind Manager() {
    return {"cluster_mgr_znode_info",
            "/MEROMGR",
            1024,
            "cmgr info, parse form zk",
            "get center mgr info from zk fail.",
            Make<CClusterMGRZNodeInfo>,
            LoadWith<CClusterMGRZNodeInfo, bNeedWatcher>,
            bNeedWatcher,
            R"({"MasterMGR":{"NodeCode":")",
            "\",\"NodeIp\":\"\"}}\n",
            "{\"MasterMGR\":{\"NodeCode\":\"\",\"NodeIp\":\"\"}}\n",
            "[]"};
}

CLoadKind CGList() {
    return {"cluster_cg_info",
            "/MERO/CGList",
            1024,
            "CGList info, parse form zk",
            "get cg list from zk fail.",
            Make<CClusterCGInfoList>,
            [](CBaseJsonObject& document) {
                return static_cast<CClusterCGInfoList&>(document).ParseFromZK();
            },
            true,
            R"([{"DecisionVerNum":"1","FloatCGCode":"","FloatIP":"","NVRCode":")",
            "\"}]\n",
            "",
            "[5]"};
}

INSTANTIATE_TEST_SUITE_P(Every, StoreLoad,
                         testing::Values(Database<false>(), Database<true>(), Manager<false>(),
                                         Manager<true>(), CGList()));

}  // namespace
