#include "platform/RelaunchScripts.h"
#include "platform/scripted/RelaunchScript.h"
#include "platform/scripted/ScriptedDesktop.h"
#include "platform/scripted/ScriptedTesting.h"
#include "shell/SelfRelauncher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vardel::scripted::testing {
namespace {

struct Delivery {
    double at;
    std::vector<FileSystemEvent> events;
};

// A stream whose batches are kept with the virtual time at which they arrived.
struct RecordedStream {
    RecordedStream(ScriptedDesktop& desktop, std::vector<std::string> paths, double latency = 3)
        : stream(desktop.fileEventStreams().create(
            std::move(paths), latency, [this, &desktop](const std::vector<FileSystemEvent>& events) {
                deliveries.push_back({ desktop.elapsedSeconds(), events });
            }))
    {
    }

    std::vector<Delivery> deliveries;
    std::unique_ptr<FileEventStream> stream;
};

// Serves the run loop in half-second steps, as the program's periodic timers keep it going.
void runFor(ScriptedDesktop& desktop, double until)
{
    for (double time = desktop.elapsedSeconds() + 0.5; time <= until; time += 0.5)
        desktop.runUntil(time);
}

Json fileEventStep(double at, Json events)
{
    return { { "at", at }, { "fileEvent", std::move(events) } };
}

Json event(const std::string& path, uint32_t flags = 0)
{
    return { { "path", path }, { "flags", flags } };
}

TEST(ScriptedFileEvents, DeliversTheEventsOfTheLatencyWindowTogetherAfterTheFirst)
{
    auto desktop = desktopFrom({ { "end", 100 },
        { "timeline",
            { fileEventStep(10, { event("/Apps/X.app/Contents/MacOS/", 32), event("/Apps/Y.app") }),
                fileEventStep(13, event("/Apps/X.app/Contents/MacOS/Sub")), fileEventStep(13.5, event("/Apps/X.app")),
                fileEventStep(20, event("/Apps/X.app/Contents/MacOS")) } } });
    RecordedStream recorded(*desktop, { "/Apps/X.app/Contents/MacOS" });
    ASSERT_TRUE(recorded.stream->start());
    runFor(*desktop, 100);

    ASSERT_EQ(recorded.deliveries.size(), 2u);
    EXPECT_EQ(recorded.deliveries[0].at, 13);
    EXPECT_EQ(recorded.deliveries[0].events,
        (std::vector<FileSystemEvent> {
            { 1, "/Apps/X.app/Contents/MacOS/", 32 }, { 3, "/Apps/X.app/Contents/MacOS/Sub", 0 } }));
    EXPECT_EQ(recorded.deliveries[1].at, 23);
    EXPECT_EQ(recorded.deliveries[1].events, (std::vector<FileSystemEvent> { { 5, "/Apps/X.app/Contents/MacOS", 0 } }));
}

TEST(ScriptedFileEvents, ReportsOnlyWhileStartedAndBelowTheWatchedFolders)
{
    auto desktop = desktopFrom({ { "end", 100 },
        { "timeline",
            { fileEventStep(1, event("/a")), fileEventStep(5, { event("/ab"), event("/a/b/c"), event("/") }),
                fileEventStep(10, event("/a/x")), fileEventStep(30, event("/a/y")) } } });
    RecordedStream watchingA(*desktop, { "/a/" }, 0);
    RecordedStream watchingRoot(*desktop, { "/" }, 0);
    runFor(*desktop, 2);
    watchingA.stream->start();
    watchingRoot.stream->start();
    runFor(*desktop, 9);
    watchingA.stream->stop();
    runFor(*desktop, 40);

    ASSERT_EQ(watchingA.deliveries.size(), 1u);
    EXPECT_EQ(watchingA.deliveries[0].events, (std::vector<FileSystemEvent> { { 3, "/a/b/c", 0 } }));
    ASSERT_EQ(watchingRoot.deliveries.size(), 3u);
    EXPECT_EQ(watchingRoot.deliveries[0].events,
        (std::vector<FileSystemEvent> { { 2, "/ab", 0 }, { 3, "/a/b/c", 0 }, { 4, "/", 0 } }));
}

TEST(ScriptedFileEvents, FlushesPendingEventsAndForgetsThoseOfAStoppedOrDestroyedStream)
{
    auto desktop = desktopFrom({ { "end", 100 },
        { "timeline",
            { fileEventStep(1, event("/a")), fileEventStep(2, event("/a")), fileEventStep(3, event("/a")) } } });
    RecordedStream flushed(*desktop, { "/a" });
    auto destroyed = std::make_unique<RecordedStream>(*desktop, std::vector<std::string> { "/a" });
    flushed.stream->start();
    destroyed->stream->start();

    desktop->runUntil(1);
    flushed.stream->flushSync();
    ASSERT_EQ(flushed.deliveries.size(), 1u);
    EXPECT_EQ(flushed.deliveries[0].at, 1);
    destroyed->stream.reset();

    desktop->runUntil(2);
    flushed.stream->flushAsync();
    EXPECT_EQ(flushed.deliveries.size(), 1u);
    desktop->runUntil(2.5);
    ASSERT_EQ(flushed.deliveries.size(), 2u);
    EXPECT_EQ(flushed.deliveries[1].at, 2);

    desktop->runUntil(3);
    flushed.stream->stop();
    desktop->runUntil(50);
    EXPECT_EQ(flushed.deliveries.size(), 2u);
    EXPECT_THAT(flushed.stream->description(), ::testing::HasSubstr("stopped"));
}

const std::string bundlePath = "/Apps/V \"1\".app";

// The script as the tracker writes it to relaunch process 100 from the bundle above.
std::string relaunchScriptText(double delay = 5)
{
    return RelaunchScripts::reopeningBundle(delay, 100, bundlePath);
}

TEST(RelaunchScript, RecognisesOnlyTheTrackersOwnRelaunch)
{
    auto script = RelaunchScript::recognize("/bin/sh", { "-c", relaunchScriptText() }, 100);
    ASSERT_TRUE(script);
    EXPECT_EQ(script->delaySeconds, 5);
    EXPECT_EQ(script->bundlePath, bundlePath);

    EXPECT_FALSE(RelaunchScript::recognize("/bin/sh", { "-c", relaunchScriptText() }, 101));
    EXPECT_FALSE(RelaunchScript::recognize("/bin/bash", { "-c", relaunchScriptText() }, 100));
    EXPECT_FALSE(RelaunchScript::recognize("/bin/sh", { relaunchScriptText() }, 100));
    EXPECT_FALSE(RelaunchScript::recognize("/bin/sh", { "-c", relaunchScriptText() + "; rm -rf ~" }, 100));
    std::string otherDelays = relaunchScriptText();
    otherDelays.replace(otherDelays.find("{1..5}"), 6, "{1..9}");
    EXPECT_FALSE(RelaunchScript::recognize("/bin/sh", { "-c", otherDelays }, 100));
    std::string unquotedDollar = relaunchScriptText();
    unquotedDollar.replace(unquotedDollar.find("\\\"1\\\""), 5, "$(id)");
    EXPECT_FALSE(RelaunchScript::recognize("/bin/sh", { "-c", unquotedDollar }, 100));
}

TEST(RelaunchScript, EndsTheRunAfterTheDelayAndOpensTheBundle)
{
    for (double delay : { 5, 12 }) {
        auto desktop = desktopFrom({ { "end", 100 } });
        int terminations = 0;
        desktop->runLoop().setTerminationRequestHandler([&](const std::string&) {
            ++terminations;
            desktop->trace().write("flushed", {});
        });
        desktop->runLoop().schedule(2, [&] {
            desktop->processLauncher().launch("/bin/sh", { "-c", relaunchScriptText(delay) });
        });
        desktop->runLoop().schedule(90, [] { FAIL() << "the run went on after the relaunch"; });

        EXPECT_EQ(desktop->runLoop().run(), 0);
        EXPECT_EQ(terminations, 1);
        EXPECT_EQ(desktop->stopReason(), "relaunch");
        EXPECT_EQ(desktop->elapsedSeconds(), 2 + delay);
        const auto& recorded = desktop->recordedEvents();
        ASSERT_GE(recorded.size(), 2u);
        EXPECT_EQ(recorded[recorded.size() - 2]["event"], "flushed");
        EXPECT_EQ(recorded.back(), (Json { { "t", 2 + delay }, { "event", "open" }, { "target", bundlePath } }));
    }
}

TEST(CurrentProcess, IsTheScenariosOwnBundleAsItStarted)
{
    auto desktop = desktopFrom({ { "self", { { "pid", 321 }, { "bundlePath", "/Apps/V.app" } } },
        { "timeline", { { { "at", 1 }, { "plists", { { "/Apps/V.app/Contents/Info.plist", nullptr } } } } } } });
    desktop->runUntil(2);
    CurrentProcess process = desktop->currentProcess();
    EXPECT_EQ(process.processIdentifier, 321);
    EXPECT_EQ(process.executablePath, "/Apps/V.app/Contents/MacOS/VardelHelper");
    EXPECT_EQ(process.mainBundle.path, "/Apps/V.app");
    EXPECT_EQ(process.mainBundle.bundleIdentifier, "info.quenby.VardelHelper");
    EXPECT_EQ(process.mainBundle.info, (Value::Dictionary { { "CFBundleVersion", Value("1") } }));
    EXPECT_EQ(desktopFrom(Json::object())->currentProcess().processIdentifier, 100);
}

} // namespace
} // namespace vardel::scripted::testing
