#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/refused_locks.h"
#include "support/registry_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

constexpr int NUMERIC_STORE_CODE = 4711;
constexpr char FILE_STEM[] = "framework_common";

CFrameworkCGCommon& Registry() {
    return CFrameworkCGCommon::Instance();
}

/// An entry, in short.
struct CEntry {
    std::string strNode;
    std::string strFloatCode;
    std::string strFloatIp;
    std::string strDecVerNum = "0";

    friend bool operator==(const CEntry& lhs, const CEntry& rhs) {
        return lhs.strNode == rhs.strNode && lhs.strFloatCode == rhs.strFloatCode &&
               lhs.strFloatIp == rhs.strFloatIp && lhs.strDecVerNum == rhs.strDecVerNum;
    }

    friend std::ostream& operator<<(std::ostream& stream, const CEntry& entry) {
        return stream << entry.strNode << '/' << entry.strFloatCode << '/' << entry.strFloatIp
                      << '/' << entry.strDecVerNum;
    }
};

using Entries = std::vector<CEntry>;

CClusterCGInfo ToInfo(const CEntry& entry) {
    CClusterCGInfo info;
    info.SetCGCode(entry.strNode);
    info.SetFloatCode(entry.strFloatCode);
    info.SetFloatIp(entry.strFloatIp);
    info.SetDecVerNum(entry.strDecVerNum);
    return info;
}

CClusterCGInfoList ToList(const Entries& entries) {
    CClusterCGInfoList list;
    for (const CEntry& entry : entries) {
        list.AddClusterCGInfo(ToInfo(entry));
    }
    return list;
}

Entries FromList(const CClusterCGInfoList& list) {
    std::list<CClusterCGInfo> infos;
    list.GetClusterCGInfoList(infos);
    Entries entries;
    for (const CClusterCGInfo& info : infos) {
        entries.push_back(
            {info.GetNodeCode(), info.GetFloatCode(), info.GetFloatIp(), info.GetDecVerNum()});
    }
    return entries;
}

Entries Cached() {
    CClusterCGInfoList list;
    Registry().GetClusterCGInfoList(list);
    return FromList(list);
}

/// The document, to the letter as the library writes it.
std::string TextOf(const Entries& entries) {
    std::string strText;
    for (const CEntry& entry : entries) {
        strText += (strText.empty() ? "[" : ",") + (R"({"DecisionVerNum":")" + entry.strDecVerNum) +
                   R"(","FloatCGCode":")" + entry.strFloatCode + R"(","FloatIP":")" +
                   entry.strFloatIp + R"(","NVRCode":")" + entry.strNode + R"("})";
    }
    return strText.empty() ? "" : strText + "]\n";
}

CLogLine WriteFailed(const std::string& strOperation, const std::string& strFunction,
                     int iCode = NUMERIC_STORE_CODE) {
    return Err(strOperation, iCode, FILE_STEM, strFunction, "set cg data into zk fail.");
}

const CEntry E1{"n1", "f1", "10.1.0.1"};
const CEntry E2{"n2", "f2", "10.1.0.2"};
const CEntry E3{"n3", "f3", "10.1.0.3"};

class CGRegistry : public CRegistryTest {
protected:
    /// Nodes n1, n2, ... up to the count, of no matter which member status.
    static void SetNodes(unsigned int uiCount) {
        std::list<CNode> nodes;
        for (unsigned int i = 1; i <= uiCount; ++i) {
            nodes.push_back(MakeStoredNode("n" + std::to_string(i), {}));
            nodes.back().SetMemberStatus(static_cast<int>(i % 2));
        }
        CNodeMgr::Instance().Init(nodes);
    }

    /// Fills cache and store alike.
    void Fill(const Entries& entries) {
        Put(TextOf(entries));
        ASSERT_EQ(Registry().ReloadClusterCGInfoList(), 0);
        ASSERT_EQ(Cached(), entries);
        m_logger.Clear();
        m_uiCallsBefore = m_pStore->GetCallCount();
    }

