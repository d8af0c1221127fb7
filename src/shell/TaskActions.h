#pragma once

#include "product/MASShortcutBinder.h"
#include "shell/StatusItemController.h"

#include <memory>

namespace vardel {

// The running timer's actions, from the menu and from the start-task shortcut: start (or switch),
// stop, and edit the running or latest one.
class TaskActions {
public:
    explicit TaskActions(StatusItemController&);
    TaskActions(const TaskActions&) = delete;
    TaskActions& operator=(const TaskActions&) = delete;

    void startTask();
    static void stopTask();
    static void editRunningOrLatestTask();

    // (Re)binds the start-task shortcut: as stored it starts or stops a timer, with Shift it edits.
    void updateStartTaskShortcut();
    MASShortcutBinder* editTaskShortcutBinder() { return editTaskShortcutBinder_.get(); }

private:
    void listenForShortcuts();

    StatusItemController& statusItem_;
    std::unique_ptr<MASShortcutBinder> editTaskShortcutBinder_;
};

} // namespace vardel
