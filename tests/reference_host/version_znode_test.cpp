#include "common_service/data/version_znode.h"

#include <gtest/gtest.h>

#include <string>

#include "common_service/tarn_def.h"

namespace {

constexpr unsigned int NUMERIC_BUF_LEN = 512;
constexpr unsigned long long NUMERIC_MAX = 18446744073709551615ULL;

class VersionDocument : public testing::Test {
protected:
    VersionDocument() {
        m_doc.SetDecisionVerNum(1);
        m_doc.SetMasterVerNum(2);
    }

    std::string ToText() {
        std::string strBuffer(NUMERIC_BUF_LEN, '#');
        EXPECT_EQ(m_doc.ToJson(strBuffer.data(), NUMERIC_BUF_LEN), 0);
        const std::string strText = strBuffer.c_str();
        EXPECT_EQ(strBuffer.substr(strText.size()),
                  std::string(strBuffer.size() - strText.size(), '\0'));
        return strText;
    }

    void ExpectNumbers(unsigned long long ullDecision, unsigned long long ullMaster) {
        EXPECT_EQ(m_doc.GetDecisionVerNum(), ullDecision);
        EXPECT_EQ(m_doc.GetMasterVerNum(), ullMaster);
    }

    CVersionZNode m_doc;
};

TEST_F(VersionDocument, StartsAtZero) {
    CVersionZNode doc;
    EXPECT_EQ(doc.GetDecisionVerNum(), 0U);
    EXPECT_EQ(doc.GetMasterVerNum(), 0U);
}

TEST_F(VersionDocument, IsOneObjectOnOneLine) {
    EXPECT_EQ(ToText(), "{\"DecisionVerNum\":1,\"MasterVerNum\":2}\n");
}

TEST_F(VersionDocument, CarriesBothNumbersInFull) {
    m_doc.SetDecisionVerNum(NUMERIC_MAX);
    m_doc.SetMasterVerNum(NUMERIC_MAX - 1);
    const std::string strText = ToText();
    m_doc = CVersionZNode();
    EXPECT_EQ(m_doc.ParseJson(strText.c_str()), 0);
    ExpectNumbers(NUMERIC_MAX, NUMERIC_MAX - 1);
}

TEST_F(VersionDocument, ForeignKeysDoNotMatter) {
    EXPECT_EQ(m_doc.ParseJson("{\"MasterVerNum\":8,\"x\":[],\"DecisionVerNum\":7}"), 0);
    ExpectNumbers(7, 8);
}

TEST_F(VersionDocument, ShortBufferHoldsTheCutText) {
    char szBuffer[6] = "#####";
    EXPECT_EQ(m_doc.ToJson(szBuffer, 6), 0);
    EXPECT_STREQ(szBuffer, "{\"Dec");
    szBuffer[0] = '#';
    EXPECT_EQ(m_doc.ToJson(szBuffer, 0), 0);
    EXPECT_EQ(szBuffer[0], '#');
}

TEST_F(VersionDocument, NullPointersAreRefused) {
    EXPECT_EQ(m_doc.ParseJson(nullptr), ORVA_DATA_INVALID);
    EXPECT_EQ(m_doc.ToJson(nullptr, 512), ORVA_FAIL);
}

class BadVersionDocument : public VersionDocument,
                           public testing::WithParamInterface<const char*> {};

TEST_P(BadVersionDocument, IsRefusedUntouched) {
    EXPECT_EQ(m_doc.ParseJson(GetParam()), ORVA_DATA_INVALID);
    ExpectNumbers(1, 2);
}

INSTANTIATE_TEST_SUITE_P(
    All, BadVersionDocument,
    testing::Values("", "{", "null", "5", "[]", "\"text\"", "{}", "{\"DecisionVerNum\":7}",
                    "{\"MasterVerNum\":8}", "{\"DecisionVerNum\":7,\"MasterVerNum\":\"8\"}",
                    "{\"DecisionVerNum\":-1,\"MasterVerNum\":8}",
                    "{\"DecisionVerNum\":7.0,\"MasterVerNum\":8}",
                    "{\"DecisionVerNum\":7,\"MasterVerNum\":18446744073709551616}",
                    "{\"DecisionVerNum\":7,\"MasterVerNum\":null}",
                    "{\"DecisionVerNum\":true,\"MasterVerNum\":8}",
                    "{\"DecisionVerNum\":7,\"MasterVerNum\":8}}"));

}  // namespace
