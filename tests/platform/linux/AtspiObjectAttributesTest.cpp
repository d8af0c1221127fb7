#include "platform/linux/AtspiObjectAttributes.h"

#include <gtest/gtest.h>

namespace vardel::linux_desktop {

namespace {

TEST(AtspiObjectAttributesTest, HeadingLevelIsAPlainNumberThatFits)
{
    EXPECT_EQ(AtspiObjectAttributes::headingLevel("2"), 2);
    EXPECT_EQ(AtspiObjectAttributes::headingLevel("007"), 7);
    EXPECT_EQ(AtspiObjectAttributes::headingLevel("2147483647"), 2147483647);
}

TEST(AtspiObjectAttributesTest, HostileHeadingLevelsAreAbsent)
{
    using namespace std::string_view_literals;
    for (std::string_view level : { "99999999999999999999"sv, "2147483648"sv, ""sv, "-1"sv, "+1"sv, " 3"sv, "3 "sv,
             "3.0"sv, "1e3"sv, "three"sv, "\xd9\xa3"sv, "3\0"sv })
        EXPECT_EQ(AtspiObjectAttributes::headingLevel(level), std::nullopt) << '"' << level << '"';
}

} // namespace

} // namespace vardel::linux_desktop
