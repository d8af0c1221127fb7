#pragma once

#include "platform/RunningTaskSource.h"

namespace vardel::linux_desktop {

// The product's task timer does not run on this desktop yet: a timer started from the tracker lives
// as long as the process.
class NoRunningTaskSource final : public RunningTaskSource {
public:
    std::optional<RunningTaskTimer> runningTask() const override { return timer_; }
    void startTimer(const RunningTaskTimer& timer) override { timer_ = timer; }
    void stopTimer() override { timer_.reset(); }

private:
    std::optional<RunningTaskTimer> timer_;
};

} // namespace vardel::linux_desktop
