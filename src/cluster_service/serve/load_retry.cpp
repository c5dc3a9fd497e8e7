#include "serve/load_retry.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::chrono::seconds NUMERIC_FIRST_PAUSE{3};
constexpr std::chrono::seconds NUMERIC_LONGEST_PAUSE{60};

}  // namespace

void CLoadRetry::Failed(Texts pTexts, Clock::time_point now) {
    m_pause = pTexts != m_pTried ? NUMERIC_FIRST_PAUSE
                                 : std::min<Clock::duration>(2 * m_pause, NUMERIC_LONGEST_PAUSE);
    m_pTried = std::move(pTexts);
    m_next = now + m_pause;
}
