#include "platform/ValueJson.h"

#include <gtest/gtest.h>

namespace vardel {
namespace {

// 2026-01-05T09:00:00Z
constexpr double nine = 1767603600;

TEST(ValueJsonTest, DatesAreWrittenToTheNearestMillisecondAndReadBack)
{
    EXPECT_EQ(ValueJson::formatIso8601(Date { nine }), "2026-01-05T09:00:00Z");
    EXPECT_EQ(ValueJson::formatIso8601(Date { nine + 0.5 }), "2026-01-05T09:00:00.500Z");
    EXPECT_EQ(ValueJson::formatIso8601(Date { nine + 0.0004 }), "2026-01-05T09:00:00Z");
    // Just short of a whole second, across a minute and a day: the later second, never the earlier.
    EXPECT_EQ(ValueJson::formatIso8601(Date { nine + 59.9996 }), "2026-01-05T09:01:00Z");
    EXPECT_EQ(ValueJson::formatIso8601(Date { nine + 15 * 3600 - 0.0001 }), "2026-01-06T00:00:00Z");
    EXPECT_EQ(ValueJson::formatIso8601(Date { nine - 0.0004 }), "2026-01-05T09:00:00Z");

    for (double offset : { 0.0, 0.001, 0.25, 0.999, 59.9996 }) {
        auto read = ValueJson::parseIso8601(ValueJson::formatIso8601(Date { nine + offset }));
        ASSERT_TRUE(read);
        EXPECT_NEAR(read->secondsSince1970, nine + offset, 0.0005) << offset;
    }
}

} // namespace
} // namespace vardel
