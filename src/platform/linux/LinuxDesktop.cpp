#include "platform/linux/LinuxDesktop.h"

#include "platform/RelaunchScripts.h"
#include "platform/linux/ApplicationIdentity.h"
#include "platform/linux/AtspiAccessibility.h"
#include "platform/linux/AtspiApplicationDirectory.h"
#include "platform/linux/DesktopNotificationCenter.h"
#include "platform/linux/DialogAlerts.h"
#include "platform/linux/DialogProcess.h"
#include "platform/linux/DialogTimeEntryEditor.h"
#include "platform/linux/GlibMainContextPoll.h"
#include "platform/linux/InotifyFileEventStreams.h"
#include "platform/linux/JsonPropertyListFiles.h"
#include "platform/linux/LinuxPowerManagement.h"
#include "platform/linux/NoRunningTaskSource.h"
#include "platform/linux/OsRelease.h"
#include "platform/linux/PollRunLoop.h"
#include "platform/linux/ProcessStandardStreams.h"
#include "platform/linux/ScriptingCommandServer.h"
#include "platform/linux/ShippedData.h"
#include "platform/linux/SocketScriptingCommands.h"
#include "platform/linux/SpawnProcessLauncher.h"
#include "platform/linux/StandardErrorLog.h"
#include "platform/linux/StatusNotifierItem.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/TraceAnalyticsSink.h"
#include "platform/linux/UnavailableAccessibility.h"
#include "platform/linux/WaylandConnection.h"
#include "platform/linux/WaylandWindowFacts.h"
#include "platform/linux/WaylandWindowServer.h"
#include "platform/linux/WindowSystemChoice.h"
#include "platform/linux/X11Connection.h"
#include "platform/linux/X11GlobalShortcuts.h"
#include "platform/linux/X11WindowServer.h"
#include "platform/linux/X11Workspace.h"
#include "platform/linux/XdgAutostartLoginItems.h"

#include <cstdlib>
#include <filesystem>
#include <glib.h>
#include <map>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace vardel::linux_desktop {

namespace {

// An installation writes several entries and icons at once: they are taken together.
constexpr double desktopEntryChangeLatencySeconds = 1;
constexpr const char* identifierPreference = "LinuxDesktop_applicationIdentifiers";
// Seconds the relaunch script waits instead of the delay the tracker asks for.
constexpr const char* relaunchDelayPreference = "LinuxDesktop_relaunchDelay";

ApplicationIdentifierTable identifierTable(PreferenceStore& defaults)
{
    ApplicationIdentifierTable table;
    if (auto path = ApplicationIdentifierTable::shippedTablePath()) {
        try {
            table = ApplicationIdentifierTable::load(*path);
        } catch (const std::runtime_error& error) {
            throw LinuxDesktopError(error.what());
        }
    }
    if (auto extra = defaults.object(identifierPreference); extra && extra->asDictionary())
        table.addPreferenceEntries(*extra->asDictionary());
    return table;
}

std::string languageTag(std::string locale)
{
    // "de_CH.UTF-8@euro" → "de-CH"
    locale = locale.substr(0, locale.find_first_of(".@"));
    std::replace(locale.begin(), locale.end(), '_', '-');
    if (locale.empty() || locale == "C" || locale == "POSIX")
        return "en";
    return locale;
}

// The shipped icon theme with the status item's icons; none when it is not installed.
std::string statusIconThemePath()
{
    std::error_code error;
    auto folder = ShippedData::find("icons");
    return folder && std::filesystem::is_directory(*folder, error) ? folder->string() : "";
}

const char* environment(const char* name)
{
    const char* value = std::getenv(name);
    return value && *value ? value : nullptr;
}

std::optional<std::string> windowSystemPreference(PreferenceStore& defaults)
{
    auto value = defaults.object(WindowSystemChoice::preferenceKey);
    if (!value || !value->asText())
        return std::nullopt;
    return *value->asText();
}

// An executable has no build number here: the file's identity stands for its build, so that a
// replaced executable (a new file, or new contents) is a new build and anything else in its folder
// is not.
std::optional<std::string> executableBuild(const std::string& path)
{
    struct stat file { };
    if (::stat(path.c_str(), &file) != 0)
        return std::nullopt;
    return std::to_string(file.st_dev) + ":" + std::to_string(file.st_ino) + ":" + std::to_string(file.st_size) + ":"
        + std::to_string(file.st_mtim.tv_sec) + "." + std::to_string(file.st_mtim.tv_nsec);
}

std::string ownExecutablePath()
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

// Without a configuration folder to put an autostart entry in, the registration is only remembered.
std::unique_ptr<LoginItems> makeLoginItems(const LinuxDesktopStores& stores, const std::string& executablePath)
{
    if (auto folder = XdgAutostartLoginItems::autostartFolder(std::getenv))
        return std::make_unique<XdgAutostartLoginItems>(*folder, executablePath);
    return std::make_unique<PreferenceLoginItems>(stores.productPreferences, "shouldStartAtLogin");
}

} // namespace

