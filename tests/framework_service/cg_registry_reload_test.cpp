#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/cg_registry_fixture.h"

using testing::ElementsAre;
using namespace cg_registry;

namespace {

/// What a reload beside E1 in the cache answers and leaves.
struct CReload {
    std::string strName;
    std::function<void(CMemoryStore&, const std::string& strPath)> prepare;
    int iCode;
    Entries cachedAfter;
};

std::ostream& operator<<(std::ostream& stream, const CReload& reload) {
    return stream << reload.strName;
}

std::function<void(CMemoryStore&, const std::string&)> Holding(
    const std::optional<std::string>& text) {
    return [text](CMemoryStore& store, const std::string& strPath) { store.Put(strPath, text); };
}

class CGReload : public CGRegistry, public testing::WithParamInterface<CReload> {};

TEST_P(CGReload, TakesOverWhatWasReadOrNothing) {
    Fill({E1});
    GetParam().prepare(*m_pStore, Path("/MERO/CGList"));
    EXPECT_EQ(Registry().ReloadClusterCGInfoList(), GetParam().iCode);
    EXPECT_EQ(Cached(), GetParam().cachedAfter);
    EXPECT_EQ(Calls(), 1U);
    std::vector<CLogLine> expected;
    if (GetParam().iCode != 0) {
        expected.push_back(Err("reload cluster cg list", 1, FILE_STEM, "ReloadClusterCGInfoList",
                               "load cg list from zk fail."));
    }
    EXPECT_EQ(m_logger.GetLinesOf(FILE_STEM), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Store, CGReload,
    testing::Values(CReload{"AnotherList", Holding(TextOf({E2, E3})), 0, {E2, E3}},
                    CReload{"WithoutData", Holding(std::nullopt), 0, {E1}},
                    CReload{"EmptyText", Holding(""), 0, {E1}},
                    CReload{"EmptyArrayClearsTheCache", Holding("[]"), 0, {}},
                    CReload{"Malformed", Holding("[{"), ORVA_FAIL, {E1}},
                    CReload{"HalfGood",
                            Holding(R"([{"NVRCode":"n2","FloatCGCode":"f2",)"
                                    R"("FloatIP":"i","DecisionVerNum":"1"},{}])"),
                            ORVA_FAIL,
                            {E1}},
                    CReload{"Absent",
                            [](CMemoryStore& store, const std::string& strPath) {
                                store.Erase(strPath);
                            },
                            ORVA_FAIL,
                            {E1}},
                    CReload{"Failing",
                            [](CMemoryStore& store, const std::string&) {
                                store.FailCall(1, NUMERIC_STORE_CODE);
                            },
                            ORVA_FAIL,
                            {E1}}),
    NAME_OF_PARAMETER);

std::vector<std::string>& FiredPaths() {
    static std::vector<std::string> paths;
    return paths;
}

TEST_F(CGRegistry, EveryReloadSetsTheWatcherAndNothingElseDoes) {
    FiredPaths().clear();
    SetNodeEventHandler([](const std::string& strPath) { FiredPaths().push_back(strPath); });
    SetNodes(6);
    const auto writeFromOutside = [this] {
        EXPECT_EQ(m_pStore->Write(Path("/MERO/CGList"), TextOf({E1})), 0);
    };
    EXPECT_EQ(Registry().ReloadClusterCGInfoList(), ORVA_FAIL) << "the node is absent";
    writeFromOutside();
    EXPECT_THAT(FiredPaths(), ElementsAre(Path("/MERO/CGList")));
    writeFromOutside();
    EXPECT_EQ(FiredPaths().size(), 1U) << "a watch fires once";
    EXPECT_EQ(Registry().ReloadClusterCGInfoList(), 0);
    EXPECT_EQ(Registry().AddSingleClusterCGInfo(ToInfo(E2)), 0);
    EXPECT_EQ(FiredPaths().size(), 2U) << "its own write fires too";
    EXPECT_EQ(Registry().RemoveClusterCGInfo("f2"), 0);
    EXPECT_EQ(FiredPaths().size(), 2U);
}

}  // namespace
