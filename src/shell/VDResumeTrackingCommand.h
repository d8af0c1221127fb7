#pragma once

#include "platform/Value.h"

namespace vardel {

class VDHelperAppDelegate;

// The scripting command that resumes app tracking. It takes no arguments.
class VDResumeTrackingCommand {
public:
    explicit VDResumeTrackingCommand(Value::Dictionary evaluatedArguments)
        : evaluatedArguments_(std::move(evaluatedArguments))
    {
    }

    void performDefaultImplementation(VDHelperAppDelegate&) const;

private:
    Value::Dictionary evaluatedArguments_;
};

} // namespace vardel
