#include "shell/SelfRelauncher.h"

#include "platform/RelaunchScripts.h"
#include "platform/scripted/RelaunchScript.h"
#include "shell/SCEvents.h"
#include "support/ScriptedDesktopTest.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vardel::testing {
namespace {

constexpr const char* bundlePath = "/Applications/VardelHelper.app";
constexpr const char* infoPlist = "/Applications/VardelHelper.app/Contents/Info.plist";
constexpr const char* executableFolder = "/Applications/VardelHelper.app/Contents/MacOS";

// What the shell makes of the script's double-quoted bundle path, by a real /bin/sh printing it.
std::string shellReadingOfQuotedPath(const std::string& script)
{
    const std::string opening = "/usr/bin/open \"";
    size_t begin = script.find(opening);
    size_t end = script.rfind("\") &");
    if (begin == std::string::npos || end == std::string::npos)
        return "(no quoted path)";
    std::string quoted = script.substr(begin + opening.size() - 1, end + 2 - begin - opening.size());
    std::string command = "printf %s " + quoted;

    int output[2];
    if (pipe(output) != 0)
        return "(no pipe)";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, output[0]);
    std::array<char*, 4> arguments { const_cast<char*>("/bin/sh"), const_cast<char*>("-c"), command.data(), nullptr };
    pid_t child = 0;
    int spawned = posix_spawn(&child, "/bin/sh", &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(output[1]);
    std::string printed;
    std::array<char, 256> buffer;
    for (ssize_t length; (length = read(output[0], buffer.data(), buffer.size())) > 0;)
        printed.append(buffer.data(), static_cast<size_t>(length));
    close(output[0]);
    if (spawned != 0)
        return "(no shell)";
    int status = 0;
    waitpid(child, &status, 0);
    return printed;
}

pid_t spawn(std::vector<std::string> arguments, const std::string& program)
{
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    pid_t child = 0;
    if (posix_spawn(&child, program.c_str(), nullptr, nullptr, argv.data(), environ) != 0)
        throw std::runtime_error("cannot start " + program);
    return child;
}

// The relaunch script run by a real shell as the tracker's desktop has it: bash started as "sh" (the
// script relies on brace expansion and on ">&" to a file, which this machine's /bin/sh lacks), with
// the desktop's "open" replaced by a recorder that writes the path it is given to a file.
class RelaunchScriptRun {
public:
    // The process for the script to end; one that ignores the polite signal must be killed.
    RelaunchScriptRun(const std::filesystem::path& folder, const std::string& name, bool targetIgnoresTerminate)
        : recorded_(folder / (name + ".opened"))
    {
        std::filesystem::path recorder = folder / name;
        std::ofstream(recorder) << "#!/bin/sh\nprintf '%s' \"$1\" > '" << recorded_.string() << ".part' && mv '"
                                << recorded_.string() << ".part' '" << recorded_.string() << "'\n";
        std::filesystem::permissions(recorder, std::filesystem::perms::owner_all);
        recorder_ = recorder.string();
        std::string target = targetIgnoresTerminate ? "trap '' TERM; exec /bin/sleep 30" : "exec /bin/sleep 30";
        target_ = spawn({ "sh", "-c", target }, "/bin/sh");
    }

    ~RelaunchScriptRun()
    {
        if (target_ > 0) {
            kill(target_, SIGKILL);
            waitpid(target_, nullptr, 0);
        }
        // The shell itself ends after the first wait; the rest of the script runs in the background.
        if (shell_ > 0)
            waitpid(shell_, nullptr, 0);
    }

    void start(double delay, const std::string& bundlePath)
    {
        std::string script = RelaunchScripts::reopeningBundle(delay, target_, bundlePath);
        const std::string open = "/usr/bin/open ";
        size_t at = script.find(open);
        ASSERT_NE(at, std::string::npos) << script;
        script.replace(at, open.size(), recorder_ + " ");
        started_ = std::chrono::steady_clock::now();
        shell_ = spawn({ "sh", "-c", script }, "/bin/bash");
    }

    // Reaps the target as soon as it ends, so that the script sees it gone: the signal that ended
    // it, and when.
    std::pair<int, double> targetEnd()
    {
        int status = 0;
        while (waitpid(target_, &status, WNOHANG) == 0 && secondsSinceStart() < timeoutSeconds)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        double ended = secondsSinceStart();
        if (ended >= timeoutSeconds)
            return { 0, ended };
        target_ = 0;
        return { WIFSIGNALED(status) ? WTERMSIG(status) : 0, ended };
    }

