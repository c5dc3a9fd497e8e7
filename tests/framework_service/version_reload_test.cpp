#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/reconfigure.h"
#include "support/schedule_fixture.h"

using namespace schedule;

namespace {

/// What a reload answers beside 10 and 20 in memory, and the numbers afterwards.
struct CReload {
    std::string strName;
    std::function<void(CMemoryStore&, const std::string& strPath)> prepare;
    int iCode;
    unsigned long long ullDecision;
    unsigned long long ullMaster;
};

std::ostream& operator<<(std::ostream& stream, const CReload& reload) {
    return stream << reload.strName;
}

class VersionReload : public VersionNumbers, public testing::WithParamInterface<CReload> {};

TEST_P(VersionReload, TakesBothNumbersOrNone) {
    Load(10, 20);
    const unsigned int uiCallsBefore = m_pStore->GetCallCount();
    GetParam().prepare(*m_pStore, Path("/Version"));
    const std::optional<std::string> before = Stored();
    EXPECT_EQ(Manager().Reload(), GetParam().iCode);
    ExpectNumbers(GetParam().ullDecision, GetParam().ullMaster);
    EXPECT_EQ(Stored(), before) << "nothing is written back";
    EXPECT_EQ(m_pStore->GetCallCount(), uiCallsBefore + 1);
    std::vector<CLogLine> expected;
    if (GetParam().iCode != 0) {
        expected.push_back(Err("schedule manager", GetParam().iCode, FILE_STEM, "Reload",
                               "get version data from zk fail."));
    }
    EXPECT_EQ(m_logger.GetLinesOf(FILE_STEM), expected);
}

std::function<void(CMemoryStore&, const std::string&)> Holding(
    const std::optional<std::string>& text) {
    return [text](CMemoryStore& store, const std::string& strPath) { store.Put(strPath, text); };
}

INSTANTIATE_TEST_SUITE_P(
    Store, VersionReload,
    testing::Values(
        CReload{"Data", Holding(VersionText(1, 2)), 0, 1, 2},
        CReload{"WithoutData", Holding(std::nullopt), 0, 0, 0},
        CReload{"EmptyText", Holding(""), 0, 0, 0},
        CReload{"Absent",
                [](CMemoryStore& store, const std::string& strPath) { store.Erase(strPath); },
                STORE_NODE_ABSENT, 10, 20},
        CReload{
            "Failing",
            [](CMemoryStore& store, const std::string&) { store.FailCall(1, NUMERIC_STORE_CODE); },
            NUMERIC_STORE_CODE, 10, 20},
        CReload{"Malformed", Holding("{"), ORVA_DATA_INVALID, 10, 20},
        CReload{"OneNumberAlone", Holding(R"({"DecisionVerNum":1})"), ORVA_DATA_INVALID, 10, 20}),
    NAME_OF_PARAMETER);

TEST_F(VersionNumbers, ReloadSetsNoWatcher) {
    static int iFired = 0;
    SetNodeEventHandler([](const std::string&) { ++iFired; });
    Load(10, 20);
    EXPECT_EQ(Manager().IncreaseMasterVerNum(), 0);
    EXPECT_EQ(iFired, 0);
}

TEST_F(VersionNumbers, LieBelowTheClusterCodeOfTheMoment) {
    EXPECT_EQ(Manager().SetDecisionVerNum(3), 0);
    Reconfigure(&CHostSettings::strClusterCode, "Y");
    EXPECT_EQ(Manager().SetDecisionVerNum(4), 0);
    EXPECT_EQ(m_pStore->Get("/CloudX/Version"), VersionText(3, 0));
    EXPECT_EQ(m_pStore->Get("/CloudY/Version"), VersionText(4, 0));
}

}  // namespace
