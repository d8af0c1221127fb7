#pragma once

#include "platform/EventTrace.h"
#include "platform/StandardStreams.h"

#include <iostream>

namespace vardel::linux_desktop {

// The process's own standard output and error; printed text is traced too.
class ProcessStandardStreams final : public StandardStreams {
public:
    explicit ProcessStandardStreams(EventTrace& trace)
        : trace_(trace)
    {
    }

    void print(std::string_view text) override
    {
        // Flushed, so that the text stays in order with trace lines written to the same stream.
        std::cout << text << std::flush;
        trace_.write("stdout", { { "text", text } });
    }
    void printError(std::string_view text) override
    {
        std::cerr << text << std::flush;
        trace_.write("stderr", { { "text", text } });
    }

private:
    EventTrace& trace_;
};

} // namespace vardel::linux_desktop
