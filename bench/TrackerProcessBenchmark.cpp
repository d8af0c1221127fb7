// The whole tracker process at its natural pace of one sample a second on a headless X11 desktop:
// CPU per sample and resident memory, with an X11 application in front and no accessibility bus,
// then with Chromium in front. Beside it, in the same run, a minimal X11 window watcher doing the
// four property reads a sample needs at least, as the reference.
//
// VARDEL_BENCH_PROCESS_SECONDS sets how long each is measured once settled (default 2 s, which is
// what the test command's run uses; scripts/bench measures a minute).

#include "support/HeadlessDesktop.h"
#include "support/LoopbackPorts.h"
#include "support/TemporaryFolder.h"
#include "support/TraceFile.h"
#include "support/WaitUntil.h"

#include <benchmark/benchmark.h>

#include <arpa/inet.h>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <netinet/in.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace vardel {
namespace {

using namespace std::chrono_literals;

constexpr const char* pageTitle = "Process Benchmark Page";
constexpr uint16_t pagePort = 48125;
constexpr double defaultMeasuredSeconds = 2;
// Samples left to the tracker after its start before measuring: its start-up is not a sample's cost.
constexpr size_t settlingSamples = 2;

double measuredSeconds()
{
    const char* value = std::getenv("VARDEL_BENCH_PROCESS_SECONDS");
    double seconds = 0;
    if (!value || std::from_chars(value, value + std::strlen(value), seconds).ec != std::errc() || seconds <= 0)
        return defaultMeasuredSeconds;
    return seconds;
}

// Seconds on the CPU of all the process's threads, to the nanosecond: /proc/PID/stat's utime and
// stime count whole clock ticks of 10 ms, more than a minute of samples costs.
double cpuSeconds(pid_t pid)
{
    double total = 0;
    std::error_code error;
    for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task", error)) {
        std::ifstream statistics(task.path() / "schedstat");
        uint64_t nanoseconds = 0;
        if (statistics >> nanoseconds)
            total += static_cast<double>(nanoseconds) / 1e9;
    }
    return total;
}

double residentMegabytes(pid_t pid)
{
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:"))
            return std::strtod(line.c_str() + 6, nullptr) / 1024;
    }
    return 0;
}

size_t lineCount(const std::filesystem::path& path)
{
    std::ifstream file(path);
    size_t lines = 0;
    for (std::string line; std::getline(file, line);)
        ++lines;
    return lines;
}

testing::Trace samplesOf(const std::filesystem::path& trace)
{
    testing::Trace samples;
    for (auto& event : testing::readTrace(trace)) {
        if (event["event"] == "sample")
            samples.push_back(std::move(event));
    }
    return samples;
}

// A process's CPU time and its count of samples at one moment.
struct Reading {
    double cpu = 0;
    size_t samples = 0;
};

// Runs the tracker and the reference watcher side by side until the tracker's samples show what is
// in front (`settled`), then measures both for the set time and reports per sample.
void measureBesideReference(benchmark::State& state, testing::HeadlessDesktop& desktop,
    std::map<std::string, std::string> trackerEnvironment, const std::function<bool(const nlohmann::json&)>& settled)
{
    auto folder = desktop.scratchFolder();
    auto trace = folder / "trace.jsonl";
    auto watcherLog = folder / "watcher.log";
    trackerEnvironment.emplace("VARDEL_TRACE", trace.string());
    trackerEnvironment.emplace("VARDEL_DATA_DIR", (folder / "data").string());
    pid_t tracker = desktop.start(VARDEL_TRACKER_PATH, {}, trackerEnvironment);
    pid_t watcher = desktop.start(VARDEL_X11_WATCHER_PATH, { watcherLog.string() });

    testing::Trace samples;
    bool ready = testing::waitUntil(
        [&] {
            samples = samplesOf(trace);
            return samples.size() >= settlingSamples && settled(samples.back()["activity"]);
        },
        60s, 250ms);
    if (!ready) {
        std::string last = samples.empty() ? "no sample" : samples.back().dump();
        state.SkipWithError(("the tracker's samples did not settle; last: " + last).c_str());
        return;
    }
    auto read = [&] {
        return std::pair { Reading { cpuSeconds(tracker), samplesOf(trace).size() },
            Reading { cpuSeconds(watcher), lineCount(watcherLog) } };
    };
    auto [trackerBefore, watcherBefore] = read();
    auto started = std::chrono::steady_clock::now();
    std::chrono::duration<double> duration(measuredSeconds());
    for (auto _ : state) {
        std::this_thread::sleep_for(duration);
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count());
    }
    auto [trackerAfter, watcherAfter] = read();
    samples = samplesOf(trace);
    if (!settled(samples.back()["activity"])) {
        state.SkipWithError(("the tracker lost what is in front: " + samples.back().dump()).c_str());
        return;
    }
    size_t trackerSamples = trackerAfter.samples - trackerBefore.samples;
    size_t watcherSamples = watcherAfter.samples - watcherBefore.samples;
    if (trackerSamples == 0 || watcherSamples == 0) {
        state.SkipWithError("no sample while measuring");
        return;
    }
    double trackerCpu = (trackerAfter.cpu - trackerBefore.cpu) / static_cast<double>(trackerSamples) * 1e3;
    double watcherCpu = (watcherAfter.cpu - watcherBefore.cpu) / static_cast<double>(watcherSamples) * 1e3;
    state.counters["samples"] = static_cast<double>(trackerSamples);
    state.counters["cpuMsPerSample"] = trackerCpu;
    state.counters["rssMB"] = residentMegabytes(tracker);
    state.counters["referenceCpuMsPerSample"] = watcherCpu;
    state.counters["referenceRssMB"] = residentMegabytes(watcher);
    state.counters["cpuRatio"] = watcherCpu > 0 ? trackerCpu / watcherCpu : 0;
}

