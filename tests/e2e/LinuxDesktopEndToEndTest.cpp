// The tracker on a real, headless X11 desktop with real applications: what its trace records while
// each is frontmost.

#include "support/HeadlessDesktop.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <arpa/inet.h>
#include <chrono>
#include <csignal>
#include <fstream>
#include <map>
#include <netinet/in.h>
#include <sstream>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace vardel::testing {

namespace {

using namespace std::chrono_literals;

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

std::vector<nlohmann::json> readTrace(const std::filesystem::path& path)
{
    std::vector<nlohmann::json> events;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (!line.empty())
            events.push_back(nlohmann::json::parse(line));
    }
    return events;
}

std::vector<nlohmann::json> activities(const std::vector<nlohmann::json>& trace)
{
    std::vector<nlohmann::json> found;
    for (const auto& event : trace) {
        if (event["event"] == "sample" && event["activity"].is_object())
            found.push_back(event["activity"]);
    }
    return found;
}

class LinuxDesktopEndToEndTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::filesystem::create_directories(site_.path());
        std::ofstream(site_.path() / "page.html")
            << "<!DOCTYPE html><html><head><title>" << pageTitle << "</title></head><body><h1>" << pageHeading
            << "</h1><p>A paragraph to read.</p><a href=\"/other.html\">Another page</a></body></html>";
        port_ = freePort();
        desktop_.start("python3",
            { "-m", "http.server", std::to_string(port_), "--bind", "127.0.0.1", "--directory",
                site_.path().string() });
        pageUrl_ = "http://127.0.0.1:" + std::to_string(port_) + "/page.html";
        waitForServer();
    }

    void waitForServer()
    {
        for (int attempt = 0; attempt < 100; ++attempt) {
            if (std::system(
                    ("python3 -c \"import urllib.request; urllib.request.urlopen('" + pageUrl_ + "')\" 2>/dev/null")
                        .c_str())
                == 0)
                return;
            std::this_thread::sleep_for(100ms);
        }
        throw HeadlessDesktopError("the page server did not start");
    }

    pid_t startChromium()
    {
        auto profile = desktop_.scratchFolder() / "chromium-profile";
        return desktop_.start("/usr/bin/chromium",
            { "--no-sandbox", "--no-first-run", "--no-default-browser-check", "--disable-background-networking",
                "--disable-component-update", "--disable-sync", "--disable-gpu", "--password-store=basic",
                "--force-renderer-accessibility", "--user-data-dir=" + profile.string(), pageUrl_ });
    }

    pid_t startFirefox(const std::string& profileName, bool privateWindow)
    {
        auto profile = desktop_.scratchFolder() / profileName;
        std::filesystem::create_directories(profile);
        std::vector<std::string> arguments { "--no-remote", "--profile", profile.string() };
        if (privateWindow)
            arguments.push_back("--private-window");
        arguments.push_back(pageUrl_);
        return desktop_.start("/usr/bin/firefox-esr", arguments, { { "MOZ_CRASHREPORTER_DISABLE", "1" } });
    }

    // Runs the tracker for that long and returns its trace.
    std::vector<nlohmann::json> track(std::chrono::milliseconds duration, const std::function<void()>& meanwhile = {},
        std::map<std::string, std::string> environment = {})
    {
        auto tracePath = desktop_.scratchFolder() / ("trace-" + std::to_string(++runs_) + ".jsonl");
        environment.emplace("VARDEL_TRACE", tracePath.string());
        environment.emplace("VARDEL_DATA_DIR", (desktop_.scratchFolder() / "data").string());
        pid_t tracker = desktop_.start(VARDEL_TRACKER_PATH, {}, environment);
        if (meanwhile) {
            std::this_thread::sleep_for(duration / 2);
            meanwhile();
            std::this_thread::sleep_for(duration / 2);
        } else {
            std::this_thread::sleep_for(duration);
        }
        desktop_.stop(tracker);
        return readTrace(tracePath);
    }

    // The tracker's standard output for a command-line mode.
    std::string runTracker(const std::vector<std::string>& arguments)
    {
        auto dataFolder = desktop_.scratchFolder() / "data";
        ::setenv("VARDEL_DATA_DIR", dataFolder.c_str(), 1);
        ::unsetenv("VARDEL_TRACE");
        return desktop_.run(VARDEL_TRACKER_PATH, arguments);
    }

    // The last activity recorded for the application, which had time to settle by then.
    nlohmann::json lastActivityOf(const std::vector<nlohmann::json>& trace, const std::string& bundleIdentifier)
    {
        auto recorded = activities(trace);
        for (auto activity = recorded.rbegin(); activity != recorded.rend(); ++activity) {
            if ((*activity)["bundleIdentifier"] == bundleIdentifier)
                return *activity;
        }
        ADD_FAILURE() << "no activity of " << bundleIdentifier << " in " << nlohmann::json(trace).dump();
        return nlohmann::json::object();
    }

    HeadlessDesktop desktop_;
    TemporaryFolder site_;
    int port_ = 0;
    std::string pageUrl_;
    int runs_ = 0;
};

