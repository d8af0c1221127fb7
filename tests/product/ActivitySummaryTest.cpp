#include "product/ActivitySummary.h"

#include "product/LocalCalendar.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace vardel {
namespace {

// Runs the test in a time zone, and puts the process's back afterwards.
class TimeZone {
public:
    explicit TimeZone(const char* zone)
    {
        if (const char* previous = std::getenv("TZ"))
            previous_ = previous;
        setenv("TZ", zone, 1);
        tzset();
    }
    ~TimeZone()
    {
        if (previous_)
            setenv("TZ", previous_->c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }

private:
    std::optional<std::string> previous_;
};

Date utc(int day, int hour, int minute = 0)
{
    // Days of January 2026.
    return Date { 1767225600.0 + (day - 1) * 86400.0 + hour * 3600.0 + minute * 60.0 };
}

RecordedActivity activity(std::string name, std::optional<std::string> document = std::nullopt,
    std::optional<std::string> title = std::nullopt)
{
    RecordedActivity recorded;
    recorded.bundleIdentifier = "com.example." + name;
    recorded.applicationName = name;
    recorded.documentPath = std::move(document);
    recorded.documentTitle = std::move(title);
    return recorded;
}

TEST(LocalCalendarTest, DaysFollowTheProcessTimeZoneAcrossClockChanges)
{
    TimeZone berlin("Europe/Berlin");
    // 2026-03-29 has 23 hours in Berlin; its midnight is 23:00 UTC the day before.
    auto day = LocalCalendar::parseDay("2026-03-29");
    ASSERT_TRUE(day);
    EXPECT_EQ(day->secondsSince1970, 1774738800);
    EXPECT_EQ(LocalCalendar::startOfNextDay(*day).secondsSince1970 - day->secondsSince1970, 23 * 3600);
    EXPECT_EQ(LocalCalendar::startOfDay(Date { 1774738800 + 5 * 3600 }), *day);
    EXPECT_EQ(LocalCalendar::formatTime(Date { 1774738800 + 5 * 3600 }), "06:00:00");
    // 2026-10-25 has 25 hours; either pass through the hour the clocks repeat is on that day.
    for (double moment : { 1792888200.0, 1792891800.0 }) {
        EXPECT_EQ(LocalCalendar::startOfDay(Date { moment }).secondsSince1970, 1792879200);
        EXPECT_EQ(LocalCalendar::startOfNextDay(Date { moment }).secondsSince1970, 1792969200);
    }

    TimeZone utcZone("UTC");
    EXPECT_EQ(LocalCalendar::formatDay(Date { 1774738800 }), "2026-03-28");
}

TEST(LocalCalendarTest, OnlyRealDaysInTheIsoFormAreRead)
{
    TimeZone utcZone("UTC");
    EXPECT_TRUE(LocalCalendar::parseDay("2024-02-29"));
    for (const char* wrong :
        { "2026-02-30", "2026-13-01", "2026-1-05", "05.01.2026", "2026-01-05x", "", "yyyy-mm-dd", "2026-01-+5" })
        EXPECT_FALSE(LocalCalendar::parseDay(wrong)) << wrong;
}

TEST(ActivitySummaryTest, TotalsCountOnlyTheDayAndRankByTime)
{
    std::vector<ActivitySpan> spans = {
        { 1, utc(4, 23), utc(5, 1), activity("Editor", "/notes.txt", "Notes") },
        { 2, utc(5, 9), utc(5, 9, 30), activity("Browser", "https://a.example/", "A") },
        { 3, utc(5, 10), utc(5, 10, 10), activity("Browser", "https://a.example/", "A, renamed") },
        { 4, utc(5, 11), utc(5, 11, 40), activity("Mail") },
        { 5, utc(5, 23), utc(6, 2), activity("Editor") },
    };
    auto summary = ActivitySummary::of(spans, utc(5, 0), utc(6, 0));

    EXPECT_DOUBLE_EQ(summary.totalSeconds, (60 + 30 + 10 + 40 + 60) * 60.0);
    ASSERT_EQ(summary.timeline.size(), 5u);
    EXPECT_EQ(summary.timeline.front().start, utc(5, 0));
    EXPECT_EQ(summary.timeline.back().end, utc(6, 0));

    using Application = ActivitySummary::ApplicationTotal;
    EXPECT_EQ(summary.applications,
        (std::vector<Application> { { "com.example.Editor", "Editor", 7200 },
            { "com.example.Browser", "Browser", 2400 }, { "com.example.Mail", "Mail", 2400 } }));
    using Document = ActivitySummary::DocumentTotal;
    EXPECT_EQ(summary.documents,
        (std::vector<Document> {
            { "/notes.txt", "Notes", "Editor", 3600 }, { "https://a.example/", "A, renamed", "Browser", 2400 } }));
}

} // namespace
} // namespace vardel
