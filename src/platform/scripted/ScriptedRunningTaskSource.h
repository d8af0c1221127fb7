#pragma once

#include "platform/RunningTaskSource.h"
#include "platform/scripted/DesktopWorld.h"
#include "platform/scripted/VirtualClock.h"

namespace vardel::scripted {

// The scenario's task timer; its `since` counts seconds after the scenario's start, like `at`.
class ScriptedRunningTaskSource final : public RunningTaskSource {
public:
    ScriptedRunningTaskSource(const DesktopWorld& world, Date start)
        : world_(world)
        , start_(start)
    {
    }

    std::optional<RunningTaskTimer> runningTask() const override
    {
        if (!world_.runningTask)
            return std::nullopt;
        return RunningTaskTimer { world_.runningTask->title,
            Date { start_.secondsSince1970 + world_.runningTask->since } };
    }

private:
    const DesktopWorld& world_;
    Date start_;
};

} // namespace vardel::scripted
