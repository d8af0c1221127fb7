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

TEST(TextHelpersTest, TrailingEmojiAndSpaceGoWhileEmojiInsideStay)
{
    EXPECT_EQ(TextHelpers::removingTrailingEmojiAndWhitespace("design \U0001F680 "), "design");
    EXPECT_EQ(TextHelpers::removingTrailingEmojiAndWhitespace("team \U0001F44D\U0001F3FD"), "team");
    EXPECT_EQ(
        TextHelpers::removingTrailingEmojiAndWhitespace("family \U0001F468\u200D\U0001F469\u200D\U0001F467"), "family");
    EXPECT_EQ(TextHelpers::removingTrailingEmojiAndWhitespace("go \U0001F1EB\U0001F1F7"), "go");
    EXPECT_EQ(TextHelpers::removingTrailingEmojiAndWhitespace("\u2764\uFE0F love"), "\u2764\uFE0F love");
    // Digits and '#' can start keycap emoji but are text on their own.
    EXPECT_EQ(TextHelpers::removingTrailingEmojiAndWhitespace("room 42#"), "room 42#");
    EXPECT_EQ(TextHelpers::removingTrailingEmojiAndWhitespace("\U0001F600"), "");
}

TEST(TextHelpersTest, TitlePartsAreRemovedOnlyAsWholeWordsWithTheirSeparators)
{
    using TextHelpers::removingTitlePrefixesAndSuffixes;
    EXPECT_EQ(removingTitlePrefixesAndSuffixes("app.tsx \u2014 my-project", "my-project", true), "app.tsx");
    EXPECT_EQ(removingTitlePrefixesAndSuffixes("my-project | README.md", "my-project", true), "README.md");
    EXPECT_EQ(removingTitlePrefixesAndSuffixes("Acme - notes - Acme", "Acme", true), "notes");
    EXPECT_EQ(removingTitlePrefixesAndSuffixes("Acmeish - notes", "Acme", true), "Acmeish - notes");
    EXPECT_EQ(removingTitlePrefixesAndSuffixes("Acme", "Acme", true), std::nullopt);
    EXPECT_EQ(removingTitlePrefixesAndSuffixes("Acme \u2014 ", "Acme", false), "Acme \u2014 ");
    EXPECT_EQ(removingTitlePrefixesAndSuffixes("notes", "", true), "notes");
}

TEST(TextHelpersTest, TruncationCountsUserPerceivedCharacters)
{
    using TextHelpers::TruncationPosition;
    EXPECT_EQ(TextHelpers::truncated("abcdefgh", 5, TruncationPosition::tail), "abcd\u2026");
    EXPECT_EQ(TextHelpers::truncated("abcdefgh", 5, TruncationPosition::head), "\u2026efgh");
    EXPECT_EQ(TextHelpers::truncated("abcdefgh", 5, TruncationPosition::middle), "ab\u2026gh");
    EXPECT_EQ(TextHelpers::truncated("abc", 3, TruncationPosition::tail), "abc");
    EXPECT_EQ(TextHelpers::truncated("abc", 0, TruncationPosition::tail), "");
    // A flag is one character made of two code points; it is never split.
    EXPECT_EQ(TextHelpers::truncated(
                  "\U0001F1EB\U0001F1F7\U0001F1E9\U0001F1EA\U0001F1EE\U0001F1F9", 2, TruncationPosition::tail),
        "\U0001F1EB\U0001F1F7\u2026");
}

TEST(TextHelpersTest, FirstNonNilAndBoundsCheckedAccess)
{
    std::vector<int> numbers = { 1, 4, 6 };
    auto firstEven
        = TextHelpers::firstNonNil(numbers, [](int n) { return n % 2 == 0 ? std::optional(n) : std::nullopt; });
    EXPECT_EQ(firstEven, 4);
    EXPECT_EQ(TextHelpers::firstNonNil(numbers, [](int) { return std::optional<int>(); }), std::nullopt);
    EXPECT_EQ(*TextHelpers::elementAt(numbers, 2), 6);
    EXPECT_EQ(TextHelpers::elementAt(numbers, 3), nullptr);
}

} // namespace
} // namespace vardel
