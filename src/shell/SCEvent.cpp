#include "shell/SCEvent.h"

namespace vardel {

// The identifier is written as a signed number, as logs of the platform's stream show it.
std::string SCEvent::description() const
{
    return "<SCEvent { eventId = " + std::to_string(static_cast<int64_t>(eventId_)) + ", eventPath = " + eventPath_
        + ", eventFlag = " + std::to_string(eventFlag_) + " } >";
}

std::ostream& operator<<(std::ostream& stream, const SCEvent& event)
{
    return stream << event.description();
}

} // namespace vardel
