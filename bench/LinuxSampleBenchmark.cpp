// One whole sample on the real Linux backend: Chromium in front on a headless X11 desktop, and
// Firefox in front in a headless Wayland session (sway), each showing a page of 5,000 elements.
// Reports the time per warm sample and the AT-SPI calls it makes. Chromium's sample is measured
// beside the least a sample of that page can cost, in the same process on the same page, back to
// back and at the tracker's pace of one sample a second (VARDEL_BENCH_PACED_SAMPLES of each, 5
// unless set).

#include "activity/VDInfoExtractor.h"
#include "extractors/BuiltInExtractors.h"
#include "platform/JsonLinesTrace.h"
#include "platform/ProcessWide.h"
#include "platform/linux/ApplicationIdentifierTable.h"
#include "platform/linux/AtspiAccessibility.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/LinuxDesktop.h"
#include "platform/linux/MemoryPreferenceStore.h"
#include "support/HeadlessDesktop.h"
#include "support/HeadlessWaylandDesktop.h"
#include "support/LoopbackPorts.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <arpa/inet.h>
#include <atspi/atspi.h>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <netinet/in.h>
#include <string_view>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vardel {
namespace {

constexpr int pageElements = 5000;
constexpr const char* pageTitle = "Benchmark Page";
constexpr uint16_t pagePort = 48123;
constexpr uint16_t waylandPagePort = 48124;

// Sections of paragraphs, each paragraph holding a link: about pageElements elements.
std::string pageHtml()
{
    std::string html = "<!DOCTYPE html><html><head><title>" + std::string(pageTitle) + "</title></head><body>";
    for (int made = 0; made < pageElements;) {
        html += "<section>";
        for (int paragraph = 0; paragraph < 9; ++paragraph, made += 2)
            html += "<p><a href=\"#" + std::to_string(made) + "\">Link " + std::to_string(made) + "</a></p>";
        html += "</section>";
        ++made;
    }
    return html + "</body></html>";
}

using linux_desktop::GArrayHandle;
using linux_desktop::GHashTableHandle;
using linux_desktop::GMallocHandle;
using linux_desktop::GObjectHandle;

// The least a sample of a browser's page costs, asked of libatspi directly: the application's
// frames in one request, the active one's state, name and pid, the showing web document found with
// one Collection.GetMatches, its address and its title. Counts the calls that may reach the
// application or the bus.
class FloorProbe {
public:
    struct Reading {
        std::string windowTitle;
        pid_t pid = 0;
        std::string address;
        std::string pageTitle;
    };

    // Nothing when the process has no application on the accessibility bus.
    static std::optional<FloorProbe> forProcess(pid_t pid)
    {
        GObjectHandle<AtspiAccessible> desktop(atspi_get_desktop(0));
        int count = atspi_accessible_get_child_count(desktop.get(), nullptr);
        for (int index = 0; index < count; ++index) {
            GObjectHandle<AtspiAccessible> application(
                atspi_accessible_get_child_at_index(desktop.get(), index, nullptr));
            if (application && atspi_accessible_get_process_id(application.get(), nullptr) == static_cast<guint>(pid))
                return FloorProbe(std::move(application));
        }
        return std::nullopt;
    }

    std::optional<Reading> sample()
    {
        auto frame = activeFrame();
        if (!frame)
            return std::nullopt;
        Reading reading;
        reading.windowTitle = text(atspi_accessible_get_name(frame.get(), nullptr));
        ++calls_;
        reading.pid = static_cast<pid_t>(atspi_accessible_get_process_id(application_.get(), nullptr));
        ++calls_;
        auto document = showingDocument(frame.get());
        if (!document)
            return std::nullopt;
        reading.address = address(document.get());
        reading.pageTitle = text(atspi_accessible_get_name(document.get(), nullptr));
        ++calls_;
        return reading;
    }

