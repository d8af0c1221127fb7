#include "shell/VDHelperAppDelegate.h"

#include "activity/VDInfoExtractor.h"
#include "calls/RunningCallDetector.h"
#include "platform/Platform.h"
#include "product/DatabaseWrapper.h"
#include "product/HelperHelper.h"
#include "shell/CommandLineModes.h"
#include "shell/StartupQuestions.h"
#include "shell/VDPauseTrackingCommand.h"
#include "shell/VDResumeTrackingCommand.h"

#include <filesystem>

namespace vardel {

VDHelperAppDelegate::VDHelperAppDelegate(InfoLogger& infoLogger)
    : infoLogger_(infoLogger)
    , installation_(Platform::installation())
    , statusItem_(infoLogger)
    , tracking_(infoLogger, statusItem_)
    , tasks_(statusItem_)
    , termination_(infoLogger)
    , menu_(infoLogger, statusItem_, tracking_, tasks_, termination_)
{
}

VDHelperAppDelegate::~VDHelperAppDelegate()
{
    SCEvents& watcher = SCEvents::sharedPathWatcher();
    watcher.stopWatchingPaths();
    watcher.setDelegate(nullptr);
    StatusItemInfoProvider::sharedInstance().setPresenter(nullptr);
    DatabaseWrapper::sharedInstance().syncManager().setStatusTitleHandler(nullptr);
    RunningCallDetector::sharedInstance().setCallEndReaction(nullptr);
    infoLogger_.setPresenter(nullptr);
    infoLogger_.setInfoExtractor(nullptr);
    if (installation_ != 0 && installation_ == Platform::installation()) {
        platform().scriptingCommands().setHandler(nullptr);
        platform().runLoop().setTerminationRequestHandler(nullptr);
        platform().statusBar().observeAppearanceChanges(nullptr);
        platform().globalShortcuts().listen({}, nullptr);
    }
}

void VDHelperAppDelegate::awakeFromNib(const std::vector<std::string>& arguments)
{
    if (auto status = CommandLineModes::runDumpMode(arguments)) {
        platform().log().info("Dump finished; exiting.");
        platform().runLoop().stop(*status, "dump");
        return;
    }
    if (CommandLineModes::recoverFromCrashIfAsked(arguments))
        return;
    relauncher_ = std::make_unique<SelfRelauncher>(
        [this](bool isRelaunch) { termination_.prepareRecordingForShutdown(isRelaunch); },
        [] { platform().log().info("Waiting for the relaunch script to end the process"); });
    StartupQuestions::askToLaunchAtLogin();
    StartupQuestions::askForAccessibility();
    statusItem_.install(*this);
    connectRecordingService();
    startUpdateWatcher();
    updateStartTaskShortcut();
    prepareDatabase();
    deferredWork_.schedule(*relauncher_, [this] { checkForAccessibilitySuccess(); });
    platform().scriptingCommands().setHandler(
        [this](const ScriptingCommandRequest& request) { receiveScriptingCommand(request); });
    platform().runLoop().setTerminationRequestHandler(
        [this](const std::string& reason) { applicationShouldTerminate(reason); });
}

void VDHelperAppDelegate::applicationDidFinishLaunching(const std::vector<std::string>& arguments)
{
    CommandLineModes::handleURLArguments(arguments);
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

void VDHelperAppDelegate::receiveScriptingCommand(const ScriptingCommandRequest& request)
{
    if (request.name == "pause")
        VDPauseTrackingCommand(request.arguments).performDefaultImplementation(*this);
    else if (request.name == "resume")
        VDResumeTrackingCommand(request.arguments).performDefaultImplementation(*this);
    else
        platform().log().warning("Unknown scripting command: " + request.name);
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
    statusItem_.updateStatusItemTransparency();
}

void VDHelperAppDelegate::updateStatusItemProperties()
{
    statusItem_.updateStatusItemProperties();
}

void VDHelperAppDelegate::updateSyncStatusItemWithTitle(const std::optional<std::string>& title)
{
    statusItem_.updateSyncStatusItemWithTitle(title);
}

void VDHelperAppDelegate::updateStatusItemVisibility()
{
    statusItem_.updateStatusItemVisibility();
}

bool VDHelperAppDelegate::shouldShowSyncStatusItem() const
{
    return StatusItemController::shouldShowSyncStatusItem();
}

void VDHelperAppDelegate::effectiveAppearanceChanged()
{
    statusItem_.effectiveAppearanceChanged();
}

// Menu

void VDHelperAppDelegate::menuWillOpen(Menu&)
{
    menu_.menuWillOpen();
}

bool VDHelperAppDelegate::validateMenuItem(MenuItem& item)
{
    return menu_.validateMenuItem(item);
}

void VDHelperAppDelegate::menuDidClose(Menu&)
{
    menu_.menuDidClose();
}

void VDHelperAppDelegate::performAction(const MenuItem& item)
{
    menu_.performAction(item);
}

// Tracking

void VDHelperAppDelegate::setShouldTrack(bool shouldTrack)
{
    tracking_.setShouldTrack(shouldTrack);
}

void VDHelperAppDelegate::pauseTrackingForTime(double seconds)
{
    tracking_.pauseTrackingForTime(seconds);
}

void VDHelperAppDelegate::resumeTracking()
{
    tracking_.resumeTracking();
}

void VDHelperAppDelegate::toggleTracking()
{
    tracking_.toggleTracking();
}

void VDHelperAppDelegate::updateStartTaskShortcut()
{
    tasks_.updateStartTaskShortcut();
}

// Quitting

void VDHelperAppDelegate::askToQuit()
{
    termination_.askToQuit();
}

void VDHelperAppDelegate::logQuitEvent()
{
    termination_.logQuitEvent();
}

void VDHelperAppDelegate::applicationShouldTerminate(const std::string& reason)
{
    termination_.applicationShouldTerminate(reason);
}

} // namespace vardel
