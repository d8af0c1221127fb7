#include "shell/VDHelperAppDelegate.h"

#include "platform/scripted/ScriptedGlobalShortcuts.h"
#include "platform/scripted/ScriptedStatusBar.h"
#include "product/DatabaseWrapper.h"
#include "shell/RandomFraction.h"
#include "support/ScriptedDesktopTest.h"
#include "support/TemporaryFolder.h"

#include <filesystem>

namespace vardel {
namespace {

using namespace vardel::testing;

constexpr const char* quitAction = "askToQuit:";

class VDHelperAppDelegateTest : public ScriptedDesktopTest {
protected:
    void TearDown() override
    {
        delegate_.reset();
        ScriptedDesktopTest::TearDown();
    }

    VDHelperAppDelegate& start(Json scenario, std::vector<std::string> arguments = { "vardel-tracker" })
    {
        DatabaseWrapper::sharedInstance().configureUnavailable();
        load(scenario);
        delegate_ = std::make_unique<VDHelperAppDelegate>(infoLogger_);
        delegate_->awakeFromNib(arguments);
        return *delegate_;
    }

    // The entries of the last menu that opened, by action (the first with a tag when given).
    Json menuEntry(const std::string& action, int64_t tag = 0)
    {
        auto menus = events("menu");
        if (menus.empty())
            throw std::runtime_error("the menu never opened");
        for (const auto& item : menus.back()["items"]) {
            if (item["action"] == action && (tag == 0 || item["tag"] == tag))
                return item;
        }
        throw std::runtime_error("no entry " + action);
    }

    std::vector<bool> pausedSamples()
    {
        std::vector<bool> paused;
        for (const auto& sample : events("sample"))
            paused.push_back(sample["paused"]);
        return paused;
    }

