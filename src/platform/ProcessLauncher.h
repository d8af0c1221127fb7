#pragma once

#include <string>
#include <vector>

namespace vardel {

class ProcessLauncher {
public:
    virtual ~ProcessLauncher() = default;

    // Starts the program and waits until it exits; returns its exit status.
    virtual int runAndWait(const std::string& path, const std::vector<std::string>& arguments) = 0;
};

} // namespace vardel
