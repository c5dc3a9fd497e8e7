#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/database_front_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace database_front;

namespace {

TEST_F(DatabaseFront, HoldsNothingUntilItIsParsed) {
    m_pStore->Put(Path("/CenterDB"), ARRANGEMENT);
    m_pStore->Put(Path("/MEROMGR"), MANAGER);
    EXPECT_EQ(CachedText(),
              "{\"MasterDB\":{\"DBPort\":6001,\"DBToken\":\"\",\"NodeCode\":\"\",\"NodeIp\":\"\"},"
              "\"SlaveDB\":null}\n");
    EXPECT_EQ(TextOf(Framework().GetClusterMGRInfo()),
              "{\"MasterMGR\":{\"NodeCode\":\"\",\"NodeIp\":\"\"}}\n");
    EXPECT_EQ(Framework().ParseCDBFromZK(false), 0);
    EXPECT_EQ(Framework().ParseMGRFromZK(false), 0);
    EXPECT_EQ(CachedText(), ARRANGEMENT);
    EXPECT_EQ(TextOf(Framework().GetClusterMGRInfo()), MANAGER);
    EXPECT_EQ(Framework().ParseCDBFromZK(false), 0);
    EXPECT_EQ(CachedText(), ARRANGEMENT) << "a second parse replaces";
}

/// One of the two cached documents.
struct CDocument {
    std::string strName;
    std::string strSuffix;
    std::string strText;
    int (CFrameworkCommon::*pParse)(bool);
    std::string (*pCached)();
    CLogLine failure;
};

std::ostream& operator<<(std::ostream& stream, const CDocument& document) {
    return stream << document.strName;
}

class CachedDocument : public DatabaseFront, public testing::WithParamInterface<CDocument> {
protected:
    static int Parse(bool bNeedWatcher) { return (Framework().*GetParam().pParse)(bNeedWatcher); }
};

TEST_P(CachedDocument, StaysAsItWasWhenItCannotBeParsed) {
    const std::string strPath = Path(GetParam().strSuffix);
    m_pStore->Put(strPath, GetParam().strText);
    ASSERT_EQ(Parse(false), 0);
    m_pStore->FailCall(1, NUMERIC_STORE_CODE);
    EXPECT_EQ(Parse(false), ORVA_FAIL);
    m_pStore->Put(strPath, "{}");
    EXPECT_EQ(Parse(false), ORVA_FAIL);
    m_pStore->Erase(strPath);
    EXPECT_EQ(Parse(true), ORVA_FAIL);
    EXPECT_EQ(GetParam().pCached(), GetParam().strText);
    std::vector<CLogLine> failures;
    for (const CLogLine& line : m_logger.GetLines()) {
        if (line.strOperation == GetParam().failure.strOperation) {
            failures.push_back(line);
        }
    }
    EXPECT_EQ(failures, std::vector<CLogLine>(3, GetParam().failure));
}

std::vector<std::string>& FiredPaths() {
    static std::vector<std::string> paths;
    return paths;
}

TEST_P(CachedDocument, IsWatchedOnRequestAlone) {
    FiredPaths().clear();
    SetNodeEventHandler([](const std::string& strPath) { FiredPaths().push_back(strPath); });
    const std::string strPath = Path(GetParam().strSuffix);
    m_pStore->Put(strPath, GetParam().strText);
    ASSERT_EQ(Parse(false), 0);
    ASSERT_EQ(m_pStore->Write(strPath, GetParam().strText), 0);
    EXPECT_THAT(FiredPaths(), IsEmpty());
    ASSERT_EQ(Parse(true), 0);
    ASSERT_EQ(m_pStore->Write(strPath, GetParam().strText), 0);
    EXPECT_THAT(FiredPaths(), ElementsAre(strPath));
}

INSTANTIATE_TEST_SUITE_P(
    Documents, CachedDocument,
    testing::Values(CDocument{"Database", "/CenterDB", ARRANGEMENT,
                              &CFrameworkCommon::ParseCDBFromZK, &CachedText,
                              Err("cdb info, parse form zk", 1, "cluster_db_znode_info",
                                  "ParseFromZK", "get center db info from zk fail.")},
                    CDocument{"Manager", "/MEROMGR", MANAGER, &CFrameworkCommon::ParseMGRFromZK,
                              [] { return TextOf(Framework().GetClusterMGRInfo()); },
                              Err("cmgr info, parse form zk", 1, "cluster_mgr_znode_info",
                                  "ParseFromZK", "get center mgr info from zk fail.")}),
    NAME_OF_PARAMETER);

}  // namespace
