#include "shell/VDPauseTrackingCommand.h"

#include "shell/VDHelperAppDelegate.h"

namespace vardel {

void VDPauseTrackingCommand::performDefaultImplementation(VDHelperAppDelegate& delegate) const
{
    auto fors = evaluatedArguments_.find("fors");
    double seconds = fors != evaluatedArguments_.end() ? fors->second.asNumber().value_or(0) : 0;
    delegate.pauseTrackingForTime(seconds);
}

} // namespace vardel
