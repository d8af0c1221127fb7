#include "platform/scripted/Timeline.h"

namespace vardel::scripted {

namespace {

void applyChanges(const KeyChanges& changes, ScriptedPreferenceStore& store)
{
    for (const auto& [key, value] : changes)
        store.applyScenarioChange(key, value);
}

} // namespace

Timeline::Timeline(std::vector<TimelineStep> steps, double endSeconds, VirtualClock& clock, DesktopWorld& world)
    : steps_(std::move(steps))
    , endSeconds_(endSeconds)
    , clock_(clock)
    , world_(world)
{
}

void Timeline::advanceTo(double elapsedSeconds)
{
    for (auto step = nextStepTime(); step && *step <= elapsedSeconds; step = nextStepTime()) {
        clock_.moveTo(*step);
        apply(steps_[next_++]);
    }
    clock_.moveTo(elapsedSeconds);
}

std::optional<double> Timeline::nextStepTime() const
{
    if (next_ < steps_.size() && steps_[next_].at < endSeconds_)
        return steps_[next_].at;
    return std::nullopt;
}

// Applications first, so that the attribute changes of a step may name what it launched.
void Timeline::apply(const TimelineStep& step)
{
    for (ProcessIdentifier pid : step.terminate)
        world_.terminate(pid);
    world_.launch(step.launch);
    if (step.replaceUI)
        world_.replaceInterface(*step.replaceUI);
    for (const auto& change : step.set)
        world_.setAttribute(change);
    if (step.frontmost)
        world_.frontmost = *step.frontmost;
    if (step.windowList)
        world_.windowList = *step.windowList;
    if (step.screens)
        world_.screens = *step.screens;
    if (step.powerAssertions)
        world_.powerAssertions = std::make_shared<const Value::Dictionary>(*step.powerAssertions);
    for (const auto& [path, value] : step.plists) {
        if (value)
            world_.propertyLists.insert_or_assign(path, *value);
        else
            world_.propertyLists.erase(path);
    }
    applyChanges(step.defaults, world_.standardUserDefaults);
    applyChanges(step.preferences, world_.productPreferences);
    if (step.runningTask)
        world_.runningTask = *step.runningTask;
    bool userActs = step.respond || step.menu || step.script || step.keys;
    if (userActs && interactionHandler_)
        interactionHandler_(step);
    if (!step.fileEvents.empty() && fileEventHandler_)
        fileEventHandler_(step.fileEvents);
}

} // namespace vardel::scripted
