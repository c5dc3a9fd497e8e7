#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "common_service/tarn_def.h"
#include "support/cg_registry_fixture.h"

using namespace cg_registry;

namespace {

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
