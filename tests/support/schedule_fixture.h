#pragma once

#include <functional>
#include <limits>
#include <list>
#include <optional>
#include <string>

#include "framework_service/schedule_mgr.h"
#include "support/registry_fixture.h"

namespace schedule {

inline constexpr int NUMERIC_STORE_CODE = 4711;
inline constexpr unsigned long long NUMERIC_LARGEST =
    std::numeric_limits<unsigned long long>::max();
inline constexpr char FILE_STEM[] = "schedule_mgr";

inline CScheduleMgr& Manager() {
    return CScheduleMgr::Instance();
}

/// The version document, to the letter as the host writes it.
inline std::string VersionText(unsigned long long ullDecision, unsigned long long ullMaster) {
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

/// An operation that changes a number from 10 and 20.
struct CChange {
    std::string strName;
    std::function<int(unsigned long long& ullOutput)> call;
    unsigned long long ullDecision;
    unsigned long long ullMaster;
    int iCodeOfFailedWrite;
};

inline std::ostream& operator<<(std::ostream& stream, const CChange& change) {
    return stream << change.strName;
}

class VersionChange : public VersionNumbers, public testing::WithParamInterface<CChange> {};

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

}  // namespace schedule
