#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>

#include "common/compact_text.h"
#include "common/numbered.h"
#include "common/sorted_runs.h"
#include "common/task_index.h"

namespace {

struct CDescending {
    bool operator()(uint32_t uiLeft, uint32_t uiRight) const { return uiLeft > uiRight; }
};

TEST(SortedRuns, BehavesAsASet) {
    const unsigned int uiSeed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(uiSeed));
    std::mt19937 random(uiSeed);
    CSortedRuns<CDescending> runs{CDescending()};
    std::set<uint32_t, CDescending> set;
    for (int iStep = 0; iStep < 20000; ++iStep) {
        // Grows and shrinks by turns, down to nothing.
        const auto uiItem = static_cast<uint32_t>(random() % 1000);
        if (set.count(uiItem) == 0) {
            if (iStep % 4000 < 2000) {
                runs.Insert(uiItem);
                set.insert(uiItem);
            }
        } else if (iStep % 4000 >= 2000 || random() % 8 == 0) {
            runs.Erase(uiItem);
            set.erase(uiItem);
        }
        const auto uiWanted = static_cast<uint32_t>(random() % 1000);
        const auto it = std::find_if(set.begin(), set.end(),
                                     [&](uint32_t ui) { return ui % 7 == uiWanted % 7; });
        ASSERT_EQ(runs.FindFirst([&](uint32_t ui) { return ui % 7 == uiWanted % 7; }),
                  it != set.end() ? *it : NUMERIC_NONE);
        const auto itBehind = set.lower_bound(uiWanted);
        const auto [uiAhead, uiBehind] = runs.Part([&](uint32_t ui) { return ui > uiWanted; });
        ASSERT_EQ(uiBehind, itBehind != set.end() ? *itBehind : NUMERIC_NONE);
        ASSERT_EQ(uiAhead, itBehind != set.begin() ? *std::prev(itBehind) : NUMERIC_NONE);
    }
}

TEST(TaskIndex, FindsEveryItemOfAHash) {
    const unsigned int uiSeed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(uiSeed));
    std::mt19937 random(uiSeed);
    CTaskIndex index;
    std::set<std::pair<uint32_t, uint32_t>> set;
    EXPECT_EQ(index.Find(0, [](uint32_t) { return true; }), NUMERIC_NONE);
    for (uint32_t uiItem = 0; uiItem < 20000; ++uiItem) {
        // Few hashes, which lie close together and at the end of the table too.
        const auto uiHash = static_cast<uint32_t>(random() % 40) - 20;
        if (set.size() < 100 && random() % 2 == 0) {
            index.Insert(uiHash, uiItem);
            set.emplace(uiHash, uiItem);
        } else if (!set.empty()) {
            const auto it =
                std::next(set.begin(), static_cast<std::ptrdiff_t>(random() % set.size()));
            index.Erase(it->first, it->second);
            set.erase(it);
        }
        std::set<std::pair<uint32_t, uint32_t>> found;
        for (uint32_t ui = 0; ui < 40; ++ui) {
            index.Find(ui - 20, [&](uint32_t uiFound) {
                EXPECT_TRUE(found.emplace(ui - 20, uiFound).second);
                return false;
            });
        }
        ASSERT_EQ(found, set);
    }
}

TEST(CompactText, KeepsTextsOfAnyLength) {
    for (const std::size_t uiLength : {0, 1, 30, 31, 32, 200, 255, 256}) {
        const std::string strText(uiLength, 'x');
        CCompactText text(strText);
        EXPECT_EQ(text.View(), strText);
        CCompactText other(std::move(text));
        EXPECT_EQ(other.View(), strText);
        text = CCompactText("short");
        other = std::move(text);
        EXPECT_EQ(other.View(), "short");
    }
}

TEST(Numbered, NumbersStayAndAreGivenOutAgain) {
    CNumbered<std::string> texts;
    EXPECT_EQ(texts.Add("a"), 0U);
    EXPECT_EQ(texts.Add("b"), 1U);
    texts.GiveBack(0);
    EXPECT_EQ(texts.Add("c"), 0U);
    EXPECT_EQ(texts.Add("d"), 2U);
    EXPECT_EQ(texts[0] + texts[1] + texts[2], "cbd");
}

}  // namespace