struct LinuxDesktop::State {
    State(const LinuxDesktopStores& stores, JsonLinesTrace& trace, const char* display)
        : stores(stores)
        , trace(trace)
        , log(trace)
        , analytics(trace)
        , launcher(trace)
        , standardStreams(trace)
        , notifications(trace, log, DesktopNotificationCenter::deliveredFileIn(environment("XDG_RUNTIME_DIR")))
        , timeEntryEditor(dialogProgram, runLoop, trace, log)
        , identity(desktopEntries, identifierTable(stores.standardUserDefaults))
        , alerts(dialogProgram, log)
        , globalShortcuts(runLoop, log, display)
        , statusBar(
              runLoop, log, [this] { return globalShortcuts.heldModifierFlags(); }, statusIconThemePath())
        , scriptingCommands(runLoop, log, vardel::ScriptingCommandServer::socketPath(std::getenv))
        , fileEventStreams(runLoop, fileEventSourceHooks())
    {
    }

    ReadableSourceHooks fileEventSourceHooks()
    {
        return { [this](int descriptor, std::function<void()> onReadable) {
                    fileEventSources[descriptor] = runLoop.addReadableSource(descriptor, std::move(onReadable));
                },
            [this](int descriptor) {
                if (auto source = fileEventSources.find(descriptor); source != fileEventSources.end()) {
                    runLoop.removeSource(source->second);
                    fileEventSources.erase(source);
                }
            } };
    }

    LinuxDesktopStores stores;
    JsonLinesTrace& trace;
    // As the process started: once the executable is replaced, /proc/self/exe names a deleted file.
    std::string executablePath = ownExecutablePath();
    std::optional<std::string> buildAtStart = executableBuild(executablePath);
    std::optional<std::string> dialogProgram = DialogProcess::programBeside(executablePath);
    SystemClock clock;
    PollRunLoop runLoop;
    GlibMainContextPoll glibEvents { runLoop };
    StandardErrorLog log;
    TraceAnalyticsSink analytics;
    SpawnProcessLauncher launcher;
    ProcessStandardStreams standardStreams;
    JsonPropertyListFiles propertyListFiles;
    DesktopNotificationCenter notifications;
    DialogTimeEntryEditor timeEntryEditor;
    NoRunningTaskSource runningTasks;
    // One of the two display connections, and what the other pieces read windows from.
    std::unique_ptr<X11Connection> x11;
    std::unique_ptr<WaylandConnection> wayland;
    std::optional<PollRunLoop::SourceId> waylandSource;
    std::unique_ptr<AtspiApplicationDirectory> accessibleApplications;
    std::unique_ptr<WaylandWindowFacts> waylandWindows;
    X11WindowFacts* windowFacts = nullptr;
    std::unique_ptr<WindowServer> windowServer;
    DesktopEntries desktopEntries;
    ApplicationIdentity identity;
    std::unique_ptr<X11Workspace> workspace;
    std::unique_ptr<LinuxPowerManagement> powerManagement;
    std::unique_ptr<Accessibility> accessibility;
    DialogAlerts alerts;
    X11GlobalShortcuts globalShortcuts;
    StatusNotifierItem statusBar;
    SocketScriptingCommands scriptingCommands;
    std::map<int, PollRunLoop::SourceId> fileEventSources;
    InotifyFileEventStreams fileEventStreams;
    // Identities found through desktop entries hold until an entry folder changes.
    std::unique_ptr<FileEventStream> desktopEntryFolders;
    std::unique_ptr<LoginItems> loginItems;

    void openX11(const char* display)
    {
        x11 = X11Connection::open(display);
        if (!x11)
            throw LinuxDesktopError(std::string("cannot open the X display ")
                + (display                       ? display
                        : environment("DISPLAY") ? environment("DISPLAY")
                                                 : "(DISPLAY is not set)"));
        windowFacts = x11.get();
        windowServer = std::make_unique<X11WindowServer>(*x11);
    }

