#include "platform/scripted/ScriptedDesktop.h"

#include "platform/OperatingSystem.h"
#include "platform/RelaunchScripts.h"
#include "platform/scripted/DesktopWorld.h"
#include "platform/scripted/ScenarioReader.h"
#include "platform/scripted/ScriptedAccessibility.h"
#include "platform/scripted/ScriptedAlerts.h"
#include "platform/scripted/ScriptedFileEventStreams.h"
#include "platform/scripted/ScriptedGlobalShortcuts.h"
#include "platform/scripted/ScriptedPowerManagement.h"
#include "platform/scripted/ScriptedProcessLauncher.h"
#include "platform/scripted/ScriptedPropertyListFiles.h"
#include "platform/scripted/ScriptedRunningTaskSource.h"
#include "platform/scripted/ScriptedScriptingCommands.h"
#include "platform/scripted/ScriptedStandardStreams.h"
#include "platform/scripted/ScriptedStatusBar.h"
#include "platform/scripted/ScriptedTimeEntryEditor.h"
#include "platform/scripted/ScriptedUserNotificationCenter.h"
#include "platform/scripted/ScriptedWindowServer.h"
#include "platform/scripted/ScriptedWorkspace.h"
#include "platform/scripted/Timeline.h"
#include "platform/scripted/TraceWriter.h"
#include "platform/scripted/TracingAnalyticsSink.h"
#include "platform/scripted/TracingLog.h"
#include "platform/scripted/VirtualClock.h"
#include "platform/scripted/VirtualRunLoop.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>

namespace vardel::scripted {

namespace {

// Where a syntax error is, as "line L, column C".
std::string textPosition(std::string_view text, size_t byte)
{
    size_t offset = std::min(byte > 0 ? byte - 1 : 0, text.size());
    std::string_view before = text.substr(0, offset);
    size_t line = 1 + static_cast<size_t>(std::count(before.begin(), before.end(), '\n'));
    size_t lastBreak = before.rfind('\n');
    size_t column = lastBreak == std::string_view::npos ? offset + 1 : offset - lastBreak;
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

} // namespace

struct ScriptedDesktop::State {
    explicit State(Scenario scenario)
        : clock(scenario.start)
        , trace(clock)
        , world(scenario, trace)
        , timeline(std::move(scenario.timeline), scenario.endSeconds, clock, world)
        , runLoop(clock, timeline, scenario.endSeconds)
        , accessibility(world, timeline, clock, trace)
        , workspace(world, trace)
        , windowServer(world, trace)
        , processLauncher(world.defaultsDomains, trace, world.self.pid)
        , analytics(trace)
        , log(trace, std::cerr)
        , endSeconds(scenario.endSeconds)
    {
        timeline.setInteractionHandler(
            [this](const TimelineStep& step) { runLoop.schedule(0, [this, step] { serveInteractions(step); }); });
        timeline.setFileEventHandler([this](const std::vector<FileEvent>& events) { fileEventStreams.report(events); });
        processLauncher.setRelaunchHandler([this](const RelaunchScript& script) {
            runLoop.schedule(static_cast<double>(script.delaySeconds),
                [this, bundlePath = script.bundlePath] { endForRelaunch(bundlePath); });
        });
        // Steps at the start are in effect before the program does anything.
        timeline.advanceTo(0);
    }

    // Keys first, since they are held while the menu of the same step opens.
    void serveInteractions(const TimelineStep& step)
    {
        if (step.keys)
            statusBar.holdKeys(*step.keys);
        if (step.respond)
            userNotificationCenter.respond(*step.respond);
        if (step.menu)
            statusBar.useMenu(*step.menu);
        if (step.script)
            scriptingCommands.deliver(*step.script);
    }

    // The script's termination signal ends the tracker; then it opens the bundle again. The new
    // process is not part of the run.
    void endForRelaunch(const std::string& bundlePath)
    {
        runLoop.requestTermination("relaunch");
        runLoop.stop(0, "relaunch");
        trace.write("open", { { "target", bundlePath } });
    }

