#include "common_service/oper_common.h"

#include <algorithm>

#include "common_service/tarn_def.h"
#include "reference_host/store.h"
#include "support/host_fixture.h"
#include "support/text_document.h"

using testing::IsEmpty;

namespace {

std::string g_strEvent;

class StoreFront : public CHostTest {
protected:
    StoreFront() {
        g_strEvent.clear();
        SetNodeEventHandler([](const std::string& strPath) { g_strEvent += strPath + ";"; });
    }

    int Read(const char* pszPath, CBaseJsonObject* pDoc, bool bWatch = false) {
        m_bDataEmpty = true;
        void* pWatcher = bWatch ? reinterpret_cast<void*>(&ClusterNodeEventWatcher) : nullptr;
        return COperCommon::GetDataFromZK(pszPath, pWatcher, 100, pDoc, m_bDataEmpty);
    }

    CTextDocument m_doc{"[]\n"};
    bool m_bDataEmpty = true;
};

TEST_F(StoreFront, WithoutAStoreEveryCallFails) {
    SetStore(nullptr);
    EXPECT_EQ(Read("/a", &m_doc), STORE_NOT_SET);
    EXPECT_FALSE(m_bDataEmpty);
    EXPECT_EQ(COperCommon::SetDataToZK("/a", 100, &m_doc), STORE_NOT_SET);
}

TEST_F(StoreFront, NullPointersAreRefusedBeforeTheStore) {
    EXPECT_EQ(Read(nullptr, &m_doc), ORVA_PARA_INVALID);
    EXPECT_FALSE(m_bDataEmpty);
    EXPECT_EQ(Read("/a", nullptr), ORVA_PARA_INVALID);
    EXPECT_FALSE(m_bDataEmpty);
    EXPECT_EQ(COperCommon::SetDataToZK(nullptr, 100, &m_doc), ORVA_PARA_INVALID);
    EXPECT_EQ(COperCommon::SetDataToZK("/a", 100, nullptr), ORVA_PARA_INVALID);
    EXPECT_EQ(COperCommon::SetDataToZK("/a", 0, &m_doc), ORVA_PARA_INVALID);
    EXPECT_EQ(m_pStore->GetCallCount(), 0U);
}

TEST_F(StoreFront, StoreCodesComeThroughUnchanged) {
    m_pStore->FailCall(1, -112);
    EXPECT_EQ(Read("/a", &m_doc), -112);
    EXPECT_FALSE(m_bDataEmpty);
    EXPECT_EQ(m_doc.m_strText, "[]\n");
    m_pStore->FailCall(1, 13);
    EXPECT_EQ(COperCommon::SetDataToZK("/a", 100, &m_doc), 13);
    EXPECT_FALSE(m_pStore->GetNode("/a").bExists);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(StoreFront, TextThatIsNotTerminatedIsRefused) {
    class CUnterminated : public CTextDocument {
        int32_t ToJson(char* pszJson, uint32_t iMaxLen) override {
            std::fill_n(pszJson, iMaxLen, '\n');
            return 0;
        }
    } doc;
    EXPECT_EQ(COperCommon::SetDataToZK("/a", 10, &doc), ORVA_DATA_INVALID);
    EXPECT_FALSE(m_pStore->GetNode("/a").bExists);
}

TEST_F(StoreFront, CutNumberIsNoWholeText) {
    // A number is whole wherever it is cut, so that it cannot stand for a document.
    m_doc.m_strText = "1234567890\n";
    EXPECT_EQ(COperCommon::SetDataToZK("/a", 6, &m_doc), ORVA_DATA_INVALID);
    EXPECT_FALSE(m_pStore->GetNode("/a").bExists);
}

TEST_F(StoreFront, TextThatDoesNotFillItsBufferWasNotCut) {
    for (const char* pszText : {"5", "\"x\"", "true", "{\"a\":[1,2]}", "no JSON"}) {
        m_doc.m_strText = pszText;
        const auto uiSize = static_cast<unsigned int>(m_doc.m_strText.size());
        EXPECT_EQ(COperCommon::SetDataToZK("/a", uiSize + 2, &m_doc), 0) << pszText;
        EXPECT_EQ(m_pStore->Get("/a"), pszText);
    }
}

TEST_F(StoreFront, TextThatFillsItsBufferIsTakenWhenWhole) {
    for (const char* pszText : {"\"x\"", "true", "{\"a\":[1,2]}"}) {
        m_doc.m_strText = pszText;
        const auto uiSize = static_cast<unsigned int>(m_doc.m_strText.size());
        EXPECT_EQ(COperCommon::SetDataToZK("/a", uiSize + 1, &m_doc), 0) << pszText;
        EXPECT_EQ(m_pStore->Get("/a"), pszText);
        EXPECT_EQ(COperCommon::SetDataToZK("/a", uiSize, &m_doc), ORVA_DATA_INVALID) << pszText;
        EXPECT_EQ(m_pStore->Get("/a"), pszText);
    }
    EXPECT_EQ(COperCommon::SetDataToZK("/a", 1, &m_doc), ORVA_DATA_INVALID);
}

TEST_F(StoreFront, DeeplyNestedCutTextIsRefusedNotThrown) {
    m_doc.m_strText = std::string(5000, '[');
    EXPECT_EQ(COperCommon::SetDataToZK("/a", 5000, &m_doc), ORVA_DATA_INVALID);
    EXPECT_FALSE(m_pStore->GetNode("/a").bExists);
}

TEST_F(StoreFront, WatcherOfTheCallerIsTheOneThatIsCalled) {
    static std::string strCalled;
    strCalled.clear();
    const StoreWatcher pWatcher = [](zhandle_t* zh, int type, int state, const char* path,
                                     void* watcherCtx) {
        strCalled += std::string(path) + " " + std::to_string(type) + " " + std::to_string(state) +
                     (zh == nullptr && watcherCtx == nullptr ? ";" : " and more;");
    };
    COperCommon::GetDataFromZK("/a", reinterpret_cast<void*>(pWatcher), 100, &m_doc, m_bDataEmpty);
    COperCommon::SetDataToZK("/a", 100, &m_doc);
    COperCommon::GetDataFromZK("/a", reinterpret_cast<void*>(pWatcher), 100, &m_doc, m_bDataEmpty);
    COperCommon::SetDataToZK("/a", 100, &m_doc);
    EXPECT_EQ(strCalled, "/a 1 3;/a 3 3;");
    EXPECT_EQ(g_strEvent, "") << "the handler is for ClusterNodeEventWatcher alone";
}

/// A store that answers with success and says nothing.
class CForgetfulStore : public CMemoryStore {
public:
    int Read(const std::string&, StoreWatcher, CStoreAnswer&) override { return 0; }
};

TEST_F(StoreFront, AnswerOfAnEarlierReadNeverStands) {
    m_pStore->Put("/a", "[1]\n");
    EXPECT_EQ(Read("/a", &m_doc), 0);
    SetStore(std::make_shared<CForgetfulStore>());
    EXPECT_EQ(Read("/a", &m_doc), STORE_NODE_ABSENT);
    EXPECT_TRUE(m_bDataEmpty);
}

TEST_F(StoreFront, WatchedReadEndsInTheHandler) {
    Read("/a", &m_doc, true);
    COperCommon::SetDataToZK("/a", 100, &m_doc);
    EXPECT_EQ(g_strEvent, "/a;");
    Read("/a", &m_doc);
    COperCommon::SetDataToZK("/a", 100, &m_doc);
    EXPECT_EQ(g_strEvent, "/a;") << "a read without a watcher sets none";
}

TEST_F(StoreFront, EventOfTheClientEndsInTheHandler) {
    ClusterNodeEventWatcher(nullptr, 3, 3, "/b", nullptr);
    EXPECT_EQ(g_strEvent, "/b;");
    ClusterNodeEventWatcher(nullptr, 3, 3, nullptr, nullptr);
    EXPECT_EQ(g_strEvent, "/b;");
}

TEST_F(StoreFront, EventWithoutAHandlerIsNothing) {
    SetNodeEventHandler(nullptr);
    ClusterNodeEventWatcher(nullptr, 3, 3, "/b", nullptr);
    EXPECT_EQ(g_strEvent, "");
}

TEST_F(StoreFront, NullLoggerChangesNoResult) {
    OMAdapter::getInstance().setLogger(nullptr);
    m_doc.m_strText = "[\"" + std::string(200, 'a') + "\"]\n";
    EXPECT_EQ(COperCommon::SetDataToZK("/a", 100, &m_doc), ORVA_DATA_INVALID);
    EXPECT_EQ(COperCommon::SetDataToZK("/a", 206, &m_doc), 0);
}

TEST(AddressNumber, IsInHostByteOrder) {
    EXPECT_EQ(COperCommon::IPToUint("1.2.3.4"), 0x01020304U);
    EXPECT_EQ(COperCommon::IPToUint("255.255.255.255"), 0xffffffffU);
    EXPECT_EQ(COperCommon::IPToUint("192.168.0.1"), 0xc0a80001U);
}

TEST(AddressNumber, IsZeroForAnyOtherText) {
    for (const char* pszText :
         {"", "0.0.0.0", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2.3.-4", " 1.2.3.4", "1.2.3.4 ",
          "::1", "localhost", "16909060", "0x1.2.3.4"}) {
        EXPECT_EQ(COperCommon::IPToUint(pszText), 0U) << pszText;
    }
}

}  // namespace
