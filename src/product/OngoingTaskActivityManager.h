#pragma once

#include "platform/RunningTaskSource.h"
#include "platform/Value.h"

#include <optional>

namespace vardel {

// The product's task timer as the tracker sees it. The timer runs in the product, so every question
// is answered from the source at the moment it is asked.
class OngoingTaskActivityManager {
public:
    explicit OngoingTaskActivityManager(const RunningTaskSource& source)
        : source_(source)
    {
    }

    bool hasRunningActivity() const { return runningActivity().has_value(); }
    std::optional<RunningTaskTimer> runningActivity() const { return source_.runningTask(); }
    // How long the running timer has run at `now`, never negative (a timer started by a machine whose
    // clock is ahead); nothing without a running timer.
    std::optional<double> elapsedSeconds(Date now) const;

private:
    const RunningTaskSource& source_;
};

} // namespace vardel
