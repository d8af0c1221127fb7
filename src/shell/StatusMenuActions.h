#pragma once

#include "platform/StatusBar.h"
#include "product/InfoLogger.h"
#include "shell/StatusItemController.h"
#include "shell/TaskActions.h"
#include "shell/TerminationHandler.h"
#include "shell/TrackingController.h"

#include <span>
#include <string_view>
#include <vector>

namespace vardel {

// The status menu's behaviour: what happens as it opens and closes, and, in one table by action
// name, how each entry shows (validate) and what choosing it does (perform).
class StatusMenuActions {
public:
    StatusMenuActions(InfoLogger&, StatusItemController&, TrackingController&, TaskActions&, TerminationHandler&);
    StatusMenuActions(const StatusMenuActions&) = delete;
    StatusMenuActions& operator=(const StatusMenuActions&) = delete;

    void menuWillOpen();
    void menuDidClose();
    // Sets the entry's title, check mark, key equivalent and visibility; true when it is enabled.
    // An entry whose action has no row is left as it is, enabled.
    bool validateMenuItem(MenuItem&);
    // An action that has no row is logged as a warning.
    void performAction(const MenuItem&);

    // The actions that have a row, in the table's order.
    static std::vector<std::string_view> actionNames();

private:
    using Validate = bool (StatusMenuActions::*)(MenuItem&);
    // An information line or a submenu's parent has nothing to perform.
    using Perform = void (StatusMenuActions::*)(const MenuItem&);
    struct Row {
        std::string_view action;
        Validate validate;
        Perform perform;
    };
    static std::span<const Row> table();
    static const Row* row(std::string_view action);

    bool alwaysEnabled(MenuItem&);
    bool neverEnabled(MenuItem&);
    bool validateAutomaticLaunch(MenuItem&);
    bool validateAskAfterIdle(MenuItem&);
    bool validateToggleTracking(MenuItem&);
    bool validatePauseContainer(MenuItem&);
    bool validateTimeRemaining(MenuItem&);
    bool validateSyncStatus(MenuItem&);
    bool validateCurrentTaskInfo(MenuItem&);
    bool validateEditTask(MenuItem&);
    bool validateStartTask(MenuItem&);
    bool validateStopTask(MenuItem&);

    void toggleTracking(const MenuItem&);
    void pauseTrackingFor(const MenuItem&);
    void startTask(const MenuItem&);
    void stopTask(const MenuItem&);
    void editRunningOrLatestTask(const MenuItem&);
    void startMainApplication(const MenuItem&);
    void toggleAutomaticLaunch(const MenuItem&);
    void toggleAskAfterIdle(const MenuItem&);
    void askToQuit(const MenuItem&);
    // Also when the menu opens with Option held.
    static void openMainApplication();

    InfoLogger& infoLogger_;
    StatusItemController& statusItem_;
    TrackingController& tracking_;
    TaskActions& tasks_;
    TerminationHandler& termination_;
};

} // namespace vardel
