// The tracker's life on a real, headless X11 desktop: the question at start-up shown as a real
// dialog and answered by the user, launch at login, relaunching into a replaced executable.

#include "e2e/SharedDesktop.h"
#include "support/AtspiWindows.h"
#include "support/TraceFile.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>

namespace vardel::testing {

namespace {

using namespace std::chrono_literals;

std::optional<nlohmann::json> lastEvent(const Trace& trace, const std::string& name)
{
    for (auto event = trace.rbegin(); event != trace.rend(); ++event) {
        if ((*event)["event"] == name)
            return *event;
    }
    return std::nullopt;
}

// The processes running that executable.
std::vector<pid_t> processesOf(const std::filesystem::path& executable)
{
    std::vector<pid_t> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::string name = entry.path().filename().string();
        pid_t pid = 0;
        if (std::from_chars(name.data(), name.data() + name.size(), pid).ec != std::errc {})
            continue;
        std::error_code error;
        if (std::filesystem::read_symlink(entry.path() / "exe", error) == executable)
            found.push_back(pid);
    }
    return found;
}

class TrackerLifecycleEndToEndTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        desktop_ = &sharedDesktop();
        folder_ = desktop().scratchFolder() / ::testing::UnitTest::GetInstance()->current_test_info()->name();
        std::filesystem::create_directories(folder_);
    }

    void TearDown() override
    {
        if (!desktop_)
            return;
        // A process the test did not start (a relaunched tracker) is stopped by its pid.
        for (pid_t pid : foreign_)
            ::kill(pid, SIGKILL);
        while (!started_.empty()) {
            desktop().stop(started_.back());
            started_.pop_back();
        }
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    HeadlessDesktop& desktop() { return *desktop_; }

    pid_t start(const std::string& program, const std::map<std::string, std::string>& environment = {})
    {
        started_.push_back(desktop().start(program, {}, environment));
        return started_.back();
    }

    // The tracker's environment: its own configuration, data and trace in the test's folder.
    std::map<std::string, std::string> trackerEnvironment()
    {
        return { { "XDG_CONFIG_HOME", (folder_ / "config").string() },
            { "VARDEL_DATA_DIR", (folder_ / "data").string() }, { "VARDEL_TRACE", tracePath().string() } };
    }

    void writeDefaults(const nlohmann::json& defaults)
    {
        std::filesystem::create_directories(folder_ / "config/vardel");
        std::ofstream(folder_ / "config/vardel/defaults.json") << defaults.dump();
    }

    std::filesystem::path tracePath() const { return folder_ / "trace.jsonl"; }

    Trace waitForTrace(const std::function<bool(const Trace&)>& condition, std::chrono::seconds timeout = 30s)
    {
        Trace trace;
        bool met = waitUntil(
            [&] {
                trace = readTrace(tracePath());
                return condition(trace);
            },
            timeout, 100ms);
        EXPECT_TRUE(met) << "the trace did not get there in " << timeout.count() << " s: " << nlohmann::json(trace);
        return trace;
    }

    HeadlessDesktop* desktop_ = nullptr;
    std::filesystem::path folder_;
    std::vector<pid_t> started_;
    std::vector<pid_t> foreign_;
};

// The update replaces the file the way package managers do (a new file renamed over the old one);
// the tracker notices, stores what it holds when the relaunch script ends it, and the script starts
// the new file by its literal path.
TEST_F(TrackerLifecycleEndToEndTest, ReplacedExecutableIsRelaunchedAfterTheOldOneStoredItsData)
{
    auto prefix = folder_ / "Vardel's Tracker $HOME";
    desktop().run("cmake", { "--install", VARDEL_BUILD_DIR, "--prefix", prefix.string() });
    auto installed = prefix / "bin/vardel-tracker";
    // Something in front to record.
    pid_t application = start(VARDEL_CONTRACT_APPLICATION_PATH);
    desktop().waitForActiveWindow(application, "Contract Window");
    writeDefaults({ { "LinuxDesktop_relaunchDelay", 3 } });
    pid_t old = start(installed.string(), trackerEnvironment());
    waitForTrace([](const Trace& trace) { return lastEvent(trace, "sample").has_value(); });

    auto replacement = prefix / "bin/.vardel-tracker.new";
    std::filesystem::copy_file(VARDEL_TRACKER_PATH, replacement);
    std::filesystem::rename(replacement, installed);

    // The new tracker writes a trace of its own to the same file, so the old one's end is read first.
    auto oldEnd
        = lastEvent(waitForTrace([](const Trace& trace) { return lastEvent(trace, "exit").has_value(); }, 40s), "exit");
    ASSERT_TRUE(oldEnd);
    EXPECT_EQ((*oldEnd)["reason"], "signal 15");
    EXPECT_EQ((*oldEnd)["status"], 0);
    ::setenv("VARDEL_DATA_DIR", (folder_ / "data").c_str(), 1);
    auto report = nlohmann::json::parse(desktop().run((prefix / "bin/vardel").string(), { "report", "--json" }));
    EXPECT_FALSE(report["timeline"].empty()) << report.dump();

    std::vector<pid_t> relaunched;
    ASSERT_TRUE(waitUntil(
        [&] {
            relaunched = processesOf(installed);
            std::erase(relaunched, old);
            return !relaunched.empty();
        },
        20s));
    foreign_ = relaunched;
    EXPECT_EQ(relaunched.size(), 1u);
    waitForTrace([](const Trace& trace) { return lastEvent(trace, "sample") && !lastEvent(trace, "exit"); });
}

