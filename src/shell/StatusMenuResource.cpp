#include "shell/StatusMenuResource.h"

namespace vardel {

namespace {

MenuItem entry(std::string action, std::string title, int64_t tag = 0)
{
    MenuItem item;
    item.action = std::move(action);
    item.title = std::move(title);
    item.tag = tag;
    return item;
}

MenuItem pauseSubmenu()
{
    MenuItem container = entry("pauseTrackingForContainer:", "Pause App Tracking for…");
    const std::pair<int64_t, const char*> durations[] = { { 300, "5 Minutes" }, { 900, "15 Minutes" },
        { 1800, "30 Minutes" }, { 3600, "1 Hour" }, { 7200, "2 Hours" }, { 14400, "4 Hours" } };
    for (const auto& [seconds, title] : durations)
        container.submenu.push_back(entry("pauseTrackingFor:", title, seconds));
    return container;
}

} // namespace

Menu StatusMenuResource::load()
{
    return Menu { {
        entry("showCurrentTaskInfo:", "No Timer Running"),
        entry("startTask:", "Start Timer…"),
        entry("stopTask:", "Stop Timer"),
        entry("editRunningOrLatestTask:", "Edit Latest Timer…"),
        entry("totalTimeSpentToday:", "Today"),
        entry("timeRemainingInfo:", ""),
        entry("syncStatus:", "Sync Status"),
        entry("toggleTracking:", "Pause until Tomorrow"),
        pauseSubmenu(),
        entry("toggleAutomaticLaunch:", "Launch at Login"),
        entry("toggleAskAfterIdle:", "Ask for a Task after Idle Time"),
        entry("startMainApplication:", "Open Vardel"),
        entry("askToQuit:", "Quit Vardel Tracker"),
    } };
}

} // namespace vardel
