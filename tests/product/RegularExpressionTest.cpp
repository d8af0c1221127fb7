#include "platform/RegularExpression.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace vardel {
namespace {

using Groups = std::vector<std::optional<std::string>>;

TEST(RegularExpressionTest, EditedMarkersWithEveryDashAreRemoved)
{
    auto trailing = RegularExpression::literal("\\s?[-–—]\\s?Edited$");
    EXPECT_EQ(trailing.replacingMatches("Notes — Edited"), "Notes");
    EXPECT_EQ(trailing.replacingMatches("Notes – Edited"), "Notes");
    EXPECT_EQ(trailing.replacingMatches("Notes-Edited"), "Notes");
    EXPECT_EQ(trailing.replacingMatches("Notes — Edited copy"), "Notes — Edited copy");

    auto leading = RegularExpression::literal("^Edited\\s?[-–—]\\s?");
    EXPECT_EQ(leading.replacingMatches("Edited - Notes"), "Notes");
    EXPECT_EQ(leading.replacingMatches("Not Edited - Notes"), "Not Edited - Notes");

    EXPECT_EQ(RegularExpression::literal("\\*$").replacingMatches("Report.docx*"), "Report.docx");
}

TEST(RegularExpressionTest, DigitAndSpaceClassesFollowUnicode)
{
    auto mailCounter = RegularExpression::literal("\\s?\\(\\d[^()]+\\)$");
    EXPECT_EQ(mailCounter.replacingMatches("Inbox (12 messages)"), "Inbox");
    EXPECT_EQ(mailCounter.replacingMatches("Inbox (new messages)"), "Inbox (new messages)");
    // Arabic-Indic three is a decimal digit, and a no-break space is a space.
    EXPECT_EQ(mailCounter.replacingMatches("Inbox\u00A0(\u0663 messages)"), "Inbox");
}

TEST(RegularExpressionTest, OptionsChangeCaseAndLineHandling)
{
    EXPECT_FALSE(RegularExpression::literal("ärger").matchesAnywhere("ÄRGER"));
    EXPECT_TRUE(RegularExpression::literal("ärger", RegularExpression::caseInsensitive).matchesAnywhere("ÄRGER"));

    EXPECT_FALSE(RegularExpression::literal("a.b").matchesWhole("a\nb"));
    EXPECT_TRUE(RegularExpression::literal("a.b", RegularExpression::dotMatchesLineSeparators).matchesWhole("a\nb"));
}

TEST(RegularExpressionTest, WholeMatchNeedsTheWholeText)
{
    auto word = RegularExpression::literal("[a-z]+");
    EXPECT_TRUE(word.matchesWhole("meeting"));
    EXPECT_FALSE(word.matchesWhole("meeting 2"));
    EXPECT_TRUE(word.matchesAnywhere("Meeting 2"));
    EXPECT_FALSE(word.matchesAnywhere("42"));
}

TEST(RegularExpressionTest, FirstMatchReportsGroupsThatTookNoPart)
{
    auto channel = RegularExpression::literal("#(\\w+)(?: \\((\\d+)\\))?");
    EXPECT_EQ(channel.firstMatch("in #général (3) and #random"), (Groups { "#général (3)", "général", "3" }));
    EXPECT_EQ(channel.firstMatch("in #random"), (Groups { "#random", "random", std::nullopt }));
    EXPECT_EQ(channel.firstMatch("no channel"), std::nullopt);
}

TEST(RegularExpressionTest, ReplacementTemplatesNameGroups)
{
    auto name = RegularExpression::literal("(\\w+) (\\w+)");
    EXPECT_EQ(name.replacingMatches("Ada Lovelace", "$2, $1"), "Lovelace, Ada");
    EXPECT_EQ(name.replacingMatches("Ada Lovelace", "\\$1"), "$1");
    // A template naming a group the expression lacks leaves the text as it was.
    EXPECT_EQ(name.replacingMatches("Ada Lovelace", "$7"), "Ada Lovelace");
}

TEST(RegularExpressionTest, PatternsThatDoNotCompileYieldNothing)
{
    EXPECT_FALSE(RegularExpression::compile("("));
    EXPECT_FALSE(RegularExpression::compile("[a-"));
    EXPECT_FALSE(RegularExpression::compile("a{2,1}"));
    auto valid = RegularExpression::compile("^Inbox", RegularExpression::caseInsensitive);
    ASSERT_TRUE(valid);
    EXPECT_EQ(valid->pattern(), "^Inbox");
    EXPECT_TRUE(valid->matchesAnywhere("inbox (3)"));
}

TEST(RegularExpressionDeathTest, LiteralThatDoesNotCompileStopsNamingIt)
{
    EXPECT_DEATH(RegularExpression::literal("unbalanced(group"), "unbalanced\\(group");
}

TEST(RegularExpressionTest, InvalidUtf8IsReadAsReplacementCharacters)
{
    auto anything = RegularExpression::literal(".");
    EXPECT_EQ(anything.replacingMatches("\xff\xfe", "x"), "xx");
    EXPECT_EQ(RegularExpression::literal("z").replacingMatches("a\xc3z", "y"), "a\uFFFDy");
    EXPECT_TRUE(RegularExpression::literal("^\uFFFD$").matchesWhole("\x80"));
    EXPECT_FALSE(RegularExpression::compile("\xff("));
}

TEST(RegularExpressionTest, RunawayBacktrackingFailsInsteadOfHanging)
{
    auto nested = RegularExpression::literal("(a+)+$");
    std::string hostile(40, 'a');
    hostile += '!';
    auto started = std::chrono::steady_clock::now();
    EXPECT_FALSE(nested.matchesAnywhere(hostile));
    EXPECT_EQ(nested.replacingMatches(hostile, "x"), hostile);
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(30));
}

TEST(RegularExpressionTest, CopiesShareOneCompiledPatternAcrossThreads)
{
    auto edited = RegularExpression::literal("\\s?[-–—]\\s?Edited$");
    std::vector<std::thread> threads;
    std::vector<int> cleaned(4, 0);
    for (size_t index = 0; index < cleaned.size(); ++index) {
        threads.emplace_back([copy = edited, &count = cleaned[index]] {
            for (int round = 0; round < 500; ++round)
                count += copy.replacingMatches("Plan — Edited") == "Plan";
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(cleaned, std::vector<int>(4, 500));
}

} // namespace
} // namespace vardel