    // What the script opened, and when.
    std::pair<std::optional<std::string>, double> opened() const
    {
        while (!std::filesystem::exists(recorded_) && secondsSinceStart() < timeoutSeconds)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        double openedAt = secondsSinceStart();
        if (!std::filesystem::exists(recorded_))
            return { std::nullopt, openedAt };
        std::ifstream file(recorded_, std::ios::binary);
        return { std::string(std::istreambuf_iterator<char>(file), {}), openedAt };
    }

private:
    static constexpr double timeoutSeconds = 20;

    double secondsSinceStart() const
    {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - started_).count();
    }

    std::filesystem::path recorded_;
    std::string recorder_;
    pid_t target_ = 0;
    pid_t shell_ = 0;
    std::chrono::steady_clock::time_point started_;
};

// Real time is what is tested: the script waits its delay, signals, waits one-second rounds (as many
// as the delay has seconds) for the process to go, kills it if it stayed and waits the delay again,
// then opens the bundle. Both runs go at once to keep the test short.
TEST(SelfRelauncherScript, EndsTheProcessPolitelyOrByForceAndOpensTheBundleAsGiven)
{
    TemporaryFolder folder;
    std::string hostile = "/Applications/Vardel Helper \"quoted\" 'single' $HOME ${PATH} $(id) `id` back\\slash\\";
    RelaunchScriptRun polite(folder.path(), "polite", false);
    RelaunchScriptRun stubborn(folder.path(), "stubborn", true);
    polite.start(1, hostile);
    stubborn.start(1, "/tmp/new\nline $$.app");

    auto [politeSignal, politeEnd] = polite.targetEnd();
    EXPECT_EQ(politeSignal, SIGTERM);
    EXPECT_GE(politeEnd, 1);
    auto [politePath, politeOpened] = polite.opened();
    EXPECT_EQ(politePath, hostile);
    EXPECT_GE(politeOpened, 2);

    auto [stubbornSignal, stubbornEnd] = stubborn.targetEnd();
    EXPECT_EQ(stubbornSignal, SIGKILL);
    EXPECT_GE(stubbornEnd, 2);
    auto [stubbornPath, stubbornOpened] = stubborn.opened();
    EXPECT_EQ(stubbornPath, "/tmp/new\nline $$.app");
    EXPECT_GE(stubbornOpened, 3);
}

// Whole seconds, never negative, in each of the script's three waits.
TEST(SelfRelauncherScript, WaitsTheDelayInWholeSeconds)
{
    for (auto [delay, seconds] : { std::pair(60.7, 60), std::pair(5.0, 5), std::pair(-3.0, 0) }) {
        auto recognized = scripted::RelaunchScript::recognize(
            "/bin/sh", { "-c", RelaunchScripts::reopeningBundle(delay, 7, "/A.app") }, 7);
        ASSERT_TRUE(recognized) << delay;
        EXPECT_EQ(recognized->delaySeconds, seconds);
    }
}

TEST(SelfRelauncherScript, QuotesAnyBundlePathSoThatTheShellTakesItLiterally)
{
    for (const std::string path : { "/Applications/Vardel Helper.app", "/tmp/a\"; touch /tmp/pwned; \".app",
             "/tmp/$(touch /tmp/pwned).app", "/tmp/`id`.app", "/tmp/$HOME/${PATH}.app", "/tmp/back\\slash\\",
             "/tmp/new\nline.app", "/tmp/\\\"both\\$.app", "/tmp/'single'.app", "/tmp/tail\\" }) {
        std::string script = RelaunchScripts::reopeningBundle(5, 100, path);
        EXPECT_EQ(shellReadingOfQuotedPath(script), path) << script;
        auto recognized = scripted::RelaunchScript::recognize("/bin/sh", { "-c", script }, 100);
        ASSERT_TRUE(recognized) << script;
        EXPECT_EQ(recognized->bundlePath, path);
    }
}

class SelfRelauncherTest : public ScriptedDesktopTest {
protected:
    // The tracker's bundle at build "1"; one running application has its identifier.
    Json scenario(Json defaults = Json::object(), Json timeline = Json::array())
    {
        return { { "end", 1000 }, { "defaults", std::move(defaults) },
            { "applications",
                { { { "pid", 100 }, { "bundleIdentifier", "info.quenby.VardelHelper" },
                    { "bundlePath", bundlePath } } } },
            { "timeline", std::move(timeline) } };
    }

    SelfRelauncher& makeRelauncher()
    {
        relauncher_ = std::make_unique<SelfRelauncher>(
            [this](bool isRelaunch) {
                shutdowns.push_back({ desktop().elapsedSeconds(), isRelaunch });
            },
            [this] { relaunchPreparations.push_back(desktop().elapsedSeconds()); });
        return *relauncher_;
    }

    std::vector<Json> analytics(const std::string& name) const
    {
        std::vector<Json> found;
        for (const auto& event : events("analytics")) {
            if (event["name"] == name)
                found.push_back(event);
        }
        return found;
    }

