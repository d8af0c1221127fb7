#include "product/Database.h"

#include "platform/ValueJson.h"
#include "product/DatabaseWrapper.h"
#include "support/ScriptedDesktopTest.h"
#include "support/SqliteQuery.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace vardel {
namespace {

using testing::Json;
using testing::querySql;

Date at(const std::string& iso8601)
{
    return *ValueJson::parseIso8601(iso8601);
}

TaskActivityDescriptor entry(const std::string& title, const std::string& from, const std::string& to,
    std::optional<std::string> project = std::nullopt)
{
    return { at(from), at(to), title, std::move(project) };
}

std::string contents(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return { std::istreambuf_iterator<char>(stream), {} };
}

class DatabaseTest : public testing::ScriptedDesktopTest {
protected:
    void SetUp() override
    {
        ScriptedDesktopTest::SetUp();
        load(Json::object());
    }

    std::filesystem::path file() const { return folder_.path() / Database::fileName; }

    std::unique_ptr<Database> open()
    {
        auto opened = Database::open(folder_.path());
        if (!opened.ok())
            ADD_FAILURE() << opened.error();
        return opened.ok() ? std::move(opened).value() : nullptr;
    }

    static std::optional<TaskActivity> create(Database& database, const TaskActivityDescriptor& descriptor)
    {
        return database.mutateOrPresentError("DatabaseTest", __LINE__,
            [&](DatabaseTransaction& transaction) { return transaction.createTaskActivity(descriptor, true); });
    }

    std::vector<std::string> warnings() const
    {
        std::vector<std::string> messages;
        for (const Json& event : events("log")) {
            if (event["level"] == "warning")
                messages.push_back(event["message"]);
        }
        return messages;
    }

    testing::TemporaryFolder folder_;
};

TEST_F(DatabaseTest, EntriesSurviveReopeningAndAreTraced)
{
    auto database = open();
    auto standUp = create(*database, entry("Stand-up ☕", "2026-01-05T09:00:00Z", "2026-01-05T09:15:00Z", "Team"));
    auto review
        = create(*database, entry(std::string("Review\0draft", 12), "2026-01-05T10:00:00Z", "2026-01-05T10:01:00.5Z"));
    ASSERT_TRUE(standUp && review);
    EXPECT_EQ(standUp->createdAt, at("2026-01-05T09:00:00Z"));
    database.reset();

    auto reopened = open();
    auto stored = reopened->entriesInRange(at("2026-01-05T00:00:00Z"), at("2026-01-06T00:00:00Z"));
    ASSERT_TRUE(stored.ok());
    EXPECT_EQ(stored.value(), (std::vector<TaskActivity> { *standUp, *review }));

    auto traced = events("timeEntry");
    ASSERT_EQ(traced.size(), 2u);
    EXPECT_EQ(traced[0]["start"], "2026-01-05T09:00:00Z");
    EXPECT_EQ(traced[0]["end"], "2026-01-05T09:15:00Z");
    EXPECT_EQ(traced[0]["title"], "Stand-up ☕");
    EXPECT_EQ(traced[0]["project"], "Team");
    EXPECT_TRUE(traced[1]["project"].is_null());
}

TEST_F(DatabaseTest, NewFileUsesWriteAheadLogAndRecordsItsSchemaVersion)
{
    ASSERT_TRUE(open());
    EXPECT_EQ(querySql(file(), "PRAGMA journal_mode"), "wal");
    EXPECT_EQ(querySql(file(), "SELECT value FROM meta WHERE key = 'version'"), "3");
    EXPECT_EQ(querySql(file(), "SELECT value FROM meta WHERE key = 'last_compatible_version'"), "3");
}

TEST_F(DatabaseTest, UnversionedAndOlderFilesAreMigratedWithoutLosingTheirData)
{
    for (const char* older : { "CREATE TABLE notes (text TEXT); INSERT INTO notes VALUES ('keep me');",
             "CREATE TABLE notes (text TEXT); INSERT INTO notes VALUES ('keep me');"
             "CREATE TABLE meta (key TEXT PRIMARY KEY NOT NULL, value INTEGER NOT NULL);"
             "INSERT INTO meta VALUES ('version', 0), ('last_compatible_version', 0);" }) {
        std::filesystem::remove(file());
        querySql(file(), older);
        auto database = open();
        ASSERT_TRUE(database) << older;
        EXPECT_TRUE(create(*database, entry("Planning", "2026-01-05T09:00:00Z", "2026-01-05T10:00:00Z")));
        database.reset();
        EXPECT_EQ(querySql(file(), "SELECT value FROM meta WHERE key = 'version'"), "3");
        EXPECT_EQ(querySql(file(), "SELECT text FROM notes"), "keep me");
        EXPECT_EQ(querySql(file(), "SELECT count(*) FROM time_entries"), "1");
    }
}

TEST_F(DatabaseTest, NewerSchemaIsOpenedOnlyWhenItDeclaresItselfCompatible)
{
    querySql(file(),
        "CREATE TABLE meta (key TEXT PRIMARY KEY NOT NULL, value INTEGER NOT NULL);"
        "INSERT INTO meta VALUES ('version', 5), ('last_compatible_version', 4);");
    auto refused = Database::open(folder_.path());
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error().kind, DatabaseError::Kind::newerSchema);
    EXPECT_EQ(querySql(file(), "SELECT count(*) FROM sqlite_master WHERE name = 'time_entries'"), "0");

    querySql(file(), "UPDATE meta SET value = 1 WHERE key = 'last_compatible_version'");
    EXPECT_TRUE(Database::open(folder_.path()).ok());
    EXPECT_EQ(querySql(file(), "SELECT value FROM meta WHERE key = 'version'"), "5");
}

