#include "serve/load_retry.h"

#include <gmock/gmock.h>

#include <vector>

namespace {

using testing::ElementsAre;

CLoadRetry::Texts SomeTexts() {
    return std::make_shared<const CDocumentTexts::Texts>();
}

/// The pauses before loads that fail one after the other, in seconds.
class LoadRetry : public testing::Test {
protected:
    std::vector<int> Fail(const CLoadRetry::Texts& pTexts, int iLoads) {
        std::vector<int> pauses;
        for (int i = 0; i < iLoads; ++i) {
            m_retry.Failed(pTexts, m_now);
            pauses.push_back(Pause(pTexts));
        }
        return pauses;
    }

    CLoadRetry m_retry;
    CLoadRetry::Clock::time_point m_now{std::chrono::hours(1)};

private:
    int Pause(const CLoadRetry::Texts& pTexts) {
        int iSeconds = 0;
        for (; !m_retry.IsDue(pTexts, m_now); m_now += std::chrono::seconds(1)) {
            ++iSeconds;
        }
        return iSeconds;
    }
};

TEST_F(LoadRetry, PausesDoubleUpToAMinute) {
    EXPECT_THAT(Fail(SomeTexts(), 7), ElementsAre(3, 6, 12, 24, 48, 60, 60));
}

TEST_F(LoadRetry, DocumentThatChangesIsTriedAtOnceAndPausesBeginAnew) {
    const CLoadRetry::Texts pFirst = SomeTexts();
    Fail(pFirst, 4);
    m_retry.Failed(pFirst, m_now);
    ASSERT_FALSE(m_retry.IsDue(pFirst, m_now));

    const CLoadRetry::Texts pChanged = SomeTexts();
    EXPECT_TRUE(m_retry.IsDue(pChanged, m_now));
    EXPECT_THAT(Fail(pChanged, 3), ElementsAre(3, 6, 12));
}

}  // namespace
