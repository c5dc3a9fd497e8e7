#include <json/json.h>

#include <string>

#include "common_service/tarn_def.h"
#include "support/database_document_fixture.h"
#include "support/json_document.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace database_document;

namespace {

constexpr char TWO_VERSIONS[] =
    R"({"CdbVerSet":[{"NvrCode":"N2","CdbVer":"2"},{"NvrCode":"N1","CdbVer":"1"}]})";

class DatabaseVersions : public CHostTest {
protected:
    DatabaseVersions() { m_document.SetVerInfo("old", {"0"}); }

    int Parse(const std::string& strText) { return m_document.ParseJson(strText.c_str()); }

    std::string Version(const std::string& strCode) const {
        CenterDbVerInfo info{"none"};
        m_document.GetVerInfo(strCode, info);
        return info.m_cdbVer;
    }

    void ExpectRefused(const std::string& strText) {
        EXPECT_EQ(Parse(strText), ORVA_DATA_INVALID);
        EXPECT_THAT(
            m_logger.GetLines(),
            ElementsAre(Err("CClusterDBVerZNodeInfo::ParseJson", ORVA_DATA_INVALID, FILE_NAME,
                            "ParseJson", "json illegal, json text[" + strText + "].")));
        EXPECT_EQ(Version("old"), "0");
    }

    CClusterDBVerZNodeInfo m_document;
};

TEST_F(DatabaseVersions, VersionIsInsertedReplacedAndHandedOut) {
    m_document.SetVerInfo("N", {"1"});
    m_document.SetVerInfo("N", {"2"});
    CenterDbVerInfo info;
    EXPECT_EQ(m_document.GetVerInfo("N", info), ORVA_SUCCEED);
    EXPECT_EQ(info.m_cdbVer, "2");
}

TEST_F(DatabaseVersions, UnknownNodeLeavesTheArgument) {
    CenterDbVerInfo info{"untouched"};
    EXPECT_EQ(m_document.GetVerInfo("unknown", info), ORVA_FAIL);
    EXPECT_EQ(info.m_cdbVer, "untouched");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseVersions, TextIsAddedToTheMapAndReplacesItsNodes) {
    m_document.SetVerInfo("N1", {"former"});
    EXPECT_EQ(Parse(TWO_VERSIONS), ORVA_SUCCEED);
    EXPECT_EQ(TextOf(m_document),
              R"({"CdbVerSet":[{"CdbVer":"1","NvrCode":"N1"},{"CdbVer":"2","NvrCode":"N2"},)"
              R"({"CdbVer":"0","NvrCode":"old"}]})"
              "\n");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseVersions, LastOfTwoEntriesOfANodeCounts) {
    EXPECT_EQ(Parse(R"({"CdbVerSet":[{"NvrCode":"N","CdbVer":"1"},{"NvrCode":"N","CdbVer":"2"}]})"),
              ORVA_SUCCEED);
    EXPECT_EQ(Version("N"), "2");
}

TEST_F(DatabaseVersions, EmptyArrayKeepsTheMap) {
    EXPECT_EQ(Parse(R"({"CdbVerSet":[]})"), ORVA_SUCCEED);
    EXPECT_EQ(Version("old"), "0");
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(DatabaseVersions, NothingKnownCannotReadItsOwnText) {
    CClusterDBVerZNodeInfo fresh;
    EXPECT_EQ(TextOf(fresh), "{\"CdbVerSet\":null}\n");
    ExpectRefused(TextOf(fresh));
}

TEST_F(DatabaseVersions, NullEntryIsRefused) {
    ExpectRefused(R"({"CdbVerSet":[null]})");
}

TEST_F(DatabaseVersions, EntryThatIsNoObjectIsRefusedByTheJsonLibrary) {
    for (const char* pszText :
         {R"({"CdbVerSet":[1]})", R"({"CdbVerSet":["x"]})", R"({"CdbVerSet":[[]]})"}) {
        EXPECT_THROW(Parse(pszText), Json::Exception) << pszText;
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

class BadVersionSet : public DatabaseVersions, public testing::WithParamInterface<CMemberChange> {};

TEST_P(BadVersionSet, IsRefusedAndNothingIsTaken) {
    ExpectRefused(WithMember(TWO_VERSIONS, GetParam()));
    EXPECT_EQ(Version("N2"), "none");
}

INSTANTIATE_TEST_SUITE_P(Database, BadVersionSet,
                         testing::ValuesIn(EveryBadMember({{".CdbVerSet", EMemberType::ARRAY}})));

class BadVersionEntry : public DatabaseVersions,
                        public testing::WithParamInterface<CMemberChange> {};

TEST_P(BadVersionEntry, EndsTheReadingWithTheEntriesBeforeItTaken) {
    ExpectRefused(WithMember(TWO_VERSIONS, GetParam()));
    EXPECT_EQ(Version("N2"), "2");
    EXPECT_EQ(Version("N1"), "none");
}

INSTANTIATE_TEST_SUITE_P(
    Database, BadVersionEntry,
    testing::ValuesIn(EveryBadMember({{".CdbVerSet[1].NvrCode", EMemberType::STRING},
                                      {".CdbVerSet[1].CdbVer", EMemberType::STRING}})));

}  // namespace
