#pragma once

#include "platform/RunLoop.h"
#include "platform/Value.h"

#include <functional>

namespace vardel {

// A timer that fires once, after its interval, on the main run loop. Invalidating it, or destroying
// it, keeps it from firing.
class MyLilTimer {
public:
    MyLilTimer(double intervalSeconds, std::function<void()> action);
    ~MyLilTimer();
    MyLilTimer(const MyLilTimer&) = delete;
    MyLilTimer& operator=(const MyLilTimer&) = delete;

    Date fireDate() const { return fireDate_; }
    bool isValid() const { return valid_; }
    void invalidate();

private:
    Date fireDate_;
    RunLoop::TimerId timer_;
    bool valid_ = true;
};

} // namespace vardel
