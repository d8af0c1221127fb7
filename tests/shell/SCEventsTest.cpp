#include "shell/SCEvents.h"

#include "support/ScriptedDesktopTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <type_traits>

namespace vardel::testing {
namespace {

// No second watcher can exist: it is reached only through sharedPathWatcher().
static_assert(!std::is_default_constructible_v<SCEvents>);
static_assert(!std::is_copy_constructible_v<SCEvents> && !std::is_move_constructible_v<SCEvents>);

struct RecordingListener final : SCEventListenerProtocol {
    void pathWatcher(SCEvents&, const SCEvent& event) override { events.push_back(event); }
    std::vector<SCEvent> events;
};

class SCEventsTest : public ScriptedDesktopTest {
protected:
    // A desktop whose timeline reports each given batch at its own second, 1, 2, …
    void loadWithBatches(const std::vector<Json>& batches)
    {
        Json timeline = Json::array();
        for (size_t index = 0; index < batches.size(); ++index)
            timeline.push_back({ { "at", index + 1 }, { "fileEvent", batches[index] } });
        load({ { "end", 100 }, { "timeline", timeline } });
        watcher().setDelegate(&listener);
        watcher().setNotificationLatency(0);
    }

    // Serves the run loop in half-second steps, as the program's periodic timers keep it going.
    void runTo(double until)
    {
        for (double time = desktop().elapsedSeconds() + 0.5; time <= until; time += 0.5)
            desktop().runUntil(time);
    }

    void runToEnd() { runTo(50); }

    std::vector<std::string> reportedPaths() const
    {
        std::vector<std::string> paths;
        for (const auto& event : listener.events)
            paths.push_back(event.eventPath());
        return paths;
    }

    static SCEvents& watcher() { return SCEvents::sharedPathWatcher(); }

    RecordingListener listener;
};

Json fileEvent(const std::string& path, uint32_t flags = 0)
{
    return { { "path", path }, { "flags", flags } };
}

TEST_F(SCEventsTest, StartsOnceWithPathsAndStopsOnce)
{
    load(Json::object());
    SCEvents& events = watcher();
    EXPECT_FALSE(events.isWatchingPaths());
    EXPECT_EQ(events.notificationLatency(), 3.0);
    EXPECT_TRUE(events.ignoreEventsFromSubDirs());
    EXPECT_EQ(events.streamDescription(), "The event stream is not running. Start it by calling: startWatchingPaths:");

    EXPECT_FALSE(events.startWatchingPaths({}));
    EXPECT_FALSE(events.isWatchingPaths());
    EXPECT_TRUE(events.startWatchingPaths({ "/Apps/V.app/Contents/MacOS" }));
    EXPECT_FALSE(events.startWatchingPaths({ "/other" }));
    EXPECT_EQ(events.watchedPaths(), std::vector<std::string> { "/Apps/V.app/Contents/MacOS" });
    EXPECT_THAT(events.streamDescription(), ::testing::HasSubstr("/Apps/V.app/Contents/MacOS"));

    events.setExcludedPaths(std::vector<std::string> { "/x", "/y" });
    EXPECT_EQ(events.description(),
        R"(<SCEvents { watchedPaths = ("/Apps/V.app/Contents/MacOS"), excludedPaths = ("/x", "/y") } >)");
    EXPECT_TRUE(events.stopWatchingPaths());
    EXPECT_FALSE(events.stopWatchingPaths());
    events.setExcludedPaths(std::nullopt);
    EXPECT_THAT(events.description(), ::testing::HasSubstr("excludedPaths = (null)"));
}

TEST_F(SCEventsTest, ReportsEachEventWithoutOneTrailingSlashAndKeepsTheLastOfABatch)
{
    loadWithBatches({ { fileEvent("/w/a/", 1), fileEvent("/w/b//") }, { fileEvent("/w/c", 32) } });
    watcher().startWatchingPaths({ "/w" });
    runTo(1.5);
    ASSERT_EQ(listener.events.size(), 2u);
    EXPECT_EQ(listener.events[0], SCEvent(1, Date { 1767603600 + 1 }, "/w/a", 1));
    EXPECT_EQ(listener.events[1].eventPath(), "/w/b/");
    EXPECT_EQ(watcher().lastEvent(), listener.events[1]);

    runToEnd();
    EXPECT_EQ(reportedPaths(), (std::vector<std::string> { "/w/a", "/w/b/", "/w/c" }));
    EXPECT_EQ(listener.events[2].eventDate(), Date { 1767603600 + 2 });
    EXPECT_EQ(watcher().lastEvent()->description(), "<SCEvent { eventId = 3, eventPath = /w/c, eventFlag = 32 } >");
}

TEST_F(SCEventsTest, DropsExcludedPathsAndWithSubFoldersEverythingThatBeginsWithThem)
{
    Json batch = { fileEvent("/w/skip"), fileEvent("/w/skip/inner"), fileEvent("/w/skipped"), fileEvent("/w/keep") };
    loadWithBatches({ batch, batch, { fileEvent("/w/keep2"), fileEvent("/w/skip") } });
    watcher().setExcludedPaths(std::vector<std::string> { "/w/skip" });
    watcher().startWatchingPaths({ "/w" });

    runTo(1.5);
    EXPECT_EQ(reportedPaths(), (std::vector<std::string> { "/w/keep" }));

    watcher().setIgnoreEventsFromSubDirs(false);
    listener.events.clear();
    runToEnd();
    EXPECT_EQ(reportedPaths(), (std::vector<std::string> { "/w/skip/inner", "/w/skipped", "/w/keep", "/w/keep2" }));
    // The last event of the last batch was dropped, so the one before it stays the last.
    EXPECT_EQ(watcher().lastEvent()->eventPath(), "/w/keep");
}

TEST_F(SCEventsTest, FlushesDeliverPendingEventsBeforeTheLatency)
{
    loadWithBatches({ { fileEvent("/w/a") } });
    watcher().setNotificationLatency(30);
    watcher().startWatchingPaths({ "/w" });
    desktop().runUntil(1);
    watcher().flushEventStreamSync();
    EXPECT_EQ(reportedPaths(), std::vector<std::string> { "/w/a" });

    watcher().stopWatchingPaths();
    watcher().flushEventStreamAsync();
    runToEnd();
    EXPECT_EQ(listener.events.size(), 1u);
}

TEST_F(SCEventsTest, ADelegateMayStopTheWatcherWhileItIsCalled)
{
    struct StoppingListener final : SCEventListenerProtocol {
        void pathWatcher(SCEvents& watcher, const SCEvent&) override
        {
            ++calls;
            watcher.stopWatchingPaths();
        }
        int calls = 0;
    } stopping;
    loadWithBatches({ { fileEvent("/w/a"), fileEvent("/w/b") }, { fileEvent("/w/c") } });
    watcher().setDelegate(&stopping);
    watcher().startWatchingPaths({ "/w" });
    runToEnd();
    // The batch under way is reported to its end; nothing comes after.
    EXPECT_EQ(stopping.calls, 2);
    EXPECT_FALSE(watcher().isWatchingPaths());
}

} // namespace
} // namespace vardel::testing
