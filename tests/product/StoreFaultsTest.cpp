// What the store does when the disk, another program or a damaged file gets in its way: nothing
// recorded is lost, or the loss is bounded and said.

#include "product/ActivityWriter.h"
#include "product/DamagedStores.h"
#include "product/DatabaseBackups.h"
#include "product/DatabaseWrapper.h"
#include "support/RecordedActivities.h"
#include "support/ScriptedDesktopTest.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <charconv>
#include <fstream>
#include <sqlite3.h>

namespace vardel {
namespace {

using testing::Json;

using testing::at;
using testing::inApplication;

class StoreFaultsTest : public testing::ScriptedDesktopTest {
protected:
    void SetUp() override
    {
        ScriptedDesktopTest::SetUp();
        load(Json::object());
        DatabaseWrapper::sharedInstance().configure(folder_.path());
    }

    ActivityWriter& writer() { return *DatabaseWrapper::sharedInstance().activityWriter(); }
    Database& database() { return *DatabaseWrapper::sharedInstance().database(); }

    // Every second a different application, so that every sample ends a span.
    void switchEverySecond(double from, double to)
    {
        for (double second = from; second < to; ++second)
            writer().recordSample(at(second), 1, inApplication("App" + std::to_string(static_cast<int>(second))));
    }

    size_t storedSpanCount()
    {
        auto spans = database().activitySpansInRange(at(-86400), at(86400));
        EXPECT_TRUE(spans.ok());
        return spans.ok() ? spans.value().size() : 0;
    }

    std::vector<std::string> warnings()
    {
        std::vector<std::string> texts;
        for (const auto& event : events("log")) {
            if (event["level"] == "warning")
                texts.push_back(event["message"]);
        }
        return texts;
    }

    testing::TemporaryFolder folder_;
};

TEST_F(StoreFaultsTest, AFullStoreKeepsSpansInMemoryAndWritesThemWhenThereIsRoomAgain)
{
    switchEverySecond(0, 2);
    ASSERT_TRUE(writer().flush());
    // The store may not grow: what a full disk does to it.
    ASSERT_FALSE(database().connection().execute("PRAGMA max_page_count = 1"));
    switchEverySecond(2, 200);
    EXPECT_FALSE(writer().flush());
    EXPECT_FALSE(writer().flush());
    EXPECT_TRUE(writer().hasPendingSpans());
    EXPECT_EQ(warnings().size(), 1u) << "one warning for the whole time the store refuses";

    ASSERT_FALSE(database().connection().execute("PRAGMA max_page_count = 1073741823"));
    EXPECT_TRUE(writer().flush());
    EXPECT_FALSE(writer().hasPendingSpans());
    EXPECT_EQ(storedSpanCount(), 200u);
}

TEST_F(StoreFaultsTest, AWriteLockOfAnotherProgramIsWaitedOutAndNothingIsDropped)
{
    switchEverySecond(0, 30);
    ASSERT_TRUE(writer().flush());
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open((folder_.path() / Database::fileName).c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);

    switchEverySecond(30, 60);
    auto started = std::chrono::steady_clock::now();
    EXPECT_FALSE(writer().flush());
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(3)) << "the wait is bounded";

    ASSERT_EQ(sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(other);
    EXPECT_TRUE(writer().flush());
    EXPECT_EQ(storedSpanCount(), 60u);
}

TEST_F(StoreFaultsTest, SpansWaitingInMemoryAreBoundedAndTheLossIsSaid)
{
    constexpr size_t bound = 50;
    constexpr size_t samples = 400;
    ActivityWriter boundedWriter(database(), bound);
    ASSERT_FALSE(database().connection().execute("PRAGMA max_page_count = 1"));
    for (size_t second = 0; second < samples; ++second)
        boundedWriter.recordSample(at(static_cast<double>(second)), 1, inApplication("App" + std::to_string(second)));
    ASSERT_FALSE(database().connection().execute("PRAGMA max_page_count = 1073741823"));
    EXPECT_TRUE(boundedWriter.flush());

    // The last free room of the file took the first spans; beyond the bound the oldest went, and
    // exactly as many as the log says.
    size_t dropped = 0;
    for (const Json& event : events("log")) {
        std::string message = event["message"];
        if (auto end = message.find(" spans were dropped"); end != std::string::npos) {
            size_t start = message.rfind(' ', end - 1) + 1;
            std::from_chars(message.data() + start, message.data() + end, dropped);
        }
    }
    EXPECT_GT(dropped, 0u);
    EXPECT_EQ(storedSpanCount() + dropped, samples);
    EXPECT_LE(samples - storedSpanCount(), samples - bound);
}

TEST_F(StoreFaultsTest, ADeletedDataFolderIsMadeAgainAndRecordingGoesOn)
{
    RecordedActivity editor = inApplication("Editor");
    for (double second = 0; second < 40; ++second)
        writer().recordSample(at(second), 1, editor);
    ASSERT_TRUE(writer().flush());
    std::filesystem::remove_all(folder_.path());
    // A span still running through the removal is written whole again.
    for (double second = 40; second < 42; ++second)
        writer().recordSample(at(second), 1, editor);
    EXPECT_TRUE(writer().flush());
    EXPECT_EQ(storedSpanCount(), 1u);
    auto running = database().activitySpansInRange(at(-86400), at(86400));
    ASSERT_TRUE(running.ok() && !running.value().empty());
    EXPECT_EQ(running.value().front().start, at(0));

    switchEverySecond(42, 45);
    for (double second = 45; second < 50; ++second)
        writer().recordSample(at(second), 1, editor);
    EXPECT_TRUE(writer().flush());
    ASSERT_TRUE(std::filesystem::exists(folder_.path() / Database::fileName));
    // The running span from before and everything after it is there.
    EXPECT_EQ(storedSpanCount(), 5u);
    auto spans = database().activitySpansInRange(at(-86400), at(86400));
    ASSERT_TRUE(spans.ok());
    EXPECT_EQ(spans.value().front().start, at(0));
    EXPECT_EQ(spans.value().back().end, at(50));
    EXPECT_EQ(warnings().size(), 1u);
}

TEST_F(StoreFaultsTest, ADamagedStoreIsSetAsideAndRecordingGoesOnInAFreshOne)
{
    DatabaseWrapper::sharedInstance().configureUnavailable();
    std::filesystem::create_directories(folder_.path() / DatabaseBackups::folderName);
    std::filesystem::path backup = folder_.path() / DatabaseBackups::folderName / DatabaseBackups::fileName(at(-86400));
    std::ofstream(backup) << "yesterday";
    std::string damage(8192, '\x5a');
    std::ofstream(folder_.path() / Database::fileName) << damage;

    DatabaseWrapper::sharedInstance().configure(folder_.path());
    ASSERT_NE(DatabaseWrapper::sharedInstance().database(), nullptr);
    auto kept = DamagedStores::list(folder_.path());
    ASSERT_EQ(kept.size(), 1u);
    std::ifstream keptFile(kept[0]);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(keptFile), {}), damage) << "nothing of it is lost";
    ASSERT_EQ(warnings().size(), 1u);
    EXPECT_NE(warnings()[0].find(kept[0].string()), std::string::npos);
    EXPECT_NE(warnings()[0].find(backup.string()), std::string::npos);

    switchEverySecond(0, 3);
    EXPECT_TRUE(writer().flush());
    EXPECT_EQ(storedSpanCount(), 3u);
}

} // namespace
} // namespace vardel