// After the first-run guide the tracker asks whether to launch at login; the user ticks "do not ask
// again" and accepts: the autostart entry starts this tracker, the answer is kept, and sampling
// goes on.
TEST_F(TrackerLifecycleEndToEndTest, LaunchAtLoginQuestionIsADialogThatWritesTheAutostartEntry)
{
    std::filesystem::create_directories(folder_ / "config/vardel");
    std::ofstream(folder_ / "config/vardel/preferences.json") << R"({"onboardingHasCompleted": true})";
    start(VARDEL_TRACKER_PATH, trackerEnvironment());

    atspi::connect();
    auto box = atspi::waitForElement("vardel-dialog", ATSPI_ROLE_CHECK_BOX, "Do not show this message again");
    auto accept = atspi::waitForElement("vardel-dialog", ATSPI_ROLE_PUSH_BUTTON, "Launch at Login");
    ASSERT_TRUE(box && accept);
    EXPECT_TRUE(atspi::waitForElement("vardel-dialog", ATSPI_ROLE_PUSH_BUTTON, "Don't start automatically"));
    EXPECT_TRUE(atspi::press(box.get()));
    EXPECT_TRUE(atspi::press(accept.get()));

    auto entry = folder_ / "config/autostart/vardel-tracker.desktop";
    ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(entry); }, 20s));
    std::ifstream entryFile(entry);
    std::string entryText((std::istreambuf_iterator<char>(entryFile)), std::istreambuf_iterator<char>());
    EXPECT_NE(entryText.find("\nExec=" + std::string(VARDEL_TRACKER_PATH) + "\n"), std::string::npos) << entryText;
    waitForTrace([](const Trace& trace) { return lastEvent(trace, "sample").has_value(); });
    auto defaults = nlohmann::json::parse(std::ifstream(folder_ / "config/vardel/defaults.json"));
    EXPECT_EQ(defaults["dontAskToLaunchAtLogin"], true);
}

// Under the user unit (INVOCATION_ID set by systemd), the start after a crash is the crash
// recovery; a start after a run that ended by itself is not.
TEST_F(TrackerLifecycleEndToEndTest, StartUnderTheUnitAfterACrashIsTheCrashRecovery)
{
    auto environment = trackerEnvironment();
    environment.emplace("INVOCATION_ID", "0123456789abcdef0123456789abcdef");
    auto recoveries = [](const Trace& trace) {
        return std::count_if(trace.begin(), trace.end(), [](const auto& event) {
            return event["event"] == "analytics"
                && event["name"] == "VDHelperAppDelegate.awakeFromNib.fromCrashRecovery";
        });
    };

    pid_t tracker = start(VARDEL_TRACKER_PATH, environment);
    waitForTrace([](const Trace& trace) { return lastEvent(trace, "sample").has_value(); });
    desktop().stop(tracker);
    std::erase(started_, tracker);
    // Each run's trace starts empty, so that its first sample is its own.
    std::filesystem::remove(tracePath());
    tracker = start(VARDEL_TRACKER_PATH, environment);
    auto afterCleanEnd = waitForTrace([](const Trace& trace) { return lastEvent(trace, "sample").has_value(); });
    EXPECT_EQ(recoveries(afterCleanEnd), 0);

    ::kill(tracker, SIGKILL);
    desktop().stop(tracker);
    std::erase(started_, tracker);
    std::filesystem::remove(tracePath());
    start(VARDEL_TRACKER_PATH, environment);
    waitForTrace([&](const Trace& trace) { return recoveries(trace) == 1; });
}

// The system line of the assertion dump names the distribution and the kernel.
TEST_F(TrackerLifecycleEndToEndTest, DumpNamesTheDistributionAndKernel)
{
    ::setenv("VARDEL_DATA_DIR", (folder_ / "data").c_str(), 1);
    ::unsetenv("VARDEL_TRACE");
    std::string dump = desktop().run(VARDEL_TRACKER_PATH, { "--dumpPMAssertions" });
    std::ifstream osRelease("/etc/os-release");
    std::string prettyName;
    for (std::string line; std::getline(osRelease, line);) {
        if (line.starts_with("PRETTY_NAME="))
            prettyName = line.substr(line.find('"') + 1, line.rfind('"') - line.find('"') - 1);
    }
    ASSERT_FALSE(prettyName.empty());
    EXPECT_NE(dump.find("\nLinux Distribution: " + prettyName + ", Kernel: Linux "), std::string::npos) << dump;
    EXPECT_EQ(dump.find("macOS"), std::string::npos) << dump;
}

} // namespace

} // namespace vardel::testing
