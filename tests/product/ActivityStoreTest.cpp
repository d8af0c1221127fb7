#include "platform/ValueJson.h"
#include "product/ActivitySpanTable.h"
#include "product/ActivityWriter.h"
#include "product/DatabaseBackups.h"
#include "product/DatabaseWrapper.h"
#include "product/InfoLogger.h"
#include "product/IntegrationsUpdater.h"
#include "support/RecordedActivities.h"
#include "support/ScriptedDesktopTest.h"
#include "support/SqliteQuery.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vardel {
namespace {

using testing::Json;
using testing::querySql;

using testing::at;
using testing::inApplication;
using testing::nine;

ActivitySpan span(double from, double to, RecordedActivity activity)
{
    return { std::nullopt, at(from), at(to), std::move(activity) };
}

// The spans as another process reading the file sees them, ids left out.
std::vector<ActivitySpan> storedSpans(const std::filesystem::path& folder)
{
    auto database = Database::open(folder);
    EXPECT_TRUE(database.ok());
    auto spans = std::move(database).value()->activitySpansInRange(at(-86400), at(86400));
    EXPECT_TRUE(spans.ok());
    std::vector<ActivitySpan> stored = spans.value();
    for (ActivitySpan& each : stored)
        each.id.reset();
    return stored;
}

// Always the same frontmost application.
class FixedExtractor final : public InfoLoggerExtractor {
public:
    std::optional<VDActivity> getCurrentActivity() override
    {
        return VDActivity({ 501, "com.example.Editor", "Editor", std::nullopt, std::nullopt }, {});
    }
    void callInfoExtractorFor(VDActivity&) override { }
    const std::set<std::string, std::less<>>& noAccessibilityApplicationBundleIdentifiers() override { return none_; }

private:
    std::set<std::string, std::less<>> none_;
};

class ActivityStoreTest : public testing::ScriptedDesktopTest {
protected:
    void SetUp() override
    {
        ScriptedDesktopTest::SetUp();
        load(Json::object());
        DatabaseWrapper::sharedInstance().configure(folder_.path());
    }

    ActivityWriter& writer() { return *DatabaseWrapper::sharedInstance().activityWriter(); }

    // One sample a second over [from, to).
    void sampleEverySecond(double from, double to, const std::optional<RecordedActivity>& activity)
    {
        for (double second = from; second < to; ++second)
            writer().recordSample(at(second), 1, activity);
    }

    std::filesystem::path databaseFile() const { return folder_.path() / Database::fileName; }

    testing::TemporaryFolder folder_;
};

TEST_F(ActivityStoreTest, ConsecutiveSamplesWithTheSameRecordMakeOneSpan)
{
    RecordedActivity editor = inApplication("Editor", "notes.txt");
    RecordedActivity browser = inApplication("Browser", "News");
    RecordedActivity fullScreenBrowser = browser;
    fullScreenBrowser.isFullscreen = true;

    sampleEverySecond(0, 5, editor);
    sampleEverySecond(5, 7, browser);
    sampleEverySecond(7, 8, fullScreenBrowser);
    sampleEverySecond(8, 10, std::nullopt);
    sampleEverySecond(10, 12, editor);
    // An application that kept the sample waiting still counts until the next sample.
    writer().recordSample(at(18), 1, editor);
    // After the computer slept, the same record starts a new span.
    writer().recordSample(at(18 + 1 + ActivityWriter::longestSampleGapSeconds + 1), 1, editor);
    ASSERT_TRUE(writer().flush());

    EXPECT_EQ(storedSpans(folder_.path()),
        (std::vector<ActivitySpan> { span(0, 5, editor), span(5, 7, browser), span(7, 8, fullScreenBrowser),
            span(10, 19, editor), span(80, 81, editor) }));
}

// Window titles and the places taken from them come from other programs, which may put anything in them.
TEST_F(ActivityStoreTest, TextsThatAreNotUtf8AreStoredAsTheyCame)
{
    RecordedActivity chat = inApplication("Chat", "General \xff\xfe");
    chat.contextPath = std::vector<std::string> { "Team \xc3", "General" };
    sampleEverySecond(0, 3, chat);
    ASSERT_TRUE(writer().flush());

    auto stored = storedSpans(folder_.path());
    ASSERT_EQ(stored.size(), 1u);
    EXPECT_EQ(stored[0].activity.windowTitle, "General \xff\xfe");
    EXPECT_EQ(stored[0].activity.contextPath, (std::vector<std::string> { "Team \uFFFD", "General" }));
}

TEST_F(ActivityStoreTest, RunningSpanIsWrittenEveryThirtySecondsAndGrowsInPlace)
{
    RecordedActivity editor = inApplication("Editor");
    sampleEverySecond(0, ActivityWriter::flushIntervalSeconds, editor);
    EXPECT_TRUE(storedSpans(folder_.path()).empty());
    EXPECT_TRUE(writer().hasPendingSpans());

    sampleEverySecond(30, 31, editor);
    EXPECT_EQ(storedSpans(folder_.path()), (std::vector<ActivitySpan> { span(0, 31, editor) }));
    EXPECT_FALSE(writer().hasPendingSpans());

    sampleEverySecond(31, 61, editor);
    EXPECT_EQ(storedSpans(folder_.path()), (std::vector<ActivitySpan> { span(0, 61, editor) }));
    EXPECT_EQ(querySql(databaseFile(), "SELECT count(*) FROM activity_spans"), "1");
}

TEST_F(ActivityStoreTest, AKillBetweenWritesLosesOnlyWhatCameAfterTheLastWrite)
{
    RecordedActivity editor = inApplication("Editor");
    RecordedActivity browser = inApplication("Browser");
    // SIGKILL in a child process: no destructor, no flush, no checkpoint of the write-ahead log.
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        sampleEverySecond(0, 20, editor);
        sampleEverySecond(20, 44, browser);
        raise(SIGKILL);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));

    EXPECT_EQ(storedSpans(folder_.path()), (std::vector<ActivitySpan> { span(0, 20, editor), span(20, 31, browser) }));
}

