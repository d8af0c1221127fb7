#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>

namespace vardel::linux_desktop {

// Bounds what a frozen application costs. Every call is bounded by the messaging time-out; an
// application that lets a call run into it is taken as frozen, and for the next few seconds calls to
// it are refused at once, so that it costs a sample at most one time-out. Applications are known by
// their bus names.
class AtspiCallGuard {
public:
    using Clock = std::chrono::steady_clock;

    explicit AtspiCallGuard(std::chrono::milliseconds timeout);

    bool isFrozen(const std::string& busName, Clock::time_point now);
    // Whether a call to the application may go out now; counts the calls it lets through.
    bool admit(const std::string& busName, Clock::time_point now);
    // Records how long an admitted call took; true when it ran into the time-out.
    bool finish(const std::string& busName, Clock::time_point started, Clock::time_point now);

    std::chrono::milliseconds timeout() const { return timeout_; }
    void setTimeout(std::chrono::milliseconds timeout) { timeout_ = timeout; }
    uint64_t callCount() const { return callCount_; }

private:
    std::chrono::milliseconds timeout_;
    std::map<std::string, Clock::time_point> frozenUntil_;
    uint64_t callCount_ = 0;
};

} // namespace vardel::linux_desktop
