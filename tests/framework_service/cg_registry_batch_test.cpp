#include <string>
#include <vector>

#include "support/cg_registry_fixture.h"

using testing::ElementsAre;
using namespace cg_registry;

namespace {

CLogLine Skipped(const std::string& strFloatCode) {
    return Trace(FILE_STEM, BATCH,
                 "cg already exists, no need to add, code[" + strFloatCode + "].");
}

CLogLine BatchRefused(int iCode, const std::string& strMessage) {
    return Err("add cluster cg info", iCode, FILE_STEM, BATCH, strMessage);
}

/// A batch beside E1: what is logged and returned, and what cache and store hold afterwards.
struct CBatch {
    std::string strName;
    Entries entries;
    int iCode;
    std::vector<CLogLine> lines;
    Entries cachedAfter;
    Entries storedAfter;
    unsigned int uiCalls;
};

std::ostream& operator<<(std::ostream& stream, const CBatch& batch) {
    return stream << batch.strName;
}

class CGBatch : public CGRegistry, public testing::WithParamInterface<CBatch> {};

TEST_P(CGBatch, GoesEntryByEntry) {
    const CBatch& batch = GetParam();
    Fill({E1});
    EXPECT_EQ(Registry().AddClusterCGInfo(ToList(batch.entries)), batch.iCode);
    EXPECT_EQ(m_logger.GetLines(), batch.lines);
    EXPECT_EQ(Cached(), batch.cachedAfter);
    EXPECT_EQ(Stored(), TextOf(batch.storedAfter));
    EXPECT_EQ(Calls(), batch.uiCalls);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, CGBatch,
    testing::Values(
        CBatch{"EmptyBatchCallsNothing", {}, 0, {}, {E1}, {E1}, 0},
        CBatch{"NeitherLimitNorNodesAreAsked", {E2, E3}, 0, {}, {E1, E2, E3}, {E1, E2, E3}, 1},
        CBatch{"KnownCodesAreSkippedAndTheStoreWrittenAllTheSame",
               {{"n9", "f1", "10.1.0.9"}, {"n1", "f1", "10.1.0.1"}},
               0,
               {Skipped("f1"), Skipped("f1")},
               {E1},
               {E1},
               1},
        CBatch{"KnownCodeIsSkippedAmongNewOnes",
               {E2, E1, E3},
               0,
               {Skipped("f1")},
               {E1, E2, E3},
               {E1, E2, E3},
               1},
        CBatch{
            "RepeatWithinTheBatchIsSkipped", {E2, E2}, 0, {Skipped("f2")}, {E1, E2}, {E1, E2}, 1},
        CBatch{"TakenNodeEndsTheBatch",
               {E2, {"n1", "f9", "10.1.0.1"}, E3},
               149132002,
               {BatchRefused(149132002, "node has been cg, node[n1].")},
               {E1, E2},
               {E1},
               0},
        CBatch{"NodeOfAnEarlierEntryEndsTheBatch",
               {E2, {"n2", "f9", "10.1.0.9"}},
               149132002,
               {BatchRefused(149132002, "node has been cg, node[n2].")},
               {E1, E2},
               {E1},
               0},
        CBatch{"TakenAddressEndsTheBatch",
               {{"n9", "f9", "10.1.0.1"}, E2},
               149132001,
               {BatchRefused(149132001, "float ip is exist, float ip[10.1.0.1].")},
               {E1},
               {E1},
               0},
        CBatch{"AddressOfAnEarlierEntryEndsTheBatch",
               {E2, E1, {"n9", "f9", "10.1.0.2"}, E3},
               149132001,
               {Skipped("f1"), BatchRefused(149132001, "float ip is exist, float ip[10.1.0.2].")},
               {E1, E2},
               {E1},
               0}),
    NAME_OF_PARAMETER);

TEST_F(CGRegistry, BatchThatCannotBeWrittenStaysInTheCache) {
    Fill({E1});
    m_pStore->FailCall(1, NUMERIC_STORE_CODE);
    EXPECT_EQ(Registry().AddClusterCGInfo(ToList({E2, E3})), NUMERIC_STORE_CODE);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(WriteFailed("add cluster cg info", BATCH)));
    EXPECT_EQ(Cached(), (Entries{E1, E2, E3}));
    EXPECT_EQ(Stored(), TextOf({E1}));
    m_logger.Clear();
    EXPECT_EQ(Registry().AddClusterCGInfo(ToList({E3})), 0) << "the next batch carries it";
    EXPECT_EQ(Stored(), TextOf({E1, E2, E3}));
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Skipped("f3")));
}

}  // namespace