TEST_F(ActivityStoreTest, ShutdownWritesEverythingAndReportsThatNothingIsLeft)
{
    FixedExtractor extractor;
    InfoLogger logger;
    logger.setInfoExtractor(&extractor);
    logger.setShouldTrack(true);
    int finished = 0;
    logger.setFlushAndSyncFinishedHandler([&] { ++finished; });
    logger.sample();
    desktop().runUntil(5);
    logger.sample();

    EXPECT_FALSE(logger.prepareForShutdownWithIsRelaunch(false));
    EXPECT_EQ(finished, 1);
    auto stored = storedSpans(folder_.path());
    ASSERT_EQ(stored.size(), 1u);
    EXPECT_EQ(stored[0].start, at(0));
    EXPECT_EQ(stored[0].end, at(6));
    EXPECT_EQ(stored[0].activity.bundleIdentifier, "com.example.Editor");
}

TEST_F(ActivityStoreTest, ALoggerThatNeverSampledLeavesTheStoreUnopened)
{
    InfoLogger logger;
    EXPECT_FALSE(logger.prepareForShutdownWithIsRelaunch(true));
    logger.statusItemClicked();
    DatabaseWrapper::sharedInstance().configure(folder_.path());
    EXPECT_FALSE(std::filesystem::exists(databaseFile()));
}

TEST_F(ActivityStoreTest, PrivateWindowsKeepTheirApplicationButNotWhatTheyShowed)
{
    RunningApplication firefox { 7, "org.mozilla.firefox", "Firefox", std::nullopt, std::nullopt };
    VDActivity activity(firefox,
        VDActivityDetails { "Secret – Private Browsing", "https://secret.example/", "Secret",
            std::vector<std::string> { "Work" }, true });
    RecordedActivity recorded = RecordedActivity::from(activity);
    EXPECT_EQ(recorded.applicationName, "Firefox");
    EXPECT_EQ(recorded.windowTitle, std::nullopt);
    EXPECT_EQ(recorded.documentPath, std::nullopt);
    EXPECT_EQ(recorded.documentTitle, std::nullopt);
    EXPECT_TRUE(recorded.isPrivate);

    activity.details.isPrivate = false;
    EXPECT_EQ(RecordedActivity::from(activity).documentPath, "https://secret.example/");
}

TEST_F(ActivityStoreTest, AVersionOneFileGainsTheSpansAndKeepsItsEntries)
{
    DatabaseWrapper::sharedInstance().configureUnavailable();
    querySql(databaseFile(),
        "CREATE TABLE meta (key TEXT PRIMARY KEY NOT NULL, value INTEGER NOT NULL);"
        "INSERT INTO meta VALUES ('version', 1), ('last_compatible_version', 1);"
        "CREATE TABLE time_entries (id INTEGER PRIMARY KEY, started_at REAL NOT NULL, ended_at REAL NOT NULL,"
        " title TEXT NOT NULL, project TEXT, created_at REAL NOT NULL, CHECK (ended_at >= started_at));"
        "INSERT INTO time_entries VALUES (1, 1767603600, 1767607200, 'Planning', NULL, 1767607200);");

    DatabaseWrapper::sharedInstance().configure(folder_.path());
    sampleEverySecond(0, 3, inApplication("Editor"));
    ASSERT_TRUE(writer().flush());

    EXPECT_EQ(querySql(databaseFile(), "SELECT value FROM meta WHERE key = 'version'"), "3");
    EXPECT_EQ(querySql(databaseFile(), "SELECT title FROM time_entries"), "Planning");
    EXPECT_EQ(querySql(databaseFile(), "SELECT count(*) FROM activity_spans"), "1");
    EXPECT_EQ(querySql(databaseFile(), "SELECT count(*) FROM integrations"), "0");
}

