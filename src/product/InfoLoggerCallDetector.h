#pragma once

#include "platform/VDActivity.h"

#include <optional>
#include <string>

namespace vardel {

// What the recording service asks of the call detector on each sample.
class InfoLoggerCallDetector {
public:
    virtual ~InfoLoggerCallDetector() = default;

    // The sampled activity (nothing when nothing was recorded or tracking is paused) and whether
    // the service is tracking.
    virtual void updateCallStatusForActivity(const VDActivity* activity, bool isTracking) = 0;
    virtual bool hasRunningCall() const = 0;
    virtual std::optional<std::string> descriptionOfRunningCalls() const = 0;
};

} // namespace vardel
