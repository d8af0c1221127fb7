#include "platform/scripted/TracingAnalyticsSink.h"

#include "platform/ValueJson.h"

namespace vardel::scripted {

void TracingAnalyticsSink::logEvent(const AnalyticsEvent& event)
{
    trace_.write("analytics",
        { { "name", event.name }, { "attributes", ValueJson::encode(Value(event.attributes)) },
            { "frequency", event.frequency ? nlohmann::ordered_json(*event.frequency) : nullptr },
            { "flags", event.flags },
            { "critical", event.critical ? nlohmann::ordered_json(*event.critical) : nullptr } });
}

} // namespace vardel::scripted
