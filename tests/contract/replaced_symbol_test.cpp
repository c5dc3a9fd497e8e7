#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "common_service/data/version_znode.h"
#include "common_service/logger.h"
#include "common_service/oper_common.h"
#include "common_service/tarn_def.h"
#include "framework_service/framework_common.h"
#include "framework_service/tarn_node.h"
#include "reference_host/host_settings.h"
#include "reference_host/memory_store.h"

// An executable on the reference host that supplies some of the contract itself. It is built with
// everything hidden but what a header shows.

namespace {

constexpr unsigned int NUMERIC_OWN_ADDRESS = 77;
constexpr int NUMERIC_OWN_CODE = 4711;

int g_iFormatted = 0;

}  // namespace

unsigned int COperCommon::IPToUint(const std::string&) {
    return NUMERIC_OWN_ADDRESS;
}

int ORVA_LogFormatErrCode(char* pszBuf, int, int, const char*) {
    ++g_iFormatted;
    *pszBuf = '\0';
    return 0;
}

int32_t CVersionZNode::ParseJson(const char*) {
    return NUMERIC_OWN_CODE;
}

namespace {

class CSilentLog : public Logger {
public:
    void writeOperLog(ORVA_LOG_LEVEL, const char*, const char*, int, const char*, const char*,
                      ...) override {}
    void writeTraceLog(const char*, int, const char*, const char*, ...) override {}
};

/// A document of the executable's own type, which throws at the host.
class CThrowingDocument : public CBaseJsonObject {
public:
    int32_t ParseJson(const char*) override { throw std::runtime_error("own"); }
    int32_t ToJson(char*, uint32_t) override { return ORVA_FAIL; }
};

class ReplacedSymbol : public testing::Test {
protected:
    ReplacedSymbol() {
        Configure({"X", "", "", ""});
        SetStore(m_pStore);
        OMAdapter::getInstance().setLogger(&m_log);
        g_iFormatted = 0;
    }

    ~ReplacedSymbol() override {
        OMAdapter::getInstance().setLogger(nullptr);
        SetStore(nullptr);
    }

    const std::shared_ptr<CMemoryStore> m_pStore = std::make_shared<CMemoryStore>();
    CSilentLog m_log;
};

TEST_F(ReplacedSymbol, IsWhatTheLibraryCalls) {
    CNode node;
    node.SetNodeIp("10.0.0.1");
    EXPECT_EQ(node.GetNodeIpInt(), NUMERIC_OWN_ADDRESS);
    m_pStore->Put("/CloudX/ClusterConfig", "no json");
    EXPECT_NE(CFrameworkCommon::Instance().InitClusterConfigFromZK(), 0);
    EXPECT_NE(g_iFormatted, 0);
}

TEST_F(ReplacedSymbol, IsWhatTheHostItselfCalls) {
    m_pStore->Put("/a", "[]");
    CThrowingDocument document;
    bool bDataEmpty = true;
    EXPECT_EQ(COperCommon::GetDataFromZK("/a", nullptr, 100, &document, bDataEmpty),
              ORVA_DATA_INVALID);
    EXPECT_EQ(g_iFormatted, 1) << "the line about the exception";
}

TEST_F(ReplacedSymbol, StandsInTheTableOfADocumentOfTheHost) {
    m_pStore->Put("/a", "{}");
    CVersionZNode document;
    bool bDataEmpty = true;
    EXPECT_EQ(COperCommon::GetDataFromZK("/a", nullptr, 100, &document, bDataEmpty),
              NUMERIC_OWN_CODE);
}

}  // namespace
