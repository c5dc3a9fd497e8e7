#include "serve/ticker.h"

#include <gtest/gtest.h>

#include <ctime>
#include <vector>

#include "serve/comes_true.h"

TEST(Ticker, TicksOnceInASecond) {
    CInputQueue queue(1);
    CTicker ticker(queue);
    const std::time_t tmBegun = std::time(nullptr);
    ticker.Start();
    std::vector<int64_t> seconds;
    ASSERT_TRUE(ComesTrue([&] {
        for (const CInputBatch& batch : queue.Take(10, std::chrono::steady_clock::now())) {
            EXPECT_TRUE(std::holds_alternative<CTick>(batch.inputs.at(0)));
            seconds.push_back(batch.iTime);
        }
        return seconds.size() >= 3;
    }));
    ticker.Stop();

    EXPECT_GT(seconds.front(), tmBegun);
    for (std::size_t ui = 1; ui < seconds.size(); ++ui) {
        EXPECT_GT(seconds[ui], seconds[ui - 1]);
    }
}
