#pragma once

#include "platform/ScheduledTimer.h"
#include "platform/Value.h"

#include <functional>

namespace vardel {

// A timer that fires once, after its interval, on the main run loop. Invalidating it, or destroying
// it, keeps it from firing.
class MyLilTimer {
public:
    MyLilTimer(double intervalSeconds, std::function<void()> action);

    Date fireDate() const { return fireDate_; }
    // Neither fired nor invalidated.
    bool isValid() const { return timer_.isPending(); }
    void invalidate() { timer_.cancel(); }

private:
    Date fireDate_;
    ScheduledTimer timer_;
};

} // namespace vardel