    std::vector<std::string> logMessages() const
    {
        std::vector<std::string> messages;
        for (const auto& event : events("log"))
            messages.push_back(event["message"]);
        return messages;
    }

    void runTo(double until)
    {
        for (double time = desktop().elapsedSeconds() + 0.5; time <= until; time += 0.5)
            desktop().runUntil(time);
    }

    // The recording service's samples keep the run loop busy, as in the tracker.
    void keepSampling()
    {
        desktop().runLoop().schedule(1, [this] { keepSampling(); });
    }

    std::vector<std::pair<double, bool>> shutdowns;
    std::vector<double> relaunchPreparations;

private:
    std::unique_ptr<SelfRelauncher> relauncher_;
};

TEST_F(SelfRelauncherTest, StartsTheScriptReportsItAndWaitsThreeSeconds)
{
    load(scenario());
    SelfRelauncher& relauncher = makeRelauncher();
    EXPECT_EQ(relauncher.currentAppBuild(), "1");
    relauncher.relaunch();

    EXPECT_EQ(desktop().elapsedSeconds(), 3);
    EXPECT_EQ(relaunchPreparations, std::vector<double> { 3 });
    auto requested = analytics("VDHelperAppDelegate.relaunchRequested");
    ASSERT_EQ(requested.size(), 1u);
    EXPECT_EQ(requested[0]["attributes"], (Json { { "reason", "IBAction" } }));
    EXPECT_EQ(requested[0]["critical"], true);
    EXPECT_EQ(requested[0]["t"], 0);
    EXPECT_EQ(events("defaults"),
        (std::vector<Json> { { { "t", 0 }, { "event", "defaults" }, { "store", "defaults" },
            { "key", "lastSelfRelaunchAt" }, { "value", { { "date", "2026-01-05T09:00:00Z" } } } } }));
    auto processes = events("process");
    ASSERT_EQ(processes.size(), 1u);
    EXPECT_EQ(processes[0]["path"], "/bin/sh");
    EXPECT_EQ(processes[0]["arguments"], (Json { "-c", RelaunchScripts::reopeningBundle(5, 100, bundlePath) }));
    auto finished = analytics("VDHelperAppDelegate.relaunchProcessFinished");
    ASSERT_EQ(finished.size(), 1u);
    EXPECT_EQ(finished[0]["t"], 1);
    EXPECT_EQ(finished[0]["attributes"],
        (Json { { "launchResult", true }, { "reason", "IBAction" }, { "runningAppCount", 1 } }));
    EXPECT_EQ(finished[0]["critical"], true);

    // The shutdown preparation waits for the run loop; the script's signal ends the run at 5.
    EXPECT_TRUE(shutdowns.empty());
    EXPECT_EQ(desktop().runLoop().run(), 0);
    EXPECT_EQ(shutdowns, (std::vector<std::pair<double, bool>> { { 3, true } }));
    EXPECT_EQ(desktop().stopReason(), "relaunch");
    EXPECT_EQ(events("open").back()["target"], bundlePath);
}

TEST_F(SelfRelauncherTest, DoesNothingWhenAllRelaunchesAreSuppressed)
{
    load(scenario({ { "VDHelperAppDelegate_suppressAllAppRelaunches", true } }));
    makeRelauncher().relaunchWithDelay(60, { { "reason", Value("VDHelperAppDelegate_relaunchInterval") } });
    runTo(100);
    EXPECT_EQ(logMessages(), std::vector<std::string> { "App relaunch suppressed by preferences" });
    EXPECT_TRUE(events("analytics").empty());
    EXPECT_TRUE(events("defaults").empty());
    EXPECT_TRUE(events("process").empty());
    EXPECT_TRUE(shutdowns.empty());
    EXPECT_TRUE(relaunchPreparations.empty());
}

class UpdateDetectionTest : public SelfRelauncherTest {
protected:
    // At 10 the bundle's build becomes newBuild (null: the file disappears), and two events report it.
    void loadUpdate(Json newBuild, Json defaults = Json::object())
    {
        Json info = newBuild.is_null() ? Json(nullptr) : Json { { "CFBundleVersion", newBuild } };
        load(scenario(std::move(defaults),
            { { { "at", 10 }, { "plists", { { infoPlist, info } } },
                { "fileEvent",
                    { { { "path", std::string(executableFolder) + "/" }, { "flags", 32 } },
                        { { "path", executableFolder } } } } } }));
        SCEvents& watcher = SCEvents::sharedPathWatcher();
        watcher.setDelegate(&makeRelauncher());
        watcher.startWatchingPaths({ executableFolder });
    }
};

