#pragma once

#include "platform/AnalyticsSink.h"
#include "platform/scripted/TraceWriter.h"

namespace vardel::scripted {

// Analytics events go to the trace and nowhere else.
class TracingAnalyticsSink final : public AnalyticsSink {
public:
    explicit TracingAnalyticsSink(TraceWriter& trace)
        : trace_(trace)
    {
    }

    void logEvent(const AnalyticsEvent&) override;

private:
    TraceWriter& trace_;
};

} // namespace vardel::scripted