// An X11 application that is on no accessibility bus in front, and the tracker without one: what
// X11 alone costs.
void measureX11Only(benchmark::State& state)
{
    testing::HeadlessDesktop desktop;
    pid_t front = desktop.start("/usr/bin/xmessage", { "-center", "Process benchmark" });
    // xmessage sets no _NET_WM_PID: the tracker's samples tell when it is in front.
    // An address where no bus listens: the tracker finds no accessibility bus.
    std::map<std::string, std::string> environment { { "AT_SPI_BUS_ADDRESS",
        "unix:path=" + (desktop.scratchFolder() / "no-accessibility-bus").string() } };
    measureBesideReference(state, desktop, environment,
        [front](const nlohmann::json& activity) { return activity.is_object() && activity["pid"] == front; });
}

void measureChromium(benchmark::State& state)
{
    testing::HeadlessDesktop desktop;
    testing::TemporaryFolder site;
    std::string page = "<!DOCTYPE html><html><head><title>" + std::string(pageTitle) + "</title></head><body>";
    for (int paragraph = 0; paragraph < 200; ++paragraph)
        page += "<p>Paragraph " + std::to_string(paragraph) + " <a href=\"#" + std::to_string(paragraph)
            + "\">with a link</a></p>";
    std::ofstream(site.path() / "page.html") << page << "</body></html>";
    desktop.start("python3",
        { "-m", "http.server", std::to_string(pagePort), "--bind", "127.0.0.1", "--directory", site.path().string() });
    if (!testing::waitUntil([] { return testing::acceptsConnections(pagePort); }, 10s)) {
        state.SkipWithError("the page server did not start");
        return;
    }
    pid_t chromium = desktop.start("/usr/bin/chromium",
        { "--no-sandbox", "--no-first-run", "--no-default-browser-check", "--disable-gpu",
            "--disable-background-networking", "--disable-component-update", "--disable-sync", "--password-store=basic",
            "--force-renderer-accessibility", "--user-data-dir=" + (desktop.scratchFolder() / "profile").string(),
            "http://127.0.0.1:" + std::to_string(pagePort) + "/page.html" });
    desktop.waitForActiveWindow(chromium, pageTitle, 30);
    // The page reaches the accessibility bus a while after the window shows; the tracker starts
    // once a dump of Chromium's windows has it.
    bool exposed = testing::waitUntil(
        [&] {
            try {
                return desktop.run(VARDEL_TRACKER_PATH, { "--dumpApplicationWindows", "org.chromium.Chromium" })
                           .find("page.html")
                    != std::string::npos;
            } catch (const testing::HeadlessDesktopError&) {
                return false;
            }
        },
        30s, 500ms);
    if (!exposed) {
        state.SkipWithError("Chromium's page did not reach the accessibility bus");
        return;
    }
    measureBesideReference(state, desktop, {}, [](const nlohmann::json& activity) {
        if (!activity.is_object() || !activity["details"]["documentPath"].is_string())
            return false;
        return activity["details"]["documentPath"].get<std::string>().find("page.html") != std::string::npos;
    });
}

// A desktop that cannot be made, or an application that does not come to the front, ends the
// benchmark with the reason instead of the program.
void reportingDesktopErrors(benchmark::State& state, void (*measure)(benchmark::State&))
{
    try {
        measure(state);
    } catch (const testing::HeadlessDesktopError& error) {
        state.SkipWithError(error.what());
    }
}

void trackerProcessX11Only(benchmark::State& state)
{
    reportingDesktopErrors(state, measureX11Only);
}

void trackerProcessChromium(benchmark::State& state)
{
    reportingDesktopErrors(state, measureChromium);
}

BENCHMARK(trackerProcessX11Only)->Unit(benchmark::kMillisecond)->Iterations(1)->UseManualTime();
BENCHMARK(trackerProcessChromium)->Unit(benchmark::kMillisecond)->Iterations(1)->UseManualTime();

} // namespace
} // namespace vardel
