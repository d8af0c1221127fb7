#include "product/DurationFormatter.h"

#include <gtest/gtest.h>

#include <limits>

namespace vardel {
namespace {

TEST(DurationFormatterTest, ZeroPartsAreLeftOut)
{
    EXPECT_EQ(DurationFormatter::format(2700), "45m");
    EXPECT_EQ(DurationFormatter::format(3725), "1h 2m 5s");
    EXPECT_EQ(DurationFormatter::format(59), "59s");
    EXPECT_EQ(DurationFormatter::format(3605), "1h 5s");
    EXPECT_EQ(DurationFormatter::format(7200), "2h");
    EXPECT_EQ(DurationFormatter::format(100000), "27h 46m 40s");
}

TEST(DurationFormatterTest, FractionsRoundDownAndNothingIsZeroSeconds)
{
    EXPECT_EQ(DurationFormatter::format(59.99), "59s");
    EXPECT_EQ(DurationFormatter::format(0.7), "0s");
    EXPECT_EQ(DurationFormatter::format(0), "0s");
    EXPECT_EQ(DurationFormatter::format(-5), "0s");
    EXPECT_EQ(DurationFormatter::format(std::numeric_limits<double>::quiet_NaN()), "0s");
    EXPECT_FALSE(DurationFormatter::format(std::numeric_limits<double>::infinity()).empty());
}

TEST(DurationFormatterTest, ShortStringKeepsTheLargestPartsAndCanAlwaysShowMinutes)
{
    EXPECT_EQ(DurationFormatter::shortString(7530, 2, true), "2h 5m");
    EXPECT_EQ(DurationFormatter::shortString(7200, 2, true), "2h 0m");
    EXPECT_EQ(DurationFormatter::shortString(45, 2, true), "0m");
    EXPECT_EQ(DurationFormatter::shortString(3599, 2, false), "59m 59s");
    EXPECT_EQ(DurationFormatter::shortString(3605, 2, false), "1h");
    EXPECT_EQ(DurationFormatter::shortString(3725, 3, false), "1h 2m 5s");
    EXPECT_EQ(DurationFormatter::shortString(3725, 1, false), "1h");
    EXPECT_EQ(DurationFormatter::shortString(0, 2, false), "0s");
}

} // namespace
} // namespace vardel
