#pragma once

#include "platform/Clock.h"

namespace vardel::scripted {

// The scripted desktop's clock: it stands still until something moves it forward.
class VirtualClock final : public Clock {
public:
    explicit VirtualClock(Date start)
        : start_(start)
    {
    }

    Date now() override { return { start_.secondsSince1970 + elapsed_ }; }
    double elapsedSeconds() const { return elapsed_; }
    // Time never goes back: an earlier time leaves the clock where it is.
    void moveTo(double elapsedSeconds)
    {
        if (elapsedSeconds > elapsed_)
            elapsed_ = elapsedSeconds;
    }

private:
    Date start_;
    double elapsed_ = 0;
};

} // namespace vardel::scripted
