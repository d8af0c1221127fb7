#include "platform/linux/RetryDelays.h"

#include <gtest/gtest.h>

#include <vector>

namespace vardel::linux_desktop {

using namespace std::chrono_literals;

TEST(RetryDelaysTest, DelaysDoubleUpToTheLongestAndStartOverOnceThePeerAnswers)
{
    RetryDelays delays(2s, 30s);
    RetryDelays::Clock::time_point now {};
    std::vector<RetryDelays::Clock::duration> waited;
    for (int attempt = 0; attempt < 7; ++attempt)
        waited.push_back(delays.failed(now));
    EXPECT_EQ(waited, (std::vector<RetryDelays::Clock::duration> { 2s, 4s, 8s, 16s, 30s, 30s, 30s }));

    delays.succeeded();
    EXPECT_EQ(delays.failed(now), 2s);
    // A longest delay shorter than the first is no reason to retry sooner than asked.
    RetryDelays inverted(10s, 1s);
    EXPECT_EQ(inverted.failed(now), 10s);
    EXPECT_EQ(inverted.failed(now), 10s);
}

TEST(RetryDelaysTest, AnAttemptIsDueOnlyOnceTheLastFailuresDelayHasPassed)
{
    RetryDelays delays(5s, 60s);
    RetryDelays::Clock::time_point start = RetryDelays::Clock::now();
    EXPECT_TRUE(delays.isDue(start));
    delays.failed(start);
    EXPECT_FALSE(delays.isDue(start + 4s));
    EXPECT_TRUE(delays.isDue(start + 5s));
    delays.failed(start + 5s);
    EXPECT_FALSE(delays.isDue(start + 14s));
    EXPECT_TRUE(delays.isDue(start + 15s));
    delays.succeeded();
    EXPECT_TRUE(delays.isDue(start + 6s));
}

} // namespace vardel::linux_desktop
