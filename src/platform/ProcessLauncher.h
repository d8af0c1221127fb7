#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vardel {

class ProcessLauncher {
public:
    virtual ~ProcessLauncher() = default;

    // Starts the program and waits until it exits; returns its exit status.
    virtual int runAndWait(const std::string& path, const std::vector<std::string>& arguments) = 0;

    // Starts the program without waiting for it; it may outlive this process. Nothing on success,
    // else why it could not be started.
    virtual std::optional<std::string> launch(const std::string& path, const std::vector<std::string>& arguments) = 0;
};

} // namespace vardel