    void Put(const std::optional<std::string>& text) { m_pStore->Put(Path("/MERO/CGList"), text); }
    std::optional<std::string> Stored() const { return m_pStore->Get(Path("/MERO/CGList")); }
    unsigned int Calls() const { return m_pStore->GetCallCount() - m_uiCallsBefore; }

    unsigned int m_uiCallsBefore = 0;
};

TEST_F(CGRegistry, IsEmptyUntilItIsLoaded) {
    Put(TextOf({E1}));
    CClusterCGInfoList list = ToList({E2});
    Registry().GetClusterCGInfoList(list);
    EXPECT_TRUE(list.Empty()) << "the argument is replaced";
    EXPECT_EQ(Calls(), 0U);
}

TEST_F(CGRegistry, HandsOutACopy) {
    Fill({E1});
    CClusterCGInfoList list;
    Registry().GetClusterCGInfoList(list);
    list.AddClusterCGInfo(ToInfo(E2));
    EXPECT_EQ(Cached(), Entries{E1});
}

// ---------------------------------------------------------------- one entry is added

constexpr char SINGLE[] = "AddSingleClusterCGInfo";

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

// ---------------------------------------------------------------- a batch is added

constexpr char BATCH[] = "AddClusterCGInfo";

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

// ---------------------------------------------------------------- update, removal

TEST_F(CGRegistry, UpdateMovesTheEntryToTheEnd) {
    Fill({E1, E2, E3});
    const CEntry changed{"n9", "f1", "10.1.0.2", "5"};
    EXPECT_EQ(Registry().UpdateClusterCGInfoByFloatCode(ToInfo(changed)), 0);
    EXPECT_EQ(Cached(), (Entries{E2, E3, changed})) << "no check runs";
    EXPECT_EQ(Stored(), TextOf({E2, E3, changed}));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    EXPECT_EQ(Calls(), 1U);
}

TEST_F(CGRegistry, UpdateOfAnUnknownCodeAddsTheEntryWithoutALimit) {
    EXPECT_EQ(Registry().UpdateClusterCGInfoByFloatCode(ToInfo(E1)), 0);
    EXPECT_EQ(Registry().UpdateClusterCGInfoByFloatCode(ToInfo(E2)), 0);
    EXPECT_EQ(Cached(), (Entries{E1, E2}));
    EXPECT_EQ(Stored(), TextOf({E1, E2}));
}

TEST_F(CGRegistry, FirstOfTwoEntriesWithOneCodeIsUpdatedOrRemoved) {
    const CEntry twin{"n8", "f1", "10.1.0.8"};
    const CEntry changed{"n9", "f1", "10.1.0.9"};
    Fill({E1, twin, E2});
    EXPECT_EQ(Registry().UpdateClusterCGInfoByFloatCode(ToInfo(changed)), 0);
    EXPECT_EQ(Cached(), (Entries{twin, E2, changed}));
    EXPECT_EQ(Registry().RemoveClusterCGInfo("f1"), 0);
    EXPECT_EQ(Cached(), (Entries{E2, changed}));
    EXPECT_EQ(Stored(), TextOf({E2, changed}));
}

CLogLine Removal(const std::string& strMessage) {
    return Info("remove cluster cg", FILE_STEM, "RemoveClusterCGInfo", strMessage);
}

TEST_F(CGRegistry, RemovalLeavesTheOthers) {
    Fill({E1, E2, E3});
    EXPECT_EQ(Registry().RemoveClusterCGInfo("f2"), 0);
    EXPECT_EQ(Cached(), (Entries{E1, E3}));
    EXPECT_EQ(Stored(), TextOf({E1, E3}));
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Removal("update cluster cg into zk and cache, cluster cg code[f2].")));
    EXPECT_EQ(Calls(), 1U);
}

