#pragma once

// The tracker on a real, headless X11 desktop with real applications, and its trace.

#include "e2e/SharedDesktop.h"
#include "support/HeadlessDesktop.h"
#include "support/LoopbackPorts.h"
#include "support/TemporaryFolder.h"
#include "support/TestAudioServer.h"
#include "support/TraceFile.h"
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

using namespace std::chrono_literals;

inline constexpr const char* pageTitle = "Vardel Test Page";
inline constexpr const char* pageHeading = "Tracked Heading";
inline constexpr const char* otherPageTitle = "Vardel Other Page";

inline Trace activities(const Trace& trace)
{
    Trace found;
    for (const auto& event : trace) {
        if (event["event"] == "sample" && event["activity"].is_object())
            found.push_back(event["activity"]);
    }
    return found;
}

inline std::optional<nlohmann::json> lastActivityOf(const Trace& trace, const std::string& bundleIdentifier)
{
    auto recorded = activities(trace);
    for (auto activity = recorded.rbegin(); activity != recorded.rend(); ++activity) {
        if ((*activity)["bundleIdentifier"] == bundleIdentifier)
            return *activity;
    }
    return std::nullopt;
}

inline size_t samples(const Trace& trace)
{
    return std::count_if(trace.begin(), trace.end(), [](const auto& event) { return event["event"] == "sample"; });
}

inline std::string readText(const std::filesystem::path& path)
{
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

// The page server and the audio server of a suite, on the process's one desktop: making a desktop takes seconds, and no
// test needs a fresh one as long as each stops what it started.
struct SuiteDesktop {
    HeadlessDesktop& desktop = sharedDesktop();
    // Browsers and call applications play and record through it.
    TestAudioServer audio;
    TemporaryFolder site;
    int port = freePort();
    std::string pageUrl = "http://127.0.0.1:" + std::to_string(port) + "/page.html";

    SuiteDesktop()
    {
        std::ofstream(site.path() / "page.html")
            << "<!DOCTYPE html><html><head><title>" << pageTitle << "</title></head><body><h1>" << pageHeading
            << "</h1><p>A paragraph to read.</p><a href=\"/other.html\">Another page</a></body></html>";
        std::ofstream(site.path() / "other.html") << "<!DOCTYPE html><html><head><title>" << otherPageTitle
                                                  << "</title></head><body><p>Another page.</p></body></html>";
        // A call with itself: the microphone goes through a peer connection to the speaker.
        std::ofstream(site.path() / "call.html") << R"(<!DOCTYPE html><html><head><title>Vardel Call</title></head>
<body><h1>Call</h1><audio id="remote" autoplay></audio><script>
(async () => {
  const microphone = await navigator.mediaDevices.getUserMedia({ audio: true, video: false });
  const caller = new RTCPeerConnection(), callee = new RTCPeerConnection();
  caller.onicecandidate = (e) => e.candidate && callee.addIceCandidate(e.candidate);
  callee.onicecandidate = (e) => e.candidate && caller.addIceCandidate(e.candidate);
  callee.ontrack = (e) => { const speaker = document.getElementById("remote"); speaker.srcObject = e.streams[0]; speaker.play(); };
  microphone.getTracks().forEach((track) => caller.addTrack(track, microphone));
  const offer = await caller.createOffer();
  await caller.setLocalDescription(offer);
  await callee.setRemoteDescription(offer);
  const answer = await callee.createAnswer();
  await callee.setLocalDescription(answer);
  await caller.setRemoteDescription(answer);
  document.title = "Vardel Call connected";
})().catch((error) => { document.title = "Vardel Call failed: " + error; });
</script></body></html>)";
        std::filesystem::copy_file(site.path() / "call.html", site.path() / "room.html");
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
    std::string callUrl() { return "http://127.0.0.1:" + std::to_string(suite_->port) + "/call.html"; }
    std::string otherPageUrl() { return "http://127.0.0.1:" + std::to_string(suite_->port) + "/other.html"; }
    TestAudioServer& audio() { return suite_->audio; }

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

    // Microphone requests are granted without asking, and pages may play sound at once. Started again
    // while it runs, Chromium hands the address to the running browser (a tab, or a window with
    // --new-window) and exits.
    pid_t startChromium(const std::string& url = {}, const std::vector<std::string>& more = {})
    {
        std::vector<std::string> arguments { "--no-sandbox", "--no-first-run", "--no-default-browser-check",
            "--disable-background-networking", "--disable-component-update", "--disable-sync", "--disable-gpu",
            "--password-store=basic", "--force-renderer-accessibility", "--use-fake-ui-for-media-stream",
            "--autoplay-policy=no-user-gesture-required",
            "--user-data-dir=" + (folder_ / "chromium-profile").string() };
        arguments.insert(arguments.end(), more.begin(), more.end());
        arguments.push_back(url.empty() ? pageUrl() : url);
        return start("/usr/bin/chromium", arguments);
    }

    pid_t startFirefox(const std::string& profileName, bool privateWindow, const std::string& url = {})
    {
        auto profile = folder_ / profileName;
        std::filesystem::create_directories(profile);
        std::ofstream(profile / "user.js") << "user_pref(\"media.navigator.permission.disabled\", true);\n"
                                              "user_pref(\"media.autoplay.default\", 0);\n";
        std::vector<std::string> arguments { "--no-remote", "--profile", profile.string() };
        if (privateWindow)
            arguments.push_back("--private-window");
        arguments.push_back(url.empty() ? pageUrl() : url);
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

    inline static std::unique_ptr<SuiteDesktop> suite_;
    std::filesystem::path folder_;
    std::vector<pid_t> started_;
    std::filesystem::path tracePath_;
    pid_t tracker_ = 0;
    int runs_ = 0;
};

} // namespace vardel::testing
