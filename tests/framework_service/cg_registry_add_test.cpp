#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/cg_registry_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace cg_registry;

namespace {

CLogLine Refused(int iCode, const std::string& strMessage) {
    return Err("add single cluster cg", iCode, FILE_STEM, SINGLE, strMessage);
}

TEST_F(CGRegistry, EntryEntersCacheAndStoreInSilence) {
    SetNodes(4);
    EXPECT_EQ(Registry().AddSingleClusterCGInfo(ToInfo(E1)), 0);
    EXPECT_EQ(Registry().AddSingleClusterCGInfo(ToInfo({"n2", "f2", "10.1.0.2", "18"})), 0);
    EXPECT_EQ(Stored(),
              "[{\"DecisionVerNum\":\"0\",\"FloatCGCode\":\"f1\",\"FloatIP\":\"10.1.0.1\","
              "\"NVRCode\":\"n1\"},{\"DecisionVerNum\":\"18\",\"FloatCGCode\":\"f2\","
              "\"FloatIP\":\"10.1.0.2\",\"NVRCode\":\"n2\"}]\n");
    EXPECT_EQ(Cached(), (Entries{E1, {"n2", "f2", "10.1.0.2", "18"}}));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    EXPECT_EQ(Calls(), 2U) << "one write each";
}

TEST_F(CGRegistry, LimitIsHalfTheNodesWithoutTheFraction) {
    for (unsigned int uiNodes = 0; uiNodes <= 5; ++uiNodes) {
        SCOPED_TRACE(uiNodes);
        for (const CEntry& entry : Cached()) {
            ASSERT_EQ(Registry().RemoveClusterCGInfo(entry.strFloatCode), 0);
        }
        SetNodes(uiNodes);
        m_logger.Clear();
        Entries expected;
        for (const CEntry& entry : {E1, E2, E3}) {
            const bool bRoom = expected.size() < uiNodes / 2;
            EXPECT_EQ(Registry().AddSingleClusterCGInfo(ToInfo(entry)),
                      bRoom ? 0 : ORVA_TARN_FCG_EXCEED_MAX);
            if (bRoom) {
                expected.push_back(entry);
            }
        }
        EXPECT_EQ(Cached(), expected);
        EXPECT_EQ(m_logger.GetLines(),
                  std::vector<CLogLine>(
                      3 - expected.size(),
                      Refused(149132003, "exceed max cg num, current cg size[" +
                                             std::to_string(expected.size()) + "], node size[" +
                                             std::to_string(uiNodes) + "].")));
    }
}

/// An entry that is refused beside E1 and E2, with so many nodes.
struct CRefusal {
    std::string strName;
    unsigned int uiNodes;
    CEntry entry;
    int iCode;
    std::string strMessage;
};

std::ostream& operator<<(std::ostream& stream, const CRefusal& refusal) {
    return stream << refusal.strName;
}

class CGRefusal : public CGRegistry, public testing::WithParamInterface<CRefusal> {};

TEST_P(CGRefusal, LogsTheFirstCheckThatFailsAndChangesNothing) {
    const CRefusal& refusal = GetParam();
    SetNodes(refusal.uiNodes);
    Fill({E1, E2});
    EXPECT_EQ(Registry().AddSingleClusterCGInfo(ToInfo(refusal.entry)), refusal.iCode);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Refused(refusal.iCode, refusal.strMessage)));
    EXPECT_EQ(Cached(), (Entries{E1, E2}));
    EXPECT_EQ(Stored(), TextOf({E1, E2}));
    EXPECT_EQ(Calls(), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Order, CGRefusal,
    testing::Values(
        CRefusal{"FullComesBeforeAll",
                 5,
                 {"n1", "f1", "10.1.0.1"},
                 149132003,
                 "exceed max cg num, current cg size[2], node size[5]."},
        CRefusal{"TakenNodeComesBeforeTheRest",
                 6,
                 {"n1", "f2", "10.1.0.2"},
                 149132002,
                 "node has been cg, node[n1]."},
        CRefusal{"UnknownNodeComesBeforeCodeAndAddress",
                 6,
                 {"n7", "f2", "10.1.0.1"},
                 149132004,
                 "node not exist, node[n7]."},
        CRefusal{"TakenCodeComesBeforeTheAddress",
                 6,
                 {"n3", "f2", "10.1.0.1"},
                 149132000,
                 "cg is exist, cg[f2]."},
        CRefusal{"TakenAddressComesLast",
                 6,
                 {"n3", "f3", "10.1.0.1"},
                 149132001,
                 "float ip is exist, float ip[10.1.0.1]."},
        CRefusal{
            "EmptyNodeIsUnknown", 6, {"", "f3", "10.1.0.3"}, 149132004, "node not exist, node[]."}),
    NAME_OF_PARAMETER);

TEST_F(CGRegistry, NodeThatHasAnEntryIsToldBeforeItIsLookedFor) {
    SetNodes(6);
    Fill({E1, E2});
    CNodeMgr::Instance().RemoveNode("n1");
    CNodeMgr::Instance().AddNode({{"n9", MakeStoredNode("n9", {})}});
    EXPECT_EQ(Registry().AddSingleClusterCGInfo(ToInfo({"n1", "f9", "10.1.0.9"})),
              ORVA_TARN_NODE_HAS_BEEN_CG);
}

TEST_F(CGRegistry, FailedWriteTakesTheNewEntryBackOut) {
    SetNodes(6);
    Fill({E1, E2});
    m_pStore->FailCall(1, NUMERIC_STORE_CODE);
    EXPECT_EQ(Registry().AddSingleClusterCGInfo(ToInfo(E3)), NUMERIC_STORE_CODE);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(WriteFailed("add cluster cg info", SINGLE)));
    EXPECT_EQ(Cached(), (Entries{E1, E2}));
    EXPECT_EQ(Stored(), TextOf({E1, E2}));
    EXPECT_EQ(Registry().AddSingleClusterCGInfo(ToInfo(E3)), 0) << "it may be tried again";
    EXPECT_EQ(Stored(), TextOf({E1, E2, E3}));
}

TEST_F(CGRegistry, EntryThatTheBufferCannotHoldIsTakenBackOut) {
    SetNodes(6);
    Fill({E1});
    CEntry longest{"n2", "f2", ""};
    longest.strFloatIp.assign(1023 - TextOf({E1, longest}).size(), 'x');
    ASSERT_EQ(Registry().AddSingleClusterCGInfo(ToInfo(longest)), 0);
    EXPECT_EQ(Stored(), TextOf({E1, longest}));
    ASSERT_EQ(Registry().RemoveClusterCGInfo("f2"), 0);
    m_logger.Clear();
    longest.strFloatIp += "xx";
    EXPECT_EQ(Registry().AddSingleClusterCGInfo(ToInfo(longest)), ORVA_DATA_INVALID);
    EXPECT_EQ(Cached(), Entries{E1});
    EXPECT_EQ(Stored(), TextOf({E1}));
    EXPECT_THAT(m_logger.GetLinesOf(FILE_STEM),
                ElementsAre(WriteFailed("add cluster cg info", SINGLE, ORVA_DATA_INVALID)));
}

}  // namespace
