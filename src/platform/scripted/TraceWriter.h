#pragma once

#include "platform/JsonLinesTrace.h"
#include "platform/scripted/VirtualClock.h"

namespace vardel::scripted {

// The scripted desktop's trace: its times are the virtual clock's.
class TraceWriter final : public JsonLinesTrace {
public:
    explicit TraceWriter(const VirtualClock& clock)
        : JsonLinesTrace([&clock] { return clock.elapsedSeconds(); })
    {
    }
};

} // namespace vardel::scripted
