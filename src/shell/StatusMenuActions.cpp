#include "shell/StatusMenuActions.h"

#include "platform/Platform.h"
#include "product/DurationFormatter.h"
#include "product/HelperHelper.h"
#include "product/HelperPreferences.h"
#include "product/OngoingTaskActivityManager.h"
#include "product/StatusItemInfoProvider.h"
#include "product/VDHelper.h"
#include "product/VDStartupManager.h"

#include <algorithm>

namespace vardel {

namespace {

bool hasRunningTask()
{
    return OngoingTaskActivityManager(platform().runningTasks()).hasRunningActivity();
}

// The stored start-task shortcut as the entry's key equivalent, or none.
void showShortcut(MenuItem& item, bool shown)
{
    auto shortcut = HelperPreferences::startTaskShortcut();
    item.keyEquivalent = shown && shortcut ? shortcut->key : "";
    item.keyEquivalentModifierMask = shown && shortcut ? shortcut->modifierFlags : 0;
}

} // namespace

StatusMenuActions::StatusMenuActions(InfoLogger& infoLogger, StatusItemController& statusItem,
    TrackingController& tracking, TaskActions& tasks, TerminationHandler& termination)
    : infoLogger_(infoLogger)
    , statusItem_(statusItem)
    , tracking_(tracking)
    , tasks_(tasks)
    , termination_(termination)
{
}

std::span<const StatusMenuActions::Row> StatusMenuActions::table()
{
    using Self = StatusMenuActions;
    static const Row rows[] = {
        { "showCurrentTaskInfo:", &Self::validateCurrentTaskInfo, nullptr },
        { "startTask:", &Self::validateStartTask, &Self::startTask },
        { "stopTask:", &Self::validateStopTask, &Self::stopTask },
        { "editRunningOrLatestTask:", &Self::validateEditTask, &Self::editRunningOrLatestTask },
        { "totalTimeSpentToday:", &Self::neverEnabled, nullptr },
        { "timeRemainingInfo:", &Self::validateTimeRemaining, nullptr },
        { "syncStatus:", &Self::validateSyncStatus, nullptr },
        { "toggleTracking:", &Self::validateToggleTracking, &Self::toggleTracking },
        { "pauseTrackingForContainer:", &Self::validatePauseContainer, nullptr },
        { "pauseTrackingFor:", &Self::alwaysEnabled, &Self::pauseTrackingFor },
        { "toggleAutomaticLaunch:", &Self::validateAutomaticLaunch, &Self::toggleAutomaticLaunch },
        { "toggleAskAfterIdle:", &Self::validateAskAfterIdle, &Self::toggleAskAfterIdle },
        { "startMainApplication:", &Self::alwaysEnabled, &Self::startMainApplication },
        { "askToQuit:", &Self::alwaysEnabled, &Self::askToQuit },
    };
    return rows;
}

const StatusMenuActions::Row* StatusMenuActions::row(std::string_view action)
{
    auto rows = table();
    auto found = std::ranges::find(rows, action, &Row::action);
    return found != rows.end() ? &*found : nullptr;
}

std::vector<std::string_view> StatusMenuActions::actionNames()
{
    std::vector<std::string_view> names;
    for (const Row& entry : table())
        names.push_back(entry.action);
    return names;
}

void StatusMenuActions::menuWillOpen()
{
    HelperHelper::logEventWithName("Setapp.Interaction.menuWillOpen");
    StatusItemInfoProvider::sharedInstance().setStatusItemHighlighted(true);
    infoLogger_.statusItemClicked();
    statusItem_.updateStatusItemProperties();
    if (platform().statusBar().currentModifierFlags() & ModifierFlag::option)
        openMainApplication();
}

void StatusMenuActions::menuDidClose()
{
    StatusItemInfoProvider::sharedInstance().setStatusItemHighlighted(false);
    statusItem_.updateStatusItemProperties();
}

bool StatusMenuActions::validateMenuItem(MenuItem& item)
{
    const Row* found = row(item.action);
    return found ? (this->*found->validate)(item) : true;
}

void StatusMenuActions::performAction(const MenuItem& item)
{
    const Row* found = row(item.action);
    if (!found) {
        platform().log().warning("Unknown menu action: " + item.action);
        return;
    }
    if (found->perform)
        (this->*found->perform)(item);
}

// Validation

bool StatusMenuActions::alwaysEnabled(MenuItem&)
{
    return true;
}

bool StatusMenuActions::neverEnabled(MenuItem&)
{
    return false;
}

bool StatusMenuActions::validateAutomaticLaunch(MenuItem& item)
{
    item.checked = VDStartupManager::shouldStartAtLogin();
    return true;
}

bool StatusMenuActions::validateAskAfterIdle(MenuItem& item)
{
    item.hidden = !HelperHelper::tasksAvailable();
    item.checked = HelperPreferences::shouldAskForTaskAfterIdle();
    return HelperPreferences::shouldSuspendTrackingUponIdle();
}

bool StatusMenuActions::validateToggleTracking(MenuItem& item)
{
    item.title = tracking_.shouldTrack() ? "Pause until Tomorrow" : "Resume App Tracking";
    return true;
}

bool StatusMenuActions::validatePauseContainer(MenuItem& item)
{
    auto left = tracking_.secondsLeftInPause();
    item.title = left ? "Paused for the next " + DurationFormatter::shortStringFor(*left, 2, false)
                      : "Pause App Tracking for…";
    return true;
}

bool StatusMenuActions::validateTimeRemaining(MenuItem& item)
{
    auto info = HelperHelper::remainingTimeInfo();
    item.hidden = !info;
    if (info)
        item.title = *info;
    return false;
}

bool StatusMenuActions::validateSyncStatus(MenuItem& item)
{
    if (!StatusItemController::shouldShowSyncStatusItem()) {
        item.hidden = true;
        return false;
    }
    if (item.title == "Sync Status")
        item.title = "Determining Sync Status…";
    StatusItemInfoProvider::sharedInstance().prepareSyncStatusMenuItem();
    return false;
}

bool StatusMenuActions::validateCurrentTaskInfo(MenuItem& item)
{
    item.hidden = !HelperHelper::tasksAvailable();
    return false;
}

bool StatusMenuActions::validateEditTask(MenuItem& item)
{
    OngoingTaskActivityManager(platform().runningTasks()).updateEditRunningOrLatestTaskMenuItem(item);
    return HelperHelper::taskButtonsEnabled();
}

bool StatusMenuActions::validateStartTask(MenuItem& item)
{
    bool running = hasRunningTask();
    item.title = running ? "Switch Timer…" : "Start Timer…";
    showShortcut(item, !running);
    item.hidden = !HelperHelper::tasksAvailable();
    return HelperHelper::taskButtonsEnabled();
}

bool StatusMenuActions::validateStopTask(MenuItem& item)
{
    bool running = hasRunningTask();
    showShortcut(item, running);
    item.hidden = !running;
    return HelperHelper::taskButtonsEnabled();
}

// Actions

void StatusMenuActions::toggleTracking(const MenuItem&)
{
    tracking_.toggleTracking();
}

// The submenu's entries carry their durations, in seconds, as tags.
void StatusMenuActions::pauseTrackingFor(const MenuItem& item)
{
    tracking_.pauseTrackingForTime(static_cast<double>(item.tag));
}

void StatusMenuActions::startTask(const MenuItem&)
{
    tasks_.startTask();
}

void StatusMenuActions::stopTask(const MenuItem&)
{
    TaskActions::stopTask();
}

void StatusMenuActions::editRunningOrLatestTask(const MenuItem&)
{
    TaskActions::editRunningOrLatestTask();
}

void StatusMenuActions::startMainApplication(const MenuItem&)
{
    openMainApplication();
}

void StatusMenuActions::openMainApplication()
{
    auto bundle = platform().workspace().applicationBundle(VDHelper::mainAppBundleIdentifierForLaunching);
    if (bundle)
        platform().workspace().openApplication(bundle->path);
}

void StatusMenuActions::toggleAutomaticLaunch(const MenuItem&)
{
    VDStartupManager::setShouldStartAtLogin(!VDStartupManager::shouldStartAtLogin());
}

void StatusMenuActions::toggleAskAfterIdle(const MenuItem&)
{
    HelperPreferences::setShouldAskForTaskAfterIdle(!HelperPreferences::shouldAskForTaskAfterIdle());
}

void StatusMenuActions::askToQuit(const MenuItem&)
{
    termination_.askToQuit();
}

} // namespace vardel
