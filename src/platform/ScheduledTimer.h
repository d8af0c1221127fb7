#pragma once

#include "platform/RunLoop.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace vardel {

// A one-shot timer on the main run loop, owned by its handle: destroying the handle, or giving it
// another timer, cancels the timer it held, so that a callback that captures an object never runs
// after the object is gone. A handle never calls a platform other than the one it scheduled on: once
// that platform is uninstalled, the timer is left to its run loop, where it does nothing if it ever
// comes due.
class ScheduledTimer {
public:
    // Holds no timer.
    ScheduledTimer() = default;
    // Schedules the callback after the delay in seconds on the installed platform's run loop.
    ScheduledTimer(double delaySeconds, std::function<void()> callback);
    ~ScheduledTimer();
    ScheduledTimer(ScheduledTimer&&) noexcept = default;
    ScheduledTimer& operator=(ScheduledTimer&&) noexcept;
    ScheduledTimer(const ScheduledTimer&) = delete;
    ScheduledTimer& operator=(const ScheduledTimer&) = delete;

    // Scheduled, and neither fired nor cancelled.
    bool isPending() const;
    // The callback has been called (or is running).
    bool hasFired() const;
    // Keeps a pending timer from firing; a fired timer stays fired.
    void cancel();

private:
    struct State {
        uint64_t installation = 0;
        RunLoop::TimerId timer = 0;
        bool fired = false;
    };

    // Shared with the run loop's callback, which holds it weakly: a moved handle keeps its timer,
    // and a callback whose handle is gone does nothing.
    std::shared_ptr<State> state_;
};

} // namespace vardel