TEST_F(UpdateDetectionTest, ChecksEveryEventAndSkipsAnEqualBuild)
{
    loadUpdate("1");
    runTo(100);
    EXPECT_EQ(logMessages(),
        (std::vector<std::string> { "Update detected - initiating relaunch...",
            "Update detected - initiating relaunch...", "Old and new build are equal (1); skipping relaunch",
            "Old and new build are equal (1); skipping relaunch" }));
    EXPECT_EQ(events("log")[2]["t"], 18);
    EXPECT_TRUE(events("analytics").empty());
    EXPECT_TRUE(events("process").empty());
}

TEST_F(UpdateDetectionTest, IgnoresEventsWhenUpdateRelaunchesAreSuppressed)
{
    loadUpdate("2", { { "VDHelperAppDelegate_suppressUpdateAppRelaunches", true } });
    runTo(100);
    EXPECT_EQ(logMessages(),
        (std::vector<std::string> { "Update detected - initiating relaunch...",
            "Update relaunch suppressed by preferences", "Update detected - initiating relaunch...",
            "Update relaunch suppressed by preferences" }));
    EXPECT_TRUE(events("analytics").empty());
}

TEST_F(UpdateDetectionTest, RelaunchesForAnUnreadableBuildAndReportsIt)
{
    loadUpdate(nullptr);
    keepSampling();
    desktop().runLoop().run();
    auto unreadable = analytics("VDHelperAppDelegate.relaunchForUpdate.couldNotReadNewVersion");
    ASSERT_EQ(unreadable.size(), 2u);
    EXPECT_EQ(
        unreadable[0]["attributes"], (Json { { "eventPath", executableFolder }, { "infoPlistPath", infoPlist } }));
    auto update = analytics("VDHelperAppDelegate.relaunchForUpdate");
    ASSERT_EQ(update.size(), 2u);
    EXPECT_EQ(update[0]["attributes"],
        (Json { { "currentAppBuild", "1" }, { "eventFlag", 32 }, { "eventPath", executableFolder },
            { "newAppBuild", "(nil)" }, { "oldAndNewBuildAreEqual", false }, { "reason", "pathWatcherTriggered" } }));
    EXPECT_EQ(update[0]["critical"], true);
    EXPECT_THAT(logMessages(),
        ::testing::Contains(
            "Warning: Could not read new app build version from Info.plist at " + std::string(infoPlist)));
    // Each event leads to its own relaunch; the first script's signal ends the run.
    EXPECT_EQ(events("process").size(), 2u);
    EXPECT_EQ(desktop().stopReason(), "relaunch");
}

TEST_F(UpdateDetectionTest, ReportsButDoesNotRestartWhenAllRelaunchesAreSuppressed)
{
    loadUpdate("2", { { "VDHelperAppDelegate_suppressAllAppRelaunches", true } });
    runTo(200);
    EXPECT_EQ(analytics("VDHelperAppDelegate.relaunchForUpdate").size(), 2u);
    EXPECT_TRUE(analytics("VDHelperAppDelegate.relaunchRequested").empty());
    EXPECT_TRUE(events("defaults").empty());
    EXPECT_TRUE(events("process").empty());
    EXPECT_TRUE(events("open").empty());
}

// The whole chain on the scripted desktop: the bundle is replaced by build 2, the watcher reports
// it 3 seconds later, the check follows 5 seconds after that, and the relaunch script ends the
// tracker 60 seconds on and opens the bundle again.
TEST_F(UpdateDetectionTest, ANewBuildRelaunchesTheTracker)
{
    loadUpdate("2");
    int terminations = 0;
    desktop().runLoop().setTerminationRequestHandler([&](const std::string&) { ++terminations; });
    keepSampling();

    EXPECT_EQ(desktop().runLoop().run(), 0);
    auto update = analytics("VDHelperAppDelegate.relaunchForUpdate");
    ASSERT_EQ(update.size(), 2u);
    EXPECT_EQ(update[0]["t"], 18);
    EXPECT_EQ(update[0]["attributes"]["newAppBuild"], "2");
    EXPECT_EQ(update[0]["attributes"]["currentAppBuild"], "1");
    auto requested = analytics("VDHelperAppDelegate.relaunchRequested");
    ASSERT_EQ(requested.size(), 2u);
    EXPECT_EQ(requested[0]["attributes"], update[0]["attributes"]);
    auto processes = events("process");
    ASSERT_EQ(processes.size(), 2u);
    EXPECT_EQ(processes[0]["t"], 18);
    EXPECT_EQ(processes[0]["arguments"][1], RelaunchScripts::reopeningBundle(60, 100, bundlePath));
    EXPECT_EQ(processes[1]["t"], 21);

    EXPECT_EQ(terminations, 1);
    EXPECT_EQ(desktop().stopReason(), "relaunch");
    EXPECT_EQ(events("open"), (std::vector<Json> { { { "t", 78 }, { "event", "open" }, { "target", bundlePath } } }));
}

} // namespace
} // namespace vardel::testing
