#include "product/OngoingTaskActivityManager.h"

#include <algorithm>

namespace vardel {

std::optional<double> OngoingTaskActivityManager::elapsedSeconds(Date now) const
{
    auto running = runningActivity();
    if (!running)
        return std::nullopt;
    return std::max(0.0, now.secondsSince1970 - running->since.secondsSince1970);
}

} // namespace vardel
