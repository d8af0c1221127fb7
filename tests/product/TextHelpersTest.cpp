#include "product/TextHelpers.h"

#include <gtest/gtest.h>

namespace vardel {
namespace {

using namespace TextHelpers;

TEST(TextHelpersTest, InvisibleControlAndFormatCharactersAreDropped)
{
    EXPECT_EQ(removingInvisibleControlCharacters("\u200EInbox\u200F"), "Inbox");
    EXPECT_EQ(removingInvisibleControlCharacters("\uFEFFSlack\u0007 \u2066#general\u2069"), "Slack #general");
    EXPECT_EQ(removingInvisibleControlCharacters("line\r\nnext\tcell"), "line\nnext\tcell");
}

TEST(TextHelpersTest, VisibleTextSurvivesControlCharacterRemoval)
{
    const std::string visible = "Café e\u0301 日本語 👍🏽 ✈\uFE0F Ελληνικά";
    EXPECT_EQ(removingInvisibleControlCharacters(visible), visible);
}

TEST(TextHelpersTest, SuffixAndPrefixAreRemovedOnlyWhenPresent)
{
    EXPECT_EQ(removingSuffixIfPresent("Inbox • Superhuman", " • Superhuman"), "Inbox");
    EXPECT_EQ(removingSuffixIfPresent("Inbox • superhuman", " • Superhuman"), "Inbox • superhuman");
    EXPECT_EQ(removingSuffixIfPresent("Superhuman", " • Superhuman"), "Superhuman");
    EXPECT_EQ(removingSuffixIfPresent(" • Superhuman", " • Superhuman"), "");
    EXPECT_EQ(removingPrefixIfPresent("Edited - Notes", "Edited - "), "Notes");
    EXPECT_EQ(removingPrefixIfPresent("Notes", "Edited - "), "Notes");
}

TEST(TextHelpersTest, LowercasingUsesFullUnicodeMapping)
{
    EXPECT_EQ(lowercased("ÄÖÜ Straße"), "äöü straße");
    EXPECT_EQ(lowercased("PRIVATE BROWSING"), "private browsing");
    // Root-locale full mapping keeps the dot of a capital dotted I as a combining mark.
    EXPECT_EQ(lowercased("\u0130"), "i\u0307");
}

TEST(TextHelpersTest, CodePointRemovalHandlesEveryPlane)
{
    EXPECT_EQ(removingCodePoint("a\u200Eb\u200E", U'\u200E'), "ab");
    EXPECT_EQ(removingCodePoint("🎉Launch🎉", U'🎉'), "Launch");
    EXPECT_EQ(removingCodePoint("naïve", U'x'), "naïve");
}

TEST(TextHelpersTest, InvalidUtf8BecomesReplacementCharacters)
{
    EXPECT_EQ(removingInvisibleControlCharacters("a\xffz"), "a\uFFFDz");
    EXPECT_EQ(lowercased("\xc3"), "\uFFFD");
    EXPECT_EQ(removingCodePoint("\xed\xa0\x80x", U'x'), "\uFFFD\uFFFD\uFFFD");
}

} // namespace
} // namespace vardel