    // Without a compositor that answers, the workspace is empty rather than the tracker stopped: the
    // session may still be starting.
    void openWayland()
    {
        wayland = WaylandConnection::open();
        if (!wayland) {
            log.warning(std::string("The Wayland compositor on ") + environment("WAYLAND_DISPLAY")
                + " does not answer: no windows are tracked.");
        } else if (!wayland->listsToplevels()) {
            log.info("The compositor does not list its windows (wlr-foreign-toplevel-management): the frontmost "
                     "window is the one the accessibility bus reports active.");
        }
        if (wayland) {
            waylandSource = runLoop.addReadableSource(wayland->fileDescriptor(), [this] { readWaylandEvents(); });
        }
        accessibleApplications = AtspiApplicationDirectory::connect();
        waylandWindows = std::make_unique<WaylandWindowFacts>(wayland.get(), accessibleApplications.get());
        windowFacts = waylandWindows.get();
        windowServer = std::make_unique<WaylandWindowServer>(wayland.get(), *waylandWindows);
    }

    void readWaylandEvents()
    {
        if (wayland->readEvents())
            return;
        runLoop.removeSource(*waylandSource);
        waylandSource.reset();
        log.warning("The Wayland compositor closed the connection: no windows are tracked from now on.");
    }
};

std::unique_ptr<LinuxDesktop> LinuxDesktop::open(
    const LinuxDesktopStores& stores, JsonLinesTrace& trace, const char* display)
{
    auto state = std::make_unique<State>(stores, trace, display);
    auto choice = display
        ? WindowSystemChoice { WindowSystem::x11, std::string("the X display ") + display + " was asked for" }
        : WindowSystemChoice::choose(environment, windowSystemPreference(stores.standardUserDefaults));
    if (!choice)
        throw LinuxDesktopError("neither WAYLAND_DISPLAY nor DISPLAY names a display");
    state->log.info("Window system: " + choice->reason + ".");
    if (choice->windowSystem == WindowSystem::wayland)
        state->openWayland();
    else
        state->openX11(display);
    state->workspace
        = std::make_unique<X11Workspace>(*state->windowFacts, state->identity, state->launcher, state->trace);
    state->powerManagement = std::make_unique<LinuxPowerManagement>(*state->workspace, state->clock, state->log);
    if (auto accessibility = AtspiAccessibility::connect(state->windowFacts)) {
        state->accessibility = std::move(accessibility);
    } else {
        state->log.warning("The accessibility bus (AT-SPI) is not available: window titles come from X11 alone, "
                           "without documents or web pages.");
        state->accessibility = std::make_unique<UnavailableAccessibility>();
    }
    auto entryFolders = DesktopEntries::applicationFolders();
    // The user's folder is made when missing, so that the first entry installed there is seen too.
    std::error_code ignored;
    std::filesystem::create_directories(entryFolders.front(), ignored);
    state->desktopEntryFolders = state->fileEventStreams.create(entryFolders, desktopEntryChangeLatencySeconds,
        [raw = state.get()](const auto&) { raw->identity.desktopEntriesChanged(); });
    state->desktopEntryFolders->start();
    auto desktop = std::unique_ptr<LinuxDesktop>(new LinuxDesktop(std::move(state)));
    desktop->state_->loginItems = makeLoginItems(stores, desktop->state_->executablePath);
    return desktop;
}

LinuxDesktop::LinuxDesktop(std::unique_ptr<State> state)
    : state_(std::move(state))
{
}

LinuxDesktop::~LinuxDesktop() = default;

PollRunLoop& LinuxDesktop::pollRunLoop()
{
    return state_->runLoop;
}

std::string LinuxDesktop::stopReason() const
{
    return state_->runLoop.stopReason();
}

std::vector<std::string> LinuxDesktop::languagesFromEnvironment(const char* language, const char* locale)
{
    std::vector<std::string> languages;
    if (language && *language) {
        std::istringstream list(language);
        for (std::string entry; std::getline(list, entry, ':');) {
            if (!entry.empty())
                languages.push_back(languageTag(entry));
        }
    }
    if (languages.empty())
        languages.push_back(languageTag(locale ? locale : ""));
    return languages;
}

Alerts& LinuxDesktop::alerts()
{
    return state_->alerts;
}

StatusBar& LinuxDesktop::statusBar()
{
    return state_->statusBar;
}