TEST_F(ActivityStoreTest, TotalCountsOnlyThePartsOfSpansInsideTheRange)
{
    std::vector<ActivitySpan> spans = { span(-100, 50, inApplication("Editor")), span(60, 100, inApplication("Mail")),
        span(200, 300, inApplication("Editor")) };
    ASSERT_FALSE(DatabaseWrapper::sharedInstance().database()->saveActivitySpans(spans));
    EXPECT_TRUE(spans[0].id && spans[1].id && spans[2].id);

    auto total = DatabaseWrapper::sharedInstance().database()->totalActivitySecondsBetween(at(0), at(250));
    ASSERT_TRUE(total.ok());
    EXPECT_DOUBLE_EQ(total.value(), 50 + 40 + 50);
}

TEST_F(ActivityStoreTest, ARangeIsReadThroughTheStartIndexBoundedOnBothSides)
{
    std::vector<ActivitySpan> spans = { span(0, 10, inApplication("Editor")) };
    ASSERT_FALSE(DatabaseWrapper::sharedInstance().database()->saveActivitySpans(spans));

    sqlite3* connection = nullptr;
    ASSERT_EQ(sqlite3_open(databaseFile().c_str(), &connection), SQLITE_OK);
    std::string plan;
    std::string explain
        = std::string("EXPLAIN QUERY PLAN SELECT id FROM activity_spans WHERE ") + ActivitySpanTable::overlapsRange;
    sqlite3_exec(
        connection, explain.c_str(),
        [](void* into, int, char** values, char**) {
            *static_cast<std::string*>(into) += std::string(values[3]) + "\n";
            return 0;
        },
        &plan, nullptr);
    sqlite3_close(connection);
    EXPECT_NE(plan.find("SEARCH activity_spans USING INDEX activity_spans_by_start (started_at>? AND started_at<?)"),
        std::string::npos)
        << plan;
}

TEST_F(ActivityStoreTest, ASpanLongerThanTheRangeStartingDaysBeforeItIsStillFound)
{
    std::vector<ActivitySpan> spans = { span(-3 * 86400, -3 * 86400 + 60, inApplication("Mail")),
        span(-2 * 86400, 86400, inApplication("Editor")), span(3600, 3660, inApplication("Mail")) };
    ASSERT_FALSE(DatabaseWrapper::sharedInstance().database()->saveActivitySpans(spans));
    EXPECT_EQ(querySql(databaseFile(), "SELECT value FROM meta WHERE key = 'longest_span_seconds'"), "259200");

    auto found = DatabaseWrapper::sharedInstance().database()->activitySpansInRange(at(0), at(7200));
    ASSERT_TRUE(found.ok());
    ASSERT_EQ(found.value().size(), 2u);
    EXPECT_EQ(found.value()[0].start, at(-2 * 86400));
    EXPECT_EQ(found.value()[1].start, at(3600));
    auto total = DatabaseWrapper::sharedInstance().database()->totalActivitySecondsBetween(at(0), at(7200));
    ASSERT_TRUE(total.ok());
    EXPECT_DOUBLE_EQ(total.value(), 7200 + 60);
}

TEST_F(ActivityStoreTest, AVersionTwoFileLearnsItsLongestSpan)
{
    DatabaseWrapper::sharedInstance().configureUnavailable();
    std::filesystem::remove(databaseFile());
    querySql(databaseFile(),
        "CREATE TABLE meta (key TEXT PRIMARY KEY NOT NULL, value INTEGER NOT NULL);"
        "INSERT INTO meta VALUES ('version', 2), ('last_compatible_version', 2);"
        "CREATE TABLE activity_spans (id INTEGER PRIMARY KEY, started_at REAL NOT NULL, ended_at REAL NOT NULL,"
        " bundle_identifier TEXT, application_name TEXT, window_title TEXT, document_path TEXT,"
        " document_title TEXT, context_path TEXT, is_private INTEGER NOT NULL DEFAULT 0,"
        " is_fullscreen INTEGER NOT NULL DEFAULT 0, CHECK (ended_at >= started_at));"
        "CREATE INDEX activity_spans_by_end ON activity_spans (ended_at);"
        "INSERT INTO activity_spans (started_at, ended_at, application_name) VALUES (1767430800.5, 1767607200, "
        "'Editor');");

    ASSERT_EQ(storedSpans(folder_.path()).size(), 1u);
    EXPECT_EQ(querySql(databaseFile(), "SELECT value FROM meta WHERE key = 'longest_span_seconds'"), "176400");
    EXPECT_EQ(querySql(databaseFile(), "SELECT value FROM meta WHERE key = 'version'"), "3");
}

