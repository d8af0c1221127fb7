#include "shell/TaskActions.h"

#include "platform/Platform.h"
#include "product/HelperHelper.h"
#include "product/HelperPreferences.h"
#include "product/OngoingTaskActivityManager.h"

namespace vardel {

namespace {

OngoingTaskActivityManager runningTasks()
{
    return OngoingTaskActivityManager(platform().runningTasks());
}

} // namespace

TaskActions::TaskActions(StatusItemController& statusItem)
    : statusItem_(statusItem)
{
}

void TaskActions::startTask()
{
    HelperHelper::logEventWithName("Setapp.Interaction.startTask");
    statusItem_.updateStatusItemVisibility();
    runningTasks().showEditorToStartTaskActivity();
}

void TaskActions::stopTask()
{
    runningTasks().stopRunningActivityWithShowNotification(true, false);
}

void TaskActions::editRunningOrLatestTask()
{
    runningTasks().editRunningOrLatestTask();
}

void TaskActions::updateStartTaskShortcut()
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
        platform().globalShortcuts().listen({}, nullptr);
        return;
    }
    binder.bindShortcutWithDefaultsKey(key, [this] {
        if (!HelperHelper::tasksAvailable())
            return;
        if (runningTasks().hasRunningActivity())
            stopTask();
        else
            startTask();
    });
    editTaskShortcutBinder_->bindShortcutWithDefaultsKey(key, [] {
        if (HelperHelper::tasksAvailable())
            editRunningOrLatestTask();
    });
    listenForShortcuts();
}

// The desktop delivers the keys of both bindings; each binder decides whether a press is its own.
void TaskActions::listenForShortcuts()
{
    std::vector<KeyShortcut> keys;
    if (auto stored = HelperPreferences::startTaskShortcut()) {
        for (const auto& transform :
            { MASShortcutBinder::fakeShortcutTransformer, MASShortcutBinder::fakeShortcutWithExtraShiftTransformer }) {
            if (auto shortcut = transform(*stored))
                keys.push_back({ shortcut->key, shortcut->modifierFlags });
        }
    }
    platform().globalShortcuts().listen(std::move(keys), [this](const KeyShortcut& pressed) {
        Shortcut shortcut { pressed.key, pressed.modifierFlags };
        if (!MASShortcutBinder::sharedBinder().performShortcut(shortcut))
            editTaskShortcutBinder_->performShortcut(shortcut);
    });
}

} // namespace vardel
