// The tracker on a real, headless X11 desktop with real applications: what its trace records while
// each is frontmost.

#include "e2e/SharedDesktop.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <netinet/in.h>
#include <optional>
#include <sstream>
#include <sys/socket.h>
#include <unistd.h>

namespace vardel::testing {

namespace {

using namespace std::chrono_literals;
using Trace = std::vector<nlohmann::json>;

constexpr const char* pageTitle = "Vardel Test Page";
constexpr const char* pageHeading = "Tracked Heading";

int freePort()
{
    int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address);
    socklen_t length = sizeof address;
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
    ::close(socket);
    return ntohs(address.sin_port);
}

bool acceptsConnections(int port)
{
    int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bool connected = ::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    ::close(socket);
    return connected;
}

// The events of the trace so far; a last line the tracker is still writing is left for later.
Trace readTrace(const std::filesystem::path& path)
{
    Trace events;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line) && !file.eof();) {
        if (!line.empty())
            events.push_back(nlohmann::json::parse(line));
    }
    return events;
}

Trace activities(const Trace& trace)
{
    Trace found;
    for (const auto& event : trace) {
        if (event["event"] == "sample" && event["activity"].is_object())
            found.push_back(event["activity"]);
    }
    return found;
}

std::optional<nlohmann::json> lastActivityOf(const Trace& trace, const std::string& bundleIdentifier)
{
    auto recorded = activities(trace);
    for (auto activity = recorded.rbegin(); activity != recorded.rend(); ++activity) {
        if ((*activity)["bundleIdentifier"] == bundleIdentifier)
            return *activity;
    }
    return std::nullopt;
}

size_t samples(const Trace& trace)
{
    return std::count_if(trace.begin(), trace.end(), [](const auto& event) { return event["event"] == "sample"; });
}