    VirtualClock clock;
    TraceWriter trace;
    DesktopWorld world;
    Timeline timeline;
    VirtualRunLoop runLoop;
    ScriptedAccessibility accessibility;
    ScriptedWorkspace workspace;
    ScriptedWindowServer windowServer;
    ScriptedProcessLauncher processLauncher;
    TracingAnalyticsSink analytics;
    TracingLog log;
    ScriptedPropertyListFiles propertyListFiles { world };
    ScriptedStandardStreams standardStreams { trace };
    ScriptedPowerManagement powerManagement { world };
    ScriptedUserNotificationCenter userNotificationCenter { world.notificationsPermitted, trace };
    ScriptedTimeEntryEditor timeEntryEditor { world.editorAnswers, trace };
    ScriptedRunningTaskSource runningTasks { world, clock.now(), trace };
    ScriptedAlerts alerts { world.alertAnswers, trace };
    // The scripted desktop starts nothing at login: the registration is the product's preference.
    PreferenceLoginItems loginItems { world.productPreferences, "shouldStartAtLogin" };
    ScriptedStatusBar statusBar { trace };
    ScriptedScriptingCommands scriptingCommands;
    ScriptedGlobalShortcuts globalShortcuts;
    ScriptedFileEventStreams fileEventStreams { runLoop };
    double endSeconds;
};

std::unique_ptr<ScriptedDesktop> ScriptedDesktop::load(const std::filesystem::path& scenarioFile)
{
    std::error_code error;
    if (std::filesystem::is_directory(scenarioFile, error))
        throw ScenarioError(scenarioFile.string() + ": cannot be read: it is a folder");
    std::ifstream file(scenarioFile, std::ios::binary);
    if (!file)
        throw ScenarioError(scenarioFile.string() + ": cannot be read: " + std::strerror(errno));
    std::ostringstream text;
    text << file.rdbuf();
    auto absolute = std::filesystem::absolute(scenarioFile, error);
    return fromJson(text.str(), scenarioFile.string(), (error ? scenarioFile : absolute).parent_path());
}

std::unique_ptr<ScriptedDesktop> ScriptedDesktop::fromJson(
    std::string_view jsonText, std::string sourceName, std::filesystem::path baseDirectory)
{
    nlohmann::ordered_json json;
    try {
        json = nlohmann::ordered_json::parse(jsonText.begin(), jsonText.end());
    } catch (const nlohmann::ordered_json::parse_error& error) {
        throw ScenarioError(sourceName + ": $: not valid JSON at " + textPosition(jsonText, error.byte));
    } catch (const nlohmann::ordered_json::out_of_range&) {
        // The parser reports a number too large for a double this way, without its position.
        throw ScenarioError(sourceName + ": $: not valid JSON: a number is out of range");
    }
    Scenario scenario = ScenarioReader(std::move(sourceName), std::move(baseDirectory)).read(json);
    return std::unique_ptr<ScriptedDesktop>(new ScriptedDesktop(std::make_unique<State>(std::move(scenario))));
}

ScriptedDesktop::ScriptedDesktop(std::unique_ptr<State> state)
    : state_(std::move(state))
{
}

ScriptedDesktop::~ScriptedDesktop() = default;

void ScriptedDesktop::setTraceStream(std::ostream* stream)
{
    state_->trace.setStream(stream);
}

void ScriptedDesktop::setRecordingEvents(bool recording)
{
    state_->trace.setRecording(recording);
}

void ScriptedDesktop::redirectStandardStreams(std::ostream& output, std::ostream& error)
{
    state_->standardStreams.redirect(output, error);
}

const std::vector<nlohmann::ordered_json>& ScriptedDesktop::recordedEvents() const
{
    return state_->trace.recorded();
}

double ScriptedDesktop::elapsedSeconds() const
{
    return state_->clock.elapsedSeconds();
}

double ScriptedDesktop::endSeconds() const
{
    return state_->endSeconds;
}

void ScriptedDesktop::runUntil(double seconds)
{
    state_->runLoop.runUntil(seconds);
}

std::string ScriptedDesktop::stopReason() const
{
    return state_->runLoop.stopReason();
}

std::optional<AXUIElement> ScriptedDesktop::element(std::string_view id)
{
    return state_->world.element(id);
}

Accessibility& ScriptedDesktop::accessibility()
{
    return state_->accessibility;
}
Workspace& ScriptedDesktop::workspace()
{
    return state_->workspace;
}
WindowServer& ScriptedDesktop::windowServer()
{
    return state_->windowServer;
}
PreferenceStore& ScriptedDesktop::standardUserDefaults()
{
    return state_->world.standardUserDefaults;
}
PreferenceStore& ScriptedDesktop::productPreferences()
{
    return state_->world.productPreferences;
}
DefaultsDomains& ScriptedDesktop::defaultsDomains()
{
    return state_->world.defaultsDomains;
}
Clock& ScriptedDesktop::clock()
{
    return state_->clock;
}
RunLoop& ScriptedDesktop::runLoop()
{
    return state_->runLoop;
}
ProcessLauncher& ScriptedDesktop::processLauncher()
{
    return state_->processLauncher;
}
AnalyticsSink& ScriptedDesktop::analytics()
{
    return state_->analytics;
}
Log& ScriptedDesktop::log()
{
    return state_->log;
}
EventTrace& ScriptedDesktop::trace()
{
    return state_->trace;
}

PropertyListFiles& ScriptedDesktop::propertyListFiles()
{
    return state_->propertyListFiles;
}
UserNotificationCenter& ScriptedDesktop::userNotificationCenter()
{
    return state_->userNotificationCenter;
}

TimeEntryEditor& ScriptedDesktop::timeEntryEditor()
{
    return state_->timeEntryEditor;
}

RunningTaskSource& ScriptedDesktop::runningTasks()
{
    return state_->runningTasks;
}

FileEventStreams& ScriptedDesktop::fileEventStreams()
{
    return state_->fileEventStreams;
}

// The bundle's information dictionary is the one the scenario gave at the start; later changes of
// the Info.plist file do not change it.
CurrentProcess ScriptedDesktop::currentProcess()
{
    const BundleDescription& self = state_->world.self;
    return { self.pid, self.executablePath,
        ScriptedWorkspace::bundleAtPath(self.bundlePath, self.bundleIdentifier, std::nullopt, self.info) };
}

LoginItems& ScriptedDesktop::loginItems()
{
    return state_->loginItems;
}

// The build is the bundle's information file as it is now.
InstalledBuild ScriptedDesktop::installedBuild()
{
    std::string folder = state_->world.self.bundlePath;
    if (!folder.ends_with('/'))
        folder += '/';
    std::string infoPath = folder + "Contents/Info.plist";
    auto contents = state_->propertyListFiles.read(infoPath);
    const Value::Dictionary* info = contents ? contents->asDictionary() : nullptr;
    std::optional<std::string> version;
    if (auto found = info ? info->find("CFBundleVersion") : Value::Dictionary::const_iterator {};
        info && found != info->end() && found->second.asText())
        version = *found->second.asText();
    return { version, infoPath };
}

DesktopTexts ScriptedDesktop::desktopTexts()
{
    return { { "To track your work, Vardel needs permission to use your Mac’s Accessibility features.",
                 "Would you like to launch System Settings so that you can enable \"Vardel Tracker\" in the "
                 "Accessibility list?",
                 { "Open System Settings", "Continue Anyway" }, "settings:privacy/accessibility" },
        "macOS Version: " + OperatingSystem::versionString() };
}

std::string ScriptedDesktop::relaunchScript(double delaySeconds, const CurrentProcess& process)
{
    return RelaunchScripts::reopeningBundle(delaySeconds, process.processIdentifier, process.mainBundle.path);
}

bool ScriptedDesktop::databaseAvailable() const
{
    return state_->world.databaseAvailable;
}

PowerManagement& ScriptedDesktop::powerManagement()
{
    return state_->powerManagement;
}
StandardStreams& ScriptedDesktop::standardStreams()
{
    return state_->standardStreams;
}
Alerts& ScriptedDesktop::alerts()
{
    return state_->alerts;
}
StatusBar& ScriptedDesktop::statusBar()
{
    return state_->statusBar;
}
ScriptingCommands& ScriptedDesktop::scriptingCommands()
{
    return state_->scriptingCommands;
}
GlobalShortcuts& ScriptedDesktop::globalShortcuts()
{
    return state_->globalShortcuts;
}
std::optional<StatusItemAppearance> ScriptedDesktop::statusItemAppearance() const
{
    return state_->statusBar.appearance();
}
std::vector<std::string> ScriptedDesktop::preferredLanguages()
{
    return { "en" };
}

} // namespace vardel::scripted
