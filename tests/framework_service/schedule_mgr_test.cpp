#include "framework_service/schedule_mgr.h"

#include <functional>
#include <limits>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "common_service/tarn_conf.h"
#include "common_service/tarn_def.h"
#include "support/refused_locks.h"
#include "support/registry_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int NUMERIC_STORE_CODE = 4711;
constexpr unsigned long long NUMERIC_LARGEST = std::numeric_limits<unsigned long long>::max();
constexpr char FILE_STEM[] = "schedule_mgr";

CScheduleMgr& Manager() {
    return CScheduleMgr::Instance();
}

/// The version document, to the letter as the host writes it.
std::string VersionText(unsigned long long ullDecision, unsigned long long ullMaster) {
    return R"({"DecisionVerNum":)" + std::to_string(ullDecision) + R"(,"MasterVerNum":)" +
           std::to_string(ullMaster) + "}\n";
}

class VersionNumbers : public CRegistryTest {
protected:
    void Put(const std::optional<std::string>& text) { m_pStore->Put(Path("/Version"), text); }
    std::optional<std::string> Stored() const { return m_pStore->Get(Path("/Version")); }

    void Load(unsigned long long ullDecision, unsigned long long ullMaster) {
        Put(VersionText(ullDecision, ullMaster));
        ASSERT_EQ(Manager().Reload(), 0);
        ExpectNumbers(ullDecision, ullMaster);
    }

    static void ExpectNumbers(unsigned long long ullDecision, unsigned long long ullMaster) {
        EXPECT_EQ(Manager().GetDecisionVerNum(), ullDecision);
        EXPECT_EQ(Manager().GetMasterVerNum(), ullMaster);
    }

    static CLogLine WriteFailed(const std::string& strFunction, int iCode) {
        return Err("schedule manager, increase decision verion num", iCode, FILE_STEM, strFunction,
                   "set data to zk fail.");
    }
};