ScriptingCommands& LinuxDesktop::scriptingCommands()
{
    return state_->scriptingCommands;
}

FileEventStreams& LinuxDesktop::fileEventStreams()
{
    return state_->fileEventStreams;
}

GlobalShortcuts& LinuxDesktop::globalShortcuts()
{
    return state_->globalShortcuts;
}

// The program has no bundle here: the folder of its executable stands in for it, without a
// resources folder of its own, and the executable's identity for its build.
CurrentProcess LinuxDesktop::currentProcess()
{
    std::filesystem::path executable = state_->executablePath;
    ApplicationBundle bundle;
    bundle.path = executable.parent_path().string();
    bundle.bundleIdentifier = "info.quenby.VardelHelper";
    bundle.localizedName = "Vardel Tracker";
    if (state_->buildAtStart)
        bundle.info.insert_or_assign("CFBundleVersion", Value(*state_->buildAtStart));
    return { static_cast<ProcessIdentifier>(::getpid()), executable.string(), std::move(bundle) };
}

InstalledBuild LinuxDesktop::installedBuild()
{
    return { executableBuild(state_->executablePath), state_->executablePath };
}

// Asked only when there is no accessibility bus to read other applications through.
DesktopTexts LinuxDesktop::desktopTexts()
{
    return { { "To track your work fully, Vardel needs the desktop's accessibility bus (AT-SPI), which is not "
               "running.",
                 "With it, the tracker reads the title, the document and the web page address of the window you "
                 "work in; without it, it records only the application and its window title. Desktops start the "
                 "bus when accessibility is switched on, for example with \"gsettings set "
                 "org.gnome.desktop.interface toolkit-accessibility true\" or in their accessibility settings; "
                 "log in again afterwards.",
                 { "OK" }, "" },
        OsRelease::systemLine() };
}

// Starts the executable installed at the process's path, after the delay the user defaults may set.
std::string LinuxDesktop::relaunchScript(double delaySeconds, const CurrentProcess& process)
{
    auto delay = state_->stores.standardUserDefaults.object(relaunchDelayPreference);
    if (delay && delay->asNumber())
        delaySeconds = *delay->asNumber();
    return RelaunchScripts::startingExecutable(delaySeconds, process.processIdentifier, process.executablePath);
}

LoginItems& LinuxDesktop::loginItems()
{
    return *state_->loginItems;
}

std::vector<std::string> LinuxDesktop::preferredLanguages()
{
    const char* locale = environment("LC_ALL");
    if (!locale)
        locale = environment("LC_MESSAGES");
    if (!locale)
        locale = environment("LANG");
    return languagesFromEnvironment(environment("LANGUAGE"), locale);
}

Accessibility& LinuxDesktop::accessibility()
{
    return *state_->accessibility;
}
Workspace& LinuxDesktop::workspace()
{
    return *state_->workspace;
}
WindowServer& LinuxDesktop::windowServer()
{
    return *state_->windowServer;
}
PreferenceStore& LinuxDesktop::standardUserDefaults()
{
    return state_->stores.standardUserDefaults;
}
PreferenceStore& LinuxDesktop::productPreferences()
{
    return state_->stores.productPreferences;
}
DefaultsDomains& LinuxDesktop::defaultsDomains()
{
    return state_->stores.defaultsDomains;
}
Clock& LinuxDesktop::clock()
{
    return state_->clock;
}
RunLoop& LinuxDesktop::runLoop()
{
    return state_->runLoop;
}
ProcessLauncher& LinuxDesktop::processLauncher()
{
    return state_->launcher;
}
AnalyticsSink& LinuxDesktop::analytics()
{
    return state_->analytics;
}
Log& LinuxDesktop::log()
{
    return state_->log;
}
EventTrace& LinuxDesktop::trace()
{
    return state_->trace;
}
PropertyListFiles& LinuxDesktop::propertyListFiles()
{
    return state_->propertyListFiles;
}
StandardStreams& LinuxDesktop::standardStreams()
{
    return state_->standardStreams;
}
PowerManagement& LinuxDesktop::powerManagement()
{
    return *state_->powerManagement;
}
UserNotificationCenter& LinuxDesktop::userNotificationCenter()
{
    return state_->notifications;
}
TimeEntryEditor& LinuxDesktop::timeEntryEditor()
{
    return state_->timeEntryEditor;
}
RunningTaskSource& LinuxDesktop::runningTasks()
{
    return state_->runningTasks;
}

} // namespace vardel::linux_desktop
