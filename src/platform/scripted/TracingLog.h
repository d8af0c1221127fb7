#pragma once

#include "platform/Log.h"
#include "platform/scripted/TraceWriter.h"

#include <iosfwd>
#include <string_view>

namespace vardel::scripted {

// Log lines go to the trace and, as the system log would show them, to standard error.
class TracingLog final : public Log {
public:
    TracingLog(TraceWriter& trace, std::ostream& errors)
        : trace_(trace)
        , errors_(errors)
    {
    }

    void warning(std::string_view message) override { write("warning", message); }
    void info(std::string_view message) override { write("info", message); }

private:
    void write(std::string_view level, std::string_view message);

    TraceWriter& trace_;
    std::ostream& errors_;
};

} // namespace vardel::scripted
