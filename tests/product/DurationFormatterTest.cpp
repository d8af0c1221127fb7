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

} // namespace
} // namespace vardel
