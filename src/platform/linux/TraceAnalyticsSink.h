#pragma once

#include "platform/AnalyticsSink.h"
#include "platform/EventTrace.h"
#include "platform/ValueJson.h"

namespace vardel::linux_desktop {

// Analytics events go to the trace; the product's own analytics store records them separately.
class TraceAnalyticsSink final : public AnalyticsSink {
public:
    explicit TraceAnalyticsSink(EventTrace& trace)
        : trace_(trace)
    {
    }

    void logEvent(const AnalyticsEvent& event) override
    {
        trace_.write("analytics",
            { { "name", event.name }, { "attributes", ValueJson::encode(Value(event.attributes)) },
                { "frequency", event.frequency ? nlohmann::ordered_json(*event.frequency) : nullptr },
                { "flags", event.flags },
                { "critical", event.critical ? nlohmann::ordered_json(*event.critical) : nullptr } });
    }

private:
    EventTrace& trace_;
};

} // namespace vardel::linux_desktop
