#pragma once

#include "platform/EventTrace.h"
#include "platform/RunningTaskSource.h"
#include "platform/scripted/DesktopWorld.h"
#include "platform/scripted/VirtualClock.h"

namespace vardel::scripted {

// The scenario's task timer; its `since` counts seconds after the scenario's start, like `at`.
class ScriptedRunningTaskSource final : public RunningTaskSource {
public:
    ScriptedRunningTaskSource(DesktopWorld& world, Date start, EventTrace& trace)
        : world_(world)
        , start_(start)
        , trace_(trace)
    {
    }

    std::optional<RunningTaskTimer> runningTask() const override
    {
        if (!world_.runningTask)
            return std::nullopt;
        return RunningTaskTimer { world_.runningTask->title,
            Date { start_.secondsSince1970 + world_.runningTask->since } };
    }

    // Traced as a `runningTask` event with the timer's title and start, or null for a stop.
    void startTimer(const RunningTaskTimer& timer) override
    {
        world_.runningTask = RunningTask { timer.title, timer.since.secondsSince1970 - start_.secondsSince1970 };
        trace_.write("runningTask", { { "title", timer.title }, { "since", world_.runningTask->since } });
    }

    void stopTimer() override
    {
        world_.runningTask.reset();
        trace_.write("runningTask", { { "title", nullptr }, { "since", nullptr } });
    }

private:
    DesktopWorld& world_;
    Date start_;
    EventTrace& trace_;
};

} // namespace vardel::scripted
