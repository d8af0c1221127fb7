#include "platform/linux/AtspiCallGuard.h"

#include <gtest/gtest.h>

namespace vardel::linux_desktop {

namespace {

using namespace std::chrono_literals;
using Clock = AtspiCallGuard::Clock;

TEST(AtspiCallGuardTest, CallThatRunsIntoTheTimeOutFreezesOnlyItsApplicationForAWhile)
{
    AtspiCallGuard guard(2000ms);
    Clock::time_point start;
    ASSERT_TRUE(guard.admit(":1.5", start));
    EXPECT_TRUE(guard.finish(":1.5", start, start + 1900ms));

    EXPECT_FALSE(guard.admit(":1.5", start + 2s));
    EXPECT_FALSE(guard.admit(":1.5", start + 6800ms));
    EXPECT_TRUE(guard.admit(":1.6", start + 2s));
    EXPECT_TRUE(guard.admit(":1.5", start + 7s));
    EXPECT_FALSE(guard.isFrozen(":1.5", start + 7s));
    // Refused calls are not counted.
    EXPECT_EQ(guard.callCount(), 3u);
}

TEST(AtspiCallGuardTest, SlowCallShortOfTheTimeOutFreezesNothing)
{
    AtspiCallGuard guard(2000ms);
    Clock::time_point start;
    EXPECT_FALSE(guard.finish(":1.5", start, start + 1700ms));
    EXPECT_FALSE(guard.isFrozen(":1.5", start + 1700ms));

    // The threshold follows the time-out.
    guard.setTimeout(100ms);
    EXPECT_TRUE(guard.finish(":1.5", start, start + 95ms));
    EXPECT_TRUE(guard.isFrozen(":1.5", start + 1s));
}

} // namespace

} // namespace vardel::linux_desktop
