#pragma once

#include "platform/Accessibility.h"
#include "platform/Workspace.h"

#include <optional>
#include <string>

namespace vardel {

// This process and the application bundle it was started from (the main bundle), as they were when
// the process started.
struct CurrentProcess {
    ProcessIdentifier processIdentifier = 0;
    std::string executablePath;
    ApplicationBundle mainBundle;
};

// The build now installed where the process was started from, as the platform reads it.
struct InstalledBuild {
    // Nothing when it cannot be read.
    std::optional<std::string> version;
    // What was read for it.
    std::string source;
};

} // namespace vardel
