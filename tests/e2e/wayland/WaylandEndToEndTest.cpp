// The tracker in headless Wayland sessions with real applications on Wayland: what its trace
// records while each is frontmost.

#include "support/HeadlessWaylandDesktop.h"
#include "support/LoopbackPorts.h"
#include "support/TraceFile.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <arpa/inet.h>
#include <csignal>
#include <fstream>
#include <functional>
#include <memory>
#include <netinet/in.h>
#include <optional>
#include <sstream>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vardel::testing {

namespace {

using namespace std::chrono_literals;

constexpr const char* pageTitle = "Vardel Wayland Page";
constexpr const char* contractAppId = "vardel-contract-application";
// A Wayland program with no accessibility tree at all.
constexpr const char* terminalAppId = "org.freedesktop.weston.wayland-terminal";

std::optional<nlohmann::json> lastActivity(const Trace& trace)
{
    for (auto event = trace.rbegin(); event != trace.rend(); ++event) {
        if ((*event)["event"] == "sample")
            return (*event)["activity"].is_object() ? std::optional(((*event)["activity"])) : std::nullopt;
    }
    return std::nullopt;
}

size_t sampleCount(const Trace& trace)
{
    return static_cast<size_t>(std::count_if(
        trace.begin(), trace.end(), [](const nlohmann::json& event) { return event["event"] == "sample"; }));
}

// The activity of the sample at that index (from 0).
std::optional<nlohmann::json> nthActivity(const Trace& trace, size_t index)
{
    for (const auto& event : trace) {
        if (event["event"] == "sample" && index-- == 0)
            return event["activity"].is_object() ? std::optional(event["activity"]) : std::nullopt;
    }
    return std::nullopt;
}

bool lastActivityIs(const Trace& trace, const std::string& bundleIdentifier, const std::string& title)
{
    auto last = lastActivity(trace);
    return last && (*last)["bundleIdentifier"] == bundleIdentifier && (*last)["details"]["windowTitle"].is_string()
        && (*last)["details"]["windowTitle"].get<std::string>().find(title) != std::string::npos;
}

// The compositor's view: whether a window with that app id is mapped and its title contains the text.
bool swayShows(HeadlessWaylandDesktop& desktop, const std::string& appId, const std::string& title)
{
    std::function<bool(const nlohmann::json&)> search = [&](const nlohmann::json& node) {
        if (node.value("app_id", "") == appId && node.value("name", "").find(title) != std::string::npos)
            return true;
        for (const char* children : { "nodes", "floating_nodes" }) {
            for (const auto& child : node.value(children, nlohmann::json::array())) {
                if (search(child))
                    return true;
            }
        }
        return false;
    };
    try {
        return search(nlohmann::json::parse(desktop.run("swaymsg", { "-r", "-t", "get_tree" })));
    } catch (const std::exception&) {
        return false;
    }
}

// One session, one page server and one Firefox for a whole suite: Firefox takes several seconds to
// start on Wayland.
struct SessionSuite {
    HeadlessWaylandDesktop desktop;
    std::filesystem::path site = desktop.makeFolder(desktop.scratchFolder() / "site");
    int port = freePort();
    std::string pageUrl = "http://127.0.0.1:" + std::to_string(port) + "/page.html";
    pid_t firefox = 0;

