#pragma once

#include <string_view>

namespace vardel {

// The process's standard output and standard error, where the command-line modes write.
class StandardStreams {
public:
    virtual ~StandardStreams() = default;

    // Writes the text as it is; line breaks are the caller's.
    virtual void print(std::string_view text) = 0;
    virtual void printError(std::string_view text) = 0;
};

} // namespace vardel