TEST_F(ActivityStoreTest, BackupsAreWholeDatabasesAndOnlyTheNewestSevenStay)
{
    sampleEverySecond(0, 3, inApplication("Editor"));
    std::filesystem::path backups = folder_.path() / DatabaseBackups::folderName;
    std::filesystem::create_directories(backups);
    std::ofstream(backups / "notes.txt") << "not a backup";
    for (int day = 0; day < 9; ++day) {
        desktop().runUntil(day * 86400.0);
        DatabaseWrapper::sharedInstance().createAutomaticBackup();
    }

    auto kept = DatabaseBackups::list(backups);
    ASSERT_EQ(kept.size(), DatabaseBackups::keptBackups);
    EXPECT_EQ(kept.front().filename(), "vardel-20260107T090000Z.sqlite3");
    EXPECT_EQ(kept.back().filename(), "vardel-20260113T090000Z.sqlite3");
    EXPECT_TRUE(std::filesystem::exists(backups / "notes.txt"));
    // The backup holds what the writer had not yet written when it was taken.
    EXPECT_EQ(querySql(kept.front(), "SELECT ended_at - started_at FROM activity_spans"), "3.0");
    EXPECT_EQ(querySql(kept.front(), "SELECT value FROM meta WHERE key = 'version'"), "3");
}

TEST_F(ActivityStoreTest, SyncRefreshesTheIntegrationsAndReportsUpToDate)
{
    DatabaseWrapper& wrapper = DatabaseWrapper::sharedInstance();
    wrapper.setupPostSyncUpdater();
    querySql(databaseFile(),
        "INSERT INTO integrations (identifier, name) VALUES ('calendar', 'Calendar'), "
        "('issues', 'Issue tracker')");
    std::vector<std::optional<std::string>> titles;
    wrapper.syncManager().setStatusTitleHandler([&](const auto& title) { titles.push_back(title); });

    desktop().runUntil(10);
    wrapper.syncManager().dispatchSyncRequestWithDelay(0.1);
    EXPECT_EQ(wrapper.syncManager().statusTitle(), std::nullopt);
    desktop().runUntil(11);

    EXPECT_EQ(titles, (std::vector<std::optional<std::string>> { "Up to date" }));
    std::string stampedAt = std::to_string(static_cast<int64_t>(nine + 10));
    EXPECT_EQ(querySql(databaseFile(), "SELECT count(*) FROM integrations WHERE refreshed_at >= " + stampedAt), "2");
}

TEST_F(ActivityStoreTest, PostSyncUpdaterPassesAFailureOnUnchanged)
{
    DatabaseWrapper& wrapper = DatabaseWrapper::sharedInstance();
    IntegrationsUpdater updater(VardelIntegrationsDatabaseAdapter(*wrapper.database()));
    std::optional<IntegrationsUpdater::Result> outcome;
    updater.updateIntegrations(std::vector<std::string> { "missing" }, [&](auto result) { outcome = result; });
    ASSERT_TRUE(outcome && !outcome->ok());
    EXPECT_EQ(outcome->error().kind, DatabaseError::Kind::notFound);

    wrapper.setupPostSyncUpdater();
    std::optional<PostSyncUpdater::Result> forwarded;
    wrapper.activityWriter()->postSyncUpdater()->updateAfterSync([&](auto result) { forwarded = result; });
    ASSERT_TRUE(forwarded && forwarded->ok());
    EXPECT_EQ(forwarded->value(), 0);
}

TEST_F(ActivityStoreTest, WithoutADatabaseSyncAndBackupDoNothing)
{
    DatabaseWrapper& wrapper = DatabaseWrapper::sharedInstance();
    wrapper.configureUnavailable();
    wrapper.setupPostSyncUpdater();
    wrapper.createAutomaticBackup();
    wrapper.syncManager().dispatchSyncRequestWithDelay(0);
    desktop().runUntil(1);
    EXPECT_EQ(wrapper.syncManager().statusTitle(), std::nullopt);
    EXPECT_EQ(wrapper.activityWriter(), nullptr);
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

} // namespace
} // namespace vardel
