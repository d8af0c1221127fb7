#include "product/LogScale.h"

#include <gtest/gtest.h>

#include <limits>

namespace vardel {
namespace {

TEST(LogScaleTest, NumbersRoundDownToOneTwoOrFiveTimesAPowerOfTen)
{
    EXPECT_EQ(roundNumberToLogScale(1), 1);
    EXPECT_EQ(roundNumberToLogScale(1.99), 1);
    EXPECT_EQ(roundNumberToLogScale(4.99), 2);
    EXPECT_EQ(roundNumberToLogScale(5), 5);
    EXPECT_EQ(roundNumberToLogScale(9.99), 5);
    EXPECT_EQ(roundNumberToLogScale(10), 10);
    EXPECT_EQ(roundNumberToLogScale(49), 20);
    EXPECT_EQ(roundNumberToLogScale(3599), 2000);
    EXPECT_EQ(roundNumberToLogScale(1000000), 1000000);
}

TEST(LogScaleTest, BelowOneIsZeroAndHugeNumbersStayInRange)
{
    EXPECT_EQ(roundNumberToLogScale(0.99), 0);
    EXPECT_EQ(roundNumberToLogScale(-30), 0);
    EXPECT_EQ(roundNumberToLogScale(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(roundNumberToLogScale(1e300), 5'000'000'000'000'000'000);
    EXPECT_EQ(roundNumberToLogScale(std::numeric_limits<double>::infinity()), 5'000'000'000'000'000'000);
}

} // namespace
} // namespace vardel
