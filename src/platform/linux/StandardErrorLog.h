#pragma once

#include "platform/EventTrace.h"
#include "platform/Log.h"

#include <iostream>

namespace vardel::linux_desktop {

// Log lines go to standard error, where a session's journal collects them, and to the trace.
class StandardErrorLog final : public Log {
public:
    explicit StandardErrorLog(EventTrace& trace)
        : trace_(trace)
    {
    }

    void warning(std::string_view message) override { write("warning", message); }
    void info(std::string_view message) override { write("info", message); }

private:
    void write(std::string_view level, std::string_view message)
    {
        std::cerr << message << std::endl;
        trace_.write("log", { { "level", level }, { "message", message } });
    }

    EventTrace& trace_;
};

} // namespace vardel::linux_desktop
