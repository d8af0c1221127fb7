#pragma once

#include "platform/Accessibility.h"

#include <optional>
#include <string>
#include <vector>

namespace vardel {

struct RunningApplication {
    ProcessIdentifier processIdentifier = 0;
    std::optional<std::string> bundleIdentifier;
    std::optional<std::string> localizedName;
    std::optional<std::string> executablePath;
    std::optional<std::string> bundlePath;

    bool operator==(const RunningApplication&) const = default;
};

class Workspace {
public:
    virtual ~Workspace() = default;

    virtual std::optional<RunningApplication> frontmostApplication() = 0;
    virtual std::vector<RunningApplication> runningApplications() = 0;
};

} // namespace vardel
