#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>

namespace vardel {

// The task timer that the product runs for the user, as the product's own store reports it.
struct RunningTaskTimer {
    std::string title;
    Date since;
    bool operator==(const RunningTaskTimer&) const = default;
};

// Where the tracker learns whether a task timer runs, and starts or stops one for the user. The timer is started and
// stopped outside this process, so it is read on every use rather than cached.
class RunningTaskSource {
public:
    virtual ~RunningTaskSource() = default;
    virtual std::optional<RunningTaskTimer> runningTask() const = 0;
    // Starts a timer (replacing a running one) or stops the running timer, as the user asked.
    virtual void startTimer(const RunningTaskTimer&) = 0;
    virtual void stopTimer() = 0;
};

} // namespace vardel
