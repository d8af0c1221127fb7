#include "platform/scripted/ScriptedStandardStreams.h"

#include <iostream>

namespace vardel::scripted {

ScriptedStandardStreams::ScriptedStandardStreams(TraceWriter& trace)
    : trace_(trace)
    , output_(&std::cout)
    , error_(&std::cerr)
{
}

void ScriptedStandardStreams::print(std::string_view text)
{
    // Flushed, so that the text stays in order with trace lines written to the same stream.
    *output_ << text << std::flush;
    trace_.write("stdout", { { "text", text } });
}

void ScriptedStandardStreams::printError(std::string_view text)
{
    *error_ << text << std::flush;
    trace_.write("stderr", { { "text", text } });
}

void ScriptedStandardStreams::redirect(std::ostream& output, std::ostream& error)
{
    output_ = &output;
    error_ = &error;
}

} // namespace vardel::scripted