    explicit SessionSuite(WaylandCompositor compositor)
        : desktop(compositor)
    {
        std::ofstream(site / "page.html") << "<!DOCTYPE html><html><head><title>" << pageTitle
                                          << "</title></head><body><h1>Wayland</h1><p>A paragraph.</p></body></html>";
        desktop.start("/usr/bin/python3",
            { "-m", "http.server", std::to_string(port), "--bind", "127.0.0.1", "--directory", site.string() });
        if (!waitUntil([this] { return acceptsConnections(port); }, 10s))
            throw HeadlessDesktopError("the page server did not start");
    }
};

// The fixture of one compositor's suite; each suite makes its session once.
template<WaylandCompositor compositor> class WaylandSessionTest : public ::testing::Test {
protected:
    static void TearDownTestSuite() { suite_.reset(); }

    void SetUp() override
    {
        if (!suite_)
            suite_ = std::make_unique<SessionSuite>(compositor);
        folder_ = desktop().makeFolder(
            desktop().scratchFolder() / ::testing::UnitTest::GetInstance()->current_test_info()->name());
    }

    void TearDown() override
    {
        if (!suite_)
            return;
        while (!started_.empty())
            stop(started_.back());
    }

    HeadlessWaylandDesktop& desktop() { return suite_->desktop; }

    pid_t start(const std::string& program, const std::vector<std::string>& arguments,
        const std::map<std::string, std::string>& environment = {})
    {
        pid_t pid = desktop().start(program, arguments, environment);
        started_.push_back(pid);
        return pid;
    }

    void stop(pid_t pid)
    {
        desktop().stop(pid);
        std::erase(started_, pid);
    }

    void waitForWindow(const std::string& appId, const std::string& title, std::chrono::seconds timeout = 20s)
    {
        ASSERT_TRUE(waitUntil([&] { return swayShows(desktop(), appId, title); }, timeout, 200ms))
            << "sway shows no " << appId << " window titled '" << title << "'";
    }

    void focus(const std::string& appId) { desktop().run("swaymsg", { "[app_id=\"" + appId + "\"]", "focus" }); }

    void startTracker()
    {
        tracePath_ = folder_ / ("trace-" + std::to_string(++runs_) + ".jsonl");
        tracker_ = start(VARDEL_TRACKER_PATH, {},
            { { "VARDEL_TRACE", tracePath_.string() }, { "VARDEL_DATA_DIR", (folder_ / "data").string() } });
    }

    Trace waitForTrace(const std::function<bool(const Trace&)>& condition, std::chrono::seconds timeout = 20s)
    {
        Trace trace;
        bool met = waitUntil(
            [&] {
                trace = readTrace(tracePath_);
                return condition(trace);
            },
            timeout, 200ms);
        EXPECT_TRUE(met) << "the trace did not get there in " << timeout.count() << " s: " << nlohmann::json(trace);
        return trace;
    }

    // Firefox on Wayland with the suite's page, started once per suite.
    void startFirefox()
    {
        if (!suite_->firefox) {
            auto profile = desktop().makeFolder(desktop().scratchFolder() / "firefox-profile");
            suite_->firefox = desktop().start("/usr/bin/firefox-esr",
                { "--no-remote", "--profile", profile.string(), suite_->pageUrl },
                { { "MOZ_ENABLE_WAYLAND", "1" }, { "MOZ_CRASHREPORTER_DISABLE", "1" }, { "GDK_BACKEND", "wayland" } });
        }
    }

    // Firefox's last activity once it shows the page's address and title.
    nlohmann::json waitForFirefoxPage()
    {
        auto trace = waitForTrace(
            [](const Trace& trace) {
                auto last = lastActivity(trace);
                return last && (*last)["bundleIdentifier"] == "org.mozilla.firefox"
                    && (*last)["details"]["documentPath"].is_string()
                    && (*last)["details"]["documentTitle"].is_string();
            },
            60s);
        return lastActivity(trace).value_or(nlohmann::json::object());
    }

    void expectPageRecorded(const nlohmann::json& activity)
    {
        EXPECT_EQ(activity["pid"], suite_->firefox);
        EXPECT_NE(activity["details"]["windowTitle"].get<std::string>().find(pageTitle), std::string::npos) << activity;
        EXPECT_EQ(activity["details"]["documentPath"], suite_->pageUrl);
        EXPECT_EQ(activity["details"]["documentTitle"], std::string(pageTitle));
    }

    static std::unique_ptr<SessionSuite> suite_;
    std::filesystem::path folder_;
    std::vector<pid_t> started_;
    std::filesystem::path tracePath_;
    pid_t tracker_ = 0;
    int runs_ = 0;
};

template<WaylandCompositor compositor> std::unique_ptr<SessionSuite> WaylandSessionTest<compositor>::suite_;

// sway offers wlr-foreign-toplevel-management: the compositor says which window is active.
using SwayEndToEndTest = WaylandSessionTest<WaylandCompositor::sway>;
// KWin gives its window list to permitted programs only: the accessibility bus's active window
// stands in.
using KWinEndToEndTest = WaylandSessionTest<WaylandCompositor::kwin>;

TEST_F(SwayEndToEndTest, FocusFullScreenAndAnApplicationWithoutAccessibility)
{
    pid_t contract = start(VARDEL_CONTRACT_APPLICATION_PATH, {}, { { "GDK_BACKEND", "wayland" } });
    waitForWindow(contractAppId, "Contract Window");
    start("weston-terminal", {});
    waitForWindow(terminalAppId, "");
    focus(contractAppId);

    startTracker();
    auto trace = waitForTrace([](const Trace& trace) {
        auto last = lastActivity(trace);
        return lastActivityIs(trace, contractAppId, "Contract Window") && !(*last)["accessibilityWindows"].empty();
    });
    auto contractActivity = lastActivity(trace).value_or(nlohmann::json::object());
    // The process comes from the accessibility bus, which has an application with that window.
    EXPECT_EQ(contractActivity["pid"], contract);
    EXPECT_EQ(contractActivity["isFullscreen"], false);

    focus(terminalAppId);
    // A sample written since may have started before the switch; the one after it did not.
    size_t switchedBefore = sampleCount(readTrace(tracePath_)) + 1;
    trace = waitForTrace([&](const Trace& trace) { return sampleCount(trace) > switchedBefore; });
    auto terminalActivity = nthActivity(trace, switchedBefore).value_or(nlohmann::json::object());
    EXPECT_EQ(terminalActivity["bundleIdentifier"], terminalAppId) << terminalActivity;
    EXPECT_FALSE(terminalActivity["details"]["windowTitle"].get<std::string>().empty()) << terminalActivity;
    EXPECT_EQ(terminalActivity["accessibilityWindows"].size(), 0u);

    focus(contractAppId);
    desktop().run("swaymsg", { "fullscreen", "enable" });
    trace = waitForTrace([](const Trace& trace) {
        auto last = lastActivity(trace);
        return lastActivityIs(trace, contractAppId, "Contract Window") && (*last)["isFullscreen"] == true;
    });
    stop(tracker_);
}

TEST_F(SwayEndToEndTest, FirefoxPageAddressAndTitle)
{
    startFirefox();
    waitForWindow("firefox-esr", pageTitle, 60s);
    focus("firefox-esr");
    startTracker();
    auto activity = waitForFirefoxPage();
    stop(tracker_);
    expectPageRecorded(activity);
}

TEST_F(SwayEndToEndTest, CompositorThatGoesAwayLeavesNoActivityAndNoCrash)
{
    // A session of this test's own, whose compositor it stops.
    HeadlessWaylandDesktop session(WaylandCompositor::sway);
    auto folder = session.makeFolder(session.scratchFolder() / "tracker");
    tracePath_ = folder / "trace.jsonl";
    session.start(VARDEL_CONTRACT_APPLICATION_PATH, {}, { { "GDK_BACKEND", "wayland" } });
    pid_t tracker = session.start(VARDEL_TRACKER_PATH, {},
        { { "VARDEL_TRACE", tracePath_.string() }, { "VARDEL_DATA_DIR", (folder / "data").string() } });
    waitForTrace([](const Trace& trace) { return lastActivityIs(trace, contractAppId, "Contract Window"); });

    session.stop(session.compositor());
    auto samplesAfterLoss = [](const Trace& trace) {
        auto lost = std::find_if(trace.begin(), trace.end(), [](const nlohmann::json& event) {
            return event["event"] == "log"
                && event["message"].get<std::string>().find("closed the connection") != std::string::npos;
        });
        return lost == trace.end() ? 0 : std::count_if(lost, trace.end(), [](const nlohmann::json& event) {
            return event["event"] == "sample" && event["activity"].is_null();
        });
    };
    waitForTrace([&](const Trace& trace) { return samplesAfterLoss(trace) >= 2; });
    // Still running: not ended, and left for stop() to collect.
    siginfo_t ended {};
    ::waitid(P_PID, static_cast<id_t>(tracker), &ended, WEXITED | WNOHANG | WNOWAIT);
    EXPECT_EQ(ended.si_pid, 0) << "the tracker ended";
    session.stop(tracker);
    auto trace = readTrace(tracePath_);
    ASSERT_FALSE(trace.empty());
    EXPECT_EQ(trace.back()["event"], "exit");
    EXPECT_EQ(trace.back()["reason"], "signal 15");
}

TEST_F(KWinEndToEndTest, GtkApplicationFirefoxAndBackFromTheAccessibilityBus)
{
    pid_t contract = start(VARDEL_CONTRACT_APPLICATION_PATH, {}, { { "GDK_BACKEND", "wayland" } });
    startTracker();
    auto trace = waitForTrace([](const Trace& trace) {
        auto last = lastActivity(trace);
        return lastActivityIs(trace, contractAppId, "Contract Window") && !(*last)["accessibilityWindows"].empty();
    });
    EXPECT_EQ(lastActivity(trace).value_or(nlohmann::json::object())["pid"], contract);

    // KWin activates a new window, and the one before when it closes.
    startFirefox();
    expectPageRecorded(waitForFirefoxPage());
    desktop().stop(suite_->firefox);
    suite_->firefox = 0;
    waitForTrace([](const Trace& trace) { return lastActivityIs(trace, contractAppId, "Contract Window"); });
    stop(tracker_);
}

} // namespace

} // namespace vardel::testing