std::string readText(const std::filesystem::path& path)
{
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

// The page server for these tests, on the suite's desktop.
struct SuiteDesktop {
    HeadlessDesktop& desktop = sharedDesktop();
    TemporaryFolder site;
    int port = freePort();
    std::string pageUrl = "http://127.0.0.1:" + std::to_string(port) + "/page.html";

    SuiteDesktop()
    {
        std::ofstream(site.path() / "page.html")
            << "<!DOCTYPE html><html><head><title>" << pageTitle << "</title></head><body><h1>" << pageHeading
            << "</h1><p>A paragraph to read.</p><a href=\"/other.html\">Another page</a></body></html>";
        desktop.start("python3",
            { "-m", "http.server", std::to_string(port), "--bind", "127.0.0.1", "--directory", site.path().string() });
        if (!waitUntil([this] { return acceptsConnections(port); }, 10s))
            throw HeadlessDesktopError("the page server did not start");
    }
};

class LinuxDesktopEndToEndTest : public ::testing::Test {
protected:
    static void TearDownTestSuite() { suite_.reset(); }

    void SetUp() override
    {
        if (!suite_)
            suite_ = std::make_unique<SuiteDesktop>();
        folder_ = desktop().scratchFolder() / ::testing::UnitTest::GetInstance()->current_test_info()->name();
        std::filesystem::create_directories(folder_);
    }

    void TearDown() override
    {
        // Without a desktop, SetUp failed and started nothing.
        if (!suite_)
            return;
        while (!started_.empty())
            stop(started_.back());
        std::filesystem::remove(desktopEntry());
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    HeadlessDesktop& desktop() { return suite_->desktop; }
    const std::string& pageUrl() { return suite_->pageUrl; }

    // Where a desktop entry for the contract application goes; the test that writes one has it
    // removed at its end.
    std::filesystem::path desktopEntry()
    {
        return desktop().scratchFolder() / "home/.local/share/applications/vardel-contract.desktop";
    }

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

    pid_t startChromium()
    {
        return start("/usr/bin/chromium",
            { "--no-sandbox", "--no-first-run", "--no-default-browser-check", "--disable-background-networking",
                "--disable-component-update", "--disable-sync", "--disable-gpu", "--password-store=basic",
                "--force-renderer-accessibility", "--user-data-dir=" + (folder_ / "chromium-profile").string(),
                pageUrl() });
    }

    pid_t startFirefox(const std::string& profileName, bool privateWindow)
    {
        auto profile = folder_ / profileName;
        std::filesystem::create_directories(profile);
        std::vector<std::string> arguments { "--no-remote", "--profile", profile.string() };
        if (privateWindow)
            arguments.push_back("--private-window");
        arguments.push_back(pageUrl());
        return start("/usr/bin/firefox-esr", arguments, { { "MOZ_CRASHREPORTER_DISABLE", "1" } });
    }

    pid_t startContractApplication()
    {
        pid_t application = start(VARDEL_CONTRACT_APPLICATION_PATH, {});
        desktop().waitForActiveWindow(application, "Contract Window");
        return application;
    }

    // Starts the tracker with a trace of its own, which waitForTrace reads while it runs.
    void startTracker(std::map<std::string, std::string> environment = {})
    {
        tracePath_ = folder_ / ("trace-" + std::to_string(++runs_) + ".jsonl");
        environment.emplace("VARDEL_TRACE", tracePath_.string());
        environment.emplace("VARDEL_DATA_DIR", (folder_ / "data").string());
        tracker_ = start(VARDEL_TRACKER_PATH, {}, environment);
    }

    // Reads the running tracker's trace until it meets the condition, and returns it; the test fails
    // when it does not within the time-out.
    Trace waitForTrace(const std::function<bool(const Trace&)>& condition, std::chrono::seconds timeout = 30s)
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

    Trace stopTracker()
    {
        stop(tracker_);
        return readTrace(tracePath_);
    }

    // The tracker's standard output for a command-line mode.
    std::string runTracker(const std::vector<std::string>& arguments)
    {
        ::setenv("VARDEL_DATA_DIR", (folder_ / "data").c_str(), 1);
        ::unsetenv("VARDEL_TRACE");
        return desktop().run(VARDEL_TRACKER_PATH, arguments);
    }

    static std::unique_ptr<SuiteDesktop> suite_;
    std::filesystem::path folder_;
    std::vector<pid_t> started_;
    std::filesystem::path tracePath_;
    pid_t tracker_ = 0;
    int runs_ = 0;
};

std::unique_ptr<SuiteDesktop> LinuxDesktopEndToEndTest::suite_;

TEST_F(LinuxDesktopEndToEndTest, ChromiumPageTitleAddressFullScreenAndDump)
{
    pid_t chromium = startChromium();
    desktop().waitForActiveWindow(chromium, pageTitle, 30);
    std::string window = desktop().activeWindowId();

    startTracker();
    waitForTrace([](const Trace& trace) { return lastActivityOf(trace, "org.chromium.Chromium").has_value(); });
    desktop().run("wmctrl", { "-i", "-r", window, "-b", "add,fullscreen" });
    // The page address can reach the accessibility tree a while after the window.
    waitForTrace([](const Trace& trace) {
        auto last = lastActivityOf(trace, "org.chromium.Chromium");
        return last && (*last)["isFullscreen"] == true && (*last)["details"]["documentPath"].is_string();
    });
    auto trace = stopTracker();

    auto first = activities(trace);
    ASSERT_FALSE(first.empty());
    EXPECT_EQ(first.front()["bundleIdentifier"], "org.chromium.Chromium");
    EXPECT_EQ(first.front()["isFullscreen"], false);
    auto last = lastActivityOf(trace, "org.chromium.Chromium").value_or(nlohmann::json::object());
    EXPECT_EQ(last["pid"], chromium);
    EXPECT_NE(last["details"]["windowTitle"].get<std::string>().find(pageTitle), std::string::npos);
    // The page address is the window's document; Chromium's extractor records no page title.
    EXPECT_EQ(last["details"]["documentPath"], pageUrl());
    EXPECT_EQ(last["isFullscreen"], true);

    std::string dump = runTracker({ "--dumpApplicationWindows", "org.chromium.Chromium" });
    EXPECT_NE(dump.find(pageHeading), std::string::npos) << dump;
}

TEST_F(LinuxDesktopEndToEndTest, FirefoxPageAndPrivateWindow)
{
    // The page's address and title reach the accessibility tree a while after the window, one after
    // the other.
    auto pageRead = [](const Trace& trace) {
        auto last = lastActivityOf(trace, "org.mozilla.firefox");
        return last && (*last)["details"]["documentPath"].is_string()
            && (*last)["details"]["documentTitle"].is_string();
    };

    pid_t firefox = startFirefox("firefox-profile", false);
    desktop().waitForActiveWindow(firefox, pageTitle, 40);
    startTracker();
    waitForTrace(pageRead);
    auto last = lastActivityOf(stopTracker(), "org.mozilla.firefox").value_or(nlohmann::json::object());
    EXPECT_NE(last["details"]["windowTitle"].get<std::string>().find(pageTitle), std::string::npos);
    EXPECT_EQ(last["details"]["documentPath"], pageUrl());
    EXPECT_EQ(last["details"]["documentTitle"], std::string(pageTitle));
    EXPECT_EQ(last["details"]["isPrivate"], false);
    stop(firefox);

    pid_t privateFirefox = startFirefox("private-profile", true);
    desktop().waitForActiveWindow(privateFirefox, "Private Browsing", 40);
    startTracker();
    waitForTrace(pageRead);
    auto privateActivity = lastActivityOf(stopTracker(), "org.mozilla.firefox").value_or(nlohmann::json::object());
    EXPECT_EQ(privateActivity["details"]["isPrivate"], true);
    EXPECT_EQ(privateActivity["details"]["documentPath"], pageUrl());
}

TEST_F(LinuxDesktopEndToEndTest, GtkApplicationByItsDesktopEntry)
{
    std::filesystem::create_directories(desktopEntry().parent_path());
    std::ofstream(desktopEntry()) << "[Desktop Entry]\nType=Application\nName=Contract Application\nExec="
                                  << VARDEL_CONTRACT_APPLICATION_PATH
                                  << "\nStartupWMClass=Vardel-contract-application\n";
    startContractApplication();

    startTracker();
    waitForTrace([](const Trace& trace) {
        auto last = lastActivityOf(trace, "vardel-contract");
        return last && !(*last)["accessibilityWindows"].empty();
    });
    auto last = lastActivityOf(stopTracker(), "vardel-contract").value_or(nlohmann::json::object());
    EXPECT_EQ(last["localizedName"], "Contract Application");
    EXPECT_EQ(last["executablePath"], VARDEL_CONTRACT_APPLICATION_PATH);
    EXPECT_EQ(last["details"]["windowTitle"], "Contract Window");
    EXPECT_EQ(last["accessibilityWindows"].size(), 1u);
}

TEST_F(LinuxDesktopEndToEndTest, FrozenApplicationDoesNotStallSamples)
{
    pid_t application = startContractApplication();
    ::kill(application, SIGSTOP);
    startTracker();
    waitForTrace([](const Trace& trace) { return samples(trace) >= 5; }, 40s);
    auto trace = stopTracker();
    ::kill(application, SIGCONT);

    std::vector<double> times;
    for (const auto& event : trace) {
        if (event["event"] == "sample")
            times.push_back(event["t"].get<double>());
    }
    ASSERT_GE(times.size(), 5u) << nlohmann::json(trace).dump();
    // One sample a second, each costing at most the 2-second messaging time-out.
    for (size_t index = 1; index < times.size(); ++index)
        EXPECT_LT(times[index] - times[index - 1], 1.0 + 2.0 + 0.5);
    // The title still comes from X11.
    EXPECT_EQ(activities(trace).back()["details"]["windowTitle"], "Contract Window");
}

TEST_F(LinuxDesktopEndToEndTest, WithoutAccessibilityBusTitlesComeFromX11)
{
    startContractApplication();
    // Every program on the desktop writes its errors to the one log; this test reads what the
    // tracker adds.
    auto errorsLog = desktop().scratchFolder() / "errors.log";
    size_t logged = readText(errorsLog).size();
    auto missingBus = "unix:path=" + (folder_ / "no-accessibility-bus").string();
    startTracker({ { "AT_SPI_BUS_ADDRESS", missingBus } });
    // Several samples, each of which could warn again.
    waitForTrace([](const Trace& trace) { return activities(trace).size() >= 3; });
    auto recorded = activities(stopTracker());

    ASSERT_GE(recorded.size(), 3u);
    EXPECT_EQ(recorded.back()["details"]["windowTitle"], "Contract Window");
    EXPECT_EQ(recorded.back()["accessibilityWindows"].size(), 0u);
    std::string log = readText(errorsLog).substr(logged);
    constexpr std::string_view warning = "The accessibility bus (AT-SPI) is not available";
    auto first = log.find(warning);
    ASSERT_NE(first, std::string::npos) << log;
    EXPECT_EQ(log.find(warning, first + 1), std::string::npos) << "warned more than once:\n" << log;
}

} // namespace

} // namespace vardel::testing
