#include "shell/VDResumeTrackingCommand.h"

#include "shell/VDHelperAppDelegate.h"

namespace vardel {

void VDResumeTrackingCommand::performDefaultImplementation(VDHelperAppDelegate& delegate) const
{
    delegate.resumeTracking();
}

} // namespace vardel
