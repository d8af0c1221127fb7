#include "platform/linux/RetryDelays.h"

#include <algorithm>

namespace vardel::linux_desktop {

RetryDelays::RetryDelays(Clock::duration first, Clock::duration longest)
    : first_(first)
    , longest_(std::max(first, longest))
    , next_(first)
{
}

bool RetryDelays::isDue(Clock::time_point now) const
{
    return now >= due_;
}

RetryDelays::Clock::duration RetryDelays::failed(Clock::time_point now)
{
    Clock::duration delay = next_;
    due_ = now + delay;
    next_ = std::min(next_ * 2, longest_);
    return delay;
}

void RetryDelays::succeeded()
{
    next_ = first_;
    due_ = {};
}

} // namespace vardel::linux_desktop