TEST_F(LinuxDesktopEndToEndTest, ChromiumPageTitleAddressFullScreenAndDump)
{
    pid_t chromium = startChromium();
    desktop_.waitForActiveWindow(chromium, pageTitle, 30);
    std::string window = desktop_.activeWindowId();

    auto trace = track(10s, [&] { desktop_.run("wmctrl", { "-i", "-r", window, "-b", "add,fullscreen" }); });
    auto first = activities(trace);
    ASSERT_FALSE(first.empty());
    EXPECT_EQ(first.front()["bundleIdentifier"], "org.chromium.Chromium");
    EXPECT_EQ(first.front()["isFullscreen"], false);
    auto last = lastActivityOf(trace, "org.chromium.Chromium");
    EXPECT_EQ(last["pid"], chromium);
    EXPECT_NE(last["details"]["windowTitle"].get<std::string>().find(pageTitle), std::string::npos);
    // The page address is the window's document; Chromium's extractor records no page title.
    EXPECT_EQ(last["details"]["documentPath"], pageUrl_);
    EXPECT_EQ(last["isFullscreen"], true);

    std::string dump = runTracker({ "--dumpApplicationWindows", "org.chromium.Chromium" });
    EXPECT_NE(dump.find(pageHeading), std::string::npos) << dump;
}

TEST_F(LinuxDesktopEndToEndTest, FirefoxPageAndPrivateWindow)
{
    pid_t firefox = startFirefox("firefox-profile", false);
    desktop_.waitForActiveWindow(firefox, pageTitle, 40);
    auto last = lastActivityOf(track(4s), "org.mozilla.firefox");
    EXPECT_NE(last["details"]["windowTitle"].get<std::string>().find(pageTitle), std::string::npos);
    EXPECT_EQ(last["details"]["documentPath"], pageUrl_);
    EXPECT_EQ(last["details"]["documentTitle"], pageTitle);
    EXPECT_EQ(last["details"]["isPrivate"], false);
    desktop_.stop(firefox);

    pid_t privateFirefox = startFirefox("private-profile", true);
    desktop_.waitForActiveWindow(privateFirefox, "Private Browsing", 40);
    auto privateActivity = lastActivityOf(track(4s), "org.mozilla.firefox");
    EXPECT_EQ(privateActivity["details"]["isPrivate"], true);
    EXPECT_EQ(privateActivity["details"]["documentPath"], pageUrl_);
}

TEST_F(LinuxDesktopEndToEndTest, GtkApplicationByItsDesktopEntry)
{
    auto applications = desktop_.scratchFolder() / "home" / ".local" / "share" / "applications";
    std::filesystem::create_directories(applications);
    std::ofstream(applications / "vardel-contract.desktop")
        << "[Desktop Entry]\nType=Application\nName=Contract Application\nExec=" << VARDEL_CONTRACT_APPLICATION_PATH
        << "\nStartupWMClass=Vardel-contract-application\n";
    pid_t application = desktop_.start(VARDEL_CONTRACT_APPLICATION_PATH, {});
    desktop_.waitForActiveWindow(application, "Contract Window");

    auto last = lastActivityOf(track(3s), "vardel-contract");
    EXPECT_EQ(last["localizedName"], "Contract Application");
    EXPECT_EQ(last["executablePath"], VARDEL_CONTRACT_APPLICATION_PATH);
    EXPECT_EQ(last["details"]["windowTitle"], "Contract Window");
    EXPECT_EQ(last["accessibilityWindows"].size(), 1u);
}

TEST_F(LinuxDesktopEndToEndTest, FrozenApplicationDoesNotStallSamples)
{
    pid_t application = desktop_.start(VARDEL_CONTRACT_APPLICATION_PATH, {});
    desktop_.waitForActiveWindow(application, "Contract Window");
    ::kill(application, SIGSTOP);
    auto trace = track(8s);
    ::kill(application, SIGCONT);

    std::vector<double> times;
    for (const auto& event : trace) {
        if (event["event"] == "sample")
            times.push_back(event["t"].get<double>());
    }
    ASSERT_GE(times.size(), 4u) << nlohmann::json(trace).dump();
    // One sample a second, each costing at most the 2-second messaging time-out.
    for (size_t index = 1; index < times.size(); ++index)
        EXPECT_LT(times[index] - times[index - 1], 1.0 + 2.0 + 0.5);
    // The title still comes from X11.
    EXPECT_EQ(activities(trace).back()["details"]["windowTitle"], "Contract Window");
}

TEST_F(LinuxDesktopEndToEndTest, WithoutAccessibilityBusTitlesComeFromX11)
{
    pid_t application = desktop_.start(VARDEL_CONTRACT_APPLICATION_PATH, {});
    desktop_.waitForActiveWindow(application, "Contract Window");
    auto missingBus = "unix:path=" + (desktop_.scratchFolder() / "no-accessibility-bus").string();
    auto trace = track(3s, {}, { { "AT_SPI_BUS_ADDRESS", missingBus } });

    auto recorded = activities(trace);
    ASSERT_GE(recorded.size(), 2u) << nlohmann::json(trace).dump();
    EXPECT_EQ(recorded.back()["details"]["windowTitle"], "Contract Window");
    EXPECT_EQ(recorded.back()["accessibilityWindows"].size(), 0u);

    std::ifstream errors(desktop_.scratchFolder() / "errors.log");
    std::stringstream text;
    text << errors.rdbuf();
    std::string log = text.str();
    constexpr std::string_view warning = "The accessibility bus (AT-SPI) is not available";
    auto first = log.find(warning);
    ASSERT_NE(first, std::string::npos) << log;
    EXPECT_EQ(log.find(warning, first + 1), std::string::npos) << "warned more than once:\n" << log;
}

} // namespace

} // namespace vardel::testing
