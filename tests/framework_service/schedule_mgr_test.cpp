#include "common_service/tarn_def.h"
#include "support/schedule_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using namespace schedule;

namespace {

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

}  // namespace