TEST_F(CGRegistry, RemovalOfTheLastEntryStoresAnEmptyText) {
    Fill({E1});
    EXPECT_EQ(Registry().RemoveClusterCGInfo("f1"), 0);
    EXPECT_EQ(Cached(), Entries{});
    EXPECT_EQ(Stored(), "");
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Trace("cluster_cg_info", "ToJson", "cluster cg info, no cg info."),
                            Removal("update cluster cg into zk and cache, cluster cg code[f1].")));
}

TEST_F(CGRegistry, RemovalOfAnUnknownCodeIsASuccessThatWritesNothing) {
    Fill({E1});
    EXPECT_EQ(Registry().RemoveClusterCGInfo("n1"), 0) << "a node's code is no float code";
    EXPECT_EQ(Cached(), Entries{E1});
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Removal("cluster cg code[n1] not exist.")));
    EXPECT_EQ(Calls(), 0U);
}

// ---------------------------------------------------------------- the whole list

TEST_F(CGRegistry, SetListGoesToTheStoreAloneUntilAReload) {
    Fill({E1});
    CClusterCGInfoList list = ToList({E2, E3});
    EXPECT_EQ(Registry().SetClusterCGInfoList(list), 0);
    EXPECT_EQ(Stored(), TextOf({E2, E3}));
    EXPECT_EQ(Cached(), Entries{E1});
    EXPECT_EQ(Calls(), 1U);
    EXPECT_EQ(Registry().ReloadClusterCGInfoList(), 0);
    EXPECT_EQ(Cached(), (Entries{E2, E3}));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(CGRegistry, EmptyListIsNeverStored) {
    Fill({E1});
    CClusterCGInfoList list;
    EXPECT_EQ(Registry().SetClusterCGInfoList(list), 0);
    EXPECT_EQ(Stored(), TextOf({E1}));
    EXPECT_EQ(Calls(), 0U);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

// ---------------------------------------------------------------- reload

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

// ---------------------------------------------------------------- failing store, lock

struct CWrite {
    std::string strName;
    std::function<int()> call;
    std::string strOperation;
    std::string strFunction;
    Entries cachedAfterFailure;
    Entries storedAfter;
};

std::ostream& operator<<(std::ostream& stream, const CWrite& write) {
    return stream << write.strName;
}

class CGWrite : public CGRegistry, public testing::WithParamInterface<CWrite> {};

TEST_P(CGWrite, FailsWithTheStoresCodeOrSucceeds) {
    SetNodes(6);
    Fill({E1, E2});
    m_pStore->FailCall(1, NUMERIC_STORE_CODE);
    EXPECT_EQ(GetParam().call(), NUMERIC_STORE_CODE);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(WriteFailed(GetParam().strOperation, GetParam().strFunction)));
    EXPECT_EQ(Cached(), GetParam().cachedAfterFailure);
    EXPECT_EQ(Stored(), TextOf({E1, E2}));
    m_pStore->FailCall(2, NUMERIC_STORE_CODE);
    EXPECT_EQ(GetParam().call(), 0) << "there is one call";
    EXPECT_EQ(Stored(), TextOf(GetParam().storedAfter));
}

TEST_P(CGWrite, CannotBeDoneWithoutTheLock) {
    SetNodes(6);
    Fill({E1, E2});
    {
        const CRefusedLocks refused;
        EXPECT_EQ(GetParam().call(), ORVA_FAIL);
    }
    EXPECT_EQ(Cached(), (Entries{E1, E2}));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    EXPECT_EQ(Calls(), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Operations, CGWrite,
    testing::Values(CWrite{"AddSingle",
                           [] { return Registry().AddSingleClusterCGInfo(ToInfo(E3)); },
                           "add cluster cg info",
                           SINGLE,
                           {E1, E2},
                           {E1, E2, E3}},
                    CWrite{"AddBatch",
                           [] { return Registry().AddClusterCGInfo(ToList({E3})); },
                           "add cluster cg info",
                           BATCH,
                           {E1, E2, E3},
                           {E1, E2, E3}},
                    CWrite{"Update",
                           [] { return Registry().UpdateClusterCGInfoByFloatCode(ToInfo(E1)); },
                           "update cluster cg info",
                           "UpdateClusterCGInfoByFloatCode",
                           {E1, E2},
                           {E2, E1}},
                    CWrite{"Remove",
                           [] { return Registry().RemoveClusterCGInfo("f1"); },
                           "remove cluster cg info",
                           "RemoveClusterCGInfo",
                           {E1, E2},
                           {E2}},
                    CWrite{"SetList",
                           [] {
                               CClusterCGInfoList list = ToList({E3});
                               return Registry().SetClusterCGInfoList(list);
                           },
                           "set cluster cg list",
                           "SetClusterCGInfoList",
                           {E1, E2},
                           {E3}}),
    NAME_OF_PARAMETER);

TEST_F(CGRegistry, ReadersWithoutTheLockLeaveTheirArgument) {
    Fill({E1});
    const CRefusedLocks refused;
    CClusterCGInfoList list = ToList({E2});
    Registry().GetClusterCGInfoList(list);
    EXPECT_EQ(FromList(list), Entries{E2});
    EXPECT_EQ(Registry().ReloadClusterCGInfoList(), ORVA_FAIL);
    EXPECT_EQ(Registry().AddClusterCGInfo({}), 0) << "nothing to add needs no lock";
    CClusterCGInfoList empty;
    EXPECT_EQ(Registry().SetClusterCGInfoList(empty), 0);
    EXPECT_EQ(Calls(), 0U);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

// ---------------------------------------------------------------- any order of all

/// The rules of admission and of cache and store, told anew.
struct CCGModel {
    std::set<std::string> nodes;
    Entries cached;
    Entries stored;
    bool bStoreFails = false;

    template <typename Field>
    bool Has(Field field, const std::string& strValue) const {
        for (const CEntry& entry : cached) {
            if (entry.*field == strValue) {
                return true;
            }
        }
        return false;
    }

    int Store(const Entries& entries) {
        if (bStoreFails) {
            return NUMERIC_STORE_CODE;
        }
        stored = entries;
        return 0;
    }

    int Single(const CEntry& entry) {
        if (2 * (cached.size() + 1) > nodes.size()) {
            return ORVA_TARN_FCG_EXCEED_MAX;
        }
        if (Has(&CEntry::strNode, entry.strNode)) {
            return ORVA_TARN_NODE_HAS_BEEN_CG;
        }
        if (nodes.count(entry.strNode) == 0) {
            return ORVA_TARN_CG_NODE_NOT_EXIST;
        }
        if (Has(&CEntry::strFloatCode, entry.strFloatCode)) {
            return ORVA_TARN_FCG_CODE_EXIST;
        }
        if (Has(&CEntry::strFloatIp, entry.strFloatIp)) {
            return ORVA_TARN_FCG_IP_EXIST;
        }
        cached.push_back(entry);
        const int iRet = Store(cached);
        if (iRet != 0) {
            cached.pop_back();
        }
        return iRet;
    }

    int Batch(const Entries& entries) {
        for (const CEntry& entry : entries) {
            if (Has(&CEntry::strFloatCode, entry.strFloatCode)) {
                continue;
            }
            if (Has(&CEntry::strNode, entry.strNode)) {
                return ORVA_TARN_NODE_HAS_BEEN_CG;
            }
            if (Has(&CEntry::strFloatIp, entry.strFloatIp)) {
                return ORVA_TARN_FCG_IP_EXIST;
            }
            cached.push_back(entry);
        }
        return entries.empty() ? 0 : Store(cached);
    }

    Entries Without(const std::string& strFloatCode) const {
        Entries rest;
        bool bFound = false;
        for (const CEntry& entry : cached) {
            if (bFound || entry.strFloatCode != strFloatCode) {
                rest.push_back(entry);
            } else {
                bFound = true;
            }
        }
        return rest;
    }

    int StoreThenCache(const Entries& entries) {
        const int iRet = Store(entries);
        if (iRet == 0) {
            cached = entries;
        }
        return iRet;
    }

    int Update(const CEntry& entry) {
        Entries changed = Without(entry.strFloatCode);
        changed.push_back(entry);
        return StoreThenCache(changed);
    }

    int Remove(const std::string& strFloatCode) {
        const Entries changed = Without(strFloatCode);
        return changed.size() == cached.size() ? 0 : StoreThenCache(changed);
    }

    int SetList(const Entries& entries) { return entries.empty() ? 0 : Store(entries); }

    int Reload() {
        if (bStoreFails) {
            return ORVA_FAIL;
        }
        if (!stored.empty()) {
            cached = stored;
        }
        return 0;
    }
};

class CGSequence : public CGRegistry, public testing::WithParamInterface<unsigned int> {
protected:
    CEntry DrawEntry() {
        return {m_dice.OneOf({"n1", "n2", "n3", "n4", "n5", "n6", "n7"}),
                m_dice.OneOf({"f1", "f2", "f3", "f4", "f5"}),
                m_dice.OneOf({"i1", "i2", "i3", "i4", "i5"}), m_dice.OneOf({"0", "1"})};
    }

    Entries DrawEntries() {
        Entries entries;
        for (std::size_t count = m_dice.Below(4); count > 0; --count) {
            entries.push_back(DrawEntry());
        }
        return entries;
    }

    int SetList(const Entries& entries) {
        CClusterCGInfoList list = ToList(entries);
        return Registry().SetClusterCGInfoList(list);
    }

    void ChangeNodes() {
        const auto uiNodes = static_cast<unsigned int>(m_dice.Below(9));
        SetNodes(uiNodes);
        m_model.nodes.clear();
        for (unsigned int i = 1; i <= uiNodes; ++i) {
            m_model.nodes.insert("n" + std::to_string(i));
        }
    }

    /// Runs an operation and its model with the same store, and compares what they answer.
    void Turn() {
        const CEntry entry = DrawEntry();
        const Entries entries = DrawEntries();
        const std::vector<std::function<std::pair<int, int>()>> turns = {
            [&] {
                const int iSet = SetList(entries);
                return std::pair(iSet, m_model.SetList(entries));
            },
            [&] {
                const int iAdded = Registry().AddClusterCGInfo(ToList(entries));
                return std::pair(iAdded, m_model.Batch(entries));
            },
            [&] {
                const int iUpdated = Registry().UpdateClusterCGInfoByFloatCode(ToInfo(entry));
                return std::pair(iUpdated, m_model.Update(entry));
            },
            [&] {
                const int iRemoved = Registry().RemoveClusterCGInfo(entry.strFloatCode);
                return std::pair(iRemoved, m_model.Remove(entry.strFloatCode));
            },
            [&] {
                const int iReloaded = Registry().ReloadClusterCGInfoList();
                return std::pair(iReloaded, m_model.Reload());
            },
            [&] {
                const int iAdded = Registry().AddSingleClusterCGInfo(ToInfo(entry));
                return std::pair(iAdded, m_model.Single(entry));
            },
        };
        const auto [iAnswered, iModelled] = turns[m_dice.Below(turns.size())]();
        EXPECT_EQ(iAnswered, iModelled);
    }

    CCGModel m_model;
    CDice m_dice{GetParam()};
};

TEST_P(CGSequence, KeepsCacheAndStoreByTheRules) {
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    Put("");
    for (int iStep = 0; iStep < 150 && !HasFailure(); ++iStep) {
        SCOPED_TRACE("step " + std::to_string(iStep));
        m_model.bStoreFails = m_dice.Below(6) == 0;
        m_pStore->FailCall(m_model.bStoreFails ? 1 : 0, NUMERIC_STORE_CODE);
        if (m_dice.Below(6) == 0) {
            ChangeNodes();
        }
        Turn();
        m_pStore->FailCall(0, 0);
        EXPECT_EQ(Cached(), m_model.cached);
        EXPECT_EQ(Stored(), TextOf(m_model.stored));
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, CGSequence, testing::Range(1U, 13U));

}  // namespace
