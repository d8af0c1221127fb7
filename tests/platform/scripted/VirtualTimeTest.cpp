#include "platform/scripted/ScriptedDesktop.h"
#include "platform/scripted/ScriptedTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <sstream>

namespace vardel::scripted::testing {
namespace {

using ::testing::ElementsAre;

// Records which timers fired, and when.
struct Firings {
    std::vector<std::string> names;
    std::function<void()> record(ScriptedDesktop& desktop, std::string name)
    {
        return [this, &desktop, name = std::move(name)] {
            std::ostringstream entry;
            entry << name << "@" << desktop.elapsedSeconds();
            names.push_back(entry.str());
        };
    }
};

TEST(VirtualTime, TimersFireInOrderOfDueTimeThenOfScheduling)
{
    auto desktop = desktopFrom({ { "end", 100 } });
    RunLoop& loop = desktop->runLoop();
    Firings firings;
    loop.schedule(5, firings.record(*desktop, "b"));
    loop.schedule(2, firings.record(*desktop, "a"));
    loop.schedule(5, firings.record(*desktop, "c"));
    auto cancelled = loop.schedule(3, firings.record(*desktop, "cancelled"));
    loop.schedule(-1, [&] { loop.schedule(1, firings.record(*desktop, "nested")); });
    loop.cancel(cancelled);

    EXPECT_EQ(loop.run(), 0);
    EXPECT_THAT(firings.names, ElementsAre("nested@1", "a@2", "b@5", "c@5"));
    EXPECT_EQ(desktop->stopReason(), "end");
    EXPECT_EQ(desktop->elapsedSeconds(), 100);
}

TEST(VirtualTime, TheRunEndsBeforeWhatIsDueAtTheEnd)
{
    auto desktop = desktopFrom({ { "end", 10 } });
    Firings firings;
    desktop->runLoop().schedule(9.5, firings.record(*desktop, "last"));
    desktop->runLoop().schedule(10, firings.record(*desktop, "too late"));
    EXPECT_EQ(desktop->runLoop().run(), 0);
    EXPECT_THAT(firings.names, ElementsAre("last@9.5"));
    EXPECT_EQ(desktop->elapsedSeconds(), 10);
}

TEST(VirtualTime, StopEndsTheRunWithItsStatus)
{
    auto desktop = desktopFrom({ { "end", 100 } });
    Firings firings;
    desktop->runLoop().schedule(3, [&] { desktop->runLoop().stop(4, "quit"); });
    desktop->runLoop().schedule(4, firings.record(*desktop, "after"));
    EXPECT_EQ(desktop->runLoop().run(), 4);
    EXPECT_EQ(desktop->stopReason(), "quit");
    EXPECT_TRUE(firings.names.empty());
    EXPECT_EQ(desktop->elapsedSeconds(), 3);
}

TEST(VirtualTime, SleepingCostsNoRealTimeAndHoldsTimersBack)
{
    auto desktop = desktopFrom({ { "end", 100 } });
    Firings firings;
    desktop->runLoop().schedule(1, firings.record(*desktop, "held"));
    auto before = std::chrono::steady_clock::now();
    desktop->runLoop().sleep(50);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(1));
    EXPECT_EQ(desktop->elapsedSeconds(), 50);
    EXPECT_EQ(desktop->clock().now().secondsSince1970, 1767603600 + 50);
    EXPECT_TRUE(firings.names.empty());
    desktop->runUntil(50);
    EXPECT_THAT(firings.names, ElementsAre("held@50"));
}

TEST(VirtualTime, EndDefaultsToOneSecondAfterTheLastStep)
{
    EXPECT_EQ(desktopFrom(Json::object())->endSeconds(), 1);
    EXPECT_EQ(desktopFrom(Json::parse(R"({"timeline": [{"at": 4.5, "frontmost": null}]})"))->endSeconds(), 5.5);
}

class TimelineTest : public ::testing::Test {
protected:
    void load(const char* timeline)
    {
        Json scenario = Json::parse(R"({"applications": [
            {"pid": 1, "bundleIdentifier": "one", "ui": {"id": "one", "AXTitle": "first"}},
            {"pid": 2, "bundleIdentifier": "two", "running": false}],
            "frontmost": 1, "defaults": {"kept": 1, "dropped": 2}})");
        scenario["timeline"] = Json::parse(timeline);
        desktop = desktopFrom(scenario);
    }

    std::optional<ProcessIdentifier> frontmost()
    {
        auto application = desktop->workspace().frontmostApplication();
        return application ? std::optional(application->processIdentifier) : std::nullopt;
    }

    std::optional<Value> title(const std::string& id)
    {
        return desktop->accessibility().copyAttributeValue(element(*desktop, id), "AXTitle").value;
    }

    std::unique_ptr<ScriptedDesktop> desktop;
};

