#pragma once

#include "platform/StandardStreams.h"
#include "platform/scripted/TraceWriter.h"

#include <iosfwd>
#include <string_view>

namespace vardel::scripted {

// What the program prints goes to the process's streams for real and to the trace as `stdout` and
// `stderr` events.
class ScriptedStandardStreams final : public StandardStreams {
public:
    explicit ScriptedStandardStreams(TraceWriter& trace);

    void print(std::string_view text) override;
    void printError(std::string_view text) override;

    // Tests catch the printed text here instead of on the process's streams.
    void redirect(std::ostream& output, std::ostream& error);

private:
    TraceWriter& trace_;
    std::ostream* output_;
    std::ostream* error_;
};

} // namespace vardel::scripted