TEST_F(VersionNumbers, StartAtZeroAndAreWrittenBothOnEveryIncrease) {
    ExpectNumbers(0, 0);
    unsigned long long ullNew = 99;
    EXPECT_EQ(Manager().IncreaseDecisionVerNum(ullNew), 0);
    EXPECT_EQ(ullNew, 1U);
    EXPECT_EQ(Stored(), "{\"DecisionVerNum\":1,\"MasterVerNum\":0}\n");
    EXPECT_EQ(Manager().IncreaseMasterVerNum(), 0);
    EXPECT_EQ(Stored(), "{\"DecisionVerNum\":1,\"MasterVerNum\":1}\n");
    EXPECT_EQ(Manager().IncreaseDecisionVerNum(ullNew), 0);
    EXPECT_EQ(ullNew, 2U);
    ExpectNumbers(2, 1);
    EXPECT_EQ(m_pStore->GetCallCount(), 3U) << "one write each";
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(VersionNumbers, DecisionNumberIsSetUpAndDown) {
    Load(10, 20);
    for (const unsigned long long ullNumber : {30ULL, 5ULL, 0ULL, NUMERIC_LARGEST}) {
        EXPECT_EQ(Manager().SetDecisionVerNum(ullNumber), 0);
        ExpectNumbers(ullNumber, 20);
        EXPECT_EQ(Stored(), VersionText(ullNumber, 20));
    }
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(VersionNumbers, SurviveInFull64Bits) {
    Load(NUMERIC_LARGEST, NUMERIC_LARGEST - 1);
    EXPECT_EQ(Manager().IncreaseMasterVerNum(), 0);
    EXPECT_EQ(Stored(),
              "{\"DecisionVerNum\":18446744073709551615,"
              "\"MasterVerNum\":18446744073709551615}\n");
    EXPECT_EQ(Manager().Reload(), 0);
    ExpectNumbers(NUMERIC_LARGEST, NUMERIC_LARGEST);
}

TEST_F(VersionNumbers, StartOverAfterTheLargest) {
    Load(NUMERIC_LARGEST, NUMERIC_LARGEST);
    unsigned long long ullNew = 99;
    EXPECT_EQ(Manager().IncreaseDecisionVerNum(ullNew), 0);
    EXPECT_EQ(ullNew, 0U);
    EXPECT_EQ(Manager().IncreaseMasterVerNum(), 0);
    ExpectNumbers(0, 0);
    EXPECT_EQ(Stored(), VersionText(0, 0));
}

/// An operation that changes a number from 10 and 20.
struct CChange {
    std::string strName;
    std::function<int(unsigned long long& ullOutput)> call;
    unsigned long long ullDecision;
    unsigned long long ullMaster;
    int iCodeOfFailedWrite;
};

std::ostream& operator<<(std::ostream& stream, const CChange& change) {
    return stream << change.strName;
}

class VersionChange : public VersionNumbers, public testing::WithParamInterface<CChange> {};

TEST_P(VersionChange, LeavesMemoryAheadOfAFailedWrite) {
    Load(10, 20);
    unsigned long long ullOutput = 99;
    m_pStore->FailCall(1, NUMERIC_STORE_CODE);
    EXPECT_EQ(GetParam().call(ullOutput), GetParam().iCodeOfFailedWrite);
    EXPECT_EQ(ullOutput, 99U);
    ExpectNumbers(GetParam().ullDecision, GetParam().ullMaster);
    EXPECT_EQ(Stored(), VersionText(10, 20));
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(WriteFailed(GetParam().strName, GetParam().iCodeOfFailedWrite)));
}

TEST_P(VersionChange, ThatFailedIsCarriedByTheNextWriteOfTheOtherNumber) {
    Load(10, 20);
    unsigned long long ullOutput = 99;
    m_pStore->FailCall(1, NUMERIC_STORE_CODE);
    GetParam().call(ullOutput);
    EXPECT_EQ(Manager().IncreaseMasterVerNum(), 0);
    EXPECT_EQ(Stored(), VersionText(GetParam().ullDecision, GetParam().ullMaster + 1));
    m_pStore->FailCall(1, NUMERIC_STORE_CODE);
    GetParam().call(ullOutput);
    const unsigned long long ullDecision = Manager().GetDecisionVerNum() + 1;
    EXPECT_EQ(Manager().IncreaseDecisionVerNum(ullOutput), 0);
    EXPECT_EQ(ullOutput, ullDecision);
    EXPECT_EQ(Stored(), VersionText(ullDecision, Manager().GetMasterVerNum()));
}

TEST_P(VersionChange, ThatFailedIsLostOnReload) {
    Load(10, 20);
    unsigned long long ullOutput = 99;
    m_pStore->FailCall(1, NUMERIC_STORE_CODE);
    GetParam().call(ullOutput);
    EXPECT_EQ(Manager().Reload(), 0);
    ExpectNumbers(10, 20);
}

TEST_P(VersionChange, MakesOneStoreCall) {
    Load(10, 20);
    unsigned long long ullOutput = 99;
    m_pStore->FailCall(2, NUMERIC_STORE_CODE);
    EXPECT_EQ(GetParam().call(ullOutput), 0);
    EXPECT_EQ(Stored(), VersionText(GetParam().ullDecision, GetParam().ullMaster));
}

TEST_P(VersionChange, CannotBeMadeWithoutTheLock) {
    Load(10, 20);
    unsigned long long ullOutput = 99;
    {
        const CRefusedLocks refused;
        EXPECT_EQ(GetParam().call(ullOutput), ORVA_FAIL);
        ExpectNumbers(10, 20);
    }
    EXPECT_EQ(ullOutput, 99U);
    EXPECT_EQ(Stored(), VersionText(10, 20));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Operations, VersionChange,
    testing::Values(CChange{"IncreaseDecisionVerNum",
                            [](unsigned long long& ullOutput) {
                                return Manager().IncreaseDecisionVerNum(ullOutput);
                            },
                            11, 20, NUMERIC_STORE_CODE},
                    CChange{"IncreaseMasterVerNum",
                            [](unsigned long long&) { return Manager().IncreaseMasterVerNum(); },
                            10, 21, NUMERIC_STORE_CODE},
                    CChange{"SetDecisionVerNum",
                            [](unsigned long long&) { return Manager().SetDecisionVerNum(7); }, 7,
                            20, ORVA_FAIL}),
    NAME_OF_PARAMETER);

// ---------------------------------------------------------------- reload

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

TEST_F(VersionNumbers, ReloadWithoutTheLockKeepsThem) {
    Load(10, 20);
    Put(VersionText(1, 2));
    const CRefusedLocks refused;
    EXPECT_EQ(Manager().Reload(), ORVA_FAIL);
    ExpectNumbers(10, 20);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(VersionNumbers, ReloadSetsNoWatcher) {
    static int iFired = 0;
    SetNodeEventHandler([](const std::string&) { ++iFired; });
    Load(10, 20);
    EXPECT_EQ(Manager().IncreaseMasterVerNum(), 0);
    EXPECT_EQ(iFired, 0);
}

TEST_F(VersionNumbers, LieBelowTheClusterCodeOfTheMoment) {
    EXPECT_EQ(Manager().SetDecisionVerNum(3), 0);
    CTARNConf::m_oConf.SetCstClusterCode("Y");
    EXPECT_EQ(Manager().SetDecisionVerNum(4), 0);
    EXPECT_EQ(m_pStore->Get("/CloudX/Version"), VersionText(3, 0));
    EXPECT_EQ(m_pStore->Get("/CloudY/Version"), VersionText(4, 0));
}

// ---------------------------------------------------------------- the shift list

class ShiftList : public CRegistryTest {
protected:
    static std::list<CContainerAddr> All() {
        std::list<CContainerAddr> addresses;
        Manager().GetAllShiftContainer(addresses);
        return addresses;
    }

    const CContainerAddr A{"n1", "A"};
    const CContainerAddr B{"n1", "B"};
    const CContainerAddr C{"n0", "A"};
};

TEST_F(ShiftList, KeepsEachContainerOnceInTheOrderOfAdding) {
    for (const CContainerAddr& addr : {B, A, C, B, A}) {
        Manager().AddShiftContainer(addr);
    }
    EXPECT_THAT(All(), ElementsAre(B, A, C));
    Manager().RemoveShiftContainer(A);
    Manager().AddShiftContainer(A);
    EXPECT_THAT(All(), ElementsAre(B, C, A));
}

TEST_F(ShiftList, TellsAddressesApartByBothParts) {
    const CContainerAddr one("n1", "1A");
    const CContainerAddr other("n11", "A");
    ASSERT_FALSE(one < other || other < one) << "to a table they are the same";
    Manager().AddShiftContainer(one);
    Manager().AddShiftContainer(other);
    EXPECT_THAT(All(), ElementsAre(one, other));
    Manager().RemoveShiftContainer(other);
    EXPECT_THAT(All(), ElementsAre(one));
}

TEST_F(ShiftList, IsAppendedToWhatTheCallerHolds) {
    Manager().AddShiftContainer(A);
    std::list<CContainerAddr> addresses = {C};
    Manager().GetAllShiftContainer(addresses);
    EXPECT_THAT(addresses, ElementsAre(C, A));
    addresses.front().SetNodeId("changed");
    addresses.back().SetNodeId("changed");
    EXPECT_THAT(All(), ElementsAre(A));
}

TEST_F(ShiftList, MeansSchedulingUntilItIsEmpty) {
    EXPECT_FALSE(Manager().IsScheduling());
    Manager().AddShiftContainer(A);
    Manager().AddShiftContainer(A);
    Manager().AddShiftContainer(B);
    EXPECT_TRUE(Manager().IsScheduling());
    Manager().RemoveShiftContainer(C);
    Manager().RemoveShiftContainer(A);
    EXPECT_TRUE(Manager().IsScheduling());
    Manager().RemoveShiftContainer(B);
    EXPECT_FALSE(Manager().IsScheduling());
    Manager().RemoveShiftContainer(B);
    EXPECT_FALSE(Manager().IsScheduling());
}

TEST_F(ShiftList, IsNeitherStoredNorLogged) {
    Manager().AddShiftContainer(A);
    EXPECT_TRUE(Manager().IsScheduling());
    Manager().RemoveShiftContainer(A);
    EXPECT_EQ(m_pStore->GetCallCount(), 0U);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(ShiftList, CountsAsSchedulingAndStaysWithoutTheLock) {
    Manager().AddShiftContainer(A);
    std::list<CContainerAddr> addresses = {C};
    {
        const CRefusedLocks refused;
        Manager().AddShiftContainer(B);
        Manager().RemoveShiftContainer(A);
        Manager().GetAllShiftContainer(addresses);
    }
    EXPECT_THAT(addresses, ElementsAre(C));
    EXPECT_THAT(All(), ElementsAre(A));
    Manager().RemoveShiftContainer(A);
    const CRefusedLocks refused;
    EXPECT_TRUE(Manager().IsScheduling()) << "errs on the side of busy";
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

}  // namespace