TEST_F(TimelineTest, StepsComeBeforeTimersDueAtTheirTime)
{
    load(R"([{"at": 0, "frontmost": null}, {"at": 2, "frontmost": 1}])");
    std::vector<std::optional<ProcessIdentifier>> seen { frontmost() };
    desktop->runLoop().schedule(2, [&] { seen.push_back(frontmost()); });
    desktop->runLoop().run();
    EXPECT_THAT(seen, ElementsAre(std::nullopt, 1));
}

TEST_F(TimelineTest, InteractionsReachTheProgramAtTheirStepsTime)
{
    load(R"([{"at": 20.5, "script": {"command": "pause"}}, {"at": 22, "script": {"command": "resume"}},
             {"at": 32, "script": {"command": "pause"}}, {"at": 40, "frontmost": 1}])");
    Firings firings;
    desktop->scriptingCommands().setHandler(
        [&](const ScriptingCommandRequest& request) { firings.record(*desktop, request.name)(); });
    for (double due : { 21, 22 })
        desktop->runLoop().schedule(due, firings.record(*desktop, "timer"));
    // A program blocked past a step gets its interaction as soon as it is free, before later timers.
    desktop->runLoop().schedule(30, [&] { desktop->runLoop().sleep(5); });
    desktop->runLoop().schedule(33, firings.record(*desktop, "timer"));
    desktop->runLoop().run();
    // A step at a timer's time comes after the timers already due then, as any new timer does.
    EXPECT_THAT(firings.names, ElementsAre("pause@20.5", "timer@21", "timer@22", "resume@22", "pause@35", "timer@35"));
}

TEST_F(TimelineTest, StepsHappenWhileTheProgramSleeps)
{
    load(R"([{"at": 3, "set": [{"element": "one", "attribute": "AXTitle", "value": "second"}]}])");
    desktop->runLoop().sleep(5);
    EXPECT_EQ(title("one"), Value("second"));
}

TEST_F(TimelineTest, ApplicationsLaunchTerminateAndChange)
{
    load(R"([
        {"at": 1, "launch": {"pid": 2, "bundleIdentifier": "two", "ui": {"id": "two", "AXOwner": {"ref": "one"}}},
         "set": [{"element": "two", "attribute": "AXTitle", "value": "new"},
                 {"element": "one", "attribute": "AXTitle", "value": null}]},
        {"at": 2, "terminate": [1], "frontmost": 2}])");
    auto running = [&] {
        std::vector<std::string> identifiers;
        for (const auto& application : desktop->workspace().runningApplications())
            identifiers.push_back(application.bundleIdentifier.value_or("?"));
        return identifiers;
    };
    EXPECT_THAT(running(), ElementsAre("one"));
    desktop->runUntil(1);
    EXPECT_THAT(running(), ElementsAre("one", "two"));
    EXPECT_EQ(title("two"), Value("new"));
    EXPECT_EQ(title("one"), std::nullopt);
    auto owner = desktop->accessibility().copyAttributeValue(element(*desktop, "two"), "AXOwner");
    EXPECT_EQ(*owner.value, Value(element(*desktop, "one")));
    desktop->runUntil(2);
    EXPECT_THAT(running(), ElementsAre("two"));
    EXPECT_EQ(frontmost(), 2);
    EXPECT_EQ(desktop->accessibility().copyAttributeValue(*owner.value->asElement(), "AXTitle").error,
        AXErrorCode::invalidUIElement);
}

TEST_F(TimelineTest, SceneAndPreferencesAreReplacedOrMergedUntraced)
{
    load(R"([{"at": 1, "screens": [[0, 0, 800, 600]], "windowList": [{"kCGWindowOwnerPID": 1}],
              "defaults": {"dropped": null, "added": "yes"}, "preferences": {"statusItemVisible": false}}])");
    desktop->runUntil(1);
    EXPECT_EQ(desktop->windowServer().screenFrames(), (std::vector<Rect> { { { 0, 0 }, { 800, 600 } } }));
    EXPECT_EQ(desktop->windowServer().onScreenWindowList().size(), 1u);
    EXPECT_EQ(desktop->standardUserDefaults().getInt("kept"), 1);
    EXPECT_EQ(desktop->standardUserDefaults().object("dropped"), std::nullopt);
    EXPECT_EQ(desktop->standardUserDefaults().getString("added"), "yes");
    EXPECT_EQ(desktop->productPreferences().getBool("statusItemVisible"), false);
    EXPECT_TRUE(events(*desktop, "defaults").empty());
}

TEST_F(TimelineTest, NothingAtOrAfterTheEndHappens)
{
    Json scenario = Json::parse(R"({"end": 2, "applications": [{"pid": 1}, {"pid": 2}], "frontmost": 1,
        "timeline": [{"at": 2, "frontmost": 2}]})");
    desktop = desktopFrom(scenario);
    desktop->runLoop().run();
    EXPECT_EQ(frontmost(), 1);
}

} // namespace
} // namespace vardel::scripted::testing
