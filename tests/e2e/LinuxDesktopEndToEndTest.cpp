// The tracker on a real, headless X11 desktop with real applications: what its trace records while
// each is frontmost.

#include "TrackerOnDesktopTest.h"

namespace vardel::testing {

namespace {

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

// The tracker follows a window's page from one sample to the next instead of searching for it; a
// page in another tab or window, or a browser that quit, must still show in the samples.
TEST_F(LinuxDesktopEndToEndTest, ChromiumTabsWindowsAndQuittingReachTheSamples)
{
    auto lastChromiumPage = [](const Trace& trace) {
        auto last = activities(trace);
        return last.empty() || last.back()["bundleIdentifier"] != "org.chromium.Chromium"
            ? nlohmann::json()
            : last.back()["details"]["documentPath"];
    };
    startContractApplication();
    pid_t chromium = startChromium();
    desktop().waitForActiveWindow(chromium, pageTitle, 30);
    std::string firstWindow = desktop().activeWindowId();
    startTracker();
    waitForTrace([&](const Trace& trace) { return lastChromiumPage(trace) == pageUrl(); });

    // Another tab in the same window.
    startChromium(otherPageUrl());
    waitForTrace([&](const Trace& trace) { return lastChromiumPage(trace) == otherPageUrl(); });

    // Another window, showing the first page again.
    startChromium(pageUrl(), { "--new-window" });
    waitForTrace([&](const Trace& trace) { return lastChromiumPage(trace) == pageUrl(); });
    EXPECT_NE(desktop().activeWindowId(), firstWindow);

    // Back to the first window, which still shows the other tab.
    desktop().run("wmctrl", { "-i", "-a", firstWindow });
    waitForTrace([&](const Trace& trace) { return lastChromiumPage(trace) == otherPageUrl(); });

    stop(chromium);
    desktop().run("wmctrl", { "-a", "Contract Window" });
    waitForTrace([](const Trace& trace) {
        auto last = activities(trace);
        return !last.empty() && last.back()["details"]["windowTitle"] == "Contract Window";
    });
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