    InfoLogger infoLogger_;
    std::unique_ptr<VDHelperAppDelegate> delegate_;
};

Json menuStep(double at, Json menu)
{
    return { { "at", at }, { "menu", std::move(menu) } };
}

Json choose(const std::string& action, int64_t tag = 0)
{
    Json choice = { { "choose", action } };
    if (tag)
        choice["tag"] = tag;
    return choice;
}

TEST_F(VDHelperAppDelegateTest, ARecentCrashEndsTheRecoveryStartAfterItsWait)
{
    start({ { "start", "2026-01-05T09:00:00Z" },
              { "defaults", { { "_currentDate", { { "date", "2026-01-05T08:50:00Z" } } } } } },
        { "vardel-tracker", "--fromCrashRecovery" });
    desktop().runUntil(100);
    EXPECT_EQ(desktop().stopReason(), "crashRecovery");
    EXPECT_DOUBLE_EQ(desktop().elapsedSeconds(), 100);
    auto analytics = events("analytics");
    ASSERT_EQ(analytics.size(), 1u);
    EXPECT_EQ(analytics[0]["name"], "VDHelperAppDelegate.awakeFromNib.fromCrashRecovery");
    EXPECT_EQ(analytics[0]["attributes"]["successful"], 0);
    EXPECT_EQ(analytics[0]["critical"], true);
    EXPECT_EQ(analytics[0]["t"], 0);
    EXPECT_TRUE(events("sample").empty());
}

TEST_F(VDHelperAppDelegateTest, AnOldOrMissingCrashDateStartsNormallyAfterTheWait)
{
    for (Json lastDate : { Json { { "date", "2026-01-03T09:00:00Z" } }, Json("not a date"), Json(nullptr) }) {
        start({ { "defaults", { { "_currentDate", lastDate } } }, { "end", 60 } },
            { "vardel-tracker", "--fromCrashRecovery" });
        desktop().runUntil(55);
        EXPECT_EQ(desktop().stopReason(), "") << lastDate;
        EXPECT_EQ(events("analytics").at(0)["attributes"]["successful"], 1) << lastDate;
        ASSERT_FALSE(events("sample").empty()) << lastDate;
        EXPECT_EQ(events("sample").front()["t"], 50) << lastDate;
        delegate_.reset();
    }
}

TEST_F(VDHelperAppDelegateTest, TheLaunchAtLoginPromptRegistersAndRemembersTheSuppression)
{
    start({ { "preferences", { { "onboardingHasCompleted", true } } },
        { "alertAnswers", { { { "message", "launch automatically" }, { "button", 1 }, { "suppression", true } } } } });
    auto alerts = events("alert");
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(alerts[0]["buttons"], Json({ "Launch at Login", "Don't start automatically" }));
    EXPECT_EQ(alerts[0]["suppression"], false);
    EXPECT_EQ(platform().productPreferences().getBool("shouldStartAtLogin"), true);
    EXPECT_EQ(platform().standardUserDefaults().getBool("dontAskToLaunchAtLogin"), true);
}

TEST_F(VDHelperAppDelegateTest, PromptsAreSkippedBeforeOnboardingOrOnceSuppressed)
{
    start({ { "accessibilityTrusted", false } });
    EXPECT_TRUE(events("alert").empty());

    start({ { "accessibilityTrusted", false }, { "preferences", { { "onboardingHasCompleted", true } } },
        { "defaults", { { "dontAskToLaunchAtLogin", true }, { "dontNotifyAboutDisabledAccessibilityAPI", true } } } });
    EXPECT_TRUE(events("alert").empty());
}

TEST_F(VDHelperAppDelegateTest, TheAccessibilityPromptOpensTheSettingsOnlyForItsFirstButton)
{
    start({ { "accessibilityTrusted", false },
        { "preferences", { { "onboardingHasCompleted", true }, { "shouldStartAtLogin", true } } } });
    auto alerts = events("alert");
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(
        alerts[0]["message"], "To track your work, Vardel needs permission to use your Mac’s Accessibility features.");
    EXPECT_EQ(events("open").size(), 1u);

    start({ { "accessibilityTrusted", false },
        { "preferences", { { "onboardingHasCompleted", true }, { "shouldStartAtLogin", true } } },
        { "alertAnswers", { { { "message", "Accessibility" }, { "button", 2 } } } } });
    EXPECT_TRUE(events("open").empty());
    EXPECT_EQ(platform().standardUserDefaults().object("dontNotifyAboutDisabledAccessibilityAPI"), std::nullopt);
}

TEST_F(VDHelperAppDelegateTest, TheMenuShowsTheEntriesAsTheStateIs)
{
    start({ { "preferences", { { "startTaskShortcut", { { "key", "t" }, { "modifierFlags", 1572864 } } } } },
        { "timeline", { menuStep(2, "open") } }, { "end", 3 } });
    desktop().runUntil(3);
    Json startEntry = menuEntry("startTask:");
    EXPECT_EQ(startEntry["title"], "Start Timer…");
    EXPECT_EQ(startEntry["keyEquivalent"], "t");
    EXPECT_EQ(startEntry["keyEquivalentModifierMask"], 1572864);
    EXPECT_EQ(menuEntry("stopTask:")["hidden"], true);
    EXPECT_EQ(menuEntry("toggleTracking:")["title"], "Pause until Tomorrow");
    EXPECT_EQ(menuEntry("syncStatus:")["hidden"], true);
    EXPECT_EQ(menuEntry("totalTimeSpentToday:")["enabled"], false);
    EXPECT_EQ(menuEntry("toggleAskAfterIdle:")["enabled"], false);
    EXPECT_EQ(menuEntry("pauseTrackingFor:", 3600)["title"], "1 Hour");
    EXPECT_EQ(events("analytics").back()["name"], "Setapp.Interaction.menuWillOpen");
}

TEST_F(VDHelperAppDelegateTest, ARunningTaskSwitchesTheTaskEntries)
{
    start({ { "runningTask", { { "title", "Review" }, { "since", 0 } } },
        { "preferences", { { "startTaskShortcut", { { "key", "t" }, { "modifierFlags", 1048576 } } } } },
        { "timeline", { menuStep(1500, "open") } }, { "end", 1501 } });
    desktop().runUntil(1501);
    EXPECT_EQ(menuEntry("startTask:")["title"], "Switch Timer…");
    EXPECT_EQ(menuEntry("startTask:")["keyEquivalent"], "");
    EXPECT_EQ(menuEntry("stopTask:")["hidden"], false);
    EXPECT_EQ(menuEntry("stopTask:")["keyEquivalent"], "t");
    EXPECT_EQ(menuEntry("showCurrentTaskInfo:")["title"], "Review (25m)");
    EXPECT_EQ(menuEntry("editRunningOrLatestTask:")["title"], "Edit Running Timer…");
}

TEST_F(VDHelperAppDelegateTest, APauseFromTheSubmenuEndsByItselfAndShowsTheTimeLeft)
{
    start({ { "timeline", { menuStep(10, choose("pauseTrackingFor:", 300)), menuStep(70, "open") } }, { "end", 400 } });
    desktop().runUntil(400);
    EXPECT_EQ(menuEntry("pauseTrackingForContainer:")["title"], "Paused for the next 4m");
    EXPECT_EQ(menuEntry("toggleTracking:")["title"], "Resume App Tracking");
    auto paused = pausedSamples();
    EXPECT_FALSE(paused.at(10));
    EXPECT_TRUE(paused.at(11));
    EXPECT_TRUE(paused.at(309));
    EXPECT_FALSE(paused.at(311));
    auto statusItems = events("statusItem");
    ASSERT_GE(statusItems.size(), 3u);
    EXPECT_EQ(statusItems[statusItems.size() - 2]["appearsDisabled"], true);
    EXPECT_EQ(statusItems.back()["appearsDisabled"], false);
}

TEST_F(VDHelperAppDelegateTest, ResumingByHandCancelsThePauseUntilTomorrow)
{
    start({ { "start", "2026-01-05T22:00:00Z" },
        { "timeline",
            { menuStep(5, choose("toggleTracking:")), menuStep(20, choose("toggleTracking:")), menuStep(30, "open") } },
        { "end", 31 } });
    desktop().runUntil(31);
    EXPECT_EQ(menuEntry("pauseTrackingForContainer:")["title"], "Pause App Tracking for…");
    EXPECT_EQ(menuEntry("toggleTracking:")["title"], "Pause until Tomorrow");
    auto paused = pausedSamples();
    EXPECT_TRUE(paused.at(10));
    EXPECT_FALSE(paused.at(25));
}

TEST_F(VDHelperAppDelegateTest, TheOptionKeyOpensTheMainApplication)
{
    Json mainApplication = application(900, "info.quenby.Vardel2");
    mainApplication["bundlePath"] = "/Applications/Vardel.app";
    mainApplication["running"] = false;
    start({ { "applications", { mainApplication } },
        { "timeline", { { { "at", 2 }, { "keys", { { "option", true } } }, { "menu", "open" } } } }, { "end", 3 } });
    desktop().runUntil(3);
    auto opened = events("open");
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(opened[0]["target"], "/Applications/Vardel.app");
}

TEST_F(VDHelperAppDelegateTest, ScriptingCommandsPauseAndResume)
{
    start({ { "timeline",
                { { { "at", 5 }, { "script", { { "command", "pause" }, { "fors", 20 } } } },
                    { { "at", 40 }, { "script", { { "command", "pause" } } } },
                    { { "at", 100 }, { "script", { { "command", "resume" } } } } } },
        { "end", 110 } });
    desktop().runUntil(110);
    auto paused = pausedSamples();
    EXPECT_TRUE(paused.at(10));
    EXPECT_FALSE(paused.at(30));
    EXPECT_TRUE(paused.at(90));
    EXPECT_FALSE(paused.at(105));
}

TEST_F(VDHelperAppDelegateTest, APauseBetweenTwoSamplesHoldsForTheNextOne)
{
    start({ { "timeline", { { { "at", 20.5 }, { "script", { { "command", "pause" } } } } } }, { "end", 25 } });
    desktop().runUntil(25);
    auto paused = pausedSamples();
    EXPECT_FALSE(paused.at(20));
    EXPECT_TRUE(paused.at(21));
}

TEST_F(VDHelperAppDelegateTest, TheFirstQuitAsksAndKeepingOnRemembersNotToAskAgain)
{
    start({ { "alertAnswers", { { { "message", "quit" }, { "button", 1 } } } },
        { "timeline", { menuStep(5, choose(quitAction)), menuStep(10, choose(quitAction)) } }, { "end", 20 } });
    desktop().runUntil(6);
    auto alerts = events("alert");
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(alerts[0]["suppression"], true);
    EXPECT_EQ(desktop().stopReason(), "");
    EXPECT_EQ(platform().standardUserDefaults().getBool("shouldQuitHelperFromMenuItem"), true);

    desktop().runUntil(11);
    EXPECT_EQ(events("alert").size(), 1u);
    EXPECT_EQ(desktop().stopReason(), "quit");
    EXPECT_EQ(events("analytics").back()["name"], "VDHelperAppDelegate.quitManually");
}

TEST_F(VDHelperAppDelegateTest, QuittingWithTheBoxUntickedLeavesThePreferenceUnset)
{
    start({ { "alertAnswers", { { { "message", "quit" }, { "button", 2 }, { "suppression", false } } } },
        { "timeline", { menuStep(5, choose(quitAction)) } }, { "end", 20 } });
    desktop().runUntil(6);
    EXPECT_EQ(desktop().stopReason(), "quit");
    EXPECT_EQ(platform().standardUserDefaults().object("shouldQuitHelperFromMenuItem"), std::nullopt);
}

TEST_F(VDHelperAppDelegateTest, OnlyTheFiveLatestManualQuitsAreKept)
{
    start({ { "start", "2026-01-05T09:00:00Z" } });
    for (int quit = 0; quit < 6; ++quit) {
        desktop().runUntil(quit * 10);
        delegate_->logQuitEvent();
    }
    auto quits = platform().standardUserDefaults().object("VDHelperAppDelegate_lastManualQuits");
    ASSERT_TRUE(quits && quits->asList());
    ASSERT_EQ(quits->asList()->size(), 5u);
    EXPECT_EQ(quits->asList()->front().asDate(), (Date { Date { 1767603600 }.secondsSince1970 + 50 }));
    EXPECT_EQ(quits->asList()->back().asDate(), (Date { Date { 1767603600 }.secondsSince1970 + 10 }));
}

TEST_F(VDHelperAppDelegateTest, AppearanceChangesArePassedOnAtMostEveryTenSeconds)
{
    start({ { "preferences", { { "statusItemVisible", true } } } });
    int updates = 0;
    // Counting the properties updates through visibility flips, which each one applies.
    auto changeAt = [&](double at) {
        desktop().runUntil(at);
        platform().productPreferences().setObject("statusItemVisible", Value(updates % 2 == 0 ? false : true));
        size_t before = events("statusItem").size();
        dynamic_cast<scripted::ScriptedStatusBar&>(platform().statusBar()).changeAppearance();
        desktop().runUntil(at + 0.5);
        if (events("statusItem").size() > before)
            ++updates;
    };
    changeAt(1);
    changeAt(4);
    changeAt(12);
    EXPECT_EQ(updates, 2);
}

TEST_F(VDHelperAppDelegateTest, TheStatusItemWidthLimitFollowsItsPreference)
{
    EXPECT_EQ(start(Json::object()).statusItem().maxWidth, 200);
    EXPECT_EQ(start({ { "defaults", { { "VDHelperAppDelegate_maxStatusItemWidth", -1 } } } }).statusItem().maxWidth,
        std::nullopt);
    EXPECT_EQ(
        start({ { "defaults", { { "VDHelperAppDelegate_maxStatusItemWidth", 120 } } } }).statusItem().maxWidth, 120);
}

TEST_F(VDHelperAppDelegateTest, TheAccessibilityStatisticsAreReportedAfterFiveMinutes)
{
    start({ { "end", 301 } });
    desktop().runUntil(299);
    EXPECT_TRUE(events("accessibilityStats").empty());
    desktop().runUntil(300);
    ASSERT_EQ(events("accessibilityStats").size(), 1u);
    EXPECT_EQ(events("accessibilityStats")[0]["lastWindowFetchError"], 1);
}

TEST_F(VDHelperAppDelegateTest, TheStoredShortcutStartsAndStopsATimerAndWithShiftEditsIt)
{
    start({ { "preferences", { { "startTaskShortcut", { { "key", "t" }, { "modifierFlags", 1048576 } } } } },
        { "editorAnswers",
            { { { "action", "save" }, { "title", "Planning" } },
                { { "action", "save" }, { "title", "Roadmap" } } } } });
    KeyShortcut plain { "t", ModifierFlag::command };
    KeyShortcut withShift { "t", ModifierFlag::command | ModifierFlag::shift };
    auto& keys = dynamic_cast<scripted::ScriptedGlobalShortcuts&>(platform().globalShortcuts());
    EXPECT_EQ(keys.listenedShortcuts(), (std::vector<KeyShortcut> { plain, withShift }));

    EXPECT_TRUE(keys.press(plain));
    ASSERT_TRUE(platform().runningTasks().runningTask());
    EXPECT_EQ(platform().runningTasks().runningTask()->title, "Planning");
    EXPECT_FALSE(MASShortcutBinder::sharedBinder().performShortcut({ withShift.key, withShift.modifierFlags }));
    EXPECT_TRUE(keys.press(withShift));
    EXPECT_EQ(platform().runningTasks().runningTask()->title, "Roadmap");
    EXPECT_TRUE(keys.press(plain));
    EXPECT_FALSE(platform().runningTasks().runningTask());

    platform().productPreferences().setObject("tasksAvailable", Value(false));
    delegate_->updateStartTaskShortcut();
    EXPECT_FALSE(MASShortcutBinder::sharedBinder().isBound(HelperPreferences::startTaskShortcutKey));
    EXPECT_TRUE(keys.listenedShortcuts().empty());
}

TEST_F(VDHelperAppDelegateTest, TheRelaunchIntervalRelaunchesOnce)
{
    start({ { "defaults", { { "VDHelperAppDelegate_relaunchInterval", 100 } } }, { "end", 400 } });
    EXPECT_EQ(desktop().runLoop().run(), 0);
    auto processes = events("process");
    ASSERT_EQ(processes.size(), 1u);
    EXPECT_EQ(processes[0]["t"], 100);
    EXPECT_EQ(desktop().stopReason(), "relaunch");
    EXPECT_EQ(events("open").back()["target"], "/Applications/VardelHelper.app");

    for (Json interval : { Json(0), Json(-5) }) {
        start({ { "defaults", { { "VDHelperAppDelegate_relaunchInterval", interval } } }, { "end", 400 } });
        desktop().runLoop().run();
        EXPECT_TRUE(events("process").empty()) << interval;
    }
}

TEST_F(VDHelperAppDelegateTest, AReplacedBundleIsNoticedInTheExecutablesFolder)
{
    start({ { "timeline",
                { { { "at", 10 },
                    { "plists",
                        { { "/Applications/VardelHelper.app/Contents/Info.plist", { { "CFBundleVersion", "2" } } } } },
                    { "fileEvent", { { "path", "/Applications/VardelHelper.app/Contents/MacOS" } } } } } },
        { "end", 200 } });
    desktop().runLoop().run();
    auto updates = events("analytics");
    auto update = std::find_if(updates.begin(), updates.end(),
        [](const Json& event) { return event["name"] == "VDHelperAppDelegate.relaunchForUpdate"; });
    ASSERT_NE(update, updates.end());
    EXPECT_EQ((*update)["attributes"]["newAppBuild"], "2");
    EXPECT_EQ(desktop().stopReason(), "relaunch");
}

TEST_F(VDHelperAppDelegateTest, TheFirstSyncFillsTheSyncLineAndTheBackupFollows)
{
    TemporaryFolder dataFolder;
    load({ { "defaults", { { "VDHelperAppDelegate_shouldShowSyncStatusItem", true }, { "initialSyncDelay", 40 } } },
        { "timeline", { menuStep(39, "open"), menuStep(42, "open") } }, { "end", 280 } });
    DatabaseWrapper::sharedInstance().configure(dataFolder.path());
    delegate_ = std::make_unique<VDHelperAppDelegate>(infoLogger_);
    delegate_->awakeFromNib({ "vardel-tracker" });
    desktop().runUntil(39.5);
    EXPECT_EQ(menuEntry("syncStatus:")["title"], "Determining Sync Status…");
    desktop().runUntil(42.5);
    EXPECT_EQ(menuEntry("syncStatus:")["title"], "Up to date");
    EXPECT_EQ(menuEntry("syncStatus:")["hidden"], false);
    EXPECT_FALSE(std::filesystem::exists(dataFolder.path() / "backups"));
    desktop().runUntil(271);
    EXPECT_FALSE(std::filesystem::is_empty(dataFolder.path() / "backups"));
    delegate_.reset();
    DatabaseWrapper::sharedInstance().configureUnavailable();
}

TEST_F(VDHelperAppDelegateTest, AnUnknownMenuActionIsReported)
{
    start(Json::object());
    MenuItem misspelt;
    misspelt.action = "toggleTraking:";
    delegate_->performAction(misspelt);
    auto logs = events("log");
    ASSERT_FALSE(logs.empty());
    EXPECT_EQ(logs.back()["level"], "warning");
    EXPECT_NE(logs.back()["message"].get<std::string>().find("toggleTraking:"), std::string::npos);
}

// As a benchmark does: the platform is uninstalled before the delegate goes, and its desktop lives on.
TEST_F(VDHelperAppDelegateTest, ADelegateThatOutlivesItsPlatformLeavesNothingBehindToRun)
{
    start({ { "defaults", { { "VDHelperAppDelegate_relaunchInterval", 100 } } }, { "end", 400 } });
    desktop().runUntil(10);
    delegate_->pauseTrackingForTime(30);
    Platform::install(nullptr);
    delegate_.reset();

    Platform::install(&desktop());
    desktop().runUntil(399);
    EXPECT_TRUE(events("process").empty());
    EXPECT_TRUE(events("accessibilityStats").empty());
    EXPECT_TRUE(pausedSamples().back());
}

TEST_F(VDHelperAppDelegateTest, TheFirstSyncComesTheSeededFractionOfASecondAfterItsDelay)
{
    TemporaryFolder dataFolder;
    load({ { "defaults", { { "initialSyncDelay", 40 } } }, { "end", 60 } });
    DatabaseWrapper::sharedInstance().configure(dataFolder.path());
    RandomFraction::seed(7);
    double fraction = RandomFraction::next();
    RandomFraction::seed(7);
    delegate_ = std::make_unique<VDHelperAppDelegate>(infoLogger_);
    delegate_->awakeFromNib({ "vardel-tracker" });

    const SyncManager& syncManager = DatabaseWrapper::sharedInstance().syncManager();
    double time = 39;
    for (int step = 0; !syncManager.statusTitle() && time < 42; ++step) {
        time = 39 + step * 0.01;
        desktop().runUntil(time);
    }
    // The sync request itself waits a tenth of a second.
    EXPECT_NEAR(time, 40.1 + fraction, 0.011);
    delegate_.reset();
    DatabaseWrapper::sharedInstance().configureUnavailable();
}

} // namespace
} // namespace vardel