TEST_F(DatabaseTest, ShortEntriesAreRefusedBelowOneMinuteOnlyWhenPrevented)
{
    auto database = open();
    auto attempt = [&](const TaskActivityDescriptor& descriptor, bool preventTooShortDurations) {
        return database->mutateOrPresentError("DatabaseTest", __LINE__, [&](DatabaseTransaction& transaction) {
            return transaction.createTaskActivity(descriptor, preventTooShortDurations);
        });
    };
    EXPECT_FALSE(attempt(entry("Call", "2026-01-05T09:00:00Z", "2026-01-05T09:00:59.999Z"), true));
    EXPECT_TRUE(attempt(entry("Call", "2026-01-05T09:00:00Z", "2026-01-05T09:01:00Z"), true));
    EXPECT_TRUE(attempt(entry("Call", "2026-01-05T09:00:00Z", "2026-01-05T09:00:00Z"), false));
    EXPECT_FALSE(attempt(entry("Call", "2026-01-05T09:00:01Z", "2026-01-05T09:00:00Z"), false));

    auto messages = warnings();
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_NE(messages[0].find("shorter than the minimum of 60 seconds"), std::string::npos);
    EXPECT_NE(messages[1].find("ends before it starts"), std::string::npos);
    EXPECT_EQ(events("timeEntry").size(), 2u);

    // The preferences may lower the minimum.
    platform().productPreferences().setObject("TaskActivityDescriptor_minimumDuration", Value(5.0));
    ProcessWideState::resetAll();
    EXPECT_TRUE(attempt(entry("Call", "2026-01-05T10:00:00Z", "2026-01-05T10:00:05Z"), true));
    EXPECT_FALSE(attempt(entry("Call", "2026-01-05T10:00:00Z", "2026-01-05T10:00:04Z"), true));
}

TEST_F(DatabaseTest, FailedMutationRollsBackEveryChangeAndIsPresented)
{
    auto database = open();
    std::vector<DatabaseError> alerts;
    DatabaseErrorPresenter presenter;
    presenter.setAlert([&](const DatabaseError& error) { alerts.push_back(error); });
    database->setErrorPresenter(presenter);

    auto created = database->mutateOrPresentError("RunningCallDetector", 622, [&](DatabaseTransaction& transaction) {
        transaction.createTaskActivity(entry("Kept?", "2026-01-05T09:00:00Z", "2026-01-05T10:00:00Z"), true);
        return transaction.createTaskActivity(entry("Too short", "2026-01-05T11:00:00Z", "2026-01-05T11:00:30Z"), true);
    });

    EXPECT_FALSE(created);
    EXPECT_TRUE(database->entriesInRange(at("2026-01-05T00:00:00Z"), at("2026-01-06T00:00:00Z")).value().empty());
    EXPECT_TRUE(events("timeEntry").empty());
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(alerts[0].kind, DatabaseError::Kind::tooShort);
    ASSERT_EQ(warnings().size(), 1u);
    EXPECT_EQ(warnings()[0].rfind("[RunningCallDetector:622] ", 0), 0u);
}

TEST_F(DatabaseTest, CorruptFileIsReportedAsDamagedAndLeftAsItWas)
{
    const std::string garbage(4096, 'x');
    std::ofstream(file(), std::ios::binary) << garbage;
    auto opened = Database::open(folder_.path());
    ASSERT_FALSE(opened.ok());
    EXPECT_EQ(opened.error().kind, DatabaseError::Kind::damaged);
    EXPECT_NE(opened.error().message.find("cannot be opened"), std::string::npos);
    EXPECT_EQ(contents(file()), garbage);
}

TEST_F(DatabaseTest, FolderThatCannotHoldTheFileGivesAnError)
{
    // A file where the folder should be defeats even a process that may write anywhere.
    std::ofstream(folder_.path() / "occupied") << "not a folder";
    auto opened = Database::open(folder_.path() / "occupied");
    ASSERT_FALSE(opened.ok());
    EXPECT_EQ(opened.error().kind, DatabaseError::Kind::cannotOpen);
    EXPECT_NE(opened.error().message.find("occupied"), std::string::npos);
}

TEST_F(DatabaseTest, UnavailableOrUnconfiguredDatabaseIsAbsentWithoutComplaint)
{
    DatabaseWrapper& wrapper = DatabaseWrapper::sharedInstance();
    EXPECT_EQ(wrapper.database(), nullptr);
    wrapper.configure(folder_.path());
    EXPECT_NE(wrapper.database(), nullptr);
    wrapper.configureUnavailable();
    EXPECT_EQ(wrapper.database(), nullptr);
    EXPECT_TRUE(warnings().empty());
}

TEST_F(DatabaseTest, RangeHoldsEveryEntryThatOverlapsItEarliestFirst)
{
    auto database = open();
    auto lateCall = create(*database, entry("Late call", "2026-01-05T17:00:00Z", "2026-01-05T18:00:00Z"));
    auto overnight = create(*database, entry("Deploy", "2026-01-04T23:30:00Z", "2026-01-05T00:30:00Z"));
    create(*database, entry("Yesterday", "2026-01-04T10:00:00Z", "2026-01-05T00:00:00Z"));
    create(*database, entry("Tomorrow", "2026-01-06T00:00:00Z", "2026-01-06T01:00:00Z"));

    auto today = database->entriesInRange(at("2026-01-05T00:00:00Z"), at("2026-01-06T00:00:00Z"));
    ASSERT_TRUE(today.ok());
    EXPECT_EQ(today.value(), (std::vector<TaskActivity> { *overnight, *lateCall }));
}

} // namespace
} // namespace vardel