    uint64_t calls() const { return calls_; }

private:
    explicit FloorProbe(GObjectHandle<AtspiAccessible> application)
        : application_(std::move(application))
    {
    }

    static std::string text(gchar* handedOver)
    {
        GMallocHandle<gchar> owned(handedOver);
        return owned ? owned.get() : "";
    }

    // Matches by the rule below the element, outermost first; one reference handed over per match.
    std::vector<GObjectHandle<AtspiAccessible>> matches(
        AtspiAccessible* accessible, AtspiMatchRule* rule, int count, bool descend)
    {
        GObjectHandle<AtspiCollection> collection(atspi_accessible_get_collection_iface(accessible));
        std::vector<GObjectHandle<AtspiAccessible>> found;
        if (!collection)
            return found;
        ++calls_;
        GArrayHandle array(atspi_collection_get_matches(
            collection.get(), rule, ATSPI_Collection_SORT_ORDER_CANONICAL, count, descend, nullptr));
        for (guint index = 0; array && index < array->len; ++index)
            found.emplace_back(g_array_index(array.get(), AtspiAccessible*, index));
        return found;
    }

    GObjectHandle<AtspiAccessible> activeFrame()
    {
        GObjectHandle<AtspiMatchRule> everything(
            atspi_match_rule_new(nullptr, ATSPI_Collection_MATCH_NONE, nullptr, ATSPI_Collection_MATCH_NONE, nullptr,
                ATSPI_Collection_MATCH_NONE, nullptr, ATSPI_Collection_MATCH_NONE, FALSE));
        for (auto& frame : matches(application_.get(), everything.get(), 0, false)) {
            GObjectHandle<AtspiStateSet> states(atspi_accessible_get_state_set(frame.get()));
            ++calls_;
            if (states && atspi_state_set_contains(states.get(), ATSPI_STATE_ACTIVE))
                return std::move(frame);
        }
        return nullptr;
    }

    GObjectHandle<AtspiAccessible> showingDocument(AtspiAccessible* frame)
    {
        GObjectHandle<AtspiStateSet> showing(atspi_state_set_new(nullptr));
        atspi_state_set_add(showing.get(), ATSPI_STATE_SHOWING);
        GArrayHandle roles(g_array_new(FALSE, FALSE, sizeof(AtspiRole)));
        AtspiRole webDocument = ATSPI_ROLE_DOCUMENT_WEB;
        g_array_append_val(roles.get(), webDocument);
        GObjectHandle<AtspiMatchRule> rule(
            atspi_match_rule_new(showing.get(), ATSPI_Collection_MATCH_ALL, nullptr, ATSPI_Collection_MATCH_NONE,
                roles.get(), ATSPI_Collection_MATCH_ANY, nullptr, ATSPI_Collection_MATCH_NONE, FALSE));
        auto found = matches(frame, rule.get(), 1, true);
        return found.empty() ? nullptr : std::move(found.front());
    }

    std::string address(AtspiAccessible* document)
    {
        GObjectHandle<AtspiDocument> interface(atspi_accessible_get_document_iface(document));
        if (!interface)
            return "";
        ++calls_;
        GHashTableHandle attributes(atspi_document_get_document_attributes(interface.get(), nullptr));
        auto* uri = attributes ? static_cast<const char*>(g_hash_table_lookup(attributes.get(), "URI")) : nullptr;
        return uri ? uri : "";
    }

