#pragma once

#include "platform/Value.h"

namespace vardel {

class VDHelperAppDelegate;

// The scripting command that pauses app tracking, for the number of seconds given as "fors"; without
// it, until tracking is resumed.
class VDPauseTrackingCommand {
public:
    explicit VDPauseTrackingCommand(Value::Dictionary evaluatedArguments)
        : evaluatedArguments_(std::move(evaluatedArguments))
    {
    }

    void performDefaultImplementation(VDHelperAppDelegate&) const;

private:
    Value::Dictionary evaluatedArguments_;
};

} // namespace vardel
