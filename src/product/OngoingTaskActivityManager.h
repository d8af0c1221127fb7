#pragma once

#include "platform/RunningTaskSource.h"
#include "platform/StatusBar.h"
#include "platform/Value.h"

#include <optional>

namespace vardel {

// The product's task timer as the tracker sees it. The timer runs in the product, so every question
// is answered from the source at the moment it is asked.
class OngoingTaskActivityManager {
public:
    explicit OngoingTaskActivityManager(RunningTaskSource& source)
        : source_(source)
    {
    }

    bool hasRunningActivity() const { return runningActivity().has_value(); }
    std::optional<RunningTaskTimer> runningActivity() const { return source_.runningTask(); }
    // How long the running timer has run at `now`, never negative (a timer started by a machine whose
    // clock is ahead); nothing without a running timer.
    std::optional<double> elapsedSeconds(Date now) const;

    // Opens the editor for a new timer; saving it starts the timer now.
    void showEditorToStartTaskActivity();
    // Records the running timer as a time entry and stops it. The tracker's own stops show no
    // notification and are never automatic, so both flags only reach the log.
    void stopRunningActivityWithShowNotification(bool showNotification, bool autoStopped);
    // Opens the editor for the running timer (saving renames it), or for the latest time entry.
    void editRunningOrLatestTask();
    // Names the menu entry after what editRunningOrLatestTask would edit.
    void updateEditRunningOrLatestTaskMenuItem(MenuItem&) const;

private:
    void editLatestEntry();

    RunningTaskSource& source_;
};

} // namespace vardel
