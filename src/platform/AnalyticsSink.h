#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>
#include <vector>

namespace vardel {

struct AnalyticsEvent {
    std::string name;
    Value::Dictionary attributes;
    std::optional<std::string> frequency; // "always" or "medium"
    std::vector<std::string> flags; // e.g. "sensitive"
    std::optional<bool> critical;
};

class AnalyticsSink {
public:
    virtual ~AnalyticsSink() = default;
    virtual void logEvent(const AnalyticsEvent&) = 0;
};

} // namespace vardel
