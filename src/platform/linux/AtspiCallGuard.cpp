#include "platform/linux/AtspiCallGuard.h"

namespace vardel::linux_desktop {

namespace {

// How long an application that ran into the time-out is left alone.
constexpr std::chrono::seconds frozenPause { 5 };

} // namespace

AtspiCallGuard::AtspiCallGuard(std::chrono::milliseconds timeout)
    : timeout_(timeout)
{
}

bool AtspiCallGuard::isFrozen(const std::string& busName, Clock::time_point now)
{
    auto frozen = frozenUntil_.find(busName);
    if (frozen == frozenUntil_.end())
        return false;
    if (now < frozen->second)
        return true;
    frozenUntil_.erase(frozen);
    return false;
}

bool AtspiCallGuard::admit(const std::string& busName, Clock::time_point now)
{
    if (isFrozen(busName, now))
        return false;
    ++callCount_;
    return true;
}

bool AtspiCallGuard::finish(const std::string& busName, Clock::time_point started, Clock::time_point now)
{
    // libatspi does not always say that a call timed out, so the clock decides.
    if (now - started < timeout_ * 9 / 10)
        return false;
    frozenUntil_.insert_or_assign(busName, now + frozenPause);
    return true;
}

} // namespace vardel::linux_desktop