    GObjectHandle<AtspiAccessible> application_;
    uint64_t calls_ = 0;
};

// Wall and CPU seconds of whatever runs; CPU of the whole process, so that work libatspi or the bus
// library does on another thread counts too.
struct Cost {
    double wall = 0;
    double cpu = 0;
};

double processCpuSeconds()
{
    rusage usage {};
    ::getrusage(RUSAGE_SELF, &usage);
    auto seconds = [](const timeval& time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

template<typename Work> Cost measure(Work work)
{
    double cpuBefore = processCpuSeconds();
    auto started = std::chrono::steady_clock::now();
    work();
    return { std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count(),
        processCpuSeconds() - cpuBefore };
}

// Medians: the machine is shared, and a few samples that waited for another build say little.
struct Costs {
    std::vector<double> wall;
    std::vector<double> cpu;

    void add(Cost cost)
    {
        wall.push_back(cost.wall);
        cpu.push_back(cost.cpu);
    }
    static double median(std::vector<double> values)
    {
        if (values.empty())
            return 0;
        auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    }
    double wallMilliseconds() const { return median(wall) * 1000; }
    double cpuMilliseconds() const { return median(cpu) * 1000; }
};

int pacedSamples()
{
    const char* asked = std::getenv("VARDEL_BENCH_PACED_SAMPLES");
    int count = 5;
    if (asked)
        std::from_chars(asked, asked + std::strlen(asked), count);
    return std::max(count, 0);
}

bool showsPage(const std::optional<VDActivity>& activity)
{
    return activity && activity->details.documentPath.value_or("").find("page.html") != std::string::npos;
}

std::string describe(const std::optional<VDActivity>& activity)
{
    if (!activity)
        return "no frontmost application";
    return activity->applicationBundleIdentifier.value_or("?") + " " + activity->details.windowTitle.value_or("?") + " "
        + activity->details.documentPath.value_or("?");
}

std::optional<VDActivity> trackerSample()
{
    auto activity = VDInfoExtractor::currentActivity();
    if (activity)
        VDInfoExtractor::callInfoExtractorForActivity(*activity);
    return activity;
}

void chromiumSample(benchmark::State& state)
{
    testing::HeadlessDesktop desktop;
    testing::TemporaryFolder site;
    std::ofstream(site.path() / "page.html") << pageHtml();
    desktop.start("python3",
        { "-m", "http.server", std::to_string(pagePort), "--bind", "127.0.0.1", "--directory", site.path().string() });
    if (!testing::waitUntil([] { return testing::acceptsConnections(pagePort); }, std::chrono::seconds(10))) {
        state.SkipWithError("the page server did not start");
        return;
    }
    pid_t chromium = desktop.start("/usr/bin/chromium",
        { "--no-sandbox", "--no-first-run", "--disable-gpu", "--disable-background-networking", "--disable-sync",
            "--force-renderer-accessibility", "--user-data-dir=" + (desktop.scratchFolder() / "profile").string(),
            "http://127.0.0.1:" + std::to_string(pagePort) + "/page.html" });
    desktop.waitForActiveWindow(chromium, pageTitle, 30);

    BuiltInExtractors::install();
    ProcessWideState::resetAll();
    JsonLinesTrace trace([] { return 0.0; });
    linux_desktop::MemoryPreferenceStore defaults("defaults", trace);
    linux_desktop::MemoryPreferenceStore preferences("preferences", trace);
    linux_desktop::MemoryDefaultsDomains domains(trace);
    auto platform = linux_desktop::LinuxDesktop::open({ defaults, preferences, domains }, trace);
    Platform::install(platform.get());
    auto& accessibility = dynamic_cast<linux_desktop::AtspiAccessibility&>(platform->accessibility());
    // As the tracker does between samples, the run loop serves what arrived meanwhile.
    auto serveFor = [&](double seconds) {
        platform->runLoop().schedule(seconds, [&] { platform->runLoop().stop(0, "paused"); });
        platform->runLoop().run();
    };

    // Warm: the first contact with an application costs more, and a large page takes a while to
    // reach the accessibility tree; Chromium marks its frame active a while after X11 does.
    std::optional<FloorProbe> floor;
    std::optional<FloorProbe::Reading> floorReading;
    auto probeShowsPage = [&] { return floorReading && floorReading->address.find("page.html") != std::string::npos; };
    std::optional<VDActivity> warmActivity;
    for (int attempt = 0; attempt < 100 && !(showsPage(warmActivity) && probeShowsPage()); ++attempt) {
        warmActivity = trackerSample();
        if (!floor)
            floor = FloorProbe::forProcess(chromium);
        floorReading = floor ? floor->sample() : std::nullopt;
        if (!showsPage(warmActivity) || !probeShowsPage())
            serveFor(0.2);
    }
    if (!showsPage(warmActivity) || !probeShowsPage()) {
        std::string message = showsPage(warmActivity) ? std::string("the floor probe did not find the page")
                                                      : "the sample did not find the page: " + describe(warmActivity);
        state.SkipWithError(message.c_str());
        Platform::install(nullptr);
        return;
    }

    // Back to back: each iteration times one tracker sample, then one probe.
    Costs tracker;
    Costs probe;
    uint64_t callsBefore = accessibility.callCount();
    uint64_t floorCallsBefore = floor->calls();
    std::string failure;
    for (auto _ : state) {
        std::optional<VDActivity> activity;
        Cost cost = measure([&] { activity = trackerSample(); });
        tracker.add(cost);
        state.SetIterationTime(cost.wall);
        probe.add(measure([&] { floorReading = floor->sample(); }));
        if (!showsPage(activity)) {
            failure = "the sample did not find the page: " + describe(activity);
            break;
        }
        if (!floorReading) {
            failure = "the floor probe lost the page";
            break;
        }
    }
    auto iterations = static_cast<double>(state.iterations());
    state.counters["atspiCallsPerSample"] = static_cast<double>(accessibility.callCount() - callsBefore) / iterations;
    state.counters["floorCallsPerSample"] = static_cast<double>(floor->calls() - floorCallsBefore) / iterations;

    // At the tracker's pace: a second between samples, the probe half a second after each.
    Costs pacedTracker;
    Costs pacedProbe;
    for (int sample = 0; sample < pacedSamples() && failure.empty(); ++sample) {
        serveFor(0.5);
        std::optional<VDActivity> activity;
        pacedTracker.add(measure([&] { activity = trackerSample(); }));
        serveFor(0.5);
        pacedProbe.add(measure([&] { floorReading = floor->sample(); }));
        if (!showsPage(activity) || !floorReading)
            failure = "a paced sample did not find the page: " + describe(activity);
    }
    Platform::install(nullptr);
    if (!failure.empty()) {
        state.SkipWithError(failure.c_str());
        return;
    }
    state.counters["trackerMs"] = tracker.wallMilliseconds();
    state.counters["trackerCpuMs"] = tracker.cpuMilliseconds();
    state.counters["floorMs"] = probe.wallMilliseconds();
    state.counters["floorCpuMs"] = probe.cpuMilliseconds();
    state.counters["ratio"] = tracker.wallMilliseconds() / probe.wallMilliseconds();
    if (!pacedTracker.wall.empty()) {
        state.counters["pacedTrackerMs"] = pacedTracker.wallMilliseconds();
        state.counters["pacedTrackerCpuMs"] = pacedTracker.cpuMilliseconds();
        state.counters["pacedFloorMs"] = pacedProbe.wallMilliseconds();
        state.counters["pacedFloorCpuMs"] = pacedProbe.cpuMilliseconds();
        state.counters["pacedRatio"] = pacedTracker.wallMilliseconds() / pacedProbe.wallMilliseconds();
    }
}

BENCHMARK(chromiumSample)->Unit(benchmark::kMillisecond)->Iterations(200)->UseManualTime();

// What a child process measured: each sample's seconds and the AT-SPI calls per sample, or why it
// could not.
struct ChildMeasurement {
    std::vector<double> seconds;
    double callsPerSample = 0;
    std::string error;
};

// In the session as its user: warms up until the sample reads Firefox's page, then times `samples`
// samples one by one.
ChildMeasurement measureSamples(int samples)
{
    testing::becomeSessionUser();
    BuiltInExtractors::install();
    ProcessWideState::resetAll();
    JsonLinesTrace trace([] { return 0.0; });
    linux_desktop::MemoryPreferenceStore defaults("defaults", trace);
    linux_desktop::MemoryPreferenceStore preferences("preferences", trace);
    linux_desktop::MemoryDefaultsDomains domains(trace);
    auto platform = linux_desktop::LinuxDesktop::open({ defaults, preferences, domains }, trace);
    Platform::install(platform.get());
    auto* accessibility = dynamic_cast<linux_desktop::AtspiAccessibility*>(&platform->accessibility());
    if (!accessibility)
        return { {}, 0, "no accessibility bus" };

    // Firefox known as such, so that its extractor runs as in the tracker.
    auto readsPage = [](const std::optional<VDActivity>& activity) {
        return activity && activity->applicationBundleIdentifier == "org.mozilla.firefox"
            && activity->details.documentPath.value_or("").find("page.html") != std::string::npos;
    };
    bool pageFound = false;
    for (int attempt = 0; attempt < 100 && !pageFound; ++attempt) {
        auto activity = VDInfoExtractor::currentActivity();
        if (activity)
            VDInfoExtractor::callInfoExtractorForActivity(*activity);
        pageFound = readsPage(activity);
        if (!pageFound) {
            // As the tracker does between samples, let the run loop serve what arrived meanwhile.
            platform->runLoop().schedule(0.2, [&] { platform->runLoop().stop(0, "warm"); });
            platform->runLoop().run();
        }
    }
    ChildMeasurement measured;
    uint64_t callsBefore = accessibility->callCount();
    for (int sample = 0; sample < samples; ++sample) {
        auto started = std::chrono::steady_clock::now();
        auto activity = VDInfoExtractor::currentActivity();
        if (activity)
            VDInfoExtractor::callInfoExtractorForActivity(*activity);
        measured.seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count());
        if (!readsPage(activity)) {
            measured.error = "the sample did not find the page: "
                + (activity ? activity->applicationBundleIdentifier.value_or("?") + " "
                            + activity->details.windowTitle.value_or("?") + " "
                            + activity->details.documentPath.value_or("?")
                            : std::string("no frontmost application"));
            break;
        }
    }
    measured.callsPerSample = static_cast<double>(accessibility->callCount() - callsBefore) / samples;
    Platform::install(nullptr);
    return measured;
}

// The argument that makes this program measure Wayland samples in the session of its environment
// and write the result as one line of JSON to the descriptor given after it.
constexpr std::string_view measureArgument = "--measure-wayland-samples=";

int reportMeasurement(int samples, int descriptor)
{
    nlohmann::json report;
    try {
        auto measured = measureSamples(samples);
        report = { { "seconds", measured.seconds }, { "calls", measured.callsPerSample }, { "error", measured.error } };
    } catch (const std::exception& error) {
        report = { { "seconds", nlohmann::json::array() }, { "calls", 0 }, { "error", error.what() } };
    }
    std::string text = report.dump() + "\n";
    return ::write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1;
}

// Runs this program again to measure (a fresh process: the X11 benchmark before this one leaves
// libatspi set up for its own desktop) and reads its report.
ChildMeasurement measureInChild(int samples)
{
    int ends[2];
    if (::pipe(ends) != 0)
        return { {}, 0, "cannot create a pipe" };
    std::string measure = std::string(measureArgument) + std::to_string(samples);
    std::string descriptor = std::to_string(ends[1]);
    pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        ::execl("/proc/self/exe", "vardel_linux_bench", measure.c_str(), descriptor.c_str(), nullptr);
        ::_exit(127);
    }
    ::close(ends[1]);
    std::string text;
    char buffer[4096];
    for (ssize_t received; (received = ::read(ends[0], buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<size_t>(received));
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    auto report = nlohmann::json::parse(text, nullptr, false);
    if (report.is_discarded())
        return { {}, 0, "the measuring process reported nothing" };
    ChildMeasurement measured { report["seconds"].get<std::vector<double>>(), report["calls"].get<double>(),
        report["error"].get<std::string>() };
    if (measured.error.empty() && measured.seconds.size() < static_cast<size_t>(samples))
        measured.error = "the measuring process measured too few samples";
    return measured;
}

// The frontmost window comes from the compositor's toplevel list (in memory), its process from the
// accessibility bus (looked up once per window), the page from AT-SPI.
void firefoxWaylandSample(benchmark::State& state)
{
    testing::HeadlessWaylandDesktop desktop(testing::WaylandCompositor::sway);
    auto site = desktop.makeFolder(desktop.scratchFolder() / "site");
    std::ofstream(site / "page.html") << pageHtml();
    desktop.start("/usr/bin/python3",
        { "-m", "http.server", std::to_string(waylandPagePort), "--bind", "127.0.0.1", "--directory", site.string() });
    if (!testing::waitUntil([] { return testing::acceptsConnections(waylandPagePort); }, std::chrono::seconds(10))) {
        state.SkipWithError("the page server did not start");
        return;
    }
    desktop.start("/usr/bin/firefox-esr",
        { "--no-remote", "--profile", desktop.makeFolder(desktop.scratchFolder() / "profile").string(),
            "http://127.0.0.1:" + std::to_string(waylandPagePort) + "/page.html" },
        { { "MOZ_ENABLE_WAYLAND", "1" }, { "MOZ_CRASHREPORTER_DISABLE", "1" } });
    bool shown = testing::waitUntil(
        [&] {
            try {
                return desktop.run("swaymsg", { "-t", "get_tree" }).find(pageTitle) != std::string::npos;
            } catch (const testing::HeadlessDesktopError&) {
                return false;
            }
        },
        std::chrono::seconds(60), std::chrono::milliseconds(250));
    if (!shown) {
        state.SkipWithError("Firefox did not show the page");
        return;
    }

    // The session's buses admit their owner only: a child that is that user measures, and reports
    // each sample's time.
    // The measuring process, once the session's user, may not reach the build's identifier table:
    // it reads a copy in the session's folder.
    auto table = linux_desktop::ApplicationIdentifierTable::shippedTablePath();
    const char* shareFolder = std::getenv("VARDEL_SHARE_DIR");
    std::string savedShareFolder = shareFolder ? shareFolder : "";
    if (table) {
        auto share = desktop.makeFolder(desktop.scratchFolder() / "share");
        std::filesystem::copy_file(*table, share / table->filename());
        ::setenv("VARDEL_SHARE_DIR", share.c_str(), 1);
    }
    auto measured = measureInChild(static_cast<int>(state.max_iterations));
    if (savedShareFolder.empty())
        ::unsetenv("VARDEL_SHARE_DIR");
    else
        ::setenv("VARDEL_SHARE_DIR", savedShareFolder.c_str(), 1);
    if (!measured.error.empty()) {
        state.SkipWithError(measured.error.c_str());
        return;
    }
    size_t next = 0;
    for (auto _ : state)
        state.SetIterationTime(measured.seconds[next++]);
    state.counters["atspiCallsPerSample"] = measured.callsPerSample;
}

BENCHMARK(firefoxWaylandSample)->Unit(benchmark::kMillisecond)->Iterations(200)->UseManualTime();

} // namespace
} // namespace vardel

int main(int argc, char** argv)
{
    if (argc == 3 && std::string_view(argv[1]).starts_with(vardel::measureArgument)) {
        std::string_view samples = std::string_view(argv[1]).substr(vardel::measureArgument.size());
        std::string_view descriptor = argv[2];
        int count = 0;
        int report = -1;
        std::from_chars(samples.data(), samples.data() + samples.size(), count);
        std::from_chars(descriptor.data(), descriptor.data() + descriptor.size(), report);
        return count > 0 && report >= 0 ? vardel::reportMeasurement(count, report) : 2;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
