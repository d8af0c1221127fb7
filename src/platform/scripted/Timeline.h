#pragma once

#include "platform/scripted/DesktopWorld.h"
#include "platform/scripted/Scenario.h"
#include "platform/scripted/VirtualClock.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace vardel::scripted {

// Moves virtual time forward and changes the world as the scenario's timeline says on the way. A
// step is in effect from its time on, whether the run loop or a blocking wait passes it; steps at or
// after the end never happen.
class Timeline {
public:
    Timeline(std::vector<TimelineStep> steps, double endSeconds, VirtualClock&, DesktopWorld&);

    void advanceTo(double elapsedSeconds);
    // When the next step happens; nothing when no step is left before the end.
    std::optional<double> nextStepTime() const;

    // The user's interactions of a step (answers to notifications, the menu, keys held, commands
    // from other programs) go to the program through this handler, at the step's time; it serves
    // them on the run loop rather than in the middle of whatever is running.
    void setInteractionHandler(std::function<void(const TimelineStep&)> handler)
    {
        interactionHandler_ = std::move(handler);
    }

    // The file-system changes of a step, reported at the step's time.
    void setFileEventHandler(std::function<void(const std::vector<FileEvent>&)> handler)
    {
        fileEventHandler_ = std::move(handler);
    }

private:
    void apply(const TimelineStep&);

    std::vector<TimelineStep> steps_;
    size_t next_ = 0;
    double endSeconds_;
    VirtualClock& clock_;
    DesktopWorld& world_;
    std::function<void(const TimelineStep&)> interactionHandler_;
    std::function<void(const std::vector<FileEvent>&)> fileEventHandler_;
};

} // namespace vardel::scripted
