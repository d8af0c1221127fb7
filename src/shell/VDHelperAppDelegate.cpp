#include "shell/VDHelperAppDelegate.h"

#include "activity/VDInfoExtractor.h"
#include "calls/PowerManagementDumper.h"
#include "calls/RunningCallDetector.h"
#include "diagnostics/AccessibilityDumper.h"
#include "platform/Platform.h"
#include "product/DatabaseWrapper.h"
#include "product/DurationFormatter.h"
#include "product/HelperHelper.h"
#include "product/HelperPreferences.h"
#include "product/MainAppPreferences.h"
#include "product/OngoingTaskActivityManager.h"
#include "product/URLHandler.h"
#include "product/VDHelper.h"
#include "product/VDStartupManager.h"
#include "shell/StatusMenuResource.h"
#include "shell/VDPauseTrackingCommand.h"
#include "shell/VDResumeTrackingCommand.h"

#include <cmath>
#include <filesystem>

namespace vardel {

namespace {

// The exit status of an icon dump that could not write the icon; 2 stays with unreadable scenarios.
constexpr int failedDumpStatus = 1;

// Gives the target application time to come to the front and settle before its windows are read.
constexpr double windowDumpDelaySeconds = 3;

// A crash shortly after the last recorded activity is a crash loop in the making: the new process
// waits, and then leaves the restart to the next login.
constexpr double crashRecoveryWaitSeconds = 50;
constexpr double recentActivitySeconds = 86400;

constexpr double accessibilityCheckDelaySeconds = 300;
constexpr double defaultInitialSyncDelaySeconds = 15;
constexpr double firstSyncRequestDelaySeconds = 0.1;
constexpr double automaticBackupDelaySeconds = 270;
constexpr double terminationFlushSeconds = 5;
constexpr double defaultMaxStatusItemWidth = 200;
constexpr double relaunchDelaySeconds = 60;
// The item's own redrawing changes its appearance, so appearance changes are passed on at most
// this often.
constexpr double appearanceChangeThrottleSeconds = 10;
constexpr size_t keptManualQuits = 5;

constexpr const char* launchAtLoginMessage
    = "Would you like to have the Vardel tracker app launch automatically at login?";
constexpr const char* trackerMustRunText = "Vardel can only track your activities while the tracker app is running.";
constexpr const char* accessibilityMessage
    = "To track your work, Vardel needs permission to use your Mac’s Accessibility features.";
constexpr const char* accessibilityInformativeText = "Would you like to launch System Settings so that you can "
                                                     "enable \"Vardel Tracker\" in the Accessibility list?";
constexpr const char* quitMessage = "Do you really wish to quit the Vardel tracker app?";

PreferenceStore& defaults()
{
    return platform().standardUserDefaults();
}

bool defaultsFlag(std::string_view key)
{
    return defaults().getBool(key).value_or(false);
}

Date now()
{
    return platform().clock().now();
}

// The query of a window dump: a fourth argument, unless it is an option.
std::optional<std::string> searchQuery(const std::vector<std::string>& arguments)
{
    if (arguments.size() < 4 || arguments[3].starts_with('-'))
        return std::nullopt;
    return arguments[3];
}

// rand() scaled to [0, 1]: spreads the first syncs of many machines apart.
double randomFraction()
{
    return static_cast<double>(std::rand()) / 2147483647.0;
}

} // namespace

VDHelperAppDelegate::VDHelperAppDelegate(InfoLogger& infoLogger)
    : infoLogger_(infoLogger)
    , statusMenu_(StatusMenuResource::load())
{
}

VDHelperAppDelegate::~VDHelperAppDelegate()
{
    SCEvents& watcher = SCEvents::sharedPathWatcher();
    watcher.stopWatchingPaths();
    watcher.setDelegate(nullptr);
    StatusItemInfoProvider::sharedInstance().setPresenter(nullptr);
    DatabaseWrapper::sharedInstance().syncManager().setStatusTitleHandler(nullptr);
    infoLogger_.setPresenter(nullptr);
    infoLogger_.setFlushAndSyncFinishedHandler(nullptr);
    platform().scriptingCommands().setHandler(nullptr);
    platform().runLoop().setTerminationRequestHandler(nullptr);
}

void VDHelperAppDelegate::awakeFromNib(const std::vector<std::string>& arguments)
{
    if (auto status = runDumpMode(arguments)) {
        platform().log().info("Dump finished; exiting.");
        platform().runLoop().stop(*status, "dump");
        return;
    }
    if (arguments.size() >= 2 && arguments[1] == "--fromCrashRecovery" && recoverFromCrash())
        return;
    relauncher_ = std::make_unique<SelfRelauncher>([this](bool isRelaunch) { prepareRecordingForShutdown(isRelaunch); },
        [] { platform().log().info("Waiting for the relaunch script to end the process"); });
    askToLaunchAtLogin();
    askForAccessibility();
    setUpStatusItem();
    connectRecordingService();
    startUpdateWatcher();
    updateStartTaskShortcut();
    prepareDatabase();
    scheduleDeferredWork();
    platform().scriptingCommands().setHandler(
        [this](const ScriptingCommandRequest& request) { receiveScriptingCommand(request); });
    platform().runLoop().setTerminationRequestHandler(
        [this](const std::string& reason) { applicationShouldTerminate(reason); });
}

void VDHelperAppDelegate::applicationDidFinishLaunching(const std::vector<std::string>& arguments)
{
    for (size_t index = 1; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        auto scheme = argument.find("://");
        if (scheme != std::string::npos && scheme > 0 && !argument.starts_with('-'))
            URLHandler::handleGetURL(argument);
    }
}

std::optional<int> VDHelperAppDelegate::runDumpMode(const std::vector<std::string>& arguments)
{
    // Only the first argument selects a mode; a mode that needs a bundle identifier is no mode without one.
    if (arguments.size() < 2)
        return std::nullopt;
    const std::string& mode = arguments[1];
    if (mode == "--dumpPMAssertions") {
        PowerManagementDumper::dumpPowerManagementAssertions();
        return 0;
    }
    if (arguments.size() < 3)
        return std::nullopt;
    const std::string& bundleIdentifier = arguments[2];
    if (mode == "--dumpApplicationWindows") {
        platform().runLoop().sleep(windowDumpDelaySeconds);
        AccessibilityDumper::dumpWindowsForApplicationWithBundleIdentifier(bundleIdentifier, searchQuery(arguments));
        return 0;
    }
    if (mode == "--dumpApplicationIcon")
        return AccessibilityDumper::dumpIconForApplicationWithPossibleBundleIdentifier(bundleIdentifier)
            ? 0
            : failedDumpStatus;
    return std::nullopt;
}

bool VDHelperAppDelegate::recoverFromCrash()
{
    auto lastDate = defaults().object("_currentDate");
    auto date = lastDate ? lastDate->asDate() : std::nullopt;
    double age = date ? now().secondsSince1970 - date->secondsSince1970 : -1;
    bool recent = date && age >= 0 && age < recentActivitySeconds;
    HelperHelper::logEventWithName(
        "VDHelperAppDelegate.awakeFromNib.fromCrashRecovery", { { "successful", Value(recent ? 0 : 1) } }, true);
    platform().runLoop().sleep(crashRecoveryWaitSeconds);
    if (recent)
        platform().runLoop().stop(0, "crashRecovery");
    return recent;
}

void VDHelperAppDelegate::askToLaunchAtLogin()
{
    if (VDStartupManager::shouldStartAtLogin() || !MainAppPreferences::onboardingHasCompleted()
        || defaultsFlag("dontAskToLaunchAtLogin"))
        return;
    AlertResponse response = platform().alerts().runModal(
        { launchAtLoginMessage, trackerMustRunText, { "Launch at Login", "Don't start automatically" }, true, false });
    if (response.button == 1)
        VDStartupManager::setShouldStartAtLogin(true);
    if (response.suppressionState)
        defaults().setObject("dontAskToLaunchAtLogin", Value(true));
}

void VDHelperAppDelegate::askForAccessibility()
{
    if (VDHelper::accessibilityAvailable() || !MainAppPreferences::onboardingHasCompleted()
        || defaultsFlag("dontNotifyAboutDisabledAccessibilityAPI"))
        return;
    AlertResponse response = platform().alerts().runModal({ accessibilityMessage, accessibilityInformativeText,
        { "Open System Settings", "Continue Anyway" }, true, false });
    if (response.button == 1)
        VDHelper::openAccessibilityPreferencePane();
    if (response.suppressionState)
        defaults().setObject("dontNotifyAboutDisabledAccessibilityAPI", Value(true));
}

void VDHelperAppDelegate::setUpStatusItem()
{
    double maxWidth = defaults().getDouble("VDHelperAppDelegate_maxStatusItemWidth").value_or(0);
    if (maxWidth == 0)
        maxWidth = defaultMaxStatusItemWidth;
    if (maxWidth >= 0)
        statusItem_.maxWidth = maxWidth;
    std::string identifier = platform().currentProcess().mainBundle.bundleIdentifier.value_or("");
    platform().statusBar().installStatusItem(identifier + ".mainStatusItem", statusMenu_, *this);
}

void VDHelperAppDelegate::connectRecordingService()
{
    callTimeEntryOffers_.registerNotificationCategory();
    RunningCallDetector::sharedInstance().setCallEndReaction(&callTimeEntryOffers_);
    infoLogger_.setCallDetector(&RunningCallDetector::sharedInstance());
    infoLogger_.setPresenter(this);
    infoLogger_.setInfoExtractor(this);
    infoLogger_.setShouldTrack(true);
    StatusItemInfoProvider::sharedInstance().setPresenter(this);
    updateStatusItemTransparency();
    updateStatusItemProperties();
    infoLogger_.startSampling();
}

// A new build replaces the files in the executable's folder.
void VDHelperAppDelegate::startUpdateWatcher()
{
    std::filesystem::path executable = platform().currentProcess().executablePath;
    SCEvents& watcher = SCEvents::sharedPathWatcher();
    watcher.setDelegate(relauncher_.get());
    watcher.startWatchingPaths({ executable.parent_path().string() });
}

void VDHelperAppDelegate::prepareRecordingForShutdown(bool isRelaunch)
{
    platform().runLoop().schedule(0, [this, isRelaunch] { infoLogger_.prepareForShutdownWithIsRelaunch(isRelaunch); });
}

void VDHelperAppDelegate::prepareDatabase()
{
    DatabaseWrapper& wrapper = DatabaseWrapper::sharedInstance();
    wrapper.syncManager().setStatusTitleHandler(
        [this](const std::optional<std::string>& title) { updateSyncStatusItemWithTitle(title); });
    if (!wrapper.database())
        return;
    wrapper.generateAllSampleDataIfNeeded();
    wrapper.setupPostSyncUpdater();
}

void VDHelperAppDelegate::scheduleDeferredWork()
{
    double syncDelay = defaults().getDouble("initialSyncDelay").value_or(0);
    if (syncDelay == 0)
        syncDelay = defaultInitialSyncDelaySeconds;
    RunLoop& runLoop = platform().runLoop();
    runLoop.schedule(syncDelay + randomFraction(), [] {
        DatabaseWrapper& wrapper = DatabaseWrapper::sharedInstance();
        if (wrapper.database())
            wrapper.syncManager().dispatchSyncRequestWithDelay(firstSyncRequestDelaySeconds);
    });
    runLoop.schedule(automaticBackupDelaySeconds, [] {
        DatabaseWrapper& wrapper = DatabaseWrapper::sharedInstance();
        if (wrapper.database())
            wrapper.createAutomaticBackup();
    });
    // One relaunch per process; the new process schedules its own.
    double relaunchInterval = defaults().getDouble("VDHelperAppDelegate_relaunchInterval").value_or(0);
    if (relaunchInterval > 0) {
        platform().runLoop().schedule(relaunchInterval, [this] {
            relauncher_->relaunchWithDelay(
                relaunchDelaySeconds, { { "reason", Value("VDHelperAppDelegate_relaunchInterval") } });
        });
    }
    platform().runLoop().schedule(accessibilityCheckDelaySeconds, [this] { checkForAccessibilitySuccess(); });
}

void VDHelperAppDelegate::checkForAccessibilitySuccess()
{
    HelperHelper::checkForAccessibilitySuccess(VDInfoExtractor::statistics());
}

std::optional<VDActivity> VDHelperAppDelegate::getCurrentActivity()
{
    return VDInfoExtractor::currentActivity();
}

void VDHelperAppDelegate::callInfoExtractorFor(VDActivity& activity)
{
    VDInfoExtractor::callInfoExtractorForActivity(activity);
}

const std::set<std::string, std::less<>>& VDHelperAppDelegate::noAccessibilityApplicationBundleIdentifiers()
{
    return VDInfoExtractor::noAccessibilityApplicationBundleIdentifiers();
}

// Status item

void VDHelperAppDelegate::updateStatusItemTransparency()
{
    statusItem_.appearsDisabled = !infoLogger_.appearsActive();
    platform().statusBar().updateStatusItem(statusItem_);
}

void VDHelperAppDelegate::updateStatusItemProperties()
{
    StatusItemInfoProvider::sharedInstance().updateStatusItem(
        statusItem_, menuEntry("totalTimeSpentToday:"), menuEntry("showCurrentTaskInfo:"));
    platform().statusBar().updateStatusItem(statusItem_);
    updateStatusItemVisibility();
}

void VDHelperAppDelegate::updateSyncStatusItemWithTitle(const std::optional<std::string>& title)
{
    MenuItem* item = menuEntry("syncStatus:");
    if (!item)
        return;
    bool shown = shouldShowSyncStatusItem() && title;
    item->hidden = !shown;
    item->title = shown ? *title : "";
}

void VDHelperAppDelegate::updateStatusItemVisibility()
{
    bool visible = HelperPreferences::statusItemVisible();
    if (statusItem_.visible == visible)
        return;
    statusItem_.visible = visible;
    platform().statusBar().updateStatusItem(statusItem_);
}

bool VDHelperAppDelegate::shouldShowSyncStatusItem() const
{
    return defaultsFlag("VDHelperAppDelegate_shouldShowSyncStatusItem");
}

void VDHelperAppDelegate::effectiveAppearanceChanged()
{
    if (defaultsFlag("VDHelperAppDelegate_dontObserveStatusItemEffectiveAppearance"))
        return;
    Date current = now();
    if (lastEffectiveAppearanceChangeDispatched_
        && current.secondsSince1970 - lastEffectiveAppearanceChangeDispatched_->secondsSince1970
            <= appearanceChangeThrottleSeconds)
        return;
    StatusItemInfoProvider::sharedInstance().dispatchStatusUpdateRequest(false);
    lastEffectiveAppearanceChangeDispatched_ = current;
}

// Menu

MenuItem* VDHelperAppDelegate::menuEntry(std::string_view action)
{
    for (MenuItem& item : statusMenu_.items) {
        if (item.action == action)
            return &item;
    }
    return nullptr;
}

void VDHelperAppDelegate::menuWillOpen(Menu&)
{
    HelperHelper::logEventWithName("Setapp.Interaction.menuWillOpen");
    StatusItemInfoProvider::sharedInstance().setStatusItemHighlighted(true);
    infoLogger_.statusItemClicked();
    updateStatusItemProperties();
    if (platform().statusBar().currentModifierFlags() & ModifierFlag::option)
        startMainApplication();
}

void VDHelperAppDelegate::menuDidClose(Menu&)
{
    StatusItemInfoProvider::sharedInstance().setStatusItemHighlighted(false);
    updateStatusItemProperties();
}

std::optional<double> VDHelperAppDelegate::secondsLeftInPause() const
{
    if (infoLogger_.shouldTrack() || !resumeTrackingTimer_ || !resumeTrackingTimer_->isValid())
        return std::nullopt;
    double left = resumeTrackingTimer_->fireDate().secondsSince1970 - now().secondsSince1970;
    return left > 0 ? std::optional(left) : std::nullopt;
}

bool VDHelperAppDelegate::validateMenuItem(MenuItem& item)
{
    const std::string& action = item.action;
    bool tasksAvailable = HelperHelper::tasksAvailable();
    OngoingTaskActivityManager tasks(platform().runningTasks());
    if (action == "toggleAutomaticLaunch:") {
        item.checked = VDStartupManager::shouldStartAtLogin();
        return true;
    }
    if (action == "toggleAskAfterIdle:") {
        item.hidden = !tasksAvailable;
        item.checked = HelperPreferences::shouldAskForTaskAfterIdle();
        return HelperPreferences::shouldSuspendTrackingUponIdle();
    }
    if (action == "toggleTracking:") {
        item.title = infoLogger_.shouldTrack() ? "Pause until Tomorrow" : "Resume App Tracking";
        return true;
    }
    if (action == "pauseTrackingForContainer:") {
        auto left = secondsLeftInPause();
        item.title = left ? "Paused for the next " + DurationFormatter::shortStringFor(*left, 2, false)
                          : "Pause App Tracking for…";
        return true;
    }
    if (action == "totalTimeSpentToday:")
        return false;
    if (action == "timeRemainingInfo:") {
        auto info = HelperHelper::remainingTimeInfo();
        item.hidden = !info;
        if (info)
            item.title = *info;
        return false;
    }
    if (action == "syncStatus:") {
        if (!shouldShowSyncStatusItem()) {
            item.hidden = true;
            return false;
        }
        if (item.title == "Sync Status")
            item.title = "Determining Sync Status…";
        StatusItemInfoProvider::sharedInstance().prepareSyncStatusMenuItem();
        return false;
    }
    if (action == "showCurrentTaskInfo:") {
        item.hidden = !tasksAvailable;
        return false;
    }
    if (action == "editRunningOrLatestTask:") {
        tasks.updateEditRunningOrLatestTaskMenuItem(item);
        return HelperHelper::taskButtonsEnabled();
    }
    auto shortcut = HelperPreferences::startTaskShortcut();
    bool running = tasks.hasRunningActivity();
    if (action == "startTask:") {
        item.title = running ? "Switch Timer…" : "Start Timer…";
        item.keyEquivalent = !running && shortcut ? shortcut->key : "";
        item.keyEquivalentModifierMask = !running && shortcut ? shortcut->modifierFlags : 0;
        item.hidden = !tasksAvailable;
        return HelperHelper::taskButtonsEnabled();
    }
    if (action == "stopTask:") {
        item.keyEquivalent = running && shortcut ? shortcut->key : "";
        item.keyEquivalentModifierMask = running && shortcut ? shortcut->modifierFlags : 0;
        item.hidden = !running;
        return HelperHelper::taskButtonsEnabled();
    }
    return true;
}

void VDHelperAppDelegate::performAction(const MenuItem& item)
{
    const std::string& action = item.action;
    if (action == "toggleTracking:")
        toggleTracking();
    else if (action == "pauseTrackingFor:")
        pauseTrackingForTime(static_cast<double>(item.tag));
    else if (action == "startTask:")
        startTask();
    else if (action == "stopTask:")
        stopTask();
    else if (action == "editRunningOrLatestTask:")
        OngoingTaskActivityManager(platform().runningTasks()).editRunningOrLatestTask();
    else if (action == "startMainApplication:")
        startMainApplication();
    else if (action == "toggleAutomaticLaunch:")
        VDStartupManager::setShouldStartAtLogin(!VDStartupManager::shouldStartAtLogin());
    else if (action == "toggleAskAfterIdle:")
        HelperPreferences::setShouldAskForTaskAfterIdle(!HelperPreferences::shouldAskForTaskAfterIdle());
    else if (action == "askToQuit:")
        askToQuit();
    // The information lines and the submenu's parent do nothing when chosen.
}

void VDHelperAppDelegate::startTask()
{
    HelperHelper::logEventWithName("Setapp.Interaction.startTask");
    updateStatusItemVisibility();
    OngoingTaskActivityManager(platform().runningTasks()).showEditorToStartTaskActivity();
}

void VDHelperAppDelegate::stopTask()
{
    OngoingTaskActivityManager(platform().runningTasks()).stopRunningActivityWithShowNotification(true, false);
}

void VDHelperAppDelegate::startMainApplication()
{
    auto bundle = platform().workspace().applicationBundle(VDHelper::mainAppBundleIdentifierForLaunching);
    if (bundle)
        platform().workspace().openApplication(bundle->path);
}

// Tracking

void VDHelperAppDelegate::setShouldTrack(bool shouldTrack)
{
    resumeTrackingTimer_.reset();
    infoLogger_.setShouldTrack(shouldTrack);
    updateStatusItemTransparency();
}

void VDHelperAppDelegate::pauseTrackingForTime(double seconds)
{
    setShouldTrack(false);
    // Zero, a negative or a meaningless duration pauses until tracking is resumed by hand.
    if (seconds > 0 && std::isfinite(seconds))
        resumeTrackingTimer_ = std::make_unique<MyLilTimer>(seconds, [this] { resumeTracking(); });
}

void VDHelperAppDelegate::resumeTracking()
{
    setShouldTrack(true);
}

void VDHelperAppDelegate::toggleTracking()
{
    if (!infoLogger_.shouldTrack())
        setShouldTrack(true);
    else
        pauseTrackingForTime(HelperHelper::secondsUntilTomorrow());
}

void VDHelperAppDelegate::updateStartTaskShortcut()
{
    MASShortcutBinder& binder = MASShortcutBinder::sharedBinder();
    binder.setBindingOptions(MASShortcutBinder::fakeShortcutTransformer);
    if (!editTaskShortcutBinder_) {
        editTaskShortcutBinder_ = std::make_unique<MASShortcutBinder>();
        editTaskShortcutBinder_->setBindingOptions(MASShortcutBinder::fakeShortcutWithExtraShiftTransformer);
    }
    const std::string key = HelperPreferences::startTaskShortcutKey;
    if (!HelperHelper::tasksAvailable()) {
        binder.breakBindingWithDefaultsKey(key);
        return;
    }
    binder.bindShortcutWithDefaultsKey(key, [this] {
        if (!HelperHelper::tasksAvailable())
            return;
        if (OngoingTaskActivityManager(platform().runningTasks()).hasRunningActivity())
            stopTask();
        else
            startTask();
    });
    editTaskShortcutBinder_->bindShortcutWithDefaultsKey(key, [] {
        if (HelperHelper::tasksAvailable())
            OngoingTaskActivityManager(platform().runningTasks()).editRunningOrLatestTask();
    });
}

void VDHelperAppDelegate::receiveScriptingCommand(const ScriptingCommandRequest& request)
{
    if (request.name == "pause")
        VDPauseTrackingCommand(request.arguments).performDefaultImplementation(*this);
    else if (request.name == "resume")
        VDResumeTrackingCommand(request.arguments).performDefaultImplementation(*this);
    else
        platform().log().warning("Unknown scripting command: " + request.name);
}

// Quitting

void VDHelperAppDelegate::askToQuit()
{
    if (defaultsFlag("shouldQuitHelperFromMenuItem")) {
        quitNow();
        return;
    }
    AlertResponse response = platform().alerts().runModal(
        { quitMessage, trackerMustRunText, { "Keep Tracking", "Quit Vardel Tracker" }, true, true });
    if (response.suppressionState)
        defaults().setObject("shouldQuitHelperFromMenuItem", Value(true));
    if (response.button != 1)
        quitNow();
}

void VDHelperAppDelegate::quitNow()
{
    logQuitEvent();
    applicationShouldTerminate("quit");
}

void VDHelperAppDelegate::logQuitEvent()
{
    HelperHelper::logEventWithName("VDHelperAppDelegate.quitManually", {}, true);
    Value::List quits;
    if (auto stored = defaults().object("VDHelperAppDelegate_lastManualQuits"); stored && stored->asList())
        quits = *stored->asList();
    quits.insert(quits.begin(), Value(now()));
    if (quits.size() > keptManualQuits)
        quits.erase(quits.begin() + keptManualQuits, quits.end());
    defaults().setObject("VDHelperAppDelegate_lastManualQuits", Value(std::move(quits)));
    defaults().synchronize();
}

void VDHelperAppDelegate::applicationShouldTerminate(const std::string& reason)
{
    if (terminationReason_)
        return;
    terminationReason_ = reason;
    infoLogger_.setFlushAndSyncFinishedHandler([this] { replyToApplicationShouldTerminate(); });
    if (!infoLogger_.prepareForShutdownWithIsRelaunch(false)) {
        replyToApplicationShouldTerminate();
        return;
    }
    // Whichever comes first, the recording service's word or the time limit, ends the process.
    platform().runLoop().schedule(terminationFlushSeconds, [this] { replyToApplicationShouldTerminate(); });
}

void VDHelperAppDelegate::replyToApplicationShouldTerminate()
{
    if (terminating_)
        return;
    terminating_ = true;
    applicationWillTerminate();
}

void VDHelperAppDelegate::applicationWillTerminate()
{
    DatabaseWrapper::sharedInstance().configureUnavailable();
    platform().runLoop().stop(0, terminationReason_.value_or("quit"));
}

} // namespace vardel
